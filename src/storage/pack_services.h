// Services for the routines by which a target packs its register classes.
//
// They leave comments in state.alloc_comments, which the writer puts out ahead of the function's
// code, and lines in the debug file.
#pragma once

#include "core/records.h"

#include <cstdint>

namespace velkor {

// SYM::level of a symbol that another one has replaced; its init is then that SYM.
inline constexpr std::int8_t coalesced_level = 42;

// Two locals that never conflict share one stack slot: each symbol of the list that can give up its
// own joins an earlier one, a preferred and costly one first, and every NAME of it in the function
// becomes one of its partner. Returns the symbols that remain, in the order of the list. Without
// measured conflicts the list comes back as it is. Time: square of the list's length.
[[nodiscard]] SYM *coalesce_autos(SYM *list);

// sym got the register of that name (none or empty: nothing to say in the listing). The comments go
// out by ascending key. number is what the debug file shows.
void report_register(int key, const char *reg_name, const SYM *sym, int number);

// sym is kept in static storage.
void report_local_static(const SYM *sym);

} // namespace velkor
