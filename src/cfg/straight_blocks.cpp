#include "cfg/straight_blocks.h"

#include "core/failure.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"

#include <vector>

namespace velkor {
namespace {

// The labels of the function by index.
using LabelIndex = std::vector<LABEL *>;

BB *new_block(BB *previous) {
  auto *block = new (lalloc(sizeof(BB))) BB{};
  block->uon = block->dfn = ++state.num_blocks;
  block->prev = previous;
  if (previous)
    previous->next = previous->uon_next = block;
  else
    state.first_bb = block;
  return block;
}

void attach_label(LABEL *label, BB *block, LabelIndex &labels) {
  label->bb = block;
  LABEL **link = &block->labels;
  while (*link)
    link = &(*link)->next;
  *link = label;
  const auto index = static_cast<std::size_t>(label->index);
  if (index >= labels.size()) labels.resize(index + 1, nullptr);
  if (!labels[index]) labels[index] = label;
}

bool runs_on(const NODE *tree) {
  return tree->op != BRANCH && tree->op != RETURN && tree->op != URETURN;
}

void close_function() {
  if (state.statements && !runs_on(state.statements->item)) return;
  NODE *end = make_node(URETURN, make_name(state.cur_fun_sym), nullptr, VOID);
  state.statements = list_cons(end, state.statements, state.end_value, state.end_value);
}

LABEL *find_label(std::int32_t index, const LabelIndex &labels) {
  const auto position = static_cast<std::size_t>(index);
  if (index > 0 && position < labels.size() && labels[position]) return labels[position];
  report("\n!!! COMPILER (OPTIMIZER) ERROR IN 'find_label', INDEX=%d !!!\n", index);
  abnormal_end();
}

// Only a transfer of control refers to labels.
void resolve_labels(NODE *tree, const LabelIndex &labels) {
  for (; tree; tree = tree->left) {
    if (tree->op == LABELREF) {
      tree->aux.label = find_label(tree->u.lval, labels);
      tree->aux.label->refcount += 1;
    }
    if (tree->right) resolve_labels(tree->right, labels);
  }
}

} // namespace

void build_straight_blocks() {
  state.first_bb = nullptr;
  state.num_blocks = 0;
  close_function();
  LabelIndex labels;
  BB *block = new_block(nullptr);
  LIST **link = &block->trees;
  LIST *next = nullptr;
  for (LIST *cell = list_reverse_onto(state.statements, nullptr); cell; cell = next) {
    next = cell->next;
    cell->next = nullptr;
    if (cell->item->op != LABELDEF) {
      *link = cell;
      link = &cell->next;
      continue;
    }
    if (block->trees) {
      block = new_block(block);
      link = &block->trees;
    }
    attach_label(cell->item->label, block, labels);
    erase_node(cell->item);
    give_list(cell);
  }
  state.statements = nullptr;
  state.first_bb->prev = block;
  for (BB *each = state.first_bb; each; each = each->next)
    for (LIST *cell = each->trees; cell; cell = cell->next)
      if (op_effect(cell->item->op) == TRANSFERS) resolve_labels(cell->item, labels);
}

} // namespace velkor
