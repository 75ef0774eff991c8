// Loop depths, against the plain definition.
#include "cfg/graph.h"
#include "run_fixture.h"
#include "storage/loop_depths.h"

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace velkor {
namespace {

class LoopDepthsTest : public RunTest {
protected:
  // A graph of count blocks in block order, dfn 1 upward.
  void build(int count, const std::vector<std::pair<int, int>> &edges) {
    blocks.assign(static_cast<std::size_t>(count) + 1, nullptr);
    for (int dfn = count; dfn > 0; --dfn) {
      BB *block = new (lalloc(sizeof(BB))) BB{};
      block->dfn = dfn;
      block->depth = 99;
      block->next = dfn < count ? at(dfn + 1) : nullptr;
      blocks[static_cast<std::size_t>(dfn)] = block;
    }
    for (const auto &[from, to] : edges) {
      at(from)->succs = edge_add(at(to), at(from)->succs);
      at(to)->preds = edge_add(at(from), at(to)->preds);
    }
    state.first_bb = at(1);
    state.first_bb->prev = at(count);
    state.num_blocks = count;
  }

  [[nodiscard]] BB *at(int dfn) const { return blocks[static_cast<std::size_t>(dfn)]; }

  std::vector<int> depths() {
    compute_loop_depths();
    std::vector<int> result;
    for (const BB *block = state.first_bb; block; block = block->next)
      result.push_back(block->depth);
    return result;
  }

  // What can be reached by at least one edge, by the closure over all blocks; then for each head
  // the stretch of blocks that share a cycle with it.
  [[nodiscard]] std::vector<int> depths_by_definition() const {
    const int count = state.num_blocks;
    const auto size = static_cast<std::size_t>(count) + 1;
    std::vector<std::vector<char>> reach(size, std::vector<char>(size, 0));
    const auto reaches = [&](int a, int b) -> char & {
      return reach[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
    };
    for (int b = 1; b <= count; ++b)
      for (const EDGE *edge = at(b)->succs; edge; edge = edge->next)
        reaches(b, edge->bb->dfn) = 1;
    for (int k = 1; k <= count; ++k)
      for (int b = 1; b <= count; ++b)
        for (int to = 1; reaches(b, k) && to <= count; ++to)
          reaches(b, to) |= reaches(k, to);
    std::vector<int> depth(static_cast<std::size_t>(count), 0);
    for (int head = 1; head <= count; ++head) {
      int end = 0;
      for (const EDGE *edge = at(head)->preds; edge; edge = edge->next)
        if (const int source = edge->bb->dfn; source >= head && reaches(head, source))
          end = std::max(end, source);
      for (int b = head; b <= end; ++b)
        depth[static_cast<std::size_t>(b) - 1] += reaches(b, head) && reaches(head, b);
    }
    return depth;
  }

  std::vector<BB *> blocks;
};

TEST_F(LoopDepthsTest, NestedLoops) {
  // 2 heads a loop to 6, 3 one to 5; 4 is a loop of its own; 5 also leaves to 7.
  build(8, {{1, 2}, {2, 3}, {3, 4}, {4, 4}, {4, 5}, {5, 3}, {5, 6}, {5, 7}, {6, 2}, {7, 8}});
  EXPECT_EQ(depths(), (std::vector<int>{0, 1, 2, 3, 2, 1, 0, 0}));
}

TEST_F(LoopDepthsTest, ABlockOfTheStretchThatCannotReturnIsNotCounted) {
  build(5, {{1, 2}, {2, 3}, {2, 4}, {3, 5}, {4, 2}});
  EXPECT_EQ(depths(), (std::vector<int>{0, 1, 0, 1, 0}));
}

TEST_F(LoopDepthsTest, AgreesWithTheDefinition) {
  std::minstd_rand random(7);
  for (int round = 0; round < 400; ++round) {
    const int count = 1 + static_cast<int>(random() % 24);
    std::vector<std::pair<int, int>> edges;
    for (int b = 1; b < count; ++b)
      if (random() % 8 != 0) edges.emplace_back(b, b + 1);
    for (unsigned more = random() % 20; more > 0; --more)
      edges.emplace_back(1 + static_cast<int>(random() % static_cast<unsigned>(count)),
                         1 + static_cast<int>(random() % static_cast<unsigned>(count)));
    build(count, edges);
    EXPECT_EQ(depths(), depths_by_definition()) << "round " << round;
  }
}

TEST_F(LoopDepthsTest, LongChainsAndManyLoopsTakeNoTime) {
  constexpr int count = 200000;
  std::vector<std::pair<int, int>> edges;
  for (int b = 1; b < count; ++b) {
    edges.emplace_back(b, b + 1);
    if (b > 3) edges.emplace_back(b, b - 2);
  }
  edges.emplace_back(count, 2);
  build(count, edges);
  EXPECT_EQ(depths()[count / 2], 4) << "the loop around all, and those of three heads";
}

} // namespace
} // namespace velkor
