// Statements without hidden control flow.
//
// While a function is being read and sequenced its statements stand in one list, newest first: a
// cell's next executes before it. What a statement needs ahead of itself is emitted right behind
// its cell and is sequenced in turn when the walk gets there, so a value that needs control flow is
// simply assigned to a temporary ("S$1" ...) by a statement of its own.
#pragma once

#include "core/records.h"

namespace velkor {

// Rewrites the current function's statement list (newest first) so that && || ? and ,OP inside of
// statements become explicit IF, BRANCH and LABELDEF statements, a CBRANCH and a BRANCH behind it
// one IF, and calls that never return are followed by a loop on itself.
void sequence_statements();

// The parts of it that the inliner uses. Each takes its trees, emits what has to precede, and
// yields the tree that the cell is to hold.
[[nodiscard]] NODE *sequence_statement(NODE *tree, LIST *cell);
// true_target and false_target are LABELREFs.
[[nodiscard]] NODE *sequence_branch(NODE *test, NODE *true_target, NODE *false_target, LIST *cell);
// A tree of the value, free of control flow; parent is none for a statement of its own.
[[nodiscard]] NODE *sequence_value(NODE *tree, NODE *parent, LIST *cell);

// What becomes of a call's value.
enum class CallUse : std::uint8_t { TEST = 0, VALUE = 1, NOTHING = 2 };

// Offers a call, whose operands are sequenced, to the inliner; yields the tree that replaces it.
// A call in a test goes to one of its two targets (LABELREFs, taken); other uses have none.
[[nodiscard]] NODE *offer_call(CallUse use, NODE *call, LIST *cell, NODE *true_target,
                               NODE *false_target);

} // namespace velkor
