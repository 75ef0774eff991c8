// What goes when nobody reads a variable any more, and what must stay; embedded assignments.
#include "scalar/dead_assignments.h"
#include "scalar/unnest_assignments.h"
#include "storage/storage_rows.h"

namespace velkor {
namespace {

class DeadAssignmentsTest : public StorageRowTest {
protected:
  DeadAssignmentsTest() { options.opt_target_mode = 0; }

  Lines clean(const Lines &lines, bool unnest = false) {
    build(lines);
    elim_dead_assigns(false, unnest);
    return graph();
  }

  // One block that ends in a return of _n; x is dead at its end, or alive with another return.
  void expect_statements(const Lines &input, const Lines &output,
                         const char *end = "return(_self, _n)") {
    use_locals({"_x", "_y", "_n", "_p", "_c", "_d"});
    Lines lines = input;
    lines.emplace_back(without_blanks(end));
    Lines expected = {"B1:"};
    expected.insert(expected.end(), output.begin(), output.end());
    expected.emplace_back(end);
    EXPECT_EQ(clean(lines), expected) << input[0];
  }

  // The statement alone in a block whose last statement is a jump.
  void expect_unnested(const char *input, const Lines &output) {
    use_locals({"_x", "_y", "_n", "_p", "_c"});
    build({input, "goto L1", "L1:", "return(_self,_x)"});
    unnest_block(state.first_bb);
    Lines expected = {"B1:"};
    expected.insert(expected.end(), output.begin(), output.end());
    for (const char *line : {"goto B2", "B2:", "return(_self, _x)"})
      expected.emplace_back(line);
    EXPECT_EQ(graph(), expected) << input;
  }

  static std::string without_blanks(const std::string &line) {
    std::string result;
    for (const char c : line)
      if (c != ' ') result += c;
    return result;
  }
};

TEST_F(DeadAssignmentsTest, DeadAssignmentsAreReportedAndGo) {
  use_locals({"_y", "_x"});
  build({"assign(_x,1)", "assign(_x,2)", "assign(_y,_x)", "return(_self,_x)"});
  const std::string text = debug_text([] { elim_dead_assigns(false, false); });
  EXPECT_EQ(graph(), (Lines{"B1:", "assign(_x, 2)", "return(_self, _x)"}));
  const auto at = [&](const char *part) { return text.find(part); };
  const std::size_t first = at("\n\n\t\t\t---------- ENTERING 'elim_dead_assigns' ----------\n"
                               "\n\t(3,3) DEAD 'ASG' TO CANDIDATE 0:    y = x;\n");
  EXPECT_NE(first, std::string::npos) << text;
  EXPECT_LT(first, at("\n\t(1,1) DEAD 'ASG' TO CANDIDATE 1:    x = 1;\n"));
  EXPECT_NE(at("\tNo references in the function for (0) '_y'\n"), std::string::npos) << text;
  EXPECT_EQ(state.scalar_syms, sym("_x"));
  EXPECT_FALSE(is_candidate(sym("_y")));
}

TEST_F(DeadAssignmentsTest, EffectsOfADeadValueStay) {
  expect_statements({"assign(_x,ucall(address(_fn)))"}, {"ucall(address(_fn))"});
  expect_statements({"assign(_x,_vol)"}, {"_vol"});
  expect_statements({"assign(_x,add(ucall(address(_fn)),_vol))"}, {"ucall(address(_fn))", "_vol"});
  expect_statements({"assign(_x,assign(_y,_n))", "assign(_g1,_y)"},
                    {"assign(_y, _n)", "assign(_g1, _y)"});
  expect_statements({"asg_divide(_x,ucall(address(_fn)))"}, {"ucall(address(_fn))"});
  expect_statements({"assign(_x,1)", "assign(_x,add(_x,1))"}, {});
  expect_statements({"assign(_g1,assign(_c,300))"}, {"assign(_g1, 44)"});
  expect_statements({"assign(_g1,asg_add(_x,_n))"}, {"assign(_g1, add(_x, _n))"});
  expect_statements({"assign(_g1,increment(_x,1))"}, {"assign(_g1, _x)"});
  expect_statements({"increment(_x,1)", "decrement(_y,1)"}, {});
}

TEST_F(DeadAssignmentsTest, WhatIsReadLaterStays) {
  expect_statements({"assign(_x,1)", "assign(_g1,_x)"}, {"assign(_x, 1)", "assign(_g1, _x)"});
  expect_statements({"asg_add(_x,1)"}, {"asg_add(_x, 1)"}, "return(_self, _x)");
  for (const char *statement : {"logical_and(_g1, assign(_x, 1))", "nassert(assign(_x, 1))",
                                "conditional(_g1, alternatives(assign(_x, 1), assign(_x, 2)))"})
    expect_statements({"assign(_x,_n)", without_blanks(statement)}, {"assign(_x, _n)", statement},
                      "return(_self, _x)");
}

TEST_F(DeadAssignmentsTest, UpdatesInALoopGoTogether) {
  use_locals({"_x", "_i", "_n"});
  const Lines loop = {"assign(_x,0)", "L1:", "assign(_x,add(_x,_i))",
                      "if _g1 L1 L2", "L2:", "return(_self,_n)"};
  EXPECT_EQ(clean(loop),
            (Lines{"B1:", "goto B2", "B2:", "if _g1 B2 B3", "B3:", "return(_self, _n)"}));
  EXPECT_EQ(state.scalar_syms, sym("_n"));
}

TEST_F(DeadAssignmentsTest, StepsThatTheMachineMakesStay) {
  const char *const kept[] = {"assign(deref(increment(_p, 4)), 0)",
                              "assign(deref(decrement(_p, 4)), 0)",
                              "assign(deref(assign(_p, add(_p, 4))), 0)"};
  const char *const rest[] = {"assign(deref(_p), 0)", "assign(deref(_p), 0)",
                              "assign(deref(add(_p, 4)), 0)"};
  for (int i = 0; i < 3; ++i) {
    options.opt_target_mode = 0;
    expect_statements({without_blanks(kept[i])}, {kept[i]});
    options.opt_target_mode = 1;
    expect_statements({without_blanks(kept[i])}, {rest[i]});
  }
  options.opt_target_mode = 0;
  expect_statements({"assign(deref(assign(_p,add(_p,_n))),0)"}, {"assign(deref(add(_p, _n)), 0)"});
}

TEST_F(DeadAssignmentsTest, StaticsAreWantedWhereTheFunctionMayRunAgain) {
  sym("_n")->sclass = C_STAT;
  const auto expect_first_kept = [&](bool kept, const char *between) {
    use_locals({"_n"});
    const std::string first = "assign(_n,1)";
    const Lines result = clean({first, between, "assign(_n,2)", "return(_self,0)"});
    EXPECT_EQ(result.size(), kept ? 5u : 4u) << between;
    EXPECT_EQ(result[result.size() - 2], "assign(_n, 2)") << "at the end";
  };
  expect_first_kept(false, "assign(_g1,2)");
  expect_first_kept(true, "ucall(address(_fn))");
  options.opt_assume_reentrant = 0;
  expect_first_kept(false, "call(address(_strlen),_cp)");
  expect_first_kept(true, "call(address(_exit),1)");
}

TEST_F(DeadAssignmentsTest, APrologueMayVanish) {
  make_parameter("_y", "_x");
  use_locals({"_x", "_n"});
  EXPECT_EQ(clean({"pcomma(assign(_x,_y),assign(_n,_y))", "return(_self,_n)"}),
            (Lines{"B1:", "assign(_n, _y)", "return(_self, _n)"}));
  use_locals({"_x", "_n"});
  EXPECT_EQ(clean({"pcomma(assign(_x,_y),assign(_n,_y))", "return(_self,0)"}),
            (Lines{"B1:", "return(_self, 0)"}));
}

TEST_F(DeadAssignmentsTest, ABlockThatComesToBeAJumpIsThreaded) {
  use_locals({"_x", "_n"});
  EXPECT_EQ(clean({"if _n L1 L2", "L1:", "assign(_x,1)", "goto L2", "L2:", "return(_self,_n)"}),
            (Lines{"B1:", "return(_self, _n)"}));
}

TEST_F(DeadAssignmentsTest, AdjacentAssignmentsMeetAndMerge) {
  expect_statements({"assign(_x,add(_n,1))", "assign(_y,5)", "assign(_x,multiply(_x,_n))"},
                    {"assign(_x, multiply(add(_n, 1), _n))"}, "return(_self, _x)");
}

TEST_F(DeadAssignmentsTest, EmbeddedAssignmentsComeInFront) {
  expect_unnested("call(address(_fn),assign(_x,5))", {"assign(_x, 5)", "call(address(_fn), _x)"});
  expect_unnested("assign(_g1,add(assign(_x,1),assign(_y,2)))",
                  {"assign(_y, 2)", "assign(_x, 1)", "assign(_g1, add(_x, _y))"});
  expect_unnested("assign(_g1,add(assign(_x,add(asg_add(_y,1),1)),2))",
                  {"asg_add(_y, 1)", "assign(_x, add(_y, 1))", "assign(_g1, add(_x, 2))"});
  expect_unnested("assign(_g1,add(comma_op(ucall(address(_fn)),assign(_x,_g2)),1))",
                  {"ucall(address(_fn))", "assign(_x, _g2)", "assign(_g1, add(_x, 1))"});
  expect_unnested("assign(deref(assign(_p,add(_p,4))),_n)",
                  {"assign(_p, add(_p, 4))", "assign(deref(_p), _n)"});
}

TEST_F(DeadAssignmentsTest, SomeAssignmentsStayEmbedded) {
  for (const char *statement :
       {"assign(_y, assign(_x, 5))", "logical_and(_g1, assign(_x, 1))",
        "assign(_g1, conditional(_n, alternatives(assign(_x, 1), 2)))",
        "ne(assign(_x, ucall(address(_fn))), 0)", "nassert(add(assign(_x, 1), 2))",
        "assign(_g1, add(assign(_vol, 1), 2))", "assign(_g2, increment(_x, 1))",
        "call(address(_fn), increment(_x, 1))", "logical_and(increment(_x, 1), _g1)"})
    expect_unnested(without_blanks(statement).c_str(), {statement});
}

TEST_F(DeadAssignmentsTest, StepsComeBehind) {
  expect_unnested("assign(deref(increment(_p,4)),_n)",
                  {"assign(deref(_p), _n)", "assign(_p, add(_p, 4))"});
  expect_unnested(
      "assign(_g1,add(decrement(_x,1),increment(_y,1)))",
      {"assign(_g1, add(_x, _y))", "assign(_x, add(_x, -1))", "assign(_y, add(_y, 1))"});
}

TEST_F(DeadAssignmentsTest, VariablesInMemoryMoveWhereNobodySeesIt) {
  expect_unnested("assign(_y,add(assign(_g1,5),_n))",
                  {"assign(_g1, 5)", "assign(_y, add(_g1, _n))"});
  expect_unnested("assign(_y,add(increment(_g1,1),_n))",
                  {"assign(_y, add(_g1, _n))", "asg_add(_g1, 1)"});
  for (const char *statement : {"assign(_y, add(assign(_g1, 5), ucall(address(_fn))))",
                                "assign(deref(add(_p, increment(_g1, 1))), ucall(address(_fn)))",
                                "assign(deref(add(_p, increment(_g1, 1))), _n)"})
    expect_unnested(without_blanks(statement).c_str(), {statement});
}

TEST_F(DeadAssignmentsTest, UnnestingRunsOnRequest) {
  use_locals({"_x", "_n", "_p"});
  const Lines lines = {"assign(deref(add(_p,increment(_n,1))),assign(_x,_g1))",
                       "return(_self,add(_n,_x))"};
  EXPECT_EQ(clean(lines).size(), 3u);
  EXPECT_EQ(clean(lines, true).size(), 4u);
}

} // namespace
} // namespace velkor
