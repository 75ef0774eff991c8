// Evaluating operators on constants.
//
// Integers are 32-bit words and every operation wraps. A node's type says how its result is cut and
// how it divides, the left operand's how a shift to the right fills, the operands' common type how
// they compare; so the operands need not have been brought to one type before.
//
// Floating constants are text. They become numbers of the host for the moment of a computation, and
// its result stays only if its text reads back as the very same number: a program computes with
// all bits.
#include "simplify/fold.h"

#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "simplify/constant_text.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace velkor {
namespace {

// Magnitudes that computations on constants keep within: those of the target's single precision.
constexpr double float_tiny = 1.2e-38;
constexpr double float_huge = 3.3999999999999996e+38;

bool is_constant(const NODE *node) {
  return node->op == ICON || node->op == FCON;
}

// K op x  ->  x op' K, where there is such an operator
void move_constant_right(NODE *node) {
  if (op_swapped(node->op) == ILLOP) return;
  std::swap(node->left, node->right);
  node->op = op_swapped(node->op);
}

// ------------------------------------------------------------------------------------------------
// Integers

std::int32_t shift_right(std::int32_t value, std::int32_t count, TypeWord type) {
  if (is_derived(type)) return shift_right_logical(value, count);
  if (!is_unsigned_integer(type)) return shift_right_arithmetic(value, count);
  const auto word = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) & type_mask(type));
  return shift_right_logical(word, count);
}

// The quotient or the remainder, rounding toward zero; none for a division by zero. The most
// negative word divided by -1 is its own negative.
std::optional<std::int32_t> divide(Opcode op, std::int32_t a, std::int32_t b, bool is_unsigned) {
  if (b == 0) return std::nullopt;
  if (is_unsigned) {
    const auto x = static_cast<std::uint32_t>(a);
    const auto y = static_cast<std::uint32_t>(b);
    return static_cast<std::int32_t>(op == DIVIDE ? x / y : x % y);
  }
  if (b == -1) return op == DIVIDE ? wrapping_negate(a) : 0;
  return op == DIVIDE ? a / b : a % b;
}

bool compare(Opcode op, std::int32_t a, std::int32_t b) {
  const auto x = static_cast<std::uint32_t>(a);
  const auto y = static_cast<std::uint32_t>(b);
  switch (op) {
  case EQ: return a == b;
  case NE: return a != b;
  case LE: return a <= b;
  case LT: return a < b;
  case GE: return a >= b;
  case GT: return a > b;
  case ULE: return x <= y;
  case ULT: return x < y;
  case UGE: return x >= y;
  default: return x > y;
  }
}

bool is_relation(Opcode op) {
  return op >= EQ && op <= UGT;
}

// The value of the node's operator on its constant operands as a word, or none.
std::optional<std::int32_t> fold_words(const NODE *node) {
  const std::int32_t a = node->left->u.lval;
  const std::int32_t b = node->right ? node->right->u.lval : 0;
  if (is_relation(node->op)) return compare(node->op, a, b);
  switch (node->op) {
  case ADD: return wrapping_add(a, b);
  case SUBTRACT: return wrapping_subtract(a, b);
  case MULTIPLY: return wrapping_multiply(a, b);
  case BIT_AND: return a & b;
  case BIT_OR: return a | b;
  case BIT_XOR: return a ^ b;
  case NEGATE: return wrapping_negate(a);
  case COMPLEMENT: return ~a;
  case ABS: return a < 0 ? wrapping_negate(a) : a;
  case LOGICAL_NOT: return a == 0;
  case LOGICAL_AND: return a != 0 && b != 0;
  case LOGICAL_OR: return a != 0 || b != 0;
  case SHIFT_LEFT: return shift_left(a, b);
  case SHIFT_RIGHT: return shift_right(a, b, node->left->type);
  case DIVIDE:
  case REMAINDER: return divide(node->op, a, b, is_unsigned_integer(node->type));
  default: return std::nullopt;
  }
}

// ------------------------------------------------------------------------------------------------
// Floating constants

double rounded_to(double value, TypeWord type) {
  return type == FLOAT ? static_cast<double>(static_cast<float>(value)) : value;
}

double text_value(const char *text, TypeWord type) {
  return rounded_to(std::strtod(text, nullptr), type);
}

bool same_number(double a, double b) {
  return a == b && std::signbit(a) == std::signbit(b);
}

bool is_float_operator(Opcode op) {
  switch (op) {
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case DIVIDE:
  case NEGATE:
  case ABS:
  case RECIP:
  case SQRT:
  case SQUARE:
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT: return true;
  default: return false;
  }
}

// The floating type that the operator computes in: the operands' common type, or the node's when
// the operands are integers. Any other type when it does not compute in a floating type.
TypeWord computation_type(const NODE *node) {
  const TypeWord type = node->right ? balance_type(node->left, node->right) : node->left->type;
  return is_floating(type) || is_relation(node->op) ? type : node->type;
}

// A constant operand in the type that the operator computes in; others stay.
NODE *convert_operand(TypeWord type, NODE *operand) {
  if (!is_constant(operand) || operand->type == type) return operand;
  NODE *conversion = make_node(SCONV, operand, nullptr, type);
  conversion->depnum = type_width(type);
  return simplify_sconv(conversion);
}

bool is_out_of_range(double value) {
  return value != 0 && std::fabs(value) < float_tiny;
}

std::optional<bool> compare_numbers(Opcode op, double a, double b) {
  switch (op) {
  case EQ: return a == b;
  case NE: return a != b;
  case LE: return a <= b;
  case LT: return a < b;
  case GE: return a >= b;
  case GT: return a > b;
  default: return std::nullopt;
  }
}

// 1 / a where that is exact: a power of two.
std::optional<double> reciprocal(double a) {
  int exponent = 0;
  if (a == 0 || std::frexp(a, &exponent) != 0.5 || 1 / (1 / a) != a) return std::nullopt;
  return 1 / a;
}

std::optional<double> compute_number(Opcode op, double a, double b) {
  switch (op) {
  case ADD: return a + b;
  case SUBTRACT: return a - b;
  case MULTIPLY: return a * b;
  case NEGATE: return -a;
  case ABS: return std::fabs(a);
  case DIVIDE: return b == 0 ? std::nullopt : std::optional<double>(a / b);
  case RECIP: return reciprocal(a);
  case SQRT: return a < 0 ? std::nullopt : std::optional<double>(std::sqrt(a));
  case SQUARE: return a * a;
  default: return std::nullopt;
  }
}

// The node over two FCONs of one type, or over one.
NODE *fold_numbers(NODE *node) {
  NODE *constant = node->left;
  const TypeWord type = constant->type;
  const double a = float_constant_value(constant);
  const double b = node->right ? float_constant_value(node->right) : 0;
  if (is_out_of_range(a) || is_out_of_range(b)) return node;
  if (node->type == INT) {
    const std::optional<bool> truth = compare_numbers(node->op, a, b);
    if (!truth) return node;
    erase_tree(node);
    return make_icon(*truth, INT);
  }
  if (node->type != type) return node;
  const std::optional<double> result = compute_number(node->op, a, b);
  if (!result) return node;
  const double value = rounded_to(*result, type);
  if (!(std::fabs(value) <= float_huge)) return node; // nor is it a NaN
  char *text = exact_float_text(value, type);
  if (!text) return node;
  constant->aux.text = text;
  if (node->right) erase_node(node->right);
  erase_node(node);
  return constant;
}

// RECIP(K) × b  ->  b / K
bool reciprocal_to_quotient(NODE *node) {
  NODE *factor = node->left;
  if (node->op != MULTIPLY || factor->op != RECIP || factor->left->op != FCON ||
      factor->type != node->type)
    return false;
  node->op = DIVIDE;
  node->left = node->right;
  node->right = replace_by_left(factor);
  return true;
}

} // namespace

double float_constant_value(const NODE *constant) {
  return text_value(constant->aux.text, constant->type);
}

char *exact_float_text(double value, TypeWord type) {
  std::array<char, 48> digits{};
  std::snprintf(digits.data(), digits.size(), "%.14e", value);
  // Canonical text has no negative zero.
  if (value == 0 && std::signbit(value)) return nullptr;
  if (!same_number(text_value(digits.data(), type), value)) return nullptr;
  return canon_float_text(digits.data(), true);
}

bool retype_float_constant(NODE *constant, TypeWord type) {
  const double number = std::strtod(constant->aux.text, nullptr);
  const double value = rounded_to(float_constant_value(constant), type);
  if (!std::isfinite(value)) return false;
  if (!same_number(number, value)) {
    // The text is not the value itself. A constant of type float may keep it: whoever reads the
    // text rounds it again.
    char *text = exact_float_text(value, DOUBLE);
    if (!text && type != FLOAT) return false;
    if (text) constant->aux.text = text;
  }
  constant->type = static_cast<std::uint16_t>(type);
  return true;
}

NODE *fold_node(NODE *node) {
  NODE *left = node->left;
  if (!left) return node;
  if (left->op == FCON || is_floating(node->type)) return fold_float_node(node);
  if (left->op != ICON) return node;
  NODE *right = node->right;
  if (right && right->op == FCON) return fold_float_node(node);
  if (right && right->op != ICON) {
    move_constant_right(node);
    return node;
  }
  if (!is_integer(node->type) || is_floating(left->type)) return node;
  if (right && is_floating(right->type)) return node;
  if (is_relation(node->op)) normalize_relation(node);
  const std::optional<std::int32_t> value = fold_words(node);
  if (!value) return node;
  left->u.lval = wrap_to_type(*value, node->type);
  left->type = node->type;
  if (right) erase_node(right);
  erase_node(node);
  return left;
}

NODE *fold_float_node(NODE *node) {
  if (!node->left || !is_float_operator(node->op)) return node;
  if (reciprocal_to_quotient(node)) return fold_float_node(node);
  const TypeWord type = computation_type(node);
  // Where the result has another type than the computation, the operands may not be rounded to it.
  if (is_floating(type) && (type == node->type || is_relation(node->op))) {
    node->left = convert_operand(type, node->left);
    if (node->right) node->right = convert_operand(type, node->right);
  }
  const NODE *left = node->left;
  const NODE *right = node->right;
  if (right && is_constant(left) && !is_constant(right)) {
    move_constant_right(node);
    return node;
  }
  if (left->op != FCON || left->type == LONG_DOUBLE) return node; // no number of the host
  if (right && (right->op != FCON || right->type != left->type)) return node;
  return fold_numbers(node);
}

} // namespace velkor
