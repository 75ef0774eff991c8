// Constants and copies carried to their uses, without dataflow sets.
//
//     x = 5; p = &y; ... if (x > 3) *p = x;     ->     x = 5; p = &y; ... y = 5;
//
// A scalar local whose only assignment in the function gives it something constant-like is replaced
// at each of its uses. One with several assignments is replaced from the assignment to the end of
// the extended basic block, or to the next assignment. Tests that become constant make the graph
// smaller, which may make more assignments the only ones: then there is another pass.
//
// Needs the graph, and statements without control flow inside of them. Leaves assignments that
// nobody reads any more, which the removal of dead assignments takes away at the end.
#pragma once

#include "core/records.h"

namespace velkor {

// Makes passes over the function, at most the given number. With combine, stores to the same place
// are merged first, and dead assignments are removed in any case at the end. Does nothing at
// optimization level 0.
void fast_CP(int passes, bool combine);

} // namespace velkor
