#include "simplify/reassociate.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "simplify/bits.h"
#include "simplify/fold.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <utility>

namespace velkor {
namespace {

bool is_address_of_name(const NODE *node) {
  return node->op == ADDRESS && node->left->op == NAME;
}

// (x op y) op b, b no constant?
bool is_chain(const NODE *tree) {
  return tree->left->op == tree->op && !is_icon(tree->right);
}

// (x op y) op b  ->  (x op b) op y
Outcome exchange_last_operands(NODE *tree) {
  NODE *inner = tree->left;
  std::swap(inner->right, tree->right);
  tree->left = simplify_node(inner);
  return Outcome::AGAIN;
}

// a op (x op y)  ->  (a op x) op y
Outcome turn_left(NODE *&tree) {
  NODE *outer = tree->right;
  set_type(outer, tree->type);
  tree->right = outer->left;
  set_type(tree, balance_type(tree->left, tree->right));
  outer->left = simplify_node(tree);
  tree = outer;
  return Outcome::AGAIN;
}

// K op b  ->  b op K
// x op (y op z)  ->  (y op z) op x, x a leaf or &name
Outcome order_operands(NODE *&tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  const bool constant_left = is_icon(a) && !is_icon(b);
  // Two addresses of names would change places for ever.
  const bool leaf_left =
      !is_leaf(b) && (is_leaf(a) || (is_address_of_name(a) && !is_address_of_name(b)));
  if (!constant_left && !leaf_left) return Outcome::NEXT;
  std::swap(tree->left, tree->right);
  return Outcome::AGAIN;
}

// (x op y) op b  ->  (x op b) op y, y a leaf
Outcome move_leaf_outwards(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!is_chain(tree) || a->type != tree->type || b->type != tree->type || !is_leaf(a->right))
    return Outcome::NEXT;
  if (is_icon(a->right)) return exchange_last_operands(tree);
  if (is_leaf(b) || is_long_chain(a)) return Outcome::NEXT;
  return exchange_last_operands(tree);
}

// (i + K) + p  ->  (i + p) + K
Outcome move_constant_past_pointer(NODE *&tree) {
  NODE *a = tree->left;
  // A sum that wraps to fewer bits must be finished before the pointer is added.
  if (!is_chain(tree) || !is_icon(a->right) || !is_pointer(tree->type) ||
      !is_pointer(tree->right->type) || !is_word_integer(a->type))
    return Outcome::NEXT;
  set_type(a, tree->type);
  return exchange_last_operands(tree);
}

// May the integer operands i, j of a pointer sum be added first? Narrow ones without a conversion
// of their own would be added in their own type and lose the carry, so the sum is promoted.
bool may_add_first(const NODE *i, const NODE *j) {
  return i->type == j->type && is_integer(i->type) && is_word_integer(promote_type(i->type));
}

// (i + p) + j  ->  (i + j) + p
Outcome move_right_pointer_outwards(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!is_chain(tree) || !is_pointer(a->right->type) || !may_add_first(a->left, b))
    return Outcome::NEXT;
  set_type(a, promote_type(b->type));
  return exchange_last_operands(tree);
}

// (p + i) + j  ->  (j + i) + p
Outcome move_left_pointer_outwards(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (!is_chain(tree) || !is_pointer(a->left->type) || !may_add_first(a->right, b))
    return Outcome::NEXT;
  set_type(a, promote_type(b->type));
  std::swap(a->left, tree->right);
  tree->left = simplify_node(a);
  return Outcome::AGAIN;
}

// x & 0  ->  (x , 0)
// x op 0  ->  (type) x
Outcome drop_zero(NODE *&tree) {
  NODE *zero = tree->right;
  if (!is_icon_of(zero, 0)) return Outcome::NEXT;
  if (tree->op != BIT_AND) {
    tree = convert_to_left(tree);
    return Outcome::DONE;
  }
  // The constant keeps the operation's type: what looks at it may ask for the sign.
  set_type(zero, tree->type);
  tree->op = COMMA_OP;
  tree->depnum = zero->depnum;
  tree = simplify_node(tree);
  return Outcome::DONE;
}

// x & 1  ->  (type) x, x being 0 or 1
Outcome drop_mask_of_truth(NODE *&tree) {
  if (tree->op != BIT_AND || !is_icon_of(tree->right, 1) || !is_boolean_tree(tree->left))
    return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// x | 1  ->  (x , 1), x being 0 or 1
Outcome drop_absorbed_truth(NODE *&tree) {
  if (tree->op != BIT_OR || !is_icon_of(tree->right, 1) || !is_boolean_tree(tree->left))
    return Outcome::NEXT;
  set_type(tree->right, tree->type);
  tree->op = COMMA_OP;
  tree = simplify_node(tree);
  return Outcome::DONE;
}

// a op (x op y)  ->  (a op x) op y
Outcome turn_right_chain(NODE *&tree) {
  const NODE *b = tree->right;
  if (b->op != tree->op) return Outcome::NEXT;
  const bool constant_in_pointer = b->type == INT && is_pointer(tree->type) && is_icon(b->right);
  if (b->type != tree->type && !constant_in_pointer) return Outcome::NEXT;
  if (!is_long_chain(b)) return turn_left(tree);
  // A long chain takes the other operand at its end.
  if (is_long_chain(tree->left)) return Outcome::NEXT;
  std::swap(tree->left, tree->right);
  return Outcome::AGAIN;
}

// a + (p + i)  ->  p + (a + i)
Outcome add_to_right_integer(NODE *&tree) {
  NODE *outer = tree->right;
  if (outer->op != tree->op || !is_pointer(tree->type) || !is_pointer(outer->type) ||
      !is_pointer(outer->left->type))
    return Outcome::NEXT;
  set_type(outer, tree->type);
  tree->right = outer->right;
  set_type(tree, balance_type(tree->left, tree->right));
  outer->right = simplify_node(tree);
  tree = outer;
  return Outcome::AGAIN;
}

// a + (i + p)  ->  (a + i) + p
Outcome add_to_left_integer(NODE *&tree) {
  const NODE *b = tree->right;
  if (b->op != tree->op || !is_pointer(tree->type) || !is_pointer(b->type) ||
      !is_pointer(b->right->type))
    return Outcome::NEXT;
  return turn_left(tree);
}

// (x op K1) op K2  ->  x op (K1 op K2)
Outcome merge_constants(NODE *&tree) {
  NODE *a = tree->left;
  if (a->op != tree->op || !is_integer_icon(a->right) || !is_integer_icon(tree->right))
    return Outcome::NEXT;
  if (a->type != tree->type && !(a->type == INT && tree->type == UNSIGNED)) return Outcome::NEXT;
  // The comparison rules take it that the program's signed sums do not wrap; that of the constants
  // must not make one that does.
  if (tree->op == ADD && is_signed_integer(tree->type) &&
      sum_wraps(a->right->u.lval, tree->right->u.lval))
    return Outcome::STOP;
  set_type(a, tree->type);
  tree->left = a->right;
  set_type(tree, balance_type(tree->left, tree->right));
  a->right = simplify_node(tree);
  tree = a;
  return Outcome::AGAIN;
}

// (x op K) op b  ->  (x op b) op K
Outcome move_constant_outwards(NODE *&tree) {
  const NODE *a = tree->left;
  if (!is_chain(tree) || !is_icon(a->right) || a->type != tree->type) return Outcome::NEXT;
  return exchange_last_operands(tree);
}

// (i + K) + b  ->  (i + b) + K, a pointer sum
Outcome move_integer_constant_outwards(NODE *&tree) {
  NODE *a = tree->left;
  if (!is_chain(tree) || !is_icon(a->right) || !is_pointer(tree->type) || !is_word_integer(a->type))
    return Outcome::NEXT;
  set_type(a, tree->type);
  return exchange_last_operands(tree);
}

bool is_bitwise(const NODE *node) {
  return node->op == BIT_AND || node->op == BIT_OR || node->op == BIT_XOR;
}

// (long) s op K  ->  (long) (s op K), s unsigned
Outcome operate_on_unsigned(NODE *&tree) {
  if (!is_bitwise(tree) || !is_icon(tree->right)) return Outcome::NEXT;
  const TypeWord type = tree->type;
  if (type != LONG && type != UNSIGNED_LONG) return Outcome::NEXT;
  const NODE *a = tree->left;
  const NODE *source = a->op == SCONV && a->type == type ? a->left : a;
  if (!is_unsigned_integer(source->type) || value_width(source->type) > 32) return Outcome::NEXT;
  const TypeWord promoted = promote_type(source->type);
  const auto constant = static_cast<std::uint32_t>(tree->right->u.lval);
  if (tree->op != BIT_AND && (constant & value_mask(promoted)) != constant) return Outcome::NEXT;
  // An unsigned long is in its own type already.
  if (promoted == type) return Outcome::NEXT;
  const Opcode op = tree->op;
  set_type(tree, promoted);
  tree->left = make_conversion(promoted, tree->left);
  tree->right = make_conversion(promoted, tree->right);
  tree = simplify_node(tree);
  if (tree->op != op || !is_icon(tree->right)) {
    tree = make_conversion(type, tree);
    return Outcome::DONE;
  }
  // Nothing is gained, and a conversion above would only sink to the operands again.
  tree->left = make_conversion(type, tree->left);
  tree->right = make_conversion(type, tree->right);
  set_type(tree, type);
  return Outcome::NEXT;
}

// x >> K in a full word, logical or arithmetic as its own type says?
bool is_plain_right_shift(const NODE *node) {
  return node->op == SHIFT_RIGHT && is_shift_count(node->right) && is_word_integer(node->type) &&
         is_integer(node->left->type) &&
         is_unsigned_integer(node->left->type) == is_unsigned_integer(node->type);
}

// (x >> K1) op (y >> K2)  ->  ((x >> (K1 - K2)) op y) >> K2
Outcome factor_right_shift(NODE *&tree) {
  if (!is_bitwise(tree) || !is_plain_right_shift(tree->left) ||
      !is_plain_right_shift(tree->right) || tree->left->type != tree->right->type)
    return Outcome::NEXT;
  if (tree->left->right->u.lval < tree->right->right->u.lval) std::swap(tree->left, tree->right);
  const TypeWord type = tree->type;
  NODE *a = tree->left;
  NODE *b = tree->right;
  a->right->u.lval -= b->right->u.lval;
  tree->left = simplify_node(a);
  tree->right = b->left;
  set_type(tree, b->type);
  b->left = simplify_node(tree);
  tree = make_conversion(type, simplify_node(b));
  return Outcome::DONE;
}

// x × 2^n?
bool is_scaled(const NODE *node) {
  return node->op == MULTIPLY && is_integer(node->type) && is_icon(node->right) &&
         log2_of(node->right->u.lval) >= 0;
}

// (x × K1) op (y × K2)  ->  ((x × (K1 / K2)) op y) × K2, K1 and K2 powers of two
Outcome factor_scale(NODE *&tree) {
  if (!is_scaled(tree->left) || !is_scaled(tree->right) || tree->right->type != tree->type)
    return Outcome::NEXT;
  // A product that wraps to fewer bits than the result cannot give up its factor.
  if (!is_as_wide(tree->left, tree)) return Outcome::NEXT;
  if (tree->left->right->u.lval < tree->right->right->u.lval) std::swap(tree->left, tree->right);
  NODE *a = tree->left;
  NODE *b = tree->right;
  a->right->u.lval /= b->right->u.lval;
  set_type(a, tree->type);
  set_type(b, tree->type);
  tree->left = simplify_node(a);
  tree->right = b->left;
  b->left = simplify_node(tree);
  tree = simplify_node(b);
  return Outcome::DONE;
}

// (x & m) op (y & m)  ->  (x op y) & m, op one of | ^
Outcome factor_mask(NODE *&tree) {
  if (tree->op != BIT_OR && tree->op != BIT_XOR) return Outcome::NEXT;
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (a->op != BIT_AND || b->op != BIT_AND || !trees_equal(a->right, b->right, false))
    return Outcome::NEXT;
  const std::int32_t width = value_width(tree->type);
  if (value_width(a->type) != width || value_width(b->type) != width) return Outcome::NEXT;
  tree->left = a->left;
  erase_tree(a->right);
  erase_node(a);
  tree->right = b->left;
  set_type(b, tree->type);
  b->left = simplify_node(tree);
  tree = simplify_node(b);
  return Outcome::DONE;
}

constexpr Rule rules[] = {
    {"op(K1, K2)  ->  K; op((x , y), b)  ->  (x , op(y, b))", settle_operands},
    {"leaf op (x op y)  ->  (x op y) op leaf", order_operands},
    {"(x op leaf) op b  ->  (x op b) op leaf", move_leaf_outwards},
    {"(i + K) + p  ->  (i + p) + K", move_constant_past_pointer},
    {"(i + p) + j  ->  (i + j) + p", move_right_pointer_outwards},
    {"(p + i) + j  ->  (j + i) + p", move_left_pointer_outwards},
    {"x op 0  ->  x; x & 0  ->  (x , 0)", drop_zero},
    {"x & 1  ->  x", drop_mask_of_truth},
    {"x | 1  ->  (x , 1)", drop_absorbed_truth},
    {"a op (x op y)  ->  (a op x) op y", turn_right_chain},
    {"a + (p + i)  ->  p + (a + i)", add_to_right_integer},
    {"a + (i + p)  ->  (a + i) + p", add_to_left_integer},
    {"(x op K1) op K2  ->  x op (K1 op K2)", merge_constants},
    {"(x op K) op b  ->  (x op b) op K", move_constant_outwards},
    {"(i + K) + b  ->  (i + b) + K", move_integer_constant_outwards},
    {"(long) s op K  ->  (long) (s op K)", operate_on_unsigned},
    {"(x >> K1) op (y >> K2)  ->  ((x >> (K1 - K2)) op y) >> K2", factor_right_shift},
    {"(x * K1) op (y * K2)  ->  ((x * (K1 / K2)) op y) * K2", factor_scale},
    {"(x & m) op (y & m)  ->  (x op y) & m", factor_mask},
};
static_assert(std::size(rules) <= most_rules_in_a_set);

} // namespace

const RuleSet reassociate_rules{"reassociate", rules};

bool is_long_chain(const NODE *tree) {
  const bool sum = is_sum_or_difference(tree);
  const Opcode op = tree->op;
  for (int links = 0; links <= longest_turned_chain; ++links, tree = tree->left)
    if (sum ? !is_sum_or_difference(tree) : tree->op != op) return false;
  return true;
}

Outcome settle_operands(NODE *&tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  if (a->op == COMMA_OP || b->op == COMMA_OP) {
    tree = simplify_node(tree);
    return Outcome::DONE;
  }
  if (!is_integer_icon(a) || !is_integer_icon(b)) return Outcome::NEXT;
  tree = fold_node(tree);
  return is_icon(tree) ? Outcome::DONE : Outcome::NEXT;
}

NODE *reassociate(NODE *node) {
  return is_floating(node->type) ? node : apply_rules(reassociate_rules, node);
}

} // namespace velkor
