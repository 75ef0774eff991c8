// Block order of loops: the last change before lowering.
#pragma once

namespace velkor {

// Where a block at the bottom of a loop jumps back and nothing falls out of it, the loop's top
// moves behind it, so that the jump back falls through and one jump for each round disappears:
//
//     top: if (t) body else out;  body: ...; goto top;   ->   body: ...;  top: if (t) body else
//     out;
//
// Touches nothing but the order and the numbers of blocks.
void rotate_loops();

} // namespace velkor
