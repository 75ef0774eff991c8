// Labels, branches and switch statements.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// A label of the current function that stands nowhere yet.
[[nodiscard]] int new_label(Unit &unit, SourceLocation where);

// Puts the label at the end of what has been translated.
void place_label(Unit &unit, int label);

// A reference to a label, for the trees that transfer control.
[[nodiscard]] NodeIndex make_label_reference(Unit &unit, int label);

void add_branch(Unit &unit, SourceLocation where, int label);
void add_branch_if_false(Unit &unit, const Expr *condition, int label);

void translate_switch(Unit &unit, const clang::SwitchStmt *statement);

} // namespace velkor::cc
