// Assignments that happen at once.
#pragma once

#include "core/records.h"

namespace velkor {

// Takes a chain of ,OP over assignments that all read the values from before; yields one that can
// run in order. A cycle (a = b, b = a) is broken with a temporary "T...". See Boissinot et al.,
// "Revisiting out-of-SSA translation" (2009), for the problem.
[[nodiscard]] NODE *sequence_parallel_assignments(NODE *assignments);

} // namespace velkor
