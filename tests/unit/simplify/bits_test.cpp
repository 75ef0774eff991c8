// What is known of the bits and of the bounds of integer expressions.
#include "simplify/bits.h"
#include "simplify/tree_rows.h"

#include <limits>

namespace velkor {
namespace {

constexpr std::uint32_t all = ~0u;

class BitsTest : public TreeRowTest {
protected:
  struct MaskRow {
    const char *tree;
    std::uint32_t mask;
    TypeWord type = INT; // that the mask is wrapped to
  };
  using Analysis = std::uint32_t (*)(const NODE *, TypeWord);

  void expect_masks(Analysis analysis, const std::vector<MaskRow> &rows) {
    for (const MaskRow &row : rows) {
      const NODE *node = tree(row.tree);
      if (!node) continue;
      EXPECT_EQ(analysis(node, row.type), row.mask) << row.tree;
    }
  }

  struct BoundsRow {
    const char *tree;
    std::int32_t low;
    std::int32_t high;
  };

  void expect_bounds(const std::vector<BoundsRow> &rows, const ValueRange *ranges = nullptr) {
    for (const BoundsRow &row : rows) {
      const NODE *node = tree(row.tree);
      if (!node) continue;
      EXPECT_EQ(lower_bound(node, ranges), row.low) << row.tree;
      EXPECT_EQ(upper_bound(node, ranges), row.high) << row.tree;
    }
  }
};

TEST_F(BitsTest, PossibleBits) {
  expect_masks(possible_bits, {
                                  {"5", 5},
                                  {"-1:char", 0xFF, UNSIGNED_CHAR},
                                  {"_x", all},
                                  {"_f", all},
                                  {"_p", all, CHAR}, // no integer: not wrapped either
                                  {"_uc", 0xFF},
                                  {"_c", all},
                                  {"_c", 0xFF, UNSIGNED_CHAR},
                                  {"sconv:int(_uc)", 0xFF},
                                  {"sconv:char(_uc)", all},
                                  {"sconv:uchar(_x)", 0xFF},
                                  {"sconv:ushort(_f)", 0xFFFF},
                                  {"bit_and(_x, 15)", 15},
                                  {"bit_or:int(_uc, 0x100)", 0x1FF},
                                  {"bit_xor:int(bit_or:int(_uc, 4), 4)", 0xFB},
                                  {"eq(_x, _y)", 1},
                                  {"logical_not(_p)", 1},
                                  {"member(_st, _b3)", 7},
                                  {"arrow(_sp, _b1)", 1},
                                  {"member(_st, _s3)", all},
                                  {"conditional(_x, alternatives(bit_and(_x, 4), 3))", 7},
                                  {"shift_left:int(_uc, 4)", 0xFF0},
                                  {"shift_left:int(_uc, -1)", all},
                                  {"shift_left:int(_uc, 32)", all},
                                  {"shift_right(_u, 28)", 15},
                                  {"shift_right(_x, 28)", all},
                                  {"shift_right:int(_uc, 4)", 15},
                                  {"shift_right:unsigned(_c, 28)",
                                   all}, // the operand's sign counts, not the node's
                                  {"shift_right(_u, _x)", all},
                                  {"multiply(bit_and(_x, 3), 8)", 0x18},
                                  {"multiply:int(_uc, 3)", all},
                                  {"multiply:int(_f, 8)", all}, // 0.125 * 8 is odd
                                  {"abs(bit_and(_x, 15))", 15},
                                  {"abs(_x)", all},
                                  // -256 has bit 7 clear, its magnitude's char has not
                                  {"abs(bit_and(_x, -129))", all, CHAR},
                                  {"assign(_c, 0x1FF)", all},
                                  {"assign(_uc, 0x1F0)", 0xF0},
                                  {"asg_and(_x, 6)", 6},
                                  {"asg_or(_uc, 0x100)", 0xFF},
                                  {"asg_shift_right(_uc, 4)", 15},
                                  {"asg_multiply(_uc, 16)", 0xF0},
                                  {"asg_remainder(_u, 8)", 7},
                                  {"asg_remainder(_uc, 8)", 7},
                              });
}

TEST_F(BitsTest, PossibleBitsOfRemainders) {
  expect_masks(possible_bits,
               {
                   {"remainder(_u, 8)", 7},
                   {"remainder(_u, 9)", 15},
                   {"remainder(_uc, 1000)", 0xFF}, // not above the dividend
                   {"remainder(bit_and(_x, 3), 1000)", 3},
                   {"remainder(_x, 8)", all}, // a negative dividend has a negative remainder
                   {"remainder(bit_and(_x, 255), _y)", all},
                   {"remainder(_u, 0)", all},
                   {"remainder:unsigned(bit_and(_x, 0), _u)", 0},
                   {"remainder:int(_u, 8)", all}, // divides signed what was analysed unsigned
               });
}

TEST_F(BitsTest, AssignmentsToBitFieldsYieldWhatTheFieldHolds) {
  expect_masks(possible_bits, {
                                  {"assign(member(_st, _b3), 9)", 1},
                                  {"assign(member(_st, _b3), _x)", 7},
                                  {"assign(member(_st, _s3), 7)", all}, // -1
                                  {"assign(member(_st, _s3), 11)", 3},
                                  {"asg_or(member(_st, _b3), 8)", 7},
                              });
  expect_masks(certain_bits, {
                                 {"assign(member(_st, _b3), bit_or(_x, 9))", 1},
                                 {"assign(member(_st, _b3), bit_or(_x, 8))", 0},
                                 {"assign(member(_st, _s3), bit_or(_x, 4))", 0xFFFFFFFC},
                                 {"asg_or(member(_st, _b3), 8)", 0},
                             });
}

TEST_F(BitsTest, CertainBits) {
  expect_masks(certain_bits, {
                                 {"5", 5},
                                 {"_x", 0},
                                 {"bit_or(_x, 4)", 4},
                                 {"bit_and(_x, 4)", 0},
                                 {"bit_and(bit_or(_x, 6), 3)", 2},
                                 {"sconv:char(bit_or(_x, 0x80))", 0xFFFFFF80},
                                 {"sconv:uchar(bit_or(_x, 0x180))", 0x80},
                                 {"assign(_uc, bit_or(_x, 0x101))", 1},
                                 {"shift_left(bit_or(_x, 1), 4)", 16},
                                 {"shift_left(bit_or(_x, 1), 40)", 0},
                                 {"shift_right(bit_or(_u, 0x80000000:unsigned), 4)", 0x08000000},
                                 {"shift_right(bit_or(_x, -2147483648), 4)", 0xF8000000},
                                 {"multiply(bit_or(_x, 3), 4)", 12},
                                 {"conditional(_x, alternatives(bit_or(_x, 5), 6))", 4},
                                 {"eq(_x, _x)", 0},
                                 {"bit_or(_p, 4)", 0},
                             });
}

TEST_F(BitsTest, Booleans) {
  for (const char *text :
       {"0", "1", "eq(_x, _y)", "subtract(1, eq(_x, _y))", "bit_and(_x, 1)", "bit_and(1, _x)",
        "bit_or(eq(_x, _y), lt(_x, _y))", "bit_xor(eq(_x, _y), 1)", "multiply(eq(_x, _y), 1)",
        "conditional(_x, alternatives(1, eq(_x, _y)))", "abs(eq(_x, _y))",
        "abs(add(eq(_x, _y), -1))", "member(_st, _b1)", "sconv:char(eq(_x, _y))",
        "shift_right(bit_and(_x, 8), 3)", "assign(_x, eq(_x, _y))", "assign(member(_st, _b1), _x)"})
    EXPECT_TRUE(is_boolean_tree(tree(text))) << text;
  for (const char *text :
       {"2", "-1", "_x", "_f", "bit_or(_x, lt(_x, _y))", "subtract(2, eq(_x, _y))",
        "subtract(1, _x)", "multiply(_x, eq(_x, _y))", "member(_st, _s3)", "member(_st, _b3)",
        "conditional(_x, alternatives(1, 2))", "add(eq(_x, _y), 1)",
        // the sum is 255 for a 0
        "abs(add:uchar(sconv:uchar(eq(_x, _y)), -1:uchar))"})
    EXPECT_FALSE(is_boolean_tree(tree(text))) << text;
}

TEST_F(BitsTest, Bounds) {
  constexpr std::int32_t low = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t high = std::numeric_limits<std::int32_t>::max();
  expect_bounds({
      {"7", 7, 7},
      {"_x", low, high},
      {"_u", 0, -1},
      {"_c", -128, 127},
      {"_uc", 0, 255},
      {"lt(_x, _y)", 0, 1},
      {"bit_and(_x, 15)", 0, 15},
      {"bit_or(bit_and(_x, 15), 4)", 4, 15},
      {"bit_or(_x, -16)", -16, -1},
      {"add(bit_and(_x, 15), 3)", 3, 18},
      {"add:int(_uc, _c)", -128, 382},
      {"add(_x, 1)", low, high},                      // may leave the type upwards
      {"add(bit_and(_x, 0x7FFFFFFF), 1)", low, high}, // so may this: no lower bound either
      {"add(bit_or(_u, 16:unsigned), 5:unsigned)", 0, -1},
      {"add:char(_c, _c)", -128, 127},
      {"add:unsigned(_c, bit_and(_u, 1:unsigned))", 0, -1}, // a negative word is none of unsigned
      {"subtract(3, bit_and(_x, 15))", -12, 3},
      {"subtract(bit_and(_u, 1:unsigned), bit_and(_v, 1:unsigned))", 0, -1},
      {"subtract(bit_or(bit_and(_u, 15:unsigned), 8:unsigned), bit_and(_v, 7:unsigned))", 1, 15},
      {"subtract:int(_p, _q)", low, high},
      {"negate(bit_and(_x, 15))", -15, 0},
      {"negate(_x)", low, high},
      {"negate(bit_and(_u, 1:unsigned))", 0, -1},
      {"multiply:int(_uc, 3)", 0, 765},
      {"multiply:int(_uc, -3)", -765, 0},
      {"multiply(_x, 2)", low, high},
      {"multiply(_u, -2:unsigned)", 0, -1},
      {"divide(bit_and(_u, 255:unsigned), 3:unsigned)", 0, 85},
      {"divide(multiply:int(_uc, 4), 4)", 0, 255},
      {"divide:int(_c, 64)", -2, high}, // 127 is no multiple
      {"shift_right:int(_c, 4)", -8, 7},
      {"shift_right(_u, 4)", 0, 0x0FFFFFFF},
      {"shift_right:unsigned(_c, 4)", 0, -1},
  });
  EXPECT_EQ(lower_bound(tree("_p"), nullptr), 0);
  EXPECT_EQ(lower_bound(tree("_d"), nullptr), 0);
  EXPECT_TRUE(is_non_negative(tree("add:int(_uc, 1)"), nullptr));
  EXPECT_TRUE(is_non_negative(tree("_u"), nullptr));
  EXPECT_FALSE(is_non_negative(tree("_c"), nullptr));
  EXPECT_FALSE(is_non_negative(tree("_p"), nullptr));
}

TEST_F(BitsTest, BoundsFromRanges) {
  const ValueRange of_y{nullptr, sym("_y"), 2, 5};
  const ValueRange of_x{&of_y, sym("_x"), -3, 10};
  expect_bounds({{"_x", -3, 10},
                 {"add(_x, _y)", -1, 15},
                 {"subtract(_x, _y)", -8, 8},
                 {"multiply(_x, -2)", -20, 6},
                 {"negate(_y)", -5, -2}},
                &of_x);
  EXPECT_TRUE(is_non_negative(tree("subtract(_y, 2)"), &of_x));
  EXPECT_FALSE(is_non_negative(tree("_x"), &of_x));
}

// Every rule asks at every level of a tree: a chain must neither run out of stack nor take
// quadratic time.
TEST_F(BitsTest, LongChainsEndInTheUnknown) {
  NODE *chain = tree("_uc");
  for (int i = 0; i < 100000; ++i)
    chain = make_node(i % 2 ? BIT_XOR : ADD, chain, make_icon(1, INT), INT);
  EXPECT_EQ(possible_bits(chain, INT), all);
  EXPECT_EQ(certain_bits(chain, INT), 0u);
  EXPECT_FALSE(is_boolean_tree(chain));
  EXPECT_EQ(lower_bound(chain, nullptr), std::numeric_limits<std::int32_t>::min());
}

} // namespace
} // namespace velkor
