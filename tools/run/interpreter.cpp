#include "run/interpreter.h"

#include "run/natives.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace velkor::run {

namespace {

constexpr int fill_pattern = 0xA5;          // of autos without a value; no valid address
constexpr std::uint32_t native_room = 4096; // bytes of stack that stay free for callbacks
constexpr int deepest_nesting = 2000;       // of interpreters inside native routines

std::int32_t as_signed(std::uint32_t word) {
  return static_cast<std::int32_t>(word);
}
std::uint32_t as_word(std::int32_t value) {
  return static_cast<std::uint32_t>(value);
}

std::uint32_t divide_signed(std::uint32_t a, std::uint32_t b) {
  if (b == 0) throw Fault{"division by zero"};
  if (b == ~0u) return 0u - a; // the smallest number wraps
  return as_word(as_signed(a) / as_signed(b));
}
std::uint32_t remainder_signed(std::uint32_t a, std::uint32_t b) {
  if (b == 0) throw Fault{"division by zero"};
  if (b == ~0u) return 0;
  return as_word(as_signed(a) % as_signed(b));
}
std::uint32_t divide_unsigned(std::uint32_t a, std::uint32_t b) {
  if (b == 0) throw Fault{"division by zero"};
  return a / b;
}
std::uint32_t remainder_unsigned(std::uint32_t a, std::uint32_t b) {
  if (b == 0) throw Fault{"division by zero"};
  return a % b;
}
std::uint32_t shift_down_signed(std::uint32_t a, std::uint32_t b) {
  return as_word(as_signed(a) >> (b & 31));
}

// Truncated to 64 bits, of which the low word is kept. No number, or one beyond 64 bits, gives 0.
std::uint32_t real_to_word(double number) {
  if (!(number > -9223372036854775808.0 && number < 9223372036854775808.0)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(number)));
}

// The relations by their step from SET_EQ.
template <int Step> bool related(std::uint32_t a, std::uint32_t b) {
  if constexpr (Step == 0) return a == b;
  if constexpr (Step == 1) return a != b;
  if constexpr (Step == 2) return as_signed(a) < as_signed(b);
  if constexpr (Step == 3) return as_signed(a) <= as_signed(b);
  if constexpr (Step == 4) return as_signed(a) > as_signed(b);
  if constexpr (Step == 5) return as_signed(a) >= as_signed(b);
  if constexpr (Step == 6) return a < b;
  if constexpr (Step == 7) return a <= b;
  if constexpr (Step == 8) return a > b;
  if constexpr (Step == 9) return a >= b;
}

// Bit fields -----------------------------------------------------------------------------------

struct Field {
  unsigned shift;
  unsigned width;
  bool is_signed;
  std::uint32_t bytes; // that it touches
};

Field unpack_field(std::int32_t packed) {
  const auto bits = static_cast<std::uint32_t>(packed);
  const Field field{bits & 0xFF, bits >> 8 & 0xFF, (bits >> 16 & 1) != 0, 0};
  return {field.shift, field.width, field.is_signed, (field.shift + field.width + 7) / 8};
}

std::uint32_t cut_to_field(const Field &field, std::uint32_t word) {
  const unsigned unused = 32 - field.width;
  return field.is_signed ? as_word(as_signed(word << unused) >> unused) : word << unused >> unused;
}

std::uint32_t load_field(Memory &memory, Address address, std::int32_t packed) {
  const Field field = unpack_field(packed);
  std::uint64_t unit = 0;
  std::memcpy(&unit, memory.at(address, field.bytes, "read"), field.bytes);
  return cut_to_field(field, static_cast<std::uint32_t>(unit >> field.shift));
}

void store_field(Memory &memory, Address address, std::int32_t packed, std::uint32_t word) {
  const Field field = unpack_field(packed);
  unsigned char *place = memory.at(address, field.bytes, "write");
  std::uint64_t unit = 0;
  std::memcpy(&unit, place, field.bytes);
  const std::uint64_t mask = ((std::uint64_t{1} << field.width) - 1) << field.shift;
  unit = (unit & ~mask) | (static_cast<std::uint64_t>(word) << field.shift & mask);
  std::memcpy(place, &unit, field.bytes);
}

// Blocks, switches, reports --------------------------------------------------------------------

void copy_block(Memory &memory, Address to, Address from, std::uint32_t bytes) {
  if (bytes == 0) return;
  const unsigned char *source = memory.at(from, bytes, "read");
  std::memmove(memory.at(to, bytes, "write"), source, bytes);
}

std::int32_t switch_target(const SwitchTable &table, std::int32_t value) {
  if (table.entries.empty()) return table.otherwise;
  if (table.dense) {
    const std::uint32_t position = as_word(value) - as_word(table.entries.front().value);
    return position < table.entries.size() ? table.entries[position].target : table.otherwise;
  }
  const auto entry =
      std::lower_bound(table.entries.begin(), table.entries.end(), value,
                       [](const SwitchTable::Entry &e, std::int32_t v) { return e.value < v; });
  return entry != table.entries.end() && entry->value == value ? entry->target : table.otherwise;
}

void report_access(Machine &machine, const std::string &name, std::int32_t packed,
                   std::int32_t offset) {
  std::string line = (packed & 1) != 0 ? "volatile: w " : "volatile: r ";
  line.append(name);
  if (offset != 0) line.append("+").append(std::to_string(offset));
  line.append(" ").append(std::to_string(packed >> 1 & 127)).append("\n");
  write_error_output(machine, line);
}

void report_access_at(Machine &machine, Address address, std::int32_t packed) {
  for (const auto &[name, object] : machine.program.objects) {
    if (!object.is_volatile || address < object.address || address - object.address >= object.bytes)
      continue;
    report_access(machine, name, packed, static_cast<std::int32_t>(address - object.address));
    return;
  }
}

[[noreturn]] void fail_assertion(Machine &machine, const std::string &text) {
  write_error_output(machine, "Assertion failed: " + text + "\n");
  throw ProgramExit{status_aborted};
}

// Calls ----------------------------------------------------------------------------------------

Address frame_end(const CallRecord &record) {
  return record.frame + record.function->frame_bytes;
}

// Makes the function's frame behind its arguments and enters it in the list of calls.
void enter(Machine &machine, std::int32_t number, Address arguments, std::uint32_t bytes,
           CallRecord record) {
  const FunctionCode &function = machine.code.functions[number];
  if (bytes < function.parameter_bytes) {
    throw Fault{"function '" + function.name + "' is called with " + std::to_string(bytes) +
                " bytes of arguments, but has parameters of " +
                std::to_string(function.parameter_bytes)};
  }
  record.function = &function;
  record.arguments = arguments;
  record.frame = arguments + round_up(function.variadic ? bytes : function.parameter_bytes, 16);
  const std::uint64_t needed = static_cast<std::uint64_t>(record.frame) + function.frame_bytes +
                               function.outgoing_bytes + native_room;
  if (needed > machine.memory.stack_end()) throw Fault{"stack overflow"};
  std::memset(machine.memory.base() + record.frame, fill_pattern, function.frame_bytes);
  if (!machine.calls.empty()) {
    const CallRecord &caller = machine.calls.back();
    record.register_base = caller.register_base + caller.function->register_count;
  }
  const std::size_t register_end = record.register_base + function.register_count + std::size_t{1};
  if (register_end > machine.registers.size()) machine.registers.resize(register_end * 2);
  machine.calls.push_back(record);
}

void call_native(Machine &machine, std::int32_t number, Address arguments, std::uint32_t bytes,
                 Register &result) {
  const Address top = machine.stack_top;
  machine.stack_top = arguments + round_up(bytes, 16);
  NativeCall call{machine, arguments, arguments + bytes};
  native(number).routine(call);
  machine.stack_top = top;
  if (call.is_real)
    result.real = call.real;
  else
    result.word = call.word;
}

[[noreturn]] void call_nothing(const Machine &machine, Address handle) {
  if (handle >= first_missing_handle) {
    const std::size_t number = (handle - first_missing_handle) / 4;
    if (number < machine.program.missing_functions.size())
      throw Fault{"call of the missing function '" + machine.program.missing_functions[number] +
                  "'"};
  }
  throw Fault{"call through a pointer that is no function"};
}

// Number of the function that a handle stands for, or -1; native: that of a native routine.
std::int32_t function_of_handle(const Machine &machine, Address handle,
                                std::int32_t &native_number) {
  native_number = -1;
  if (handle < first_function_handle || handle % 4 != 0) return -1;
  if (handle < first_native_handle) {
    const std::uint32_t number = (handle - first_function_handle) / 4;
    return number < machine.program.functions.size() ? as_signed(number) : -1;
  }
  if (handle < first_missing_handle) native_number = as_signed((handle - first_native_handle) / 4);
  return -1;
}

// The loop -------------------------------------------------------------------------------------

// Runs from the start of the newest call until it returns, and yields its result.
template <bool Counting> Register run_loop(Machine &machine) {
  const Instruction *const code = machine.code.instructions.data();
  unsigned char *const memory = machine.memory.base();
  const std::uint32_t room = machine.memory.limit() - first_address;
  const Instruction *next = code + machine.calls.back().function->entry;
  const Instruction *straight = next; // where the current straight run of instructions began
  Register *r = machine.registers.data() + machine.calls.back().register_base;
  unsigned char *frame = memory + machine.calls.back().frame;
  std::int64_t steps_left = machine.steps_left;

  const auto go_to = [&](std::int32_t target) {
    if constexpr (Counting) ++machine.branches_taken;
    steps_left -= next - straight;
    next = straight = code + target;
    if (steps_left < 0) [[unlikely]] {
      machine.steps_left = steps_left;
      throw Fault{"stopped after " + std::to_string(machine.options->max_steps) + " steps", false,
                  status_out_of_steps};
    }
  };
  const auto go_if = [&](bool condition, std::int32_t target) {
    if (condition) go_to(target);
  };
  // After a change of the newest call.
  const auto take_registers = [&] {
    r = machine.registers.data() + machine.calls.back().register_base;
    frame = memory + machine.calls.back().frame;
  };
  const auto load = [&]<typename T>(const unsigned char *place, T) {
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
  };
  const auto store = [&]<typename T>(unsigned char *place, T value) {
    std::memcpy(place, &value, sizeof value);
  };
  const auto checked = [&](const Instruction &i, std::uint32_t size,
                           const char *what) -> unsigned char * {
    const Address address = r[i.rhs].word + as_word(i.imm);
    if (address - first_address > room - size) [[unlikely]]
      Memory::wild(address, size, what);
    return memory + address;
  };
  const auto load_word = [&](const Instruction &i, const unsigned char *place) {
    r[i.dst].word = load(place, std::uint32_t{});
  };
  const auto single_result = [&](const Instruction &i, float value) {
    r[i.dst].real = static_cast<double>(value);
  };
  const auto single = [&](std::uint16_t reg) { return static_cast<float>(r[reg].real); };
  Address result_block = 0;
  std::uint32_t result_bytes = 0;
  const auto call = [&](const Instruction &i, std::int32_t number) {
    const CallRecord &caller = machine.calls.back();
    enter(machine, number, frame_end(caller), as_word(i.target),
          {.return_position = static_cast<std::int32_t>(next - code),
           .result_register = i.dst,
           .result_block = result_block,
           .result_bytes = result_bytes});
    result_block = 0;
    take_registers();
    steps_left -= next - straight;
    next = straight = code + machine.calls.back().function->entry;
    if (steps_left < 0) go_to(static_cast<std::int32_t>(next - code));
  };
  const auto call_to_native = [&](const Instruction &i, std::int32_t number) {
    machine.steps_left = steps_left - (next - straight);
    Register result;
    result.real = 0;
    call_native(machine, number, frame_end(machine.calls.back()), as_word(i.target), result);
    steps_left = machine.steps_left;
    straight = next;
    take_registers();
    r[i.dst] = result;
    result_block = 0;
  };
  // Back to the caller; false at the end of this nested run.
  const auto leave = [&](Register result) {
    const CallRecord record = machine.calls.back();
    machine.calls.pop_back();
    steps_left -= next - straight;
    if (record.return_position < 0) {
      machine.steps_left = steps_left;
      return false;
    }
    next = straight = code + record.return_position;
    take_registers();
    r[record.result_register] = result;
    return true;
  };

  try {
    for (;;) {
      const Instruction &i = *next++;
      if constexpr (Counting) ++machine.executed[static_cast<std::size_t>(i.op)];
      switch (i.op) {
      case Op::MOVE: r[i.dst] = r[i.lhs]; break;
      case Op::CONSTANT: r[i.dst].word = as_word(i.imm); break;
      case Op::REAL_CONSTANT: r[i.dst].real = machine.code.reals[i.imm]; break;
      case Op::FRAME_ADDRESS:
        r[i.dst].word = static_cast<std::uint32_t>(frame - memory) + as_word(i.imm);
        break;
      case Op::ARGUMENT_ADDRESS:
        r[i.dst].word = machine.calls.back().arguments + as_word(i.imm);
        break;

      case Op::ADD: r[i.dst].word = r[i.lhs].word + r[i.rhs].word; break;
      case Op::SUBTRACT_WORD: r[i.dst].word = r[i.lhs].word - r[i.rhs].word; break;
      case Op::MULTIPLY_WORD: r[i.dst].word = r[i.lhs].word * r[i.rhs].word; break;
      case Op::DIVIDE_SIGNED: r[i.dst].word = divide_signed(r[i.lhs].word, r[i.rhs].word); break;
      case Op::DIVIDE_UNSIGNED:
        r[i.dst].word = divide_unsigned(r[i.lhs].word, r[i.rhs].word);
        break;
      case Op::REMAINDER_SIGNED:
        r[i.dst].word = remainder_signed(r[i.lhs].word, r[i.rhs].word);
        break;
      case Op::REMAINDER_UNSIGNED:
        r[i.dst].word = remainder_unsigned(r[i.lhs].word, r[i.rhs].word);
        break;
      case Op::AND: r[i.dst].word = r[i.lhs].word & r[i.rhs].word; break;
      case Op::OR: r[i.dst].word = r[i.lhs].word | r[i.rhs].word; break;
      case Op::XOR: r[i.dst].word = r[i.lhs].word ^ r[i.rhs].word; break;
      case Op::SHIFT_UP: r[i.dst].word = r[i.lhs].word << (r[i.rhs].word & 31); break;
      case Op::SHIFT_DOWN_SIGNED:
        r[i.dst].word = shift_down_signed(r[i.lhs].word, r[i.rhs].word);
        break;
      case Op::SHIFT_DOWN_UNSIGNED: r[i.dst].word = r[i.lhs].word >> (r[i.rhs].word & 31); break;
      case Op::ADD_IMM: r[i.dst].word = r[i.lhs].word + as_word(i.imm); break;
      case Op::SUBTRACT_WORD_IMM: r[i.dst].word = r[i.lhs].word - as_word(i.imm); break;
      case Op::MULTIPLY_WORD_IMM: r[i.dst].word = r[i.lhs].word * as_word(i.imm); break;
      case Op::DIVIDE_SIGNED_IMM:
        r[i.dst].word = divide_signed(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::DIVIDE_UNSIGNED_IMM:
        r[i.dst].word = divide_unsigned(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::REMAINDER_SIGNED_IMM:
        r[i.dst].word = remainder_signed(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::REMAINDER_UNSIGNED_IMM:
        r[i.dst].word = remainder_unsigned(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::AND_IMM: r[i.dst].word = r[i.lhs].word & as_word(i.imm); break;
      case Op::OR_IMM: r[i.dst].word = r[i.lhs].word | as_word(i.imm); break;
      case Op::XOR_IMM: r[i.dst].word = r[i.lhs].word ^ as_word(i.imm); break;
      case Op::SHIFT_UP_IMM: r[i.dst].word = r[i.lhs].word << (i.imm & 31); break;
      case Op::SHIFT_DOWN_SIGNED_IMM:
        r[i.dst].word = shift_down_signed(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::SHIFT_DOWN_UNSIGNED_IMM: r[i.dst].word = r[i.lhs].word >> (i.imm & 31); break;
      case Op::NEGATE_WORD: r[i.dst].word = 0u - r[i.lhs].word; break;
      case Op::COMPLEMENT_WORD: r[i.dst].word = ~r[i.lhs].word; break;
      case Op::ABSOLUTE_WORD:
        r[i.dst].word = as_signed(r[i.lhs].word) < 0 ? 0u - r[i.lhs].word : r[i.lhs].word;
        break;

      case Op::WRAP_I8: r[i.dst].word = as_word(static_cast<std::int8_t>(r[i.lhs].word)); break;
      case Op::WRAP_U8: r[i.dst].word = static_cast<std::uint8_t>(r[i.lhs].word); break;
      case Op::WRAP_I16: r[i.dst].word = as_word(static_cast<std::int16_t>(r[i.lhs].word)); break;
      case Op::WRAP_U16: r[i.dst].word = static_cast<std::uint16_t>(r[i.lhs].word); break;

      case Op::SET_EQ: r[i.dst].word = related<0>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_NE: r[i.dst].word = related<1>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_LT: r[i.dst].word = related<2>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_LE: r[i.dst].word = related<3>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_GT: r[i.dst].word = related<4>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_GE: r[i.dst].word = related<5>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_LT_UNSIGNED: r[i.dst].word = related<6>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_LE_UNSIGNED: r[i.dst].word = related<7>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_GT_UNSIGNED: r[i.dst].word = related<8>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_GE_UNSIGNED: r[i.dst].word = related<9>(r[i.lhs].word, r[i.rhs].word); break;
      case Op::SET_EQ_IMM: r[i.dst].word = related<0>(r[i.lhs].word, as_word(i.imm)); break;
      case Op::SET_NE_IMM: r[i.dst].word = related<1>(r[i.lhs].word, as_word(i.imm)); break;
      case Op::SET_LT_IMM: r[i.dst].word = related<2>(r[i.lhs].word, as_word(i.imm)); break;
      case Op::SET_LE_IMM: r[i.dst].word = related<3>(r[i.lhs].word, as_word(i.imm)); break;
      case Op::SET_GT_IMM: r[i.dst].word = related<4>(r[i.lhs].word, as_word(i.imm)); break;
      case Op::SET_GE_IMM: r[i.dst].word = related<5>(r[i.lhs].word, as_word(i.imm)); break;
      case Op::SET_LT_UNSIGNED_IMM:
        r[i.dst].word = related<6>(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::SET_LE_UNSIGNED_IMM:
        r[i.dst].word = related<7>(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::SET_GT_UNSIGNED_IMM:
        r[i.dst].word = related<8>(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::SET_GE_UNSIGNED_IMM:
        r[i.dst].word = related<9>(r[i.lhs].word, as_word(i.imm));
        break;
      case Op::SET_EQ_REAL: r[i.dst].word = r[i.lhs].real == r[i.rhs].real; break;
      case Op::SET_NE_REAL: r[i.dst].word = r[i.lhs].real != r[i.rhs].real; break;
      case Op::SET_LT_REAL: r[i.dst].word = r[i.lhs].real < r[i.rhs].real; break;
      case Op::SET_LE_REAL: r[i.dst].word = r[i.lhs].real <= r[i.rhs].real; break;
      case Op::SET_GT_REAL: r[i.dst].word = r[i.lhs].real > r[i.rhs].real; break;
      case Op::SET_GE_REAL: r[i.dst].word = r[i.lhs].real >= r[i.rhs].real; break;
      case Op::REAL_TRUTH: r[i.dst].word = r[i.lhs].real != 0.0; break;

      case Op::JUMP: go_to(i.target); break;
      case Op::JUMP_IF_ZERO: go_if(r[i.lhs].word == 0, i.target); break;
      case Op::JUMP_IF_NONZERO: go_if(r[i.lhs].word != 0, i.target); break;
      case Op::JUMP_IF_EQ: go_if(related<0>(r[i.lhs].word, r[i.rhs].word), i.target); break;
      case Op::JUMP_IF_NE: go_if(related<1>(r[i.lhs].word, r[i.rhs].word), i.target); break;
      case Op::JUMP_IF_LT: go_if(related<2>(r[i.lhs].word, r[i.rhs].word), i.target); break;
      case Op::JUMP_IF_LE: go_if(related<3>(r[i.lhs].word, r[i.rhs].word), i.target); break;
      case Op::JUMP_IF_GT: go_if(related<4>(r[i.lhs].word, r[i.rhs].word), i.target); break;
      case Op::JUMP_IF_GE: go_if(related<5>(r[i.lhs].word, r[i.rhs].word), i.target); break;
      case Op::JUMP_IF_LT_UNSIGNED:
        go_if(related<6>(r[i.lhs].word, r[i.rhs].word), i.target);
        break;
      case Op::JUMP_IF_LE_UNSIGNED:
        go_if(related<7>(r[i.lhs].word, r[i.rhs].word), i.target);
        break;
      case Op::JUMP_IF_GT_UNSIGNED:
        go_if(related<8>(r[i.lhs].word, r[i.rhs].word), i.target);
        break;
      case Op::JUMP_IF_GE_UNSIGNED:
        go_if(related<9>(r[i.lhs].word, r[i.rhs].word), i.target);
        break;
      case Op::JUMP_IF_EQ_IMM: go_if(related<0>(r[i.lhs].word, as_word(i.imm)), i.target); break;
      case Op::JUMP_IF_NE_IMM: go_if(related<1>(r[i.lhs].word, as_word(i.imm)), i.target); break;
      case Op::JUMP_IF_LT_IMM: go_if(related<2>(r[i.lhs].word, as_word(i.imm)), i.target); break;
      case Op::JUMP_IF_LE_IMM: go_if(related<3>(r[i.lhs].word, as_word(i.imm)), i.target); break;
      case Op::JUMP_IF_GT_IMM: go_if(related<4>(r[i.lhs].word, as_word(i.imm)), i.target); break;
      case Op::JUMP_IF_GE_IMM: go_if(related<5>(r[i.lhs].word, as_word(i.imm)), i.target); break;
      case Op::JUMP_IF_LT_UNSIGNED_IMM:
        go_if(related<6>(r[i.lhs].word, as_word(i.imm)), i.target);
        break;
      case Op::JUMP_IF_LE_UNSIGNED_IMM:
        go_if(related<7>(r[i.lhs].word, as_word(i.imm)), i.target);
        break;
      case Op::JUMP_IF_GT_UNSIGNED_IMM:
        go_if(related<8>(r[i.lhs].word, as_word(i.imm)), i.target);
        break;
      case Op::JUMP_IF_GE_UNSIGNED_IMM:
        go_if(related<9>(r[i.lhs].word, as_word(i.imm)), i.target);
        break;
      case Op::JUMP_TABLE:
        go_to(switch_target(machine.code.switches[i.imm], as_signed(r[i.lhs].word)));
        break;

      case Op::ADD_DOUBLE: r[i.dst].real = r[i.lhs].real + r[i.rhs].real; break;
      case Op::SUBTRACT_DOUBLE: r[i.dst].real = r[i.lhs].real - r[i.rhs].real; break;
      case Op::MULTIPLY_DOUBLE: r[i.dst].real = r[i.lhs].real * r[i.rhs].real; break;
      case Op::DIVIDE_DOUBLE: r[i.dst].real = r[i.lhs].real / r[i.rhs].real; break;
      case Op::ADD_SINGLE: single_result(i, single(i.lhs) + single(i.rhs)); break;
      case Op::SUBTRACT_SINGLE: single_result(i, single(i.lhs) - single(i.rhs)); break;
      case Op::MULTIPLY_SINGLE: single_result(i, single(i.lhs) * single(i.rhs)); break;
      case Op::DIVIDE_SINGLE: single_result(i, single(i.lhs) / single(i.rhs)); break;
      case Op::NEGATE_REAL: r[i.dst].real = -r[i.lhs].real; break;
      case Op::ABSOLUTE_REAL: r[i.dst].real = std::fabs(r[i.lhs].real); break;
      case Op::ROOT_DOUBLE: r[i.dst].real = std::sqrt(r[i.lhs].real); break;
      case Op::ROOT_SINGLE: single_result(i, std::sqrt(single(i.lhs))); break;
      case Op::ROUND_TO_SINGLE: single_result(i, single(i.lhs)); break;
      case Op::SIGNED_TO_REAL: r[i.dst].real = as_signed(r[i.lhs].word); break;
      case Op::UNSIGNED_TO_REAL: r[i.dst].real = r[i.lhs].word; break;
      case Op::REAL_TO_WORD: r[i.dst].word = real_to_word(r[i.lhs].real); break;

      case Op::LOAD_FRAME_I8: r[i.dst].word = as_word(load(frame + i.imm, std::int8_t{})); break;
      case Op::LOAD_FRAME_U8: r[i.dst].word = load(frame + i.imm, std::uint8_t{}); break;
      case Op::LOAD_FRAME_I16: r[i.dst].word = as_word(load(frame + i.imm, std::int16_t{})); break;
      case Op::LOAD_FRAME_U16: r[i.dst].word = load(frame + i.imm, std::uint16_t{}); break;
      case Op::LOAD_FRAME_WORD: load_word(i, frame + i.imm); break;
      case Op::LOAD_FRAME_SINGLE: single_result(i, load(frame + i.imm, float{})); break;
      case Op::LOAD_FRAME_DOUBLE: r[i.dst].real = load(frame + i.imm, double{}); break;
      case Op::LOAD_FIXED_I8: r[i.dst].word = as_word(load(memory + i.imm, std::int8_t{})); break;
      case Op::LOAD_FIXED_U8: r[i.dst].word = load(memory + i.imm, std::uint8_t{}); break;
      case Op::LOAD_FIXED_I16: r[i.dst].word = as_word(load(memory + i.imm, std::int16_t{})); break;
      case Op::LOAD_FIXED_U16: r[i.dst].word = load(memory + i.imm, std::uint16_t{}); break;
      case Op::LOAD_FIXED_WORD: load_word(i, memory + i.imm); break;
      case Op::LOAD_FIXED_SINGLE: single_result(i, load(memory + i.imm, float{})); break;
      case Op::LOAD_FIXED_DOUBLE: r[i.dst].real = load(memory + i.imm, double{}); break;
      case Op::LOAD_I8: r[i.dst].word = as_word(load(checked(i, 1, "read"), std::int8_t{})); break;
      case Op::LOAD_U8: r[i.dst].word = load(checked(i, 1, "read"), std::uint8_t{}); break;
      case Op::LOAD_I16:
        r[i.dst].word = as_word(load(checked(i, 2, "read"), std::int16_t{}));
        break;
      case Op::LOAD_U16: r[i.dst].word = load(checked(i, 2, "read"), std::uint16_t{}); break;
      case Op::LOAD_WORD: load_word(i, checked(i, 4, "read")); break;
      case Op::LOAD_SINGLE: single_result(i, load(checked(i, 4, "read"), float{})); break;
      case Op::LOAD_DOUBLE: r[i.dst].real = load(checked(i, 8, "read"), double{}); break;

      case Op::STORE_FRAME_I8:
      case Op::STORE_FRAME_U8:
        store(frame + i.imm, static_cast<std::uint8_t>(r[i.lhs].word));
        break;
      case Op::STORE_FRAME_I16:
      case Op::STORE_FRAME_U16:
        store(frame + i.imm, static_cast<std::uint16_t>(r[i.lhs].word));
        break;
      case Op::STORE_FRAME_WORD: store(frame + i.imm, r[i.lhs].word); break;
      case Op::STORE_FRAME_SINGLE: store(frame + i.imm, single(i.lhs)); break;
      case Op::STORE_FRAME_DOUBLE: store(frame + i.imm, r[i.lhs].real); break;
      case Op::STORE_FIXED_I8:
      case Op::STORE_FIXED_U8:
        store(memory + i.imm, static_cast<std::uint8_t>(r[i.lhs].word));
        break;
      case Op::STORE_FIXED_I16:
      case Op::STORE_FIXED_U16:
        store(memory + i.imm, static_cast<std::uint16_t>(r[i.lhs].word));
        break;
      case Op::STORE_FIXED_WORD: store(memory + i.imm, r[i.lhs].word); break;
      case Op::STORE_FIXED_SINGLE: store(memory + i.imm, single(i.lhs)); break;
      case Op::STORE_FIXED_DOUBLE: store(memory + i.imm, r[i.lhs].real); break;
      case Op::STORE_I8:
      case Op::STORE_U8:
        store(checked(i, 1, "write"), static_cast<std::uint8_t>(r[i.lhs].word));
        break;
      case Op::STORE_I16:
      case Op::STORE_U16:
        store(checked(i, 2, "write"), static_cast<std::uint16_t>(r[i.lhs].word));
        break;
      case Op::STORE_WORD: store(checked(i, 4, "write"), r[i.lhs].word); break;
      case Op::STORE_SINGLE: store(checked(i, 4, "write"), single(i.lhs)); break;
      case Op::STORE_DOUBLE: store(checked(i, 8, "write"), r[i.lhs].real); break;

      case Op::LOAD_FIELD:
        r[i.dst].word = load_field(machine.memory, r[i.rhs].word + as_word(i.imm), i.target);
        break;
      case Op::STORE_FIELD:
        store_field(machine.memory, r[i.rhs].word + as_word(i.imm), i.target, r[i.lhs].word);
        break;
      case Op::WRAP_FIELD:
        r[i.dst].word = cut_to_field(unpack_field(i.target), r[i.lhs].word);
        break;
      case Op::COPY_BLOCK:
        copy_block(machine.memory, r[i.lhs].word, r[i.rhs].word, as_word(i.imm));
        break;
      case Op::COPY_COUNTED:
        copy_block(machine.memory, r[i.lhs].word, r[i.rhs].word, r[i.dst].word);
        r[i.dst].word = r[i.lhs].word;
        break;

      case Op::ARGUMENT_WORD:
        store(memory + frame_end(machine.calls.back()) + i.imm, r[i.lhs].word);
        break;
      case Op::ARGUMENT_SINGLE:
        store(memory + frame_end(machine.calls.back()) + i.imm, single(i.lhs));
        break;
      case Op::ARGUMENT_DOUBLE:
        store(memory + frame_end(machine.calls.back()) + i.imm, r[i.lhs].real);
        break;
      case Op::ARGUMENT_BLOCK:
        copy_block(machine.memory, frame_end(machine.calls.back()) + as_word(i.imm), r[i.lhs].word,
                   as_word(i.target));
        break;
      case Op::RESULT_BLOCK:
        result_block = r[i.lhs].word;
        result_bytes = as_word(i.imm);
        break;
      case Op::CALL_FUNCTION: call(i, i.imm); break;
      case Op::CALL_NATIVE: call_to_native(i, i.imm); break;
      case Op::CALL_HANDLE: {
        std::int32_t native_number = -1;
        const Address handle = r[i.lhs].word;
        const std::int32_t number = function_of_handle(machine, handle, native_number);
        if (number >= 0)
          call(i, number);
        else if (native_number >= 0)
          call_to_native(i, native_number);
        else
          call_nothing(machine, handle);
        break;
      }
      case Op::RETURN_VALUE: {
        const Register result = r[i.lhs];
        if (!leave(result)) return result;
        break;
      }
      case Op::RETURN_NOTHING: {
        Register result;
        result.real = 0;
        if (!leave(result)) return result;
        break;
      }
      case Op::RETURN_BLOCK: {
        const CallRecord &record = machine.calls.back();
        if (record.result_block != 0)
          copy_block(machine.memory, record.result_block, r[i.lhs].word,
                     std::min(record.result_bytes, as_word(i.imm)));
        Register result;
        result.real = 0;
        if (!leave(result)) return result;
        break;
      }

      case Op::STOP: throw Fault{"the end of the code"};
      case Op::FAULT: throw Fault{machine.code.texts[i.imm]};
      case Op::ASSERTION_FAILED: fail_assertion(machine, machine.code.texts[i.imm]);
      case Op::TRACE_OBJECT:
        report_access(machine, machine.code.texts[i.imm], i.target & 255, i.target >> 8);
        break;
      case Op::TRACE_ADDRESS:
        report_access_at(machine, r[i.lhs].word + as_word(i.imm), i.target);
        break;
      }
    }
  } catch (Fault &fault) {
    machine.steps_left = steps_left;
    if (!fault.located) {
      const std::int32_t line = machine.code.lines[next - code - (next == straight ? 0 : 1)];
      fault.message = "function '" + machine.calls.back().function->name + "', line " +
                      std::to_string(line) + ": " + fault.message;
      fault.located = true;
    }
    throw;
  }
}

} // namespace

Register execute_function(Machine &machine, std::int32_t function, Address arguments,
                          std::uint32_t bytes) {
  if (++machine.nesting > deepest_nesting) throw Fault{"stack overflow in native callbacks"};
  enter(machine, function, arguments, bytes, {});
  const Register result =
      machine.options->count ? run_loop<true>(machine) : run_loop<false>(machine);
  --machine.nesting;
  return result;
}

std::uint32_t call_function(Machine &machine, Address handle,
                            std::span<const std::uint32_t> arguments) {
  const Address area = machine.stack_top;
  const auto bytes = static_cast<std::uint32_t>(arguments.size() * 4);
  if (area + native_room > machine.memory.stack_end()) throw Fault{"stack overflow"};
  for (std::size_t number = 0; number < arguments.size(); ++number)
    machine.memory.write(area + static_cast<Address>(number * 4), arguments[number]);
  std::int32_t native_number = -1;
  const std::int32_t number = function_of_handle(machine, handle, native_number);
  Register result;
  result.real = 0;
  if (number >= 0)
    result = execute_function(machine, number, area, bytes);
  else if (native_number >= 0)
    call_native(machine, native_number, area, bytes, result);
  else
    call_nothing(machine, handle);
  return result.word;
}

} // namespace velkor::run
