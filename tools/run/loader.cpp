#include "run/loader.h"

#include "core/opcodes.h"
#include "icode/format.h"
#include "run/natives.h"

#include <algorithm>
#include <set>

namespace velkor::run {

std::string_view c_name(std::string_view name) {
  return name.starts_with('_') ? name.substr(1) : name;
}

bool is_volatile_object(const file::Symbol &record) {
  TypeWord type = record.stype;
  std::uint32_t qualifiers = record.squal;
  while (is_array(type)) {
    type = underived(type);
    qualifiers = underived(qualifiers);
  }
  return is_volatile_value(type, qualifiers);
}

namespace {

constexpr std::uint32_t largest_object = 1u << 30; // bytes

struct Loader {
  const file::IcodeFile &file;
  Program &program;
  std::vector<std::vector<SymbolInfo *>> scopes; // by lexical level
  std::vector<bool> visited;                     // nodes that belong to a tree already
  std::vector<SymbolInfo *> statics;             // to be resolved by name
  std::map<std::string, const SymbolInfo *> group_members;
  SymbolInfo *last_global = nullptr;
  // Of the current function.
  bool in_function = false;
  bool body_begun = false; // EA has been seen
  bool is_leaf = false;
  bool has_calls = false;
  std::set<int> labels;
  std::map<int, int> label_references; // label to line
  int line = 0;

  [[noreturn]] void fail(const std::string &what) const {
    std::string where;
    if (in_function) {
      where = "function '" + std::string(c_name(program.functions.back().symbol->record->name)) +
              "', line " + std::to_string(line) + ": ";
    }
    throw Fault{where + what, true};
  }
};

bool is_call(std::uint8_t op) {
  return op == CALL || op == UCALL || op == STCALL || op == USTCALL || op == XCALL || op == UXCALL;
}

bool refers_to_symbol(std::uint8_t op) {
  const RecordFields fields = opcode_table[op].fields;
  return fields == RecordFields::QUAL_SYMBOL || fields == RecordFields::SYMBOL ||
         fields == RecordFields::SYMBOL_QUAL;
}

// The symbol at (level, index) in the scopes that are open, or null.
const SymbolInfo *find_symbol(const Loader &loader, int level, int index) {
  if (level < 0 || static_cast<std::size_t>(level) >= loader.scopes.size()) return nullptr;
  const auto &scope = loader.scopes[level];
  if (index < 0 || static_cast<std::size_t>(index) >= scope.size()) return nullptr;
  return scope[index];
}

void define_label(Loader &loader, int index) {
  if (!loader.in_function) loader.fail("label " + std::to_string(index) + " outside of a function");
  if (!loader.labels.insert(index).second)
    loader.fail("label " + std::to_string(index) + " is defined twice");
}

// Checks a tree's shape and resolves its symbol references.
void scan_tree(Loader &loader, file::NodeIndex root) {
  std::vector<file::NodeIndex> pending = {root};
  const auto node_count = static_cast<file::NodeIndex>(loader.file.nodes.size());
  while (!pending.empty()) {
    const file::NodeIndex position = pending.back();
    pending.pop_back();
    if (position < 0 || position >= node_count) loader.fail("a tree without a root");
    if (loader.visited[position]) loader.fail("a node stands in two places");
    loader.visited[position] = true;
    const file::Node &node = loader.file.nodes[position];
    const std::string name = opcode_table[node.op].name;
    const int arity = op_arity(node.op);
    if ((arity >= 1) != (node.left != file::no_node) ||
        (arity == 2) != (node.right != file::no_node))
      loader.fail("operator " + name + " does not have its " + std::to_string(arity) + " operands");
    if (refers_to_symbol(node.op)) {
      loader.program.node_symbol[position] = find_symbol(loader, node.level, node.index);
      if (loader.program.node_symbol[position] == nullptr)
        loader.fail("no symbol (" + std::to_string(node.level) + ", " + std::to_string(node.index) +
                    ")");
    } else if (node.op == LABELREF && loader.in_function) {
      loader.label_references.emplace(node.value, loader.line);
    } else if (node.op == LOOP) {
      if (loader.file.nodes[node.right].op != ICON) loader.fail("LOOP without a label's number");
      define_label(loader, loader.file.nodes[node.right].value);
    }
    if (is_call(node.op)) loader.has_calls = true;
    if (node.right != file::no_node) pending.push_back(node.right);
    if (node.left != file::no_node) pending.push_back(node.left);
  }
}

// Bytes that an object of so many bits takes.
std::uint32_t object_bytes(const Loader &loader, const file::Symbol &record) {
  const std::int32_t bits = record.has_value ? record.final_size : record.size;
  if (bits < 0) loader.fail("symbol '" + record.name + "' has a negative size");
  return (static_cast<std::uint32_t>(bits) + 7) / 8;
}

std::uint32_t object_alignment(const file::Symbol &record) {
  const std::int32_t bytes = record.align / 8;
  return bytes == 1 || bytes == 2 || bytes == 8 || bytes == 16 ? static_cast<std::uint32_t>(bytes)
                                                               : 4u;
}

// Gives an auto or a parameter its place.
void place_local(FunctionSource &function, SymbolInfo &symbol) {
  const file::Symbol &record = *symbol.record;
  const bool is_parameter =
      record.sclass == C_ARG || record.sclass == C_REGPARM || record.sclass == C_VARARG;
  if (is_parameter && symbol.level == 1) {
    symbol.storage = Storage::ARGUMENT;
    symbol.place = function.parameter_bytes;
    const std::uint32_t slot =
        is_struct_or_union(record.stype) || is_floating(record.stype) ? symbol.bytes : 4;
    function.parameter_bytes += round_up(std::max(slot, 4u), 4);
    function.parameters.push_back(&symbol);
    if (record.sclass == C_VARARG) function.variadic = true;
    return;
  }
  symbol.storage = Storage::FRAME;
  symbol.place = round_up(function.frame_bytes, object_alignment(record));
  function.frame_bytes = symbol.place + std::max(symbol.bytes, 1u);
}

void add_symbol(Loader &loader, const file::Symbol &record) {
  SymbolInfo &symbol = loader.program.symbols.emplace_back();
  symbol.record = &record;
  symbol.level = static_cast<int>(loader.scopes.size()) - 1;
  symbol.bytes = object_bytes(loader, record);
  loader.scopes.back().push_back(&symbol);
  if (record.tag_level >= 0 && record.tag_index >= 0 &&
      find_symbol(loader, record.tag_level, record.tag_index) == nullptr)
    loader.fail("symbol '" + record.name + "' has an unknown tag");
  if (symbol.level == 0) loader.last_global = &symbol;

  switch (record.sclass) {
  case C_EXT:
  case C_STAT:
  case C_EXTDEF:
  case C_USTATIC:
  case C_GLOBALREG: loader.statics.push_back(&symbol); break;
  case C_STATREG:
  case C_EXTREG:
    loader.statics.push_back(&symbol);
    loader.group_members[record.name] = &symbol;
    break;
  case C_AUTO:
  case C_REG:
  case C_VREG:
  case C_ARG:
  case C_REGPARM:
  case C_VARARG:
    if (!loader.in_function) {
      loader.fail("symbol '" + record.name + "' has a local class outside of a function");
    }
    place_local(loader.program.functions.back(), symbol);
    if (loader.program.functions.back().frame_bytes > largest_object)
      loader.fail("the function's objects are too large");
    break;
  default: break;
  }
  if (record.has_value) {
    for (const file::NodeIndex tree : record.value)
      scan_tree(loader, tree);
    const int owner =
        loader.in_function ? static_cast<int>(loader.program.functions.size()) - 1 : -1;
    loader.program.initial_values.push_back({&symbol, owner});
  }
}

void begin_function(Loader &loader, std::size_t record, int line) {
  if (loader.in_function) loader.fail("a function begins inside another one");
  SymbolInfo *symbol = loader.last_global;
  if (symbol == nullptr || !is_function(symbol->record->stype))
    loader.fail("begin of function without the function's symbol in front");
  const std::string &name = symbol->record->name;
  const int number = static_cast<int>(loader.program.functions.size());
  if (!loader.program.function_by_name.emplace(name, number).second)
    loader.fail("function '" + std::string(c_name(name)) + "' is defined twice");
  FunctionSource &function = loader.program.functions.emplace_back();
  function.symbol = symbol;
  function.first_record = record + 1;
  function.line = line;
  loader.line = line;
  loader.in_function = true;
  loader.body_begun = loader.is_leaf = loader.has_calls = false;
  loader.labels.clear();
  loader.label_references.clear();
  loader.scopes.emplace_back();
}

void end_function(Loader &loader, std::size_t record) {
  if (!loader.in_function) loader.fail("end of a function that has not begun");
  if (!loader.body_begun || loader.scopes.size() != 3) loader.fail("scopes are not balanced");
  for (const auto &[label, line] : loader.label_references) {
    if (loader.labels.contains(label)) continue;
    loader.line = line;
    loader.fail("label " + std::to_string(label) + " is not defined");
  }
  if (loader.is_leaf && loader.has_calls) loader.fail("a leaf function has calls");
  loader.program.functions.back().end_record = record;
  loader.scopes.resize(1);
  loader.in_function = false;
}

void take_marker(Loader &loader, const file::Marker &marker, std::size_t record) {
  switch (marker.kind) {
  case MARKER_BF: begin_function(loader, record, marker.value); break;
  case MARKER_EF: end_function(loader, record); break;
  case MARKER_EA:
    if (!loader.in_function || loader.body_begun) loader.fail("misplaced end of parameters");
    loader.body_begun = true;
    loader.scopes.emplace_back();
    break;
  case MARKER_BB:
    if (!loader.body_begun || !loader.in_function) loader.fail("misplaced begin of a block");
    if (loader.scopes.size() >= static_cast<std::size_t>(max_scope_depth))
      loader.fail("scopes nested deeper than " + std::to_string(max_scope_depth));
    loader.scopes.emplace_back();
    break;
  case MARKER_EB:
    if (!loader.in_function || loader.scopes.size() <= 3) loader.fail("scopes are not balanced");
    loader.scopes.pop_back();
    break;
  default: break; // EL, and kinds that nobody knows: they say nothing here
  }
}

// Walks all records once, in order, as the scopes open and close.
void scan_records(Loader &loader) {
  loader.scopes.emplace_back();
  for (std::size_t number = 0; number < loader.file.records.size(); ++number) {
    const file::Record &record = loader.file.records[number];
    if (const auto *symbol = std::get_if<file::Symbol>(&record)) {
      add_symbol(loader, *symbol);
    } else if (const auto *marker = std::get_if<file::Marker>(&record)) {
      take_marker(loader, *marker, number);
    } else if (const auto *statement = std::get_if<file::Statement>(&record)) {
      if (!loader.in_function) loader.fail("a statement outside of a function");
      loader.line = static_cast<std::uint16_t>(statement->line2);
      scan_tree(loader, statement->tree);
    } else if (const auto *label = std::get_if<file::Label>(&record)) {
      define_label(loader, label->index);
    } else if (const auto *attribute = std::get_if<file::Attribute>(&record)) {
      if (attribute->letter == attribute_leaf) loader.is_leaf = true;
    }
  }
  if (loader.in_function) loader.fail("the function has no end");
}

bool defines_object(const file::Symbol &record) {
  return record.sclass == C_EXT || record.sclass == C_STAT || record.sclass == C_STATREG ||
         record.sclass == C_EXTREG || record.sclass == C_GLOBALREG;
}

// One object for all records of one name.
void collect_objects(Loader &loader) {
  for (const SymbolInfo *symbol : loader.statics) {
    const file::Symbol &record = *symbol->record;
    if (is_function(record.stype)) continue;
    StaticObject &object = loader.program.objects[record.name];
    object.bytes = std::max(object.bytes, symbol->bytes);
    object.alignment = std::max(object.alignment, object_alignment(record));
    object.defined = object.defined || defines_object(record);
    object.has_value = object.has_value || record.has_value;
    object.is_volatile = object.is_volatile || is_volatile_object(record);
    if (record.sclass == C_STATREG || record.sclass == C_EXTREG) {
      object.in_group = true;
      object.group_offset = static_cast<std::uint32_t>(record.offset) / 8;
    }
  }
}

// Objects that the optimizer makes stand behind all others, so that the program's own ones keep
// their addresses from one level of optimization to the next.
bool made_by_optimizer(const std::string &name) {
  return name == "$$" || name.find("$AUTO$") != std::string::npos;
}

void place_objects(Loader &loader, Memory &memory) {
  std::map<std::string, StaticObject> &objects = loader.program.objects;
  for (const bool late : {false, true}) {
    for (auto &[name, object] : objects) {
      if (made_by_optimizer(name) != late || object.in_group || !object.defined) continue;
      if (object.bytes > largest_object) loader.fail("object '" + name + "' is too large");
      object.address = memory.reserve(std::max(object.bytes, 1u), object.alignment);
    }
  }
  const auto group = objects.find("$$");
  std::uint32_t undefined_count = 0;
  for (auto &[name, object] : objects) {
    if (object.in_group) {
      if (group == objects.end()) loader.fail("group member '" + name + "' without a group");
      if (object.group_offset > group->second.bytes ||
          object.bytes > group->second.bytes - object.group_offset)
        loader.fail("member '" + name + "' does not fit into its group");
      object.address = group->second.address + object.group_offset;
    } else if (!object.defined && is_native_object(name)) {
      object.defined = true;
      object.address = memory.reserve(4, 4);
    } else if (!object.defined) {
      if (object.has_value) loader.fail("object '" + name + "' has a value but no definition");
      object.address =
          first_undefined_object + undefined_object_stride * (undefined_count++ % 0x800);
    }
  }
}

void resolve_statics(Loader &loader) {
  for (SymbolInfo *symbol : loader.statics) {
    const file::Symbol &record = *symbol->record;
    if (is_function(record.stype)) {
      symbol->storage = Storage::FUNCTION;
      symbol->place = function_handle(loader.program, record.name);
      continue;
    }
    const StaticObject &object = loader.program.objects[record.name];
    symbol->storage = object.defined ? Storage::FIXED : Storage::UNDEFINED;
    symbol->place = object.address;
    symbol->bytes = object.bytes;
  }
}

// Literals with the same bytes share one place, so that copies of a tree yield the same address.
void place_literals(Loader &loader, Memory &memory) {
  for (const file::Node &node : loader.file.nodes) {
    if (node.op != SCON || is_array(node.type)) continue;
    const auto [place, is_new] = loader.program.literals.emplace(node.text, 0);
    if (!is_new) continue;
    place->second = memory.reserve(static_cast<std::uint32_t>(node.text.size()) + 1, 4);
    std::copy(node.text.begin(), node.text.end(), memory.base() + place->second);
  }
}

} // namespace

Address function_handle(Program &program, const std::string &name) {
  const auto found = program.function_by_name.find(name);
  if (found != program.function_by_name.end())
    return first_function_handle + 4 * static_cast<Address>(found->second);
  const int native = find_native(c_name(name));
  if (native >= 0) return first_native_handle + 4 * static_cast<Address>(native);
  const std::string missing(c_name(name));
  auto &names = program.missing_functions;
  const auto known = std::find(names.begin(), names.end(), missing);
  const auto number = static_cast<Address>(known - names.begin());
  if (known == names.end()) names.push_back(missing);
  return first_missing_handle + 4 * number;
}

void load(const file::IcodeFile &file, Program &program, Memory &memory) {
  program.file = &file;
  program.node_symbol.assign(file.nodes.size(), nullptr);
  Loader loader{file, program, {}, {}, {}, {}, nullptr, false, false, false, false, {}, {}, 0};
  loader.visited.assign(file.nodes.size(), false);
  scan_records(loader);
  collect_objects(loader);
  place_objects(loader, memory);
  resolve_statics(loader);
  place_literals(loader, memory);
}

} // namespace velkor::run
