// Arithmetic on 32-bit words that wraps, and logarithms.
#pragma once

#include <bit>
#include <cstdint>

namespace velkor {

// k when value is positive and equals 2 to the k, else -1.
[[nodiscard]] constexpr int log2_of(std::int32_t value) {
  const auto word = static_cast<std::uint32_t>(value);
  return value > 0 && std::has_single_bit(word) ? std::countr_zero(word) : -1;
}

// Signed words under two's complement: no overflow, ever.
[[nodiscard]] constexpr std::int32_t wrapping_add(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
[[nodiscard]] constexpr std::int32_t wrapping_subtract(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
[[nodiscard]] constexpr std::int32_t wrapping_multiply(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}
[[nodiscard]] constexpr bool sum_wraps(std::int32_t a, std::int32_t b) {
  return std::int64_t{a} + b != wrapping_add(a, b);
}
[[nodiscard]] constexpr std::int32_t wrapping_negate(std::int32_t a) {
  return wrapping_subtract(0, a);
}
// Counts are taken modulo 32.
[[nodiscard]] constexpr std::int32_t shift_left(std::int32_t a, std::int32_t count) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) << (count & 31));
}
[[nodiscard]] constexpr std::int32_t shift_right_logical(std::int32_t a, std::int32_t count) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) >> (count & 31));
}
[[nodiscard]] constexpr std::int32_t shift_right_arithmetic(std::int32_t a, std::int32_t count) {
  return a >> (count & 31);
}

} // namespace velkor
