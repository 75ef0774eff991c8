// Statements, whole functions, initial values, and the making of the code itself.
#include "run/compiler.h"

#include "icode/format.h"

#include <algorithm>
#include <cstring>

namespace velkor::run {

namespace {

constexpr std::uint32_t most_registers = 60000;
constexpr std::uint32_t largest_frame = 1u << 30; // bytes

Label label_of(Compiler &c, std::int32_t file_label) {
  const auto [entry, is_new] = c.labels.emplace(file_label, 0);
  if (is_new) entry->second = new_label(c);
  return entry->second;
}

// The label that a LABELREF names; a fault is emitted for anything else.
Label target_of(Compiler &c, file::NodeIndex index) {
  const file::Node &node = c.node(index);
  if (node.op == LABELREF) return label_of(c, node.value);
  emit_fault(c, std::string("operator ") + opcode_table[node.op].name + " where a label must be");
  const Label here = new_label(c);
  bind(c, here);
  return here;
}

void compile_switch(Compiler &c, const file::Node &node) {
  Value selector = evaluate(c, node.left);
  if (selector.kind == Value::NOTHING || is_real(selector.type))
    selector = emit_fault(c, "a switch on what is no integer");
  SwitchTable table;
  const Label behind = new_label(c);
  table.otherwise = behind;
  std::vector<file::NodeIndex> pending = {node.right};
  while (!pending.empty()) {
    const file::Node &item = c.node(pending.back());
    pending.pop_back();
    if (item.op == COMMA) {
      pending.push_back(item.right);
      pending.push_back(item.left);
    } else if (item.op == DEFAULT) {
      table.otherwise = target_of(c, item.left);
    } else if (std::uint32_t word = 0; item.op == CASE && constant_word(c, item.left, word)) {
      table.entries.push_back({static_cast<std::int32_t>(word), target_of(c, item.right)});
    } else {
      emit_fault(c, "a switch with something other than cases");
    }
  }
  // Stable, so that the first of two equal cases wins.
  std::stable_sort(table.entries.begin(), table.entries.end(),
                   [](const auto &a, const auto &b) { return a.value < b.value; });
  table.dense = true;
  for (std::size_t i = 1; i < table.entries.size(); ++i) {
    table.dense = table.dense && static_cast<std::int64_t>(table.entries[i].value) ==
                                     static_cast<std::int64_t>(table.entries[i - 1].value) + 1;
  }
  emit(c, {.op = Op::JUMP_TABLE,
           .lhs = in_register(c, selector),
           .imm = static_cast<std::int32_t>(c.code.switches.size())});
  c.code.switches.push_back(std::move(table));
  bind(c, behind);
}

void compile_return(Compiler &c, const file::Node &node) {
  const TypeWord type = node_type(node);
  if (is_struct_or_union(type)) {
    const Place place = block_of(c, node.right);
    emit(c, {.op = Op::RETURN_BLOCK,
             .lhs = address_register(c, place),
             .imm = static_cast<std::int32_t>(place.bytes)});
    return;
  }
  if (type == VOID) {
    evaluate_effect(c, node.right);
    emit(c, {.op = Op::RETURN_NOTHING});
    return;
  }
  const Value value = convert(c, evaluate(c, node.right), type);
  emit(c, {.op = Op::RETURN_VALUE, .lhs = in_register(c, value)});
}

// ENDLOOP: goes back to the label while the counter, made one less, is not negative.
void compile_loop_end(Compiler &c, const file::Node &node) {
  const TypeWord type = node_type(c.node(node.left));
  const Place place = place_of(c, node.left);
  Value counter = load(c, place, type, true);
  if (is_real(type) || counter.kind != Value::REGISTER) {
    emit_fault(c, "a loop counter that is no integer");
    return;
  }
  emit(c, {.op = Op::ADD_IMM, .dst = counter.reg, .lhs = counter.reg, .imm = -1});
  counter.type = INT;
  counter = convert(c, counter, type);
  store(c, place, counter);
  if (!is_unsigned_word(promoted(type)))
    jump(c, Op::JUMP_IF_GE_IMM, target_of(c, node.right), counter.reg, 0, 0);
  else
    jump(c, Op::JUMP, target_of(c, node.right)); // no unsigned counter is below 0
}

void compile_statement(Compiler &c, file::NodeIndex index) {
  const std::uint32_t mark = c.next_register;
  const file::Node &node = c.node(index);
  switch (node.op) {
  case BRANCH: jump(c, Op::JUMP, target_of(c, node.left)); break;
  case CBRANCH: branch(c, node.left, target_of(c, node.right), false); break;
  case SWITCH: compile_switch(c, node); break;
  case RETURN: compile_return(c, node); break;
  case URETURN: emit(c, {.op = Op::RETURN_NOTHING}); break;
  case LOOP: bind(c, label_of(c, c.node(node.right).value)); break;
  case ENDLOOP: compile_loop_end(c, node); break;
  case PCOMMA:
    compile_statement(c, node.left);
    compile_statement(c, node.right);
    break;
  default: evaluate_effect(c, index); break;
  }
  c.next_register = mark;
}

// Assembly text is a comment when it begins with a semicolon.
bool is_comment(const std::string &text) {
  const std::size_t start = text.find_first_not_of(" \t");
  return start == std::string::npos || text[start] == ';';
}

void begin_code(Compiler &c, FunctionCode &function, const FunctionSource *source) {
  c.function = &function;
  c.source = source;
  c.frame_bytes = source == nullptr ? 0 : source->frame_bytes;
  c.next_register = 0;
  c.label_positions.clear();
  c.labels.clear();
  c.jumps.clear();
  c.first_switch = c.code.switches.size();
  function.entry = static_cast<std::int32_t>(c.code.instructions.size());
}

// Replaces the internal labels of the function's jumps by positions.
void end_code(Compiler &c) {
  emit(c, {.op = Op::RETURN_NOTHING});
  for (const std::int32_t position : c.jumps) {
    Instruction &instruction = c.code.instructions[position];
    instruction.target = c.label_positions[instruction.target];
  }
  for (std::size_t number = c.first_switch; number < c.code.switches.size(); ++number) {
    SwitchTable &table = c.code.switches[number];
    table.otherwise = c.label_positions[table.otherwise];
    for (SwitchTable::Entry &entry : table.entries)
      entry.target = c.label_positions[entry.target];
  }
  if (c.frame_bytes > largest_frame) {
    throw Fault{"the frame of function '" + c.function->name + "' is too large"};
  }
  // Never empty, so that endless recursion ends at the stack's end.
  c.function->frame_bytes = round_up(c.frame_bytes + 1, 16);
  c.function->outgoing_bytes = round_up(c.function->outgoing_bytes, 16);
}

void compile_function(Compiler &c, const FunctionSource &source) {
  const auto &records = c.program.file->records;
  c.line = source.line;
  for (std::size_t number = source.first_record; number < source.end_record; ++number) {
    const file::Record &record = records[number];
    if (const auto *statement = std::get_if<file::Statement>(&record)) {
      c.line = static_cast<std::uint16_t>(statement->line2);
      compile_statement(c, statement->tree);
    } else if (const auto *label = std::get_if<file::Label>(&record)) {
      bind(c, label_of(c, label->index));
    } else if (const auto *assembly = std::get_if<file::Assembly>(&record)) {
      if (!is_comment(assembly->text)) emit_fault(c, "assembly text: " + assembly->text);
    }
  }
}

// Initial values -----------------------------------------------------------------------------

// Writes a constant scalar; false when the tree is none.
bool write_constant(Compiler &c, file::NodeIndex tree, Address address) {
  const file::Node &node = c.node(tree);
  const TypeWord type = node_type(node);
  std::uint32_t word = 0;
  if (is_real(type)) {
    double number = 0;
    if (node.op != FCON || !parse_real(node.text, number)) return false;
    if (is_single(type))
      c.memory.write(address, static_cast<float>(number));
    else
      c.memory.write(address, number);
    return true;
  }
  if (!constant_word(c, tree, word)) return false;
  // Little-endian: the low bytes of the word are those of a narrower value.
  std::memcpy(c.memory.at(address, 4, "initial value"), &word,
              access_bytes[static_cast<int>(access_kind(type))]);
  return true;
}

void compile_initial_value(Compiler &c, const SymbolInfo &symbol) {
  const file::Symbol &record = *symbol.record;
  const std::int64_t room = static_cast<std::int64_t>(symbol.bytes) * 8;
  std::int64_t cursor = 0; // bits
  const auto advance = [&](std::int64_t bits) {
    if (bits < 0 || (cursor & 7) != 0 || cursor + bits > room)
      throw Fault{"the initial value of '" + record.name + "' does not fit", true};
    const auto address = static_cast<Address>(symbol.place + cursor / 8);
    cursor += bits;
    return address;
  };
  if (symbol.storage != Storage::FIXED)
    throw Fault{"'" + record.name + "' has an initial value but no place", true};
  for (const file::NodeIndex tree : record.value) {
    const file::Node &node = c.node(tree);
    const TypeWord type = node_type(node);
    if (node.op == SKIP) {
      const std::int64_t bits = node.value;
      if (bits < 0) throw Fault{"the initial value of '" + record.name + "' goes back", true};
      cursor += bits;
      if (cursor > room)
        throw Fault{"the initial value of '" + record.name + "' does not fit", true};
    } else if (node.op == SCON && is_array(type)) {
      const Address address = advance(static_cast<std::int64_t>(node.text.size()) * 8);
      std::memcpy(c.memory.base() + address, node.text.data(), node.text.size());
    } else if (!has_access(type)) {
      throw Fault{"the initial value of '" + record.name + "' has a tree that is no scalar", true};
    } else {
      const Address address = advance(is_derived(type) ? pointer_width : type_size(type));
      if (write_constant(c, tree, address)) continue;
      Place place;
      place.mode = Place::FIXED;
      place.offset = static_cast<std::int32_t>(address);
      c.next_register = 0;
      store(c, place, convert(c, evaluate(c, tree), type));
    }
  }
}

} // namespace

// Making code --------------------------------------------------------------------------------

std::int32_t emit(Compiler &c, Instruction instruction) {
  c.code.instructions.push_back(instruction);
  c.code.lines.push_back(c.line);
  return static_cast<std::int32_t>(c.code.instructions.size()) - 1;
}

std::uint16_t new_register(Compiler &c) {
  // One register serves for all that is too deep: the fault is what gets executed.
  if (c.next_register >= most_registers) {
    emit(c, {.op = Op::FAULT, .imm = add_text(c, "an expression nested too deeply")});
    return static_cast<std::uint16_t>(most_registers);
  }
  const auto reg = static_cast<std::uint16_t>(c.next_register++);
  c.function->register_count = std::max(c.function->register_count, c.next_register + 1);
  return reg;
}

Label new_label(Compiler &c) {
  c.label_positions.push_back(-1);
  return static_cast<Label>(c.label_positions.size()) - 1;
}

void bind(Compiler &c, Label label) {
  c.label_positions[label] = static_cast<std::int32_t>(c.code.instructions.size());
}

void jump(Compiler &c, Op op, Label label, std::uint16_t lhs, std::uint16_t rhs, std::int32_t imm) {
  c.jumps.push_back(emit(c, {.op = op, .lhs = lhs, .rhs = rhs, .imm = imm, .target = label}));
}

std::int32_t add_text(Compiler &c, std::string text) {
  c.code.texts.push_back(std::move(text));
  return static_cast<std::int32_t>(c.code.texts.size()) - 1;
}

Value emit_fault(Compiler &c, const std::string &text, TypeWord type) {
  emit(c, {.op = Op::FAULT, .imm = add_text(c, text)});
  if (is_real(type)) return {.kind = Value::REGISTER, .reg = new_register(c), .type = type};
  return constant(0, has_access(type) ? type : static_cast<TypeWord>(INT));
}

void compile_program(Program &program, Memory &memory, Code &code, bool trace_volatile) {
  Compiler c{.program = program, .memory = memory, .code = code};
  c.trace_volatile = trace_volatile;
  code.functions.resize(program.functions.size() + 1);
  for (std::size_t number = 0; number < program.functions.size(); ++number) {
    const FunctionSource &source = program.functions[number];
    FunctionCode &function = code.functions[number];
    function.name = c_name(source.symbol->record->name);
    function.parameter_bytes = source.parameter_bytes;
    function.variadic = source.variadic;
    begin_code(c, function, &source);
    compile_function(c, source);
    end_code(c);
  }
  FunctionCode &start = code.functions.back();
  start.name = "initial values";
  c.line = 0;
  c.trace_volatile = false;
  begin_code(c, start, nullptr);
  for (const InitialValue &value : program.initial_values)
    compile_initial_value(c, *value.symbol);
  end_code(c);
}

} // namespace velkor::run
