// Bit-vector sets.
//
// A set over 0 .. n-1 is an array of set_words(n) words of 32 bits in the local zone; element i is
// bit i & 31 of word i >> 5. Every operation on whole sets takes the number of words, which all
// sets over one universe share. Sets over blocks hold dfn numbers, 1 to num_blocks.
#pragma once

#include "core/zones.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace velkor {

using Set = std::uint32_t *;
using ConstSet = const std::uint32_t *;

// Words of a set over 0 .. elements-1.
[[nodiscard]] constexpr int set_words(int elements) {
  return (elements + 31) / 32;
}

inline void set_clear(Set set, int words) {
  std::fill_n(set, words, 0u);
}
inline void set_fill(Set set, int words) {
  std::fill_n(set, words, ~0u);
}
inline void set_copy(Set to, ConstSet from, int words) {
  std::copy_n(from, words, to);
}

// A new set, empty or a copy.
[[nodiscard]] inline Set new_set(int words) {
  auto *set = static_cast<Set>(lalloc(static_cast<std::size_t>(words) * sizeof(std::uint32_t)));
  set_clear(set, words);
  return set;
}
[[nodiscard]] inline Set new_set_copy(ConstSet from, int words) {
  auto *set = static_cast<Set>(lalloc(static_cast<std::size_t>(words) * sizeof(std::uint32_t)));
  set_copy(set, from, words);
  return set;
}

[[nodiscard]] inline bool set_has(ConstSet set, int element) {
  return (set[element >> 5] >> (element & 31) & 1) != 0;
}
inline void set_add(Set set, int element) {
  set[element >> 5] |= 1u << (element & 31);
}
inline void set_remove(Set set, int element) {
  set[element >> 5] &= ~(1u << (element & 31));
}

// into := into with from, without it, what both hold. Each tells whether into has changed.
inline bool set_union(Set into, ConstSet from, int words) {
  std::uint32_t changed = 0;
  for (int i = 0; i < words; ++i) {
    const std::uint32_t word = into[i] | from[i];
    changed |= word ^ into[i];
    into[i] = word;
  }
  return changed != 0;
}
inline bool set_subtract(Set into, ConstSet from, int words) {
  std::uint32_t changed = 0;
  for (int i = 0; i < words; ++i) {
    const std::uint32_t word = into[i] & ~from[i];
    changed |= word ^ into[i];
    into[i] = word;
  }
  return changed != 0;
}
inline bool set_intersect(Set into, ConstSet from, int words) {
  std::uint32_t changed = 0;
  for (int i = 0; i < words; ++i) {
    const std::uint32_t word = into[i] & from[i];
    changed |= word ^ into[i];
    into[i] = word;
  }
  return changed != 0;
}

[[nodiscard]] inline bool set_is_empty(ConstSet set, int words) {
  return std::all_of(set, set + words, [](std::uint32_t word) { return word == 0; });
}
[[nodiscard]] inline bool sets_equal(ConstSet a, ConstSet b, int words) {
  return std::equal(a, a + words, b);
}
[[nodiscard]] inline bool sets_meet(ConstSet a, ConstSet b, int words) {
  for (int i = 0; i < words; ++i)
    if ((a[i] & b[i]) != 0) return true;
  return false;
}

// Calls visit(element) for each member, ascending. visit may change the set: members of the word
// at hand are those that it had before.
template <typename Visit> void for_each_member(ConstSet set, int words, Visit visit) {
  for (int i = 0; i < words; ++i)
    for (std::uint32_t word = set[i]; word != 0; word &= word - 1)
      visit(i * 32 + std::countr_zero(word));
}

} // namespace velkor
