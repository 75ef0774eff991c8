// Chains of one commutative operator: the order of their operands and the constants in them.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet reassociate_rules;

// Links of a chain that are turned from leaning right to leaning left, or past which an operand
// moves. Beyond it operands stay where they are, so that a chain of any length costs a bounded
// number of steps, and a bounded depth of recursion, for each of its links.
inline constexpr int longest_turned_chain = 32;

// Does the chain of tree's operator (+ and - count as one) that leans left from tree have more
// links than that?
[[nodiscard]] bool is_long_chain(const NODE *tree);

// Rule for operators that rewrite their operands in place: an operand that came out as a comma is
// hoisted, and two operands that came out as constants are folded.
Outcome settle_operands(NODE *&tree);

} // namespace velkor
