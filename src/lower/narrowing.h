// What the parts of the narrowing of memory accesses share.
//
// Masks are words of demanded bits of a value, as a 32-bit word extended the way its type extends
// it. Bit positions count from bit 0 of the value, whatever the order of bytes in memory.
#pragma once

#include "core/bit_arithmetic.h"
#include "core/records.h"
#include "core/types.h"

namespace velkor::narrowing {

inline constexpr std::uint32_t all_bits = ~0u;

// The cost of a shift, in the units of access_cost.
inline constexpr std::int32_t shift_cost = 4;

// Does mask cover the bits?
[[nodiscard]] constexpr bool covers(std::uint32_t mask, std::uint32_t bits) {
  return (mask & bits) == bits;
}

// The bit rounded down to the width of a part of that type.
[[nodiscard]] constexpr std::int32_t part_position(std::int32_t bit, TypeWord type) {
  return bit - bit % type_width(type);
}

// The bits of a part of that type at the position.
[[nodiscard]] constexpr std::uint32_t part_mask(std::int32_t position, TypeWord type) {
  return type_mask(type) << position;
}

// Can that part of the object that the tree reads or stores be accessed by itself?
[[nodiscard]] bool can_narrow_access(const NODE *tree, std::int32_t position, TypeWord type);

// An access to that part of the object; takes the tree, which can_narrow_access has allowed.
[[nodiscard]] NODE *make_narrow_access(std::int32_t position, NODE *tree, TypeWord type);

// The tree with narrow accesses; takes the tree. Of a place the address is used, of a value the
// bits of the mask.
[[nodiscard]] NODE *narrow_place(NODE *tree);
[[nodiscard]] NODE *narrow_value(NODE *tree, std::uint32_t mask);

// x = y, x op= y. A mask of 0: nobody uses the value.
[[nodiscard]] NODE *narrow_assignment(NODE *assignment, std::uint32_t mask);

// x >> K; any other count is no business of this.
[[nodiscard]] NODE *narrow_right_shift(NODE *shift, std::uint32_t mask);

} // namespace velkor::narrowing
