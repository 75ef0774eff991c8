// What must hold of the simplifier on any tree.
#pragma once

#include "variables.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velkor::exhaustive {

enum class Check : std::uint8_t {
  EVALUATION,  // the tree, or what became of it, cannot be evaluated
  VALUE,       // simplify_tree: value, variables afterwards, no new traps
  AGAIN_VALUE, // the same when the result is simplified again
  STABLE,      // simplifying again changes nothing
  TEST,        // simplify_test: zero exactly when the tree is
  TRUTH,       // truth_value: 0 or 1, zero exactly when the tree is
  DEMAND,      // demand_bits: the bits of the mask
  POSSIBLE,    // possible_bits: no other bit is ever set
  CERTAIN,     // certain_bits: these are always set
  BOOLEAN,     // is_boolean_tree: 0 or 1
  LOWER,       // lower_bound, upper_bound: in the tree's type
  UPPER,
  RETYPE,       // retype_tree: value and variables afterwards
  RETYPE_AGAIN, // retype_tree a second time changes nothing
  count
};
inline constexpr auto check_count = static_cast<std::size_t>(Check::count);
[[nodiscard]] const char *check_name(Check check);

struct Finding {
  Check check = Check::VALUE;
  int level = 1;
  std::string text; // tree -> result, and the values of the first lane that differs
};

struct Totals {
  std::uint64_t trees = 0;
  std::uint64_t skipped = 0; // without a meaning in C in all lanes
  std::uint64_t evaluations = 0;
  std::uint64_t excepted = 0; // not stable, for a stated reason
  std::array<std::uint64_t, check_count> failed{};
};

// Checks one tree, which is left as it is. Appends a finding for each check that fails.
void check_tree(const World &world, const NODE *tree, Totals &totals,
                std::vector<Finding> &findings);

// The smallest tree found that fails the same check at the same level: subtrees give way to their
// operands and to small constants as long as it still fails.
[[nodiscard]] Finding reduce_finding(const World &world, const NODE *tree, const Finding &finding);

// Do two trees look the same, node by node?
[[nodiscard]] bool same_trees(const NODE *a, const NODE *b);

} // namespace velkor::exhaustive
