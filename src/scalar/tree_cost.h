// What a tree costs to evaluate.
#pragma once

#include "core/records.h"

namespace velkor {

// start plus an estimate of the tree's cost, in units of about half a cycle: for comparing two ways
// to write one value, not for telling the time. Looks no further into an access than its address.
[[nodiscard]] int tree_cost(const NODE *tree, int start);

} // namespace velkor
