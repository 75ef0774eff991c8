#include "storage/branch_fold.h"

#include "core/nodes.h"
#include "core/questions.h"
#include "core/zones.h"
#include "storage/statement_uses.h"

namespace velkor {
namespace {

// The place in the IF where the tested variable stands, or none.
NODE **tested_variable(NODE *branch) {
  NODE *condition = branch->left;
  if (condition->op == NAME) return &branch->left;
  if (!op_boolean(condition->op) || !condition->right || condition->right->op != ICON)
    return nullptr;
  return condition->left->op == NAME ? &condition->left : nullptr;
}

bool assigns_for_test(const NODE *tree, NODE *variable) {
  if (tree->op != ASSIGN && asgop_base(tree->op) == ILLOP) return false;
  if (tree->left->op != NAME || tree->left->u.sym != variable->u.sym) return false;
  if (is_volatile_node(refresh_qual(tree->left)) || is_volatile_node(refresh_qual(variable)))
    return false;
  // The condition compares as its operands' types tell: the assignment must bring the same type.
  if (tree->type != variable->type) return false;
  // The copy of a parameter to its home stays a statement of its own: the prologue.
  return tree->op != ASSIGN || !parameter_value(tree->right);
}

} // namespace

void fold_assignment_into_branch(BB *block) {
  LIST *before = block->trees;
  if (!before || !before->next) return;
  while (before->next->next)
    before = before->next;
  LIST *last = before->next;
  if (last->item->op != IF) return;
  NODE **variable = tested_variable(last->item);
  if (!variable || !assigns_for_test(before->item, *variable)) return;
  erase_node(*variable);
  *variable = before->item;
  before->item = last->item;
  before->next = nullptr;
  give_list(last);
}

} // namespace velkor
