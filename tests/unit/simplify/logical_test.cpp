// &&, || and ?.
#include "simplify/tree_rows.h"

namespace velkor {
namespace {

using LogicalTest = TreeRowTest;

TEST_F(LogicalTest, ConstantOperands) {
  expect_rows({
      {"logical_and(0, ucall(address(_fn)))", "0"},
      {"logical_and(2, _x)", "ne(_x, 0)"},
      {"logical_and(ucall(address(_fn)), 0)", "comma_op(ucall(address(_fn)), 0)"},
      {"logical_and(_x, 0)", "0"},
      {"logical_and(_x, 7)", "ne(_x, 0)"},
      {"logical_or(0, _x)", "ne(_x, 0)"},
      {"logical_or(3, ucall(address(_fn)))", "1"},
      {"logical_or(_x, 0)", "ne(_x, 0)"},
      {"logical_or(ucall(address(_fn)), 5)", "comma_op(ucall(address(_fn)), 1)"},
      {"logical_and(lt(_x, _y), 1)", "lt(_x, _y)"},
      // what is done before the pointer is known rises above its comparison
      {"logical_and(7, sconv:char*(assign(_x, _y)))",
       "ne(sconv:char*(assign(_x, _y)), pconv:char*(0))"},
      {"logical_and(7, sconv:char*(assign(_x, 3)))",
       "comma_op(assign(_x, 3), ne(sconv:char*(3), pconv:char*(0)))"},
      // the result is an int, though the operand is an unsigned 0 or 1
      {"logical_and(1, bit_and(_u, 1:unsigned))", "bit_and:int(_u, 1)"},
  });
}

TEST_F(LogicalTest, EqualOperands) {
  expect_rows({
      {"logical_and(_f, _f)", "ne(_f, +0.0:float)"},
      {"logical_or(_x, _x)", "ne(_x, 0)"},
      {"logical_and(_vol, _vol)", nullptr},
      {"logical_or(ucall(address(_fn)), ucall(address(_fn)))", nullptr},
  });
}

TEST_F(LogicalTest, ComparisonsWithZero) {
  expect_rows({
      {"logical_and(eq(_x, 0), eq(deref(_p), 0))", "bit_xor(logical_or(_x, deref(_p)), 1)"},
      {"logical_or(eq(_x, 0), eq(deref(_p), 0))", "bit_xor(logical_and(_x, deref(_p)), 1)"},
      {"logical_and(eq(_x, 0), eq(_y, 0))", "eq(bit_or(_x, _y), 0)"},
      {"logical_or(eq(_x, 0), eq(_x, 8))", "eq(bit_and(_x, -9), 0)"},
      {"logical_or(eq(_x, 0x80000000), eq(_x, 0))", "eq(bit_and(_x, 0x7FFFFFFF), 0)"},
      {"logical_or(eq(_x, 0), eq(_x, 6))", nullptr},
      {"logical_or(eq(_vol, 0), eq(_vol, 8))", nullptr},
  });
}

TEST_F(LogicalTest, BitwiseForms) {
  expect_rows({
      {"logical_or(_x, _y)", "ne(bit_or(_x, _y), 0)"},
      {"logical_or(logical_or(_x, _y), _z)", "ne(bit_or(bit_or(_x, _y), _z), 0)"},
      {"logical_and(bit_and(_x, 1), bit_and(_y, 1))", "bit_and(bit_and(_y, _x), 1)"},
      {"logical_and(bit_and(_x, 4), bit_and(_y, 4))",
       "bit_and(shift_right(bit_and(_y, _x), 2), 1)"},
      {"logical_and(_x, _y)", nullptr},
      {"logical_or(_x, deref(_p))", nullptr}, // _p may be null where _x is not 0
      {"logical_or(_x, divide(_y, _z))", nullptr},
      {"logical_or(_x, _vol)", nullptr},
      {"logical_or(ucall(address(_fn)), _g1)", nullptr},
      {"logical_or(_x, _f)", nullptr},
  });
}

TEST_F(LogicalTest, SingleBitsMoveTogether) {
  // Whatever shape the moved bit takes, no branch is left.
  for (const char *row : {"logical_and(bit_and(_x, 8), bit_and(_y, 2))",
                          "logical_and(bit_and(_x, 2), bit_and(_y, 8))"}) {
    const NODE *result = simplify_tree(tree(row));
    EXPECT_NE(result->op, LOGICAL_AND) << row << ": " << text(result);
  }
}

TEST_F(LogicalTest, ALongChainOfOrTakesLinearTime) {
  NODE *chain = name(sym("_x"));
  for (int i = 0; i < 20000; ++i)
    chain = simplify_node(node(LOGICAL_OR, chain, node(DEREF, name(sym("_p")))));
  EXPECT_EQ(chain->op, LOGICAL_OR);
}

TEST_F(LogicalTest, ChosenArms) {
  expect_rows({
      {"conditional(1, alternatives(_x, _y))", "_x"},
      {"conditional(0, alternatives(ucall(address(_fn)), _y))", "_y"},
      {"conditional:unsigned(0, alternatives:unsigned(_u, _x))", "sconv:unsigned(_x)"},
      {"conditional(lt(_x, _y), alternatives(1, 0))", "lt(_x, _y)"},
      {"conditional(lt(_x, _y), alternatives(0, 1))", "ge(_x, _y)"},
      {"conditional(_x, alternatives(1, 0))", "ne(_x, 0)"},
      {"conditional(_x, alternatives(0, 1))", "eq(_x, 0)"},
      {"conditional:int(bit_and(_u, 1:unsigned), alternatives(1, 0))", "bit_and:int(_u, 1)"},
      {"conditional(pconv:char*(8), alternatives(1, 0))", "1"},
      {"conditional(_x, alternatives(_y, _y))", "_y"},
      {"conditional(ucall(address(_fn)), alternatives(_y, _y))",
       "comma_op(ucall(address(_fn)), _y)"},
      {"conditional(_x, alternatives(ucall(address(_fn)), ucall(address(_fn))))",
       "ucall(address(_fn))"},
      {"conditional(bit_or(ucall(address(_fn)), 1), alternatives(_y, _z))",
       "comma_op(ucall(address(_fn)), _y)"},
  });
}

TEST_F(LogicalTest, MagnitudesAndClamps) {
  expect_rows({
      {"conditional(lt(_x, 0), alternatives(negate(_x), _x))", "abs(_x)"},
      {"conditional(ge(_x, 0), alternatives(_x, negate(_x)))", "abs(_x)"},
      {"conditional(lt(_f, +0.0:float), alternatives(negate(_f), _f))", "abs(_f)"},
      {"conditional(lt(_vol, 0), alternatives(negate(_vol), _vol))", nullptr},
      {"conditional(lt(_x, 0), alternatives(0, _x))", "multiply(ge(_x, 0), _x)"},
      {"conditional(le(_x, 0), alternatives(0, _x))", "multiply(ge(_x, 0), _x)"},
      {"conditional(ge(_x, 0), alternatives(_x, 0))", "multiply(ge(_x, 0), _x)"},
      {"conditional(gt(_x, 0), alternatives(_x, 0))", "multiply(ge(_x, 0), _x)"},
      {"conditional(gt(_x, 0), alternatives(_y, 0))", nullptr},
      {"conditional(gt(deref(_p), 0), alternatives(deref(_p), 0))",
       "multiply(ge(deref(_p), 0), deref(_p))"},
  });
}

TEST_F(LogicalTest, ArmsOfOneOperator) {
  expect_rows({
      {"conditional(_x, alternatives(assign(_y, 1), assign(_y, 2)))",
       "assign(_y, conditional(_x, alternatives(1, 2)))"},
      {"conditional(_x, alternatives(asg_add(_g1, _y), asg_add(_g1, _z)))",
       "asg_add(_g1, conditional(_x, alternatives(_y, _z)))"},
      {"conditional(_x, alternatives(asg_add(_g1, 1), asg_add(_g1, 2)))", nullptr},
      {"conditional(_x, alternatives(asg_add(_vol, _y), asg_add(_vol, _z)))", nullptr},
      {"conditional(ucall(address(_fn)), alternatives(assign(_g1, _y), assign(_g1, _z)))",
       "assign(_g1, conditional(ucall(address(_fn)), alternatives(_y, _z)))"},
      // the call may change what the address or the old value is
      {"conditional(ucall(address(_fn)), alternatives(assign(deref(_gp), 1), "
       "assign(deref(_gp), 2)))",
       nullptr},
      {"conditional(ucall(address(_fn)), alternatives(asg_add(_g1, _y), asg_add(_g1, _z)))",
       nullptr},
      {"conditional(_x, alternatives(lt(_y, _n), lt(_z, _n)))",
       "lt(conditional(_x, alternatives(_y, _z)), _n)"},
      {"conditional(_x, alternatives(lt(_y, _n), ult(_u, _n)))", nullptr},
      {"conditional(ucall(address(_fn)), alternatives(eq(_y, _g1), eq(_z, _g1)))", nullptr},
      {"conditional(ucall(address(_fn)), alternatives(lt(_y, 8), lt(_z, 8)))",
       "lt(conditional(ucall(address(_fn)), alternatives(_y, _z)), 8)"},
  });
}

} // namespace
} // namespace velkor
