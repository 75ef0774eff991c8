#include "cc/assemble.h"

#include "icode/format.h"

#include <functional>

namespace velkor::cc {

namespace {

enum class Visit : std::uint8_t { NEW, OPEN, DONE };

bool refers_to_symbol(const file::Node &node) {
  const RecordFields fields = opcode_table[node.op].fields;
  return fields == RecordFields::QUAL_SYMBOL || fields == RecordFields::SYMBOL ||
         fields == RecordFields::SYMBOL_QUAL;
}

// Calls visit for every node of a tree; returns its depth.
template <typename Visitor> int for_each_node(Unit &unit, NodeIndex root, Visitor visit) {
  std::vector<std::pair<NodeIndex, int>> pending{{root, 1}};
  int depth = 0;
  while (!pending.empty()) {
    const auto [index, level] = pending.back();
    pending.pop_back();
    if (index == no_node) {
      continue;
    }
    depth = std::max(depth, level);
    file::Node &node = unit.file.nodes[index];
    visit(node);
    pending.emplace_back(node.left, level + 1);
    pending.emplace_back(node.right, level + 1);
  }
  return depth;
}

// Calls visit for the slot of every reference to the file level in a tree.
template <typename Visitor> void for_each_reference(Unit &unit, NodeIndex root, Visitor visit) {
  for_each_node(unit, root, [&](const file::Node &node) {
    if (refers_to_symbol(node) && node.level == 0) {
      visit(static_cast<int>(node.index));
    }
  });
}

// The trees of a record: of a statement, or of a symbol's initial value.
std::vector<NodeIndex> trees_of(const file::Record &record) {
  if (const auto *statement = std::get_if<file::Statement>(&record)) {
    return {statement->tree};
  }
  if (const auto *symbol = std::get_if<file::Symbol>(&record)) {
    return symbol->value;
  }
  return {};
}

bool contains_by_value(const file::Symbol &member) {
  TypeWord type = member.stype;
  while (is_array(type)) {
    type = underived(type);
  }
  return is_struct_or_union(type);
}

struct Assembly {
  Unit &unit;
  int next_index = 0;
  std::vector<Visit> visits;
  std::vector<bool> needs_declaration;
  std::vector<int> variable_order;
};

// Gives a record of file level the next position. Its tag must have its own by now, or is named.
void add_file_symbol(Assembly &state, file::Symbol symbol, int &index, SourceLocation where) {
  if (state.next_index >= max_file_symbols) {
    report_limit(state.unit, where,
                 "more than " + std::to_string(max_file_symbols) + " symbols of file level");
    return;
  }
  index = state.next_index++;
  if (symbol.tag_level == 0) {
    const int tag_index = state.unit.slots[symbol.tag_index].index;
    symbol.tag_level = tag_index < 0 ? std::int16_t{-1} : std::int16_t{0};
    symbol.tag_index = static_cast<std::int16_t>(tag_index);
  }
  state.unit.file.records.emplace_back(std::move(symbol));
}

// Whether a tag that is being put out lies in this one by value.
bool needs_open_tag(const Assembly &state, int tag) {
  if (state.visits[tag] == Visit::OPEN) {
    return true;
  }
  for (const int member : state.unit.slots[tag].members) {
    const file::Symbol &symbol = state.unit.slots[member].symbol;
    if (symbol.tag_level == 0 && contains_by_value(symbol) &&
        needs_open_tag(state, symbol.tag_index)) {
      return true;
    }
  }
  return false;
}

void add_tag(Assembly &state, int tag) {
  Unit &unit = state.unit;
  if (state.visits[tag] != Visit::NEW || !unit.slots[tag].complete) {
    return;
  }
  state.visits[tag] = Visit::OPEN;
  for (const int member : unit.slots[tag].members) {
    const file::Symbol &symbol = unit.slots[member].symbol;
    if (symbol.tag_level == 0 && contains_by_value(symbol)) {
      add_tag(state, symbol.tag_index);
    }
  }
  for (const int member : unit.slots[tag].members) {
    const file::Symbol &symbol = unit.slots[member].symbol;
    if (symbol.tag_level == 0 && !needs_open_tag(state, symbol.tag_index)) {
      add_tag(state, symbol.tag_index);
    }
  }
  Slot &slot = unit.slots[tag];
  slot.index = state.next_index; // the record names itself
  add_file_symbol(state, slot.symbol, slot.index, slot.where);
  for (const int member : slot.members) {
    add_file_symbol(state, unit.slots[member].symbol, unit.slots[member].index, slot.where);
  }
  file::Symbol end = slot.symbol;
  end.name = ".eos";
  end.sclass = C_EOS;
  int end_index = 0;
  add_file_symbol(state, std::move(end), end_index, slot.where);
  state.visits[tag] = Visit::DONE;
}

// Orders the variables so that what initial values refer to comes first. Where that is impossible
// the one that closes the circle needs a declaration.
void order_variable(Assembly &state, int slot) {
  state.visits[slot] = Visit::OPEN;
  for (const NodeIndex root : state.unit.slots[slot].symbol.value) {
    for_each_reference(state.unit, root, [&](int other) {
      if (state.unit.slots[other].kind == SlotKind::FUNCTION) {
        state.needs_declaration[other] = true;
      } else if (other == slot || state.unit.slots[other].kind != SlotKind::VARIABLE) {
        return;
      } else if (state.visits[other] == Visit::NEW) {
        order_variable(state, other);
      } else if (state.visits[other] == Visit::OPEN) {
        state.needs_declaration[other] = true;
      }
    });
  }
  state.visits[slot] = Visit::DONE;
  state.variable_order.push_back(slot);
}

void find_needed_declarations(Assembly &state) {
  Unit &unit = state.unit;
  for (std::size_t place = 0; place < unit.functions.size(); ++place) {
    const Function &function = *unit.functions[place];
    const auto note = [&](int slot) {
      const Slot &other = unit.slots[slot];
      if (other.kind == SlotKind::FUNCTION &&
          (other.definition < 0 || other.definition > static_cast<int>(place))) {
        state.needs_declaration[slot] = true;
      }
    };
    for (const file::Record &record : function.body) {
      for (const NodeIndex root : trees_of(record)) {
        for_each_reference(unit, root, note);
      }
    }
    for (const file::Symbol &symbol : function.locals) {
      for (const NodeIndex root : symbol.value) {
        for_each_reference(unit, root, note);
      }
    }
  }
}

void add_declarations(Assembly &state) {
  for (std::size_t number = 0; number < state.unit.slots.size(); ++number) {
    Slot &slot = state.unit.slots[number];
    if (!state.needs_declaration[number]) {
      continue;
    }
    file::Symbol symbol = slot.symbol;
    symbol.has_value = false;
    symbol.value.clear();
    if (slot.kind == SlotKind::VARIABLE) {
      symbol.sclass = symbol.sclass == C_STAT ? C_USTATIC : C_EXTDEF;
    }
    add_file_symbol(state, std::move(symbol), slot.declaration_index, slot.where);
  }
}

// The position by which the trees of a body (or of initial values: place -1) name a slot.
int file_index(const Slot &slot, int place) {
  if (slot.kind == SlotKind::FUNCTION) {
    return slot.definition >= 0 && slot.definition <= place ? slot.index : slot.declaration_index;
  }
  return slot.declaration_index >= 0 ? slot.declaration_index : slot.index;
}

void resolve_tree(Assembly &state, NodeIndex root, int place, SourceLocation where) {
  const int depth = for_each_node(state.unit, root, [&](file::Node &node) {
    if (refers_to_symbol(node) && node.level == 0) {
      node.index = static_cast<std::int16_t>(file_index(state.unit.slots[node.index], place));
    }
  });
  if (depth > max_tree_depth) {
    report_limit(state.unit, where,
                 "an expression nests deeper than " + std::to_string(max_tree_depth) +
                     " operators");
  }
}

void add_variables(Assembly &state) {
  for (const int number : state.variable_order) {
    Slot &slot = state.unit.slots[number];
    slot.index = state.next_index; // an initial value may hold the object's own address
    for (const NodeIndex root : slot.symbol.value) {
      resolve_tree(state, root, -1, slot.where);
    }
    add_file_symbol(state, slot.symbol, slot.index, slot.where);
  }
}

void add_local_symbol(Assembly &state, file::Symbol symbol, int place, SourceLocation where) {
  for (const NodeIndex root : symbol.value) {
    resolve_tree(state, root, place, where);
  }
  if (symbol.tag_level == 0) {
    const int tag_index = state.unit.slots[symbol.tag_index].index;
    symbol.tag_level = tag_index < 0 ? std::int16_t{-1} : std::int16_t{0};
    symbol.tag_index = static_cast<std::int16_t>(tag_index);
  }
  state.unit.file.records.emplace_back(std::move(symbol));
}

void add_function(Assembly &state, int place) {
  Unit &unit = state.unit;
  Function &function = *unit.functions[static_cast<std::size_t>(place)];
  Slot &slot = unit.slots[function.slot];
  const SourceLocation where = function.decl->getLocation();
  file::Symbol symbol = slot.symbol;
  symbol.sclass = symbol.sclass == C_USTATIC ? C_STAT : C_EXT;
  add_file_symbol(state, std::move(symbol), slot.index, where);
  std::vector<file::Record> &records = unit.file.records;
  const auto marker = [&](MarkerKind kind, int line) {
    records.emplace_back(file::Marker{kind, static_cast<std::int16_t>(line)});
  };
  marker(MARKER_BF, function.first_line);
  for (file::Symbol &parameter : function.parameters) {
    add_local_symbol(state, std::move(parameter), place, where);
  }
  marker(MARKER_EA, function.first_line);
  for (file::Symbol &local : function.locals) {
    add_local_symbol(state, std::move(local), place, where);
  }
  marker(MARKER_EL, function.first_line);
  for (file::Record &record : function.body) {
    if (auto *local = std::get_if<file::Symbol>(&record)) {
      add_local_symbol(state, std::move(*local), place, where);
      continue;
    }
    if (const auto *statement = std::get_if<file::Statement>(&record)) {
      resolve_tree(state, statement->tree, place, where);
    }
    records.emplace_back(std::move(record));
  }
  marker(MARKER_EF, function.last_line);
}

} // namespace

void assemble(Unit &unit, const std::string &source_name) {
  Assembly state{unit, 0, {}, {}, {}};
  state.visits.resize(unit.slots.size(), Visit::NEW);
  state.needs_declaration.resize(unit.slots.size(), false);
  unit.file.records.emplace_back(file::SourceFile{source_name.substr(0, max_text_bytes)});
  for (int slot = 0; slot < static_cast<int>(unit.slots.size()); ++slot) {
    if (unit.slots[slot].kind == SlotKind::TAG) {
      add_tag(state, slot);
    } else if (unit.slots[slot].kind == SlotKind::VARIABLE && state.visits[slot] == Visit::NEW) {
      order_variable(state, slot);
    }
  }
  find_needed_declarations(state);
  add_declarations(state);
  add_variables(state);
  for (int place = 0; place < static_cast<int>(unit.functions.size()); ++place) {
    add_function(state, place);
  }
}

} // namespace velkor::cc
