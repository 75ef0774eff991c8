// Scalar values: arithmetic, assignments, and every other operator.
#include "run/compiler.h"

#include <utility>

namespace velkor::run {

// Arithmetic -------------------------------------------------------------------------------------

namespace {

struct Operation {
  Opcode op;
  Op signed_word;
  Op unsigned_word;
  Op real; // of doubles; JUMP: there is none
};
constexpr Operation operations[] = {
    {ADD, Op::ADD, Op::ADD, Op::ADD_DOUBLE},
    {SUBTRACT, Op::SUBTRACT_WORD, Op::SUBTRACT_WORD, Op::SUBTRACT_DOUBLE},
    {MULTIPLY, Op::MULTIPLY_WORD, Op::MULTIPLY_WORD, Op::MULTIPLY_DOUBLE},
    {DIVIDE, Op::DIVIDE_SIGNED, Op::DIVIDE_UNSIGNED, Op::DIVIDE_DOUBLE},
    {REMAINDER, Op::REMAINDER_SIGNED, Op::REMAINDER_UNSIGNED, Op::JUMP},
    {BIT_AND, Op::AND, Op::AND, Op::JUMP},
    {BIT_OR, Op::OR, Op::OR, Op::JUMP},
    {BIT_XOR, Op::XOR, Op::XOR, Op::JUMP},
    {SHIFT_LEFT, Op::SHIFT_UP, Op::SHIFT_UP, Op::JUMP},
    {SHIFT_RIGHT, Op::SHIFT_DOWN_SIGNED, Op::SHIFT_DOWN_UNSIGNED, Op::JUMP},
};
constexpr int immediate_step = static_cast<int>(Op::ADD_IMM) - static_cast<int>(Op::ADD);
constexpr int single_step = static_cast<int>(Op::ADD_SINGLE) - static_cast<int>(Op::ADD_DOUBLE);

const Operation *operation_of(std::uint8_t op) {
  for (const Operation &operation : operations) {
    if (operation.op == op) return &operation;
  }
  return nullptr;
}

// dst = a op b on words. The registers from mark on are free afterwards, but for the result's.
Value word_operation(Compiler &c, Op op, Value a, Value b, TypeWord type, std::uint32_t mark) {
  if (a.kind == Value::CONSTANT && b.kind != Value::CONSTANT &&
      (op == Op::ADD || op == Op::MULTIPLY_WORD || op == Op::AND || op == Op::OR || op == Op::XOR))
    std::swap(a, b);
  Instruction instruction{.op = op, .lhs = in_register(c, a)};
  if (b.kind == Value::CONSTANT) {
    instruction.op = op + immediate_step;
    instruction.imm = static_cast<std::int32_t>(b.word);
  } else {
    instruction.rhs = b.reg;
  }
  c.next_register = mark;
  instruction.dst = new_register(c);
  emit(c, instruction);
  wrap(c, instruction.dst, type);
  return {.kind = Value::REGISTER, .reg = instruction.dst, .type = type};
}

// a op b with the type of the result; op is a plain binary opcode.
Value arithmetic(Compiler &c, std::uint8_t op, Value a, Value b, TypeWord type,
                 std::uint32_t mark) {
  const Operation *operation = operation_of(op);
  if (operation == nullptr || a.kind == Value::NOTHING || b.kind == Value::NOTHING ||
      !has_access(type))
    return emit_fault(c, std::string("operator ") + opcode_table[op].name + " on no values", type);
  if (op == SHIFT_LEFT || op == SHIFT_RIGHT) {
    if (is_real(a.type)) a = convert(c, a, is_real(type) ? static_cast<TypeWord>(INT) : type);
    b = convert(c, b, is_real(b.type) ? static_cast<TypeWord>(INT) : b.type);
    const TypeWord word_type = is_real(type) ? promoted(a.type) : type;
    const Op word_op = is_unsigned_word(a.type) ? operation->unsigned_word : operation->signed_word;
    return convert(c, word_operation(c, word_op, a, b, word_type, mark), type);
  }
  if (is_real(a.type) || is_real(b.type) || is_real(type)) {
    TypeWord real_type = balanced(a.type, b.type);
    if (!is_real(real_type)) {
      real_type = is_real(a.type) ? a.type : is_real(b.type) ? b.type : type;
    }
    if (operation->real == Op::JUMP) {
      return emit_fault(c, std::string("operator ") + opcode_table[op].name + " on real numbers",
                        type);
    }
    a = convert(c, a, real_type);
    b = convert(c, b, real_type);
    c.next_register = mark;
    const Value result{.kind = Value::REGISTER, .reg = new_register(c), .type = real_type};
    emit(c, {.op = operation->real + (is_single(real_type) ? single_step : 0),
             .dst = result.reg,
             .lhs = a.reg,
             .rhs = b.reg});
    return convert(c, result, type);
  }
  const Op word_op = is_unsigned_word(type) ? operation->unsigned_word : operation->signed_word;
  return word_operation(c, word_op, a, b, type, mark);
}

// Operators --------------------------------------------------------------------------------------

// A condition as the word 0 or 1.
Value evaluate_truth(Compiler &c, file::NodeIndex index) {
  const Value result{.kind = Value::REGISTER, .reg = new_register(c), .type = INT};
  const Label is_false = new_label(c);
  const Label end = new_label(c);
  branch(c, index, is_false, false);
  emit(c, {.op = Op::CONSTANT, .dst = result.reg, .imm = 1});
  jump(c, Op::JUMP, end);
  bind(c, is_false);
  emit(c, {.op = Op::CONSTANT, .dst = result.reg, .imm = 0});
  bind(c, end);
  return result;
}

Value evaluate_not(Compiler &c, const file::Node &node) {
  const Value value = evaluate(c, node.left);
  if (value.kind == Value::NOTHING) return emit_fault(c, "! of no value");
  const std::uint16_t reg = in_register(c, value);
  if (is_real(value.type)) emit(c, {.op = Op::REAL_TRUTH, .dst = reg, .lhs = reg});
  emit(c, {.op = Op::SET_EQ_IMM, .dst = reg, .lhs = reg, .imm = 0});
  return {.kind = Value::REGISTER, .reg = reg, .type = INT};
}

Value evaluate_conditional(Compiler &c, const file::Node &node, TypeWord type) {
  const file::Node &arms = c.node(node.right);
  if (arms.op != ALTERNATIVES) return emit_fault(c, "? without its alternatives", type);
  const Label otherwise = new_label(c);
  const Label end = new_label(c);
  const std::uint32_t mark = c.next_register;
  Value result{.kind = Value::REGISTER, .type = type};
  const auto arm = [&](file::NodeIndex operand) {
    c.next_register = mark;
    if (type == VOID) {
      evaluate_effect(c, operand);
      return;
    }
    const Value value = convert(c, evaluate(c, operand), type);
    if (value.kind == Value::CONSTANT) {
      emit(c, {.op = Op::CONSTANT,
               .dst = static_cast<std::uint16_t>(mark),
               .imm = static_cast<std::int32_t>(value.word)});
    } else if (value.reg != mark) {
      emit(c, {.op = Op::MOVE, .dst = static_cast<std::uint16_t>(mark), .lhs = value.reg});
    }
  };
  branch(c, node.left, otherwise, false);
  arm(arms.left);
  jump(c, Op::JUMP, end);
  bind(c, otherwise);
  arm(arms.right);
  bind(c, end);
  c.next_register = mark;
  if (type == VOID) return {};
  result.reg = new_register(c);
  return result;
}

Value evaluate_assign(Compiler &c, const file::Node &node, TypeWord type) {
  Value value = evaluate(c, node.right);
  const Place place = place_of(c, node.left);
  const TypeWord target_type = node_type(c.node(node.left));
  if (value.kind == Value::CONSTANT) value.reg = 0;
  value = convert(c, value, target_type);
  store(c, place, value);
  return convert(c, as_stored(c, place, value), type);
}

// x op= y, and x++ and x-- whose value is the old one.
Value evaluate_update(Compiler &c, const file::Node &node, TypeWord type) {
  const bool is_step = node.op == INCREMENT || node.op == DECREMENT;
  const std::uint8_t op = node.op == INCREMENT   ? static_cast<std::uint8_t>(ADD)
                          : node.op == DECREMENT ? static_cast<std::uint8_t>(SUBTRACT)
                                                 : static_cast<std::uint8_t>(asgop_base(node.op));
  const Value step = evaluate(c, node.right);
  const Place place = place_of(c, node.left);
  const TypeWord target_type = node_type(c.node(node.left));
  const Value old = load(c, place, target_type, true);
  Value current = old;
  if (is_step) {
    current.reg = new_register(c);
    emit(c, {.op = Op::MOVE, .dst = current.reg, .lhs = old.reg});
  }
  const TypeWord computation_type = op == SHIFT_LEFT || op == SHIFT_RIGHT
                                        ? promoted(target_type)
                                        : balanced(target_type, step.type);
  if (op == SHIFT_LEFT || op == SHIFT_RIGHT) current = convert(c, current, computation_type);
  // A pointer's computation is that of words, whichever side the pointer is on.
  Value result = arithmetic(c, op, current, step, computation_type, c.next_register);
  result = convert(c, result, target_type);
  store(c, place, result);
  return convert(c, is_step ? old : as_stored(c, place, result), type);
}

Value evaluate_unary(Compiler &c, const file::Node &node, TypeWord type) {
  const Value operand = evaluate(c, node.left);
  if (operand.kind == Value::NOTHING || !has_access(type))
    return emit_fault(c, std::string("operator ") + opcode_table[node.op].name + " on no value",
                      type);
  if (is_real(operand.type) || is_real(type)) {
    const TypeWord real_type = is_real(operand.type) ? operand.type : type;
    const std::uint16_t reg = convert(c, operand, real_type).reg;
    switch (node.op) {
    case NEGATE: emit(c, {.op = Op::NEGATE_REAL, .dst = reg, .lhs = reg}); break;
    case ABS: emit(c, {.op = Op::ABSOLUTE_REAL, .dst = reg, .lhs = reg}); break;
    case SQRT:
      emit(
          c,
          {.op = is_single(real_type) ? Op::ROOT_SINGLE : Op::ROOT_DOUBLE, .dst = reg, .lhs = reg});
      break;
    case SQUARE:
      emit(c, {.op = is_single(real_type) ? Op::MULTIPLY_SINGLE : Op::MULTIPLY_DOUBLE,
               .dst = reg,
               .lhs = reg,
               .rhs = reg});
      break;
    case RECIP: {
      const Value one = real_constant(c, 1.0, real_type);
      emit(c, {.op = is_single(real_type) ? Op::DIVIDE_SINGLE : Op::DIVIDE_DOUBLE,
               .dst = reg,
               .lhs = one.reg,
               .rhs = reg});
      break;
    }
    default: return emit_fault(c, "~ on a real number", type);
    }
    return convert(c, {.kind = Value::REGISTER, .reg = reg, .type = real_type}, type);
  }
  const std::uint16_t reg = in_register(c, operand);
  switch (node.op) {
  case NEGATE: emit(c, {.op = Op::NEGATE_WORD, .dst = reg, .lhs = reg}); break;
  case COMPLEMENT: emit(c, {.op = Op::COMPLEMENT_WORD, .dst = reg, .lhs = reg}); break;
  case ABS: emit(c, {.op = Op::ABSOLUTE_WORD, .dst = reg, .lhs = reg}); break;
  case SQUARE: emit(c, {.op = Op::MULTIPLY_WORD, .dst = reg, .lhs = reg, .rhs = reg}); break;
  case RECIP: {
    const std::uint16_t one = in_register(c, constant(1, type));
    emit(c, {.op = is_unsigned_word(type) ? Op::DIVIDE_UNSIGNED : Op::DIVIDE_SIGNED,
             .dst = reg,
             .lhs = one,
             .rhs = reg});
    break;
  }
  default: {
    // The square root of an integer, cut to an integer.
    Value number = convert(c, {.kind = Value::REGISTER, .reg = reg, .type = operand.type}, DOUBLE);
    emit(c, {.op = Op::ROOT_DOUBLE, .dst = number.reg, .lhs = number.reg});
    return convert(c, number, type);
  }
  }
  wrap(c, reg, type);
  return {.kind = Value::REGISTER, .reg = reg, .type = type};
}

Value evaluate_scaling(Compiler &c, const file::Node &node, TypeWord type, std::uint32_t mark) {
  std::uint32_t bits = 0;
  const bool is_product = node.op == PMCONV;
  if (!constant_word(c, node.right, bits))
    return emit_fault(c, std::string(opcode_table[node.op].name) + " without a constant", type);
  Value operand = evaluate(c, node.left);
  if (is_real(operand.type) || operand.kind == Value::NOTHING)
    return emit_fault(c, std::string(opcode_table[node.op].name) + " of no integer", type);
  // Bytes need no scaling, and none shall be counted.
  if (scale_bytes(bits) == 1) return convert(c, operand, type);
  const Value factor = constant(scale_bytes(bits), INT);
  return word_operation(c, is_product ? Op::MULTIPLY_WORD : Op::DIVIDE_SIGNED, operand, factor,
                        type, mark);
}

Value evaluate_address(Compiler &c, const file::Node &node, TypeWord type) {
  const Place place = place_of(c, node.left);
  if (place.is_field) return emit_fault(c, "the address of a bit field", type);
  if (place.mode == Place::FIXED) return constant(static_cast<std::uint32_t>(place.offset), type);
  return {.kind = Value::REGISTER, .reg = address_register(c, place), .type = type};
}

// ASSERT: a pair of condition and text, or the condition alone.
Value evaluate_assert(Compiler &c, const file::Node &node, TypeWord type) {
  file::NodeIndex condition = node.left;
  std::string text;
  const file::Node &pair = c.node(node.left);
  if (pair.op == COMMA && c.node(pair.right).op == SCON) {
    condition = pair.left;
    text = c.node(pair.right).text;
    text = text.substr(0, text.find('\0'));
  }
  const Label holds = new_label(c);
  branch(c, condition, holds, true);
  emit(c, {.op = Op::ASSERTION_FAILED, .imm = add_text(c, text)});
  bind(c, holds);
  return constant(0, has_access(type) ? type : static_cast<TypeWord>(INT));
}

// MEMCPY: ((destination, source), bytes); its value is the destination.
Value evaluate_copy(Compiler &c, const file::Node &node, TypeWord type) {
  const file::Node &outer = c.node(node.left);
  if (outer.op != COMMA || c.node(outer.left).op != COMMA)
    return emit_fault(c, "MEMCPY without its three operands", type);
  const file::Node &inner = c.node(outer.left);
  Instruction instruction{.op = Op::COPY_COUNTED};
  for (const auto &[operand, reg] :
       {std::pair{inner.left, &instruction.lhs}, std::pair{inner.right, &instruction.rhs},
        std::pair{outer.right, &instruction.dst}}) {
    const Value value = evaluate(c, operand);
    if (value.kind == Value::NOTHING || is_real(value.type))
      return emit_fault(c, "MEMCPY of no addresses", type);
    *reg = in_register(c, value);
  }
  emit(c, instruction);
  return {.kind = Value::REGISTER,
          .reg = instruction.dst,
          .type = has_access(type) ? type : pointer_to(VOID)};
}

Value evaluate_literal(Compiler &c, const file::Node &node, TypeWord type) {
  double number = 0;
  switch (node.op) {
  case ICON:
    if (!has_access(type)) type = INT;
    if (is_real(type)) return real_constant(c, static_cast<double>(node.value), type);
    return constant(wrapped(static_cast<std::uint32_t>(node.value), type), type);
  case LCON: return constant(wrapped(parse_long_constant(node.text), type), type);
  case SCON: {
    const auto place = c.program.literals.find(node.text);
    if (place == c.program.literals.end()) return emit_fault(c, "a misplaced text", type);
    return constant(place->second, type);
  }
  default:
    if (!parse_real(node.text, number))
      return emit_fault(c, "'" + node.text + "' is no real number", type);
    return real_constant(c, number, is_real(type) ? type : static_cast<TypeWord>(DOUBLE));
  }
}

} // namespace

Value evaluate(Compiler &c, file::NodeIndex index) {
  const file::Node &node = c.node(index);
  const TypeWord type = node_type(node);
  const std::uint32_t mark = c.next_register;
  switch (node.op) {
  case ICON:
  case LCON:
  case FCON:
  case SCON: return evaluate_literal(c, node, type);
  case NAME:
  case DEREF:
  case MEMBER:
  case ARROW:
    if (!has_access(type)) {
      return emit_fault(c, is_function(type) ? "a function as a value without &"
                                             : "an aggregate where a scalar must be");
    }
    return load(c, place_of(c, index), type);
  case ADD:
  case SUBTRACT: {
    // An address with a constant offset folds into the place.
    std::uint32_t ignored = 0;
    if (is_pointer(type) && (constant_word(c, node.right, ignored) ||
                             (node.op == ADD && constant_word(c, node.left, ignored)))) {
      const file::NodeIndex base = constant_word(c, node.right, ignored) ? node.left : node.right;
      const file::Node &operand = c.node(base);
      if ((operand.op == ADDRESS || operand.op == PCONV) && is_pointer(node_type(operand))) {
        const Place place = address_of(c, index);
        if (place.mode == Place::FIXED)
          return constant(static_cast<std::uint32_t>(place.offset), type);
        return {.kind = Value::REGISTER, .reg = address_register(c, place), .type = type};
      }
    }
    [[fallthrough]];
  }
  case MULTIPLY:
  case DIVIDE:
  case REMAINDER:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case SHIFT_LEFT:
  case SHIFT_RIGHT: {
    const Value a = evaluate(c, node.left);
    const Value b = evaluate(c, node.right);
    return arithmetic(c, node.op, a, b, type, mark);
  }
  case NEGATE:
  case COMPLEMENT:
  case ABS:
  case SQUARE:
  case SQRT:
  case RECIP: return evaluate_unary(c, node, type);
  case EQ:
  case NE:
  case LT:
  case LE:
  case GT:
  case GE:
  case ULT:
  case ULE:
  case UGT:
  case UGE: return convert(c, evaluate_relation(c, node), type);
  case LOGICAL_NOT: return convert(c, evaluate_not(c, node), type);
  case LOGICAL_AND:
  case LOGICAL_OR: return convert(c, evaluate_truth(c, index), type);
  case CONDITIONAL: return evaluate_conditional(c, node, type);
  case COMMA_OP:
  case COMMA:
  case PCOMMA:
    evaluate_effect(c, node.left);
    if (type == VOID) {
      evaluate_effect(c, node.right);
      return {};
    }
    return convert(c, evaluate(c, node.right), type);
  case ASSIGN:
    if (is_struct_or_union(type)) break;
    return evaluate_assign(c, node, type);
  case INCREMENT:
  case DECREMENT: return evaluate_update(c, node, type);
  case SCONV:
  case ACONV:
    if (type == VOID) {
      evaluate_effect(c, node.left);
      return {};
    }
    return convert(c, evaluate(c, node.left), type);
  case PCONV:
  case ISP2CHAR: return convert(c, evaluate(c, node.left), type);
  case IDENTITY:
  case TOIEEE:
  case FRIEEE: return convert(c, evaluate(c, node.left), type);
  case PMCONV:
  case PVCONV: return evaluate_scaling(c, node, type, mark);
  case ADDRESS:
  case ARGREF: return evaluate_address(c, node, type);
  case CALL:
  case UCALL:
  case XCALL:
  case UXCALL:
  case ICALL: return call(c, index, nullptr);
  case ASSERT: return evaluate_assert(c, node, type);
  case NASSERT: return constant(0, INT); // what a statement of fact states is never evaluated
  case MEMCPY: return evaluate_copy(c, node, type);
  default:
    if (asgop_base(node.op) != ILLOP) return evaluate_update(c, node, type);
    break;
  }
  return emit_fault(c, std::string("operator ") + opcode_table[node.op].name + " (number " +
                           std::to_string(node.op) + ") as a value");
}

void evaluate_effect(Compiler &c, file::NodeIndex index) {
  const std::uint32_t mark = c.next_register;
  const file::Node &node = c.node(index);
  switch (node.op) {
  case COMMA_OP:
  case COMMA:
  case PCOMMA:
    evaluate_effect(c, node.left);
    evaluate_effect(c, node.right);
    break;
  case LOGICAL_AND:
  case LOGICAL_OR: {
    const Label end = new_label(c);
    branch(c, node.left, end, node.op == LOGICAL_OR);
    evaluate_effect(c, node.right);
    bind(c, end);
    break;
  }
  case CONDITIONAL: {
    const file::Node &arms = c.node(node.right);
    if (arms.op != ALTERNATIVES) {
      emit_fault(c, "? without its alternatives");
      break;
    }
    const Label otherwise = new_label(c);
    const Label end = new_label(c);
    branch(c, node.left, otherwise, false);
    evaluate_effect(c, arms.left);
    jump(c, Op::JUMP, end);
    bind(c, otherwise);
    evaluate_effect(c, arms.right);
    bind(c, end);
    break;
  }
  case ARASG: {
    const Place from = address_of(c, node.right);
    const std::uint16_t source = address_register(c, from);
    const Place to = place_of(c, node.left);
    emit(c, {.op = Op::COPY_BLOCK,
             .lhs = address_register(c, to),
             .rhs = source,
             .imm = (node.size < 0 ? 0 : node.size) / 8});
    break;
  }
  case STASG:
  case STCALL:
  case USTCALL: (void)block_of(c, index); break;
  default:
    if (is_struct_or_union(node_type(node))) {
      (void)block_of(c, index);
    } else {
      (void)evaluate(c, index);
    }
    break;
  }
  c.next_register = mark;
}

} // namespace velkor::run