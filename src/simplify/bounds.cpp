// Smallest and largest value of an integer expression.
//
// Both ends are found in one walk: an operator passes on one end only if the other one does not
// leave the type either, since a sum that wraps around at its upper end has no lower bound left.
#include "simplify/bits.h"

#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "simplify/patterns.h"

#include <limits>

namespace velkor {
namespace {

constexpr int deepest_level = 32; // operators below are taken by their bits alone

// Values as numbers of the tree's type: an unsigned one is not negative here.
struct Bounds {
  std::int64_t low;
  std::int64_t high;
};

struct Walk {
  const ValueRange *ranges;
  int level;
};

Bounds bounds_of(const NODE *tree, Walk walk);

std::int64_t number(std::uint32_t word, TypeWord type) {
  return is_unsigned_integer(type) ? static_cast<std::int64_t>(word)
                                   : static_cast<std::int64_t>(static_cast<std::int32_t>(word));
}

bool fits(Bounds bounds, TypeWord type) {
  if (is_unsigned_integer(type))
    return bounds.low >= 0 && bounds.high <= std::numeric_limits<std::uint32_t>::max();
  return bounds.low >= std::numeric_limits<std::int32_t>::min() &&
         bounds.high <= std::numeric_limits<std::int32_t>::max();
}

// What the bits that can be set and must be set say.
Bounds bounds_by_bits(const NODE *tree) {
  if (op_boolean(tree->op)) return {0, 1};
  const TypeWord type = tree->type;
  const std::uint32_t mask = value_mask(type);
  const std::uint32_t possible = possible_bits(tree, type);
  const std::uint32_t certain = certain_bits(tree, type);
  if (is_unsigned_integer(type))
    return {static_cast<std::int64_t>(certain), static_cast<std::int64_t>(possible & mask)};
  const std::uint32_t sign = mask ^ (mask >> 1);
  if ((possible & sign) == (certain & sign)) return {number(certain, type), number(possible, type)};
  return {-static_cast<std::int64_t>(sign), static_cast<std::int64_t>(mask >> 1)};
}

// Are the operand's bounds numbers of the given type as well? A negative word is none under an
// unsigned operator, and a large unsigned one is none under a signed operator.
bool has_bounds_in(const NODE *operand, TypeWord type) {
  if (!is_integer(operand->type)) return false;
  if (is_icon(operand) && operand->u.lval >= 0) return true;
  if (is_unsigned_integer(operand->type))
    return is_unsigned_integer(type) || type_width(operand->type) < 32;
  return !is_unsigned_integer(type);
}

// Narrow results wrap around, so that only whole words are computed with.
bool computes_words(const NODE *tree) {
  if (type_width(tree->type) < 32 || !has_bounds_in(tree->left, tree->type)) return false;
  return !tree->right || is_icon(tree->right) || has_bounds_in(tree->right, tree->type);
}

bool bounds_of_sum(const NODE *tree, Walk walk, Bounds &result) {
  if (!has_bounds_in(tree->right, tree->type)) return false;
  const Bounds left = bounds_of(tree->left, walk);
  const Bounds right = bounds_of(tree->right, walk);
  result = {left.low + right.low, left.high + right.high};
  return true;
}

bool bounds_of_difference(const NODE *tree, Walk walk, Bounds &result) {
  if (!has_bounds_in(tree->right, tree->type)) return false;
  const Bounds left = bounds_of(tree->left, walk);
  const Bounds right = bounds_of(tree->right, walk);
  result = {left.low - right.high, left.high - right.low};
  return true;
}

bool bounds_of_negative(const NODE *tree, Walk walk, Bounds &result) {
  if (is_unsigned_integer(tree->type)) return false;
  const Bounds operand = bounds_of(tree->left, walk);
  result = {-operand.high, -operand.low};
  return true;
}

bool bounds_of_product(const NODE *tree, Walk walk, Bounds &result) {
  if (!is_icon(tree->right)) return false;
  const std::int64_t factor = number(static_cast<std::uint32_t>(tree->right->u.lval), tree->type);
  const Bounds operand = bounds_of(tree->left, walk);
  // Two unsigned words can have a product beyond the numbers computed with here.
  if (factor > std::numeric_limits<std::int32_t>::max()) return false;
  result = factor < 0 ? Bounds{operand.high * factor, operand.low * factor}
                      : Bounds{operand.low * factor, operand.high * factor};
  return true;
}

// Each end of a signed quotient is kept only where the division is exact.
bool bounds_of_quotient(const NODE *tree, Walk walk, Bounds &result) {
  if (!is_icon(tree->right) || tree->right->u.lval <= 0) return false;
  const std::int64_t divisor = tree->right->u.lval;
  const Bounds operand = bounds_of(tree->left, walk);
  const bool is_unsigned = is_unsigned_integer(tree->left->type);
  const Bounds general = bounds_by_bits(tree);
  result.low = is_unsigned || operand.low % divisor == 0 ? operand.low / divisor : general.low;
  result.high = is_unsigned || operand.high % divisor == 0 ? operand.high / divisor : general.high;
  return true;
}

bool bounds_of_right_shift(const NODE *tree, Walk walk, Bounds &result) {
  if (!is_shift_count(tree->right) || tree->right->u.lval == 0) return false;
  const Bounds operand = bounds_of(tree->left, walk);
  result = {operand.low >> tree->right->u.lval, operand.high >> tree->right->u.lval};
  return true;
}

bool bounds_of_name(const NODE *tree, Walk walk, Bounds &result) {
  for (const ValueRange *range = walk.ranges; range; range = range->next)
    if (range->sym == tree->u.sym) {
      result = {number(static_cast<std::uint32_t>(range->low), tree->type),
                number(static_cast<std::uint32_t>(range->high), tree->type)};
      return true;
    }
  return false;
}

// False where the operator tells nothing that the bits do not.
bool bounds_by_operator(const NODE *tree, Walk walk, Bounds &result) {
  switch (tree->op) {
  case NAME: return bounds_of_name(tree, walk, result);
  case ADD: return computes_words(tree) && bounds_of_sum(tree, walk, result);
  case SUBTRACT: return computes_words(tree) && bounds_of_difference(tree, walk, result);
  case NEGATE: return computes_words(tree) && bounds_of_negative(tree, walk, result);
  case MULTIPLY: return computes_words(tree) && bounds_of_product(tree, walk, result);
  case DIVIDE: return computes_words(tree) && bounds_of_quotient(tree, walk, result);
  case SHIFT_RIGHT: return computes_words(tree) && bounds_of_right_shift(tree, walk, result);
  default: return false;
  }
}

Bounds bounds_of(const NODE *tree, Walk walk) {
  if (tree->op == ICON) {
    const std::int64_t value =
        number(static_cast<std::uint32_t>(wrap_value(tree->u.lval, tree->type)), tree->type);
    return {value, value};
  }
  Bounds result{};
  if (walk.level < deepest_level) {
    walk.level += 1;
    if (bounds_by_operator(tree, walk, result) && fits(result, tree->type)) return result;
  }
  return bounds_by_bits(tree);
}

std::int32_t word(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

} // namespace

std::int32_t lower_bound(const NODE *tree, const ValueRange *ranges) {
  if (!is_integer(tree->type)) return 0;
  return word(bounds_of(tree, {ranges, 0}).low);
}

std::int32_t upper_bound(const NODE *tree, const ValueRange *ranges) {
  if (!is_integer(tree->type)) return std::numeric_limits<std::int32_t>::max();
  return word(bounds_of(tree, {ranges, 0}).high);
}

bool is_non_negative(const NODE *tree, const ValueRange *ranges) {
  return is_integer(tree->type) && lower_bound(tree, ranges) >= 0;
}

} // namespace velkor
