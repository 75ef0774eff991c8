#include "cc/trees.h"

#include "cc/symbols.h"
#include "cc/types.h"

#include <charconv>
#include <cmath>

namespace velkor::cc {

namespace {

std::int32_t wrapped(TypeWord type, std::int64_t value) {
  const auto word = static_cast<std::uint32_t>(value);
  if (is_derived(type)) {
    return static_cast<std::int32_t>(word);
  }
  switch (type_width(type)) {
  case 8:
    return is_unsigned_basic(type) ? static_cast<std::int32_t>(word & 0xFF)
                                   : static_cast<std::int8_t>(word);
  case 16:
    return is_unsigned_basic(type) ? static_cast<std::int32_t>(word & 0xFFFF)
                                   : static_cast<std::int16_t>(word);
  default: return static_cast<std::int32_t>(word);
  }
}

// Shortest decimal that reads back as value, always with a point or an exponent.
template <typename Floating> std::string shortest_text(Floating value) {
  char buffer[64];
  const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, value);
  std::string text(buffer, end.ptr);
  if (text.find_first_of(".e") == std::string::npos) {
    text += ".0";
  }
  return text;
}

} // namespace

NodeIndex make_unary(Unit &unit, Opcode op, TypeWord type, NodeIndex operand) {
  file::Node node;
  node.op = op;
  node.type = node_word(type);
  node.left = operand;
  return unit.file.add(std::move(node));
}

NodeIndex make_binary(Unit &unit, Opcode op, TypeWord type, NodeIndex left, NodeIndex right) {
  file::Node node;
  node.op = op;
  node.type = node_word(type);
  node.left = left;
  node.right = right;
  return unit.file.add(std::move(node));
}

NodeIndex make_integer(Unit &unit, TypeWord type, std::int64_t value) {
  file::Node node;
  node.op = ICON;
  node.type = node_word(type);
  node.value = wrapped(type, value);
  return unit.file.add(std::move(node));
}

NodeIndex make_floating(Unit &unit, TypeWord type, double value, SourceLocation where) {
  if (!std::isfinite(value)) {
    report_error(unit, where, "a floating constant may not be infinite or not a number");
    value = 0;
  }
  file::Node node;
  node.op = FCON;
  node.type = node_word(type);
  node.text = type == FLOAT ? shortest_text(static_cast<float>(value)) : shortest_text(value);
  return unit.file.add(std::move(node));
}

NodeIndex make_text(Unit &unit, std::string bytes) {
  file::Node node;
  node.op = SCON;
  node.type = node_word(pointer_to(CHAR));
  node.text = std::move(bytes);
  return unit.file.add(std::move(node));
}

NodeIndex make_name(Unit &unit, const SymbolReference &symbol) {
  file::Node node;
  node.op = NAME;
  node.type = node_word(symbol.stype);
  node.qual =
      static_cast<std::uint8_t>((is_derived(symbol.stype) ? symbol.squal >> 4 : symbol.squal) & 3);
  node.level = symbol.level;
  node.index = symbol.index;
  return unit.file.add(std::move(node));
}

NodeIndex make_member_name(Unit &unit, const clang::FieldDecl *field) {
  const int slot = member_slot(unit, field);
  const file::Symbol &symbol = unit.slots[slot].symbol;
  return make_name(unit, {0, static_cast<std::int16_t>(slot), symbol.stype, symbol.squal});
}

NodeIndex make_zero(Unit &unit, TypeWord type) {
  if (is_derived(type)) {
    return make_unary(unit, PCONV, type, make_integer(unit, INT, 0));
  }
  return type_is_float(type) ? make_floating(unit, type, 0, SourceLocation())
                             : make_integer(unit, type, 0);
}

std::uint16_t type_of(const Unit &unit, NodeIndex node) {
  return unit.file.nodes[node].type;
}

NodeIndex convert_arithmetic(Unit &unit, NodeIndex node, TypeWord type) {
  return type_of(unit, node) == node_word(type) ? node : make_unary(unit, SCONV, type, node);
}

NodeIndex convert_pointer(Unit &unit, NodeIndex node, TypeWord type) {
  return type_of(unit, node) == node_word(type) ? node : make_unary(unit, PCONV, type, node);
}

NodeIndex convert_to_bool(Unit &unit, NodeIndex node) {
  if (!op_boolean(unit.file.nodes[node].op)) {
    const TypeWord type = type_of(unit, node);
    if (is_integer(type)) {
      node = convert_arithmetic(unit, node, type_width(type) < 32 ? TypeWord{INT} : type);
    }
    node = make_binary(unit, NE, INT, node, make_zero(unit, type_of(unit, node)));
  }
  return make_unary(unit, SCONV, UNSIGNED_CHAR, node);
}

NodeIndex make_pointer_step(Unit &unit, Opcode op, NodeIndex pointer, NodeIndex integer,
                            std::int32_t step_bits) {
  const NodeIndex count = convert_arithmetic(unit, integer, INT);
  const NodeIndex bytes = make_binary(unit, PMCONV, INT, count, make_integer(unit, INT, step_bits));
  return make_binary(unit, op, type_of(unit, pointer), pointer, bytes);
}

NodeIndex make_sequence(Unit &unit, NodeIndex left, NodeIndex right) {
  return left == no_node ? right : make_binary(unit, COMMA_OP, type_of(unit, right), left, right);
}

} // namespace velkor::cc
