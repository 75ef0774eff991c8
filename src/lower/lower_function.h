// What leaves the optimizer in the form that the code generator wants.
#pragma once

namespace velkor {

// The lowering of the current function: numbers of blocks, trees, labels. Afterwards only the
// writer looks at the trees.
void lower_function();

} // namespace velkor
