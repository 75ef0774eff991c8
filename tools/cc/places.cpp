#include "cc/places.h"

#include "cc/expressions.h"
#include "cc/initializers.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

namespace velkor::cc {

namespace {

std::uint8_t access_qualifiers(QualType type, bool constant) {
  if (type.isVolatileQualified()) {
    return 2;
  }
  return constant ? 1 : 0;
}

bool is_aggregate_address(QualType type) {
  return type->isArrayType() || type->isFunctionType();
}

// A struct value in a temporary, so that it has an address.
Place in_temporary(Unit &unit, const Place &value, NodeIndex &setup, SourceLocation where) {
  const SymbolReference symbol = make_temporary(unit, value.type, where);
  const Place place = place_of_symbol(unit, symbol, value.type.getUnqualifiedType());
  setup = store(unit, place, value.node, where);
  return place_of_symbol(unit, symbol, value.type.getUnqualifiedType());
}

Place subscripted(Unit &unit, const clang::ArraySubscriptExpr *expression) {
  const SourceLocation where = expression->getExprLoc();
  const NodeIndex base = value_of(unit, expression->getBase());
  const NodeIndex index = value_of(unit, expression->getIdx());
  const std::int32_t step = step_in_bits(unit, expression->getType(), where);
  const NodeIndex address = make_pointer_step(unit, ADD, base, index, step);
  return pointed_at(unit, address, expression->getType(), lies_in_constant(expression), where);
}

Place member(Unit &unit, const clang::MemberExpr *expression) {
  const SourceLocation where = expression->getExprLoc();
  const auto *field = llvm::dyn_cast<clang::FieldDecl>(expression->getMemberDecl());
  if (field == nullptr) {
    report_error(unit, where, "this member cannot be expressed by the target");
    return {make_integer(unit, INT, 0), false, false, unit.context.IntTy, nullptr};
  }
  QualType type = expression->getType();
  if (!expression->isArrow()) {
    Place object = place_of(unit, expression->getBase());
    const bool constant = lies_in_constant(expression);
    if (object.is_value && type->isArrayType()) {
      // An array member is used through its address, and a value has none.
      NodeIndex setup = no_node;
      object = in_temporary(unit, object, setup, where);
      const Place array = member_of(unit, object, field, type, false);
      const NodeIndex address = make_sequence(unit, setup, decayed(unit, array, where));
      return {address, true, false, type, nullptr};
    }
    Place result = member_of(unit, object, field, type, constant);
    result.is_value = object.is_value && type->isRecordType();
    return result;
  }
  Place result;
  result.type = type;
  result.bit_field = field->isBitField() ? field : nullptr;
  const std::uint16_t word =
      field->isBitField() ? bit_field_type(field) : node_type(unit, type, where);
  const NodeIndex pointer = value_of(unit, expression->getBase());
  const NodeIndex name = make_member_name(unit, field);
  result.node = make_binary(unit, ARROW, word, pointer, name);
  unit.file.nodes[result.node].qual = access_qualifiers(type, false);
  return result;
}

// A compound literal: its object, set each time that the expression is evaluated.
Place compound_literal(Unit &unit, const clang::CompoundLiteralExpr *literal) {
  const SourceLocation where = literal->getExprLoc();
  const QualType type = literal->getType();
  if (literal->isFileScope()) {
    return place_of_symbol(unit, slot_reference(unit, compound_literal_slot(unit, literal)), type);
  }
  const SymbolReference symbol = make_temporary(unit, type, where);
  NodeIndex setup = no_node;
  for (const NodeIndex tree :
       initializing_trees(unit, symbol, type, literal->getInitializer(), where)) {
    setup = make_sequence(unit, setup, tree);
  }
  const Place object = place_of_symbol(unit, symbol, type);
  if (setup == no_node) {
    return object;
  }
  if (type->isArrayType()) {
    return {make_sequence(unit, setup, decayed(unit, object, where)), true, false, type, nullptr};
  }
  const TypeWord pointer = pointer_to(type_word(unit, type, where));
  const NodeIndex address = make_sequence(unit, setup, address_of(unit, object, pointer, where));
  return pointed_at(unit, address, type, false, where);
}

Place referenced(Unit &unit, const clang::DeclRefExpr *expression) {
  if (const auto *function = llvm::dyn_cast<clang::FunctionDecl>(expression->getDecl())) {
    return place_of_symbol(unit, slot_reference(unit, function_slot(unit, function)),
                           function->getType());
  }
  if (const auto *variable = llvm::dyn_cast<clang::VarDecl>(expression->getDecl())) {
    return place_of_symbol(unit, variable_reference(unit, variable), expression->getType());
  }
  report_error(unit, expression->getExprLoc(), "this name cannot be expressed by the target");
  return {make_integer(unit, INT, 0), false, false, expression->getType(), nullptr};
}

Place string_place(Unit &unit, const clang::StringLiteral *literal) {
  return {literal_address(unit, literal), true, false, literal->getType(), nullptr};
}

bool is_plain_object(const Expr *expression) {
  expression = expression->IgnoreParens();
  if (const auto *name = llvm::dyn_cast<clang::DeclRefExpr>(expression)) {
    return llvm::isa<clang::VarDecl>(name->getDecl());
  }
  const auto *part = llvm::dyn_cast<clang::MemberExpr>(expression);
  return part != nullptr && !part->isArrow() && is_plain_object(part->getBase());
}

} // namespace

Place place_of_symbol(Unit &unit, const SymbolReference &symbol, QualType type) {
  return {make_name(unit, symbol), false, false, type, nullptr};
}

Place pointed_at(Unit &unit, NodeIndex pointer, QualType type, bool constant,
                 SourceLocation where) {
  if (is_aggregate_address(type)) {
    return {pointer, true, false, type, nullptr};
  }
  file::Node node;
  node.op = DEREF;
  node.type = node_type(unit, type, where);
  node.qual = access_qualifiers(type, constant);
  node.size = size_in_bits(unit, type, where);
  node.left = pointer;
  return {unit.file.add(std::move(node)), false, false, type, nullptr};
}

Place member_of(Unit &unit, const Place &object, const clang::FieldDecl *field, QualType type,
                bool constant) {
  Place result;
  result.type = type;
  result.bit_field = field->isBitField() ? field : nullptr;
  const std::uint16_t word =
      field->isBitField() ? bit_field_type(field) : node_type(unit, type, field->getLocation());
  const NodeIndex name = make_member_name(unit, field);
  result.node = make_binary(unit, MEMBER, word, object.node, name);
  unit.file.nodes[result.node].qual = access_qualifiers(type, constant);
  return result;
}

Place element_of(Unit &unit, const Place &array, std::int64_t index, SourceLocation where) {
  QualType element = unit.context.getAsArrayType(array.type)->getElementType();
  if (array.type.isVolatileQualified()) {
    element.addVolatile();
  }
  NodeIndex address = decayed(unit, array, where);
  if (index != 0) {
    address = make_pointer_step(unit, ADD, address, make_integer(unit, INT, index),
                                step_in_bits(unit, element, where));
  }
  return pointed_at(unit, address, element, false, where);
}

NodeIndex decayed(Unit &unit, const Place &array, SourceLocation where) {
  const QualType element = unit.context.getAsArrayType(array.type)->getElementType();
  return address_of(unit, array, pointer_to(type_word(unit, element, where)), where);
}

NodeIndex address_of(Unit &unit, const Place &place, TypeWord type, SourceLocation where) {
  if (place.is_address) {
    return convert_pointer(unit, place.node, type);
  }
  if (place.is_value) {
    NodeIndex setup = no_node;
    const Place object = in_temporary(unit, place, setup, where);
    return make_sequence(unit, setup, address_of(unit, object, type, where));
  }
  if (unit.file.nodes[place.node].op == DEREF) {
    return convert_pointer(unit, unit.file.nodes[place.node].left, type);
  }
  TypeWord own = pointer_to(type_of(unit, place.node));
  if (const auto *array = unit.context.getAsArrayType(place.type)) {
    own = pointer_to(type_word(unit, array->getElementType(), where));
  }
  return convert_pointer(unit, make_unary(unit, ADDRESS, own, place.node), type);
}

NodeIndex load(Unit &unit, const Place &place, SourceLocation where) {
  if (place.bit_field != nullptr) {
    return convert_arithmetic(unit, place.node, node_type(unit, place.type, where));
  }
  return place.node;
}

NodeIndex store(Unit &unit, const Place &place, NodeIndex value, SourceLocation where) {
  if (place.type->isRecordType()) {
    const std::uint16_t word = node_type(unit, place.type, where);
    const int tag = tag_slot(unit, place.type->getAs<clang::RecordType>()->getDecl());
    const NodeIndex result = make_binary(unit, STASG, word, place.node, value);
    unit.file.nodes[result].index = static_cast<std::int16_t>(tag);
    return result;
  }
  const std::uint16_t word = type_of(unit, place.node);
  if (place.bit_field == nullptr) {
    return make_binary(unit, ASSIGN, word, place.node, value);
  }
  const NodeIndex stored =
      make_binary(unit, ASSIGN, word, place.node, convert_arithmetic(unit, value, word));
  return convert_arithmetic(unit, stored, node_type(unit, place.type, where));
}

bool lies_in_constant(const Expr *expression) {
  expression = expression->IgnoreParens();
  if (const auto *name = llvm::dyn_cast<clang::DeclRefExpr>(expression)) {
    const auto *variable = llvm::dyn_cast<clang::VarDecl>(name->getDecl());
    return variable != nullptr && is_constant_object(variable);
  }
  if (const auto *part = llvm::dyn_cast<clang::MemberExpr>(expression)) {
    return !part->isArrow() && lies_in_constant(part->getBase());
  }
  if (const auto *element = llvm::dyn_cast<clang::ArraySubscriptExpr>(expression)) {
    const auto *decay = llvm::dyn_cast<clang::ImplicitCastExpr>(element->getBase()->IgnoreParens());
    return decay != nullptr && decay->getCastKind() == clang::CK_ArrayToPointerDecay &&
           lies_in_constant(decay->getSubExpr());
  }
  return llvm::isa<clang::StringLiteral>(expression);
}

Place place_of(Unit &unit, const Expr *expression) {
  const SourceLocation where = expression->getExprLoc();
  expression = expression->IgnoreParens();
  if (const auto *name = llvm::dyn_cast<clang::DeclRefExpr>(expression)) {
    return referenced(unit, name);
  }
  if (const auto *unary = llvm::dyn_cast<clang::UnaryOperator>(expression)) {
    if (unary->getOpcode() == clang::UO_Deref) {
      const NodeIndex pointer = value_of(unit, unary->getSubExpr());
      return pointed_at(unit, pointer, unary->getType(), false, where);
    }
  }
  if (const auto *element = llvm::dyn_cast<clang::ArraySubscriptExpr>(expression)) {
    return subscripted(unit, element);
  }
  if (const auto *part = llvm::dyn_cast<clang::MemberExpr>(expression)) {
    return member(unit, part);
  }
  if (const auto *literal = llvm::dyn_cast<clang::CompoundLiteralExpr>(expression)) {
    return compound_literal(unit, literal);
  }
  if (const auto *literal = llvm::dyn_cast<clang::StringLiteral>(expression)) {
    return string_place(unit, literal);
  }
  if (const auto *predefined = llvm::dyn_cast<clang::PredefinedExpr>(expression)) {
    return string_place(unit, predefined->getFunctionName());
  }
  if (const auto *cast = llvm::dyn_cast<clang::CastExpr>(expression)) {
    if (cast->getCastKind() == clang::CK_NoOp || cast->getCastKind() == clang::CK_LValueToRValue) {
      Place place = place_of(unit, cast->getSubExpr());
      // The value of a stored struct is a copy; its members can be read in place all the same.
      place.type = cast->getType();
      return place;
    }
  }
  if (const auto *common = llvm::dyn_cast<clang::OpaqueValueExpr>(expression)) {
    if (const auto found = unit.function->common_values.find(common);
        found != unit.function->common_values.end()) {
      return place_of_symbol(unit, found->second, common->getType());
    }
  }
  if (expression->getType()->isRecordType()) {
    return {value_of(unit, expression), false, true, expression->getType(), nullptr};
  }
  report_error(unit, where, "this lvalue cannot be expressed by the target");
  return {make_integer(unit, INT, 0), false, false, unit.context.IntTy, nullptr};
}

RepeatedPlace repeat_place(Unit &unit, const Expr *expression) {
  const SourceLocation where = expression->getExprLoc();
  RepeatedPlace repeated;
  repeated.expression = expression;
  if (is_plain_object(expression)) {
    return repeated;
  }
  expression = expression->IgnoreParens();
  const clang::MemberExpr *part = llvm::dyn_cast<clang::MemberExpr>(expression);
  while (part != nullptr && !part->isArrow()) {
    repeated.members.insert(repeated.members.begin(), part);
    expression = part->getBase()->IgnoreParens();
    part = llvm::dyn_cast<clang::MemberExpr>(expression);
  }
  NodeIndex address = no_node;
  QualType pointer;
  if (part != nullptr) {
    repeated.members.insert(repeated.members.begin(), part);
    pointer = part->getBase()->getType();
    repeated.type = pointer->getPointeeType();
    address = value_of(unit, part->getBase());
  } else {
    repeated.type = expression->getType();
    pointer = unit.context.getPointerType(repeated.type);
    address = address_of(unit, place_of(unit, expression), type_word(unit, pointer, where), where);
  }
  repeated.pointer = make_temporary(unit, pointer, where);
  repeated.setup = store(unit, place_of_symbol(unit, *repeated.pointer, pointer), address, where);
  return repeated;
}

Place repeated_place(Unit &unit, const RepeatedPlace &repeated, SourceLocation where) {
  if (!repeated.pointer) {
    return place_of(unit, repeated.expression);
  }
  Place place = pointed_at(unit, make_name(unit, *repeated.pointer), repeated.type, false, where);
  for (const clang::MemberExpr *part : repeated.members) {
    place = member_of(unit, place, llvm::cast<clang::FieldDecl>(part->getMemberDecl()),
                      part->getType(), false);
  }
  return place;
}

std::vector<std::uint32_t> literal_elements(const clang::StringLiteral *literal) {
  std::vector<std::uint32_t> elements;
  elements.reserve(literal->getLength() + 1);
  for (unsigned i = 0; i < literal->getLength(); ++i) {
    elements.push_back(literal->getCodeUnit(i));
  }
  elements.push_back(0);
  return elements;
}

NodeIndex literal_address(Unit &unit, const clang::StringLiteral *literal) {
  const SourceLocation where = literal->getExprLoc();
  const std::vector<std::uint32_t> elements = literal_elements(literal);
  if (literal->getCharByteWidth() == 1 && elements.size() <= max_literal_bytes) {
    return make_text(unit, std::string(elements.begin(), elements.end()));
  }
  const QualType element = unit.context.getAsArrayType(literal->getType())->getElementType();
  const QualType array = unit.context.getConstantArrayType(
      element, llvm::APInt(32, elements.size()), nullptr, clang::ArrayType::Normal, 0);
  file::Symbol symbol = make_symbol(unit, "", array.withConst(), C_STAT, true, where);
  const TypeWord word = type_word(unit, element, where);
  symbol.has_value = true;
  symbol.final_size = symbol.size;
  symbol.final_dims = symbol.dims;
  for (const std::uint32_t value : elements) {
    symbol.value.push_back(make_integer(unit, word, value));
  }
  const int slot = anonymous_slot(unit, "text", std::move(symbol), where);
  return make_unary(unit, ADDRESS, pointer_to(word), make_name(unit, slot_reference(unit, slot)));
}

} // namespace velkor::cc
