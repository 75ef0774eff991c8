// Stores that are overwritten before anything can read them.
//
//     s.a = f();                 f();
//     s.a = 2;              ->   s.a = 2;
//     return s.a;                return s.a;
//
// One sweep backward over the blocks, with the bits of memory that are certain to be overwritten.
// It deals with the places that elim_dead_assigns does not: members, elements, objects whose
// address is taken or that other functions see. At the function's end its own objects count as
// overwritten. Needs the graph; sets fcp_flag for itself; leaves the graph as it was.
#pragma once

namespace velkor {

void elim_dead_subrange_assigns();

} // namespace velkor
