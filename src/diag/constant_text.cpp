#include "diag/constant_text.h"

#include <array>
#include <cstdio>

namespace velkor {
namespace {

constexpr std::uint32_t largest_plain_unsigned = 0xFFFFFF;

struct ConstantTextState {
  std::array<std::array<char, 16>, constant_text_slots> text{};
};
ConstantTextState slots;

} // namespace

const char *constant_text(std::int32_t value, TypeWord type, int slot) {
  auto &text = slots.text[static_cast<std::size_t>(slot) % slots.text.size()];
  const auto bits = static_cast<std::uint32_t>(value);
  const char *suffix = is_integer(type) && type_width(type) > 32 ? "L" : "";
  if (!is_integer(type))
    std::snprintf(text.data(), text.size(), "0x%x", bits);
  else if (!is_unsigned_basic(type))
    std::snprintf(text.data(), text.size(), "%d%s", value, suffix);
  else if (bits > largest_plain_unsigned || bits > type_mask(type) / 2)
    std::snprintf(text.data(), text.size(), "0x%xu%s", bits, suffix);
  else
    std::snprintf(text.data(), text.size(), "%uu%s", bits, suffix);
  return text.data();
}

} // namespace velkor
