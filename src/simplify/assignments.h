// The rule sets of assignments, for reports on which rules have fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet assign_rules;
extern const RuleSet compound_assignment_rules;

} // namespace velkor
