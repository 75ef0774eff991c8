// Stores of bytes and halfwords in place of assignments that change a few bits of a word.
#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/target.h"
#include "lower/narrowing.h"
#include "simplify/bits.h"
#include "simplify/patterns.h"

namespace velkor::narrowing {
namespace {

// A part of a word.
struct Part {
  std::int32_t position = 0; // bits
  TypeWord type = VOID;      // VOID: none
};

enum class Preference : std::uint8_t { CHEAPER, NOT_DEARER };

bool is_worth_it(TypeWord part, TypeWord whole, Preference preference) {
  const std::int32_t narrow = access_cost(part).load;
  const std::int32_t wide = access_cost(whole).load;
  return preference == Preference::CHEAPER ? narrow < wide : narrow <= wide;
}

// The part of the target that holds all changed bits, the highest byte first.
Part find_part(const NODE *target, TypeWord whole, std::uint32_t changed, Preference preference) {
  const auto fits = [&](std::int32_t position, TypeWord type) {
    return position % type_width(type) == 0 && covers(part_mask(position, type), changed) &&
           is_worth_it(type, whole, preference) && can_narrow_access(target, position, type);
  };
  for (std::int32_t position = type_width(whole) - 8; position >= 0; position -= 8)
    for (const TypeWord type : {UNSIGNED_CHAR, UNSIGNED_SHORT})
      if (fits(position, type)) return {position, type};
  return {};
}

// The value's bits from the position on.
NODE *shift_down(NODE *value, std::int32_t position) {
  return make_node(SHIFT_RIGHT, value, make_icon(position, INT), promote_type(value->type));
}

void narrow_target(NODE *assignment, const Part &part) {
  assignment->left = make_narrow_access(part.position, assignment->left, part.type);
  set_type(assignment, part.type);
}

// x = (x & M) | y
bool keeps_some_bits(const NODE *assignment) {
  const NODE *value = assignment->right;
  if (assignment->op != ASSIGN || value->op != BIT_OR || value->left->op != BIT_AND) return false;
  const NODE *kept = value->left;
  return is_icon(kept->right) && is_integer(value->type) && is_integer(kept->type) &&
         is_integer(value->right->type) && trees_equal(kept->left, assignment->left, false);
}

// x = (x & M) | y  ->  x' = (x' & M') | (y >> k), x' the part of x that changes
void narrow_insertion(NODE *assignment) {
  if (!keeps_some_bits(assignment)) return;
  NODE *value = assignment->right;
  NODE *kept = value->left;
  const TypeWord whole = assignment->type;
  const auto mask = static_cast<std::uint32_t>(kept->right->u.lval);
  const std::uint32_t changed = (~mask | possible_bits(value->right, whole)) & type_mask(whole);
  const Part part = find_part(assignment->left, whole, changed, Preference::NOT_DEARER);
  if (part.type == VOID) return;
  narrow_target(assignment, part);
  const std::int32_t shifted = shift_right_arithmetic(kept->right->u.lval, part.position);
  set_icon(kept->right, shifted & static_cast<std::int32_t>(type_mask(part.type)), INT);
  erase_tree(kept->left);
  kept->left = copy_tree(assignment->left);
  value->right = shift_down(value->right, part.position);
}

// x op= y  ->  x' op= y >> k, x' the part of x that changes
void narrow_compound(NODE *assignment, std::uint32_t changed) {
  const TypeWord whole = assignment->type;
  const Part part =
      find_part(assignment->left, whole, changed & type_mask(whole), Preference::CHEAPER);
  if (part.type == VOID) return;
  narrow_target(assignment, part);
  assignment->right = shift_down(assignment->right, part.position);
}

void narrow_target_bits(NODE *assignment) {
  const NODE *value = assignment->right;
  if (!is_integer(value->type)) return;
  switch (assignment->op) {
  case ASSIGN: narrow_insertion(assignment); break;
  case ASG_AND: narrow_compound(assignment, ~certain_bits(value, value->type)); break;
  case ASG_OR:
  case ASG_XOR: narrow_compound(assignment, possible_bits(value, value->type)); break;
  default: break;
  }
}

bool is_logical(Opcode op) {
  return op == ASG_AND || op == ASG_OR || op == ASG_XOR;
}

} // namespace

NODE *narrow_assignment(NODE *assignment, std::uint32_t mask) {
  const TypeWord type = assignment->type;
  if (is_integer(type) && mask == 0 && type_width(type) != 8 &&
      is_integer(assignment->left->type) && type_width(assignment->left->type) == type_width(type))
    narrow_target_bits(assignment);
  const bool looks_at_low_bits = is_logical(assignment->op) && is_integer(assignment->type);
  const std::uint32_t demanded = looks_at_low_bits ? value_mask(assignment->type) : all_bits;
  assignment->left = narrow_place(assignment->left);
  assignment->right = narrow_value(assignment->right, demanded);
  return assignment;
}

} // namespace velkor::narrowing
