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
// Room for a record, as reserve(); returns where it begins.
[[nodiscard]] inline unsigned char *begin_record(std::size_t bytes) {
  const unsigned char *end = output.block.data() + block_size;
  if (bytes >= static_cast<std::size_t>(end - output.cursor)) [[unlikely]]
    reserve(bytes);
  return output.cursor;
}

// Fields of a record; reserve() has made the room. The cursor is kept in a local by the caller: a
// global one would be loaded and stored again for every byte.
[[nodiscard]] inline unsigned char *store_u8(unsigned char *at, unsigned value) {
  *at = static_cast<unsigned char>(value);
  return at + 1;
}
[[nodiscard]] inline unsigned char *store_u16(unsigned char *at, unsigned value) {
  at[0] = static_cast<unsigned char>(value);
  at[1] = static_cast<unsigned char>(value >> 8);
  return at + 2;
}
[[nodiscard]] inline unsigned char *store_u32(unsigned char *at, std::uint32_t value) {
  at[0] = static_cast<unsigned char>(value);
  at[1] = static_cast<unsigned char>(value >> 8);
  at[2] = static_cast<unsigned char>(value >> 16);
  at[3] = static_cast<unsigned char>(value >> 24);
  return at + 4;
}
[[nodiscard]] inline unsigned char *store_bytes(unsigned char *at, const void *bytes,
                                                std::size_t count) {
  if (count != 0) std::memcpy(at, bytes, count);
  return at + count;
}

// The same at the output's own cursor, for records that are few.
inline void put_u8(unsigned value) {
  output.cursor = store_u8(output.cursor, value);
}
inline void put_u16(unsigned value) {
  output.cursor = store_u16(output.cursor, value);
}
inline void put_s16(int value) {
  put_u16(static_cast<unsigned>(value));
}
inline void put_u32(std::uint32_t value) {
  output.cursor = store_u32(output.cursor, value);
}
inline void put_s32(std::int32_t value) {
  put_u32(static_cast<std::uint32_t>(value));
}
inline void put_bytes(const void *bytes, std::size_t count) {
  output.cursor = store_bytes(output.cursor, bytes, count);
}
// The text and a NUL.
inline void put_string(std::string_view text) {
  put_bytes(text.data(), text.size());
  put_u8(0);
}

} // namespace velkor
