// Compiles an icode file's functions to the flat form. compile_program is what others call; the
// rest is shared by the compiler's own files:
//
//   compile_types.cpp       types, constants, conversions
//   compile_values.cpp      scalar values: arithmetic, assignments, all other operators
//   compile_conditions.cpp  relations, conditions that decide a jump
//   compile_places.cpp      where objects are: lvalues, loads, stores, blocks of bytes
//   compile_calls.cpp       calls and their arguments
//   compile_statements.cpp  statements, functions, initial values
#pragma once

#include "core/opcodes.h"
#include "core/types.h"
#include "file/icode_file.h"
#include "run/code.h"
#include "run/loader.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velkor::run {

// A scalar while it is compiled. A register belongs to one Value only, so that conversions may be
// done in place.
struct Value {
  enum Kind : std::uint8_t { NOTHING, REGISTER, CONSTANT };
  Kind kind = NOTHING;
  std::uint16_t reg = 0;
  std::uint32_t word = 0; // of CONSTANT
  TypeWord type = VOID;
};

// Where an object is.
struct Place {
  enum Mode : std::uint8_t {
    FRAME,  // frame pointer + offset, inside symbol's object if inside() says so
    FIXED,  // address offset
    POINTER // register + offset
  };
  Mode mode = POINTER;
  std::uint16_t reg = 0;
  std::int32_t offset = 0;
  std::int32_t object_begin = 0; // with FRAME: offsets between which the object lies
  std::int32_t object_end = 0;
  const SymbolInfo *symbol = nullptr; // the object, where it is known
  std::uint32_t bytes = 0;            // of a struct or union
  bool is_field = false;
  std::uint8_t field_shift = 0; // bits, in the first byte
  std::uint8_t field_width = 0; // bits
};

struct Compiler {
  Program &program;
  Memory &memory;
  Code &code;
  bool trace_volatile = false;
  // Of the current function.
  const FunctionSource *source = nullptr; // null: the routine that sets initial values
  FunctionCode *function = nullptr;
  std::uint32_t frame_bytes = 0;
  std::int32_t line = 0;
  std::uint32_t next_register = 0;
  std::vector<std::int32_t> label_positions = {};   // by internal label; -1: not yet bound
  std::map<std::int32_t, std::int32_t> labels = {}; // the file's label to the internal one
  std::vector<std::int32_t> jumps = {}; // instructions whose target is an internal label
  std::size_t first_switch = 0;

  [[nodiscard]] const file::Node &node(file::NodeIndex index) const {
    return program.file->nodes[index];
  }
};

using Label = std::int32_t;

// Compiles all functions (numbered as in program) and, behind them, the routine that stores the
// initial values that are not plain constants; plain constants are written to memory at once.
// Throws Fault where an initial value does not fit its object. A tree that makes no sense becomes a
// FAULT instruction, reported when it is executed.
void compile_program(Program &program, Memory &memory, Code &code, bool trace_volatile);

// Instructions and registers.
std::int32_t emit(Compiler &c, Instruction instruction);
[[nodiscard]] std::uint16_t new_register(Compiler &c);
[[nodiscard]] Label new_label(Compiler &c);
void bind(Compiler &c, Label label);
void jump(Compiler &c, Op op, Label label, std::uint16_t lhs = 0, std::uint16_t rhs = 0,
          std::int32_t imm = 0);
[[nodiscard]] std::int32_t add_text(Compiler &c, std::string text);
// Emits a FAULT with that text; the value is a zero of that type, so that compiling goes on.
Value emit_fault(Compiler &c, const std::string &text, TypeWord type = INT);

// Types.
[[nodiscard]] bool is_real(TypeWord type);
[[nodiscard]] bool is_single(TypeWord type);
[[nodiscard]] bool is_unsigned_word(TypeWord type); // pointers too
[[nodiscard]] bool has_access(TypeWord type);       // true for what a register can hold
[[nodiscard]] AccessKind access_kind(TypeWord type);
[[nodiscard]] TypeWord promoted(TypeWord type);
[[nodiscard]] TypeWord balanced(TypeWord a, TypeWord b);
// A node's type with the translation of the types that do not occur inside programs.
[[nodiscard]] TypeWord node_type(const file::Node &node);

// Values.
[[nodiscard]] Value evaluate(Compiler &c, file::NodeIndex index);
void evaluate_effect(Compiler &c, file::NodeIndex index);
[[nodiscard]] Value convert(Compiler &c, Value value, TypeWord type);
[[nodiscard]] std::uint16_t in_register(Compiler &c, const Value &value);
[[nodiscard]] Value constant(std::uint32_t word, TypeWord type);
// A real constant in a register of its own.
[[nodiscard]] Value real_constant(Compiler &c, double number, TypeWord type);
// Wraps the word in the register to a narrow type.
void wrap(Compiler &c, std::uint16_t reg, TypeWord type);
// The relation's truth as an int; the node must be a relation.
[[nodiscard]] Value evaluate_relation(Compiler &c, const file::Node &node);
// Jumps to label if the condition's truth is `when`, else goes on.
void branch(Compiler &c, file::NodeIndex condition, Label label, bool when);
// The word that the tree always yields, if it is plain enough.
[[nodiscard]] bool constant_word(const Compiler &c, file::NodeIndex index, std::uint32_t &word);
// The factor of PMCONV and PVCONV in bytes: their right operand is in bits.
[[nodiscard]] std::uint32_t scale_bytes(std::uint32_t bits);
// Value of LCON's decimal text.
[[nodiscard]] std::uint32_t parse_long_constant(const std::string &text);
[[nodiscard]] bool parse_real(const std::string &text, double &number);
[[nodiscard]] std::uint32_t wrapped(std::uint32_t word, TypeWord type);

// Places.
[[nodiscard]] Place place_of(Compiler &c, file::NodeIndex index);   // of an lvalue
[[nodiscard]] Place address_of(Compiler &c, file::NodeIndex index); // that a pointer points at
[[nodiscard]] Place block_of(Compiler &c, file::NodeIndex index);   // of a struct value
[[nodiscard]] Place place_of_symbol(Compiler &c, const SymbolInfo &symbol);
[[nodiscard]] Place new_block(Compiler &c, std::uint32_t bytes); // a temporary in the frame
[[nodiscard]] std::uint16_t address_register(Compiler &c, const Place &place);
// keep_place: do not use the place's register for the value.
[[nodiscard]] Value load(Compiler &c, const Place &place, TypeWord type, bool keep_place = false);
void store(Compiler &c, const Place &place, const Value &value);
// The value that the place holds after value was stored there.
[[nodiscard]] Value as_stored(Compiler &c, const Place &place, Value value);
[[nodiscard]] Place assign_block(Compiler &c, const file::Node &node, file::NodeIndex index);
// Size of the struct that a node of STASG, STARG, STCALL or USTCALL names; 0: it names none.
[[nodiscard]] std::uint32_t struct_bytes(const Compiler &c, file::NodeIndex index);

// Calls. The place is that of a struct result.
[[nodiscard]] Value call(Compiler &c, file::NodeIndex index, Place *struct_result);

} // namespace velkor::run
