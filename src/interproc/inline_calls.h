// Calls replaced by the body of the function that they call.
//
//   y = clamp(x + 1);   ->   c = x + 1;               bound to a fresh local
//                            if (c < 0) goto L1; else goto L2;
//                       L1:  R$1 = 0; goto L3;        was `return 0`
//                       L2:  R$1 = c; goto L3;        was `return c`
//                       L3:  y = R$1;
//
// It happens while the statements of the caller are being sequenced: what is emitted stands ahead
// of the statement that held the call and is sequenced in turn, so that calls in the body are
// replaced as well. Needs an inline body (interproc/inline_bodies.h) of the callee. Leaves jumps,
// copies and two comments, "ENTERING" and "LEAVING"; the passes that follow see one function and
// clean up. Each expansion has its own locals, labels and temporary.
#pragma once

#include "core/records.h"
#include "simplify/sequencing.h"

namespace velkor {

// Takes a call whose operands are sequenced. Yields what stands in its place: the call itself where
// it is not to be replaced, else a name, or a constant where no value is used. A call in a test
// goes to one of the two labels (their indices), and an IF is what remains of one that is not
// replaced; for other uses the labels do not count. Emits at the cell.
[[nodiscard]] NODE *inline_call(CallUse use, NODE *call, LIST *cell, std::int32_t true_label,
                                std::int32_t false_label);

// Forgets an expansion that a failure has cut short: a run begins.
void clear_inline_calls();

} // namespace velkor
