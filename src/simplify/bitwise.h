// The rule sets of the bitwise operators, for reports on which rules have fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet and_rules;
extern const RuleSet or_rules;
extern const RuleSet xor_rules;
extern const RuleSet shift_rules;
extern const RuleSet complement_rules;
extern const RuleSet negate_rules;
extern const RuleSet magnitude_rules;

} // namespace velkor
