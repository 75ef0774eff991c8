// Lowering of sums, differences, products and quotients.
#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "lower/lowering.h"
#include "lower/unsimp_blocks.h"
#include "simplify/constant_text.h"
#include "simplify/patterns.h"

#include <limits>
#include <utility>

namespace velkor {
namespace {

constexpr std::int32_t most_bytes_in_bits = std::numeric_limits<std::int32_t>::max() / 8;

// Can PMCONV and PVCONV, which count bits, take the number of bytes?
bool fits_scaling(std::int32_t bytes) {
  return bytes > 0 && bytes <= most_bytes_in_bits;
}

// op(product(x * K), C)  ->  product(op(x, C) * K); the caller has changed C.
void raise_product(NODE *&node, const Position &at) {
  NODE *product = node->left;
  node->left = product->left;
  product->left = unsimp_node(node, at.block, at.cell);
  node = product;
}

// ------------------------------------------------------------------------------------------------
// Sums

// (x * K) + C  ->  (x + C / K) * K. Exact modulo the word, as C is exactly K * (C / K).
Outcome factor_out_of_sum(NODE *&node, const Position &at) {
  const NODE *product = node->left;
  NODE *addend = node->right;
  if (product->op != MULTIPLY || !is_icon(product->right) || !is_icon(addend)) return Outcome::NEXT;
  if (!is_integer(node->type) || addend->type != node->type || product->type != node->type)
    return Outcome::NEXT;
  const std::int32_t factor = product->right->u.lval;
  // The most negative word has no quotient by -1.
  constexpr std::int32_t most_negative = std::numeric_limits<std::int32_t>::min();
  if (factor == 0 || (factor == -1 && addend->u.lval == most_negative)) return Outcome::NEXT;
  if (addend->u.lval % factor != 0) return Outcome::NEXT;
  addend->u.lval /= factor;
  raise_product(node, at);
  return Outcome::AGAIN;
}

// (t *) K1 + K2  ->  (t *) (K1 + K2)
Outcome add_to_fixed_address(NODE *&node, const Position &) {
  NODE *address = node->left;
  if (address->op != PCONV || !is_icon(address->left) || !is_icon(node->right))
    return Outcome::NEXT;
  set_icon(address->left, wrapping_add(address->left->u.lval, node->right->u.lval), INT);
  set_type(address, node->type);
  node->right = erase_node(node->right);
  absorb_child(node, address);
  return Outcome::DONE;
}

// x * K as PMCONV can say it. PMCONV works on words: a narrow product would have been cut.
bool is_scaled_index(const NODE *product) {
  return product->op == MULTIPLY && is_icon(product->right) && is_word_integer(product->type) &&
         fits_scaling(product->right->u.lval);
}

// PMCONV(x * K, 8)  ->  x * K. A sum that has had its types settled ahead of lowering counts its
// bytes so; the product in it is what says by what to scale.
void take_byte_count_off(NODE *&operand) {
  if (operand->op != PMCONV || !is_icon_of(operand->right, 8)) return;
  if (!is_scaled_index(operand->left)) return;
  erase_node(operand->right);
  operand = replace_by_left(operand);
}

// p + x * K  ->  PMCONV(x, K * 8) + p: the product counts bytes, PMCONV bits
Outcome scale_index(NODE *&node, const Position &) {
  if (!is_pointer(node->type)) return Outcome::NEXT;
  take_byte_count_off(node->right);
  if (node->right->op == MULTIPLY) std::swap(node->left, node->right);
  take_byte_count_off(node->left);
  NODE *product = node->left;
  if (!is_scaled_index(product)) return Outcome::NEXT;
  product->op = PMCONV;
  set_type(product, INT);
  set_icon(product->right, product->right->u.lval * 8, INT);
  return Outcome::NEXT;
}

// x + (-K)  ->  x - K, and x - (-K)  ->  x + K
Outcome make_constant_positive(NODE *&node, const Position &) {
  NODE *constant = node->right;
  // A floating operator would convert the constant as its own type has it.
  if (!is_icon(constant) || is_floating(node->type)) return Outcome::NEXT;
  const std::int32_t opposite =
      positive_opposite(constant, wrap_signed(constant->u.lval, constant->type));
  if (opposite == 0) return Outcome::NEXT;
  node->op = node->op == ADD ? SUBTRACT : ADD;
  constant->u.lval = opposite;
  return Outcome::AGAIN;
}

// Does the operation undo the assignment's step, so that both together yield the old value? The
// assignment may not cut its result: (c -= 1) + 1 is 256 for an unsigned char of 0.
bool undoes_step(const NODE *node, Opcode assignment_op) {
  const NODE *assignment = node->left;
  if (assignment->op != assignment_op || !is_icon(node->right)) return false;
  const NODE *step = assignment->right;
  if (!is_icon(step) || step->type != node->right->type || step->u.lval != node->right->u.lval)
    return false;
  const NODE *target = assignment->left;
  if (assignment->type != node->type || target->type != node->type) return false;
  return (is_word_integer(node->type) || is_pointer(node->type)) && !is_bit_field_access(target);
}

Outcome restore_step(NODE *&node, Opcode assignment_op, Opcode step_op) {
  if (!undoes_step(node, assignment_op)) return Outcome::NEXT;
  NODE *assignment = node->left;
  node->right = erase_node(node->right);
  assignment->op = step_op;
  absorb_child(node, assignment);
  return Outcome::AGAIN;
}

// (x -= K) + K  ->  x-- by K
Outcome restore_decrement(NODE *&node, const Position &) {
  return restore_step(node, ASG_SUBTRACT, DECREMENT);
}

// (x += K) - K  ->  x++ by K
Outcome restore_increment(NODE *&node, const Position &) {
  return restore_step(node, ASG_ADD, INCREMENT);
}

// ------------------------------------------------------------------------------------------------
// Negatives. Integers only: -(a - b) is -0.0 where b - a is 0.0.

// -(x * K)  ->  x * (-K)
Outcome negate_factor(NODE *&node, const Position &) {
  NODE *product = node->left;
  if (product->op != MULTIPLY || !is_icon(product->right) || !is_integer(node->type))
    return Outcome::NEXT;
  NODE *factor = product->right;
  if (product->type != node->type || factor->type != node->type) return Outcome::NEXT;
  const std::int32_t value = wrap_signed(factor->u.lval, factor->type);
  // Neither 0 nor the most negative number: they are their own opposites.
  if ((static_cast<std::uint32_t>(shift_left(value, 1)) & value_mask(factor->type)) == 0)
    return Outcome::NEXT;
  factor->u.lval = wrap_to_type(wrapping_negate(value), factor->type);
  absorb_child(node, product);
  return Outcome::AGAIN;
}

// -(a - b)  ->  b - a
Outcome negate_difference(NODE *&node, const Position &) {
  NODE *difference = node->left;
  if (difference->op != SUBTRACT || difference->type != node->type || !is_integer(node->type))
    return Outcome::NEXT;
  // p - K with a pointer has no opposite.
  if (is_pointer(difference->left->type) != is_pointer(difference->right->type))
    return Outcome::NEXT;
  std::swap(difference->left, difference->right);
  absorb_child(node, difference);
  return Outcome::AGAIN;
}

// -((a - b) * y)  ->  (b - a) * y
Outcome negate_difference_in_product(NODE *&node, const Position &) {
  NODE *product = node->left;
  if (product->op != MULTIPLY || product->type != node->type || !is_integer(node->type))
    return Outcome::NEXT;
  NODE *difference = product->left;
  if (difference->op != SUBTRACT || !is_integer(product->right->type)) return Outcome::NEXT;
  // A difference that is cut to fewer bits than the product has no opposite there.
  if (!is_integer(difference->type) || !is_as_wide(difference, node)) return Outcome::NEXT;
  if (is_pointer(difference->left->type) != is_pointer(difference->right->type))
    return Outcome::NEXT;
  std::swap(difference->left, difference->right);
  absorb_child(node, product);
  return Outcome::AGAIN;
}

// ------------------------------------------------------------------------------------------------
// Products and quotients

// x * 2^k  ->  x << k, k at least 3
Outcome shift_instead_of_multiplying(NODE *&node, const Position &) {
  if (!is_icon(node->right) || !is_integer(node->type) || !is_integer(node->left->type))
    return Outcome::NEXT;
  const int count = shift_for_factor(node->right->u.lval, node->type);
  if (count < 0) return Outcome::NEXT;
  node->op = SHIFT_LEFT;
  node->right->u.lval = count;
  set_type(node->right, INT);
  if (is_unsigned_integer(node->left->type) != is_unsigned_integer(node->type))
    node->left = convert_tree(node->type, node->left);
  return Outcome::AGAIN;
}

// x *= 2^k  ->  x <<= k, k at least 3
Outcome shift_target(NODE *&node, const Position &) {
  if (!is_icon(node->right) || !is_integer(node->type) || !is_integer(node->left->type))
    return Outcome::NEXT;
  const int count = shift_for_factor(node->right->u.lval, node->type);
  if (count < 0) return Outcome::NEXT;
  node->op = ASG_SHIFT_LEFT;
  node->right->u.lval = count;
  set_type(node->right, INT);
  return Outcome::AGAIN;
}

// (p - q) / K  ->  PVCONV(p - q, K * 8)
Outcome scale_difference(NODE *&node, const Position &) {
  const NODE *difference = node->left;
  NODE *size = node->right;
  if (!is_icon(size) || difference->op != SUBTRACT) return Outcome::NEXT;
  if (!is_pointer(difference->left->type) || !is_pointer(difference->right->type))
    return Outcome::NEXT;
  // PVCONV divides signed words.
  if (!is_word_integer(node->type) || is_unsigned_integer(node->type)) return Outcome::NEXT;
  if (!fits_scaling(size->u.lval)) return Outcome::NEXT;
  node->op = PVCONV;
  set_icon(size, size->u.lval * 8, INT);
  return Outcome::DONE;
}

// RECIP(x)  ->  1.0 / x
Outcome divide_one(NODE *&node, const Position &) {
  NODE *one = make_node(FCON, nullptr, nullptr, node->type);
  one->depnum = value_width(node->type);
  one->aux.text = canon_float_text("1.0", true);
  node->right = node->left;
  node->left = one;
  node->op = DIVIDE;
  return Outcome::AGAIN;
}

constexpr LoweringRule add_table[] = {
    {"(x * K) + C  ->  (x + C / K) * K", factor_out_of_sum},
    {"(t *) K1 + K2  ->  (t *) (K1 + K2)", add_to_fixed_address},
    {"p + x * K  ->  PMCONV(x, K * 8) + p", scale_index},
    {"x + (-K)  ->  x - K", make_constant_positive},
    {"(x -= K) + K  ->  x--", restore_decrement},
};
constexpr LoweringRule subtract_table[] = {
    {"x - (-K)  ->  x + K", make_constant_positive},
    {"(x += K) - K  ->  x++", restore_increment},
};
constexpr LoweringRule negate_table[] = {
    {"-(x * K)  ->  x * (-K)", negate_factor},
    {"-(a - b)  ->  b - a", negate_difference},
    {"-((a - b) * y)  ->  (b - a) * y", negate_difference_in_product},
};
constexpr LoweringRule multiply_table[] = {{"x * 2^k  ->  x << k", shift_instead_of_multiplying}};
constexpr LoweringRule multiply_by_table[] = {{"x *= 2^k  ->  x <<= k", shift_target}};
constexpr LoweringRule divide_table[] = {
    {"(p - q) / K  ->  PVCONV(p - q, K * 8)", scale_difference}};
constexpr LoweringRule reciprocal_table[] = {{"RECIP(x)  ->  1.0 / x", divide_one}};

} // namespace

const LoweringRules lower_add_rules{add_table};
const LoweringRules lower_subtract_rules{subtract_table};
const LoweringRules lower_negate_rules{negate_table};
const LoweringRules lower_multiply_rules{multiply_table};
const LoweringRules lower_multiply_by_rules{multiply_by_table};
const LoweringRules lower_divide_rules{divide_table};
const LoweringRules lower_reciprocal_rules{reciprocal_table};

std::int32_t positive_opposite(const NODE *constant, std::int32_t value) {
  if (value >= 0) return 0;
  const std::int32_t opposite = wrap_value(wrapping_negate(value), constant->type);
  return wrap_signed(opposite, constant->type) > 0 ? opposite : 0;
}

int shift_for_factor(std::int32_t factor, TypeWord type) {
  constexpr int smallest = 3; // products by 2 and 4 come for free with an addition
  int count = log2_of(factor);
  const std::uint32_t mask = value_mask(type);
  const std::uint32_t below = static_cast<std::uint32_t>(wrapping_subtract(factor, 1)) & mask;
  if (count < 0 && below == mask >> 1) count = value_width(type) - 1; // the sign bit alone
  return count >= smallest ? count : -1;
}

} // namespace velkor
