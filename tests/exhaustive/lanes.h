// Values of trees, for many assignments of the variables at once.
//
// A lane is one assignment of values to all variables. A tree is evaluated for all lanes together,
// a node at a time, so that the cost of walking a tree is spread over them. The arithmetic is the
// judge's (tools/run), written again for speed; every run compares the two on a sample of its trees
// (judge.h).
#pragma once

#include "core/records.h"

#include <array>
#include <cstdint>
#include <vector>

namespace velkor::exhaustive {

inline constexpr int lane_count = 256;

// One 32-bit word for each lane: a value, or a mask that is all ones where something holds.
struct alignas(64) Word {
  std::array<std::uint32_t, lane_count> lane;
};

// The contents of all variables, by their slots. A bit field is a variable of its own.
using Memory = std::vector<Word>;

// The address that a pointer to the variable of that slot holds.
inline constexpr std::uint32_t first_variable_address = 0x4000;
[[nodiscard]] constexpr std::uint32_t variable_address(std::int32_t slot) {
  return first_variable_address + 16 * static_cast<std::uint32_t>(slot);
}

// What became of an evaluation.
struct Evaluation {
  Memory *memory = nullptr;     // read, and written to by assignments
  Word undefined{};             // lanes where C leaves the tree without a meaning
  Word trapped{};               // lanes that the target would not survive
  const char *reason = nullptr; // not none: the tree cannot be evaluated, for this reason
};

// A variable's slot stands in the count field of its symbol. The value is a word wrapped to the
// tree's type.
void evaluate(const NODE *tree, Evaluation &evaluation, Word &value);

// Which variables the tree reads and writes, a bit for each slot; and whether C orders all its
// reads and writes of any one variable. pointed_at: slots that a pointer may lead to.
struct Accesses {
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;
  bool ordered = true;
};
[[nodiscard]] Accesses accesses_of(const NODE *tree, std::uint64_t pointed_at);

// The word as a value of the type.
[[nodiscard]] std::uint32_t wrapped_word(std::uint32_t word, TypeWord type);

} // namespace velkor::exhaustive
