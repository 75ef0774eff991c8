// One step at the end of a block that goes more than one way. What the condition does apart from
// being tested moves ahead of it; jumps are threaded; then the tests for special shapes are asked
// in a fixed order, and the first that applies ends the step.
#include "cfg/simplify_branch.h"

#include "cfg/branch_conversions.h"
#include "cfg/graph.h"
#include "cfg/known_tests.h"
#include "cfg/simpcfg_mode.h"
#include "cfg/thread_jumps.h"
#include "cfg/transfers.h"
#include "core/nodes.h"
#include "core/options.h"
#include "loops/empty_loops.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// The innermost assignment of a = b = K, all of one type; none for anything else.
const NODE *innermost_assignment(const NODE *tree) {
  const TypeWord type = tree->type;
  for (;; tree = tree->right) {
    if (tree->op != ASSIGN || tree->type != type || is_bit_field_access(tree->left)) return nullptr;
    if (tree->right->op != ASSIGN) return tree;
  }
}

// What an assignment of a constant, or a chain of them, yields: an ICON; none for anything else.
NODE *assigned_value(const NODE *tree) {
  const NODE *assignment = innermost_assignment(tree);
  if (!assignment) return nullptr;
  const NODE *value = assignment->right;
  if ((value->op == PCONV || value->op == ISP2CHAR) && is_icon(value->left)) value = value->left;
  if (!is_icon(value)) return nullptr;
  // A pointer holds the whole word; any other object what is left of it by its type.
  if (is_pointer(assignment->type)) return copy_node(value);
  NODE *yielded = convert_tree(assignment->type, copy_node(value));
  if (is_icon(yielded)) return yielded;
  erase_tree(yielded);
  return nullptr;
}

// if ((a , b = 3)) ...  ->  a; b = 3; if (3) ...
void hoist_from_condition(LIST *&last) {
  NODE *transfer = last->item;
  while (transfer->left->op == COMMA_OP) {
    NODE *list = transfer->left;
    transfer->left = list->right;
    insert_ahead(last, list->left);
    erase_node(list);
  }
  NODE *value = assigned_value(transfer->left);
  if (!value) return;
  NODE *assignment = transfer->left;
  transfer->left = value;
  insert_ahead(last, assignment);
}

bool thread(NODE *transfer, BB *block) {
  bool changed = thread_labels(transfer->right, block);
  if (options.opt_level > 0 && thread_implied_tests(transfer, block)) {
    changed = true;
    // The labels taken over from other tests may belong to blocks that only jump.
    static_cast<void>(thread_labels(transfer->right, block));
  }
  refresh_successors(block, transfer);
  return changed;
}

bool loops_to_itself(const BB *block) {
  return edge_count_is(block->succs, 2) && edge_contains(block->succs, block);
}

bool simplify_if_branch(LIST *&last, BB *block) {
  NODE *test = last->item;
  if (fold_constant_if(test, block) || drop_empty_arm(test, block)) return true;
  if (loops_to_itself(block) && remove_empty_loop(block)) return true;
  if (simpcfg_mode == 1 && skip_same_test(test, block)) return true;
  if (if_convert(test, block)) return true;
  return simpcfg_mode == 1 && merge_or_conditions(test, block);
}

} // namespace

bool simplify_branch(BB *block, LIST *&last) {
  move_to_end(last);
  if (last->item->op != IF && last->item->op != SWITCH) return false;
  // A switch of a single case becomes an IF here.
  last->item = simplify_node(last->item);
  if (last->item->op != IF && last->item->op != SWITCH) return false;
  hoist_from_condition(last);
  NODE *transfer = last->item;
  const bool threaded = thread(transfer, block);
  const bool changed =
      transfer->op == IF ? simplify_if_branch(last, block) : fold_constant_switch(last, block);
  move_to_end(last);
  if (changed) return true;
  if (last->item->op == IF) sink_increment(block);
  return threaded;
}

} // namespace velkor
