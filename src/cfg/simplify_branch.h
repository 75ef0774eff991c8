// The test or the switch at a block's end.
#pragma once

#include "core/records.h"

namespace velkor {

// Simplifies the IF or SWITCH that ends the block, which has two successors at least; last is its
// cell. Returns whether the graph changed.
[[nodiscard]] bool simplify_branch(BB *block, LIST *&last);

} // namespace velkor
