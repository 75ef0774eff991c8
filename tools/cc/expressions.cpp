#include "cc/expressions.h"

#include "cc/places.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

namespace velkor::cc {

namespace {

NodeIndex unsupported(Unit &unit, const Expr *expression, const std::string &what) {
  report_error(unit, expression->getExprLoc(), what);
  return make_integer(unit, INT, 0);
}

// Whether an operand has an integer type that the target lacks although the result does not.
bool has_wide_operand(const Unit &unit, const Expr *expression) {
  for (const clang::Stmt *child : expression->children()) {
    const auto *operand = llvm::dyn_cast_or_null<Expr>(child);
    if (operand != nullptr && is_wide_integer(unit, operand->getType())) {
      return true;
    }
  }
  return false;
}

NodeIndex cast_value(Unit &unit, const clang::CastExpr *cast) {
  const Expr *operand = cast->getSubExpr();
  const SourceLocation where = cast->getExprLoc();
  const auto word = [&] { return node_type(unit, cast->getType(), where); };
  switch (cast->getCastKind()) {
  case clang::CK_LValueToRValue: {
    const Place place = place_of(unit, operand);
    return load(unit, place, where);
  }
  case clang::CK_NoOp:
  case clang::CK_LValueBitCast: return value_of(unit, operand);
  case clang::CK_ArrayToPointerDecay: return decayed(unit, place_of(unit, operand), where);
  case clang::CK_FunctionToPointerDecay:
    return address_of(unit, place_of(unit, operand), word(), where);
  case clang::CK_BitCast:
  case clang::CK_IntegralToPointer: return convert_pointer(unit, value_of(unit, operand), word());
  case clang::CK_NullToPointer: return make_zero(unit, word());
  case clang::CK_PointerToIntegral:
  case clang::CK_IntegralCast:
  case clang::CK_IntegralToFloating:
  case clang::CK_FloatingToIntegral:
  case clang::CK_FloatingCast:
  case clang::CK_BooleanToSignedIntegral:
    return convert_arithmetic(unit, value_of(unit, operand), word());
  case clang::CK_PointerToBoolean:
  case clang::CK_IntegralToBoolean:
  case clang::CK_FloatingToBoolean: return convert_to_bool(unit, value_of(unit, operand));
  case clang::CK_ToVoid: return effects_of(unit, operand);
  default: return unsupported(unit, cast, "this conversion cannot be expressed by the target");
  }
}

NodeIndex unary_value(Unit &unit, const clang::UnaryOperator *unary) {
  const Expr *operand = unary->getSubExpr();
  const SourceLocation where = unary->getExprLoc();
  switch (unary->getOpcode()) {
  case clang::UO_PostInc:
  case clang::UO_PostDec:
  case clang::UO_PreInc:
  case clang::UO_PreDec: return step_value(unit, unary);
  case clang::UO_AddrOf:
    return address_of(unit, place_of(unit, operand), node_type(unit, unary->getType(), where),
                      where);
  case clang::UO_Deref: return load(unit, place_of(unit, unary), where);
  case clang::UO_Plus:
  case clang::UO_Extension: return value_of(unit, operand);
  case clang::UO_Minus:
    return make_unary(unit, NEGATE, node_type(unit, unary->getType(), where),
                      value_of(unit, operand));
  case clang::UO_Not:
    return make_unary(unit, COMPLEMENT, node_type(unit, unary->getType(), where),
                      value_of(unit, operand));
  case clang::UO_LNot: return make_unary(unit, LOGICAL_NOT, INT, value_of(unit, operand));
  default: return unsupported(unit, unary, "this operator cannot be expressed by the target");
  }
}

// The opcode of a relation; words compare unsigned when their common type does.
Opcode relation_opcode(clang::BinaryOperatorKind kind, bool is_unsigned) {
  switch (kind) {
  case clang::BO_LT: return is_unsigned ? ULT : LT;
  case clang::BO_LE: return is_unsigned ? ULE : LE;
  case clang::BO_GT: return is_unsigned ? UGT : GT;
  case clang::BO_GE: return is_unsigned ? UGE : GE;
  case clang::BO_EQ: return EQ;
  default: return NE;
  }
}

NodeIndex relation_value(Unit &unit, const clang::BinaryOperator *binary) {
  const NodeIndex left = value_of(unit, binary->getLHS());
  const NodeIndex right = value_of(unit, binary->getRHS());
  const TypeWord type = type_of(unit, left);
  const bool is_unsigned = is_pointer(type) || type == UNSIGNED;
  return make_binary(unit, relation_opcode(binary->getOpcode(), is_unsigned), INT, left, right);
}

NodeIndex pointer_arithmetic(Unit &unit, const clang::BinaryOperator *binary) {
  const SourceLocation where = binary->getExprLoc();
  const NodeIndex left = value_of(unit, binary->getLHS());
  const NodeIndex right = value_of(unit, binary->getRHS());
  const bool left_is_pointer = binary->getLHS()->getType()->isPointerType();
  const QualType pointer =
      left_is_pointer ? binary->getLHS()->getType() : binary->getRHS()->getType();
  const std::int32_t step = step_in_bits(unit, pointer->getPointeeType(), where);
  if (binary->getOpcode() == clang::BO_Add) {
    return left_is_pointer ? make_pointer_step(unit, ADD, left, right, step)
                           : make_pointer_step(unit, ADD, right, left, step);
  }
  if (!binary->getRHS()->getType()->isPointerType()) {
    return make_pointer_step(unit, SUBTRACT, left, right, step);
  }
  if (step == 0) {
    return unsupported(unit, binary, "elements of no size have no distance");
  }
  const NodeIndex difference = make_binary(unit, SUBTRACT, INT, left, right);
  return make_binary(unit, PVCONV, INT, difference, make_integer(unit, INT, step));
}

NodeIndex binary_value(Unit &unit, const clang::BinaryOperator *binary) {
  const SourceLocation where = binary->getExprLoc();
  if (binary->getOpcode() == clang::BO_Assign) {
    return assignment_value(unit, binary);
  }
  if (binary->getOpcode() == clang::BO_Comma) {
    const NodeIndex left = effects_of(unit, binary->getLHS());
    const NodeIndex right = binary->getType()->isVoidType() ? effects_of(unit, binary->getRHS())
                                                            : value_of(unit, binary->getRHS());
    return make_sequence(unit, left, right);
  }
  if (binary->isLogicalOp()) {
    const NodeIndex left = value_of(unit, binary->getLHS());
    const NodeIndex right = value_of(unit, binary->getRHS());
    return make_binary(unit, binary->getOpcode() == clang::BO_LAnd ? LOGICAL_AND : LOGICAL_OR, INT,
                       left, right);
  }
  if (binary->isComparisonOp()) {
    return relation_value(unit, binary);
  }
  if (binary->isAdditiveOp() && (binary->getLHS()->getType()->isPointerType() ||
                                 binary->getRHS()->getType()->isPointerType())) {
    return pointer_arithmetic(unit, binary);
  }
  const Opcode op = arithmetic_opcode(binary->getOpcode());
  if (op == ILLOP) {
    return unsupported(unit, binary, "this operator cannot be expressed by the target");
  }
  const NodeIndex left = value_of(unit, binary->getLHS());
  NodeIndex right = value_of(unit, binary->getRHS());
  if (binary->isShiftOp()) {
    right = convert_arithmetic(unit, right, INT);
  }
  return make_binary(unit, op, node_type(unit, binary->getType(), where), left, right);
}

NodeIndex conditional_value(Unit &unit, const clang::AbstractConditionalOperator *conditional) {
  const SourceLocation where = conditional->getExprLoc();
  const bool is_void = conditional->getType()->isVoidType();
  NodeIndex condition = no_node;
  if (const auto *short_form = llvm::dyn_cast<clang::BinaryConditionalOperator>(conditional)) {
    // a ?: b names the value of a twice.
    const Expr *common = short_form->getCommon();
    const SymbolReference symbol = make_temporary(unit, common->getType(), where);
    unit.function->common_values[short_form->getOpaqueValue()] = symbol;
    condition = store(unit, place_of_symbol(unit, symbol, common->getType()),
                      value_of(unit, common), where);
    const NodeIndex test = value_of(unit, short_form->getCond());
    condition = make_sequence(unit, condition, test);
  } else {
    condition = value_of(unit, conditional->getCond());
  }
  const auto arm = [&](const Expr *expression) {
    return is_void ? effects_of(unit, expression) : value_of(unit, expression);
  };
  const NodeIndex first = arm(conditional->getTrueExpr());
  const NodeIndex second = arm(conditional->getFalseExpr());
  const std::uint16_t word = node_type(unit, conditional->getType(), where);
  return make_binary(unit, CONDITIONAL, word, condition,
                     make_binary(unit, ALTERNATIVES, word, first, second));
}

NodeIndex literal_value(Unit &unit, const Expr *expression) {
  const std::uint16_t word = node_type(unit, expression->getType(), expression->getExprLoc());
  if (const auto *integer = llvm::dyn_cast<clang::IntegerLiteral>(expression)) {
    return make_integer(unit, word,
                        static_cast<std::int64_t>(integer->getValue().getLimitedValue()));
  }
  if (const auto *character = llvm::dyn_cast<clang::CharacterLiteral>(expression)) {
    return make_integer(unit, word, static_cast<std::int32_t>(character->getValue()));
  }
  const auto *floating = llvm::cast<clang::FloatingLiteral>(expression);
  return make_floating(unit, word, floating->getValueAsApproximateDouble(),
                       expression->getExprLoc());
}

NodeIndex reference_value(Unit &unit, const clang::DeclRefExpr *expression) {
  if (const auto *enumerator = llvm::dyn_cast<clang::EnumConstantDecl>(expression->getDecl())) {
    return make_integer(unit, node_type(unit, expression->getType(), expression->getExprLoc()),
                        enumerator->getInitVal().getExtValue());
  }
  return load(unit, place_of(unit, expression), expression->getExprLoc());
}

// What clang must know by itself: sizeof, offsetof and their like.
NodeIndex known_value(Unit &unit, const Expr *expression) {
  const NodeIndex folded = folded_number(unit, expression);
  return folded != no_node
             ? folded
             : unsupported(unit, expression, "this expression is not constant on the target");
}

} // namespace

Opcode arithmetic_opcode(clang::BinaryOperatorKind kind) {
  switch (kind) {
  case clang::BO_Mul:
  case clang::BO_MulAssign: return MULTIPLY;
  case clang::BO_Div:
  case clang::BO_DivAssign: return DIVIDE;
  case clang::BO_Rem:
  case clang::BO_RemAssign: return REMAINDER;
  case clang::BO_Add:
  case clang::BO_AddAssign: return ADD;
  case clang::BO_Sub:
  case clang::BO_SubAssign: return SUBTRACT;
  case clang::BO_Shl:
  case clang::BO_ShlAssign: return SHIFT_LEFT;
  case clang::BO_Shr:
  case clang::BO_ShrAssign: return SHIFT_RIGHT;
  case clang::BO_And:
  case clang::BO_AndAssign: return BIT_AND;
  case clang::BO_Xor:
  case clang::BO_XorAssign: return BIT_XOR;
  case clang::BO_Or:
  case clang::BO_OrAssign: return BIT_OR;
  default: return ILLOP;
  }
}

NodeIndex folded_number(Unit &unit, const Expr *expression) {
  const QualType type = expression->getType();
  if (expression->isValueDependent() || !(type->isArithmeticType() || type->isEnumeralType()) ||
      is_wide_integer(unit, type)) {
    return no_node;
  }
  Expr::EvalResult result;
  if (!expression->EvaluateAsRValue(result, unit.context) || result.HasSideEffects) {
    return no_node;
  }
  const std::uint16_t word = node_type(unit, type, expression->getExprLoc());
  if (result.Val.isInt()) {
    return make_integer(unit, word, result.Val.getInt().getExtValue());
  }
  if (result.Val.isFloat()) {
    llvm::APFloat value = result.Val.getFloat();
    bool inexact = false;
    value.convert(llvm::APFloat::IEEEdouble(), llvm::APFloat::rmNearestTiesToEven, &inexact);
    return make_floating(unit, word, value.convertToDouble(), expression->getExprLoc());
  }
  return no_node;
}

NodeIndex value_of(Unit &unit, const Expr *expression) {
  expression = expression->IgnoreParens();
  if (is_wide_integer(unit, expression->getType())) {
    // Reported once for the whole expression.
    static_cast<void>(type_word(unit, expression->getType(), expression->getExprLoc()));
    return make_integer(unit, INT, 0);
  }
  if (has_wide_operand(unit, expression)) {
    // 64-bit constants are welcome where the value that they make fits the target.
    if (const NodeIndex folded = folded_number(unit, expression); folded != no_node) {
      return folded;
    }
  }
  switch (expression->getStmtClass()) {
  case clang::Stmt::IntegerLiteralClass:
  case clang::Stmt::CharacterLiteralClass:
  case clang::Stmt::FloatingLiteralClass: return literal_value(unit, expression);
  case clang::Stmt::ConstantExprClass:
    return value_of(unit, llvm::cast<clang::ConstantExpr>(expression)->getSubExpr());
  case clang::Stmt::ImplicitCastExprClass:
  case clang::Stmt::CStyleCastExprClass:
    return cast_value(unit, llvm::cast<clang::CastExpr>(expression));
  case clang::Stmt::UnaryOperatorClass:
    return unary_value(unit, llvm::cast<clang::UnaryOperator>(expression));
  case clang::Stmt::BinaryOperatorClass:
    return binary_value(unit, llvm::cast<clang::BinaryOperator>(expression));
  case clang::Stmt::CompoundAssignOperatorClass:
    return compound_assignment_value(unit, llvm::cast<clang::CompoundAssignOperator>(expression));
  case clang::Stmt::ConditionalOperatorClass:
  case clang::Stmt::BinaryConditionalOperatorClass:
    return conditional_value(unit, llvm::cast<clang::AbstractConditionalOperator>(expression));
  case clang::Stmt::CallExprClass: return call_value(unit, llvm::cast<clang::CallExpr>(expression));
  case clang::Stmt::VAArgExprClass:
    return va_arg_value(unit, llvm::cast<clang::VAArgExpr>(expression));
  case clang::Stmt::DeclRefExprClass:
    return reference_value(unit, llvm::cast<clang::DeclRefExpr>(expression));
  case clang::Stmt::MemberExprClass:
  case clang::Stmt::ArraySubscriptExprClass:
  case clang::Stmt::CompoundLiteralExprClass:
  case clang::Stmt::OpaqueValueExprClass:
    return load(unit, place_of(unit, expression), expression->getExprLoc());
  case clang::Stmt::UnaryExprOrTypeTraitExprClass:
  case clang::Stmt::OffsetOfExprClass:
  case clang::Stmt::TypeTraitExprClass: return known_value(unit, expression);
  case clang::Stmt::ImplicitValueInitExprClass:
    return make_zero(unit, node_type(unit, expression->getType(), expression->getExprLoc()));
  case clang::Stmt::InitListExprClass: {
    const auto *list = llvm::cast<clang::InitListExpr>(expression);
    return list->getNumInits() == 1
               ? value_of(unit, list->getInit(0))
               : make_zero(unit, node_type(unit, list->getType(), list->getExprLoc()));
  }
  case clang::Stmt::AddrLabelExprClass:
    return unsupported(unit, expression, "labels have no addresses on the target");
  case clang::Stmt::StmtExprClass:
    return unsupported(unit, expression, "the target has no statement expressions");
  default:
    return unsupported(unit, expression,
                       std::string("this expression (") + expression->getStmtClassName() +
                           ") cannot be expressed by the target");
  }
}

NodeIndex effects_of(Unit &unit, const Expr *expression) {
  expression = expression->IgnoreParens();
  if (const auto *cast = llvm::dyn_cast<clang::CastExpr>(expression);
      cast != nullptr && cast->getCastKind() == clang::CK_ToVoid) {
    return effects_of(unit, cast->getSubExpr());
  }
  if (const auto *unary = llvm::dyn_cast<clang::UnaryOperator>(expression);
      unary != nullptr && unary->getOpcode() == clang::UO_Deref &&
      (unary->getType()->isVoidType() || unary->getType()->isFunctionType())) {
    return value_of(unit, unary->getSubExpr());
  }
  if (expression->getType()->isArrayType() || expression->getType()->isFunctionType()) {
    // Nothing is read: only what the operands do counts.
    return place_of(unit, expression).node;
  }
  return value_of(unit, expression);
}

} // namespace velkor::cc
