// Can a store change a tree's value?
#pragma once

#include "core/records.h"

namespace velkor {

// Whether an assignment to target can change the value of tree. Volatile objects and calls are not
// asked for: they may change at any time. Looks at the symbols' address flags.
[[nodiscard]] bool touched_by(const NODE *tree, const NODE *target);

} // namespace velkor
