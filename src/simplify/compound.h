// Compound assignments and the plain ones that they stand for.
#pragma once

#include "core/records.h"

namespace velkor {

// Is the operand the object that the assignment stores to?
using TargetTest = bool (*)(const NODE *target, const NODE *operand);

// x = x op y  ->  x op= y, where both compute the same; any other assignment as it stands.
// is_target tells an operand that is the target; trees_equal without effects if none is given.
[[nodiscard]] NODE *to_compound_assignment(NODE *node);
[[nodiscard]] NODE *to_compound_assignment(NODE *node, TargetTest is_target);

// x op= y  ->  x = x op y, with a copy of x; any other node as it stands. x must have no effects.
[[nodiscard]] NODE *expand_compound_assignment(NODE *node);

// target op operand with the plain operator of a compound assignment, in the type in which that one
// computes. Takes both operands.
[[nodiscard]] NODE *make_compound_operation(Opcode base, NODE *target, NODE *operand);

} // namespace velkor
