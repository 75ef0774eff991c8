// Control flow inside of statements made explicit.
#include "simplify/sequencing.h"
#include "simplify/statement_rows.h"
#include "simplify/struct_values.h"

namespace velkor {
namespace {

class SequencingTest : public StatementRowTest {
protected:
  SequencingTest() {
    for (const char *line :
         {"symbol _s1 auto struct tag=_st_tag", "symbol _s2 auto struct tag=_st_tag",
          "symbol _vy auto int volatile", "symbol _vst auto struct tag=_st_tag volatile"}) {
      std::string error;
      EXPECT_TRUE(symbols.declare(line, 2, error)) << line << ": " << error;
    }
  }

  // The statements, in order of execution, sequenced as they come from the reader.
  Lines sequenced(const Lines &input) {
    state.statements = nullptr;
    state.label_counter = state.temp_counter = 0;
    state.temp_syms = nullptr;
    std::int16_t number = 0;
    for (const std::string &row : input) {
      ++number;
      NODE *item = simplify_tree(statement(row));
      state.statements = list_cons(item, state.statements, number, number);
    }
    sequence_statements();
    state.statements = list_reverse_onto(state.statements, nullptr);
    Lines lines;
    for (const LIST *cell = state.statements; cell; cell = cell->next)
      lines.push_back(line(cell->item));
    return lines;
  }

  struct Row {
    Lines input;
    Lines output;
    int level = 1;
  };

  void expect_statements(const std::vector<Row> &rows) {
    for (const Row &row : rows) {
      options.opt_level = row.level;
      EXPECT_EQ(sequenced(row.input), row.output) << "of " << row.input.front();
    }
  }
};

TEST_F(SequencingTest, Statements) {
  expect_statements({
      {{"logical_and(_x, ucall(address(_fn)))"},
       {"if _x N1 N2", "N1:", "ucall(address(_fn))", "N2:"}},
      {{"logical_or(_x, ucall(address(_fn)))"},
       {"if _x N2 N1", "N1:", "ucall(address(_fn))", "N2:"}},
      {{"conditional:int(_x, alternatives:int(ucall(address(_fn)), ucall(address(_fm))))"},
       {"if _x N1 N2", "N1:", "ucall(address(_fn))", "goto N3", "N2:", "ucall(address(_fm))",
        "N3:"}},
      {{"comma_op(ucall(address(_fn)), assign(_x, 1))"}, {"ucall(address(_fn))", "assign(_x, 1)"}},
      {{"increment(_g1, 1)"}, {"asg_add(_g1, 1)"}},
      {{"decrement(_x, 1)"}, {"assign(_x, add(_x, -1))"}},
      {{"_x", "add(_x, _y)", "assign(_x, _x)"}, {}}, // nothing is left
      {{"_vol"}, {"_vol"}},
  });
}

TEST_F(SequencingTest, BranchesOfTheSource) {
  expect_statements({
      {{"cbranch(_x, L1)", "branch(L2)", "L1:"}, {"if _x L2 L1", "L1:"}},
      {{"cbranch(_x, L1)", "L2:"}, {"if _x L2 L1", "L2:"}},
      {{"cbranch(_x, L1)", "assign(_y, 1)", "L1:"}, {"if _x N1 L1", "N1:", "assign(_y, 1)", "L1:"}},
      {{"branch(L1)", "branch(L2)"}, {"goto L1", "goto L2"}},
      // the one IF takes its own branches into account
      {{"cbranch(logical_and(_x, _y), L1)", "branch(L2)"}, {"if _x N1 L1", "N1:", "if _y L2 L1"}},
  });
}

TEST_F(SequencingTest, Tests) {
  expect_statements({
      {{"cbranch(logical_or(_x, ucall(address(_fn))), L1)", "L2:"},
       {"if _x L2 N1", "N1:", "if ucall(address(_fn)) L2 L1", "L2:"}},
      {{"cbranch(comma_op(ucall(address(_fn)), _x), L1)", "L2:"},
       {"ucall(address(_fn))", "if _x L2 L1", "L2:"}},
      {{"cbranch(conditional(_x, alternatives(_y, _z)), L1)", "L2:"},
       {"if _x N1 N2", "N1:", "if _y L2 L1", "N2:", "if _z L2 L1", "L2:"}},
      {{"cbranch(eq(_p, pconv:int*(0)), L1)", "L2:"}, {"if _p L1 L2", "L2:"}},
      {{"cbranch(ne(_p, pconv:int*(0)), L1)", "L2:"}, {"if _p L2 L1", "L2:"}},
      {{"cbranch(assign(_c, sconv:char(lt(_x, _y))), L1)", "L2:"},
       {"if lt(_x, _y) N1 N2", "N1:", "assign(_c, 1:char)", "goto L2", "N2:", "assign(_c, 0:char)",
        "goto L1", "L2:"}},
      {{"cbranch(call(address(_fn), logical_and(_x, _y)), L1)", "L2:"},
       {"assign(S$2, 0)", "if _x N1 N3", "N1:", "if _y N2 N3", "N2:", "assign(S$2, 1)",
        "N3:", "assign(S$1, S$2)", "if call(address(_fn), S$1) L2 L1", "L2:"}},
      {{"cbranch(add(_x, logical_and(_y, ucall(address(_fn)))), L1)", "L2:"},
       {"assign(S$2, 0)", "if _y N1 N3", "N1:", "if ucall(address(_fn)) N2 N3",
        "N2:", "assign(S$2, 1)", "N3:", "assign(S$1, S$2)", "if add(S$1, _x) L2 L1", "L2:"}},
      // a constant is seen when its turn comes
      {{"cbranch(conditional(_x, alternatives(3, ucall(address(_fn)))), L1)", "L2:"},
       {"if _x N1 N2", "N1:", "goto L2", "N2:", "if ucall(address(_fn)) L2 L1", "L2:"}},
  });
}

TEST_F(SequencingTest, ValuesOfLogicalOperators) {
  expect_statements({
      {{"assign(_x, logical_and(_y, ucall(address(_fn))))"},
       {"assign(S$1, 0)", "if _y N1 N3", "N1:", "if ucall(address(_fn)) N2 N3",
        "N2:", "assign(S$1, 1)", "N3:", "assign(_x, S$1)"}},
      {{"return(_self, logical_or(_y, ucall(address(_fn))))"},
       {"assign(S$1, 1)", "if _y N3 N1", "N1:", "if ucall(address(_fn)) N3 N2",
        "N2:", "assign(S$1, 0)", "N3:", "return(_self, S$1)"}},
      {{"asg_divide(_d, logical_or(_x, ucall(address(_fn))))"},
       {"assign(S$1, +1.0)", "if _x N3 N1", "N1:", "if ucall(address(_fn)) N3 N2",
        "N2:", "assign(S$1, +0.0)", "N3:", "asg_divide(_d, S$1)"}},
      {{"asg_add(_x, logical_and(_y, ucall(address(_fn))))"},
       {"if _y N1 N2", "N1:", "asg_add(_x, ne(ucall(address(_fn)), 0))", "N2:"}},
      {{"asg_or(_x, logical_or(_y, ucall(address(_fn))))"},
       {"if _y N2 N1", "N1:", "if ucall(address(_fn)) N2 N3", "N2:", "asg_or(_x, 1)", "N3:"}},
      {{"asg_multiply(_x, logical_and(_y, ucall(address(_fn))))"},
       {"if _y N1 N2", "N1:", "if ucall(address(_fn)) N3 N2", "N2:", "assign(_x, 0)", "N3:"}},
      {{"asg_multiply(_c, logical_or(_y, ucall(address(_fn))))"},
       {"if _y N3 N1", "N1:", "if ucall(address(_fn)) N3 N2", "N2:", "assign(_c, 0:char)", "N3:"}},
      {{"assign(_z, asg_subtract(_x, logical_and(_y, ucall(address(_fn)))))"},
       {"if _y N1 N2", "N1:", "asg_subtract(_x, ne(ucall(address(_fn)), 0))",
        "N2:", "assign(_z, _x)"}},
      // the target has control flow of its own
      {{"assign(deref(add(_p, conditional(_x, alternatives(4, ucall(address(_fn)))))), "
        "logical_and(_y, ucall(address(_fm))))"},
       {"assign(S$1, 0)", "if _y N1 N3", "N1:", "if ucall(address(_fm)) N2 N3",
        "N2:", "assign(S$1, 1)", "N3:", "if _x N4 N5", "N4:", "assign(S$2, 4)", "goto N6",
        "N5:", "assign(S$2, ucall(address(_fn)))", "N6:", "assign(deref(add:int*(S$2, _p)), S$1)"}},
      {{"assign(arrow(increment(_sp, 12), _b3), logical_or(_y, ucall(address(_fm))))"},
       {"assign(S$1, 1:unsigned)", "if _y N3 N1", "N1:", "if ucall(address(_fm)) N3 N2",
        "N2:", "assign(S$1, 0:unsigned)", "N3:", "assign(S$2, _sp)", "assign(_sp, add(_sp, 12))",
        "assign(arrow(S$2, _b3), S$1)"}},
      // a volatile target is no simple one
      {{"asg_add(_vol, logical_and(_y, ucall(address(_fn))))"},
       {"assign(S$2, 0)", "if _y N1 N3", "N1:", "if ucall(address(_fn)) N2 N3",
        "N2:", "assign(S$2, 1)", "N3:", "assign(S$1, S$2)", "asg_add(_vol, S$1)"}},
      {{"asg_add(deref(_p), logical_or(_y, ucall(address(_fn))))"},
       {"assign(S$2, 1)", "if _y N3 N1", "N1:", "if ucall(address(_fn)) N3 N2",
        "N2:", "assign(S$2, 0)", "N3:", "assign(S$1, S$2)", "asg_add(deref(_p), S$1)"}},
  });
}

TEST_F(SequencingTest, ValuesOfConditionals) {
  expect_statements({
      {{"return(_self, conditional(_x, alternatives(_y, _z)))"},
       {"if _x N1 N2", "N1:", "return(_self, _y)", "N2:", "return(_self, _z)"}},
      {{"assign(_x, conditional(_y, alternatives(ucall(address(_fn)), _z)))"},
       {"if _y N1 N2", "N1:", "assign(_x, ucall(address(_fn)))", "goto N3", "N2:", "assign(_x, _z)",
        "N3:"}},
      {{"assign(_x, conditional(_y, alternatives(_x, _z)))"},
       {"if _y N1 N2", "N1:", "goto N3", "N2:", "assign(_x, _z)", "N3:"}},
      // not so where the ? cuts what it takes from the target
      {{"assign(_x, conditional:char(_y, alternatives:char(_x, _z)))"},
       {"if _y N1 N2", "N1:", "assign(_x, sconv:char(_x))", "goto N3",
        "N2:", "assign(_x, sconv:char(_z))", "N3:"}},
      {{"assign(_x, conditional(_y, alternatives(_z, _x)))"},
       {"if _y N1 N2", "N1:", "assign(_x, _z)", "goto N3", "N2:", "N3:"}},
      {{"assign(deref(_p), conditional(_y, alternatives(_z, 5)))"},
       {"if _y N1 N2", "N1:", "assign(deref(_p), _z)", "goto N3", "N2:", "assign(deref(_p), 5)",
        "N3:"}},
      {{"assign(deref(add(_p, 4)), conditional(_y, alternatives(_z, 5)))"},
       {"if _y N1 N2", "N1:", "assign(S$1, _z)", "goto N3", "N2:", "assign(S$1, 5)",
        "N3:", "assign(deref(add(_p, 4)), S$1)"}},
      {{"assign(_vol, conditional(_y, alternatives(_z, 5)))"},
       {"if _y N1 N2", "N1:", "assign(S$1, _z)", "goto N3", "N2:", "assign(S$1, 5)",
        "N3:", "assign(_vol, S$1)"}},
      {{"assign(_z, assign(_x, conditional(_y, alternatives(_g1, 5))))"},
       {"if _y N1 N2", "N1:", "assign(_x, _g1)", "goto N3", "N2:", "assign(_x, 5)",
        "N3:", "assign(_z, _x)"}},
      {{"assign(_z, add(_x, conditional(_y, alternatives(_g1, 5))))"},
       {"if _y N1 N2", "N1:", "assign(S$1, _g1)", "goto N3", "N2:", "assign(S$1, 5)",
        "N3:", "assign(_z, add(S$1, _x))"}},
      // an arm that lost its conversion gets it back
      {{"assign(_d, conditional:unsigned(_y, alternatives:unsigned(_u, _c)))"},
       {"if _y N1 N2", "N1:", "assign(_d, _u)", "goto N3", "N2:", "assign(_d, sconv:unsigned(_c))",
        "N3:"}},
  });
}

TEST_F(SequencingTest, Increments) {
  expect_statements({
      {{"assign(_x, increment(_y, 1))"}, {"assign(_x, _y)", "assign(_y, add(_y, 1))"}},
      {{"assign(_x, decrement(_g1, 1))"}, {"assign(_x, _g1)", "asg_add(_g1, -1)"}},
      {{"assign(_x, increment(_x, 1))"}, {"assign(_x, increment(_x, 1))"}},
      {{"assign(_x, increment(_uc, 1:uchar))"}, {"assign(_x, increment(_uc, 1:uchar))"}},
      {{"return(_self, increment(_y, 1))"}, {"return(_self, increment(_y, 1))"}},
      // the value of the inner assignment is the old one
      {{"assign(_z, assign(_x, increment(_y, 1)))"}, {"assign(_z, assign(_x, increment(_y, 1)))"}},
      // a volatile object is read once
      {{"assign(_x, increment(_vy, 1))"}, {"assign(_x, increment(_vy, 1))"}},
  });
}

TEST_F(SequencingTest, StructValues) {
  expect_statements({
      {{"stasg[tag=_st_tag](_st, conditional(_x, alternatives(_s1, _s2)))"},
       {"if _x N1 N2", "N1:", "stasg[tag=_st_tag](_st, _s1)", "goto N3",
        "N2:", "stasg[tag=_st_tag](_st, _s2)", "N3:"}},
      {{"call(address(_fn), starg[tag=_st_tag](conditional(_x, alternatives(_s1, _s2))))"},
       {"if _x N1 N2", "N1:", "assign(S$1, address(_s1))", "goto N3",
        "N2:", "assign(S$1, address(_s2))",
        "N3:", "call(address(_fn), starg[tag=_st_tag](deref[size=96](S$1)))"}},
      {{"assign(_x, member(conditional(_y, alternatives(_s1, "
        "stcall:struct[tag=_st_tag](address(_fn), 1))), _m))"},
       {"if _y N1 N2", "N1:", "assign(S$2, address(_s1))", "goto N3",
        "N2:", "stasg[tag=_st_tag](S$1, stcall:struct[tag=_st_tag](address(_fn), 1))",
        "assign(S$2, address(S$1))", "N3:", "assign(_x, member(deref[size=96](S$2), _m))"}},
      {{"assign(_x, member(conditional(_y, alternatives(stasg[tag=_st_tag](_s1, _s2), _st)), _m))"},
       {"if _y N1 N2", "N1:", "assign(S$1, address(_s1))",
        "stasg[tag=_st_tag](deref[size=96](S$1), _s2)", "assign(S$2, S$1)", "goto N3",
        "N2:", "assign(S$2, address(_st))", "N3:", "assign(_x, member(deref[size=96](S$2), _m))"}},
  });
}

// A field is going to be read more than once, its address is evaluated once.
TEST_F(SequencingTest, BasesOfBitFields) {
  expect_statements({
      {{"assign(arrow(ucall:struct*(address(_fn)), _b3), 1:unsigned)"},
       {"assign(S$1, ucall:struct*(address(_fn)))", "assign(arrow(S$1, _b3), 1:unsigned)"}},
      {{"assign(_u, member(ustcall:struct[tag=_st_tag](address(_fn)), _b3))"},
       {"stasg[tag=_st_tag](S$1, ustcall:struct[tag=_st_tag](address(_fn)))",
        "assign(S$2, address(S$1))", "assign(_u, arrow(S$2, _b3))"}},
      {{"assign(arrow(ucall:struct*(address(_fn)), _m), 1)"},
       {"assign(arrow(ucall:struct*(address(_fn)), _m), 1)"}},
      {{"assign(arrow(ucall:struct*(address(_fn)), _b3), 1:unsigned)"},
       {"assign(arrow(ucall:struct*(address(_fn)), _b3), 1:unsigned)"},
       0},
      {{"assign(member(_vst, _b3), 1:unsigned)"},
       {"assign(member[volatile](_vst, _b3), 1:unsigned)"}},
  });
}

TEST_F(SequencingTest, CallsThatNeverReturn) {
  fun_find_or_add("exit")->flags |= FUN_never_returns;
  expect_statements({
      {{"call(address(_exit), 1)", "assign(_x, 1)"},
       {"call(address(_exit), 1)", "comment ***\t; the preceding call never returns",
        "N1:", "goto N1", "assign(_x, 1)"}},
      {{"call(address(_exit), 1)", "assign(_x, 1)"},
       {"call(address(_exit), 1)", "assign(_x, 1)"},
       0},
  });
}

TEST_F(SequencingTest, EmittedStatementsKeepTheLineNumbers) {
  sequenced({"assign(_x, 1)", "logical_and(_y, ucall(address(_fn)))", "assign(_y, 1)"});
  std::vector<int> numbers;
  for (const LIST *cell = state.statements; cell; cell = cell->next) {
    EXPECT_EQ(cell->line, cell->line2);
    numbers.push_back(cell->line);
  }
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 2, 2, 2, 3}));
}

TEST_F(SequencingTest, SizesOfStructValues) {
  EXPECT_EQ(struct_value_size(tree("_st")), 96);
  EXPECT_EQ(struct_value_size(tree("member(_st, _m)")), 32);
  EXPECT_EQ(struct_value_size(tree("deref[size=96](_sp)")), 96);
  EXPECT_EQ(struct_value_size(tree("comma_op(_x, _st)")), 96);
  EXPECT_EQ(struct_value_size(tree("conditional(_x, alternatives(_st, _s1))")), 96);
  EXPECT_EQ(struct_value_size(tree("add(_x, _y)")), -1);
}

TEST_F(SequencingTest, AStructureIsNoTruthValue) {
  for (const char *op : {"logical_and", "logical_or"}) {
    const std::string value = std::string(op) + "(_x, ucall(address(_fn)))";
    testing::internal::CaptureStdout();
    EXPECT_ANY_THROW(sequenced({"stasg[tag=_st_tag](_st, " + value + ")"}));
    const std::string routine = op[8] == 'a' ? "SEQ_ANDAND_FOR_RHS" : "SEQ_OROR_FOR_RHS";
    const std::string message = "!!! Unexpected case in " + routine + ", 98 !!!\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, message.size()), message);
  }
}

} // namespace
} // namespace velkor
