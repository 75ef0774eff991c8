#include "lower/narrow_accesses.h"

#include "core/conversions.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/questions.h"
#include "core/target.h"
#include "lower/lowering.h"
#include "lower/narrowing.h"
#include "lower/unsimp_blocks.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

namespace velkor {
namespace narrowing {
namespace {

// ------------------------------------------------------------------------------------------------
// Accesses

bool is_volatile_access(const NODE *access) {
  if (is_volatile_node(access)) return true;
  return options.opt_all_volatile && access->op == NAME && is_volatile_symbol(access->u.sym);
}

// Where the part stands in memory, in bits from the lowest address on.
std::int32_t memory_position(std::int32_t position, std::int32_t width, TypeWord part) {
  return options.opt_big_endian_bits ? width - type_width(part) - position : position;
}

// A conversion between integers of one width only reads the object as the other.
bool is_same_width_conversion(const NODE *tree, std::int32_t width) {
  return tree->op == SCONV && is_integer(tree->left->type) && type_width(tree->left->type) == width;
}

bool has_address(const SYM *sym) {
  if (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) return false;
  return sym->sclass != C_REGPARM && sym->sclass != C_REG && sym->sclass != C_VREG;
}

} // namespace

bool can_narrow_access(const NODE *tree, std::int32_t position, TypeWord type) {
  if (!is_integer(tree->type) || access_cost(type).load == 0) return false;
  const std::int32_t width = type_width(tree->type);
  if (tree->op == DDNODE || is_volatile_access(tree) || type_width(type) + position > width)
    return false;
  position = memory_position(position, width, type);
  if (is_same_width_conversion(tree, width)) {
    tree = tree->left;
    if (is_volatile_access(tree)) return false;
  }
  if (tree->op == NAME) return width > position && has_address(tree->u.sym);
  return tree->op == DEREF && width > position;
}

// x  ->  *((t *) &x + bytes)
NODE *make_narrow_access(std::int32_t position, NODE *tree, TypeWord type) {
  lowering.narrow_changed = true;
  const std::int32_t width = type_width(tree->type);
  const std::int32_t bytes = memory_position(position, width, type) / 8;
  if (is_same_width_conversion(tree, width)) tree = replace_by_left(tree);
  const TypeWord pointer = pointer_to(type);
  NODE *address = make_node(ADDRESS, tree, nullptr, pointer_to(tree->type));
  address = make_node(PCONV, address, nullptr, pointer);
  address = make_node(ADD, address, make_icon(bytes, INT), pointer);
  NODE *access = make_node(DEREF, address, nullptr, type);
  access->depnum = type_width(type);
  return simplify_tree(access);
}

namespace {

// ------------------------------------------------------------------------------------------------
// The walk

BB *block_under_way = nullptr;

NODE *narrow_tree(NODE *tree, bool in_address, std::uint32_t mask);

// Nothing is known of what the node makes of its operands.
NODE *narrow_operands(NODE *tree) {
  if (tree->right) tree->right = narrow_value(tree->right, all_bits);
  if (tree->left) tree->left = narrow_value(tree->left, all_bits);
  return tree;
}

// Bits above a narrow signed type are copies of its sign: who looks at them looks at the sign.
std::uint32_t with_sign(std::uint32_t mask, TypeWord type) {
  const std::uint32_t bits = value_mask(type);
  if (is_signed_integer(type) && (mask & ~bits) != 0) mask |= bits ^ (bits >> 1);
  return mask;
}

// The narrow type that holds all demanded bits of the access, or the access's own.
TypeWord narrow_type(const NODE *access, std::uint32_t mask) {
  for (const TypeWord type : {UNSIGNED_CHAR, UNSIGNED_SHORT}) {
    if (!covers(type_mask(type), mask) || !can_narrow_access(access, 0, type)) continue;
    const bool is_exact = mask == type_mask(type);
    const bool is_cheaper = access_cost(type).load < access_cost(access->type).load;
    return is_exact || is_cheaper ? type : access->type;
  }
  return access->type;
}

NODE *narrow_access(NODE *access, bool in_address, std::uint32_t mask) {
  if (in_address || !is_integer(access->type)) return narrow_operands(access);
  const TypeWord type = narrow_type(access, mask);
  if (type != access->type) access = make_narrow_access(0, access, type);
  return narrow_operands(access);
}

NODE *narrow_and(NODE *tree, std::uint32_t mask) {
  if (is_icon(tree->right))
    mask &= static_cast<std::uint32_t>(tree->right->u.lval);
  else
    tree->right = narrow_value(tree->right, mask);
  tree->left = narrow_value(tree->left, mask);
  return tree;
}

NODE *narrow_or(NODE *tree, std::uint32_t mask) {
  if (is_icon(tree->right)) mask &= ~static_cast<std::uint32_t>(tree->right->u.lval);
  tree->right = narrow_value(tree->right, mask);
  tree->left = narrow_value(tree->left, mask);
  return tree;
}

// x ^ K  ->  ~x, where K has all bits of x, and no others are looked at
NODE *narrow_xor(NODE *tree, std::uint32_t mask) {
  tree->right = narrow_value(tree->right, mask);
  tree->left = narrow_value(tree->left, mask);
  if (!is_icon(tree->right) || !is_integer(tree->left->type)) return tree;
  const std::uint32_t bits = value_mask(tree->left->type);
  if (!covers(bits, mask) || !covers(static_cast<std::uint32_t>(tree->right->u.lval), bits))
    return tree;
  tree->right = erase_node(tree->right);
  tree->op = COMPLEMENT;
  return tree;
}

NODE *narrow_left_shift(NODE *shift, std::uint32_t mask) {
  if (!is_shift_count(shift->right)) return narrow_operands(shift);
  const std::uint32_t bits = value_mask(promote_type(shift->left->type));
  shift->left = narrow_value(shift->left, (mask & bits) >> shift->right->u.lval);
  return shift;
}

NODE *narrow_conditional(NODE *tree, std::uint32_t mask) {
  NODE *arms = tree->right;
  if (arms->op != ALTERNATIVES) return narrow_operands(tree);
  arms->right = narrow_value(arms->right, mask);
  arms->left = narrow_value(arms->left, mask);
  tree->left = narrow_value(tree->left, all_bits);
  return tree;
}

// a , b: whoever looks at the value finds it of b's type.
NODE *narrow_comma(NODE *tree, std::uint32_t mask) {
  const TypeWord type = tree->right->type;
  if (!is_integer(type)) mask = all_bits;
  tree->right = keep_type(type, narrow_value(tree->right, mask));
  tree->left = narrow_value(tree->left, 0);
  return tree;
}

NODE *narrow_conversion(NODE *tree, std::uint32_t mask) {
  if (!is_integer(tree->type)) return narrow_operands(tree);
  tree->left = narrow_value(tree->left, mask & value_mask(tree->type));
  return tree;
}

// ------------------------------------------------------------------------------------------------
// Sums

// The position of the lowest bit that is set, from 1 to 30; else -1.
int lowest_bit(std::int32_t word) {
  const int position = log2_of(word & wrapping_negate(word));
  return position > 0 ? position : -1;
}

// x + C  ->  IDENTITY((x >> k) + (C >> k)) << k, where C is no operand of an instruction, C >> k is
// one, and no bit below k is looked at. The IDENTITY keeps the two shifts apart; it goes when the
// statement is lowered again. The new sum has an odd constant, so that it is not taken once more.
NODE *shift_sum(NODE *sum, int count, std::uint32_t mask) {
  const TypeWord type = sum->type;
  sum->right->u.lval = shift_right_arithmetic(sum->right->u.lval, count);
  sum->left = make_node(SHIFT_RIGHT, sum->left, make_icon(count, INT), type);
  // The statement is being taken apart here: nothing may look for increments in it.
  NODE *shifted = unsimp_tree(simplify_tree(sum), block_under_way, nullptr);
  NODE *kept = make_node(IDENTITY, shifted, nullptr, type);
  lowering.narrow_changed = true;
  return narrow_value(make_node(SHIFT_LEFT, kept, make_icon(count, INT), type), mask);
}

bool is_immediate_after_shift(const NODE *constant, int count) {
  NODE shifted = *constant;
  shifted.u.lval = shift_right_arithmetic(shifted.u.lval, count);
  return is_immediate_operand(&shifted);
}

NODE *narrow_sum(NODE *sum, std::uint32_t mask) {
  const std::uint32_t with_carries = mask | (mask - 1);
  const bool is_contiguous = ((with_carries + 1) & with_carries) == 0;
  if (!is_integer(sum->type) || !is_contiguous) return narrow_operands(sum);
  sum->right = narrow_value(sum->right, with_carries);
  const NODE *constant = sum->right;
  if (!is_icon(constant) || !covers(mask, static_cast<std::uint32_t>(constant->u.lval))) {
    sum->left = narrow_value(sum->left, with_carries);
    return sum;
  }
  if (sum->op == SUBTRACT || is_immediate_operand(constant)) return sum;
  const int count = lowest_bit(constant->u.lval);
  const bool looks_below = count > 0 && (mask & ((1u << count) - 1)) != 0;
  if (count <= 0 || looks_below || !is_immediate_after_shift(constant, count)) {
    // The constant has no bits below the mask, so that no carry comes from there.
    sum->left = narrow_value(sum->left, mask);
    return sum;
  }
  return shift_sum(sum, count, mask);
}

// ------------------------------------------------------------------------------------------------
// Dispatch

NODE *narrow_operator(NODE *tree, std::uint32_t mask) {
  // A mask tells bits of integers: a float's digits depend on all of them.
  mask = is_integer(tree->type) ? with_sign(mask, tree->type) : all_bits;
  switch (tree->op) {
  case SHIFT_RIGHT: return narrow_right_shift(tree, mask);
  case COMPLEMENT: tree->left = narrow_value(tree->left, mask); return tree;
  case BIT_AND: return narrow_and(tree, mask);
  case BIT_OR: return narrow_or(tree, mask);
  case BIT_XOR: return narrow_xor(tree, mask);
  case SHIFT_LEFT: return narrow_left_shift(tree, mask);
  case CONDITIONAL: return narrow_conditional(tree, mask);
  case ADD:
  case SUBTRACT: return narrow_sum(tree, mask);
  default: return narrow_conversion(tree, mask);
  }
}

NODE *narrow_tree(NODE *tree, bool in_address, std::uint32_t mask) {
  switch (tree->op) {
  case LABELDEF: return tree; // its operand is no tree
  case SHIFT_RIGHT:
  case COMPLEMENT:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case SHIFT_LEFT:
  case CONDITIONAL:
  case ADD:
  case SUBTRACT:
  case SCONV:
  case ACONV:
  case IDENTITY: return narrow_operator(tree, mask);
  case COMMA_OP: return narrow_comma(tree, mask);
  case NAME:
  case DEREF: return narrow_access(tree, in_address, mask);
  case ADDRESS:
  case ARGREF:
  case INCREMENT:
  case DECREMENT: tree->left = narrow_place(tree->left); return tree;
  case STASG:
  case ARASG:
    tree->right = narrow_value(tree->right, all_bits);
    tree->left = narrow_place(tree->left);
    return tree;
  case IF:
  case SWITCH: tree->left = narrow_value(tree->left, all_bits); return tree;
  default:
    if (tree->op == ASSIGN || asgop_base(tree->op) != ILLOP) return narrow_assignment(tree, mask);
    return narrow_operands(tree);
  }
}

} // namespace

NODE *narrow_place(NODE *tree) {
  return narrow_tree(tree, true, all_bits);
}

NODE *narrow_value(NODE *tree, std::uint32_t mask) {
  return narrow_tree(tree, false, mask);
}

} // namespace narrowing

NODE *narrow_statement(NODE *tree, BB *block, LIST *cell) {
  lowering.narrow_changed = false;
  narrowing::block_under_way = block;
  tree = narrowing::narrow_value(tree, 0); // nobody uses a statement's value
  if (!lowering.narrow_changed) return tree;
  tree = simplify_tree(tree);
  if (cell) cell->item = tree;
  return unsimp_tree(tree, block, cell);
}

} // namespace velkor
