#include "storage/statement_uses.h"

#include "core/questions.h"
#include "scalar/live_variables.h"
#include "storage/conflicts.h"

namespace velkor {
namespace {

void add_candidate(const NODE *node, Set set) {
  if (node->op == NAME && is_candidate(node->u.sym)) set_add(set, node->u.sym->count);
}

bool is_word_integer(TypeWord type) {
  return type == INT || type == UNSIGNED;
}

// *(p + i): i is an index. An assignment to p on the way is looked through: *(p = p + i).
void mark_indexed_variable(const NODE *address) {
  const bool steps_pointer = address->op == ASSIGN && address->left->op == NAME &&
                             address->right->left && address->right->left->op == NAME &&
                             address->right->left->u.sym == address->left->u.sym;
  if (steps_pointer) address = address->right;
  if (address->op != ADD && address->op != SUBTRACT) return;
  const NODE *index = nullptr;
  if (is_word_integer(address->left->type))
    index = address->left;
  else if (is_word_integer(address->right->type))
    index = address->right;
  if (!index) return;
  add_candidate(index->op == ASSIGN ? index->left : index, allocation.indexed_vars);
}

bool can_be_produced_again(const NODE *value) {
  if (value->op == IDENTITY) value = value->left;
  return is_constant_tree(value) || (value->op == NAME && value->u.sym->level == 1);
}

void check_reloadable(const NODE *assignment) {
  const SYM *sym = assignment->left->u.sym;
  if (is_candidate(sym) && set_has(allocation.reloadable, sym->count) &&
      !can_be_produced_again(assignment->right))
    set_remove(allocation.reloadable, sym->count);
}

void collect(const NODE *tree, Set uses, bool is_statement) {
  for (; tree; tree = tree->left, is_statement = false) {
    switch (tree->op) {
    case NAME: add_candidate(tree, uses); return;
    case DEREF: mark_indexed_variable(tree->left); break;
    case ASSIGN:
      if (tree->left->op != NAME) break;
      collect(tree->right, uses, false);
      check_reloadable(tree);
      // Inside of a statement the variable is also where its value is read from.
      if (!is_statement) add_candidate(tree->left, uses);
      return;
    case PCOMMA: // a list of statements
      collect(tree->right, uses, true);
      collect(tree->left, uses, true);
      return;
    case LOOP:
    case INITLOOP: collect(tree->right, uses, false); return;
    default: break;
    }
    if (tree->right) collect(tree->right, uses, false);
  }
}

bool assigns(const NODE *node) {
  return node->op == ASSIGN || node->op == INCREMENT || node->op == DECREMENT ||
         asgop_base(node->op) != ILLOP;
}

} // namespace

void collect_uses(const NODE *statement, Set uses) {
  collect(statement, uses, true);
}

bool has_candidate_activity(const NODE *tree) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case NAME: return is_candidate(tree->u.sym);
    case DEREF:
    case ARROW:
    case CALL:
    case UCALL:
    case STCALL:
    case USTCALL:
    case XCALL:
    case UXCALL:
    case LOOP:
    case ENDLOOP:
    case IF:
    case INITLOOP:
    case PCOMMA:
    case EQ:
    case NE:
    case LE:
    case LT:
    case GE:
    case GT: return true;
    case MEMBER:
    case SWITCH: break;
    default: // a comma as well: its right operand may be an argument
      if (tree->right && has_candidate_activity(tree->right)) return true;
    }
  return false;
}

void mark_tested_variable(const NODE *tree) {
  if (assigns(tree)) add_candidate(tree->left, allocation.tested_vars);
}

void mark_pointer_variables(const NODE *address) {
  for (; address && is_derived(address->type); address = address->left)
    switch (address->op) {
    case NAME: add_candidate(address, allocation.pointer_vars); return;
    case ADD:
    case ASSIGN: mark_pointer_variables(address->right); break;
    case SUBTRACT:
    case ASG_ADD:
    case ASG_SUBTRACT:
    case INCREMENT:
    case DECREMENT:
    case PCONV: break;
    default: return;
    }
}

const NODE *parameter_value(const NODE *tree) {
  while (tree->op == SCONV || tree->op == PCONV)
    tree = tree->left;
  return tree->op == NAME && tree->u.sym->level == 1 ? tree : nullptr;
}

} // namespace velkor
