#include "cfg/simpcfg.h"

#include "cfg/cross_jump.h"
#include "cfg/graph.h"
#include "cfg/merge_blocks.h"
#include "cfg/simpcfg_mode.h"
#include "cfg/simplify_branch.h"
#include "cfg/transfers.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"

#include <utility>
#include <vector>

namespace velkor {
namespace {

// A graph is in order after every round; the limit just ends the work.
constexpr int most_rounds = 20;

// Steps at one block in one round that do not take another block away. There are only so many
// blocks to be taken away, but tests that lead in a circle, as in
//     a: if (x) goto b; ...   b: if (x) goto a; ...
// can be threaded round and round by a third block that comes to them with a known x.
constexpr int most_steps_at_block = 32;

bool has_two_of(const EDGE *edges) {
  return edges && edges->next;
}

// ------------------------------------------------------------------------------------------------
// Rotated loops

bool same_targets(const NODE *a, const NODE *b) {
  const BB *first = target_block(a->right->left);
  const BB *second = target_block(a->right->right);
  const BB *other_first = target_block(b->right->left);
  const BB *other_second = target_block(b->right->right);
  return (first == other_first && second == other_second) ||
         (first == other_second && second == other_first);
}

// The test ahead of the loop in the sense of the one at its bottom.
bool align_sense(NODE *entry_test, const NODE *loop_test) {
  NODE *targets = entry_test->right;
  if (target_block(targets->left) == target_block(loop_test->right->left)) return true;
  if (op_negated(entry_test->left->op) == ILLOP) return false;
  entry_test->left = negate_condition(entry_test->left);
  std::swap(targets->left, targets->right);
  return true;
}

// block is the head of a loop whose test stands at its bottom and once more ahead of it: whoever
// comes to the head knows the outcome of the test.
void mark_guarded_head(BB *block) {
  if (block == state.first_bb || (block->loop_flags & loop_guarded) || !block->trees ||
      !block->succs || !edge_count_is(block->preds, 2))
    return;
  BB *ahead = block->preds->bb;
  BB *bottom = block->preds->next->bb;
  if (ahead->dfn > bottom->dfn) std::swap(ahead, bottom);
  if (ahead->dfn >= block->dfn || bottom->dfn < block->dfn) return;
  if (!edge_count_is(ahead->succs, 2) || !edge_count_is(bottom->succs, 2)) return;
  NODE *entry_test = if_at_end(ahead);
  const NODE *loop_test = if_at_end(bottom);
  if (!entry_test || !loop_test || !same_targets(entry_test, loop_test)) return;
  if (!align_sense(entry_test, loop_test)) return;
  if (trees_equal(entry_test->left, loop_test->left, false)) block->loop_flags |= loop_guarded;
}

// ------------------------------------------------------------------------------------------------
// Rounds

// All that can be done at the end of one block. Returns whether anything changed.
bool clean_block(BB *block) {
  if (!block->trees) return false;
  bool changed = false;
  LIST *last = block->trees;
  for (int steps = 0; steps < most_steps_at_block;) {
    bool step = false;
    bool absorbed = false;
    if (has_two_of(block->succs)) step = simplify_branch(block, last);
    if (BB *successor = single_edge(block->succs)) {
      step |= merge_blocks(block, successor, last);
      absorbed = !successor->trees;
    }
    if (!step) break;
    changed = true;
    if (!absorbed) ++steps;
  }
  return changed;
}

bool delete_if_unreached(BB *block) {
  if (block->preds || block == state.first_bb || !block->trees) return false;
  delete_block(block);
  return true;
}

bool clean_blocks() {
  bool changed = false;
  for (BB *block = state.first_bb; block; block = block->next) {
    if (options.opt_level >= 2 && has_two_of(block->preds)) mark_guarded_head(block);
    changed |= delete_if_unreached(block) || clean_block(block);
  }
  for (BB *block = state.first_bb->next; block; block = block->next)
    changed |= delete_if_unreached(block);
  return changed;
}

// Blocks without statements leave the chain.
void compact_chain() {
  state.num_blocks = 1;
  BB *tail = state.first_bb;
  tail->dfn = 1;
  for (BB *block = tail->next, *next = nullptr; block; block = next) {
    next = block->next;
    if (!block->trees) {
      block->next = nullptr;
      block->dfn = 0;
      continue;
    }
    block->dfn = ++state.num_blocks;
    block->prev = tail;
    tail->next = block;
    tail = block;
  }
  tail->next = nullptr;
  state.first_bb->prev = tail;
}

bool clean_graph(int mode) {
  const EdgeKeeper keeper;
  if (mode != 0) {
    cross_jump();
    merge_repeated_ifs();
  }
  debug_print("\n\n\t\t\t---------- ENTERING 'simpcfg' ----------\n");
  renumber_blocks();
  bool changed = false;
  for (int round = 0; round < most_rounds; ++round) {
    const bool step = clean_blocks();
    compact_chain();
    if (!step) break;
    changed = true;
  }
  return changed;
}

} // namespace

int simpcfg_mode = 0;

void simpcfg(int mode) {
  if (!state.first_bb) return;
  simpcfg_mode = mode;
  if (clean_graph(mode)) recompute_cfg();
}

// Without recursion: thousands of blocks may hang on one another.
void delete_block(BB *block) {
  std::vector<BB *> unreached = {block};
  while (!unreached.empty()) {
    BB *dead = unreached.back();
    unreached.pop_back();
    if (dead->preds || dead == state.first_bb || !dead->trees) continue;
    dead->trees = erase_list(dead->trees);
    for (EDGE *edge = dead->succs; edge; edge = edge->next) {
      remove_predecessor(edge->bb, dead);
      if (!edge->bb->preds) unreached.push_back(edge->bb);
    }
    dead->succs = erase_edges(dead->succs);
  }
}

} // namespace velkor
