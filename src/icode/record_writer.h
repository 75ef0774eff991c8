// Records of the output file that are not trees. In debug runs each is shown in the debug file too.
// None of them writes anything while state.skip_function is set, except for a pragma at file level.
#pragma once

#include "core/records.h"

#include <span>
#include <string_view>

namespace velkor {

// Stores index in the symbol and writes its record.
void write_symbol(SYM *sym, int index, std::uint8_t record_byte);
// The same for a static local; an automatic variable that became static gets a name of its own.
void write_static_local(SYM *sym, int index, std::uint8_t record_byte);
// ENDINIT with the symbol's size and dimensions.
void write_end_of_initial_value(const SYM *sym);

void write_marker(std::uint8_t kind, int value);
void write_source_file(std::string_view name);
void write_text(std::uint8_t record_byte, std::string_view text, int line, int line2);
// strings: the count texts one behind the other, each with its NUL. A pragma at file level passes
// even while a function is skipped.
void write_pragma(int kind, int count, std::string_view strings, bool at_file_level);
void write_label(const LABEL *label);
void write_attribute(char letter);
void write_live_registers(std::uint32_t low, std::uint32_t high);

// The debug image of a pragma.
void show_pragma(int kind, int count, std::string_view strings);

} // namespace velkor
