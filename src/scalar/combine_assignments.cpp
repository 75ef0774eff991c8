#include "scalar/combine_assignments.h"

#include "core/conversions.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "scalar/value_copies.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// A value grows with each statement that it goes through. The bound keeps the work on a long run of
// such statements in proportion to their number, and the tree within every walker's stack.
constexpr int largest_moved_value = 64; // nodes

bool is_larger_than(const NODE *tree, int limit, int &count) {
  for (; tree; tree = tree->left)
    if (++count > limit || (tree->right && is_larger_than(tree->right, limit, count))) return true;
  return false;
}

bool is_small_value(const NODE *tree) {
  int count = 0;
  return !is_larger_than(tree, largest_moved_value, count);
}

// How often a tree reads x; too_many when that cannot be told, or x is wanted as an object.
constexpr int too_many = 1000;

bool may_be_read_through_pointer(const SYM *sym) {
  return sym->fcp_flag || sym->sclass != C_AUTO;
}

int count_reads(const NODE *tree, const SYM *sym) {
  int count = 0;
  for (; tree && count < too_many; tree = tree->left) {
    switch (tree->op) {
    case NAME: return count + (tree->u.sym == sym);
    case DEREF:
    case ARROW: // the member of a union may lie over the object as well
      if (may_be_read_through_pointer(sym)) return too_many;
      break;
    case ADDRESS:
    case ARGREF:
      if (tree->left->op == NAME && tree->left->u.sym == sym) return too_many;
      break;
    default: break;
    }
    if (tree->right && tree->op != MEMBER && tree->op != ARROW)
      count += count_reads(tree->right, sym);
  }
  return count;
}

// Puts value in the place of the one NAME of sym; every node on the way back is simplified. Returns
// what stands in the tree's place; value is none once it has been used.
NODE *substitute(NODE *tree, const SYM *sym, NODE *&value, TypeWord target_type) {
  if (tree->op == NAME && tree->u.sym == sym) {
    tree = replace_name_by_value(tree, value, target_type);
    value = nullptr;
    return tree;
  }
  if (tree->left) tree->left = substitute(tree->left, sym, value, target_type);
  if (value && tree->right && tree->op != MEMBER && tree->op != ARROW)
    tree->right = substitute(tree->right, sym, value, target_type);
  return value ? tree : simplify_node(tree);
}

bool can_merge(const NODE *first, const NODE *second) {
  if (first->op != ASSIGN || second->op != ASSIGN) return false;
  const NODE *target = first->left;
  if (target->op != NAME || second->left->op != NAME) return false;
  const SYM *sym = target->u.sym;
  if (second->left->u.sym != sym || is_volatile_symbol(sym)) return false;
  if (!is_scalar(first->type) || is_param_copy(first)) return false;
  if (!is_small_value(first->right)) return false;
  if (has_side_effects(first->right) || has_side_effects(second->right)) return false;
  return count_reads(second->right, sym) == 1;
}

// Unlinks the statement behind the cell and puts it into the cell; returns the cell's old one.
NODE *take_next_statement(LIST *cell) {
  LIST *next = cell->next;
  NODE *old = cell->item;
  cell->item = next->item;
  if (cell->line2 == 0) {
    cell->line = next->line;
    cell->line2 = next->line2;
  }
  cell->next = next->next;
  give_list(next);
  return old;
}

void merge_next_statement(LIST *cell) {
  if (state.debug_file) {
    debug_print("\n\tCombining the assignments %s\n", tree2infix(cell->item));
    debug_print("\t......................and %s\n", tree2infix(cell->next->item));
  }
  NODE *first = take_next_statement(cell);
  NODE *second = cell->item;
  NODE *value = first->right;
  first->right = nullptr;
  second->right = substitute(second->right, second->left->u.sym, value, first->left->type);
  erase_tree(first);
  cell->item = simplify_node(second);
  if (state.debug_file) debug_print("\t...................to get %s\n", tree2infix(cell->item));
}

} // namespace

bool combine_with_next(LIST *cell) {
  if (!cell->next || !can_merge(cell->item, cell->next->item)) return false;
  merge_next_statement(cell);
  return true;
}

void combine_adjacent_asgs(LIST *cell) {
  while (combine_with_next(cell)) {
  }
}

} // namespace velkor
