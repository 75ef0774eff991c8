// Two tests that share a target become one, and a step moves out of a loop's test.
#include "cfg/branch_conversions.h"
#include "cfg/graph.h"
#include "cfg/transfers.h"
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/state.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

#include <utility>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// a || b

// Conditions become long where they are merged over and over; each is simplified with every merge.
constexpr int most_merged_nodes = 1000;

// Nodes of the tree, counted up to a limit.
int count_nodes(const NODE *tree, int limit) {
  int count = 0;
  for (; tree && count < limit; tree = tree->left) {
    ++count;
    if (tree->right) count += count_nodes(tree->right, limit - count);
  }
  return count;
}

bool holds_place_holder(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == DDNODE) return true;
    if (tree->right && holds_place_holder(tree->right)) return true;
  }
  return false;
}

// The test that makes up the target, which only block leads to and which shares one of its own
// targets with common; none for anything else.
NODE *second_test(const NODE *test, const BB *block, const BB *target, const BB *common) {
  if (target == block || target == state.first_bb || single_edge(target->preds) != block)
    return nullptr;
  if (!target->trees || target->trees->item->op != IF) return nullptr;
  NODE *second = target->trees->item;
  if (second->left->op == ENDLOOP || holds_place_holder(second->left) ||
      holds_place_holder(test->left))
    return nullptr;
  const bool shares =
      target_block(second->right->left) == common || target_block(second->right->right) == common;
  return shares ? second : nullptr;
}

// if (c) goto a; else goto b;  ->  if (!c) goto b; else goto a;
void turn_around(NODE *test) {
  std::swap(test->right->left, test->right->right);
  test->left = simplify_node(make_node(LOGICAL_NOT, test->left, nullptr, INT));
}

// ------------------------------------------------------------------------------------------------
// (x = x + K) == C

// The test (x = x + K) == C, or !=, that ends a loop.
struct StepTest {
  NODE *relation = nullptr;
  NODE *step = nullptr;  // x = x + K
  NODE *limit = nullptr; // C
};

// x must hold whole words: C - K is compared with what x holds before the step, and a narrower x
// may have wrapped around.
bool is_stepped_word(const NODE *step) {
  if (step->op != ASSIGN || step->right->op != ADD || !is_icon(step->right->right)) return false;
  if (is_bit_field_access(step->left)) return false;
  if (!is_word_integer(step->left->type) && !is_pointer(step->left->type)) return false;
  return step->right->type == step->left->type && step->type == step->left->type &&
         trees_equal(step->left, step->right->left, false);
}

StepTest step_test(NODE *test) {
  NODE *relation = test->left;
  if (relation->op != EQ && relation->op != NE) return {};
  if (!is_stepped_word(relation->left) || !is_icon(relation->right)) return {};
  // The limit must be able to hold C - K.
  if (value_width(relation->right->type) != pointer_width) return {};
  return {relation, relation->left, relation->right};
}

// The tests then look at x itself, before the step.
void test_before_step(const StepTest &test) {
  const std::int32_t amount = test.step->right->right->u.lval;
  test.limit->u.lval = wrapping_subtract(test.limit->u.lval, amount);
  test.relation->left = copy_tree(test.step->left);
  erase_tree(test.step);
}

} // namespace

bool merge_or_conditions(NODE *test, BB *block) {
  if (test->left->op == ENDLOOP || count_nodes(test->left, most_merged_nodes) >= most_merged_nodes)
    return false;
  BB *true_target = target_block(test->right->left);
  BB *false_target = target_block(test->right->right);
  NODE *second = second_test(test, block, false_target, true_target);
  if (!second) {
    second = second_test(test, block, true_target, false_target);
    if (!second) return false;
    turn_around(test);
    std::swap(true_target, false_target);
  }
  if (target_block(second->right->left) != true_target) turn_around(second);
  NODE *either = make_node(LOGICAL_OR, test->left, copy_tree(second->left), INT);
  test->left = simplify_node(either);
  erase_tree(test->right->right);
  test->right->right = copy_tree(second->right->right);
  refresh_successors(block, test);
  return true;
}

void sink_increment(BB *block) {
  NODE *test = if_at_end(block);
  if (!test || !edge_count_is(block->succs, 2)) return;
  const StepTest here = step_test(test);
  if (!here.step) return;
  BB *low = block->succs->bb;
  BB *high = block->succs->next->bb;
  if (low->dfn > high->dfn) std::swap(low, high);
  if (!edge_count_is(high->preds, 2) || !edge_count_is(low->preds, 2)) return;
  if (!edge_contains(high->preds, block)) return;
  const BB *other = high->preds->bb == block ? high->preds->next->bb : high->preds->bb;
  if (block == low || block == high || block == other || high == other) return;
  if (low == state.first_bb || high == state.first_bb) return;
  const LIST *end = last_cell(other);
  if (!edge_count_is(other->succs, 2) || !end || end->item->op != IF) return;
  if (!trees_equal(test, end->item, true)) return;
  const StepTest there = step_test(end->item);
  if (!there.step) return;
  for (BB *way : {low, high})
    way->trees = list_cons(copy_tree(here.step), way->trees, end->line, end->line2);
  test_before_step(there);
  test_before_step(here);
}

} // namespace velkor
