// Comparisons of bit fields: the constant is moved to the field, not the field to the constant.
#include "core/bit_arithmetic.h"
#include "core/nodes.h"
#include "simplify/bit_field_expansion.h"
#include "simplify/patterns.h"

#include <algorithm>
#include <utility>

namespace velkor::bit_fields {
namespace {

bool is_equality(const NODE *relation) {
  return relation->op == EQ || relation->op == NE;
}

bool is_plain_order(const NODE *relation) {
  return relation->op == LT || relation->op == LE || relation->op == GT || relation->op == GE;
}

Opcode unsigned_order(Opcode op) {
  switch (op) {
  case LT: return ULT;
  case LE: return ULE;
  case GT: return UGT;
  case GE: return UGE;
  default: return op;
  }
}

// ------------------------------------------------------------------------------------------------
// Promotions around fields

// A conversion of a field between int and unsigned.
bool is_converted_field(const NODE *node) {
  return node->op == SCONV && is_bit_field_access(node->left) && is_word_integer(node->type) &&
         is_word_integer(node->left->type);
}

// (int) of an unsigned field that is narrower than int: the values and their order stay.
bool is_promoted_field(const NODE *node) {
  return is_converted_field(node) && is_signed_integer(node->type) &&
         is_unsigned_integer(node->left->type) && node->left->right->u.sym->size < 32;
}

bool is_ordered_like_field(const NODE *node) {
  return (node->op == ICON && node->u.lval >= 0) || is_bit_field_access(node) ||
         is_promoted_field(node);
}

void drop_conversion(NODE *&operand) {
  operand = replace_by_left(operand);
}

// A type that compares like the field itself, where both sides stay what they are.
bool is_unsigned_side(const NODE *node) {
  return node->op == ICON || is_unsigned_integer(node->type);
}

// (int) f rel y  ->  f rel y, where the promotion of the unsigned field f does not matter: for
// equality with anything, for order with what is ordered in the same way.
void drop_promotions(NODE *relation) {
  if (is_equality(relation)) {
    if (is_converted_field(relation->left)) drop_conversion(relation->left);
    return; // the right operand's is dropped when both are known to be fields
  }
  if (!is_ordered_like_field(relation->left) || !is_ordered_like_field(relation->right)) return;
  const bool left = is_promoted_field(relation->left);
  const bool right = is_promoted_field(relation->right);
  if (left) drop_conversion(relation->left);
  if (right) drop_conversion(relation->right);
  // Both sides are signed as the program has them, and not negative.
  if ((left || right) && is_unsigned_side(relation->left) && is_unsigned_side(relation->right))
    relation->op = unsigned_order(relation->op);
}

// ------------------------------------------------------------------------------------------------
// Constants

// f < 0  ->  (unit & sign bit) != 0; f >= 0  ->  (unit & sign bit) == 0
bool compare_sign(NODE *relation) {
  if (!is_icon_of(relation->right, 0) || !is_signed_integer(relation->left->type)) return false;
  if (relation->op != LT && relation->op != GE) return false;
  FieldView view;
  NODE *unit = load_field(relation->left, 0, view);
  relation->left = mask_field(unit, 1, view.shift + view.width - 1, view.type);
  relation->op = relation->op == LT ? NE : EQ;
  return true;
}

Opcode strict_for_next_constant(Opcode op) {
  switch (op) {
  case LE: return LT;
  case GT: return GE;
  case ULE: return ULT;
  case UGT: return UGE;
  default: return ILLOP;
  }
}

// f <= K  ->  f < K + 1; f > K  ->  f >= K + 1
void make_constant_exclusive(NODE *relation) {
  const Opcode op = strict_for_next_constant(relation->op);
  if (op == ILLOP || !is_integer_icon(relation->right) || relation->right->u.lval < 0) return;
  const std::int32_t next =
      wrap_value(wrapping_add(relation->right->u.lval, 1), relation->left->type);
  if (next <= 0 || wrapping_subtract(next, 1) != relation->right->u.lval) return;
  relation->op = op;
  relation->right->u.lval = next;
}

bool is_exclusive_order(Opcode op) {
  return op == LT || op == GE || op == ULT || op == UGE;
}

// f < K  ->  (unit & K') != K'; f >= K  ->  (unit & K') == K', where K is a run of ones from the
// top bit of the unsigned field down, and K' that run in its place
bool compare_top_bits(NODE *relation) {
  if (relation->left->type != UNSIGNED || !is_integer_icon(relation->right) ||
      !is_exclusive_order(relation->op))
    return false;
  const std::int32_t constant = relation->right->u.lval;
  if (constant <= 0) return false;
  const std::int32_t below = wrapping_add(wrapping_subtract(constant, 1) | constant, 1);
  if (log2_of(below) != relation->left->right->u.sym->size) return false;
  FieldView view;
  NODE *unit = load_field(relation->left, 0, view);
  const std::int32_t bits = shift_left(constant, view.shift);
  relation->left = simplify_node(make_node(BIT_AND, unit, make_icon(bits, UNSIGNED), UNSIGNED));
  relation->right->u.lval = bits;
  relation->right->type = UNSIGNED;
  relation->op = relation->op == LT || relation->op == ULT ? NE : EQ;
  return true;
}

// f rel K  ->  unit rel K << shift: both sides are scaled alike. False where K is none of the
// field's values.
bool scale_constant(NODE *relation, const FieldView &view) {
  NODE *constant = relation->right;
  if (!is_integer_icon(constant) || constant->u.lval < 0) return false;
  const std::int32_t scaled = shift_left(constant->u.lval, view.shift);
  // The field's sign decides how the constant would come back, whatever type the constant has.
  const bool is_unsigned = is_unsigned_integer(view.type);
  const std::int32_t back = is_unsigned ? shift_right_logical(scaled, view.shift)
                                        : shift_right_arithmetic(scaled, view.shift);
  if (back != constant->u.lval) return false;
  // A signed comparison would take the top bit of an unsigned field for a sign.
  if (is_unsigned && is_plain_order(relation) && view.shift + view.width >= 32) return false;
  constant->u.lval = scaled;
  if (is_unsigned && !is_plain_order(relation)) constant->type = UNSIGNED;
  return true;
}

// ------------------------------------------------------------------------------------------------
// Two fields

struct Side {
  NODE *tree = nullptr;
  FieldView view;
};

Side load_side(NODE *access) {
  Side side;
  side.tree = load_masked_field(access, 0, side.view);
  side.tree = prepare_value(side.tree, side.view, 0);
  return side;
}

void move_side(Side &side, std::int32_t width, std::int32_t shift) {
  side.tree = move_field(side.tree, side.view, width, shift, side.view.type);
}

void extract(Side &side) {
  move_side(side, value_width(side.view.type), 0);
}

bool fits_at(const Side &side, std::int32_t shift) {
  const std::int32_t top = shift + side.view.width;
  return top < 32 || (top == 32 && is_signed_integer(side.view.type));
}

// Brings both fields to one shift, with as few moves as possible.
void align_sides(Side &a, Side &b) {
  if (a.view.shift > b.view.shift && fits_at(b, a.view.shift))
    move_side(b, b.view.width, a.view.shift);
  else if (b.view.shift > a.view.shift && fits_at(a, b.view.shift))
    move_side(a, a.view.width, b.view.shift);
  if (a.view.shift > b.view.shift)
    move_side(a, a.view.width + a.view.shift - b.view.shift, b.view.shift);
  else if (b.view.shift > a.view.shift)
    move_side(b, b.view.width + b.view.shift - a.view.shift, a.view.shift);
}

bool is_unsigned_at_top(const Side &side, std::int32_t shift) {
  return is_unsigned_integer(side.view.type) && shift + side.view.width >= 32;
}

// A signed field reaches the top bit of the word. An unsigned one that did so too would be equal
// to a negative one of the same bits.
bool can_align(const Side &a, const Side &b) {
  if (is_unsigned_integer(a.view.type) == is_unsigned_integer(b.view.type)) return true;
  const std::int32_t lower = std::min(a.view.shift, b.view.shift);
  return !is_unsigned_at_top(a, lower) && !is_unsigned_at_top(b, lower);
}

void compare_fields(NODE *relation) {
  Side a = load_side(relation->left);
  Side b = load_side(relation->right);
  if (can_align(a, b)) {
    align_sides(a, b);
  } else {
    extract(a);
    extract(b);
  }
  // Operands of unlike signs would be balanced to unsigned, and an order to one of unsigned.
  if (is_plain_order(relation)) {
    if (is_unsigned_integer(a.tree->type)) a.tree = make_conversion(INT, a.tree);
    if (is_unsigned_integer(b.tree->type)) b.tree = make_conversion(INT, b.tree);
  }
  relation->left = a.tree;
  relation->right = b.tree;
}

NODE *expand_operands(NODE *relation) {
  relation->left = expand_tree(relation->left, Use::VALUE);
  relation->right = expand_tree(relation->right, Use::VALUE);
  return relation;
}

bool mentions_field(const NODE *operand) {
  return is_bit_field_access(operand) || is_converted_field(operand);
}

} // namespace

NODE *expand_relation(NODE *relation) {
  if (!mentions_field(relation->left) && !mentions_field(relation->right))
    return expand_operands(relation);
  normalize_relation(relation);
  if (!mentions_field(relation->left) ||
      (!is_bit_field_access(relation->left) && is_bit_field_access(relation->right))) {
    std::swap(relation->left, relation->right);
    relation->op = op_swapped(relation->op);
  }
  drop_promotions(relation);
  if (!is_bit_field_access(relation->left)) return expand_operands(relation);

  if (is_icon_of(relation->right, 0) && is_equality(relation)) {
    relation->left = expand_tree(relation->left, Use::TEST);
    return relation;
  }
  if (compare_sign(relation)) return relation;
  make_constant_exclusive(relation);
  if (compare_top_bits(relation)) return relation;
  if (is_converted_field(relation->right)) drop_conversion(relation->right);
  if (is_bit_field_access(relation->right)) {
    compare_fields(relation);
    return relation;
  }
  Side field = load_side(relation->left);
  if (!scale_constant(relation, field.view)) {
    extract(field);
    relation->right = expand_tree(relation->right, Use::VALUE);
  }
  relation->left = field.tree;
  return relation;
}

} // namespace velkor::bit_fields
