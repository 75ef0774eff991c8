#include "scalar/dead_assignments.h"

#include "cfg/simpcfg.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "diag/infix.h"
#include "scalar/combine_assignments.h"
#include "scalar/delay_assignments.h"
#include "scalar/live_variables.h"
#include "scalar/split_commas.h"
#include "scalar/unnest_assignments.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// One statement, backward

// How the value of a tree is wanted.
enum class Use : std::uint8_t {
  VALUE,      //
  DISCARDED,  // nobody looks at it
  CONDITIONAL // perhaps: what the tree assigns leaves the value from before alive
};

class DeadWalk {
public:
  // live: what is live behind the statements; in the end what is live in front of them.
  explicit DeadWalk(SparseSet &live) : live_(live) {}

  // Statements come from the last to the first. Returns what is left of this one, or none.
  NODE *walk_statement(LIST *cell);

private:
  NODE *walk(NODE *tree, Use use);
  NODE *walk_operands(NODE *tree, Use use);
  NODE *walk_assignment(NODE *tree, Use use);
  NODE *walk_compound_assignment(NODE *tree, Use use);
  NODE *walk_increment(NODE *tree, Use use);
  NODE *walk_access(NODE *tree, Use use);
  NODE *walk_sequence(NODE *tree, Use use);
  NODE *walk_loop_counter(NODE *tree, Use use);
  NODE *drop_assignment(NODE *tree, Use use);
  void note_reference(const SYM *sym);
  void note_call(const NODE *call);
  void note_embedded(const NODE *tree, Use use) const;
  void report_dead(const NODE *tree) const;
  [[nodiscard]] bool is_live(const SYM *sym) const { return set_has(live_, sym->count); }
  [[nodiscard]] bool is_dead_name(const NODE *node) const {
    return node->op == NAME && is_candidate(node->u.sym) && !is_live(node->u.sym);
  }

  SparseSet &live_;
  const LIST *cell_ = nullptr;
  bool operand_changed_ = false;
};

// An operand of an operand is wanted as long as it is evaluated at all.
Use operand_use(Use use) {
  return use == Use::CONDITIONAL ? use : Use::VALUE;
}

// key counts references.
void count_reference(SYM *sym) {
  sym->key += 1;
}

void DeadWalk::note_reference(const SYM *sym) {
  set_add(live_, sym->count);
}

void DeadWalk::note_call(const NODE *call) {
  if (call_may_reenter(call)) set_union(live_, live_variables.statics_at_entry);
  if (may_not_return(call)) set_union(live_, live_variables.static_candidates);
}

void DeadWalk::note_embedded(const NODE *tree, Use use) const {
  if (use != Use::DISCARDED && tree->left->op == NAME) live_variables.embedded_asg_seen = true;
}

void DeadWalk::report_dead(const NODE *tree) const {
  if (!state.debug_file) return;
  debug_print("\n\t(%d,%d) DEAD 'ASG' TO CANDIDATE %d:    %s\n", cell_->line2, cell_->line,
              tree->left->u.sym->count, tree2infix(tree));
}

// Right, then left: against the order in which && || ? : and ,OP evaluate them.
NODE *DeadWalk::walk_operands(NODE *tree, Use use) {
  const bool right_is_conditional =
      tree->op == LOGICAL_AND || tree->op == LOGICAL_OR || tree->op == CONDITIONAL;
  if (tree->right) tree->right = walk(tree->right, right_is_conditional ? Use::CONDITIONAL : use);
  if (tree->left) tree->left = walk(tree->left, use);
  return tree;
}

NODE *DeadWalk::walk(NODE *tree, Use use) {
  switch (tree->op) {
  case NAME:
    if (is_candidate(tree->u.sym)) {
      note_reference(tree->u.sym);
      count_reference(tree->u.sym);
    }
    return tree;
  case ASSIGN: return walk_assignment(tree, use);
  case INCREMENT:
  case DECREMENT: return walk_increment(tree, use);
  case DEREF: return walk_access(tree, use);
  case COMMA_OP:
  case PCOMMA: return walk_sequence(tree, use);
  case LOOP:
  case INITLOOP: return walk_loop_counter(tree, use);
  case MEMBER:
  case ARROW:
  case IF:
  case SWITCH: tree->left = walk(tree->left, operand_use(use)); return tree;
  case NASSERT: tree->left = walk(tree->left, Use::CONDITIONAL); return tree; // never evaluated
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case XCALL:
  case UXCALL: note_call(tree); return walk_operands(tree, operand_use(use));
  case ASM:
    if (!is_comment_asm(tree)) // what it calls may come back
      set_union(live_, live_variables.static_candidates);
    return tree;
  default:
    if (asgop_base(tree->op) != ILLOP) return walk_compound_assignment(tree, use);
    return walk_operands(tree, operand_use(use));
  }
}

// x = e with x dead  ->  (type of x) e, or what e does besides yielding its value.
NODE *DeadWalk::drop_assignment(NODE *tree, Use use) {
  report_dead(tree);
  NODE *value = tree->right;
  if (value->op == IDENTITY) value = replace_by_left(value);
  value = make_conversion(tree->type, make_conversion(tree->left->type, value));
  erase_node(tree->left);
  erase_node(tree);
  if (use == Use::DISCARDED)
    value = discard_value(value);
  else
    operand_changed_ = true;
  return value ? walk(value, use) : nullptr;
}

NODE *DeadWalk::walk_assignment(NODE *tree, Use use) {
  note_embedded(tree, use);
  NODE *target = tree->left;
  if (target->op != NAME || !is_candidate(target->u.sym)) {
    tree->left = walk(target, operand_use(use));
    tree->right = walk(tree->right, operand_use(use));
    return tree;
  }
  SYM *sym = target->u.sym;
  if (!is_live(sym)) return drop_assignment(tree, use);
  if (use != Use::CONDITIONAL) set_remove(live_, sym->count);
  count_reference(sym);
  tree->right = walk(tree->right, operand_use(use));
  return tree;
}

NODE *DeadWalk::walk_compound_assignment(NODE *tree, Use use) {
  note_embedded(tree, use);
  if (!is_dead_name(tree->left)) return walk_operands(tree, operand_use(use));
  tree = expand_compound_assignment(tree);
  return tree->op == ASSIGN ? walk_assignment(tree, use) : walk_operands(tree, operand_use(use));
}

NODE *DeadWalk::walk_increment(NODE *tree, Use use) {
  if (!is_dead_name(tree->left) || has_side_effects(tree->right)) {
    note_embedded(tree, use);
    tree->left = walk(tree->left, operand_use(use));
    tree->right = walk(tree->right, operand_use(use));
    return tree;
  }
  report_dead(tree);
  if (use == Use::DISCARDED) return erase_tree(tree);
  operand_changed_ = true;
  NODE *value = tree->left;
  value = make_conversion(tree->type, value);
  erase_tree(tree->right);
  erase_node(tree);
  return walk(value, use);
}

// p = p + K and p = p - K, as the address of an access.
bool is_step_ahead(const NODE *address) {
  if (address->op != ASSIGN || address->left->op != NAME) return false;
  const NODE *sum = address->right;
  if (!is_sum_or_difference(sum) || sum->right->op != ICON) return false;
  if (!is_name_of(sum->left, address->left->u.sym)) return false;
  const std::int32_t step = sum->right->u.lval;
  return sum->op == ADD ? step != 0 : step > 0;
}

// p++ and p--, as the address of an access.
bool is_step_behind(const NODE *address) {
  return is_increment_or_decrement(address->op) && address->right->op == ICON;
}

// The machine steps a base register while it accesses memory, at no cost: such a step stays even
// where nobody reads the pointer any more. The 16-bit instruction forms cannot do it.
NODE *DeadWalk::walk_access(NODE *tree, Use use) {
  NODE *address = tree->left;
  use = operand_use(use);
  if (tree->right) tree->right = walk(tree->right, use);
  if (options.opt_target_mode != 1 && is_step_ahead(address)) {
    if (is_candidate(address->left->u.sym)) count_reference(address->left->u.sym);
    address->right = walk(address->right, use);
  } else if (options.opt_target_mode != 1 && is_step_behind(address)) {
    address->left = walk(address->left, use);
  } else {
    tree->left = walk(address, use);
  }
  return tree;
}

// One behind the other: of ,OP the right side's value counts, of PCOMMA none.
NODE *DeadWalk::walk_sequence(NODE *tree, Use use) {
  const Use part = use == Use::CONDITIONAL ? use : Use::DISCARDED;
  NODE *right = walk(tree->right, tree->op == PCOMMA ? part : use);
  NODE *left = walk(tree->left, part);
  return list_of_remaining(tree, left, right);
}

// LOOP and INITLOOP set a loop's counter to the number of its trips.
NODE *DeadWalk::walk_loop_counter(NODE *tree, Use use) {
  if (!is_dead_name(tree->left)) {
    tree->right = walk(tree->right, operand_use(use));
    return tree;
  }
  NODE *value = discard_value(tree->right);
  erase_node(tree->left);
  erase_node(tree);
  return value ? walk(value, use) : nullptr;
}

NODE *DeadWalk::walk_statement(LIST *cell) {
  cell_ = cell;
  operand_changed_ = false;
  NODE *statement = walk(cell->item, Use::DISCARDED);
  return statement && operand_changed_ ? simplify_tree(statement) : statement;
}

// ------------------------------------------------------------------------------------------------
// The function

void find_live_behind(BB *block) {
  if (!block->succs) return set_copy(live_out(block), live_variables.static_candidates);
  set_clear(live_out(block));
  for (const EDGE *edge = block->succs; edge; edge = edge->next)
    set_union(live_out(block), live_in(edge->bb));
}

void put_in_front(LIST *cell, BB *block) {
  cell->next = block->trees;
  block->trees = cell;
  while (split_comma(cell)) {
  }
  if (cell->item->op == ASSIGN && cell->next && cell->next->item->op == ASSIGN)
    combine_adjacent_asgs(cell);
}

// Returns whether the block has come to be a mere jump.
bool clean_block(BB *block, bool unnest) {
  find_live_behind(block);
  set_copy(live_in(block), live_out(block));
  live_variables.embedded_asg_seen = false;
  bool is_mere_jump = false;
  DeadWalk walk(live_in(block));
  LIST *pending = list_reverse_onto(block->trees, nullptr);
  block->trees = nullptr;
  while (LIST *cell = pending) {
    pending = cell->next;
    cell->item = walk.walk_statement(cell);
    if (cell->item) {
      put_in_front(cell, block);
    } else {
      give_list(cell);
      is_mere_jump |= !pending && block->trees && block->trees->item->op == BRANCH;
    }
  }
  if (unnest && live_variables.embedded_asg_seen) unnest_block(block);
  return is_mere_jump;
}

bool clean_blocks(bool unnest) {
  bool changed = false;
  for (BB *block = state.first_bb->prev;; block = block->prev) {
    changed |= clean_block(block, unnest);
    if (block == state.first_bb) return changed;
  }
}

void find_statics_at_entry() {
  set_copy(live_variables.statics_at_entry, live_variables.static_candidates);
  set_intersect(live_variables.statics_at_entry, live_in(state.first_bb));
}

constexpr std::uint32_t no_key = ~0u;

void drop_unused_symbols() {
  SYM **link = &state.scalar_syms;
  while (SYM *sym = *link) {
    if (sym->key != 0 || sym->count < 0) {
      link = &sym->next;
      continue;
    }
    debug_print("\tNo references in the function for (%d) '%s'\n", sym->count, sym->name);
    sym->count = candidate_lost;
    *link = sym->next;
  }
  for (SYM *sym = state.static_syms; sym; sym = sym->next) {
    sym->count = candidate_lost;
    sym->key = no_key;
  }
}

} // namespace

void elim_dead_assigns(bool delay, bool unnest) {
  sym_split();
  find_live_variables(LiveFor::DEAD_CODE);
  for (SYM *sym = state.scalar_syms; sym; sym = sym->next)
    sym->key = 0;
  if (live_variables.num_candidates == 0) return drop_unused_symbols();
  debug_print("\n\n\t\t\t---------- ENTERING 'elim_dead_assigns' ----------\n");
  find_statics_at_entry();
  bool graph_changed = clean_blocks(unnest);
  if (delay) graph_changed |= delay_assignments();
  drop_unused_symbols();
  if (graph_changed) simpcfg(0);
}

} // namespace velkor
