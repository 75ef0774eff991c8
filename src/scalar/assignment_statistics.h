// What the function does with each of its scalars: how often it is assigned, and whether the one
// assignment of a scalar gives it a constant.
//
// The result stands in the symbols of state.scalar_syms:
//   count     assignments; -1 for a symbol that cannot be followed (its address is taken, or it is
//             the home of a parameter and never assigned again); every symbol that is not on the
//             chain has -1 as well
//   init      a private copy of the only assignment, where its value is constant-like; else none
//   key       0
//   fcp_flag  an address operator is applied to it
// The home of a parameter that is never assigned again gets its const bit.
#pragma once

#include "core/records.h"

namespace velkor {

// Counts anew, for a function whose symbols are on their chains. Symbols without any reference
// leave state.scalar_syms.
void collect_assignment_statistics();

// May a copy of the value take the place of a variable that was set to it, however far away? True
// of constants, addresses of named objects, and homes of parameters that are never assigned again.
[[nodiscard]] bool is_constant_like(const NODE *value);

// The known value of a symbol: a private assignment in SYM::init, which owns its tree. value_from
// is an assignment in the function's trees whose value the symbol takes; it is copied, because
// simplifying the statement around it frees and reuses nodes.
void remember_value(SYM *sym, const NODE *value_from);
void forget_value(SYM *sym);

} // namespace velkor
