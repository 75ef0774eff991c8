#include "lower/chained_assignments.h"

#include "core/conversions.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/zones.h"

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Order: the chain may evaluate a place's address before the assignment that stood ahead of it.

bool value_may_change(const NODE *value, const NODE *target);

bool is_register(const SYM *sym) {
  return sym->sclass == C_REG || sym->sclass == C_VREG ||
         (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) != 0;
}

// The variable that the place is, or is a part of; none for a place behind a pointer.
const SYM *variable_of(const NODE *place) {
  while (place->op == MEMBER)
    place = place->left;
  return place->op == NAME ? place->u.sym : nullptr;
}

// May a store to the target change what the address of the place depends on?
bool address_may_change(const NODE *place, const NODE *target) {
  switch (place->op) {
  case NAME: return false;
  case MEMBER: return address_may_change(place->left, target);
  default: return place->left && value_may_change(place->left, target);
  }
}

// The same for a value. What lies in memory may be anything that the target is.
bool value_may_change(const NODE *value, const NODE *target) {
  switch (value->op) {
  case ICON:
  case SCON:
  case FCON: return false;
  case ADDRESS: return address_may_change(value->left, target);
  case NAME: {
    const SYM *stored = variable_of(target);
    return stored ? stored == value->u.sym : !is_register(value->u.sym);
  }
  case DEREF:
  case MEMBER:
  case ARROW: return true;
  default:
    if (!value->left || value_may_change(value->left, target)) return true;
    return value->right && value_may_change(value->right, target);
  }
}

// ------------------------------------------------------------------------------------------------
// Values

bool survives_storing(std::int32_t value, TypeWord type) {
  return value == 0 || (value == 1 && is_unsigned_integer(type));
}

// Does the chain, or a single assignment, yield the constant that next stores, and may it stand in
// that constant's place?
bool yields_constant(const NODE *chain, NODE *next) {
  const NODE *constant = next->right;
  for (; chain->op == ASSIGN; chain = chain->right) {
    if (!is_integer(chain->type) || !survives_storing(constant->u.lval, chain->type)) return false;
    if (has_side_effects(chain->left) || address_may_change(next->left, chain->left)) return false;
  }
  return chain->op == ICON &&
         wrap_signed(chain->u.lval, chain->type) == wrap_signed(constant->u.lval, constant->type);
}

bool can_chain(const LIST *cell, const LIST *next) {
  if (!next || cell->item->op != ASSIGN || cell->line2 != next->line2) return false;
  NODE *assignment = next->item;
  return assignment->op == ASSIGN && assignment->right->op == ICON &&
         !has_side_effects(assignment->left) && yields_constant(cell->item, assignment);
}

} // namespace

void chain_assignments(LIST *cell) {
  while (can_chain(cell, cell->next)) {
    LIST *next = cell->next;
    NODE *assignment = next->item;
    erase_node(assignment->right);
    assignment->right = cell->item;
    cell->item = assignment;
    cell->next = next->next;
    next->item = nullptr;
    next->next = nullptr;
    give_list(next);
  }
}

} // namespace velkor
