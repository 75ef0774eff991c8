// The rule sets of the opcodes that consume tests, and of ,OP, for reports on which rules have
// fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet assertion_rules;
extern const RuleSet cbranch_rules;
extern const RuleSet if_rules;
extern const RuleSet switch_rules;
extern const RuleSet comma_rules;

} // namespace velkor
