#include "core/symbols.h"

#include "core/failure.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/infix.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace velkor {
namespace {

constexpr int max_levels = 64; // deeper than any file may nest

// Symbols by their place in the file. A later symbol of the same place hides an earlier one.
struct SymbolTables {
  std::array<std::vector<SYM *>, max_levels> by_index; // [lexical level][index]
  std::unordered_map<std::string_view, SYM *> tag_placeholders;
  std::unordered_map<std::string_view, SYM *> file_objects;  // objects and functions by name
  std::unordered_map<std::string_view, SYM *> block_objects; // extern ones of the function's blocks
};

SymbolTables tables;

void push(SYM *sym, SYM *&chain) {
  sym->next = chain;
  chain = sym;
}

SYM *&chain_of(SYM *sym) {
  switch (sym->sclass) {
  case C_REG:
  case C_VREG: sym->sclass = C_AUTO; [[fallthrough]];
  case C_AUTO:
    return !is_volatile_symbol(sym) && is_scalar(sym->stype) ? state.scalar_syms : state.other_syms;
  case C_STAT:
  case C_USTATIC: return state.static_syms;
  case C_EXT:
  case C_EXTDEF:
  case C_ARG:
  case C_REGPARM: return state.other_syms;
  default: return sym->level == 1 ? state.other_syms : state.misc_syms;
  }
}

void distribute(SYM *&list) {
  while (SYM *sym = list) {
    list = sym->next;
    push(sym, chain_of(sym));
  }
}

} // namespace

SYM *new_symbol(int zone, std::string_view name) {
  void *memory = zalloc(zone, sizeof(SYM) + name.size() + 1);
  auto *sym = new (memory) SYM{};
  sym->name = static_cast<char *>(memory) + sizeof(SYM);
  if (!name.empty()) std::memcpy(sym->name, name.data(), name.size());
  sym->name[name.size()] = '\0';
  sym->count = -1;
  return sym;
}

SYM *copy_symbol(int zone, const SYM *sym) {
  SYM *copy = new_symbol(zone, sym->name);
  char *const name = copy->name;
  *copy = *sym;
  copy->name = name;
  copy->next = nullptr;
  copy->parameter = nullptr; // only the function's own prologue fills a home
  copy->init = nullptr;
  copy->dims = nullptr;
  if (sym->ndims != 0) {
    const std::size_t bytes = sym->ndims * sizeof(std::uint32_t);
    copy->dims = static_cast<std::uint32_t *>(zalloc(zone, bytes));
    std::memcpy(copy->dims, sym->dims, bytes);
  }
  if (const PRAGMAS *pragmas = sym->pragmas) {
    const auto bytes = static_cast<std::size_t>(pragmas->bytes);
    auto *entries = static_cast<unsigned char *>(zalloc(zone, bytes));
    std::memcpy(entries, pragmas->entries, bytes);
    copy->pragmas =
        new (zalloc(zone, sizeof(PRAGMAS))) PRAGMAS{copy, pragmas->bytes, pragmas->count, entries};
  }
  return copy;
}

void clear_symbol_tables() {
  tables = SymbolTables{};
  state.global_syms = nullptr;
  clear_local_symbols();
}

void clear_local_symbols() {
  for (std::size_t level = 1; level < tables.by_index.size(); ++level)
    tables.by_index[level].clear();
  tables.block_objects.clear();
  state.local_syms = state.temp_syms = nullptr;
  state.scalar_syms = state.static_syms = state.other_syms = state.misc_syms = nullptr;
  state.temp_counter = 0;
}

void register_symbol(SYM *sym, int lexical_level, int index) {
  if (lexical_level < 0 || lexical_level >= max_levels || index < 0) return;
  auto &level = tables.by_index[static_cast<std::size_t>(lexical_level)];
  const auto position = static_cast<std::size_t>(index);
  if (position >= level.size()) level.resize(position + 1, nullptr);
  level[position] = sym;
}

SYM *linked_symbol(SYM *sym) {
  const bool is_external = sym->sclass == C_EXT || sym->sclass == C_EXTDEF;
  const bool is_static = sym->sclass == C_STAT || sym->sclass == C_USTATIC;
  if (sym->level == 0 && (is_external || is_static)) {
    tables.file_objects.insert_or_assign(sym->name, sym);
    return sym;
  }
  if (!is_external) return sym;
  const auto in_file = tables.file_objects.find(sym->name);
  SYM *first = in_file != tables.file_objects.end()
                   ? in_file->second
                   : tables.block_objects.try_emplace(sym->name, sym).first->second;
  return first->stype == sym->stype ? first : sym;
}

SYM *sym_find_or_none(int level, int index) {
  if (level < 0 || level >= max_levels || index < 0) return nullptr;
  const auto &symbols = tables.by_index[static_cast<std::size_t>(level)];
  const auto position = static_cast<std::size_t>(index);
  return position < symbols.size() ? symbols[position] : nullptr;
}

SYM *sym_find(int level, int index) {
  if (level < 0) return nullptr;
  if (SYM *sym = sym_find_or_none(level, index)) return sym;
  print("\n\n!!! Error in 'sym_find', level=%d, index=%d, lex=%d !!!\n", level, index,
        state.lexical_level);
  if (state.global_syms) print("!!! Last global symbol was '%s'.\n", state.global_syms->name);
  abnormal_end();
}

SYM *tag_placeholder(std::string_view name) {
  if (const auto found = tables.tag_placeholders.find(name); found != tables.tag_placeholders.end())
    return found->second;
  SYM *sym = new_symbol(0, name);
  sym->index = -1;
  sym->level = -1;
  tables.tag_placeholders.emplace(std::string_view(sym->name, name.size()), sym);
  return sym;
}

void sym_split() {
  debug_print("\n\n\t\t\t---------- ENTERING 'sym_split' ----------\n");
  distribute(state.local_syms);
  distribute(state.temp_syms);
}

SYM *make_temp(char prefix, std::int32_t number, std::int32_t size, TypeWord type) {
  if (number < 0) number = ++state.temp_counter;
  if (type == ENUM) type = INT;
  std::array<char, 16> name{};
  std::snprintf(name.data(), name.size(), "%c$%ld", prefix, static_cast<long>(number));
  SYM *sym = new_symbol(1, name.data());
  sym->stype = type;
  sym->btype = type & basic_type_mask;
  sym->sclass = sym->orig_sclass = C_AUTO;
  sym->level = 2;
  if (is_pointer(type))
    size = pointer_width;
  else if (is_scalar(type))
    size = type_width(type);
  sym->size = size;
  sym->align = sym_alignment(sym);
  if (sym->size <= 0) sym->size = sym_size(sym);
  push(sym, state.temp_syms);
  return sym;
}

void forget_const(SYM *sym) {
  TypeWord type = sym->stype;
  std::uint32_t derivation_const = 16;
  for (; is_array(type); type = underived(type), derivation_const <<= 2)
    sym->squal &= ~derivation_const;
  sym->squal &= is_derived(type) ? ~derivation_const : ~1u;
}

std::int32_t sym_size(const SYM *sym) {
  switch (sym->sclass) {
  case C_STRTAG:
  case C_UNTAG:
  case C_ENTAG:
  case C_FIELD: return sym->size;
  default: break;
  }
  TypeWord type = sym->stype;
  for (; is_derived(type); type = underived(type)) {
    if (is_pointer(type)) return pointer_width;
    if (is_array(type)) return sym->size;
  }
  switch (type) {
  case VOID: return 32;
  case STRUCT:
  case UNION:
  case ENUM: return sym->tag ? sym->tag->size : sym->size;
  default: return type_width(type) > 0 ? type_width(type) : sym->size;
  }
}

std::int32_t sym_alignment(const SYM *sym) {
  TypeWord type = sym->stype;
  for (; is_derived(type); type = underived(type))
    if (is_pointer(type)) return pointer_width;
  if (is_struct_or_union(type)) return sym->tag ? sym->tag->align : max_alignment;
  return type_align(type) < 1 ? max_alignment : type_align(type);
}

SYM *sym_list_reverse_onto(SYM *list, SYM *tail) {
  while (list) {
    SYM *next = list->next;
    list->next = tail;
    tail = list;
    list = next;
  }
  return tail;
}

SYM *sym_list_reverse(SYM *list) {
  return sym_list_reverse_onto(list, nullptr);
}

SYM *sym_list_remove(SYM *sym, SYM *list) {
  for (SYM **link = &list; *link; link = &(*link)->next)
    if (*link == sym) {
      *link = sym->next;
      break;
    }
  return list;
}

SYMLIST *symlist_cons(SYM *sym, SYMLIST *next) {
  SYMLIST *cell = take_symlist();
  *cell = {next, sym};
  return cell;
}

SYMLIST *symlist_remove(SYM *sym, SYMLIST *list) {
  for (SYMLIST **link = &list; *link; link = &(*link)->next)
    if ((*link)->sym == sym) {
      SYMLIST *cell = *link;
      *link = cell->next;
      give_symlist(cell);
      break;
    }
  return list;
}

SYM *get_lhs_tag_from_member(const NODE *node) {
  const bool is_access = node->op == MEMBER || node->op == ARROW;
  SYM *sym = is_access ? node->right->u.sym : nullptr;
  while (sym && (sym->sclass == C_MOS || sym->sclass == C_MOU || sym->sclass == C_FIELD))
    sym = sym->next;
  if (sym && (sym->sclass == C_STRTAG || sym->sclass == C_UNTAG)) return sym;
  if (sym && sym->sclass == C_EOS) return sym->tag;
  print("\n\n!!! Error in 'get_lhs_tag_from_member', tree: %s !!!\n", tree2infix(node));
  abnormal_end();
}

} // namespace velkor
