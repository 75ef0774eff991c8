// Type words and qualifier words.
//
// A type word's low four bits are the basic type. Above them stands a chain of two-bit derivations,
// the outermost in bits 4 and 5, the next in bits 6 and 7, and so on: 16 bits in a node, 32 in a
// symbol. A qualifier word has the same shape: const (1) and volatile (2) of the basic type in its
// low bits, those of the outermost derivation in bits 4 and 5, and so on.
#pragma once

#include <array>
#include <cstdint>

namespace velkor {

using TypeWord = std::uint32_t;

enum BasicType : std::uint8_t {
#define BASIC_TYPE(number, identifier, ...) identifier = number,
#include "core/basic_types.def"
#undef BASIC_TYPE
};

// One derivation, as it stands in two bits of a type word.
enum Derivation : std::uint8_t { POINTER_TO = 1, FUNCTION_RETURNING = 2, ARRAY_OF = 3 };

inline constexpr TypeWord basic_type_mask = 15;
inline constexpr TypeWord first_unsigned_type =
    UNSIGNED_CHAR;                          // this one and all above are unsigned
inline constexpr int pointer_width = 32;    // bits
inline constexpr int max_alignment = 32;    // bits
inline constexpr int max_storage_size = 64; // bits, of a basic type

enum class TypeClass : std::uint8_t { NEITHER, INTEGER, FLOATING };

struct BasicTypeProperties {
  const char *name;
  std::int32_t width;     // bits
  std::int32_t alignment; // bits
  TypeClass type_class;
  BasicType internal;
};

inline constexpr std::array<BasicTypeProperties, 16> basic_type_table = {{
#define BASIC_TYPE(number, identifier, name, width, alignment, type_class, internal)               \
  {name, width, alignment, TypeClass::type_class, internal},
#include "core/basic_types.def"
#undef BASIC_TYPE
}};

// The tables by basic type. Each looks at the low four bits of the word only.
[[nodiscard]] constexpr const BasicTypeProperties &basic_type(TypeWord type) {
  return basic_type_table[type & basic_type_mask];
}
[[nodiscard]] constexpr bool type_is_integer(TypeWord type) {
  return basic_type(type).type_class == TypeClass::INTEGER;
}
[[nodiscard]] constexpr bool type_is_float(TypeWord type) {
  return basic_type(type).type_class == TypeClass::FLOATING;
}
[[nodiscard]] constexpr bool type_is_scalar(TypeWord type) {
  return basic_type(type).type_class != TypeClass::NEITHER;
}
[[nodiscard]] constexpr std::int32_t type_width(TypeWord type) {
  return basic_type(type).width;
}
[[nodiscard]] constexpr std::int32_t type_align(TypeWord type) {
  return basic_type(type).alignment;
}
// Storage size in bits: the width rounded up to a multiple of the alignment.
[[nodiscard]] constexpr std::int32_t type_size(TypeWord type) {
  const std::int32_t width = type_width(type);
  const std::int32_t alignment = type_align(type);
  return width <= 0 ? 0 : (width + alignment - 1) / alignment * alignment;
}
// The bits that a value can have: all ones for a width of none or of 32 and more.
[[nodiscard]] constexpr std::uint32_t type_mask(TypeWord type) {
  const std::int32_t width = type_width(type);
  return width <= 0 || width >= 32 ? ~0u : (1u << width) - 1;
}

// Questions about whole type words.
[[nodiscard]] constexpr bool is_derived(TypeWord type) {
  return type > basic_type_mask;
}
[[nodiscard]] constexpr Derivation outermost_derivation(TypeWord type) {
  return static_cast<Derivation>((type >> 4) & 3);
}
[[nodiscard]] constexpr bool is_pointer(TypeWord type) {
  return outermost_derivation(type) == POINTER_TO;
}
[[nodiscard]] constexpr bool is_function(TypeWord type) {
  return outermost_derivation(type) == FUNCTION_RETURNING;
}
[[nodiscard]] constexpr bool is_array(TypeWord type) {
  return outermost_derivation(type) == ARRAY_OF;
}
[[nodiscard]] constexpr bool is_integer(TypeWord type) {
  return !is_derived(type) && type_is_integer(type);
}
[[nodiscard]] constexpr bool is_floating(TypeWord type) {
  return !is_derived(type) && type_is_float(type);
}
// A pointer, or an underived integer or floating type.
[[nodiscard]] constexpr bool is_scalar(TypeWord type) {
  return is_pointer(type) || (!is_derived(type) && type_is_scalar(type));
}
[[nodiscard]] constexpr bool is_struct_or_union(TypeWord type) {
  return type == STRUCT || type == UNION;
}
// Basic type struct, union or enum, however derived: such a symbol has a tag.
[[nodiscard]] constexpr bool has_tag(TypeWord type) {
  const TypeWord basic = type & basic_type_mask;
  return basic == STRUCT || basic == UNION || basic == ENUM;
}
[[nodiscard]] constexpr bool is_unsigned_basic(TypeWord type) {
  return (type & basic_type_mask) >= first_unsigned_type;
}

// Building and taking apart. Qualifier words move with the same two routines.
[[nodiscard]] constexpr TypeWord derive(TypeWord type, Derivation derivation) {
  return ((type & ~basic_type_mask) << 2) | (static_cast<TypeWord>(derivation) << 4) |
         (type & basic_type_mask);
}
[[nodiscard]] constexpr TypeWord pointer_to(TypeWord type) {
  return derive(type, POINTER_TO);
}
// What a pointer points at, a function returns, an array holds.
[[nodiscard]] constexpr TypeWord underived(TypeWord type) {
  return ((type >> 2) & ~basic_type_mask) | (type & basic_type_mask);
}
// The word with its basic type replaced by the one that stands for it inside the optimizer.
[[nodiscard]] constexpr TypeWord internal_type(TypeWord type) {
  return (type & ~basic_type_mask) | basic_type(type).internal;
}

// Width and mask of a value of the type: a derived type is a 32-bit word.
[[nodiscard]] constexpr std::int32_t value_width(TypeWord type) {
  return is_derived(type) ? pointer_width : type_width(type);
}
[[nodiscard]] constexpr std::uint32_t value_mask(TypeWord type) {
  return is_derived(type) ? ~0u : type_mask(type);
}
[[nodiscard]] constexpr bool is_signed_integer(TypeWord type) {
  return is_integer(type) && type < first_unsigned_type;
}
[[nodiscard]] constexpr bool is_unsigned_integer(TypeWord type) {
  return is_integer(type) && type >= first_unsigned_type;
}

// The qualifiers of the value that a node yields, from its type and the low byte of its qualifiers.
[[nodiscard]] constexpr bool is_const_value(TypeWord type, std::uint32_t qual) {
  return is_derived(type) ? (qual & 48) == 16 : (qual & 3) == 1;
}
[[nodiscard]] constexpr bool is_volatile_value(TypeWord type, std::uint32_t qual) {
  return is_derived(type) ? (qual & 32) != 0 : (qual & 2) != 0;
}

static_assert(pointer_to(CHAR) == 0x12 && pointer_to(pointer_to(CHAR)) == 0x52);
static_assert(underived(0x94) == 0x24 && underived(0x14) == INT);
static_assert(type_size(DOUBLE) == 64 && type_mask(SHORT) == 0xFFFF);

} // namespace velkor
