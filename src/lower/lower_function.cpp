#include "lower/lower_function.h"

#include "cfg/graph.h"
#include "core/nodes.h"
#include "core/state.h"

#include <cstring>

namespace velkor {
namespace {

void lower_assert(NODE *node) {
  if (!node->aux.text || node->left->op == COMMA) return;
  NODE *text = make_node(SCON, nullptr, nullptr, pointer_to(CHAR));
  text->aux.text = node->aux.text;
  text->u.lval = static_cast<std::int32_t>(std::strlen(node->aux.text)) + 1;
  node->left = make_node(COMMA, node->left, text, INT);
  node->aux.text = nullptr;
}

void lower_tree(NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == ASSERT) lower_assert(tree);
    if (tree->right) lower_tree(tree->right);
  }
}

// Labels that are referred to get numbers from 1 upward in the order of the code.
void count_references(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == LABELREF) tree->aux.label->refcount += 1;
    if (tree->right) count_references(tree->right);
  }
}

void number_labels() {
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next)
      count_references(cell->item);
  int number = 0;
  for (BB *block = state.first_bb; block; block = block->next)
    for (LABEL *label = block->labels; label; label = label->next)
      if (label->refcount > 0) label->index = ++number;
}

} // namespace

void lower_function() {
  renumber_blocks();
  number_labels();
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next)
      lower_tree(cell->item);
}

} // namespace velkor
