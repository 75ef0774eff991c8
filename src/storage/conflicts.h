// What storage allocation knows of the candidates: costs, conflicts, preferences, how they are
// used.
//
// The sets are over the candidate numbers of find_live_variables(LiveFor::ALLOCATION), in the local
// zone.
#pragma once

#include "core/records.h"
#include "core/sets.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace velkor {

struct Allocation {
  // Whether conflicts and preferences are there. They take candidates squared / 4 bytes, so they
  // are made only for a target with register classes, and for no more candidates than
  // most_measured_candidates.
  bool measured = false;
  Set *conflicts = nullptr;   // for each candidate, those that cannot share storage with it
  Set *preferences = nullptr; // for each candidate, those that it is copied from or to

  Set call_crossing = nullptr; // live across a call
  Set hook_crossing = nullptr; // live at a node that the target's clobbers_node reports
  Set tested_vars = nullptr;   // assigned where the value is compared with 0 or branched on
  Set pointer_vars = nullptr;  // base of an address
  Set loop_vars = nullptr;     // counts a machine loop
  Set indexed_vars = nullptr;  // integer operand of an address
  Set param_homes = nullptr;   // local home of a parameter
  Set reloadable = nullptr;    // every assignment gives a constant or a parameter
};
extern Allocation allocation;

inline constexpr int most_measured_candidates = 16384; // 128 MB of sets

// While storage is allocated, SYM::offset of a candidate is its cost: its appearances, each
// weighted by 8 * loop depth + 1.
[[nodiscard]] inline std::int32_t &cost(SYM *sym) {
  return sym->offset;
}
[[nodiscard]] inline std::int32_t cost(const SYM *sym) {
  return sym->offset;
}

// The cost grows by more, as far as 32 bits go.
inline void add_cost(SYM *sym, std::int32_t more) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  sym->offset = static_cast<std::int32_t>(std::min(most, std::int64_t{sym->offset} + more));
}

// Fills allocation and the costs; makes all of scalar_syms C_AUTO; folds assignments into branches.
// Needs loop depths and live_out. with_conflicts: the target has register classes that will ask,
// and hears of the statements through its hooks; otherwise nothing is measured but for the debug
// file. An assignment x = y takes y out of what x conflicts with, so that both may share a register
// (Chaitin, "Register allocation and spilling via graph coloring", 1982).
void analyse_conflicts(bool with_conflicts);

} // namespace velkor
