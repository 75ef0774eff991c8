// The types that the usual conversions call for.
//
// Inside the optimizer narrow operands stand bare under int operators, and pointer sums count
// bytes. What is written has the conversions of the language: operands of one type, integer
// operands of pointer sums scaled.
#pragma once

#include "core/records.h"

namespace velkor {

// The tree with balanced types; takes the tree. The value keeps the type that it had. A tree that
// has been through it already comes out unchanged.
[[nodiscard]] NODE *retype_tree(NODE *tree);

// Are two NAMEs one object: the same symbol, or two symbols in one register? Not when either is
// volatile.
[[nodiscard]] bool is_same_object(const NODE *a, const NODE *b);

} // namespace velkor
