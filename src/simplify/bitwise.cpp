// Rules for &, | and ^: driven by what is known of the operands' bits. A mask that changes nothing
// goes, a constant loses the bits that cannot matter, and the operand loses the work that the
// constant makes void.
#include "simplify/bitwise.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "simplify/bits.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Vocabulary of the three sets

std::uint32_t constant_of(const NODE *node) {
  return static_cast<std::uint32_t>(node->right->u.lval);
}

bool has_constant(const NODE *node) {
  return node->right->op == ICON;
}

// A node of that opcode over a constant at its right?
bool is_with_constant(const NODE *node, Opcode op) {
  return node->op == op && has_constant(node);
}

// The node's constant as far as its type holds it.
void set_constant(NODE *node, std::uint32_t value) {
  set_icon(node->right, static_cast<std::int32_t>(value), node->type);
}

// Two constants that change places take each other's values; both get the operator's type, as
// either's own may be too narrow for the other's value.
void store_constant(NODE *icon, std::uint32_t value, TypeWord type) {
  icon->type = static_cast<std::uint16_t>(type);
  icon->u.lval = wrap_value(static_cast<std::int32_t>(value), type);
}

Outcome simplified(NODE *&tree) {
  tree = simplify_node(tree);
  return Outcome::DONE;
}

// (x op1 K1) op2 K2  ->  (x op2 K1') op1 K2', both constants in the tree's type.
Outcome exchange_operators(NODE *&tree, std::uint32_t inner, std::uint32_t outer) {
  NODE *left = tree->left;
  store_constant(left->right, inner, tree->type);
  store_constant(tree->right, outer, tree->type);
  const Opcode op = left->op;
  left->op = tree->op;
  tree->op = op;
  tree->left = simplify_node(left);
  return simplified(tree);
}

// Are operators of the two types interchangeable? The bits within a common width are the same.
bool have_same_width(const NODE *a, const NODE *b) {
  return is_integer(a->type) && is_integer(b->type) && type_width(a->type) == type_width(b->type);
}

// x op y  ->  the operands in canonical order, constants merged
Outcome order_operands(NODE *&tree) {
  const Opcode op = tree->op;
  tree = reassociate(tree);
  return tree->op == op ? Outcome::NEXT : Outcome::DONE;
}

// x op x  ->  x, op one of & |
Outcome keep_one_operand(NODE *&tree) {
  if (!trees_equal(tree->left, tree->right, false)) return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// x op K  ->  (x , K)
Outcome keep_effects_and_constant(NODE *&tree) {
  store_constant(tree->right, constant_of(tree), tree->type);
  tree->op = COMMA_OP;
  return simplified(tree);
}

// What the rules look at in a left operand, as far as it can be told apart without a walk.
struct Shape {
  Opcode op;
  Opcode right_op;
  TypeWord type;
  bool operator==(const Shape &) const = default;
};

Shape shape_of(const NODE *node) {
  return {node->op, node->right ? node->right->op : ILLOP, node->type};
}

// What is known of the left operand's bits, as far as the tree's type has them.
std::uint32_t possible_bits_of_left(const NODE *tree) {
  return possible_bits(tree->left, balance_type(tree->left, tree->right)) & value_mask(tree->type);
}
std::uint32_t certain_bits_of_left(const NODE *tree) {
  return certain_bits(tree->left, balance_type(tree->left, tree->right)) & value_mask(tree->type);
}

// Asks only for the bits of the left operand that the constant lets through. True when the operand
// became another one, so that the rules have to look at the tree again.
bool demand_of_left(NODE *tree, std::uint32_t mask) {
  const Shape before = shape_of(tree->left);
  tree->left = demand_bits(tree->left, mask);
  return shape_of(tree->left) != before;
}

// ------------------------------------------------------------------------------------------------
// x & y

// The bits that an unsigned operand can have by its type alone.
std::uint32_t bits_of_unsigned(const NODE *operand) {
  if (is_boolean_tree(operand)) return 1;
  if (is_bit_field_access(operand)) {
    const std::int32_t size = operand->right->u.sym->size;
    if (size > 0 && size < 32) return (1u << size) - 1;
  }
  return value_mask(operand->type);
}

// x & K  ->  x & (K & bits of x)
Outcome narrow_mask(NODE *&tree) {
  if (!has_constant(tree) || !is_unsigned_integer(tree->left->type)) return Outcome::NEXT;
  const std::int32_t before = tree->right->u.lval;
  set_constant(tree, constant_of(tree) & bits_of_unsigned(tree->left));
  return tree->right->u.lval == before ? Outcome::NEXT : Outcome::AGAIN;
}

// (T)x & K  ->  x & K
Outcome strip_conversion_under_byte_mask(NODE *&tree) {
  const NODE *left = tree->left;
  if (!has_constant(tree) || left->op != SCONV) return Outcome::NEXT;
  // No conversion between integers touches the low eight bits.
  if (tree->right->u.lval <= 0 || tree->right->u.lval > 255) return Outcome::NEXT;
  if (!is_integer(left->type) || !is_integer(left->left->type)) return Outcome::NEXT;
  tree->left = replace_by_left(tree->left);
  return Outcome::AGAIN;
}

// x & (all bits of x)  ->  x
Outcome drop_full_mask(NODE *&tree) {
  if (!has_constant(tree)) return Outcome::NEXT;
  const std::uint32_t constant = constant_of(tree);
  const auto covers = [constant](TypeWord type) { return (~constant & value_mask(type)) == 0; };
  const TypeWord operand = tree->left->type;
  if (!covers(tree->type) && !(is_unsigned_integer(operand) && covers(operand)))
    return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

// (x * 2^n) & K  ->  (x * 2^n) & (K & -2^n), and without the mask where that is all of it
Outcome mask_product(NODE *&tree) {
  const NODE *left = tree->left;
  if (!has_constant(tree) || !is_with_constant(left, MULTIPLY) || left->type != tree->type)
    return Outcome::NEXT;
  const int shift = log2_of(left->right->u.lval);
  if (shift < 0) return Outcome::NEXT;
  const std::uint32_t type_bits = value_mask(tree->type);
  const std::uint32_t product_bits = (~0u << shift) & type_bits;
  const std::uint32_t kept = constant_of(tree) & product_bits;
  if (kept == product_bits) {
    erase_node(tree->right);
    tree = replace_by_left(tree);
    return Outcome::DONE;
  }
  if (kept == (constant_of(tree) & type_bits)) return Outcome::NEXT;
  set_constant(tree, kept);
  return Outcome::AGAIN;
}

// (x >> n) & K  ->  (x >> n) & (K & (bits of x >> n)), x unsigned
Outcome mask_shifted(NODE *&tree) {
  const NODE *left = tree->left;
  if (!has_constant(tree) || left->op != SHIFT_RIGHT || !is_shift_count(left->right))
    return Outcome::NEXT;
  if (!is_unsigned_integer(left->left->type)) return Outcome::NEXT;
  // A narrow signed type would extend its own sign over the zeros.
  if (is_signed_integer(left->type) && type_width(left->type) < 32) return Outcome::NEXT;
  const std::uint32_t kept =
      constant_of(tree) & (value_mask(left->left->type) >> left->right->u.lval);
  const std::int32_t before = tree->right->u.lval;
  set_constant(tree, kept);
  return tree->right->u.lval == before ? Outcome::NEXT : Outcome::AGAIN;
}

// ((y & K3) | K2) & K, y no | with a constant? Over such a one the rules for | would turn the
// result round again.
bool is_distributable(const NODE *tree) {
  const NODE *left = tree->left;
  return has_constant(tree) && is_with_constant(left, BIT_OR) && have_same_width(left, tree) &&
         is_with_constant(left->left, BIT_AND) && !is_with_constant(left->left->left, BIT_OR);
}

// x & K  ->  x' & (K & bits that x' can have), or x' where K covers them all
Outcome mask_possible_bits(NODE *&tree) {
  if (!has_constant(tree)) return Outcome::NEXT;
  const std::uint32_t before = constant_of(tree);
  const bool was_truth = is_boolean_tree(tree->left);
  const std::uint32_t could_be_set = possible_bits_of_left(tree);
  if (demand_of_left(tree, before)) return simplified(tree);
  // A smaller constant in x, 1 - y from 5 - y, may have made a truth value of it, which the rules
  // above ask for; once more, and it is one already.
  if (!was_truth && is_boolean_tree(tree->left)) return Outcome::AGAIN;
  const std::uint32_t possible = possible_bits_of_left(tree);
  if ((before & value_mask(tree->type) & ~possible) != 0) {
    set_constant(tree, before & possible);
    return simplified(tree);
  }
  if ((before | ~possible) == ~0u) {
    tree = convert_to_left(tree);
    return Outcome::DONE;
  }
  // A constant deep in x has taken free bits on: x settles in another round. Each adds such bits.
  const bool is_settled = (possible & ~could_be_set) == 0;
  return is_settled || is_distributable(tree) ? Outcome::NEXT : Outcome::AGAIN;
}

// ((y & K3) | K2) & K  ->  ((y & K3) & K) | (K2 & K)
Outcome distribute_mask(NODE *&tree) {
  if (!is_distributable(tree)) return Outcome::NEXT;
  const std::uint32_t mask = constant_of(tree);
  return exchange_operators(tree, mask, mask & constant_of(tree->left));
}

constexpr Rule and_table[] = {
    {"x & y  ->  operands in canonical order", order_operands},
    {"x & K  ->  x & (K & bits of x)", narrow_mask},
    {"(T)x & K  ->  x & K, 0 < K <= 255", strip_conversion_under_byte_mask},
    {"x & x  ->  x", keep_one_operand},
    {"x & (all bits of x)  ->  x", drop_full_mask},
    {"(x * 2^n) & K  ->  (x * 2^n) & (K & -2^n)", mask_product},
    {"(x >> n) & K  ->  (x >> n) & (K & (bits of x >> n))", mask_shifted},
    {"x & K  ->  x & (K & possible bits of x)", mask_possible_bits},
    {"((y & K3) | K2) & K  ->  ((y & K3) & K) | (K2 & K)", distribute_mask},
};

// ------------------------------------------------------------------------------------------------
// x | y

// x | -1  ->  (x , -1)
Outcome or_all_ones(NODE *&tree) {
  if (!has_constant(tree)) return Outcome::NEXT;
  if ((~constant_of(tree) & value_mask(tree->type)) != 0) return Outcome::NEXT;
  return keep_effects_and_constant(tree);
}

// x | K  ->  x | (K & ~bits that x has for sure), or x | -1 where both cover all
Outcome or_certain_bits(NODE *&tree) {
  if (!has_constant(tree)) return Outcome::NEXT;
  const std::uint32_t before = constant_of(tree);
  const std::uint32_t type_bits = value_mask(tree->type);
  const std::uint32_t certain = certain_bits_of_left(tree);
  if ((before & certain) != 0) {
    set_constant(tree, before & ~certain);
    return simplified(tree);
  }
  if ((before | ~type_bits | certain) != ~0u) return Outcome::NEXT;
  store_constant(tree->right, ~0u, tree->type);
  return simplified(tree);
}

// x | K  ->  x' | K, where x' agrees with x in the bits that K leaves
Outcome or_demanded_bits(NODE *&tree) {
  if (!has_constant(tree)) return Outcome::NEXT;
  const std::uint32_t certain = certain_bits_of_left(tree);
  if (demand_of_left(tree, ~constant_of(tree) & value_mask(tree->type))) return simplified(tree);
  // A constant deep in x may have taken bits of K on: another round. Each adds such bits.
  return (certain_bits_of_left(tree) & ~certain) != 0 ? Outcome::AGAIN : Outcome::NEXT;
}

// ((z | K2) & K1) | K  ->  ((z | K2) | K) & (K1 | K)
Outcome gather_ors(NODE *&tree) {
  const NODE *left = tree->left;
  if (!has_constant(tree) || !is_with_constant(left, BIT_AND) || !have_same_width(left, tree))
    return Outcome::NEXT;
  if (!is_with_constant(left->left, BIT_OR)) return Outcome::NEXT;
  return exchange_operators(tree, constant_of(tree), constant_of(tree) | constant_of(left));
}

constexpr Rule or_table[] = {
    {"x | y  ->  operands in canonical order", order_operands},
    {"x | x  ->  x", keep_one_operand},
    {"x | -1  ->  (x , -1)", or_all_ones},
    {"x | K  ->  x | (K & ~certain bits of x)", or_certain_bits},
    {"x | K  ->  x' | K, demanded bits", or_demanded_bits},
    {"((z | K2) & K1) | K  ->  ((z | K2) | K) & (K1 | K)", gather_ors},
};

// ------------------------------------------------------------------------------------------------
// x ^ y

// x ^ x  ->  0
Outcome xor_of_equals(NODE *&tree) {
  if (!trees_equal(tree->left, tree->right, false)) return Outcome::NEXT;
  const TypeWord type = tree->type;
  erase_tree(tree);
  tree = make_icon(0, type);
  return Outcome::DONE;
}

// x ^ K  ->  x | K, x having none of K's bits
//        ->  x & ~K, x having all of them
Outcome xor_known_bits(NODE *&tree) {
  if (!has_constant(tree)) return Outcome::NEXT;
  store_constant(tree->right, constant_of(tree), tree->type);
  const std::uint32_t constant = constant_of(tree) & value_mask(tree->type);
  const TypeWord type = balance_type(tree->left, tree->right);
  if ((constant & possible_bits(tree->left, type)) == 0) {
    tree->op = BIT_OR;
    return simplified(tree);
  }
  if ((constant & ~certain_bits(tree->left, type)) == 0) {
    store_constant(tree->right, ~constant, tree->type);
    tree->op = BIT_AND;
    return simplified(tree);
  }
  return Outcome::NEXT;
}

// (x >> n) ^ K  ->  (x ^ (K << n)) >> n, all unsigned, where no bit of K is lost
Outcome xor_below_shift(NODE *&tree) {
  NODE *left = tree->left;
  if (!has_constant(tree) || left->op != SHIFT_RIGHT || !is_shift_count(left->right))
    return Outcome::NEXT;
  const TypeWord type = tree->type;
  if (left->type != type || !is_unsigned_integer(type) || !is_unsigned_integer(left->left->type))
    return Outcome::NEXT;
  // The ^ must not cut off bits of x that the shift brings down.
  if (type_width(left->left->type) > type_width(type)) return Outcome::NEXT;
  const std::int32_t count = left->right->u.lval;
  const std::uint32_t raised = value_mask(type) & (constant_of(tree) << count);
  if (raised >> count != constant_of(tree)) return Outcome::NEXT;
  set_constant(tree, raised);
  tree->left = left->left;
  left->left = simplify_node(tree);
  tree = left;
  return simplified(tree);
}

// (x & K) ^ K  ->  (x ^ K) & K
Outcome xor_of_own_mask(NODE *&tree) {
  const NODE *left = tree->left;
  if (!has_constant(tree) || !is_with_constant(left, BIT_AND) || !have_same_width(left, tree))
    return Outcome::NEXT;
  const std::uint32_t mask = constant_of(tree);
  if (((mask ^ constant_of(left)) & value_mask(tree->type)) != 0) return Outcome::NEXT;
  return exchange_operators(tree, mask, mask);
}

// (x & K1) ^ -1  ->  (x ^ -1) | ~K1
Outcome complement_of_mask(NODE *&tree) {
  NODE *left = tree->left;
  if (!has_constant(tree) || !is_with_constant(left, BIT_AND) || !have_same_width(left, tree))
    return Outcome::NEXT;
  const std::uint32_t ones = constant_of(tree);
  if ((~ones & value_mask(tree->type)) != 0) return Outcome::NEXT;
  store_constant(tree->right, (constant_of(left) ^ ones) & ones, tree->type);
  store_constant(left->right, ones, tree->type);
  left->op = BIT_XOR;
  tree->op = BIT_OR;
  tree->left = simplify_node(left);
  return simplified(tree);
}

constexpr Rule xor_table[] = {
    {"x ^ y  ->  operands in canonical order", order_operands},
    {"x ^ x  ->  0", xor_of_equals},
    {"x ^ K  ->  x | K or x & ~K, by known bits", xor_known_bits},
    {"(x >> n) ^ K  ->  (x ^ (K << n)) >> n", xor_below_shift},
    {"(x & K) ^ K  ->  (x ^ K) & K", xor_of_own_mask},
    {"(x & K1) ^ -1  ->  (x ^ -1) | ~K1", complement_of_mask},
};

} // namespace

const RuleSet and_rules{"and", and_table};
const RuleSet or_rules{"or", or_table};
const RuleSet xor_rules{"xor", xor_table};

NODE *simplify_and(NODE *node) {
  return apply_rules(and_rules, node);
}
NODE *simplify_or(NODE *node) {
  return apply_rules(or_rules, node);
}
NODE *simplify_xor(NODE *node) {
  return apply_rules(xor_rules, node);
}

} // namespace velkor
