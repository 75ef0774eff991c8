// Is a file one that a code generator can take as it stands?
#pragma once

#include <string>
#include <vector>

#include "file/icode_file.h"

namespace velkor::file {

// Looks at a finished file, as it leaves the optimizer, and returns what is wrong with it: one line
// for each fault with its function and source line, at most fault_limit of them; none for a sound
// file. Asked of it:
//  - Records nest: a function's symbol, its begin, parameters, locals, statements, end; statements
//    and labels stand inside functions only.
//  - Symbols are declared before they are used, in a scope that is open; their classes may stand
//    where they stand; no two virtual registers of a function have one number.
//  - Labels are defined once in their function, and every jump has its label.
//  - Branches and switches have their shape, a switch tells all cases and no value twice, and
//  control
//    cannot run off a function's end.
//  - No opcode that only passes know.
//  - Types balance: both operands of an operator have one type, addresses point at what is
//  accessed,
//    integers in sums of addresses are scaled.
[[nodiscard]] std::vector<std::string> validate(const IcodeFile &file);

inline constexpr std::size_t fault_limit = 20;

} // namespace velkor::file
