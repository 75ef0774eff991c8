// Rules for trees that are only looked at as true or false: any tree will do that is zero in the
// same cases.
#include "simplify/truth.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "simplify/bits.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <algorithm>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Comparisons with zero, conversions, known values

// x != 0  ->  x
Outcome strip_comparison_with_zero(NODE *&tree) {
  if (tree->op != NE || !is_icon_of(tree->right, 0)) return Outcome::NEXT;
  erase_node(tree->right);
  tree = replace_by_left(tree);
  return Outcome::AGAIN;
}

// (type *) 0  ->  0
Outcome strip_null_conversion(NODE *&tree) {
  if ((tree->op != PCONV && tree->op != ISP2CHAR) || !is_icon_of(tree->left, 0))
    return Outcome::NEXT;
  tree = replace_by_left(tree);
  return Outcome::DONE;
}

// (wider integer) x  ->  x
Outcome strip_widening(NODE *&tree) {
  if (tree->op != SCONV || !is_integer(tree->type) || !is_integer(tree->left->type) ||
      type_width(tree->type) < type_width(tree->left->type))
    return Outcome::NEXT;
  tree = replace_by_left(tree);
  return Outcome::AGAIN;
}

Outcome replace_by_outcome(NODE *&tree, bool outcome) {
  tree = make_comma(discard_value(tree), make_icon(outcome, INT));
  return tree->op == COMMA_OP ? finish(tree, tree) : Outcome::DONE;
}

// x with a bit that is always set  ->  (effects of x , 1)
Outcome decide_true(NODE *&tree) {
  if (certain_bits(tree, tree->type) == 0) return Outcome::NEXT;
  return replace_by_outcome(tree, true);
}

// x with no bit that can be set  ->  (effects of x , 0)
Outcome decide_false(NODE *&tree) {
  if (possible_bits(tree, tree->type) != 0) return Outcome::NEXT;
  return replace_by_outcome(tree, false);
}

// ------------------------------------------------------------------------------------------------
// Single bits

// x % 2^k  ->  x & (2^k - 1)
Outcome mask_remainder(NODE *&tree) {
  if (tree->op != REMAINDER || !is_icon(tree->right) || log2_of(tree->right->u.lval) <= 0)
    return Outcome::NEXT;
  tree->op = BIT_AND;
  tree->right->u.lval -= 1;
  tree = simplify_node(tree);
  return Outcome::AGAIN; // x may have bits that are always set, or be shifted
}

// (x >> y) & 1  ->  x & (1 << y)
Outcome test_shifted_bit(NODE *&tree) {
  NODE *shift = tree->left;
  if (tree->op != BIT_AND || !is_icon_of(tree->right, 1) || shift->op != SHIFT_RIGHT)
    return Outcome::NEXT;
  if (!is_integer(tree->type) || !is_integer(shift->left->type)) return Outcome::NEXT;
  NODE *one = tree->right;
  // A narrow type would lose the bit at its own place.
  set_type(tree, promote_type(tree->type));
  tree->left = shift->left;
  set_type(one, tree->type);
  set_type(shift, tree->type);
  shift->op = SHIFT_LEFT;
  shift->left = one;
  tree->right = simplify_node(shift);
  tree = simplify_node(tree);
  return Outcome::AGAIN;
}

// x >> (width - 1)  ->  x & (1 << (width - 1))
Outcome test_sign_bit(NODE *&tree) {
  if (tree->op != SHIFT_RIGHT || !is_icon(tree->right)) return Outcome::NEXT;
  const TypeWord type = tree->left->type;
  if (!is_integer(tree->type) || !is_integer(type) || type_width(type) != type_width(tree->type) ||
      tree->right->u.lval != type_width(type) - 1)
    return Outcome::NEXT;
  tree->right = simplify_node(make_node(SHIFT_LEFT, make_icon(1, type), tree->right, type));
  tree->op = BIT_AND;
  tree = simplify_node(tree);
  return Outcome::AGAIN;
}

// (x ^ C) & P  ->  (x & P) ^ P, P a single bit of C
Outcome toggle_tested_bit(NODE *&tree) {
  NODE *toggle = tree->left;
  if (tree->op != BIT_AND || toggle->op != BIT_XOR || !is_icon(tree->right) ||
      !is_icon(toggle->right))
    return Outcome::NEXT;
  const std::int32_t bit = tree->right->u.lval;
  if (log2_of(bit) < 0 || (toggle->right->u.lval & bit) == 0) return Outcome::NEXT;
  // A bit beyond a type's width is a copy of its sign, which the toggled value's may differ from.
  const std::uint32_t kept = value_mask(toggle->type) & value_mask(tree->type);
  if ((static_cast<std::uint32_t>(bit) & ~kept) != 0) return Outcome::NEXT;
  toggle->right->u.lval = bit;
  set_type(toggle->right, tree->right->type);
  set_type(toggle, tree->type);
  toggle->op = BIT_AND;
  tree->op = BIT_XOR;
  tree->left = simplify_node(toggle);
  return Outcome::AGAIN;
}

// x == 0 of a test x. Of && || and ? the relation's own rules may make the opposite.
Outcome test_opposite_for_zero(NODE *&tree) {
  tree = simplify_node(tree);
  if (tree->op != BIT_XOR || !is_icon_of(tree->right, 1)) return Outcome::AGAIN;
  erase_node(tree->right);
  tree = make_node(EQ, replace_by_left(tree), make_icon(0, INT), INT);
  return Outcome::DONE;
}

// A place that is not entered again while it is being left. Also when a run ends from within.
struct Place {
  bool entered = false;
};
struct Visit {
  explicit Visit(Place &place) : place_(place) { place_.entered = true; }
  ~Visit() { place_.entered = false; }
  Visit(const Visit &) = delete;
  Visit &operator=(const Visit &) = delete;

private:
  Place &place_;
};

Place around_value;

// x == 0 of a test x that is a value. The relation's rules make x ^ 1 of it in the end, which leads
// back here: once around, and x has the form in which the next simplification leaves it.
Outcome test_value_for_zero(NODE *&tree) {
  if (around_value.entered) return Outcome::DONE;
  const Visit visit(around_value);
  tree = simplify_test(simplify_node(tree));
  return Outcome::DONE;
}

Outcome test_for_zero(NODE *&tree, NODE *test) {
  if (op_negated(test->op) != ILLOP) {
    tree = negate_condition(test);
    return Outcome::AGAIN;
  }
  const bool has_opposite =
      test->op == LOGICAL_AND || test->op == LOGICAL_OR || test->op == CONDITIONAL;
  tree = make_node(EQ, test, make_icon(0, INT), INT);
  return has_opposite ? test_opposite_for_zero(tree) : test_value_for_zero(tree);
}

// x ^ P  ->  x == 0, x being 0 or the single bit P
Outcome test_toggled_bit(NODE *&tree) {
  if (tree->op != BIT_XOR || !is_icon(tree->right)) return Outcome::NEXT;
  NODE *operand = tree->left;
  const std::int32_t bit = tree->right->u.lval;
  if (log2_of(bit) < 0) return Outcome::NEXT;
  // With any other bit that can be set, x ^ P is true for an x that is not 0 either.
  const std::uint32_t others =
      possible_bits(operand, tree->type) & ~static_cast<std::uint32_t>(bit);
  if (others != 0 && !(bit == 1 && is_boolean_tree(operand))) return Outcome::NEXT;
  erase_node(tree->right);
  return test_for_zero(tree, simplify_test(replace_by_left(tree)));
}

// ------------------------------------------------------------------------------------------------
// Word operators

// The rules from here on are for these types only.
Outcome only_words(NODE *&tree) {
  return tree->type == INT || tree->type == UNSIGNED ? Outcome::NEXT : Outcome::STOP;
}

bool are_words(const NODE *a, const NODE *b) {
  return (is_integer(a->type) && is_integer(b->type)) ||
         (is_pointer(a->type) && is_pointer(b->type));
}

// x - y, x ^ y  ->  x != y
Outcome compare_instead_of_subtracting(NODE *&tree) {
  if (tree->op != SUBTRACT && tree->op != BIT_XOR) return Outcome::NEXT;
  // A difference of floats that is cut to an integer is zero for unequal operands too.
  if (!are_words(tree->left, tree->right)) return Outcome::NEXT;
  tree->op = NE;
  set_type(tree, INT);
  tree = simplify_node(tree);
  return Outcome::AGAIN;
}

// -x, ABS(x)  ->  x
Outcome strip_sign(NODE *&tree) {
  if ((tree->op != NEGATE && tree->op != ABS) || !is_integer(tree->left->type))
    return Outcome::NEXT;
  tree = replace_by_left(tree);
  return Outcome::AGAIN;
}

// A bit field's one bit that is also its sign: counting up from 0 yields -1.
bool is_signed_single_bit(const NODE *access) {
  return is_bit_field_access(access) && is_signed_integer(access->type) &&
         access->right->u.sym->size == 1;
}

// The value that x holds behind a step by one from 0.
std::int32_t value_past_zero(const NODE *step) {
  if (step->op == INCREMENT) return 1;
  const NODE *target = step->left;
  std::uint32_t value = ~0u;
  if (is_unsigned_integer(step->type) && is_bit_field_access(target)) {
    const std::int32_t size = target->right->u.sym->size;
    if (size > 0 && size < 32) value = (1u << size) - 1;
  }
  return wrap_value(static_cast<std::int32_t>(value), step->type);
}

// x ++ 1  ->  (x += 1) != 1, x -- 1  ->  (x -= 1) != -1
Outcome compare_stepped_value(NODE *&tree) {
  if ((tree->op != INCREMENT && tree->op != DECREMENT) || !is_icon_of(tree->right, 1) ||
      tree->left->op == DDNODE)
    return Outcome::NEXT;
  if (tree->op == INCREMENT && is_signed_single_bit(tree->left)) return Outcome::NEXT;
  NODE *stepped_from_zero = make_icon(value_past_zero(tree), tree->type);
  tree->op = tree->op == INCREMENT ? ASG_ADD : ASG_SUBTRACT;
  tree = simplify_node(make_node(NE, simplify_node(tree), stepped_from_zero, INT));
  // A field of one bit yields no comparison but x ^ 1, which is a test of its own.
  return tree->op == NE ? Outcome::DONE : Outcome::AGAIN;
}

// Conditionals in the arms of conditionals that are looked into.
constexpr int deepest_arms = 64;

// An arm as a test. One that would come out as a float or a pointer stays a comparison: the
// conditional's integer type would cut it.
NODE *test_of_arm(NODE *arm) {
  if (arm->op == NE && !is_integer(arm->left->type)) return arm;
  return simplify_test(arm);
}

// c ? u : v  ->  c ? test of u : test of v
Outcome simplify_arms(NODE *&tree) {
  static int depth = 0;
  if (tree->op != CONDITIONAL || depth == deepest_arms) return Outcome::NEXT;
  NODE *arms = tree->right;
  depth += 1;
  arms->left = test_of_arm(arms->left);
  arms->right = test_of_arm(arms->right);
  depth -= 1;
  // Arms that came out as constants, or alike, may decide more.
  if (!is_icon(arms->left) && !is_icon(arms->right) && !trees_equal(arms->left, arms->right, true))
    return Outcome::DONE;
  tree = simplify_node(tree);
  return tree->op == CONDITIONAL ? Outcome::DONE : Outcome::AGAIN;
}

constexpr Rule test_table[] = {
    {"x != 0  ->  x", strip_comparison_with_zero},
    {"(type *) 0  ->  0", strip_null_conversion},
    {"(wider integer) x  ->  x", strip_widening},
    {"x with a certain bit  ->  (x , 1)", decide_true},
    {"x with no possible bit  ->  (x , 0)", decide_false},
    {"x % 2^k  ->  x & (2^k - 1)", mask_remainder},
    {"(x >> y) & 1  ->  x & (1 << y)", test_shifted_bit},
    {"x >> (width - 1)  ->  x & (1 << (width - 1))", test_sign_bit},
    {"(x ^ C) & P  ->  (x & P) ^ P, P a bit of C", toggle_tested_bit},
    {"x ^ P  ->  x == 0, x 0 or P", test_toggled_bit},
    {"types other than int and unsigned stay", only_words},
    {"x - y, x ^ y  ->  x != y", compare_instead_of_subtracting},
    {"-x, ABS(x)  ->  x", strip_sign},
    {"x++  ->  (x += 1) != 1; x--  ->  (x -= 1) != -1", compare_stepped_value},
    {"c ? u : v  ->  c ? test of u : test of v", simplify_arms},
};

// ------------------------------------------------------------------------------------------------
// Costs

bool is_cheap_symbol(const SYM *sym) {
  if (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) return true;
  const bool is_local = sym->sclass == C_AUTO || sym->sclass == C_REG || sym->sclass == C_VREG;
  return is_local && is_scalar(sym->stype);
}

constexpr int register_cost = 1;
constexpr int memory_cost = 5;

int cost_within(const NODE *tree, bool strict, int budget);

// The cost of the node without its left operand; what hangs at its right counts up to the budget.
int node_cost(const NODE *node, bool strict, int budget) {
  switch (node->op) {
  case IDENTITY: return 0;
  case MEMBER: return is_bit_field_access(node) ? 1 : 0;
  case NAME: return is_cheap_symbol(node->u.sym) ? register_cost : memory_cost;
  case SQRT:
  case LOGICAL_AND:
  case LOGICAL_OR:
  case CONDITIONAL: return unfit_operand_cost;
  case DEREF:
  case DIVIDE:
  case REMAINDER:
  case ARROW:
    if (strict) return unfit_operand_cost;
    break;
  default:
    // Calls, and all else that does more than yield a value.
    if (op_boolean(node->op) || op_effect(node->op) != PURE) return unfit_operand_cost;
  }
  return 1 + cost_within(node->right, strict, budget - 1);
}

// The walk ends where the budget does, so that neither its length nor its depth depends on the
// tree.
int cost_within(const NODE *tree, bool strict, int budget) {
  int cost = 0;
  for (; tree && cost < budget; tree = tree->left)
    cost += node_cost(tree, strict, budget - cost);
  return cost;
}

} // namespace

const RuleSet test_rules{"test", test_table};

NODE *simplify_test(NODE *tree) {
  return apply_rules(test_rules, tree);
}

Outcome rewrite_as_test(NODE *&operand) {
  const Occupant before = occupant(operand);
  operand = simplify_test(operand);
  return outcome_of_rewriting(operand, before);
}

NODE *truth_value(NODE *tree) {
  if (tree->op == PCONV && is_icon(tree->left)) tree = replace_by_left(tree);
  if (is_icon(tree)) {
    tree->u.lval = tree->u.lval != 0;
    set_type(tree, INT);
    return tree;
  }
  if (is_boolean_tree(tree)) return tree;
  NODE *zero = convert_tree(tree->type, make_icon(0, INT));
  return simplify_node(make_node(NE, tree, zero, INT)); // effects in front of it rise above it
}

int operand_cost(const NODE *tree, bool strict) {
  return std::min(cost_within(tree, strict, unfit_operand_cost), unfit_operand_cost);
}

} // namespace velkor
