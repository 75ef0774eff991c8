// Labels of blocks in their final form.
#pragma once

#include "core/records.h"

namespace velkor {

// All labels count no references yet.
void clear_reference_counts();

// Lets the label references of a block's last statement refer to the first label of their target
// where they lead forward, and to the second where they lead back or to the block itself; counts
// them. A second label is made where there is none.
void number_branch_labels(NODE *tree, const BB *block);

// Gives all used labels their final numbers: 1 upward in the order of the code, machine loops
// behind. With two or more # on the command line they keep numbers that tell the block, as long as
// the file has room for these. A function with more labels than the file has room for ends the run.
void number_labels();

} // namespace velkor
