#include "loops/propagate_increments.h"

#include "cfg/graph.h"
#include "cfg/returns_twice.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "diag/dump.h"
#include "diag/infix.h"
#include "scalar/dead_assignments.h"
#include "scalar/live_variables.h"
#include "scalar/split_edge.h"
#include "simplify/patterns.h"

#include <algorithm>
#include <vector>

namespace velkor {
namespace {

constexpr int backward_reach = 5; // blocks
constexpr int forward_budget = 5; // blocks, the step's own included
constexpr int bits_per_byte = 8;

bool any_across; // a step went around a back edge
bool any_split;  // a statement has been split into two

// ------------------------------------------------------------------------------------------------
// Steps

// p = p + k
bool is_step(const NODE *statement) {
  if (statement->op != ASSIGN || statement->left->op != NAME) return false;
  const SYM *sym = statement->left->u.sym;
  if (sym->sclass != C_AUTO || sym->fcp_flag || is_volatile_symbol(sym)) return false;
  if (!is_pointer(statement->left->type)) return false;
  const NODE *sum = statement->right;
  return sum->op == ADD && sum->type == statement->left->type && is_name_of(sum->left, sym) &&
         sum->right->op == ICON && sum->right->u.lval != 0;
}

const SYM *stepped_symbol(const NODE *step) {
  return step->left->u.sym;
}

// Bytes.
std::int32_t size_of_step(const NODE *step) {
  return step->right->right->u.lval;
}

bool mentions(const NODE *tree, const SYM *sym) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) return tree->u.sym == sym;
    if (tree->right && mentions(tree->right, sym)) return true;
  }
  return false;
}

// ------------------------------------------------------------------------------------------------
// The access that can take a step

// Where the access stands, seen from the step.
enum class Side : std::uint8_t { AHEAD, BEHIND };

// How the step's pointer occurs in a tree: not at all, in ways that cannot take the step, or as the
// address of one access.
struct Access {
  bool is_blocked = false;
  NODE *deref = nullptr;
  [[nodiscard]] bool occurs() const { return is_blocked || deref; }
};

constexpr Access blocked{true, nullptr};

bool step_fits(const NODE *step, const NODE *deref) {
  const std::int64_t bits = std::int64_t{size_of_step(step)} * bits_per_byte;
  if (bits == deref->depnum || bits == -std::int64_t{deref->depnum}) return true;
  if (!is_derived(deref->type) &&
      (bits == type_size(deref->type) || -bits == type_size(deref->type)))
    return true;
  return auto_step_fits(size_of_step(step), deref->type, deref->depnum / bits_per_byte);
}

// *p, and the access at the place that p has on the step's other side.
bool can_take_step(const NODE *step, const NODE *deref, Side side) {
  const NODE *address = deref->left;
  if (options.opt_target_mode == 1 || !step_fits(step, deref)) return false;
  if (is_name_of(address, stepped_symbol(step))) return true;
  if (address->op != ADD || !is_name_of(address->left, stepped_symbol(step))) return false;
  const std::int64_t offset =
      side == Side::AHEAD ? std::int64_t{size_of_step(step)} : -std::int64_t{size_of_step(step)};
  return address->right->op == ICON && address->right->u.lval == offset;
}

Access both(Access left, Access right) {
  if (left.is_blocked || right.is_blocked || (left.deref && right.deref)) return blocked;
  return left.deref ? left : right;
}

Access find_access(const NODE *step, NODE *tree, Side side);

// An access that may not be made, or not always, cannot take the step.
Access find_unsure_access(const NODE *step, NODE *tree, Side side) {
  return find_access(step, tree, side).occurs() ? blocked : Access{};
}

Access find_access(const NODE *step, NODE *tree, Side side) {
  switch (tree->op) {
  case NAME: return tree->u.sym == stepped_symbol(step) ? blocked : Access{};
  case DEREF:
    if (can_take_step(step, tree, side)) return {false, tree};
    break;
  case LOGICAL_AND:
  case LOGICAL_OR:
  case CONDITIONAL:
    return both(find_access(step, tree->left, side), find_unsure_access(step, tree->right, side));
  case NASSERT: return find_unsure_access(step, tree->left, side);
  default: break;
  }
  if (!tree->left) return {};
  const Access left = find_access(step, tree->left, side);
  return tree->right ? both(left, find_access(step, tree->right, side)) : left;
}

// ------------------------------------------------------------------------------------------------
// Folding

// Copies of the step take its place: *p becomes *p++ or *(p = p + k).

NODE *step_behind_access(const NODE *step) {
  NODE *result = copy_tree(step->right);
  NODE *size = result->right;
  result->op = size->u.lval < 0 ? DECREMENT : INCREMENT;
  if (size->u.lval < 0) size->u.lval = wrap_value(-size->u.lval, size->type);
  return result;
}

// An access on the step's side where p still has its old value is made ahead of the step; one at
// the other side's place behind it.
void fold_into(const NODE *step, NODE *deref, Side side) {
  const bool steps_ahead = (deref->left->op == NAME) == (side == Side::BEHIND);
  erase_tree(deref->left);
  deref->left = steps_ahead ? copy_tree(step) : step_behind_access(step);
}

bool has_scalar_value(const NODE *statement) {
  return statement->op == ASSIGN && is_scalar(statement->right->type);
}

// t = e  ->  A$1 = e; t = A$1. The cell keeps the first, the new one behind it gets the second.
void split_off_value(LIST *cell) {
  any_split = true;
  NODE *assignment = cell->item;
  NODE *value = assignment->right;
  SYM *sym = make_temp('A', -1, value->depnum, value->type);
  NODE *temporary = make_name(sym);
  temporary->depnum = value->depnum;
  assignment->right = copy_node(temporary);
  cell->next = list_cons(assignment, cell->next, cell->line, cell->line2);
  cell->item = make_node(ASSIGN, temporary, value, value->type);
}

// What has come of a look at one statement.
enum class Look : std::uint8_t { NOTHING, FAILED, FOLDED };

// Folds the step into the statement if the pointer occurs in it, in the right way. may_fold: the
// statement is run exactly when the step is.
Look fold_into_statement(const NODE *step, LIST *cell, Side side, bool may_fold) {
  Access access = find_access(step, cell->item, side);
  if (!access.occurs()) return Look::NOTHING;
  if (!may_fold) return Look::FAILED;
  if (access.is_blocked) {
    if (!has_scalar_value(cell->item)) return Look::FAILED;
    NODE *part = side == Side::AHEAD ? cell->item->left : cell->item->right;
    access = find_access(step, part, side);
    if (!access.deref) return Look::FAILED;
    split_off_value(cell);
  }
  fold_into(step, access.deref, side);
  return Look::FOLDED;
}

// ------------------------------------------------------------------------------------------------
// Backward

std::vector<LIST *> cells_of(const BB *block) {
  std::vector<LIST *> cells;
  for (LIST *cell = block->trees; cell; cell = cell->next)
    cells.push_back(cell);
  return cells;
}

// Is every way into block from a block ahead of it, the previous one among them, and does every way
// out of the previous one lead into the region from block to the one of number top? home becomes
// the least of the blocks that lead here.
bool can_go_back(const BB *block, int top, int &home) {
  const BB *previous = block->prev;
  if (block == state.first_bb || !edge_contains(block->preds, previous)) return false;
  for (const EDGE *edge = block->preds; edge; edge = edge->next) {
    if (edge->bb->dfn >= block->dfn) return false;
    home = std::min(home, edge->bb->dfn);
  }
  for (const EDGE *edge = previous->succs; edge; edge = edge->next)
    if (edge->bb->dfn < block->dfn || edge->bb->dfn > top) return false;
  return true;
}

// Looks at the first count of the cells, the last one first.
Look look_back(const NODE *step, const std::vector<LIST *> &cells, std::size_t count,
               bool may_fold) {
  while (count-- > 0) {
    const Look look = fold_into_statement(step, cells[count], Side::AHEAD, may_fold);
    if (look != Look::NOTHING) return look;
  }
  return Look::NOTHING;
}

// The step stands in block behind count of its cells. home is the number of the only block in which
// an access may take the step, for every path to the step runs through it.
bool fold_back(const NODE *step, const std::vector<LIST *> &cells, std::size_t count,
               const BB *block) {
  const int top = block->dfn;
  int home = top;
  Look look = look_back(step, cells, count, true);
  while (look == Look::NOTHING) {
    if (top - block->dfn > backward_reach || !can_go_back(block, top, home)) return false;
    block = block->prev;
    const std::vector<LIST *> previous = cells_of(block);
    look = look_back(step, previous, previous.size(), block->dfn == home);
  }
  return look == Look::FOLDED;
}

void walk_backward(BB *block) {
  std::vector<LIST *> cells = cells_of(block);
  for (std::size_t i = cells.size(); i-- > 0;) {
    LIST *cell = cells[i];
    any_split = false;
    if (!is_step(cell->item) || !fold_back(cell->item, cells, i, block)) continue;
    LIST **link = &block->trees;
    if (i > 0) link = &cells[i - 1]->next;
    if (*link != cell) link = &(*link)->next; // the statement ahead was split
    *link = cell->next;
    erase_tree(cell->item);
    give_list(cell);
    if (!any_split) continue;
    const std::size_t others = cells.size() - 1;
    cells = cells_of(block);
    i += cells.size() - others; // cells in front of the step
  }
}

// ------------------------------------------------------------------------------------------------
// Forward

bool fold_ahead(const NODE *step, LIST *list, BB *block, int top, int home, int budget);

bool lies_within(const BB *block, const BB *first, const BB *last) {
  return block->dfn >= first->dfn && block->dfn <= last->dfn;
}

// A loop that control enters from one place and leaves at its end.
struct Loop {
  BB *header;
  BB *latch;
  BB *entry; // the block that leads to the header, and nowhere else
  BB *exit;  // the other successor of the latch
};

// The loop whose latch is the given block; header is none when there is no such loop.
Loop find_loop(BB *latch) {
  if (edge_count(latch->succs) != 2) return {};
  BB *header = latch->succs->bb;
  BB *exit = latch->succs->next->bb;
  if (exit->dfn < header->dfn) std::swap(header, exit);
  if (header == state.first_bb || header->dfn > latch->dfn || edge_count(header->preds) != 2)
    return {};
  BB *entry = header->preds->bb == latch ? header->preds->next->bb : header->preds->bb;
  if (single_edge(entry->succs) != header || lies_within(entry, header, latch) ||
      lies_within(exit, header, latch))
    return {};
  return {header, latch, entry, exit};
}

void report_around(const Loop &loop, const NODE *step) {
  if (options.debug_level == 0) return;
  debug_print("\n\tBB->DFN [%d-%d] with pre-header %d and exit %d\n", loop.header->dfn,
              loop.latch->dfn, loop.entry->dfn, loop.exit->dfn);
  debug_print("\tAssignment propagated around back edge of loop: %s\n", tree2infix(step));
  debug_print("\t(Original assignment has not yet been removed.)\n");
}

void print_loop(const Loop &loop) {
  if (options.debug_level == 0) return;
  print_block_trees(loop.entry, loop.entry);
  print_block_trees(loop.header, loop.latch);
  print_block_trees(loop.exit, loop.exit);
}

// p = p - k behind the last statement of the loop's entry that uses p; the last place that there is
// is in front of the transfer.
void undo_at_entry(const NODE *step, const Loop &loop) {
  NODE *undo = copy_tree(step);
  undo->right->op = SUBTRACT;
  undo = simplify_tree(undo);
  LIST **link = &loop.entry->trees;
  LIST **place = nullptr;
  for (; (*link)->next; link = &(*link)->next)
    if (mentions((*link)->item, stepped_symbol(step))) place = &(*link)->next;
  if (!place) place = link;
  *place = list_cons(undo, *place, 0, 0);
}

// The step at the end of the loop moves to its top. On the way in it is undone, and on the way out
// it is made: the last trip does not come past the access any more.
//
// The search goes on in the header, and can reach another latch there, but only one of a loop
// further out: headers are entered here alone, and the header's number falls each time.
bool around_back_edge(const NODE *step, BB *latch, int budget) {
  Loop loop = find_loop(latch);
  // The entry's transfer must not see the pointer set back.
  if (!loop.header || mentions(last_cell(loop.entry)->item, stepped_symbol(step))) return false;
  const int header_number = loop.header->dfn;
  if (!fold_ahead(step, loop.header->trees, loop.header, header_number, header_number, budget + 1))
    return false;
  any_across = true;
  if (!single_edge(loop.exit->preds)) loop.exit = split_edge(latch, loop.exit);
  loop.exit->trees = list_cons(copy_tree(step), loop.exit->trees, 0, 0);
  report_around(loop, step);
  undo_at_entry(step, loop);
  print_loop(loop);
  return true;
}

// On to the next block, if all ways from here lead into it or behind it, and all ways into it come
// from the region from home to here.
bool step_ahead(const NODE *step, const BB *block, int top, int home, int budget) {
  budget -= 1;
  BB *next = block->next;
  if (budget == 0 || !next || !edge_contains(block->succs, next)) return false;
  for (const EDGE *edge = block->succs; edge; edge = edge->next) {
    if (edge->bb->dfn <= block->dfn) return false;
    top = std::max(top, edge->bb->dfn);
  }
  if (top - next->dfn > budget) return false;
  for (const EDGE *edge = next->preds; edge; edge = edge->next)
    if (edge->bb->dfn < home || edge->bb->dfn > block->dfn) return false;
  return fold_ahead(step, next->trees, next, top, home, budget);
}

// The list is what is left of block. top: number of the only block in which an access may take the
// step, for every path from the step runs through it.
bool fold_ahead(const NODE *step, LIST *list, BB *block, int top, int home, int budget) {
  for (LIST *cell = list; cell; cell = cell->next) {
    if (cell->item == step) return false; // the walk has come around
    const Look look = fold_into_statement(step, cell, Side::BEHIND, block->dfn == top);
    if (look != Look::NOTHING) return look == Look::FOLDED;
  }
  if (step_ahead(step, block, top, home, budget)) return true;
  return block->dfn >= top && around_back_edge(step, block, budget);
}

// Takes the next cell's contents into this one.
void drop_cell(LIST *cell) {
  LIST *next = cell->next;
  *cell = *next;
  give_list(next);
}

void walk_forward(BB *block) {
  for (LIST *cell = block->trees; cell->next;) {
    NODE *step = cell->item;
    if (is_step(step) &&
        fold_ahead(step, cell->next, block, block->dfn, block->dfn, forward_budget)) {
      drop_cell(cell);
      erase_tree(step);
    } else {
      cell = cell->next;
    }
  }
}

} // namespace

bool auto_step_fits(std::int32_t k, TypeWord type, std::int32_t size) {
  if (options.opt_target_mode == 1) return false;
  if (size == 1) size = type == UNSIGNED_CHAR ? 4 : 2;
  switch (size) {
  case 2: return k >= -255 && k <= 255;
  case 4: return k >= -4095 && k <= 4095;
  default: return false;
  }
}

void propagate_increments() {
  if (options.debug_level != 0)
    debug_print("\n\n\t\t\t---------- ENTERING 'propagate_increments' --------\n");
  any_across = false;
  renumber_blocks();
  live_variables = LiveVariables{}; // other passes have changed the graph and its blocks' slots
  flag_addressed_objects(AddressUse::ANY);
  if (function_returns_twice()) return;
  for (BB *block = state.first_bb->prev;; block = block->prev) {
    walk_backward(block);
    if (block == state.first_bb) break;
  }
  for (BB *block = state.first_bb; block; block = block->next)
    walk_forward(block);
  if (any_across) elim_dead_assigns(false, false);
}

} // namespace velkor
