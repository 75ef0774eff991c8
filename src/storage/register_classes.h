// Allocation over the target's register classes.
#pragma once

#include "core/records.h"
#include "core/target.h"

namespace velkor {

// Offers the candidates of scalar_syms to each class of the chain in turn. Within a class the order
// comes from graph colouring (Briggs, Cooper, Torczon, "Improvements to graph coloring register
// allocation", 1994): what can be sure of a register leaves the conflict graph, cheapest first;
// when nothing can, the symbol with the lowest cost for the square of its degree leaves; the class
// packs in the reverse order, and a symbol given up may still find a register.
//
// Needs allocation and the costs (analyse_conflicts with conflicts). Leaves in scalar_syms what no
// class took, without the candidates that nothing refers to. Returns the chain of the symbols that
// have a register, linked by next; the caller puts them back.
[[nodiscard]] SYM *allocate_classes(REGCLASS *chain);

} // namespace velkor
