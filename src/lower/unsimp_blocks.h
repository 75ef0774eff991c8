// From the simplifier's canonical forms to those that the code generator handles best.
//
// x = x + (-1); y = i * 8 & 24; a = 0; b = 0;  becomes  x -= 1; y = (i & 3) << 3; b = (a = 0);
//
// The last pass over the trees: it needs numbered blocks that end in explicit transfers, and leaves
// trees that the simplifier must not see again, but through unsimp_tree; labels that tell forward
// from backward references; and the function's leaf flag.
#pragma once

#include "core/records.h"

namespace velkor {

// Rewrites the statements of all blocks; finds out whether the function is a leaf.
void unsimp_blocks();

// The tree rewritten bottom-up; takes the tree. cell is the statement's cell, behind which
// increments may move, or none. A cell must hold the statement that the tree is a part of.
[[nodiscard]] NODE *unsimp_tree(NODE *tree, BB *block, LIST *cell);
// The node rewritten; its children are so already. The result may be another node.
[[nodiscard]] NODE *unsimp_node(NODE *node, BB *block, LIST *cell);

// May an increment of the name move behind the statement? name is the node under the increment; no
// other node of the statement may be the same object, and nothing of it may be evaluated on a
// condition or, outside of the register classes, call.
[[nodiscard]] bool may_split_increment(const NODE *name, const NODE *statement);

} // namespace velkor
