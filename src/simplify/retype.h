// The types that the usual conversions call for.
#pragma once

#include "core/records.h"

namespace velkor {

// The tree with balanced types; takes the tree. Never run twice on the same tree: the integer
// operand of a pointer sum would be scaled again.
[[nodiscard]] NODE *retype_tree(NODE *tree);

} // namespace velkor
