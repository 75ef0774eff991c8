#include "cfg/graph.h"

#include "cfg/label_index.h"
#include "cfg/split_blocks.h"
#include "cfg/tail_recursion.h"
#include "core/failure.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"

namespace velkor {
namespace {

constexpr std::int32_t fresh_label_index = 0;
constexpr std::int32_t reference_by_label = -1; // index of a LABELREF that only aux.label resolves

LabelIndex labels; // of the function whose graph is being built

// ------------------------------------------------------------------------------------------------
// Edges

// edge_add for the successors of one block: the mark in the target tells at once whether the edge
// is there, so that a switch of thousands of cases costs no more than its size.
void add_successor(BB *block, BB *target) {
  if (target->edge_source == block) return;
  target->edge_source = block;
  block->succs = edge_cons(target, block->succs);
}

void finish_successors(BB *block) {
  for (EDGE *edge = block->succs; edge; edge = edge->next)
    edge->bb->edge_source = nullptr;
}

void index_labels() {
  labels.clear();
  for (BB *block = state.first_bb; block; block = block->uon_next)
    for (LABEL *label = block->labels; label; label = label->next)
      labels.add(label);
}

void jump_to_exit(BB *block, NODE *tree) {
  if (tree->left) erase_tree(tree->left);
  NODE *target = make_labelref(reference_by_label);
  target->aux.label = first_label(state.exit_bb);
  tree->op = BRANCH;
  tree->type = INT;
  tree->left = target;
  add_successor(block, state.exit_bb);
}

// Resolves the references of a block's last statement; its targets become the block's successors.
void scan_targets(BB *block, NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == URETURN) {
      if (block != state.exit_bb) jump_to_exit(block, tree);
      return;
    }
    if (tree->right) scan_targets(block, tree->right);
    if (tree->op != LABELREF) continue;
    tree->aux.label = find_label(tree->u.lval);
    add_successor(block, tree->aux.label->bb);
  }
}

void connect_blocks() {
  index_labels();
  state.num_blocks = 0;
  for (BB *block = state.first_bb; block; block = block->uon_next) {
    block->succs = nullptr;
    block->dfn = 0;
    block->uon = ++state.num_blocks;
    scan_targets(block, last_cell(block)->item);
    finish_successors(block);
  }
  if (options.opt_level >= 2 && state.pass_number != 1) remove_tail_recursion();
}

// ------------------------------------------------------------------------------------------------
// Order

// Targets with successors of their own first, in their order; behind them the others, reversed.
EDGE *order_successors(EDGE *succs) {
  EDGE *going_on = nullptr;
  EDGE **link = &going_on;
  EDGE *final = nullptr;
  for (EDGE *edge = succs, *next = nullptr; edge; edge = next) {
    next = edge->next;
    if (edge->bb->succs) {
      *link = edge;
      link = &edge->next;
    } else {
      edge->next = final;
      final = edge;
    }
  }
  *link = final;
  return going_on;
}

constexpr std::int32_t on_the_way = 1; // dfn of a block that the walk has entered

// Depth-first from the entry without recursion: next links the stack, cursor stands in succs. A
// block that the walk leaves gets the highest number still free and the head of the new chain.
void number_in_reverse_postorder() {
  std::int32_t number = state.num_blocks;
  BB *chain = nullptr;
  BB *stack = state.first_bb;
  stack->next = nullptr;
  stack->dfn = on_the_way;
  stack->cursor = stack->succs;
  while (stack) {
    BB *block = stack;
    while (block->cursor && block->cursor->bb->dfn != 0)
      block->cursor = block->cursor->next;
    if (block->cursor) {
      BB *target = block->cursor->bb;
      target->dfn = on_the_way;
      target->cursor = target->succs;
      target->next = stack;
      stack = target;
      continue;
    }
    stack = block->next;
    block->dfn = number--;
    block->next = chain;
    chain = block;
  }
}

void dfs_number() {
  if (state.num_blocks == 0) return;
  for (BB *block = state.first_bb; block; block = block->uon_next) {
    block->succs = order_successors(block->succs);
    block->dfn = 0;
  }
  number_in_reverse_postorder();
}

void drop_unreachable_blocks() {
  for (BB *block = state.first_bb; block; block = block->uon_next) {
    if (block->dfn != 0 || !block->trees) continue;
    debug_print("\nUNREACHABLE BASIC BLOCK: UON==%d\n", block->uon);
    block->trees = erase_list(block->trees);
    block->succs = erase_edges(block->succs);
  }
}

void finish_cfg() {
  state.num_blocks = 0;
  BB *previous = nullptr;
  for (BB *block = state.first_bb; block; block = block->next) {
    block->dfn = ++state.num_blocks;
    if (block->labels) block->labels->index = block->dfn;
    block->prev = previous;
    previous = block;
    // No successor stands twice in a list, so none has this block yet.
    for (EDGE *edge = block->succs; edge; edge = edge->next)
      edge->bb->preds = edge_cons(block, edge->bb->preds);
  }
  state.first_bb->prev = previous;
  drop_unreachable_blocks();
}

} // namespace

void build_cfg() {
  split_into_blocks();
  connect_blocks();
  dfs_number();
  finish_cfg();
}

void recompute_cfg() {
  state.num_blocks = 0;
  for (BB *block = state.first_bb; block; block = block->uon_next) {
    block->preds = erase_edges(block->preds);
    state.num_blocks += 1;
  }
  dfs_number();
  finish_cfg();
}

void renumber_blocks() {
  state.num_blocks = 0;
  bool can_return = false;
  for (BB *block = state.first_bb; block; block = block->next) {
    block->dfn = ++state.num_blocks;
    for (LABEL *label = block->labels; label; label = label->next)
      label->index = block->dfn;
    if (!block->succs) can_return = true;
  }
  if (state.first_bb && !can_return && state.cur_fun) state.cur_fun->flags |= FUN_never_returns;
}

LABEL *find_label(std::int32_t index) {
  if (LABEL *label = labels.find(index)) return label;
  report("\n!!! COMPILER (OPTIMIZER) ERROR IN 'find_label', INDEX=%d !!!\n", index);
  abnormal_end();
}

BB *insert_block(std::int32_t dfn, BB *after, LIST *trees) {
  BB *block = new (lalloc(sizeof(BB))) BB{};
  block->dfn = dfn;
  block->uon = -1;
  block->trees = trees;
  block->labels = label_new(fresh_label_index, nullptr, block);
  block->uon_next = after->uon_next;
  after->uon_next = block;
  block->next = after->next;
  after->next = block;
  block->prev = after;
  (block->next ? block->next : state.first_bb)->prev = block;
  state.num_blocks += 1;
  return block;
}

LABEL *first_label(BB *block) {
  if (!block->labels) block->labels = label_new(fresh_label_index, nullptr, block);
  return block->labels;
}

void retarget_labelrefs(NODE *tree, const BB *from, BB *to) {
  for (; tree; tree = tree->left) {
    if (tree->right) retarget_labelrefs(tree->right, from, to);
    if (tree->op == LABELREF && target_block(tree) == from) tree->aux.label = first_label(to);
  }
}

void add_tree_edges(BB *block, NODE *tree) {
  if (tree->op == SWITCH || tree->op == IF) tree = tree->right;
  for (; tree; tree = tree->left) {
    if (tree->right) add_tree_edges(block, tree->right);
    if (tree->op != LABELREF) continue;
    BB *target = target_block(tree);
    block->succs = edge_add(target, block->succs);
    target->preds = edge_add(block, target->preds);
  }
}

void remove_successors(BB *block) {
  for (EDGE *edge = block->succs; edge; edge = edge->next)
    edge->bb->preds = edge_remove(block, edge->bb->preds);
  block->succs = erase_edges(block->succs);
}

void announce_successors(BB *block) {
  for (EDGE *edge = block->succs; edge; edge = edge->next)
    edge->bb->preds = edge_add(block, edge->bb->preds);
}

LIST *last_cell(const BB *block) {
  LIST *cell = block->trees;
  while (cell && cell->next)
    cell = cell->next;
  return cell;
}

} // namespace velkor
