// Integer constants as a person writes them.
#pragma once

#include "core/types.h"

#include <cstdint>

namespace velkor {

inline constexpr int constant_text_slots = 4;

// value as a constant of the type: signed types in decimal; unsigned types with a "u" behind them,
// in hexadecimal where they are large; pointers and other types that are not integer in
// hexadecimal. slot (0 to constant_text_slots - 1) names the static buffer that holds the result,
// so that one message can show several constants; it is valid until the slot's next use.
[[nodiscard]] const char *constant_text(std::int32_t value, TypeWord type, int slot = 0);

} // namespace velkor
