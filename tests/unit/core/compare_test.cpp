#include "core/compare.h"
#include "core/questions.h"
#include "run_fixture.h"

namespace velkor {
namespace {

class CompareTest : public RunTest {
protected:
  SYM *x_sym = symbol("_x", INT);
  SYM *y_sym = symbol("_y", INT);
  SYM *z_sym = symbol("_z", INT);
  NODE *x() { return name(x_sym); }
  NODE *y() { return name(y_sym); }
  NODE *z() { return name(z_sym); }
  NODE *call() { return node(UCALL, node(ADDRESS, name(symbol("_f", 0x24, 0)), nullptr, 0x94)); }
};

TEST_F(CompareTest, OperandsMayChangePlacesWhereTheOperatorAllowsIt) {
  EXPECT_TRUE(trees_equal(node(ADD, x(), y()), node(ADD, y(), x()), false));
  EXPECT_TRUE(trees_equal(node(LT, x(), y()), node(GT, y(), x()), false));
  EXPECT_FALSE(trees_equal(node(SUBTRACT, x(), y()), node(SUBTRACT, y(), x()), false));
  EXPECT_FALSE(trees_equal(node(LT, x(), y()), node(LE, y(), x()), false));
}

TEST_F(CompareTest, ThreeOperandsInAnyGrouping) {
  NODE *left = node(ADD, node(ADD, x(), y()), z());
  EXPECT_TRUE(trees_equal(left, node(ADD, z(), node(ADD, y(), x())), false));
  EXPECT_TRUE(trees_equal(left, node(ADD, node(ADD, z(), y()), x()), false));
  EXPECT_FALSE(trees_equal(left, node(ADD, node(ADD, z(), y()), y()), false));
  EXPECT_FALSE(trees_equal(left, node(ADD, node(SUBTRACT, z(), y()), x()), false));
}

TEST_F(CompareTest, EffectsCountUnlessIgnored) {
  EXPECT_FALSE(trees_equal(call(), call(), false));
  NODE *one = call();
  NODE *other = copy_tree(one);
  EXPECT_TRUE(trees_equal(one, other, true));
  x_sym->squal = 2;
  EXPECT_FALSE(trees_equal(x(), x(), false));
  EXPECT_TRUE(trees_equal(x(), x(), true));
}

TEST_F(CompareTest, TypesMustMatchAndStringsCompareByBytes) {
  EXPECT_FALSE(trees_equal(make_icon(1, INT), make_icon(1, UNSIGNED), false));
  const auto string = [](std::string_view bytes) {
    NODE *constant = make_node(SCON, nullptr, nullptr, pointer_to(CHAR));
    constant->aux.text = copy_text(1, bytes);
    constant->u.lval = static_cast<std::int32_t>(bytes.size());
    return constant;
  };
  using namespace std::string_view_literals;
  EXPECT_TRUE(trees_equal(string("a\0b"sv), string("a\0b"sv), false));
  EXPECT_FALSE(trees_equal(string("a\0b"sv), string("a\0c"sv), false));
}

TEST_F(CompareTest, AConstHomeStandsForItsParameter) {
  SYM *parameter = symbol("_p", CHAR, 1, C_REGPARM);
  SYM *home = symbol("_p", INT, 2);
  NODE *converted = node(SCONV, name(parameter));
  EXPECT_FALSE(trees_equal(name(home), converted, false));
  home->squal = 1;
  EXPECT_FALSE(trees_equal(name(home), converted, false)) << "a constant of an inner scope";
  home->parameter = parameter;
  EXPECT_TRUE(trees_equal(name(home), converted, false));
  EXPECT_TRUE(trees_equal(converted, name(home), false));
  SYM *same_type = symbol("_p", INT, 1, C_REGPARM);
  EXPECT_FALSE(trees_equal(name(home), name(same_type), false)) << "of another function";
  home->parameter = same_type;
  EXPECT_TRUE(trees_equal(name(home), name(same_type), false));
}

TEST_F(CompareTest, ConditionsMeetTheirContrary) {
  const auto zero_test = [&](Opcode op) { return node(op, x(), icon(0)); };
  EXPECT_TRUE(conditions_equal(zero_test(NE), x(), false, false));
  EXPECT_TRUE(conditions_equal(node(LT, x(), y()), node(GE, x(), y()), true, false));
  EXPECT_TRUE(conditions_equal(node(LT, x(), y()), node(LE, y(), x()), true, false));
  EXPECT_FALSE(conditions_equal(node(LT, x(), y()), node(GT, x(), y()), true, false));
  NODE *negated = node(EQ, node(LT, x(), y()), icon(0));
  EXPECT_TRUE(conditions_equal(negated, node(GE, x(), y()), false, false) ||
              conditions_equal(negated, node(LT, x(), y()), true, false));
}

TEST_F(CompareTest, SearchesFindSubtreesAndSymbols) {
  NODE *tree = node(ASSIGN, z(), node(MULTIPLY, node(ADD, x(), y()), icon(3)));
  EXPECT_TRUE(tree_contains(node(ADD, y(), x()), tree));
  EXPECT_FALSE(tree_contains(node(ADD, y(), y()), tree));
  EXPECT_TRUE(tree_uses_sym(tree, x()));
  EXPECT_FALSE(tree_uses_sym(tree->right, z()));
}

TEST_F(CompareTest, SideEffectsAreAssignmentsCallsAndVolatileAccesses) {
  SYM *port = symbol("_port", INT, 0, C_EXT);
  port->squal = 2;
  EXPECT_TRUE(has_side_effects(name(port)));
  EXPECT_FALSE(has_side_effects(node(ADDRESS, name(port), nullptr, pointer_to(INT))));
  EXPECT_TRUE(has_side_effects(node(ADD, x(), call())));
  EXPECT_TRUE(has_side_effects(node(INCREMENT, x(), icon(1))));
  EXPECT_FALSE(has_side_effects(node(ADD, x(), y())));
  SYM *global = symbol("_g", INT, 0, C_EXT);
  options.opt_all_volatile = 1;
  EXPECT_TRUE(has_side_effects(name(global)));
  EXPECT_FALSE(has_side_effects(x())) << "an automatic variable stays what it is";
}

TEST_F(CompareTest, ConstantTreesAreConstantsAddressesAndConstObjects) {
  SYM *table = symbol("_t", INT, 0, C_STAT);
  EXPECT_FALSE(is_constant_tree(name(table)));
  table->squal = 1;
  EXPECT_TRUE(is_constant_tree(node(ADD, name(table), icon(2))));
  EXPECT_TRUE(is_constant_tree(node(ADDRESS, x(), nullptr, pointer_to(INT))));
  EXPECT_FALSE(is_constant_tree(call()));
  SYM *local = symbol("_local", INT);
  local->squal = 1;
  EXPECT_FALSE(is_constant_tree(name(local))) << "each turn of a loop may begin it anew";
  NODE *pointer = name(symbol("_p", pointer_to(INT), 0, C_STAT));
  pointer->u.sym->squal = 16;
  pointer->qual = 16;
  NODE *access = node(DEREF, pointer);
  access->qual = 1;
  EXPECT_FALSE(is_constant_tree(access)) << "a const pointer may point at what changes";
  NODE *element = node(DEREF, node(ADDRESS, name(table), nullptr, pointer_to(INT)));
  element->qual = 1;
  EXPECT_TRUE(is_constant_tree(element));
}

TEST_F(CompareTest, LongChainsThatDifferAtTheirEndAreToldApartInTime) {
  const auto chain = [&](NODE *end) {
    for (int i = 0; i < 2000; ++i)
      end = node(ADD, end, i % 2 ? x() : y());
    return end;
  };
  EXPECT_TRUE(trees_equal(chain(z()), chain(z()), false));
  EXPECT_FALSE(trees_equal(chain(z()), chain(icon(1)), false));
}

TEST_F(CompareTest, FloatingSumsKeepTheirGrouping) {
  SYM *d = symbol("_d", DOUBLE);
  SYM *e = symbol("_e", DOUBLE);
  SYM *f = symbol("_f", DOUBLE);
  const auto sum = [&](NODE *a, NODE *b) { return node(ADD, a, b, DOUBLE); };
  EXPECT_FALSE(
      trees_equal(sum(sum(name(d), name(e)), name(f)), sum(name(d), sum(name(e), name(f))), false));
  EXPECT_TRUE(trees_equal(sum(name(d), name(e)), sum(name(e), name(d)), false));
}

} // namespace
} // namespace velkor
