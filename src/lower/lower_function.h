// What leaves the optimizer in the form that the code generator wants.
#pragma once

namespace velkor {

// An ASSERT gets its text back as the second operand of its condition: ASSERT(x) with the text in
// aux becomes ASSERT((x, "text")).
void lower_function();

} // namespace velkor
