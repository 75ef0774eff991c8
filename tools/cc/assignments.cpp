// Assignments in all their forms.
#include "cc/expressions.h"
#include "cc/places.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

namespace velkor::cc {

namespace {

Opcode assigning_opcode(Opcode plain) {
  for (int op = 0; op < ILLOP; ++op) {
    if (asgop_base(static_cast<std::uint8_t>(op)) == plain) {
      return static_cast<Opcode>(op);
    }
  }
  return ILLOP;
}

bool is_simple_target(const Expr *target) {
  target = target->IgnoreParens();
  const auto *name = llvm::dyn_cast<clang::DeclRefExpr>(target);
  return name != nullptr && !name->getType().isVolatileQualified();
}

// Whether target op= value must be written out as target = target op value, because the assigning
// opcode would compute in another type than C does.
bool must_expand(const clang::CompoundAssignOperator *assignment) {
  const Expr *target = assignment->getLHS();
  const QualType type = target->getType();
  if (type->isBooleanType()) {
    return true;
  }
  const QualType computation = assignment->getComputationLHSType();
  if (computation->isRealFloatingType() && !type->isRealFloatingType()) {
    return is_simple_target(target) || target->refersToBitField();
  }
  // A narrow unsigned field is computed as int, but has an unsigned node.
  const clang::FieldDecl *field = target->getSourceBitField();
  const Opcode op = arithmetic_opcode(assignment->getOpcode());
  return field != nullptr && bit_field_type(field) == UNSIGNED &&
         computation->isSignedIntegerType() && (op == DIVIDE || op == REMAINDER);
}

NodeIndex converted_result(Unit &unit, NodeIndex value, QualType type, SourceLocation where) {
  return type->isBooleanType() ? convert_to_bool(unit, value)
                               : convert_arithmetic(unit, value, node_type(unit, type, where));
}

NodeIndex expanded_assignment(Unit &unit, const clang::CompoundAssignOperator *assignment) {
  const SourceLocation where = assignment->getExprLoc();
  const RepeatedPlace target = repeat_place(unit, assignment->getLHS());
  const std::uint16_t left_type = node_type(unit, assignment->getComputationLHSType(), where);
  const std::uint16_t result_type = node_type(unit, assignment->getComputationResultType(), where);
  const NodeIndex old =
      convert_arithmetic(unit, load(unit, repeated_place(unit, target, where), where), left_type);
  NodeIndex operand = value_of(unit, assignment->getRHS());
  if (assignment->isShiftAssignOp()) {
    operand = convert_arithmetic(unit, operand, INT);
  }
  const Opcode op = arithmetic_opcode(assignment->getOpcode());
  const NodeIndex result = converted_result(unit, make_binary(unit, op, result_type, old, operand),
                                            assignment->getType(), where);
  const NodeIndex stored = store(unit, repeated_place(unit, target, where), result, where);
  return make_sequence(unit, target.setup, stored);
}

// ++ and -- of a _Bool, which neither carry nor borrow.
NodeIndex bool_step(Unit &unit, const clang::UnaryOperator *step) {
  const SourceLocation where = step->getExprLoc();
  const QualType type = step->getSubExpr()->getType();
  const RepeatedPlace target = repeat_place(unit, step->getSubExpr());
  NodeIndex sequence = target.setup;
  SymbolReference old{};
  if (step->isPostfix()) {
    old = make_temporary(unit, type, where);
    const NodeIndex value = load(unit, repeated_place(unit, target, where), where);
    const QualType plain = type.getUnqualifiedType();
    sequence =
        make_sequence(unit, sequence, store(unit, place_of_symbol(unit, old, plain), value, where));
  }
  NodeIndex result = no_node;
  if (step->isIncrementOp()) {
    result = make_integer(unit, UNSIGNED_CHAR, 1);
  } else {
    const NodeIndex value = load(unit, repeated_place(unit, target, where), where);
    result = convert_to_bool(unit, make_unary(unit, LOGICAL_NOT, INT, value));
  }
  sequence = make_sequence(unit, sequence,
                           store(unit, repeated_place(unit, target, where), result, where));
  return step->isPostfix() ? make_sequence(unit, sequence, make_name(unit, old)) : sequence;
}

} // namespace

NodeIndex assignment_value(Unit &unit, const clang::BinaryOperator *expression) {
  const Place target = place_of(unit, expression->getLHS());
  const NodeIndex value = value_of(unit, expression->getRHS());
  return store(unit, target, value, expression->getExprLoc());
}

NodeIndex compound_assignment_value(Unit &unit, const clang::CompoundAssignOperator *expression) {
  const SourceLocation where = expression->getExprLoc();
  if (must_expand(expression)) {
    return expanded_assignment(unit, expression);
  }
  const Place target = place_of(unit, expression->getLHS());
  NodeIndex operand = value_of(unit, expression->getRHS());
  const Opcode op = assigning_opcode(arithmetic_opcode(expression->getOpcode()));
  const std::uint16_t word = type_of(unit, target.node);
  if (const auto *pointer = expression->getType()->getAs<clang::PointerType>()) {
    const std::int32_t bits = step_in_bits(unit, pointer->getPointeeType(), where);
    return make_pointer_step(unit, op, target.node, operand, bits);
  }
  if (expression->isShiftAssignOp()) {
    operand = convert_arithmetic(unit, operand, INT);
  }
  const NodeIndex result = make_binary(unit, op, word, target.node, operand);
  return convert_arithmetic(unit, result, node_type(unit, expression->getType(), where));
}

NodeIndex step_value(Unit &unit, const clang::UnaryOperator *expression) {
  const SourceLocation where = expression->getExprLoc();
  if (expression->getType()->isBooleanType()) {
    return bool_step(unit, expression);
  }
  const Place target = place_of(unit, expression->getSubExpr());
  const std::uint16_t word = type_of(unit, target.node);
  NodeIndex step = no_node;
  if (const auto *pointer = target.type->getAs<clang::PointerType>()) {
    step = make_integer(unit, INT, step_in_bits(unit, pointer->getPointeeType(), where) / 8);
  } else if (is_floating(word)) {
    step = make_floating(unit, word, 1, where);
  } else {
    step = make_integer(unit, word, 1);
  }
  Opcode op = expression->isIncrementOp() ? ASG_ADD : ASG_SUBTRACT;
  if (expression->isPostfix()) {
    op = expression->isIncrementOp() ? INCREMENT : DECREMENT;
  }
  const NodeIndex result = make_binary(unit, op, word, target.node, step);
  return convert_arithmetic(unit, result, node_type(unit, target.type, where));
}

} // namespace velkor::cc
