#include "icode/input.h"

#include "core/failure.h"
#include "core/output.h"

#include <cstdarg>

namespace velkor {

Input input;

void open_input(std::FILE *file) {
  input = Input{};
  input.file = file;
  input.cursor = input.end = input.block.data();
}

void read_block() {
  const std::size_t bytes = std::fread(input.block.data(), 1, block_size, input.file);
  input.block_offset = input.next_offset;
  input.next_offset += static_cast<std::uint32_t>(bytes);
  input.cursor = input.block.data();
  input.end = input.cursor + bytes;
  if (bytes != 0) return;
  if (std::ferror(input.file)) bad_input("the file cannot be read");
  bad_input("the file ends without an end mark");
}

void seek_input(FilePosition place) {
  if (place.block != input.block_offset) {
    if (std::fseek(input.file, static_cast<long>(place.block), SEEK_SET) != 0)
      bad_input("cannot go to file offset %u", place.block);
    input.next_offset = place.block;
    read_block();
  }
  input.cursor = input.block.data() + place.position;
}

void bad_input(const char *format, ...) {
  const FilePosition place = input_position();
  report("\n!!! Error in icode file, offset %u: ", place.block + place.position);
  std::array<char, 400> text{};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  report("%s !!!\n", text.data());
  abnormal_end();
}

void record_too_long() {
  bad_input("a record runs past the end of its block");
}

std::string_view take_string() {
  const auto room = static_cast<std::size_t>(input.end - input.cursor);
  const void *nul = std::memchr(input.cursor, 0, room);
  if (!nul) bad_input("a text runs past the end of its block");
  const auto length =
      static_cast<std::size_t>(static_cast<const unsigned char *>(nul) - input.cursor);
  const std::string_view text(reinterpret_cast<const char *>(input.cursor), length);
  input.cursor += length + 1;
  return text;
}

} // namespace velkor
