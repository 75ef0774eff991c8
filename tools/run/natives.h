// The C library that programs call: native routines by name.
//
//   natives.cpp         the table, characters and mathematics
//   natives_stdio.cpp   output, input, formats
//   natives_stdlib.cpp  memory blocks, numbers, sorting, ends of the run
//   natives_string.cpp  strings and bytes
#pragma once

#include "run/memory.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace velkor::run {

struct Machine;

// One call: reads the arguments in order from the argument area, and takes the result.
struct NativeCall {
  Machine &machine;
  Address cursor;         // next argument
  Address end;            // of the argument area
  std::uint32_t word = 0; // result that is no real number
  double real = 0;        // result that is one
  bool is_real = false;

  // The next argument of 4 bytes, of 8 and of 4 bytes as a real number. Fault when none is left.
  [[nodiscard]] std::uint32_t next_word();
  [[nodiscard]] std::int32_t next_int() { return static_cast<std::int32_t>(next_word()); }
  [[nodiscard]] double next_double();
  [[nodiscard]] float next_single();

  void give(std::uint32_t value) { word = value; }
  void give_real(double value) {
    real = value;
    is_real = true;
  }
};

using NativeRoutine = void (*)(NativeCall &call);

struct Native {
  std::string_view name;
  NativeRoutine routine;
};

// The routines of each file, unordered.
[[nodiscard]] std::span<const Native> stdio_natives();
[[nodiscard]] std::span<const Native> stdlib_natives();
[[nodiscard]] std::span<const Native> string_natives();

// Number of the routine of that name in C, -1 if there is none.
[[nodiscard]] int find_native(std::string_view name);
[[nodiscard]] const Native &native(int number);
// True for "_errno", the one object that the library defines.
[[nodiscard]] bool is_native_object(std::string_view name);

// Sets the program's errno, if it has one.
void set_errno(Machine &machine, std::int32_t value);

} // namespace velkor::run
