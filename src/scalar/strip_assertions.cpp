#include "scalar/strip_assertions.h"

#include "cfg/simpcfg.h"
#include "core/nodes.h"
#include "core/state.h"
#include "scalar/dead_assignments.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// Each NASSERT becomes the constant 0. Returns whether nothing but that is left: beside another
// operand, such as the comment that stands for a check found to hold, the constant stays.
bool replace_assertions(NODE *tree) {
  if (tree->op == NASSERT) {
    tree->left = erase_tree(tree->left);
    tree->op = ICON;
    tree->u.lval = 0;
    tree->aux.text = nullptr;
    return true;
  }
  if (!tree->left) return false;
  const bool left = replace_assertions(tree->left);
  if (!tree->right) return left;
  const bool right = replace_assertions(tree->right);
  return left && right;
}

// Returns whether any statement changed so that it was simplified.
bool strip_block(BB *block) {
  bool changed = false;
  for (LIST **link = &block->trees; LIST *cell = *link;) {
    if (replace_assertions(cell->item)) {
      cell->item = discard_value(simplify_tree(cell->item));
      changed = true;
    }
    if (cell->item) {
      link = &cell->next;
      continue;
    }
    *link = cell->next;
    cell->next = nullptr;
    erase_list(cell);
  }
  return changed;
}

} // namespace

void strip_assertions() {
  if (!state.assertions_present) return;
  state.assertions_present = false;
  bool changed = false;
  for (BB *block = state.first_bb; block; block = block->next)
    changed |= strip_block(block);
  if (changed) {
    elim_dead_assigns(false, false);
    simpcfg(0);
  }
  state.assertions_present = false;
}

} // namespace velkor
