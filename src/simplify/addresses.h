// The rule sets of addresses and accesses, for reports on which rules have fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet address_rules;
extern const RuleSet access_rules;
extern const RuleSet member_rules;

} // namespace velkor
