// Floating constants as text. The optimizer never holds one as a binary number in a tree.
#pragma once

#include <string_view>

namespace velkor {

// The canonical spelling of a decimal text: a sign, digits with one "." that has a digit on each
// side, no superfluous zeros, an exponent only where the number is above 99999 or below 0.001:
// "+1.0", "-0.05", "+1.23456e5". Zero is "+0.0". Allocated in the local zone, or in the global one.
[[nodiscard]] char *canon_float_text(std::string_view text, bool local);

// Canonical texts of 0, 1, -1 and 2 in the global zone, made once a run.
struct FloatConstants {
  const char *float_zero = nullptr;
  const char *float_one = nullptr;
  const char *float_minus_one = nullptr;
  const char *float_two = nullptr;
};
extern FloatConstants float_constants;
void init_float_constants();

} // namespace velkor
