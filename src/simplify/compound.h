// Compound assignments and the plain ones that they stand for.
#pragma once

#include "core/records.h"

namespace velkor {

// x = x op y  ->  x op= y; any other assignment as it stands.
[[nodiscard]] NODE *to_compound_assignment(NODE *node);

// x op= y  ->  x = x op y, with a copy of x; any other node as it stands.
[[nodiscard]] NODE *expand_compound_assignment(NODE *node);

} // namespace velkor
