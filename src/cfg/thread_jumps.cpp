// Jump threading:
//
//     goto a;   a: goto b;                                    ->   goto b;
//     if (x > 3) goto a;   a: if (x > 2) goto b;              ->   if (x > 3) goto b;
//     if (x > 3) goto a; else goto c;   c: if (x > 2) goto a;
//                                                             ->   goto c;
//
// The last block's outcome is the same whether its test is reached or jumped over.
#include "cfg/thread_jumps.h"

#include "cfg/graph.h"
#include "core/implications.h"
#include "core/nodes.h"
#include "core/questions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace velkor {
namespace {

constexpr std::size_t most_jumps = 16; // followed from one reference; a longer chain stays

bool is_jump_through(const BB *block) {
  return block->trees && block->trees->item->op == BRANCH && !block->loop_ctl &&
         !(block->loop_flags & loop_guarded);
}

// The last label on the way from this one through blocks that only jump. A way that comes back to
// where it was ends there.
LABEL *follow_jumps(LABEL *label, const BB *block) {
  std::array<const BB *, most_jumps> seen{};
  LABEL *end = label;
  for (std::size_t steps = 0;; ++steps) {
    const BB *at = end->bb;
    if (at == block || !is_jump_through(at)) return end;
    const std::span passed(seen.data(), steps);
    if (std::find(passed.begin(), passed.end(), at) != passed.end()) return end;
    if (steps == most_jumps) return label;
    seen[steps] = at;
    end = at->trees->item->left->aux.label;
  }
}

// The IF that the block begins with, where it is worth asking about: another block than the one
// that asks, and a test that does nothing but test.
NODE *first_test(const BB *target, const BB *block) {
  if (!target || target == block || !target->trees) return nullptr;
  NODE *test = target->trees->item;
  return test->op == IF && !has_side_effects(test->left) ? test : nullptr;
}

// goto a;   a: if (x) goto b; ...   ->   goto b, when x is known. Blocks that only jump are
// followed elsewhere.
bool skip_decided_test(NODE *reference, const NODE *known, bool outcome, const BB *block) {
  NODE *test = first_test(target_block(reference), block);
  if (!test || !relation_implies(known, outcome, test->left, outcome)) return false;
  const NODE *way = outcome ? test->right->left : test->right->right;
  const BB *target = target_block(way);
  if (!target || target == target_block(reference)) return false;
  if (target->trees && target->trees->item->op == BRANCH) return false;
  reference->aux.label = way->aux.label;
  return true;
}

// Does the false target's own test lead to the true target whenever the condition holds?
bool test_is_needless(const NODE *test, const BB *block) {
  const NODE *next = first_test(target_block(test->right->right), block);
  return next && target_block(next->right->left) == target_block(test->right->left) &&
         relation_implies(test->left, true, next->left, true);
}

} // namespace

bool thread_labels(NODE *tree, const BB *block) {
  bool changed = false;
  for (; tree; tree = tree->left) {
    if (tree->right && thread_labels(tree->right, block)) changed = true;
    if (tree->op != LABELREF || !tree->aux.label) continue;
    LABEL *end = follow_jumps(tree->aux.label, block);
    if (end == tree->aux.label) continue;
    tree->aux.label = end;
    changed = true;
  }
  return changed;
}

bool thread_implied_tests(NODE *test, const BB *block) {
  // A test with effects cannot be left out, nor can the one behind it count on its outcome.
  if (test->op != IF || test->left->op == ENDLOOP || has_side_effects(test->left)) return false;
  NODE *condition = test->left;
  bool changed = skip_decided_test(test->right->left, condition, true, block);
  changed |= skip_decided_test(test->right->right, condition, false, block);
  if (condition->op != ICON && test_is_needless(test, block)) {
    erase_tree(condition);
    test->left = make_icon(0, INT);
    changed = true;
  }
  return changed;
}

} // namespace velkor
