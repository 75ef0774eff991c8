// Storage classes of symbols.
#pragma once

#include <array>
#include <cstdint>

namespace velkor {

enum StorageClass : std::uint8_t {
  C_NONE = 0,
#define STORAGE_CLASS(number, identifier, ...) identifier = number,
#include "core/storage_classes.def"
#undef STORAGE_CLASS
};

struct StorageClassProperties {
  const char *name = ""; // empty for a number that is no storage class
  const char *text = "";
  bool keeps_offset = false;
};

inline constexpr std::array<StorageClassProperties, 256> storage_class_table = [] {
  std::array<StorageClassProperties, 256> table{};
#define STORAGE_CLASS(number, identifier, name, text, keeps_offset)                                \
  table[number] = {name, text, keeps_offset != 0};
#include "core/storage_classes.def"
#undef STORAGE_CLASS
  return table;
}();

// Does an object of the class live in the frame of one activation?
[[nodiscard]] constexpr bool is_frame_class(StorageClass sclass) {
  return sclass == C_AUTO || sclass == C_REG || sclass == C_VREG || sclass == C_ARG ||
         sclass == C_REGPARM;
}

} // namespace velkor
