// Expressions as value trees.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// The value of an expression, with the type word of its C type (struct values included).
[[nodiscard]] NodeIndex value_of(Unit &unit, const Expr *expression);

// An expression of which only the effects count; its tree may have any type.
[[nodiscard]] NodeIndex effects_of(Unit &unit, const Expr *expression);

// Assignments, compound assignments, ++ and --.
[[nodiscard]] NodeIndex assignment_value(Unit &unit, const clang::BinaryOperator *expression);
[[nodiscard]] NodeIndex compound_assignment_value(Unit &unit,
                                                  const clang::CompoundAssignOperator *expression);
[[nodiscard]] NodeIndex step_value(Unit &unit, const clang::UnaryOperator *expression);

// Calls, the built-in functions included, and va_arg.
[[nodiscard]] NodeIndex call_value(Unit &unit, const clang::CallExpr *expression);
[[nodiscard]] NodeIndex va_arg_value(Unit &unit, const clang::VAArgExpr *expression);

// The opcode of a plain arithmetic operator: ADD for + and for +=. ILLOP for others.
[[nodiscard]] Opcode arithmetic_opcode(clang::BinaryOperatorKind kind);

// The number of a scalar expression that clang can fold, as a constant of its type, else no_node.
[[nodiscard]] NodeIndex folded_number(Unit &unit, const Expr *expression);

} // namespace velkor::cc
