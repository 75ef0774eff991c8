#include "cfg/straight_blocks.h"

#include "core/failure.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"
#include "icode/format.h"

#include <vector>

namespace velkor {
namespace {

// The labels of the function by index; the first of an index counts.
class LabelIndex {
public:
  void add(LABEL *label) {
    std::vector<LABEL *> &labels = side(label->index);
    const std::size_t position = position_of(label->index);
    if (position >= labels.size()) labels.resize(position + 1, nullptr);
    if (!labels[position]) labels[position] = label;
  }

  [[nodiscard]] LABEL *find(std::int32_t index) const {
    const std::vector<LABEL *> &labels = index < 0 ? own_ : from_file_;
    const std::size_t position = position_of(index);
    return position < labels.size() ? labels[position] : nullptr;
  }

private:
  static std::size_t position_of(std::int32_t index) {
    return static_cast<std::size_t>(index < 0 ? -static_cast<std::int64_t>(index) : index);
  }
  std::vector<LABEL *> &side(std::int32_t index) { return index < 0 ? own_ : from_file_; }

  std::vector<LABEL *> from_file_; // positive indices
  std::vector<LABEL *> own_;       // negative ones, of labels that the optimizer made
};

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
  labels.add(label);
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
  if (LABEL *label = labels.find(index)) return label;
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

// The file has room for positive numbers of 16 bits; the optimizer's own labels are negative so
// far.
void number_labels() {
  int number = 0;
  for (BB *block = state.first_bb; block; block = block->next)
    for (LABEL *label = block->labels; label; label = label->next)
      if (label->refcount > 0) label->index = ++number;
  if (number <= max_label_index) return;
  report("\n!!! Error: a function with %d labels, the icode file has room for %d !!!\n", number,
         max_label_index);
  abnormal_end();
}

// What sequencing leaves of a statement that does nothing.
bool does_nothing(const NODE *tree) {
  return tree->op == ICON;
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
    if (does_nothing(cell->item)) continue;
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
  number_labels();
}

} // namespace velkor
