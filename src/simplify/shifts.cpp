// Rules for << and >> by a constant. A shift to the left becomes a product; shifts to the right
// merge, and sink below masks and products. A shift to the right follows its left operand's sign,
// so that no rule may change it.
#include "simplify/bitwise.h"

#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "simplify/bits.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

std::int32_t count_of(const NODE *shift) {
  return shift->right->u.lval;
}

Outcome simplified(NODE *&tree) {
  tree = simplify_node(tree);
  return Outcome::DONE;
}

bool have_same_sign(TypeWord a, TypeWord b) {
  return is_unsigned_integer(a) == is_unsigned_integer(b);
}

NODE *convert_sign(NODE *operand, TypeWord type) {
  if (have_same_sign(operand->type, type)) return operand;
  return simplify_node(make_node(SCONV, operand, nullptr, type));
}

// x << n, n >= 32  ->  (x , 0)
Outcome keep_effects_and_zero(NODE *&tree) {
  tree->right->u.lval = 0;
  tree->right->type = tree->type;
  tree->op = COMMA_OP;
  return simplified(tree);
}

// x << y, x >> y stay, y being no constant or a negative one
Outcome refuse_other_counts(NODE *&tree) {
  return is_icon(tree->right) && count_of(tree) >= 0 ? Outcome::NEXT : Outcome::DONE;
}

// x << 0, x >> 0  ->  x
Outcome shift_by_zero(NODE *&tree) {
  if (count_of(tree) != 0) return Outcome::NEXT;
  tree = convert_to_left(tree);
  return Outcome::DONE;
}

Outcome shift_all_out_to_left(NODE *&tree) {
  if (tree->op != SHIFT_LEFT || count_of(tree) < 32) return Outcome::NEXT;
  return keep_effects_and_zero(tree);
}

// x >> n, n >= width  ->  x >> (width - 1), x signed: the sign everywhere
//                     ->  (x , 0), x unsigned: nothing left
Outcome shift_all_out_to_right(NODE *&tree) {
  const TypeWord type = tree->left->type;
  const std::int32_t width = value_width(type);
  if (tree->op != SHIFT_RIGHT || is_floating(type) || count_of(tree) < width) return Outcome::NEXT;
  if (!is_signed_integer(type)) return keep_effects_and_zero(tree);
  tree->right->u.lval = width - 1;
  return Outcome::REWRITTEN;
}

// x << n  ->  x * 2^n
Outcome left_shift_to_product(NODE *&tree) {
  if (tree->op != SHIFT_LEFT || !is_integer(tree->type) || !is_integer(tree->left->type))
    return Outcome::NEXT;
  if (count_of(tree) >= type_width(tree->type)) return Outcome::NEXT;
  tree->right->u.lval = wrap_value(shift_left(1, count_of(tree)), tree->type);
  tree->right->type = tree->type;
  tree->op = MULTIPLY;
  return simplified(tree);
}

// (x >> K2) >> n  ->  x >> (n + K2)
Outcome merge_right_shifts(NODE *&tree) {
  NODE *left = tree->left;
  if (tree->op != SHIFT_RIGHT || left->op != SHIFT_RIGHT || !is_shift_count(left->right))
    return Outcome::NEXT;
  if (!is_integer(left->left->type) || left->type != promote_type(left->left->type))
    return Outcome::NEXT;
  tree->right->u.lval += count_of(left);
  erase_node(left->right);
  tree->left = replace_by_left(left);
  return Outcome::AGAIN;
}

// x >> n  ->  x' >> n, where x' agrees with x in the bits that the shift keeps
Outcome demand_kept_bits(NODE *&tree) {
  const Opcode op = tree->left->op;
  const TypeWord type = tree->left->type;
  if (!is_integer(type) || !is_shift_count(tree->right)) return Outcome::NEXT;
  const std::uint32_t mask =
      tree->op == SHIFT_RIGHT ? ~0u << count_of(tree) : value_mask(type) >> count_of(tree);
  tree->left = demand_bits(tree->left, mask);
  if (tree->op == SHIFT_RIGHT) tree->left = convert_sign(tree->left, type);
  if (tree->left->op == op && tree->left->type == type) return Outcome::NEXT;
  return simplified(tree);
}

// (x & K1) >> n  ->  (x >> n) & (K1 >> n)
Outcome shift_below_mask(NODE *&tree) {
  NODE *left = tree->left;
  const TypeWord type = tree->type;
  if (tree->op != SHIFT_RIGHT || left->op != BIT_AND || !is_icon(left->right)) return Outcome::NEXT;
  if (left->type != type || !is_integer(type) || !is_integer(left->left->type))
    return Outcome::NEXT;
  // A narrow & would have cut x, and given it a sign, before the shift.
  if (type_width(left->left->type) > type_width(type)) return Outcome::NEXT;
  const std::int32_t mask = wrap_to_type(left->right->u.lval, type);
  left->right->type = type;
  left->right->u.lval = is_unsigned_integer(type) ? shift_right_logical(mask, count_of(tree))
                                                  : shift_right_arithmetic(mask, count_of(tree));
  tree->left = convert_sign(left->left, type);
  left->left = simplify_node(tree);
  tree = left;
  return simplified(tree);
}

// (x * 2^k) >> n  ->  (x >> (n - k)) & M  or  (x << (k - n)) & M, unsigned
Outcome shift_below_product(NODE *&tree) {
  NODE *left = tree->left;
  const TypeWord type = tree->type;
  if (tree->op != SHIFT_RIGHT || left->op != MULTIPLY || !is_icon(left->right))
    return Outcome::NEXT;
  if (left->type != type || !is_unsigned_integer(type) || !is_integer(left->left->type))
    return Outcome::NEXT;
  const int power = log2_of(left->right->u.lval);
  if (power < 0) return Outcome::NEXT;
  const std::int32_t difference = count_of(tree) - power;
  const std::int32_t product_bits = wrap_to_type(shift_left(-1, power), type);
  const std::int32_t mask = shift_right_logical(product_bits, count_of(tree));
  left->left = convert_sign(left->left, type);
  left->op = difference >= 0 ? SHIFT_RIGHT : SHIFT_LEFT;
  left->right->type = INT;
  left->right->u.lval = difference >= 0 ? difference : -difference;
  tree->left = simplify_node(left);
  tree->op = BIT_AND;
  tree->right->type = type;
  tree->right->u.lval = wrap_to_type(mask, type);
  return simplified(tree);
}

constexpr Rule shift_table[] = {
    {"x << y, y no constant >= 0, stays", refuse_other_counts},
    {"x >> 0, x << 0  ->  x", shift_by_zero},
    {"x << n, n >= 32  ->  (x , 0)", shift_all_out_to_left},
    {"x >> n, n >= width  ->  x >> (width - 1), or (x , 0)", shift_all_out_to_right},
    {"x << n  ->  x * 2^n", left_shift_to_product},
    {"(x >> K2) >> n  ->  x >> (n + K2)", merge_right_shifts},
    {"x >> n  ->  x' >> n, demanded bits", demand_kept_bits},
    {"(x & K1) >> n  ->  (x >> n) & (K1 >> n)", shift_below_mask},
    {"(x * 2^k) >> n  ->  (x >> (n - k)) & M", shift_below_product},
};

} // namespace

const RuleSet shift_rules{"shift", shift_table};

NODE *simplify_shift(NODE *node) {
  return apply_rules(shift_rules, node);
}

} // namespace velkor
