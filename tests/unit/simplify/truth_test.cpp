// Trees that are only looked at as true or false.
#include "simplify/tree_rows.h"
#include "simplify/truth.h"

namespace velkor {
namespace {

class TruthTest : public TreeRowTest {
protected:
  TruthTest() {
    std::string error;
    EXPECT_TRUE(symbols.declare("symbol _s1 bit_field int size=1 offset=71", 2, error)) << error;
  }

  // The rows' trees as the tests of conditional branches.
  void expect_tests(const std::vector<TreeRow> &rows) {
    for (const TreeRow &row : rows) {
      const auto branch = [](const char *test) { return std::string("cbranch(") + test + ", L1)"; };
      const std::string input = branch(row.input);
      const std::string output = branch(row.output ? row.output : row.input);
      expect_rows({{input.c_str(), output.c_str(), row.level}});
    }
  }
};

TEST_F(TruthTest, ComparisonsAndConversions) {
  expect_tests({
      {"ne(_x, 0)", "_x"},
      {"ne(ne(_x, 0), 0)", "_x"},
      {"logical_not(logical_not(_x))", "_x"},
      {"ne(_x, _y)", nullptr},
      {"sconv:unsigned(_c)", "_c"},
      {"sconv:char(_x)", nullptr},
      {"sconv:int(_f)", nullptr},
  });
}

TEST_F(TruthTest, KnownValues) {
  expect_rows({
      {"cbranch(pconv:char*(0), L1)", "branch(L1)"},
      {"cbranch(bit_or(_x, 1), L1)", "1"},
      {"cbranch(logical_and(_x, 0), L1)", "branch(L1)"},
  });
  expect_tests({
      {"bit_or(ucall(address(_fn)), 1)", "comma_op(ucall(address(_fn)), 1)"},
      {"assign(member(_st, _b3), 8)", "comma_op(assign(member(_st, _b3), 8:unsigned), 0)"},
  });
}

TEST_F(TruthTest, SingleBits) {
  expect_tests({
      {"remainder(_x, 4)", "bit_and(_x, 3)"},
      {"remainder(_x, 6)", nullptr},
      {"bit_and(shift_right(_x, _y), 1)", "bit_and(shift_left(1, _y), _x)"},
      {"bit_and(shift_right(_x, 3), 1)", "bit_and(_x, 8)"},
      // as a char it would lose bits above 7
      {"bit_and:char(shift_right(_x, _y), 1:char)", "bit_and(shift_left(1, _y), _x)"},
      {"remainder(shift_right(_x, _y), 2)", "bit_and(shift_left(1, _y), _x)"},
      {"remainder(asg_or(deref(_p), 1), 4)", "comma_op(asg_or(deref(_p), 1), 1)"},
      {"shift_right(_x, 31)", "bit_and(_x, 0x80000000)"},
      {"shift_right(_u, 31)", "bit_and(_u, 0x80000000:unsigned)"},
      {"bit_and(bit_xor(_x, 6), 2)", "eq(bit_and(_x, 2), 0)"},
      // the form that the comparison takes when it is simplified itself
      {"bit_and(bit_xor(_u, 64:unsigned), 64:unsigned)", "eq(bit_and:int(_u, 64), 0)"},
      {"bit_and(bit_xor(_us, 32768), 32768)", "eq(sconv:ushort(shift_right:int(_us, 15)), 0)"},
      {"bit_and(bit_xor:int(_c, -2), 32768)", "eq(bit_and:int(_c, 128), 0)"},
      {"bit_xor(bit_and(_x, 4), 4)", "eq(bit_and(_x, 4), 0)"},
      {"bit_xor(lt(_x, _y), 1)", "ge(_x, _y)"},
      // 5 ^ 4 is not 0, though 5 has the bit
      {"bit_xor(_x, 4)", "ne(_x, 4)"},
  });
}

TEST_F(TruthTest, Differences) {
  expect_tests({
      {"subtract(_x, _y)", "ne(_x, _y)"},
      {"subtract:int(_p, _q)", "ne(_p, _q)"},
      {"bit_xor(_x, _y)", "ne(_x, _y)"},
      {"bit_xor:long(_x, _l)", nullptr},
      {"subtract:int(_f, _g)", nullptr}, // 0.5 - 0.25 is cut to 0
      {"negate(_x)", "_x"},
      {"abs(_x)", "_x"},
      {"negate:int(_f)", nullptr},
  });
}

TEST_F(TruthTest, Steps) {
  expect_tests({
      {"increment(_i, 1)", "ne(assign(_i, add(_i, 1)), 1)"},
      {"decrement(_i, 1)", "ne(assign(_i, add(_i, -1)), -1)"},
      {"increment(_g1, 1)", "ne(asg_add(_g1, 1), 1)"},
      {"decrement(_u, 1:unsigned)", "ne(assign(_u, add(_u, -1:unsigned)), -1:unsigned)"},
      {"decrement(member(_st, _b3), 1:unsigned)",
       "ne(asg_add(member(_st, _b3), -1:unsigned), 7:unsigned)"},
      // a field of one bit: not 1 is 0
      {"decrement(member(_st, _b1), 1:unsigned)", "eq(asg_add(member(_st, _b1), -1:unsigned), 0)"},
      {"increment(_vol, 1)", "ne(asg_add(_vol, 1), 1)"},
      {"increment(_i, 2)", nullptr},
      {"increment(_c, 1:char)", nullptr},
      // counts from 0 to -1
      {"increment(member(_st, _s1), 1)", nullptr},
      {"decrement(member(_st, _s1), 1)", "ne(asg_add(member(_st, _s1), -1), -1)"},
  });
}

TEST_F(TruthTest, Conditionals) {
  expect_tests({
      {"conditional(_x, alternatives(ne(_y, 0), bit_or(_z, 1)))",
       "conditional(_x, alternatives(_y, 1))"},
      {"conditional(_x, alternatives(bit_or(_z, 1), 0))", "_x"},
      {"conditional(_x, alternatives(0, bit_or(_z, 1)))", "eq(_x, 0)"},
      {"conditional(_x, alternatives(ne(_f, 0), _y))", nullptr},
  });
}

TEST_F(TruthTest, CostsOfOperands) {
  struct CostRow {
    const char *tree;
    int strict;
    int relaxed;
  };
  const std::vector<CostRow> rows = {
      {"3", 1, 1},
      {"_x", 1, 1},
      {"_g1", 5, 5},
      {"_st", 5, 5},
      {"member(_st, _m)", 5, 5},
      {"member(_st, _b3)", 6, 6},
      {"add(_x, _g1)", 7, 7},
      {"negate(_x)", 2, 2},
      {"deref(_p)", unfit_operand_cost, 2},
      {"add(_x, divide(_y, _z))", unfit_operand_cost, 5},
      {"arrow(_sp, _m)", unfit_operand_cost, 7},
      {"eq(_x, _y)", unfit_operand_cost, unfit_operand_cost},
      {"add(_x, ucall(address(_fn)))", unfit_operand_cost, unfit_operand_cost},
      {"assign(_x, 3)", unfit_operand_cost, unfit_operand_cost},
      {"logical_or(_x, _y)", unfit_operand_cost, unfit_operand_cost},
  };
  for (const CostRow &row : rows) {
    EXPECT_EQ(operand_cost(tree(row.tree), true), row.strict) << row.tree;
    EXPECT_EQ(operand_cost(tree(row.tree), false), row.relaxed) << row.tree;
  }
}

TEST_F(TruthTest, CostOfALongChainIsFoundInBoundedTime) {
  NODE *left = icon(1);
  NODE *right = icon(1);
  for (int i = 0; i < 100000; ++i) {
    left = node(ADD, left, icon(1));
    right = node(ADD, icon(1), right);
  }
  EXPECT_EQ(operand_cost(left, false), unfit_operand_cost);
  EXPECT_EQ(operand_cost(right, false), unfit_operand_cost);
}

} // namespace
} // namespace velkor
