#include "icode/symbol_reader.h"

#include "core/conversions.h"
#include "core/failure.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "icode/input.h"
#include "icode/record_writer.h"
#include "icode/tree_reader.h"
#include "icode/tree_writer.h"
#include "simplify/retype.h"
#include "simplify/simplify.h"

#include <cstring>
#include <span>
#include <string>

namespace velkor {

int scope_index = 0;

namespace {

constexpr std::size_t symbol_header_bytes = 27; // between the name and the tag's name

bool in_pass_1() {
  return state.pass_number == 1;
}

// The tag of a struct, union or enum: this symbol itself, a placeholder by name, or a symbol of the
// file.
SYM *resolve_tag(SYM *sym, int level, int index, std::string_view name) {
  if (index < 0) return tag_placeholder(name);
  if (level == state.lexical_level && index == sym->index) return sym;
  return sym_find(level, index);
}

void read_dimensions(SYM *sym) {
  need(1);
  sym->ndims = take_u8();
  need(sym->ndims * 4u);
  if (sym->ndims == 0) return;
  sym->dims =
      static_cast<std::uint32_t *>(zalloc(state.lexical_level, sym->ndims * sizeof(std::uint32_t)));
  for (int i = 0; i < sym->ndims; ++i)
    sym->dims[i] = take_u32();
}

// Steps over one pragma entry; returns its kind.
int skip_pragma_entry() {
  need(1);
  if (take_u8() != RECORD_PRAGMA) abnormal_end();
  need(2);
  const int kind = take_u8();
  for (int strings = take_u8(); strings > 0; --strings)
    (void)take_string();
  return kind;
}

// Keeps the entries as they stand, so that the writer can pass them on; a function's flags follow
// from their kinds.
void read_pragmas(SYM *sym) {
  need(1);
  const int count = take_u8();
  if (count == 0) return;
  FUN *fun = nullptr;
  if (is_function(sym->stype) && options.opt_builtin_level != 0 && sym->name[0])
    fun = fun_find(sym->name + 1);
  const unsigned char *begin = input.cursor;
  for (int i = 0; i < count; ++i) {
    const int kind = skip_pragma_entry();
    if (fun) fun->flags |= fun_flag_of_pragma(kind);
  }
  const auto bytes = static_cast<std::size_t>(input.cursor - begin);
  auto *entries = static_cast<unsigned char *>(zalloc(state.lexical_level, bytes));
  std::memcpy(entries, begin, bytes);
  sym->pragmas = new (zalloc(state.lexical_level, sizeof(PRAGMAS)))
      PRAGMAS{sym, static_cast<std::int32_t>(bytes), count, entries};
}

// A bit field is an int, or an unsigned where its type is unsigned.
TypeWord field_type(TypeWord type) {
  return (type & ~basic_type_mask) | (is_unsigned_basic(type) ? UNSIGNED : INT);
}

// Without an analysis of the whole file every global is taken to be used, written and aliased.
std::uint16_t symbol_flags(std::uint16_t file_bits) {
  unsigned flags = file_bits & CQ_FILE_BITS;
  if (state.lexical_level == 0 && options.opt_level < 3) {
    flags |= CQ_REFERENCED | CQ_WRITTEN;
    if (!(flags & (CQ_CREGISTER | CQ_REGISTER))) flags |= CQ_ALIASED;
  }
  return static_cast<std::uint16_t>(flags);
}

// In the first of two passes all functions go out as declarations.
StorageClass declared_class(const SYM *sym) {
  if (in_pass_1() && state.lexical_level == 0 && is_function(sym->stype)) {
    if (sym->sclass == C_EXT) return C_EXTDEF;
    if (sym->sclass == C_STAT) return C_USTATIC;
  }
  return sym->sclass;
}

bool is_static_in_function(const SYM *sym) {
  return sym->sclass == C_STAT && state.lexical_level > 0;
}

bool is_promoted_already(const SYM *sym) {
  if (!is_static_in_function(sym) || !state.cur_fun) return false;
  for (const STATIC_CELL *cell = state.cur_fun->statics; cell; cell = cell->next)
    if (std::strcmp(cell->sym->name, sym->name) == 0) return true;
  return false;
}

void chain_symbol(SYM *sym, SYM *&chain) {
  sym->next = chain;
  chain = sym;
}

// Puts the symbol into the tables and chains, and into the output as far as its place tells.
// Returns whether it was written.
bool sym_add(SYM *sym, std::uint8_t record_byte, bool may_write) {
  if (sym->sclass != C_LABEL) register_symbol(linked_symbol(sym), state.lexical_level, sym->index);
  sym->key = static_cast<std::uint32_t>(sym->level) << 20 | static_cast<std::uint32_t>(sym->index);
  if (sym->sclass == C_VREG || sym->sclass == C_REG) sym->sclass = C_AUTO;
  if (sym->level > 1) sym->level = 2;
  if (options.opt_level > 0 && sym->level > 1 && sym->sclass == C_AUTO) forget_const(sym);
  const bool parameter_written_later = options.opt_level > 2 && sym->level == 1;
  const bool writes = may_write && !state.skip_function && !parameter_written_later &&
                      sym->sclass != C_AUTO && sym->sclass != C_LABEL;
  if (writes) {
    if (sym->level == 2) sym->index = state.written_locals++;
    write_symbol(sym, sym->index, record_byte);
  }
  if (state.lexical_level == 0) {
    chain_symbol(sym, state.global_syms);
    if (sym->stype == INT && std::strcmp(sym->name, "_errno") == 0) state.errno_sym = sym;
  } else if (sym->sclass != C_LABEL) {
    chain_symbol(sym, state.local_syms);
  }
  return writes;
}

SYM *read_symbol_record() {
  const std::string_view name = take_string();
  SYM *sym = new_symbol(state.lexical_level, name);
  need(symbol_header_bytes);
  sym->size = take_s32();
  sym->offset = take_s32();
  sym->sclass = sym->orig_sclass = static_cast<StorageClass>(take_u8());
  sym->scqual = symbol_flags(take_u16());
  sym->stype = take_u32();
  sym->squal = take_u32();
  sym->align = take_s32();
  const int tag_level = take_s16();
  const int tag_index = take_s16();
  sym->level = static_cast<std::int8_t>(state.lexical_level);
  sym->index = scope_index++;
  const bool tagged = has_tag(sym->stype);
  if (sym->sclass == C_FIELD) sym->stype = field_type(sym->stype);
  sym->btype = sym->stype & basic_type_mask;
  if (sym->stype != INT) sym->stype = internal_type(sym->stype);
  sym->fcp_flag = sym->sclass != C_REG && sym->sclass != C_REGPARM;
  if (tagged) sym->tag = resolve_tag(sym, tag_level, tag_index, take_string());
  if (!has_tag(sym->stype)) sym->tag = nullptr;
  return sym;
}

void note_variadic(SYM *sym) {
  if (sym->sclass != C_VARARG) return;
  sym->sclass = C_ARG;
  if (state.cur_fun) state.cur_fun->flags |= FUN_cannot_inline | FUN_cannot_beta;
}

// A static whose tag lives in the function cannot move to file level with an inline body.
void note_local_tag(const SYM *sym) {
  if (is_static_in_function(sym) && has_tag(sym->stype) && (!sym->tag || sym->tag->level != 0) &&
      state.cur_fun)
    state.cur_fun->flags |= FUN_cannot_inline;
}

struct FinalExtent {
  std::int32_t size = 0; // bits
  std::span<std::uint32_t> dims;
};

// The fields behind the end mark of an initial value: an array may learn its extent only here.
FinalExtent read_final_extent() {
  need(5);
  FinalExtent extent;
  extent.size = take_s32();
  const std::size_t count = take_u8();
  need(count * 4);
  if (count == 0) return extent;
  auto *dims =
      static_cast<std::uint32_t *>(zalloc(state.lexical_level, count * sizeof(std::uint32_t)));
  for (std::size_t i = 0; i < count; ++i)
    dims[i] = take_u32();
  extent.dims = {dims, count};
  return extent;
}

void read_initial_value(SYM *sym, bool written) {
  for (;;) {
    NODE *tree = read_tree();
    if (tree->op == ENDINIT) break;
    if (op_effect(tree->op) == TRANSFERS) bad_input("a transfer of control in an initial value");
    // A value takes as many bytes as its type says: whatever the rules make of it, that stays.
    const TypeWord type = tree->type;
    tree = simplify_tree(tree);
    if (written) {
      tree = retype_tree(tree);
      if (is_scalar(type)) tree = convert_tree(type, tree);
      wrtree(tree);
    }
    erase_tree(tree);
  }
  const FinalExtent extent = read_final_extent();
  sym->size = extent.size;
  sym->ndims = static_cast<std::uint8_t>(extent.dims.size());
  sym->dims = extent.dims.data();
  if (written) write_end_of_initial_value(sym);
}

} // namespace

void read_symbol(bool has_value) {
  const std::uint8_t record_byte = has_value ? RECORD_INITIALIZED_SYMBOL : RECORD_SYMBOL;
  SYM *sym = read_symbol_record();
  note_variadic(sym);
  sym->sclass = declared_class(sym);
  note_local_tag(sym);
  read_dimensions(sym);
  read_pragmas(sym);
  const bool written = sym_add(sym, record_byte, !is_promoted_already(sym));
  if (has_value) read_initial_value(sym, written);
}

} // namespace velkor
