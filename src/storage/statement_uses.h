// How one statement uses the candidates of storage allocation.
#pragma once

#include "core/records.h"
#include "core/sets.h"

namespace velkor {

// Adds the candidates that the statement reads to uses; keeps allocation.reloadable and
// allocation.indexed_vars.
void collect_uses(const NODE *statement, Set uses);

// Does evaluating the tree touch a candidate, or do something that a candidate may be live across?
[[nodiscard]] bool has_candidate_activity(const NODE *tree);

// A value that is compared with 0 or branched on: an assigned candidate goes into tested_vars.
void mark_tested_variable(const NODE *tree);

// An address: the candidates that are its base go into pointer_vars.
void mark_pointer_variables(const NODE *address);

// Is it the value of a parameter, perhaps converted? Returns its NAME, or none.
[[nodiscard]] const NODE *parameter_value(const NODE *tree);

} // namespace velkor
