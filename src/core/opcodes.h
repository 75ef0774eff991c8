// Opcodes of expression and statement nodes, and the tables of their properties.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace velkor {

// Identifiers with the numbers of the icode file. Unscoped: trees are written with them everywhere.
enum Opcode : std::uint8_t {
#define OPCODE(number, identifier, ...) identifier = number,
#include "core/opcodes.def"
#undef OPCODE
};

// What evaluating a node does besides yielding a value.
enum Effect : std::uint8_t { PURE = 0, ASSIGNS = 1, TRANSFERS = 2, OTHER = 255 };

// The fields of a node's record in the icode file, behind the opcode byte and the 16-bit type word.
enum class RecordFields : std::uint8_t {
  NONE,
  VALUE,          // value, 32 bits
  QUAL_SYMBOL,    // qualifier, 8 bits; level and index, 16 bits each
  BYTES,          // length, 16 bits; that many bytes
  TEXT,           // NUL-terminated text
  QUAL_SIZE,      // qualifier, 8 bits; size in bits, 32 bits
  SWITCH_SUMMARY, // number, 16 bits; value, 32 bits
  QUAL,           // qualifier, 8 bits
  SYMBOL,         // level and index, 16 bits each
  SYMBOL_QUAL,    // level and index, 16 bits each; qualifier, 8 bits
  SIZE,           // size in bits, 32 bits
  NO_TYPE         // not even a type word
};

struct OpcodeProperties {
  const char *identifier = "";
  const char *name = "";
  const char *text = "";
  std::uint8_t arity = 0;
  Effect effect = OTHER;
  Opcode swapped = ILLOP;
  Opcode negated = ILLOP;
  bool boolean = false;
  Opcode base = ILLOP;
  std::uint8_t precedence = 0;
  RecordFields fields = RecordFields::NONE;
  bool listed = false; // false for a number that no opcode has
};

inline constexpr std::size_t opcode_limit = 160;

// The one table. Numbers that no opcode has keep the defaults: no name, arity 0, effect OTHER.
inline constexpr std::array<OpcodeProperties, 256> opcode_table = [] {
  std::array<OpcodeProperties, 256> table{};
#define OPCODE(number, identifier, name, arity, effect, swapped, negated, boolean, base,           \
               precedence, text, fields)                                                           \
  table[number] = {#identifier,                                                                    \
                   name,                                                                           \
                   text,                                                                           \
                   arity,                                                                          \
                   effect,                                                                         \
                   swapped,                                                                        \
                   negated,                                                                        \
                   boolean != 0,                                                                   \
                   base,                                                                           \
                   precedence,                                                                     \
                   RecordFields::fields,                                                           \
                   true};
#include "core/opcodes.def"
#undef OPCODE
  return table;
}();

// The property tables by their customary names: op_arity(op) and so on.
[[nodiscard]] constexpr int op_arity(std::uint8_t op) {
  return opcode_table[op].arity;
}
[[nodiscard]] constexpr Effect op_effect(std::uint8_t op) {
  return opcode_table[op].effect;
}
[[nodiscard]] constexpr Opcode op_swapped(std::uint8_t op) {
  return opcode_table[op].swapped;
}
[[nodiscard]] constexpr Opcode op_negated(std::uint8_t op) {
  return opcode_table[op].negated;
}
[[nodiscard]] constexpr bool op_boolean(std::uint8_t op) {
  return opcode_table[op].boolean;
}
[[nodiscard]] constexpr Opcode asgop_base(std::uint8_t op) {
  return opcode_table[op].base;
}
// +=, -= and so on; not ++ and --, which take the place's old value.
[[nodiscard]] constexpr bool is_compound_assignment(std::uint8_t op) {
  return asgop_base(op) != ILLOP;
}
// ++ and --, before or behind.
[[nodiscard]] constexpr bool is_increment_or_decrement(std::uint8_t op) {
  return op == INCREMENT || op == DECREMENT;
}
// x = y and x op= y.
[[nodiscard]] constexpr bool is_plain_or_compound_assignment(std::uint8_t op) {
  return op == ASSIGN || is_compound_assignment(op);
}
// A call of a function of the program, in any of its forms.
[[nodiscard]] constexpr bool is_call(std::uint8_t op) {
  return op == CALL || op == UCALL || op == STCALL || op == USTCALL || op == XCALL || op == UXCALL;
}
[[nodiscard]] constexpr int op_precedence(std::uint8_t op) {
  return opcode_table[op].precedence;
}
[[nodiscard]] constexpr bool is_commutative(std::uint8_t op) {
  return op_swapped(op) == op;
}

static_assert(op_swapped(op_negated(LT)) == LE && op_negated(op_negated(UGT)) == UGT);
static_assert(asgop_base(ASG_SHIFT_RIGHT) == SHIFT_RIGHT && !is_compound_assignment(INCREMENT));
static_assert(is_commutative(BIT_XOR));
static_assert(opcode_table[LIVEINFO].listed && LIVEINFO + 1 == opcode_limit);

} // namespace velkor
