// Rules of quotients and remainders.
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "simplify/arithmetic.h"
#include "simplify/bits.h"
#include "simplify/constant_text.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace velkor {
namespace {

// (rest , value), or the value alone when nothing of rest acts; takes both.
Outcome finish_with_effects(NODE *&tree, NODE *rest, NODE *value) {
  NODE *effects = discard_value(rest);
  tree = effects ? simplify_node(make_comma(effects, value)) : value;
  return Outcome::DONE;
}

// Is the operand never negative by its type? A full unsigned word is no such operand where the
// operator looks at it as a signed one.
bool is_unsigned_operand(const NODE *operand, const NODE *tree) {
  return is_unsigned_integer(operand->type) &&
         (value_width(operand->type) < 32 || is_unsigned_integer(tree->type));
}

// x / x  ->  1
Outcome divide_alike(NODE *&tree) {
  if (!trees_equal(tree->left, tree->right, false)) return Outcome::NEXT;
  const TypeWord type = tree->type;
  erase_tree(tree);
  tree = make_conversion(type, make_icon(1, INT));
  return Outcome::DONE;
}

// Is the number held exactly by the floating type?
bool is_exact(double value, TypeWord type) {
  if (!std::isfinite(value)) return false;
  if (type != FLOAT) return true;
  return std::fabs(value) <= std::numeric_limits<float>::max() &&
         static_cast<double>(static_cast<float>(value)) == value;
}

// x / 2^n  ->  x × 2^-n, floating
Outcome divide_by_float_power(NODE *&tree) {
  NODE *constant = tree->right;
  if (constant->op != FCON || (constant->type != FLOAT && constant->type != DOUBLE))
    return Outcome::NEXT;
  const double divisor = std::strtod(constant->aux.text, nullptr);
  int exponent = 0;
  if (std::fabs(std::frexp(divisor, &exponent)) != 0.5) return Outcome::STOP;
  const double reciprocal = 1 / divisor;
  if (reciprocal * divisor != 1 || !is_exact(reciprocal, constant->type)) return Outcome::STOP;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.14e", reciprocal);
  // Fifteen digits do not hold every power of two.
  if (std::strtod(text.data(), nullptr) != reciprocal) return Outcome::STOP;
  constant->aux.text = canon_float_text(text.data(), true);
  tree->op = MULTIPLY;
  return finish(tree, tree);
}

// No rule below is for floating or pointer types.
Outcome leave_other_types(NODE *&tree) {
  return is_integer(tree->type) ? Outcome::NEXT : Outcome::STOP;
}

// x / 1  ->  x × 1
// x / -1  ->  x × -1, signed
Outcome divide_by_unit(NODE *&tree) {
  const NODE *b = tree->right;
  if (!is_icon_of(b, 1) && !(is_icon_of(b, -1) && is_signed_integer(tree->type)))
    return Outcome::NEXT;
  tree->op = MULTIPLY;
  return finish(tree, tree);
}

// (long) s / K  ->  (s , 0), K beyond all values of the narrower s
Outcome divide_narrow_by_large(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (tree->type != LONG || !is_integer_icon(b) || a->op != SCONV || a->type != LONG ||
      !is_integer(a->left->type) || value_width(a->left->type) >= 32)
    return Outcome::NEXT;
  const TypeWord source = a->left->type;
  const std::int64_t divisor = wrap_signed(b->u.lval, b->type);
  const std::int64_t mask = value_mask(source);
  // The magnitudes that s reaches: its whole mask if unsigned; if signed, half of it upwards, and
  // one more downwards, which a positive divisor as well must exceed.
  const std::int64_t largest = is_unsigned_integer(source) ? mask : (mask >> 1) + 1;
  if (divisor <= largest && divisor >= -largest) return Outcome::NEXT;
  b->u.lval = 0;
  set_type(b, tree->type);
  erase_node(tree);
  return finish_with_effects(tree, a, b);
}

// x / 2^n  ->  x >> n, x not negative
Outcome divide_by_power(NODE *&tree) {
  const NODE *a = tree->left;
  NODE *b = tree->right;
  const int power = is_icon(b) ? log2_of(b->u.lval) : -1;
  if (power <= 0 || !is_integer(a->type)) return Outcome::NEXT;
  if (!is_unsigned_operand(a, tree)) {
    const TypeWord type = balance_type(a, b);
    if (wrap_value(static_cast<std::int32_t>(possible_bits(a, type)), type) < 0)
      return Outcome::NEXT;
  }
  b->u.lval = power;
  tree->op = SHIFT_RIGHT;
  return finish(tree, tree);
}

// Is the product x × K2 within a signed word for every value of x? Only then is it the multiple
// that it looks like. A signed product need not come from a signed one of the program: conversions
// sink from the wrapping product of unsigned factors to the factors themselves, and the constants
// of several products are multiplied with wrapping.
bool is_exact_product(const NODE *product) {
  const NODE *x = product->left;
  if (!is_integer(x->type) || (is_unsigned_integer(x->type) && value_width(x->type) >= 32))
    return false;
  constexpr std::int64_t largest = INT32_MAX;
  const std::int64_t factor = product->right->u.lval;
  const std::int64_t low = lower_bound(x, nullptr) * factor;
  const std::int64_t high = upper_bound(x, nullptr) * factor;
  return std::min(low, high) >= -largest && std::max(low, high) <= largest;
}

// x × K2 whose constant K divides, in the signed type of the quotient? A power of two stays: it
// may stand for a shift.
bool is_multiple(const NODE *product, const NODE *tree) {
  const NODE *b = tree->right;
  return product->op == MULTIPLY && is_icon(product->right) && product->type == tree->type &&
         is_signed_integer(tree->type) && is_word_integer(tree->type) && is_icon(b) &&
         b->u.lval > 0 && product->right->u.lval % b->u.lval == 0 &&
         log2_of(product->right->u.lval) < 0 && is_exact_product(product);
}

// (x × K2) / K  ->  x × (K2 / K)
Outcome divide_product(NODE *&tree) {
  NODE *product = tree->left;
  if (!is_multiple(product, tree)) return Outcome::NEXT;
  product->right->u.lval /= tree->right->u.lval;
  erase_node(tree->right);
  return finish(tree, replace_by_left(tree));
}

// -(x × K2) / K  ->  x × (-K2 / K)
Outcome divide_negated_product(NODE *&tree) {
  NODE *negation = tree->left;
  if (negation->op != NEGATE || negation->type != tree->type || !is_multiple(negation->left, tree))
    return Outcome::NEXT;
  NODE *product = replace_by_left(negation);
  const std::int32_t quotient = product->right->u.lval / tree->right->u.lval;
  set_icon(product->right, wrapping_negate(quotient), tree->type);
  erase_node(tree->right);
  erase_node(tree);
  return finish(tree, product);
}

constexpr Rule quotient_rules[] = {
    {"x / x  ->  1", divide_alike},
    {"x / 2.0  ->  x * 0.5", divide_by_float_power},
    {"float x / y stays", leave_other_types},
    {"x / 1  ->  x * 1; x / -1  ->  x * -1", divide_by_unit},
    {"(long) s / K  ->  (s , 0)", divide_narrow_by_large},
    {"x / 2^n  ->  x >> n", divide_by_power},
    {"(x * K2) / K  ->  x * (K2 / K)", divide_product},
    {"-(x * K2) / K  ->  x * (-K2 / K)", divide_negated_product},
};

// ------------------------------------------------------------------------------------------------
// Remainders

// Can the operand not be negative in the balanced type?
bool has_no_sign(const NODE *operand, const NODE *tree, TypeWord balanced) {
  return is_unsigned_operand(operand, tree) ||
         !(possible_bits(operand, balanced) >> (value_width(balanced) - 1) & 1);
}

// x % 2^n  ->  x & (2^n - 1), x not negative or a multiple
Outcome mask_by_power(NODE *&tree) {
  const NODE *a = tree->left;
  NODE *b = tree->right;
  if (!is_icon(b) || log2_of(b->u.lval) <= 0) return Outcome::NEXT;
  const TypeWord balanced = balance_type(a, b);
  const auto low_bits = static_cast<std::uint32_t>(b->u.lval) - 1;
  if (!has_no_sign(a, tree, balanced) && (possible_bits(a, balanced) & low_bits) != 0)
    return Outcome::NEXT;
  b->u.lval -= 1;
  tree->op = BIT_AND;
  return finish(tree, tree);
}

// x % y  ->  (y , x), x less than y for sure
Outcome drop_larger_divisor(NODE *&tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  const TypeWord balanced = balance_type(a, b);
  const std::uint32_t at_least = certain_bits(b, balanced);
  if (at_least == 0 || possible_bits(a, balanced) >= at_least || !has_no_sign(a, tree, balanced) ||
      !has_no_sign(b, tree, balanced))
    return Outcome::NEXT;
  NODE *divisor = tree->right;
  tree->right = nullptr;
  tree->op = SCONV;
  return finish_with_effects(tree, divisor, simplify_node(tree));
}

// No rule below is for pointers.
Outcome leave_other_operands(NODE *&tree) {
  return is_integer(tree->type) && is_integer(balance_type(tree->left, tree->right))
             ? Outcome::NEXT
             : Outcome::STOP;
}

constexpr Rule rest_rules[] = {
    {"pointer x % y stays", leave_other_operands},
    {"x % 2^n  ->  x & (2^n - 1)", mask_by_power},
    {"x % y  ->  (y , x)", drop_larger_divisor},
};

} // namespace

const RuleSet divide_rules{"divide", quotient_rules};
const RuleSet remainder_rules{"remainder", rest_rules};

NODE *simplify_div(NODE *node) {
  return apply_rules(divide_rules, node);
}

NODE *simplify_rem(NODE *node) {
  return apply_rules(remainder_rules, node);
}

} // namespace velkor
