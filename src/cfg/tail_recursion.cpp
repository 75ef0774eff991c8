#include "cfg/tail_recursion.h"

#include "cfg/graph.h"
#include "cfg/parallel_assignments.h"
#include "cfg/returns_twice.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "icode/format.h"
#include "simplify/simplify.h"

#include <optional>
#include <string>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Locals that a call might leave alone only because it has a frame of its own

bool holds_volatile_local(const SYM *chain) {
  for (const SYM *sym = chain; sym; sym = sym->next)
    if (sym->sclass == C_AUTO && is_volatile_symbol(sym)) return true;
  return false;
}

bool is_frame_object(const NODE *node) {
  return node->op == NAME && is_frame_class(node->u.sym->sclass);
}

// The array or struct in which a member access ends, or the node itself.
const NODE *accessed_object(const NODE *node) {
  while (node->op == MEMBER)
    node = node->left;
  return node;
}

// An array of the frame that stands for its address, without an address operator.
bool escapes(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if ((tree->op == NAME || tree->op == MEMBER) && is_array(tree->type) &&
        is_frame_object(accessed_object(tree)))
      return true;
    // The right side of a member access names the member, no object.
    if (tree->right && tree->op != MEMBER && tree->op != ARROW && escapes(tree->right)) return true;
  }
  return false;
}

bool frame_may_be_reached() {
  if (state.local_address_taken || holds_volatile_local(state.local_syms)) return true;
  if (function_returns_twice()) return true;
  for (const BB *block = state.first_bb; block; block = block->uon_next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      if (escapes(cell->item)) return true;
  return false;
}

// ------------------------------------------------------------------------------------------------
// The call

// The statement that holds the tail call of a block, and the call in it.
struct TailCall {
  LIST *ahead = nullptr; // the cell in front of it, or none
  LIST *cell = nullptr;
  const NODE *call = nullptr;
};

// Does the block return without a value at once? But for the exit block's own, returns have become
// jumps to it.
bool returns_at_once(const BB *block) {
  if (!block->trees) return false;
  const NODE *first = block->trees->item;
  return first->op == URETURN ||
         (first->op == BRANCH && target_block(first->left) == state.exit_bb);
}

bool leads_to_return(const BB *block) {
  if (!block->succs) return true;
  const BB *target = single_edge(block->succs);
  return target && returns_at_once(target);
}

TailCall find_last_call(BB *block) {
  TailCall found;
  LIST *last = block->trees;
  LIST *before = nullptr;
  LIST *before_that = nullptr;
  for (; last->next; last = last->next) {
    before_that = before;
    before = last;
  }
  if (last->item->op == RETURN) return {before, last, last->item->right};
  if (!before || (last->item->op != URETURN && last->item->op != BRANCH)) return found;
  return {before_that, before, before->item};
}

bool calls_current_function(const NODE *call) {
  if (!call || (call->op != CALL && call->op != UCALL) || call->u.lval != 0) return false;
  const NODE *callee = call->left;
  return callee->op == ADDRESS && callee->left->op == NAME &&
         callee->left->u.sym == state.cur_fun_sym;
}

// ------------------------------------------------------------------------------------------------
// The assignments

// home = parameter, of the prologue: the copy of a parameter under its own name.
bool copies_parameter(const NODE *tree) {
  return tree->op == ASSIGN && is_param_copy(tree);
}

NODE *assign_argument(const NODE *copy, const NODE *argument) {
  NODE *value = copy_tree(argument);
  if (value->op == ACONV) value->op = is_pointer(value->type) ? PCONV : SCONV;
  forget_const(copy->left->u.sym); // the home is now assigned more than once
  NODE *assignment = copy_node(copy);
  assignment->left = refresh_qual(copy_node(copy->left));
  assignment->right = simplify_tree(value);
  return assignment;
}

// A struct is passed in a form that is no value, so no assignment can take it over.
bool arguments_match(const NODE *prologue, const NODE *arguments) {
  if (arguments->op != COMMA)
    return prologue->op != PCOMMA && copies_parameter(prologue) && is_scalar(arguments->type);
  return prologue->op == PCOMMA && prologue->right->type == arguments->right->type &&
         arguments_match(prologue->right, arguments->right) &&
         arguments_match(prologue->left, arguments->left);
}

// Argument by argument, the assignment to the home of the parameter; they happen at once.
NODE *match_arguments(const NODE *prologue, const NODE *arguments) {
  if (arguments->op != COMMA) return assign_argument(prologue, arguments);
  NODE *left = match_arguments(prologue->left, arguments->left);
  NODE *right = match_arguments(prologue->right, arguments->right);
  NODE *pair = make_node(COMMA_OP, left, right, right->type);
  pair->depnum = right->depnum;
  return pair;
}

// ------------------------------------------------------------------------------------------------
// The loop

// Moves all statements of the entry block behind keep (from the first on when there is none) to a
// block of their own, so that the entry keeps having no predecessors.
BB *split_entry(LIST *keep) {
  BB *entry = state.first_bb;
  LIST *moved = keep ? keep->next : entry->trees;
  BB *head = insert_block(entry->dfn, entry, moved);
  head->uon = ++state.num_blocks;
  head->succs = entry->succs;
  LIST *jump = list_cons(make_goto(head), nullptr, moved->line, moved->line2);
  (keep ? keep->next : entry->trees) = jump;
  entry->succs = edge_cons(head, nullptr);
  return head;
}

// The block behind the parameter copies.
BB *find_or_make_loop_head() {
  LIST *first = state.first_bb->trees;
  if (!is_param_copy(first->item))
    return first->item->op == BRANCH ? target_block(first->item->left) : split_entry(nullptr);
  const NODE *second = first->next->item;
  return second->op == BRANCH ? target_block(second->left) : split_entry(first);
}

void note_removal(const LIST *cell, const NODE *call, LIST *&tail_end) {
  std::string text = tree2infix(cell->item);
  if (options.opt_source_comments) {
    const std::string comment = cell->item->op == RETURN ? text : text + "  return;";
    tail_end->next = list_cons(make_asm(RECORD_COMMENT, comment), nullptr, cell->line, cell->line2);
    tail_end = tail_end->next;
  }
  if (state.debug_on)
    debug_print("\n  ===> Tail recursive self-call removed at line %d: %s\n\n", cell->line2,
                tree2infix(call));
}

// Puts the new statements in the place of the call and of what follows it.
void replace_call(BB *block, const TailCall &found, NODE *assignments) {
  LIST anchor{nullptr, nullptr, 0, 0};
  LIST *end = &anchor;
  const std::int16_t line = found.cell->line;
  const std::int16_t line2 = found.cell->line2;
  const auto append = [&](NODE *item) {
    end->next = list_cons(item, nullptr, line, line2);
    end = end->next;
  };
  note_removal(found.cell, found.call, end);
  erase_list(found.cell);
  if (assignments) append(assignments);
  append(make_asm(RECORD_COMMENT, "***\t; tail recursive call occurs here"));
  append(make_node(BRANCH, nullptr, nullptr, INT));
  (found.ahead ? found.ahead->next : block->trees) = anchor.next;
  block->succs = erase_edges(block->succs);
}

void jump_to_loop_head(BB *block) {
  BB *head = find_or_make_loop_head();
  // Splitting the entry has moved its end: the call's statements may stand in the new block.
  BB *source = block == state.first_bb && head->trees && !head->succs ? head : block;
  NODE *jump = make_goto(head);
  NODE *branch = last_cell(source)->item;
  branch->left = jump->left;
  erase_node(jump);
  source->succs = edge_cons(head, nullptr);
}

// Whether the frame may be reached takes a look at the whole function, so it is asked once, and
// only where there is a call to remove.
using FrameAnswer = std::optional<bool>;

bool frame_is_private(FrameAnswer &reached) {
  if (!reached) reached = frame_may_be_reached();
  return !*reached;
}

void try_tail_call(BB *block, FrameAnswer &reached) {
  if (!leads_to_return(block)) return;
  const TailCall found = find_last_call(block);
  if (!calls_current_function(found.call)) return;
  const NODE *prologue = state.first_bb->trees->item;
  NODE *assignments = nullptr;
  if (found.call->op == CALL) {
    if (!arguments_match(prologue, found.call->right) || !frame_is_private(reached)) return;
    assignments = match_arguments(prologue, found.call->right);
  } else if (is_param_copy(prologue) || !frame_is_private(reached)) {
    return; // fewer arguments than parameters, or a frame that another activation would share
  }
  if (assignments) assignments = simplify_tree(sequence_parallel_assignments(assignments));
  replace_call(block, found, assignments);
  jump_to_loop_head(block);
}

} // namespace

void remove_tail_recursion() {
  FrameAnswer reached;
  for (BB *block = state.first_bb; block; block = block->uon_next)
    if (block->trees) try_tail_call(block, reached);
}

} // namespace velkor
