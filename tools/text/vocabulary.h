// Words of whole lines, shared by the printer and the parser of the text form.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "file/icode_file.h"
#include "text/scopes.h"

namespace velkor::text {

// Words of the scope markers, by kind.
inline constexpr std::array<std::string_view, 7> marker_words = {
    "",          "begin_function", "end_function", "begin_block",
    "end_block", "end_parameters", "end_locals"};

// Bits of a symbol's scqual that have a word; others are written by number.
struct SymbolFlag {
  std::uint16_t bit;
  std::string_view word;
};
inline constexpr std::array<SymbolFlag, 5> symbol_flags = {{{4, "inline"},
                                                            {8, "suppressed"},
                                                            {16, "control_register"},
                                                            {32, "interrupt"},
                                                            {128, "register_variable"}}};

// The qualifier word that a lone `const` (1) or `volatile` (2) means: that of the outermost
// derivation, or of the basic type when there is none.
[[nodiscard]] constexpr std::uint32_t outer_qualifier(TypeWord type, std::uint32_t bits) {
  return is_derived(type) ? bits << 4 : bits;
}

struct TagReference {
  Reference place;
  std::string_view name;
  friend bool operator==(const TagReference &, const TagReference &) = default;
};

// The tag of a symbol that is written without one: a tag is its own, other symbols have none.
// place: where the symbol itself is about to stand.
[[nodiscard]] TagReference default_tag(const file::Symbol &symbol, Reference place);

// The visible symbol that a symbol's tag fields refer to, for its size and alignment; null when it
// has none.
[[nodiscard]] const VisibleSymbol *tag_of(const file::Symbol &symbol, const Scopes &scopes);

} // namespace velkor::text
