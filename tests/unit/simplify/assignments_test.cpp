// = and the compound assignments.
#include "simplify/tree_rows.h"

namespace velkor {
namespace {

using AssignmentsTest = TreeRowTest;

TEST_F(AssignmentsTest, ConversionsThatTheStoreMakes) {
  expect_rows({
      {"assign(_c, sconv:char(_x))", "assign(_c, _x)"},
      {"assign(_uc, sconv:uchar(sconv:ushort(_x)))", "assign(_uc, _x)"},
      {"assign(_i, sconv:int(_f))", "assign(_i, _f)"},
      {"assign(_i, sconv:int(sconv:char(_x)))", "assign(_i, sconv:char(_x))"},
      {"assign(_uc, bit_and(_x, 255))", "assign(_uc, _x)"},
      {"assign(_c, bit_and(_x, 127))", nullptr},
      {"assign(_s, bit_and(_x, 255))", nullptr},
      // all bits of the pointer count, whatever it points at
      {"assign(_cp, pconv:char*(bit_and(_x, 255)))", nullptr},
      // (float)(unsigned)-1 is 4294967296
      {"assign(_f, sconv:float(sconv:unsigned(_x)))", "assign(_f, sconv:unsigned(_x))"},
      {"assign(_x, sconv:int(sconv:float(_y)))", "assign(_x, sconv:float(_y))"},
  });
}

TEST_F(AssignmentsTest, Values) {
  expect_rows({
      {"assign(_x, assign(_y, 0))", "comma_op(assign(_y, 0), assign(_x, 0))"},
      {"assign(_x, assign(_y, 5))", nullptr},
      {"assign(_c, add(_x, 200))", "assign(_c, add(_x, -56))"},
      {"assign(_gc, add(_x, 256))", "assign(_gc, _x)"},
      {"assign(_uc, add:int(_uc, 255))", "assign(_uc, add:int(_uc, -1))"},
      {"assign(_c, bit_or(ucall(address(_fn)), 255))",
       "comma_op(ucall(address(_fn)), assign(_c, -1:char))"},
  });
}

// The homes of parameters are found by these assignments.
TEST_F(AssignmentsTest, ParameterCopiesStay) {
  SYM *home = sym("_x");
  home->parameter = symbol("_x", INT, 1, C_REGPARM);
  NODE *copy = node(ASSIGN, name(home), name(home->parameter));
  EXPECT_EQ(simplify_tree(copy), copy);
  EXPECT_EQ(copy->op, ASSIGN);
  // a narrow one, with its conversion
  sym("_c")->parameter = symbol("_c", INT, 1, C_REGPARM);
  NODE *narrow =
      node(ASSIGN, name(sym("_c")), node(SCONV, name(sym("_c")->parameter), nullptr, CHAR), CHAR);
  EXPECT_EQ(simplify_tree(narrow)->right->op, SCONV);
}

// The comparison is a 0 or 1 itself by then, unless it comes as it was made.
TEST_F(AssignmentsTest, NegatedBitIsStoredWithoutComparison) {
  NODE *result = simplify_node(tree("assign(member(_st, _b1), eq(arrow(_sp, _b1), 0))"));
  EXPECT_EQ(text(result), text(tree("assign(member(_st, _b1), "
                                    "bit_xor(arrow(_sp, _b1), 1:unsigned))")));
}

// Otherwise the bits that the store demands have made the constant small already.
TEST_F(AssignmentsTest, StepsOfUnsignedTargetsAreSigned) {
  NODE *result = simplify_node(tree("assign(_us, add:ushort(_us, 65535:ushort))"));
  EXPECT_EQ(text(result), text(tree("assign(_us, add:ushort(_us, -1))")));
}

TEST_F(AssignmentsTest, CompoundForms) {
  expect_rows({
      {"assign(_i, add(_i, 1))", nullptr},
      {"assign(_i, add(_i, _ci))", nullptr},
      {"assign(_p, add(_p, 4))", nullptr},
      {"assign(_g1, add(_g1, 1))", "asg_add(_g1, 1)"},
      {"assign(_g1, add(1, _g1))", "asg_add(_g1, 1)"},
      {"assign(_g1, subtract(_g1, 1))", "asg_add(_g1, -1)"},
      {"assign(_g1, subtract(_g2, _g1))", nullptr},
      {"assign(_i, multiply(_i, _x))", "asg_multiply(_i, _x)"},
      {"assign(_i, shift_left(_i, _x))", "asg_shift_left(_i, _x)"},
      {"assign(_d, add(_d, _e))", "asg_add(_d, _e)"},
      {"assign(_i, add:float(_i, _f))", nullptr},
      {"assign(_vol, add(_vol, 1))", nullptr},
      {"assign(deref(_p), bit_or(deref(_p), 8))", "asg_or(deref(_p), 8)"},
      {"assign(member(_st, _b3), add(member(_st, _b3), 1:unsigned))",
       "asg_add(member(_st, _b3), 1:unsigned)"},
      // what is cut before the store, or divided with another sign, is no compound assignment
      {"assign(_g1, add:char(_g1, _x))", nullptr},
      {"assign(_g1, divide:unsigned(_g1, _x))", nullptr},
      {"assign(_gu, divide(_gu, _u))", "asg_divide(_gu, _u)"},
  });
}

TEST_F(AssignmentsTest, TargetInsideOfTheValue) {
  expect_rows({
      {"assign(_g1, add(add(_g2, _g1), 2))", "asg_add(_g1, add(_g2, 2))"},
      {"assign(_g1, bit_or(bit_or(_g1, _x), _y))", "asg_or(_g1, bit_or(_y, _x))"},
      {"assign(_g1, subtract(add(_x, _g1), _y))", "asg_add(_g1, subtract(_x, _y))"},
      {"assign(_g1, subtract(add(_g1, _x), _y))", "asg_add(_g1, subtract(_x, _y))"},
      {"assign(_f, add:float(add(_g, _f), +2.0:float))", nullptr},
  });
}

TEST_F(AssignmentsTest, NeedlessStores) {
  expect_rows({
      {"assign(_x, _x)", "_x"},
      {"assign(deref(_p), deref(_p))", "deref(_p)"},
      {"assign(_vol, _vol)", nullptr},
      {"assign(_x, assign(_x, _y))", "assign(_x, _y)"},
  });
}

TEST_F(AssignmentsTest, LocalIsAssignedFirst) {
  sym("_x")->fcp_flag = 0;
  sym("_z")->fcp_flag = 1;
  expect_rows({
      {"assign(_x, assign(_g1, _y))", "assign(_g1, assign(_x, _y))"},
      {"assign(_x, assign(deref(_p), _y))", "assign(deref(_p), assign(_x, _y))"},
      {"assign(_x, assign(_y, _z))", nullptr},
      {"assign(_z, assign(_g1, _y))", nullptr}, // _z may be aliased
      {"assign(_x, assign(member(_st, _s3), _y))", nullptr},
      {"assign(_x, assign(deref(add:int*(multiply(_x, 4), _p)), _y))", nullptr},
  });
}

TEST_F(AssignmentsTest, CompoundAssignments) {
  expect_rows({
      {"asg_add(_x, 1)", "assign(_x, add(_x, 1))"},
      {"asg_add(_g1, 1)", nullptr},
      {"asg_subtract(_g1, 1)", "asg_add(_g1, -1)"},
      {"asg_subtract(_x, _y)", nullptr},
      {"asg_add(_g1, sconv:int(_u))", "asg_add(_g1, _u)"},
      {"asg_add(_gu, _x)", nullptr},
      {"asg_add(_gc, sconv:char(_x))", "asg_add(_gc, _x)"},
      {"asg_and(_gc, bit_and(_x, 255))", "asg_and(_gc, _x)"},
      {"asg_shift_left(_g1, 3)", "asg_multiply(_g1, 8)"},
      {"asg_divide(_gc, sconv:char(_x))", nullptr},
      // the sum would be a float's
      {"asg_add(_i, sconv:int(_f))", nullptr},
      {"asg_add(_f, sconv:float(_d))", nullptr},
      // nothing of a pointer's step may be masked away
      {"asg_add(_cp, bit_and(_x, 255))", nullptr},
      {"asg_add(deref(add:int*(ucall(address(_fn)), _p)), 1)", nullptr},
      {"asg_add(_vol, 1)", nullptr},
      {"asg_and(_gc, comma_op(ucall(address(_fn)), _x))",
       "comma_op(ucall(address(_fn)), asg_and(_gc, _x))"},
      {"asg_remainder(_g1, _x)", nullptr},
      {"asg_add(_d, _f)", nullptr},
  });
}

} // namespace
} // namespace velkor
