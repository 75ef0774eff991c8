// The small vocabulary that rewrite rules share.
#pragma once

#include "core/conversions.h"
#include "core/nodes.h"
#include "core/records.h"
#include "simplify/simplify.h"

namespace velkor {

[[nodiscard]] inline bool is_icon(const NODE *node) {
  return node->op == ICON;
}
[[nodiscard]] inline bool is_icon_of(const NODE *node, std::int32_t value) {
  return node->op == ICON && node->u.lval == value;
}

// An access to a bit field?
[[nodiscard]] inline bool is_bit_field_access(const NODE *node) {
  return (node->op == MEMBER || node->op == ARROW) && node->right->u.sym->sclass == C_FIELD;
}

// An operand that is the constant count of a shift within the word.
[[nodiscard]] inline bool is_shift_count(const NODE *node) {
  return node->op == ICON && node->u.lval >= 0 && node->u.lval < 32;
}

// The word as a value of the type holds it. Any other type than a plain integer holds the whole
// word: the tables by basic type would cut a pointer to the width of what it points at.
[[nodiscard]] inline std::int32_t wrap_value(std::int32_t value, TypeWord type) {
  return is_integer(type) ? wrap_to_type(value, type) : value;
}

// Gives a constant a new value. It keeps its type if that can hold the value, and takes
// wider_type if not.
inline void set_icon(NODE *icon, std::int32_t value, TypeWord wider_type) {
  if (wrap_value(value, icon->type) != value) icon->type = static_cast<std::uint16_t>(wider_type);
  icon->u.lval = wrap_value(value, icon->type);
}

// Erases the node alone and yields its left child.
[[nodiscard]] inline NODE *replace_by_left(NODE *node) {
  NODE *left = node->left;
  erase_node(node);
  return left;
}

// x op y  ->  (type of the node) x: erases y, which must have no effects; simplified.
[[nodiscard]] inline NODE *convert_to_left(NODE *node) {
  if (node->right) node->right = erase_tree(node->right);
  node->op = is_derived(node->type) ? PCONV : SCONV;
  return simplify_node(node);
}

} // namespace velkor
