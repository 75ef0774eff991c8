// Assignments of constants, of addresses and of constant steps move down to where the variable is
// wanted, so that it occupies a register for a shorter time, and not on paths that do without it:
//
//     x = 5; if (t) { y = 1; use(x); } else y = 2;   ->   if (t) { y = 1; x = 5; use(x); } else y =
//     2;
#pragma once

namespace velkor {

// Goes through the statements against their order, so that each finds those behind it in place. An
// assignment stops in front of the first statement that mentions its variable, or where the paths
// on which the variable is wanted part or meet; whole loops and conditional regions that do without
// the variable are jumped over. Statements may become empty, and edges get blocks of their own.
//
// Needs fresh live_in, live_out and candidate numbers (scalar/live_variables.h); live sets are not
// kept up to date, and uses is overwritten. Returns whether some block has come to be a mere jump:
// the caller runs simpcfg.
[[nodiscard]] bool delay_assignments();

} // namespace velkor
