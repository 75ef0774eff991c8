#include "cfg/check_function.h"

#include "core/failure.h"
#include "core/output.h"
#include "core/state.h"

#include <unordered_set>

namespace velkor {
namespace {

struct Check {
  const char *pass_name;
  const BB *block = nullptr;
  std::unordered_set<const NODE *> seen;

  [[noreturn]] void fault(const char *what) const {
    report("\n!!! COMPILER (OPTIMIZER) ERROR IN 'check_function': %s (block %d, behind '%s') !!!\n",
           what, block ? block->dfn : 0, pass_name);
    internal_failure();
  }

  void require(bool holds, const char *what) const {
    if (!holds) fault(what);
  }

  void check_tree(const NODE *tree) {
    for (; tree; tree = tree->left) {
      require(tree->op != ILLOP, "a freed node hangs in a tree");
      require(seen.insert(tree).second, "a node hangs in two places");
      require(tree->op != NAME || tree->u.sym, "a NAME without a symbol");
      if (tree->op == LABELREF) check_labelref(tree);
      if (tree->op == LABELDEF) fault("a LABELDEF inside a block");
      check_tree(tree->right);
    }
  }

  void check_labelref(const NODE *node) const {
    const LABEL *label = node->aux.label;
    require(label && label->bb, "a label reference without a label");
    for (const LABEL *own = label->bb->labels; own; own = own->next)
      if (own == label) return;
    fault("a label that its block does not bear");
  }

  static bool contains(const EDGE *edges, const BB *bb) {
    for (; edges; edges = edges->next)
      if (edges->bb == bb) return true;
    return false;
  }

  void check_edges() const {
    for (const EDGE *edge = block->succs; edge; edge = edge->next)
      require(contains(edge->bb->preds, block), "an edge that its target does not know");
    for (const EDGE *edge = block->preds; edge; edge = edge->next)
      require(contains(edge->bb->succs, block), "an edge that its source does not know");
  }
};

} // namespace

void check_function(const char *pass_name) {
  Check check{pass_name, nullptr, {}};
  int count = 0;
  const BB *previous = nullptr;
  for (const BB *block = state.first_bb; block; previous = block, block = block->next) {
    check.block = block;
    check.require(++count <= state.num_blocks, "more blocks than counted");
    check.require(block->dfn == count, "a block out of its order");
    check.require(!previous || block->prev == previous, "a block that does not know the one ahead");
    check.check_edges();
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      check.check_tree(cell->item);
  }
  check.require(count == state.num_blocks, "fewer blocks than counted");
  check.require(!state.first_bb || state.first_bb->prev == previous, "the ring is not closed");
}

} // namespace velkor
