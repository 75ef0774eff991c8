// A block of its own on an edge of the graph.
#pragma once

#include "core/records.h"

namespace velkor {

// Puts a block that only jumps on the edge between the two blocks and returns it; it stands behind
// from. All blocks are numbered anew. While the analysis of live variables holds, the block has its
// sets: what lives at its start and end is what lives at the start of to.
BB *split_edge(BB *from, BB *to);

} // namespace velkor
