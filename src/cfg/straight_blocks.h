// A function as a chain of blocks in source order.
#pragma once

namespace velkor {

// Cuts state.statements (newest first) into blocks: each label begins one. Every label reference is
// resolved and counted; a reference to a label that the function does not define ends the run.
// Labels are numbered from 1 upward.
// Leaves state.first_bb, state.num_blocks and the numbers of the blocks; there are no edges, and
// control falls through from one block to the next. A function that could run off its end gets a
// URETURN.
void build_straight_blocks();

} // namespace velkor
