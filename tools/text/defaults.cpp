#include "text/defaults.h"

#include "core/opcodes.h"

namespace velkor::text {
namespace {

enum class TypeRule : std::uint8_t {
  WRITTEN,    // no default
  IS_VOID,    // void
  IS_INT,     // int
  IS_DOUBLE,  // double
  IS_STRING,  // char *
  OF_LEFT,    // the left operand's
  OF_RIGHT,   // the right operand's
  POINTEE,    // what the left operand points at
  ADDRESS_OF, // pointer to the left operand; of an array, to its element
  CALL_RESULT // what the function returns that the left operand points at
};

constexpr TypeRule type_rule(std::uint8_t op) {
  switch (op) {
  case SCONV:
  case PCONV:
  case ISP2CHAR:
  case MEMCPY: return TypeRule::WRITTEN;
  case COMMA:
  case PCOMMA:
  case URETURN:
  case LOOP:
  case ENDLOOP:
  case SKIP: return TypeRule::IS_VOID;
  case LABELREF:
  case ICON:
  case LCON:
  case SWITCH:
  case CASE:
  case DEFAULT:
  case BRANCH:
  case CBRANCH:
  case XCALL:
  case UXCALL:
  case ICALL:
  case ASSERT:
  case NASSERT:
  case PMCONV:
  case PVCONV: return TypeRule::IS_INT;
  case FCON: return TypeRule::IS_DOUBLE;
  case SCON: return TypeRule::IS_STRING;
  case CONDITIONAL: // its alternatives'
  case COMMA_OP:
  case MEMBER:
  case ARROW:
  case RETURN: return TypeRule::OF_RIGHT;
  case DEREF: return TypeRule::POINTEE;
  case ADDRESS:
  case ARGREF: return TypeRule::ADDRESS_OF;
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL: return TypeRule::CALL_RESULT;
  default: break;
  }
  if (opcode_table[op].boolean) return TypeRule::IS_INT;
  return op_arity(op) > 0 ? TypeRule::OF_LEFT : TypeRule::IS_VOID;
}

std::optional<std::uint16_t> node_type(TypeWord type) {
  if (type > 0xFFFF) return std::nullopt;
  return static_cast<std::uint16_t>(type);
}

} // namespace

std::optional<std::uint16_t> default_type(std::uint8_t op, const file::Node *left,
                                          const file::Node *right) {
  switch (type_rule(op)) {
  case TypeRule::WRITTEN: break;
  case TypeRule::IS_VOID: return VOID;
  case TypeRule::IS_INT: return INT;
  case TypeRule::IS_DOUBLE: return DOUBLE;
  case TypeRule::IS_STRING: return node_type(pointer_to(CHAR));
  case TypeRule::OF_LEFT:
    if (left != nullptr) return left->type;
    break;
  case TypeRule::OF_RIGHT:
    if (right != nullptr) return right->type;
    break;
  case TypeRule::POINTEE:
    if (left != nullptr && is_pointer(left->type)) return node_type(underived(left->type));
    break;
  case TypeRule::ADDRESS_OF:
    if (left == nullptr) break;
    return node_type(pointer_to(is_array(left->type) ? underived(left->type) : left->type));
  case TypeRule::CALL_RESULT:
    if (left == nullptr || !is_pointer(left->type)) break;
    if (!is_function(underived(left->type))) break;
    return node_type(underived(underived(left->type)));
  }
  return std::nullopt;
}

std::optional<std::uint16_t> default_name_type(const VisibleSymbol *symbol) {
  return symbol == nullptr ? std::nullopt : node_type(symbol->type);
}

std::uint8_t default_name_qualifier(const VisibleSymbol *symbol) {
  if (symbol == nullptr) return 0;
  return static_cast<std::uint8_t>((is_derived(symbol->type) ? symbol->squal >> 4 : symbol->squal) &
                                   3);
}

std::int32_t default_access_size(TypeWord type) {
  if (is_pointer(type)) return pointer_width;
  return is_derived(type) ? 0 : type_size(type);
}

std::int32_t default_symbol_size(TypeWord type, std::span<const std::uint32_t> dims,
                                 const VisibleSymbol *tag) {
  std::uint32_t count = 1; // wraps as the 32-bit field would
  std::size_t dimension = 0;
  while (is_array(type)) {
    count *= dimension < dims.size() ? dims[dimension] : 0;
    ++dimension;
    type = underived(type);
  }
  std::int32_t size = default_access_size(type);
  if (is_struct_or_union(type) && tag != nullptr) size = tag->size;
  return static_cast<std::int32_t>(count * static_cast<std::uint32_t>(size));
}

std::int32_t default_symbol_align(TypeWord type, const VisibleSymbol *tag) {
  while (is_array(type)) {
    type = underived(type);
  }
  if (is_struct_or_union(type)) return tag != nullptr ? tag->align : max_alignment;
  const std::int32_t alignment = is_derived(type) ? 0 : type_align(type);
  return alignment == 0 ? max_alignment : alignment;
}

} // namespace velkor::text
