#include "scalar/unnest_assignments.h"

#include "core/nodes.h"
#include "scalar/lcse.h"
#include "simplify/patterns.h"

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Which variables

bool is_register_symbol(const SYM *sym) {
  return (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) != 0;
}

// Calls, and stores whose place is not known by name.
bool holds_hidden_stores(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (op_effect(tree->op) == OTHER && tree->op != COMMA_OP && tree->op != PCOMMA) return true;
    if (op_effect(tree->op) == ASSIGNS && tree->left->op != NAME) return true;
    if (tree->right && holds_hidden_stores(tree->right)) return true;
  }
  return false;
}

// May the assignment to this variable change places with the rest of the statement? A call or a
// store through a pointer may touch a variable in memory in between: of buf[pos++] = next(), where
// next changes pos, no order of evaluation takes the old pos and keeps the later step.
bool can_move(const NODE *target, bool has_hidden_stores) {
  if (target->op != NAME || is_volatile_node(target)) return false;
  const SYM *sym = target->u.sym;
  if (is_volatile_symbol(sym)) return false;
  if (sym->sclass == C_AUTO && !sym->fcp_flag) return true;
  if (sym->level != 0 && is_register_symbol(sym)) return true;
  if (!is_register_symbol(sym) && !cse_worthwhile(target)) return false;
  return !has_hidden_stores;
}

// What the variable is to the expression that the assignment stood in.
NODE *value_of_target(const NODE *assignment) {
  return make_conversion(assignment->type, copy_node(assignment->left));
}

// ------------------------------------------------------------------------------------------------
// Assignments, in front

bool is_test_against_zero(const NODE *node) {
  switch (node->op) {
  case EQ:
  case NE:
  case LT:
  case GE: return is_icon_of(node->right, 0);
  default: return false;
  }
}

bool is_mere_address_conversion(const NODE *node) {
  return node->op == ACONV && (node->type == node->left->type ||
                               (is_pointer(node->type) && is_pointer(node->left->type)));
}

// Statements ahead of the one at hand: the last one first.
struct Extraction {
  LIST *cell;             // the statement
  bool has_hidden_stores; // as it stood at first
  LIST *ahead;            // those in front of it, to be walked themselves
  void put_in_front(NODE *statement) {
    ahead = list_cons(statement, ahead, cell->line, cell->line2);
  }
  NODE *walk(NODE *tree, bool nested);
};

// nested: the tree is an operand, and an assignment in it would not be the first that a reader of
// the statement sees. Returns what stands in the tree's place.
NODE *Extraction::walk(NODE *tree, bool nested) {
  while (tree->op == COMMA_OP) {
    NODE *rest = tree->right;
    put_in_front(tree->left);
    erase_node(tree);
    tree = rest;
  }
  if (is_plain_or_compound_assignment(tree->op)) {
    if (nested && can_move(tree->left, has_hidden_stores)) {
      NODE *value = value_of_target(tree);
      put_in_front(tree);
      return value;
    }
    tree->right = walk(tree->right, false);
    tree->left = walk(tree->left, false);
    return tree;
  }
  switch (tree->op) {
  case LOOP:
  case ENDLOOP:
  case NASSERT: // never evaluated: nothing in it may become a statement
    return tree;
  case INITLOOP: tree->right = walk(tree->right, nested); return tree;
  case PCOMMA:
    tree->right = walk(tree->right, false);
    tree->left = walk(tree->left, false);
    return tree;
  case IF:
  case ASSERT:
  case SWITCH:
  case CONDITIONAL:
  case LOGICAL_AND:
  case LOGICAL_OR: tree->left = walk(tree->left, false); return tree;
  case MEMBER:
  case ARROW: tree->left = walk(tree->left, true); return tree; // the right side names the member
  default:
    if (is_test_against_zero(tree) || is_mere_address_conversion(tree)) {
      tree->left = walk(tree->left, false);
      return tree;
    }
    if (tree->right) tree->right = walk(tree->right, true);
    if (tree->left) tree->left = walk(tree->left, true);
    return tree;
  }
}

void extract_assignments(BB *block) {
  LIST *pending = list_reverse_onto(block->trees, nullptr);
  LIST *done = nullptr;
  while (LIST *cell = pending) {
    Extraction extraction{cell, holds_hidden_stores(cell->item), cell->next};
    cell->item = extraction.walk(cell->item, false);
    pending = extraction.ahead;
    cell->next = done;
    done = cell;
  }
  block->trees = done;
}

// ------------------------------------------------------------------------------------------------
// Steps, behind

struct StepExtraction {
  LIST *cell; // the statement
  bool has_hidden_stores;
  NODE *walk(NODE *tree, bool nested);
  NODE *put_behind(NODE *step);
};

NODE *StepExtraction::put_behind(NODE *step) {
  NODE *value = value_of_target(step);
  step->op = step->op == INCREMENT ? ASG_ADD : ASG_SUBTRACT;
  cell->next = list_cons(simplify_tree(step), cell->next, cell->line, cell->line2);
  return value;
}

NODE *StepExtraction::walk(NODE *tree, bool nested) {
  switch (tree->op) {
  case RETURN:
  case SWITCH:
  case CONDITIONAL:
  case LOGICAL_AND:
  case LOGICAL_OR:
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case LOOP:
  case ENDLOOP:
  case XCALL:
  case UXCALL:
  case NASSERT:
  case IF: return tree;
  case INCREMENT:
  case DECREMENT:
    if (nested && tree->right->op == ICON && can_move(tree->left, has_hidden_stores))
      return put_behind(tree);
    break;
  case MEMBER:
  case ARROW: tree->left = walk(tree->left, true); return tree;
  default: break;
  }
  const bool operands_are_nested = op_effect(tree->op) == PURE;
  if (tree->right) tree->right = walk(tree->right, operands_are_nested);
  if (tree->left) tree->left = walk(tree->left, operands_are_nested);
  return tree;
}

// The last statement is the block's transfer: nothing goes behind it.
void extract_steps(BB *block) {
  for (LIST *cell = block->trees; cell && cell->next; cell = cell->next) {
    StepExtraction extraction{cell, holds_hidden_stores(cell->item)};
    cell->item = extraction.walk(cell->item, false);
  }
}

} // namespace

void unnest_block(BB *block) {
  extract_assignments(block);
  extract_steps(block);
}

} // namespace velkor
