// Calls: arguments from left to right, then the callee, then the transfer.
#include "run/compiler.h"
#include "run/natives.h"

#include <algorithm>

namespace velkor::run {

namespace {

// An argument that has been evaluated: a scalar, or the address of a block of bytes.
struct Argument {
  Value value;
  std::uint32_t block_bytes = 0;
  bool is_block = false;
};

// The callee: a function or native routine that is known, or a handle in a register.
struct Callee {
  Op op = Op::CALL_HANDLE;
  std::int32_t number = 0; // of the function or the native routine
  std::uint16_t reg = 0;
};

// The leaves of an argument chain, from left to right.
std::vector<file::NodeIndex> argument_list(const Compiler &c, file::NodeIndex index) {
  std::vector<file::NodeIndex> leaves;
  std::vector<file::NodeIndex> pending;
  if (index != file::no_node) pending.push_back(index);
  while (!pending.empty()) {
    const file::NodeIndex position = pending.back();
    pending.pop_back();
    const file::Node &node = c.node(position);
    if (node.op == COMMA) {
      pending.push_back(node.right);
      pending.push_back(node.left);
    } else {
      leaves.push_back(position);
    }
  }
  return leaves;
}

Argument evaluate_argument(Compiler &c, file::NodeIndex index) {
  const file::Node &node = c.node(index);
  Argument argument;
  if (node.op == STARG || is_struct_or_union(node_type(node))) {
    const Place place = block_of(c, index);
    argument.is_block = true;
    argument.block_bytes = place.bytes;
    argument.value = {
        .kind = Value::REGISTER, .reg = address_register(c, place), .type = pointer_to(VOID)};
    return argument;
  }
  argument.value = evaluate(c, index);
  if (argument.value.kind == Value::NOTHING)
    argument.value = emit_fault(c, "an argument without a value");
  return argument;
}

// The function's handle if the tree is plainly the address of one.
bool known_handle(const Compiler &c, file::NodeIndex index, Address &handle) {
  const file::Node *node = &c.node(index);
  while (node->op == PCONV || node->op == IDENTITY || node->op == ADDRESS) {
    index = node->left;
    node = &c.node(index);
  }
  if (node->op != NAME || !is_function(node_type(*node))) return false;
  const SymbolInfo *symbol = c.program.node_symbol[index];
  if (symbol->storage != Storage::FUNCTION) return false;
  handle = symbol->place;
  return true;
}

Callee by_handle(Compiler &c, Address handle) {
  if (handle >= first_missing_handle) {
    emit_fault(c, "call of the missing function '" +
                      c.program.missing_functions[(handle - first_missing_handle) / 4] + "'");
    return {};
  }
  if (handle >= first_native_handle)
    return {.op = Op::CALL_NATIVE,
            .number = static_cast<std::int32_t>((handle - first_native_handle) / 4)};
  return {.op = Op::CALL_FUNCTION,
          .number = static_cast<std::int32_t>((handle - first_function_handle) / 4)};
}

Callee evaluate_callee(Compiler &c, const file::Node &node) {
  Address handle = 0;
  if (node.op == XCALL || node.op == UXCALL || node.op == ICALL) {
    // Run-time helpers: native ones go first, whatever the program itself defines.
    const int native = find_native(node.text);
    if (native >= 0) return {.op = Op::CALL_NATIVE, .number = native};
    return by_handle(c, function_handle(c.program, "_" + node.text));
  }
  if (known_handle(c, node.left, handle)) return by_handle(c, handle);
  const Value value = evaluate(c, node.left);
  if (value.kind == Value::NOTHING || is_real(value.type)) {
    emit_fault(c, "a call of what is no function");
    return {};
  }
  return {.reg = in_register(c, value)};
}

// Arguments of a function of the file are converted to its parameters' types where the two are of
// different classes; all others go as they are.
void fit_to_parameters(Compiler &c, const Callee &callee, std::vector<Argument> &arguments) {
  if (callee.op != Op::CALL_FUNCTION) return;
  const FunctionSource &function = c.program.functions[callee.number];
  const std::size_t count = std::min(arguments.size(), function.parameters.size());
  for (std::size_t number = 0; number < count; ++number) {
    const TypeWord type = internal_type(function.parameters[number]->record->stype);
    Argument &argument = arguments[number];
    if (argument.is_block || !has_access(type)) continue;
    if (is_real(type) || is_real(argument.value.type))
      argument.value = convert(c, argument.value, type);
  }
}

// Stores the arguments into the outgoing area and returns its size in bytes.
std::uint32_t pass_arguments(Compiler &c, const std::vector<Argument> &arguments) {
  std::uint32_t offset = 0;
  for (const Argument &argument : arguments) {
    const std::uint32_t mark = c.next_register;
    Instruction instruction{.op = Op::ARGUMENT_WORD,
                            .lhs = in_register(c, argument.value),
                            .imm = static_cast<std::int32_t>(offset)};
    std::uint32_t slot = 4;
    if (argument.is_block) {
      instruction.op = Op::ARGUMENT_BLOCK;
      instruction.target = static_cast<std::int32_t>(argument.block_bytes);
      slot = std::max(round_up(argument.block_bytes, 4), 4u);
    } else if (is_single(argument.value.type)) {
      instruction.op = Op::ARGUMENT_SINGLE;
    } else if (is_real(argument.value.type)) {
      instruction.op = Op::ARGUMENT_DOUBLE;
      slot = 8;
    }
    emit(c, instruction);
    offset += slot;
    c.next_register = mark;
  }
  c.function->outgoing_bytes = std::max(c.function->outgoing_bytes, offset);
  return offset;
}

} // namespace

Value call(Compiler &c, file::NodeIndex index, Place *struct_result) {
  const file::Node &node = c.node(index);
  const std::uint32_t mark = c.next_register;
  const bool is_helper = node.op == XCALL || node.op == ICALL;
  const bool has_arguments = node.op == CALL || node.op == STCALL;
  std::vector<Argument> arguments;
  for (const file::NodeIndex leaf : argument_list(c, is_helper       ? node.left
                                                     : has_arguments ? node.right
                                                                     : file::no_node))
    arguments.push_back(evaluate_argument(c, leaf));
  const Callee callee = evaluate_callee(c, node);
  fit_to_parameters(c, callee, arguments);
  const std::uint32_t bytes = pass_arguments(c, arguments);

  if (struct_result != nullptr) {
    const std::uint32_t result_bytes = struct_bytes(c, index);
    *struct_result = new_block(c, result_bytes);
    emit(c, {.op = Op::RESULT_BLOCK,
             .lhs = address_register(c, *struct_result),
             .imm = static_cast<std::int32_t>(result_bytes)});
  }
  c.next_register = mark;
  const std::uint16_t result = new_register(c);
  emit(c, {.op = callee.op,
           .dst = result,
           .lhs = callee.reg,
           .imm = callee.number,
           .target = static_cast<std::int32_t>(bytes)});
  const TypeWord type = node_type(node);
  if (struct_result != nullptr || type == VOID) return {};
  if (!has_access(type)) return emit_fault(c, "a call whose result has no value");
  Value value{.kind = Value::REGISTER, .reg = result, .type = type};
  if (!is_real(type)) {
    // The callee may have returned the word of another type.
    value.type = INT;
    value = convert(c, value, type);
  }
  return value;
}

} // namespace velkor::run
