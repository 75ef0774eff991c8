// The input file: one block in memory, a cursor in it, and the fields of a record.
//
// Every routine that takes bytes checks first that the block holds them: a file may hold anything.
#pragma once

#include "core/fun.h"
#include "icode/format.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace velkor {

struct Input {
  std::FILE *file = nullptr;
  const unsigned char *cursor = nullptr;
  const unsigned char *end = nullptr; // behind the last byte of the block
  std::uint32_t block_offset = 0;     // of the block in memory, in the file
  std::uint32_t next_offset = 0;      // of the block behind it
  std::uint32_t record_count = 0;
  std::array<unsigned char, block_size> block{};
};

extern Input input;

// Begins with an open file.
void open_input(std::FILE *file);
// Reads the next block; the end of the file is an error.
void read_block();
// Goes to a place in the file; reads its block unless it is the one in memory.
void seek_input(FilePosition place);
[[nodiscard]] inline FilePosition input_position() {
  return {input.block_offset, static_cast<std::uint32_t>(input.cursor - input.block.data())};
}

// Ends the run with one line: the file, the place in it, and what is wrong there.
[[noreturn, gnu::format(printf, 1, 2)]] void bad_input(const char *format, ...);
[[noreturn]] void record_too_long();

// Makes sure that the block holds so many more bytes.
inline void need(std::size_t bytes) {
  if (static_cast<std::size_t>(input.end - input.cursor) < bytes) [[unlikely]]
    record_too_long();
}

// Fields behind the cursor; need() has been asked for them.
[[nodiscard]] inline std::uint8_t take_u8() {
  return *input.cursor++;
}
[[nodiscard]] inline std::uint16_t take_u16() {
  const unsigned char *p = input.cursor;
  input.cursor += 2;
  return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}
[[nodiscard]] inline std::int16_t take_s16() {
  return static_cast<std::int16_t>(take_u16());
}
[[nodiscard]] inline std::uint32_t take_u32() {
  const unsigned char *p = input.cursor;
  input.cursor += 4;
  return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}
[[nodiscard]] inline std::int32_t take_s32() {
  return static_cast<std::int32_t>(take_u32());
}

// NUL-terminated text; it stands in the block and is valid until the next block is read. Checks by
// itself that the text ends within the block.
[[nodiscard]] std::string_view take_string();

} // namespace velkor
