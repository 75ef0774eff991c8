// The rule sets of &&, || and ?, for reports on which rules have fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet logical_and_rules;
extern const RuleSet logical_or_rules;
extern const RuleSet conditional_rules;

// && or || over tests turned into & or | where that is sound and cheap; takes the node, yields a
// value of 0 or 1, or the node as it stands.
[[nodiscard]] NODE *logical_to_bitwise(NODE *node);

} // namespace velkor
