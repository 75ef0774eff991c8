// Making nodes. All routines append to unit.file and return the new node's position.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

[[nodiscard]] NodeIndex make_unary(Unit &unit, Opcode op, TypeWord type, NodeIndex operand);
[[nodiscard]] NodeIndex make_binary(Unit &unit, Opcode op, TypeWord type, NodeIndex left,
                                    NodeIndex right);

// An integer constant; value is cut and extended to the width of type, which may be a pointer's.
[[nodiscard]] NodeIndex make_integer(Unit &unit, TypeWord type, std::int64_t value);

// A floating constant of type FLOAT or DOUBLE in the shortest text that reads back as the same
// value. Reports infinities and NaNs, which constants cannot hold, at where.
[[nodiscard]] NodeIndex make_floating(Unit &unit, TypeWord type, double value,
                                      SourceLocation where);

// Text of bytes as a pointer to char; a NUL must be among them.
[[nodiscard]] NodeIndex make_text(Unit &unit, std::string bytes);

[[nodiscard]] NodeIndex make_name(Unit &unit, const SymbolReference &symbol);

// A member's name, for the right side of . and ->.
[[nodiscard]] NodeIndex make_member_name(Unit &unit, const clang::FieldDecl *field);

// Zero of a scalar type, a null pointer included.
[[nodiscard]] NodeIndex make_zero(Unit &unit, TypeWord type);

[[nodiscard]] std::uint16_t type_of(const Unit &unit, NodeIndex node);

// The value of an arithmetic or pointer node as an arithmetic type; the node itself if it has it.
[[nodiscard]] NodeIndex convert_arithmetic(Unit &unit, NodeIndex node, TypeWord type);

// The value of an integer or pointer node as a pointer; the node itself if it has that type.
[[nodiscard]] NodeIndex convert_pointer(Unit &unit, NodeIndex node, TypeWord type);

// The value as _Bool: unsigned char 0 or 1.
[[nodiscard]] NodeIndex convert_to_bool(Unit &unit, NodeIndex node);

// pointer + integer or pointer - integer, in steps of step_bits. integer is any integer node.
[[nodiscard]] NodeIndex make_pointer_step(Unit &unit, Opcode op, NodeIndex pointer,
                                          NodeIndex integer, std::int32_t step_bits);

// left, then right, as one value of right's type. no_node on the left yields right.
[[nodiscard]] NodeIndex make_sequence(Unit &unit, NodeIndex left, NodeIndex right);

} // namespace velkor::cc
