// Code that stands twice is shared; tests that stand twice, too.
#include "cfg/check_function.h"
#include "cfg/cross_jump.h"
#include "cfg/graph_rows.h"
#include "cfg/simpcfg.h"

#include <algorithm>

namespace velkor {
namespace {

class CrossJumpTest : public GraphRowTest {
protected:
  // The graph behind the two passes alone; blocks keep their numbers.
  Lines crossed(const Lines &input, int level = 1) {
    options.opt_level = level;
    build(input);
    cross_jump();
    merge_repeated_ifs();
    static_cast<void>(edges());
    return graph();
  }

  static long count(const Lines &lines, const std::string &line) {
    return std::count(lines.begin(), lines.end(), line);
  }
};

const Lines two_equal_arms = {"if _x L1 L2",
                              "L1:",
                              "ucall(address(_fn))",
                              "assign(_y,add(_x,_z))",
                              "goto L3",
                              "L2:",
                              "assign(_x,2)",
                              "if _z L3 L4",
                              "L4:",
                              "ucall(address(_fn))",
                              "assign(_y,add(_z,_x))",
                              "L3:",
                              "return(_self,_y)"};

TEST_F(CrossJumpTest, EqualBlocksThatGoTheSameWay) {
  const Lines lines = crossed(two_equal_arms);
  EXPECT_EQ(count(lines, "ucall(address(_fn))"), 1) << "sums are equal in any order";
  EXPECT_EQ(count(crossed(two_equal_arms, 0), "ucall(address(_fn))"), 2) << "not at level 0";
  Lines different = two_equal_arms;
  different[10] = "assign(_y,add(_z,_n))";
  EXPECT_EQ(count(crossed(different), "ucall(address(_fn))"), 2);
  different[10] = "assign(_y,subtract(_z,_x))";
  EXPECT_EQ(count(crossed(different), "ucall(address(_fn))"), 2);
}

TEST_F(CrossJumpTest, OneBlockIsLeftAlone) {
  EXPECT_EQ(crossed({"assign(_x,1)", "return(_self,_x)"}),
            (Lines{"B1:", "assign(_x, 1)", "return(_self, _x)"}));
}

TEST_F(CrossJumpTest, ExitsAreShared) {
  const Lines input = {"if _x L1 L2",
                       "L1:",
                       "assign(_z,1)",
                       "return(_self,_y)",
                       "L2:",
                       "assign(_y,2)",
                       "if _z L3 L4",
                       "L3:",
                       "return(_self,_x)",
                       "L4:",
                       "assign(_z,1)",
                       "return(_self,_y)"};
  EXPECT_EQ(count(crossed(input), "return(_self, _y)"), 1);
  // in the last clean-up even returns that cost no more than a jump
  options.opt_level = 1;
  build({"if _x L1 L2", "L1:", "return(_self,_y)", "L2:", "ucall(address(_fn))", "if _z L3 L4",
         "L3:", "return(_self,_x)", "L4:", "return(_self,_y)"});
  simpcfg(1);
  check_function("simpcfg");
  EXPECT_EQ(count(graph(), "return(_self, _y)"), 1);
}

TEST_F(CrossJumpTest, TheCodeAheadOfALoopStays) {
  // The block ahead of the loop's head falls into it: the one at the bottom, with the same code,
  // jumps there, and not the other way round.
  crossed({"if _z L1 L5", "L1:", "assign(_x,add(_x,1))", "goto L2", "L2:", "if _y L3 L4",
           "L3:", "assign(_x,add(_x,1))", "goto L2", "L4:", "return(_self,_x)",
           "L5:", "return(_self,_y)"});
  const BB *ahead = target_block(last_cell(state.first_bb)->item->right->left);
  const BB *head = single_edge(ahead->succs);
  ASSERT_TRUE(head);
  EXPECT_EQ(graph_line(ahead->trees->item), "assign(_x, add(_x, 1))");
  const BB *bottom = target_block(last_cell(head)->item->right->left);
  EXPECT_EQ(single_edge(bottom->succs), ahead);
  EXPECT_EQ(bottom->trees->item->op, BRANCH);
}

TEST_F(CrossJumpTest, RepeatedTestsAreShared) {
  const Lines input = {"if _z L1 L2",
                       "L1:",
                       "assign(_x,1)",
                       "if lt(_x,_y) L3 L4",
                       "L2:",
                       "assign(_x,2)",
                       "if gt(_y,_x) L3 L4",
                       "L3:",
                       "return(_self,_x)",
                       "L4:",
                       "return(_self,_y)"};
  const Lines lines = crossed(input);
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string &line) {
                            return line.starts_with("if lt") || line.starts_with("if gt");
                          }),
            1);
  // the contrary test with exchanged targets is the same test
  Lines contrary = input;
  contrary[6] = "if ge(_x,_y) L4 L3";
  const Lines merged = crossed(contrary);
  EXPECT_EQ(std::count_if(merged.begin(), merged.end(),
                          [](const std::string &line) { return line.starts_with("if "); }),
            2);
  contrary[6] = "if ge(_x,_y) L3 L4";
  const Lines different = crossed(contrary);
  EXPECT_EQ(std::count_if(different.begin(), different.end(),
                          [](const std::string &line) { return line.starts_with("if "); }),
            3);
}

TEST_F(CrossJumpTest, TheDebugFileTellsWhichBlocksGo) {
  const auto told = [&](const Lines &input) {
    build(input);
    return debug_text([] {
      cross_jump();
      merge_repeated_ifs();
    });
  };
  const std::string banner = "\n\n\t\t\t---------- ENTERING 'cross_jump' ----------\n";
  EXPECT_EQ(
      told({"if _x L1 L2", "L1:", "assign(_z,1)", "return(_self,_y)", "L2:", "assign(_y,2)",
            "if _z L3 L4", "L3:", "return(_self,_x)", "L4:", "assign(_z,1)", "return(_self,_y)"}),
      banner + "\n\tBB 2 is redundant with BB 5\n"
               "\n\t    BB 2:  g2\n\t    BB 2:   \tz = 1;\n\t    BB 2:   \treturn y;\n"
               "\n\t    BB 5:  g5\n\t    BB 5:   \tz = 1;\n\t    BB 5:   \treturn y;\n");
  EXPECT_EQ(told({"if _x L1 L2", "L1:", "assign(_z,1)", "goto L3", "L2:", "assign(_y,2)",
                  "if _z L3 L4", "L4:", "assign(_z,1)", "L3:", "return(_self,_y)"}),
            banner + "\n\tBB 3 is redundant with BB 4\n"
                     "\n\t    BB 3:  g3\n\t    BB 3:   \tz = 1;\n\t    BB 3:   \tgoto g5;\n"
                     "\n\t    BB 4:  g4\n\t    BB 4:   \tz = 1;\n");
  EXPECT_EQ(told({"if _z L1 L2", "L1:", "assign(_x,1)", "if lt(_x,_y) L3 L4", "L2:", "assign(_x,2)",
                  "if gt(_y,_x) L3 L4", "L3:", "return(_self,_x)", "L4:", "return(_self,_y)"}),
            banner + "\n\tIF in bb 2 is redundant with bb 3:\n\t\tif ( y > x ) goto g4; else goto "
                     "g5;\n");
}

TEST_F(CrossJumpTest, OnlyTheLastCleanUpShares) {
  build(two_equal_arms);
  simpcfg(0);
  EXPECT_EQ(count(graph(), "ucall(address(_fn))"), 2);
  build(two_equal_arms);
  simpcfg(1);
  EXPECT_EQ(count(graph(), "ucall(address(_fn))"), 1);
}

} // namespace
} // namespace velkor
