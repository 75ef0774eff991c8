// Graphs of empty blocks for tests: only their edges and their order matter.
#pragma once

#include "run_fixture.h"

#include <string>
#include <vector>

namespace velkor {

// Successors of the blocks 1, 2, 3 ... by number, the true target of a test first.
using Successors = std::vector<std::vector<int>>;

class BlockChainTest : public RunTest {
protected:
  // The blocks of a graph in the order of their numbers, with their labels, edges and the ring.
  static std::vector<BB *> chain(const Successors &successors) {
    std::vector<BB *> blocks;
    for (std::size_t i = 0; i < successors.size(); ++i) {
      BB *block = new (lalloc(sizeof(BB))) BB{};
      block->uon = block->dfn = static_cast<int>(i) + 1;
      block->labels = label_new(block->dfn, nullptr, block);
      if (i > 0) {
        blocks.back()->next = block;
        block->prev = blocks.back();
      }
      blocks.push_back(block);
    }
    for (std::size_t i = 0; i < successors.size(); ++i)
      for (auto target = successors[i].rbegin(); target != successors[i].rend(); ++target) {
        BB *to = blocks[static_cast<std::size_t>(*target) - 1];
        blocks[i]->succs = edge_cons(to, blocks[i]->succs);
        to->preds = edge_cons(blocks[i], to->preds);
      }
    state.first_bb = blocks.front();
    state.first_bb->prev = blocks.back();
    state.num_blocks = static_cast<int>(blocks.size());
    return blocks;
  }

  // The blocks' first numbers in the order of the chain: "1 3 2 4".
  static std::string order() {
    std::string text;
    for (const BB *block = state.first_bb; block; block = block->next)
      text += (text.empty() ? "" : " ") + std::to_string(block->uon);
    return text;
  }

  // Numbers dense, labels like their blocks, the ring closed, each block there once.
  static void expect_sound_chain(std::size_t count) {
    int dfn = 0;
    std::vector<bool> seen(count + 1);
    for (const BB *block = state.first_bb; block; block = block->next) {
      ASSERT_EQ(block->dfn, ++dfn);
      ASSERT_FALSE(seen[static_cast<std::size_t>(block->uon)]);
      seen[static_cast<std::size_t>(block->uon)] = true;
      for (const LABEL *label = block->labels; label; label = label->next)
        ASSERT_EQ(label->index, dfn);
      ASSERT_EQ((block->next ? block->next : state.first_bb)->prev, block);
    }
    ASSERT_EQ(static_cast<std::size_t>(dfn), count);
    ASSERT_EQ(state.num_blocks, dfn);
    ASSERT_EQ(state.first_bb->uon, 1);
  }
};

} // namespace velkor
