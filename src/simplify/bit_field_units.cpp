// The storage units of bit fields, and fields on their way in and out of them.
#include "core/bit_arithmetic.h"
#include "core/failure.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/target.h"
#include "simplify/bit_field_expansion.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

#include <algorithm>
#include <limits>

namespace velkor::bit_fields {
namespace {

bool is_member_class(const SYM *sym) {
  return sym->sclass == C_MOS || sym->sclass == C_MOU || sym->sclass == C_FIELD;
}

// Can the machine read that narrow a piece of memory by itself?
bool has_narrow_access(TypeWord type) {
  return access_cost(type).load != 0;
}

struct Unit {
  std::int32_t bits = 0;
  std::int32_t offset = 0; // from the object's start
  std::int32_t shift = 0;  // of the field in the unit
  TypeWord type = UNSIGNED;
};

// The alignment of the object that the field is reached through: a variable's own, else that of
// the struct, which stands behind the members on the symbol chain.
std::int32_t object_alignment(const SYM *base, const SYM *member) {
  if (base) return base->align;
  const SYM *sym = member;
  while (sym && is_member_class(sym))
    sym = sym->next;
  if (sym && sym->sclass == C_EOS && sym->tag) sym = sym->tag;
  return sym ? sym->align : max_alignment;
}

bool is_within_one(std::int32_t bits, std::int32_t offset, std::int32_t width) {
  return offset / bits == (offset + width - 1) / bits;
}

// The unsigned type of that width, or VOID.
TypeWord unit_type(std::int32_t bits) {
  for (const TypeWord type : {UNSIGNED_CHAR, UNSIGNED_SHORT, UNSIGNED, UNSIGNED_LONG})
    if (type_width(type) == bits) return type;
  return VOID;
}

[[noreturn]] void no_unit(const SYM *member, std::int32_t width, std::int32_t offset) {
  report(
      "\n\n!!! Error in 'unit_for_field': no storage unit holds the bit field '%s' of %d bits at "
      "bit %d !!!\n",
      member->name, width, offset);
  abnormal_end();
}

// A volatile field is reached through the narrowest unit, all others through the one that the
// alignment allows.
Unit unit_for_field(const SYM *base, const SYM *member, std::int32_t width, std::int32_t offset,
                    bool is_volatile) {
  std::int32_t bits = std::min(object_alignment(base, member), max_alignment);
  if (width < 1 || offset < 0 || offset > std::numeric_limits<std::int32_t>::max() - 32)
    no_unit(member, width, offset);
  if (is_volatile)
    for (const TypeWord type : {UNSIGNED_SHORT, UNSIGNED_CHAR})
      if (bits > type_width(type) && has_narrow_access(type) &&
          is_within_one(type_width(type), offset, width))
        bits = type_width(type);
  if (unit_type(bits) == VOID) bits = 32;
  // A field that straddles the units of its object's alignment takes the next wider one.
  while (bits < 32 && !is_within_one(bits, offset, width))
    bits *= 2;
  if (!is_within_one(bits, offset, width)) no_unit(member, width, offset);
  Unit unit{bits, offset - offset % bits, offset % bits, unit_type(bits)};
  if (options.opt_big_endian_bits) unit.shift = bits - (width + unit.shift);
  return unit;
}

bool ends_member_list(const SYM *sym) {
  return sym->sclass == C_EOS || sym->sclass == C_STRTAG || sym->sclass == C_UNTAG;
}

SYM *find_member_list(const SYM *tag, SYM *chain) {
  for (SYM *sym = chain; sym; sym = sym->next)
    if (sym == tag || (sym->sclass == C_EOS && sym->tag == tag)) return sym->next;
  return nullptr;
}

// The members of a tag, up to the end of the list.
const SYM *members_of(SYM *tag) {
  if (expansion.tag == tag) return expansion.members;
  SYM *members = find_member_list(tag, tag->level == 0 ? state.global_syms : state.misc_syms);
  // Local tags are sorted into their chain only when the first pass asks for the chains.
  if (!members && tag->level != 0) members = find_member_list(tag, state.local_syms);
  expansion.tag = tag;
  expansion.members = members;
  return members;
}

bool shares_unit_with_volatile(SYM *tag, const SYM *field, std::int32_t bits) {
  for (const SYM *sym = members_of(tag); sym && !ends_member_list(sym); sym = sym->next)
    if (is_member_class(sym) && is_volatile_symbol(sym) &&
        sym->offset / bits == field->offset / bits)
      return true;
  return false;
}

// The object that a field belongs to.
struct Object {
  NODE *address = nullptr;
  const SYM *base = nullptr; // the variable, or none
  const SYM *member = nullptr;
  std::int32_t offset = 0; // of the field
};

NODE *drop_member(NODE *access, Object &object) {
  object.member = access->right->u.sym;
  object.offset = wrapping_add(object.offset, object.member->offset);
  erase_tree(access->right);
  return replace_by_left(access);
}

Object take_object(NODE *access) {
  Object object;
  while (access->op == MEMBER)
    access = drop_member(access, object);
  if (access->op == ARROW) {
    object.address = drop_member(access, object);
    return object;
  }
  if (access->op == NAME) object.base = access->u.sym;
  object.address = make_node(ADDRESS, access, nullptr, pointer_to(access->type));
  return object;
}

// *((unit type *) address + byte offset)
NODE *make_unit_access(NODE *address, const Unit &unit, std::uint8_t qual) {
  const TypeWord pointer = pointer_to(unit.type);
  NODE *start = make_node(PCONV, address, nullptr, pointer);
  NODE *place = make_node(ADD, start, make_icon(unit.offset / 8, INT), pointer);
  NODE *access = make_node(DEREF, place, nullptr, unit.type);
  access->depnum = unit.bits;
  access->qual = qual;
  return access;
}

} // namespace

NODE *load_field(NODE *tree, std::int32_t limit, FieldView &view) {
  const std::int32_t whole = value_width(tree->type);
  if (limit <= 0 || limit > whole) limit = whole;
  if (!is_bit_field_access(tree)) {
    const bool is_unsigned = is_unsigned_integer(tree->type);
    view.shift = 0;
    // Not the promoted type, a signed one: the top bit of what is narrow and unsigned is no sign.
    view.type = is_unsigned ? TypeWord{UNSIGNED} : promote_type(tree->type);
    view.width = is_unsigned ? limit : value_width(view.type);
    return expand_tree(tree, Use::VALUE);
  }
  SYM *field = tree->right->u.sym;
  SYM *tag = get_lhs_tag_from_member(tree);
  view.width = std::min(limit, field->size);
  view.type = field->stype;
  expansion.bitfields_changed = true;
  const std::uint8_t qual = tree->qual;
  const bool is_volatile = is_volatile_node(tree);
  Object object = take_object(tree);
  if (options.opt_big_endian_bits)
    object.offset = wrapping_add(object.offset, field->size - view.width);
  object.address = expand_tree(object.address, Use::VALUE);
  const Unit unit =
      unit_for_field(object.base, object.member, view.width, object.offset, is_volatile);
  view.shift = unit.shift;
  NODE *access = make_unit_access(object.address, unit, qual);
  if (!is_volatile && shares_unit_with_volatile(tag, field, unit.bits)) access->qual |= 2;
  return access;
}

std::uint32_t field_mask(std::int32_t width, std::int32_t shift) {
  const std::uint32_t ones = width >= 32 ? ~0u : (1u << width) - 1;
  return ones << shift;
}

NODE *mask_field(NODE *tree, std::int32_t width, std::int32_t shift, TypeWord type) {
  const auto mask = static_cast<std::int32_t>(field_mask(width, shift));
  return simplify_node(make_node(BIT_AND, tree, make_icon(mask, type), type));
}

NODE *load_masked_field(NODE *tree, std::int32_t limit, FieldView &view) {
  NODE *unit = load_field(tree, limit, view);
  return mask_field(unit, view.width, view.shift, view.type);
}

namespace {

NODE *shift_by(Opcode op, NODE *tree, std::int32_t count, TypeWord type) {
  return simplify_node(make_node(op, tree, make_icon(count, INT), type));
}

} // namespace

NODE *prepare_value(NODE *tree, FieldView &view, std::int32_t limit) {
  if (limit > 0 && limit <= view.width) {
    if (limit == view.width) return tree;
    view.width = limit;
    return mask_field(tree, limit, view.shift, view.type);
  }
  if (is_unsigned_integer(view.type)) return tree;
  if (is_unsigned_integer(tree->type)) tree = make_conversion(view.type, tree);
  const std::int32_t room = value_width(view.type) - (view.width + view.shift);
  if (room <= 0) return tree;
  view.shift += room;
  return shift_by(SHIFT_LEFT, tree, room, view.type);
}

NODE *move_field(NODE *tree, FieldView &view, std::int32_t width, std::int32_t shift,
                 TypeWord type) {
  // The field's own type decides as well: masking may leave an unsigned field in a signed tree.
  if (width > view.width && is_signed_integer(tree->type) && is_signed_integer(view.type)) {
    const std::int32_t room = value_width(tree->type) - (view.width + view.shift);
    if (room > 0) {
      tree = shift_by(SHIFT_LEFT, tree, room, promote_type(tree->type));
      view.shift += room;
    }
    const std::int32_t growth = width - view.width;
    tree = shift_by(SHIFT_RIGHT, tree, growth, promote_type(tree->type));
    view.shift -= growth;
    view.width = width;
  }
  const std::int32_t distance = shift - view.shift;
  if (distance > 0) tree = shift_by(SHIFT_LEFT, tree, distance, promote_type(tree->type));
  const bool drags_sign = distance < 0 && is_signed_integer(tree->type);
  if (distance < 0) tree = shift_by(SHIFT_RIGHT, tree, -distance, promote_type(tree->type));
  if (width < view.width || drags_sign)
    tree = mask_field(tree, drags_sign ? std::min(width, view.width) : width, shift, type);
  view.width = width;
  view.shift = shift;
  return make_conversion(type, tree);
}

NODE *field_value(NODE *tree, std::int32_t width, TypeWord type) {
  FieldView view{width, 0, type};
  tree = prepare_value(mask_field(tree, width, 0, type), view, 0);
  return move_field(tree, view, value_width(type), 0, type);
}

} // namespace velkor::bit_fields
