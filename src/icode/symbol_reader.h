// Symbol records of the icode file.
#pragma once

#include "core/records.h"

namespace velkor {

// Position of the next symbol in the scope being read; the reader's frame saves and restores it.
extern int scope_index;

// Reads the symbol record behind its record byte, and enters and writes it as its class and level
// ask for; with has_value the initial value behind it as well.
void read_symbol(bool has_value);

} // namespace velkor
