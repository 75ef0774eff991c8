// Memory accesses as narrow as what is looked at.
//
// y = x & 0xFF;  with an int x in memory becomes  y = *(unsigned char *) &x & 0xFF;
//
// A walk from a statement's root down, with the mask of the bits that the consumer of each value
// looks at. A part of the lowering: its trees are lowered, and so is what it leaves.
#pragma once

#include "core/records.h"

namespace velkor {

// Replaces accesses to words of which only some bits are demanded by accesses to a byte or a
// halfword, where that is not dearer: (x & 0xFF) of an int in memory reads one byte. Takes the
// statement; block and cell are handed on to unsimp_tree.
[[nodiscard]] NODE *narrow_statement(NODE *tree, BB *block, LIST *cell);

} // namespace velkor
