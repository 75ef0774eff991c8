// Statements and the records that they become.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// Appends the records of one statement to the current function's body.
void translate_statement(Unit &unit, const clang::Stmt *statement);

// Makes the symbols of a block's own declarations; their initial values are set where they stand.
void declare_variables(Unit &unit, const clang::Stmt *block);

// The body of a function: a block whose declarations belong to level 2, already made.
void translate_body(Unit &unit, const clang::CompoundStmt *body);

// Appends one statement record.
void add_statement(Unit &unit, SourceLocation where, NodeIndex tree);

// Takes out the labels that no tree refers to.
void drop_unused_labels(Function &function);

} // namespace velkor::cc
