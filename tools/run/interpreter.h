// Executes the flat form.
#pragma once

#include "run/machine.h"

namespace velkor::run {

// Starts a nested run of function number with `bytes` bytes of arguments at `arguments`, and
// returns what it yields. Counts executed instructions when the options ask for it. Throws Fault,
// with the function and line added, and ProgramExit.
Register execute_function(Machine &machine, std::int32_t function, Address arguments,
                          std::uint32_t bytes);

} // namespace velkor::run
