// Rotation of loops: which block stands behind which.
//
//     A, B..C, D..E, F   ->   A, D..E, B..C, F
//
// E jumps back to B and nothing falls out of it into F; C is the last block ahead of E that goes to
// F. Behind the move E falls into B and C into F:
//
//     1: goto 2   2: if (t) 3 else 4   3: body; goto 2   4: return     A=1, B=C=2, D=E=3, F=4
//     1: goto 3   2: body; goto 3      3: if (t) 2 else 4   4: return
//
// Needs a graph whose edges are correct; takes the order of the chain as it stands. Leaves the
// chain in its new order, the ring of prev, dense numbers, and labels that bear their block's
// number. No statement is touched: the writer leaves out a jump to the next block.
#include "loops/rotate_loops.h"

#include "cfg/graph.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/sets.h"
#include "core/state.h"
#include "diag/dump.h"

#include <bit>
#include <vector>

namespace velkor {
namespace {

constexpr int fewest_blocks = 3; // that can be put into another order

void set_number(BB *block, int dfn) {
  block->dfn = dfn;
  for (LABEL *label = block->labels; label; label = label->next)
    label->index = dfn;
}

// The block of the list with the highest dfn up to limit, or none.
BB *highest(const EDGE *edges, int limit) {
  BB *found = nullptr;
  for (; edges; edges = edges->next)
    if (edges->bb->dfn <= limit && (!found || edges->bb->dfn > found->dfn)) found = edges->bb;
  return found;
}

// ------------------------------------------------------------------------------------------------
// Rotation

// The block at the bottom, E, moves up through the chain by one place with each step, rotation or
// not, and the blocks behind it keep their places. So the blocks that can be left towards what
// stands behind E are known from one look at the predecessors of each block that E has passed, and
// no search looks at edges again.
struct Rotation {
  std::vector<BB *> blocks; // by dfn
  Set leaving = nullptr;    // over dfn: no successors, or one behind E
};

// A, B, C, D, E and F as in the head of this file; F is none where E is the last block.
struct Candidate {
  BB *a, *b, *c, *d, *e, *f;
};

Rotation begin_rotation() {
  Rotation rotation;
  rotation.leaving = new_set(set_words(state.num_blocks + 1));
  rotation.blocks.push_back(nullptr);
  for (BB *block = state.first_bb; block; block = block->next) {
    rotation.blocks.push_back(block);
    if (!block->succs) set_add(rotation.leaving, block->dfn);
  }
  return rotation;
}

// E has moved up: what stands behind it now is beyond it for good.
void note_block_behind(Rotation &rotation, const BB *e) {
  if (!e->next) return;
  for (const EDGE *edge = e->next->preds; edge; edge = edge->next)
    set_add(rotation.leaving, edge->bb->dfn);
}

// The highest member below limit; 0 for none.
int highest_member_below(ConstSet set, int limit) {
  int word = limit >> 5;
  std::uint32_t bits = set[word] & ((1u << (limit & 31)) - 1);
  while (bits == 0 && word > 0)
    bits = set[--word];
  return bits == 0 ? 0 : word * 32 + 31 - std::countl_zero(bits);
}

BB *nearest_leaving_block(const Rotation &rotation, const BB *e) {
  const int dfn = highest_member_below(rotation.leaving, e->dfn);
  return dfn == 0 ? state.first_bb : rotation.blocks[static_cast<std::size_t>(dfn)];
}

// Fills the candidate whose bottom is e; false when there is none.
bool find_candidate(const Rotation &rotation, BB *e, Candidate &candidate) {
  const BB *target = highest(e->succs, state.num_blocks);
  if (!target || target->dfn >= e->dfn || target == state.first_bb) return false;
  BB *f = e->next;
  BB *c = f ? highest(f->preds, e->dfn - 1) : nullptr;
  if (!c) c = nearest_leaving_block(rotation, e);
  if (c == state.first_bb) return false;
  BB *b = highest(e->succs, c->dfn);
  if (!b || b == state.first_bb) return false;
  candidate = {b->prev, b, c, c->next, e, f};
  return true;
}

void link(BB *block, BB *next) {
  block->next = next;
  next->prev = block;
}

// Numbers the blocks from first up to, not including, end by the places where they stand now. They
// are the same blocks that had these numbers before. Over all rotations a block is numbered once
// for each loop around it that rotates.
void renumber(Rotation &rotation, BB *first, const BB *end) {
  std::vector<int> still_leaving;
  int dfn = first->prev->dfn;
  for (BB *block = first; block != end; block = block->next) {
    ++dfn;
    if (set_has(rotation.leaving, block->dfn)) still_leaving.push_back(dfn);
    set_number(block, dfn);
    rotation.blocks[static_cast<std::size_t>(dfn)] = block;
  }
  for (; dfn >= first->dfn; --dfn)
    set_remove(rotation.leaving, dfn);
  for (const int member : still_leaving)
    set_add(rotation.leaving, member);
}

void rotate(Rotation &rotation, const Candidate &blocks) {
  link(blocks.a, blocks.d);
  link(blocks.e, blocks.b);
  blocks.c->next = blocks.f;
  (blocks.f ? blocks.f : state.first_bb)->prev = blocks.c;
  renumber(rotation, blocks.d, blocks.f);
}

void show_candidate(const Candidate &blocks) {
  if (options.debug_level == 0) return;
  debug_print("\n\tCandidate: A=%d, B=%d, C=%d, D=%d, E=%d, F=%d\n", blocks.a->dfn, blocks.b->dfn,
              blocks.c->dfn, blocks.d->dfn, blocks.e->dfn, blocks.f ? blocks.f->dfn : 0);
  print_block_trees(blocks.a, blocks.f);
}

void show_rotated(const Candidate &blocks) {
  if (options.debug_level == 0) return;
  debug_print("\n\tAfter loop rotation:\n\n");
  print_block_trees(blocks.a, blocks.f);
}

// Ends: e stands one place higher in the chain each time.
void rotate_from_the_bottom() {
  Rotation rotation = begin_rotation();
  for (BB *e = state.first_bb->prev; e != state.first_bb;) {
    note_block_behind(rotation, e);
    Candidate blocks;
    if (!find_candidate(rotation, e, blocks)) {
      e = e->prev;
      continue;
    }
    show_candidate(blocks);
    rotate(rotation, blocks);
    show_rotated(blocks);
    e = blocks.c->prev; // C itself falls into F now
  }
}

// ------------------------------------------------------------------------------------------------
// The other form: a depth-first order against the edges, for experiments

bool is_visited(const BB *block) {
  return block->dfn < 0;
}
void set_visited(BB *block) {
  block->dfn = -block->dfn;
}

// The blocks in the order in which they are taken: those without successors first, each kind from
// the last one to the first.
std::vector<BB *> blocks_to_walk() {
  std::vector<BB *> blocks;
  for (const bool has_successors : {false, true})
    for (BB *block = state.first_bb->prev;; block = block->prev) {
      if ((block->succs != nullptr) == has_successors) blocks.push_back(block);
      if (block == state.first_bb) break;
    }
  return blocks;
}

// The next predecessor that has not been visited, or none.
BB *next_unvisited_predecessor(BB *block) {
  while (block->cursor && is_visited(block->cursor->bb))
    block->cursor = block->cursor->next;
  return block->cursor ? block->cursor->bb : nullptr;
}

// Walks from block along predecessors that have not been visited, next being the way back. A block
// all of whose predecessors are visited goes to the front of order; returns the new front.
BB *walk_predecessors(BB *block, BB *order) {
  set_visited(block);
  block->next = nullptr;
  while (block) {
    if (BB *predecessor = next_unvisited_predecessor(block)) {
      set_visited(predecessor);
      predecessor->next = block;
      block = predecessor;
      continue;
    }
    BB *back = block->next;
    block->next = order;
    order = block;
    block = back;
  }
  return order;
}

// Turns the order, last block first and the entry at its end, into the chain.
void adopt_order(BB *last) {
  state.num_blocks = 0;
  for (const BB *block = last; block; block = block->next)
    ++state.num_blocks;
  int dfn = state.num_blocks;
  BB *behind = nullptr;
  for (BB *block = last; block; --dfn) {
    BB *ahead = block->next;
    set_number(block, dfn);
    block->next = behind;
    block->prev = ahead ? ahead : last;
    behind = block;
    block = ahead;
  }
}

void reorder_depth_first() {
  const std::vector<BB *> blocks = blocks_to_walk();
  for (BB *block : blocks)
    block->cursor = block->preds = edge_sort(block->preds);
  BB *order = state.first_bb;
  set_visited(order);
  order->next = nullptr;
  for (BB *block : blocks)
    if (!is_visited(block)) order = walk_predecessors(block, order);
  adopt_order(order);
}

} // namespace

void rotate_loops() {
  if (state.num_blocks < fewest_blocks) return;
  if (options.debug_level != 0)
    debug_print("\n\n\t\t\t---------- ENTERING 'rotate_loops' ----------\n");
  if (options.debug_flag[1]) return;
  if (options.debug_flag[2]) {
    reorder_depth_first();
    return;
  }
  renumber_blocks();
  rotate_from_the_bottom();
}

} // namespace velkor
