// The flat form that functions are compiled to, and that the interpreter executes.
//
// A function's temporaries live in numbered registers of 64 bits, its objects in its frame in the
// target's memory. All functions stand in one array of instructions; jumps are positions in it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velkor::run {

enum class Op : std::uint16_t {
#define INSTRUCTION(identifier, first, second) identifier,
#include "run/instructions.def"
#undef INSTRUCTION
};

// What an executed instruction counts as.
enum class OperationClass : std::uint8_t {
  NONE,
  ADDITIVE,
  MULTIPLICATION,
  DIVISION,
  BITWISE,
  SHIFT,
  FLOATING,
  COMPARISON,
  CONVERSION,
  FRAME_READ,  // of an auto, parameter or a constant place in one
  FRAME_WRITE, // the same
  LOAD,        // all other reads of memory
  STORE,
  COPY, // of a block of bytes
  BRANCH,
  CALL
};
inline constexpr std::size_t operation_class_count = 16;

struct InstructionClasses {
  const char *name;
  OperationClass first;
  OperationClass second;
};
inline constexpr std::array instruction_table = std::to_array<InstructionClasses>({
#define INSTRUCTION(identifier, first, second)                                                     \
  {#identifier, OperationClass::first, OperationClass::second},
#include "run/instructions.def"
#undef INSTRUCTION
});

struct Instruction {
  Op op = Op::STOP;
  std::uint16_t dst = 0;
  std::uint16_t lhs = 0;
  std::uint16_t rhs = 0;
  std::int32_t imm = 0;
  std::int32_t target = 0;
};
static_assert(sizeof(Instruction) == 16);

// How a scalar stands in memory, in the order of the LOAD and STORE groups.
enum class AccessKind : std::uint8_t { I8, U8, I16, U16, WORD, SINGLE, DOUBLE };
inline constexpr std::array<std::uint32_t, 7> access_bytes = {1, 1, 2, 2, 4, 4, 8};

[[nodiscard]] constexpr Op operator+(Op base, int step) {
  return static_cast<Op>(static_cast<int>(base) + step);
}
[[nodiscard]] constexpr Op operator+(Op base, AccessKind kind) {
  return base + static_cast<int>(kind);
}
static_assert(Op::LOAD_FRAME_I8 + AccessKind::DOUBLE == Op::LOAD_FRAME_DOUBLE);
static_assert(Op::STORE_I8 + AccessKind::DOUBLE == Op::STORE_DOUBLE);

// A bit field's place in its first byte, its width in bits, and its sign, in one number.
[[nodiscard]] constexpr std::int32_t pack_field(int shift, int width, bool is_signed) {
  return shift | width << 8 | (is_signed ? 1 << 16 : 0);
}

// A switch's destinations, ascending by value.
struct SwitchTable {
  struct Entry {
    std::int32_t value;
    std::int32_t target;
  };
  std::vector<Entry> entries;
  std::int32_t otherwise = 0; // target of any other value
  bool dense = false;         // entries[i].value == entries[0].value + i
};

struct FunctionCode {
  std::string name;                 // as in C
  std::int32_t entry = -1;          // position of the first instruction
  std::uint32_t frame_bytes = 0;    // of its objects, a multiple of 16
  std::uint32_t outgoing_bytes = 0; // largest argument area that it fills
  std::uint32_t register_count = 0;
  std::uint32_t parameter_bytes = 0; // declared size of its own argument area
  bool variadic = false;
};

struct Code {
  std::vector<Instruction> instructions;
  std::vector<std::int32_t> lines; // of each instruction
  std::vector<FunctionCode> functions;
  std::vector<double> reals;
  std::vector<std::string> texts; // of FAULT, ASSERTION_FAILED and TRACE_OBJECT
  std::vector<SwitchTable> switches;
};

} // namespace velkor::run
