#include "cfg/returns_twice.h"

#include "core/state.h"

#include <cstring>

namespace velkor {
namespace {

bool is_setjmp(const char *name) {
  return std::strstr(name, "setjmp");
}

bool names_setjmp(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) return is_setjmp(tree->u.sym->name);
    if ((tree->op == XCALL || tree->op == UXCALL) && is_setjmp(tree->u.name)) return true;
    if (tree->right && names_setjmp(tree->right)) return true;
  }
  return false;
}

} // namespace

bool function_returns_twice() {
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      if (names_setjmp(cell->item)) return true;
  return false;
}

} // namespace velkor
