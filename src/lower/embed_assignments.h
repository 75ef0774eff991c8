// Assignments of constants where their value is used: x = 5; y = x + z;  becomes  y = (x = 5) + z;
#pragma once

#include "core/records.h"

namespace velkor {

// Takes the statements of the block, newest first; returns them in the order of execution, with
// each assignment to a candidate of the live-variable numbering that reads no storage laid into the
// one place that uses the value, where that is the next to touch the variable.
[[nodiscard]] LIST *embed_constant_assignments(LIST *reversed, BB *block);

} // namespace velkor
