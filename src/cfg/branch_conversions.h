// Tests and their arms turned into straight code, or into simpler tests.
//
// A condition that a conversion leaves as 1 or 0 is folded in the next step of the clean-up, and
// the arm that is not needed any more dies. Each routine keeps the edges in order.
#pragma once

#include "core/records.h"

namespace velkor {

// block ends in the IF; returns whether it changed anything. The shapes are told where they are
// converted: bit selections and toggles, arms that only set a bit, and, in the last clean-up,
// if (c) x = a; else x = b;  ->  x = c ? a : b;
[[nodiscard]] bool if_convert(NODE *test, BB *block);

// if (a) goto l; else goto f;   f: if (b) goto l; else goto m;   ->   if (a || b) goto l; else
// goto m; when only this block leads to f. For the last clean-up only.
[[nodiscard]] bool merge_or_conditions(NODE *test, BB *block);

// do ... while ((x = x + 1) != 10), with the same test ahead of the loop: the step moves to the
// head of both ways, and the tests look at x before it: x != 9.
void sink_increment(BB *block);

} // namespace velkor
