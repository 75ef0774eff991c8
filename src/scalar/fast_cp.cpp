#include "scalar/fast_cp.h"

#include "cfg/graph.h"
#include "cfg/simpcfg.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "scalar/assignment_statistics.h"
#include "scalar/combine_assignments.h"
#include "scalar/combine_stores.h"
#include "scalar/dead_assignments.h"
#include "scalar/extended_blocks.h"
#include "scalar/value_copies.h"
#include "simplify/compound.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// The state of one pass. Where a value was recorded only for the extended block, SYM::key holds the
// stamp of that block, and the value counts while the stamp is current.
struct FastPropagation {
  bool changed = false;         // the current statement was rewritten
  bool branch_constant = false; // a test has become constant
  int replacements = 0;
  std::uint32_t stamp = 1;
  const LIST *cell = nullptr;       // the current statement's
  const NODE *simplified = nullptr; // the assignment in it whose value was simplified last
};

FastPropagation fcp;

NODE *walk(NODE *tree);

// ------------------------------------------------------------------------------------------------
// Replacing a name

// The assignment whose value the name has here, or none. A constant of file level stands without
// one: value is set either way.
const NODE *known_value(const SYM *sym) {
  if (!sym->init) return nullptr;
  if (state.pass_number == 2 && sym->level == 0) return sym->init;
  if (sym->count < 1 || sym->init->op != ASSIGN || !sym->init->right) return nullptr;
  const bool is_current = sym->key == fcp.stamp;
  const bool may_travel = !is_constant_temporary(sym);
  const bool applies = (is_current && !is_pointer(sym->stype)) || (is_current && may_travel) ||
                       (sym->count == 1 && may_travel);
  return applies ? sym->init->right : nullptr;
}

NODE *fcpTree(NODE *name) {
  const SYM *sym = name->u.sym;
  name->qual = static_cast<std::uint8_t>(sym->squal);
  const NODE *value = known_value(sym);
  if (!value) return name;
  fcp.changed = true;
  fcp.replacements += 1;
  const TypeWord target_type = sym->level == 0 ? sym->stype : sym->init->left->type;
  NODE *result = replace_name_by_value(name, copy_tree(value), target_type);
  if (!state.debug_file) return result;
  debug_print("\n\t(%d,%d) fcpTree() is replacing %s with %s\n", fcp.cell->line2, fcp.cell->line,
              sym->name, tree2infix(result));
  if (sym->level == 0) debug_print("\t\t(%s is a GLOBAL variable)\n", sym->name);
  return result;
}

// ------------------------------------------------------------------------------------------------
// The walk over a statement

bool can_be_followed(const NODE *node) {
  return node->op == NAME && node->u.sym->count >= 0;
}

void walk_left(NODE *node) {
  node->left = walk(node->left);
}
void walk_right(NODE *node) {
  node->right = walk(node->right);
}

// The place that a statement other than = changes by a value that is not followed.
void lose_target(NODE *node) {
  if (node->left->op != NAME) return walk_left(node);
  if (can_be_followed(node->left)) forget_value(node->left->u.sym);
}

// The last link of the chain a = b = ...
NODE *value_source(NODE *assignment) {
  while (assignment->op == ASSIGN && passes_value_on(assignment))
    assignment = assignment->right;
  return assignment;
}

// A value that has changed may be a constant now. Each is simplified once: the links of a chain
// share it, and a value with effects, which becomes no constant, may hold others in turn.
void simplify_value(NODE *assignment) {
  if (!fcp.changed || fcp.simplified == assignment) return;
  assignment->right = simplify_tree(assignment->right);
  fcp.simplified = assignment;
}

void record_assignment(NODE *node) {
  SYM *sym = node->left->u.sym;
  if (sym->count == 1) {
    sym->key = fcp.stamp;
    return;
  }
  NODE *source = value_source(node);
  if (!has_side_effects(source->right)) simplify_value(source);
  if (!is_constant_like(source->right)) return forget_value(sym);
  remember_value(sym, source);
  sym->key = fcp.stamp;
}

void walk_assignment(NODE *node) {
  if (node->left->op != NAME) {
    walk_right(node);
    walk_left(node);
    return;
  }
  if (!can_be_followed(node->left)) return walk_right(node);
  if (is_pointer_step(node) && !is_const_symbol(node->left->u.sym))
    return forget_value(node->left->u.sym);
  const bool changed_before = fcp.changed;
  fcp.changed = false;
  walk_right(node);
  record_assignment(node);
  fcp.changed |= changed_before;
}

// Does x op= e become x = value op e? Not for the step of a pointer, which stays one.
bool value_can_be_used(const NODE *node) {
  const NODE *target = node->left;
  if (!target->u.sym->init) return false;
  if (is_pointer(target->type) && node->right->op == ICON) return false;
  return known_value(target->u.sym) != nullptr;
}

// x op= e. Where x is known, the plain form lets the value in. e is walked once: with an assignment
// in it, a second walk would read what it leaves behind.
NODE *walk_compound_assignment(NODE *node) {
  walk_right(node);
  if (node->left->op != NAME || !value_can_be_used(node)) {
    lose_target(node);
    return node;
  }
  node = expand_compound_assignment(node);
  if (node->op != ASSIGN) {
    lose_target(node);
    return node;
  }
  node->right->left = fcpTree(node->right->left);
  if (can_be_followed(node->left)) record_assignment(node);
  return node;
}

void walk_loop_counter(NODE *node) {
  walk_right(node);
  if (node->right->op == ASSIGN) return;
  node->right = simplify_node(make_assign(copy_tree(node->left), node->right));
}

// &s.m[...]: only what the address is computed from is read. ARGREF is the same for a parameter.
void walk_address(NODE *node) {
  NODE *object = node->left;
  while (object->op == MEMBER)
    object = object->left;
  if (object->left) walk_left(object);
}

NODE *walk(NODE *tree) {
  switch (tree->op) {
  case LOOP: return tree;
  case NAME: return fcpTree(tree);
  case ADDRESS:
  case ARGREF: walk_address(tree); return tree;
  case MEMBER:
  case ARROW:
    refresh_qual(tree);
    walk_left(tree);
    return tree;
  case SWITCH:
  case IF: walk_left(tree); return tree;
  case ASSIGN: walk_assignment(tree); return tree;
  case STASG:
  case ARASG:
    walk_right(tree);
    lose_target(tree);
    return tree;
  case INCREMENT:
  case DECREMENT: lose_target(tree); return tree;
  case INITLOOP: walk_loop_counter(tree); return tree;
  default:
    if (asgop_base(tree->op) != ILLOP) return walk_compound_assignment(tree);
    if (tree->left) walk_left(tree);
    if (tree->right) walk_right(tree);
    return tree;
  }
}

// ------------------------------------------------------------------------------------------------
// Blocks

bool are_both_assignments(const LIST *cell) {
  return cell->item->op == ASSIGN && cell->next && cell->next->item->op == ASSIGN;
}

// Leaves the cell without a statement when nothing of it remains.
void walk_statement(LIST *cell) {
  if (are_both_assignments(cell)) combine_adjacent_asgs(cell);
  fcp.changed = false;
  fcp.simplified = nullptr;
  fcp.cell = cell;
  cell->item = walk(cell->item);
  if (fcp.changed) cell->item = discard_value(simplify_tree(cell->item));
}

bool is_constant_test(const NODE *statement) {
  if (statement->op != IF && statement->op != SWITCH) return false;
  const NODE *condition = statement->left;
  return condition->op == ICON || (condition->op == COMMA_OP && condition->right->op == ICON);
}

void walk_block(BB *block) {
  const NODE *last = nullptr;
  for (LIST **link = &block->trees; LIST *cell = *link;) {
    walk_statement(cell);
    last = cell->item;
    if (cell->item) {
      link = &cell->next;
      continue;
    }
    *link = cell->next;
    cell->next = nullptr;
    erase_list(cell);
  }
  if (last && is_constant_test(last)) fcp.branch_constant = true;
}

void propagate() {
  fcp = FastPropagation{};
  for (BB *block = state.first_bb; block;) {
    walk_block(block);
    BB *next = next_walked_block(block);
    if (!continues_extended_block(block, next)) fcp.stamp += 1;
    block = next;
  }
}

void forget_all_values() {
  for (SYM *sym = state.scalar_syms; sym; sym = sym->next)
    forget_value(sym);
}

} // namespace

void fast_CP(int passes, bool combine) {
  if (options.opt_level == 0) return;
  if (combine) combine_asgs_to_memory();
  sym_split();
  for (int pass = 0; pass < passes; ++pass) {
    debug_print("\n\n\t\t\t---------- ENTERING 'fast_CP' -----------------\n");
    collect_assignment_statistics();
    propagate();
    forget_all_values();
    if (!fcp.branch_constant) break;
    recompute_cfg();
    simpcfg(0);
  }
  if (combine || fcp.replacements > 0) elim_dead_assigns(false, true);
}

} // namespace velkor
