// Like terms of an integer sum.
#pragma once

#include "simplify/rules.h"

namespace velkor {

// Rule for + and - with simplified operands: the last term of a sum is merged into a like one
// further left, and a constant into one that stands under a conversion. Only the last
// longest_merged_chain links of the sum are searched.
Outcome merge_like_terms(NODE *&tree);

inline constexpr int longest_merged_chain = 32;

} // namespace velkor
