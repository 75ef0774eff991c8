// Statements that compute one value behind another, as statements of their own.
#pragma once

#include "core/records.h"

namespace velkor {

// (a, b) and (a, b) op c, at the root of the cell's statement: a stays in the cell, b or b op c
// goes into a new cell behind it, with the same line numbers. Returns whether there was such a
// comma; a itself may hold another one.
bool split_comma(LIST *cell);

} // namespace velkor
