// Self-check of the current function.
#pragma once

namespace velkor {

// Checks what every pass counts on. A fault prints a line that names the pass, and ends the run.
//
// While the function is a list of statements: no node is shared or freed, every operator has its
// operands. Once it is a graph, besides:
//  - The chain along next is numbered from 1 without a gap, prev closes it to a ring, and every
//    block of it stands on the chain of creation too; blocks outside of it have no statements.
//  - Edges agree in both directions, none is there twice, and none leads out of the chain; a
//    block's successors are the targets of its last statement; the entry has no predecessors.
//  - Every block ends in BRANCH, IF, SWITCH, RETURN or URETURN and holds none of them earlier, and
//    no two blocks end in URETURN.
//  - Every label reference is resolved to a label that a block of the chain bears.
//  - The types of operands fit, if those of the function as it was read did: a file may say
//    anything.
// A function that has been written has no statements left.
void check_function(const char *pass_name);

} // namespace velkor
