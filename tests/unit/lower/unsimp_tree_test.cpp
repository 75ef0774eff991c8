// Trees back from the simplifier's canonical forms.
#include "core/target.h"
#include "lower/lowering_rows.h"

namespace velkor {
namespace {

class UnsimpTreeTest : public LoweringTest {};

TEST_F(UnsimpTreeTest, ConstantsBecomePositive) {
  expect_lowered({
      {"add(_x, -1)", "subtract(_x, 1)"},
      {"subtract(_x, -5)", "add(_x, 5)"},
      {"add(_u, 0xFFFFFFFF:unsigned)", "subtract(_u, 1:unsigned)"},
      {"add(_x, -2147483648)", nullptr}, // has no opposite
      {"add(_cp, -4)", "subtract(_cp, 4)"},
      {"asg_add(_x, -3)", "asg_subtract(_x, 3)"},
      {"asg_add(_uc, 255)", "asg_subtract(_uc, 1)"},
      {"asg_add(_x, 255)", nullptr},
      {"asg_add(_p, -4)", "asg_subtract(_p, 4)"},
      {"negate(multiply(_x, 3))", "multiply(_x, -3)"},
      {"negate(multiply(_x, -2147483648))", "negate(shift_left(_x, 31))"},
      {"negate(subtract(_x, _y))", "subtract(_y, _x)"},
      {"negate(multiply(subtract(_x, _y), _z))", "multiply(subtract(_y, _x), _z)"},
      {"negate(multiply:int(subtract:char(_c, _x), _z))", nullptr}, // the inner one is cut
      {"negate(subtract(_d, _e))", nullptr},                        // -0.0
  });
}

TEST_F(UnsimpTreeTest, ProductsBecomeShifts) {
  expect_lowered({
      {"multiply(_x, 8)", "shift_left(_x, 3)"},
      {"multiply(_x, 4)", nullptr},
      {"multiply(_x, 12)", nullptr},
      {"multiply(_u, 0x80000000:unsigned)", "shift_left(_u, 31)"},
      {"multiply:int(_uc, 16)", "shift_left:int(sconv:int(_uc), 4)"},
      {"multiply(_d, 8)", nullptr},
      {"asg_multiply(_x, 16)", "asg_shift_left(_x, 4)"},
      {"asg_multiply(_f, 16)", nullptr},
      {"add(multiply(_x, 3), 6)", "multiply(add(_x, 2), 3)"},
      {"add(multiply(_x, 8), -16)", "subtract(shift_left(_x, 3), 16)"},
      {"add(multiply(_x, 3), 7)", nullptr},
      {"add(multiply(_x, -1), 6)", "multiply(subtract(_x, 6), -1)"},
      {"add(multiply(_x, -1), -2147483648)", nullptr}, // no quotient
      {"multiply(recip(_d), _e)", "divide(_e, _d)"},
      {"multiply(_e, recip:float(_f))", "multiply(_e, divide:float(fcon:float[\"+1.0\"], _f))"},
      {"divide(subtract:int(_p, _q), 4)", "pvconv(subtract:int(_p, _q), 32)"},
      {"divide(subtract(_x, _y), 4)", nullptr},
      {"divide:unsigned(subtract:int(_p, _q), 4)", nullptr}, // PVCONV divides signed words
  });
}

TEST_F(UnsimpTreeTest, PointersAreScaled) {
  expect_lowered({
      {"add(_p, multiply(_i, 4))", "add:int*(pmconv(_i, 32), _p)"},
      {"add(_p, multiply(_i, -4))", "add:int*(multiply(_i, -4), _p)"},
      {"add(_p, multiply(_i, 0x10000001))", "add:int*(multiply(_i, 0x10000001), _p)"}, // in bits
      {"add(_p, multiply:short(_s, 5:short))", "add:int*(multiply:short(_s, 5:short), _p)"},
      {"add(pconv:char*(1000), 24)", "pconv:char*(1024)"},
      {"add(pconv:char*(100:char), 100)", "pconv:char*(200)"},
      {"deref:char(_p)", "deref(pconv:char*(_p))"},
      {"deref:int(_p)", nullptr},
      {"_p:char*", "pconv:char*(_p)"},
      {"assign(_p:char*, _cp)", nullptr}, // a place is no value
      {"address(sconv:char(_x))", "pconv:char*(address(_x))"},
      {"deref(address(pconv:char*(_p)))", "deref(pconv:char**(address(_p)))"},
  });
}

TEST_F(UnsimpTreeTest, IndicesThatCountBytesAlreadyAreScaledAlike) {
  expect_lowered({
      {"add:int*(_p, pmconv(multiply(_i, 4), 8))", "add:int*(pmconv(_i, 32), _p)"},
      {"add:int*(pmconv(multiply(bit_and(_n, 1), 4), 8), address(_a))",
       "add:int*(pmconv(bit_and(_n, 1), 32), address(_a))"},
      {"add:int*(add:int*(_p, pmconv(multiply(_i, 12), 8)), pmconv(4, 8))",
       "add:int*(add:int*(pmconv(_i, 96), _p), pmconv(4, 8))"},
      {"add:int*(_p, pmconv(_i, 8))", nullptr},
      {"add:int*(_p, pmconv(multiply(_i, 4), 16))", nullptr},
      {"add:int*(_p, pmconv(multiply(_i, -4), 8))", nullptr},
      {"add:int*(_p, pmconv(multiply:short(_s, 4), 8))", nullptr}, // cut to 16 bits
  });
}

TEST_F(UnsimpTreeTest, MasksSinkBelowProductsAndShifts) {
  expect_lowered({
      {"bit_and(multiply(_x, 8), 0x38)", "shift_right:int(sconv:unsigned(shift_left(_x, 29)), 26)"},
      {"bit_and(multiply(_x, 2), 0xE)", "multiply(bit_and(_x, 7), 2)"},
      {"bit_and(multiply(_x, 8), 0x34)", "shift_left(bit_and(_x, 6), 3)"},
      {"bit_and(shift_left(_x, 3), -16)", "shift_left(bit_and(_x, 0x1FFFFFFE), 3)"},
      {"bit_and(shift_left(_u, 3), -16:char)", "shift_left(bit_and(_u, 0x1FFFFFFE:unsigned), 3)"},
      {"bit_xor(_x, -1)", "complement(_x)"},
      {"bit_xor:uchar(_uc, 255)", "complement:uchar(_uc)"},
      {"bit_xor(_x, 255)", nullptr},
      {"asg_and(_uc, 0x1FF)", "asg_and(_uc, 255:uchar)"},
  });
}

TEST_F(UnsimpTreeTest, MasksThatNoInstructionNamesBecomeTwoShifts) {
  expect_lowered({
      {"bit_and(shift_right(_x, 3), 0xFF)", nullptr, 1},
      {"bit_and(shift_right(_x, 3), 0xFFF)", nullptr, 0},
      {"bit_and(shift_right(_x, 3), 0xFFF)",
       "sconv:int(shift_right(sconv:unsigned(shift_left(_x, 17)), 20))", 1},
      {"bit_and(shift_right(_u, 3), 0xFFF:unsigned)", "shift_right(shift_left(_u, 17), 20)", 1},
      {"bit_and(shift_right(_x, 20), 0xFFF)", nullptr, 1}, // the sign is looked at
      {"shift_left(bit_and(_u, 0xFFF:unsigned), 4)", "shift_right(shift_left(_u, 20), 16)"},
      {"shift_left(bit_and(_x, 0xFF), 8)",
       "shift_right:int(sconv:unsigned(shift_left(_x, 24)), 16)"},
      {"shift_left(bit_and(_l, 0xFF:long), 8)",
       "shift_right:long(sconv:unsigned(shift_left(_l, 24)), 16)"}, // zeros come in, as for an int
      {"shift_left(bit_and(_u, 0x1FFFF:unsigned), 16)", nullptr},   // ones are shifted out
      {"shift_left(bit_and(_u, 3:unsigned), 4)", nullptr},
  });
}

TEST_F(UnsimpTreeTest, Assignments) {
  expect_lowered({
      {"assign(_x, add(_x, 1))", "asg_add(_x, 1)"},
      {"assign(_x, add(_y, _x))", "asg_add(_x, _y)"},
      {"assign(_x, subtract(_y, _x))", nullptr},
      {"assign(_x, add(_x, -1))", "asg_subtract(_x, 1)"},
      {"assign(_p, add(_p, multiply(_i, 4)))", "asg_add(_p, pmconv(_i, 32))"},
      {"assign(_c, add:int(_c, 1))", "asg_add(_c, 1)"},
      {"assign(_x, add:unsigned(_x, _u))", nullptr},
      {"assign(_vol, add(_vol, 1))", nullptr},
      {"assign(_x, add(_x, call(address(_fn), 1)))", nullptr}, // the callee may change x
      {"assign(_h, add(_h, call(address(_fn), 1)))", "asg_add(_h, call(address(_fn), 1))"},
      {"assign(_r, conditional(_x, alternatives(_y, _z)))",
       "conditional(_x, alternatives(assign(_r, _y), assign(_r, _z)))"},
      {"assign(_x, conditional(_y, alternatives(_y, _z)))", nullptr},
      {"add(asg_subtract(_x, 1), 1)", "decrement(_x, 1)"},
      {"subtract(asg_add(_p, 4), 4)", "increment(_p, 4)"},
      {"add:int(asg_subtract(_uc, 1), 1)", nullptr}, // 256, not 0
      {"add(asg_subtract(_x, 1), 2)", nullptr},
  });
}

TEST_F(UnsimpTreeTest, Control) {
  expect_lowered({
      {"nassert(lt(_x, 5))", "icon:int[value=0]"},
      {"nassert(assign(_x, 5))", "assign(_x, 5)"},
      {"assert(bit_or(lt(_x, 1), gt(_y, 2)))", "assert(logical_or(lt(_x, 1), gt(_y, 2)))"},
      {"assert(bit_or(lt(_x, 1), _y))", nullptr},
      {"switch(_x, default(L1))", nullptr},
      {"switch(_x, case(4, L1))", "switch[cases=1](_x, case(4, L1))"},
      {"switch(_x, comma(comma(comma(case(-3, L1), case(4, L2)), case(10, L3)), default(L4)))",
       "switch[cases=3,range=13](_x, comma(comma(comma(case(-3, L1), case(4, L2)), case(10, L3)), "
       "default(L4)))"},
      {"switch(_x, comma(case(-3, L1), case(4, L2)))",
       "switch[cases=2,range=7](_x, comma(case(-3, L1), case(4, L2)))"},
  });
}

TEST_F(UnsimpTreeTest, ImmediateOperands) {
  const auto is_immediate = [](std::int32_t value, int mode) {
    options.opt_target_mode = mode;
    return is_immediate_operand(icon(value));
  };
  EXPECT_TRUE(is_immediate(255, 1) && is_immediate(-256, 1));
  EXPECT_FALSE(is_immediate(256, 1) || is_immediate(-257, 1));
  EXPECT_TRUE(is_immediate(0xFFF, 0) && is_immediate(0x11111111, 0) && is_immediate(-256, 0));
  EXPECT_TRUE(is_immediate(static_cast<std::int32_t>(0xF000000F), 0));
  EXPECT_FALSE(is_immediate(-4, 0) || is_immediate(0x7FFFFFFF, 0));
}

} // namespace
} // namespace velkor
