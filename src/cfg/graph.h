// The control-flow graph of the current function: building it, and keeping it in order.
//
// What every pass counts on once the graph is built:
//  - Every block ends in an explicit transfer: BRANCH, IF, SWITCH, RETURN or URETURN. Nothing falls
//    through; the writer drops the jumps that turn out to be needless.
//  - state.first_bb is the entry and has no predecessors.
//  - state.exit_bb holds the function's one URETURN; every other one has become a jump to it. A
//    RETURN with a value stays where it stands, and its block has no successors.
//  - Every LABELREF has aux.label, and the label's block bears that label.
//
// Two orders: uon_next and uon (creation, which is source order, unreachable blocks included), and
// next, prev and dfn (reverse postorder of a depth-first walk, reachable blocks only, 1 upward).
#pragma once

#include "core/records.h"

namespace velkor {

// Turns state.statements (newest first) into blocks and edges, numbered; removes tail recursion at
// level 2. A reference to a label that the function does not define ends the run.
void build_cfg();

// After a pass has changed edges or blocks: predecessors and both numbers anew from the successor
// lists. Blocks that cannot be reached any more leave the next chain and lose their statements.
void recompute_cfg();

// dfn 1 upward along next, with the index of every label following its block. Sets
// FUN_never_returns on the current function when no block lacks successors.
void renumber_blocks();

// The label of that index, by way of an index over the labels that the graph was built from; a
// label that no block bears ends the run.
[[nodiscard]] LABEL *find_label(std::int32_t index);

// A block with these statements behind after in both chains, with uon -1 and a fresh label. It has
// no edges yet.
BB *insert_block(std::int32_t dfn, BB *after, LIST *trees);

// The block's first label, made if it has none.
LABEL *first_label(BB *block);

// Each reference in the tree to a label of from now refers to the first label of to.
void retarget_labelrefs(NODE *tree, const BB *from, BB *to);

// Adds the edges that the block's last statement implies, in both directions.
void add_tree_edges(BB *block, NODE *tree);

// Removes the block from the predecessors of its successors, and forgets its successors.
void remove_successors(BB *block);

// Adds the block to the predecessors of each of its successors.
void announce_successors(BB *block);

// The block's last statement cell; none for a block without statements.
[[nodiscard]] LIST *last_cell(const BB *block);

[[nodiscard]] inline int edge_count(const EDGE *edges) {
  int count = 0;
  for (; edges; edges = edges->next)
    ++count;
  return count;
}
// The list's only member, or none.
[[nodiscard]] inline BB *single_edge(const EDGE *edges) {
  return edges && !edges->next ? edges->bb : nullptr;
}
[[nodiscard]] inline bool edge_contains(const EDGE *edges, const BB *bb) {
  for (; edges; edges = edges->next)
    if (edges->bb == bb) return true;
  return false;
}

// The block that a LABELREF refers to.
[[nodiscard]] inline BB *target_block(const NODE *labelref) {
  return labelref->aux.label ? labelref->aux.label->bb : nullptr;
}

} // namespace velkor
