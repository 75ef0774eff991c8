// Trees in the output file.
#pragma once

#include "core/records.h"

namespace velkor {

// The tree's node records in prefix order. An opcode that only passes know ends the run.
void wrtree(NODE *tree);

} // namespace velkor
