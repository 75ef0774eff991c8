// What the truth of one relation tells about another.
#pragma once

#include "core/records.h"

namespace velkor {

// Does x a y imply x b y, for any x and y?
[[nodiscard]] bool op_implies(Opcode a, Opcode b);

// Does v a x imply v b y, for any v? x and y are constants of one type.
[[nodiscard]] bool value_implies(Opcode a, std::int32_t x, Opcode b, std::int32_t y);

// Does the truth value a_is_true of condition a ensure the truth value b_is_true of condition b?
// A tree that is no relation counts as tree != 0. Trees with effects imply nothing.
[[nodiscard]] bool relation_implies(const NODE *a, bool a_is_true, const NODE *b, bool b_is_true);

} // namespace velkor
