// Merging a block with its only successor, or with a copy of it.
#pragma once

#include "core/records.h"

namespace velkor {

// successor is the only one of block, whose last statement stands in last. Drops a test between
// equal targets, follows a jump to a jump, and absorbs or copies the successor. Returns whether
// anything changed; a successor that was absorbed has no statements any more.
[[nodiscard]] bool merge_blocks(BB *block, BB *successor, LIST *&last);

// Does a copy of the block at the end of one of its predecessors save more than it costs? adjacent:
// the predecessor stands right ahead of it; backward: behind it. Blocks of one statement only.
[[nodiscard]] bool worth_copying(const BB *block, bool adjacent, bool backward);

} // namespace velkor
