// The frame of the reader: from records to one function's statements and symbols.
#pragma once

#include "core/fun.h"

namespace velkor {

// Reads the first block of the open input file.
void read_first_block();

// Compares the stamp and steps over it. False, with a message, when the file is no icode file.
[[nodiscard]] bool check_stamp();

// Reads up to and including the next function; what stands outside functions is written at once.
// The statements are left in state.statements, newest first. False at the end of the file.
[[nodiscard]] bool read_function();
// Reads the current function, which read_function has just read and skipped, once more, for the
// output.
void read_skipped_function();

// Puts the cursor where a function begins.
void seek_function(FilePosition place);

} // namespace velkor
