// What stores and calls make unknown.
//
// A symbol whose value may have changed loses its number, so that its next use gets a new one. A
// place leaves the tables. Expressions stay: they are found by the numbers of their operands, and
// nobody has the old numbers any more.
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"
#include "scalar/subranges.h"

#include <cstdlib>

namespace velkor {
namespace {

void kill_symbols(SYMLIST *list) {
  for (; list; list = list->next)
    set_number(list->sym, 0);
}

void empty_load_list() {
  NodeChain &chain = local_cse.load_list;
  while (chain.head) {
    LIST *next = chain.head->next;
    give_list(chain.head);
    chain.head = next;
  }
  chain.length = 0;
}

// Only constant objects keep their values.
void kill_loads() {
  NodeChain &chain = local_cse.load_list;
  LIST **link = &chain.head;
  while (LIST *cell = *link) {
    if (access_is_constant(cell->item)) {
      link = &cell->next;
      continue;
    }
    *link = cell->next;
    give_list(cell);
    chain.length -= 1;
  }
}

// all: not even constant objects. statics: the static locals too, which no pointer reaches.
void kill_memory(bool all, bool statics) {
  if (all)
    empty_load_list();
  else
    kill_loads();
  free_subranges(local_cse.load_subranges);
  local_cse.load_subranges = nullptr;
  kill_symbols(local_cse.lcse_aliased);
  if (statics) kill_symbols(local_cse.lcse_statics);
}

// What is known of the places within the object goes, too.
void kill_object(SYM *sym) {
  set_number(sym, 0);
  NODE *name = make_name(sym);
  SUBRANGE whole{nullptr, nullptr, name, name, 0, 0};
  local_cse.load_subranges = subranges_kill_overlap(&whole, local_cse.load_subranges);
  erase_node(name);
}

// ------------------------------------------------------------------------------------------------
// Stores to a place of which nothing is known

// *(p + K) with K beyond an object of the access's type: p points into an array. A char may be any
// byte of any object.
bool steps_over_scalars(const NODE *target) {
  const NODE *address = skip_marks(target->left);
  if ((address->op != ADD && address->op != SUBTRACT) || value_width(target->type) == 8)
    return false;
  const NODE *distance = skip_marks(address->right);
  return distance->op == ICON &&
         std::llabs(std::int64_t{distance->u.lval}) * 8 > value_width(target->type);
}

bool points_at_aggregate(const NODE *target) {
  const TypeWord address_type = skip_marks(target->left)->type;
  return is_pointer(address_type) && !is_scalar(underived(address_type));
}

// Can a store through a pointer reach a variable that is a scalar?
bool may_reach_scalars(const NODE *target) {
  return is_scalar(target->type) && target->op == DEREF && !steps_over_scalars(target) &&
         !points_at_aggregate(target);
}

bool is_like_kind(TypeWord a, TypeWord b) {
  return (is_pointer(a) && is_pointer(b)) || (is_integer(a) && is_integer(b)) ||
         (is_floating(a) && is_floating(b));
}

bool reaches_scalar(const NODE *target, const SYM *sym) {
  const std::int32_t width = value_width(target->type);
  if (width == 8 && options.opt_alias_strict) return true;
  return width == sym->size && is_like_kind(target->type, sym->stype);
}

void kill_aliased_by_type(const NODE *target) {
  const bool may_reach = may_reach_scalars(target);
  for (const SYMLIST *cell = local_cse.lcse_aliased; cell; cell = cell->next)
    if (!is_scalar(cell->sym->stype) || (may_reach && reaches_scalar(target, cell->sym)))
      set_number(cell->sym, 0);
}

// ------------------------------------------------------------------------------------------------
// Calls

// The objects whose addresses are handed to the call.
void kill_arguments(const NODE *argument) {
  for (; argument && argument->op == COMMA; argument = argument->left)
    kill_arguments(argument->right);
  if (!argument || !(is_pointer(argument->type) || argument->op == ARGREF)) return;
  if (SYM *sym = address_base(argument)) set_number(sym, 0);
}

void note_call() {
  local_cse.has_killed = true;
  local_cse.number_at_call = local_cse.lcse_number;
}

void kill_changeable(bool only_aliased) {
  for (const SYMLIST *cell = local_cse.lcse_kill_list; cell; cell = cell->next)
    if (!only_aliased || cell->sym->fcp_flag) set_number(cell->sym, 0);
}

const NODE *arguments_of(const NODE *call) {
  switch (call->op) {
  case CALL:
  case STCALL: return call->right;
  case XCALL:
  case MEMCPY: return call->left;
  default: return nullptr;
  }
}

} // namespace

void kill_store(const NODE *target) {
  local_cse.has_killed = true;
  // The tables' routines take nodes that they may keep; this one is given back at once.
  SUBRANGE *range = subrange_of(const_cast<NODE *>(target));
  if (!range) {
    kill_aliased_by_type(target);
    kill_loads();
    local_cse.load_subranges = subranges_kill_by_type(target, local_cse.load_subranges);
    return;
  }
  SYM *base = range->base->op == NAME ? range->base->u.sym : nullptr;
  if (base) set_number(base, 0);
  if (!base || base->fcp_flag) kill_loads();
  // A scalar local has places of its own in the table only where its address is taken.
  const bool is_scalar_name = target->op == NAME && is_scalar(target->type);
  if (!is_scalar_name || base->fcp_flag || local_cse.scalar_addresses_seen)
    local_cse.load_subranges = subranges_kill_overlap(range, local_cse.load_subranges);
  free_subrange(range);
}

void kill_by_call(const NODE *call, std::uint32_t fun_flags) {
  const bool no_indirect = (fun_flags & FUN_no_ind_asg) != 0;
  const bool no_global = (fun_flags & FUN_no_global_asg) != 0;
  if (!no_indirect) kill_arguments(arguments_of(call));
  // A function that assigns nothing of ours does not come back here to do so, either.
  if (no_indirect && no_global) {
    if (state.errno_sym) kill_object(state.errno_sym);
  } else {
    kill_memory(false, call_may_reenter(call));
    kill_changeable(no_global);
  }
  note_call();
}

void kill_by_copy(const NODE *block_copy) {
  kill_arguments(arguments_of(block_copy));
  kill_memory(false, false);
  note_call();
}

void kill_everything() {
  kill_memory(true, true);
  kill_changeable(false);
  note_call();
}

} // namespace velkor
