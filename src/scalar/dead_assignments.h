// Removal of assignments to scalars that nobody reads any more.
//
//     x = a; y = x + 1; x = f(); return y;   ->   x = a; y = x + 1; f(); return y;
#pragma once

namespace velkor {

// One backward walk over each block with what is live behind it: an assignment to a candidate of
// the analysis of live variables (scalar/live_variables.h) that is not live there goes, and only
// the effects of its value stay. Updates of a variable by itself (x = x + 1 in a loop) go with it.
//
// unnest: embedded assignments become statements of their own, where that is possible
// (scalar/unnest_assignments.h). delay: ends with moving assignments of constants down to their
// first use (scalar/delay_assignments.h).
//
// Needs the graph, and leaves one: simpcfg has run when a block has come to be a mere jump. Symbols
// without references leave state.scalar_syms, and their count is candidate_lost. live_in and
// live_out are true afterwards if neither simpcfg ran nor anything was delayed. Time as
// find_live_variables.
void elim_dead_assigns(bool delay, bool unnest);

} // namespace velkor
