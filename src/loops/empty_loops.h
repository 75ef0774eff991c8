// Removal of loops that do nothing but count.
#pragma once

#include "core/records.h"

namespace velkor {

// h is a block that ends in an IF whose true target is h itself. When its statements have the same
// effect once as many times, but for one counter, the back edge goes and the counter takes its
// final value. Returns whether the loop was removed.
//
//     do { c = 0; } while (--n);   ->   c = 0; n = 0;
[[nodiscard]] bool remove_empty_loop(BB *h);

} // namespace velkor
