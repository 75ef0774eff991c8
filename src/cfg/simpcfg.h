// Clean-up of the flow graph.
//
// simpcfg deletes blocks that nothing reaches, merges a block with its only successor, threads
// jumps through blocks that only jump, folds tests whose outcome is known, copies small blocks
// where that saves a jump, and turns branches into straight code:
//
//     if (0) goto a; goto b;  a: x = 1; goto c;  b: goto c;  c: return x;   ->   return x;
//
// Needs a graph with correct edges; leaves one, renumbered. Every pass that changes control flow
// calls it.
#pragma once

#include "core/records.h"

namespace velkor {

// mode 0: between passes. mode 1: the last time before code goes out, when the shape of the code
// may change more freely (equal code is shared, ?: is made, blocks are no longer copied).
void simpcfg(int mode);

// Erases a block that has no predecessors (and is not the entry), and every block that thereby
// loses its last predecessor. Any other block stays.
void delete_block(BB *block);

// list ends in a block's transfer, which goes; what it computes for effect stays. tail hangs
// behind. Returns the list.
LIST *append_statements(LIST *list, LIST *tail);

} // namespace velkor
