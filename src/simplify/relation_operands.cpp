// Relations with like terms on both sides, with increments, and with conversions.
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "simplify/relation_rules.h"
#include "simplify/relations.h"

#include <utility>

namespace velkor {
namespace {

bool is_condition_or_icon(const NODE *node) {
  return is_icon(node) || op_boolean(node->op);
}

// ------------------------------------------------------------------------------------------------
// Common addends

// What is left of a sum without one operand, and of the other side, must stand in the same order as
// the sums do. An offset counts as signed then: p + (u - 1) lies below p although u - 1, unsigned,
// is no small number.
bool keeps_order(const NODE *rest) {
  return is_pointer(rest->type) ||
         (is_integer(rest->type) && is_signed_integer(promote_type(rest->type)));
}

// May an operand of the sum be cancelled in the relation, so that the other one is left?
bool may_cancel_in(const NODE *relation, const NODE *sum, const NODE *rest) {
  if (is_pointer(sum->type)) return is_equality(relation) || keeps_order(rest);
  return is_equality(relation) ? value_width(sum->type) == 32 : is_exact(sum);
}

// One operand of the sum becomes 0; the sum simplified.
NODE *without_operand(NODE *sum, NODE *&operand) {
  erase_tree(operand);
  operand = make_icon(0, INT);
  forget_pointer_operand(sum);
  return simplify_node(sum);
}

// The relation's other side is the operand itself: it becomes 0 as well.
Outcome cancel_operand(NODE *&tree, NODE *&sum, NODE *&operand, NODE *&whole) {
  sum = without_operand(sum, operand);
  erase_tree(whole);
  whole = make_icon(0, INT);
  forget_pointer_operand(tree);
  return finish(tree, tree);
}

// x rel (x + y)  ->  0 rel y, with the operands of the sum in either order
bool try_cancel_whole(NODE *&tree, NODE *&whole, NODE *&sum) {
  if (sum->op != ADD) return false;
  const auto matches = [&](const NODE *operand, const NODE *rest) {
    return trees_equal(whole, operand, false) && !tree_contains(whole, rest) &&
           may_cancel_in(tree, sum, rest);
  };
  if (matches(sum->left, sum->right)) {
    cancel_operand(tree, sum, sum->left, whole);
    return true;
  }
  if (matches(sum->right, sum->left)) {
    cancel_operand(tree, sum, sum->right, whole);
    return true;
  }
  return false;
}

// (x + y) rel (x + z)  ->  y rel z, written (0 + y) rel (0 + z)
bool try_cancel_left_operands(NODE *&tree) {
  NODE *a = tree->left;
  NODE *b = tree->right;
  if (a->op != ADD || b->op != ADD || !trees_equal(a->left, b->left, false)) return false;
  if (!may_cancel_in(tree, a, a->right) || !may_cancel_in(tree, b, b->right)) return false;
  if (tree_contains(a->left, a->right) || tree_contains(b->left, b->right)) return false;
  tree->left = without_operand(a, a->left);
  tree->right = without_operand(b, b->left);
  forget_pointer_operand(tree);
  tree = simplify_node(tree);
  return true;
}

// ------------------------------------------------------------------------------------------------
// Increments

// A variable of its own, which holds the whole word that ++ and -- compute.
bool is_plain_variable(const NODE *node) {
  switch (node->op) {
  case NAME:
  case DEREF: return true;
  case MEMBER:
  case ARROW: return !is_bit_field_access(node);
  default: return false;
  }
}

// x ++ K2 or x -- K2 against something of x's type.
bool steps_variable(const NODE *tree, Opcode op) {
  const NODE *step = tree->left;
  return step->op == op && is_icon(step->right) && step->type == tree->right->type &&
         step->left->op != DDNODE;
}

// A signed word stepped by 1.
bool steps_signed_by_one(const NODE *step) {
  return is_signed_integer(step->type) && value_width(step->type) >= 32 &&
         is_icon_of(step->right, 1) && is_plain_variable(step->left);
}

Outcome step_first(NODE *&tree, Opcode op, Opcode relation) {
  tree->left->op = op;
  tree->left = simplify_node(tree->left);
  tree->op = relation;
  return Outcome::AGAIN;
}

// ------------------------------------------------------------------------------------------------
// Conversions to integers wider than a word. The target has none, so that these two never apply.

bool is_widened(const NODE *node) {
  return node->op == SCONV && is_integer(node->type) && is_integer(node->left->type) &&
         value_width(node->type) > 32 && value_width(node->left->type) <= 32;
}

Opcode relation_of_type(Opcode op, TypeWord type) {
  if (!is_unsigned_integer(type)) return op;
  switch (op) {
  case LE: return ULE;
  case LT: return ULT;
  case GE: return UGE;
  case GT: return UGT;
  default: return op;
  }
}

// ------------------------------------------------------------------------------------------------
// Replacing

NODE *constant_of_type(std::int32_t value, TypeWord type) {
  NODE *constant = convert_tree(type, make_icon(value, LONG));
  return constant->op == SCONV ? simplify_node(constant) : constant;
}

// Is the left operand an object rather than a value?
bool takes_object(const NODE *node) {
  return op_effect(node->op) == ASSIGNS || node->op == ADDRESS || node->op == ARGREF ||
         node->op == ARASG || node->op == LABELDEF;
}

bool is_constant_pattern(const NODE *pattern) {
  return is_icon(pattern) || (pattern->op == PCONV && is_icon(pattern->left));
}

struct Replacement {
  std::int32_t value;
  TypeWord type;
  const NODE *pattern;
};

NODE *replace(const Replacement &wanted, NODE *tree);

// An object stays, but the trees that lead to it (a pointer, an index) hold values.
NODE *replace_in_object(const Replacement &wanted, NODE *object) {
  if (object->left) {
    object->left = object->op == MEMBER ? replace_in_object(wanted, object->left)
                                        : replace(wanted, object->left);
  }
  return object;
}

NODE *replace(const Replacement &wanted, NODE *tree) {
  const NODE *pattern = wanted.pattern;
  if (tree->op == LABELDEF) return tree;
  if (tree->op == pattern->op && trees_equal(pattern, tree, true)) {
    const TypeWord type = wanted.type == type_of_replaced ? tree->type : wanted.type;
    NODE *constant = constant_of_type(wanted.value, type);
    return make_comma(discard_value(tree), constant);
  }
  if (tree->left)
    tree->left =
        takes_object(tree) ? replace_in_object(wanted, tree->left) : replace(wanted, tree->left);
  if (tree->right) tree->right = replace(wanted, tree->right);
  if (is_constant_pattern(pattern)) return tree;
  if (is_pointer(pattern->type) && wanted.type != type_of_replaced && !is_pointer(wanted.type))
    forget_pointer_operand(tree);
  return simplify_node(tree);
}

} // namespace

NODE *replace_by_constant(std::int32_t value, TypeWord type, const NODE *pattern, NODE *tree) {
  return replace({value, type, pattern}, tree);
}

void forget_pointer_operand(NODE *node) {
  if (!node->left || !node->right) return;
  const TypeWord left = node->left->type;
  const TypeWord right = node->right->type;
  if (is_sum_or_difference(node)) {
    if (is_pointer(node->type) && is_integer(left) && is_integer(right))
      set_type(node, balance_type(node->left, node->right));
    return;
  }
  if (!is_signed_integer(left) || !is_signed_integer(right)) return;
  switch (node->op) {
  case ULE: node->op = LE; break;
  case ULT: node->op = LT; break;
  case UGE: node->op = GE; break;
  case UGT: node->op = GT; break;
  default: break;
  }
}

// x == y  ->  (x - y) == 0, so that like terms cancel; what is left comes apart again
Outcome subtract_sides(NODE *&tree) {
  NODE *left = tree->left;
  NODE *right = tree->right;
  if (!is_equality(tree) || is_condition_or_icon(left) || is_condition_or_icon(right))
    return Outcome::NEXT;
  if (left->type != right->type || !is_integer(left->type)) return Outcome::NEXT;
  if (!is_small(left) || !is_small(right) || has_side_effects(tree)) return Outcome::NEXT;
  // Narrow values are subtracted as the words that they are.
  const TypeWord type = promote_type(left->type);
  NODE *difference = simplify_node(make_node(SUBTRACT, left, right, type));
  if (difference->op == SUBTRACT && difference->left == left && difference->right == right) {
    erase_node(difference);
    return Outcome::NEXT;
  }
  tree->left = difference;
  tree->right = make_icon(0, type);
  if (is_icon(difference) || difference->op == COMMA_OP) return finish(tree, tree);
  // Something has cancelled, or merged: what is left comes apart at once, or is looked at anew.
  (void)separate_difference(tree);
  return Outcome::AGAIN;
}

// (x - y) == 0  ->  x == y;  (x + K2) == 0  ->  x == -K2
Outcome separate_difference(NODE *&tree) {
  NODE *left = tree->left;
  const TypeWord type = left->type;
  if (!is_equality(tree) || !is_icon_of(tree->right, 0) || !is_integer(type)) return Outcome::NEXT;
  if (!is_sum_or_difference(left)) return Outcome::NEXT;
  // A narrow difference is cut to its type; operands of another type are not.
  const auto is_cut = [&](const NODE *operand) {
    return value_width(type) < 32 && operand->type != type;
  };
  if (is_cut(left->left)) return Outcome::NEXT;
  if (left->op == SUBTRACT) {
    if (is_cut(left->right)) return Outcome::NEXT;
    erase_node(tree->right);
    tree->left = left->left;
    tree->right = left->right;
    erase_node(left);
    if (is_icon(tree->left)) std::swap(tree->left, tree->right);
    return Outcome::AGAIN;
  }
  if (!is_icon(left->right) || !is_integer(left->left->type)) return Outcome::NEXT;
  const std::int32_t addend = left->right->u.lval;
  const std::int32_t value = wrap_to_type(wrapping_negate(addend), type);
  if (wrap_to_type(wrapping_negate(value), type) != addend) return Outcome::NEXT;
  tree->right->u.lval = value;
  set_type(tree->right, type);
  left->right = erase_node(left->right);
  tree->left = replace_by_left(left);
  return Outcome::AGAIN;
}

// x rel (x + y)  ->  0 rel y;  (x + y) rel (x + z)  ->  y rel z
Outcome cancel_common_addend(NODE *&tree) {
  const NODE *a = tree->left;
  const NODE *b = tree->right;
  const bool are_pointers = is_pointer(a->type) && is_pointer(b->type);
  const bool are_integers = is_integer(a->type) && is_integer(b->type);
  if (!are_pointers && (!are_integers || is_unsigned_relation(tree))) return Outcome::NEXT;
  const bool found = try_cancel_whole(tree, tree->left, tree->right) ||
                     try_cancel_whole(tree, tree->right, tree->left) ||
                     try_cancel_left_operands(tree);
  return found ? Outcome::DONE : Outcome::NEXT;
}

// x++ < y  ->  (x += 1) <= y;  x++ >= y  ->  (x += 1) > y
Outcome increment_first(NODE *&tree) {
  if (!steps_variable(tree, INCREMENT)) return Outcome::NEXT;
  if (is_pointer(tree->left->type)) {
    if (tree->op == ULT) return step_first(tree, ASG_ADD, ULE);
    return tree->op == UGE ? step_first(tree, ASG_ADD, UGT) : Outcome::NEXT;
  }
  if (!is_less_or_opposite(tree) || !steps_signed_by_one(tree->left)) return Outcome::NEXT;
  return step_first(tree, ASG_ADD, tree->op == LT ? LE : GT);
}

// x-- > y  ->  (x -= 1) >= y;  x-- <= y  ->  (x -= 1) < y
Outcome decrement_first(NODE *&tree) {
  if (!steps_variable(tree, DECREMENT)) return Outcome::NEXT;
  if (is_pointer(tree->left->type)) {
    if (tree->op == ULE) return step_first(tree, ASG_SUBTRACT, ULT);
    return tree->op == UGT ? step_first(tree, ASG_SUBTRACT, UGE) : Outcome::NEXT;
  }
  if (!is_less_equal_or_opposite(tree) || !steps_signed_by_one(tree->left)) return Outcome::NEXT;
  return step_first(tree, ASG_SUBTRACT, tree->op == LE ? LT : GE);
}

// x++ == y  ->  (x += K2) == y + K2;  x-- == y  ->  (x -= K2) == y - K2, y constant
Outcome step_constant(NODE *&tree) {
  NODE *step = tree->left;
  if (!is_equality(tree)) return Outcome::NEXT;
  if (!steps_variable(tree, INCREMENT) && !steps_variable(tree, DECREMENT)) return Outcome::NEXT;
  const bool is_fit = is_pointer(step->type)
                          ? is_constant_tree(tree->right)
                          : is_integer(step->type) && is_icon(tree->right) &&
                                value_width(step->type) >= 32 && is_plain_variable(step->left);
  if (!is_fit) return Outcome::NEXT;
  const Opcode op = step->op == INCREMENT ? ADD : SUBTRACT;
  NODE *amount = copy_node(step->right);
  const TypeWord type = balance_type(tree->right, amount);
  tree->right = simplify_node(make_node(op, tree->right, amount, type));
  return step_first(tree, op == ADD ? ASG_ADD : ASG_SUBTRACT, tree->op);
}

// (wide) x rel K  ->  x rel K
Outcome compare_in_narrow_type(NODE *&tree) {
  NODE *wide = tree->left;
  if (!is_widened(wide) || !is_icon(tree->right)) return Outcome::NEXT;
  const TypeWord type = wide->left->type;
  if (wrap_to_type(tree->right->u.lval, type) != tree->right->u.lval) return Outcome::NEXT;
  tree->op = relation_of_type(tree->op, type);
  tree->left = replace_by_left(wide);
  set_type(tree->right, type);
  return Outcome::AGAIN;
}

// (wide) x rel (wide) y  ->  x rel y
Outcome compare_both_in_narrow_type(NODE *&tree) {
  NODE *left = tree->left;
  NODE *right = tree->right;
  if (!is_widened(left) || !is_widened(right)) return Outcome::NEXT;
  if (left->type != right->type || left->left->type != right->left->type) return Outcome::NEXT;
  tree->op = relation_of_type(tree->op, left->left->type);
  tree->left = replace_by_left(left);
  tree->right = replace_by_left(right);
  return Outcome::AGAIN;
}

} // namespace velkor
