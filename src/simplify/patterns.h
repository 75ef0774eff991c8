// The small vocabulary that rewrite rules share.
#pragma once

#include "core/conversions.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/records.h"
#include "simplify/rules.h"
#include "simplify/simplify.h"

namespace velkor {

[[nodiscard]] inline bool is_icon(const NODE *node) {
  return node->op == ICON;
}
[[nodiscard]] inline bool is_icon_of(const NODE *node, std::int32_t value) {
  return node->op == ICON && node->u.lval == value;
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

// What is left of a list (a , b) of which either side may have gone: the list of both, one of them,
// or none.
[[nodiscard]] inline NODE *list_of_remaining(NODE *list, NODE *left, NODE *right) {
  if (left && right) {
    list->left = left;
    list->right = right;
    return list;
  }
  erase_node(list);
  return left ? left : right;
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
  if (node->left->type == node->type) return replace_by_left(node);
  node->op = is_derived(node->type) ? PCONV : SCONV;
  return simplify_node(node);
}

inline void set_type(NODE *node, TypeWord type) {
  node->type = static_cast<std::uint16_t>(type);
}

// (type) tree, simplified; takes the tree.
[[nodiscard]] inline NODE *make_conversion(TypeWord type, NODE *tree) {
  if (tree->type == type) return tree;
  tree = convert_tree(type, tree);
  return tree->op == SCONV || tree->op == PCONV ? simplify_node(tree) : tree;
}

// Does a value of inner's type hold all bits of one of outer's? Where the operators only look at
// low bits, an operand's own wrapping then does no harm.
[[nodiscard]] inline bool is_as_wide(const NODE *inner, const NODE *outer) {
  return value_width(inner->type) >= value_width(outer->type);
}

// A constant of a plain integer type, and so fit for folding?
[[nodiscard]] inline bool is_integer_icon(const NODE *node) {
  return node->op == ICON && is_integer(node->type);
}

[[nodiscard]] inline bool is_sum_or_difference(const NODE *node) {
  return node->op == ADD || node->op == SUBTRACT;
}

// A plain integer type of a full word: its arithmetic is exact modulo 2^32, as a pointer's is.
[[nodiscard]] inline bool is_word_integer(TypeWord type) {
  return is_integer(type) && value_width(type) == 32;
}

[[nodiscard]] inline bool is_leaf(const NODE *node) {
  return !node->left;
}

// What stands in a place, for rules that ask whether a rewriting has put something else there.
// Changes further down do not show.
struct Occupant {
  const NODE *node;
  Opcode op;
  bool operator==(const Occupant &) const = default;
};
[[nodiscard]] inline Occupant occupant(const NODE *place) {
  return {place, place ? place->op : ILLOP};
}

// The outcome of a rule that rewrites a place of the tree and lets the next rules go on.
[[nodiscard]] inline Outcome outcome_of_rewriting(const NODE *place, const Occupant &before) {
  return occupant(place) == before ? Outcome::NEXT : Outcome::REWRITTEN;
}

// A rule's last step: result, simplified, stands in the tree's place.
inline Outcome finish(NODE *&tree, NODE *result) {
  tree = simplify_node(result);
  return Outcome::DONE;
}

// < <= > >= over operands whose balanced type is unsigned or a pointer turns into ULT and its kin
// in place; any other node stays. The files may write either form.
void normalize_relation(NODE *node);

// Is a conversion of an operand needless where only as many of its low bits count as the target
// type has? Integers only: a float's conversion is a computation.
[[nodiscard]] inline bool conversion_is_needless(TypeWord outer, const NODE *conversion) {
  return conversion->op == SCONV && is_integer(outer) && is_integer(conversion->type) &&
         is_integer(conversion->left->type) && type_width(outer) <= type_width(conversion->type);
}

// The tree that takes the place of one of the given type, brought to that type; takes the tree.
// What is no scalar on either side stays as it is.
[[nodiscard]] inline NODE *keep_type(TypeWord type, NODE *tree) {
  if (type == tree->type || !is_scalar(type) || !is_scalar(tree->type)) return tree;
  return make_conversion(type, tree);
}

} // namespace velkor
