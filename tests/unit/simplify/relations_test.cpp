#include "simplify/relations.h"

#include "tree_rows.h"

namespace velkor {
namespace {

class RelationsTest : public TreeRowTest {};

TEST_F(RelationsTest, ConditionsAgainstZero) {
  expect_rows({{"eq(lt(_x, _y), 0)", "ge(_x, _y)"},
               {"ne(lt(_x, _y), 0)", "lt(_x, _y)"},
               {"eq(lt(_f, _g), 0)", "ge(_f, _g)"},
               {"eq(logical_and(lt(_x, _y), _z), 0)", "logical_or(ge(_x, _y), eq(_z, 0))"},
               {"eq(logical_or(lt(_x, _y), gt(_z, _n)), 0)", "logical_and(ge(_x, _y), le(_z, _n))"},
               {"eq(conditional(_n, alternatives(lt(_x, _y), gt(_x, _z))), 0)",
                "conditional(_n, alternatives(ge(_x, _y), le(_x, _z)))"},
               // An arm that is no condition keeps the comparison outside.
               {"eq(conditional(_n, alternatives(lt(_x, _y), _z)), 0)", nullptr},
               {"eq(eq(lt(_x, _y), 0), ge(_x, _y))", "1"}});
}

// Bare p and q are not 0 or 1, which the relation's value is.
TEST_F(RelationsTest, NegatedAlternativesAreTruthValues) {
  expect_rows({{"eq(conditional(_n, alternatives(eq(_x, 0), eq(_y, 0))), 0)",
                "ne(conditional(_n, alternatives(_x, _y)), 0)"}});
}

TEST_F(RelationsTest, Normalized) {
  expect_rows({{"lt(_u, _v)", "ult(_u, _v)"},
               {"ge(_x, _u)", "uge(_x, _u)"},
               {"gt(_p, _q)", "ugt(_p, _q)"},
               {"le(_uc, _us)", nullptr},
               {"lt(add(_u, 5:unsigned), 10:unsigned)", "ult(add(_u, 5:unsigned), 10:unsigned)"}});
}

TEST_F(RelationsTest, FactorsAndQuotients) {
  expect_rows({{"eq(multiply(_x, 3), 0)", "eq(_x, 0)"},
               {"lt(multiply:int(_s, 3), 0)", "lt(_s, 0)"},
               // The product may be one of unsigned words that wraps.
               {"lt(multiply(_x, 3), 0)", nullptr},
               {"eq(multiply(_x, 4), 0)", nullptr},
               {"ge(divide(_x, 4), 3)", "ge(_x, 12)"},
               {"gt(divide(_x, 4), 3)", "ge(_x, 16)"},
               {"lt(divide(_x, 4), 3)", "lt(_x, 12)"},
               {"le(divide(_x, 4), 3)", "lt(_x, 16)"},
               // -3 / 4 is 0.
               {"lt(divide(_x, 4), 0)", nullptr},
               {"le(divide(_x, 4), 0)", "lt(_x, 4)"},
               {"ge(divide(_x, 65536), 65536)", nullptr},
               {"ge(shift_right(_x, 4), 3)", "ge(_x, 48)"},
               {"lt(shift_right(_x, 4), 0)", "lt(_x, 0)"},
               {"le(shift_right(_x, 4), 2)", "lt(_x, 48)"},
               {"ge(shift_right(_x, 31), 1)", "gt(shift_right(_x, 31), 0)"},
               {"ge(shift_right:int(_u, 4), 3)", nullptr}});
}

TEST_F(RelationsTest, NegativesAndComplements) {
  expect_rows({{"eq(negate(_x), 5)", "eq(_x, -5)"},
               {"lt(negate:int(_s), 6)", "gt(_s, -6)"},
               // -x may wrap where it comes from unsigned words, and 0 is no unsigned extreme.
               {"lt(negate(_x), 6)", nullptr},
               {"ult(negate:int(_s), 6)", nullptr},
               {"eq(negate(_x), -2147483648)", nullptr},
               {"ult(bit_xor(_u, -1:unsigned), 5:unsigned)", "ugt(_u, -6:unsigned)"},
               {"eq(complement(_u), 5:unsigned)", "eq(_u, -6:unsigned)"}});
}

TEST_F(RelationsTest, ConstantsAtZeroAndOne) {
  expect_rows({{"lt(_x, 1)", "le(_x, 0)"},
               {"ge(_x, 1)", "gt(_x, 0)"},
               {"ult(_u, 1:unsigned)", "eq(_u, 0:unsigned)"},
               {"uge(_u, 1:unsigned)", "ne(_u, 0:unsigned)"},
               {"le(_uc, 0)", "eq(_uc, 0)"},
               {"gt(_uc, 0)", "ne(_uc, 0)"},
               {"lt(_uc, 0)", "0"},
               {"ge(_uc, 0)", "1"},
               {"ule(_u, 0:unsigned)", "eq(_u, 0:unsigned)"},
               {"ult(_u, 0:unsigned)", "0"},
               {"uge(_u, 0:unsigned)", "1"},
               {"ugt(_u, 0:unsigned)", "ne(_u, 0:unsigned)"},
               {"ult(_volu, 0:unsigned)", "comma_op(_volu, 0)"},
               {"gt(_x, 3)", "ge(_x, 4)"},
               {"le(_x, 3)", "lt(_x, 4)"},
               {"le(_x, 4)", nullptr},
               {"le(_x, 2147483647)", nullptr},
               {"lt(_f, 1.0:float)", nullptr}});
}

TEST_F(RelationsTest, BitsThatMatter) {
  expect_rows({{"lt(bit_or(_x, 3), 0)", "lt(_x, 0)"},
               {"lt(asg_or(_gc, -128:char), 0)", "comma_op(asg_or(_gc, -128:char), 1)"},
               {"ge(asg_or(_gc, -128:char), 0)", "comma_op(asg_or(_gc, -128:char), 0)"},
               // Only the demanded sign makes a constant of the sum.
               {"ge(bit_or(_x, add(-2147483648, sconv:int(_uc))), 0)", "0"},
               {"lt(bit_or(_x, 3), 8)", "lt(_x, 8)"},
               {"ge(bit_or(_x, 5), 8)", "ge(_x, 8)"},
               {"eq(bit_and(_x, 1), 2)", "0"},
               {"eq(bit_or(_x, 2), bit_and(_y, 1))", "0"},
               {"eq(bit_and(ucall(address(_fn)), 1), 2)", "comma_op(ucall(address(_fn)), 0)"},
               {"lt(bit_and(_x, 7), 8)", "1"},
               {"ugt(bit_and(_u, 7:unsigned), 8:unsigned)", "0"},
               {"lt(member(_st, _b3), 9)", "1"},
               {"ne(bit_and(_x, 1), 0)", "bit_and(_x, 1)"},
               {"eq(bit_and(_x, 1), 1)", "bit_and(_x, 1)"},
               {"eq(member(_st, _b1), 0)", "bit_xor:int(member(_st, _b1), 1)"},
               {"ne(member(_st, _b1), 1)", "bit_xor:int(member(_st, _b1), 1)"},
               {"eq(bit_and(_x, 8), 8)", "bit_and(shift_right(_x, 3), 1)"},
               {"ne(bit_and(_x, 8), 0)", "bit_and(shift_right(_x, 3), 1)"},
               {"ne(bit_and(_x, shift_left(1, _n)), 0)", "bit_and(shift_right(_x, _n), 1)"},
               {"ne(bit_and(shift_left(1, _n), _x), 0)", "bit_and(shift_right(_x, _n), 1)"},
               // 2^n and 1 are not the same.
               {"eq(bit_and(shift_left(1, _n), _x), 1)", nullptr}});
}

TEST_F(RelationsTest, AddendsMoveIntoTheConstant) {
  expect_rows({{"eq(add(_x, 3), 7)", "eq(_x, 4)"},
               {"eq(add(_u, 5:unsigned), 3:unsigned)", "eq(_u, -2:unsigned)"},
               {"eq(add(_x, 3), 0)", "eq(_x, -3)"},
               {"eq(subtract(_x, _y), 0)", "eq(_x, _y)"},
               {"eq(subtract(_l, _l), 0)", "1"},
               {"lt(add(_x, 3), 7)", "lt(_x, 4)"},
               {"le(add:int(_s, 3), 7)", "lt(_s, 5)"},
               // x + y may have wrapped: the program adds in another order.
               {"lt(add(add(_x, _y), 3), 7)", nullptr},
               {"lt(add(_x, 2147483647), -5)", nullptr},
               {"eq(add(ucall(address(_fn)), 3), add(ucall(address(_fm)), 5))",
                "eq(subtract(ucall(address(_fn)), ucall(address(_fm))), 2)"},
               {"lt(add(_x, 3), add(_y, 3))", "lt(_x, _y)"},
               {"lt(add(_x, 3), add(_y, 5))", nullptr},
               {"eq(subtract(_u, 0x80000000:unsigned), 0x80000000:unsigned)", "eq(_u, 0:unsigned)"},
               {"lt(_x, add(_y, 1))", "le(_x, _y)"},
               {"ge(_x, add(_y, 1))", "gt(_x, _y)"},
               {"le(_x, add(_y, -1))", "lt(_x, _y)"},
               {"gt(_x, add(_y, -1))", "ge(_x, _y)"},
               {"le(_x, add(sconv:int(_u), -1))", nullptr}});
}

// A caller may put a difference together that the rules for - would have made a sum of.
TEST_F(RelationsTest, DifferenceFromItsOwnNegative) {
  const auto simplified = [&](const char *relation) { return text(simplify_node(tree(relation))); };
  EXPECT_EQ(simplified("eq(subtract(_u, 5:unsigned), -5:unsigned)"),
            text(tree("eq(_u, 0:unsigned)")));
  EXPECT_EQ(simplified("eq(subtract(_u, 5:unsigned), 5:unsigned)"),
            text(tree("eq(subtract(_u, 5:unsigned), 5:unsigned)")));
}

TEST_F(RelationsTest, LikeTermsCancel) {
  expect_rows({{"eq(add(_x, _y), add(_x, _z))", "eq(_y, _z)"},
               {"eq(_x, add(_x, 4))", "0"},
               {"ult(_p, add(_p, 4))", "1"},
               {"ult(_p, add(_p, multiply(_i, 4)))", "gt(multiply(_i, 4), 0)"},
               {"eq(add(_p, multiply(_i, 4)), _p)", "eq(multiply(_i, 4), 0)"},
               {"ult(add(_p, _i), add(_p, _n))", "lt(_i, _n)"},
               // An unsigned offset below zero still lies below p.
               {"ult(add(_p, _u), _p)", nullptr},
               // The idiom that asks whether a sum has wrapped.
               {"lt(add(_x, _y), _x)", nullptr},
               {"lt(add:int(_s, _c), _s)", "lt(_c, 0)"}});
}

TEST_F(RelationsTest, SameOperands) {
  expect_rows({{"eq(_x, _x)", "1"},
               {"lt(_x, _x)", "0"},
               {"ule(_p, _p)", "1"},
               {"ge(_f, _f)", "1"},
               {"eq(_vol, _vol)", nullptr},
               {"eq(_x, eq(_x, 0))", "0"},
               {"ne(eq(_x, 0), _x)", "1"},
               {"eq(lt(_x, _y), ge(_x, _y))", "0"},
               {"ne(lt(_x, _y), ge(_x, _y))", "1"}});
}

TEST_F(RelationsTest, Addresses) {
  expect_rows({{"eq(address(_x), pconv:int*(0))", "0"},
               {"ne(address(_g1), pconv:int*(0))", "1"},
               {"ne(address(member(_st, _m)), pconv:int*(0))", "1"},
               {"eq(\"abc\\0\", pconv:char*(0))", "0"},
               {"eq(_p, pconv:int*(0))", nullptr},
               {"ult(pconv:int*(4), pconv:int*(8))", "1"},
               {"lt(pconv:int*(-4), pconv:int*(8))", "0"},
               {"eq(pconv:int*(4), 0)", "0"}});
}

TEST_F(RelationsTest, Increments) {
  expect_rows({{"lt(increment(_i, 1), _n)", "le(assign(_i, add(_i, 1)), _n)"},
               {"ge(increment(_i, 1), _n)", "gt(assign(_i, add(_i, 1)), _n)"},
               {"gt(decrement(_i, 1), _n)", "ge(assign(_i, add(_i, -1)), _n)"},
               {"le(decrement(_i, 1), _n)", "lt(assign(_i, add(_i, -1)), _n)"},
               {"eq(increment(_i, 1), 5)", "eq(assign(_i, add(_i, 1)), 6)"},
               {"ne(decrement(_i, 1), 5)", "ne(assign(_i, add(_i, -1)), 4)"},
               {"ult(increment(_p, 4), _q)", "ule(assign(_p, add(_p, 4)), _q)"},
               {"ugt(decrement(_p, 4), _q)", "uge(assign(_p, add(_p, -4)), _q)"},
               // A narrow variable wraps where the comparison does not.
               {"lt(increment(_c, 1:char), _c)", nullptr},
               {"ne(increment(_uc, 1:uchar), 5:uchar)", nullptr},
               {"lt(increment(member(_st, _s3), 1), _n)", nullptr}});
}

TEST_F(RelationsTest, ReplacedByConstants) {
  const auto replaced = [&](const char *pattern, const char *input, std::int32_t value,
                            TypeWord type = INT) {
    return text(replace_by_constant(value, type, tree(pattern), tree(input)));
  };
  EXPECT_EQ(replaced("lt(_x, _y)", "bit_or(lt(_x, _y), _z)", 0), text(tree("_z")));
  EXPECT_EQ(replaced("lt(_x, _y)", "lt(_x, _y)", 1), text(tree("1")));
  EXPECT_EQ(replaced("ucall(address(_fn))", "add(_x, ucall(address(_fn)))", 2),
            text(tree("comma_op(ucall(address(_fn)), add(_x, 2))")));
  EXPECT_EQ(replaced("_c", "add(_x, sconv:int(_c))", 300, type_of_replaced),
            text(tree("add(_x, 44)")));
  // A variable that is stored to is no value.
  EXPECT_EQ(replaced("_x", "assign(_x, add(_x, _y))", 0), text(tree("assign(_x, _y)")));
  EXPECT_EQ(replaced("_i", "deref(address(_i))", 0), text(tree("_i")));
  EXPECT_EQ(replaced("_p", "ult(add(_p, _i), add(_p, _n))", 0), text(tree("lt(_i, _n)")));
}

} // namespace
} // namespace velkor
