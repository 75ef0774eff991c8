// What the parts of sequencing share: emitting, labels, temporaries.
#pragma once

#include "core/records.h"

namespace velkor::sequencing {

// Places the tree ahead of the cell's statement in execution, behind what has been emitted for it
// so far, with the cell's line numbers. Drops what has no effect; takes the tree.
void emit(NODE *tree, LIST *cell);
void emit_label(LABEL *label, LIST *cell);
void emit_branch(const LABEL *label, LIST *cell);
// IF test, to yes, else to no; takes the test.
void emit_if(NODE *test, const LABEL *yes, const LABEL *no, LIST *cell);

[[nodiscard]] LABEL *new_label();

// A temporary of the type. size (bits) and tag (or none) are those of a struct or union.
[[nodiscard]] SYM *new_temporary(TypeWord type, std::int32_t size, SYM *tag);

// symbol = K, with K as the symbol's type has it, simplified.
[[nodiscard]] NODE *assign_constant(SYM *symbol, std::int32_t value, TypeWord type);

// An assignment, of any opcode, or a RETURN; yields the tree that the cell is to hold.
[[nodiscard]] NODE *sequence_assignment(NODE *node, LIST *cell);

// An assignment whose right side sequence_assignment takes apart?
[[nodiscard]] bool is_sequenced_assignment(Opcode op);

} // namespace velkor::sequencing
