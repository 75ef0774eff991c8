// Jumps that go where control ends up in the end.
#pragma once

#include "core/records.h"

namespace velkor {

// Each reference in the tree, which is a part of block's last statement, takes the label where the
// jumps behind it end. Returns whether one changed. The edges are the caller's.
[[nodiscard]] bool thread_labels(NODE *tree, const BB *block);

// block ends in the IF. Where one of its outcomes decides the test that the target begins with, the
// reference skips that test; a test that does not matter becomes 0. Returns whether anything
// changed. The edges are the caller's.
[[nodiscard]] bool thread_implied_tests(NODE *test, const BB *block);

} // namespace velkor
