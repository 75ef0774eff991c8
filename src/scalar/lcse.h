// Local common subexpressions: what a run of blocks computes twice is computed once.
//
//     a = x * y + 1;  b = (x * y) / 2;  p[i] = p[i] + 3;
//  ->
//     C$1 = x * y;  a = C$1 + 1;  b = C$1 / 2;  C$2 = p + i * 4;  *C$2 = *C$2 + 3;
//
// Value numbering over extended basic blocks, as in Cocke and Schwartz, "Programming Languages and
// Their Compilers" (1970), in two sweeps. The first goes forward and gives each node a number,
// equal for nodes that hold the same value; a symbol's number is that of the value that it holds,
// so that copies are seen through. A node whose value stands in a table already is marked as
// redundant with the node found there. The second sweep goes backward and turns the marks into
// temporaries, so that all uses of a value are settled before its first occurrence is reached.
//
// Needs the graph, and statements without control flow inside of them. Leaves names of file level
// objects as they were, absolute addresses and constants that are stored under IDENTITY, scaled
// indices as PMCONV.
#pragma once

#include "core/records.h"

namespace velkor {

// The pass. Runs simpcfg when a test has become constant, elim_dead_assigns when a use has been
// redirected.
void lcse();

// A hash of the tree's shape down to depth levels below its spine, the same for x + K with any K
// under a pointer.
[[nodiscard]] std::uint32_t lcse_hash(const NODE *tree, int depth);

// Does a temporary for the tree's value pay on this machine?
[[nodiscard]] bool cse_worthwhile(const NODE *tree);

// For a condition of an IF, SWITCH or assertion: the operand whose value is worth knowing. What is
// compared with 0, or masked by a constant that the machine tests directly; otherwise all of it.
[[nodiscard]] NODE *condition_operand(NODE *condition);

} // namespace velkor
