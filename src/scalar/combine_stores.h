// Two stores to the same place in memory, one behind the other: the first need not reach memory.
//
//     *p += 1; *p += 2;        ->   *p += 3;
//     *p = a;  *p = *p + b;    ->   T$1 = a;  *p = T$1 + b;
//
// The temporary is a scalar, which the other passes know how to get rid of.
#pragma once

namespace velkor {

// Needs the graph. Sets SYM::fcp_flag for its own use (AddressUse::ANY).
void combine_asgs_to_memory();

} // namespace velkor
