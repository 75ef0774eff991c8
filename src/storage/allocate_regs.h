// Storage allocation of local scalars.
#pragma once

namespace velkor {

// Decides which local scalars the code generator receives as numbered virtual registers. Measures
// loop depths, conflicts, preferences and costs for the target's register classes, if it has any,
// folds an assignment into the branch that tests it (x = f(); if (x) ... -> if (x = f()) ...), and
// numbers the virtual registers of the function.
void allocate_regs();

} // namespace velkor
