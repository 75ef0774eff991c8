#include "storage/pack_services.h"

#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "icode/format.h"
#include "scalar/live_variables.h"
#include "storage/conflicts.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace velkor {
namespace {

// The second line number of a comment tells what it reports.
enum CommentKind : std::int16_t { ON_REGISTER = 0, ON_STATIC = 2, ON_SHARED_SLOT = 3 };

// ------------------------------------------------------------------------------------------------
// Names

bool is_of_program(const SYM *sym) {
  return sym->name[0] == '_';
}
const char *plain_name(const SYM *sym) {
  return is_of_program(sym) ? sym->name + 1 : sym->name;
}
bool shows_in_listing(const SYM *sym) {
  return is_of_program(sym) || options.opt_source_comments;
}

void add_comment_in_front(const std::string &text, CommentKind kind) {
  state.alloc_comments = list_cons(make_asm(RECORD_COMMENT, text), state.alloc_comments, 0, kind);
}

// ------------------------------------------------------------------------------------------------
// Coalescing

// The symbol that stands for a coalesced one, kept in a local's working slot.
void set_replacement(SYM *sym, SYM *replacement) {
  sym->level = coalesced_level;
  sym->init = reinterpret_cast<NODE *>(replacement);
}
SYM *replacement_of(const SYM *sym) {
  return reinterpret_cast<SYM *>(sym->init);
}

bool has_own_slot(const SYM *sym) {
  return !sym->fcp_flag && sym->sclass == C_AUTO && sym->level == 2 && is_candidate(sym);
}

bool can_give_up_slot(const SYM *sym) {
  return is_scalar(sym->stype) && has_own_slot(sym) && !set_has(allocation.param_homes, sym->count);
}

bool can_share_slot(const SYM *partner, const SYM *sym) {
  return has_own_slot(partner) && partner->size == sym->size && partner->stype == sym->stype &&
         !set_has(allocation.conflicts[partner->count], sym->count);
}

bool is_better_partner(const SYM *a, const SYM *b, const SYM *sym) {
  const bool a_prefers = set_has(allocation.preferences[a->count], sym->count);
  const bool b_prefers = set_has(allocation.preferences[b->count], sym->count);
  if (a_prefers != b_prefers) return a_prefers;
  return cost(a) > cost(b);
}

SYM *find_partner(SYM *kept, const SYM *sym) {
  if (!can_give_up_slot(sym)) return nullptr;
  SYM *best = nullptr;
  for (SYM *partner = kept; partner; partner = partner->next)
    if (can_share_slot(partner, sym) && (!best || is_better_partner(partner, best, sym)))
      best = partner;
  return best;
}

void report_coalescing(const SYM *sym, const SYM *partner) {
  const bool both = is_of_program(sym) && is_of_program(partner);
  const bool one = is_of_program(sym) || is_of_program(partner);
  const bool shows = both || (options.opt_source_comments && one);
  if (shows && std::strcmp(sym->name, partner->name) != 0)
    add_comment_in_front(std::string(";  ---  ") + plain_name(partner) +
                             " shares AUTO storage with " + plain_name(sym),
                         ON_SHARED_SLOT);
  debug_print("\tVariable '%s' is coalesced with '%s'\n", sym->name, partner->name);
}

void coalesce(SYM *sym, SYM *partner) {
  const int words = live_variables.words;
  set_replacement(sym, partner);
  add_cost(partner, cost(sym));
  cost(sym) = 0;
  set_union(allocation.conflicts[partner->count], allocation.conflicts[sym->count], words);
  set_union(allocation.preferences[partner->count], allocation.preferences[sym->count], words);
  if (set_has(allocation.call_crossing, sym->count))
    set_add(allocation.call_crossing, partner->count);
  report_coalescing(sym, partner);
}

void rename_coalesced(NODE *tree) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case NAME: {
      SYM *sym = tree->u.sym;
      if (sym->level != coalesced_level || sym->sclass != C_AUTO) return;
      if (!tree->aux.sym) tree->aux.sym = sym; // the listing shows the name of the source
      tree->u.sym = replacement_of(sym);
      return;
    }
    case SWITCH:
    case MEMBER:
    case ARROW:
    case IF: break;
    default:
      if (tree->right) rename_coalesced(tree->right);
    }
}

void rename_in_function() {
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next)
      rename_coalesced(cell->item);
}

// ------------------------------------------------------------------------------------------------
// Registers

// The comments on registers stand by descending key, since the writer begins at the end.
void insert_register_comment(int key, const std::string &text) {
  LIST **link = &state.alloc_comments;
  for (; *link; link = &(*link)->next) {
    const LIST *cell = *link;
    if (cell->line2 != ON_REGISTER) continue;
    if (cell->line < key) break;
    if (cell->line == key && text == cell->item->aux.text) return;
  }
  *link =
      list_cons(make_asm(RECORD_COMMENT, text), *link, static_cast<std::int16_t>(key), ON_REGISTER);
}

const char *role_of(const SYM *sym) {
  if (!is_of_program(sym)) return "assigned to temp var  ";
  const bool is_home =
      allocation.param_homes && is_candidate(sym) && set_has(allocation.param_homes, sym->count);
  return is_home ? "assigned to parameter " : "assigned to variable  ";
}

} // namespace

SYM *coalesce_autos(SYM *list) {
  if (!allocation.measured) return list;
  SYM *kept = nullptr;
  SYM **kept_end = &kept;
  bool coalesced = false;
  while (SYM *sym = list) {
    list = sym->next;
    sym->next = nullptr;
    if (SYM *partner = find_partner(kept, sym)) {
      coalesce(sym, partner);
      coalesced = true;
      continue;
    }
    *kept_end = sym;
    kept_end = &sym->next;
  }
  if (coalesced) rename_in_function();
  return kept;
}

void report_register(int key, const char *reg_name, const SYM *sym, int number) {
  debug_print("\tRegister ");
  if (reg_name) debug_print("%s ", reg_name);
  debug_print("allocated to (%d) '%s'\n", number, sym->name);
  if (!reg_name || !*reg_name || !shows_in_listing(sym)) return;
  // A long name reaches beyond the tab's column.
  const char separator = std::strlen(reg_name) <= 5 ? '\t' : ' ';
  insert_register_comment(key, std::string("; ") + reg_name + separator + role_of(sym) +
                                   plain_name(sym));
}

void report_local_static(const SYM *sym) {
  if (shows_in_listing(sym))
    add_comment_in_front(std::string(is_of_program(sym)
                                         ? ";STATIC storage allocated to AUTO variable  "
                                         : ";STATIC storage allocated to compiler temp  ") +
                             plain_name(sym),
                         ON_STATIC);
  debug_print("\t(%d) '%s' is allocated as a local STATIC.\n", sym->count, sym->name);
}

} // namespace velkor
