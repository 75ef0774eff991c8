#include "core/conversions.h"
#include "core/questions.h"
#include "run_fixture.h"

namespace velkor {
namespace {

class NodesTest : public RunTest {};

TEST_F(NodesTest, ConstructorsWithAMissingOperandYieldTheOther) {
  NODE *x = name(symbol("_x", INT));
  EXPECT_EQ(make_comma(nullptr, x), x);
  EXPECT_EQ(make_difference(x, nullptr), x);
  EXPECT_EQ(make_difference(nullptr, name(symbol("_c", CHAR)))->type, INT);
  EXPECT_EQ(make_difference(name(symbol("_p", pointer_to(INT))), x)->type, INT);
}

TEST_F(NodesTest, NegationChangesARelationAndComparesAnythingElse) {
  NODE *x = name(symbol("_x", INT));
  EXPECT_EQ(negate_condition(node(ULT, x, icon(1)))->op, UGE);
  NODE *test = negate_condition(x);
  EXPECT_EQ(test->op, EQ);
  EXPECT_EQ(test->right->u.lval, 0);
}

TEST_F(NodesTest, StructuresAreAssignedWithTheSymbolOfEitherSide) {
  SYM *tag = symbol("_s", STRUCT, 0, C_STRTAG);
  SYM *object = symbol("_a", STRUCT);
  object->tag = tag;
  NODE *assignment = make_assign(name(object), name(symbol("_b", STRUCT)));
  EXPECT_EQ(assignment->op, STASG);
  EXPECT_EQ(assignment->u.sym, object);
  NODE *through_pointer = node(DEREF, name(symbol("_p", pointer_to(STRUCT))), nullptr, STRUCT);
  EXPECT_EQ(make_assign(through_pointer, name(object))->u.sym, object);
}

TEST_F(NodesTest, CopiesAreDeepAndErasedTreesComeBack) {
  NODE *tree = node(ADD, name(symbol("_x", INT)), node(MULTIPLY, icon(2), icon(3)));
  NODE *copy = copy_tree(tree);
  EXPECT_NE(copy->right->left, tree->right->left);
  EXPECT_EQ(copy->right->left->u.lval, 2);
  erase_tree(copy);
  EXPECT_EQ(copy->op, ILLOP);
  EXPECT_EQ(tree->right->right->u.lval, 3);
  EXPECT_EQ(rebuild_node(tree, tree->left, tree->right), tree);
}

TEST_F(NodesTest, ErasingASharedCopyFreesNothingUnderIt) {
  NODE *shared = icon(5);
  erase_tree(node(ADD, node(CSE_DUPE, shared, shared), icon(1)));
  EXPECT_EQ(shared->op, ICON);
}

TEST_F(NodesTest, EdgesHoldEachBlockOnce) {
  BB first{};
  BB second{};
  first.dfn = 2;
  second.dfn = 1;
  EDGE *edges = edge_add(&first, nullptr);
  edges = edge_add(&second, edges);
  EXPECT_EQ(edge_add(&first, edges), edges);
  edges = edge_cons(&first, edge_remove(&first, edges));
  edges = edge_sort(edges);
  EXPECT_EQ(edges->bb, &second);
  EXPECT_EQ(edges->next->bb, &first);
  EXPECT_EQ(erase_edges(edges), nullptr);
}

TEST_F(NodesTest, OwnLabelsCountDownAndNeverShareANumber) {
  EXPECT_EQ(label_new(0, nullptr, nullptr)->index, -1);
  state.label_counter = -32768;
  EXPECT_EQ(label_new(-5, nullptr, nullptr)->index, -32769);
}

TEST_F(NodesTest, PromotionFollowsTheOption) {
  EXPECT_EQ(promote_type(UNSIGNED_CHAR), INT);
  options.opt_unsigned_preserving = 1;
  EXPECT_EQ(promote_type(UNSIGNED_CHAR), UNSIGNED);
  EXPECT_EQ(promote_type(pointer_to(CHAR)), pointer_to(CHAR));
}

TEST_F(NodesTest, BalancingTakesTheWiderType) {
  const auto of = [&](TypeWord type) { return make_icon(0, type); };
  EXPECT_EQ(balance_type(of(CHAR), of(SHORT)), INT);
  EXPECT_EQ(balance_type(of(INT), of(UNSIGNED)), UNSIGNED);
  EXPECT_EQ(balance_type(of(LONG), of(UNSIGNED)), UNSIGNED_LONG);
  EXPECT_EQ(balance_type(of(FLOAT), of(UNSIGNED_LONG)), FLOAT);
  EXPECT_EQ(balance_type(of(INT), of(pointer_to(CHAR))), pointer_to(CHAR));
}

TEST_F(NodesTest, ConversionsCollapseOnlyWhereNothingIsLost) {
  NODE *wide = name(symbol("_x", INT));
  NODE *narrowed = convert_tree(CHAR, wide);
  ASSERT_EQ(narrowed->op, SCONV);
  NODE *widened = convert_tree(INT, narrowed);
  ASSERT_EQ(widened->op, SCONV) << "int(char(x)) must keep the char";
  EXPECT_EQ(widened->left->type, CHAR);
  NODE *chain = convert_tree(SHORT, convert_tree(INT, name(symbol("_c", CHAR))));
  EXPECT_EQ(chain->left->op, NAME);
  NODE *same = convert_tree(UNSIGNED, convert_tree(INT, name(symbol("_u", UNSIGNED))));
  EXPECT_EQ(same->op, NAME) << "unsigned(int(u)) is u";
  EXPECT_EQ(convert_tree(UNSIGNED_CHAR, icon(300))->u.lval, 44);
}

TEST_F(NodesTest, AStructureIsReinterpretedAsAScalar) {
  NODE *access = convert_tree(INT, name(symbol("_s", STRUCT)));
  EXPECT_EQ(access->op, DEREF);
  EXPECT_EQ(access->depnum, 32);
  EXPECT_EQ(access->left->op, PCONV);
  EXPECT_EQ(access->left->left->op, ADDRESS);
}

TEST_F(NodesTest, ValuesWrapToTheirType) {
  EXPECT_EQ(wrap_to_type(200, CHAR), -56);
  EXPECT_EQ(wrap_to_type(200, UNSIGNED_CHAR), 200);
  EXPECT_EQ(wrap_to_type(300, UNSIGNED_CHAR), 44);
  EXPECT_EQ(wrap_to_type(0x18000, SHORT), -32768);
  EXPECT_EQ(wrap_signed(-1, pointer_to(CHAR)), -1);
  EXPECT_EQ(wrap_signed_narrow(255, UNSIGNED_CHAR), -1);
}

TEST_F(NodesTest, SymbolsAreSortedOnce) {
  state.local_syms = symbol("_a", INT);
  sym_split();
  SYM *scalars = state.scalar_syms;
  sym_split();
  EXPECT_EQ(state.scalar_syms, scalars);
  SYM *temporary = make_temp('C', -1, 0, ENUM);
  EXPECT_STREQ(temporary->name, "C$1");
  EXPECT_EQ(temporary->stype, INT);
  SYM *port = symbol("_port", INT);
  port->squal = 2;
  port->next = symbol("_s", STRUCT);
  state.local_syms = port;
  sym_split();
  EXPECT_EQ(state.scalar_syms, temporary);
  EXPECT_TRUE(state.other_syms && state.other_syms->next) << "volatile or aggregate: memory";
}

TEST_F(NodesTest, LibraryNamesAreKnownAsFarAsTheyAreTrusted) {
  constexpr auto unknown = static_cast<std::uint32_t>(
      FUN_calls_OUTSIDE | FUN_is_anonymous | FUN_follows_call | FUN_value_needed | FUN_is_called);
  EXPECT_EQ(fun_find_or_add("work")->flags, unknown);
  EXPECT_TRUE(fun_find_or_add("abort")->flags & FUN_never_returns);
  EXPECT_EQ(fun_find_or_add("abs")->flags & unknown, 0u);
  clear_functions();
  options.opt_builtin_level = 0;
  EXPECT_EQ(fun_find_or_add("abs")->flags, unknown);
}

} // namespace
} // namespace velkor
