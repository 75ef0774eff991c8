#include "file/validate.h"

#include <map>
#include <set>
#include <string_view>

#include "core/opcodes.h"
#include "core/storage_classes.h"
#include "core/types.h"
#include "file/validate_types.h"
#include "icode/format.h"

namespace velkor::file {
namespace {

constexpr std::string_view never_returns_note = "***\t; the preceding call never returns";
constexpr std::int32_t first_internal_opcode = ILLOP; // this one and all above

// Where in a function the walk stands.
enum class Place { OUTSIDE, PARAMETERS, LOCALS, STATEMENTS };

struct Validator {
  const IcodeFile &file;
  std::vector<std::string> faults{};
  std::vector<std::vector<const Symbol *>> scopes{1}; // by lexical level
  Place place = Place::OUTSIDE;
  const Symbol *last_global = nullptr;
  // Of the current function.
  std::string function{};
  int line = 0;
  std::set<int> labels{};
  std::map<int, int> jumps{};                 // label to the line of the first jump
  std::set<std::int32_t> virtual_registers{}; // their numbers
  bool runs_on = false;                       // control can reach the end of what was read so far
  bool after_call = false;                    // the last statement holds a call at its root

  void fault(const std::string &what) {
    if (faults.size() >= fault_limit) return;
    std::string where;
    if (place != Place::OUTSIDE)
      where = "function '" + function + "', line " + std::to_string(line) + ": ";
    faults.push_back(where + what);
  }
  void require(bool holds, const std::string &what) {
    if (!holds) fault(what);
  }
  [[nodiscard]] const Node &node_at(NodeIndex index) const {
    return file.nodes[static_cast<std::size_t>(index)];
  }
};

// ------------------------------------------------------------------------------------------------
// Symbols

bool is_local_class(std::uint8_t sclass) {
  switch (sclass) {
  case C_AUTO:
  case C_REG:
  case C_VREG:
  case C_ARG:
  case C_REGPARM:
  case C_VARARG: return true;
  default: return false;
  }
}

bool is_parameter_class(std::uint8_t sclass) {
  return sclass == C_ARG || sclass == C_REGPARM || sclass == C_VARARG;
}

bool is_member_class(std::uint8_t sclass) {
  return sclass == C_MOS || sclass == C_MOU || sclass == C_FIELD;
}

const Symbol *find_symbol(const Validator &check, int level, int index) {
  if (level < 0 || static_cast<std::size_t>(level) >= check.scopes.size()) return nullptr;
  const auto &scope = check.scopes[static_cast<std::size_t>(level)];
  if (index < 0 || static_cast<std::size_t>(index) >= scope.size()) return nullptr;
  return scope[static_cast<std::size_t>(index)];
}

void check_class(Validator &check, const Symbol &symbol) {
  const std::string name = "symbol '" + symbol.name + "'";
  const std::size_t level = check.scopes.size() - 1;
  if (*storage_class_table[symbol.sclass].name == '\0')
    check.fault(name + " has storage class " + std::to_string(symbol.sclass) + ", which is none");
  if (is_local_class(symbol.sclass) && level == 0) check.fault(name + " is a local at file level");
  if (is_parameter_class(symbol.sclass) && level > 1)
    check.fault(name + " is a parameter inside the body");
  if (symbol.sclass == C_VREG && !check.virtual_registers.insert(symbol.offset).second)
    check.fault(name + " has the virtual register " + std::to_string(symbol.offset) +
                " of another symbol");
}

void scan_tree(Validator &check, NodeIndex root, bool is_statement);

void take_symbol(Validator &check, const Symbol &symbol) {
  check_class(check, symbol);
  check.scopes.back().push_back(&symbol); // a tag may name itself
  if (check.scopes.size() == 1) check.last_global = &symbol;
  if (symbol.tag_level >= 0 && symbol.tag_index >= 0)
    check.require(find_symbol(check, symbol.tag_level, symbol.tag_index) != nullptr,
                  "symbol '" + symbol.name + "' has a tag that is not declared");
  if (check.place == Place::STATEMENTS)
    check.fault("symbol '" + symbol.name + "' stands among the statements");
  for (const NodeIndex tree : symbol.value)
    scan_tree(check, tree, false);
}

// ------------------------------------------------------------------------------------------------
// Trees

bool refers_to_symbol(std::uint8_t op) {
  const RecordFields fields = opcode_table[op].fields;
  return fields == RecordFields::QUAL_SYMBOL || fields == RecordFields::SYMBOL ||
         fields == RecordFields::SYMBOL_QUAL;
}

bool may_stand_in_statement(std::uint8_t op) {
  switch (op) {
  case ENDINIT:
  case SKIP:
  case LCON:
  case LOOP:
  case ENDLOOP:
  case DDNODE:
  case PPRAGMA: return false;
  default: return opcode_table[op].listed && op < first_internal_opcode;
  }
}

bool may_refer_to_label(std::uint8_t parent) {
  return parent == BRANCH || parent == CBRANCH || parent == CASE || parent == DEFAULT;
}

// The case list of a switch: COMMA nodes over CASE and DEFAULT.
void check_cases(Validator &check, NodeIndex list) {
  std::set<std::int32_t> values;
  int defaults = 0;
  std::vector<NodeIndex> pending = {list};
  while (!pending.empty()) {
    const Node &node = check.node_at(pending.back());
    pending.pop_back();
    if (node.op == COMMA) {
      pending.push_back(node.left);
      pending.push_back(node.right);
    } else if (node.op == DEFAULT) {
      ++defaults;
    } else if (node.op != CASE || check.node_at(node.left).op != ICON) {
      check.fault("a switch with something else than cases");
    } else if (const std::int32_t value = check.node_at(node.left).value;
               !values.insert(value).second) {
      check.fault("a switch with two cases of " + std::to_string(value));
    }
  }
  check.require(defaults == 1, "a switch with " + std::to_string(defaults) + " defaults");
}

void check_shape(Validator &check, const Node &node) {
  const auto is = [&](NodeIndex index, Opcode op) { return check.node_at(index).op == op; };
  switch (node.op) {
  case BRANCH:
  case DEFAULT: check.require(is(node.left, LABELREF), "a jump without a label"); break;
  case CBRANCH:
  case CASE: check.require(is(node.right, LABELREF), "a branch without a label"); break;
  case CONDITIONAL:
    check.require(is(node.right, ALTERNATIVES), "a ? without its two values");
    break;
  case MEMBER:
  case ARROW: check.require(is(node.right, NAME), "a member access without a member"); break;
  case SWITCH: check_cases(check, node.right); break;
  default: break;
  }
}

// Symbols and labels that the node refers to.
void check_references(Validator &check, const Node &node, const Node *parent) {
  const Symbol *symbol = nullptr;
  if (refers_to_symbol(node.op) && (node.op == NAME || node.level != -1)) {
    symbol = find_symbol(check, node.level, node.index);
    if (!symbol)
      check.fault("no symbol (" + std::to_string(node.level) + ", " + std::to_string(node.index) +
                  ")");
  }
  if (symbol && node.op == NAME) {
    const bool behind_access = parent && (parent->op == MEMBER || parent->op == ARROW) &&
                               &check.node_at(parent->right) == &node;
    if (behind_access != is_member_class(symbol->sclass))
      check.fault("symbol '" + symbol->name + "' where none of its class may stand");
  }
  if (node.op == LABELREF) {
    if (!parent || !may_refer_to_label(parent->op)) check.fault("a label inside an expression");
    check.jumps.emplace(node.value, check.line);
  }
}

std::uint32_t type_of_name(const Validator &check, const Node &node) {
  const Symbol *symbol = node.op == NAME ? find_symbol(check, node.level, node.index) : nullptr;
  return symbol ? symbol->stype : node.type;
}

void check_node(Validator &check, const Node &node, const Node *parent, bool is_statement) {
  check_references(check, node, parent);
  if (!is_statement) return; // initial values come as the front end made them
  const std::string name = opcode_table[node.op].name;
  if (!may_stand_in_statement(node.op)) {
    check.fault("opcode " + std::to_string(node.op) + " " + name + " in a finished file");
    return;
  }
  if (parent && op_effect(node.op) == TRANSFERS)
    check.fault("a transfer of control inside an expression");
  check_shape(check, node);
  if (const char *what = type_fault(check.file, node, type_of_name(check, node)))
    check.fault(name + ": " + what);
}

// The decoder has made sure that every operator has its operands.
void scan_tree(Validator &check, NodeIndex root, bool is_statement) {
  struct Visit {
    NodeIndex node;
    NodeIndex parent;
  };
  std::vector<Visit> pending = {{root, no_node}};
  while (!pending.empty()) {
    const Visit visit = pending.back();
    pending.pop_back();
    const Node &node = check.node_at(visit.node);
    const Node *parent = visit.parent == no_node ? nullptr : &check.node_at(visit.parent);
    check_node(check, node, parent, is_statement);
    if (node.right != no_node) pending.push_back({node.right, visit.node});
    if (node.left != no_node) pending.push_back({node.left, visit.node});
  }
}

// ------------------------------------------------------------------------------------------------
// Functions

bool is_call(std::uint8_t op) {
  return op == CALL || op == UCALL || op == STCALL || op == USTCALL || op == XCALL || op == UXCALL;
}

void begin_function(Validator &check) {
  check.require(check.place == Place::OUTSIDE, "a function begins inside another one");
  const Symbol *symbol = check.last_global;
  check.function = symbol ? symbol->name : "";
  if (!symbol || !is_function(symbol->stype))
    check.fault("a function begins without its symbol in front");
  check.place = Place::PARAMETERS;
  check.scopes.resize(1);
  check.scopes.emplace_back();
  check.labels.clear();
  check.jumps.clear();
  check.virtual_registers.clear();
  check.runs_on = true;
  check.after_call = false;
}

void end_function(Validator &check) {
  check.require(check.place == Place::STATEMENTS, "the end of a function that is not complete");
  check.require(check.scopes.size() == 3, "scopes that do not close");
  for (const auto &[label, line] : check.jumps) {
    check.line = line;
    check.require(check.labels.count(label) != 0,
                  "label " + std::to_string(label) + " is not defined");
  }
  check.require(!check.runs_on, "control runs off the end");
  check.scopes.resize(1);
  check.place = Place::OUTSIDE;
}

void step(Validator &check, Place from, Place to, const char *what) {
  if (check.place != from) check.fault(what);
  check.place = to;
}

void take_marker(Validator &check, const Marker &marker) {
  if (marker.kind == MARKER_BF) check.line = marker.value;
  switch (marker.kind) {
  case MARKER_BF: begin_function(check); break;
  case MARKER_EA:
    step(check, Place::PARAMETERS, Place::LOCALS, "parameters that end twice");
    check.scopes.emplace_back();
    break;
  case MARKER_EL: step(check, Place::LOCALS, Place::STATEMENTS, "misplaced end of locals"); break;
  case MARKER_BB: check.scopes.emplace_back(); break;
  case MARKER_EB:
    if (check.scopes.size() > 3)
      check.scopes.pop_back();
    else
      check.fault("scopes that do not close");
    break;
  case MARKER_EF: end_function(check); break;
  default: check.fault("marker " + std::to_string(marker.kind) + ", which is none");
  }
}

void take_statement(Validator &check, const Statement &statement) {
  if (check.place != Place::STATEMENTS) {
    check.fault("a statement outside of a function's body");
    return;
  }
  check.line = static_cast<std::uint16_t>(statement.line);
  scan_tree(check, statement.tree, true);
  const std::uint8_t op = check.node_at(statement.tree).op;
  check.runs_on = op != BRANCH && op != SWITCH && op != RETURN && op != URETURN;
  const Node &root = check.node_at(statement.tree);
  check.after_call = is_call(op) || (op == ASSIGN && is_call(check.node_at(root.right).op));
}

void take_label(Validator &check, const Label &label) {
  if (check.place != Place::STATEMENTS) {
    check.fault("label " + std::to_string(label.index) + " outside of a function's body");
    return;
  }
  check.require(label.index > 0, "label " + std::to_string(label.index) + " is no label's number");
  check.require(check.labels.insert(label.index).second,
                "label " + std::to_string(label.index) + " is defined twice");
  check.runs_on = true;
}

// Behind a call that never returns stands nothing but the note that says so.
void take_comment(Validator &check, const Comment &comment) {
  if (check.after_call && comment.text == never_returns_note) check.runs_on = false;
}

void take_record(Validator &check, const Record &record) {
  if (const auto *symbol = std::get_if<Symbol>(&record))
    take_symbol(check, *symbol);
  else if (const auto *marker = std::get_if<Marker>(&record))
    take_marker(check, *marker);
  else if (const auto *statement = std::get_if<Statement>(&record))
    take_statement(check, *statement);
  else if (const auto *label = std::get_if<Label>(&record))
    take_label(check, *label);
  else if (const auto *comment = std::get_if<Comment>(&record))
    take_comment(check, *comment);
}

} // namespace

std::vector<std::string> validate(const IcodeFile &file) {
  Validator check{file};
  for (const Record &record : file.records)
    take_record(check, record);
  check.require(check.place == Place::OUTSIDE, "a function without an end");
  return check.faults;
}

} // namespace velkor::file
