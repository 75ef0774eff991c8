// Putting a value in the place of the variable that holds it.
#pragma once

#include "core/questions.h"

namespace velkor {

// Turns the NAME node into a conversion of value, as an assignment to a variable of target_type and
// a read as the NAME's own type make it, and simplifies that. Takes name and value; returns what
// stands in the NAME's place.
[[nodiscard]] NODE *replace_name_by_value(NODE *name, NODE *value, TypeWord target_type);

// a = (b = c): does a get what c yields, converted to the one type that both have? Not where b is a
// bit field, which cuts the value.
[[nodiscard]] inline bool passes_value_on(const NODE *assignment) {
  const NODE *inner = assignment->right;
  return inner->op == ASSIGN && inner->type == assignment->type &&
         !is_bit_field_access(inner->left);
}

// The temporaries that hold a constant for the code generator (K$1, Q$2): putting the constant back
// would undo what they were made for.
[[nodiscard]] inline bool is_constant_temporary(const SYM *sym) {
  return (sym->name[0] == 'K' || sym->name[0] == 'Q') && sym->name[1] == '$';
}

// A constant, or the address of a named object: the same wherever it is computed.
[[nodiscard]] inline bool is_constant_or_name_address(const NODE *value) {
  switch (value->op) {
  case ICON:
  case FCON:
  case SCON: return true;
  case ADDRESS: return value->left->op == NAME;
  default: return false;
  }
}

// p = p + K, p = p - K, with p a pointer of the frame: replacing p would only hide that it steps.
[[nodiscard]] bool is_pointer_step(const NODE *assignment);

} // namespace velkor
