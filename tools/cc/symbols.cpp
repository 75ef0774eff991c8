#include "cc/symbols.h"

#include "cc/types.h"

#include "clang/AST/Attr.h"
#include "clang/AST/RecordLayout.h"
#include "clang/Basic/Builtins.h"

namespace velkor::cc {

namespace {

void check_name(Unit &unit, const std::string &name, SourceLocation where) {
  if (name.size() > max_name_bytes) {
    report_error(unit, where,
                 "name is longer than " + std::to_string(max_name_bytes - 1) + " characters");
  }
}

int add_slot(Unit &unit, Slot slot) {
  check_name(unit, slot.symbol.name, slot.where);
  if (unit.slots.size() >= max_file_symbols) {
    report_limit(unit, slot.where,
                 "more than " + std::to_string(max_file_symbols) + " symbols of file level");
    return 0;
  }
  unit.slots.push_back(std::move(slot));
  return static_cast<int>(unit.slots.size() - 1);
}

std::string tag_name(Unit &unit, const clang::RecordDecl *record) {
  if (record->getName().empty()) {
    return ".fake" + std::to_string(unit.anonymous_tags++);
  }
  // Tags have a name space of their own: a variable may bear the same name.
  const std::string name = underscored(record->getName());
  std::string candidate = name;
  for (int number = 2; !unit.tag_names.insert(candidate).second; ++number) {
    candidate = name + "$" + std::to_string(number);
  }
  return candidate;
}

file::Symbol tag_symbol(std::string name, bool is_union, std::int32_t size, std::int32_t align,
                        int slot) {
  file::Symbol symbol;
  symbol.name = name;
  symbol.size = size;
  symbol.sclass = is_union ? C_UNTAG : C_STRTAG;
  symbol.stype = is_union ? UNION : STRUCT;
  symbol.align = align;
  symbol.tag_level = 0;
  symbol.tag_index = static_cast<std::int16_t>(slot);
  symbol.tag_name = std::move(name);
  return symbol;
}

std::string member_name(const clang::FieldDecl *field) {
  return field->getName().empty() ? "_.anonymous" + std::to_string(field->getFieldIndex())
                                  : underscored(field->getName());
}

int add_member(Unit &unit, const clang::FieldDecl *field, std::uint64_t offset, bool in_union) {
  const SourceLocation where = field->getLocation();
  Slot slot;
  slot.kind = SlotKind::MEMBER;
  slot.where = where;
  if (field->isBitField()) {
    static_cast<void>(type_word(unit, field->getType(), where));
    slot.symbol.name = member_name(field);
    slot.symbol.size = static_cast<std::int32_t>(field->getBitWidthValue(unit.context));
    slot.symbol.sclass = C_FIELD;
    slot.symbol.stype = bit_field_type(field);
    slot.symbol.squal = field->getType().isVolatileQualified() ? 2 : 0;
    slot.symbol.align = max_alignment;
  } else {
    slot.symbol = make_symbol(unit, member_name(field), field->getType(), in_union ? C_MOU : C_MOS,
                              false, where);
    slot.symbol.align = std::min<std::int32_t>(
        max_alignment,
        static_cast<std::int32_t>(unit.context.toBits(unit.context.getDeclAlign(field, true))));
  }
  slot.symbol.offset = static_cast<std::int32_t>(offset);
  return add_slot(unit, std::move(slot));
}

void complete_tag(Unit &unit, int slot, const clang::RecordDecl *record) {
  const SourceLocation where = record->getLocation();
  const QualType type = unit.context.getRecordType(record);
  const clang::ASTRecordLayout &layout = unit.context.getASTRecordLayout(record);
  unit.slots[slot].complete = true;
  unit.slots[slot].symbol.size = size_in_bits(unit, type, where);
  unit.slots[slot].symbol.align = alignment_in_bits(unit, type);
  for (const clang::FieldDecl *field : record->fields()) {
    if (field->isUnnamedBitfield()) {
      continue;
    }
    const int member =
        add_member(unit, field, layout.getFieldOffset(field->getFieldIndex()), record->isUnion());
    unit.member_slots[field] = member;
    unit.slots[slot].members.push_back(member);
  }
}

StorageClass defined_class(bool external, bool defined) {
  if (external) {
    return defined ? C_EXT : C_EXTDEF;
  }
  return defined ? C_STAT : C_USTATIC;
}

} // namespace

std::string underscored(llvm::StringRef name) {
  std::string result(1, '_');
  result.append(name.data(), name.size());
  return result;
}

file::Symbol make_symbol(Unit &unit, std::string name, QualType type, StorageClass storage,
                         bool constant_object, SourceLocation where) {
  file::Symbol symbol;
  symbol.name = std::move(name);
  symbol.size = size_in_bits(unit, type, where);
  symbol.sclass = storage;
  symbol.stype = type_word(unit, type, where);
  symbol.squal = qualifier_word(type, constant_object);
  symbol.align = alignment_in_bits(unit, type);
  symbol.dims = dimensions(type);
  if (symbol.dims.size() > 255) {
    report_error(unit, where, "more than 255 array dimensions");
  }
  if (const clang::RecordDecl *record = record_of(type)) {
    const int tag = tag_slot(unit, record);
    symbol.tag_level = 0;
    symbol.tag_index = static_cast<std::int16_t>(tag);
    symbol.tag_name = unit.slots[tag].symbol.name;
  }
  return symbol;
}

int tag_slot(Unit &unit, const clang::RecordDecl *record) {
  const auto *key = llvm::cast<clang::RecordDecl>(record->getCanonicalDecl());
  if (const auto found = unit.tag_slots.find(key); found != unit.tag_slots.end()) {
    return found->second;
  }
  Slot slot;
  slot.kind = SlotKind::TAG;
  slot.where = record->getLocation();
  const int number = static_cast<int>(unit.slots.size());
  slot.symbol = tag_symbol(tag_name(unit, record), record->isUnion(), 0, max_alignment, number);
  if (add_slot(unit, std::move(slot)) != number) {
    return 0;
  }
  unit.tag_slots[key] = number;
  if (const clang::RecordDecl *definition = record->getDefinition();
      definition != nullptr && !definition->isInvalidDecl()) {
    complete_tag(unit, number, definition);
  }
  return number;
}

int member_slot(Unit &unit, const clang::FieldDecl *field) {
  static_cast<void>(tag_slot(unit, field->getParent()));
  return unit.member_slots.lookup(field);
}

int array_image_tag(Unit &unit, QualType array, SourceLocation where) {
  const clang::Type *key = array.getCanonicalType().getTypePtr();
  if (const auto found = unit.array_image_tags.find(key); found != unit.array_image_tags.end()) {
    return found->second;
  }
  Slot tag;
  tag.kind = SlotKind::TAG;
  tag.where = where;
  tag.complete = true;
  const int number = static_cast<int>(unit.slots.size());
  tag.symbol = tag_symbol(".fake" + std::to_string(unit.anonymous_tags++), false,
                          size_in_bits(unit, array, where), alignment_in_bits(unit, array), number);
  if (add_slot(unit, std::move(tag)) != number) {
    return 0;
  }
  Slot member;
  member.kind = SlotKind::MEMBER;
  member.where = where;
  member.symbol = make_symbol(unit, "_elements", array.getUnqualifiedType(), C_MOS, false, where);
  const int member_number = add_slot(unit, std::move(member));
  unit.slots[number].members.push_back(member_number);
  unit.array_image_tags[key] = number;
  return number;
}

bool is_constant_object(const clang::VarDecl *variable) {
  const QualType type = variable->getASTContext().getBaseElementType(variable->getType());
  return variable->hasGlobalStorage() && type.isConstQualified() && !type.isVolatileQualified();
}

int variable_slot(Unit &unit, const clang::VarDecl *variable) {
  const std::string name = variable->getName().str();
  if (const auto found = unit.linked_slots.find(name); found != unit.linked_slots.end()) {
    return found->second;
  }
  const auto definition = unit.variable_definitions.find(name);
  const bool defined = definition != unit.variable_definitions.end();
  const clang::VarDecl *decl = defined ? definition->second : variable->getMostRecentDecl();
  check_attributes(unit, decl);
  QualType type = decl->getType();
  if (const auto *array = unit.context.getAsIncompleteArrayType(type); array && defined) {
    // A tentative definition of unknown extent ends up with one element.
    type = unit.context.getConstantArrayType(array->getElementType(), llvm::APInt(32, 1), nullptr,
                                             clang::ArrayType::Normal, 0);
  }
  Slot slot;
  slot.kind = SlotKind::VARIABLE;
  slot.where = decl->getLocation();
  slot.symbol = make_symbol(unit, underscored(name), type,
                            defined_class(decl->isExternallyVisible(), defined),
                            is_constant_object(decl), decl->getLocation());
  const int number = add_slot(unit, std::move(slot));
  unit.linked_slots[name] = number;
  return number;
}

// An inline function of C99 that no declaration makes external has no copy of its own in this unit:
// a call that is not replaced by the body goes to the definition of another one.
std::uint16_t inline_qualifiers(const clang::FunctionDecl *definition) {
  if (definition == nullptr || !definition->isInlined() ||
      definition->hasAttr<clang::NoInlineAttr>()) {
    return 0;
  }
  const bool external = definition->getFormalLinkage() == clang::ExternalLinkage;
  return external && !definition->isInlineDefinitionExternallyVisible()
             ? marked_inline | without_own_copy
             : marked_inline;
}

int function_slot(Unit &unit, const clang::FunctionDecl *function) {
  llvm::StringRef name = function->getName();
  name.consume_front("__builtin_");
  if (const auto found = unit.linked_slots.find(name.str()); found != unit.linked_slots.end()) {
    return found->second;
  }
  const clang::FunctionDecl *definition = function->getDefinition();
  const clang::FunctionDecl *decl = definition != nullptr ? definition : function;
  check_attributes(unit, decl);
  Slot slot;
  slot.kind = SlotKind::FUNCTION;
  slot.where = decl->getLocation();
  // The class tells a declaration; assembly makes it that of a definition in front of the body.
  slot.symbol =
      make_symbol(unit, underscored(name), decl->getType(),
                  defined_class(decl->getFormalLinkage() == clang::ExternalLinkage, false), false,
                  decl->getLocation());
  slot.symbol.scqual = inline_qualifiers(definition);
  const int number = add_slot(unit, std::move(slot));
  unit.linked_slots[name.str()] = number;
  return number;
}

int anonymous_slot(Unit &unit, llvm::StringRef stem, file::Symbol symbol, SourceLocation where) {
  Slot slot;
  slot.kind = SlotKind::VARIABLE;
  slot.where = where;
  slot.symbol = std::move(symbol);
  do {
    slot.symbol.name = "_$" + stem.str() + "$" + std::to_string(++unit.images);
  } while (!unit.names.insert(slot.symbol.name).second);
  slot.symbol.sclass = C_STAT;
  return add_slot(unit, std::move(slot));
}

SymbolReference slot_reference(const Unit &unit, int slot) {
  const file::Symbol &symbol = unit.slots[slot].symbol;
  return {0, static_cast<std::int16_t>(slot), symbol.stype, symbol.squal};
}

SymbolReference variable_reference(Unit &unit, const clang::VarDecl *variable) {
  if (unit.function != nullptr) {
    const auto found = unit.function->variables.find(variable->getCanonicalDecl());
    if (found != unit.function->variables.end()) {
      return found->second;
    }
  }
  return slot_reference(unit, variable_slot(unit, variable));
}

SymbolReference add_local(Unit &unit, file::Symbol symbol, SourceLocation where) {
  Function &function = *unit.function;
  const std::string name = symbol.name;
  const auto taken = [&] {
    return function.names.count(symbol.name) != 0 ||
           (symbol.name != name && unit.names.count(symbol.name) != 0);
  };
  for (int number = 2; taken(); ++number) {
    symbol.name = name + "$" + std::to_string(number);
  }
  function.names.insert(symbol.name);
  check_name(unit, symbol.name, where);
  SymbolReference reference{2, 0, symbol.stype, symbol.squal};
  std::size_t index = function.locals.size();
  if (function.scope_sizes.empty()) {
    function.locals.push_back(std::move(symbol));
  } else {
    reference.level = static_cast<std::int16_t>(2 + function.scope_sizes.size());
    index = static_cast<std::size_t>(function.scope_sizes.back()++);
    function.body.emplace_back(std::move(symbol));
  }
  if (index >= max_file_symbols) {
    report_limit(unit, where,
                 "more than " + std::to_string(max_file_symbols) + " symbols in a scope");
    index = 0;
  }
  reference.index = static_cast<std::int16_t>(index);
  return reference;
}

SymbolReference make_temporary(Unit &unit, QualType type, SourceLocation where) {
  Function &function = *unit.function;
  file::Symbol symbol = make_symbol(unit, "_$t" + std::to_string(++function.temporaries),
                                    type.getUnqualifiedType(), C_AUTO, false, where);
  const SymbolReference reference{2, static_cast<std::int16_t>(function.locals.size()),
                                  symbol.stype, symbol.squal};
  if (function.locals.size() >= max_file_symbols) {
    report_limit(unit, where,
                 "more than " + std::to_string(max_file_symbols) + " symbols in a scope");
  }
  function.names.insert(symbol.name);
  function.locals.push_back(std::move(symbol));
  return reference;
}

std::string static_local_name(Unit &unit, llvm::StringRef name) {
  // The letter keeps them apart from the numbered names of other local variables.
  std::string candidate;
  int number = 0;
  do {
    candidate = underscored(name) + "$s" + std::to_string(++number);
  } while (!unit.names.insert(candidate).second);
  return candidate;
}

void reserve_names(Unit &unit) {
  for (const clang::Decl *decl : unit.context.getTranslationUnitDecl()->decls()) {
    const auto *value = llvm::dyn_cast<clang::ValueDecl>(decl);
    if (value != nullptr && value->getIdentifier() != nullptr) {
      unit.names.insert(underscored(value->getName()));
    }
  }
}

void check_attributes(Unit &unit, const clang::Decl *decl) {
  const auto reject = [&](const clang::Attr *attribute) {
    report_error(unit, attribute->getLocation(),
                 std::string("attribute '") + attribute->getSpelling() +
                     "' cannot be expressed by the target");
  };
  for (const clang::Attr *attribute : decl->attrs()) {
    switch (attribute->getKind()) {
    case clang::attr::Alias:
    case clang::attr::AsmLabel:
    case clang::attr::Cleanup:
    case clang::attr::Constructor:
    case clang::attr::Destructor:
    case clang::attr::IFunc:
    case clang::attr::Naked:
    case clang::attr::WeakRef: reject(attribute); break;
    default: break;
    }
  }
  const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl);
  if (variable != nullptr && variable->getTLSKind() != clang::VarDecl::TLS_None) {
    report_error(unit, variable->getLocation(), "the target has no thread-local variables");
  }
}

} // namespace velkor::cc
