#include "cfg/transfers.h"

#include "cfg/graph.h"
#include "core/nodes.h"

#include <unordered_map>
#include <vector>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Predecessors of one block by the thousands

// Steps in a list that are worth an index: taking each of n members out of a plain list takes a
// time that grows with the square of n.
constexpr int long_search = 64;

using Places = std::unordered_map<const BB *, EDGE *>; // for looking up only
std::unordered_map<const BB *, Places> places_by_block;
bool edges_are_kept = false;

Places *known_places(const BB *target) {
  if (places_by_block.empty()) return nullptr;
  const auto found = places_by_block.find(target);
  return found == places_by_block.end() ? nullptr : &found->second;
}

Places &make_places(const BB *target) {
  Places &places = places_by_block[target];
  for (EDGE *edge = target->preds; edge; edge = edge->next)
    places[edge->bb] = edge;
  return places;
}

EDGE *find_place(const Places &places, const BB *block) {
  const auto found = places.find(block);
  return found == places.end() ? nullptr : found->second;
}

// The cell of the block in the list; none when it is not there.
EDGE *find_predecessor(const BB *target, const BB *block) {
  if (const Places *places = known_places(target)) return find_place(*places, block);
  int steps = 0;
  for (EDGE *edge = target->preds; edge; edge = edge->next) {
    if (edge->bb == block) return edge;
    if (edges_are_kept && ++steps == long_search) return find_place(make_places(target), block);
  }
  return nullptr;
}

void add_predecessor(BB *target, BB *block) {
  target->preds = edge_cons(block, target->preds);
  if (Places *places = known_places(target)) (*places)[block] = target->preds;
}

void replace_predecessor(const BB *target, const BB *from, BB *to) {
  EDGE *cell = find_predecessor(target, from);
  if (!cell) return;
  cell->bb = to;
  if (Places *places = known_places(target)) {
    places->erase(from);
    (*places)[to] = cell;
  }
}

// ------------------------------------------------------------------------------------------------
// Targets

// In the order that adding each target at the head gives, the references looked at from the right:
// the true target of an IF comes first. The mark tells at once whether a target is there.
void collect_targets(BB *block, const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->right) collect_targets(block, tree->right);
    if (tree->op != LABELREF) continue;
    BB *target = target_block(tree);
    if (!target || target->edge_source == block) continue;
    target->edge_source = block;
    block->succs = edge_cons(target, block->succs);
  }
}

} // namespace

bool edge_count_is(const EDGE *edges, int count) {
  while (edges && count > 0) {
    edges = edges->next;
    --count;
  }
  return !edges && count == 0;
}

NODE *if_at_end(const BB *block) {
  const LIST *last = last_cell(block);
  return last && last->item->op == IF ? last->item : nullptr;
}

void move_to_end(LIST *&last) {
  while (last && last->next)
    last = last->next;
}

void insert_ahead(LIST *&last, NODE *statement) {
  std::vector<NODE *> statements; // last one first
  while (statement && statement->op == COMMA_OP) {
    NODE *list = statement;
    statements.push_back(list->right);
    statement = list->left;
    erase_node(list);
  }
  if (statement) statements.push_back(statement);
  for (; !statements.empty(); statements.pop_back()) {
    last->next = list_cons(last->item, last->next, last->line, last->line2);
    last->item = statements.back();
    last = last->next;
  }
}

void turn_into_branch(NODE *test, bool to_true_target) {
  NODE *targets = test->right;
  NODE *taken = to_true_target ? targets->left : targets->right;
  erase_tree(to_true_target ? targets->right : targets->left);
  erase_node(targets);
  test->op = BRANCH;
  test->type = INT;
  test->left = taken;
  test->right = nullptr;
}

// Only what differs is touched: most targets stay what they were, and finding a block among
// thousands of predecessors takes time.
void refresh_successors(BB *block, const NODE *transfer) {
  EDGE *former = block->succs;
  block->succs = nullptr;
  if (transfer->op == IF || transfer->op == SWITCH) transfer = transfer->right;
  collect_targets(block, transfer);
  for (EDGE *edge = former; edge; edge = edge->next) {
    if (edge->bb->edge_source == block)
      edge->bb->edge_source = nullptr; // a successor as before
    else
      remove_predecessor(edge->bb, block);
  }
  for (EDGE *edge = block->succs; edge; edge = edge->next) {
    if (edge->bb->edge_source != block) continue;
    edge->bb->edge_source = nullptr;
    add_predecessor(edge->bb, block);
  }
  erase_edges(former);
}

void remove_predecessor(BB *target, const BB *block) {
  EDGE *cell = find_predecessor(target, block);
  if (!cell) return;
  Places *places = known_places(target);
  if (!places) {
    target->preds = edge_remove(cell->bb, target->preds);
    return;
  }
  // The first member takes the place of the one that goes.
  EDGE *first = target->preds;
  places->erase(block);
  if (cell != first) (*places)[first->bb] = cell;
  cell->bb = first->bb;
  target->preds = first->next;
  erase_edge(first);
}

void move_successors(BB *from, BB *to) {
  to->succs = from->succs;
  from->succs = nullptr;
  for (const EDGE *edge = to->succs; edge; edge = edge->next)
    replace_predecessor(edge->bb, from, to);
}

EdgeKeeper::EdgeKeeper() {
  edges_are_kept = true;
}

EdgeKeeper::~EdgeKeeper() {
  places_by_block.clear();
  edges_are_kept = false;
}

} // namespace velkor
