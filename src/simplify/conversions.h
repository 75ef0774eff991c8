// The rule sets of conversions, for reports on which rules have fired.
#pragma once

#include "simplify/rules.h"

namespace velkor {

extern const RuleSet arithmetic_conversion_rules;
extern const RuleSet pointer_conversion_rules;

} // namespace velkor
