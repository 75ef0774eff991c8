// Live variables: which candidates may still be read.
//
// A backward bit-vector dataflow analysis over the scalar candidates of the function; see Kildall,
// "A unified approach to global program optimization" (1973).
#pragma once

#include "core/records.h"
#include "core/sparse_sets.h"

namespace velkor {

// State of the analysis. Sets are over candidate numbers, 0 to num_candidates-1; SYM::count holds a
// symbol's number, and is negative for one that is no candidate, candidate_lost for one whose
// address got away. Bits of such a symbol may stand in the sets; nobody asks for them.
struct LiveVariables {
  int num_candidates = 0;
  SYM **candidates = nullptr;  // by number; in the local zone
  int words = 0;               // of a set that is an array
  SparseSet static_candidates; // candidates that are static locals
  SparseSet statics_at_entry;  // those whose value at entry can be read
  bool embedded_asg_seen = false;
};
extern LiveVariables live_variables;

// What a symbol's count is when it is made, and all ones in the 16 bits of the debug file.
inline constexpr std::int32_t candidate_lost = -1;

// The sets of one block; find_live_variables puts them into the block's first working slot.
struct LiveSets {
  SparseSet live_in;
  SparseSet live_out;
  SparseSet defs; // assigned in the block, and not read before
  SparseSet uses; // read in the block before it assigns them
};
[[nodiscard]] inline LiveSets *live_sets(const BB *block) {
  return static_cast<LiveSets *>(block->work[0]);
}
[[nodiscard]] inline SparseSet &live_in(BB *block) {
  return live_sets(block)->live_in;
}
[[nodiscard]] inline SparseSet &live_out(BB *block) {
  return live_sets(block)->live_out;
}
[[nodiscard]] inline SparseSet &defs(BB *block) {
  return live_sets(block)->defs;
}
[[nodiscard]] inline SparseSet &uses(BB *block) {
  return live_sets(block)->uses;
}

// Gives the block empty sets.
void make_live_sets(BB *block);

// Is the symbol a candidate of the last analysis? Other passes keep figures of their own in the
// count of symbols that take no part, so the number alone proves nothing.
[[nodiscard]] inline bool is_candidate(const SYM *sym) {
  return sym->count >= 0 && sym->count < live_variables.num_candidates &&
         live_variables.candidates[sym->count] == sym;
}

// May the call leave by a longjmp, into a function further out that calls this one again, or into
// this one? Then the code behind the call does not run, and the statics are read as they are.
[[nodiscard]] bool may_not_return(const NODE *call);

// What the analysis is for.
enum class LiveFor : std::uint8_t {
  DEAD_CODE,  // x = x + 1 alone does not keep x alive, and static locals take part
  ALLOCATION, // live_out holds only what has been given a value on some path
  NOBODY      // no sets: only the candidates are wanted
};

// Tidies the statements (values that nobody uses, commas), numbers the candidates and fills live_in
// and live_out of every block. Needs sym_split and edges; x = a + x may become x = x + a. Without
// candidates the sets are not made. Memory: what is live, summed over the blocks. Time: that, over
// as many rounds as loops nest, and two.
void find_live_variables(LiveFor use);

} // namespace velkor
