// From the simplifier's canonical forms to those that the code generator handles best.
#pragma once

#include "core/records.h"

namespace velkor {

// Rewrites the statements of all blocks; finds out whether the function is a leaf.
void unsimp_blocks();

// The tree rewritten bottom-up; takes the tree. cell is the statement's cell, behind which
// increments may move, or none.
[[nodiscard]] NODE *unsimp_tree(NODE *tree, BB *block, LIST *cell);
// The node rewritten; its children are so already. The result may be another node.
[[nodiscard]] NODE *unsimp_node(NODE *node, BB *block, LIST *cell);

// May an increment of the name move behind the statement?
[[nodiscard]] bool may_split_increment(const NODE *name, const NODE *statement);

// Gives all used labels their final numbers: 1 upward in the order of the code.
void number_labels();

} // namespace velkor
