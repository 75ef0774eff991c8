// Bits that the value of an integer expression can have and must have.
//
// Both analyses speak of the value as a 32-bit word, extended the way its type extends it, and
// wrap a mask as they would wrap a value: wrapping copies bits, so that what can be set, and what
// must be set, goes with them.
#include "simplify/bits.h"

#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "simplify/patterns.h"

namespace velkor {
namespace {

constexpr std::uint32_t all_bits = ~0u;
constexpr std::uint32_t sign_bit = 1u << 31;

// Levels of operators that an analysis looks at; what lies deeper is unknown. The rules ask afresh
// at every level of a tree, so that without a limit a long chain would cost quadratic time.
constexpr int deepest_level = 32;

enum class Question { POSSIBLE, CERTAIN };

std::uint32_t wrap_mask(std::uint32_t mask, TypeWord type) {
  return static_cast<std::uint32_t>(wrap_value(static_cast<std::int32_t>(mask), type));
}

constexpr std::uint32_t unknown(Question question) {
  return question == Question::POSSIBLE ? all_bits : 0;
}

std::uint32_t known_bits(Question question, const NODE *tree, TypeWord type, int level);

// What a member of a bit field holds of a word.
std::uint32_t cut_to_field(std::uint32_t word, const NODE *access) {
  const std::int32_t size = access->right->u.sym->size;
  if (size <= 0 || size >= 32) return word;
  const std::uint32_t field = (1u << size) - 1;
  const bool negative = is_signed_integer(access->type) && ((word >> (size - 1)) & 1) != 0;
  return negative ? word | ~field : word & field;
}

// An unsigned bit field holds no more than its width.
std::uint32_t member_bits(Question question, const NODE *tree) {
  const std::uint32_t mask = unknown(question);
  if (!is_bit_field_access(tree) || !is_unsigned_integer(tree->type)) return mask;
  return cut_to_field(mask, tree);
}

std::uint32_t shift_bits(Question question, const NODE *tree, int level) {
  const TypeWord operand_type = tree->left->type;
  if (!is_shift_count(tree->right) || !is_integer(operand_type)) return unknown(question);
  const std::int32_t count = tree->right->u.lval;
  const bool is_unsigned = is_unsigned_integer(operand_type);
  TypeWord type = operand_type;
  if (type_width(type) < 32) type = is_unsigned ? UNSIGNED : INT;
  const auto word = static_cast<std::int32_t>(known_bits(question, tree->left, type, level));
  const bool left = tree->op == SHIFT_LEFT || tree->op == ASG_SHIFT_LEFT;
  const std::int32_t shifted = left          ? shift_left(word, count)
                               : is_unsigned ? shift_right_logical(word, count)
                                             : shift_right_arithmetic(word, count);
  return static_cast<std::uint32_t>(shifted);
}

// A product with a power of two is a shift.
std::uint32_t product_bits(Question question, const NODE *tree, int level) {
  if (!is_icon(tree->right) || !is_integer(tree->left->type)) return unknown(question);
  const int count = log2_of(tree->right->u.lval);
  if (count <= 0) return unknown(question);
  return known_bits(question, tree->left, balance_type(tree->left, tree->right), level) << count;
}

// The bits below the first power of two for which the test holds; all of them when there is none.
template <typename Test> std::uint32_t bits_below_power(Test test) {
  for (int i = 0; i < 32; ++i)
    if (test(1u << i)) return (1u << i) - 1;
  return all_bits;
}

// A remainder is neither greater than the dividend nor as great as the divisor.
std::uint32_t remainder_bits(const NODE *tree, int level) {
  const NODE *left = tree->left;
  const NODE *right = tree->right;
  const TypeWord type = balance_type(left, right);
  if (!is_integer(type)) return all_bits;
  const std::uint32_t dividend = known_bits(Question::POSSIBLE, left, type, level);
  const std::uint32_t divisor = known_bits(Question::POSSIBLE, right, type, level);
  // A plain remainder divides in the node's type: where that is not the operands' common one,
  // negative words are divided with another sign than they were analysed with.
  const bool other_sign =
      tree->op == REMAINDER && is_unsigned_integer(type) != is_unsigned_integer(tree->type);
  if (other_sign && ((dividend | divisor) & sign_bit)) return all_bits;
  if (divisor == 0) return all_bits;
  if ((dividend & sign_bit) && !is_unsigned_integer(left->type)) return all_bits;
  if ((divisor & sign_bit) && !is_unsigned_integer(right->type)) return all_bits;
  if (dividend == 0) return 0;
  return bits_below_power([&](std::uint32_t power) { return power > dividend; }) &
         bits_below_power([&](std::uint32_t power) { return power >= divisor; });
}

// Both operands of a binary operator as words of their common type.
struct OperandBits {
  std::uint32_t left;
  std::uint32_t right;
};

OperandBits operand_bits(Question question, const NODE *tree, int level) {
  const TypeWord type = balance_type(tree->left, tree->right);
  return {known_bits(question, tree->left, type, level),
          known_bits(question, tree->right, type, level)};
}

std::uint32_t xor_bits(const NODE *tree, int level) {
  const OperandBits possible = operand_bits(Question::POSSIBLE, tree, level);
  const OperandBits certain = operand_bits(Question::CERTAIN, tree, level);
  return (possible.left | possible.right) & ~(certain.left & certain.right);
}

// The magnitude of a word that cannot be negative is the word.
std::uint32_t magnitude_bits(const NODE *tree, int level) {
  const std::uint32_t bits = known_bits(Question::POSSIBLE, tree->left, tree->left->type, level);
  return bits & sign_bit ? all_bits : bits;
}

// Bits that either of two values can have are possible; only those that both must have are certain.
std::uint32_t either_bits(Question question, OperandBits bits) {
  return question == Question::POSSIBLE ? bits.left | bits.right : bits.left & bits.right;
}

// The bits before they are wrapped to the tree's type.
std::uint32_t raw_bits(Question question, const NODE *tree, TypeWord type, int level) {
  switch (tree->op) {
  case ICON: return static_cast<std::uint32_t>(tree->u.lval);
  case ASSIGN: return known_bits(question, tree->right, type, level);
  case SCONV: return known_bits(question, tree->left, type, level);
  case MEMBER:
  case ARROW: return member_bits(question, tree);
  case SHIFT_LEFT:
  case ASG_SHIFT_LEFT:
  case SHIFT_RIGHT:
  case ASG_SHIFT_RIGHT: return shift_bits(question, tree, level);
  case MULTIPLY:
  case ASG_MULTIPLY: return product_bits(question, tree, level);
  case REMAINDER:
  case ASG_REMAINDER: return question == Question::POSSIBLE ? remainder_bits(tree, level) : 0;
  case BIT_AND:
  case ASG_AND: {
    const OperandBits bits = operand_bits(question, tree, level);
    return bits.left & bits.right;
  }
  case BIT_OR:
  case ASG_OR: {
    const OperandBits bits = operand_bits(question, tree, level);
    return bits.left | bits.right;
  }
  case CONDITIONAL: return either_bits(question, operand_bits(question, tree->right, level));
  case BIT_XOR:
  case ASG_XOR: return question == Question::POSSIBLE ? xor_bits(tree, level) : 0;
  case ABS: return question == Question::POSSIBLE ? magnitude_bits(tree, level) : 0;
  default:
    if (op_boolean(tree->op)) return question == Question::POSSIBLE ? 1 : 0;
    return unknown(question);
  }
}

// An assignment to a bit field yields what the field then holds.
bool yields_bit_field(const NODE *tree) {
  return op_effect(tree->op) == ASSIGNS && tree->left && is_bit_field_access(tree->left);
}

std::uint32_t known_bits(Question question, const NODE *tree, TypeWord type, int level) {
  if (!is_integer(tree->type) || level == deepest_level) return unknown(question);
  std::uint32_t bits = raw_bits(question, tree, type, level + 1);
  if (yields_bit_field(tree)) bits = cut_to_field(bits, tree->left);
  return wrap_mask(wrap_mask(bits, tree->type), type);
}

bool is_boolean(const NODE *tree, int level);

bool both_boolean(const NODE *tree, int level) {
  return is_boolean(tree->left, level) && is_boolean(tree->right, level);
}

// |x| of a boolean x, and |x - 1|: x - 1 is 0 or -1 only where the sum's type holds a -1.
bool magnitude_is_boolean(const NODE *operand, int level) {
  if (operand->op == ADD && is_icon_of(operand->right, -1) && is_signed_integer(operand->type))
    operand = operand->left;
  return is_boolean(operand, level);
}

bool is_boolean(const NODE *tree, int level) {
  if (!is_integer(tree->type) || level == deepest_level) return false;
  switch (tree->op) {
  case ICON: return tree->u.lval == 0 || tree->u.lval == 1;
  case SUBTRACT: return is_icon_of(tree->left, 1) && is_boolean(tree->right, level + 1);
  case BIT_AND: return is_boolean(tree->right, level + 1) || is_boolean(tree->left, level + 1);
  case MULTIPLY:
  case BIT_OR:
  case BIT_XOR: return both_boolean(tree, level + 1);
  case CONDITIONAL: return both_boolean(tree->right, level + 1);
  case ABS: return magnitude_is_boolean(tree->left, level + 1);
  case MEMBER:
  case ARROW:
    return is_bit_field_access(tree) && is_unsigned_integer(tree->type) &&
           tree->right->u.sym->size == 1;
  case SCONV: return is_boolean(tree->left, level + 1);
  default: return known_bits(Question::POSSIBLE, tree, tree->type, level) <= 1;
  }
}

} // namespace

std::uint32_t possible_bits(const NODE *tree, TypeWord type) {
  return known_bits(Question::POSSIBLE, tree, type, 0);
}

std::uint32_t certain_bits(const NODE *tree, TypeWord type) {
  return known_bits(Question::CERTAIN, tree, type, 0);
}

bool is_boolean_tree(const NODE *tree) {
  return is_boolean(tree, 0);
}

} // namespace velkor
