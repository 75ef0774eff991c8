// Statements without hidden control flow.
#pragma once

#include "core/records.h"

namespace velkor {

// Rewrites the current function's statement list (newest first) so that && || ? and ,OP inside of
// statements become explicit IF, BRANCH and LABELDEF statements, a CBRANCH and a BRANCH behind it
// one IF, and calls that never return are followed by a loop on itself.
void sequence_statements();

// The parts of it that the inliner uses; each yields the tree that the cell is to hold.
[[nodiscard]] NODE *sequence_statement(NODE *tree, LIST *cell);
[[nodiscard]] NODE *sequence_value(NODE *tree, NODE *parent, LIST *cell);
[[nodiscard]] NODE *sequence_branch(NODE *test, NODE *true_target, NODE *false_target, LIST *cell);

} // namespace velkor
