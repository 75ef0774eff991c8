// Sparse bit-vector sets: only the words that hold something, by ascending place.
//
// For sets that each block of a function has for itself, over a universe that grows with the
// function: their memory follows what they hold, not blocks times elements. Elements and words are
// those of core/sets.h. In the local zone; a set that grows leaves its smaller array behind.
#pragma once

#include "core/sets.h"

#include <cstdint>

namespace velkor {

struct SparseSet {
  struct Word {
    int place;          // holds the elements 32 * place to 32 * place + 31
    std::uint32_t bits; // 0 where all of them have been taken out again
  };
  Word *words = nullptr;
  int size = 0;     // words in use
  int capacity = 0; // words that there is room for
};

// An empty set costs no memory and needs no call.
inline void set_clear(SparseSet &set) {
  set.size = 0;
}
[[nodiscard]] bool set_has(const SparseSet &set, int element);
// The elements 32 * place to 32 * place + 31 as bits.
[[nodiscard]] std::uint32_t set_word(const SparseSet &set, int place);
void set_add(SparseSet &set, int element);
void set_remove(SparseSet &set, int element);
[[nodiscard]] bool set_is_empty(const SparseSet &set);

void set_copy(SparseSet &to, const SparseSet &from);
void set_copy(Set to, const SparseSet &from, int words); // an array of so many words

// into := into with from; into with what from holds and without does not. Each tells whether into
// has changed.
bool set_union(SparseSet &into, const SparseSet &from);
bool set_union_without(SparseSet &into, const SparseSet &from, const SparseSet &without);

void set_intersect(SparseSet &into, const SparseSet &from);
void set_subtract(SparseSet &into, const SparseSet &from);

} // namespace velkor
