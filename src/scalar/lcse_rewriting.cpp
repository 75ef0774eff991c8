// Marks become temporaries: the backward sweep.
//
//     a = x * y + 1;                       C$1 = x * y;
//     b = CSE_DUPE(x * y) / 2;      ->     a = C$1 + 1;
//                                          b = C$1 / 2;
//
// A CSE_DUPE that pays becomes the name of a temporary, and the node that it refers to a CSE_ORIG.
// When the sweep comes to that one, it puts the assignment of the temporary ahead of the statement.
// Within a statement the order is the numbering's in reverse, so whatever is put ahead of a
// statement later runs earlier, and finds nothing in front of it that it needs.
#include "cfg/graph.h"
#include "cfg/transfers.h"
#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/target.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"
#include "simplify/simplify.h"

#include <utility>

namespace velkor {
namespace {

// The statement that is being rewritten. Its list runs against the order of execution, so what runs
// ahead of it hangs behind its cell.
struct Position {
  LIST *cell;
  LIST *last; // behind which the next new statement goes
};

NODE *lcse_rewrite_tree(NODE *tree, Position &at);

void put_ahead(NODE *statement, Position &at) {
  at.last->next = list_cons(statement, at.last->next, at.cell->line, at.cell->line2);
  at.last = at.last->next;
}

// ------------------------------------------------------------------------------------------------
// Undoing marks

void undo_dupe(NODE *node) {
  NODE *expression = node->right;
  *node = *expression;
  erase_node(expression);
}

// The first occurrences stay as they are.
void undo_all_dupes(NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == LABELDEF) return;
    while (tree->op == CSE_DUPE)
      undo_dupe(tree);
    if (tree->right) undo_all_dupes(tree->right);
  }
}

// ------------------------------------------------------------------------------------------------
// Marks

bool needs_no_conversion(const NODE *node) {
  return (node->op == PCONV || node->op == ISP2CHAR || node->op == SCONV) &&
         compatible_types(node, skip_marks(node->left));
}

// first  ->  CSE_ORIG of the name of a new temporary and of first's expression
void make_original(NODE *first) {
  SYM *temporary = make_temp('C', -1, first->depnum, first->type);
  temporary->key = 0;
  temporary->fcp_flag = 0;
  NODE *expression = copy_node(first);
  first->op = CSE_ORIG;
  first->u.sym = nullptr;
  first->aux.text = nullptr;
  first->left = make_name(temporary);
  first->left->nsize = first->nsize;
  first->right = expression;
}

void report_assignment(const char *message, NODE *target, NODE *value) {
  if (!state.debug_file) return;
  NODE *assignment = make_node(ASSIGN, target, value, target->type);
  debug_print(message, tree2infix(assignment));
  erase_node(assignment);
}

// The node's own operands are gone.
NODE *name_of_temporary(NODE *node, SYM *temporary) {
  const TypeWord type = node->type;
  const std::int32_t number = node->nsize;
  NODE *name = make_name(temporary);
  name->nsize = number;
  erase_node(node);
  if (name->type == type || (type == ENUM && name->type == INT)) return name;
  NODE *conversion = make_node(is_pointer(type) ? PCONV : SCONV, name, nullptr, type);
  conversion->nsize = number;
  return conversion;
}

NODE *use_temporary(NODE *node, Position &at) {
  NODE *expression = node->right;
  NODE *first = node->left;
  undo_all_dupes(expression);
  erase_tree(lcse_rewrite_tree(expression, at));
  if (first->op != CSE_ORIG) make_original(first);
  report_assignment("\nRedundant CSE eliminated:\n %s\n", first->left, first->right);
  return name_of_temporary(node, first->left->u.sym);
}

bool is_temporary(const NODE *node) {
  return node->op == NAME && node->u.sym->name[0] == 'C' && node->u.sym->name[1] == '$';
}

// Has the first occurrence got its temporary already? Then the temporary's statement runs behind
// the one at hand: operands of a sum may have changed their places since they were numbered.
bool comes_too_late(const NODE *first) {
  return is_temporary(first) || (first->op == ASSIGN && is_temporary(first->left));
}

NODE *rewrite_dupe(NODE *node, Position &at) {
  while (node->op == CSE_DUPE) {
    const NODE *expression = node->right;
    if (comes_too_late(node->left))
      undo_all_dupes(node);
    else if (!is_scalar(expression->type) || needs_no_conversion(expression) ||
             expression->op == PMCONV)
      undo_dupe(node);
    else if (!cse_worthwhile(expression))
      undo_all_dupes(node);
    else
      return use_temporary(node, at);
  }
  return lcse_rewrite_tree(node, at);
}

NODE *rewrite_original(NODE *node, Position &at) {
  NODE *target = node->left;
  NODE *expression = node->right;
  const std::int32_t number = node->nsize;
  // Its own number: the assignment must not look redundant when its turn comes.
  target->nsize = new_number();
  *node = *target;
  node->nsize = number;
  put_ahead(nullptr, at);
  LIST *cell = at.last;
  expression = lcse_rewrite_tree(expression, at);
  cell->item = make_assign(target, expression);
  if (state.debug_file) debug_print("\nOriginal  CSE defined:\n %s\n", tree2infix(cell->item));
  return node;
}

// ------------------------------------------------------------------------------------------------
// Values that are known

bool have_same_number(const NODE *a, const NODE *b) {
  return a->nsize != 0 && a->nsize == b->nsize;
}

// x == x is no matter of course for a floating x.
bool compares_equal_values(const NODE *node) {
  return have_same_number(node->left, node->right) && !is_floating(node->left->type) &&
         !is_floating(node->right->type);
}

NODE *put_known_value(NODE *node, std::int32_t value) {
  NODE *icon = make_icon(value, node->type);
  number_icon(icon);
  if (!has_side_effects(node)) {
    erase_tree(node);
    return icon;
  }
  NODE *list = make_node(COMMA_OP, node, icon, node->type);
  list->nsize = icon->nsize;
  return list;
}

bool holds_for_equal_values(Opcode relation) {
  switch (relation) {
  case EQ:
  case LE:
  case GE:
  case ULE:
  case UGE: return true;
  default: return false;
  }
}

// ------------------------------------------------------------------------------------------------
// Addresses

bool is_dupe_of(const NODE *node, Opcode op) {
  return node->op == CSE_DUPE && node->right->op == op;
}

// The machine scales an index that is in a register for nothing: a temporary for the product would
// take a register more.
void keep_scaling(NODE *access, NODE *sum) {
  if ((sum->op != ADD && sum->op != SUBTRACT) || !is_dupe_of(sum->right, PMCONV)) return;
  if (!held_in_register(sum->right->right->left) && !held_in_register(sum->left)) return;
  undo_dupe(sum->right);
  if (access->left->op == CSE_DUPE) undo_dupe(access->left);
}

// *(x + K) stays one access where the machine can add K.
void keep_offset(NODE *access) {
  if (!is_dupe_of(access->left, ADD)) return;
  const NODE *sum = access->left->right;
  if (sum->right->op == ICON && offset_fits(sum->right->u.lval, access->type, false))
    undo_dupe(access->left);
}

void protect_address(NODE *access) {
  if (!is_scalar(access->type)) return;
  NODE *sum = access->left->op == CSE_DUPE ? access->left->right : access->left;
  if (sum->op == ADD && is_integer(sum->left->type)) std::swap(sum->left, sum->right);
  keep_scaling(access, sum);
  keep_offset(access);
}

// &x + K with K out of reach: the address of x is no less work than the sum.
void keep_far_offset(NODE *sum) {
  if (sum->right->op != ICON || !is_dupe_of(sum->left, ADDRESS) || !is_pointer(sum->type)) return;
  if (sum->left->right->left->op == NAME &&
      !offset_fits(sum->right->u.lval, underived(sum->type), false))
    undo_dupe(sum->left);
}

// ------------------------------------------------------------------------------------------------
// Nodes

// Of PMCONV the simplifier would make a product again.
NODE *simplify_rewritten(NODE *node) {
  if (node->op == PMCONV) return node;
  const std::int32_t number = node->nsize;
  node = simplify_node(node);
  node->nsize = number;
  return node;
}

void rewrite_operands(NODE *node, Position &at) {
  if (node->left) node->left = lcse_rewrite_tree(node->left, at);
  if (node->right) node->right = lcse_rewrite_tree(node->right, at);
}

NODE *rewrite_other(NODE *node, Position &at) {
  rewrite_operands(node, at);
  return simplify_rewritten(node);
}

NODE *rewrite_relation(NODE *node, Position &at) {
  rewrite_operands(node, at);
  if (compares_equal_values(node)) return put_known_value(node, holds_for_equal_values(node->op));
  return simplify_rewritten(node);
}

NODE *rewrite_difference(NODE *node, Position &at) {
  rewrite_operands(node, at);
  if (node->type == INT && compares_equal_values(node)) return put_known_value(node, 0);
  return simplify_rewritten(node);
}

NODE *rewrite_test(NODE *node, Position &at) {
  node->left = lcse_rewrite_tree(node->left, at);
  node = simplify_node(node);
  if (node->op != IF && node->op != SWITCH) return node;
  NODE *condition = node->left;
  if (condition->op == COMMA_OP) {
    // Right ahead of the test: it may need what has been put there already.
    at.cell->next = list_cons(condition->left, at.cell->next, at.cell->line, at.cell->line2);
    if (at.last == at.cell) at.last = at.cell->next;
    node->left = condition->right;
    erase_node(condition);
  }
  if (node->left->op == ICON) local_cse.lcse_cfg_changed = true;
  return node;
}

NODE *rewrite_reference(NODE *node, Position &at) {
  const NODE *object = skip_marks(node->left);
  while (object->op == MEMBER)
    object = skip_marks(object->left);
  if (object->op == NAME) undo_all_dupes(node->left);
  return rewrite_other(node, at);
}

bool names_function(const NODE *callee) {
  return callee->op == ADDRESS && callee->left->op == NAME;
}

NODE *rewrite_call(NODE *node, Position &at) {
  if (node->left && !(node->op != XCALL && names_function(node->left)))
    node->left = lcse_rewrite_tree(node->left, at);
  if (node->right) node->right = lcse_rewrite_tree(node->right, at);
  return node;
}

// ------------------------------------------------------------------------------------------------
// Assignments

// (lvalue = e), whose lvalue is loaded later  ->  C$1 = (lvalue = e)
NODE *keep_stored_value(NODE *assignment, Position &at) {
  NODE *original = assignment->left;
  NODE *target = original->left;
  assignment->left = original->right;
  target->nsize = new_number();
  original->op = ASSIGN;
  original->type = assignment->type;
  original->depnum = target->depnum;
  original->right = assignment;
  if (state.debug_file) debug_print("\nOriginal  CSE defined:\n %s\n", tree2infix(original));
  original->right = lcse_rewrite_tree(assignment, at);
  return original;
}

bool is_global_name(const NODE *node) {
  return node->op == NAME && node->u.sym->level == 0;
}

// x = e, where x holds the value of e already
NODE *drop_assignment(NODE *node) {
  if (state.debug_file)
    debug_print("\n\t(%d,%d) REDUNDANT ASSIGNMENT ELIMINATED IN LCSE:\n%s\n", local_cse.line2,
                local_cse.line, tree2infix(node));
  NODE *value = node->left;
  if (is_global_name(node->right) || has_side_effects(node->right)) {
    value = node->right;
    erase_tree(node->left);
  } else {
    erase_tree(node->right);
  }
  const std::int32_t number = node->nsize;
  const TypeWord type = node->type;
  erase_node(node);
  value = convert_tree(type, value);
  value->nsize = number;
  return value;
}

// Can the variable, as it is ahead of the assignment, stand for the operand of the new value?
bool holds_operand(const NODE *target, NODE *operand) {
  if (!operand || !have_same_number(target, operand) || operand->type != target->type ||
      has_side_effects(operand))
    return false;
  const SYM *sym = target->u.sym;
  if (operand->op == NAME && operand->u.sym == sym) return false; // it does
  return sym->sclass == C_AUTO || (operand->op == NAME && operand->u.sym->sclass != C_AUTO);
}

NODE *replace_by_target(NODE *operand, const NODE *target) {
  erase_tree(operand);
  return copy_node(target);
}

// z = w + 1, where w and z are the same value so far  ->  z = z + 1. Ahead of the simplifier, which
// may change an operand in place, so that its number is not that of its value any more.
void reuse_target(const NODE *target, NODE *value) {
  if (op_effect(value->op) != PURE || value->op == ADDRESS || value->op == ARGREF) return;
  if (holds_operand(target, value->left)) value->left = replace_by_target(value->left, target);
  if (!holds_operand(target, value->right)) return;
  value->right = replace_by_target(value->right, target);
  const bool target_is_first = value->left->op == NAME && value->left->u.sym == target->u.sym;
  if (is_commutative(value->op) && !target_is_first) std::swap(value->left, value->right);
}

bool is_leaf_or_mark(const NODE *node) {
  return !node->left || node->op == CSE_DUPE || node->op == CSE_ORIG;
}

// Operators that rewrite_other serves, and so have no rule of their own.
bool has_plain_operands(const NODE *node) {
  switch (node->op) {
  case DEREF:
  case ARGREF:
  case COMMA_OP:
  case ADDRESS: return false;
  default:
    return !is_leaf_or_mark(node) && op_effect(node->op) == PURE &&
           !(node->op >= EQ && node->op <= UGT);
  }
}

NODE *rewrite_new_value(NODE *assignment, Position &at) {
  const NODE *target = assignment->left;
  NODE *value = assignment->right;
  // The assignment goes away, and makes no temporary on its way.
  if (have_same_number(target, value)) undo_all_dupes(value);
  if (!has_plain_operands(value) || have_same_number(target, value))
    return lcse_rewrite_tree(value, at);
  if (value->op == ADD) keep_far_offset(value);
  rewrite_operands(value, at);
  if (value->op == SUBTRACT && value->type == INT && compares_equal_values(value))
    return put_known_value(value, 0);
  reuse_target(target, value);
  return simplify_rewritten(value);
}

NODE *rewrite_assignment(NODE *node, Position &at) {
  if (node->left->op == CSE_ORIG) return keep_stored_value(node, at);
  if (node->op != ASSIGN) return rewrite_other(node, at);
  node->left = lcse_rewrite_tree(node->left, at);
  if (node->left->op != NAME || node->left->nsize == 0) {
    node->right = lcse_rewrite_tree(node->right, at);
    return simplify_rewritten(node);
  }
  node->right = rewrite_new_value(node, at);
  return have_same_number(node->left, node->right) ? drop_assignment(node) : node;
}

NODE *lcse_rewrite_tree(NODE *tree, Position &at) {
  switch (tree->op) {
  case NAME:
  case ICON:
  case SCON:
  case FCON:
  case LABELREF:
  case BRANCH:
  case UXCALL:
  case URETURN:
  case DDNODE:
  case CASE:
  case DEFAULT:
  case LABELDEF: return tree;
  case CSE_DUPE: return rewrite_dupe(tree, at);
  case CSE_ORIG: return rewrite_original(tree, at);
  case ASSIGN:
  case ASG_ADD:
  case ASG_SUBTRACT:
  case ASG_MULTIPLY:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR:
  case ASG_DIVIDE:
  case ASG_REMAINDER:
  case ASG_SHIFT_LEFT:
  case ASG_SHIFT_RIGHT:
  case INCREMENT:
  case DECREMENT: return rewrite_assignment(tree, at);
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT:
  case ULE:
  case ULT:
  case UGE:
  case UGT: return rewrite_relation(tree, at);
  case SUBTRACT: return rewrite_difference(tree, at);
  case DEREF: protect_address(tree); break;
  case ADD: keep_far_offset(tree); break;
  case IF:
  case SWITCH: return rewrite_test(tree, at);
  case RETURN:
    if (tree->right) tree->right = lcse_rewrite_tree(tree->right, at);
    return tree;
  case COMMA_OP:
    tree->right = lcse_rewrite_tree(tree->right, at);
    tree->left = lcse_rewrite_tree(tree->left, at);
    return simplify_rewritten(tree);
  case ARGREF: return rewrite_reference(tree, at);
  case CALL:
  case STCALL:
  case UCALL:
  case USTCALL:
  case XCALL:
  case ICALL: return rewrite_call(tree, at);
  default: break;
  }
  return rewrite_other(tree, at);
}

// ------------------------------------------------------------------------------------------------
// Blocks

// x = C$1 with C$1 = e right ahead  ->  x = C$1 = e
void chain_with_statement_ahead(LIST *cell) {
  LIST *ahead = cell->next;
  NODE *statement = cell->item;
  if (!ahead || statement->op != ASSIGN || ahead->item->op != ASSIGN) return;
  const NODE *name = statement->right;
  if (name->op != NAME || name->u.sym->fcp_flag || !trees_equal(name, ahead->item->left, false) ||
      is_param_copy(ahead->item) || tree_uses_sym(statement->left, name))
    return;
  erase_node(statement->right);
  statement->right = ahead->item;
  cell->next = ahead->next;
  give_list(ahead);
}

// todo runs against the order of execution. Returns the statements that are still to be done, those
// that went ahead of this one first.
LIST *rewrite_statement(LIST *cell, LIST *todo) {
  local_cse.line = cell->line;
  local_cse.line2 = cell->line2;
  cell->next = nullptr;
  const bool is_parameter_copy = !todo && is_param_copy(cell->item);
  if (is_parameter_copy) return todo;
  Position at{cell, cell};
  cell->item = lcse_rewrite_tree(cell->item, at);
  chain_with_statement_ahead(cell);
  LIST *moved = std::exchange(cell->next, nullptr);
  if (!moved) return todo;
  LIST *last = moved;
  while (last->next)
    last = last->next;
  last->next = todo;
  return moved;
}

void rewrite_block(BB *block) {
  LIST *todo = list_reverse_onto(block->trees, nullptr);
  LIST *done = nullptr;
  while (todo) {
    LIST *cell = todo;
    todo = rewrite_statement(cell, cell->next);
    cell->item = discard_value(cell->item);
    if (!cell->item) {
      give_list(cell);
      continue;
    }
    if (!done) refresh_successors(block, cell->item);
    cell->next = done;
    done = cell;
  }
  block->trees = done;
}

} // namespace

bool held_in_register(const NODE *tree) {
  switch (tree->op) {
  case NAME: {
    const SYM *sym = tree->u.sym;
    const bool is_local = sym->sclass == C_AUTO || sym->sclass == C_REG || is_register_symbol(sym);
    return is_scalar(sym->stype) && !sym->fcp_flag && is_local && !cse_worthwhile(tree);
  }
  case ASSIGN: return tree->left->op == NAME && held_in_register(tree->left);
  case CSE_DUPE: return tree->left->op == CSE_ORIG;
  case CSE_ORIG: return true;
  default: return false;
  }
}

void lcse_rewrite_blocks() {
  if (!state.first_bb) return;
  for (BB *block = state.first_bb->prev;; block = block->prev) {
    rewrite_block(block);
    if (block == state.first_bb) break;
  }
}

} // namespace velkor
