// Trees, statement lists and blocks in the debug file.
//
// All but op_name do nothing unless state.debug_on is set.
#pragma once

#include "core/records.h"

#include <cstdint>

namespace velkor {

// The opcode's name, padded with blanks to eight characters; static text that stays valid.
[[nodiscard]] const char *op_name(std::uint8_t op);

// The tree node by node, in prefix order, one line each.
void dump_tree(const NODE *tree);

// Each statement as infix text and as a tree.
void dump_trees(const LIST *list);

// Blocks along next from first to last (to the end of the chain when last is not met): labels,
// edges, loop facts and statements.
void dump_blocks(const BB *first, const BB *last);

// The statements of the blocks along next from first to the dfn of last, as infix text.
void print_block_trees(const BB *first, const BB *last);

// Reports freed nodes and nodes that hang in the tree twice.
void check_duplicates(const NODE *tree);

} // namespace velkor
