#include "scalar/copyprop.h"

#include "cfg/graph.h"
#include "cfg/simpcfg.h"
#include "cfg/transfers.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "scalar/copyprop_rewrite.h"
#include "scalar/copyprop_state.h"
#include "scalar/dead_assignments.h"
#include "scalar/extended_blocks.h"
#include "scalar/global_assignments.h"
#include "scalar/split_commas.h"
#include "simplify/simplify.h"

#include <unordered_map>

namespace velkor {
namespace {

constexpr int most_rounds = 19;

// ------------------------------------------------------------------------------------------------
// Before the walk

// A local that takes the parameter as it is, ahead of the conversion.
SYM *make_parameter_copy(SYM *parameter) {
  SYM *copy = new_symbol(1, parameter->name);
  SYM *next = state.temp_syms;
  char *name = copy->name;
  *copy = *parameter;
  copy->next = next;
  copy->name = name;
  copy->parameter = parameter;
  copy->init = nullptr;
  copy->pragmas = nullptr;
  copy->key = 0;
  copy->index = 0;
  copy->count = -1;
  copy->level = 2;
  copy->sclass = copy->orig_sclass = C_AUTO;
  forget_const(copy);
  state.temp_syms = copy;
  return copy;
}

// x = (char) x'  with x' the parameter  ->  t = x'; x = (char) t: the copy of the parameter itself
// then needs no conversion, and passes that look for such copies see one.
void split_parameter_copy(NODE *assignment, LIST *&list) {
  if (assignment->op == PCOMMA) {
    split_parameter_copy(assignment->left, list);
    split_parameter_copy(assignment->right, list);
    return;
  }
  if (assignment->op != ASSIGN || assignment->left->op != NAME) return;
  NODE *source = assignment->right;
  if (source->op != SCONV && source->type == assignment->left->type) return;
  while (source->op == SCONV)
    source = source->left;
  SYM *home = assignment->left->u.sym;
  if (source->op != NAME || home->parameter != source->u.sym) return;
  SYM *copy = make_parameter_copy(source->u.sym);
  home->parameter = nullptr; // the copy is the home from here on
  NODE *parameter = copy_node(source);
  source->u.sym = copy;
  NODE *target = make_name(copy);
  target->type = source->type;
  list =
      list_cons(make_node(ASSIGN, target, parameter, source->type), list, list->line, list->line2);
}

void split_all_commas() {
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next)
      while (split_comma(cell)) {
      }
}

void scan_function(bool track_constants) {
  cp = CopyPropagation{};
  if (LIST *&list = state.first_bb->trees; list) split_parameter_copy(list->item, list);
  split_all_commas();
  flag_addressed_objects(AddressUse::ESCAPING);
  collect_global_ASGs(track_constants);
}

// ------------------------------------------------------------------------------------------------
// Blocks

// Leaves the cell without a statement when nothing of it remains. A test stays what it is.
void walk_statement(LIST *cell) {
  cp.line = cell->line;
  cp.line2 = cell->line2;
  rewrite_statement(cell->item);
  const bool yields_value = op_effect(cell->item->op) == PURE || cell->item->op == COMMA_OP;
  if (yields_value && cell->next) cell->item = discard_value(cell->item);
}

// Returns the cell of the last statement.
LIST *walk_statements(BB *block) {
  LIST *last = nullptr;
  for (LIST **link = &block->trees; LIST *cell = *link;) {
    walk_statement(cell);
    if (cell->item) {
      last = cell;
      link = &cell->next;
      continue;
    }
    *link = cell->next;
    cell->next = nullptr;
    erase_list(cell);
  }
  return last;
}

// Whether all predecessors of a block stand ahead of it, remembered while that does not change.
class EntryDirections {
public:
  bool all_from_above(const BB *block) {
    const auto [known, is_new] = known_.try_emplace(block, true);
    if (!is_new) return known->second;
    for (const EDGE *edge = block->preds; edge; edge = edge->next)
      if (edge->bb->dfn >= block->dfn) known->second = false;
    return known->second;
  }
  void forget(const BB *block) { known_.erase(block); }

private:
  std::unordered_map<const BB *, bool> known_;
};

// The test that a jump at the block's end leads to, when it may be decided here.
const NODE *reached_test(const BB *block, const NODE *transfer, EntryDirections &directions) {
  if (transfer->op != BRANCH) return nullptr;
  const BB *target = target_block(transfer->left);
  if (!target || target == block || !target->trees || target->trees->next) return nullptr;
  if (target == block->next && single_edge(target->preds)) return nullptr;
  NODE *test = target->trees->item;
  if ((test->op != IF && test->op != SWITCH) || has_side_effects(test->left)) return nullptr;
  if (edge_contains(target->succs, target) || !directions.all_from_above(target)) return nullptr;
  return test;
}

// goto a;   a: if (x > 2) goto b; else goto c;   ->   goto b, when x is known to be 3 here.
bool skip_decided_test(BB *block, LIST *last, EntryDirections &directions) {
  const NODE *test = reached_test(block, last->item, directions);
  if (!test) return false;
  NODE *copy = copy_tree(test);
  rewrite_statement(copy);
  if (copy->op != test->op || copy->left->op != ICON) {
    erase_tree(copy);
    return false;
  }
  erase_tree(last->item);
  last->item = copy;
  if (copy->op == IF) {
    NODE *condition = copy->left;
    turn_into_branch(copy, condition->u.lval != 0);
    erase_tree(condition);
  }
  refresh_successors(block, copy);
  for (const EDGE *edge = block->succs; edge; edge = edge->next)
    directions.forget(edge->bb);
  return true;
}

// Does what is known at the block's end hold at the start of next? A block that leads back is no
// part of an extended block.
bool carries_on(const BB *block, const BB *next) {
  if (!continues_extended_block(block, next)) return false;
  const EDGE *first = block->succs;
  if (!first || first->bb->dfn <= block->dfn) return false;
  return !first->next || first->next->bb->dfn > block->dfn;
}

void forget_all_values() {
  forget_available();
  cp.lost = cp.version;
}

// Loops that count: the trip count of a header that is entered from here alone is known where the
// control variable's value is, which is where loop_step belongs once loops are made to count.
void walk_blocks() {
  const EdgeKeeper keeper;
  EntryDirections directions;
  for (BB *block = state.first_bb; block;) {
    LIST *last = walk_statements(block);
    while (last && skip_decided_test(block, last, directions)) {
    }
    BB *next = next_walked_block(block);
    if (carries_on(block, next))
      forget_constant_temporaries();
    else
      forget_all_values();
    block = next;
  }
}

} // namespace

void copyprop(bool track_constants) {
  sym_split();
  for (int round = 0; round < most_rounds; ++round) {
    debug_print("\n\n\t\t\t---------- ENTERING 'copyprop' -----------------\n");
    scan_function(track_constants);
    walk_blocks();
    forget_available();
    forget_global_ASGs();
    if (!cp.cfg_changed) break;
    recompute_cfg();
    simpcfg(0);
  }
  elim_dead_assigns(options.opt_level > 1, true);
}

} // namespace velkor
