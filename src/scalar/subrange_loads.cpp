#include "scalar/subrange_loads.h"

#include "core/compare.h"
#include "core/conversions.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "diag/infix.h"
#include "scalar/extended_blocks.h"
#include "scalar/split_commas.h"
#include "scalar/subranges.h"
#include "scalar/value_copies.h"
#include "simplify/compound.h"
#include "simplify/simplify.h"

#include <cstring>

namespace velkor {
namespace {

// Each store goes through the ranges that are known, to drop those that it overlaps. A block that
// stores to more places than this begins anew, so that the time stays in proportion to its length:
// with this number, a block of 32,000 stores to as many places spends about half as long on its
// ranges as on all other passes together.
constexpr int most_ranges = 256;

constexpr int ranges_debug_level = 3;

struct SubrangeLoads {
  SUBRANGE *avail_ranges = nullptr; // of the statements ahead of the current one, in its block
  SUBRANGE *new_ranges = nullptr;   // of the current statement
  int range_count = 0;              // in avail_ranges, or more: not all that go are counted
  bool lcse_subrange_changed = false;
  bool store_seen = false; // in the current statement, one that may make its place available
  int temporaries = 0;
  const LIST *cell = nullptr; // of the current statement
};

SubrangeLoads loads;

bool is_register_name(const NODE *node) {
  return node->op == NAME && (node->u.sym->scqual & (CQ_REGISTER | CQ_CREGISTER));
}

// Left to the passes that follow scalars.
bool is_left_to_others(const NODE *access) {
  return is_followed_scalar(access) || is_register_name(access) ||
         (access->op == NAME && access->u.sym->level == 1);
}

// ------------------------------------------------------------------------------------------------
// What is available

void forget_available() {
  free_subranges(loads.avail_ranges);
  loads.avail_ranges = nullptr;
  loads.range_count = 0;
}

bool is_same_place(const SUBRANGE *a, const SUBRANGE *b) {
  if (a->offset != b->offset || a->width != b->width || a->base->op != b->base->op) return false;
  return a->base->op != NAME || a->base->u.sym == b->base->u.sym;
}

// The range that the access reads as it was stored, or none.
const SUBRANGE *find_available(NODE *access) {
  if (!loads.avail_ranges || !is_scalar(access->type) || is_left_to_others(access)) return nullptr;
  if (is_volatile_access(access)) return nullptr;
  SUBRANGE *range = subrange_of(access);
  if (!range) return nullptr;
  const SUBRANGE *entry = loads.avail_ranges;
  while (entry && !(is_same_place(entry, range) && entry->tree->op == access->op &&
                    entry->tree->type == access->type && trees_equal(entry->tree, access, false)))
    entry = entry->next;
  free_subrange(range);
  return entry;
}

bool is_repeatable_value(const NODE *value) {
  while (value->op == PCONV || value->op == ISP2CHAR)
    value = value->left;
  return is_constant_or_name_address(value) ||
         (value->op == NAME && is_constant_temporary(value->u.sym));
}

// place = e  ->  Y$n = (place = e)
void keep_in_temporary(NODE *store) {
  SYM *temporary = make_temp('Y', ++loads.temporaries, store->depnum, store->type);
  store->right = copy_node(store);
  store->left = make_name(temporary);
}

// The value that the range's assignment has stored; a copy.
NODE *copy_of_stored_value(const SUBRANGE *entry) {
  NODE *store = entry->item;
  if (store->left == entry->tree) {
    if (is_repeatable_value(store->right)) return copy_tree(store->right);
    keep_in_temporary(store);
  }
  return copy_node(store->left);
}

NODE *lcse_lvalue(NODE *access) {
  const SUBRANGE *entry = find_available(access);
  if (!entry) return access;
  if (state.debug_file) {
    debug_print("\n\t(%d,%d) 'lcse_lvalue' found %s redundant\n", loads.cell->line2,
                loads.cell->line, tree2infix(access));
    debug_print("\t\twith earlier %s\n", tree2infix(entry->item));
  }
  loads.lcse_subrange_changed = true;
  const TypeWord type = access->type;
  erase_tree(access);
  return convert_tree(type, copy_of_stored_value(entry));
}

// ------------------------------------------------------------------------------------------------
// Rewriting a statement

void kill_store(NODE *target, SUBRANGE *&chain) {
  if (!chain) return;
  SUBRANGE *range = subrange_of(target);
  if (range && range->width != 0) {
    chain = subranges_kill_overlap(range, chain);
  } else {
    free_subranges(chain);
    chain = nullptr;
  }
  if (range) free_subrange(range);
}

NODE *rewrite(NODE *tree);

void rewrite_operands(NODE *tree) {
  if (tree->left) tree->left = rewrite(tree->left);
  if (tree->right) tree->right = rewrite(tree->right);
}

void rewrite_arguments_first(NODE *call) {
  if (call->right) call->right = rewrite(call->right);
  if (call->left) call->left = rewrite(call->left);
}

// What an access goes through: its address, and the subscript beside it.
void rewrite_path(NODE *access) {
  if (access->op == NAME) return;
  access->left = rewrite(access->left);
  if (access->op == DEREF && access->right) access->right = rewrite(access->right);
}

// A place that is not read: below an address operator, or stored to.
void rewrite_place(NODE *&place) {
  NODE *&object = object_below_members(place);
  switch (object->op) {
  case NAME: return;
  case DEREF:
  case ARROW: return rewrite_path(object);
  default: object = rewrite(object);
  }
}

// x op= e with the value of x at hand  ->  x = x op e. Where e calls or stores, x may be read
// behind that.
NODE *use_value_of_target(NODE *node) {
  if (!is_compound_assignment(node->op) || has_side_effects(node->right)) return node;
  return find_available(node->left) ? expand_compound_assignment(node) : node;
}

NODE *rewrite_store(NODE *node) {
  node = use_value_of_target(node);
  if (node->right) node->right = rewrite(node->right);
  rewrite_place(node->left);
  kill_store(node->left, loads.avail_ranges);
  loads.store_seen |= node->op == ASSIGN;
  return node;
}

bool acts_as_call(const NODE *node) {
  return is_call(node->op) || node->op == MEMCPY || (node->op == ASM && !is_comment_asm(node));
}

NODE *rewrite(NODE *tree) {
  switch (tree->op) {
  case LABELDEF: return tree; // its operand is no tree
  case NAME: return lcse_lvalue(tree);
  case DEREF:
  case ARROW: rewrite_path(tree); return lcse_lvalue(tree);
  case MEMBER: rewrite_place(tree); return lcse_lvalue(tree);
  case ADDRESS:
  case ARGREF: rewrite_place(tree->left); return tree;
  case STASG:
  case ARASG:
  case LOOP:
  case INITLOOP: return rewrite_store(tree);
  case SWITCH:
  case IF:
  case ASSERT:
  case NASSERT: tree->left = rewrite(tree->left); return tree;
  default: break;
  }
  if (op_effect(tree->op) == ASSIGNS) return rewrite_store(tree);
  if (acts_as_call(tree)) {
    rewrite_arguments_first(tree);
    loads.avail_ranges = subranges_kill_at_call(tree, loads.avail_ranges);
    return tree;
  }
  rewrite_operands(tree);
  return tree;
}

// ------------------------------------------------------------------------------------------------
// Recording the stores of a statement
//
// That is done when the statement has its final form, so that no rewriting can take the ground from
// under a range.

bool is_parameter_of_name(const NODE *node, const char *name) {
  return node->op == NAME && node->u.sym->level == 1 && std::strcmp(node->u.sym->name, name) == 0;
}

bool mentions_parameter(const NODE *tree, const char *name) {
  for (; tree; tree = tree->left) {
    if (is_parameter_of_name(tree, name)) return true;
    if (tree->right && mentions_parameter(tree->right, name)) return true;
  }
  return false;
}

// The home of a parameter keeps its copy from the parameter as it stands.
bool is_copy_of_parameter(const NODE *node) {
  return node->left->op == NAME && mentions_parameter(node->right, node->left->u.sym->name);
}

bool shall_record(NODE *node) {
  return node->op == ASSIGN && is_scalar(node->type) && is_scalar(node->left->type) &&
         !is_left_to_others(node->left) && !is_bit_field_access(node->left) &&
         !is_volatile_access(node->left) && !has_side_effects(node->left) &&
         !is_copy_of_parameter(node);
}

void record_store(NODE *node) {
  if (!shall_record(node)) return;
  SUBRANGE *range = subrange_of(node->left);
  if (!range) return;
  if (range->width == 0) return free_subrange(range);
  range->item = node;
  range->tree = node->left;
  range->next = loads.new_ranges;
  loads.new_ranges = range;
  if (state.debug_file)
    debug_print("\n ==\t(%d,%d)\tavailable: %s\n", loads.cell->line2, loads.cell->line,
                tree2infix(node));
}

bool may_skip_right(Opcode op) {
  return op == LOGICAL_AND || op == LOGICAL_OR || op == CONDITIONAL;
}

// Follows the order in which rewrite goes through the tree. is_certain: the tree is evaluated
// whenever the statement is.
void record_stores(NODE *tree, bool is_certain) {
  if (tree->op == LABELDEF) return;
  const bool is_store = op_effect(tree->op) == ASSIGNS || tree->op == ARASG || tree->op == LOOP ||
                        tree->op == INITLOOP;
  if (tree->op == NASSERT) is_certain = false; // never evaluated
  const bool is_right_certain = is_certain && !may_skip_right(tree->op);
  const bool right_first = is_store || is_call(tree->op);
  if (right_first && tree->right) record_stores(tree->right, is_right_certain);
  if (tree->left) record_stores(tree->left, is_certain);
  if (!right_first && tree->right) record_stores(tree->right, is_right_certain);
  if (is_store) {
    kill_store(tree->left, loads.new_ranges);
    if (is_certain) record_store(tree);
  } else if (acts_as_call(tree)) {
    loads.new_ranges = subranges_kill_at_call(tree, loads.new_ranges);
  }
}

// Room for one more. The chain is counted anew once in a while; a full one is given up.
void make_room() {
  if (loads.range_count < most_ranges) return;
  loads.range_count = 0;
  for (const SUBRANGE *range = loads.avail_ranges; range; range = range->next)
    ++loads.range_count;
  if (loads.range_count > most_ranges / 2) forget_available();
}

void publish_new_ranges() {
  while (SUBRANGE *range = loads.new_ranges) {
    make_room();
    loads.new_ranges = range->next;
    range->next = loads.avail_ranges;
    loads.avail_ranges = range;
    ++loads.range_count;
  }
}

// ------------------------------------------------------------------------------------------------
// Blocks

void rewrite_statement(LIST *cell) {
  while (split_comma(cell)) {
  }
  loads.cell = cell;
  loads.lcse_subrange_changed = false;
  loads.store_seen = false;
  cell->item = rewrite(cell->item);
  if (loads.lcse_subrange_changed) cell->item = simplify_tree(cell->item);
  if (!loads.store_seen) return;
  record_stores(cell->item, true);
  publish_new_ranges();
}

void rewrite_block(const BB *block) {
  for (LIST *cell = block->trees; cell; cell = cell->next)
    rewrite_statement(cell);
  if (state.debug_on >= ranges_debug_level)
    print_subranges("\n\tAvailable at the end of the block:", loads.avail_ranges, false);
  forget_available();
}

} // namespace

void lcse_subrange_assignments() {
  debug_print("\n\n\t\t\t---------- ENTERING 'lcse_subrange_assignments' ---\n");
  loads = SubrangeLoads{};
  flag_addressed_objects(AddressUse::ANY);
  for (const BB *block = state.first_bb; block; block = next_walked_block(block))
    rewrite_block(block);
}

} // namespace velkor
