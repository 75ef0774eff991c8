#include "simplify/tree_rows.h"

namespace velkor {
namespace {

class ArithmeticTest : public TreeRowTest {};

TEST_F(ArithmeticTest, Sums) {
  expect_rows({
      {"add(subtract(_x, _y), _y)", "_x"},
      {"add(multiply(_x, _y), multiply(_x, _z))", "multiply(add(_y, _z), _x)"},
      {"add(multiply(_x, 6), multiply(_y, 3))", "multiply(add(multiply(_x, 2), _y), 3)"},
      {"add(multiply(_x, 3), multiply(_y, 6))", "multiply(add(multiply(_y, 2), _x), 3)"},
      {"add(multiply(_x, 6), multiply(_y, 5))", nullptr},
      {"add(negate(_x), _y)", "subtract(_y, _x)"},
      {"add(_y, negate(_x))", "subtract(_y, _x)"},
      {"add(negate(_x), 7)", "subtract(7, _x)"},
      {"add(subtract(5, _x), _y)", "add(subtract(_y, _x), 5)"},
      {"add(multiply(_x, _y), subtract(5, _z))", "add(subtract(multiply(_x, _y), _z), 5)"},
      // A negation of eight bits is a number from 0 to 255.
      {"add:int(_x, negate:uchar(_uc))", "add:int(negate(_uc), _x)"},
      {"add:int(subtract:uchar(_uc, _x), _x)", nullptr},
      {"subtract:int(_x, negate:uchar(_uc))", nullptr},
      {"add(subtract(ucall(address(_fn)), ucall(address(_fm))), ucall(address(_fm)))", nullptr},
  });
}

TEST_F(ArithmeticTest, LikeTerms) {
  expect_rows({
      {"add(_x, _x)", "multiply(_x, 2)"},
      {"add(add(_x, _y), _x)", "add(multiply(_x, 2), _y)"},
      {"add(add(_x, _y), multiply(_x, 3))", "add(multiply(_x, 4), _y)"},
      {"subtract(add(_x, _y), _x)", "_y"},
      {"subtract(add(_x, _y), _y)", "_x"},
      {"subtract(subtract(_x, _y), _y)", "subtract(_x, multiply(_y, 2))"},
      {"add:int(_uc, _uc)", "multiply:int(_uc, 2)"},
      {"add:unsigned(_uc, _uc)", "multiply(sconv:unsigned(_uc), 2:unsigned)"},
      {"add(_vol, _vol)", nullptr},
      {"add(sconv:int(add(_u, 5:unsigned)), 3)", "sconv:int(add(_u, 8:unsigned))"},
      {"add(pconv:int*(100), 4)", "pconv:int*(104)"},
      {"add(pconv:int*(100:char), 100)", "pconv:int*(200)"},
      // Three times a number of eight bits, cut to eight bits, is no multiple of it.
      {"add:int(multiply:uchar(_uc, 3), _uc)", nullptr},
  });
}

TEST_F(ArithmeticTest, Differences) {
  expect_rows({
      {"subtract(_x, _x)", "0"},
      {"subtract(_d, _d)", "+0.0"},
      {"subtract(_vol, _vol)", nullptr},
      {"subtract(_d, _e)", nullptr},
      {"subtract(_x, 5)", "add(_x, -5)"},
      {"subtract(_u, 5:unsigned)", "add(_u, 0xFFFFFFFB:unsigned)"},
      {"subtract(_p, 4)", "add(_p, -4)"},
      {"subtract(_x, -2147483648)", nullptr},
      {"subtract(_x, add(_y, _z))", "subtract(subtract(_x, _y), _z)"},
      {"subtract(_x, subtract(_y, _z))", "add(subtract(_x, _y), _z)"},
      {"subtract(add(_x, 5), _y)", "add(subtract(_x, _y), 5)"},
      {"subtract(0, _x)", "negate(_x)"},
      {"subtract:int(0, _c)", "negate:int(_c)"},
      {"subtract:unsigned(0, _x)", nullptr},
      {"subtract(_x, negate(_y))", "add(_x, _y)"},
      {"subtract(multiply(_x, _y), multiply(_x, _z))", "multiply(subtract(_y, _z), _x)"},
      {"subtract(multiply(_x, _z), multiply(_y, _z))", "multiply(subtract(_x, _y), _z)"},
      {"subtract(multiply(_x, 3), multiply(_x, 4))", "negate(_x)"},
      {"subtract(bit_or(_x, 7), bit_or(_x, 1))", "bit_and(bit_xor(_x, -1), 6)"},
      {"subtract(bit_or(_x, 1), bit_or(_x, 7))", nullptr},
      {"subtract(bit_and(_x, 15), bit_and(_x, 3))", "bit_and(_x, 12)"},
      {"subtract(_u, bit_and(_u, 15:unsigned))", "bit_and(_u, 0xFFFFFFF0:unsigned)"},
      {"subtract(_x, bit_and(_x, 15))", nullptr},
  });
}

TEST_F(ArithmeticTest, PointerDifferences) {
  expect_rows({
      {"subtract:int(_p, _p)", "0"},
      {"subtract:int(_p, add(_q, _i))", "subtract(subtract:int(_p, _q), _i)"},
      {"subtract:int(_p, add:int*(_i, _q))", "subtract(subtract:int(_p, _q), _i)"},
      {"subtract:int(_p, subtract(_q, _i))", "add(subtract:int(_p, _q), _i)"},
      {"subtract:int(add(_p, _i), _q)", "add(subtract:int(_p, _q), _i)"},
      {"subtract:int(add(_p, 8), add(_q, 4))", "add(subtract:int(_p, _q), 4)"},
      {"subtract:int(add(_p, 8), _p)", "8"},
      {"subtract:long(add(_p, _i), _q)",
       "add:long(sconv:long(subtract:int(_p, _q)), sconv:long(_i))"},
      {"subtract:int(pconv:int*(100), pconv:int*(40))", "60"},
  });
}

TEST_F(ArithmeticTest, Products) {
  expect_rows({
      {"multiply(_x, add(_y, _z))", "multiply(add(_y, _z), _x)"},
      {"multiply(3, _x)", "multiply(_x, 3)"},
      {"multiply(negate(_x), _y)", "negate(multiply(_x, _y))"},
      {"multiply(negate(_x), 3)", "negate(multiply(_x, 3))"},
      {"multiply(multiply(_x, 3), 5)", "multiply(_x, 15)"},
      {"multiply(multiply(_x, 3), _y)", "multiply(multiply(_x, _y), 3)"},
      {"multiply(multiply(_x, _y), multiply(_z, _i))",
       "multiply(multiply(multiply(_x, _y), _z), _i)"},
      {"multiply(multiply(_x, 3), multiply(_y, 5))", "multiply(multiply(_y, _x), 15)"},
      {"multiply(eq(_x, _y), eq(_z, _i))", "bit_and(eq(_x, _y), eq(_z, _i))"},
      // Eight bits of a product are not the product.
      {"multiply:int(multiply:uchar(_uc, 3), 5)", nullptr},
      {"multiply:int(negate:uchar(_uc), 3)", nullptr},
  });
}

TEST_F(ArithmeticTest, ProductsWithFloatingConstants) {
  expect_rows({
      {"multiply(_d, +0.0)", "+0.0"},
      {"multiply(_d, +1.0)", "_d"},
      {"multiply(+1.0, _d)", "_d"},
      {"multiply(_d, -1.0)", "negate(_d)"},
      {"multiply(_d, +2.0)", "add(_d, _d)"},
      {"multiply(sconv:double(ucall(address(_fn))), +2.0)", nullptr},
      {"multiply(_d, +3.0)", nullptr},
  });
}

TEST_F(ArithmeticTest, ProductsWithConstants) {
  expect_rows({
      {"multiply(_x, 8)", nullptr},
      {"multiply(_x, 1)", "_x"},
      {"multiply:unsigned(_x, 1:unsigned)", "sconv:unsigned(_x)"},
      {"multiply(_x, 0)", "0"},
      {"multiply(_vol, 0)", "comma_op(_vol, 0)"},
      {"multiply(_x, -1)", "negate(_x)"},
      {"multiply(_u, 0xFFFFFFFF:unsigned)", "negate(_u)"},
      {"multiply(_x, -3)", "negate(multiply(_x, 3))"},
      {"multiply(_x, -2147483648)", nullptr},
      {"multiply(add(_x, 3), 4)", "add(multiply(_x, 4), 12)"},
      {"multiply(add(_x, 0x40000001), 4)", nullptr},
      {"multiply(bit_and(_x, 3), 4)", "bit_and(multiply(_x, 4), 12)"},
      {"multiply(bit_xor(_x, 3), 4)", "bit_xor(multiply(_x, 4), 12)"},
      {"multiply(bit_and(_x, 3), 3)", nullptr},
      {"multiply(shift_right(_x, 2), 4)", "bit_and(_x, -4)"},
      {"multiply(shift_right(_x, 1), 8)", "bit_and(multiply(_x, 4), -8)"},
      {"multiply(shift_right(_x, 3), 2)", "bit_and(shift_right(_x, 2), -2)"},
      {"multiply(divide:int(subtract:int(_p, _q), 4), 4)", "subtract:int(_p, _q)"},
      {"multiply(divide:int(subtract:int(_p, _q), 4), 8)", "multiply(subtract:int(_p, _q), 2)"},
      {"multiply(divide:int(subtract:int(_p, _q), 4), 2)", "divide(subtract:int(_p, _q), 2)"},
      // Rounding down a number of characters is the program's own division.
      {"multiply(divide:int(subtract:int(_cp, _cq), 4), 4)", nullptr},
      {"multiply(divide:int(subtract:int(_cp, _cq), 4), 2)", nullptr},
  });
}

TEST_F(ArithmeticTest, Quotients) {
  expect_rows({
      {"divide(_x, _x)", "1"},
      {"divide(_d, _d)", "+1.0"},
      {"divide(_x, 1)", "_x"},
      {"divide(_x, -1)", "negate(_x)"},
      {"divide(_u, 0xFFFFFFFF:unsigned)", nullptr},
      {"divide(_u, 8:unsigned)", "shift_right(_u, 3:unsigned)"},
      {"divide:int(_us, 8)", "shift_right:int(_us, 3)"},
      {"divide(_x, 8)", nullptr},
      {"divide:unsigned(_x, 8:unsigned)", nullptr},
      {"divide(multiply:int(_s, 6), 3)", "multiply:int(_s, 2)"},
      {"divide(negate(multiply:int(_s, 6)), 3)", "negate(multiply:int(_s, 2))"},
      {"divide(multiply:int(_s, 6), 4)", nullptr},
      {"divide(multiply:int(_s, 8), 4)", nullptr},
      // The product may have wrapped as an unsigned one before it was converted.
      {"divide(sconv:int(multiply(_u, 6:unsigned)), 3)", nullptr},
      {"divide(multiply(negate:int(_s), -2147483648), 16)",
       "divide(multiply:int(_s, -2147483648), 16)"},
      {"divide(multiply(_u, 6:unsigned), 3:unsigned)", nullptr},
      {"divide(multiply:char(_c, 6:char), 3:char)", nullptr},
      {"divide(_x, 0)", nullptr},
  });
}

TEST_F(ArithmeticTest, QuotientsOfNarrowOperandsByLargeConstants) {
  expect_rows({
      {"divide:long(sconv:long(_s), 100000:long)", "0:long"},
      {"divide:long(sconv:long(sconv:short(ucall(address(_fn)))), 100000:long)",
       "comma_op(ucall(address(_fn)), 0:long)"},
      {"divide:long(sconv:long(_s), 32769:long)", "0:long"},
      {"divide:long(sconv:long(_s), -32769:long)", "0:long"},
      {"divide:long(sconv:long(_s), 32767:long)", nullptr},
      {"divide:long(sconv:long(_s), -32767:long)", nullptr},
      {"divide:long(sconv:long(_c), 127:long)", nullptr},
      {"divide:long(sconv:long(_us), 65536:long)", "0:long"},
      {"divide:long(sconv:long(_us), 40000:long)", nullptr},
      {"divide:long(sconv:long(_uc), 150:long)", nullptr},
      // The least value of s over its own magnitude is -1.
      {"divide:long(sconv:long(_s), 32768:long)", nullptr},
  });
}

TEST_F(ArithmeticTest, QuotientsByFloatingPowersOfTwo) {
  expect_rows({
      {"divide(_d, +2.0)", "multiply(_d, +0.5)"},
      {"divide(_d, -4.0)", "multiply(_d, -0.25)"},
      {"divide(_d, +0.5)", "add(_d, _d)"},
      {"divide(_d, +3.0)", nullptr},
      {"divide(_d, +0.0)", nullptr},
      // More digits than the text of a constant has.
      {"divide(_d, +4.194304e6)", nullptr},
      {"divide(_d, +4.294967296e9)", nullptr},
  });
}

TEST_F(ArithmeticTest, Remainders) {
  expect_rows({
      {"remainder(_u, 8:unsigned)", "bit_and(_u, 7:unsigned)"},
      {"remainder:int(_us, 8)", "bit_and:int(_us, 7)"},
      {"remainder(_x, 8)", nullptr},
      {"remainder(_x, 0)", nullptr},
      {"remainder(multiply(_x, 8), 8)", "0"},
      {"remainder:int(_uc, 300)", "_uc"},
      {"remainder:int(_uc, 255)", nullptr},
      {"remainder:int(_c, 300)", nullptr},
      {"remainder:int(_uc, bit_or:int(_us, 256))", "_uc"},
      {"remainder:int(_uc, bit_or(_x, 256))", nullptr},
      {"remainder:int(_uc, bit_or(bit_and(ucall(address(_fn)), 15), 256))",
       "comma_op(ucall(address(_fn)), _uc)"},
  });
}

} // namespace
} // namespace velkor
