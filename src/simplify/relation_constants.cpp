// Relations with a constant: arithmetic moves from the left operand into the constant, and
// constants come to the form that the other rules, and the passes, look for.
#include "core/bit_arithmetic.h"
#include "simplify/bits.h"
#include "simplify/relation_rules.h"

#include <algorithm>

namespace velkor {
namespace {

struct Range {
  std::int64_t low;
  std::int64_t high;
};

// The values that an integer can have, by its bits alone.
Range range_by_bits(const NODE *tree) {
  const TypeWord type = tree->type;
  const std::uint32_t possible = possible_bits(tree, type);
  const std::uint32_t certain = certain_bits(tree, type);
  if (is_unsigned_integer(type)) return {certain, possible};
  const std::uint32_t largest = value_mask(type) >> 1;
  const std::uint32_t sign = largest + 1;
  if (!(possible & sign)) return {certain, possible};
  if (certain & sign)
    return {static_cast<std::int32_t>(certain), static_cast<std::int32_t>(possible)};
  return {-static_cast<std::int64_t>(largest) - 1, possible & largest};
}

bool is_word(const Range &range) {
  return range.low >= INT32_MIN && range.high <= INT32_MAX;
}

Range product(const Range &a, const Range &b) {
  const auto [low, high] =
      std::minmax({a.low * b.low, a.low * b.high, a.high * b.low, a.high * b.high});
  return {low, high};
}

// Does the operand keep its value in a signed word's arithmetic?
bool is_signed_operand(const NODE *tree) {
  return is_integer(tree->type) && is_signed_integer(promote_type(tree->type));
}

bool is_signed_word(TypeWord type) {
  return is_signed_integer(type) && value_width(type) == 32;
}

// May the value be one that the program does not compute as it stands here: a part of a sum in
// another order, or unsigned arithmetic that wraps?
bool may_have_wrapped(const NODE *tree) {
  switch (tree->op) {
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case NEGATE: return true;
  case SCONV: return is_unsigned_integer(tree->left->type) && value_width(tree->left->type) == 32;
  default: return false;
  }
}

bool is_sum_with_constant(const NODE *node) {
  return node->op == ADD && is_icon(node->right);
}

// A relation of signed words with a constant that is not negative, whose left operand has a
// constant on the right.
bool compares_signed_operation(const NODE *tree, Opcode op) {
  const NODE *left = tree->left;
  if (left->op != op || !is_icon(left->right) || !is_icon(tree->right)) return false;
  return tree->right->u.lval >= 0 && is_signed_integer(left->type) &&
         is_signed_operand(left->left) && is_signed_operand(left->right);
}

// What multiply_out_quotient and shift_back_constant share. scaled yields the bound of x for
// (x op K2) >= bound, false if no word holds it. > and <= are taken as >= and < of the next
// constant, and only then: > 0 would come back of >= 1. < and <= are the opposites of >= and >.
template <typename Scaled> Outcome scale_constant(NODE *&tree, Scaled scaled) {
  const bool is_strict = is_less_equal_or_opposite(tree);
  if (!is_strict && !is_less_or_opposite(tree)) return Outcome::NEXT;
  NODE *left = tree->left;
  std::int32_t bound = tree->right->u.lval;
  if (is_strict) {
    if (bound >= wrap_to_type(wrapping_add(bound, 1), left->type)) return Outcome::NEXT;
    bound += 1;
  }
  std::int32_t value = 0;
  if (!scaled(bound, value)) return Outcome::NEXT;
  if (is_strict) tree->op = tree->op == GT ? GE : LT;
  set_icon(tree->right, value, left->type);
  tree->left = convert_to_left(left);
  return Outcome::AGAIN;
}

} // namespace

bool is_exact(const NODE *node) {
  if (!is_signed_word(node->type) || !is_signed_operand(node->left)) return false;
  const Range left = range_by_bits(node->left);
  if (node->op == NEGATE) return is_word({-left.high, -left.low});
  if (!is_signed_operand(node->right)) return false;
  const Range right = range_by_bits(node->right);
  switch (node->op) {
  case ADD: return is_word({left.low + right.low, left.high + right.high});
  case SUBTRACT: return is_word({left.low - right.high, left.high - right.low});
  case MULTIPLY: return is_word(product(left, right));
  default: return false;
  }
}

bool is_exact_or_promised(const NODE *sum) {
  if (!is_signed_word(sum->type) || !is_signed_operand(sum->left)) return false;
  return !may_have_wrapped(sum->left) || is_exact(sum);
}

// (x * K2) rel 0, K2 odd  ->  x rel 0
Outcome drop_odd_factor(NODE *&tree) {
  NODE *left = tree->left;
  if (!is_icon_of(tree->right, 0) || left->op != MULTIPLY || !is_icon(left->right))
    return Outcome::NEXT;
  const std::int32_t factor = left->right->u.lval;
  if (factor <= 1 || !(factor & 1) || !is_signed_integer(left->type)) return Outcome::NEXT;
  if (!is_integer(left->left->type) || is_unsigned_relation(tree)) return Outcome::NEXT;
  // An odd factor has an inverse modulo 2^n, so that == needs no more; order needs the true
  // product.
  if (!is_equality(tree) && !is_exact(left)) return Outcome::NEXT;
  left->right->u.lval = 1;
  tree->left = simplify_node(left);
  return Outcome::AGAIN;
}

// (x / K2) >= K  ->  x >= K * K2, and > < <=
Outcome multiply_out_quotient(NODE *&tree) {
  if (!compares_signed_operation(tree, DIVIDE)) return Outcome::NEXT;
  const std::int32_t divisor = tree->left->right->u.lval;
  const TypeWord type = tree->left->type;
  if (divisor <= 0) return Outcome::NEXT;
  return scale_constant(tree, [=](std::int32_t bound, std::int32_t &value) {
    // Quotients round towards zero: those that are 0 begin below zero.
    if (bound == 0) return false;
    value = wrap_to_type(wrapping_multiply(bound, divisor), type);
    return value / divisor == bound;
  });
}

// (x >> K2) >= K  ->  x >= (K << K2), and > < <=
Outcome shift_back_constant(NODE *&tree) {
  if (!compares_signed_operation(tree, SHIFT_RIGHT)) return Outcome::NEXT;
  // What is shifted decides how; a node's type may be another after conversions have sunk.
  if (!is_signed_integer(tree->left->left->type)) return Outcome::NEXT;
  const TypeWord type = tree->left->type;
  const std::int32_t count = tree->left->right->u.lval;
  if (count <= 0 || count >= 32) return Outcome::NEXT;
  return scale_constant(tree, [=](std::int32_t bound, std::int32_t &value) {
    value = wrap_to_type(shift_left(bound, count), type);
    return shift_right_arithmetic(value, count) == bound;
  });
}

// (-x) rel K  ->  -K rel x, written x swapped-rel -K
Outcome negate_both_sides(NODE *&tree) {
  NODE *left = tree->left;
  NODE *right = tree->right;
  if (left->op != NEGATE || !is_icon(right) || right->type != left->type) return Outcome::NEXT;
  if (!is_signed_integer(left->type) || !is_integer(left->left->type)) return Outcome::NEXT;
  const std::uint32_t largest = value_mask(left->type) >> 1;
  if (static_cast<std::uint32_t>(right->u.lval) == ~largest) return Outcome::NEXT;
  if (value_width(left->left->type) > value_width(left->type)) return Outcome::NEXT;
  // As unsigned words 0 and its negative stand at the same end; and the most negative word is its
  // own negative.
  if (is_unsigned_relation(tree)) return Outcome::NEXT;
  if (!is_equality(tree) && !is_exact(left)) return Outcome::NEXT;
  right->u.lval = wrap_to_type(wrapping_negate(right->u.lval), right->type);
  tree->left = replace_by_left(left);
  tree->op = op_swapped(tree->op);
  return Outcome::AGAIN;
}

// (~x) rel K  ->  ~K rel x, written x swapped-rel ~K; ~x is x ^ all ones
Outcome complement_both_sides(NODE *&tree) {
  NODE *left = tree->left;
  NODE *right = tree->right;
  if (!is_icon(right) || right->type != left->type) return Outcome::NEXT;
  if (!is_unsigned_integer(left->type) || !left->left || !is_integer(left->left->type))
    return Outcome::NEXT;
  const std::uint32_t mask = value_mask(left->type);
  const bool is_complement =
      left->op == COMPLEMENT || (left->op == BIT_XOR && is_icon(left->right) &&
                                 (static_cast<std::uint32_t>(left->right->u.lval) & mask) == mask);
  if (!is_complement || (static_cast<std::uint32_t>(right->u.lval) & mask) == mask)
    return Outcome::NEXT;
  // A narrow complement is cut to its type; an operand of another type is not.
  if (value_width(left->type) < 32 && left->left->type != left->type) return Outcome::NEXT;
  right->u.lval = wrap_to_type(~right->u.lval, right->type);
  if (left->right) left->right = erase_tree(left->right);
  tree->left = replace_by_left(left);
  tree->op = op_swapped(tree->op);
  return Outcome::AGAIN;
}

// x < 1  ->  x <= 0;  x >= 1  ->  x > 0;  x ULT 1  ->  x == 0;  x UGE 1  ->  x != 0
Outcome one_to_zero(NODE *&tree) {
  if (!is_icon_of(tree->right, 1) || is_floating(tree->left->type)) return Outcome::NEXT;
  switch (tree->op) {
  case LT: tree->op = LE; break;
  case GE: tree->op = GT; break;
  case ULT: tree->op = EQ; break;
  case UGE: tree->op = NE; break;
  default: return Outcome::NEXT;
  }
  tree->right->u.lval = 0;
  return Outcome::AGAIN;
}

// x <= 0  ->  x == 0, x < 0  ->  0, x >= 0  ->  1, x > 0  ->  x != 0, where x is not negative or
// the relation is unsigned
Outcome order_against_zero(NODE *&tree) {
  if (!is_icon_of(tree->right, 0) || is_equality(tree)) return Outcome::NEXT;
  if (is_floating(tree->left->type)) return Outcome::NEXT;
  if (!is_unsigned_relation(tree) && !is_non_negative(tree->left, nullptr)) return Outcome::NEXT;
  switch (tree->op) {
  case LE:
  case ULE: tree->op = EQ; return Outcome::AGAIN;
  case GT:
  case UGT: tree->op = NE; return Outcome::AGAIN;
  default: tree = decide_relation(tree, tree->op == GE || tree->op == UGE); return Outcome::DONE;
  }
}

// x <= K  ->  x < K + 1;  x > K  ->  x >= K + 1; K odd: constants go even
Outcome odd_to_even_constant(NODE *&tree) {
  if (!is_less_equal_or_opposite(tree) || !is_icon(tree->right)) return Outcome::NEXT;
  const std::int32_t value = tree->right->u.lval;
  if (value <= 0 || !(value & 1) || !is_integer(tree->left->type)) return Outcome::NEXT;
  const std::int32_t next = wrapping_add(value, 1);
  if (next <= 0 || wrap_to_type(next, tree->left->type) != next) return Outcome::NEXT;
  tree->op = tree->op == LE ? LT : GE;
  set_icon(tree->right, next, promote_type(tree->left->type));
  return Outcome::AGAIN;
}

// (x - K2) == -K2  ->  x == 0, unsigned
Outcome difference_from_own_negative(NODE *&tree) {
  NODE *left = tree->left;
  if (!is_equality(tree) || !is_icon(tree->right)) return Outcome::NEXT;
  if (left->op != SUBTRACT || !is_icon(left->right)) return Outcome::NEXT;
  if (left->type != tree->right->type || !is_unsigned_integer(left->type)) return Outcome::NEXT;
  if (wrap_to_type(wrapping_negate(left->right->u.lval), left->type) != tree->right->u.lval)
    return Outcome::NEXT;
  tree->right->u.lval = 0;
  tree->left = convert_to_left(left);
  return Outcome::AGAIN;
}

namespace {

// K - K2 as the type holds it; false when it does not. A full word's == is a question modulo 2^32,
// to which any word is an answer; order needs the true difference.
bool constant_difference(const NODE *tree, std::int32_t minuend, std::int32_t subtrahend,
                         std::int32_t &value) {
  const TypeWord type = tree->left->type;
  value = wrapping_subtract(minuend, subtrahend);
  if (is_equality(tree)) return wrap_to_type(value, type) == value;
  return value == static_cast<std::int64_t>(minuend) - subtrahend;
}

// (x + K2) rel K  ->  x rel (K - K2)
Outcome move_addend_into_constant(NODE *&tree) {
  NODE *sum = tree->left;
  // A narrow sum is cut to its type; an operand of another type is not.
  if (value_width(sum->type) < 32 && sum->left->type != sum->type) return Outcome::NEXT;
  if (!is_equality(tree) && !is_exact_or_promised(sum)) return Outcome::NEXT;
  std::int32_t value = 0;
  if (!constant_difference(tree, tree->right->u.lval, sum->right->u.lval, value))
    return Outcome::NEXT;
  tree->right->u.lval = value;
  sum->right = erase_node(sum->right);
  tree->left = replace_by_left(sum);
  return finish(tree, tree);
}

// (x + K2) rel (y + K3)  ->  (x - y) rel (K3 - K2), and x rel y when the constants are the same
Outcome move_addends_to_right(NODE *&tree) {
  NODE *left = tree->left;
  NODE *right = tree->right;
  std::int32_t value = 0;
  if (!constant_difference(tree, right->right->u.lval, left->right->u.lval, value))
    return Outcome::NEXT;
  if (is_equality(tree)) {
    // left turns into the difference, the right sum's constant into what it is compared with.
    NODE *constant = right->right;
    constant->u.lval = value;
    set_type(constant, left->type);
    erase_node(left->right);
    left->right = right->left;
    erase_node(right);
    left->op = SUBTRACT;
    tree->left = simplify_node(left);
    tree->right = constant;
    return finish(tree, tree);
  }
  // x - y may leave the type where x + K2 and y + K3 do not.
  if (value != 0 || !is_exact_or_promised(left) || !is_exact_or_promised(right))
    return Outcome::NEXT;
  left->right = erase_node(left->right);
  right->right = erase_node(right->right);
  tree->left = replace_by_left(left);
  tree->right = replace_by_left(right);
  return finish(tree, tree);
}

} // namespace

// (x + K2) rel K  ->  x rel (K - K2);  (x + K2) rel (y + K3)  ->  (x - y) rel (K3 - K2)
Outcome move_addend(NODE *&tree) {
  const NODE *left = tree->left;
  const NODE *right = tree->right;
  if (!is_sum_with_constant(left) || left->type != right->type || is_unsigned_relation(tree))
    return Outcome::NEXT;
  if (!is_integer(left->type) || !is_integer(left->left->type)) return Outcome::NEXT;
  if (is_icon(right)) return move_addend_into_constant(tree);
  if (!is_sum_with_constant(right) || !is_integer(right->left->type)) return Outcome::NEXT;
  return move_addends_to_right(tree);
}

// x < y + 1  ->  x <= y;  x >= y + 1  ->  x > y
Outcome drop_added_one(NODE *&tree) {
  NODE *right = tree->right;
  if (!is_less_or_opposite(tree) || right->op != ADD || !is_icon_of(right->right, 1))
    return Outcome::NEXT;
  if (!is_signed_integer(tree->left->type) || !is_exact_or_promised(right)) return Outcome::NEXT;
  tree->op = tree->op == LT ? LE : GT;
  tree->right = convert_to_left(right);
  return Outcome::AGAIN;
}

// x <= y - 1  ->  x < y;  x > y - 1  ->  x >= y
Outcome drop_subtracted_one(NODE *&tree) {
  NODE *right = tree->right;
  if (!is_less_equal_or_opposite(tree) || right->op != ADD || !is_icon_of(right->right, -1))
    return Outcome::NEXT;
  if (!is_signed_integer(tree->left->type) || !is_exact_or_promised(right)) return Outcome::NEXT;
  tree->op = tree->op == LE ? LT : GE;
  tree->right = convert_to_left(right);
  return Outcome::AGAIN;
}

} // namespace velkor
