// Rules for the bitwise operators, the shifts and the unary operators.
#include "simplify/tree_rows.h"

namespace velkor {
namespace {

class BitwiseTest : public TreeRowTest {};

TEST_F(BitwiseTest, Masks) {
  expect_rows({
      {"bit_and(_x, 15)", nullptr},
      // the operand's type, field width or truth narrows the mask
      {"bit_and:int(_uc, 0xF0F)", "bit_and:int(_uc, 15)"},
      {"bit_and(member(_st, _b3), 13:unsigned)", "bit_and(member(_st, _b3), 5:unsigned)"},
      {"bit_and:int(_uc, 255)", "_uc"},
      {"bit_and:int(_uc, -1:char)", "_uc"},
      {"bit_and:int(_uc, 0xF00)", "0"},
      {"bit_and(member(_st, _b1), 1:unsigned)", "member(_st, _b1)"},
      {"bit_and(_x, -1)", "_x"},
      {"bit_and:char(_c, 255)", "_c"},
      // low bits do not depend on conversions
      {"bit_and:int(sconv:char(_x), 127)", "bit_and(_x, 127)"},
      {"bit_and(sconv:unsigned(_x), 15:unsigned)", "bit_and:unsigned(_x, 15:unsigned)"},
      {"bit_and:int(sconv:char(_x), 511)", "bit_and:int(sconv:char(_x), 511)"},
      {"bit_and:int(sconv:uchar(_f), 15)", nullptr},
      // products and shifts have zeros at one end
      {"bit_and(multiply(_x, 8), -8)", "multiply(_x, 8)"},
      {"bit_and(multiply(_x, 8), 7)", "0"},
      {"bit_and(multiply(_x, 8), 0x1F)", "bit_and(multiply(_x, 8), 24)"},
      {"bit_and(shift_right(_u, 24), 0xFF0:unsigned)",
       "bit_and(shift_right(_u, 24), 240:unsigned)"},
      {"bit_and(shift_right(_u, 24), 255:unsigned)", "shift_right(_u, 24)"},
      {"bit_and(shift_right(_x, 24), 0xFF0)", nullptr},
      // what the operand can have at all
      {"bit_and(bit_xor(bit_and(_x, 6), bit_and(_y, 3)), 14)",
       "bit_and(bit_xor(bit_and(_y, 2), _x), 6)"},
      {"bit_and(remainder(_u, 8:unsigned), 15:unsigned)", "bit_and(_u, 7:unsigned)"},
      {"bit_and:int(bit_or:int(_uc, bit_and(_x, 0x300)), 0xF0F)",
       "bit_and:int(bit_or:int(bit_and(_x, 0x300), _uc), 0x30F)"},
      {"bit_and(add(bit_and(_x, 255), _y), 15)", "bit_and(add(_x, _y), 15)"},
      // dropping the low bit of the | frees a bit of the ^'s constant, and that one frees another
      {"bit_and(bit_or(bit_xor:int(_uc, 252), 3), 254)",
       "bit_and(bit_or(bit_xor:int(_uc, -1), 2), 254)"},
      {"bit_xor(bit_or(bit_xor:int(_uc, 255), 3), 1)",
       "bit_and(bit_or(bit_xor:int(_uc, -1), 2), 254)"},
      {"bit_and(subtract(5:unsigned, member(_st, _b1)), 3:unsigned)",
       "subtract(1:unsigned, member(_st, _b1))"},
  });
}

TEST_F(BitwiseTest, EqualOperands) {
  expect_rows({
      {"bit_and(_x, _x)", "_x"},
      {"bit_or(_x, _x)", "_x"},
      {"bit_xor(_x, _x)", "0"},
      {"bit_and:uchar(_x, _x)", "sconv:uchar(_x)"},
      {"bit_xor:unsigned(_u, _u)", "0:unsigned"},
      // two calls, two reads of a volatile object
      {"bit_and(ucall(address(_fn)), ucall(address(_fn)))", nullptr},
      {"bit_or(_vol, _vol)", nullptr},
      {"bit_xor(_vol, _vol)", nullptr},
  });
}

TEST_F(BitwiseTest, Ors) {
  expect_rows({
      {"bit_or(_x, 15)", nullptr},
      {"bit_or(_x, -1)", "-1"},
      {"bit_or(_vol, -1)", "comma_op(_vol, -1)"},
      {"bit_or:uchar(_uc, 255)", "255:uchar"},
      // bits that are set already, or set anyway
      {"bit_or(bit_xor(bit_or(_x, 4), bit_or(_y, 4)), 4)", "bit_or(bit_xor(_x, _y), 4)"},
      {"bit_or(multiply(bit_or(_x, 1), 4), 4)", "bit_or(multiply(_x, 4), 4)"},
      {"bit_or:int(multiply(bit_or(_x, 3), 4), 12)", "bit_or(multiply(_x, 4), 12)"},
      {"bit_or(add(bit_and(_x, 255), _y), -16)", "bit_or(add(_x, _y), -16)"},
      {"bit_or:int(sconv:char(bit_or(_x, 0x84)), 0x90)",
       "bit_or:int(sconv:char(bit_or(_x, -124)), 16)"},
      {"bit_or:int(sconv:char(bit_or(_x, 0x80)), 0x7F)", "-1"},
      {"bit_or(bit_and(_x, -16), 15)", "bit_or(_x, 15)"},
      // ((z | K2) & K1) | K
      {"bit_or(bit_and(bit_or(multiply(_x, _y), 1), 0xFF), 0x100)",
       "bit_and(bit_or(multiply(_x, _y), -255), 511)"}, // only 257 of it counts
  });
}

// ((y & K3) | K2) & K  and  ((z | K2) & K1) | K  may not undo each other.
TEST_F(BitwiseTest, MasksAndOrsOfEachOther) {
  expect_rows({
      {"bit_and(bit_or(bit_and(_x, 0xFF0), 5), 0xFC)", "bit_or(bit_and(_x, 240), 4)"},
      {"bit_or(bit_and(bit_or(bit_and(_x, 0xFF0), 5), 0xFC), 0x800)",
       "bit_or(bit_and(_x, 240), 2052)"},
  });
}

TEST_F(BitwiseTest, Xors) {
  expect_rows({
      {"bit_xor(_x, 15)", nullptr},
      // bits that are clear or set for sure
      {"bit_xor(bit_and(_x, 15), 16)", "bit_or(bit_and(_x, 15), 16)"},
      {"bit_xor(bit_or(_x, 15), 3)", "bit_and(bit_or(_x, 12), -4)"},
      {"bit_xor:int(_uc, 256)", "bit_or:int(_uc, 256)"},
      {"bit_xor(shift_right(_u, 4), 15:unsigned)", "shift_right(bit_xor(_u, 240:unsigned), 4)"},
      {"bit_xor(shift_right(_x, 4), 15)", nullptr},
      {"bit_xor:uchar(shift_right:uchar(_u, 4), 15:uchar)", nullptr}, // the ^ would cut _u
      {"bit_xor(bit_and(_x, 12), 12)", "bit_and(bit_xor(_x, -1), 12)"},
      {"bit_xor(bit_and(_x, 12), -1)", "bit_or(bit_xor(_x, -1), -13)"},
  });
}

TEST_F(BitwiseTest, Shifts) {
  expect_rows({
      {"shift_left(_x, _y)", nullptr},
      {"shift_left(_x, -1)", nullptr},
      {"shift_right(_x, -1)", nullptr},
      {"shift_left(_x, 0)", "_x"},
      {"shift_right(_x, 0)", "_x"},
      {"shift_left(_x, 32)", "0"},
      {"shift_left(_vol, 32)", "comma_op(_vol, 0)"},
      {"shift_right(_x, 40)", "shift_right(_x, 31)"},
      {"shift_right(_u, 40)", "0:unsigned"},
      {"shift_right:int(_c, 9)", "shift_right:int(_c, 7)"},
      {"shift_right:int(_uc, 9)", "0"},
      {"shift_left(_x, 3)", "multiply(_x, 8)"},
      {"shift_left(_u, 31)", "multiply(_u, 0x80000000:unsigned)"},
      {"shift_left:int(_uc, 8)", "multiply:int(_uc, 256)"},
      {"shift_left:uchar(_uc, 8)", "0:uchar"},
      {"shift_right(shift_right(_x, 2), 3)", "shift_right(_x, 5)"},
      {"shift_right(shift_right(_x, 20), 20)", "shift_right(_x, 31)"},
      {"shift_right(shift_right(_u, 20), 20)", "0:unsigned"},
      {"shift_right:int(shift_right:int(_uc, 2), 3)", "shift_right:int(_uc, 5)"},
      {"shift_right:unsigned(shift_right:unsigned(_x, 2), 3)", nullptr}, // two kinds of shifts
      {"shift_right(bit_or(_x, 7), 3)", "shift_right(_x, 3)"},
      {"shift_right(sconv:unsigned(bit_or(_x, 7)), 3)", "shift_right(sconv:unsigned(_x), 3)"},
  });
}

TEST_F(BitwiseTest, ShiftsSink) {
  expect_rows({
      {"shift_right(bit_and(_x, 0xF0), 4)", "bit_and(shift_right(_x, 4), 15)"},
      {"shift_right(bit_and(_x, -16), 2)", "bit_and(shift_right(_x, 2), -4)"},
      // the mask's type gives the sign
      {"shift_right(bit_and:unsigned(_x, 0xFFFFFF00:unsigned), 4)",
       "bit_and(shift_right(sconv:unsigned(_x), 4), 0x0FFFFFF0:unsigned)"},
      {"shift_right:char(bit_and:char(_x, -16:char), 2)", nullptr}, // cut to a char before
      {"shift_right(multiply(_u, 16:unsigned), 8)",
       "bit_and(shift_right(_u, 4), 0xFFFFFF:unsigned)"},
      {"shift_right(multiply(_u, 256:unsigned), 4)",
       "bit_and(multiply(_u, 16:unsigned), 0x0FFFFFF0:unsigned)"},
      {"shift_right(multiply(_u, 16:unsigned), 4)", "bit_and(_u, 0x0FFFFFFF:unsigned)"},
      {"shift_right(multiply:unsigned(_x, 16:unsigned), 8)",
       "bit_and(shift_right(sconv:unsigned(_x), 4), 0xFFFFFF:unsigned)"},
      {"shift_right(multiply(_x, 16), 4)", nullptr},
      {"shift_right(multiply(_u, 12:unsigned), 4)", nullptr},
  });
}

TEST_F(BitwiseTest, NegationAndComplement) {
  expect_rows({
      {"complement(_x)", "bit_xor(_x, -1)"},
      {"complement(_uc)", "bit_xor(_uc, 255:uchar)"},
      {"complement(_c)", "bit_xor(_c, -1:char)"},
      {"complement(complement(_x))", "_x"},
      {"negate(_x)", nullptr},
      {"negate(negate(_x))", "_x"},
      {"negate(negate(_d))", "_d"},
      {"negate:int(negate:uchar(_uc))", nullptr},
      {"sqrt(_d)", nullptr},
  });
}

TEST_F(BitwiseTest, Magnitudes) {
  expect_rows({
      {"abs(_x)", nullptr},
      {"abs(bit_and(_x, 15))", "bit_and(_x, 15)"},
      {"abs(multiply(_x, _x))", "multiply(_x, _x)"},
      {"abs(multiply(_d, _d))", "multiply(_d, _d)"},
      {"abs(multiply:char(_c, _c))", nullptr}, // 12 * 12 is negative in a char
      {"abs(multiply(ucall(address(_fn)), ucall(address(_fn))))", nullptr},
      {"abs(square(_x))", "square(_x)"},
      {"abs(abs(_x))", "abs(_x)"},
      {"abs(negate(_d))", "abs(_d)"},
      {"square(negate(_x))", "square(_x)"},
      {"square(abs(_d))", "square(_d)"},
      {"square:int(negate:uchar(_x))", nullptr}, // 255 for a 1
      {"abs(eq(_x, _y))", "eq(_x, _y)"},
      {"square(bit_and(_x, 1))", "bit_and(_x, 1)"},
      {"abs(add(bit_and(_x, 1), -1))", "subtract(1, bit_and(_x, 1))"},
      {"square(subtract(1, eq(_x, _y)))", "subtract(1, eq(_x, _y))"},
      {"abs(subtract(1, _x))", "abs(add(_x, -1))"},
      {"square(add(_x, -1))", nullptr},
      {"abs:int(add:uchar(sconv:uchar(bit_and(_x, 1)), -1:uchar))", nullptr}, // 255 for a 0
  });
}

// The simplifier meets each level of a chain anew.
TEST_F(BitwiseTest, LongChainsTakeTheirTime) {
  NODE *chain = tree("_u");
  for (int i = 0; i < 20000; ++i) {
    NODE *sum = make_node(ADD, chain, tree("_v"), UNSIGNED);
    chain = make_node(BIT_AND, sum, make_icon(0xFFFF, UNSIGNED), UNSIGNED);
  }
  chain = simplify_tree(chain);
  EXPECT_EQ(chain->op, BIT_AND);
  EXPECT_EQ(chain->left->op, ADD);
}

} // namespace
} // namespace velkor
