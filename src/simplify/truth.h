// Trees that are only looked at as true or false.
#pragma once

#include "core/records.h"
#include "simplify/rules.h"

namespace velkor {

extern const RuleSet test_rules;

// A tree that is zero exactly when the given one is; takes the tree.
[[nodiscard]] NODE *simplify_test(NODE *tree);

// The same for an operand in its place, as the outcome of a rule.
[[nodiscard]] Outcome rewrite_as_test(NODE *&operand);

// A tree of value 0 or 1, non-zero when the given one is; takes the tree.
[[nodiscard]] NODE *truth_value(NODE *tree);

// What operand_cost yields for a tree that is not fit for evaluation without branches.
inline constexpr int unfit_operand_cost = 666;

// The cost of evaluating a tree without branches. strict: a tree that may trap, or touch what the
// program would not have touched (a dereference, a division), is unfit as well.
[[nodiscard]] int operand_cost(const NODE *tree, bool strict);

// May the tree be evaluated where the program did not: no effects, no traps?
[[nodiscard]] inline bool is_safe_to_speculate(const NODE *tree) {
  return operand_cost(tree, true) < unfit_operand_cost;
}

} // namespace velkor
