// Assignments inside of expressions become statements of their own.
//
//     a[i++] = f(x = y + 1);   ->   x = y + 1; a[i++] = f(x);
//     a[i++] = x;              ->   a[i] = x; i = i + 1;
#pragma once

#include "core/records.h"

namespace velkor {

// Treats the statements of one block. Assignments to variables that can live in a register move in
// front of their statement, steps behind it; those to variables in memory only where nothing else
// in the statement could see the difference. What may not be evaluated (behind && || ?) stays.
// Reads SYM::fcp_flag: is the address of the local taken?
void unnest_block(BB *block);

} // namespace velkor
