// From the list of statements to a chain of blocks.
#pragma once

namespace velkor {

// Cuts state.statements (newest first) into blocks, chained by next and uon_next in source order
// from state.first_bb; makes state.exit_bb. There are no edges and numbers yet.
void split_into_blocks();

} // namespace velkor
