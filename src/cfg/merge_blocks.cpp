// A block and its only successor become one:
//
//     a: x = 1; goto b;   b: y = 2; goto c;          ->   a: x = 1; y = 2; goto c;
//     a: x = 1; goto b;   b: return x;               ->   a: x = 1; return x;       (b stays)
//     a: x = 1; goto b;   b: if (x < n) goto c; ...  ->   a: x = 1; if (x < n) goto c; ...
//
// The last one is what turns a loop with its test at the top into one with a test ahead of it and
// another at its bottom.
#include "cfg/merge_blocks.h"

#include "cfg/graph.h"
#include "cfg/simpcfg.h"
#include "cfg/simpcfg_mode.h"
#include "cfg/thread_jumps.h"
#include "cfg/transfers.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "simplify/simplify.h"

#include <cstdlib>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// What a copy costs

constexpr int cost_of_call = 12345; // above every limit
constexpr int most_cost_of_copied_test = 15;

bool is_register_candidate(const NODE *tree) {
  if (tree->op != NAME || tree->u.sym->sclass != C_AUTO || tree->u.sym->fcp_flag != 0) return false;
  if (is_volatile_node(tree)) return false;
  return (is_pointer(tree->type) || is_integer(tree->type)) &&
         value_width(tree->type) <= pointer_width;
}

// Does the pointer step by the size of what it points at? Then an address mode does the step.
bool steps_to_neighbour(const NODE *pointer, const NODE *step) {
  if (step->op != ICON || !is_pointer(pointer->type)) return false;
  const TypeWord target = underived(pointer->type);
  return !is_derived(target) &&
         std::abs(8 * static_cast<std::int64_t>(step->u.lval)) == type_size(target);
}

// A register candidate that steps by an amount: x += y, x++, x = x + y and so on.
struct Step {
  const NODE *variable;
  const NODE *amount;
};

Step step_of(const NODE *tree) {
  const NODE *amount = nullptr;
  switch (tree->op) {
  case ASG_ADD:
  case ASG_SUBTRACT:
  case INCREMENT:
  case DECREMENT: amount = tree->right; break;
  case ASSIGN: {
    const NODE *sum = tree->right;
    if ((sum->op == ADD || sum->op == SUBTRACT) && trees_equal(tree->left, sum->left, false))
      amount = sum->right;
    break;
  }
  default: break;
  }
  if (!amount || !is_register_candidate(tree->left)) return {nullptr, nullptr};
  return {tree->left, amount};
}

// Nodes that take an instruction, counted from count.
int cfg_tree_cost(const NODE *tree, int count) {
  while (tree && count < cost_of_call) {
    switch (tree->op) {
    case CALL:
    case UCALL:
    case STCALL:
    case USTCALL:
    case XCALL:
    case UXCALL:
    case SQRT:
    case ASSERT:
    case MEMCPY: return cost_of_call;
    case NASSERT: return count;
    case ASM:
      if (is_comment_asm(tree)) return count;
      break;
    case INCREMENT:
    case DECREMENT: ++count; break;
    default: break;
    }
    ++count;
    const Step step = step_of(tree);
    if (step.variable) {
      if (steps_to_neighbour(step.variable, step.amount)) return count;
      tree = tree->right;
      continue;
    }
    if (tree->right) count = cfg_tree_cost(tree->right, count);
    tree = tree->left;
  }
  return count;
}

bool is_cheap(const NODE *transfer) {
  if (transfer->op == RETURN)
    return transfer->right && (transfer->right->op == NAME || transfer->right->op == ICON);
  return transfer->op == IF && cfg_tree_cost(transfer->left, 0) <= most_cost_of_copied_test;
}

// ------------------------------------------------------------------------------------------------
// Shapes

// Two predecessors that do nearly the same, both reached from one block only, and from the same.
// They assign to the same object, or do not differ in their opcode; behind that they are equal.
bool is_diamond_join(const BB *join) {
  if (join == state.first_bb || !edge_count_is(join->preds, 2)) return false;
  const BB *arms[2] = {join->preds->bb, join->preds->next->bb};
  for (const BB *arm : arms)
    if (arm->dfn >= join->dfn || arm == state.first_bb || !single_edge(arm->succs) ||
        !single_edge(arm->preds) || !arm->trees)
      return false;
  if (single_edge(arms[0]->preds) != single_edge(arms[1]->preds)) return false;
  const LIST *first = arms[0]->trees;
  const LIST *second = arms[1]->trees;
  if (first->item->op != second->item->op) return false;
  if (is_plain_or_compound_assignment(first->item->op) &&
      !trees_equal(first->item->left, second->item->left, false))
    return false;
  return lists_equal(first->next, second->next);
}

// Blocks between the two, in the order of the chain, that nothing reaches.
bool only_dead_between(const BB *block, const BB *successor) {
  if (successor->dfn <= block->dfn) return false;
  for (const BB *between = block->next; between != successor; between = between->next)
    if (!between || between->preds) return false;
  return true;
}

// Copies of a test that more blocks than this jump to would cost more than the jumps, and looking
// at all of them again for each takes time that grows with the square of their number.
constexpr int most_sources_of_copied_test = 1000;

// A copy of a test at a loop's head serves the one entry: neither may the loop be entered from its
// own blocks only, nor may the test head several loops.
bool heads_at_most_one_loop(const BB *test) {
  for (const EDGE *edge = test->succs; edge; edge = edge->next)
    if (edge->bb->dfn <= test->dfn) return false;
  int sources = 0;
  int backward = 0;
  for (const EDGE *edge = test->preds; edge; edge = edge->next) {
    if (++sources > most_sources_of_copied_test) return false;
    if (edge->bb->dfn >= test->dfn && ++backward > 1) return false;
  }
  return true;
}

bool few_jump_to(const BB *test) {
  int jumps = 0;
  for (const EDGE *edge = test->preds; edge; edge = edge->next)
    if (single_edge(edge->bb->succs) && ++jumps > 2) return false;
  return jumps < 2 || test != state.first_bb;
}

// ------------------------------------------------------------------------------------------------
// Steps

// The list takes the place of the transfer in last; what the transfer computes for effect stays.
void append_behind(LIST *&last, LIST *tail) {
  NODE *transfer = last->item;
  if (transfer->op != BRANCH && transfer->left) {
    NODE *effects = discard_value(transfer->left);
    transfer->left = nullptr;
    insert_ahead(last, effects);
  }
  erase_tree(last->item);
  *last = *tail;
  give_list(tail);
  move_to_end(last);
}

// if (c) goto a; else goto a;  ->  effects of c; goto a;
void drop_needless_test(LIST *&last) {
  NODE *test = last->item;
  if (test->op != IF || target_block(test->right->left) != target_block(test->right->right)) return;
  NODE *effects = discard_value(test->left);
  turn_into_branch(test, true);
  insert_ahead(last, effects);
}

void absorb(BB *block, BB *successor, LIST *&last) {
  append_behind(last, successor->trees);
  successor->trees = nullptr;
  successor->preds = erase_edges(successor->preds);
  block->succs = erase_edges(block->succs);
  move_successors(successor, block);
  if (state.exit_bb == successor) state.exit_bb = block;
}

void append_copy(BB *block, BB *successor, LIST *&last) {
  append_behind(last, copy_list(successor->trees));
  refresh_successors(block, last->item);
}

} // namespace

bool worth_copying(const BB *block, bool adjacent, bool backward) {
  if (block->loop_ctl || !block->trees || block->trees->next) return false;
  const NODE *transfer = block->trees->item;
  if (transfer->op == BRANCH) return target_block(transfer->left) != block;
  if (options.opt_level == 0 || options.opt_size || simpcfg_mode == 1) return false;
  if (!backward && is_diamond_join(block)) return false;
  if (!adjacent && transfer->op == RETURN) return is_cheap(transfer);
  if (adjacent || transfer->op != IF || transfer->left->op == ENDLOOP) return false;
  if (transfer->left->op != NAME && !few_jump_to(block)) return false;
  return heads_at_most_one_loop(block) && is_cheap(transfer);
}

LIST *append_statements(LIST *list, LIST *tail) {
  LIST *last = list;
  move_to_end(last);
  append_behind(last, tail);
  return list;
}

bool merge_blocks(BB *block, BB *successor, LIST *&last) {
  move_to_end(last);
  drop_needless_test(last);
  NODE *transfer = last->item;
  if (transfer->op == BRANCH && successor->trees && successor->trees->item->op == BRANCH) {
    const bool changed = thread_labels(transfer->left, block);
    refresh_successors(block, transfer);
    return changed;
  }
  if (successor == block || !successor->trees) return false;
  if (successor != state.first_bb && single_edge(successor->preds)) {
    absorb(block, successor, last);
    return true;
  }
  const bool backward = block->dfn > successor->dfn;
  if (!worth_copying(successor, only_dead_between(block, successor), backward)) return false;
  append_copy(block, successor, last);
  return true;
}

} // namespace velkor
