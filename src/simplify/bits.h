// What is known of the bits of an integer expression, and rewriting under the knowledge that only
// some of them will be looked at.
#pragma once

#include "core/records.h"

namespace velkor {

// A value range that a caller knows of a symbol.
struct ValueRange {
  const ValueRange *next;
  const SYM *sym;
  std::int32_t low;
  std::int32_t high;
};

// Mask of the bits that can be 1 in the tree's value, wrapped to the tree's type and then to the
// given one. All ones means unknown.
[[nodiscard]] std::uint32_t possible_bits(const NODE *tree, TypeWord type);

// Mask of the bits that are 1 for sure, wrapped likewise. 0 means unknown.
[[nodiscard]] std::uint32_t certain_bits(const NODE *tree, TypeWord type);

// Is the value certainly 0 or 1?
[[nodiscard]] bool is_boolean_tree(const NODE *tree);

// A tree that agrees with the given one in all bits of mask; takes the tree.
[[nodiscard]] NODE *demand_bits(NODE *tree, std::uint32_t mask);

// Smallest and largest value that the tree can take, as a word in the tree's type. ranges may be
// none.
[[nodiscard]] std::int32_t lower_bound(const NODE *tree, const ValueRange *ranges);
[[nodiscard]] std::int32_t upper_bound(const NODE *tree, const ValueRange *ranges);

// An integer whose lower bound is not negative?
[[nodiscard]] bool is_non_negative(const NODE *tree, const ValueRange *ranges);

} // namespace velkor
