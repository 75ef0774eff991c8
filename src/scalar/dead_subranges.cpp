#include "scalar/dead_subranges.h"

#include "cfg/graph.h"
#include "core/compare.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "scalar/extended_blocks.h"
#include "scalar/live_variables.h"
#include "scalar/split_commas.h"
#include "scalar/subranges.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"

#include <algorithm>
#include <limits>

namespace velkor {
namespace {

// Each read goes through all ranges. More of them than this, none touching another, are not kept,
// so that the time stays in proportion to the function's length.
constexpr int most_ranges = 256;

constexpr int ranges_debug_level = 3;
constexpr std::int32_t most_bytes = std::numeric_limits<std::int32_t>::max() / 8;

// Who looks at the value of a tree.
enum class Use : std::uint8_t {
  VALUE,
  DISCARDED // nobody
};

// Does a store count whose place is a local of the function only?
enum class Origin : std::uint8_t {
  STORE, // of the program
  END    // of the function: what is local is not read any more
};

// What is certain to be overwritten behind the current place of the walk. The nodes that ranges and
// trees are made of are copies: the statements that they come from may be rewritten.
struct DeadSubranges {
  SUBRANGE *dead_ranges = nullptr;
  LIST *dead_trees = nullptr; // places without a range
  int range_count = 0;        // in dead_ranges, or more: not all that go are counted
  bool lcse_subrange_changed = false;
  bool is_certain = true;     // the tree is evaluated whenever the statement is
  const LIST *cell = nullptr; // of the current statement
};

DeadSubranges dead;

// ------------------------------------------------------------------------------------------------
// The sets

void empty_dead_trees() {
  if (dead.dead_trees) dead.dead_trees = erase_list(dead.dead_trees);
}

void empty_dead_ranges() {
  free_subranges(dead.dead_ranges);
  dead.dead_ranges = nullptr;
  dead.range_count = 0;
}

void empty_both() {
  empty_dead_trees();
  empty_dead_ranges();
}

// A name that stands for a part of its object only, in another type, covers just that part.
std::int32_t stored_width(const SUBRANGE *range, const NODE *place) {
  if (!is_scalar(place->type) || place->type == ENUM) return range->width;
  return std::min(range->width, value_width(place->type));
}

std::int64_t end_of(const SUBRANGE *range) {
  return std::int64_t{range->offset} + range->width;
}

bool is_of_same_object(const SUBRANGE *a, const SUBRANGE *b) {
  return a->base->op == NAME && b->base->op == NAME &&
         is_same_object(a->base->u.sym, b->base->u.sym);
}

bool contains(const SUBRANGE *outer, const SUBRANGE *inner) {
  return outer->offset <= inner->offset && end_of(inner) <= end_of(outer);
}

bool overlaps_or_touches(const SUBRANGE *a, const SUBRANGE *b) {
  return a->offset <= end_of(b) && b->offset <= end_of(a);
}

bool is_same_access(const NODE *a, const NODE *b) {
  return a->op == b->op && a->type == b->type && a->depnum == b->depnum && trees_equal(a, b, false);
}

bool range_is_dead(const SUBRANGE *range, const NODE *place) {
  if (range->width == 0) return false;
  for (const SUBRANGE *entry = dead.dead_ranges; entry; entry = entry->next) {
    if (range->base->op == NAME && is_of_same_object(entry, range) && contains(entry, range))
      return true;
    if (range->base->op == ICON && entry->base->op == ICON && is_same_access(entry->tree, place))
      return true;
  }
  return false;
}

bool is_dead(NODE *place) {
  if (!dead.dead_ranges && !dead.dead_trees) return false;
  if (is_volatile_access(place) || is_followed_scalar(place)) return false;
  if (SUBRANGE *range = subrange_of(place)) {
    const bool result = range_is_dead(range, place);
    free_subrange(range);
    return result;
  }
  for (const LIST *cell = dead.dead_trees; cell; cell = cell->next)
    if (is_same_access(cell->item, place)) return true;
  return false;
}

// Makes an entry of the same object cover the range, too. Returns whether there was one.
bool merge_range(const SUBRANGE *range) {
  for (SUBRANGE *entry = dead.dead_ranges; entry; entry = entry->next)
    if (is_of_same_object(entry, range) && overlaps_or_touches(entry, range)) {
      const std::int64_t end = std::max(end_of(entry), end_of(range));
      entry->offset = std::min(entry->offset, range->offset);
      entry->width = static_cast<std::int32_t>(end - entry->offset);
      return true;
    }
  return false;
}

// Makes sure of the chain's length when it seems to be full.
bool is_full() {
  if (dead.range_count < most_ranges) return false;
  dead.range_count = 0;
  for (const SUBRANGE *range = dead.dead_ranges; range; range = range->next)
    ++dead.range_count;
  return dead.range_count > most_ranges / 2;
}

// Takes the range.
void add_range(SUBRANGE *range, const NODE *place) {
  if (range->width <= 0 || merge_range(range) || is_full()) return free_subrange(range);
  range->base = copy_node(range->base);
  range->tree = copy_tree(place);
  range->next = dead.dead_ranges;
  dead.dead_ranges = range;
  dead.range_count += 1;
}

bool is_left_to_others(const NODE *place) {
  return is_followed_scalar(place) || (place->op == NAME && place->u.sym->level == 1);
}

// The place is overwritten behind this point, and not read before.
void add_dead(NODE *place, Origin origin) {
  if (!dead.is_certain || is_volatile_access(place) || is_left_to_others(place)) return;
  if (SUBRANGE *range = subrange_of(place)) {
    range->width = stored_width(range, place);
    const bool is_local = range->base->op == NAME && range->base->u.sym->sclass == C_AUTO;
    if (origin == Origin::END && !is_local) return free_subrange(range);
    return add_range(range, place);
  }
  if (origin == Origin::STORE && !has_side_effects(place))
    dead.dead_trees = list_cons(copy_tree(place), dead.dead_trees, 0, 0);
}

// ------------------------------------------------------------------------------------------------
// Reads

// Leaves of the entry what stands in front of the read, or behind it. Returns whether it stays.
bool trim_entry(SUBRANGE *entry, const SUBRANGE *read) {
  const std::int64_t entry_end = end_of(entry);
  const std::int64_t read_end = end_of(read);
  if (read->offset >= entry_end || read_end <= entry->offset) return true;
  if (read->offset > entry->offset && read_end >= entry_end) {
    entry->width = read->offset - entry->offset;
    return true;
  }
  if (read->offset <= entry->offset && read_end < entry_end) {
    entry->offset = static_cast<std::int32_t>(read_end);
    entry->width = static_cast<std::int32_t>(entry_end - read_end);
    return true;
  }
  return false;
}

void trim_dead_ranges(const SUBRANGE *read) {
  SUBRANGE **link = &dead.dead_ranges;
  while (SUBRANGE *entry = *link) {
    if (!is_of_same_object(entry, read) || trim_entry(entry, read)) {
      link = &entry->next;
      continue;
    }
    *link = entry->next;
    free_subrange(entry);
  }
}

// A volatile access reads what an earlier store has left, as any other does: it may go through a
// pointer to volatile, and a whole structure may have been stored around a volatile member.
void note_read(NODE *place) {
  if (is_followed_scalar(place)) return;
  empty_dead_trees();
  if (!dead.dead_ranges) return;
  SUBRANGE *range = subrange_of(place);
  if (!range) return empty_dead_ranges();
  if (range->width != 0 && range->base->op == NAME)
    trim_dead_ranges(range);
  else
    dead.dead_ranges = subranges_kill_overlap(range, dead.dead_ranges);
  free_subrange(range);
}

bool is_static_local(const SYM *sym) {
  return sym->sclass == C_STAT && sym->level != 0;
}

// Code behind a call that leaves by a longjmp does not run, and the function's next run finds the
// static locals as they are.
void drop_statics() {
  SUBRANGE **link = &dead.dead_ranges;
  while (SUBRANGE *entry = *link) {
    if (entry->base->op == NAME && is_static_local(entry->base->u.sym)) {
      *link = entry->next;
      free_subrange(entry);
    } else {
      link = &entry->next;
    }
  }
}

void note_call(const NODE *call) {
  empty_dead_trees();
  dead.dead_ranges = subranges_kill_at_call(call, dead.dead_ranges);
  if (is_call(call->op) && may_not_return(call)) drop_statics();
}

// ------------------------------------------------------------------------------------------------
// One statement, backward

NODE *walk(NODE *tree, Use use);

NODE *walk_value(NODE *tree) {
  return walk(tree, Use::VALUE);
}

NODE *walk_operands(NODE *tree) {
  if (tree->right) tree->right = walk_value(tree->right);
  if (tree->left) tree->left = walk_value(tree->left);
  return tree;
}

// What an access goes through.
void walk_path(NODE *access) {
  if (access->op == DEREF && access->right) access->right = walk_value(access->right);
  access->left = walk_value(access->left);
}

// The way to a place that is not read itself, or whose read has been noted as a whole.
void walk_place(NODE *&place) {
  NODE *&object = object_below_members(place);
  switch (object->op) {
  case NAME: return;
  case DEREF:
  case ARROW: return walk_path(object);
  default: object = walk_value(object);
  }
}

NODE *walk_access(NODE *access) {
  note_read(access);
  walk_place(access);
  return access;
}

// Either side may vanish; the value of the left one is not wanted.
NODE *walk_sequence(NODE *tree, Use use) {
  NODE *right = walk(tree->right, tree->op == PCOMMA ? Use::DISCARDED : use);
  NODE *left = walk(tree->left, Use::DISCARDED);
  return list_of_remaining(tree, left, right);
}

// && || ? evaluate the right operand perhaps, NASSERT its operand never.
NODE *walk_conditional(NODE *tree) {
  const bool was_certain = dead.is_certain;
  dead.is_certain = false;
  if (tree->right) tree->right = walk_value(tree->right);
  dead.is_certain = was_certain && tree->op != NASSERT;
  tree->left = walk_value(tree->left);
  dead.is_certain = was_certain;
  return tree;
}

void report_dead(const NODE *store) {
  dead.lcse_subrange_changed = true;
  if (!state.debug_file) return;
  debug_print("\n(%d,%d) DEAD ASSIGNMENT:  %s\n", dead.cell->line2, dead.cell->line,
              tree2infix(store));
}

// What a tree yields and does: all of it, or nothing but its effects.
NODE *walk_rest(NODE *tree, Use use) {
  if (use == Use::DISCARDED) tree = discard_value(tree);
  return tree ? walk(tree, use) : nullptr;
}

// L = e  ->  e, as a value of L's type, or what L and e do.
NODE *drop_store(NODE *node, Use use) {
  report_dead(node);
  NODE *value = node->right;
  const TypeWord type = node->type;
  if (is_scalar(type)) value = make_conversion(type, make_conversion(node->left->type, value));
  value = make_comma(discard_value(node->left), value);
  erase_node(node);
  return walk_rest(value, use);
}

NODE *walk_live_store(NODE *node) {
  empty_dead_trees();
  add_dead(node->left, Origin::STORE);
  node->right = walk_value(node->right);
  walk_place(node->left);
  return node;
}

NODE *walk_store(NODE *node, Use use) {
  const bool may_go = !is_bit_field_access(node->left) && is_dead(node->left);
  return may_go ? drop_store(node, use) : walk_live_store(node);
}

// L++ and L--  ->  L
NODE *drop_increment(NODE *node, Use use) {
  report_dead(node);
  NODE *value = make_conversion(node->type, node->left);
  erase_tree(node->right);
  erase_node(node);
  return walk_rest(value, use);
}

// L op= e  ->  L op e, as a value of L's type.
NODE *drop_compound(NODE *node, Use use) {
  report_dead(node);
  const TypeWord place_type = node->left->type;
  NODE *value = make_compound_operation(asgop_base(node->op), node->left, node->right);
  value = make_conversion(node->type, make_conversion(place_type, value));
  erase_node(node);
  return walk_rest(value, use);
}

// The place is read and stored to.
NODE *walk_update(NODE *node, Use use) {
  if (!is_bit_field_access(node->left) && is_dead(node->left)) {
    const bool is_step = node->op == INCREMENT || node->op == DECREMENT;
    return is_step ? drop_increment(node, use) : drop_compound(node, use);
  }
  empty_dead_trees();
  return walk_operands(node);
}

// The bytes behind an address, as an access. It lives as long as the caller's frame.
NODE bytes_behind(NODE *address, std::int32_t bytes) {
  NODE place{};
  place.op = DEREF;
  place.type = STRUCT;
  place.depnum = bytes * 8;
  place.left = address;
  return place;
}

// memcpy(to, from, n): a read of n bytes, and behind that a store of as many.
NODE *walk_copy(NODE *copy) {
  NODE *operands = copy->left;
  const NODE *size = operands->op == COMMA ? operands->right : nullptr;
  const bool is_known = size && size->op == ICON && size->u.lval >= 1 &&
                        size->u.lval <= most_bytes && operands->left->op == COMMA;
  NODE target = is_known ? bytes_behind(operands->left->left, size->u.lval) : NODE{};
  SUBRANGE *range = is_known ? subrange_of(&target) : nullptr;
  if (range && range->width != 0) {
    empty_dead_trees();
    if (dead.is_certain && range->base->op == NAME)
      add_range(range, &target);
    else
      free_subrange(range);
    NODE source = bytes_behind(operands->left->right, size->u.lval);
    note_read(&source);
  } else {
    if (range) free_subrange(range);
    note_call(copy);
  }
  return walk_operands(copy);
}

NODE *walk(NODE *tree, Use use) {
  switch (tree->op) {
  case LABELDEF: return tree; // its operand is no tree
  case ASSIGN:
  case STASG:
  case ARASG: return walk_store(tree, use);
  case NAME:
  case DEREF:
  case MEMBER:
  case ARROW: return walk_access(tree);
  case ADDRESS: walk_place(tree->left); return tree;
  case PCOMMA:
  case COMMA_OP: return walk_sequence(tree, use);
  case SWITCH:
  case IF: tree->left = walk_value(tree->left); return tree;
  case LOGICAL_AND:
  case LOGICAL_OR:
  case CONDITIONAL:
  case NASSERT: return walk_conditional(tree);
  case LOOP:
  case INITLOOP: empty_dead_trees(); return walk_operands(tree);
  case MEMCPY: return walk_copy(tree);
  case ASM:
    if (!is_comment_asm(tree)) note_call(tree);
    return tree;
  default: break;
  }
  if (op_effect(tree->op) == ASSIGNS) return walk_update(tree, use);
  if (is_call(tree->op)) note_call(tree);
  return walk_operands(tree);
}

// ------------------------------------------------------------------------------------------------
// Blocks

// In Y$1 = (s.a = e), the form that a store has whose value is read later, s.a counts as well.
void seed_from_statement(const NODE *statement) {
  if (statement->op == LABELDEF || !statement->left) return;
  for (;; statement = statement->right) {
    switch (statement->left->op) {
    case NAME:
    case DEREF:
    case MEMBER:
    case ARROW: add_dead(statement->left, Origin::END); break;
    default: break;
    }
    if (statement->op != ASSIGN || statement->right->op != ASSIGN) return;
  }
}

// Behind the last block of a way through the function its own objects are gone.
void seed_sets(const BB *last) {
  for (const BB *block = last;; block = block->prev) {
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      seed_from_statement(cell->item);
    if (block == state.first_bb || single_edge(block->prev->succs) != block) return;
  }
}

// The commas of the cells in front of rest become statements of their own.
void split_cells(LIST *cells, const LIST *rest) {
  for (LIST *cell = cells; cell != rest; cell = cell->next)
    while (split_comma(cell)) {
    }
}

void clean_block(BB *block) {
  if (!block->succs) seed_sets(block);
  LIST *pending = list_reverse_onto(block->trees, nullptr);
  block->trees = nullptr;
  while (LIST *cell = pending) {
    pending = cell->next;
    dead.cell = cell;
    dead.lcse_subrange_changed = false;
    cell->item = walk(cell->item, Use::DISCARDED);
    if (!cell->item) {
      give_list(cell);
      continue;
    }
    if (dead.lcse_subrange_changed) cell->item = simplify_tree(cell->item);
    LIST *rest = block->trees;
    cell->next = rest;
    block->trees = cell;
    split_cells(cell, rest);
  }
  if (state.debug_on >= ranges_debug_level)
    print_subranges("\n\tOverwritten behind the start of the block:", dead.dead_ranges, false);
}

} // namespace

void elim_dead_subrange_assigns() {
  debug_print("\n\n\t\t\t---------- ENTERING 'elim_dead_subrange_assigns' ---\n");
  dead = DeadSubranges{};
  flag_addressed_objects(AddressUse::ANY);
  for (BB *block = state.first_bb->prev;;) {
    clean_block(block);
    if (block == state.first_bb) break;
    const BB *done = block;
    block = previous_walked_block(block);
    if (single_edge(block->succs) != done) empty_both();
  }
  empty_both();
}

} // namespace velkor
