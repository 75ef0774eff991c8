// Symbols: the tables of the reader, the chains that the passes see, temporaries.
#pragma once

#include "core/records.h"

#include <string_view>

namespace velkor {

// A new symbol in the given zone with all fields cleared but the name, count -1.
[[nodiscard]] SYM *new_symbol(int zone, std::string_view name);

// The symbol in the given zone, with its dimensions and pragma entries; linked to nothing.
[[nodiscard]] SYM *copy_symbol(int zone, const SYM *sym);

// Empties all symbol tables and chains: a run begins.
void clear_symbol_tables();
// Empties the chains of the current function and its table: a function's records begin.
void clear_local_symbols();

// The symbol that stands for what sym declares, from all its declarations so far: a block's own
// extern declaration means an object or function of the file, or of an earlier block of the
// function, which the passes must see as one. sym itself when it is the first, or no such
// declaration.
[[nodiscard]] SYM *linked_symbol(SYM *sym);
// Makes a symbol findable by its level and index.
void register_symbol(SYM *sym, int lexical_level, int index);
// The symbol, or none for a negative level. A symbol that the file did not declare ends the run.
[[nodiscard]] SYM *sym_find(int level, int index);
// The symbol, or none when there is no such symbol.
[[nodiscard]] SYM *sym_find_or_none(int level, int index);
// The placeholder (level and index -1) of a tag that the file names without an index; made if new.
[[nodiscard]] SYM *tag_placeholder(std::string_view name);

// Sorts what has joined local_syms and temp_syms since the last call into scalar_syms, static_syms,
// other_syms and misc_syms.
void sym_split();

// A new temporary "<prefix>$<number>" on temp_syms; a negative number takes the next automatic one.
// size (bits) stands for a type that is no scalar.
[[nodiscard]] SYM *make_temp(char prefix, std::int32_t number, std::int32_t size, TypeWord type);

// Takes const from the object itself (what a pointer points at keeps it; what an array holds does
// not). An automatic object of the source is made anew each time its block is entered, so that
// const tells the passes nothing of its value: only the passes themselves give it, to a local that
// they have found to be set once, when the function is entered.
void forget_const(SYM *sym);

[[nodiscard]] std::int32_t sym_size(const SYM *sym);      // bits
[[nodiscard]] std::int32_t sym_alignment(const SYM *sym); // bits

// Chains of symbols and of SYMLIST cells; each returns the new head.
SYM *sym_list_reverse_onto(SYM *list, SYM *tail);
SYM *sym_list_reverse(SYM *list);
SYM *sym_list_remove(SYM *sym, SYM *list);
SYMLIST *symlist_cons(SYM *sym, SYMLIST *next);
SYMLIST *symlist_remove(SYM *sym, SYMLIST *list);

// For a member access, the tag of the struct or union that holds the member.
[[nodiscard]] SYM *get_lhs_tag_from_member(const NODE *node);

} // namespace velkor
