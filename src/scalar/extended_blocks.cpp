#include "scalar/extended_blocks.h"

#include "cfg/graph.h"
#include "core/questions.h"
#include "core/state.h"

namespace velkor {
namespace {

const NODE *first_real_statement(const BB *block) {
  const LIST *cell = block->trees;
  while (cell && is_comment_asm(cell->item))
    cell = cell->next;
  return cell ? cell->item : nullptr;
}

bool only_leaves(const BB *block) {
  const NODE *statement = first_real_statement(block);
  if (!statement) return false;
  switch (statement->op) {
  case BRANCH:
  case URETURN: return true;
  case RETURN: return is_constant_tree(statement->right);
  default: return false;
  }
}

} // namespace

BB *next_walked_block(const BB *block) {
  BB *next = block->next;
  while (next && only_leaves(next))
    next = next->next;
  return next;
}

BB *previous_walked_block(const BB *block) {
  BB *previous = block->prev;
  while (previous != state.first_bb && only_leaves(previous))
    previous = previous->prev;
  return previous;
}

bool continues_extended_block(const BB *block, const BB *next) {
  return next && single_edge(next->preds) == block;
}

} // namespace velkor
