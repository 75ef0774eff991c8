// Rules for &&, || and ?.
#include "simplify/logical.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/questions.h"
#include "simplify/bits.h"
#include "simplify/constant_text.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"
#include "simplify/truth.h"

#include <bit>
#include <cstring>
#include <utility>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// && and ||

// x == 0?
bool tests_for_zero(const NODE *node) {
  return node->op == EQ && is_icon_of(node->right, 0);
}

// A test that becomes a value: a comparison with zero may have a better form as one.
NODE *test_to_value(NODE *test) {
  return tests_for_zero(test) ? simplify_node(test) : test;
}

// Erases the operator and one operand; the other one's truth value takes their place, in the
// operator's type: the operand may be a 0 or 1 of an unsigned one.
Outcome keep_truth_of(NODE *&tree, NODE *kept, NODE *dropped) {
  erase_tree(dropped);
  const TypeWord type = tree->type;
  erase_node(tree);
  tree = keep_type(type, truth_value(test_to_value(kept)));
  return Outcome::DONE;
}

// x op K  ->  (x , K)
Outcome keep_effects_and_constant(NODE *&tree, std::int32_t value) {
  NODE *constant = tree->right;
  constant->u.lval = value;
  set_type(constant, tree->type);
  tree->op = COMMA_OP;
  tree->depnum = constant->depnum;
  return finish(tree, tree);
}

// x op y  ->  test of x op test of y
Outcome simplify_operands(NODE *&tree) {
  const Outcome left = rewrite_as_test(tree->left);
  const Outcome right = rewrite_as_test(tree->right);
  return left == Outcome::NEXT ? right : left;
}

// 0 && x  ->  0, 1 || x  ->  1
Outcome decide_by_left(NODE *&tree, bool decisive) {
  NODE *constant = tree->left;
  if (!is_icon(constant) || (constant->u.lval != 0) != decisive) return Outcome::NEXT;
  constant->u.lval = decisive;
  set_type(constant, INT);
  erase_tree(tree->right);
  tree = replace_by_left(tree);
  return Outcome::DONE;
}

// 1 && x, 0 || x  ->  truth of x
Outcome drop_idle_left(NODE *&tree, bool idle) {
  if (!is_icon(tree->left) || (tree->left->u.lval != 0) != idle) return Outcome::NEXT;
  return keep_truth_of(tree, tree->right, tree->left);
}

// x && 0  ->  (x , 0), x || 1  ->  (x , 1)
Outcome decide_by_right(NODE *&tree, bool decisive) {
  if (!is_icon(tree->right) || (tree->right->u.lval != 0) != decisive) return Outcome::NEXT;
  return keep_effects_and_constant(tree, decisive);
}

// x && 1, x || 0  ->  truth of x
Outcome drop_idle_right(NODE *&tree, bool idle) {
  if (!is_icon(tree->right) || (tree->right->u.lval != 0) != idle) return Outcome::NEXT;
  return keep_truth_of(tree, tree->left, tree->right);
}

// x op x  ->  truth of x
Outcome keep_one_of_equals(NODE *&tree) {
  if (!trees_equal(tree->left, tree->right, false)) return Outcome::NEXT;
  return keep_truth_of(tree, tree->left, tree->right);
}

// (x == 0) && (y == 0)  ->  (x || y) == 0, and the other way round
Outcome factor_zero_tests(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!tests_for_zero(a) || !tests_for_zero(b)) return Outcome::NEXT;
  tree->op = tree->op == LOGICAL_AND ? LOGICAL_OR : LOGICAL_AND;
  tree->left = a->left;
  tree->right = b->left;
  erase_node(a->right);
  erase_node(a);
  set_type(b->right, tree->type);
  b->left = simplify_node(tree);
  // Should the operands have decided each other, the 0 compares with what is left of them.
  if (!is_integer(b->left->type)) b->right = convert_tree(b->left->type, b->right);
  return finish(tree, b);
}

// (x == 0) || (x == P)  ->  (x & ~P) == 0, P a single bit
Outcome merge_zero_and_bit_tests(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (a->op != EQ || b->op != EQ || !is_integer_icon(a->right) || !is_integer_icon(b->right) ||
      !is_integer(a->left->type) || !trees_equal(a->left, b->left, false))
    return Outcome::NEXT;
  const TypeWord type = balance_type(a->left, a->right);
  const auto u = static_cast<std::uint32_t>(a->right->u.lval) & value_mask(type);
  const auto v = static_cast<std::uint32_t>(b->right->u.lval) & value_mask(type);
  const bool one_is_zero = (u == 0) != (v == 0);
  if (!one_is_zero || !std::has_single_bit(u | v)) return Outcome::NEXT;
  a->op = BIT_AND;
  set_type(a, type);
  set_type(a->right, type);
  a->right->u.lval = wrap_value(static_cast<std::int32_t>(~(u | v)), type);
  erase_tree(b->left);
  set_type(b->right, type);
  b->right->u.lval = 0;
  b->left = simplify_node(a);
  erase_node(tree);
  return finish(tree, b);
}

Outcome replace_by_bitwise(NODE *&tree) {
  const Opcode op = tree->op;
  tree = logical_to_bitwise(tree);
  return tree->op == op ? Outcome::NEXT : Outcome::DONE;
}

Outcome zero_decides_and(NODE *&tree) {
  return decide_by_left(tree, false);
}
Outcome true_left_of_and(NODE *&tree) {
  return drop_idle_left(tree, true);
}
Outcome zero_right_of_and(NODE *&tree) {
  return decide_by_right(tree, false);
}
Outcome true_right_of_and(NODE *&tree) {
  return drop_idle_right(tree, true);
}
Outcome zero_left_of_or(NODE *&tree) {
  return drop_idle_left(tree, false);
}
Outcome true_decides_or(NODE *&tree) {
  return decide_by_left(tree, true);
}
Outcome zero_right_of_or(NODE *&tree) {
  return drop_idle_right(tree, false);
}
Outcome true_right_of_or(NODE *&tree) {
  return decide_by_right(tree, true);
}

constexpr Rule logical_and_table[] = {
    {"x && y  ->  test of x && test of y", simplify_operands},
    {"0 && x  ->  0", zero_decides_and},
    {"1 && x  ->  truth of x", true_left_of_and},
    {"x && 0  ->  (x , 0)", zero_right_of_and},
    {"x && 1  ->  truth of x", true_right_of_and},
    {"x && x  ->  truth of x", keep_one_of_equals},
    {"x == 0 && y == 0  ->  (x || y) == 0", factor_zero_tests},
    {"x && y  ->  x & y, single bits", replace_by_bitwise},
};

constexpr Rule logical_or_table[] = {
    {"x || y  ->  test of x || test of y", simplify_operands},
    {"0 || x  ->  truth of x", zero_left_of_or},
    {"1 || x  ->  1", true_decides_or},
    {"x || 0  ->  truth of x", zero_right_of_or},
    {"x || 1  ->  (x , 1)", true_right_of_or},
    {"x || x  ->  truth of x", keep_one_of_equals},
    {"x == 0 || y == 0  ->  (x && y) == 0", factor_zero_tests},
    {"x == 0 || x == P  ->  (x & ~P) == 0", merge_zero_and_bit_tests},
    {"x || y  ->  truth of x | y", replace_by_bitwise},
};

// ------------------------------------------------------------------------------------------------
// Branches into arithmetic

// What the right operand may cost to be evaluated always.
constexpr int dearest_operand = 10;

// Nodes of a left operand that are looked through for effects. A chain of || turns into a chain of
// | link by link; without a limit each link would walk all before it.
constexpr int most_nodes_searched = 256;

// Counts the tree's nodes down from budget; below 0 when there are more.
int nodes_left(const NODE *tree, int budget) {
  for (; tree && budget >= 0; tree = tree->left) {
    budget -= 1;
    if (tree->right) budget = nodes_left(tree->right, budget);
  }
  return budget;
}

bool may_have_effects(NODE *tree) {
  return nodes_left(tree, most_nodes_searched) < 0 || has_side_effects(tree);
}

NODE *truth_of_result(NODE *tree) {
  const TypeWord type = tree->type;
  return keep_type(type, truth_value(simplify_node(tree)));
}

// x && y of single bits: the higher bit moves down to the lower one.
NODE *and_of_single_bits(NODE *node, std::uint32_t higher, std::uint32_t lower) {
  if (higher < lower) {
    std::swap(node->left, node->right);
    std::swap(higher, lower);
  }
  if (higher > lower) {
    NODE *count = make_icon(std::countr_zero(higher) - std::countr_zero(lower), INT);
    const TypeWord type = promote_type(node->left->type);
    node->left = simplify_node(make_node(SHIFT_RIGHT, node->left, count, type));
  }
  node->op = BIT_AND;
  return lower == 1 ? simplify_node(node) : truth_of_result(node);
}

// ------------------------------------------------------------------------------------------------
// c ? u : v

NODE *&true_arm(NODE *tree) {
  return tree->right->left;
}
NODE *&false_arm(NODE *tree) {
  return tree->right->right;
}

void swap_arms(NODE *tree) {
  std::swap(true_arm(tree), false_arm(tree));
}

// Erases the conditional and its list of arms, whose operands have been taken out or erased.
void erase_conditional(NODE *tree) {
  erase_node(tree->right);
  erase_node(tree);
}

bool is_zero(const NODE *node) {
  if (node->op == FCON) return std::strcmp(node->aux.text, float_constants.float_zero) == 0;
  return is_icon_of(node, 0);
}

// c ? u : v  ->  test of c ? u : v
Outcome simplify_condition(NODE *&tree) {
  const Outcome outcome = rewrite_as_test(tree->left);
  if (tree->depnum < 0) tree->depnum = true_arm(tree)->depnum;
  // Effects that came loose rise above the whole.
  return tree->left->op == COMMA_OP ? finish(tree, tree) : outcome;
}

// K ? u : v  ->  u or v
Outcome select_arm(NODE *&tree) {
  if (!is_icon(tree->left)) return Outcome::NEXT;
  if (tree->left->u.lval == 0) swap_arms(tree);
  const TypeWord type = tree->type;
  NODE *selected = true_arm(tree);
  erase_node(tree->left);
  erase_tree(false_arm(tree));
  erase_conditional(tree);
  tree = keep_type(type, simplify_node(selected));
  return Outcome::DONE;
}

bool has_constant_arms(const NODE *tree, std::int32_t u, std::int32_t v) {
  return is_icon_of(tree->right->left, u) && is_icon_of(tree->right->right, v);
}

Outcome replace_by_truth(NODE *&tree, NODE *condition) {
  const TypeWord type = tree->type;
  erase_node(true_arm(tree));
  erase_node(false_arm(tree));
  erase_conditional(tree);
  tree = keep_type(type, truth_value(test_to_value(condition)));
  return Outcome::DONE;
}

// c ? 1 : 0  ->  truth of c
Outcome truth_of_condition(NODE *&tree) {
  if (!has_constant_arms(tree, 1, 0)) return Outcome::NEXT;
  return replace_by_truth(tree, tree->left);
}

// c ? 0 : 1  ->  truth of !c
Outcome truth_of_negation(NODE *&tree) {
  if (!has_constant_arms(tree, 0, 1)) return Outcome::NEXT;
  return replace_by_truth(tree, simplify_node(make_node(LOGICAL_NOT, tree->left, nullptr, INT)));
}

// c ? u : u  ->  (c , u)
Outcome drop_choice(NODE *&tree) {
  if (!trees_equal(true_arm(tree), false_arm(tree), true)) return Outcome::NEXT;
  NODE *arms = tree->right;
  erase_tree(arms->left);
  tree->op = COMMA_OP;
  tree->right = keep_type(tree->type, arms->right);
  erase_node(arms);
  return finish(tree, tree);
}

// x >= 0 ? u : v  ->  x < 0 ? v : u
Outcome turn_sign_test(NODE *&tree) {
  if (tree->left->op != GE || !is_zero(tree->left->right)) return Outcome::NEXT;
  tree->left->op = LT;
  swap_arms(tree);
  return Outcome::REWRITTEN;
}

// x < 0 ? -x : x  ->  ABS(x)
Outcome recognize_magnitude(NODE *&tree) {
  NODE *condition = tree->left;
  NODE *negated = true_arm(tree);
  NODE *plain = false_arm(tree);
  if (condition->op != LT || !is_zero(condition->right) || negated->op != NEGATE)
    return Outcome::NEXT;
  // -x must be computed as ABS does it: in a narrower type it would wrap, unsigned it has no sign.
  const TypeWord type = promote_type(plain->type);
  if (negated->type != type || is_unsigned_integer(plain->type) ||
      (!is_integer(plain->type) && !is_floating(plain->type)))
    return Outcome::NEXT;
  if (!trees_equal(condition->left, plain, false) ||
      !trees_equal(condition->left, negated->left, false))
    return Outcome::NEXT;
  const TypeWord whole = tree->type;
  erase_tree(condition);
  erase_tree(negated);
  erase_conditional(tree);
  tree = keep_type(whole, simplify_node(make_node(ABS, plain, nullptr, type)));
  return Outcome::DONE;
}

// The conditional becomes (x >= 0) * kept, kept being one of its arms and the other one 0.
Outcome multiply_by_sign_test(NODE *&tree, NODE *kept, NODE *zero) {
  NODE *condition = tree->left;
  if (!is_integer(tree->type) || !is_integer(kept->type) || !is_icon_of(condition->right, 0) ||
      !is_icon_of(zero, 0) || !trees_equal(condition->left, kept, false))
    return Outcome::NEXT;
  condition->op = GE;
  erase_node(zero);
  erase_node(tree->right);
  tree->op = MULTIPLY;
  tree->right = kept;
  tree->left = simplify_node(condition);
  return finish(tree, tree);
}

// x < 0 ? 0 : x, x <= 0 ? 0 : x  ->  (x >= 0) * x
Outcome clamp_false_arm(NODE *&tree) {
  if (tree->left->op != LT && tree->left->op != LE) return Outcome::NEXT;
  return multiply_by_sign_test(tree, false_arm(tree), true_arm(tree));
}

// x > 0 ? x : 0, x >= 0 ? x : 0  ->  (x >= 0) * x
Outcome clamp_true_arm(NODE *&tree) {
  if (tree->left->op != GT && tree->left->op != GE) return Outcome::NEXT;
  return multiply_by_sign_test(tree, true_arm(tree), false_arm(tree));
}

// Are the arms nodes of one opcode, both of the type of their list?
bool are_alike(const NODE *u, const NODE *v, const NODE *arms) {
  return u->op == v->op && u->type == v->type && u->type == arms->type;
}

// c ? (p op k) : (q op k) with one operand of each arm in common becomes one node: the arms' other
// operands change places with it. Which child of the arms is chosen, the other one stays.
Outcome merge_arms(NODE *&tree, NODE *NODE::*chosen, NODE *NODE::*common) {
  NODE *arms = tree->right;
  NODE *u = arms->left;
  NODE *v = arms->right;
  arms->left = u->*chosen;
  arms->right = v->*chosen;
  erase_tree(u->*common);
  erase_node(u);
  set_type(arms, arms->left->type);
  set_type(tree, arms->left->type);
  tree->depnum = arms->left->depnum;
  v->*chosen = simplify_node(tree);
  return finish(tree, v);
}

// Does the condition keep its value and place when it is evaluated next to the target's address
// and, in a compound assignment, next to the target's old value?
bool condition_may_follow_target(NODE *condition, NODE *assignment) {
  if (assignment->op == ASSIGN && assignment->left->op == NAME) return true;
  return !has_side_effects(condition) && !has_side_effects(assignment->left);
}

// c ? (x op= p) : (x op= q)  ->  x op= (c ? p : q)
Outcome merge_assignments(NODE *&tree) {
  NODE *u = true_arm(tree);
  NODE *v = false_arm(tree);
  if (!are_alike(u, v, tree->right) || op_effect(u->op) != ASSIGNS) return Outcome::NEXT;
  if (u->op != ASSIGN && (asgop_base(u->op) == ILLOP || is_icon(u->right) || is_icon(v->right)))
    return Outcome::NEXT;
  if (u->right->type != u->type || v->right->type != v->type ||
      !trees_equal(u->left, v->left, true) || !condition_may_follow_target(tree->left, u))
    return Outcome::NEXT;
  return merge_arms(tree, &NODE::right, &NODE::left);
}

// Is the value the same wherever it is evaluated?
bool is_fixed_value(const NODE *tree) {
  while (tree->op == SCONV || tree->op == PCONV)
    tree = tree->left;
  if (tree->op == ADDRESS) return tree->left->op == NAME;
  return tree->op == ICON || tree->op == FCON || tree->op == SCON;
}

// c ? (p rel k) : (q rel k)  ->  (c ? p : q) rel k
Outcome merge_relations(NODE *&tree) {
  NODE *u = true_arm(tree);
  NODE *v = false_arm(tree);
  if (!are_alike(u, v, tree->right) || op_negated(u->op) == ILLOP) return Outcome::NEXT;
  if (u->left->type != v->left->type || !trees_equal(u->right, v->right, true))
    return Outcome::NEXT;
  // k is no longer evaluated behind the condition, but beside it and the arms.
  if (!is_fixed_value(u->right) &&
      (has_side_effects(tree->left) || has_side_effects(u) || has_side_effects(v)))
    return Outcome::NEXT;
  return merge_arms(tree, &NODE::left, &NODE::right);
}

constexpr Rule conditional_table[] = {
    {"c ? u : v  ->  test of c ? u : v", simplify_condition},
    {"K ? u : v  ->  u or v", select_arm},
    {"c ? 1 : 0  ->  truth of c", truth_of_condition},
    {"c ? 0 : 1  ->  truth of !c", truth_of_negation},
    {"c ? u : u  ->  (c , u)", drop_choice},
    {"x >= 0 ? u : v  ->  x < 0 ? v : u", turn_sign_test},
    {"x < 0 ? -x : x  ->  ABS(x)", recognize_magnitude},
    {"x < 0 ? 0 : x  ->  (x >= 0) * x", clamp_false_arm},
    {"x > 0 ? x : 0  ->  (x >= 0) * x", clamp_true_arm},
    {"c ? (x op= p) : (x op= q)  ->  x op= (c ? p : q)", merge_assignments},
    {"c ? (p rel k) : (q rel k)  ->  (c ? p : q) rel k", merge_relations},
};

} // namespace

const RuleSet logical_and_rules{"logical and", logical_and_table};
const RuleSet logical_or_rules{"logical or", logical_or_table};
const RuleSet conditional_rules{"conditional", conditional_table};

NODE *logical_to_bitwise(NODE *node) {
  NODE *a = node->left;
  NODE *b = node->right;
  if (!is_integer(a->type) || !is_integer(b->type) || operand_cost(b, true) >= dearest_operand)
    return node;
  if (node->op == LOGICAL_OR) {
    if (may_have_effects(node)) return node;
    node->op = BIT_OR;
    node->left = test_to_value(a);
    node->right = test_to_value(b);
    return truth_of_result(node);
  }
  const std::uint32_t bit_of_a = possible_bits(a, a->type);
  const std::uint32_t bit_of_b = possible_bits(b, b->type);
  if (!std::has_single_bit(bit_of_a) || !std::has_single_bit(bit_of_b) || may_have_effects(node))
    return node;
  node->left = test_to_value(a);
  node->right = test_to_value(b);
  return and_of_single_bits(node, bit_of_a, bit_of_b);
}

NODE *simplify_andand(NODE *node) {
  return apply_rules(logical_and_rules, node);
}

NODE *simplify_oror(NODE *node) {
  return apply_rules(logical_or_rules, node);
}

NODE *simplify_question(NODE *node) {
  return apply_rules(conditional_rules, node);
}

} // namespace velkor
