// The clean-up of the flow graph: what is deleted, merged, copied, threaded and folded.
#include "cfg/check_function.h"
#include "cfg/graph_rows.h"
#include "cfg/simpcfg.h"
#include "cfg/thread_jumps.h"

#include <algorithm>
#include <utility>

namespace velkor {
namespace {

class SimpcfgTest : public GraphRowTest {
protected:
  Lines cleaned(const Lines &input, int mode = 0, int level = 1) {
    options.opt_level = level;
    build(input);
    simpcfg(mode);
    check_function("simpcfg");
    static_cast<void>(edges()); // compares both directions
    return graph();
  }

  // Where a reference that leads through that many blocks that only jump goes; from 1, the first of
  // them, to jumps + 1, the block behind them.
  int end_of_chain(int jumps) {
    Lines lines = {"if _x L1 L99"};
    for (int i = 1; i <= jumps; ++i)
      lines.insert(lines.end(), {"L" + std::to_string(i) + ":", "goto L" + std::to_string(i + 1)});
    lines.insert(lines.end(), {"L" + std::to_string(jumps + 1) + ":", "assign(_y,1)",
                               "return(_self,_y)", "L99:", "return(_self,_z)"});
    build(lines);
    NODE *test = last_cell(state.first_bb)->item;
    const BB *first = target_block(test->right->left);
    const bool changed = thread_labels(test->right, state.first_bb);
    const int steps = target_block(test->right->left)->dfn - first->dfn;
    EXPECT_EQ(changed, steps != 0);
    return steps + 1;
  }
};

TEST_F(SimpcfgTest, StraightBlocksBecomeOne) {
  EXPECT_EQ(cleaned({"assign(_x,1)", "goto L2", "L1:", "assign(_y,2)", "goto L3",
                     "L2:", "assign(_z,3)", "goto L1", "L3:", "assign(_x,4)"}),
            (Lines{"B1:", "assign(_x, 1)", "assign(_z, 3)", "assign(_y, 2)", "assign(_x, 4)",
                   "ureturn(_self)"}));
  EXPECT_EQ(state.exit_bb, state.first_bb) << "the block that holds the return";
  // equal targets: what the test does stays
  EXPECT_EQ(cleaned({"if ucall(address(_fn)) L1 L1", "L1:", "assign(_x,1)"}),
            (Lines{"B1:", "ucall(address(_fn))", "assign(_x, 1)", "ureturn(_self)"}));
  EXPECT_EQ(cleaned({"if _x L1 L1", "L1:", "return(_self,_x)"}),
            (Lines{"B1:", "return(_self, _x)"}));
}

TEST_F(SimpcfgTest, UnreachedBlocksGo) {
  // the arm of a test that is always false, with all that only it leads to; the entry stays
  EXPECT_EQ(cleaned({"if 0 L1 L2", "L1:", "assign(_x,1)", "goto L3", "L3:", "assign(_x,2)",
                     "L2:", "return(_self,_x)"}),
            (Lines{"B1:", "return(_self, _x)"}));
  // a loop that nothing leads to
  EXPECT_EQ(cleaned({"if 1 L2 L1", "L1:", "assign(_x,1)", "if _y L1 L2", "L2:", "return(_self,1)"}),
            (Lines{"B1:", "return(_self, 1)"}));
}

TEST_F(SimpcfgTest, ManyUnreachedBlocksNeedNoStack) {
  Lines lines = {"if 0 L1 L30000"};
  for (int i = 1; i < 29999; ++i)
    lines.insert(lines.end(), {"L" + std::to_string(i) + ":", "assign(_x,1)",
                               "if _y L" + std::to_string(i + 1) + " L30000"});
  lines.insert(lines.end(), {"L29999:", "L30000:", "return(_self,_x)"});
  EXPECT_EQ(cleaned(lines), (Lines{"B1:", "return(_self, _x)"}));
}

TEST_F(SimpcfgTest, JumpsToJumpsAreFollowed) {
  EXPECT_EQ(end_of_chain(1), 2);
  EXPECT_EQ(end_of_chain(16), 17);
  EXPECT_EQ(end_of_chain(17), 1) << "a longer chain stays";
  // a circle of jumps ends where it closes
  const Lines circle = cleaned({"if _x L1 L4", "L1:", "goto L2", "L2:", "goto L3", "L3:", "goto L1",
                                "L4:", "return(_self,_x)"});
  EXPECT_EQ(circle, (Lines{"B1:", "if _x B3 B2", "B2:", "return(_self, _x)", "B3:", "goto B3"}));
}

TEST_F(SimpcfgTest, HeadsOfLoopsAreNotJumpedThrough) {
  const Lines input = {
      "if _x L1 L3", "L1:", "goto L2", "L2:", "return(_self,_y)", "L3:", "assign(_x,1)", "goto L1"};
  build(input);
  BB *jump = target_block(last_cell(state.first_bb)->item->right->left);
  ASSERT_EQ(jump->trees->item->op, BRANCH);
  jump->loop_flags = loop_guarded;
  simpcfg(1);
  EXPECT_EQ(last_cell(state.first_bb)->item->right->left->aux.label->bb, jump);
}

TEST_F(SimpcfgTest, SmallBlocksAreCopied) {
  const Lines input = {"if _x L1 L2",  "L1:",          "assign(_y,1)",    "if _z L3 L4",
                       "L2:",          "assign(_y,2)", "goto L3",         "L4:",
                       "assign(_y,3)", "L3:",          "return(_self,_y)"};
  // not into the block just ahead of it
  const Lines copied = {"B1:",
                        "if _x B3 B2",
                        "B2:",
                        "assign(_y, 2)",
                        "return(_self, _y)",
                        "B3:",
                        "assign(_y, 1)",
                        "if _z B5 B4",
                        "B4:",
                        "assign(_y, 3)",
                        "goto B5",
                        "B5:",
                        "return(_self, _y)"};
  EXPECT_EQ(cleaned(input), copied);
  const auto returns = [](const Lines &lines) {
    return std::count(lines.begin(), lines.end(), "return(_self, _y)");
  };
  EXPECT_EQ(returns(cleaned(input, 0, 0)), 1) << "not at level 0";
  EXPECT_EQ(returns(cleaned(input, 1)), 1) << "not in the last clean-up";
  options.opt_size = 1;
  EXPECT_EQ(returns(cleaned(input)), 1) << "not where size counts";
}

TEST_F(SimpcfgTest, LoopsAreRotated) {
  const Lines input = {"assign(_i,0)",
                       "L1:",
                       "if lt(_i,_n) L2 L3",
                       "L2:",
                       "ucall(address(_fn))",
                       "assign(_i,add(_i,1))",
                       "goto L1",
                       "L3:",
                       "return(_self,_i)"};
  const Lines rotated = {"B1:",
                         "assign(_i, 0)",
                         "if lt(_i, _n) B2 B3",
                         "B2:",
                         "ucall(address(_fn))",
                         "assign(_i, add(_i, 1))",
                         "if lt(_i, _n) B2 B3",
                         "B3:",
                         "return(_self, _i)"};
  EXPECT_EQ(cleaned(input), rotated);
  EXPECT_EQ(state.first_bb->next->loop_flags, 0) << "levels below 2 mark no heads";
  EXPECT_EQ(cleaned(input, 0, 2), rotated);
  EXPECT_EQ(state.first_bb->next->loop_flags, loop_guarded);
  // the test ahead is brought into the sense of the one at the bottom
  EXPECT_EQ(cleaned({"if ge(_i,_n) L3 L2", "L2:", "ucall(address(_fn))", "if lt(_i,_n) L2 L3",
                     "L3:", "return(_self,_i)"},
                    0, 2)[1],
            "if lt(_i, _n) B2 B3");
  EXPECT_EQ(state.first_bb->next->loop_flags, loop_guarded);
  cleaned({"if _x L3 L2", "L2:", "ucall(address(_fn))", "if _x L2 L3", "L3:", "return(_self,_i)"},
          0, 2);
  EXPECT_EQ(state.first_bb->next->loop_flags, 0) << "only a relation can be turned around";
}

TEST_F(SimpcfgTest, ImpliedTestsAreSkipped) {
  EXPECT_EQ(cleaned({"if gt(_x,3) L1 L2", "L1:", "if gt(_x,2) L3 L2", "L3:", "ucall(address(_fn))",
                     "L2:", "return(_self,add(_x,_y))"}),
            (Lines{"B1:", "if gt(_x, 3) B2 B3", "B2:", "ucall(address(_fn))", "goto B3",
                   "B3:", "return(_self, add(_x, _y))"}));
  // a test whose outcome does not matter
  EXPECT_EQ(cleaned({"if gt(_x,3) L1 L2", "L2:", "if gt(_x,2) L1 L3", "L3:", "ucall(address(_fn))",
                     "L1:", "return(_self,add(_x,_y))"}),
            (Lines{"B1:", "if gt(_x, 2) B3 B2", "B2:", "ucall(address(_fn))", "goto B3",
                   "B3:", "return(_self, add(_x, _y))"}));
  const Lines once = cleaned({"if _x L1 L2", "L1:", "if _x L3 L2", "L3:", "ucall(address(_fn))",
                              "L2:", "return(_self,add(_x,_y))"},
                             0, 0);
  EXPECT_EQ(std::count(once.begin(), once.end(), "if _x B3 B4"), 1) << "not at level 0";
}

TEST_F(SimpcfgTest, TestsWithEffectsStay) {
  for (const char *test : {"gt(ucall(address(_fn)),3)", "gt(_vol,3)", "gt(assign(_x,_y),3)"}) {
    const std::string condition = test;
    const Lines lines = cleaned({"if " + condition + " L1 L2", "L1:", "if " + condition + " L3 L2",
                                 "L3:", "ucall(address(_fm))", "L2:", "return(_self,add(_x,_y))"});
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string &line) { return line.starts_with("if "); }),
              2)
        << test;
  }
}

TEST_F(SimpcfgTest, TestsThatLeadInACircleEnd) {
  // Both loops come to each other with a known x; no way out of them is reached.
  const Lines lines = cleaned({"if _x L1 L4", "L1:", "if _x L2 L3", "L2:", "if _x L1 L3",
                               "L3:", "assign(_y,1)", "L4:", "return(_self,add(_x,_y))"});
  EXPECT_EQ(lines[1].substr(0, 5), "if _x");
  cleaned({"assign(_y,1)", "goto L1", "L1:", "if 1 L2 L3", "L2:", "goto L1",
           "L3:", "return(_self,_y)"});
  EXPECT_EQ(graph().back(), "goto B" + std::to_string(state.first_bb->prev->dfn));
}

TEST_F(SimpcfgTest, ConditionsAreClearedOfEffects) {
  EXPECT_EQ(cleaned({"if comma_op(ucall(address(_fn)),assign(_x,3)) L1 L2",
                     "L1:", "return(_self,_x)", "L2:", "return(_self,_y)"}),
            (Lines{"B1:", "ucall(address(_fn))", "assign(_x, 3)", "return(_self, _x)"}));
  // the value is what the object holds: 300 is 44 in a char
  EXPECT_EQ(
      cleaned({"switch(assign:uchar(_uc,300),comma(comma(case(300,L1),case(44,L2)),default(L3)))",
               "L1:", "return(_self,1)", "L2:", "return(_self,2)", "L3:", "return(_self,3)"}),
      (Lines{"B1:", "assign(_uc, 300)", "return(_self, 2)"}));
  // a bit field cuts the value further
  EXPECT_EQ(cleaned({"if assign:unsigned(member(_st,_b3),8) L1 L2", "L1:", "return(_self,_x)",
                     "L2:", "return(_self,_y)"}),
            (Lines{"B1:", "assign(member(_st, _b3), 8)", "return(_self, _y)"}));
}

TEST_F(SimpcfgTest, CasesThatDoNotMatterGo) {
  const auto with_cases = [](const std::string &selector, const std::string &list) {
    return Lines{"switch(" + selector + "," + list + ")",
                 "L1:",
                 "return(_self,add(_x,1))",
                 "L2:",
                 "return(_self,add(_x,2))",
                 "L3:",
                 "return(_self,add(_x,3))"};
  };
  const auto returned = [](int number) {
    return "return(_self, add(_x, " + std::to_string(number) + "))";
  };
  EXPECT_EQ(cleaned(with_cases(
                "_z", "comma(comma(comma(case(1,L1),case(2,L2)),case(3,L3)),default(L3))")),
            (Lines{"B1:", "switch _z 1=B2 2=B3 B4", "B2:", returned(1), "B3:", returned(2),
                   "B4:", returned(3)}));
  EXPECT_EQ(cleaned(with_cases(
                "_z", "comma(comma(comma(case(1,L3),case(2,L2)),case(3,L3)),default(L3))")),
            (Lines{"B1:", "if ne(_z, 2) B2 B3", "B2:", returned(3), "B3:", returned(2)}));
  EXPECT_EQ(
      cleaned(with_cases("ucall(address(_fn))", "comma(comma(case(1,L3),case(3,L3)),default(L3))")),
      (Lines{"B1:", "ucall(address(_fn))", returned(3)}));
  for (const auto &[selector, number] : {std::pair{"2", 2}, {"7", 3}})
    EXPECT_EQ(cleaned(with_cases(selector, "comma(comma(case(1,L1),case(2,L2)),default(L3))")),
              (Lines{"B1:", returned(number)}));
}

TEST_F(SimpcfgTest, EqualAndEmptyArmsAreDropped) {
  EXPECT_EQ(cleaned({"if _x L1 L2", "L1:", "assign(_y,1)", "goto L3", "L2:", "assign(_y,1)",
                     "L3:", "return(_self,add(_x,_y))"}),
            (Lines{"B1:", "assign(_y, 1)", "return(_self, add(_x, _y))"}));
  EXPECT_EQ(cleaned({"if ucall(address(_fn)) L1 L2", "L1:", "L2:", "return(_self,add(_x,_y))"}),
            (Lines{"B1:", "ucall(address(_fn))", "return(_self, add(_x, _y))"}));
  build({"if _x L1 L2", "L1:", "assign(_y,1)", "L2:", "return(_self,add(_x,_y))"});
  BB *arm = target_block(last_cell(state.first_bb)->item->right->left);
  erase_tree(arm->trees->item);
  arm->trees->item = make_asm('/', "; what was here"); // as propagation leaves it
  simpcfg(0);
  EXPECT_EQ(graph(), (Lines{"B1:", "comment ; what was here", "return(_self, add(_x, _y))"}));
}

TEST_F(SimpcfgTest, TheNextBlocksTestWillDo) {
  const Lines input = {"assign(_y,1)",
                       "L5:",
                       "if ucall(address(_fn)) L1 L2",
                       "L2:",
                       "if ucall(address(_fn)) L1 L2",
                       "L1:",
                       "return(_self,add(_x,_y))"};
  const auto calls = [](const Lines &lines) {
    return std::count_if(lines.begin(), lines.end(),
                         [](const std::string &line) { return line.starts_with("if ucall"); });
  };
  EXPECT_EQ(calls(cleaned(input)), 2);
  EXPECT_EQ(calls(cleaned(input, 1)), 1);
}

TEST_F(SimpcfgTest, AppendingKeepsEffects) {
  build({"if ucall(address(_fn)) L1 L2", "L1:", "assign(_y,1)", "L2:", "assign(_x,1)"});
  BB *entry = state.first_bb;
  LIST *tail = list_cons(tree("assign(_z,3)"), nullptr, 7, 7);
  entry->trees = append_statements(entry->trees, tail);
  EXPECT_EQ(graph_line(entry->trees->item), "ucall(address(_fn))");
  EXPECT_EQ(graph_line(entry->trees->next->item), "assign(_z, 3)");
  EXPECT_EQ(entry->trees->next->line, 7);
  EXPECT_EQ(entry->trees->next->next, nullptr);
}

// Whatever order the passes come in, a graph that is clean stays as it is.
TEST_F(SimpcfgTest, AgainChangesNothing) {
  const Lines input = {"assign(_i,0)",
                       "L1:",
                       "if lt(_i,_n) L2 L3",
                       "L2:",
                       "if gt(_i,3) L4 L5",
                       "L4:",
                       "ucall(address(_fn))",
                       "goto L6",
                       "L5:",
                       "assign(_x,add(_x,_i))",
                       "L6:",
                       "assign(_i,add(_i,1))",
                       "goto L1",
                       "L3:",
                       "return(_self,_x)"};
  for (int mode : {0, 1}) {
    const Lines once = cleaned(input, mode, 2);
    simpcfg(mode);
    EXPECT_EQ(graph(), once);
  }
}

} // namespace
} // namespace velkor
