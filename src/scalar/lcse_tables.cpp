// The tables of the extended block: what has been computed, and which node did.
//
// Nodes in the tables belong to the statements, except the constants in icon_buckets. A node that
// is found redundant may lose its operands, so no operand of it may be in a table: see
// may_be_replaced.
#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"
#include "scalar/subranges.h"

#include <algorithm>
#include <cstring>

namespace velkor {
namespace {

// Nodes that a chain remembers. Twice as many may hang in it before the older half goes.
constexpr int chain_memory = 64;
constexpr int load_memory = 256;
constexpr std::int32_t largest_small_icon = 127; // has one number, whatever its type

using Buckets = std::array<NodeChain, 101>;

NodeChain &bucket_of(Buckets &buckets, const NODE *node) {
  return buckets[lcse_hash(node, 2) % buckets.size()];
}

// ------------------------------------------------------------------------------------------------
// Chains

void free_cells(LIST *cell) {
  while (cell) {
    LIST *next = cell->next;
    give_list(cell);
    cell = next;
  }
}

void cut_behind(LIST *cell, int kept) {
  while (--kept > 0)
    cell = cell->next;
  free_cells(cell->next);
  cell->next = nullptr;
}

void enter(NodeChain &chain, NODE *node) {
  chain.head = list_cons(node, chain.head, local_cse.line, local_cse.line2);
  if (++chain.length < 2 * chain_memory) return;
  cut_behind(chain.head, chain_memory);
  chain.length = chain_memory;
}

void empty(NodeChain &chain) {
  free_cells(chain.head);
  chain = {};
}

void empty_icons(NodeChain &chain) {
  for (LIST *cell = chain.head; cell; cell = cell->next)
    erase_node(cell->item);
  empty(chain);
}

void enter_range(SUBRANGE *range) {
  SUBRANGE *&chain = local_cse.load_subranges;
  range->next = chain;
  chain = range;
  int length = 0;
  for (SUBRANGE *entry = chain; entry; entry = entry->next)
    if (++length == load_memory) {
      free_subranges(entry->next);
      entry->next = nullptr;
    }
}

template <typename Matches> NODE *find(const NodeChain &chain, Matches matches) {
  for (const LIST *cell = chain.head; cell; cell = cell->next)
    if (matches(cell->item)) return cell->item;
  return nullptr;
}

// ------------------------------------------------------------------------------------------------
// What may be entered
//
// Numbers are given from right to left, but the statement that computes a temporary goes in front
// of the whole statement. Behind a call, a node that reads what the call may have changed would be
// computed too early, so it is not entered; its number is its own. What stands behind a list of
// effects is not computed ahead of them at all, since these may not come back.

bool may_enter_place() {
  return !local_cse.enters_nothing && local_cse.number_at_call < 0;
}

// ------------------------------------------------------------------------------------------------
// Which nodes can have a number

bool is_name_address(const NODE *node) {
  const NODE *object = node->left;
  while (object->op == MEMBER)
    object = object->left;
  return object->op == NAME;
}

bool has_number(const NODE *operand) {
  return !operand || operand->nsize != 0;
}

bool is_blocked_call(const NODE *call) {
  switch (call->op) {
  case UXCALL: return false;
  case XCALL: return !has_number(call->left);
  case CALL:
  case STCALL:
    if (!has_number(call->right)) return true;
    break;
  default: break;
  }
  const NODE *callee = call->left;
  return !(callee->op == ADDRESS && callee->left->op == NAME) && callee->nsize == 0;
}

// ------------------------------------------------------------------------------------------------
// Places

struct Address {
  const NODE *base;
  std::uint32_t constant; // bytes
};

// p + 4 - 8  ->  p and -4
Address split_address(const NODE *address) {
  Address result{skip_marks(address), 0};
  for (;;) {
    const NODE *node = result.base;
    if ((node->op != ADD && node->op != SUBTRACT) || node->right->op != ICON) break;
    const auto constant = static_cast<std::uint32_t>(node->right->u.lval);
    result.constant += node->op == ADD ? constant : 0u - constant;
    result.base = skip_marks(node->left);
  }
  return result;
}

bool same_address(const NODE *a, const NODE *b) {
  if (same_number(a, b)) return true;
  const Address first = split_address(a);
  const Address second = split_address(b);
  return same_number(first.base, second.base) && first.constant == second.constant;
}

// What was known of the object has been lost with its number.
bool is_stale(const NODE *place) {
  const SYM *base = address_base(place->left);
  return base && number_of(base) == 0;
}

// The operator's own type is all that says how wide an enumeration is accessed.
bool same_access(const NODE *a, const NODE *b) {
  return a->op == b->op && a->type == b->type && (a->type != ENUM || a->depnum == b->depnum);
}

bool place_matches(const NODE *entry, const NODE *place) {
  return same_access(entry, place) && same_address(entry->left, place->left) &&
         (!entry->right == !place->right) &&
         (!entry->right || same_number(entry->right, place->right)) && !is_stale(entry);
}

template <typename Matches> NODE *find_place(Matches matches) {
  if (NODE *found = find(local_cse.load_list, matches)) return found;
  for (SUBRANGE *range = local_cse.load_subranges; range; range = range->next)
    if (matches(range->tree)) return range->tree;
  return nullptr;
}

void enter_place(NODE *place) {
  if (SUBRANGE *range = subrange_of(place))
    enter_range(range);
  else
    enter(local_cse.load_list, place);
}

void number_base(const NODE *place) {
  if (SYM *base = address_base(place->left)) ensure_number(base);
}

// ------------------------------------------------------------------------------------------------
// Statement effects

void collect_effects(const NODE *tree, StatementEffects &effects) {
  for (; tree; tree = tree->left) {
    if (tree->op == CSE_DUPE) return; // has no effects
    if (tree->op == LABELDEF) return;
    if (op_effect(tree->op) == ASSIGNS || tree->op == ARASG || tree->op == INITLOOP) {
      const NODE *target = tree->left;
      while (target->op == MEMBER)
        target = target->left;
      if (target->op == NAME)
        effects.targets.push_back(target->u.sym);
      else
        effects.stores_indirectly = true;
    }
    if (is_call(tree->op) || tree->op == MEMCPY || tree->op == ASM)
      effects.stores_indirectly = true;
    if ((tree->op == ADDRESS || tree->op == ARGREF) && is_name_address(tree))
      effects.targets.push_back(address_base(tree));
    if (tree->right) collect_effects(tree->right, effects);
  }
}

// The target of the statement's own assignment, which is stored when all else has been done.
const SYM *root_target(const NODE *statement) {
  const bool assigns = op_effect(statement->op) == ASSIGNS && statement->left->op == NAME;
  return assigns ? statement->left->u.sym : nullptr;
}

bool changes_inside_statement(const SYM *sym) {
  const StatementEffects &effects = local_cse.effects;
  if (sym->fcp_flag && effects.stores_indirectly) return true;
  return std::find(effects.targets.begin(), effects.targets.end(), sym) != effects.targets.end();
}

// ------------------------------------------------------------------------------------------------
// Copies

// Is a variable of the one type as good as a value of the other?
bool stands_for_type(TypeWord variable, TypeWord value) {
  const auto plain = [](TypeWord type) { return type == ENUM ? TypeWord{INT} : type; };
  if (variable == value) return true;
  return promote_type(plain(variable)) == promote_type(plain(value)) && is_integer(value);
}

template <typename Accepts> const NODE *find_copy(std::int32_t number, Accepts accepts) {
  const std::int32_t slot = number - local_cse.oldest_number;
  if (slot <= 0 || static_cast<std::size_t>(slot) >= local_cse.newest_copy.size()) return nullptr;
  int links = 0;
  for (std::int32_t at = local_cse.newest_copy[static_cast<std::size_t>(slot)];
       at >= 0 && ++links <= chain_memory;) {
    const ValueCopy &copy = local_cse.copy_list[static_cast<std::size_t>(at)];
    if (number_of(copy.target->u.sym) == number && accepts(copy.target)) return copy.target;
    at = copy.older;
  }
  return nullptr;
}

// Numbers grow: an operand that was entered for the node's sake has a newer one than first.
bool holds_newer_number(const NODE *tree, std::int32_t number) {
  for (; tree; tree = tree->left) {
    if (tree->nsize > number) return true;
    if (tree->op == CSE_DUPE) {
      if (holds_newer_number(tree->right, number)) return true;
      return false;
    }
    if (tree->right && holds_newer_number(tree->right, number)) return true;
  }
  return false;
}

// May the node's operands be erased?
bool may_be_replaced(const NODE *node, std::int32_t number) {
  return !holds_newer_number(node->left, number) && !holds_newer_number(node->right, number);
}

void put_name(NODE *node, const NODE *name, std::int32_t number) {
  if (node->left) erase_tree(node->left);
  if (node->right) erase_tree(node->right);
  *node = *name;
  node->nsize = number;
}

bool replace_by_copy(NODE *node, const NODE *first, std::int32_t number) {
  if (!cse_worthwhile(first)) return false;
  const NODE *holder = find_copy(number, [&](const NODE *name) {
    return stands_for_type(name->type, node->type) && !changes_inside_statement(name->u.sym) &&
           name->u.sym != local_cse.effects.root_target;
  });
  if (!holder || !may_be_replaced(node, number)) return false;
  debug_print("\n\t======== (%d,%d) 'make_CSE_DUPE' is replacing this:\n", local_cse.line2,
              local_cse.line);
  if (state.debug_file) debug_print("%s", tree2infix(node));
  debug_print("\n\t======== with the following substitute:\n");
  if (state.debug_file) debug_print("%s", tree2infix(holder));
  debug_print("\n\t=======================================\n");
  put_name(node, holder, number);
  return true;
}

// Marked operands have no effects: their marks are not walked.
bool has_effects(NODE *tree) {
  for (; tree; tree = tree->left) {
    switch (tree->op) {
    case CSE_DUPE: return false;
    case ADDRESS:
      if (is_name_address(tree)) return false;
      break;
    case NAME: return has_side_effects(tree);
    case DEREF:
    case MEMBER:
    case ARROW:
      if (is_volatile_node(tree)) return true;
      break;
    default:
      if (op_effect(tree->op) != PURE) return true;
    }
    if (tree->right && has_effects(tree->right)) return true;
  }
  return false;
}

// A pure call is an effect only by its opcode.
bool operands_have_effects(NODE *node) {
  if (!is_call(node->op)) return has_effects(node);
  return (node->left && has_effects(node->left)) || (node->right && has_effects(node->right));
}

bool pure_operands_match(const NODE *a, const NODE *b) {
  if (!a || !b) return a == b;
  if (a->op == COMMA && b->op == COMMA)
    return pure_operands_match(a->left, b->left) && pure_operands_match(a->right, b->right);
  if (a->op == ADDRESS && b->op == ADDRESS && is_name_address(a) && is_name_address(b))
    return trees_equal(a, b, true);
  return same_number(a, b);
}

bool has_routine_name(Opcode op) {
  return op == XCALL || op == UXCALL || op == ICALL;
}

bool pure_calls_match(const NODE *a, const NODE *b) {
  return a->op == b->op && a->type == b->type &&
         (!has_routine_name(a->op) || std::strcmp(a->u.name, b->u.name) == 0) &&
         pure_operands_match(a->left, b->left) && pure_operands_match(a->right, b->right);
}

// The place whose address an ARGREF is.
bool same_object(const NODE *a, const NODE *b) {
  a = a->left;
  b = b->left;
  while (a->op == MEMBER && b->op == MEMBER && a->right->u.sym == b->right->u.sym) {
    a = a->left;
    b = b->left;
  }
  if (a->op != b->op) return false;
  switch (a->op) {
  case NAME: return a->u.sym == b->u.sym;
  case DEREF:
  case ARROW:
    return same_number(a->left, b->left) && (!a->right || a->right->u.sym == b->right->u.sym);
  default: return false;
  }
}

} // namespace

bool is_blocked(const NODE *node) {
  if (is_call(node->op)) return is_blocked_call(node);
  if (op_effect(node->op) != PURE) return true;
  switch (node->op) {
  case ADDRESS:
    if (is_name_address(node)) return false;
    break;
  case NAME: return is_volatile_node(node);
  case DEREF:
  case MEMBER:
  case ARROW:
    if (is_volatile_node(node)) return true;
    break;
  default: break;
  }
  return !has_number(node->left) || !has_number(node->right);
}

bool same_number(const NODE *a, const NODE *b) {
  if (!a || !b) return a == b;
  return a->nsize != 0 && a->nsize == b->nsize;
}

void note_statement_effects(const NODE *statement) {
  StatementEffects &effects = local_cse.effects;
  effects = StatementEffects{};
  effects.root_target = root_target(statement);
  // Its own target is no operand.
  const NODE *operands = effects.root_target ? statement->right : statement;
  if (operands) collect_effects(operands, effects);
}

std::int32_t ensure_number(SYM *sym) {
  if (number_of(sym) == 0) set_number(sym, new_number());
  return number_of(sym);
}

SYM *address_base(const NODE *address) {
  for (;;) {
    address = skip_marks(address);
    switch (address->op) {
    case ADD:
    case SUBTRACT:
      address = is_pointer(address->left->type) || !is_pointer(address->right->type)
                    ? address->left
                    : address->right;
      break;
    case PCONV:
    case ISP2CHAR:
    case ACONV:
    case IDENTITY: address = address->left; break;
    case ADDRESS:
    case ARGREF:
      for (address = address->left; address->op == MEMBER;)
        address = address->left;
      if (address->op == NAME) return address->u.sym;
      if (address->op != DEREF && address->op != ARROW) return nullptr;
      address = address->left; // &p->x is derived from p
      break;
    default: return nullptr;
    }
  }
}

void empty_tables() {
  for (NodeChain &bucket : local_cse.icon_buckets)
    if (bucket.head) empty_icons(bucket);
  for (NodeChain *chain : {&local_cse.fcon_list, &local_cse.scon_list, &local_cse.addr_list,
                           &local_cse.load_list, &local_cse.name_list, &local_cse.pure_call_list})
    empty(*chain);
  empty_operations();
  free_subranges(local_cse.load_subranges);
  local_cse.load_subranges = nullptr;
  local_cse.copy_list.clear();
  local_cse.newest_copy.clear();
  local_cse.oldest_number = local_cse.lcse_number;
}

void number_icon(NODE *node) {
  NodeChain &bucket = bucket_of(local_cse.icon_buckets, node);
  const bool is_small = node->u.lval >= 0 && node->u.lval <= largest_small_icon;
  const NODE *found = find(bucket, [&](const NODE *entry) {
    return entry->u.lval == node->u.lval && (is_small || entry->type == node->type);
  });
  if (found) {
    node->nsize = found->nsize;
    return;
  }
  node->nsize = new_number();
  // A copy: nothing is ever done to the node that was found.
  NODE *entry = copy_node(node);
  if (bucket.length + 1 == 2 * chain_memory) empty_icons(bucket);
  enter(bucket, entry);
}

void number_fcon(NODE *node) {
  NODE *found =
      find(local_cse.fcon_list, [&](const NODE *entry) { return trees_equal(entry, node, false); });
  if (found) return make_CSE_DUPE(node, found);
  node->nsize = new_number();
  enter(local_cse.fcon_list, node);
}

void number_scon(NODE *node) {
  NODE *found =
      find(local_cse.scon_list, [&](const NODE *entry) { return trees_equal(entry, node, false); });
  if (found) return make_CSE_DUPE(node, found);
  node->nsize = new_number();
  enter(local_cse.scon_list, node);
}

void number_address(NODE *node) {
  if (is_blocked(node)) {
    node->nsize = 0;
    return;
  }
  NODE *found =
      find(local_cse.addr_list, [&](const NODE *entry) { return trees_equal(entry, node, false); });
  if (found) return make_CSE_DUPE(node, found);
  node->nsize = new_number();
  enter(local_cse.addr_list, node);
}

void number_pure_call(NODE *node) {
  if (is_blocked(node)) {
    node->nsize = 0;
    return;
  }
  NODE *found = find(local_cse.pure_call_list,
                     [&](const NODE *entry) { return pure_calls_match(entry, node); });
  if (found) return make_CSE_DUPE(node, found);
  node->nsize = new_number();
  // Arguments in a list have numbers of their own; the list's number is as new as the call.
  if (may_enter_place()) enter(local_cse.pure_call_list, node);
}

void number_argref(NODE *node) {
  NODE *found = find(local_cse.pure_call_list, [&](const NODE *entry) {
    return entry->op == ARGREF && entry->type == node->type && same_object(entry, node);
  });
  if (found && trees_equal(found, node, true)) return make_CSE_DUPE(node, found);
  node->nsize = new_number();
  if (may_enter_place()) enter(local_cse.pure_call_list, node);
}

void number_memory_name(NODE *node) {
  NODE *found = find(local_cse.name_list, [&](const NODE *entry) {
    return entry->u.sym == node->u.sym && entry->type == node->type &&
           entry->nsize == number_of(entry->u.sym);
  });
  if (found) return make_CSE_DUPE(node, found);
  if (may_enter_place()) enter(local_cse.name_list, node);
}

void number_by_load(NODE *node) {
  if (is_blocked(node)) {
    node->nsize = new_number();
    return;
  }
  NODE *found = find_place([&](const NODE *entry) { return place_matches(entry, node); });
  if (found) return make_CSE_DUPE(node, found);
  number_base(node);
  node->nsize = new_number();
  if (may_enter_place()) enter_place(node);
}

void enter_stored_place(NODE *node) {
  node->nsize = 0;
  if (is_blocked(node)) {
    node->nsize = new_number();
    return;
  }
  number_base(node);
  node->nsize = new_number();
  enter_place(node);
}

void enter_stored_name(NODE *node) {
  node->nsize = new_number();
  set_number(node->u.sym, node->nsize);
  enter(local_cse.name_list, node);
}

bool is_available(const NODE *place) {
  switch (place->op) {
  case NAME:
    return find(local_cse.name_list, [&](const NODE *entry) {
             return entry->u.sym == place->u.sym && entry->nsize == number_of(entry->u.sym);
           }) != nullptr;
  case DEREF:
  case ARROW:
    return find_place([&](const NODE *entry) {
             return same_access(entry, place) && !is_stale(entry) &&
                    trees_equal(entry, place, false);
           }) != nullptr;
  default: return false;
  }
}

const NODE *other_holder(const NODE *node) {
  const std::int32_t number = node->nsize;
  const NODE *holder =
      find_copy(number, [&](const NODE *name) { return name->type == node->type; });
  if (!holder || holder->u.sym == node->u.sym) return nullptr;
  return changes_inside_statement(holder->u.sym) ? nullptr : holder;
}

void publish_copies() {
  for (const NODE *assignment : local_cse.pending_copies) {
    const std::int32_t number = assignment->nsize;
    const std::int32_t slot = number - local_cse.oldest_number;
    if (slot <= 0) continue;
    const auto at = static_cast<std::size_t>(slot);
    if (at >= local_cse.newest_copy.size()) local_cse.newest_copy.resize(at * 2 + 16, -1);
    local_cse.copy_list.push_back({assignment->left, number, local_cse.newest_copy[at]});
    local_cse.newest_copy[at] = static_cast<std::int32_t>(local_cse.copy_list.size()) - 1;
  }
  local_cse.pending_copies.clear();
}

// ------------------------------------------------------------------------------------------------
// Marking

void make_CSE_DUPE(NODE *node, NODE *first) {
  if (node == first || first->nsize == 0) return;
  if (node->nsize == 0 && operands_have_effects(node)) return;
  const std::int32_t number = first->nsize;
  node->nsize = number;
  debug_print("\n\t============== (%d,%d) 'make_CSE_DUPE' found this redundant:\n", local_cse.line2,
              local_cse.line);
  if (state.debug_file) debug_print("%s", tree2infix(node));
  debug_print("\n\t====================================================\n");
  if (replace_by_copy(node, first, number)) return;
  NODE *copy = copy_node(node);
  node->op = CSE_DUPE;
  node->left = first;
  node->right = copy;
}

} // namespace velkor
