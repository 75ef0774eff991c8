// Live variables: which candidates may still be read.
//
// A backward bit-vector dataflow analysis over the scalar candidates of the function; see Kildall,
// "A unified approach to global program optimization" (1973).
#pragma once

#include "core/records.h"
#include "core/sets.h"

namespace velkor {

// State of the analysis. Sets are over candidate numbers, 0 to num_candidates-1; SYM::count holds a
// symbol's number, and is negative for one that is no candidate, candidate_lost for one whose
// address got away. Bits of such a symbol may stand in the sets; nobody asks for them.
struct LiveVariables {
  int num_candidates = 0;
  SYM **candidates = nullptr;      // by number; in the local zone
  int words = 0;                   // of each set
  Set static_candidates = nullptr; // candidates that are static locals
  Set statics_at_entry = nullptr;  // those whose value at entry can be read
  bool embedded_asg_seen = false;
};
extern LiveVariables live_variables;

// What a symbol's count is when it is made, and all ones in the 16 bits of the debug file.
inline constexpr std::int32_t candidate_lost = -1;

// The per-block sets stand in the block's working slots.
[[nodiscard]] inline Set &live_in(BB *block) {
  return reinterpret_cast<Set &>(block->work[0]);
}
[[nodiscard]] inline Set &live_out(BB *block) {
  return reinterpret_cast<Set &>(block->work[1]);
}
[[nodiscard]] inline Set &defs(BB *block) {
  return reinterpret_cast<Set &>(block->work[2]);
}
[[nodiscard]] inline Set &uses(BB *block) {
  return reinterpret_cast<Set &>(block->work[3]);
}

// Is the symbol a candidate of the last analysis? Other passes keep figures of their own in the
// count of symbols that take no part, so the number alone proves nothing.
[[nodiscard]] inline bool is_candidate(const SYM *sym) {
  return sym->count >= 0 && sym->count < live_variables.num_candidates &&
         live_variables.candidates[sym->count] == sym;
}

// May the call leave by a longjmp, into a function further out that calls this one again, or into
// this one? Then the code behind the call does not run, and the statics are read as they are.
[[nodiscard]] bool may_not_return(const NODE *call);

// Tidies the statements (values that nobody uses, commas), numbers the candidates and fills live_in
// and live_out of every block. Needs sym_split and edges; x = a + x may become x = x + a. Without
// candidates the sets are not made. Time and memory: blocks times candidates / 32 words for each
// set, over as many rounds as loops nest, and two. for_dead_code: for elimination of dead
// assignments, where x = x + 1 alone does not keep x alive and static locals take part; otherwise
// for storage allocation, where live_out is cut down to what has been given a value on some path.
void find_live_variables(bool for_dead_code);

} // namespace velkor
