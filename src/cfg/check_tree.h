// What every tree between two passes looks like.
#pragma once

#include "core/records.h"

namespace velkor {

// What is wrong with a node in its place, or none: an opcode that nobody but the pass that makes it
// may see, operands missing or too many, a label or a transfer of control where none may stand.
// parent is none for a statement. Looks at the node and its operands, no deeper.
[[nodiscard]] const char *shape_fault(const NODE *node, const NODE *parent);

// What is wrong with the types of a node whose shape is sound, or none. Narrow integers stand bare
// under the operators of int, and words of any kind compare; but no operator works on what it
// cannot work on, and what is stored to is a place.
[[nodiscard]] const char *type_fault(const NODE *node);

} // namespace velkor
