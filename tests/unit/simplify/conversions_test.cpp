#include "core/conversions.h"

#include "simplify/fold.h"
#include "tree_rows.h"

#include <ctime>

namespace velkor {
namespace {

class ConversionsTest : public TreeRowTest {};

TEST_F(ConversionsTest, ConstantsToIntegers) {
  expect_rows({
      {"sconv:char(300)", "44:char"},
      {"sconv:uchar(-1)", "255:uchar"},
      {"sconv:unsigned(-1)", "-1:unsigned"},
      {"sconv:enum(_u)", "sconv:int(_u)"},
      {"sconv:int(3.9)", "3"},
      {"sconv:int(-3.9)", "-3"},
      {"sconv:unsigned(3000000000.0)", "3000000000:unsigned"},
      {"sconv:char(44.0)", "44:char"},
      // What the type does not hold is left to the program.
      {"sconv:int(1.0e20)", nullptr},
      {"sconv:int(3000000000.0)", nullptr},
      {"sconv:unsigned(-1.0)", nullptr},
      {"sconv:char(200.0)", nullptr},
      {"sconv:int(3.9:ldouble)", nullptr},
      {"sconv:int(16777217.0:float)", "16777216"},
  });
}

TEST_F(ConversionsTest, ConstantsToFloatingTypes) {
  expect_rows({
      {"sconv:double(3)", "+3.0"},
      {"sconv:double(-3)", "-3.0"},
      {"sconv:double(4000000000:unsigned)", "+4.0e9"},
      {"sconv:double(-1:char)", "-1.0"},
      {"sconv:float(1.5)", "1.5:float"},
      {"sconv:float(0.1)", "0.1:float"},
      {"sconv:float(16777217.0)", "+1.6777216e7:float"},
      {"sconv:float(16777217)", "+1.6777216e7:float"},
      {"sconv:double(1.5:float)", "1.5"},
      {"sconv:ldouble(1.5)", "1.5:ldouble"},
      // 0.1 of type float is no 15-digit number of type double.
      {"sconv:double(0.1:float)", nullptr},
      {"sconv:float(1.0e300)", nullptr},
      {"eq(sconv:double(sconv:float(16777217.0)), 16777217.0)", "0"},
  });
}

TEST_F(ConversionsTest, ChainsOfConversions) {
  expect_rows({
      {"sconv:int(_x)", "_x"},
      {"sconv:char(sconv:int(_s))", "sconv:char(_s)"},
      {"sconv:char(sconv:int(sconv:char(_x)))", "sconv:char(_x)"},
      {"sconv:char(sconv:short(_x))", "sconv:char(_x)"},
      {"sconv:char(sconv:uchar(_x))", "sconv:char(_x)"},
      {"sconv:short(sconv:char(_x))", "sconv:char(_x)"},
      {"sconv:int(sconv:double(_x))", nullptr},
      {"sconv:double(sconv:int(_d))", nullptr},
      // A pointer's word is no integer.
      {"sconv:char(_p)", nullptr},
      {"sconv:int(_p)", nullptr},
  });
}

TEST_F(ConversionsTest, NarrowingDemandsLowBits) {
  expect_rows({
      {"sconv:uchar(bit_and(_x, 255))", "sconv:uchar(_x)"},
      {"sconv:char(add(_x, sconv:int(sconv:char(_y))))", "sconv:char(add(_y, _x))"},
      {"sconv:char(subtract:int(sconv:char(_x), _y))", "sconv:char(subtract(_x, _y))"},
      {"sconv:char(add:int(sconv:char(_x), sconv:char(_y)))", "sconv:char(add(_x, _y))"},
      {"sconv:uchar(add(_x, 256))", "sconv:uchar(_x)"},
      {"sconv:uchar(add(_x, 200))", "sconv:uchar(add(_x, -56))"},
      // Not through a conversion from a floating type.
      {"sconv:char(add:int(sconv:float(_x), _y))", nullptr},
  });
}

// Conversions between types of one width sink, but not into operators that would then count as
// signed ones, which programs do not let wrap.
TEST_F(ConversionsTest, SinkBetweenWords) {
  expect_rows({
      {"sconv:unsigned(add(_x, _y))", "add(sconv:unsigned(_x), sconv:unsigned(_y))"},
      {"sconv:unsigned(add(_x, 5))", "add(sconv:unsigned(_x), 5:unsigned)"},
      {"sconv:unsigned(subtract(_x, _y))", "subtract(sconv:unsigned(_x), sconv:unsigned(_y))"},
      {"sconv:unsigned(multiply(_x, _y))", "multiply(sconv:unsigned(_x), sconv:unsigned(_y))"},
      {"sconv:unsigned(bit_and(_x, _y))", "bit_and(sconv:unsigned(_x), sconv:unsigned(_y))"},
      {"sconv:unsigned(negate(_x))", "negate(sconv:unsigned(_x))"},
      {"sconv:unsigned(shift_left(_x, _y))", "shift_left(sconv:unsigned(_x), _y)"},
      {"sconv:unsigned(shift_right(_x, _y))", "shift_right:unsigned(_x, _y)"},
      {"sconv:int(shift_right(_u, _y))", "shift_right:int(_u, _y)"},
      {"sconv:int(bit_or(_u, sconv:unsigned(_y)))", "bit_or(sconv:int(_u), _y)"},
      {"sconv:int(bit_xor(_u, 5:unsigned))", "bit_xor(sconv:int(_u), 5)"},
      {"sconv:int(add(_u, _v))", nullptr},
      {"sconv:int(add(_u, 5:unsigned))", nullptr},
      {"sconv:int(multiply(_u, _v))", nullptr},
      {"sconv:int(subtract(_u, _v))", nullptr},
      {"sconv:int(negate(_u))", nullptr},
      {"sconv:unsigned(add:int(sconv:float(_x), _y))", nullptr},
      // The promotion of an unsigned field decides how its parent divides.
      {"divide(sconv:int(member(_st, _b3)), _x)", nullptr},
  });
}

TEST_F(ConversionsTest, WideningsThatThePromotionsDo) {
  expect_rows({
      {"sconv:int(_uc)", "_uc"},
      {"sconv:int(_c)", "_c"},
      {"sconv:int(_us)", "_us"},
      {"sconv:short(_c)", "_c"},
      {"sconv:unsigned(_c)", nullptr},
      {"sconv:unsigned(_uc)", nullptr},
      {"sconv:ushort(_uc)", nullptr},
      {"sconv:int(lt(_x, _y))", "lt(_x, _y)"},
      {"sconv:char(lt(_x, _y))", "lt(_x, _y)"},
      {"sconv:unsigned(lt(_x, _y))", nullptr},
      {"sconv:uchar(bit_and(_u, 1:unsigned))", nullptr},
  });
  // Where narrow unsigned types promote to unsigned, the conversion decides how a parent compares.
  options.opt_unsigned_preserving = 1;
  expect_rows({{"sconv:int(_uc)", nullptr}, {"lt(sconv:int(_uc), _x)", nullptr}});
}

TEST_F(ConversionsTest, ArmsConvertThemselves) {
  expect_rows({
      {"sconv:double(conditional(_x, alternatives(_y, 3)))",
       "conditional(_x, alternatives(sconv:double(_y), +3.0))"},
      {"sconv:char(conditional(_x, alternatives(_y, 300)))",
       "conditional(_x, alternatives(sconv:char(_y), 44:char))"},
      // An arm takes the whole's type first where that shows.
      {"sconv:double(conditional:unsigned(_x, alternatives:unsigned(_y, _u)))",
       "conditional(_x, alternatives(sconv:double(sconv:unsigned(_y)), sconv:double(_u)))"},
      {"pconv:char*(conditional(_x, alternatives(_y, _z)))",
       "conditional(_x, alternatives(pconv:char*(_y), pconv:char*(_z)))"},
      {"sconv:char(conditional(_x, alternatives(300, 44)))", "44:char"},
  });
}

TEST_F(ConversionsTest, PointersAndArguments) {
  NODE *pointer = simplify_tree(tree("pconv:char*(_p)"));
  EXPECT_EQ(pointer->op, NAME);
  EXPECT_EQ(pointer->type, pointer_to(CHAR));
  expect_rows({
      {"pconv:char*(_cp)", "_cp"},
      {"pconv:char*(_x)", nullptr},
      {"pconv:char*(pconv:int*(_x))", "pconv:char*(_x)"},
      {"pconv:int*(deref(pconv:char**(_x)))", nullptr},
      {"pconv:int*(\"abc\")", nullptr},
      {"aconv:int(_x)", "aconv:int(_x)"},
      {"aconv:int(_c)", "aconv:int(_c)"},
      {"aconv:char(300)", "aconv:char(44:char)"},
      {"aconv:int(sconv:int(_d))", "aconv:int(_d)"},
      {"aconv:int(sconv:char(sconv:int(_d)))", nullptr},
      {"aconv:char*(_p)", nullptr},
  });
}

TEST_F(ConversionsTest, EnumObjectsAreInt) {
  SYM *tag = symbol("color", ENUM, 0, C_ENTAG);
  tag->size = 32;
  SYM *object = symbol("e", ENUM);
  object->tag = tag;
  NODE *result = simplify_tree(node(SCONV, name(object)));
  EXPECT_EQ(result->op, NAME);
  EXPECT_EQ(result->type, INT);
}

// The front door folds constants at once.
TEST_F(ConversionsTest, ConvertTreeFoldsConstants) {
  EXPECT_EQ(text(convert_tree(DOUBLE, make_icon(2, INT))), "+2.0");
  EXPECT_EQ(text(convert_tree(CHAR, make_icon(300, INT))), "44:char");
  EXPECT_EQ(text(convert_tree(INT, tree("2.5"))), "2");
  EXPECT_EQ(text(convert_tree(INT, tree("1.0e20"))), "sconv:int(1.0e20)");
  EXPECT_EQ(text(convert_tree(CHAR, tree("_x"))), "sconv:char(_x)");
}

// Conversions that alternate along a chain take time in proportion to its length.
TEST_F(ConversionsTest, AlternatingConversionsStayLinear) {
  NODE *chain = tree("_x");
  for (int i = 0; i < 6000; ++i) {
    const TypeWord type = i % 2 ? INT : UNSIGNED;
    NODE *operand = make_node(SCONV, chain, nullptr, type);
    chain = make_node(i % 2 ? BIT_AND : BIT_OR, operand, tree(i % 2 ? "_y" : "_u"), type);
  }
  const std::clock_t start = std::clock();
  EXPECT_TRUE(simplify_tree(chain));
  // A fraction of a second; minutes if each conversion sank to the end of the chain.
  EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 10);
}

} // namespace
} // namespace velkor
