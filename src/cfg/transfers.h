// The statement that ends a block, and the edges that follow from it.
//
// The steps of the clean-up carry the cell of that statement along instead of looking for it: a
// block that has absorbed thousands of others has a long list. Statements go in ahead of it by
// moving it to a new cell behind.
#pragma once

#include "core/records.h"

namespace velkor {

// Exactly that many members? Looks at no more than it must: a label may have thousands of sources.
[[nodiscard]] bool edge_count_is(const EDGE *edges, int count);

// The IF that ends the block; none where something else does.
[[nodiscard]] NODE *if_at_end(const BB *block);

// Moves last to the end of its list.
void move_to_end(LIST *&last);

// Puts the statement ahead of the one in last, which moves to a new cell. A list of effects becomes
// one statement each. Takes the statement, which may be none.
void insert_ahead(LIST *&last, NODE *statement);

// The IF becomes a BRANCH to one of its targets, in place. Its condition is the caller's.
void turn_into_branch(NODE *test, bool to_true_target);

// Makes the targets of the transfer the block's successors, and the block a predecessor of exactly
// these.
void refresh_successors(BB *block, const NODE *transfer);

// The block is a predecessor of target no more.
void remove_predecessor(BB *target, const BB *block);

// What was a successor of from is now one of to, which has none of its own.
void move_successors(BB *from, BB *to);

// While one lives, nobody changes edges but through the routines above. They can then remember
// where the predecessors of a block stand that has thousands of them.
class EdgeKeeper {
public:
  EdgeKeeper();
  ~EdgeKeeper();
  EdgeKeeper(const EdgeKeeper &) = delete;
  EdgeKeeper &operator=(const EdgeKeeper &) = delete;
};

} // namespace velkor
