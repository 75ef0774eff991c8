#include "bridge/node_text.h"

#include "core/nodes.h"
#include "core/symbols.h"
#include "icode/format.h"
#include "text/text.h"

namespace velkor::bridge {
namespace {

bool has_symbol(std::uint8_t op) {
  const RecordFields fields = opcode_table[op].fields;
  return fields == RecordFields::QUAL_SYMBOL || fields == RecordFields::SYMBOL ||
         fields == RecordFields::SYMBOL_QUAL;
}

bool has_name_text(std::uint8_t op) {
  return opcode_table[op].fields == RecordFields::TEXT && op != FCON;
}

file::Symbol symbol_record(const SYM *sym) {
  file::Symbol record;
  record.name = sym->name;
  record.size = sym->size;
  record.sclass = sym->sclass;
  record.stype = sym->stype;
  record.squal = sym->squal;
  record.align = sym->align;
  return record;
}

const NODE *look_through(const NODE *node) {
  while (node && (node->op == CSE_DUPE || node->op == CSE_ORIG))
    node = node->right;
  return node;
}

std::uint8_t file_qualifier(const NODE *node) {
  if (node->op == CALL || node->op == STCALL) return node->qual;
  return static_cast<std::uint8_t>(is_derived(node->type) ? node->qual >> 4 & 3 : node->qual & 3);
}

file::NodeIndex to_record(const NODE *node, const SymbolScope &symbols, file::IcodeFile &file) {
  node = look_through(node);
  if (!node) return file::no_node;
  file::Node record;
  record.op = node->op;
  record.type = node->type;
  record.qual = file_qualifier(node);
  record.size = node->depnum;
  if (has_symbol(node->op)) {
    const text::Reference place = symbols.place_of(node->u.sym);
    record.level = static_cast<std::int16_t>(place.level);
    record.index = static_cast<std::int16_t>(place.index);
  } else if (node->op == SCON) {
    record.text.assign(node->aux.text, static_cast<std::size_t>(node->u.lval));
  } else if (node->op == FCON) {
    record.text = node->aux.text;
  } else if (has_name_text(node->op)) {
    record.text = node->u.name;
  } else {
    const bool resolved = node->op == LABELREF && node->aux.label;
    record.value = resolved ? node->aux.label->index : node->u.lval;
  }
  record.left = to_record(node->left, symbols, file);
  record.right = to_record(node->right, symbols, file);
  return file.add(std::move(record));
}

NODE *to_node(const file::IcodeFile &file, file::NodeIndex index, const SymbolScope &symbols) {
  if (index == file::no_node) return nullptr;
  const file::Node &record = file.nodes[static_cast<std::size_t>(index)];
  NODE *node = make_node(static_cast<Opcode>(record.op), nullptr, nullptr, record.type);
  const bool in_place = record.op == CALL || record.op == STCALL || !is_derived(record.type);
  node->qual = static_cast<std::uint8_t>(in_place ? record.qual : record.qual << 4);
  if (has_symbol(record.op)) {
    SYM *sym = symbols.at({record.level, record.index});
    node->u.sym = sym;
    if (sym) {
      node->depnum = sym->size;
      if (record.op != STCALL) node->qual = static_cast<std::uint8_t>(sym->squal);
    }
  } else if (record.op == SCON) {
    node->u.lval = static_cast<std::int32_t>(record.text.size());
    node->aux.text = copy_text(1, record.text);
  } else if (record.op == FCON) {
    node->aux.text = copy_text(1, record.text);
  } else if (has_name_text(record.op)) {
    node->u.name = copy_text(1, record.text);
  } else {
    node->u.lval = record.value;
  }
  const RecordFields fields = opcode_table[record.op].fields;
  if (fields == RecordFields::QUAL_SIZE || fields == RecordFields::SIZE ||
      fields == RecordFields::SWITCH_SUMMARY)
    node->depnum = record.size;
  node->left = to_node(file, record.left, symbols);
  node->right = to_node(file, record.right, symbols);
  return node;
}

} // namespace

void SymbolScope::enter_level(int level) {
  for (; level_ < level; ++level_)
    scopes_.follow(level_ == 0 ? MARKER_BF : MARKER_EA);
}

void SymbolScope::keep(SYM *sym, text::Reference place) {
  places_[sym] = place;
  symbols_[static_cast<std::size_t>(place.level)].push_back(sym);
}

void SymbolScope::add(SYM *sym) {
  if (places_.contains(sym)) return;
  enter_level(sym->level);
  keep(sym, scopes_.add(symbol_record(sym)));
}

SYM *SymbolScope::declare(std::string_view line, int level, std::string &error) {
  enter_level(level);
  file::Symbol record;
  error = text::parse_symbol(line, scopes_, record);
  if (!error.empty()) return nullptr;
  SYM *sym = new_symbol(0, record.name);
  sym->size = record.size;
  sym->offset = record.offset;
  sym->sclass = sym->orig_sclass = static_cast<StorageClass>(record.sclass);
  sym->scqual = record.scqual;
  sym->stype = record.stype;
  sym->squal = record.squal;
  sym->align = record.align;
  sym->btype = static_cast<std::uint8_t>(record.stype & basic_type_mask);
  sym->level = static_cast<std::int8_t>(level);
  const text::Reference place = scopes_.add(record);
  sym->index = place.index;
  keep(sym, place);
  if (has_tag(record.stype)) sym->tag = at({record.tag_level, record.tag_index});
  return sym;
}

text::Reference SymbolScope::place_of(const SYM *sym) const {
  const auto found = places_.find(sym);
  return found == places_.end() ? text::Reference{} : found->second;
}

SYM *SymbolScope::at(text::Reference place) const {
  if (place.level < 0 || place.level > 2 || place.index < 0) return nullptr;
  const auto &level = symbols_[static_cast<std::size_t>(place.level)];
  const auto index = static_cast<std::size_t>(place.index);
  return index < level.size() ? level[index] : nullptr;
}

std::string tree_to_text(const NODE *tree, const SymbolScope &symbols) {
  file::IcodeFile file;
  const file::NodeIndex root = to_record(tree, symbols, file);
  return text::tree_to_text(file, root, symbols.scopes());
}

NODE *tree_from_text(std::string_view line, const SymbolScope &symbols, std::string &error) {
  file::IcodeFile file;
  file::NodeIndex root = file::no_node;
  error = text::parse_tree(line, symbols.scopes(), file, root);
  return error.empty() ? to_node(file, root, symbols) : nullptr;
}

} // namespace velkor::bridge
