#include "loops/rotate_loops.h"

#include "cfg/block_chain.h"
#include "core/options.h"

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

namespace velkor {
namespace {

class RotateLoopsTest : public BlockChainTest {
protected:
  static std::string rotated(const Successors &successors) {
    chain(successors);
    rotate_loops();
    expect_sound_chain(successors.size());
    return order();
  }

  static std::string debug_text(const Successors &successors) {
    options.debug_level = state.debug_on = 1;
    state.debug_file = std::tmpfile();
    chain(successors);
    rotate_loops();
    std::string text(static_cast<std::size_t>(std::ftell(state.debug_file)), '\0');
    std::rewind(state.debug_file);
    text.resize(std::fread(text.data(), 1, text.size(), state.debug_file));
    std::fclose(state.debug_file);
    state.debug_file = nullptr;
    return text;
  }
};

// The same by plain searches along the chain.
struct PlainRotation {
  std::vector<int> order; // block numbers from 1, by place
  const Successors &successors;

  explicit PlainRotation(const Successors &all) : successors(all) {
    for (std::size_t i = 0; i < all.size(); ++i)
      order.push_back(static_cast<int>(i) + 1);
  }

  const std::vector<int> &targets(int place) const {
    return successors[static_cast<std::size_t>(order[static_cast<std::size_t>(place)]) - 1];
  }
  int place_of(int number) const {
    return static_cast<int>(std::find(order.begin(), order.end(), number) - order.begin());
  }
  // The highest place among a block's successors, up to limit; -1 for none.
  int highest(int place, int limit) const {
    int found = -1;
    for (const int number : targets(place))
      if (const int target = place_of(number); target <= limit) found = std::max(found, target);
    return found;
  }
  bool leaves(int place, int e) const {
    return targets(place).empty() || highest(place, static_cast<int>(order.size())) > e;
  }

  int find_c(int e) const {
    const int f = e + 1;
    const bool has_f = f < static_cast<int>(order.size());
    for (int place = e - 1; has_f && place >= 0; --place)
      if (const auto &all = targets(place);
          std::find(all.begin(), all.end(), order[static_cast<std::size_t>(f)]) != all.end())
        return place;
    int place = e - 1;
    while (place > 0 && !(has_f ? leaves(place, e) : targets(place).empty()))
      --place;
    return place;
  }

  std::string run() {
    for (int e = static_cast<int>(order.size()) - 1; e > 0; --e) {
      const int t = highest(e, static_cast<int>(order.size()));
      if (t <= 0 || t >= e) continue;
      const int c = find_c(e);
      if (c <= 0) continue;
      const int b = highest(e, c);
      if (b <= 0) continue;
      std::rotate(order.begin() + b, order.begin() + c + 1, order.begin() + e + 1);
    }
    std::string text;
    for (const int number : order)
      text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
  }
};

TEST_F(RotateLoopsTest, ATestAtTheTopMovesBehindTheBody) {
  EXPECT_EQ(rotated({{2}, {3, 4}, {2}, {}}), "1 3 2 4") << "while (t) { body }";
  EXPECT_EQ(rotated({{2}, {3, 5}, {4}, {2}, {}}), "1 3 4 2 5") << "a body of two blocks";
  EXPECT_EQ(rotated({{2}, {3, 6}, {4, 5}, {2}, {2}, {}}), "1 3 4 5 2 6")
      << "only the last way back falls through";
  EXPECT_EQ(rotated({{2}, {3, 7}, {4}, {5, 6}, {4}, {2}, {}}), "1 3 5 4 6 2 7")
      << "the outer loop, then the inner one";
}

TEST_F(RotateLoopsTest, WhatFallsOutOrGainsNothingStays) {
  EXPECT_EQ(rotated({{2}, {3}, {2, 4}, {}}), "1 2 3 4") << "the latch has a forward exit";
  EXPECT_EQ(rotated({{2}, {2, 3}, {}}), "1 2 3") << "a loop of one block";
  EXPECT_EQ(rotated({{2}, {3}, {2}}), "1 2 3") << "a loop without an exit";
  EXPECT_EQ(rotated({{2, 3}, {1}, {}}), "1 2 3") << "the entry stays the entry";
}

TEST_F(RotateLoopsTest, TheLastBlockMayEndTheLoop) {
  EXPECT_EQ(rotated({{2}, {3, 4}, {}, {2}}), "1 4 2 3")
      << "C is the nearest block ahead that has no successors";
}

TEST_F(RotateLoopsTest, FewBlocksAreLeftAloneInSilence) {
  EXPECT_EQ(debug_text({{2}, {2}}), "");
  options = Options{};
  state.num_blocks = 0;
  state.first_bb = nullptr;
  rotate_loops();
}

TEST_F(RotateLoopsTest, DebugRunsShowTheCandidate) {
  EXPECT_EQ(debug_text({{2}, {3, 4}, {2}, {}}),
            "\n\n\t\t\t---------- ENTERING 'rotate_loops' ----------\n"
            "\n\tCandidate: A=1, B=2, C=2, D=3, E=3, F=4\n"
            "\t    BB 1:  g1\n\t    BB 2:  g2\n\t    BB 3:  g3\n\t    BB 4:  g4\n"
            "\n\tAfter loop rotation:\n\n"
            "\t    BB 1:  g1\n\t    BB 2:  g2\n\t    BB 3:  g3\n\t    BB 4:  g4\n");
  EXPECT_EQ(order(), "1 3 2 4");
  const std::string last = debug_text({{2}, {3, 4}, {}, {2}});
  EXPECT_NE(last.find("A=1, B=2, C=3, D=4, E=4, F=0\n"), std::string::npos) << last;
  options.debug_flag[1] = true;
  EXPECT_EQ(debug_text({{2}, {3, 4}, {2}, {}}),
            "\n\n\t\t\t---------- ENTERING 'rotate_loops' ----------\n");
  EXPECT_EQ(order(), "1 2 3 4");
}

TEST_F(RotateLoopsTest, TheOtherFormFollowsPredecessors) {
  options.debug_flag[2] = true;
  EXPECT_EQ(rotated({{2}, {3, 4}, {2}, {}}), "1 3 2 4")
      << "4 first; ahead of it 2, and ahead of 2 its other predecessor";
  EXPECT_EQ(rotated({{2, 3}, {4}, {4}, {}}), "1 2 3 4");
  EXPECT_EQ(rotated({{3, 4}, {}, {2}, {3, 5}, {}}), "1 4 5 3 2")
      << "blocks without successors are taken from the last one on";
}

Successors random_graph(std::mt19937 &random, int count) {
  const auto below = [&](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  Successors graph(static_cast<std::size_t>(count));
  for (int i = 1; i <= count; ++i) {
    auto &targets = graph[static_cast<std::size_t>(i) - 1];
    const int kind = below(8);
    for (int n = kind == 0 ? 0 : kind < 5 ? 1 : kind < 7 ? 2 : 3; n > 0; --n) {
      const int near = i - 3 + below(7);
      const int target = std::clamp(below(3) == 0 ? 1 + below(count) : near, 2, count);
      if (std::find(targets.begin(), targets.end(), target) == targets.end())
        targets.push_back(target);
    }
  }
  return graph;
}

TEST_F(RotateLoopsTest, RandomGraphsRotateAsPlainSearchesTell) {
  std::mt19937 random(7);
  int changed = 0;
  for (int round = 0; round < 3000; ++round) {
    const Successors graph = random_graph(random, 3 + round % 40);
    const std::string expected = PlainRotation(graph).run();
    const std::string result = rotated(graph);
    ASSERT_EQ(result, expected) << "round " << round;
    changed += result != PlainRotation(Successors(graph.size())).run();
    release_all_zones();
  }
  EXPECT_GT(changed, 1000) << "most graphs have something to rotate";
}

TEST_F(RotateLoopsTest, TheOtherFormKeepsEveryBlock) {
  options.debug_flag[2] = true;
  std::mt19937 random(8);
  for (int round = 0; round < 300; ++round) {
    rotated(random_graph(random, 3 + round % 40));
    release_all_zones();
  }
}

} // namespace
} // namespace velkor
