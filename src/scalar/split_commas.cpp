#include "scalar/split_commas.h"

#include "core/nodes.h"

namespace velkor {

bool split_comma(LIST *cell) {
  NODE *tree = cell->item;
  if (tree->op == LABELDEF) return false; // its operand is no tree
  NODE *comma = tree->op == COMMA_OP ? tree : tree->left;
  if (!comma || comma->op != COMMA_OP) return false;
  NODE *rest = comma->right;
  if (comma != tree) {
    tree->left = rest;
    rest = tree;
  }
  cell->item = comma->left;
  cell->next = list_cons(rest, cell->next, cell->line, cell->line2);
  erase_node(comma);
  return true;
}

} // namespace velkor
