// Steps of pointers and the accesses that take them.
#include "core/failure.h"
#include "loops/propagate_increments.h"
#include "storage/storage_rows.h"

namespace velkor {
namespace {

class PropagateIncrementsTest : public StorageRowTest {
protected:
  PropagateIncrementsTest() {
    options.opt_target_mode = 0;
    use_pass({"_x", "_y", "_n", "_p", "_q", "_cp", "_i"}, [] {
      sym_split();
      propagate_increments();
    });
  }
};

TEST_F(PropagateIncrementsTest, TheNearestAccessTakesTheStep) {
  expect_block({"assign(_x,deref(_p))", "assign(_y,_x)", "assign(_p,add(_p,4))"},
               {"assign(_x, deref(increment(_p, 4)))", "assign(_y, _x)"});
  expect_block({"assign(_p,add(_p,4))", "assign(_y,_x)", "assign(_x,deref(_p))"},
               {"assign(_y, _x)", "assign(_x, deref(assign(_p, add(_p, 4))))"});
  expect_block({"assign(_x,deref(add(_p,4)))", "assign(_p,add(_p,4))"},
               {"assign(_x, deref(assign(_p, add(_p, 4))))"});
  expect_block({"assign(_p,add(_p,4))", "assign(_x,deref(add(_p,-4)))"},
               {"assign(_x, deref(increment(_p, 4)))"});
  expect_block({"assign(_x,deref(_p))", "assign(_p,add(_p,-4))"},
               {"assign(_x, deref(decrement(_p, 4)))"});
}

TEST_F(PropagateIncrementsTest, StatementsWithTwoUsesAreSplit) {
  expect_block({"assign(deref(_p),add(deref(_p),1))", "assign(_p,add(_p,4))"},
               {"assign(A$1, add(deref(_p), 1))", "assign(deref(increment(_p, 4)), A$1)"});
  expect_block({"assign(_p,add(_p,4))", "assign(deref(add(_p,_n)),deref(_p))"},
               {"assign(A$1, deref(assign(_p, add(_p, 4))))", "assign(deref(add(_p, _n)), A$1)"});
  // The step of q comes behind p's, and must see the new statement.
  expect_block({"assign(_x,deref(_q))", "assign(deref(_p),add(deref(_p),deref(_q)))",
                "assign(_q,add(_q,4))", "assign(_p,add(_p,4))"},
               {"assign(_x, deref(_q))", "assign(A$1, add(deref(_p), deref(increment(_q, 4))))",
                "assign(deref(increment(_p, 4)), A$1)"});
}

// Steps that come by in turn see the statements as earlier ones have left them.
TEST_F(PropagateIncrementsTest, StepsBesideSteps) {
  expect_block({"assign(_p,add(_p,4))", "assign(_q,add(_q,4))", "assign(_x,deref(_p))",
                "assign(deref(_q),add(deref(_p),_x))"},
               {"assign(_x, deref(assign(_p, add(_p, 4))))",
                "assign(deref(assign(_q, add(_q, 4))), add(deref(_p), _x))"});
  expect_block({"assign(_x,deref(_p))", "assign(_p,add(_p,4))", "assign(_y,deref(_p))",
                "assign(_p,add(_p,4))"},
               {"assign(_x, deref(increment(_p, 4)))", "assign(_y, deref(increment(_p, 4)))"});
}

TEST_F(PropagateIncrementsTest, OtherStepsStay) {
  expect_kept({"assign(_x,add(deref(_p),deref(_p)))", "assign(_p,add(_p,4))"});
  expect_kept({"call(address(_fn),_p)", "assign(_p,add(_p,4))"});
  expect_kept({"logical_and(_n,assign(_x,deref(_p)))", "assign(_p,add(_p,4))"});
  expect_kept({"nassert(deref(_p))", "assign(_p,add(_p,4))"});
  expect_kept({"assign(_x,deref(_p))", "assign(_p,add(_p,5000))"});
  expect_kept({"assign(_x,deref(_p))", "call(address(_fn),address(_p))", "assign(_p,add(_p,4))"});
  expect_kept({"assign(_x,deref(_gp))", "assign(_gp,add(_gp,4))"});
  expect_kept({"assign(_x,deref(_p))", "xcall[\"setjmp\"](_n)", "assign(_p,add(_p,4))"});
  options.opt_target_mode = 1;
  expect_kept({"assign(_x,deref(_p))", "assign(_p,add(_p,4))"});
}

TEST_F(PropagateIncrementsTest, RangesOfSteps) {
  EXPECT_TRUE(auto_step_fits(4095, UNSIGNED_CHAR, 1));
  EXPECT_FALSE(auto_step_fits(4096, INT, 4));
  EXPECT_TRUE(auto_step_fits(-255, CHAR, 1));
  EXPECT_FALSE(auto_step_fits(256, SHORT, 2));
  EXPECT_FALSE(auto_step_fits(8, DOUBLE, 8));
  options.opt_target_mode = 1;
  EXPECT_FALSE(auto_step_fits(4, INT, 4));
}

TEST_F(PropagateIncrementsTest, StepsCrossBlocksThatEveryWayRunsThrough) {
  const auto region = [](const char *head, const char *arm, const char *join) {
    return Lines{head,
                 "if _n L1 L2",
                 "L1:",
                 arm,
                 "goto L2",
                 "L2:",
                 join,
                 "assign(_p,add(_p,4))",
                 "return(_self,_x)"};
  };
  EXPECT_EQ(after(region("assign(_x,deref(_p))", "assign(_g1,1)", "assign(_g2,1)")),
            (Lines{"B1:", "assign(_x, deref(increment(_p, 4)))", "if _n B2 B3", "B2:",
                   "assign(_g1, 1)", "goto B3", "B3:", "assign(_g2, 1)", "return(_self, _x)"}));
  // An access that only some ways run through stops the search.
  EXPECT_EQ(after(region("assign(_x,0)", "assign(_x,deref(_p))", "assign(_g2,1)")),
            (Lines{"B1:", "assign(_x, 0)", "if _n B2 B3", "B2:", "assign(_x, deref(_p))", "goto B3",
                   "B3:", "assign(_g2, 1)", "assign(_p, add(_p, 4))", "return(_self, _x)"}));
  EXPECT_EQ(after({"assign(_p,add(_p,4))", "if _n L1 L2", "L1:", "assign(_g1,1)", "goto L2",
                   "L2:", "return(_self,deref(_p))"}),
            (Lines{"B1:", "if _n B2 B3", "B2:", "assign(_g1, 1)", "goto B3",
                   "B3:", "return(_self, deref(assign(_p, add(_p, 4))))"}));
}

TEST_F(PropagateIncrementsTest, AStepGoesAroundTheBackEdge) {
  options.debug_level = 1;
  use_locals({"_x", "_n", "_p", "_i"});
  build({"assign(_x,0)", "goto L1", "L1:", "assign(_x,deref(_p))", "if _x L4 L3",
         "L4:", "assign(_g1,deref(add(_p,8)))", "goto L3", "L3:", "assign(_p,add(_p,4))",
         "assign(_n,add(_n,-1))", "if _n L1 L2", "L2:", "return(_self,deref(_p))"});
  sym_split();
  const std::string text = debug_text(propagate_increments);
  options.debug_level = 0;
  EXPECT_EQ(graph(), (Lines{"B1:", "assign(_p, add(_p, -4))", "goto B2",
                            "B2:", "assign(_x, deref(assign(_p, add(_p, 4))))", "if _x B3 B4",
                            "B3:", "assign(_g1, deref(add(_p, 8)))", "goto B4",
                            "B4:", "assign(_n, add(_n, -1))", "if _n B2 B5",
                            "B5:", "return(_self, deref(assign(_p, add(_p, 4))))"}))
      << text;
  for (const char *part : {"\n\n\t\t\t---------- ENTERING 'propagate_increments' --------\n",
                           "\n\tBB->DFN [2-4] with pre-header 1 and exit 5\n"
                           "\tAssignment propagated around back edge of loop: p = p+4;\n"
                           "\t(Original assignment has not yet been removed.)\n"})
    EXPECT_NE(text.find(part), std::string::npos) << part << text;
}

} // namespace
} // namespace velkor
