// Rules for ~, unary -, ABS and SQUARE.
#include "simplify/bitwise.h"

#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "simplify/bits.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// ~x  ->  x ^ -1
Outcome complement_to_xor(NODE *&tree) {
  if (!is_integer(tree->type)) return Outcome::NEXT;
  const auto ones = static_cast<std::int32_t>(value_mask(tree->type));
  tree->right = make_icon(wrap_to_type(ones, tree->type), tree->type);
  tree->op = BIT_XOR;
  tree = simplify_node(tree);
  return Outcome::DONE;
}

// -(-x)  ->  x
Outcome negate_twice(NODE *&tree) {
  if (tree->left->op != NEGATE || tree->left->type != tree->type) return Outcome::NEXT;
  tree = convert_to_left(replace_by_left(tree));
  return Outcome::DONE;
}

// ABS or SQUARE of a narrow unsigned operand: its negative wraps around to another magnitude.
bool magnitude_survives_negation(const NODE *operand) {
  return !is_unsigned_integer(operand->type) || type_width(operand->type) >= 32;
}

bool is_square(const NODE *node) {
  if (node->op == SQUARE) return true;
  return node->op == MULTIPLY && trees_equal(node->left, node->right, false);
}

// ABS(x * x), ABS(SQUARE(x)), ABS(x) of an x that cannot be negative  ->  x
Outcome magnitude_of_non_negative(NODE *&tree) {
  const NODE *operand = tree->left;
  if (tree->op != ABS) return Outcome::NEXT;
  const TypeWord type = operand->type;
  const std::uint32_t mask = value_mask(type);
  const std::uint32_t sign = mask ^ (mask >> 1);
  // A square can come out negative where it wraps around: cut to a narrow type, or unsigned. A
  // signed word's square does not overflow in a program that means anything.
  const bool overflows = is_unsigned_integer(type) || value_width(type) < 32;
  const bool square = !overflows && is_square(operand);
  if (!square && (possible_bits(operand, type) & sign) != 0) return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// ABS(-x)  ->  ABS(x), SQUARE(ABS(x))  ->  SQUARE(x) ...
Outcome drop_inner_sign(NODE *&tree) {
  NODE *operand = tree->left;
  if (operand->op != NEGATE && operand->op != ABS) return Outcome::NEXT;
  if (!magnitude_survives_negation(operand)) return Outcome::NEXT;
  tree->left = convert_to_left(operand);
  return Outcome::AGAIN;
}

// ABS(1 - x)  ->  ABS(x - 1)
Outcome turn_difference(NODE *&tree) {
  NODE *operand = tree->left;
  if (operand->op != SUBTRACT || !is_icon_of(operand->left, 1)) return Outcome::NEXT;
  if (!magnitude_survives_negation(operand)) return Outcome::NEXT;
  if (is_icon(operand->right)) return Outcome::NEXT;
  NODE *one = operand->left;
  operand->left = operand->right;
  operand->right = one;
  tree->left = simplify_node(operand);
  return Outcome::AGAIN;
}

// ABS(x), SQUARE(x)  ->  x, x being 0 or 1
Outcome magnitude_of_boolean(NODE *&tree) {
  if (!is_boolean_tree(tree->left)) return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// ABS(x + -1), SQUARE(x + -1)  ->  1 - x, x being 0 or 1
Outcome distance_of_boolean_to_one(NODE *&tree) {
  NODE *operand = tree->left;
  if (operand->op != ADD || !is_icon_of(operand->right, -1) ||
      !magnitude_survives_negation(operand) || !is_boolean_tree(operand->left))
    return Outcome::NEXT;
  NODE *one = operand->right;
  one->u.lval = 1;
  operand->right = operand->left;
  operand->left = one;
  operand->op = SUBTRACT;
  tree->left = simplify_node(operand);
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

constexpr Rule complement_table[] = {
    {"~x  ->  x ^ -1", complement_to_xor},
};

constexpr Rule negate_table[] = {
    {"-(-x)  ->  x", negate_twice},
};

constexpr Rule magnitude_table[] = {
    {"ABS(x), x >= 0  ->  x", magnitude_of_non_negative},
    {"ABS(-x), ABS(ABS(x))  ->  ABS(x)", drop_inner_sign},
    {"ABS(1 - x)  ->  ABS(x - 1)", turn_difference},
    {"ABS(x), x boolean  ->  x", magnitude_of_boolean},
    {"ABS(x + -1), x boolean  ->  1 - x", distance_of_boolean_to_one},
};

} // namespace

const RuleSet complement_rules{"complement", complement_table};
const RuleSet negate_rules{"negate", negate_table};
const RuleSet magnitude_rules{"magnitude", magnitude_table};

NODE *simplify_unary(NODE *node) {
  switch (node->op) {
  case COMPLEMENT: return apply_rules(complement_rules, node);
  case NEGATE: return apply_rules(negate_rules, node);
  case ABS:
  case SQUARE: return apply_rules(magnitude_rules, node);
  default: return node;
  }
}

} // namespace velkor
