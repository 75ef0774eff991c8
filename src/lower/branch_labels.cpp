#include "lower/branch_labels.h"

#include "core/failure.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "icode/format.h"
#include "lower/lowering.h"

#include <algorithm>

namespace velkor {
namespace {

LABEL *forward_label(BB *target) {
  LABEL *label = target->labels;
  label->index = target->dfn + 1;
  return label;
}

LABEL *backward_label(BB *target) {
  LABEL *first = target->labels;
  if (!first->next) first->next = label_new(0, nullptr, target);
  LABEL *label = first->next;
  label->index = state.num_blocks + target->dfn + 1;
  return label;
}

void number_reference(NODE *reference, const BB *block) {
  if (!reference->aux.label) return; // the label of a machine loop
  BB *target = reference->aux.label->bb;
  LABEL *label = target->dfn > block->dfn ? forward_label(target) : backward_label(target);
  reference->aux.label = label;
  label->refcount += 1;
}

bool keeps_control(const LIST *mark) {
  return mark->item->op == LOOP || mark->item->op == ENDLOOP;
}

// The LOOP and the ENDLOOP of one loop name one number.
void number_loop_marks(int &number) {
  for (LIST *mark = lowering.loop_marks; mark; mark = mark->next) {
    if (!keeps_control(mark)) continue;
    NODE *reference = mark->item->right;
    if (reference->nsize == 0) continue;
    reference->u.lval = ++number;
    for (LIST *other = mark->next; other; other = other->next) {
      if (!keeps_control(other) || other->item->right->nsize != reference->nsize) continue;
      other->item->right->u.lval = number;
      other->item->right->nsize = 0;
      break;
    }
  }
}

int largest_number_in_use() {
  int largest = 0;
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LABEL *label = block->labels; label; label = label->next)
      if (label->refcount > 0) largest = std::max(largest, static_cast<int>(label->index));
  for (const LIST *mark = lowering.loop_marks; mark; mark = mark->next)
    if (keeps_control(mark)) largest = std::max(largest, mark->item->right->u.lval);
  return largest;
}

void compact_numbers() {
  int number = 0;
  for (const BB *block = state.first_bb; block; block = block->next) {
    LABEL *first = block->labels;
    if (!first) continue;
    if (first->refcount != 0) first->index = ++number;
    if (first->next && first->next->refcount != 0) first->next->index = ++number;
  }
  number_loop_marks(number);
}

} // namespace

void clear_reference_counts() {
  for (const BB *block = state.first_bb; block; block = block->next)
    for (LABEL *label = block->labels; label; label = label->next)
      label->refcount = 0;
}

void number_branch_labels(NODE *tree, const BB *block) {
  for (; tree; tree = tree->left) {
    switch (tree->op) {
    case RETURN:
    case URETURN:
    case LABELDEF: return;
    case LABELREF: number_reference(tree, block); return;
    case SWITCH:
    case IF: number_branch_labels(tree->right, block); return;
    default:
      if (tree->right) number_branch_labels(tree->right, block);
    }
  }
}

void number_labels() {
  if (options.debug_level <= 1) compact_numbers();
  const int largest = largest_number_in_use();
  if (largest <= max_label_index) return;
  report("\n!!! Error: a function with the label number %d, the icode file has room for %d !!!\n",
         largest, max_label_index);
  abnormal_end();
}

} // namespace velkor
