// Loads of what an earlier statement of the block has stored.
//
//     s.a = 1;                    s.a = 1;
//     s.b = x + y;                Y$1 = (s.b = x + y);
//     return s.a + s.b;     ->    return 1 + Y$1;
//
// The places are those that the scalar passes do not follow: members, elements with a constant
// subscript, objects whose address is taken or that other functions see, absolute addresses. Needs
// the graph; sets fcp_flag for itself. Leaves the graph as it was: what a test has become constant
// by is for copyprop, and copies to Y$n that turn out needless are, too.
#pragma once

namespace velkor {

void lcse_subrange_assignments();

} // namespace velkor
