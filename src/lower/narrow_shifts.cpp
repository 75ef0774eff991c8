// Shifts to the right that take a field out of memory: reading the byte or halfword that holds the
// field may leave nothing to shift.
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/target.h"
#include "lower/narrowing.h"
#include "simplify/patterns.h"

namespace velkor::narrowing {
namespace {

std::int32_t count_of(const NODE *shift) {
  return shift->right->u.lval;
}

std::int32_t cost_of_shift(std::int32_t count) {
  return count != 0 ? shift_cost : 0;
}

// The cost of reading the type and shifting by the count.
std::int32_t cost_of_read(TypeWord type, std::int32_t count) {
  const AccessCost cost = access_cost(type);
  return cost.load + cost.extend + cost_of_shift(count);
}

void set_operand(NODE *shift, NODE *operand, std::int32_t count) {
  shift->left = operand;
  shift->right->u.lval = count;
}

// Reads the part at the position in place of the whole operand, if that is cheaper.
void try_part(NODE *shift, std::int32_t position, TypeWord type) {
  const std::int32_t rest = count_of(shift) - position;
  if (cost_of_read(type, rest) >= cost_of_read(shift->left->type, count_of(shift))) return;
  set_operand(shift, make_narrow_access(position, shift->left, type), rest);
}

// (x >> s) & M  ->  x' >> s', all demanded bits in one byte or halfword x' of x
void read_demanded_part(NODE *shift, std::uint32_t mask) {
  const std::int32_t count = count_of(shift);
  const std::uint32_t demanded = mask << count;
  if (demanded >> count != mask) return; // copies of the sign are looked at
  for (const TypeWord type : {UNSIGNED_CHAR, UNSIGNED_SHORT}) {
    const std::int32_t position = part_position(count, type);
    if (!covers(part_mask(position, type), demanded) ||
        !can_narrow_access(shift->left, position, type))
      continue;
    try_part(shift, position, type);
    return;
  }
}

// x >> 24, x >> 16  ->  the highest byte or halfword, signed. Of an unsigned x zeros come in from
// above, where such a part would bring copies of its highest bit.
void read_top_part(NODE *shift, std::uint32_t mask) {
  const std::int32_t count = count_of(shift);
  const TypeWord operand = shift->left->type;
  if (!is_word_integer(operand) || is_unsigned_integer(operand)) return;
  const auto looked_at =
      static_cast<std::uint32_t>(wrap_signed(static_cast<std::int32_t>(mask), shift->type));
  constexpr std::uint32_t byte_below_sign = 0x7F;
  constexpr std::uint32_t halfword_below_sign = 0x7FFF;
  if (count >= 24 && covers(looked_at, byte_below_sign) && can_narrow_access(shift->left, 24, CHAR))
    try_part(shift, 24, CHAR);
  else if (count >= 16 && covers(looked_at, halfword_below_sign) &&
           can_narrow_access(shift->left, 16, SHORT))
    try_part(shift, 16, SHORT);
}

// (x << c) >> s, signed  ->  x' >> s', where the field's sign is that of a byte or halfword x' of x
void read_signed_field(NODE *shift) {
  NODE *inner = shift->left;
  if (inner->op != SHIFT_LEFT || !is_shift_count(inner->right)) return;
  if (!is_word_integer(inner->type) || is_unsigned_integer(inner->type)) return;
  const std::int32_t up = count_of(inner);
  const std::int32_t low = count_of(shift) - up; // the field's lowest bit in x
  if (low < 0) return;
  const std::int32_t top = low + (32 - count_of(shift)) - 1;
  for (const TypeWord type : {CHAR, SHORT}) {
    const std::int32_t position = part_position(low, type);
    if (up % type_width(type) != 0 || part_position(top, type) != position ||
        !can_narrow_access(inner->left, position, type))
      continue;
    const std::int32_t old_cost =
        access_cost(inner->left->type).load + cost_of_shift(count_of(shift)) + cost_of_shift(up);
    if (cost_of_read(type, low - position) >= old_cost) return;
    erase_node(inner->right);
    set_operand(shift, make_narrow_access(position, replace_by_left(inner), type), low - position);
    return;
  }
}

} // namespace

NODE *narrow_right_shift(NODE *shift, std::uint32_t mask) {
  if (!is_shift_count(shift->right)) {
    shift->right = narrow_value(shift->right, all_bits);
    shift->left = narrow_value(shift->left, all_bits);
    return shift;
  }
  // What comes in from above is zero. The operand's bits count: a shift of a narrow type has bits
  // from above that type.
  if (is_unsigned_integer(shift->left->type) || is_derived(shift->left->type))
    mask &= value_mask(promote_type(shift->left->type)) >> count_of(shift);
  read_demanded_part(shift, mask);
  read_top_part(shift, mask);
  read_signed_field(shift);
  const TypeWord operand = shift->left->type;
  std::uint32_t demanded = (mask << count_of(shift)) & value_mask(promote_type(operand));
  // A signed operand hands on copies of its sign: whose, is its own and not the shift's.
  if (demanded >> count_of(shift) != mask && !is_unsigned_integer(operand)) demanded = all_bits;
  shift->left = narrow_value(shift->left, demanded);
  return shift;
}

} // namespace velkor::narrowing
