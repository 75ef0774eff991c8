#include "cfg/check_function.h"

#include "cfg/check_tree.h"
#include "cfg/graph.h"
#include "core/failure.h"
#include "core/output.h"
#include "core/state.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

namespace velkor {
namespace {

// Did the types of the function fit when it was a list of statements? If not, passes cannot be
// asked to keep what was not there.
bool types_fit = true;

using Edge = std::pair<std::int32_t, std::int32_t>; // dfn of the source, of the target

struct Check {
  const char *pass_name;
  const BB *block = nullptr;                  // being looked at
  std::vector<const BB *> chain{};            // by dfn
  std::unordered_set<const LABEL *> labels{}; // of all blocks of the chain
  std::unordered_set<const NODE *> seen{};
  bool resolved = false;        // labels are looked up: the function is a graph
  bool types_fit_so_far = true; // no fault found in any type

  [[noreturn]] void fault(const char *what) const {
    report("\n!!! COMPILER (OPTIMIZER) ERROR IN 'check_function': %s (block %d, behind '%s') !!!\n",
           what, block ? block->dfn : 0, pass_name);
    internal_failure();
  }
  void require(bool holds, const char *what) const {
    if (!holds) fault(what);
  }

  [[nodiscard]] bool is_in_chain(const BB *other) const {
    return other && other->dfn > 0 && static_cast<std::size_t>(other->dfn) < chain.size() &&
           chain[static_cast<std::size_t>(other->dfn)] == other;
  }

  // ----------------------------------------------------------------------------------------------
  // Trees

  void check_node(const NODE *node, const NODE *parent) {
    // A node met twice may lead into a circle: this comes first.
    require(seen.insert(node).second, "a node hangs in two places");
    if (const char *what = shape_fault(node, parent)) fault(what);
    if (resolved && node->op == LABELDEF) fault("a LABELDEF inside a graph");
    if (const char *what = type_fault(node)) {
      if (resolved && types_fit) fault(what);
      types_fit_so_far = false;
    }
    if (resolved && node->op == LABELREF && !pairs_loop_ends(node, parent)) check_labelref(node);
  }

  void check_tree(const NODE *tree, const NODE *parent) {
    while (tree) {
      check_node(tree, parent);
      if (tree->op == LABELDEF) return; // its operand is no tree
      if (tree->right) check_tree(tree->right, tree);
      parent = tree;
      tree = tree->left;
    }
  }

  // The two ends of a machine loop name each other by a number that belongs to no block.
  static bool pairs_loop_ends(const NODE *labelref, const NODE *parent) {
    return !labelref->aux.label && parent && (parent->op == LOOP || parent->op == ENDLOOP);
  }

  void check_labelref(const NODE *node) const {
    const LABEL *label = node->aux.label;
    require(label && label->bb, "a label reference without a label");
    require(is_in_chain(label->bb), "a jump to a block that is not in the chain");
    require(labels.count(label) != 0, "a label that its block does not bear");
  }

  void check_statement_list() {
    for (const LIST *cell = state.statements; cell; cell = cell->next)
      check_tree(cell->item, nullptr);
    types_fit = types_fit_so_far;
  }

  // ----------------------------------------------------------------------------------------------
  // Blocks

  void check_chain() {
    chain.push_back(nullptr);
    const BB *previous = nullptr;
    for (block = state.first_bb; block; previous = block, block = block->next) {
      const auto place = static_cast<std::int32_t>(chain.size());
      require(place <= state.num_blocks, "more blocks than counted");
      require(block->dfn == place, "a block out of its order");
      require(!previous || block->prev == previous, "a block that does not know the one ahead");
      chain.push_back(block);
      for (const LABEL *label = block->labels; label; label = label->next) {
        require(label->bb == block, "a label of another block");
        require(labels.insert(label).second, "a label that stands twice");
      }
    }
    require(static_cast<std::int32_t>(chain.size()) == state.num_blocks + 1,
            "fewer blocks than counted");
    require(state.first_bb->prev == previous, "the ring is not closed");
    require(!state.first_bb->preds, "the entry has a predecessor");
  }

  void check_order_of_creation() {
    std::unordered_set<const BB *> created;
    for (block = state.first_bb; block; block = block->uon_next) {
      require(created.insert(block).second, "the order of creation runs in a circle");
      require(is_in_chain(block) || !block->trees, "a block outside of the chain has statements");
    }
    for (block = state.first_bb; block; block = block->next)
      require(created.count(block) != 0, "a block that the order of creation lacks");
  }

  // All edges by one of the two lists of each block.
  std::vector<Edge> edges_by(EDGE *BB::*list) {
    std::vector<Edge> edges;
    for (block = state.first_bb; block; block = block->next)
      for (const EDGE *edge = block->*list; edge; edge = edge->next) {
        require(is_in_chain(edge->bb), "an edge that leads out of the chain");
        edges.emplace_back(block->dfn, edge->bb->dfn);
        if (list == &BB::preds) std::swap(edges.back().first, edges.back().second);
      }
    std::sort(edges.begin(), edges.end());
    if (const auto twice = std::adjacent_find(edges.begin(), edges.end()); twice != edges.end())
      fault_at(*twice, "an edge that is there twice");
    return edges;
  }

  [[noreturn]] void fault_at(const Edge &edge, const char *what) {
    block = chain[static_cast<std::size_t>(edge.first)];
    fault(what);
  }

  void check_edges() {
    const std::vector<Edge> forward = edges_by(&BB::succs);
    const std::vector<Edge> backward = edges_by(&BB::preds);
    const auto [here, there] =
        std::mismatch(forward.begin(), forward.end(), backward.begin(), backward.end());
    if (here != forward.end() && (there == backward.end() || *here < *there))
      fault_at(*here, "an edge that its target does not know");
    if (there != backward.end()) fault_at(*there, "an edge that its source does not know");
  }

  // ----------------------------------------------------------------------------------------------
  // Statements of blocks

  static bool is_transfer(const NODE *tree) { return op_effect(tree->op) == TRANSFERS; }

  static bool may_end_block(const NODE *tree) {
    switch (tree->op) {
    case BRANCH:
    case IF:
    case SWITCH:
    case RETURN:
    case URETURN: return true;
    default: return false;
    }
  }

  static void collect_targets(const NODE *tree, std::vector<std::int32_t> &targets) {
    for (; tree; tree = tree->left) {
      if (tree->op == LABELREF && tree->aux.label) targets.push_back(target_block(tree)->dfn);
      if (tree->right) collect_targets(tree->right, targets);
    }
  }

  // Labels have been looked up.
  void check_successors(const NODE *last) const {
    std::vector<std::int32_t> targets;
    collect_targets(last, targets);
    std::sort(targets.begin(), targets.end());
    targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    std::vector<std::int32_t> successors;
    for (const EDGE *edge = block->succs; edge; edge = edge->next)
      successors.push_back(edge->bb->dfn);
    std::sort(successors.begin(), successors.end());
    require(std::includes(successors.begin(), successors.end(), targets.begin(), targets.end()),
            "a target that is no successor");
    require(successors.size() == targets.size(), "a successor that nothing jumps to");
  }

  void check_block() {
    const LIST *last = nullptr;
    for (const LIST *cell = block->trees; cell; last = cell, cell = cell->next) {
      require(!last || !is_transfer(last->item), "statements behind a transfer of control");
      require(cell->item, "a cell without a statement");
      check_tree(cell->item, nullptr);
    }
    require(last, "a block without statements");
    require(may_end_block(last->item), "a block that falls through");
    check_successors(last->item);
  }

  [[nodiscard]] static bool is_written() {
    for (const BB *any = state.first_bb; any; any = any->next)
      if (any->trees) return false;
    return true;
  }

  void check_statements() {
    int returns = 0;
    for (block = state.first_bb; block; block = block->next) {
      check_block();
      if (last_cell(block)->item->op == URETURN) ++returns;
    }
    require(returns <= 1, "more than one URETURN");
  }

  void check_graph() {
    resolved = true;
    check_chain();
    check_order_of_creation();
    check_edges();
    if (!is_written()) check_statements();
  }
};

} // namespace

void check_function(const char *pass_name) {
  Check check{pass_name};
  if (state.first_bb)
    check.check_graph();
  else
    check.check_statement_list();
}

} // namespace velkor
