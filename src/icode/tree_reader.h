// Expression trees of the icode file.
#pragma once

#include "core/records.h"

namespace velkor {

// The tree at the cursor, its nodes straight from the local zone. Several opcodes of the file are
// turned into other forms at once, and no pass ever sees them:
//   LCON                becomes ICON
//   LOOP(x, v)          becomes a LABELDEF of label v
//   ENDLOOP(x, l)       becomes CBRANCH((x -= 1) < 0, l)
//   PMCONV(x, bits)     becomes x * (bits / 8)
//   NASSERT(pure)       becomes ICON 0
//   ASSERT((x, text))   becomes ASSERT(x) with the text in aux
// Arguments of calls that are integers get an ACONV over them. A tree of a shape that no pass can
// handle ends the run with a message.
[[nodiscard]] NODE *read_tree();

} // namespace velkor
