// Rules of products.
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/questions.h"
#include "simplify/arithmetic.h"
#include "simplify/bits.h"
#include "simplify/constant_text.h"
#include "simplify/patterns.h"
#include "simplify/reassociate.h"
#include "simplify/rule_sets.h"

#include <cstring>
#include <utility>

namespace velkor {
namespace {

// x × K, K = 0  ->  (x , K) of the product's type
Outcome product_with_zero(NODE *&tree) {
  set_type(tree->right, tree->type);
  tree->op = COMMA_OP;
  tree->depnum = tree->right->depnum;
  return finish(tree, tree);
}

// x × K, K = -1  ->  -x
Outcome product_with_minus_one(NODE *&tree) {
  tree->right = erase_node(tree->right);
  tree->op = NEGATE;
  return finish(tree, tree);
}

// ------------------------------------------------------------------------------------------------
// Products with a floating constant, recognised by its one canonical text

bool is_text(const NODE *constant, const char *text) {
  return std::strcmp(constant->aux.text, text) == 0;
}

// x × 0.0  ->  (x , 0.0)
Outcome float_zero_product(NODE *&tree) {
  return is_text(tree->right, float_constants.float_zero) ? product_with_zero(tree) : Outcome::NEXT;
}

// x × 1.0  ->  (type) x
Outcome float_one_product(NODE *&tree) {
  if (!is_text(tree->right, float_constants.float_one)) return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// x × -1.0  ->  -x
Outcome float_minus_one_product(NODE *&tree) {
  return is_text(tree->right, float_constants.float_minus_one) ? product_with_minus_one(tree)
                                                               : Outcome::NEXT;
}

// x × 2.0  ->  x + x
Outcome float_two_product(NODE *&tree) {
  if (!is_text(tree->right, float_constants.float_two) || has_side_effects(tree->left))
    return Outcome::NEXT;
  erase_node(tree->right);
  tree->right = copy_tree(tree->left);
  tree->op = ADD;
  return finish(tree, tree);
}

constexpr Rule float_rules[] = {
    {"x * 0.0  ->  (x , 0.0)", float_zero_product},
    {"x * 1.0  ->  x", float_one_product},
    {"x * -1.0  ->  -x", float_minus_one_product},
    {"x * 2.0  ->  x + x", float_two_product},
};

// ------------------------------------------------------------------------------------------------
// Integer products with a constant

// x × 1  ->  (type) x; the type is the product's: what looks at it may ask for the sign
Outcome one_product(NODE *&tree) {
  if (tree->right->u.lval != 1) return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// x × 0  ->  (x , 0)
Outcome zero_product(NODE *&tree) {
  return tree->right->u.lval == 0 ? product_with_zero(tree) : Outcome::NEXT;
}

// x × -1  ->  -x; unsigned too, where the word of -1 is the largest value
Outcome minus_one_product(NODE *&tree) {
  return tree->right->u.lval == -1 ? product_with_minus_one(tree) : Outcome::NEXT;
}

// x × -K  ->  -(x × K)
Outcome negative_product(NODE *&tree) {
  NODE *constant = tree->right;
  if (constant->u.lval >= 0) return Outcome::NEXT;
  const std::int32_t negated = wrap_value(wrapping_negate(constant->u.lval), constant->type);
  if (negated <= 0) return Outcome::NEXT;
  constant->u.lval = negated;
  const TypeWord type = tree->type;
  return finish(tree, make_node(NEGATE, simplify_node(tree), nullptr, type));
}

// Is the byte difference of two such pointers a multiple of divisor? The pointers' own objects are
// apart by whole objects. Of a structure or an array the size is not known here, but only the
// pointer subtraction itself divides a difference of theirs.
bool divides_difference(std::int32_t divisor, TypeWord pointer) {
  const TypeWord object = underived(pointer);
  if (is_array(object) || is_struct_or_union(object)) return true;
  const std::int32_t bits = is_derived(object) ? pointer_width : type_size(object);
  return bits > 0 && bits / 8 % divisor == 0;
}

// (p - q) / K2 of the signed type of the tree, the division leaving no rest?
bool is_pointer_distance(const NODE *quotient, const NODE *tree) {
  if (quotient->op != DIVIDE || quotient->type != tree->type || !is_signed_integer(tree->type) ||
      !is_icon(quotient->right) || quotient->right->u.lval <= 0)
    return false;
  const NODE *difference = quotient->left;
  return difference->op == SUBTRACT && is_pointer(difference->left->type) &&
         is_pointer(difference->right->type) &&
         // Of character pointers for instance a program may divide any difference, and means the
         // rounding.
         divides_difference(quotient->right->u.lval, difference->left->type) &&
         divides_difference(quotient->right->u.lval, difference->right->type);
}

// ((p - q) / K2) × K  ->  (p - q) × (K / K2), K a multiple of K2
Outcome scale_pointer_distance(NODE *&tree) {
  NODE *quotient = tree->left;
  NODE *constant = tree->right;
  if (constant->u.lval <= 0 || !is_pointer_distance(quotient, tree)) return Outcome::NEXT;
  const std::int32_t divisor = quotient->right->u.lval;
  if (constant->u.lval < divisor || constant->u.lval % divisor != 0) return Outcome::NEXT;
  constant->u.lval /= divisor;
  erase_node(quotient->right);
  tree->left = replace_by_left(quotient);
  return Outcome::AGAIN;
}

// ((p - q) / K2) × K  ->  (p - q) / (K2 / K), K2 a multiple of K
Outcome shorten_pointer_distance(NODE *&tree) {
  NODE *quotient = tree->left;
  NODE *constant = tree->right;
  if (constant->u.lval <= 0 || !is_pointer_distance(quotient, tree)) return Outcome::NEXT;
  NODE *divisor = quotient->right;
  if (divisor->u.lval % constant->u.lval != 0) return Outcome::NEXT;
  divisor->u.lval /= constant->u.lval;
  erase_node(constant);
  return finish(tree, replace_by_left(tree));
}

// (y + K3) × K  ->  (y × K) + K3 × K
Outcome distribute_over_sum(NODE *&tree) {
  NODE *sum = tree->left;
  NODE *constant = tree->right;
  if (!is_sum_or_difference(sum) || sum->type != tree->type || !is_integer_icon(sum->right))
    return Outcome::NEXT;
  NODE *addend = sum->right;
  const std::int32_t scaled =
      wrap_to_type(wrapping_multiply(addend->u.lval, constant->u.lval), tree->type);
  if (std::int64_t{scaled} / constant->u.lval != addend->u.lval) return Outcome::NEXT;
  set_icon(addend, scaled, tree->type);
  tree->left = sum->left;
  sum->left = simplify_node(tree);
  return finish(tree, sum);
}

// (y & K3) × 2^n  ->  (y × 2^n) & K3 × 2^n, also for | and ^
Outcome distribute_over_bits(NODE *&tree) {
  NODE *inner = tree->left;
  const bool is_bitwise = inner->op == BIT_AND || inner->op == BIT_OR || inner->op == BIT_XOR;
  if (!is_bitwise || inner->type != tree->type || !is_integer_icon(inner->right) ||
      log2_of(tree->right->u.lval) <= 0)
    return Outcome::NEXT;
  NODE *mask = inner->right;
  const std::int32_t scaled =
      wrap_to_type(wrapping_multiply(mask->u.lval, tree->right->u.lval), tree->type);
  set_icon(mask, scaled, tree->type);
  tree->left = inner->left;
  inner->left = simplify_node(tree);
  return finish(tree, inner);
}

// (y >> m) × 2^n  ->  (y & -2^m) << (n - m)    for n >= m
//                 ->  (y >> (m - n)) & -2^n    for n < m
Outcome multiply_shifted(NODE *&tree) {
  NODE *shift = tree->left;
  const int n = log2_of(tree->right->u.lval);
  // A shift that wraps to fewer bits than the product has lost bits that the result would show.
  if (n <= 0 || shift->op != SHIFT_RIGHT || !is_shift_count(shift->right) ||
      !is_word_integer(shift->type) || !is_integer(shift->left->type))
    return Outcome::NEXT;
  const std::int32_t m = shift->right->u.lval;
  if (n >= m) {
    shift->op = BIT_AND;
    set_icon(shift->right, shift_left(-1, m), shift->type);
    tree->op = SHIFT_LEFT;
    tree->right->u.lval = n - m;
  } else {
    shift->right->u.lval = m - n;
    tree->op = BIT_AND;
    set_icon(tree->right, shift_left(-1, n), tree->type);
  }
  tree->left = simplify_node(shift);
  return finish(tree, tree);
}

constexpr Rule constant_rules[] = {
    {"x * 1  ->  x", one_product},
    {"x * 0  ->  (x , 0)", zero_product},
    {"x * -1  ->  -x", minus_one_product},
    {"x * -K  ->  -(x * K)", negative_product},
    {"((p - q) / K2) * K  ->  (p - q) * (K / K2)", scale_pointer_distance},
    {"((p - q) / K2) * K  ->  (p - q) / (K2 / K)", shorten_pointer_distance},
    {"(y + K3) * K  ->  (y * K) + K3 * K", distribute_over_sum},
    {"(y & K3) * 2^n  ->  (y * 2^n) & K3 * 2^n", distribute_over_bits},
    {"(y >> m) * 2^n  ->  (y & -2^m) << (n - m); (y >> (m - n)) & -2^n", multiply_shifted},
};

// ------------------------------------------------------------------------------------------------
// Products

// leaf × x  ->  x × leaf; the constant right, of two constants the floating one
Outcome order_factors(NODE *&tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  const bool leaf_left = !is_leaf(b) && is_leaf(a);
  const bool constant_left = a->op == ICON && b->op != ICON && b->op != FCON;
  const bool float_left = a->op == FCON && b->op != FCON;
  if (!leaf_left && !constant_left && !float_left) return Outcome::NEXT;
  std::swap(tree->left, tree->right);
  return Outcome::AGAIN;
}

// x × K, K floating  ->  by the value of K
Outcome multiply_float_constant(NODE *&tree) {
  if (tree->right->op != FCON || !is_floating(tree->type)) return Outcome::NEXT;
  tree = apply_rules(multiply_float_rules, tree);
  return Outcome::DONE;
}

// No rule below is for floating or pointer types.
Outcome leave_other_types(NODE *&tree) {
  return is_integer(tree->type) ? Outcome::NEXT : Outcome::STOP;
}

// Can the product (x × K) or -x on the left give its constant away? To a constant beside it only
// where it does not wrap to fewer bits than the whole, to any other factor only in like type.
bool gives_constant_away(const NODE *tree) {
  const NODE *a = tree->left;
  if (!is_integer(a->type)) return false;
  return is_integer_icon(tree->right) ? is_as_wide(a, tree) : a->type == tree->type;
}

// (-x) × b  ->  (x × -1) × b, for the next rules
Outcome negation_to_product(NODE *&tree) {
  NODE *a = tree->left;
  if (a->op != NEGATE || !gives_constant_away(tree)) return Outcome::NEXT;
  a->op = MULTIPLY;
  a->right = make_icon(wrap_value(-1, a->type), a->type);
  return Outcome::REWRITTEN;
}

// (x × K1) × K2  ->  x × (K1 × K2)
Outcome merge_constant_factors(NODE *&tree) {
  NODE *a = tree->left;
  if (a->op != MULTIPLY || !is_integer_icon(a->right) || !is_integer_icon(tree->right) ||
      !gives_constant_away(tree))
    return Outcome::NEXT;
  set_type(a, tree->type);
  tree->left = a->right;
  a->right = simplify_node(tree);
  tree = a;
  return Outcome::AGAIN;
}

// (x × K) × b  ->  (x × b) × K
Outcome move_constant_factor_outwards(NODE *&tree) {
  NODE *a = tree->left;
  if (a->op != MULTIPLY || !is_icon(a->right) || is_icon(tree->right) || a->type != tree->type)
    return Outcome::NEXT;
  std::swap(a->right, tree->right);
  tree->left = simplify_node(a);
  return Outcome::AGAIN;
}

// a × (x × y)  ->  (a × x) × y
Outcome turn_factors_left(NODE *&tree) {
  NODE *b = tree->right;
  if (b->op != MULTIPLY || b->type != tree->type) return Outcome::NEXT;
  if (is_long_chain(b)) {
    // A long chain takes the other factor at its end.
    if (is_long_chain(tree->left)) return Outcome::NEXT;
    std::swap(tree->left, tree->right);
    return Outcome::AGAIN;
  }
  tree->right = b->left;
  b->left = simplify_node(tree);
  tree = b;
  return Outcome::AGAIN;
}

// x × y  ->  x & y, both 0 or 1
Outcome multiply_truths(NODE *&tree) {
  if (!is_boolean_tree(tree->left) || !is_boolean_tree(tree->right)) return Outcome::NEXT;
  tree->op = BIT_AND;
  return finish(tree, tree);
}

// x × K  ->  by the value of K and the form of x
Outcome multiply_constant(NODE *&tree) {
  if (!is_integer_icon(tree->right)) return Outcome::NEXT;
  tree = apply_rules(multiply_constant_rules, tree);
  return Outcome::DONE;
}

constexpr Rule product_rules[] = {
    {"K1 * K2  ->  K; (x , y) * b  ->  (x , y * b)", settle_operands},
    {"leaf * x  ->  x * leaf", order_factors},
    {"x * float K", multiply_float_constant},
    {"float x * y stays", leave_other_types},
    {"(-x) * b  ->  (x * -1) * b", negation_to_product},
    {"(x * K1) * K2  ->  x * (K1 * K2)", merge_constant_factors},
    {"(x * K) * b  ->  (x * b) * K", move_constant_factor_outwards},
    {"a * (x * y)  ->  (a * x) * y", turn_factors_left},
    {"x * y  ->  x & y", multiply_truths},
    {"x * K", multiply_constant},
};

} // namespace

const RuleSet multiply_rules{"multiply", product_rules};
const RuleSet multiply_float_rules{"multiply by a floating constant", float_rules};
const RuleSet multiply_constant_rules{"multiply by a constant", constant_rules};

NODE *simplify_mul(NODE *node) {
  return apply_rules(multiply_rules, node);
}

} // namespace velkor
