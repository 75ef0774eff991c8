// What other rooms use of the rules for relations.
#pragma once

#include "core/records.h"
#include "simplify/rules.h"

namespace velkor {

extern const RuleSet relation_rules;

// The relation decided by what is known of its operands' bits: a constant of the relation's type
// behind the effects of the operands, or the relation itself (<= 0 may have become < 0). Takes the
// tree.
[[nodiscard]] NODE *relation_by_bits(NODE *relation);

// Prepares an integer that is to be tested as 0 or not 0: y & 2^k and y & (1 << w) become
// (y >> ...) & 1; any other tree stays. Takes the tree.
[[nodiscard]] NODE *isolate_bit(NODE *tree);

// The type word that makes replace_by_constant give each constant the type of what it replaces.
inline constexpr TypeWord type_of_replaced = VOID;

// Tree with each subtree equal to pattern replaced by a constant of the type, behind what the
// subtree does apart from yielding its value; what is rebuilt is simplified. Objects that are
// stored to, or whose address is taken, are no values and stay. Takes the tree; pattern is the
// caller's and must not be a part of it.
[[nodiscard]] NODE *replace_by_constant(std::int32_t value, TypeWord type, const NODE *pattern,
                                        NODE *tree);

} // namespace velkor
