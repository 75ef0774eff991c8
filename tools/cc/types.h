// Clang's types as type words, qualifier words, sizes and alignments of the target.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// The type word of a C type with all its derivations, as symbols hold it. Reports a type that the
// target cannot express at where and yields int for it.
[[nodiscard]] TypeWord type_word(Unit &unit, QualType type, SourceLocation where);

// The same cut to the 16 bits of a node: the six outermost derivations.
[[nodiscard]] std::uint16_t node_type(Unit &unit, QualType type, SourceLocation where);
[[nodiscard]] constexpr std::uint16_t node_word(TypeWord type) {
  return static_cast<std::uint16_t>(type);
}

// The type word of the integer type that a bit field is computed in: int or unsigned.
[[nodiscard]] std::uint16_t bit_field_type(const clang::FieldDecl *field);

// Qualifier word of a symbol. Volatile stands at every level where C has it. Const is taken as
// "never changes" by all who read it, so it is set only for constant_object, and there for the
// object alone (of an array: its elements), never for what pointers point at.
[[nodiscard]] std::uint32_t qualifier_word(QualType type, bool constant_object);

// Bits of an object; 0 for functions, incomplete arrays and void. Reports what 32 bits cannot hold.
[[nodiscard]] std::int32_t size_in_bits(Unit &unit, QualType type, SourceLocation where);

// Bits by which arithmetic on a pointer to this type steps: 8 for void and functions.
[[nodiscard]] std::int32_t step_in_bits(Unit &unit, QualType pointee, SourceLocation where);

// Alignment in bits, at most the target's.
[[nodiscard]] std::int32_t alignment_in_bits(const Unit &unit, QualType type);

// Array dimensions, the outermost first, whatever pointers and functions stand between; 0 for an
// unknown one.
[[nodiscard]] std::vector<std::uint32_t> dimensions(QualType type);

// The struct or union at the bottom of all derivations, or null.
[[nodiscard]] const clang::RecordDecl *record_of(QualType type);

// An integer type of more than 32 bits.
[[nodiscard]] bool is_wide_integer(const Unit &unit, QualType type);

} // namespace velkor::cc
