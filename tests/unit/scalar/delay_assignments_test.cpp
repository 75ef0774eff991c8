// Where assignments of constants come to rest.
#include "scalar/dead_assignments.h"
#include "scalar/delay_assignments.h"
#include "scalar/split_edge.h"
#include "storage/storage_rows.h"

namespace velkor {
namespace {

class DelayAssignmentsTest : public StorageRowTest {
protected:
  DelayAssignmentsTest() {
    options.opt_target_mode = 0;
    use_pass({"_x", "_y", "_z", "_n", "_p"}, [this] {
      sym_split();
      find_live_variables(LiveFor::DEAD_CODE);
      simpler = delay_assignments();
    });
  }

  bool simpler = false;
};

TEST_F(DelayAssignmentsTest, AConstantWaitsForItsFirstReader) {
  expect_block({"assign(_x,5)", "assign(_y,_n)", "assign(_g1,_x)"},
               {"assign(_y, _n)", "assign(_x, 5)", "assign(_g1, _x)"});
  expect_block({"assign(_p,address(_a))", "assign(_y,_n)", "assign(deref(_p),_y)"},
               {"assign(_y, _n)", "assign(_p, address(_a))", "assign(deref(_p), _y)"});
  expect_block({"assign(_x,add(_x,1))", "assign(_y,_n)", "assign(_g1,_x)"},
               {"assign(_y, _n)", "assign(_x, add(_x, 1))", "assign(_g1, _x)"});
  expect_block({"assign(_g2,increment(_x,1))", "assign(_y,_n)", "assign(_g1,_x)"},
               {"assign(_g2, _x)", "assign(_y, _n)", "assign(_x, add(_x, 1))", "assign(_g1, _x)"});
  expect_block({"assign(_y,add(assign(_x,5),3))", "assign(_z,_n)", "assign(_g1,_x)"},
               {"assign(_y, 8)", "assign(_z, _n)", "assign(_x, 5)", "assign(_g1, _x)"});
}

// Each place is found behind what earlier moves have left there.
TEST_F(DelayAssignmentsTest, ManyWaitForTheSameStatements) {
  expect_block({"assign(_x,1)", "assign(_y,2)", "assign(_z,_n)", "assign(_g1,add(_x,_y))"},
               {"assign(_z, _n)", "assign(_y, 2)", "assign(_x, 1)", "assign(_g1, add(_x, _y))"});
  // The second x merges with the first statement that reads it; y waits for what has become of it.
  expect_block(
      {"assign(_y,2)", "assign(_x,1)", "assign(_g2,_n)", "assign(_x,add(_x,_y))", "assign(_g1,_x)"},
      {"assign(_g2, _n)", "assign(_y, 2)", "assign(_x, add(_y, 1))", "assign(_g1, _x)"});
}

TEST_F(DelayAssignmentsTest, OthersStay) {
  expect_kept({"assign(_x,5)", "assign(_g1,_x)", "assign(_y,_n)"});
  expect_kept({"assign(_x,_z)", "assign(_y,_n)", "assign(_g1,_x)"});
  expect_kept({"asg_add(_x,1)", "assign(_y,_n)", "assign(_g1,_x)"});
  expect_kept({"assign(_z,add(assign(_x,add(_x,1)),_n))", "assign(_y,_n)", "assign(_g1,_x)"});
  expect_kept({"logical_and(_g1,assign(_x,5))", "assign(_y,_n)", "assign(_g1,_x)"});
  expect_kept({"assign(_x,call(address(_fn),assign(_x,5)))", "assign(_y,_n)", "assign(_g1,_x)"});
  expect_kept({"assign(_y,assign(_x,5))", "assign(_g1,add(_y,_x))"});
  expect_kept({"assign(deref(increment(_p,4)),0)", "assign(_y,_n)", "assign(_g1,deref(_p))"});
  expect_kept(
      {"call(address(_fn),address(_x))", "assign(_x,5)", "assign(_y,_n)", "assign(_g1,_x)"});
}

TEST_F(DelayAssignmentsTest, IncrementsWithoutSuchFormsMove) {
  options.opt_target_mode = 1;
  expect_block({"assign(deref(increment(_p,4)),0)", "assign(_y,_n)", "assign(_g1,deref(_p))"},
               {"assign(deref(_p), 0)", "assign(_y, _n)", "assign(_p, add(_p, 4))",
                "assign(_g1, deref(_p))"});
}

TEST_F(DelayAssignmentsTest, StepsDoNotCrossACallThatComesBackTwice) {
  EXPECT_EQ(
      after({"assign(_x,add(_x,1))", "xcall[\"setjmp\"](_n)", "assign(_g1,_x)", "return(_self,_n)"})
          .size(),
      5u);
}

TEST_F(DelayAssignmentsTest, ArmsThatDoWithoutTheVariableAreJumpedOver) {
  EXPECT_EQ(
      after({"assign(_x,5)", "if _n L1 L2", "L1:", "assign(_g1,1)", "goto L3",
             "L2:", "assign(_g1,2)", "goto L3", "L3:", "assign(_g2,0)", "return(_self,_x)"}),
      (Lines{"B1:", "if _n B3 B2", "B2:", "assign(_g1, 2)", "goto B4", "B3:", "assign(_g1, 1)",
             "goto B4", "B4:", "assign(_g2, 0)", "assign(_x, 5)", "return(_self, _x)"}));
  EXPECT_EQ(after({"assign(_x,5)", "if _n L1 L2", "L1:", "assign(_g1,1)", "goto L2",
                   "L2:", "return(_self,_x)"}),
            (Lines{"B1:", "if _n B2 B3", "B2:", "assign(_g1, 1)", "goto B3", "B3:", "assign(_x, 5)",
                   "return(_self, _x)"}));
}

TEST_F(DelayAssignmentsTest, LoopsThatDoWithoutTheVariableAreJumpedOver) {
  const auto loop = [](const char *body) {
    return Lines{"assign(_x,5)", "goto L1", "L1:", body, "if _y L1 L2", "L2:", "return(_self,_x)"};
  };
  EXPECT_EQ(after(loop("assign(_g1,1)")),
            (Lines{"B1:", "goto B2", "B2:", "assign(_g1, 1)", "if _y B2 B3", "B3:", "assign(_x, 5)",
                   "return(_self, _x)"}));
  EXPECT_TRUE(simpler);
  EXPECT_EQ(after(loop("assign(_g1,_x)")),
            (Lines{"B1:", "assign(_x, 5)", "goto B2", "B2:", "assign(_g1, _x)", "if _y B2 B3",
                   "B3:", "return(_self, _x)"}));
  EXPECT_FALSE(simpler);
}

TEST_F(DelayAssignmentsTest, AnEdgeGetsABlockOfItsOwn) {
  // x is wanted on one way only, and other ways lead to its reader as well.
  const Lines lines = {"if _g1 L1 L2",     "L1:",         "assign(_x,5)",
                       "assign(_z,_n)",    "if _z L3 L4", "L2:",
                       "assign(_x,_n)",    "goto L3",     "L3:",
                       "return(_self,_x)", "L4:",         "return(_self,_z)"};
  const Lines result = after(lines);
  Lines moved;
  for (std::size_t i = 0; i + 1 < result.size(); ++i)
    if (result[i] == "assign(_x, 5)") moved = {result[i - 1], result[i], result[i + 1]};
  ASSERT_EQ(moved.size(), 3u);
  EXPECT_EQ(moved[0][0], 'B') << "alone in its block";
  EXPECT_EQ(moved[2].substr(0, 4), "goto");
  EXPECT_EQ(edges(), "1>3 1>2 2>5 3>6 3>4 4>5") << "checked in both directions";
}

TEST_F(DelayAssignmentsTest, MovesAreReported) {
  use_locals({"_x", "_y", "_n"});
  build({"assign(_x,5)", "assign(_y,_n)", "return(_self,add(_x,_y))"});
  const std::string text = debug_text([] { elim_dead_assigns(true, false); });
  for (const char *part : {"\n\n\t\t\t---------- ENTERING 'delay_assignments' ----------\n",
                           "\n\tBB 1 (line 1): Considering delaying x = 5;\n",
                           "\n\tDelaying assignment to '_x' from BB 1 to BB 1\n"
                           "\tInserting   'x = 5;'\n\tin front of 'return x+y;'\n"})
    EXPECT_NE(text.find(part), std::string::npos) << part << text;
}

TEST_F(DelayAssignmentsTest, ASplitEdgeHasTheSetsOfItsEnd) {
  use_locals({"_x", "_n"});
  build({"if _n L1 L2", "L1:", "goto L2", "L2:", "return(_self,_x)"});
  sym_split();
  find_live_variables(LiveFor::DEAD_CODE);
  BB *first = state.first_bb;
  BB *to = single_edge(first->next->succs);
  BB *between = split_edge(first, to);
  EXPECT_EQ(first->next, between);
  EXPECT_EQ(between->dfn, 2);
  EXPECT_EQ(names(live_in(between)), "x");
  EXPECT_EQ(names(live_out(between)), "x");
  EXPECT_EQ(state.num_blocks, 4);
  EXPECT_EQ(graph(), (Lines{"B1:", "if _n B3 B2", "B2:", "goto B4", "B3:", "goto B4",
                            "B4:", "return(_self, _x)"}));
  EXPECT_EQ(edges(), "1>3 1>2 2>4 3>4");
}

} // namespace
} // namespace velkor
