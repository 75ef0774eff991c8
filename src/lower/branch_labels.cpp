#include "lower/branch_labels.h"

#include "cfg/graph.h"
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

// The mark behind this one of the other end of its loop, or none; nsize tells the loop.
NODE *other_end(const LIST *mark) {
  for (const LIST *other = mark->next; other; other = other->next)
    if (keeps_control(other) && other->item->right->nsize == mark->item->right->nsize)
      return other->item->right;
  return nullptr;
}

// The LOOP and the ENDLOOP of one loop name one number.
void number_loop_marks(int &number) {
  for (const LIST *mark = lowering.loop_marks; mark; mark = mark->next) {
    if (!keeps_control(mark)) continue;
    NODE *reference = mark->item->right;
    if (reference->nsize == 0) continue; // has its number from the other end
    reference->u.lval = ++number;
    NODE *other = other_end(mark);
    if (!other) continue;
    other->u.lval = number;
    other->nsize = 0;
  }
}

// Which labels take a number.
enum class Numbering : std::uint8_t {
  REFERRED_TO, // all that a statement refers to
  WRITTEN      // but for those that only the block ahead refers to: control falls through to them
};

// Does the block's last statement refer to the label of the block behind by a jump that will not be
// written? Of an IF, one target is such a jump.
bool falls_through_to(const BB *block, const LABEL *label) {
  if (!block || block->next != label->bb || !block->trees) return false;
  const NODE *last = last_cell(block)->item;
  if (last->op == BRANCH) return last->left->aux.label == label;
  if (last->op != IF) return false;
  return last->right->left->aux.label == label || last->right->right->aux.label == label;
}

bool takes_number(const LABEL *label, const BB *ahead, Numbering numbering) {
  if (label->refcount == 0) return false;
  return numbering == Numbering::REFERRED_TO || label->refcount > 1 ||
         !falls_through_to(ahead, label);
}

// Numbers the first two labels of each block; returns the largest number.
int compact_numbers(Numbering numbering) {
  int number = 0;
  const BB *ahead = nullptr;
  for (const BB *block = state.first_bb; block; ahead = block, block = block->next) {
    LABEL *label = block->labels;
    for (int i = 0; i < 2 && label; ++i, label = label->next)
      if (takes_number(label, ahead, numbering)) label->index = ++number;
  }
  return number;
}

// References keep the numbers that number_branch_labels gave their labels.
int largest_number_given() {
  int largest = 0;
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LABEL *label = block->labels; label; label = label->next)
      if (label->refcount > 0) largest = std::max(largest, static_cast<int>(label->index));
  for (const LIST *mark = lowering.loop_marks; mark; mark = mark->next)
    if (keeps_control(mark)) largest = std::max(largest, mark->item->right->u.lval);
  return largest;
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
  const bool keeps_numbers = options.debug_level > 1 && largest_number_given() <= max_label_index;
  if (keeps_numbers) return;
  int number = compact_numbers(Numbering::REFERRED_TO);
  if (number > max_label_index) number = compact_numbers(Numbering::WRITTEN);
  number_loop_marks(number);
  if (number <= max_label_index) return;
  report("\n!!! Error: a function with %d labels, the icode file has room for %d !!!\n", number,
         max_label_index);
  abnormal_end();
}

} // namespace velkor
