#include "scalar/live_variables.h"

#include "core/failure.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "diag/dump.h"
#include "scalar/split_commas.h"
#include "simplify/simplify.h"

#include <new>
#include <utility>
#include <vector>

namespace velkor {

LiveVariables live_variables;

namespace {

// ------------------------------------------------------------------------------------------------
// Statements

void drop_cell(LIST *cell) {
  LIST *next = cell->next;
  *cell = *next;
  give_list(next);
}

// The last statement is the block's transfer and stays, whatever it is.
void tidy_statements(BB *block) {
  for (LIST *cell = block->trees; cell; cell = cell->next)
    do {
      while (cell->next && op_effect(cell->item->op) == PURE) {
        cell->item = discard_value(cell->item);
        if (cell->item) break;
        drop_cell(cell);
      }
    } while (split_comma(cell));
}

// ------------------------------------------------------------------------------------------------
// Candidates

void number_candidate(SYM *sym, const char *message) {
  const int number = live_variables.num_candidates++;
  sym->count = number;
  sym->fcp_flag = 0;
  debug_print(message, number, sym->name);
}

bool is_static_candidate(const SYM *sym) {
  return sym->sclass == C_STAT && sym->level >= 2 && !is_const_symbol(sym) &&
         !is_volatile_symbol(sym) && is_scalar(sym->stype);
}

void number_candidates(LiveFor use) {
  live_variables = LiveVariables{};
  std::vector<SYM *> candidates;
  for (SYM *sym = state.scalar_syms; sym; sym = sym->next) {
    number_candidate(sym, "\tLVA candidate %2d is variable '%s'\n");
    candidates.push_back(sym);
  }
  const std::size_t automatic = candidates.size();
  for (SYM *sym = use == LiveFor::DEAD_CODE ? state.static_syms : nullptr; sym; sym = sym->next)
    if (is_static_candidate(sym)) {
      number_candidate(sym, "\tLVA candidate %2d is STATIC variable '%s'\n");
      candidates.push_back(sym);
    }
  live_variables.words = set_words(live_variables.num_candidates);
  live_variables.candidates = static_cast<SYM **>(lalloc(candidates.size() * sizeof(SYM *)));
  std::copy(candidates.begin(), candidates.end(), live_variables.candidates);
  for (std::size_t number = automatic; number < candidates.size(); ++number)
    set_add(live_variables.static_candidates, static_cast<int>(number));
}

// ------------------------------------------------------------------------------------------------
// What one block reads and assigns

// The block at hand.
struct LocalSets {
  SparseSet *uses;
  SparseSet *defs;
  bool statics_take_part;
};
LocalSets local;

// x = x op e: when x is dead behind it the whole statement goes, so it does not keep x alive. An
// access with effects in the right side would stay, and x with it: p = p->next where next is
// volatile.
bool is_self_update(const NODE *assignment) {
  NODE *value = assignment->right;
  return op_effect(value->op) == PURE && is_name_of(value->left, assignment->left->u.sym) &&
         !has_side_effects(value);
}

// x = a op x  ->  x = x op a, where nothing in a could notice the exchange.
void bring_self_update_into_form(NODE *assignment) {
  NODE *value = assignment->right;
  const SYM *sym = assignment->left->u.sym;
  if (op_swapped(value->op) == ILLOP || !is_name_of(value->right, sym)) return;
  if (is_name_of(value->left, sym) || has_side_effects(value->left)) return;
  std::swap(value->left, value->right);
  value->op = op_swapped(value->op);
}

bool reaches(const FUN *from, const FUN *to) {
  if (!to || to->cg_number < 0) return false;
  const auto number = static_cast<unsigned>(to->cg_number);
  return (from->reach[number >> 5] >> (number & 31) & 1) != 0;
}

// What the statement reads before the block assigns it. self: at the root of a statement, in
// elimination of dead assignments.
void local_lva_uses(NODE *tree, bool self) {
  for (; tree; tree = tree->left, self = false) {
    switch (tree->op) {
    case NAME:
      if (is_candidate(tree->u.sym) && !set_has(*local.defs, tree->u.sym->count))
        set_add(*local.uses, tree->u.sym->count);
      return;
    case ASSIGN:
      if (tree->left->op != NAME) break;
      if (self) bring_self_update_into_form(tree);
      local_lva_uses(self && is_self_update(tree) ? tree->right->right : tree->right, false);
      return;
    case LOOP:
    case INITLOOP: local_lva_uses(tree->right, false); return;
    case CALL:
    case UCALL:
    case STCALL:
    case USTCALL:
    case XCALL:
    case UXCALL:
      if (local.statics_take_part && (call_may_reenter(tree) || may_not_return(tree)))
        set_union(*local.uses, live_variables.static_candidates);
      break;
    case ASM: // what it calls may come back
      if (local.statics_take_part && !is_comment_asm(tree))
        set_union(*local.uses, live_variables.static_candidates);
      return;
    default:
      if (!self || !is_compound_assignment(tree->op) || tree->left->op != NAME) break;
      local_lva_uses(tree->right, false);
      return;
    }
    if (tree->right) local_lva_uses(tree->right, false);
  }
}

// Whoever has the address may read and change the object later, at any call; so it stops being a
// candidate wherever the address goes, also as an argument: the callee may keep it.
void lose_candidate(const NODE *address) {
  const NODE *object = address->left;
  while (object->op == MEMBER)
    object = object->left;
  if (object->op != NAME) return;
  object->u.sym->fcp_flag = 1;
  object->u.sym->count = candidate_lost;
}

[[noreturn]] void fail_in_defs(const NODE *tree) {
  print("\n\n   !!! Error in 'local_lva_defs()', opcode=%d %s !!!\n", tree->op, op_name(tree->op));
  abnormal_end();
}

// self: as above. conditional: inside an operand that may not be evaluated. An assignment there
// lets the value that was there before live on, so it counts as a use.
void add_definition(const NODE *assignment, bool self, bool conditional) {
  const SYM *sym = assignment->left->u.sym;
  if (!is_candidate(sym) || (self && is_self_update(assignment))) return;
  if (!conditional)
    set_add(*local.defs, sym->count);
  else if (!set_has(*local.defs, sym->count))
    set_add(*local.uses, sym->count);
}

// What the statement assigns.
void local_lva_defs(NODE *tree, bool self, bool conditional) {
  for (; tree; tree = tree->left) {
    bool right_is_conditional = conditional;
    switch (tree->op) {
    case ASSIGN:
      if (tree->left->op == NAME) add_definition(tree, self, conditional);
      break;
    case ADDRESS:
    case ARGREF: lose_candidate(tree); break;
    case SWITCH:
    case IF: continue;
    case LOGICAL_AND:
    case LOGICAL_OR:
    case CONDITIONAL: right_is_conditional = true; break;
    case NASSERT: conditional = true; break; // never evaluated
    case UXCALL: return;
    case ILLOP:
    case CSE_DUPE:
    case CSE_ORIG: fail_in_defs(tree);
    default: break;
    }
    self = false;
    if (tree->right) local_lva_defs(tree->right, false, right_is_conditional);
  }
}

void find_local_sets(BB *block, LiveFor use) {
  make_live_sets(block);
  local = {&uses(block), &defs(block), !set_is_empty(live_variables.static_candidates)};
  for (LIST *cell = block->trees; cell; cell = cell->next) {
    local_lva_uses(cell->item, use == LiveFor::DEAD_CODE);
    local_lva_defs(cell->item, use == LiveFor::DEAD_CODE, false);
  }
  set_subtract(defs(block), uses(block));
  set_copy(live_in(block), uses(block));
}

// All that the walk finds but for the sets, which are gathered in one place and forgotten.
void lose_addressed_candidates() {
  LiveSets unwanted;
  local = {&unwanted.uses, &unwanted.defs, false};
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      local_lva_defs(cell->item, false, false);
}

// ------------------------------------------------------------------------------------------------
// The whole function

bool update_live_out(BB *block) {
  if (!block->succs) {
    set_copy(live_out(block), live_variables.static_candidates);
    return false;
  }
  bool changed = false;
  for (const EDGE *edge = block->succs; edge; edge = edge->next)
    changed |= set_union(live_out(block), live_in(edge->bb));
  return changed;
}

// Both sets only grow: live_in is uses from the beginning, and gets what is live behind the block
// and not assigned there.
void solve() {
  for (bool changed = true; changed;) {
    changed = false;
    debug_print("\n\tNext iteration of global live variable loop\n");
    for (BB *block = state.first_bb->prev;; block = block->prev) {
      changed |= update_live_out(block);
      set_union_without(live_in(block), live_out(block), defs(block));
      if (block == state.first_bb) break;
    }
  }
}

// ------------------------------------------------------------------------------------------------
// What has been given a value

// A variable is not live where no path has touched it yet: two variables whose uses lie apart shall
// not be in each other's way because one of them seems to be read before it is set. A path is
// followed only as far as the variable is live, which loses nothing: from the last touch to where
// it is live, it is live all the way.
class Touched {
public:
  Touched() : sets_(static_cast<std::size_t>(state.num_blocks) + 1) {}

  void find() {
    add_entry_candidates();
    for (BB *block = state.first_bb; block; block = block->next) {
      add_live(block, uses(block));
      add_live(block, defs(block));
    }
    for (bool changed = true; changed;) {
      changed = false;
      for (BB *block = state.first_bb; block; block = block->next)
        for (const EDGE *edge = block->preds; edge; edge = edge->next)
          changed |= add_live(block, behind(edge->bb));
    }
  }

  // Candidates that are live behind the block and have been touched on a way there.
  SparseSet &behind(const BB *block) { return sets_[static_cast<std::size_t>(block->dfn)]; }

private:
  bool add_live(BB *block, const SparseSet &touched) {
    set_copy(live_ones_, touched);
    set_intersect(live_ones_, live_out(block));
    return set_union(behind(block), live_ones_);
  }

  void add_entry_candidates() {
    SparseSet touched;
    set_copy(touched, live_variables.static_candidates);
    for (const SYM *sym = state.scalar_syms; sym; sym = sym->next)
      if (sym->level == 1 && is_candidate(sym)) set_add(touched, sym->count);
    add_live(state.first_bb, touched);
  }

  std::vector<SparseSet> sets_; // by dfn
  SparseSet live_ones_;         // of the set at hand; kept for its room
};

void restrict_to_touched() {
  Touched touched;
  touched.find();
  for (BB *block = state.first_bb; block; block = block->next)
    live_out(block) = touched.behind(block);
}

} // namespace

bool may_not_return(const NODE *call) {
  const FUN *fun = fun_of_call(call);
  if (!fun || (fun->flags & FUN_never_returns)) return true;
  if (fun->flags & FUN_is_SYSTEM) return false;
  if (!(fun->flags & FUN_is_defined) || !fun->reach) return true;
  return reaches(fun, state.unknown_fun) || reaches(fun, fun_find("longjmp"));
}

void make_live_sets(BB *block) {
  block->work[0] = new (lalloc(sizeof(LiveSets))) LiveSets;
}

void find_live_variables(LiveFor use) {
  debug_print("\n\n\t\t\t---------- ENTERING 'find_live_variables' --------\n");
  for (BB *block = state.first_bb; block; block = block->next)
    tidy_statements(block);
  number_candidates(use);
  if (live_variables.num_candidates == 0) return;
  if (use == LiveFor::NOBODY) return lose_addressed_candidates();
  for (BB *block = state.first_bb; block; block = block->next)
    find_local_sets(block, use);
  solve();
  if (use == LiveFor::ALLOCATION) restrict_to_touched();
}

} // namespace velkor
