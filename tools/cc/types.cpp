#include "cc/types.h"

#include "clang/AST/RecordLayout.h"
#include "clang/AST/Type.h"

#include <algorithm>
#include <limits>

namespace velkor::cc {

namespace {

using clang::BuiltinType;

// The word of an underived type; 1, which no type has, for one that the target lacks.
TypeWord builtin_word(const BuiltinType *type) {
  switch (type->getKind()) {
  case BuiltinType::Void: return VOID;
  case BuiltinType::Char_S:
  case BuiltinType::SChar: return CHAR;
  case BuiltinType::Bool:
  case BuiltinType::Char_U:
  case BuiltinType::UChar: return UNSIGNED_CHAR;
  case BuiltinType::Short: return SHORT;
  case BuiltinType::Char16:
  case BuiltinType::UShort: return UNSIGNED_SHORT;
  case BuiltinType::WChar_S:
  case BuiltinType::Int:
  case BuiltinType::Long: return INT;
  case BuiltinType::WChar_U:
  case BuiltinType::Char32:
  case BuiltinType::UInt:
  case BuiltinType::ULong: return UNSIGNED;
  case BuiltinType::Float: return FLOAT;
  case BuiltinType::Double:
  case BuiltinType::LongDouble: return DOUBLE;
  default: return UNUSED_TYPE;
  }
}

TypeWord basic_word(Unit &unit, QualType type, SourceLocation where) {
  if (const auto *enumeration = type->getAs<clang::EnumType>()) {
    const QualType integer = enumeration->getDecl()->getIntegerType();
    return integer.isNull() ? TypeWord{UNSIGNED} : basic_word(unit, integer, where);
  }
  if (type->isUnionType()) {
    return UNION;
  }
  if (type->isRecordType()) {
    return STRUCT;
  }
  if (const auto *builtin = type->getAs<BuiltinType>()) {
    if (const TypeWord word = builtin_word(builtin); word != UNUSED_TYPE) {
      return word;
    }
    if (is_wide_integer(unit, type)) {
      report_error(unit, where,
                   "the target has no 64-bit integers (type '" + type.getAsString() + "')");
      return INT;
    }
  }
  report_error(unit, where, "the target cannot express type '" + type.getAsString() + "'");
  return INT;
}

// What one derivation of type is made from, or a null type when it is not derived.
QualType derived_from(QualType type, Derivation &derivation) {
  if (const auto *pointer = type->getAs<clang::PointerType>()) {
    derivation = POINTER_TO;
    return pointer->getPointeeType().getCanonicalType();
  }
  if (const auto *function = type->getAs<clang::FunctionType>()) {
    derivation = FUNCTION_RETURNING;
    return function->getReturnType().getCanonicalType();
  }
  if (const auto *array = type->getAsArrayTypeUnsafe()) {
    derivation = ARRAY_OF;
    // Clang's canonical arrays carry the qualifiers of their elements.
    QualType element = array->getElementType().getCanonicalType();
    element.addFastQualifiers(type.getLocalFastQualifiers());
    return element;
  }
  return QualType();
}

} // namespace

TypeWord type_word(Unit &unit, QualType type, SourceLocation where) {
  TypeWord word = 0;
  QualType inner = type.getCanonicalType();
  for (int shift = 4;; shift += 2) {
    Derivation derivation = POINTER_TO;
    const QualType next = derived_from(inner, derivation);
    if (next.isNull()) {
      return word | basic_word(unit, inner, where);
    }
    if (inner->isVariableArrayType()) {
      report_error(unit, where, "the target has no variable-length arrays");
    }
    if (shift >= 32) {
      report_error(unit, where, "type '" + type.getAsString() + "' has more than 14 derivations");
      return INT;
    }
    word |= static_cast<TypeWord>(derivation) << shift;
    inner = next;
  }
}

std::uint16_t node_type(Unit &unit, QualType type, SourceLocation where) {
  return node_word(type_word(unit, type, where));
}

std::uint16_t bit_field_type(const clang::FieldDecl *field) {
  return field->getType()->isUnsignedIntegerOrEnumerationType() ? UNSIGNED : INT;
}

std::uint32_t qualifier_word(QualType type, bool constant_object) {
  std::uint32_t word = 0;
  QualType inner = type.getCanonicalType();
  bool at_object = constant_object;
  for (int shift = 4;; shift += 2) {
    Derivation derivation = POINTER_TO;
    const QualType next = derived_from(inner, derivation);
    const int place = next.isNull() ? 0 : shift;
    const bool is_array = !next.isNull() && derivation == ARRAY_OF;
    if (!is_array && place < 32) {
      const std::uint32_t qualifiers = (inner.isVolatileQualified() ? 2u : 0u) |
                                       (at_object && inner.isConstQualified() ? 1u : 0u);
      word |= qualifiers << place;
      at_object = false;
    }
    if (next.isNull()) {
      return word;
    }
    inner = next;
  }
}

std::int32_t size_in_bits(Unit &unit, QualType type, SourceLocation where) {
  if (type->isFunctionType() || type->isIncompleteType() || type->isVariableArrayType()) {
    return 0;
  }
  const std::uint64_t bits = unit.context.getTypeSize(type);
  if (bits > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
    report_error(unit, where, "type '" + type.getAsString() + "' is larger than 2^31 - 1 bits");
    return 0;
  }
  return static_cast<std::int32_t>(bits);
}

std::int32_t step_in_bits(Unit &unit, QualType pointee, SourceLocation where) {
  if (pointee->isVoidType() || pointee->isFunctionType()) {
    return 8;
  }
  return size_in_bits(unit, pointee, where);
}

std::int32_t alignment_in_bits(const Unit &unit, QualType type) {
  if (type->isFunctionType() || type->isVoidType()) {
    return max_alignment;
  }
  if (const auto *array = unit.context.getAsArrayType(type)) {
    return alignment_in_bits(unit, array->getElementType());
  }
  if (type->isIncompleteType()) {
    return max_alignment;
  }
  return static_cast<std::int32_t>(
      std::min<std::uint64_t>(unit.context.getTypeAlign(type), max_alignment));
}

std::vector<std::uint32_t> dimensions(QualType type) {
  std::vector<std::uint32_t> result;
  QualType inner = type.getCanonicalType();
  for (;;) {
    Derivation derivation = POINTER_TO;
    const QualType next = derived_from(inner, derivation);
    if (next.isNull()) {
      return result;
    }
    if (derivation == ARRAY_OF) {
      const auto *constant = llvm::dyn_cast<clang::ConstantArrayType>(inner.getTypePtr());
      result.push_back(
          constant ? static_cast<std::uint32_t>(constant->getSize().getLimitedValue(~0u)) : 0u);
    }
    inner = next;
  }
}

const clang::RecordDecl *record_of(QualType type) {
  QualType inner = type.getCanonicalType();
  for (;;) {
    Derivation derivation = POINTER_TO;
    const QualType next = derived_from(inner, derivation);
    if (next.isNull()) {
      break;
    }
    inner = next;
  }
  const auto *record = inner->getAs<clang::RecordType>();
  return record ? record->getDecl() : nullptr;
}

bool is_wide_integer(const Unit &unit, QualType type) {
  return type->isIntegralOrEnumerationType() && !type->isIncompleteType() &&
         unit.context.getTypeSize(type) > 32;
}

} // namespace velkor::cc
