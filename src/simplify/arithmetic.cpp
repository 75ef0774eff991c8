// Rules of sums and differences.
#include "simplify/arithmetic.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "simplify/like_terms.h"
#include "simplify/patterns.h"
#include "simplify/reassociate.h"
#include "simplify/rule_sets.h"

#include <utility>

namespace velkor {
namespace {

// Two products of the tree's type?
bool combines_products(const NODE *tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  return a->op == MULTIPLY && b->op == MULTIPLY && a->type == tree->type && b->type == tree->type &&
         is_integer(tree->type);
}

// (x × u) op (x' × v)  ->  x × (u op v), x and x' alike
Outcome factor_left(NODE *&tree) {
  if (!combines_products(tree)) return Outcome::NEXT;
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!trees_equal(a->left, b->left, false)) return Outcome::NEXT;
  erase_tree(b->left);
  tree->left = a->right;
  tree->right = b->right;
  erase_node(b);
  a->right = simplify_node(tree);
  return finish(tree, a);
}

// ------------------------------------------------------------------------------------------------
// Sums

// (x - y) + y'  ->  x, y and y' alike
Outcome cancel_subtracted(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (a->op != SUBTRACT || b->type != tree->type || a->left->type != tree->type ||
      a->right->type != tree->type || !is_as_wide(a, tree) || !trees_equal(a->right, b, false))
    return Outcome::NEXT;
  erase_tree(b);
  erase_node(tree);
  erase_tree(a->right);
  return finish(tree, replace_by_left(a));
}

// The factor q with q × divisor = dividend in the type, or 0 when there is none.
std::int32_t exact_quotient(std::int32_t dividend, std::int32_t divisor, TypeWord type) {
  if (divisor == 0) return 0;
  const auto quotient = static_cast<std::int32_t>(std::int64_t{dividend} / divisor);
  const std::int32_t factor = wrap_to_type(quotient, type);
  return wrapping_multiply(factor, divisor) == dividend ? factor : 0;
}

// Two products by constants, of the tree's type?
bool combines_scaled(const NODE *tree) {
  return combines_products(tree) && is_icon(tree->left->right) && is_icon(tree->right->right);
}

// (x × K1) + (y × K2)  ->  (x × q + y) × K2, q × K2 = K1
Outcome factor_second_scale(NODE *&tree) {
  if (!combines_scaled(tree)) return Outcome::NEXT;
  NODE *a = tree->left;
  NODE *b = tree->right;
  const std::int32_t factor = exact_quotient(a->right->u.lval, b->right->u.lval, tree->type);
  if (factor == 0) return Outcome::NEXT;
  set_icon(a->right, factor, tree->type);
  tree->left = simplify_node(a);
  tree->right = b->left;
  b->left = simplify_node(tree);
  return finish(tree, b);
}

// (x × K1) + (y × K2)  ->  (x + y × q) × K1, q × K1 = K2
Outcome factor_first_scale(NODE *&tree) {
  if (!combines_scaled(tree)) return Outcome::NEXT;
  NODE *a = tree->left;
  NODE *b = tree->right;
  const std::int32_t factor = exact_quotient(b->right->u.lval, a->right->u.lval, tree->type);
  if (factor == 0) return Outcome::NEXT;
  set_icon(b->right, factor, tree->type);
  tree->right = simplify_node(b);
  tree->left = a->left;
  a->left = simplify_node(tree);
  return finish(tree, a);
}

// Can the operand -y of a sum be subtracted instead? A negation that wraps to fewer bits than the
// sum is a number of its own; and a pointer that was negated as a number would become the second
// one of a pointer difference.
bool is_negated_term(const NODE *node, const NODE *sum) {
  return node->op == NEGATE && is_integer(node->left->type) && is_as_wide(node, sum);
}

// (-x) + b  ->  b + (-x), for the rules to come
Outcome move_negated_right(NODE *&tree) {
  if (!is_negated_term(tree->left, tree)) return Outcome::NEXT;
  std::swap(tree->left, tree->right);
  return Outcome::REWRITTEN;
}

// a + (-y)  ->  a - y
Outcome add_negated(NODE *&tree) {
  if (!is_negated_term(tree->right, tree)) return Outcome::NEXT;
  tree->right = replace_by_left(tree->right);
  tree->op = SUBTRACT;
  return finish(tree, tree);
}

// K - y of the tree's type, all integers?
bool is_constant_difference(const NODE *node, const NODE *tree) {
  return node->op == SUBTRACT && is_icon(node->left) && node->type == tree->type &&
         node->left->type == tree->type && is_integer(tree->type) && is_integer(node->right->type);
}

// (K - y) + b  ->  (K + b) - y
Outcome move_constant_from_left_difference(NODE *&tree) {
  NODE *a = tree->left;
  if (!is_constant_difference(a, tree)) return Outcome::NEXT;
  std::swap(a->right, tree->right);
  a->op = ADD;
  tree->op = SUBTRACT;
  tree->left = simplify_node(a);
  return finish(tree, tree);
}

// a + (K - y)  ->  (a - y) + K
Outcome move_constant_from_right_difference(NODE *&tree) {
  NODE *b = tree->right;
  if (!is_constant_difference(b, tree)) return Outcome::NEXT;
  NODE *constant = b->left;
  b->left = tree->left;
  tree->left = simplify_node(b);
  tree->right = constant;
  return finish(tree, tree);
}

constexpr Rule sum_rules[] = {
    {"(x - y) + y  ->  x", cancel_subtracted},
    {"(x * u) + (x * v)  ->  x * (u + v)", factor_left},
    {"(x * K1) + (y * K2)  ->  (x * (K1 / K2) + y) * K2", factor_second_scale},
    {"(x * K1) + (y * K2)  ->  (x + y * (K2 / K1)) * K1", factor_first_scale},
    {"(-x) + b  ->  b + (-x)", move_negated_right},
    {"a + (-y)  ->  a - y", add_negated},
    {"(K - y) + b  ->  (K + b) - y", move_constant_from_left_difference},
    {"a + (K - y)  ->  (a - y) + K", move_constant_from_right_difference},
    {"(x * K1 + y) + x * K2  ->  x * (K1 + K2) + y", merge_like_terms},
};

// ------------------------------------------------------------------------------------------------
// Differences

// x - x  ->  0
Outcome cancel_difference(NODE *&tree) {
  if (!trees_equal(tree->left, tree->right, false)) return Outcome::NEXT;
  const TypeWord type = is_pointer(tree->type) ? TypeWord{INT} : tree->type;
  erase_tree(tree);
  tree = make_conversion(type, make_icon(0, INT));
  return Outcome::DONE;
}

// Of floats only equal ones cancel.
Outcome leave_floats(NODE *&tree) {
  return is_floating(tree->type) ? Outcome::STOP : Outcome::NEXT;
}

// i + p  ->  p + i, in place
void put_pointer_left(NODE *sum) {
  if (sum->op == ADD && is_integer(sum->left->type) && sum->right->type == sum->type)
    std::swap(sum->left, sum->right);
}

// p + i or p - i?
bool is_displaced_pointer(const NODE *node) {
  return is_sum_or_difference(node) && is_pointer(node->left->type) &&
         is_integer(node->right->type);
}

// The int sum or difference (p - q) op i: place holds the operand that was p op i or q op i and
// is that sum now.
Outcome displace_difference(NODE *&tree, NODE *sum) {
  sum->left = simplify_sub(tree);
  set_type(sum, INT);
  return finish(tree, sum);
}

// p - (q + i)  ->  (p - q) - i
// (p + i) - q  ->  (p - q) + i
Outcome subtract_pointers(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!is_pointer(a->type) || !is_pointer(b->type) || !is_integer(tree->type)) return Outcome::NEXT;
  if (tree->type != INT) {
    const TypeWord type = tree->type;
    set_type(tree, INT);
    tree = make_conversion(type, simplify_sub(tree));
    return Outcome::DONE;
  }
  put_pointer_left(b);
  if (is_displaced_pointer(b)) {
    tree->right = b->left;
    b->op = b->op == ADD ? SUBTRACT : ADD;
    return displace_difference(tree, b);
  }
  put_pointer_left(a);
  if (!is_displaced_pointer(a)) return Outcome::NEXT;
  tree->left = a->left;
  return displace_difference(tree, a);
}

// x - K  ->  x + (-K)
Outcome subtract_constant(NODE *&tree) {
  NODE *constant = tree->right;
  if (!is_integer_icon(constant)) return Outcome::NEXT;
  const TypeWord type = is_pointer(tree->type) ? TypeWord{INT} : tree->type;
  const std::int32_t value = wrap_signed(constant->u.lval, constant->type);
  const std::int32_t negated = wrap_value(wrapping_negate(value), type);
  if (wrap_to_type(wrapping_negate(negated), constant->type) != constant->u.lval)
    return Outcome::NEXT;
  // The most negative value is its own negative: the subtraction stays.
  if (!is_unsigned_integer(type) && negated == value && value != 0) return Outcome::NEXT;
  constant->u.lval = negated;
  set_type(constant, type);
  tree->op = ADD;
  return finish(tree, tree);
}

// a - (x + y)  ->  (a - x) - y
// a - (x - y)  ->  (a - x) + y
Outcome subtract_sum(NODE *&tree) {
  NODE *b = tree->right;
  // Pointers under an integer difference stay together, and a long chain stays as it leans.
  if (!is_sum_or_difference(b) || b->type != tree->type || !is_integer(b->left->type) ||
      !is_integer(b->right->type) || is_long_chain(b))
    return Outcome::NEXT;
  tree->op = b->op == ADD ? SUBTRACT : ADD;
  b->op = SUBTRACT;
  NODE *y = b->right;
  b->right = b->left;
  b->left = tree->left;
  tree->left = simplify_node(b);
  tree->right = y;
  return finish(tree, tree);
}

// (x + K) - b  ->  (x - b) + K
Outcome move_constant_past_subtracted(NODE *&tree) {
  NODE *a = tree->left;
  if (a->op != ADD || a->type != tree->type || !is_integer_icon(a->right) || is_icon(tree->right))
    return Outcome::NEXT;
  std::swap(a->right, tree->right);
  a->op = SUBTRACT;
  tree->op = ADD;
  tree->left = simplify_node(a);
  return finish(tree, tree);
}

// 0 - b  ->  -b
Outcome subtract_from_zero(NODE *&tree) {
  NODE *b = tree->right;
  if (!is_icon_of(tree->left, 0) || !is_integer(b->type) || tree->type != promote_type(b->type))
    return Outcome::NEXT;
  erase_node(tree->left);
  tree->left = b;
  tree->right = nullptr;
  tree->op = NEGATE;
  return finish(tree, tree);
}

// a - (-y)  ->  a + y
Outcome subtract_negated(NODE *&tree) {
  NODE *b = tree->right;
  // A negation that wraps to fewer bits than the difference is a number of its own.
  if (b->op != NEGATE || !is_integer(b->type) || !is_as_wide(b, tree)) return Outcome::NEXT;
  const TypeWord type = b->type;
  tree->right = make_conversion(type, replace_by_left(b));
  tree->op = ADD;
  return finish(tree, tree);
}

bool is_constant_address(const NODE *node) {
  return (node->op == PCONV || node->op == ISP2CHAR) && is_icon(node->left);
}

// (type *) K1 - (type *) K2  ->  K1 - K2
Outcome subtract_constant_addresses(NODE *&tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  if (!is_constant_address(a) || !is_constant_address(b) || a->type != b->type)
    return Outcome::NEXT;
  const std::int32_t value = wrapping_subtract(a->left->u.lval, b->left->u.lval);
  const TypeWord type = tree->type;
  erase_tree(tree);
  tree = make_icon(wrap_value(value, type), type);
  return Outcome::DONE;
}

// (x × u) - (y × u')  ->  (x - y) × u, u and u' alike
Outcome factor_right(NODE *&tree) {
  if (!combines_products(tree)) return Outcome::NEXT;
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!trees_equal(a->right, b->right, false)) return Outcome::NEXT;
  erase_tree(b->right);
  tree->left = a->left;
  tree->right = b->left;
  erase_node(b);
  a->left = simplify_node(tree);
  return finish(tree, a);
}

// 2^n - 1?
bool is_low_mask(std::uint32_t value) {
  return (value & (value + 1)) == 0;
}

// (x op K1) op' (x' op K2) in a full word, x and x' alike, K1 and K2 low masks and K1 the larger?
bool combines_low_masks(const NODE *tree, Opcode op) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  if (a->op != op || b->op != op || a->type != b->type || !is_icon(a->right) ||
      !is_icon(b->right) || !is_word_integer(a->type) || !is_integer(tree->type))
    return false;
  const auto larger = static_cast<std::uint32_t>(a->right->u.lval);
  const auto smaller = static_cast<std::uint32_t>(b->right->u.lval);
  return larger >= smaller && is_low_mask(larger) && is_low_mask(smaller) &&
         trees_equal(a->left, b->left, false);
}

// (x | K1) - (x | K2)  ->  ~x & (K1 & ~K2)
// The first sets the bits of K1 & ~K2 where x has none, and the second leaves them as they are.
Outcome subtract_set_bits(NODE *&tree) {
  if (!combines_low_masks(tree, BIT_OR)) return Outcome::NEXT;
  NODE *a = tree->left;
  const TypeWord type = tree->type;
  a->right->u.lval &= ~tree->right->right->u.lval;
  erase_tree(tree->right);
  erase_node(tree);
  a->op = BIT_AND;
  a->left = simplify_node(make_node(COMPLEMENT, a->left, nullptr, a->type));
  tree = make_conversion(type, simplify_node(a));
  return Outcome::DONE;
}

// (x & K1) - (x & K2)  ->  x & (K1 - K2)
Outcome subtract_masked_bits(NODE *&tree) {
  if (!combines_low_masks(tree, BIT_AND)) return Outcome::NEXT;
  NODE *a = tree->left;
  const TypeWord type = tree->type;
  a->right->u.lval -= tree->right->right->u.lval;
  erase_tree(tree->right);
  erase_node(tree);
  tree = make_conversion(type, simplify_node(a));
  return Outcome::DONE;
}

// x - (x & K)  ->  x & ~K, x unsigned, K a low mask
Outcome subtract_low_bits(NODE *&tree) {
  const NODE *a = tree->left;
  NODE *b = tree->right;
  if (b->op != BIT_AND || !is_icon(b->right) || !is_unsigned_integer(a->type) ||
      !is_integer(tree->type) || !is_integer(b->type) || !is_as_wide(b, a))
    return Outcome::NEXT;
  const auto low = static_cast<std::uint32_t>(b->right->u.lval);
  const std::uint32_t all = value_mask(a->type);
  if (low > all || !is_low_mask(low) || !trees_equal(a, b->left, false)) return Outcome::NEXT;
  const TypeWord type = tree->type;
  erase_tree(tree->left);
  erase_node(tree);
  set_icon(b->right, static_cast<std::int32_t>(all - low), b->type);
  tree = make_conversion(type, simplify_node(b));
  return Outcome::DONE;
}

constexpr Rule difference_rules[] = {
    {"x - x  ->  0", cancel_difference},
    {"float x - y stays", leave_floats},
    {"p - (q + i)  ->  (p - q) - i; (p + i) - q  ->  (p - q) + i", subtract_pointers},
    {"x - K  ->  x + (-K)", subtract_constant},
    {"a - (x + y)  ->  (a - x) - y; a - (x - y)  ->  (a - x) + y", subtract_sum},
    {"(x + K) - b  ->  (x - b) + K", move_constant_past_subtracted},
    {"0 - b  ->  -b", subtract_from_zero},
    {"a - (-y)  ->  a + y", subtract_negated},
    {"(type *) K1 - (type *) K2  ->  K1 - K2", subtract_constant_addresses},
    {"(x * u) - (x * v)  ->  x * (u - v)", factor_left},
    {"(x * u) - (y * u)  ->  (x - y) * u", factor_right},
    {"(x | K1) - (x | K2)  ->  ~x & (K1 & ~K2)", subtract_set_bits},
    {"(x & K1) - (x & K2)  ->  x & (K1 - K2)", subtract_masked_bits},
    {"x - (x & K)  ->  x & ~K", subtract_low_bits},
    {"(x * K1 + y) - x * K2  ->  x * (K1 - K2) + y", merge_like_terms},
};

} // namespace

const RuleSet add_rules{"add", sum_rules};
const RuleSet subtract_rules{"subtract", difference_rules};

NODE *simplify_add(NODE *node) {
  if (is_floating(node->type)) return node;
  node = reassociate(node);
  return node->op == ADD ? apply_rules(add_rules, node) : node;
}

NODE *simplify_sub(NODE *node) {
  return apply_rules(subtract_rules, node);
}

} // namespace velkor
