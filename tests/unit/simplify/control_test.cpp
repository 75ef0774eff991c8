// Assertions, branches, switches and ,OP.
#include "simplify/tree_rows.h"

namespace velkor {
namespace {

class ControlTest : public TreeRowTest {
protected:
  // An IF on the test, to label 1 when it is true, else to label 2.
  std::string simplified_if(const char *test) {
    return text(simplify_tree(make_if(tree(test), 1, 2)));
  }
  std::string written_if(const char *test, int true_index, int false_index) {
    return text(make_if(tree(test), true_index, false_index));
  }
};

TEST_F(ControlTest, Assertions) {
  expect_rows({
      {"assert(ne(_x, 0))", "assert(_x)"},
      {"assert(bit_or(_x, 1))", "0"},
      {"assert(0)", nullptr},
      {"nassert(bit_or(_x, 1))", "0"},
      {"nassert(logical_and(_x, _y))", nullptr},
      {"assert(logical_and(_x, _y))", "comma_op:void(assert(_x), assert(_y))"},
      {"assert(logical_and(logical_and(_x, _y), _z))",
       "comma_op:void(comma_op:void(assert(_x), assert(_y)), assert(_z))"},
      {"assert(logical_and(_x, logical_and(_y, _z)))",
       "comma_op:void(comma_op(assert(_x), assert(_y)), assert(_z))"},
      // too dear for && and || as such, but an assertion has nothing to skip
      {"assert(logical_or(_x, add(_g1, _g2)))", "assert(bit_or(ne(_x, 0), ne(add(_g1, _g2), 0)))"},
      {"assert(logical_or(_x, ucall(address(_fn))))",
       "conditional:void(_x, alternatives:void(0:void, assert(ucall(address(_fn)))))"},
      // what follows a test for null
      {"assert(logical_or(eq(_p, pconv:int*(0)), eq(deref(_p), 3)))",
       "conditional:void(eq(_p, pconv:int*(0)), alternatives:void(0:void, "
       "assert(eq(deref(_p), 3))))"},
      {"assert(conditional(_x, alternatives(_y, _z)))",
       "conditional(_x, alternatives(assert(_y), assert(_z)))"},
      {"assert(conditional(_x, alternatives(_y, bit_or(_z, 1))))",
       "conditional(_x, alternatives(assert(_y), 0))"},
  });
}

TEST_F(ControlTest, ConditionalBranches) {
  expect_rows({
      {"cbranch(0, L1)", "branch(L1)"},
      {"cbranch(5, L1)", "1"},
      {"cbranch(ne(_x, 0), L1)", "cbranch(_x, L1)"},
      {"cbranch(eq(_x, 0), L1)", nullptr},
  });
}

TEST_F(ControlTest, Ifs) {
  EXPECT_EQ(simplified_if("ne(_x, 0)"), written_if("_x", 1, 2));
  EXPECT_EQ(simplified_if("eq(_x, 0)"), written_if("_x", 2, 1));
  EXPECT_EQ(simplified_if("eq(ne(_x, 0), 0)"), written_if("_x", 2, 1));
  EXPECT_EQ(simplified_if("eq(bit_and(_x, 4), 0)"), written_if("bit_and(_x, 4)", 2, 1));
  EXPECT_EQ(simplified_if("+1.5"), written_if("1", 1, 2));
  EXPECT_EQ(simplified_if("+0.0"), written_if("0", 1, 2));
  EXPECT_EQ(simplified_if("\"abc\\0\""), written_if("1", 1, 2));
}

TEST_F(ControlTest, SwitchOfOneCase) {
  const NODE *result = simplify_tree(tree("switch(_x, comma(case(7, L1), default(L2)))"));
  EXPECT_EQ(text(result), written_if("ne(_x, 7)", 2, 1));
  const NODE *of_zero = simplify_tree(tree("switch(_x, comma(case(0, L1), default(L2)))"));
  EXPECT_EQ(text(of_zero), written_if("_x", 2, 1));
  expect_rows({
      {"switch(_x, comma(comma(case(1, L1), case(2, L2)), default(L3)))", nullptr},
      {"switch(_x, comma(case(1, L1), case(2, L2)))", nullptr},
  });
}

TEST_F(ControlTest, Commas) {
  expect_rows({
      {"comma_op(_x, _y)", "_y"},
      {"comma_op(_vol, _y)", nullptr},
      {"comma_op(assign(_x, 1), _y)", nullptr},
      {"comma_op(comma_op(assign(_x, 1), _z), _y)", "comma_op(assign(_x, 1), _y)"},
      {"comma_op(comma_op(assign(_x, 1), increment(_z, 1)), _y)",
       "comma_op(comma_op(assign(_x, 1), assign(_z, add(_z, 1))), _y)"},
      {"comma_op(assign(_x, 1), comma_op(assign(_y, 2), _z))",
       "comma_op(comma_op(assign(_x, 1), assign(_y, 2)), _z)"},
      {"comma_op(add(ucall(address(_fn)), _x), _y)", "comma_op(ucall(address(_fn)), _y)"},
      {"comma_op:unsigned(_y, _x)", "sconv:unsigned(_x)"},
  });
}

TEST_F(ControlTest, LongListsOfCommasTakeLinearTime) {
  NODE *left = node(ASSIGN, name(sym("_x")), icon(0));
  NODE *right = node(ASSIGN, name(sym("_x")), icon(0));
  for (int i = 0; i < 20000; ++i) {
    left = simplify_node(node(COMMA_OP, left, node(ASSIGN, name(sym("_x")), icon(i))));
    right = simplify_node(node(COMMA_OP, node(ASSIGN, name(sym("_x")), icon(i)), right));
  }
  EXPECT_EQ(left->op, COMMA_OP);
  EXPECT_EQ(right->op, COMMA_OP);
}

} // namespace
} // namespace velkor
