// Relations whose operands are conditions, addresses, or the same value.
#include "core/compare.h"
#include "simplify/relation_rules.h"
#include "simplify/truth.h"

namespace velkor {
namespace {

// Is the tree within the budget of nodes? Never looks at more nodes than that.
bool fits(const NODE *tree, int &budget) {
  for (; tree; tree = tree->op == LABELDEF ? nullptr : tree->left) {
    if (--budget < 0) return false;
    if (tree->right && !fits(tree->right, budget)) return false;
  }
  return true;
}

// A test of the opposite; the condition stays.
NODE *negated_copy(const NODE *condition) {
  NODE *opposite = make_node(LOGICAL_NOT, copy_tree(condition), nullptr, INT);
  return simplify_test(simplify_node(opposite));
}

bool is_constant_pointer(const NODE *node) {
  return (node->op == PCONV || node->op == ISP2CHAR) && is_icon(node->left);
}

NODE *strip_conversion(NODE *node) {
  NODE *operand = node->left;
  erase_node(node);
  return operand;
}

// (c && d) == 0 or (c || d) == 0
bool is_negated_logical(const NODE *node) {
  return is_zero_comparison(node) &&
         (node->left->op == LOGICAL_AND || node->left->op == LOGICAL_OR);
}

// x == 0 where a whole word, or its conversion to a pointer, is 0.
bool is_null(const NODE *node) {
  return is_icon_of(node, 0) || (node->op == PCONV && is_icon_of(node->left, 0));
}

// The address of an object, or of a part of it, or a literal.
bool is_object_address(const NODE *node) {
  if (node->op == ADDRESS) node = node->left;
  while (node->op == MEMBER)
    node = node->left;
  return node->op == NAME || node->op == SCON;
}

} // namespace

bool is_small(const NODE *tree) {
  int budget = largest_examined_tree;
  return fits(tree, budget);
}

NODE *decide_relation(NODE *relation, bool holds) {
  NODE *constant = make_icon(holds ? 1 : 0, relation->type);
  return make_comma(discard_value(relation), constant);
}

// (x rel y) != 0  ->  x rel y;  (x rel y) == 0  ->  x negated-rel y;  x != 0  ->  (test of x) != 0
Outcome test_against_zero(NODE *&tree) {
  if (!is_equality(tree) || !is_icon_of(tree->right, 0)) return Outcome::NEXT;
  const Occupant before = occupant(tree->left);
  NODE *test = tree->left = simplify_test(tree->left);
  if (is_relation(test)) {
    if (tree->op == EQ) test->op = op_negated(test->op);
    erase_node(tree->right);
    erase_node(tree);
    tree = test;
    return Outcome::AGAIN;
  }
  // Decided, perhaps behind effects: the frame folds and hoists.
  if (is_icon(test) || test->op == COMMA_OP) return finish(tree, tree);
  return outcome_of_rewriting(test, before);
}

// (T *)K1 rel (T *)K2  ->  K1 rel K2;  (T *)K1 rel 0  ->  K1 rel 0
Outcome pointer_constants(NODE *&tree) {
  if (!is_constant_pointer(tree->left)) return Outcome::NEXT;
  if (is_constant_pointer(tree->right))
    tree->right = strip_conversion(tree->right);
  else if (!is_icon_of(tree->right, 0))
    return Outcome::NEXT;
  tree->left = strip_conversion(tree->left);
  return finish(tree, tree);
}

// (x && y) == 0  ->  !x || !y;  (x || y) == 0  ->  !x && !y
Outcome negate_logical(NODE *&tree) {
  NODE *logical = tree->left;
  if (!is_zero_comparison(tree)) return Outcome::NEXT;
  if (logical->op != LOGICAL_AND && logical->op != LOGICAL_OR) return Outcome::NEXT;
  if (!op_boolean(logical->left->op) && !op_boolean(logical->right->op)) return Outcome::NEXT;
  if (!is_small(logical)) return Outcome::NEXT;
  NODE *left = negated_copy(logical->left);
  NODE *right = negated_copy(logical->right);
  // Nothing is won where a negation only moves inwards, and && and || themselves take two
  // comparisons with 0 back out.
  if (is_negated_logical(left) || is_negated_logical(right) ||
      (is_zero_comparison(left) && is_zero_comparison(right))) {
    erase_tree(left);
    erase_tree(right);
    return Outcome::NEXT;
  }
  erase_tree(logical->left);
  erase_tree(logical->right);
  logical->left = left;
  logical->right = right;
  logical->op = logical->op == LOGICAL_AND ? LOGICAL_OR : LOGICAL_AND;
  erase_node(tree->right);
  erase_node(tree);
  return finish(tree, logical);
}

// (c ? x : y) == 0  ->  c ? !x : !y
Outcome negate_alternatives(NODE *&tree) {
  NODE *choice = tree->left;
  if (!is_zero_comparison(tree) || choice->op != CONDITIONAL) return Outcome::NEXT;
  if (!is_small(choice->right)) return Outcome::NEXT;
  NODE *arms = choice->right;
  NODE *left = negated_copy(arms->left);
  NODE *right = negated_copy(arms->right);
  if (is_zero_comparison(left) || is_zero_comparison(right)) {
    erase_tree(left);
    erase_tree(right);
    return Outcome::NEXT;
  }
  erase_tree(arms->left);
  erase_tree(arms->right);
  // The relation's value is 0 or 1, a test's is not: !(p == 0) comes as p.
  const TypeWord type = tree->type;
  arms->left = make_conversion(type, truth_value(left));
  arms->right = make_conversion(type, truth_value(right));
  set_type(arms, type);
  set_type(choice, type);
  choice->depnum = -1;
  erase_node(tree->right);
  erase_node(tree);
  return finish(tree, choice);
}

// &x == 0  ->  0;  &x != 0  ->  1
Outcome address_is_not_null(NODE *&tree) {
  if (tree->left->op != ADDRESS && tree->left->op != SCON) return Outcome::NEXT;
  if (!is_equality(tree) || !is_null(tree->right) || !is_object_address(tree->left))
    return Outcome::NEXT;
  const bool holds = tree->op == NE;
  erase_tree(tree);
  tree = make_icon(holds ? 1 : 0, INT);
  return Outcome::DONE;
}

// x rel x  ->  what rel yields for equal values
Outcome equal_operands(NODE *&tree) {
  if (tree->left->op != tree->right->op || !trees_equal(tree->left, tree->right, false))
    return Outcome::NEXT;
  const bool holds =
      tree->op == EQ || tree->op == LE || tree->op == GE || tree->op == ULE || tree->op == UGE;
  tree = decide_relation(tree, holds);
  return Outcome::DONE;
}

// y == (y == 0)  ->  0;  y != (y == 0)  ->  1, either way around
Outcome value_against_its_negation(NODE *&tree) {
  if (!is_equality(tree)) return Outcome::NEXT;
  NODE *left = tree->left;
  NODE *right = tree->right;
  const bool found = (is_zero_comparison(left) && trees_equal(left->left, right, false)) ||
                     (is_zero_comparison(right) && trees_equal(right->left, left, false));
  if (!found) return Outcome::NEXT;
  tree = decide_relation(tree, tree->op == NE);
  return Outcome::DONE;
}

// (x < y) == (x >= y)  ->  0;  (x < y) != (x >= y)  ->  1
Outcome contradicting_conditions(NODE *&tree) {
  if (!is_equality(tree)) return Outcome::NEXT;
  if (!is_relation(tree->left) || tree->left->op != op_negated(tree->right->op))
    return Outcome::NEXT;
  if (!conditions_equal(tree->left, tree->right, true, false)) return Outcome::NEXT;
  tree = decide_relation(tree, tree->op == NE);
  return Outcome::DONE;
}

} // namespace velkor
