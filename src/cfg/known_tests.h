// Tests whose outcome is known, or does not matter.
//
// Each routine is given the transfer that ends the block, or the cell that it stands in, keeps the
// edges in order, and returns whether it changed anything.
#pragma once

#include "core/records.h"

namespace velkor {

// if (1) goto a; else goto b;  ->  goto a; and likewise where a and b do the same.
[[nodiscard]] bool fold_constant_if(NODE *test, BB *block);

// Drops the cases that go where the default goes, and those that the selector is known to differ
// from. The transfer may become a BRANCH or an IF.
[[nodiscard]] bool fold_constant_switch(LIST *&last, BB *block);

// if (c) goto e; else goto j;   e: goto j;   ->   both targets e, when nothing else leads to e and
// j.
[[nodiscard]] bool drop_empty_arm(NODE *test, BB *block);

// if (c) goto a; else goto n;   n: if (c) goto a; else goto n;   ->   goto n, n being the next
// block. For the last clean-up only.
[[nodiscard]] bool skip_same_test(NODE *test, BB *block);

} // namespace velkor
