// Value numbers: the forward sweep.
//
//     a = x * y;        x 1, y 2, x * y 3; a holds 3
//     b = y * x + 1;    y * x has number 3 as well: it is redundant, and a still holds it
#include "cfg/graph.h"
#include "core/compare.h"
#include "core/conversions.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/target.h"
#include "scalar/extended_blocks.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"
#include "simplify/compound.h"

#include <utility>

namespace velkor {
namespace {

void number_tree(NODE *node);

void number_operands(NODE *node) {
  if (node->right) number_tree(node->right);
  if (node->left) number_tree(node->left);
}

// ------------------------------------------------------------------------------------------------
// Uses

// A use of a memory variable, or of a temporary, goes back to the local that holds the same value.
void go_back_to_copy(NODE *node) {
  const NODE *holder = other_holder(node);
  if (!holder) return;
  const std::int32_t number = node->nsize;
  debug_print("\n\t======== (%d,%d) Undoing CP: '%s' ==> '%s'\n", local_cse.line2, local_cse.line,
              node->u.sym->name, holder->u.sym->name);
  *node = *holder;
  node->nsize = number;
  local_cse.lcse_copies_undone = true;
}

bool lives_in_memory(const SYM *sym) {
  if (is_register_symbol(sym)) return false;
  switch (sym->sclass) {
  case C_EXT:
  case C_STAT:
  case C_EXTDEF:
  case C_USTATIC: return true;
  default: return false;
  }
}

void number_use(NODE *node) {
  SYM *sym = node->u.sym;
  if (is_volatile_symbol(sym) || is_volatile_node(node)) {
    node->nsize = 0;
    set_number(sym, 0);
    return;
  }
  if (number_of(sym) == 0) {
    node->nsize = ensure_number(sym);
  } else {
    node->nsize = number_of(sym);
    if (!is_register_symbol(sym)) go_back_to_copy(node);
  }
  if (lives_in_memory(node->u.sym)) number_memory_name(node);
}

// The objects of . chains have no number of their own.
NODE *clear_members(NODE *object) {
  for (; object->op == MEMBER; object = object->left)
    object->nsize = 0;
  return object;
}

void number_address_operator(NODE *node) {
  NODE *object = clear_members(node->left);
  object->nsize = 0;
  number_operands(object);
  if (object != node->left || object->op != NAME) node->left->nsize = 0;
  number_address(node);
}

// (&x + i) + K  ->  (&x + K) + i, where an access cannot carry K
void join_constant_to_address(NODE *access) {
  NODE *outer = access->left;
  if (outer->op != ADD || outer->right->op != ICON ||
      offset_fits(outer->right->u.lval, access->type, false))
    return;
  NODE *inner = outer->left;
  if (inner->op == ADD && inner->type == outer->type && inner->left->op == ADDRESS &&
      inner->left->left->op == NAME)
    std::swap(outer->right, inner->right);
}

void number_access(NODE *access) {
  if (access->right) number_tree(access->right);
  if (access->op == DEREF) join_constant_to_address(access);
  number_tree(access->left);
  const TypeWord type = access->type;
  number_by_load(access);
  if (access->op == DEREF) use_nearby_address(access->left, type);
}

// The operand is an object that the callee gets by its address, so no other may stand for it.
void number_reference(NODE *node) {
  NODE *object = clear_members(node->left);
  if (object->op == NAME)
    object->nsize = is_volatile_symbol(object->u.sym) ? 0 : ensure_number(object->u.sym);
  else
    number_operands(object);
  number_argref(node);
}

// ------------------------------------------------------------------------------------------------
// Assignments

bool is_constant_value(const NODE *value) {
  return value->op == ICON || value->op == FCON || (value->op == PCONV && value->left->op == ICON);
}

// A constant stored to memory has to be put into a register: it is a value like any other.
void hold_stored_constant(NODE *assignment) {
  const NODE *target = assignment->left;
  while (target->op == MEMBER)
    target = target->left;
  const bool is_memory =
      target->op == DEREF || target->op == ARROW ||
      (target->op == NAME && target->u.sym->sclass == C_AUTO && target->u.sym->fcp_flag);
  if (is_memory && is_constant_value(assignment->right))
    assignment->right = make_node(IDENTITY, assignment->right, nullptr, assignment->right->type);
}

// Does every value of the one type stay what it is in the other?
bool keeps_values(TypeWord from, TypeWord to) {
  const auto plain = [](TypeWord type) { return type == ENUM ? TypeWord{INT} : type; };
  from = plain(from);
  to = plain(to);
  if (from == to) return true;
  if (!is_integer(from) || !is_integer(to)) return false;
  if (type_width(from) == type_width(to))
    return is_unsigned_integer(from) == is_unsigned_integer(to);
  return type_width(from) < type_width(to) &&
         (is_unsigned_integer(from) || !is_unsigned_integer(to));
}

// The store converts as it is; what is numbered is the value before or behind.
void settle_conversion(NODE *assignment) {
  NODE *value = assignment->right;
  const TypeWord type = assignment->type;
  if (value->op == SCONV && value->type == type && keeps_values(value->left->type, type)) {
    assignment->right = value->left;
    erase_node(value);
    value = assignment->right;
  }
  if (!is_derived(type) && is_scalar(type) && is_scalar(value->type) &&
      value_width(type) < value_width(value->type))
    assignment->right = convert_tree(type, value);
}

bool is_bit_operation(Opcode op) {
  return op == BIT_AND || op == BIT_OR || op == BIT_XOR;
}

// x = x & y keeps reading x, which the machine updates in place.
bool updates_bits_of_local(const NODE *assignment) {
  const NODE *target = assignment->left;
  const NODE *value = assignment->right;
  return is_bit_operation(value->op) && target->op == NAME && target->u.sym->level == 2 &&
         !target->u.sym->fcp_flag && !lives_in_memory(target->u.sym) && value->left->op == NAME &&
         value->left->type == target->type && trees_equal(value->left, target, false);
}

void number_value(NODE *assignment) {
  NODE *value = assignment->right;
  if (!updates_bits_of_local(assignment)) return number_tree(value);
  number_operands(value);
  number_expression(value);
  if (is_bit_operation(value->op) && value->left->op == NAME) {
    const std::int32_t number = value->left->nsize;
    *value->left = *assignment->left;
    value->left->nsize = number;
  }
}

// The number that the variable holds behind the assignment.
std::int32_t assigned_number(const NODE *assignment) {
  const NODE *value = assignment->right;
  const TypeWord type = assignment->type;
  if (!is_scalar(type) || is_bit_field_access(assignment->left)) return 0;
  if (type == value->type) return value->nsize;
  const bool promote_alike = promote_type(type) == promote_type(value->type);
  return promote_alike && keeps_values(value->type, type) ? value->nsize : 0;
}

const NODE *skip_conversions(const NODE *value) {
  for (;;) {
    value = skip_marks(value);
    if (value->op != PCONV && value->op != SCONV) return value;
    value = value->left;
  }
}

bool is_copy_to_remember(const NODE *assignment) {
  const SYM *sym = assignment->left->u.sym;
  if (assignment->op != ASSIGN || assignment->nsize == 0) return false;
  if (sym->sclass != C_AUTO && !is_register_symbol(sym)) return false;
  const NODE *value = skip_conversions(assignment->right);
  if (value->op == NAME && value->u.sym->level == 1) return false;
  return !has_side_effects(assignment->right);
}

void store_to_name(NODE *assignment) {
  NODE *target = assignment->left;
  SYM *sym = target->u.sym;
  if (is_volatile_symbol(sym) || is_volatile_node(target)) {
    target->nsize = 0;
    assignment->nsize = 0;
    kill_store(target);
    return;
  }
  target->nsize = ensure_number(sym);
  if (target->nsize == assignment->right->nsize) return; // the rewriting takes it away
  kill_store(target);
  set_number(sym, assignment->nsize);
  if (is_copy_to_remember(assignment)) local_cse.pending_copies.push_back(assignment);
  if (cse_worthwhile(target)) {
    enter_stored_name(target);
    assignment->nsize = target->nsize;
  }
}

// s.m, (*p).m, p->s.m: the numbers within, without one for the place.
void store_to_member(NODE *target) {
  NODE *object = clear_members(target);
  object->nsize = 0;
  if (object->op != NAME) number_tree(object->left);
  kill_store(target);
}

void number_target_address(NODE *target) {
  if (target->right) number_tree(target->right);
  if (target->op == DEREF) join_constant_to_address(target);
  number_tree(target->left);
  if (target->op == DEREF) use_nearby_address(target->left, target->type);
}

bool is_assignable_place(const NODE *target) {
  return target->op == DEREF || target->op == ARROW;
}

void number_assignment(NODE *node) {
  hold_stored_constant(node);
  settle_conversion(node);
  number_value(node);
  node->nsize = assigned_number(node);
  NODE *target = node->left;
  if (target->op == NAME) {
    store_to_name(node);
  } else if (is_assignable_place(target)) {
    number_target_address(target);
    kill_store(target);
    if (is_bit_field_access(target) || node->op == ARASG)
      target->nsize = 0;
    else
      enter_stored_place(target);
  } else if (target->op == MEMBER) {
    store_to_member(target);
  } else {
    number_tree(target);
    kill_everything();
  }
}

// ------------------------------------------------------------------------------------------------
// Updates

void update_name(NODE *node) {
  NODE *target = node->left;
  SYM *sym = target->u.sym;
  kill_store(target);
  if (is_volatile_symbol(sym) || is_volatile_node(target)) {
    target->nsize = 0;
    node->nsize = 0;
    return;
  }
  set_number(sym, new_number());
  target->nsize = new_number();
  node->nsize = new_number();
  if (asgop_base(node->op) != ILLOP && cse_worthwhile(target)) {
    enter_stored_name(target);
    node->nsize = new_number();
  }
}

void update_place(NODE *node) {
  NODE *target = node->left;
  number_target_address(target);
  kill_store(target);
  target->nsize = new_number();
  node->nsize = new_number();
  if (asgop_base(node->op) != ILLOP && !is_bit_field_access(target)) enter_stored_place(target);
}

void number_update(NODE *node) {
  node->nsize = 0;
  NODE *target = node->left;
  if (target->op == NAME) return update_name(node);
  if (is_assignable_place(target)) return update_place(node);
  if (target->op == MEMBER) return store_to_member(target);
  number_tree(target);
  kill_everything();
}

void number_compound(NODE *node) {
  NODE *target = node->left;
  if (cse_worthwhile(target) && !has_side_effects(target) && !is_bit_field_access(target) &&
      (is_available(target) || tree_contains(target, node->right))) {
    node = expand_compound_assignment(node);
    if (node->op == ASSIGN) return number_assignment(node);
  }
  number_tree(node->right);
  number_update(node);
}

// ------------------------------------------------------------------------------------------------
// Calls

// A library name says nothing of a function of the file's own.
bool is_own_function(const FUN *fun, const NODE *call) {
  if (fun->flags & FUN_is_defined) return true;
  if (call->op == XCALL || call->op == UXCALL || call->left->op != ADDRESS) return false;
  const SYM *sym = call->left->left->u.sym;
  return sym->sclass == C_STAT || sym->sclass == C_USTATIC;
}

std::uint32_t flags_of_call(const NODE *call) {
  const FUN *fun = fun_of_call(call);
  if (fun && !((fun->flags & FUN_is_SYSTEM) && is_own_function(fun, call))) return fun->flags;
  return state.unknown_fun ? state.unknown_fun->flags : 0;
}

void number_callee(NODE *callee) {
  if (callee->op == ADDRESS && callee->left->op == NAME) {
    callee->nsize = 0;
    callee->left->nsize = 0;
  } else {
    number_tree(callee);
  }
}

void number_call(NODE *call) {
  switch (call->op) {
  case CALL:
  case STCALL: number_tree(call->right); [[fallthrough]];
  case UCALL:
  case USTCALL: number_callee(call->left); break;
  case XCALL: number_tree(call->left); break;
  default: break;
  }
  const std::uint32_t flags = flags_of_call(call);
  if (flags & FUN_is_pure_fun) return number_pure_call(call);
  kill_by_call(call, flags);
  call->nsize = 0;
}

// ------------------------------------------------------------------------------------------------
// Conditions

// a & K that the machine tests without a register for K: 8 bits, shifted by an even distance.
bool is_tested_directly(const NODE *mask) {
  if (mask->op != ICON) return false;
  auto value = static_cast<std::uint32_t>(mask->u.lval);
  while (value >= 4 && value % 4 == 0)
    value /= 4;
  return value <= 0xFF;
}

bool is_relation(Opcode op) {
  return op >= EQ && op <= UGT;
}

void number_condition(NODE *statement) {
  NODE *operand = condition_operand(statement->left);
  if (operand == statement->left && is_relation(operand->op))
    number_operands(operand);
  else
    number_tree(operand);
}

// ------------------------------------------------------------------------------------------------
// Lists

// What follows the comma is done behind what stands ahead of it, so it may not move ahead.
void number_comma(NODE *node) {
  const bool had_killed = std::exchange(local_cse.has_killed, false);
  number_tree(node->left);
  if (local_cse.has_killed) local_cse.enters_nothing = true;
  local_cse.has_killed = local_cse.has_killed || had_killed;
  number_tree(node->right);
  node->nsize = node->right->nsize;
}

// The second operand is computed only sometimes: what it enters or changes is not known behind it.
void number_conditional(NODE *node) {
  number_tree(node->left);
  const bool had_killed = std::exchange(local_cse.has_killed, false);
  const bool entered_nothing = std::exchange(local_cse.enters_nothing, true);
  number_tree(node->right);
  if (local_cse.has_killed) empty_tables();
  local_cse.enters_nothing = entered_nothing || local_cse.has_killed;
  local_cse.has_killed = local_cse.has_killed || had_killed;
  node->nsize = 0;
}

bool is_operator(const NODE *node) {
  if (op_effect(node->op) != PURE || !node->left) return false;
  switch (node->op) {
  case LABELREF:
  case CASE:
  case DEFAULT:
  case STARG:
  case ACONV:
  case PVCONV: return false;
  default: return true;
  }
}

void number_other(NODE *node) {
  number_operands(node);
  if (is_operator(node))
    number_expression(node);
  else
    node->nsize = 0;
}

void number_tree(NODE *node) {
  switch (node->op) {
  case LABELDEF: return;
  case ICON: return number_icon(node);
  case FCON: return number_fcon(node);
  case SCON: return number_scon(node);
  case NAME: return number_use(node);
  case ADDRESS: return number_address_operator(node);
  case DEREF:
  case ARROW: return number_access(node);
  case ARGREF: return number_reference(node);
  case ASSIGN:
  case STASG:
  case ARASG: return number_assignment(node);
  case ASG_ADD:
  case ASG_SUBTRACT:
  case ASG_MULTIPLY:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR:
  case ASG_DIVIDE:
  case ASG_REMAINDER:
  case ASG_SHIFT_LEFT:
  case ASG_SHIFT_RIGHT: return number_compound(node);
  case INCREMENT:
  case DECREMENT: return number_update(node);
  case LOOP:
  case INITLOOP:
    number_tree(node->right);
    node->nsize = 0;
    node->left->nsize = 0;
    if (node->left->op == NAME) set_number(node->left->u.sym, 0);
    return;
  case COMMA_OP: return number_comma(node);
  case COMMA:
    number_operands(node);
    node->nsize = new_number();
    return;
  case CONDITIONAL:
  case ALTERNATIVES:
  case LOGICAL_AND:
  case LOGICAL_OR: return number_conditional(node);
  case RETURN:
    if (node->right) number_tree(node->right);
    node->nsize = 0;
    return;
  case SWITCH:
    number_tree(node->left);
    node->nsize = 0;
    return;
  case ASSERT:
  case NASSERT:
  case IF:
    number_condition(node);
    node->nsize = 0;
    return;
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case XCALL:
  case UXCALL: return number_call(node);
  case ICALL:
    if (node->left) number_tree(node->left);
    return number_pure_call(node);
  case MEMCPY:
    number_tree(node->left);
    kill_by_copy(node);
    node->nsize = 0;
    return;
  case ASM:
    if (!is_comment_asm(node)) kill_everything();
    node->nsize = 0;
    return;
  default: return number_other(node);
  }
}

// ------------------------------------------------------------------------------------------------
// The sweep

void number_statement(const LIST *cell) {
  local_cse.statement = cell->item;
  local_cse.line = cell->line;
  local_cse.line2 = cell->line2;
  local_cse.number_at_call = -1;
  local_cse.enters_nothing = false;
  local_cse.has_killed = false;
  local_cse.effects = StatementEffects{};
  number_tree(cell->item);
  publish_copies();
}

// Does all that is known at the end of the block hold at the start of next?
bool keeps_tables(const BB *block, const BB *next) {
  const EDGE *first = block->succs;
  if (!first || first->bb->dfn <= block->dfn) return false;
  if (first->next && first->next->bb->dfn <= block->dfn) return false;
  return continues_extended_block(block, next);
}

} // namespace

NODE *condition_operand(NODE *condition) {
  NODE *operand = condition;
  const bool is_zero_test = (condition->op == EQ || condition->op == NE) &&
                            condition->right->op == ICON && condition->right->u.lval == 0;
  if (is_zero_test) operand = condition->left;
  if ((operand->op == BIT_AND || operand->op == BIT_XOR) && is_tested_directly(operand->right))
    operand = operand->left;
  return operand;
}

void number_blocks() {
  for (BB *block = state.first_bb; block;) {
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      if (cell != state.first_bb->trees || !is_param_copy(cell->item)) number_statement(cell);
    BB *next = next_walked_block(block);
    if (!keeps_tables(block, next)) empty_tables();
    block = next;
  }
}

} // namespace velkor
