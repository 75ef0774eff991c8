#include "icode/output_file.h"

#include "core/failure.h"
#include "core/output.h"

#include <algorithm>

namespace velkor {

Output output;

namespace {

std::size_t room_left() {
  return static_cast<std::size_t>(output.block.data() + block_size - output.cursor);
}

void write_block(std::size_t bytes) {
  if (std::fwrite(output.block.data(), 1, bytes, output.file) != bytes) {
    report("\n!!! Error: the output icode file cannot be written (disk full?) !!!\n");
    abnormal_end();
  }
  output.cursor = output.block.data();
}

} // namespace

void open_output(std::FILE *file) {
  output = Output{};
  output.file = file;
  output.cursor = output.block.data();
}

void write_stamp() {
  put_bytes(file_stamp.data(), file_stamp.size());
}

void reserve(std::size_t bytes) {
  if (bytes == 0) {
    put_u8(RECORD_END_OF_FILE);
    write_block(static_cast<std::size_t>(output.cursor - output.block.data()));
    return;
  }
  if (bytes < room_left()) return;
  if (bytes >= block_size) {
    report("\n!!! Error: a record of %zu bytes is too long for the icode file !!!\n", bytes);
    abnormal_end();
  }
  std::fill_n(output.cursor, room_left(), static_cast<unsigned char>(RECORD_FILLER));
  write_block(block_size);
}

} // namespace velkor
