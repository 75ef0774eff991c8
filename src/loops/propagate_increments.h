// Steps of pointers move into the accesses next to them, whose machine forms make them at no cost:
//
//     x = *p; p = p + 4;   ->   x = *p++;          p = p + 4; x = *p;   ->   x = *(p = p + 4);
//
// A step at the end of a loop may travel to an access at its top; then the pointer is set back once
// in front of the loop, and stepped once behind it.
#pragma once

#include "core/records.h"

namespace velkor {

// Looks for each statement p = p + k on a local pointer at the nearest access through p, first
// backward, then forward, over five blocks at most. Does nothing in instruction forms that cannot
// step. Needs the graph; leaves one, with blocks of its own on the exits of loops. Sets
// SYM::fcp_flag for its own use.
void propagate_increments();

// Can an access of the type and size (bytes) step its base register by k bytes?
[[nodiscard]] bool auto_step_fits(std::int32_t k, TypeWord type, std::int32_t size);

} // namespace velkor
