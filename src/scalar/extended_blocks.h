// The walk over extended basic blocks: runs of blocks each of which is entered only from the one
// ahead, so that what holds at the end of one holds at the start of the next. The passes that learn
// facts in one sweep, without dataflow sets, all walk the function this way.
#pragma once

#include "core/records.h"

namespace velkor {

// The block that such a walk visits behind this one, in block order; none at the end. Blocks that
// only jump or return (nothing, or a constant) have nothing to learn or to rewrite, and are passed
// over.
[[nodiscard]] BB *next_walked_block(const BB *block);

// The same backward, for a block that is not the first one. It ends at the first block, whatever
// stands there.
[[nodiscard]] BB *previous_walked_block(const BB *block);

// Is next entered from block alone? False when there is no next block.
[[nodiscard]] bool continues_extended_block(const BB *block, const BB *next);

} // namespace velkor
