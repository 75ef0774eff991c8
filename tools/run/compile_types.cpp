// Types, constants and conversions.
#include "run/compiler.h"

#include <cstdlib>

namespace velkor::run {

// Types ------------------------------------------------------------------------------------------

bool is_real(TypeWord type) {
  return is_floating(type);
}
bool is_single(TypeWord type) {
  return type == FLOAT;
}
bool is_unsigned_word(TypeWord type) {
  return is_derived(type) || is_unsigned_basic(type);
}
bool has_access(TypeWord type) {
  return is_scalar(type);
}
TypeWord node_type(const file::Node &node) {
  return internal_type(node.type);
}

AccessKind access_kind(TypeWord type) {
  if (is_derived(type)) return AccessKind::WORD;
  switch (type) {
  case CHAR: return AccessKind::I8;
  case UNSIGNED_CHAR: return AccessKind::U8;
  case SHORT: return AccessKind::I16;
  case UNSIGNED_SHORT: return AccessKind::U16;
  case FLOAT: return AccessKind::SINGLE;
  case DOUBLE:
  case LONG_DOUBLE: return AccessKind::DOUBLE;
  default: return AccessKind::WORD;
  }
}

TypeWord promoted(TypeWord type) {
  if (is_derived(type)) return type;
  switch (type) {
  case CHAR:
  case SHORT:
  case ENUM:
  case UNSIGNED_CHAR:
  case UNSIGNED_SHORT: return INT;
  default: return type;
  }
}

TypeWord balanced(TypeWord a, TypeWord b) {
  if (is_derived(a)) return a;
  if (is_derived(b)) return b;
  for (const TypeWord strongest : {DOUBLE, FLOAT, UNSIGNED}) {
    if (promoted(a) == strongest || promoted(b) == strongest) return strongest;
  }
  return INT;
}

std::uint32_t wrapped(std::uint32_t word, TypeWord type) {
  switch (access_kind(type)) {
  case AccessKind::I8: return static_cast<std::uint32_t>(static_cast<std::int8_t>(word));
  case AccessKind::U8: return static_cast<std::uint8_t>(word);
  case AccessKind::I16: return static_cast<std::uint32_t>(static_cast<std::int16_t>(word));
  case AccessKind::U16: return static_cast<std::uint16_t>(word);
  default: return word;
  }
}

// Constants --------------------------------------------------------------------------------------

Value constant(std::uint32_t word, TypeWord type) {
  return {.kind = Value::CONSTANT, .word = word, .type = type};
}

// Decimal text as the file has it, maybe with a sign and an exponent.
bool parse_real(const std::string &text, double &number) {
  const char *start = text.c_str();
  char *end = nullptr;
  number = std::strtod(start, &end);
  if (end == start) return false;
  while (*end == 'f' || *end == 'F' || *end == 'l' || *end == 'L')
    ++end;
  return *end == '\0';
}

std::uint32_t parse_long_constant(const std::string &text) {
  std::uint32_t word = 0;
  const bool negative = text.starts_with('-');
  for (const char digit : text.substr(negative ? 1 : 0)) {
    if (digit < '0' || digit > '9') break;
    word = word * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return negative ? 0u - word : word;
}

// The factor of PMCONV and PVCONV in bytes: their right operand is in bits.
std::uint32_t scale_bytes(std::uint32_t bits) {
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(bits) / 8);
}

Value real_constant(Compiler &c, double number, TypeWord type) {
  if (is_single(type)) number = static_cast<float>(number);
  const Value value{.kind = Value::REGISTER, .reg = new_register(c), .type = type};
  c.code.reals.push_back(number);
  emit(c, {.op = Op::REAL_CONSTANT,
           .dst = value.reg,
           .imm = static_cast<std::int32_t>(c.code.reals.size()) - 1});
  return value;
}

bool constant_word(const Compiler &c, file::NodeIndex index, std::uint32_t &word) {
  const file::Node &node = c.node(index);
  switch (node.op) {
  case ICON:
    if (!has_access(node_type(node)) || is_real(node_type(node))) return false;
    word = wrapped(static_cast<std::uint32_t>(node.value), node_type(node));
    return true;
  case LCON: word = wrapped(parse_long_constant(node.text), node_type(node)); return true;
  case PMCONV: {
    std::uint32_t bits = 0;
    if (!constant_word(c, node.left, word) || !constant_word(c, node.right, bits)) return false;
    word = wrapped(word * scale_bytes(bits), node_type(node));
    return true;
  }
  default: return false;
  }
}

// Conversions ------------------------------------------------------------------------------------

std::uint16_t in_register(Compiler &c, const Value &value) {
  if (value.kind == Value::REGISTER) return value.reg;
  const std::uint16_t reg = new_register(c);
  emit(c, {.op = Op::CONSTANT, .dst = reg, .imm = static_cast<std::int32_t>(value.word)});
  return reg;
}

// Wraps the word in the register to a narrow type.
void wrap(Compiler &c, std::uint16_t reg, TypeWord type) {
  switch (access_kind(type)) {
  case AccessKind::I8: emit(c, {.op = Op::WRAP_I8, .dst = reg, .lhs = reg}); break;
  case AccessKind::U8: emit(c, {.op = Op::WRAP_U8, .dst = reg, .lhs = reg}); break;
  case AccessKind::I16: emit(c, {.op = Op::WRAP_I16, .dst = reg, .lhs = reg}); break;
  case AccessKind::U16: emit(c, {.op = Op::WRAP_U16, .dst = reg, .lhs = reg}); break;
  default: break;
  }
}

namespace {

// True when every value of integer type `from` is one of `to`.
bool contains_all(TypeWord to, TypeWord from) {
  const AccessKind wide = access_kind(to);
  const AccessKind narrow = access_kind(from);
  if (wide == narrow || wide == AccessKind::WORD) return true;
  return narrow == AccessKind::I8   ? wide == AccessKind::I16
         : narrow == AccessKind::U8 ? wide == AccessKind::I16 || wide == AccessKind::U16
                                    : false;
}

} // namespace

Value convert(Compiler &c, Value value, TypeWord type) {
  if (type == VOID || value.kind == Value::NOTHING) {
    if (type != VOID) return emit_fault(c, "a value where there is none", type);
    return {};
  }
  if (!has_access(type)) return emit_fault(c, "a conversion to a type that has no values", INT);
  if (is_real(type)) {
    if (!is_real(value.type)) {
      const bool is_unsigned = is_unsigned_word(value.type);
      if (value.kind == Value::CONSTANT) {
        return real_constant(c,
                             is_unsigned
                                 ? static_cast<double>(value.word)
                                 : static_cast<double>(static_cast<std::int32_t>(value.word)),
                             type);
      }
      emit(c, {.op = is_unsigned ? Op::UNSIGNED_TO_REAL : Op::SIGNED_TO_REAL,
               .dst = value.reg,
               .lhs = value.reg});
    }
    if (is_single(type) && !is_single(value.type))
      emit(c, {.op = Op::ROUND_TO_SINGLE, .dst = value.reg, .lhs = value.reg});
  } else if (is_real(value.type)) {
    emit(c, {.op = Op::REAL_TO_WORD, .dst = value.reg, .lhs = value.reg});
    wrap(c, value.reg, type);
  } else if (value.kind == Value::CONSTANT) {
    value.word = wrapped(value.word, type);
  } else if (!contains_all(type, value.type)) {
    wrap(c, value.reg, type);
  }
  value.type = type;
  return value;
}

} // namespace velkor::run
