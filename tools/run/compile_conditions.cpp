// Relations, and conditions that decide a jump.
#include "run/compiler.h"

#include <utility>

namespace velkor::run {

namespace {

struct Relation {
  Opcode op;
  int plain;       // step from SET_EQ on words compared signed
  int as_unsigned; // on words compared unsigned
  int real;        // step from SET_EQ_REAL
};
constexpr Relation relations[] = {
    {EQ, 0, 0, 0}, {NE, 1, 1, 1},  {LT, 2, 6, 2},  {LE, 3, 7, 3},  {GT, 4, 8, 4},
    {GE, 5, 9, 5}, {ULT, 6, 6, 2}, {ULE, 7, 7, 3}, {UGT, 8, 8, 4}, {UGE, 9, 9, 5},
};
// Steps of the logical opposite, and of the relation with its operands exchanged.
constexpr int opposite_step[] = {1, 0, 5, 4, 3, 2, 9, 8, 7, 6};
constexpr int exchanged_step[] = {0, 1, 4, 5, 2, 3, 8, 9, 6, 7};
constexpr int relation_count = 10;

const Relation *relation_of(std::uint8_t op) {
  for (const Relation &relation : relations) {
    if (relation.op == op) return &relation;
  }
  return nullptr;
}

// Both operands of a relation, brought to a common form.
struct Comparison {
  Value a;
  Value b;
  bool real = false;
  int step = 0; // from SET_EQ, or from SET_EQ_REAL if real
};

Comparison compare(Compiler &c, const Relation &relation, const file::Node &node) {
  Comparison comparison;
  comparison.a = evaluate(c, node.left);
  comparison.b = evaluate(c, node.right);
  if (comparison.a.kind == Value::NOTHING || comparison.b.kind == Value::NOTHING) {
    comparison.a = comparison.b = emit_fault(c, "a comparison of no values");
  }
  const TypeWord type = balanced(comparison.a.type, comparison.b.type);
  if (is_real(comparison.a.type) || is_real(comparison.b.type)) {
    const TypeWord real_type = is_real(type) ? type : static_cast<TypeWord>(DOUBLE);
    comparison.a = convert(c, comparison.a, real_type);
    comparison.b = convert(c, comparison.b, real_type);
    comparison.real = true;
    comparison.step = relation.real;
    return comparison;
  }
  comparison.step = is_unsigned_word(type) ? relation.as_unsigned : relation.plain;
  if (comparison.a.kind == Value::CONSTANT && comparison.b.kind != Value::CONSTANT) {
    std::swap(comparison.a, comparison.b);
    comparison.step = exchanged_step[comparison.step];
  }
  return comparison;
}

void branch_on_relation(Compiler &c, const Relation &relation, const file::Node &node, Label label,
                        bool when) {
  const Comparison comparison = compare(c, relation, node);
  const std::uint16_t a = in_register(c, comparison.a);
  if (comparison.real) {
    // The opposite of < is not >= where a NaN takes part, so the truth value decides.
    emit(c, {.op = Op::SET_EQ_REAL + comparison.step,
             .dst = a,
             .lhs = a,
             .rhs = in_register(c, comparison.b)});
    jump(c, when ? Op::JUMP_IF_NONZERO : Op::JUMP_IF_ZERO, label, a);
    return;
  }
  const int step = when ? comparison.step : opposite_step[comparison.step];
  if (comparison.b.kind == Value::CONSTANT) {
    jump(c, Op::JUMP_IF_EQ + (step + relation_count), label, a, 0,
         static_cast<std::int32_t>(comparison.b.word));
  } else {
    jump(c, Op::JUMP_IF_EQ + step, label, a, comparison.b.reg);
  }
}

} // namespace

Value evaluate_relation(Compiler &c, const file::Node &node) {
  const std::uint32_t mark = c.next_register;
  const Comparison comparison = compare(c, *relation_of(node.op), node);
  Instruction instruction{.lhs = in_register(c, comparison.a)};
  if (comparison.real) {
    instruction.op = Op::SET_EQ_REAL + comparison.step;
    instruction.rhs = in_register(c, comparison.b);
  } else if (comparison.b.kind == Value::CONSTANT) {
    instruction.op = Op::SET_EQ_IMM + comparison.step;
    instruction.imm = static_cast<std::int32_t>(comparison.b.word);
  } else {
    instruction.op = Op::SET_EQ + comparison.step;
    instruction.rhs = comparison.b.reg;
  }
  c.next_register = mark;
  instruction.dst = new_register(c);
  emit(c, instruction);
  return {.kind = Value::REGISTER, .reg = instruction.dst, .type = INT};
}

void branch(Compiler &c, file::NodeIndex condition, Label label, bool when) {
  const std::uint32_t mark = c.next_register;
  const file::Node &node = c.node(condition);
  if (const Relation *relation = relation_of(node.op)) {
    branch_on_relation(c, *relation, node, label, when);
  } else if (node.op == LOGICAL_NOT) {
    branch(c, node.left, label, !when);
  } else if (node.op == IDENTITY) {
    branch(c, node.left, label, when);
  } else if (node.op == LOGICAL_AND || node.op == LOGICAL_OR) {
    // The first operand alone settles && when it is false, || when it is true.
    const bool settling = node.op == LOGICAL_OR;
    if (settling == when) {
      branch(c, node.left, label, when);
      branch(c, node.right, label, when);
    } else {
      const Label past = new_label(c);
      branch(c, node.left, past, settling);
      branch(c, node.right, label, when);
      bind(c, past);
    }
  } else if (node.op == COMMA_OP) {
    evaluate_effect(c, node.left);
    branch(c, node.right, label, when);
  } else {
    const Value value = evaluate(c, condition);
    if (value.kind == Value::CONSTANT) {
      if ((value.word != 0) == when) jump(c, Op::JUMP, label);
    } else if (value.kind == Value::NOTHING) {
      emit_fault(c, "a condition without a value");
    } else {
      if (is_real(value.type)) emit(c, {.op = Op::REAL_TRUTH, .dst = value.reg, .lhs = value.reg});
      jump(c, when ? Op::JUMP_IF_NONZERO : Op::JUMP_IF_ZERO, label, value.reg);
    }
  }
  c.next_register = mark;
}

} // namespace velkor::run
