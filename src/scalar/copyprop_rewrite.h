// One statement of copyprop's walk.
#pragma once

#include "core/records.h"

namespace velkor {

// Puts known values into the statement, and notes what it changes. Takes the statement, leaves what
// stands in its place; line numbers in cp. Sets cp.cfg_changed when it is a test of a constant.
void rewrite_statement(NODE *&statement);

} // namespace velkor
