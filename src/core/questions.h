// Questions about trees that many rooms ask.
#pragma once

#include "core/records.h"

namespace velkor {

// Is the tree's value the same throughout the program's run (constants, addresses, const objects)?
[[nodiscard]] bool is_constant_tree(const NODE *tree);

// Does the access (NAME, DEREF, MEMBER or ARROW) read an object that keeps its value throughout the
// program's run: a literal, or one of static duration that is itself const and not volatile? A
// pointer to const tells nothing of what it points at, nor does const on an automatic object, which
// begins anew each time its block is entered.
[[nodiscard]] bool access_is_constant(const NODE *access);

// Does evaluating the tree do more than yield a value: an assignment, a call, a transfer, an access
// to something volatile? When all objects count as volatile the accesses are marked here.
[[nodiscard]] bool has_side_effects(NODE *tree);

// An access to a bit field.
[[nodiscard]] inline bool is_bit_field_access(const NODE *node) {
  return (node->op == MEMBER || node->op == ARROW) && node->right->u.sym->sclass == C_FIELD;
}

// Text for the listing only: an ASM node that generates no code.
[[nodiscard]] bool is_comment_asm(const NODE *node);

// The copy by which a function's prologue moves a parameter to its local home, or a list of them.
[[nodiscard]] bool is_param_copy(const NODE *node);

// Brings the qualifiers of a NAME, DEREF, MEMBER or ARROW node up to date with its symbol and its
// operands; returns the node.
NODE *refresh_qual(NODE *node);

} // namespace velkor
