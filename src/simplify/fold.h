// Operators whose operands are constants.
#pragma once

#include "core/records.h"

namespace velkor {

// The node folded, or the node itself (its constant operand may have moved to the right). Takes the
// node. A computation that the program would not survive (a division by zero), or whose result has
// no exact text, is left to the program.
[[nodiscard]] NODE *fold_node(NODE *node);
[[nodiscard]] NODE *fold_float_node(NODE *node);

// What an FCON is worth: its text, rounded to single for type float.
[[nodiscard]] double float_constant_value(const NODE *constant);

// Canonical text in the local zone that reads back as exactly the value when it stands in a
// constant of the floating type; none where fifteen digits do not hold it.
[[nodiscard]] char *exact_float_text(double value, TypeWord type);

// Gives an FCON another floating type and the value that a conversion to that type yields. False,
// and the constant as it was, when the value has no exact text.
[[nodiscard]] bool retype_float_constant(NODE *constant, TypeWord type);

} // namespace velkor
