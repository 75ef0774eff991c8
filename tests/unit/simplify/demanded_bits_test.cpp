// Rewriting under the knowledge that only some bits are looked at.
#include "simplify/bits.h"
#include "simplify/tree_rows.h"

namespace velkor {
namespace {

class DemandedBitsTest : public TreeRowTest {
protected:
  struct Row {
    const char *input;
    std::uint32_t mask;
    const char *output; // a null pointer: the tree stays as it is
  };

  void expect_demands(const std::vector<Row> &rows) {
    for (const Row &row : rows) {
      NODE *input = tree(row.input);
      if (!input) continue;
      const std::string expected = text(tree(row.output ? row.output : row.input));
      EXPECT_EQ(text(demand_bits(input, row.mask)), expected)
          << row.input << " under mask " << std::hex << row.mask;
    }
  }
};

TEST_F(DemandedBitsTest, Conversions) {
  expect_demands({
      {"sconv:uchar(_x)", 15, "_x"},
      {"sconv:uchar(_x)", 255, "_x"},
      {"sconv:uchar(_x)", 256 + 15, nullptr}, // the zero above the byte is looked at
      {"sconv:ushort(sconv:uchar(_x))", 15, "_x"},
      {"sconv:unsigned(_x)", 15, nullptr},
      {"sconv:char(_x)", 15, nullptr},
      {"sconv:uchar(_f)", 15, nullptr},
      {"sconv:uchar(_c)", 15, nullptr}, // not wider
      {"sconv:char(bit_and(_x, 255))", 127, "sconv:char(_x)"},
      {"sconv:short(bit_or(_x, 0x10000))", 0x80000000, "sconv:short(_x)"}, // copies of bit 15
      {"_f", 1, nullptr},
      {"_p", 1, nullptr},
      {"_x", 1, nullptr},
  });
}

TEST_F(DemandedBitsTest, NothingDemandedLeavesTheEffects) {
  expect_demands({
      {"_x", 0, "0"},
      {"_uc", 0x100, "0:uchar"},
      {"_c", 0x100, nullptr}, // a copy of the sign
      {"bit_and(_vol, 15)", 0, "comma_op(_vol, 0)"},
      {"assign(_x, _y)", 0, "comma_op(assign(_x, _y), 0)"},
  });
}

TEST_F(DemandedBitsTest, TheLowestBitNeedsNoCarries) {
  expect_demands({
      {"add(_x, _y)", 1, "bit_xor(_x, _y)"},
      {"subtract(_x, _y)", 1, "bit_xor(_x, _y)"},
      {"negate(_x)", 1, "_x"},
      {"multiply(_x, _y)", 1, "bit_and(_x, _y)"},
      {"subtract:int(_p, _q)", 1, nullptr},
      {"add:int(_f, _g)", 1, nullptr},
      {"negate:uchar(_x)", 1, "_x"},
      {"negate:uchar(_x)", 0x101, "sconv:uchar(_x)"}, // bit 8 stays zero
  });
}

TEST_F(DemandedBitsTest, SumsAndProducts) {
  expect_demands({
      {"add(sconv:uchar(_x), sconv:uchar(_y))", 255, nullptr},
      {"add:int(sconv:uchar(_x), sconv:uchar(_y))", 255, "add(_x, _y)"},
      {"add:int(sconv:uchar(_x), _y)", 0xF0, "add(_x, _y)"},
      {"add:int(sconv:uchar(_x), _y)", 0x1FF, nullptr},
      {"add:int(sconv:uchar(_x), _y)", 0x5F, nullptr},
      // 16 makes no carry below the mask, so the operand's low bits do not count either
      {"add(bit_or(_x, 3), 16)", 0xF0, "add(_x, 16)"},
      {"add(bit_or(_x, 3), 17)", 0xF0, nullptr},
      {"multiply(bit_or(_x, 0x100), 4)", 0xFF, "multiply(_x, 4)"},
      {"multiply:unsigned(bit_or(_u, 2:unsigned), 0x80000000:unsigned)", 0xC0000000,
       "multiply(_u, 0x80000000:unsigned)"},
      {"multiply:int(sconv:uchar(_x), sconv:uchar(_y))", 15, "multiply(_x, _y)"},
      {"multiply:int(sconv:uchar(_x), _y)", 0x1FF, nullptr},
      // a power of two comes out of the factor: the rest of the product is asked for fewer bits
      {"multiply(multiply(bit_xor(_x, 0x100), 128), _y)", 0xFF, "multiply(bit_and(_x, _y), 128)"},
  });
}

TEST_F(DemandedBitsTest, LogicalOperators) {
  expect_demands({
      {"bit_and(_x, 255)", 255, "_x"},
      {"bit_and(_x, 15)", 15, "_x"},
      {"bit_and(_x, 255)", 0x1FF, nullptr},
      {"bit_or(_x, 0xF00)", 255, "_x"},
      {"bit_xor(_x, 0xF00)", 255, "_x"},
      {"bit_and:int(sconv:uchar(_x), _y)", 15, "bit_and(_x, _y)"},
      {"bit_or:int(sconv:ushort(_x), sconv:ushort(_y))", 0xFF, "bit_or(_x, _y)"},
      {"conditional(_z, alternatives(bit_and(_x, 255), bit_or(_y, 256)))", 15,
       "conditional(_z, alternatives(_x, _y))"},
      // both arms lose their conversion: the whole follows them
      {"conditional(_z, alternatives(sconv:uchar(_x), sconv:uchar(_y)))", 15,
       "conditional(_z, alternatives(_x, _y))"},
      // the zeros above the byte are looked at: each arm keeps its own
      {"conditional(_z, alternatives(sconv:uchar(_x), sconv:uchar(_y)))", 0xFFFFFF0F, nullptr},
  });
}

TEST_F(DemandedBitsTest, RightShifts) {
  expect_demands({
      {"shift_right(bit_or(_x, 15), 4)", 0xFF, "shift_right(_x, 4)"},
      {"shift_right(bit_or(_u, 15:unsigned), 4)", 0xFFFFFF, "shift_right(_u, 4)"},
      {"shift_right(bit_and(_x, 0xFF0), 4)", 0xFF, "shift_right(_x, 4)"},
      // sign bits are shifted into the mask
      {"shift_right(bit_or(_x, 15), 4)", 0x90000000, nullptr},
      // zeros from above the halfword are shifted into the mask
      {"shift_right:int(sconv:ushort(_x), 12)", 0xFF, nullptr},
      {"shift_right:int(sconv:ushort(_x), 8)", 0xFF, "shift_right(_x, 8)"},
      {"shift_right(sconv:unsigned(_x), 24)", 0xFFF, nullptr},
      {"shift_right(_x, 32)", 15, nullptr},
      {"shift_right(_x, -1)", 15, nullptr},
      // back and forth: what falls out at the top is not looked at
      {"shift_right(multiply(_x, 16), 4)", 0xFF, "_x"},
      {"shift_right(multiply(_x, 16), 2)", 0xFF, "multiply(_x, 4)"},
      {"shift_right(multiply(_x, 4), 6)", 0xFF, "shift_right(_x, 4)"},
      {"shift_right(multiply(_x, 16), 4)", 0x7FFFFFFF, nullptr},
      {"shift_right:int(multiply:short(_x, 16), 4)", 0xFFF, nullptr}, // a short's own sign
  });
}

TEST_F(DemandedBitsTest, ConstantsBecomeCheap) {
  expect_demands({
      {"0x1234", 0xFF, "52"},
      {"0xF00", 0xFF, "0"},
      {"255", 15, "-1"},                        // ones to the top
      {"15", 0xFF, "15"},                       //
      {"0x80", 0xFF, "-128"},                   // the highest demanded bit is the sign
      {"-2", 0xFF, "-2"},                       //
      {"0xFFFF00FF", 0x7FFFFFFF, "0x7FFF00FF"}, // one byte of zeros is cheap as it stands
      {"0x0000FFFF", 0xFFFFF, "65535"},
      {"5", 13, "5"},   // so are zeros all over the top byte
      {"13", 13, "-1"}, // the free bits take the state of those above
      {"9", 13, "-5"},  // or from below
      {"-128:char", 0x180, "-1:char"},
      {"200:uchar", 0xF0, "192:uchar"},
      {"3:uchar", 3, "255:uchar"},
      {"3:char", 3, "-1:char"},
  });
}

// A tree that is rewritten is simplified, and that asks for bits again: the work is bounded.
TEST_F(DemandedBitsTest, LongChainsEnd) {
  NODE *chain = tree("_x");
  for (int i = 0; i < 100000; ++i) {
    chain = make_node(ADD, chain, tree("_y"), INT);
    chain = make_node(BIT_AND, chain, make_icon(0xFFFF, INT), INT);
  }
  chain = demand_bits(chain, 0xFF);
  EXPECT_EQ(chain->op, ADD); // the outermost masks are gone
}

} // namespace
} // namespace velkor
