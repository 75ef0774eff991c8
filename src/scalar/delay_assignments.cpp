#include "scalar/delay_assignments.h"

#include "cfg/graph.h"
#include "cfg/returns_twice.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/dump.h"
#include "diag/infix.h"
#include "scalar/combine_assignments.h"
#include "scalar/live_variables.h"
#include "scalar/split_edge.h"
#include "scalar/value_copies.h"
#include "simplify/patterns.h"

#include <cstddef>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velkor {
namespace {

bool delay_moved;          // the current statement lost an assignment
bool steps_may_be_delayed; // not where a call may come back twice: the step would be made again

// ------------------------------------------------------------------------------------------------
// Which assignment

bool is_local_candidate(const NODE *node) {
  return node->op == NAME && node->u.sym->sclass == C_AUTO && is_candidate(node->u.sym) &&
         is_scalar(node->u.sym->stype);
}

bool yields_constant(const NODE *value) {
  while (value->op == SCONV || value->op == PCONV)
    value = value->left;
  return is_constant_or_name_address(value);
}

// x = constant, and x = x + constant where self_ok.
bool assigns_constant(const NODE *assignment, bool self_ok) {
  const NODE *target = assignment->left;
  if (!is_local_candidate(target)) return false;
  const NODE *value = assignment->right;
  if (self_ok && steps_may_be_delayed && is_sum_or_difference(value) &&
      is_name_of(value->left, target->u.sym))
    value = value->right;
  return yields_constant(value);
}

bool is_delayable_step(const NODE *step) {
  return steps_may_be_delayed && is_local_candidate(step->left) && step->right->op == ICON;
}

// The machine makes these steps while it accesses memory; the 16-bit instruction forms cannot.
bool is_write_back_address(const NODE *address) {
  return options.opt_target_mode != 1 &&
         (address->op == ASSIGN || is_increment_or_decrement(address->op));
}

// The first assignment of the tree that can be delayed, or none. self_ok: the value that it leaves
// behind is one that a statement or a comparison can compute without the variable.
NODE *find_delayable(NODE *tree, bool self_ok) {
  for (; tree; tree = tree->left) {
    switch (tree->op) {
    case COMMA_OP:
    case LOOP:
    case ENDLOOP:
    case INITLOOP:
    case NASSERT: return nullptr; // never evaluated
    case DEREF:
      if (is_write_back_address(tree->left)) return nullptr;
      self_ok = false;
      continue;
    case ASSIGN:
      if (assigns_constant(tree, self_ok)) return tree;
      break;
    case INCREMENT:
    case DECREMENT: return is_delayable_step(tree) ? tree : nullptr;
    case LOGICAL_AND: // the right side may not be evaluated
    case LOGICAL_OR:
    case CONDITIONAL: self_ok = false; continue;
    default: break;
    }
    self_ok = tree->right && tree->right->op == ICON;
    if (!tree->right || tree->op == MEMBER || tree->op == ARROW) continue;
    if (NODE *found = find_delayable(tree->right, false)) return found;
  }
  return nullptr;
}

// ------------------------------------------------------------------------------------------------
// Where the variable is mentioned

// How often a NAME of sym stands in the tree.
int count_mentions(const NODE *tree, const SYM *sym) {
  int count = 0;
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) return count + (tree->u.sym == sym);
    if (tree->right) count += count_mentions(tree->right, sym);
  }
  return count;
}

// Assembler code may mention anything.
bool mentions(const NODE *tree, const SYM *sym) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) return tree->u.sym == sym;
    if (tree->op == ASM) return !is_comment_asm(tree);
    if (tree->right && mentions(tree->right, sym)) return true;
  }
  return false;
}

// Where the statements of a block first mention each variable. Of the block at hand only the
// statements behind the one at hand are entered. Statements are known by numbers of their own,
// because the cell in which one stands changes when an assignment is put in front of it.
class FirstMentions {
public:
  // Enters the statement of the cell, which stands in front of those entered so far.
  void enter_in_front(LIST *cell);
  // The cell of the first statement entered that mentions sym, or none.
  LIST *find(const SYM *sym);
  // The cell of the last statement; none when nothing is entered.
  LIST *last_cell() { return last_ == nobody ? nullptr : cell_of(last_); }
  // The statement of the cell stands in new_cell now, and one that mentions sym alone of the
  // variables took its place, in front of it.
  void note_insertion(LIST *cell, LIST *new_cell, const SYM *sym);
  // The statement of next_cell has gone into that of the cell in front of it.
  void note_merge(const LIST *cell, const LIST *next_cell);

private:
  static constexpr int nobody = -1;

  int number(LIST *cell);
  int merged_into(int statement);
  LIST *cell_of(int statement) { return cells_[static_cast<std::size_t>(merged_into(statement))]; }
  void enter_names(const NODE *tree, int statement);

  std::vector<LIST *> cells_; // by statement
  std::vector<int> merged_;   // by statement: the one that it has gone into, or itself
  std::unordered_map<const LIST *, int> statements_; // by cell
  std::unordered_map<const SYM *, int> first_;
  int first_of_others_ = nobody; // of variables that are not in first_
  int last_ = nobody;
};

int FirstMentions::number(LIST *cell) {
  const int statement = static_cast<int>(cells_.size());
  cells_.push_back(cell);
  merged_.push_back(statement);
  statements_[cell] = statement;
  return statement;
}

int FirstMentions::merged_into(int statement) {
  for (;;) {
    int &next = merged_[static_cast<std::size_t>(statement)];
    if (next == statement) return statement;
    next = merged_[static_cast<std::size_t>(next)];
    statement = next;
  }
}

void FirstMentions::enter_names(const NODE *tree, int statement) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) {
      if (is_candidate(tree->u.sym)) first_[tree->u.sym] = statement;
      return;
    }
    if (tree->op == ASM && !is_comment_asm(tree)) {
      first_.clear();
      first_of_others_ = statement;
    }
    if (tree->right) enter_names(tree->right, statement);
  }
}

void FirstMentions::enter_in_front(LIST *cell) {
  const int statement = number(cell);
  if (last_ == nobody) last_ = statement;
  enter_names(cell->item, statement);
}

// Simplification after a merge may have taken the name out of the statement: then it is looked for
// further on.
LIST *FirstMentions::find(const SYM *sym) {
  const auto found = first_.find(sym);
  const int statement = found == first_.end() ? first_of_others_ : found->second;
  if (statement == nobody) return nullptr;
  LIST *cell = cell_of(statement);
  if (mentions(cell->item, sym)) return cell;
  while (cell && !mentions(cell->item, sym))
    cell = cell->next;
  first_[sym] = cell ? statements_.at(cell) : nobody;
  return cell;
}

void FirstMentions::note_insertion(LIST *cell, LIST *new_cell, const SYM *sym) {
  const int moved = merged_into(statements_.at(cell));
  cells_[static_cast<std::size_t>(moved)] = new_cell;
  statements_[new_cell] = moved;
  first_[sym] = number(cell);
}

void FirstMentions::note_merge(const LIST *cell, const LIST *next_cell) {
  const auto next = statements_.find(next_cell);
  merged_[static_cast<std::size_t>(merged_into(next->second))] = merged_into(statements_.at(cell));
  statements_.erase(next);
}

std::unordered_map<const BB *, FirstMentions> first_mentions; // of the blocks asked for so far

FirstMentions &mentions_in(const BB *block) {
  const auto [found, is_new] = first_mentions.try_emplace(block);
  if (!is_new) return found->second;
  std::vector<LIST *> cells;
  for (LIST *cell = block->trees; cell; cell = cell->next)
    cells.push_back(cell);
  for (std::size_t i = cells.size(); i-- > 0;)
    found->second.enter_in_front(cells[i]);
  return found->second;
}

// Which candidates the block mentions at most: most blocks on the way of an assignment do without
// its variable, and tell so at once. Takes over a set that nobody needs any more.
SparseSet &mentioned_in(BB *block) {
  return uses(block);
}

// What a search asks of each block on its way, for the 32 candidates that share the words of the
// one asked for last: the next search is mostly for one of them. Without this a function of
// thousands of variables and blocks spends its time in reading sets from memory. Made on demand, in
// the block's second working slot.
struct Recent {
  int place = nowhere; // of the words in the sets
  std::uint32_t live_in = 0;
  std::uint32_t live_out = 0;
  std::uint32_t mentioned = 0;
  static constexpr int nowhere = -1;
};

Recent &recent(BB *block) {
  if (!block->work[1]) block->work[1] = new (lalloc(sizeof(Recent))) Recent;
  return *static_cast<Recent *>(block->work[1]);
}

void forget_recent(BB *block) {
  if (block->work[1]) recent(block).place = Recent::nowhere;
}

const Recent &recent_for(BB *block, const SYM *sym) {
  Recent &words = recent(block);
  const int place = sym->count >> 5;
  if (words.place != place)
    words = {place, set_word(live_in(block), place), set_word(live_out(block), place),
             set_word(mentioned_in(block), place)};
  return words;
}

bool has_bit_of(std::uint32_t word, const SYM *sym) {
  return (word >> (sym->count & 31) & 1) != 0;
}
bool is_live_in(BB *block, const SYM *sym) {
  return has_bit_of(recent_for(block, sym).live_in, sym);
}
bool is_live_out(BB *block, const SYM *sym) {
  return has_bit_of(recent_for(block, sym).live_out, sym);
}
bool may_mention(BB *block, const SYM *sym) {
  return has_bit_of(recent_for(block, sym).mentioned, sym);
}

void add_all_candidates(SparseSet &set) {
  for (int number = 0; number < live_variables.num_candidates; ++number)
    set_add(set, number);
}

void add_mentions(SparseSet &set, const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) {
      if (is_candidate(tree->u.sym)) set_add(set, tree->u.sym->count);
      return;
    }
    if (tree->op == ASM && !is_comment_asm(tree)) add_all_candidates(set);
    if (tree->right) add_mentions(set, tree->right);
  }
}

void note_mentions(BB *block, const NODE *tree) {
  add_mentions(mentioned_in(block), tree);
  forget_recent(block);
}

void forget_mentions(BB *block) {
  set_clear(mentioned_in(block));
  forget_recent(block);
}

void find_mentions(BB *block) {
  block->work[1] = nullptr; // whatever another pass has left there
  forget_mentions(block);
  for (const LIST *cell = block->trees; cell; cell = cell->next)
    note_mentions(block, cell->item);
}

// The cell of the block's first statement that mentions sym, or none.
LIST *first_mention(BB *block, const SYM *sym) {
  return may_mention(block, sym) ? mentions_in(block).find(sym) : nullptr;
}

// ------------------------------------------------------------------------------------------------
// Where to go on

// From entry straight to exit, by whatever way the blocks first to last offer, which do without
// sym? Nothing may enter or leave the region elsewhere.
bool can_jump_over(const SYM *sym, const BB *entry, BB *first, const BB *last, const BB *exit) {
  for (BB *block = first; block != exit; block = block->next) {
    if (!block || first_mention(block, sym)) return false;
    for (const EDGE *edge = block->preds; edge; edge = edge->next)
      if (edge->bb->dfn < entry->dfn || edge->bb->dfn > last->dfn) return false;
    for (const EDGE *edge = block->succs; edge; edge = edge->next)
      if (edge->bb->dfn < first->dfn || edge->bb->dfn > exit->dfn) return false;
  }
  return true;
}

// The end of an edge that is not the given block, of two edges; none for any other number.
BB *other_end(const EDGE *edges, const BB *block) {
  if (edge_count(edges) != 2) return nullptr;
  if (edges->bb == block) return edges->next->bb;
  return edges->next->bb == block ? edges->bb : nullptr;
}

// A loop behind block that does without sym: the block behind the loop, or none.
BB *skip_loop(const SYM *sym, const BB *block) {
  BB *header = block->succs->bb;
  if (block->next != header) return nullptr;
  const BB *latch = other_end(header->preds, block);
  if (!latch) return nullptr;
  BB *exit = other_end(latch->succs, header);
  if (!exit || exit != latch->next || !single_edge(exit->preds)) return nullptr;
  return can_jump_over(sym, block, header, latch, exit) ? exit : nullptr;
}

// The block where two arms meet that have no other way in or out, and do without sym.
BB *join_of_arms(const SYM *sym, BB *one, BB *other) {
  if (!single_edge(one->preds) || !single_edge(other->preds)) return nullptr;
  BB *join = single_edge(one->succs);
  if (!join || single_edge(other->succs) != join || edge_count(join->preds) != 2) return nullptr;
  return first_mention(one, sym) || first_mention(other, sym) ? nullptr : join;
}

// A conditional region behind block that does without sym: the block behind it, or none.
BB *skip_branch(const SYM *sym, const BB *block) {
  BB *first = block->succs->bb;
  BB *exit = block->succs->next->bb;
  if (first->dfn <= block->dfn || exit->dfn <= block->dfn) return nullptr;
  if (!is_live_in(first, sym) || !is_live_in(exit, sym)) return nullptr;
  if (first->dfn > exit->dfn) std::swap(first, exit);
  if (BB *join = join_of_arms(sym, first, exit)) return join;
  const BB *last = exit->prev;
  if (first != block->next || first->dfn > last->dfn) return nullptr;
  if (!other_end(exit->preds, last)) return nullptr;
  return can_jump_over(sym, block, first, last, exit) ? exit : nullptr;
}

// The only successor that wants sym, if it comes later in block order.
BB *wanting_successor(const SYM *sym, const BB *block) {
  BB *result = nullptr;
  for (const EDGE *edge = block->succs; edge; edge = edge->next) {
    if (!is_live_in(edge->bb, sym)) continue;
    if (result) return nullptr;
    result = edge->bb;
  }
  return result && result->dfn > block->dfn ? result : nullptr;
}

// The block in which the search goes on behind block, or none. The edge to it may get a block of
// its own, which is the result then.
BB *next_block(const SYM *sym, BB *block) {
  if (!block->succs || !is_live_out(block, sym)) return nullptr;
  const int successors = edge_count(block->succs);
  if (successors == 1)
    if (BB *behind = skip_loop(sym, block)) return behind;
  if (successors == 2)
    if (BB *behind = skip_branch(sym, block)) return behind;
  BB *target = wanting_successor(sym, block);
  if (!target || single_edge(target->preds)) return target;
  return successors == 1 ? nullptr : split_edge(block, target);
}

// ------------------------------------------------------------------------------------------------
// Moving

struct Place {
  BB *block;
  LIST *cell;
};

// Is the statement a chain of assignments that ends in this one?
bool ends_chain(const NODE *statement, const NODE *assignment) {
  while (statement->op == ASSIGN && statement != assignment)
    statement = statement->right;
  return statement == assignment;
}

// Only the block's transfer is left behind the statement: a step would gain nothing there.
bool gains_nothing(const NODE *assignment, const Place &from, const Place &to) {
  const SYM *sym = assignment->left->u.sym;
  if (to.block != from.block || to.cell->next || mentions(to.cell->item, sym)) return false;
  return assignment->op != ASSIGN || mentions(assignment->right, sym);
}

// The node takes over the contents of its operand, whose record is freed.
void become(NODE *node, NODE *operand) {
  *node = *operand;
  give_node(operand);
}

// The assignment has gone elsewhere; its value stays.
void leave_value(NODE *assignment) {
  if (assignment->op == ASSIGN) {
    NODE *value = make_conversion(assignment->left->type, assignment->right);
    value = make_conversion(assignment->type, value);
    erase_node(assignment->left);
    become(assignment, value);
    return;
  }
  erase_tree(assignment->right);
  become(assignment, make_conversion(assignment->type, assignment->left));
}

void report_move(const NODE *assignment, const Place &from, const Place &to) {
  if (!state.debug_file) return;
  debug_print("\n\tDelaying assignment to '%s' from BB %d to BB %d\n",
              assignment->left->u.sym->name, from.block->dfn, to.block->dfn);
  debug_print("\tInserting   '%s'\n", tree2infix(assignment));
  debug_print("\tin front of '%s'\n", tree2infix(to.cell->item));
}

// Puts the assignment in front of the statement of to.
void move(NODE *assignment, const Place &from, const Place &to) {
  if (to.cell == from.cell->next && ends_chain(from.cell->item, assignment)) return;
  if (gains_nothing(assignment, from, to)) return;
  report_move(assignment, from, to);
  LIST *cell = to.cell;
  FirstMentions &index = mentions_in(to.block);
  cell->next = list_cons(cell->item, cell->next, cell->line, cell->line2);
  index.note_insertion(cell, cell->next, assignment->left->u.sym);
  note_mentions(to.block, assignment);
  cell->item = discard_value(copy_tree(assignment));
  cell->line = from.cell->line;
  cell->line2 = from.cell->line2;
  leave_value(assignment);
  delay_moved = true;
  for (LIST *next = cell->next; combine_with_next(cell); next = cell->next)
    index.note_merge(cell, next);
}

void report_search(const NODE *assignment, const Place &from) {
  if (!state.debug_file) return;
  debug_print("\n\tBB %d (line %d): Considering delaying %s\n", from.block->dfn, from.cell->line2,
              tree2infix(assignment));
  dump_blocks(from.block, from.block);
}

// Looks for the place that the assignment can wait for, and moves it there.
void delay(NODE *assignment, const Place &from) {
  const SYM *sym = assignment->left->u.sym;
  if (from.cell->next && mentions(from.cell->next->item, sym)) return;
  // x = f(x = 5): what the rest of the statement does to the variable comes first.
  if (count_mentions(from.cell->item, sym) != count_mentions(assignment, sym)) return;
  report_search(assignment, from);
  BB *last = nullptr;
  for (BB *block = from.block; block; block = next_block(sym, block)) {
    if (LIST *cell = first_mention(block, sym)) return move(assignment, from, {block, cell});
    last = block;
  }
  if (LIST *cell = mentions_in(last).last_cell()) move(assignment, from, {last, cell});
}

// ------------------------------------------------------------------------------------------------
// The function

void delay_in_statement(BB *block, LIST *cell) {
  NODE *assignment = find_delayable(cell->item, true);
  if (!assignment) return;
  delay_moved = false;
  delay(assignment, {block, cell});
  if (delay_moved) cell->item = discard_value(simplify_tree(cell->item));
}

// Returns whether the block has come to be a mere jump.
bool delay_in_block(BB *block) {
  LIST *pending = list_reverse_onto(block->trees, nullptr);
  block->trees = nullptr;
  FirstMentions &index = first_mentions[block] = {};
  forget_mentions(block);
  while (LIST *cell = pending) {
    pending = cell->next;
    cell->next = block->trees;
    block->trees = cell;
    delay_in_statement(block, cell);
    if (cell->item) {
      index.enter_in_front(cell);
      note_mentions(block, cell->item);
      continue;
    }
    block->trees = cell->next;
    give_list(cell);
  }
  return block->trees->item->op == BRANCH;
}

} // namespace

bool delay_assignments() {
  debug_print("\n\n\t\t\t---------- ENTERING 'delay_assignments' ----------\n");
  if (options.debug_level > 1) dump_blocks(state.first_bb, nullptr);
  first_mentions.clear();
  for (BB *block = state.first_bb; block; block = block->next)
    find_mentions(block);
  steps_may_be_delayed = !function_returns_twice();
  bool graph_changed = false;
  for (BB *block = state.first_bb->prev;; block = block->prev) {
    if (block->trees->item->op != BRANCH) graph_changed |= delay_in_block(block);
    if (block == state.first_bb) break;
  }
  first_mentions.clear();
  return graph_changed;
}

} // namespace velkor
