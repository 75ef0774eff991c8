// Chained assignments: a = 0; b = 0;  becomes  b = (a = 0);
#pragma once

#include "core/records.h"

namespace velkor {

// Lets the statements of one source line that follow the cell's take its value, as long as each
// stores the constant that the cell's statement yields; they leave the list. The simplifier has
// taken such a chain apart.
void chain_assignments(LIST *cell);

} // namespace velkor
