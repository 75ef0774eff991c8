// Relations and what is known of their operands' bits.
#include "core/bit_arithmetic.h"
#include "simplify/bits.h"
#include "simplify/relation_rules.h"
#include "simplify/relations.h"

#include <utility>

namespace velkor {
namespace {

enum class Verdict : std::uint8_t { OPEN, HOLDS, FAILS };

// The words that an operand can be, by its bits: none below certain, none above possible, both as
// unsigned words.
struct KnownBits {
  std::uint32_t certain;
  std::uint32_t possible;
};

KnownBits known_bits(const NODE *tree, TypeWord type) {
  return {certain_bits(tree, type), possible_bits(tree, type)};
}

// Bits that are 1 for sure on one side and 0 on the other.
bool always_differ(const KnownBits &a, const KnownBits &b) {
  return ((a.certain & ~b.possible) | (b.certain & ~a.possible)) != 0;
}

// x < 0 and x >= 0.
Verdict by_sign(Opcode op, const KnownBits &x, std::uint32_t sign) {
  if (!(x.possible & sign)) return op == LT ? Verdict::FAILS : Verdict::HOLDS;
  if (!(x.certain & sign)) return Verdict::OPEN;
  return op == LT ? Verdict::HOLDS : Verdict::FAILS;
}

// x <= y and x < y for unsigned words.
Verdict at_most(const KnownBits &x, const KnownBits &y) {
  if (x.possible <= y.certain) return Verdict::HOLDS;
  return y.possible < x.certain ? Verdict::FAILS : Verdict::OPEN;
}
Verdict below(const KnownBits &x, const KnownBits &y) {
  if (x.possible < y.certain) return Verdict::HOLDS;
  return y.possible <= x.certain ? Verdict::FAILS : Verdict::OPEN;
}

Verdict by_order(Opcode op, const KnownBits &a, const KnownBits &b) {
  switch (op) {
  case LE:
  case ULE: return at_most(a, b);
  case LT:
  case ULT: return below(a, b);
  case GE:
  case UGE: return at_most(b, a);
  case GT:
  case UGT: return below(b, a);
  default: return Verdict::OPEN;
  }
}

// May turn <= 0 into < 0 on the way.
Verdict verdict_by_bits(NODE *relation) {
  const NODE *left = relation->left;
  const NODE *right = relation->right;
  const TypeWord type = balance_type(left, right);
  const KnownBits a = known_bits(left, type);
  const KnownBits b = known_bits(right, type);
  const std::uint32_t sign = 1u << (value_width(type) - 1);
  if (always_differ(a, b)) {
    if (relation->op == EQ) return Verdict::FAILS;
    if (relation->op == NE) return Verdict::HOLDS;
    if (relation->op == LE && b.possible == 0) relation->op = LT;
  }
  if (b.possible == 0 && is_less_or_opposite(relation)) {
    const Verdict verdict = by_sign(relation->op, a, sign);
    if (verdict != Verdict::OPEN) return verdict;
  }
  if (is_signed_integer(left->type) && (a.possible & sign)) return Verdict::OPEN;
  if (is_signed_integer(right->type) && (b.possible & sign)) return Verdict::OPEN;
  return by_order(relation->op, a, b);
}

// y & 2^k  ->  (y >> k) & 1
NODE *shift_bit_down(NODE *tree, int bit) {
  NODE *value = tree->left;
  tree->right->u.lval = 1;
  NODE *shift = make_node(SHIFT_RIGHT, value, make_icon(bit, INT), promote_type(value->type));
  tree->left = simplify_node(shift);
  return simplify_node(tree);
}

bool is_shifted_one(const NODE *node) {
  return node->op == SHIFT_LEFT && is_icon_of(node->left, 1);
}

// y & (1 << w)  ->  1 & (y >> w)
NODE *shift_variable_bit_down(NODE *tree) {
  NODE *value = tree->left;
  NODE *shift = tree->right;
  tree->left = shift->left;
  shift->left = value;
  shift->op = SHIFT_RIGHT;
  // The shift's sign is that of what is shifted; the bit asked for is the same either way.
  set_type(shift, promote_type(value->type));
  tree->right = simplify_node(shift);
  return simplify_node(tree);
}

// The operand rewritten under the mask. It keeps its type: the relation's meaning hangs on it.
Outcome demand_operand(NODE *&tree, std::uint32_t mask) {
  const Occupant before = occupant(tree->left);
  const TypeWord type = tree->left->type;
  NODE *after = demand_bits(tree->left, mask);
  if (after->type != type) after = simplify_node(convert_tree(type, after));
  tree->left = after;
  if (is_icon(after) || after->op == COMMA_OP) return finish(tree, tree);
  return occupant(after) == before ? Outcome::NEXT : Outcome::AGAIN;
}

// Does the relation ask whether its left operand is 0 (value 0) or 1?
bool compares_integer_with(const NODE *tree, Opcode op, std::int32_t value) {
  return tree->op == op && is_icon_of(tree->right, value) && is_integer(tree->left->type);
}

// Only a test against 0 is the same for a bit and for the bit moved down.
void isolate_tested_bit(NODE *tree) {
  if (tree->right->u.lval == 0) tree->left = isolate_bit(tree->left);
}

} // namespace

NODE *relation_by_bits(NODE *relation) {
  const Verdict verdict = verdict_by_bits(relation);
  return verdict == Verdict::OPEN ? relation : decide_relation(relation, verdict == Verdict::HOLDS);
}

NODE *isolate_bit(NODE *tree) {
  if (tree->op != BIT_AND || !is_integer(tree->type)) return tree;
  if (!is_integer(tree->left->type) || !is_integer(tree->right->type)) return tree;
  if (is_icon(tree->right)) {
    const int bit = log2_of(tree->right->u.lval);
    return bit > 0 && value_width(tree->left->type) <= 32 ? shift_bit_down(tree, bit) : tree;
  }
  if (is_shifted_one(tree->left) && is_as_wide(tree->left, tree->right))
    std::swap(tree->left, tree->right);
  if (is_shifted_one(tree->right) && is_as_wide(tree->right, tree->left))
    return shift_variable_bit_down(tree);
  return tree;
}

// x < 0  ->  (the sign of x) < 0, and >=
Outcome demand_sign(NODE *&tree) {
  const TypeWord type = tree->left->type;
  if (!is_less_or_opposite(tree) || !is_icon_of(tree->right, 0)) return Outcome::NEXT;
  // The highest bit of a narrow unsigned type is no sign.
  if (!is_signed_integer(type)) return Outcome::NEXT;
  const std::uint32_t mask = value_mask(type);
  return demand_operand(tree, mask ^ (mask >> 1));
}

// x < K, K even  ->  (the bits of x from K's lowest on) < K, and >=
Outcome demand_high_bits(NODE *&tree) {
  if (!is_less_or_opposite(tree) || !is_icon(tree->right)) return Outcome::NEXT;
  const std::int32_t value = tree->right->u.lval;
  if (value <= 0 || (value & 1) || !is_integer(tree->left->type)) return Outcome::NEXT;
  return demand_operand(tree, static_cast<std::uint32_t>(value | wrapping_negate(value)));
}

// x rel y  ->  0 or 1, where bits decide
Outcome decide_by_bits(NODE *&tree) {
  if (!is_integer(tree->left->type) || !is_integer(tree->right->type)) return Outcome::NEXT;
  const Opcode op = tree->op;
  tree = relation_by_bits(tree);
  if (!op_boolean(tree->op)) return Outcome::DONE;
  return tree->op == op ? Outcome::NEXT : Outcome::AGAIN;
}

// x != 0 or x == 1 where x is 0 or 1  ->  x
Outcome boolean_as_itself(NODE *&tree) {
  if (!compares_integer_with(tree, NE, 0) && !compares_integer_with(tree, EQ, 1))
    return Outcome::NEXT;
  isolate_tested_bit(tree);
  if (is_boolean_tree(tree->left)) {
    tree = convert_to_left(tree);
    return Outcome::DONE;
  }
  return tree->left->op == COMMA_OP ? finish(tree, tree) : Outcome::NEXT;
}

// x == 0 or x != 1 where x is 0 or 1  ->  x ^ 1
Outcome boolean_inverted(NODE *&tree) {
  if (!compares_integer_with(tree, EQ, 0) && !compares_integer_with(tree, NE, 1))
    return Outcome::NEXT;
  isolate_tested_bit(tree);
  if (is_boolean_tree(tree->left)) {
    tree->op = BIT_XOR;
    tree->right->u.lval = 1;
    set_type(tree->right, tree->type);
    return finish(tree, tree);
  }
  return tree->left->op == COMMA_OP ? finish(tree, tree) : Outcome::NEXT;
}

// (x & P) == P  ->  (x & P) != 0, and the opposite; P a single bit
Outcome single_bit_test(NODE *&tree) {
  const NODE *masked = tree->left;
  if (!is_equality(tree) || masked->op != BIT_AND || !is_icon(masked->right)) return Outcome::NEXT;
  if (!is_icon_of(tree->right, masked->right->u.lval) || log2_of(tree->right->u.lval) < 0)
    return Outcome::NEXT;
  tree->op = op_negated(tree->op);
  tree->right->u.lval = 0;
  return Outcome::AGAIN;
}

} // namespace velkor
