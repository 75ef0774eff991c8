// The order of the finished file.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// Puts the records of all slots and functions into unit.file and turns slot numbers into positions:
// tags, inner ones first; declarations; variables, those that initial values refer to first;
// functions. Reports what exceeds the format's limits.
void assemble(Unit &unit, const std::string &source_name);

} // namespace velkor::cc
