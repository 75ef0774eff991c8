// Statements of fact leave the function, once every pass that can use them has run.
//
//     nassert(x > 0); y = x;   ->   y = x;
//
// The reader and the passes set state.assertions_present where such a statement remains; without
// it nothing happens. Leaves no NASSERT behind. The condition of one is never evaluated.
#pragma once

namespace velkor {

void strip_assertions();

} // namespace velkor
