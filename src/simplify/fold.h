// Operators whose operands are constants.
#pragma once

#include "core/records.h"

namespace velkor {

// The node folded, or the node itself (its constant operand may have moved to the right).
[[nodiscard]] NODE *fold_node(NODE *node);
[[nodiscard]] NODE *fold_float_node(NODE *node);

} // namespace velkor
