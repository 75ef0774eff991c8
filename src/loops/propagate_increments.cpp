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
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace velkor {
namespace {

constexpr int backward_reach = 5; // blocks
constexpr int forward_budget = 5; // blocks, the step's own included
constexpr int bits_per_byte = 8;

bool any_across; // a step went around a back edge

// ------------------------------------------------------------------------------------------------
// Steps

// p = p + k
bool is_step_statement(const NODE *statement) {
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
// Where the stepped pointers are mentioned

// A statement of a block as the pass found it, and what has come of it: the cells of the statements
// that it has been split into or that were put beside it. Empty when it was a step that is folded.
struct Place {
  LIST *first;
  int count;
};

// The places of a block in order, and for each stepped pointer those that mention it, ascending:
// most statements have nothing to do with the step at hand and are never looked at.
class BlockIndex {
public:
  static constexpr int nowhere = -1;

  explicit BlockIndex(const BB *block);

  // The nearest place ahead of, or behind, the given one that mentions sym; nowhere if there is
  // none. From the block's end and its start: size() and nowhere.
  [[nodiscard]] int ahead_of(int place, const SYM *sym) const;
  [[nodiscard]] int behind(int place, const SYM *sym) const;

  [[nodiscard]] int size() const { return static_cast<int>(places_.size()); }
  Place &operator[](int place) { return places_[static_cast<std::size_t>(place)]; }
  [[nodiscard]] std::vector<LIST *> cells(int place) const;

  // The block's last statement, which stays the last.
  [[nodiscard]] LIST *last() const { return last_; }
  // Puts a statement of line 0 in front of it, into its place.
  void put_before_last(NODE *statement);

  // The cell of the place, with a step of sym, is about to go.
  void remove_step(int place, const LIST *cell, const SYM *sym);
  // A statement of the place has come to mention sym.
  void add_mention(int place, const SYM *sym);

private:
  void enter(const NODE *tree, int place);
  void remove_mention(int place, const SYM *sym);

  std::vector<Place> places_;
  LIST *last_ = nullptr;
  std::unordered_map<const SYM *, std::vector<int>> mentions_;
};

std::unordered_set<const SYM *> stepped_symbols;
std::unordered_map<const BB *, BlockIndex> indices; // of the blocks looked at so far

BlockIndex::BlockIndex(const BB *block) {
  for (LIST *cell = block->trees; cell; cell = cell->next) {
    places_.push_back({cell, 1});
    enter(cell->item, size() - 1);
    last_ = cell;
  }
}

void BlockIndex::enter(const NODE *tree, int place) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) {
      if (stepped_symbols.contains(tree->u.sym)) add_mention(place, tree->u.sym);
      return;
    }
    if (tree->right) enter(tree->right, place);
  }
}

int BlockIndex::ahead_of(int place, const SYM *sym) const {
  const auto found = mentions_.find(sym);
  if (found == mentions_.end()) return nowhere;
  const std::vector<int> &places = found->second;
  const auto bound = std::lower_bound(places.begin(), places.end(), place);
  return bound == places.begin() ? nowhere : bound[-1];
}

int BlockIndex::behind(int place, const SYM *sym) const {
  const auto found = mentions_.find(sym);
  if (found == mentions_.end()) return nowhere;
  const auto bound = std::upper_bound(found->second.begin(), found->second.end(), place);
  return bound == found->second.end() ? nowhere : *bound;
}

std::vector<LIST *> BlockIndex::cells(int place) const {
  const Place &at = places_[static_cast<std::size_t>(place)];
  std::vector<LIST *> result;
  LIST *cell = at.first;
  for (int i = 0; i < at.count; ++i, cell = cell->next)
    result.push_back(cell);
  return result;
}

void BlockIndex::put_before_last(NODE *statement) {
  LIST *cell = last_;
  last_ = cell->next = list_cons(cell->item, nullptr, cell->line, cell->line2);
  cell->item = statement;
  cell->line = cell->line2 = 0;
  places_.back().count += 1;
}

void BlockIndex::remove_mention(int place, const SYM *sym) {
  std::vector<int> &places = mentions_[sym];
  const auto found = std::lower_bound(places.begin(), places.end(), place);
  if (found != places.end() && *found == place) places.erase(found);
}

void BlockIndex::add_mention(int place, const SYM *sym) {
  std::vector<int> &places = mentions_[sym];
  const auto found = std::lower_bound(places.begin(), places.end(), place);
  if (found == places.end() || *found != place) places.insert(found, place);
}

void BlockIndex::remove_step(int place, const LIST *cell, const SYM *sym) {
  Place &at = (*this)[place];
  if (at.first == cell) at.first = cell->next;
  at.count -= 1;
  bool is_mentioned = false;
  for (const LIST *other : cells(place))
    is_mentioned |= other != cell && mentions(other->item, sym);
  if (!is_mentioned) remove_mention(place, sym);
}

BlockIndex &index_of(const BB *block) {
  return indices.try_emplace(block, block).first->second;
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
Look fold_into_statement(const NODE *step, LIST *cell, Place &place, Side side, bool may_fold) {
  Access access = find_access(step, cell->item, side);
  if (!access.occurs()) return Look::NOTHING;
  if (!may_fold) return Look::FAILED;
  if (access.is_blocked) {
    if (!has_scalar_value(cell->item)) return Look::FAILED;
    NODE *part = side == Side::AHEAD ? cell->item->left : cell->item->right;
    access = find_access(step, part, side);
    if (!access.deref) return Look::FAILED;
    split_off_value(cell);
    place.count += 1;
  }
  fold_into(step, access.deref, side);
  return Look::FOLDED;
}

// ------------------------------------------------------------------------------------------------
// Backward

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

// Looks at the places ahead of the given one, the last one first.
Look look_back(const NODE *step, BlockIndex &index, int place, bool may_fold) {
  const SYM *sym = stepped_symbol(step);
  while ((place = index.ahead_of(place, sym)) != BlockIndex::nowhere) {
    const std::vector<LIST *> cells = index.cells(place);
    for (std::size_t i = cells.size(); i-- > 0;) {
      const Look look = fold_into_statement(step, cells[i], index[place], Side::AHEAD, may_fold);
      if (look != Look::NOTHING) return look;
    }
  }
  return Look::NOTHING;
}

// The step stands at the place of block. home is the number of the only block in which an access
// may take the step, for every path to the step runs through it.
bool fold_back(const NODE *step, int place, const BB *block) {
  const int top = block->dfn;
  int home = top;
  Look look = look_back(step, index_of(block), place, true);
  while (look == Look::NOTHING) {
    if (top - block->dfn > backward_reach || !can_go_back(block, top, home)) return false;
    block = block->prev;
    BlockIndex &index = index_of(block);
    look = look_back(step, index, index.size(), block->dfn == home);
  }
  return look == Look::FOLDED;
}

// The step has gone elsewhere: its cell, to which link leads, goes.
void drop_step(LIST **link, BlockIndex &index, int place) {
  LIST *cell = *link;
  *link = cell->next;
  index.remove_step(place, cell, stepped_symbol(cell->item));
  erase_tree(cell->item);
  give_list(cell);
}

// From link, which is in front of the cell in its list, to the one that leads to the cell.
LIST **link_to(const LIST *cell, LIST **link) {
  while (*link != cell)
    link = &(*link)->next;
  return link;
}

void walk_backward(BB *block) {
  BlockIndex &index = index_of(block);
  for (int place = index.size(); place-- > 0;) {
    const LIST *cell = index[place].first;
    if (!is_step_statement(cell->item) || !fold_back(cell->item, place, block)) continue;
    LIST **ahead = place > 0 ? &index[place - 1].first->next : &block->trees;
    drop_step(link_to(cell, ahead), index, place);
  }
}

// ------------------------------------------------------------------------------------------------
// Forward

bool fold_ahead(const NODE *step, int place, BB *block, int top, int home, int budget);

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

// The last cell of the list that mentions sym, or none.
LIST *last_mention(const std::vector<LIST *> &cells, const SYM *sym) {
  for (std::size_t i = cells.size(); i-- > 0;)
    if (mentions(cells[i]->item, sym)) return cells[i];
  return nullptr;
}

// p = p - k behind the last statement of the loop's entry that uses p; the last place that there is
// is in front of the transfer, which does not.
void undo_at_entry(const NODE *step, const Loop &loop) {
  NODE *undo = copy_tree(step);
  undo->right->op = SUBTRACT;
  undo = simplify_tree(undo);
  const SYM *sym = stepped_symbol(step);
  BlockIndex &index = index_of(loop.entry);
  int place = index.ahead_of(index.size(), sym);
  if (place != BlockIndex::nowhere) {
    LIST *cell = last_mention(index.cells(place), sym);
    cell->next = list_cons(undo, cell->next, 0, 0);
    index[place].count += 1;
  } else {
    place = index.size() - 1;
    index.put_before_last(undo);
    index.add_mention(place, sym);
  }
}

// The step at the end of the loop moves to its top. On the way in it is undone, and on the way out
// it is made: the last trip does not come past the access any more.
//
// The search goes on in the header, and can reach another latch there, but only one of a loop
// further out: headers are entered here alone, and the header's number falls each time.
bool around_back_edge(const NODE *step, BB *latch, int budget) {
  Loop loop = find_loop(latch);
  // The entry's transfer must not see the pointer set back.
  if (!loop.header || mentions(index_of(loop.entry).last()->item, stepped_symbol(step)))
    return false;
  const int header_number = loop.header->dfn;
  if (!fold_ahead(step, BlockIndex::nowhere, loop.header, header_number, header_number, budget + 1))
    return false;
  any_across = true;
  if (!single_edge(loop.exit->preds)) loop.exit = split_edge(latch, loop.exit);
  loop.exit->trees = list_cons(copy_tree(step), loop.exit->trees, 0, 0);
  indices.erase(loop.exit); // which is not at hand, as it lies outside of the loop
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
  return fold_ahead(step, BlockIndex::nowhere, next, top, home, budget);
}

// Looks behind the step, which stands at the place, or at the whole block when that is nowhere.
// There the walk may come around to the step, which then fails.
Look look_ahead(const NODE *step, BlockIndex &index, int place, bool may_fold) {
  const SYM *sym = stepped_symbol(step);
  bool is_behind = place == BlockIndex::nowhere;
  if (is_behind) place = index.behind(place, sym);
  for (; place != BlockIndex::nowhere; place = index.behind(place, sym))
    for (LIST *cell : index.cells(place)) {
      if (cell->item == step) {
        if (is_behind) return Look::FAILED;
        is_behind = true;
        continue;
      }
      if (!is_behind) continue;
      const Look look = fold_into_statement(step, cell, index[place], Side::BEHIND, may_fold);
      if (look != Look::NOTHING) return look;
    }
  return Look::NOTHING;
}

// Goes on in block behind the step at the place, or at the block's start. top: number of the only
// block in which an access may take the step, for every path from the step runs through it.
bool fold_ahead(const NODE *step, int place, BB *block, int top, int home, int budget) {
  const Look look = look_ahead(step, index_of(block), place, block->dfn == top);
  if (look != Look::NOTHING) return look == Look::FOLDED;
  if (step_ahead(step, block, top, home, budget)) return true;
  return block->dfn >= top && around_back_edge(step, block, budget);
}

void walk_forward(BB *block) {
  BlockIndex &index = index_of(block);
  LIST **link = &block->trees;
  for (int place = 0; place < index.size(); ++place)
    for (const LIST *cell : index.cells(place)) {
      link = link_to(cell, link);
      if (is_step_statement(cell->item) &&
          fold_ahead(cell->item, place, block, block->dfn, block->dfn, forward_budget))
        drop_step(link_to(cell, link), index, place);
    }
}

void find_stepped_symbols() {
  indices.clear();
  stepped_symbols.clear();
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      if (is_step_statement(cell->item)) stepped_symbols.insert(stepped_symbol(cell->item));
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
  if (function_returns_twice()) return; // a step moved over the call would be made again
  find_stepped_symbols();
  if (stepped_symbols.empty()) return;
  for (BB *block = state.first_bb->prev;; block = block->prev) {
    walk_backward(block);
    if (block == state.first_bb) break;
  }
  for (BB *block = state.first_bb; block; block = block->next)
    walk_forward(block);
  indices.clear();
  if (any_across) elim_dead_assigns(false, false);
}

} // namespace velkor
