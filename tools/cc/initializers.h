// Initial values: of static objects as records, of local ones as assignments.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// Fills in the initial value of a static object's record from the expression behind its "=".
// Reports what is not constant. An object of zeros only stays without a value unless it is scalar.
void set_static_value(Unit &unit, file::Symbol &symbol, QualType type, const Expr *value,
                      SourceLocation where);

// The trees that set a local object, in the order in which they are to be evaluated.
[[nodiscard]] std::vector<NodeIndex> initializing_trees(Unit &unit, const SymbolReference &symbol,
                                                        QualType type, const Expr *value,
                                                        SourceLocation where);

// The static object of a compound literal that stands outside functions.
[[nodiscard]] int compound_literal_slot(Unit &unit, const clang::CompoundLiteralExpr *literal);

} // namespace velkor::cc
