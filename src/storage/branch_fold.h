// An assignment and the branch that tests it as one statement.
#pragma once

#include "core/records.h"

namespace velkor {

// x = e; if (x < 3) ...  ->  if ((x = e) < 3) ...
//
// Applies to the last two statements of the block, where the condition is the assigned variable or
// compares it with an integer constant. The value is tested where it is made, so it need not be
// read back. The IF stands in the assignment's cell and takes its line numbers.
void fold_assignment_into_branch(BB *block);

} // namespace velkor
