#include "cfg/transfers.h"

#include "cfg/graph.h"
#include "core/nodes.h"

#include <vector>

namespace velkor {
namespace {

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
      edge->bb->preds = edge_remove(block, edge->bb->preds);
  }
  for (EDGE *edge = block->succs; edge; edge = edge->next) {
    if (edge->bb->edge_source != block) continue;
    edge->bb->edge_source = nullptr;
    edge->bb->preds = edge_cons(block, edge->bb->preds);
  }
  erase_edges(former);
}

void move_successors(BB *from, BB *to) {
  to->succs = from->succs;
  from->succs = nullptr;
  for (EDGE *edge = to->succs; edge; edge = edge->next)
    for (EDGE *source = edge->bb->preds; source; source = source->next)
      if (source->bb == from) {
        source->bb = to;
        break;
      }
}

} // namespace velkor
