#include "simplify/fold.h"

#include "tree_rows.h"

namespace velkor {
namespace {

class FoldTest : public TreeRowTest {
protected:
  void expect_folded(const std::vector<TreeRow> &rows) {
    for (const TreeRow &row : rows) {
      NODE *input = tree(row.input);
      if (!input) continue;
      const std::string expected = text(tree(row.output ? row.output : row.input));
      NODE *result = fold_node(input);
      EXPECT_EQ(text(result), expected) << "of " << row.input;
      erase_tree(result);
    }
  }
};

TEST_F(FoldTest, Words) {
  expect_folded({
      {"add(2147483647, 1)", "-2147483648"},
      {"subtract(3, 5)", "-2"},
      {"multiply(65536, 65537)", "65536"},
      {"bit_and(12, 10)", "8"},
      {"bit_or(12, 10)", "14"},
      {"bit_xor(12, 10)", "6"},
      {"negate(-2147483648)", "-2147483648"},
      {"abs(-7)", "7"},
      {"complement(5)", "-6"},
      {"logical_not(0)", "1"},
      {"logical_and(2, 0)", "0"},
      {"logical_or(0, 2)", "1"},
      // The result is cut to the node's type.
      {"add:char(100:char, 100:char)", "-56:char"},
      {"add:uchar(200:uchar, 100:uchar)", "44:uchar"},
      {"complement:uchar(5:uchar)", "250:uchar"},
  });
}

TEST_F(FoldTest, ShiftsFollowTheirLeftOperand) {
  expect_folded({
      {"shift_left(1, 31)", "-2147483648"},
      {"shift_left(1, 33)", "2"},
      {"shift_right(-8, 1)", "-4"},
      {"shift_right(-8:unsigned, 1)", "0x7FFFFFFC:unsigned"},
      {"shift_right:int(-8:unsigned, 1)", "0x7FFFFFFC"},
      {"shift_right:unsigned(-8, 1)", "-4:unsigned"},
      {"shift_right:int(200:uchar, 3)", "25"},
  });
}

TEST_F(FoldTest, DivisionsThatStay) {
  expect_folded({
      {"divide(-7, 2)", "-3"},
      {"remainder(-7, 2)", "-1"},
      {"divide(-7:unsigned, 2:unsigned)", "0x7FFFFFFC:unsigned"},
      {"remainder(-7:unsigned, 2:unsigned)", "1:unsigned"},
      {"divide(-2147483648, -1)", "-2147483648"},
      {"remainder(-2147483648, -1)", "0"},
      {"divide(1, 0)", nullptr},
      {"remainder(7, 0)", nullptr},
      {"divide(1.0, 0.0)", nullptr},
      {"divide(-7:unsigned, 0:unsigned)", nullptr},
  });
}

TEST_F(FoldTest, RelationsFollowTheCommonType) {
  expect_folded({
      {"lt(-1, 1)", "1"},
      {"ult(-1, 1)", "0"},
      {"uge(-1, 1)", "1"},
      {"ule(1, 1)", "1"},
      {"ugt(-1, 1)", "1"},
      {"lt(4000000000:unsigned, 1:unsigned)", "0"},
      {"lt(-1, 1:unsigned)", "0"},
      {"ge(-1:char, 1:uchar)", "0"},
      {"eq(-1, -1:unsigned)", "1"},
      {"ne(-1:char, 255:uchar)", "1"},
  });
}

TEST_F(FoldTest, ConstantsMoveRight) {
  expect_folded({
      {"add(3, _x)", "add(_x, 3)"},
      {"lt(3, _x)", "gt(_x, 3)"},
      {"ule(3, _u)", "uge(_u, 3)"},
      {"subtract(3, _x)", nullptr},
      {"shift_left(1, _x)", nullptr},
      {"add(1.5, _d)", "add(_d, 1.5)"},
      {"add:double(3, _d)", "add:double(_d, +3.0)"},
      {"divide(1.5, _d)", nullptr},
      {"conditional(3, alternatives(_x, _y))", nullptr},
  });
}

TEST_F(FoldTest, FloatingConstants) {
  expect_folded({
      {"add(1.5, 2.25)", "+3.75"},
      {"subtract(1.5, 2.5)", "-1.0"},
      {"multiply(1.5, 4.0)", "+6.0"},
      {"divide(1.0, 8.0)", "+0.125"},
      {"negate(1.5)", "-1.5"},
      {"abs(-1.5)", "+1.5"},
      {"sqrt(16.0)", "+4.0"},
      {"sqrt(-4.0)", nullptr},
      {"square(3.0)", "+9.0"},
      {"recip(4.0)", "+0.25"},
      {"recip(3.0)", nullptr},
      {"recip(-4.0)", nullptr},
      {"multiply(recip(3.0), _d)", "divide(_d, 3.0)"},
      {"multiply(recip(4.0), 6.0)", "+1.5"},
      {"lt(1.5, 2.0)", "1"},
      {"ge(1.5, 2.0)", "0"},
      {"eq(1.0, 1)", "1"},
      {"gt(2, 1.5)", "1"},
      {"ult(1.5, 2.0)", nullptr},
      // A constant that has the type of the program's long arithmetic is no number here.
      {"add(1.5:ldouble, 2.0:ldouble)", nullptr},
      // An operator that computes in a wider type than its own is not computed in that.
      {"add:float(0.1:float, 0.2)", nullptr},
  });
}

// What stays: a result that its text does not hold, or that lies outside of single precision.
TEST_F(FoldTest, ResultsThatHaveNoText) {
  expect_folded({
      {"divide(1.0, 3.0)", nullptr},
      {"multiply(94906267.0, 94906267.0)", nullptr},
      {"multiply(1.0e38, 10.0)", nullptr},
      {"add(1.0e-39, 1.0)", nullptr},
      {"negate(0.0)", nullptr},
      // Nine digits hold any number of type float.
      {"divide(1.0:float, 3.0:float)", "+0.333333343267441:float"},
      {"add(16777216.0:float, 1.0:float)", "+1.6777216e7:float"},
      // A text of type float is worth what that type holds of it.
      {"eq(16777217.0:float, 16777216.0:float)", "1"},
  });
}

} // namespace
} // namespace velkor
