// A function in the output file: its locals, its blocks as straight code with labels, its end.
#pragma once

#include "core/records.h"

namespace velkor {

// Writes the current function behind its parameters, which went out when they were read.
void write_function();

// One statement, with the comments that the listing asks for.
void write_statement(LIST *statement);

} // namespace velkor
