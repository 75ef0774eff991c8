#include "scalar/split_edge.h"

#include "cfg/graph.h"
#include "core/nodes.h"
#include "scalar/live_variables.h"

namespace velkor {
namespace {

void replace_edge(EDGE *edges, const BB *old_end, BB *new_end) {
  for (; edges; edges = edges->next)
    if (edges->bb == old_end) edges->bb = new_end;
}

void make_live_sets_on_way(BB *block, BB *to) {
  make_live_sets(block);
  set_copy(live_in(block), live_in(to));
  set_copy(live_out(block), live_in(to));
}

} // namespace

BB *split_edge(BB *from, BB *to) {
  BB *block = insert_block(from->dfn, from, list_cons(make_goto(to), nullptr, 0, 0));
  replace_edge(from->succs, to, block);
  replace_edge(to->preds, from, block);
  block->preds = edge_cons(from, nullptr);
  block->succs = edge_cons(to, nullptr);
  retarget_labelrefs(last_cell(from)->item, to, block);
  if (live_variables.num_candidates > 0 && live_sets(to)) make_live_sets_on_way(block, to);
  renumber_blocks();
  return block;
}

} // namespace velkor
