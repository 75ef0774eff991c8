// Memory accesses as narrow as the bits that are looked at.
#include "lower/lowering_rows.h"

namespace velkor {
namespace {

class NarrowAccessesTest : public LoweringTest {};

TEST_F(NarrowAccessesTest, MasksReadThePartThatTheyLookAt) {
  expect_narrowed({
      {"assign(_y, bit_and(_g1, 0x7F))",
       "assign(_y, bit_and:int(deref(address:uchar*(_g1)), 0x7F))"},
      {"assign(_y, bit_and(_g1, 0x7FFF))",
       "assign(_y, bit_and:int(deref(address:ushort*(_g1)), 0x7FFF))"},
      {"assign(_y, bit_and(_g1, 0x17FFF))", nullptr},
      {"assign(_y, bit_and(_vol, 0x7F))", nullptr},
      {"assign(_y, bit_and(_r, 0x7F))", nullptr},
      {"assign(_y, bit_and(_cr, 0x7F))", nullptr},
      {"assign(_y, bit_and(_h, 0x7F))", nullptr},
      {"assign(_y, bit_and(member(_st, _m), 0x7F))", nullptr},
      {"assign(_y, bit_and(arrow(_sp, _m), 0x7F))", nullptr},
      {"assign(_y, bit_and(increment(_g1, 1), 0x7F))", nullptr},
      {"assign(_l, bit_and(_l, 0x7F:long))", nullptr}, // no narrower part of it is cheaper
  });
}

TEST_F(NarrowAccessesTest, ConversionsOfNarrowTypesLookAtTheSign) {
  expect_narrowed({
      {"assign(_y, bit_and(sconv:short(_g1), 0xFF0000))",
       "assign(_y, bit_and(sconv:short(deref(address:ushort*(_g1))), 0xFF0000))"},
      {"assign(_y, bit_and(sconv:char(_g1), 0xFF00))",
       "assign(_y, bit_and(sconv:char(deref(address:uchar*(_g1))), 0xFF00))"},
  });
}

TEST_F(NarrowAccessesTest, ShiftsReadTheFieldsPart) {
  expect_narrowed({
      {"assign(_y, shift_right(_g1, 24))", "assign(_y, deref(add(address:char*(_g1), 3)))"},
      {"assign(_u, shift_right(_gu, 24))", "assign(_u, deref(add(address:uchar*(_gu), 3)))"},
      {"assign(_y, shift_right(_g1, 20))", nullptr}, // a halfword, its sign and a shift cost more
      {"assign(_y, shift_right(_g1, 16))", "assign(_y, deref(add(address:short*(_g1), 2)))"},
      {"assign(_y, shift_right(_g1, 8))", nullptr},
      {"assign(_y, shift_right(shift_left(_g1, 8), 24))",
       "assign(_y, deref(add(address:char*(_g1), 2)))"},
      {"assign(_y, shift_right(shift_left(_g1, 8), 26))",
       "assign(_y, shift_right:int(deref(add(address:char*(_g1), 2)), 2))"},
      {"assign(_y, shift_right(shift_left(_g1, 4), 24))", nullptr}, // the sign is inside of a byte
      {"assign(_u, bit_and(sconv:unsigned(shift_right(_g1, 4)), 0xF0000000:unsigned))",
       nullptr}, // all of it are copies of the sign
  });
}

TEST_F(NarrowAccessesTest, StoresChangeThePartThatChanges) {
  expect_narrowed({
      {"assign(_g1, bit_or(bit_and(_g1, 0xFFFF00FF), 0x100))",
       "assign(deref(add(address:uchar*(_g1), 1)), 1:uchar)"},
      {"asg_or(_g1, 0x10000)", "asg_or(deref(add(address:uchar*(_g1), 2)), 1:uchar)"},
      {"asg_or(_g1, 0x11000)", nullptr}, // in two halves of the word
      {"asg_xor(_g1, 0x01010000)", "asg_xor(deref(add(address:ushort*(_g1), 2)), 257:ushort)"},
      {"asg_and(_g1, 0xFFFF00FF)", "assign(deref(add(address:uchar*(_g1), 1)), 0:uchar)"},
      {"asg_or(_gc, 1:char)", nullptr},
      {"asg_or(_vol, 0x10000)", nullptr},
      {"assign(_y, asg_or(_g1, 0x10000))", nullptr}, // its value is used
  });
}

TEST_F(NarrowAccessesTest, TheOtherOrderOfBitsReadsTheOtherEnd) {
  options.opt_big_endian_bits = 1;
  expect_narrowed({
      {"assign(_y, bit_and(_g1, 0x7F))",
       "assign(_y, bit_and:int(deref(add(address:uchar*(_g1), 3)), 0x7F))"},
      {"asg_or(_g1, 0x10000)", "asg_or(deref(add(address:uchar*(_g1), 1)), 1:uchar)"},
      {"assign(_y, shift_right(_g1, 24))", "assign(_y, deref(address:char*(_g1)))"},
  });
}

TEST_F(NarrowAccessesTest, AwkwardAddendsAreShifted) {
  expect_narrowed({
      {"assign(_u, bit_and(add(_v, 0x1FE00:unsigned), 0xFFFFFE00:unsigned))",
       "assign(_u, shift_left(add(shift_right(_v, 9), 255:unsigned), 9))", 1},
      {"assign(_u, bit_and(add(_v, 0x1FE00:unsigned), 0xFFFFFF00:unsigned))", nullptr, 1},
      {"assign(_u, bit_and(add(_v, 0xFE00:unsigned), 0xFFFFFE00:unsigned))", nullptr, 0},
  });
}

} // namespace
} // namespace velkor
