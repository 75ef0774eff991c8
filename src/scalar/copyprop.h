// Copies and constants carried along extended basic blocks, through memory as well:
//
//     x = y + 1; *p = x; use(*p);           ->     x = y + 1; *p = y + 1; use(y + 1);
//     n = 3; ... if (c) goto a;  a: f(n);   ->     n = 3; ... a: f(3);
//
// A local whose only value in the whole function is a constant or the address of an object is
// replaced wherever it is used. Any other variable is replaced by the expression last assigned to
// it, as far as nothing that the expression reads has changed, and a load by the value of the last
// store to an equal place. Common subexpressions that come of this are the next pass's to remove. A
// jump to a test that the known values decide goes past the test.
//
// Needs the graph, and statements without control flow inside of them. Leaves assignments that
// nobody reads any more to the removal of dead assignments, which ends the pass. Uses SYM::key,
// SYM::fcp_flag and NODE::nsize of names.
#pragma once

namespace velkor {

// track_constants false: the function-wide constants are left alone.
void copyprop(bool track_constants);

} // namespace velkor
