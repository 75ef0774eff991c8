// The output file: one block in memory that records are written into.
#pragma once

#include "icode/format.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace velkor {

struct Output {
  std::FILE *file = nullptr;
  unsigned char *cursor = nullptr;
  std::array<unsigned char, block_size> block{};
};

extern Output output;

void open_output(std::FILE *file);
// Puts the stamp at the head of the first block.
void write_stamp();
// Makes room for a record of so many bytes. 0 writes the end mark and the block: the file is
// complete.
void reserve(std::size_t bytes);

// Fields of a record; reserve() has made the room.
inline void put_u8(unsigned value) {
  *output.cursor++ = static_cast<unsigned char>(value);
}
inline void put_u16(unsigned value) {
  put_u8(value);
  put_u8(value >> 8);
}
inline void put_s16(int value) {
  put_u16(static_cast<unsigned>(value));
}
inline void put_u32(std::uint32_t value) {
  put_u16(value & 0xFFFF);
  put_u16(value >> 16);
}
inline void put_s32(std::int32_t value) {
  put_u32(static_cast<std::uint32_t>(value));
}
inline void put_bytes(const void *bytes, std::size_t count) {
  if (count != 0) std::memcpy(output.cursor, bytes, count);
  output.cursor += count;
}
// The text and a NUL.
inline void put_string(std::string_view text) {
  put_bytes(text.data(), text.size());
  put_u8(0);
}

} // namespace velkor
