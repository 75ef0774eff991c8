// The C headers that the compiler brings with it, as texts in the program.
#pragma once

#include <span>

namespace velkor::cc {

struct EmbeddedHeader {
  const char *name; // as in #include
  const char *text;
};

[[nodiscard]] std::span<const EmbeddedHeader> embedded_headers();

} // namespace velkor::cc
