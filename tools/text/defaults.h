// What the text form leaves out: values that follow from what else is written.
//
// Printing leaves a field out when it has the value that is told here, and reading fills that value
// in, so each rule only has to be total and to look at nothing that either side lacks.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "core/types.h"
#include "file/icode_file.h"
#include "text/scopes.h"

namespace velkor::text {

// Type of a node of opcode op from its operands (null: not there). Nothing for an opcode whose type
// must be written, or when the operands do not tell it.
[[nodiscard]] std::optional<std::uint16_t> default_type(std::uint8_t op, const file::Node *left,
                                                        const file::Node *right);

// Type of a NAME that stands for the symbol; nothing without a symbol, or when a node's type word
// cannot hold it.
[[nodiscard]] std::optional<std::uint16_t> default_name_type(const VisibleSymbol *symbol);

// Qualifier byte of a NAME that stands for the symbol (null: 0).
[[nodiscard]] std::uint8_t default_name_qualifier(const VisibleSymbol *symbol);

// Size in bits of an access of that type: 0 for what has no size of its own.
[[nodiscard]] std::int32_t default_access_size(TypeWord type);

// Size and alignment in bits of a symbol of that type. tag: of its basic type, or null.
[[nodiscard]] std::int32_t default_symbol_size(TypeWord type, std::span<const std::uint32_t> dims,
                                               const VisibleSymbol *tag);
[[nodiscard]] std::int32_t default_symbol_align(TypeWord type, const VisibleSymbol *tag);

} // namespace velkor::text
