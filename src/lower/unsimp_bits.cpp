// Lowering of masks and shifts.
#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/target.h"
#include "lower/lowering.h"
#include "lower/unsimp_blocks.h"
#include "simplify/patterns.h"

namespace velkor {
namespace {

constexpr int word_bits = 32;

// Is the tree one of a plain word type that a logical shift takes as it stands?
bool is_logical_word(TypeWord type) {
  return type == UNSIGNED || type == UNSIGNED_LONG;
}

// The operand of a shift to the right that is to bring in zeros: such a shift goes by the sign of
// its operand.
NODE *as_unsigned(NODE *operand) {
  return is_logical_word(operand->type) ? operand : convert_tree(UNSIGNED, operand);
}

void set_count(NODE *shift, std::int32_t count) {
  shift->right->u.lval = count;
  set_type(shift->right, INT);
}

// op(x, K) & M  ->  op(x & M', K); the caller has changed M.
void raise_operator(NODE *&node, const Position &at) {
  NODE *operation = node->left;
  node->left = operation->left;
  operation->left = unsimp_node(node, at.block, at.cell);
  node = operation;
}

// (x * 2^k) & M  ->  (x & (M / 2^k)) * 2^k, M a multiple of 2^k
Outcome mask_before_product(NODE *&node, const Position &at) {
  const NODE *product = node->left;
  NODE *mask = node->right;
  if (!is_icon(mask) || product->op != MULTIPLY || !is_icon(product->right)) return Outcome::NEXT;
  if (product->type != node->type || !is_integer(node->type) || !is_integer(product->left->type))
    return Outcome::NEXT;
  const std::int32_t factor = product->right->u.lval;
  if (factor <= 0 || log2_of(factor) < 0 || mask->u.lval <= 0 || mask->u.lval % factor != 0)
    return Outcome::NEXT;
  const std::uint32_t room = value_mask(node->type) / static_cast<std::uint32_t>(factor);
  mask->u.lval =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(mask->u.lval / factor) & room);
  raise_operator(node, at);
  return Outcome::AGAIN;
}

// (x << S) & M  ->  (x & (M >> S)) << S
Outcome mask_before_shift(NODE *&node, const Position &at) {
  const NODE *shift = node->left;
  NODE *mask = node->right;
  if (!is_icon(mask) || shift->op != SHIFT_LEFT || !is_shift_count(shift->right))
    return Outcome::NEXT;
  if (shift->type != node->type || !is_integer(node->type) || !is_integer(shift->left->type))
    return Outcome::NEXT;
  const std::uint32_t room = static_cast<std::uint32_t>(mask->u.lval) & value_mask(node->type);
  set_icon(mask, static_cast<std::int32_t>(room >> shift->right->u.lval), node->type);
  raise_operator(node, at);
  return Outcome::AGAIN;
}

// (x >> S) & M  ->  (x << (32 - e - S)) >> (32 - e), M having e ones and being no operand of an
// instruction
Outcome shift_twice_instead_of_masking(NODE *&node, const Position &) {
  NODE *shift = node->left;
  const NODE *mask = node->right;
  if (!is_icon(mask) || mask->u.lval <= 0 || is_immediate_operand(mask)) return Outcome::NEXT;
  if (shift->op != SHIFT_RIGHT || !is_shift_count(shift->right)) return Outcome::NEXT;
  if (!is_word_integer(node->type) || !is_word_integer(shift->type) ||
      !is_integer(shift->left->type))
    return Outcome::NEXT;
  const int ones = log2_of(wrapping_add(mask->u.lval, 1));
  const std::int32_t count = shift->right->u.lval;
  if (ones < 0 || ones + count >= word_bits) return Outcome::NEXT;
  const TypeWord type = node->type;
  shift->op = SHIFT_LEFT;
  set_count(shift, word_bits - ones - count);
  node->left = shift->type == UNSIGNED ? shift : convert_tree(UNSIGNED, shift);
  node->op = SHIFT_RIGHT;
  set_count(node, word_bits - ones);
  if (type != UNSIGNED) {
    set_type(node, UNSIGNED);
    node = convert_tree(type, node);
  }
  return Outcome::DONE;
}

// x ^ -1  ->  ~x
Outcome complement_instead_of_toggling(NODE *&node, const Position &) {
  const std::uint32_t mask = value_mask(node->type);
  if (!is_icon(node->right) || !is_integer(node->type)) return Outcome::NEXT;
  if ((static_cast<std::uint32_t>(node->right->u.lval) & mask) != mask) return Outcome::NEXT;
  node->right = erase_node(node->right);
  node->op = COMPLEMENT;
  return Outcome::AGAIN;
}

// (x & M) << S  ->  (x << (32 - e)) >> (32 - e - S), M having e ones
Outcome shift_twice_instead_of_masking_and_shifting(NODE *&node, const Position &) {
  NODE *masked = node->left;
  if (masked->op != BIT_AND || !is_icon(masked->right) || !is_shift_count(node->right))
    return Outcome::NEXT;
  if (!is_word_integer(masked->type) || !is_word_integer(node->type) ||
      !is_integer(masked->left->type))
    return Outcome::NEXT;
  const int ones = log2_of(wrapping_add(masked->right->u.lval, 1));
  const std::int32_t count = node->right->u.lval;
  // Ones that the shift to the left moves out of the word cannot come back.
  if (ones < 0 || ones >= word_bits || ones < count || count == 0 || ones + count > word_bits)
    return Outcome::NEXT;
  masked->op = SHIFT_LEFT;
  set_count(masked, word_bits - ones);
  node->left = as_unsigned(masked); // zeros come in from above, whatever the type
  node->op = SHIFT_RIGHT;
  set_count(node, word_bits - (ones + count));
  return Outcome::AGAIN;
}

constexpr LoweringRule and_table[] = {
    {"(x * 2^k) & M  ->  (x & (M / 2^k)) * 2^k", mask_before_product},
    {"(x << S) & M  ->  (x & (M >> S)) << S", mask_before_shift},
    {"(x >> S) & M  ->  (x << (32 - e - S)) >> (32 - e)", shift_twice_instead_of_masking},
};
constexpr LoweringRule xor_table[] = {{"x ^ -1  ->  ~x", complement_instead_of_toggling}};
constexpr LoweringRule shift_left_table[] = {{"(x & M) << S  ->  (x << (32 - e)) >> (32 - e - S)",
                                              shift_twice_instead_of_masking_and_shifting}};

} // namespace

const LoweringRules lower_and_rules{and_table};
const LoweringRules lower_xor_rules{xor_table};
const LoweringRules lower_shift_left_rules{shift_left_table};

} // namespace velkor
