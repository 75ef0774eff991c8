#include "simplify/sequencing.h"

#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "interproc/inline_calls.h"
#include "simplify/patterns.h"
#include "simplify/sequencing_steps.h"
#include "simplify/simplify.h"
#include "simplify/struct_values.h"
#include "simplify/truth.h"

#include <utility>

namespace velkor {
namespace sequencing {

void emit(NODE *tree, LIST *cell) {
  tree = discard_value(tree);
  if (tree) cell->next = list_cons(tree, cell->next, cell->line, cell->line2);
}

void emit_label(LABEL *label, LIST *cell) {
  emit(make_labeldef(label), cell);
}

void emit_branch(const LABEL *label, LIST *cell) {
  emit(make_node(BRANCH, make_labelref(label->index), nullptr, INT), cell);
}

void emit_if(NODE *test, const LABEL *yes, const LABEL *no, LIST *cell) {
  emit(make_if(test, yes->index, no->index), cell);
}

LABEL *new_label() {
  return label_new(0, nullptr, nullptr);
}

SYM *new_temporary(TypeWord type, std::int32_t size, SYM *tag) {
  SYM *sym = make_temp('S', -1, size, type);
  if (!tag) return sym;
  sym->tag = tag;
  sym->align = sym_alignment(sym);
  if (size <= 0) sym->size = sym_size(sym);
  return sym;
}

NODE *assign_constant(SYM *symbol, std::int32_t value, TypeWord type) {
  NODE *constant = convert_tree(symbol->stype, make_icon(value, type));
  return simplify_tree(make_assign(make_name(symbol), constant));
}

} // namespace sequencing

namespace {

using namespace sequencing;

// ------------------------------------------------------------------------------------------------
// Statements

// a && b  ->  if (a) goto L1; else goto L2; L1: b; L2:
// a || b  ->  if (a) goto L2; else goto L1; L1: b; L2:
NODE *sequence_logical_statement(NODE *node, LIST *cell) {
  LABEL *second = new_label();
  LABEL *end = new_label();
  if (node->op == LOGICAL_AND)
    emit_if(node->left, second, end, cell);
  else
    emit_if(node->left, end, second, cell);
  emit_label(second, cell);
  emit(node->right, cell);
  erase_node(node);
  return make_labeldef(end);
}

// c ? u : v  ->  if (c) goto L1; else goto L2; L1: u; goto L3; L2: v; L3:
NODE *sequence_conditional_statement(NODE *node, LIST *cell) {
  LABEL *yes = new_label();
  LABEL *no = new_label();
  LABEL *end = new_label();
  NODE *arms = node->right;
  emit_if(node->left, yes, no, cell);
  emit_label(yes, cell);
  emit(arms->left, cell);
  emit_branch(end, cell);
  emit_label(no, cell);
  emit(arms->right, cell);
  erase_node(arms);
  erase_node(node);
  return make_labeldef(end);
}

// A CBRANCH jumps when its test is false; where it does not, control goes to true_target.
void cbranch_to_if(NODE *node, NODE *true_target) {
  node->op = IF;
  node->right = make_node(COMMA, true_target, node->right, INT);
}

bool follows_cbranch(const LIST *cell) {
  return cell->next && cell->next->item->op == CBRANCH;
}

NODE *sequence_cbranch(NODE *node, LIST *cell) {
  LABEL *next = new_label();
  cbranch_to_if(node, make_labelref(next->index));
  emit(node, cell);
  return make_labeldef(next);
}

// CBRANCH c, F; goto T  ->  if (c) goto T; else goto F; the two statements become one.
NODE *merge_branch_with_cbranch(NODE *branch, LIST *cell) {
  LIST *previous = cell->next;
  NODE *test = previous->item;
  cbranch_to_if(test, replace_by_left(branch));
  cell->next = previous->next;
  give_list(previous);
  return test;
}

NODE *sequence_if(NODE *node, LIST *cell) {
  NODE *test = node->left;
  NODE *targets = node->right;
  NODE *true_target = targets->left;
  NODE *false_target = targets->right;
  erase_node(targets);
  erase_node(node);
  return sequence_branch(test, true_target, false_target, cell);
}

// What an assignment left where its work was done by the statements emitted.
bool is_left_over(const NODE *tree) {
  return tree->op == NAME || tree->op == DEREF || tree->op == MEMBER || tree->op == ARROW;
}

// ------------------------------------------------------------------------------------------------
// Calls that never return

bool never_returns(const NODE *tree) {
  if (options.opt_level < 1 || !is_call(tree->op)) return false;
  const FUN *fun = fun_of_call(tree);
  return fun && (fun->flags & FUN_never_returns);
}

// call  ->  call; comment; L: goto L
// What follows loses its flow in, and the function does not seem to run on from here.
LIST *close_behind_call(LIST *cell) {
  LABEL *loop = new_label();
  NODE *call = cell->item;
  const auto add = [&](NODE *item) {
    cell->next = list_cons(item, cell->next, cell->line, cell->line2);
    return cell->next;
  };
  LIST *call_cell = add(call);
  add(make_asm('/', "***\t; the preceding call never returns"));
  add(make_labeldef(loop));
  cell->item = make_node(BRANCH, make_labelref(loop->index), nullptr, INT);
  return call_cell;
}

// ------------------------------------------------------------------------------------------------
// Tests

bool is_null_constant(const NODE *node) {
  return is_icon_of(node, 0) || (node->op == PCONV && is_icon_of(node->left, 0));
}

bool compares_with_null(const NODE *node) {
  return (node->op == EQ || node->op == NE) && is_null_constant(node->right);
}

bool assigns_relation_to_name(const NODE *node) {
  return node->op == ASSIGN && node->left->op == NAME && op_negated(node->right->op) != ILLOP;
}

NODE *branch_to(NODE *target) {
  return make_node(BRANCH, target, nullptr, INT);
}

// if (a && b) goto T; else goto F  ->  if (a) goto L; else goto F; L: if (b) ...
// if (a || b) goto T; else goto F  ->  if (a) goto T; else goto L; L: if (b) ...
// Yields b.
NODE *sequence_logical_test(NODE *node, const NODE *true_target, const NODE *false_target,
                            LIST *cell) {
  LABEL *second = new_label();
  if (node->op == LOGICAL_AND)
    emit(make_if(node->left, second->index, false_target->u.lval), cell);
  else
    emit(make_if(node->left, true_target->u.lval, second->index), cell);
  emit_label(second, cell);
  NODE *rest = node->right;
  erase_node(node);
  return rest;
}

// if (p ? u : v) goto T; else goto F
//   ->  if (p) goto L1; else goto L2; L1: if (u) goto T; else goto F; L2: if (v) ...
// Yields v.
NODE *sequence_conditional_test(NODE *node, const NODE *true_target, const NODE *false_target,
                                LIST *cell) {
  LABEL *yes = new_label();
  LABEL *no = new_label();
  NODE *arms = node->right;
  emit_if(node->left, yes, no, cell);
  emit_label(yes, cell);
  emit(simplify_node(make_if(arms->left, true_target->u.lval, false_target->u.lval)), cell);
  emit_label(no, cell);
  NODE *rest = arms->right;
  erase_node(arms);
  erase_node(node);
  return rest;
}

// if (x = relation) goto T; else goto F
//   ->  if (relation) goto L1; else goto L2; L1: x = 1; goto T; L2: x = 0; goto F
NODE *sequence_assigned_relation(NODE *node, NODE *true_target, NODE *false_target, LIST *cell) {
  LABEL *yes = new_label();
  LABEL *no = new_label();
  SYM *symbol = node->left->u.sym;
  const TypeWord type = node->right->type;
  emit(simplify_node(make_if(node->right, yes->index, no->index)), cell);
  emit_label(yes, cell);
  emit(assign_constant(symbol, 1, type), cell);
  emit(branch_to(true_target), cell);
  emit_label(no, cell);
  emit(assign_constant(symbol, 0, type), cell);
  erase_node(node->left);
  erase_node(node);
  return branch_to(false_target);
}

NODE *sequence_constant_test(NODE *constant, NODE *true_target, NODE *false_target, LIST *cell) {
  const bool holds = constant->u.lval != 0;
  erase_node(constant);
  erase_node(holds ? false_target : true_target);
  return sequence_statement(branch_to(holds ? true_target : false_target), cell);
}

// The right operand first: the arguments are evaluated ahead of the callee.
void sequence_call_operands(NODE *call, LIST *cell) {
  if (call->right) call->right = sequence_value(call->right, call, cell);
  if (call->left) call->left = sequence_value(call->left, call, cell);
}

// ------------------------------------------------------------------------------------------------
// Values

NODE *value_in_temporary(NODE *tree, std::int32_t size, LIST *cell) {
  SYM *symbol = new_temporary(tree->type, size, nullptr);
  emit(make_assign(make_name(symbol), tree), cell);
  return make_name(symbol);
}

// A struct or union is not moved through the branches, its address is.
// c ? a : b  ->  *(S = &(c ? a : b))
NODE *conditional_struct_value(NODE *tree, LIST *cell) {
  const TypeWord type = tree->type;
  const std::int32_t size = struct_value_size(tree);
  SYM *tag = struct_value_tag(tree);
  NODE *address = address_of_value(tree);
  SYM *symbol = new_temporary(address->type, pointer_width, tag);
  emit(make_assign(make_name(symbol), address), cell);
  NODE *access = make_node(DEREF, make_name(symbol), nullptr, type);
  access->depnum = size;
  return access;
}

bool is_part_of_variable(const NODE *tree) {
  while (tree->op == MEMBER)
    tree = tree->left;
  return tree->op == NAME;
}

// The unit of a bit field is read more than once when it is stored to: what its address does must
// be done once, ahead of it.
void make_base_repeatable(NODE *access, LIST *cell) {
  if (options.opt_level < 1 || !is_bit_field_access(access)) return;
  // The address of a variable, even of a volatile one, does nothing.
  if (access->op == MEMBER && is_part_of_variable(access->left)) return;
  if (!has_side_effects(access->left)) return;
  if (access->op == MEMBER) {
    access->left = address_of_value(access->left);
    access->op = ARROW;
    if (!has_side_effects(access->left)) return;
  }
  access->left = value_in_temporary(access->left, pointer_width, cell);
}

} // namespace

NODE *offer_call(CallUse use, NODE *call, LIST *cell, NODE *true_target, NODE *false_target) {
  if (state.inline_available) {
    const std::int32_t true_label = true_target ? true_target->u.lval : 0;
    const std::int32_t false_label = false_target ? false_target->u.lval : 0;
    erase_tree(true_target);
    erase_tree(false_target);
    return inline_call(use, call, cell, true_label, false_label);
  }
  if (use != CallUse::TEST) return call;
  NODE *targets = make_node(COMMA, true_target, false_target, INT);
  return simplify_node(make_node(IF, call, targets, INT));
}

NODE *sequence_value(NODE *tree, NODE *parent, LIST *cell) {
  NODE *root = tree;
  NODE **place = &root;
  for (;;) {
    NODE *node = *place;
    const CallUse use = parent ? CallUse::VALUE : CallUse::NOTHING;
    switch (node->op) {
    case COMMA_OP:
      emit(node->left, cell);
      *place = node->right;
      erase_node(node);
      continue;
    case LOGICAL_AND:
    case LOGICAL_OR: *place = value_in_temporary(node, node->depnum, cell); return root;
    case CONDITIONAL:
      *place = is_struct_or_union(node->type) ? conditional_struct_value(node, cell)
                                              : value_in_temporary(node, node->depnum, cell);
      return root;
    case MEMBER:
    case ARROW:
      make_base_repeatable(node, cell);
      parent = node;
      place = &node->left;
      continue;
    case CALL:
    case UCALL:
    case XCALL:
    case UXCALL:
      sequence_call_operands(node, cell);
      *place = offer_call(use, node, cell, nullptr, nullptr);
      return root;
    case LABELDEF: return root; // its operand is no tree
    default: break;
    }
    parent = node;
    if (!node->right) {
      if (!node->left) return root;
      place = &node->left;
      continue;
    }
    if (node->left) node->left = sequence_value(node->left, node, cell);
    place = &node->right;
  }
}

NODE *sequence_branch(NODE *test, NODE *true_target, NODE *false_target, LIST *cell) {
  for (;;) {
    test = simplify_test(test);
    if (test->op == ICON) return sequence_constant_test(test, true_target, false_target, cell);
    if (test->op == COMMA_OP) {
      emit(test->left, cell);
      NODE *rest = test->right;
      erase_node(test);
      test = rest;
      continue;
    }
    if (test->op == LOGICAL_AND || test->op == LOGICAL_OR) {
      test = sequence_logical_test(test, true_target, false_target, cell);
      continue;
    }
    if (test->op == CONDITIONAL) {
      test = sequence_conditional_test(test, true_target, false_target, cell);
      continue;
    }
    if (compares_with_null(test)) {
      if (test->op == EQ) std::swap(true_target, false_target);
      erase_tree(test->right);
      test = replace_by_left(test);
      continue;
    }
    if (assigns_relation_to_name(test))
      return sequence_assigned_relation(test, true_target, false_target, cell);
    if (test->op == CALL || test->op == UCALL || test->op == XCALL || test->op == UXCALL) {
      sequence_call_operands(test, cell);
      return offer_call(CallUse::TEST, test, cell, true_target, false_target);
    }
    NODE *node = make_node(IF, test, make_node(COMMA, true_target, false_target, INT), INT);
    node->left = sequence_value(test, node, cell);
    return simplify_node(node);
  }
}

NODE *sequence_statement(NODE *tree, LIST *cell) {
  for (;;) {
    tree = discard_value(tree);
    if (!tree) return make_icon(0, INT);
    cell->item = tree; // sequence_assignment asks whether it has the whole statement
    switch (tree->op) {
    case COMMA_OP: {
      emit(tree->left, cell);
      NODE *rest = tree->right;
      erase_node(tree);
      tree = rest;
      continue;
    }
    case LOGICAL_AND:
    case LOGICAL_OR: return sequence_logical_statement(tree, cell);
    case CONDITIONAL: return sequence_conditional_statement(tree, cell);
    case CBRANCH: return sequence_cbranch(tree, cell);
    case LABELDEF:
      if (follows_cbranch(cell)) cbranch_to_if(cell->next->item, make_labelref(tree->label->index));
      return tree;
    case BRANCH:
      if (!follows_cbranch(cell)) return tree;
      tree = merge_branch_with_cbranch(tree, cell);
      continue;
    case IF: return sequence_if(tree, cell);
    default: break;
    }
    if (!is_sequenced_assignment(tree->op) && tree->op != RETURN)
      return sequence_value(tree, nullptr, cell);
    tree = sequence_assignment(tree, cell);
    if (!is_left_over(tree)) return tree;
  }
}

void sequence_statements() {
  for (LIST **link = &state.statements; *link;) {
    LIST *cell = *link;
    cell->item = sequence_statement(cell->item, cell);
    if (never_returns(cell->item)) cell = close_behind_call(cell);
    if (cell->item->op == ICON) { // nothing is left of the statement
      erase_node(cell->item);
      *link = cell->next;
      give_list(cell);
      continue;
    }
    link = &cell->next;
  }
}

} // namespace velkor
