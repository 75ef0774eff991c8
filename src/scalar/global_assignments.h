// Locals that have one value in the whole function: a constant, or the address of an object.
//
//     a = 5; ... b = a; p = &g;      a, b: 5     p: &g
#pragma once

#include "scalar/copyprop_state.h"

namespace velkor {

// Reads every statement, with the flags of addressed objects (AddressUse::ESCAPING) up to date, and
// settles which locals have such a value; in the debug file they are listed. Clears the versions
// (SYM::key, NODE::nsize) of all names. With track_constants false only that.
void collect_global_ASGs(bool track_constants);

// The value of the name's variable, if it has the type that the name is read as. can_force: also
// where the variable is a temporary that is there to hold the constant.
[[nodiscard]] KnownValue lookup_global_ASG(const NODE *name, bool can_force);

void forget_global_ASGs();

} // namespace velkor
