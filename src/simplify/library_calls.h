// The rule set of calls, for reports on which rules have fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet call_rules;

} // namespace velkor
