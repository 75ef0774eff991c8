// Two assignments to the same scalar, one behind the other, become one:
//
//     x = a + 1;  x = x * b;   ->   x = (a + 1) * b;
#pragma once

#include "core/records.h"

namespace velkor {

// Merges the statement of the cell with those behind it in the same list, as long as they fit: both
// assign the same scalar, the second reads it exactly once, and neither value has effects. The
// cells of the merged statements are freed; the cell itself stays, and the statement in it may be
// another tree. Reads SYM::fcp_flag of what is assigned: is its address taken?
void combine_adjacent_asgs(LIST *cell);

// The same for the next statement alone; returns whether it fitted.
bool combine_with_next(LIST *cell);

} // namespace velkor
