#include "cc/functions.h"

#include "cc/statements.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

namespace velkor::cc {

namespace {

// The type in which callers pass a parameter: the prototype's, or the promoted one without it.
QualType passed_type(const Unit &unit, const clang::FunctionDecl *function, unsigned number) {
  if (const auto *prototype = function->getType()->getAs<clang::FunctionProtoType>()) {
    return prototype->getParamType(number).getUnqualifiedType();
  }
  const QualType type = function->getParamDecl(number)->getType().getUnqualifiedType();
  if (type->isSpecificBuiltinType(clang::BuiltinType::Float)) {
    return unit.context.DoubleTy;
  }
  return type->isPromotableIntegerType() ? unit.context.getPromotedIntegerType(type) : type;
}

StorageClass parameter_class(const clang::FunctionDecl *function, unsigned number, QualType type) {
  if (function->isVariadic()) {
    return number + 1 == function->getNumParams() ? C_VARARG : C_ARG;
  }
  return type->isRecordType() ? C_ARG : C_REGPARM;
}

std::string parameter_name(const clang::ParmVarDecl *parameter, unsigned number) {
  return parameter->getName().empty() ? "_$p" + std::to_string(number)
                                      : underscored(parameter->getName());
}

// Makes the symbols of level 1, and the homes of level 2 from which the body reads all but the
// structs. Returns the copies into the homes as one tree, or no_node.
NodeIndex add_parameters(Unit &unit) {
  Function &function = *unit.function;
  NodeIndex prologue = no_node;
  std::int32_t offset = 0; // bits in the argument area
  for (unsigned i = 0; i < function.decl->getNumParams(); ++i) {
    const clang::ParmVarDecl *parameter = function.decl->getParamDecl(i);
    const SourceLocation where = parameter->getLocation();
    const QualType type = passed_type(unit, function.decl, i);
    const std::string name = parameter_name(parameter, i);
    file::Symbol symbol =
        make_symbol(unit, name, type, parameter_class(function.decl, i, type), false, where);
    symbol.offset = symbol.sclass == C_REGPARM ? 0 : offset;
    offset += (symbol.size + 31) / 32 * 32;
    const SymbolReference passed{1, static_cast<std::int16_t>(i), symbol.stype, symbol.squal};
    function.parameters.push_back(std::move(symbol));
    if (type->isRecordType()) {
      function.variables[parameter->getCanonicalDecl()] = passed;
      function.names.insert(name);
      continue;
    }
    const SymbolReference home =
        add_local(unit, make_symbol(unit, name, parameter->getType(), C_AUTO, false, where), where);
    function.variables[parameter->getCanonicalDecl()] = home;
    const NodeIndex target = make_name(unit, home);
    const NodeIndex value = is_derived(home.stype)
                                ? convert_pointer(unit, make_name(unit, passed), home.stype)
                                : convert_arithmetic(unit, make_name(unit, passed), home.stype);
    const NodeIndex copy = make_binary(unit, ASSIGN, home.stype, target, value);
    prologue = prologue == no_node ? copy : make_binary(unit, PCOMMA, VOID, prologue, copy);
  }
  return prologue;
}

bool ends_in_return(const Unit &unit) {
  const std::vector<file::Record> &body = unit.function->body;
  if (body.empty()) {
    return false;
  }
  const auto *last = std::get_if<file::Statement>(&body.back());
  if (last == nullptr) {
    return false;
  }
  const std::uint8_t op = unit.file.nodes[last->tree].op;
  return op == RETURN || op == URETURN;
}

void add_final_return(Unit &unit) {
  Function &function = *unit.function;
  if (ends_in_return(unit)) {
    return;
  }
  const SourceLocation where = function.decl->getBody()->getEndLoc();
  const SymbolReference symbol = slot_reference(unit, function.slot);
  const NodeIndex name = make_name(unit, symbol);
  const bool returns_zero = function.decl->getName() == "main" && underived(symbol.stype) == INT;
  add_statement(unit, where,
                returns_zero ? make_binary(unit, RETURN, INT, name, make_integer(unit, INT, 0))
                             : make_unary(unit, URETURN, VOID, name));
}

} // namespace

void translate_function(Unit &unit, const clang::FunctionDecl *definition) {
  const auto *body = llvm::dyn_cast_or_null<clang::CompoundStmt>(definition->getBody());
  if (body == nullptr) {
    return;
  }
  const int slot = function_slot(unit, definition);
  unit.slots[slot].definition = static_cast<int>(unit.functions.size());
  unit.functions.push_back(std::make_unique<Function>());
  unit.function = unit.functions.back().get();
  Function &function = *unit.function;
  function.decl = definition;
  function.slot = slot;
  function.first_line = line_of(unit, definition->getLocation());
  function.last_line = line_of(unit, body->getEndLoc());
  function.label_references.push_back(0);
  const NodeIndex prologue = add_parameters(unit);
  if (prologue != no_node) {
    add_statement(unit, definition->getLocation(), prologue);
  }
  declare_variables(unit, body);
  translate_body(unit, body);
  add_final_return(unit);
  drop_unused_labels(function);
  unit.function = nullptr;
}

} // namespace velkor::cc
