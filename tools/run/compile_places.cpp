// Places: lvalues, pointers, loads, stores and blocks of bytes.
#include "run/compiler.h"

#include <algorithm>

namespace velkor::run {

namespace {

// True when an access of so many bytes lies inside the object that the place is known to be in.
bool inside(const Compiler &c, const Place &place, std::uint32_t bytes) {
  if (place.mode == Place::FRAME) {
    return place.offset >= place.object_begin &&
           place.offset + static_cast<std::int64_t>(bytes) <= place.object_end;
  }
  return place.mode == Place::FIXED && c.memory.contains(static_cast<Address>(place.offset), bytes);
}

// The place as register + offset.
Place through_pointer(Compiler &c, const Place &place) {
  Place result = place;
  if (place.mode == Place::POINTER) return result;
  result.mode = Place::POINTER;
  result.reg = new_register(c);
  result.offset = 0;
  emit(c, {.op = place.mode == Place::FRAME ? Op::FRAME_ADDRESS : Op::CONSTANT,
           .dst = result.reg,
           .imm = place.offset});
  return result;
}

std::int32_t trace_word(bool is_store, std::uint32_t bits, std::int32_t offset) {
  return (is_store ? 1 : 0) | static_cast<std::int32_t>(bits) << 1 | offset << 8;
}

// Emits the report of an access, in front of it. Objects of static duration are found by address,
// so that accesses through pointers count; autos by the symbol that the tree names.
void trace(Compiler &c, const Place &place, bool is_store, std::uint32_t bits) {
  if (place.mode == Place::FRAME) {
    if (place.symbol == nullptr || !is_volatile_object(*place.symbol->record)) return;
    emit(c, {.op = Op::TRACE_OBJECT,
             .imm = add_text(c, place.symbol->record->name),
             .target = trace_word(is_store, bits, place.offset - place.object_begin)});
    return;
  }
  const std::uint32_t mark = c.next_register;
  const Place pointer = through_pointer(c, place);
  emit(c, {.op = Op::TRACE_ADDRESS,
           .lhs = pointer.reg,
           .imm = pointer.offset,
           .target = trace_word(is_store, bits, 0)});
  c.next_register = mark;
}

std::int32_t field_word(const Place &place, TypeWord type) {
  return pack_field(place.field_shift, place.field_width, !is_unsigned_basic(type));
}

// Adds a member's offset, and its bit field if it is one.
Place member_of(Compiler &c, Place place, file::NodeIndex member) {
  const SymbolInfo *symbol = c.program.node_symbol[member];
  if (c.node(member).op != NAME || symbol == nullptr) {
    emit_fault(c, "a member that is not a name");
    return place;
  }
  const file::Symbol &record = *symbol->record;
  place.offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(place.offset) +
                                           static_cast<std::uint32_t>(record.offset >> 3));
  place.bytes = (static_cast<std::uint32_t>(record.size) + 7) / 8;
  place.is_field = record.sclass == C_FIELD;
  if (place.is_field) {
    place.field_shift = static_cast<std::uint8_t>(record.offset & 7);
    place.field_width = static_cast<std::uint8_t>(record.size);
    if (record.size < 1 || record.size > 32) emit_fault(c, "a bit field of an impossible width");
  } else if ((record.offset & 7) != 0) {
    emit_fault(c, "member '" + record.name + "' is not at a byte");
  }
  return place;
}

Place fixed(Address address) {
  Place place;
  place.mode = Place::FIXED;
  place.offset = static_cast<std::int32_t>(address);
  return place;
}

} // namespace

Place place_of_symbol(Compiler &c, const SymbolInfo &symbol) {
  Place place;
  place.symbol = &symbol;
  place.bytes = symbol.bytes;
  switch (symbol.storage) {
  case Storage::FIXED:
  case Storage::FUNCTION:
    place.mode = Place::FIXED;
    place.offset = static_cast<std::int32_t>(symbol.place);
    return place;
  case Storage::FRAME:
    place.mode = Place::FRAME;
    place.offset = place.object_begin = static_cast<std::int32_t>(symbol.place);
    place.object_end = place.object_begin + static_cast<std::int32_t>(symbol.bytes);
    return place;
  case Storage::ARGUMENT:
    // The area of a variadic function has a length of its own in each call.
    if (c.source->variadic) {
      place.reg = new_register(c);
      emit(c, {.op = Op::ARGUMENT_ADDRESS,
               .dst = place.reg,
               .imm = static_cast<std::int32_t>(symbol.place)});
      return place;
    }
    place.mode = Place::FRAME;
    place.offset = place.object_begin =
        static_cast<std::int32_t>(symbol.place) -
        static_cast<std::int32_t>(round_up(c.source->parameter_bytes, 16));
    place.object_end = place.object_begin + static_cast<std::int32_t>(symbol.bytes);
    return place;
  case Storage::UNDEFINED:
    emit_fault(c, "object '" + symbol.record->name + "' is not defined");
    return fixed(symbol.place);
  case Storage::NONE: break;
  }
  emit_fault(c, "symbol '" + symbol.record->name + "' is no object");
  return fixed(0);
}

Place place_of(Compiler &c, file::NodeIndex index) {
  const file::Node &node = c.node(index);
  switch (node.op) {
  case NAME: return place_of_symbol(c, *c.program.node_symbol[index]);
  case DEREF: {
    Place place = address_of(c, node.left);
    place.bytes = static_cast<std::uint32_t>(std::max(node.size, 0)) / 8;
    return place;
  }
  case MEMBER: return member_of(c, place_of(c, node.left), node.right);
  case ARROW: return member_of(c, address_of(c, node.left), node.right);
  case IDENTITY:
  case TOIEEE:
  case FRIEEE: return place_of(c, node.left);
  default: break;
  }
  if (is_struct_or_union(node_type(node))) return block_of(c, index);
  emit_fault(c, std::string("operator ") + opcode_table[node.op].name + " where an object must be");
  return fixed(0);
}

Place address_of(Compiler &c, file::NodeIndex index) {
  const file::Node &node = c.node(index);
  const auto shifted = [](Place place, std::uint32_t bytes) {
    place.offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(place.offset) + bytes);
    return place;
  };
  const auto is_word = [&c](file::NodeIndex operand) {
    const TypeWord type = node_type(c.node(operand));
    return has_access(type) && access_kind(type) == AccessKind::WORD;
  };
  std::uint32_t word = 0;
  switch (node.op) {
  case ADDRESS:
  case ARGREF: {
    Place place = place_of(c, node.left);
    if (place.is_field) emit_fault(c, "the address of a bit field");
    return place;
  }
  case PCONV:
  case ISP2CHAR:
  case IDENTITY:
    if (is_word(node.left)) return address_of(c, node.left);
    break;
  case ADD:
    if (!is_word(index)) break;
    if (is_word(node.left) && constant_word(c, node.right, word))
      return shifted(address_of(c, node.left), word);
    if (is_word(node.right) && constant_word(c, node.left, word))
      return shifted(address_of(c, node.right), word);
    break;
  case SUBTRACT:
    if (is_word(index) && is_word(node.left) && constant_word(c, node.right, word))
      return shifted(address_of(c, node.left), 0u - word);
    break;
  default: break;
  }
  Value value = evaluate(c, index);
  if (is_real(value.type)) value = emit_fault(c, "a real number where an address must be");
  if (value.kind != Value::REGISTER) return fixed(value.word);
  Place place;
  place.reg = value.reg;
  return place;
}

std::uint16_t address_register(Compiler &c, const Place &place) {
  const Place pointer = through_pointer(c, place);
  if (pointer.offset != 0)
    emit(c, {.op = Op::ADD_IMM, .dst = pointer.reg, .lhs = pointer.reg, .imm = pointer.offset});
  return pointer.reg;
}

Value load(Compiler &c, const Place &place, TypeWord type, bool keep_place) {
  if (!has_access(type)) return emit_fault(c, "a value of a type that has none", INT);
  Value value{.kind = Value::REGISTER, .type = type};
  const auto result_register = [&](const Place &from) {
    return from.mode == Place::POINTER && !keep_place ? from.reg : new_register(c);
  };
  if (place.is_field) {
    if (c.trace_volatile) trace(c, place, false, place.field_width);
    const Place pointer = through_pointer(c, place);
    value.reg = result_register(pointer);
    emit(c, {.op = Op::LOAD_FIELD,
             .dst = value.reg,
             .rhs = pointer.reg,
             .imm = pointer.offset,
             .target = field_word(place, type)});
    return value;
  }
  const AccessKind kind = access_kind(type);
  const std::uint32_t bytes = access_bytes[static_cast<int>(kind)];
  if (c.trace_volatile) trace(c, place, false, bytes * 8);
  if (inside(c, place, bytes)) {
    value.reg = new_register(c);
    const Op base = place.mode == Place::FRAME ? Op::LOAD_FRAME_I8 : Op::LOAD_FIXED_I8;
    emit(c, {.op = base + kind, .dst = value.reg, .imm = place.offset});
    return value;
  }
  const Place pointer = through_pointer(c, place);
  value.reg = result_register(pointer);
  emit(c, {.op = Op::LOAD_I8 + kind, .dst = value.reg, .rhs = pointer.reg, .imm = pointer.offset});
  return value;
}

void store(Compiler &c, const Place &place, const Value &value) {
  const std::uint32_t mark = c.next_register;
  if (!has_access(value.type)) {
    emit_fault(c, "a store of a type that has no values");
    return;
  }
  const std::uint16_t reg = in_register(c, value);
  if (place.is_field) {
    if (c.trace_volatile) trace(c, place, true, place.field_width);
    const Place pointer = through_pointer(c, place);
    emit(c, {.op = Op::STORE_FIELD,
             .lhs = reg,
             .rhs = pointer.reg,
             .imm = pointer.offset,
             .target = field_word(place, value.type)});
  } else {
    const AccessKind kind = access_kind(value.type);
    const std::uint32_t bytes = access_bytes[static_cast<int>(kind)];
    if (c.trace_volatile) trace(c, place, true, bytes * 8);
    if (inside(c, place, bytes)) {
      const Op base = place.mode == Place::FRAME ? Op::STORE_FRAME_I8 : Op::STORE_FIXED_I8;
      emit(c, {.op = base + kind, .lhs = reg, .imm = place.offset});
    } else {
      const Place pointer = through_pointer(c, place);
      emit(c, {.op = Op::STORE_I8 + kind, .lhs = reg, .rhs = pointer.reg, .imm = pointer.offset});
    }
  }
  c.next_register = mark;
}

Value as_stored(Compiler &c, const Place &place, Value value) {
  if (!place.is_field) return value;
  const std::uint16_t reg = in_register(c, value);
  value = {.kind = Value::REGISTER, .reg = reg, .type = value.type};
  emit(c, {.op = Op::WRAP_FIELD, .dst = reg, .lhs = reg, .target = field_word(place, value.type)});
  return value;
}

Place new_block(Compiler &c, std::uint32_t bytes) {
  Place place;
  place.mode = Place::FRAME;
  c.frame_bytes = round_up(c.frame_bytes, 4);
  place.offset = place.object_begin = static_cast<std::int32_t>(c.frame_bytes);
  c.frame_bytes += bytes;
  place.object_end = static_cast<std::int32_t>(c.frame_bytes);
  place.bytes = bytes;
  return place;
}

std::uint32_t struct_bytes(const Compiler &c, file::NodeIndex index) {
  const SymbolInfo *symbol = c.program.node_symbol[index];
  return symbol == nullptr || symbol->record->size <= 0
             ? 0
             : (static_cast<std::uint32_t>(symbol->record->size) + 7) / 8;
}

// STASG, or an assignment of struct type. The result is the target.
Place assign_block(Compiler &c, const file::Node &node, file::NodeIndex index) {
  Place from = block_of(c, node.right);
  // The source's address is pinned before the target is evaluated, the target's before the copy.
  from = through_pointer(c, from);
  Place to = place_of(c, node.left);
  std::uint32_t bytes = node.op == STASG ? struct_bytes(c, index) : 0;
  if (bytes == 0) bytes = to.bytes != 0 ? to.bytes : from.bytes;
  if (c.trace_volatile) {
    trace(c, from, false, std::min(bytes * 8, 64u));
    trace(c, to, true, std::min(bytes * 8, 64u));
  }
  const std::uint16_t source = address_register(c, from);
  const Place target = through_pointer(c, to);
  const std::uint16_t target_register = address_register(c, target);
  emit(c, {.op = Op::COPY_BLOCK,
           .lhs = target_register,
           .rhs = source,
           .imm = static_cast<std::int32_t>(bytes)});
  Place result;
  result.reg = target_register;
  result.bytes = bytes;
  return result;
}

Place block_of(Compiler &c, file::NodeIndex index) {
  const file::Node &node = c.node(index);
  switch (node.op) {
  case NAME:
  case DEREF:
  case MEMBER:
  case ARROW: return place_of(c, index);
  case IDENTITY:
  case TOIEEE:
  case FRIEEE: return block_of(c, node.left);
  case STARG: {
    Place place = block_of(c, node.left);
    if (const std::uint32_t bytes = struct_bytes(c, index); bytes != 0) place.bytes = bytes;
    return place;
  }
  case STASG:
  case ASSIGN: return assign_block(c, node, index);
  case COMMA_OP:
  case COMMA:
  case PCOMMA: evaluate_effect(c, node.left); return block_of(c, node.right);
  case STCALL:
  case USTCALL: {
    Place result;
    (void)call(c, index, &result);
    return result;
  }
  case CONDITIONAL: {
    const file::Node &arms = c.node(node.right);
    if (arms.op != ALTERNATIVES) break;
    const Label otherwise = new_label(c);
    const Label end = new_label(c);
    Place result;
    result.reg = new_register(c);
    const std::uint32_t mark = c.next_register;
    const auto arm = [&](file::NodeIndex operand) {
      const Place place = block_of(c, operand);
      emit(c, {.op = Op::MOVE, .dst = result.reg, .lhs = address_register(c, place)});
      result.bytes = std::max(result.bytes, place.bytes);
      c.next_register = mark;
    };
    branch(c, node.left, otherwise, false);
    arm(arms.left);
    jump(c, Op::JUMP, end);
    bind(c, otherwise);
    arm(arms.right);
    bind(c, end);
    return result;
  }
  default: break;
  }
  emit_fault(c, std::string("operator ") + opcode_table[node.op].name + " where a struct must be");
  return fixed(0);
}

} // namespace velkor::run
