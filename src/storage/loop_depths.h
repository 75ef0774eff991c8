// How deep each block stands in loops.
#pragma once

namespace velkor {

// Sets BB::depth of every block; needs block order, dfn and edges.
//
// A block h heads a loop when a block d that h can reach, with dfn(d) at least dfn(h), jumps back
// to it; of several the one with the greatest dfn ends the loop. The loop's blocks are those from h
// to d in block order that can reach h and be reached from it. The depth of a block is the number
// of loops that it is in.
//
// Blocks that reach each other are the strongly connected components of the graph (Tarjan,
// "Depth-first search and linear graph algorithms", 1972), so no sets of what a block reaches are
// made, and BB::descendants is none afterwards. Time: linear in blocks and edges.
void compute_loop_depths();

} // namespace velkor
