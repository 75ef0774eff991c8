// The rule sets of + - * / %.
#pragma once

#include "simplify/rules.h"

namespace velkor {

// arithmetic.cpp
extern const RuleSet add_rules;
extern const RuleSet subtract_rules;

// products.cpp
extern const RuleSet multiply_rules;
extern const RuleSet multiply_float_rules;
extern const RuleSet multiply_constant_rules;

// quotients.cpp
extern const RuleSet divide_rules;
extern const RuleSet remainder_rules;

} // namespace velkor
