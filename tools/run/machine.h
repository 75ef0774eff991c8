// The running program: memory, code, and what the interpreter and the native library keep.
#pragma once

#include "run/code.h"
#include "run/loader.h"
#include "run/memory.h"
#include "run/run.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace velkor::run {

// A register is a word or a real number; the compiler knows which.
union Register {
  std::uint32_t word;
  double real;
};

struct CallRecord {
  const FunctionCode *function = nullptr;
  std::int32_t return_position = -1; // -1: ends a nested run
  Address frame = 0;
  Address arguments = 0;
  std::uint32_t register_base = 0;
  std::uint16_t result_register = 0; // of the caller
  Address result_block = 0;          // 0: no struct result is wanted
  std::uint32_t result_bytes = 0;
};

struct Machine {
  Memory memory;
  Code code;
  Program program;
  const RunOptions *options = nullptr;

  // The interpreter.
  std::vector<Register> registers;
  std::vector<CallRecord> calls;
  Address stack_top = 0; // where a native routine's callbacks may put their frames
  int nesting = 0;       // of the interpreter inside native routines
  std::int64_t steps_left = 0;
  std::array<std::uint64_t, instruction_table.size()> executed{};
  std::uint64_t branches_taken = 0;

  // The native library.
  std::string output; // not yet written
  bool output_failed = false;
  std::vector<Address> exit_routines;
  std::uint32_t random_state = 1;
  Address token_position = 0; // of strtok

  explicit Machine(std::uint32_t memory_bytes) : memory(memory_bytes) {}
};

// Calls the function with that handle, with 4-byte arguments, and returns the word it yields.
// Throws Fault and ProgramExit.
std::uint32_t call_function(Machine &machine, Address handle,
                            std::span<const std::uint32_t> arguments);

// The program's output streams. Error output comes behind all output before it.
void write_output(Machine &machine, std::string_view text);
void write_error_output(Machine &machine, std::string_view text);
void flush_output(Machine &machine);

} // namespace velkor::run
