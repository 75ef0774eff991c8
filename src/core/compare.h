// Do two trees mean the same?
#pragma once

#include "core/records.h"

namespace velkor {

// True when both trees compute the same value. With ignore_effects false, a tree that has effects
// of its own, or reads something volatile, is never equal to anything; with true, the trees must be
// alike. Knows commutative and swapped operators and three operands in any grouping and order.
[[nodiscard]] bool trees_equal(const NODE *a, const NODE *b, bool ignore_effects);

// Two trees of one opcode with operands of equal values: do they yield the same bits, though their
// types may differ? True of equal types, of two pointers, and of two integer types of one width of
// at least 32 bits over operands whose types do not make the difference.
[[nodiscard]] bool compatible_types(const NODE *a, const NODE *b);

// Two statement lists, item by item, effects ignored; they must end together.
[[nodiscard]] bool lists_equal(const LIST *a, const LIST *b);

// Do two conditions mean the same, or with opposite the contrary? x != 0 counts as x, and x == 0 as
// its contrary.
[[nodiscard]] bool conditions_equal(const NODE *a, const NODE *b, bool opposite,
                                    bool ignore_effects);

// Does needle occur in tree (like opcode, trees_equal with effects ignored)?
[[nodiscard]] bool tree_contains(const NODE *needle, const NODE *tree);

// Does a NAME of the same symbol as name_node occur in tree?
[[nodiscard]] bool tree_uses_sym(const NODE *tree, const NODE *name_node);

} // namespace velkor
