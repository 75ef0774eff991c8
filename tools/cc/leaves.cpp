#include "cc/leaves.h"

#include "cc/places.h"
#include "cc/types.h"

#include "clang/AST/RecordLayout.h"

namespace velkor::cc {

namespace {

// The list or literal behind parentheses, braces around a whole literal, and the reading of a
// compound literal, whose object nobody else can see.
const Expr *stripped(const Expr *value) {
  for (;;) {
    value = value->IgnoreParens();
    if (const auto *list = llvm::dyn_cast<clang::InitListExpr>(value)) {
      const clang::InitListExpr *semantic =
          list->isSemanticForm() || list->getSemanticForm() == nullptr ? list
                                                                       : list->getSemanticForm();
      if (!semantic->isTransparent() && !semantic->isStringLiteralInit()) {
        return semantic;
      }
      value = semantic->getInit(0);
    } else if (const auto *constant = llvm::dyn_cast<clang::ConstantExpr>(value)) {
      value = constant->getSubExpr();
    } else if (const auto *literal = llvm::dyn_cast<clang::CompoundLiteralExpr>(value)) {
      value = literal->getInitializer();
    } else if (const auto *cast = llvm::dyn_cast<clang::ImplicitCastExpr>(value);
               cast != nullptr && cast->getType()->isRecordType() &&
               (cast->getCastKind() == clang::CK_LValueToRValue ||
                cast->getCastKind() == clang::CK_NoOp) &&
               llvm::isa<clang::CompoundLiteralExpr>(cast->getSubExpr()->IgnoreParens())) {
      value = cast->getSubExpr();
    } else {
      return value;
    }
  }
}

bool is_zero_fill(const Expr *value) {
  return value == nullptr || llvm::isa<clang::ImplicitValueInitExpr>(value);
}

struct Walk {
  Unit &unit;
  LeafOrder order;
  const std::function<void(const Leaf &)> &visit;
  Leaf leaf; // offset and path of the part that is being visited
};

void walk(Walk &state, const Expr *value, QualType type);

void walk_at(Walk &state, const Expr *value, QualType type, std::int64_t offset, Step step) {
  state.leaf.offset += offset;
  state.leaf.path.push_back(step);
  walk(state, value, type);
  state.leaf.path.pop_back();
  state.leaf.offset -= offset;
}

void emit(Walk &state, const Expr *value, QualType type) {
  state.leaf.value = is_zero_fill(value) ? nullptr : value;
  state.leaf.type = type;
  state.leaf.size = size_in_bits(state.unit, type, SourceLocation());
  state.visit(state.leaf);
}

void walk_field(Walk &state, const Expr *value, const clang::FieldDecl *field) {
  const clang::ASTRecordLayout &layout = state.unit.context.getASTRecordLayout(field->getParent());
  const auto offset = static_cast<std::int64_t>(layout.getFieldOffset(field->getFieldIndex()));
  if (!field->isBitField()) {
    walk_at(state, value, field->getType(), offset, {field, 0});
    return;
  }
  if (is_zero_fill(value) && state.order == LeafOrder::SPARSE) {
    return;
  }
  Leaf leaf = state.leaf;
  leaf.offset += offset;
  leaf.size = field->getBitWidthValue(state.unit.context);
  leaf.type = field->getType();
  leaf.field = field;
  leaf.value = is_zero_fill(value) ? nullptr : value;
  leaf.path.push_back({field, 0});
  state.visit(leaf);
}

void walk_record(Walk &state, const clang::InitListExpr *list, QualType type) {
  const clang::RecordDecl *record = type->getAs<clang::RecordType>()->getDecl()->getDefinition();
  if (record->isUnion()) {
    const clang::FieldDecl *field = list != nullptr ? list->getInitializedFieldInUnion() : nullptr;
    if (field == nullptr && !record->field_empty() && state.order == LeafOrder::DENSE) {
      field = *record->field_begin();
    }
    if (field != nullptr) {
      walk_field(state, list != nullptr && list->getNumInits() > 0 ? list->getInit(0) : nullptr,
                 field);
    }
    return;
  }
  unsigned next = 0;
  for (const clang::FieldDecl *field : record->fields()) {
    if (field->isUnnamedBitfield()) {
      continue;
    }
    const Expr *value =
        list != nullptr && next < list->getNumInits() ? list->getInit(next) : nullptr;
    ++next;
    if (value == nullptr && field->getType()->isIncompleteArrayType()) {
      continue; // a flexible array member without a value has no elements
    }
    walk_field(state, value, field);
  }
}

// Elements that the object has, or the list if the type does not tell.
std::int64_t element_count(Unit &unit, QualType type, const clang::InitListExpr *list) {
  if (const auto *array = unit.context.getAsConstantArrayType(type)) {
    return static_cast<std::int64_t>(array->getSize().getLimitedValue());
  }
  return list != nullptr ? list->getNumInits() : 0;
}

void walk_array(Walk &state, const clang::InitListExpr *list, QualType type) {
  const QualType element = state.unit.context.getAsArrayType(type)->getElementType();
  const std::int64_t size = size_in_bits(state.unit, element, SourceLocation());
  const std::int64_t count = element_count(state.unit, type, list);
  const Expr *filler = list != nullptr ? list->getArrayFiller() : nullptr;
  const std::int64_t listed = list != nullptr ? list->getNumInits() : 0;
  const bool skip_tail = is_zero_fill(filler) && state.order == LeafOrder::SPARSE;
  for (std::int64_t i = 0; i < (skip_tail ? std::min(listed, count) : count); ++i) {
    const Expr *value = i < listed ? list->getInit(static_cast<unsigned>(i)) : filler;
    walk_at(state, value, element, i * size, {nullptr, i});
  }
}

void walk_literal(Walk &state, const clang::StringLiteral *literal, QualType type) {
  const QualType element = state.unit.context.getAsArrayType(type)->getElementType();
  const std::int64_t size = size_in_bits(state.unit, element, SourceLocation());
  const std::vector<std::uint32_t> elements = literal_elements(literal);
  std::int64_t count = static_cast<std::int64_t>(elements.size());
  if (const auto *array = state.unit.context.getAsConstantArrayType(type)) {
    count = static_cast<std::int64_t>(array->getSize().getLimitedValue());
  }
  for (std::int64_t i = 0; i < count; ++i) {
    const std::uint32_t value =
        i < static_cast<std::int64_t>(elements.size()) ? elements[static_cast<std::size_t>(i)] : 0;
    if (value == 0 && state.order == LeafOrder::SPARSE) {
      continue;
    }
    state.leaf.element = value;
    walk_at(state, nullptr, element, i * size, {nullptr, i});
    state.leaf.element.reset();
  }
}

void walk(Walk &state, const Expr *value, QualType type) {
  if (value != nullptr && llvm::isa<clang::DesignatedInitUpdateExpr>(value)) {
    // Compilers do not agree on what becomes of the rest of the struct.
    report_error(state.unit, value->getExprLoc(),
                 "designators change parts of a struct that one expression has set as a whole");
    return;
  }
  if (value != nullptr && !is_zero_fill(value)) {
    value = stripped(value);
  }
  const bool zero = is_zero_fill(value) && !state.leaf.element;
  if (zero && state.order == LeafOrder::SPARSE) {
    return;
  }
  const auto *list = zero ? nullptr : llvm::dyn_cast_or_null<clang::InitListExpr>(value);
  if (type->isArrayType()) {
    const auto *literal = zero ? nullptr : llvm::dyn_cast_or_null<clang::StringLiteral>(value);
    if (literal != nullptr) {
      walk_literal(state, literal, type);
    } else if (zero || list != nullptr) {
      walk_array(state, list, type);
    } else {
      report_error(state.unit, value->getExprLoc(),
                   "this initializer of an array cannot be expressed by the target");
    }
    return;
  }
  if (type->isRecordType() && (zero || list != nullptr)) {
    walk_record(state, list, type);
    return;
  }
  if (list != nullptr) {
    walk(state, list->getNumInits() > 0 ? list->getInit(0) : nullptr, type);
    return;
  }
  emit(state, value, type);
}

} // namespace

void for_each_leaf(Unit &unit, const Expr *value, QualType type, LeafOrder order,
                   const std::function<void(const Leaf &)> &visit) {
  Walk state{unit, order, visit, {}};
  walk(state, value, type);
}

std::int64_t count_leaves(Unit &unit, QualType type) {
  if (const auto *array = unit.context.getAsConstantArrayType(type)) {
    return static_cast<std::int64_t>(array->getSize().getLimitedValue()) *
           count_leaves(unit, array->getElementType());
  }
  const auto *record_type = type->getAs<clang::RecordType>();
  if (record_type == nullptr) {
    return 1;
  }
  std::int64_t count = 0;
  for (const clang::FieldDecl *field : record_type->getDecl()->getDefinition()->fields()) {
    if (!field->isUnnamedBitfield()) {
      count += count_leaves(unit, field->getType());
    }
    if (field->getParent()->isUnion()) {
      break;
    }
  }
  return count;
}

bool is_aggregate_value(const Expr *value) {
  value = stripped(value);
  return llvm::isa<clang::InitListExpr>(value) || llvm::isa<clang::StringLiteral>(value) ||
         is_zero_fill(value);
}

bool contains_uneven_union(Unit &unit, QualType type) {
  if (const auto *array = unit.context.getAsArrayType(type)) {
    return contains_uneven_union(unit, array->getElementType());
  }
  const auto *record_type = type->getAs<clang::RecordType>();
  if (record_type == nullptr) {
    return false;
  }
  const clang::RecordDecl *record = record_type->getDecl()->getDefinition();
  for (const clang::FieldDecl *field : record->fields()) {
    const bool fills = !field->isBitField() &&
                       unit.context.getTypeSize(field->getType()) == unit.context.getTypeSize(type);
    if ((record->isUnion() && !fills) || contains_uneven_union(unit, field->getType())) {
      return true;
    }
  }
  return false;
}

} // namespace velkor::cc
