// Loops that do nothing but count.
#include "loops/empty_loops.h"

#include "cfg/check_function.h"
#include "cfg/graph_rows.h"
#include "cfg/simpcfg.h"
#include "loops/touched_by.h"

namespace velkor {
namespace {

class EmptyLoopTest : public GraphRowTest {
protected:
  // do { statements } while (condition), entered behind the given statements; what the loop's block
  // has become, or none when it still is a loop.
  Lines removed(const Lines &ahead, const Lines &statements, const std::string &condition,
                bool guarded = false) {
    Lines input = ahead;
    input.push_back("L1:");
    input.insert(input.end(), statements.begin(), statements.end());
    input.insert(input.end(), {"if " + condition + " L1 L2", "L2:", "return(_self,_x)"});
    build(input);
    BB *head = state.first_bb->next;
    if (guarded) head->loop_flags = loop_guarded;
    if (!remove_empty_loop(head)) return {};
    check_function("remove_empty_loop");
    EXPECT_EQ(single_edge(head->preds), state.first_bb);
    EXPECT_EQ(head->loop_flags, 0);
    Lines lines;
    for (const LIST *cell = head->trees; cell; cell = cell->next)
      lines.push_back(graph_line(cell->item));
    return lines;
  }
};

const Lines nothing;

TEST_F(EmptyLoopTest, CountersThatRunDownToZero) {
  const Lines left = {"assign(_y, 3)", "assign(_n, 0)", "goto B3"};
  for (const char *condition : {"asg_add(_n,-1)", "asg_subtract(_n,1)", "assign(_n,subtract(_n,1))",
                                "assign(_n,add(_n,-1))"})
    EXPECT_EQ(removed({"assign(_n,_z)"}, {"assign(_y,3)"}, condition), left) << condition;
  for (const char *condition : {"asg_add(_n,-2)", "asg_add(_n,1)", "asg_subtract(_n,_z)",
                                "assign(_n,subtract(_z,1))", "asg_add(_vol,-1)", "_n"})
    EXPECT_EQ(removed({"assign(_n,_z)"}, {"assign(_y,3)"}, condition), nothing) << condition;
}

TEST_F(EmptyLoopTest, StatementsThatCountMoreThanOnce) {
  const auto with = [&](const std::string &statement) {
    return removed({"assign(_n,_z)"}, {statement}, "asg_add(_n,-1)");
  };
  for (const char *harmless : {"assign(_y,3)", "assign(member(_st,_m),3)", "assign(_g1,3)"})
    EXPECT_NE(with(harmless), nothing) << harmless;
  for (const char *telling :
       {"ucall(address(_fn))", "assign(_y,_z)", "assign(_y,add(_y,1))", "assign(_vol,1)",
        "assign(deref(_p),1)", "assign(_n,7)", "asg_add(_y,1)"})
    EXPECT_EQ(with(telling), nothing) << telling;
}

TEST_F(EmptyLoopTest, CountersThatRunUpToABound) {
  const Lines count = {"assign(_i,add(_i,1))"};
  const Lines zero = {"assign(_i,0)"};
  EXPECT_EQ(removed(zero, count, "lt(_i,10)"),
            (Lines{"assign(_i, add(_i, 1))", "assign(_i, 10)", "goto B3"}));
  EXPECT_EQ(removed(zero, count, "le(_i,10)")[1], "assign(_i, 11)");
  EXPECT_EQ(removed({"assign(_u,0)"}, {"assign:unsigned(_u,add:unsigned(_u,1))"}, "ult(_u,10)")[1],
            "assign(_u, 10)");
  EXPECT_EQ(removed(nothing, count, "lt(_i,_n)", true)[1], "assign(_i, _n)");
  EXPECT_EQ(removed(nothing, count, "le(_i,_n)", true)[1], "assign(_i, add(_n, 1))");
}

TEST_F(EmptyLoopTest, BoundsThatMayNotBeWhereTheLoopEnds) {
  const Lines count = {"assign(_i,add(_i,1))"};
  EXPECT_EQ(removed(nothing, count, "lt(_i,10)"), nothing) << "may be entered beyond the bound";
  EXPECT_EQ(removed({"assign(_i,10)"}, count, "lt(_i,10)"), nothing);
  EXPECT_EQ(removed({"assign(_i,0)", "assign(_i,_n)"}, count, "lt(_i,10)"), nothing);
  EXPECT_EQ(removed({"assign(_i,0)", "ucall(address(_fn))"}, count, "lt(_i,10)"), nothing);
  EXPECT_EQ(removed({"assign(_i,0)"}, count, "lt(_i,_n)"), nothing);
  EXPECT_EQ(removed(nothing, count, "lt(_i,ucall(address(_fn)))", true), nothing);
  EXPECT_EQ(removed(nothing, count, "lt(_i,_vol)", true), nothing);
  EXPECT_EQ(removed(nothing, count, "lt(_i,add(_i,5))", true), nothing);
  EXPECT_EQ(removed(nothing, {"assign(_n,4)", count[0]}, "lt(_i,_n)", true), nothing);
  EXPECT_EQ(removed(nothing, {"assign(_i,4)", count[0]}, "lt(_i,_n)", true), nothing);
  EXPECT_EQ(removed({"assign(_i,0)"}, count, "le(_i,2147483647)"), nothing) << "never ends";
  EXPECT_EQ(removed({"assign(_c,0)"}, {"assign:char(_c,add:char(_c,1))"}, "lt(_c,300)"), nothing)
      << "never ends";
  EXPECT_EQ(removed({"assign(_i,0)"}, {count[0], count[0]}, "lt(_i,10)"), nothing);
}

TEST_F(EmptyLoopTest, TheMarksOfAMachineLoopGoWithIt) {
  const Lines left = {"assign(_y, 3)", "assign(_n, 0)", "goto B3"};
  EXPECT_EQ(
      removed({"assign(_n,_z)"}, {"loop(_n,1)", "assign(_y,3)"}, "endloop(asg_subtract(_n,1),1)"),
      left);
  EXPECT_EQ(
      removed({"assign(_n,_z)"}, {"assign(_y,3)", "loop(_n,1)"}, "endloop(asg_subtract(_n,1),1)"),
      nothing)
      << "only at the head of the block";
}

TEST_F(EmptyLoopTest, TheListingAndTheDebugFileTellOfIt) {
  options.opt_source_comments = true;
  options.debug_level = 1;
  Lines left;
  const std::string text =
      debug_text([&] { left = removed({"assign(_n,_z)"}, {"loop(_n,1)"}, "asg_subtract(_n,1)"); });
  EXPECT_EQ(left, (Lines{"assign(_n, 0)",
                         "comment ;       ----------------------- /* EMPTY LOOP DELETED */ ",
                         "goto B3"}));
  EXPECT_NE(text.find("\t\tThe loop [2] is essentially empty.\n"), std::string::npos);
  const LIST *assignment = state.first_bb->next->trees;
  for (const LIST *cell = assignment; cell; cell = cell->next)
    EXPECT_EQ(cell->line2, 4) << "the line of the test";
}

TEST_F(EmptyLoopTest, TheCleanUpFindsThem) {
  options.opt_level = 2;
  build({"assign(_i,0)", "L1:", "if lt(_i,10) L2 L3", "L2:", "assign(_y,1)", "assign(_i,add(_i,1))",
         "goto L1", "L3:", "return(_self,_i)"});
  simpcfg(0);
  check_function("simpcfg");
  const Lines lines = graph();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "assign(_i, 10)"), 1);
}

TEST_F(EmptyLoopTest, WhatAStoreCanChange) {
  sym("_y")->fcp_flag = 1; // its address is known elsewhere
  const auto touched = [&](const char *value, const char *target) {
    return touched_by(tree(value), tree(target));
  };
  EXPECT_TRUE(touched("add(_z,_x)", "_x"));
  EXPECT_FALSE(touched("add(_z,_x)", "_i"));
  EXPECT_TRUE(touched("_st", "member(_st,_m)"));
  EXPECT_TRUE(touched("_y", "deref(_p)"));
  EXPECT_FALSE(touched("_x", "deref(_p)"));
  EXPECT_FALSE(touched("_y", "arrow(_sp,_m)")) << "no struct";
  EXPECT_TRUE(touched("deref(_p)", "_p"));
  EXPECT_FALSE(touched("deref(_p)", "_x"));
  EXPECT_TRUE(touched("deref(_p)", "_y")) << "the pointer may lead there";
  EXPECT_TRUE(touched("deref(_p)", "deref(_q)"));
  EXPECT_FALSE(touched("7", "_x"));
}

} // namespace
} // namespace velkor
