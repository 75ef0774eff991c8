// Rewrite rules and the loop that tries them.
//
// A rule set is an ordered list of rules for one opcode. A rule is a pattern, written out for
// people, and a routine that looks whether it applies and rewrites. Rules are tried in their order;
// the first that applies ends the set, unless it asks for another round or lets the next one go on.
#pragma once

#include "core/records.h"

#include <array>
#include <cstdint>
#include <span>

namespace velkor {

enum class Outcome : std::uint8_t {
  NEXT,      // does not apply: the next rule is tried
  REWRITTEN, // has rewritten something, and the next rule is tried
  DONE,      // the tree is the result
  AGAIN,     // the tree has a new shape: from the first rule on
  STOP       // the tree stays as it is, and no later rule is tried
};

// Takes the tree by reference and leaves what stands in its place.
using RuleRoutine = Outcome (*)(NODE *&tree);

struct Rule {
  const char *pattern; // pattern  ->  result
  RuleRoutine apply;
};

inline constexpr std::size_t most_rules_in_a_set = 48;

struct RuleSet {
  const char *name;
  std::span<const Rule> rules;
  mutable std::array<std::uint32_t, most_rules_in_a_set> fired{}; // how often, for reports
};

// Rounds after which a rule set ends: every AGAIN makes the tree smaller or moves it towards the
// canonical order, so that a set ends by itself long before; the bound is a net.
inline constexpr int most_rounds = 64;

[[nodiscard]] inline NODE *apply_rules(const RuleSet &set, NODE *tree) {
  for (int round = 0; round < most_rounds; ++round) {
    Outcome outcome = Outcome::NEXT;
    for (std::size_t i = 0; i < set.rules.size() && outcome <= Outcome::REWRITTEN; ++i) {
      outcome = set.rules[i].apply(tree);
      if (outcome != Outcome::NEXT && outcome != Outcome::STOP) set.fired[i] += 1;
    }
    if (outcome != Outcome::AGAIN) return tree;
  }
  return tree;
}

// All rule sets, for reports on which rules have fired.
[[nodiscard]] std::span<const RuleSet *const> rule_sets();

} // namespace velkor
