// Rules for the opcodes that consume tests: assertions, conditional branches, switches; and for
// ,OP.
#include "simplify/control.h"

#include "core/questions.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"
#include "simplify/truth.h"

#include <utility>

namespace velkor {
namespace {

// x with its test as a test; the rules behind look at what came out.
Outcome simplify_tested(NODE *&tree) {
  return rewrite_as_test(tree->left);
}

// ------------------------------------------------------------------------------------------------
// Assertions

// assert(1)  ->  0
Outcome drop_true_assertion(NODE *&tree) {
  if (!is_icon(tree->left) || tree->left->u.lval == 0) return Outcome::NEXT;
  tree->left = erase_node(tree->left);
  tree->op = ICON;
  tree->u.lval = 0;
  tree->aux.text = nullptr;
  return Outcome::DONE;
}

Outcome only_checks(NODE *&tree) {
  return tree->op == ASSERT ? Outcome::NEXT : Outcome::STOP;
}

// Another assertion with the same text, simplified; takes the test.
NODE *assert_alike(const NODE *assertion, NODE *test) {
  NODE *other = copy_node(assertion);
  other->left = test;
  return simplify_node(other);
}

// assert(x && y)  ->  (assert(x) , assert(y))
Outcome split_conjunction(NODE *&tree) {
  if (tree->left->op != LOGICAL_AND) return Outcome::NEXT;
  NODE *commas = nullptr; // of the conjunctions taken apart, outermost last, linked by their left
  while (tree->left->op == LOGICAL_AND) {
    NODE *comma = tree->left;
    tree->left = comma->left;
    comma->op = COMMA_OP;
    set_type(comma, VOID);
    comma->right = assert_alike(tree, comma->right);
    comma->left = commas;
    commas = comma;
  }
  tree = simplify_node(tree);
  while (commas) {
    NODE *comma = commas;
    commas = comma->left;
    comma->left = tree;
    tree = simplify_node(comma);
  }
  return Outcome::DONE;
}

// assert(x || y)  ->  assert(truth of x | truth of y), or x ? 0 : assert(y)
Outcome split_disjunction(NODE *&tree) {
  NODE *test = tree->left;
  if (test->op != LOGICAL_OR) return Outcome::NEXT;
  // y may be what only a false x makes safe: a dereference behind a test for null.
  if (is_safe_to_speculate(test->right) && !has_side_effects(test->right)) {
    test->op = BIT_OR;
    test->left = truth_value(test->left);
    test->right = truth_value(test->right);
    tree->left = simplify_test(simplify_node(test));
    return Outcome::DONE;
  }
  tree->left = test->right;
  NODE *arms = make_node(ALTERNATIVES, make_icon(0, VOID), simplify_node(tree), VOID);
  test->op = CONDITIONAL;
  set_type(test, VOID);
  test->right = arms;
  return finish(tree, test);
}

// assert(c ? x : y)  ->  c ? assert(x) : assert(y)
Outcome split_conditional(NODE *&tree) {
  NODE *test = tree->left;
  if (test->op != CONDITIONAL) return Outcome::NEXT;
  NODE *arms = test->right;
  set_type(test, tree->type);
  set_type(arms, tree->type);
  arms->right = assert_alike(tree, arms->right);
  tree->left = arms->left;
  arms->left = simplify_node(tree);
  return finish(tree, test);
}

constexpr Rule assertion_table[] = {
    {"assert(x)  ->  assert(test of x)", simplify_tested},
    {"assert(1)  ->  0", drop_true_assertion},
    {"facts without a check stay", only_checks},
    {"assert(x && y)  ->  (assert(x) , assert(y))", split_conjunction},
    {"assert(x || y)  ->  assert(x | y) or x ? 0 : assert(y)", split_disjunction},
    {"assert(c ? x : y)  ->  c ? assert(x) : assert(y)", split_conditional},
};

// ------------------------------------------------------------------------------------------------
// Branches

// branch if 0 is zero  ->  branch
Outcome branch_always(NODE *&tree) {
  if (!is_icon_of(tree->left, 0)) return Outcome::NEXT;
  erase_node(tree->left);
  tree->op = BRANCH;
  tree->left = tree->right;
  tree->right = nullptr;
  return finish(tree, tree);
}

// branch if 1 is zero  ->  1
Outcome branch_never(NODE *&tree) {
  if (!is_icon(tree->left) || tree->left->u.lval == 0) return Outcome::NEXT;
  erase_tree(tree->right);
  tree = replace_by_left(tree);
  return Outcome::DONE;
}

constexpr Rule cbranch_table[] = {
    {"branch if x is zero  ->  branch if test of x is zero", simplify_tested},
    {"branch if 0 is zero  ->  branch", branch_always},
    {"branch if 1 is zero  ->  1", branch_never},
};

// if (constant)  ->  if (truth of constant)
Outcome decide_constant_test(NODE *&tree) {
  if (tree->left->op != SCON && tree->left->op != FCON) return Outcome::NEXT;
  tree->left = truth_value(tree->left);
  return Outcome::REWRITTEN;
}

// if (x == 0) A else B  ->  if (x) B else A
Outcome swap_targets(NODE *&tree) {
  NODE *test = tree->left;
  if (test->op != EQ || !is_icon_of(test->right, 0)) return Outcome::NEXT;
  std::swap(tree->right->left, tree->right->right);
  erase_node(test->right);
  tree->left = replace_by_left(test);
  return Outcome::AGAIN;
}

constexpr Rule if_table[] = {
    {"if (x)  ->  if (test of x)", simplify_tested},
    {"if (constant)  ->  if (truth of constant)", decide_constant_test},
    {"if (x == 0) A else B  ->  if (x) B else A", swap_targets},
};

// switch (x) { case K: A; default: B }  ->  if (x != K) B else A
Outcome replace_single_case(NODE *&tree) {
  NODE *list = tree->right;
  if (!list || list->op != COMMA) return Outcome::NEXT;
  if (list->left->op == DEFAULT && list->right->op == CASE) std::swap(list->left, list->right);
  NODE *single = list->left;
  NODE *otherwise = list->right;
  if (single->op != CASE || otherwise->op != DEFAULT) return Outcome::NEXT;
  NODE *target = single->right;
  single->op = NE;
  set_type(single, INT);
  single->right = single->left;
  single->left = tree->left;
  otherwise->op = COMMA;
  set_type(otherwise, INT);
  otherwise->right = target;
  list->op = IF;
  set_type(list, INT);
  list->left = simplify_node(single);
  erase_node(tree);
  return finish(tree, list);
}

constexpr Rule switch_table[] = {
    {"switch (x) { case K: A; default: B }  ->  if (x != K) B else A", replace_single_case},
};

// ------------------------------------------------------------------------------------------------
// a , b

// (a , b)  ->  (effects of a , b), or b
Outcome discard_left(NODE *&tree) {
  // A comma's own left side was discarded when it was simplified: long lists are not walked again.
  if (tree->left->op == COMMA_OP) return Outcome::NEXT;
  const Occupant before = occupant(tree->left);
  tree->left = discard_value(tree->left);
  if (tree->left && tree->left->op == COMMA_OP) tree->left = simplify_node(tree->left);
  if (tree->left) return outcome_of_rewriting(tree->left, before);
  const TypeWord type = tree->type;
  NODE *value = tree->right;
  erase_node(tree);
  tree = keep_type(type, value);
  return Outcome::DONE;
}

// ((c , d) , b)  ->  ((c , effects of d) , b), or (c , b)
Outcome discard_middle(NODE *&tree) {
  NODE *inner = tree->left;
  if (inner->op != COMMA_OP) return Outcome::NEXT;
  const Occupant before = occupant(inner->right);
  inner->right = discard_value(inner->right);
  if (!inner->right) {
    tree->left = replace_by_left(inner);
    return Outcome::AGAIN;
  }
  if (inner->right->op != COMMA_OP) return outcome_of_rewriting(inner->right, before);
  tree->left = simplify_node(inner); // turns the list at its right
  return Outcome::REWRITTEN;
}

// Links of a list at the right of a comma that the list to its left is put in front of. Beyond it
// the lists stay nested, so that building one from the back costs a bounded number of steps a link.
constexpr int longest_turned_list = 256;

// (a , ((c , d) , e))  ->  (((a , c) , d) , e)
Outcome turn_list(NODE *&tree) {
  NODE *list = tree->right;
  if (list->op != COMMA_OP) return Outcome::NEXT;
  NODE *first = list;
  for (int links = 0; first->left->op == COMMA_OP; first = first->left)
    if (++links > longest_turned_list) return Outcome::NEXT;
  set_type(list, tree->type);
  list->depnum = tree->depnum;
  tree->right = first->left;
  set_type(tree, tree->right->type);
  first->left = tree;
  tree = list;
  return Outcome::DONE;
}

constexpr Rule comma_table[] = {
    {"(a , b)  ->  (effects of a , b) or b", discard_left},
    {"((c , d) , b)  ->  ((c , effects of d) , b) or (c , b)", discard_middle},
    {"(a , (c , d))  ->  ((a , c) , d)", turn_list},
};

} // namespace

const RuleSet assertion_rules{"assertion", assertion_table};
const RuleSet cbranch_rules{"conditional branch", cbranch_table};
const RuleSet if_rules{"if", if_table};
const RuleSet switch_rules{"switch", switch_table};
const RuleSet comma_rules{"comma", comma_table};

NODE *simplify_assert(NODE *node) {
  return apply_rules(assertion_rules, node);
}

NODE *simplify_cbranch(NODE *node) {
  return apply_rules(cbranch_rules, node);
}

NODE *simplify_if(NODE *node) {
  return apply_rules(if_rules, node);
}

NODE *simplify_switch(NODE *node) {
  return apply_rules(switch_rules, node);
}

NODE *simplify_comma(NODE *node) {
  return apply_rules(comma_rules, node);
}

} // namespace velkor
