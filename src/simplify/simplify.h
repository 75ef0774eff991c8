// The simplifier: rewrites one expression tree into a smaller canonical tree of the same meaning.
//
// It is no pass of its own. The reader runs it over every statement, and every pass that changes a
// tree calls it again on what it changed; they all test for the shapes that it leaves: constants on
// the right of commutative operators, x - K as x + (-K), x << K as x * 2^K, a test against zero as
// a bare test, a comparison with its constant on the right.
//
// The simplifier frees nodes that it drops and reuses others: a caller must replace its pointer by
// the result and may not keep pointers into the old tree. No subtree may be shared.
#pragma once

#include "core/records.h"

namespace velkor {

// The tree simplified bottom-up.
[[nodiscard]] NODE *simplify_tree(NODE *tree);

// The node simplified; its children are so already. The result may be another node.
[[nodiscard]] NODE *simplify_node(NODE *node);

// A tree that does what the given tree does apart from yielding a value, or none.
[[nodiscard]] NODE *discard_value(NODE *tree);

} // namespace velkor
