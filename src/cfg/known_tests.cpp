#include "cfg/known_tests.h"

#include "cfg/graph.h"
#include "cfg/transfers.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "simplify/simplify.h"

#include <utility>
#include <vector>

namespace velkor {
namespace {

// Both arms do the same: one of them will do.
bool merge_equal_arms(NODE *test, BB *block) {
  const BB *true_target = target_block(test->right->left);
  const BB *false_target = target_block(test->right->right);
  if (true_target == false_target || !true_target->trees ||
      !lists_equal(true_target->trees, false_target->trees))
    return false;
  test->right->right->aux.label = test->right->left->aux.label;
  refresh_successors(block, test);
  return true;
}

bool case_is_needless(const NODE *entry, const NODE *selector, const BB *fallback) {
  if (entry->op != CASE) return false;
  if (target_block(entry->right) == fallback) return true;
  return selector->op == ICON && entry->left->op == ICON && selector->u.lval != entry->left->u.lval;
}

// The entry that a link of the case list holds at its right; the leftmost link is an entry itself.
NODE *entry_of(NODE *link) {
  return link->op == COMMA ? link->right : link;
}

// Takes the list apart, and puts what is needed together again; none when nothing is left.
NODE *drop_needless_cases(NODE *cases, const NODE *selector, const BB *fallback) {
  std::vector<NODE *> kept; // last entry first
  while (cases) {
    NODE *entry = entry_of(cases);
    NODE *rest = cases == entry ? nullptr : cases->left;
    if (cases != entry) erase_node(cases);
    if (case_is_needless(entry, selector, fallback))
      erase_tree(entry);
    else
      kept.push_back(entry);
    cases = rest;
  }
  NODE *list = nullptr;
  for (; !kept.empty(); kept.pop_back())
    list = list ? make_node(COMMA, list, kept.back(), INT) : kept.back();
  return list;
}

bool has_needless_case(NODE *cases, const NODE *selector, const BB *fallback) {
  for (NODE *link = cases;; link = link->left) {
    NODE *entry = entry_of(link);
    if (case_is_needless(entry, selector, fallback)) return true;
    if (link == entry) return false;
  }
}

// switch (x) { default: a }  ->  effects of x; goto a;
void drop_switch(LIST *&last) {
  NODE *transfer = last->item;
  NODE *fallback = transfer->right;
  NODE *effects = discard_value(transfer->left);
  last->item = make_node(BRANCH, fallback->left, nullptr, INT);
  erase_node(fallback);
  erase_node(transfer);
  insert_ahead(last, effects);
}

// The block's first statement, comments left out.
const NODE *first_statement(const BB *block) {
  const LIST *cell = block->trees;
  while (cell && is_comment_asm(cell->item))
    cell = cell->next;
  return cell ? cell->item : nullptr;
}

bool leads_only_to(const BB *block, const BB *source, const BB *target) {
  return single_edge(block->preds) == source && single_edge(block->succs) == target;
}

} // namespace

bool fold_constant_if(NODE *test, BB *block) {
  if (test->left->op != ICON) return merge_equal_arms(test, block);
  const bool outcome = test->left->u.lval != 0;
  erase_node(test->left);
  turn_into_branch(test, outcome);
  refresh_successors(block, test);
  return true;
}

bool fold_constant_switch(LIST *&last, BB *block) {
  NODE *transfer = last->item;
  NODE *list = transfer->right;
  if (!list || list->op != COMMA || list->right->op != DEFAULT) return false;
  const BB *fallback = target_block(list->right->left);
  if (!has_needless_case(list->left, transfer->left, fallback)) return false;
  list->left = drop_needless_cases(list->left, transfer->left, fallback);
  if (list->left) {
    last->item = simplify_node(transfer);
  } else {
    transfer->right = list->right;
    erase_node(list);
    drop_switch(last);
  }
  refresh_successors(block, last->item);
  return true;
}

bool drop_empty_arm(NODE *test, BB *block) {
  if (!edge_count_is(block->succs, 2) || edge_contains(block->succs, block)) return false;
  BB *arm = block->succs->bb;
  BB *join = block->succs->next->bb;
  if (arm->dfn > join->dfn) std::swap(arm, join);
  if (!leads_only_to(arm, block, join) || !edge_count_is(join->preds, 2)) return false;
  const NODE *first = first_statement(arm);
  if (!first || first->op != BRANCH) return false;
  LABEL *label = target_block(test->right->left) == arm ? test->right->left->aux.label
                                                        : test->right->right->aux.label;
  test->right->left->aux.label = test->right->right->aux.label = label;
  refresh_successors(block, test);
  return true;
}

// The next block tests again whatever this one's test has found, so that even effects happen in the
// same order as often as before.
bool skip_same_test(NODE *test, BB *block) {
  const BB *true_target = target_block(test->right->left);
  const BB *false_target = target_block(test->right->right);
  const BB *next = block->next;
  if (!next || next == block || (next != true_target && next != false_target)) return false;
  if (!next->trees || next->trees->item->op != IF) return false;
  if (!trees_equal(test, next->trees->item, true)) return false;
  erase_tree(test->left);
  turn_into_branch(test, next == true_target);
  refresh_successors(block, test);
  return true;
}

} // namespace velkor
