// Calls, the built-in functions, and the arguments behind "...".
#include "cc/expressions.h"
#include "cc/places.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

#include "clang/Basic/Builtins.h"

namespace velkor::cc {

namespace {

constexpr llvm::StringLiteral assertion_name = "__velkor_assert";

// Bytes that an argument of this size takes in the argument area.
std::int32_t argument_bytes(std::int32_t size_bits) {
  return (size_bits + 31) / 32 * 4;
}

std::int16_t record_tag(Unit &unit, QualType type) {
  return static_cast<std::int16_t>(tag_slot(unit, type->getAs<clang::RecordType>()->getDecl()));
}

NodeIndex argument_value(Unit &unit, const Expr *argument) {
  const NodeIndex value = value_of(unit, argument);
  if (!argument->getType()->isRecordType()) {
    return value;
  }
  const NodeIndex copied = make_unary(unit, STARG, type_of(unit, value), value);
  unit.file.nodes[copied].index = record_tag(unit, argument->getType());
  return copied;
}

// A call of the value behind callee with all of the C call's arguments.
NodeIndex plain_call(Unit &unit, const clang::CallExpr *call, NodeIndex callee) {
  NodeIndex arguments = no_node;
  for (const Expr *argument : call->arguments()) {
    const NodeIndex value = argument_value(unit, argument);
    arguments = arguments == no_node ? value : make_binary(unit, COMMA, VOID, arguments, value);
  }
  const QualType type = call->getType();
  const std::uint16_t word = node_type(unit, type, call->getExprLoc());
  const bool is_record = type->isRecordType();
  NodeIndex result = no_node;
  if (arguments == no_node) {
    result = make_unary(unit, is_record ? USTCALL : UCALL, word, callee);
  } else {
    result = make_binary(unit, is_record ? STCALL : CALL, word, callee, arguments);
  }
  if (is_record) {
    unit.file.nodes[result].index = record_tag(unit, type);
  }
  return result;
}

NodeIndex function_address(Unit &unit, const clang::FunctionDecl *function, SourceLocation where) {
  const SymbolReference symbol = slot_reference(unit, function_slot(unit, function));
  return address_of(unit, place_of_symbol(unit, symbol, function->getType()),
                    pointer_to(symbol.stype), where);
}

NodeIndex assertion(Unit &unit, const clang::CallExpr *call) {
  const clang::StringLiteral *text =
      call->getNumArgs() == 2
          ? llvm::dyn_cast<clang::StringLiteral>(call->getArg(1)->IgnoreParenImpCasts())
          : nullptr;
  if (text == nullptr || !call->getArg(0)->getType()->isScalarType()) {
    report_error(unit, call->getExprLoc(),
                 "the built-in assertion takes a scalar and a string literal");
    return make_integer(unit, INT, 0);
  }
  std::string bytes = text->getString().substr(0, max_literal_bytes - 1).str();
  bytes.push_back('\0');
  const NodeIndex condition = value_of(unit, call->getArg(0));
  return make_unary(unit, ASSERT, INT,
                    make_binary(unit, COMMA, INT, condition, make_text(unit, std::move(bytes))));
}

// The type word of va_list.
constexpr TypeWord argument_pointer = pointer_to(CHAR);

NodeIndex va_start_value(Unit &unit, const clang::CallExpr *call) {
  const SourceLocation where = call->getExprLoc();
  const clang::FunctionDecl *decl = unit.function->decl;
  if (!decl->isVariadic() || decl->param_empty()) {
    report_error(unit, where, "va_start needs a function with a named parameter before '...'");
    return make_integer(unit, INT, 0);
  }
  const std::int16_t index = static_cast<std::int16_t>(decl->getNumParams() - 1);
  const file::Symbol &last = unit.function->parameters[static_cast<std::size_t>(index)];
  const SymbolReference symbol{1, index, last.stype, last.squal};
  const std::int32_t bytes = argument_bytes(last.size);
  const Place target = place_of(unit, call->getArg(0)->IgnoreParenImpCasts());
  const NodeIndex address = convert_pointer(
      unit, make_unary(unit, ARGREF, pointer_to(symbol.stype), make_name(unit, symbol)),
      argument_pointer);
  const NodeIndex first = make_pointer_step(unit, ADD, address, make_integer(unit, INT, bytes), 8);
  return store(unit, target, first, where);
}

NodeIndex va_copy_value(Unit &unit, const clang::CallExpr *call) {
  const SourceLocation where = call->getExprLoc();
  const Place target = place_of(unit, call->getArg(0)->IgnoreParenImpCasts());
  const Place source = place_of(unit, call->getArg(1)->IgnoreParenImpCasts());
  return store(unit, target, load(unit, source, where), where);
}

NodeIndex assumption(Unit &unit, const clang::CallExpr *call) {
  const Expr *condition = call->getArg(0)->IgnoreParens();
  const auto *cast = llvm::dyn_cast<clang::ImplicitCastExpr>(condition);
  if (cast != nullptr && cast->getType()->isBooleanType()) {
    condition = cast->getSubExpr();
  }
  return make_unary(unit, NASSERT, INT, value_of(unit, condition));
}

// The tree of a call of one of clang's own functions, or no_node when function is none of them
// (or the built-in name of a library routine).
NodeIndex builtin_value(Unit &unit, const clang::CallExpr *call,
                        const clang::FunctionDecl *function) {
  const SourceLocation where = call->getExprLoc();
  const unsigned id = function->getBuiltinID();
  switch (id) {
  case 0: return no_node;
  case clang::Builtin::BI__builtin_va_start: return va_start_value(unit, call);
  case clang::Builtin::BI__builtin_va_copy: return va_copy_value(unit, call);
  case clang::Builtin::BI__builtin_va_end:
    return effects_of(unit, call->getArg(0)->IgnoreParenImpCasts());
  case clang::Builtin::BI__builtin_assume: return assumption(unit, call);
  case clang::Builtin::BI__builtin_unreachable: return make_integer(unit, INT, 0);
  case clang::Builtin::BI__builtin_expect: {
    const NodeIndex value = value_of(unit, call->getArg(0));
    const NodeIndex expected = value_of(unit, call->getArg(1));
    return call->getArg(1)->HasSideEffects(unit.context) ? make_sequence(unit, expected, value)
                                                         : value;
  }
  default: break;
  }
  if (const NodeIndex folded = folded_number(unit, call); folded != no_node) {
    return folded;
  }
  if (id == clang::Builtin::BI__builtin_constant_p) {
    return make_integer(unit, INT, 0);
  }
  if (id == clang::Builtin::BI__builtin_trap ||
      (!unit.context.BuiltinInfo.isLibFunction(id) &&
       !unit.context.BuiltinInfo.isPredefinedLibFunction(id))) {
    report_error(unit, where,
                 "built-in function '" + function->getName().str() +
                     "' cannot be expressed by the target");
    return make_integer(unit, INT, 0);
  }
  return no_node;
}

} // namespace

NodeIndex call_value(Unit &unit, const clang::CallExpr *expression) {
  const SourceLocation where = expression->getExprLoc();
  const clang::FunctionDecl *function = expression->getDirectCallee();
  if (function == nullptr) {
    return plain_call(unit, expression, value_of(unit, expression->getCallee()));
  }
  if (function->getName() == assertion_name) {
    return assertion(unit, expression);
  }
  const NodeIndex builtin = builtin_value(unit, expression, function);
  if (builtin != no_node) {
    return builtin;
  }
  if (function->getBuiltinID() != 0) {
    return plain_call(unit, expression, function_address(unit, function, where));
  }
  return plain_call(unit, expression, value_of(unit, expression->getCallee()));
}

NodeIndex va_arg_value(Unit &unit, const clang::VAArgExpr *expression) {
  const SourceLocation where = expression->getExprLoc();
  const QualType type = expression->getType();
  const std::int32_t bytes = argument_bytes(size_in_bits(unit, type, where));
  const Expr *list = expression->getSubExpr()->IgnoreParenImpCasts();
  const NodeIndex next = make_binary(unit, ASG_ADD, argument_pointer, place_of(unit, list).node,
                                     make_integer(unit, INT, bytes));
  const NodeIndex address =
      make_pointer_step(unit, SUBTRACT, next, make_integer(unit, INT, bytes), 8);
  const TypeWord pointer = pointer_to(type_word(unit, type, where));
  const Place argument =
      pointed_at(unit, convert_pointer(unit, address, pointer), type, false, where);
  return load(unit, argument, where);
}

} // namespace velkor::cc
