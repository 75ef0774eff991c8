#include "simplify/rule_sets.h"

#include "simplify/addresses.h"
#include "simplify/arithmetic.h"
#include "simplify/assignments.h"
#include "simplify/bit_fields.h"
#include "simplify/bitwise.h"
#include "simplify/control.h"
#include "simplify/conversions.h"
#include "simplify/library_calls.h"
#include "simplify/logical.h"
#include "simplify/reassociate.h"
#include "simplify/relations.h"
#include "simplify/rules.h"
#include "simplify/truth.h"

#include <array>

namespace velkor {
namespace {

const std::array all_rule_sets = {
    &reassociate_rules,
    &add_rules,
    &subtract_rules,
    &multiply_rules,
    &multiply_float_rules,
    &multiply_constant_rules,
    &divide_rules,
    &remainder_rules,
    &and_rules,
    &or_rules,
    &xor_rules,
    &shift_rules,
    &complement_rules,
    &negate_rules,
    &magnitude_rules,
    &relation_rules,
    &test_rules,
    &logical_and_rules,
    &logical_or_rules,
    &conditional_rules,
    &assertion_rules,
    &cbranch_rules,
    &if_rules,
    &switch_rules,
    &comma_rules,
    &assign_rules,
    &compound_assignment_rules,
    &call_rules,
    &arithmetic_conversion_rules,
    &pointer_conversion_rules,
    &address_rules,
    &access_rules,
    &member_rules,
    &field_store_rules,
    &discarded_field_store_rules,
};

} // namespace

std::span<const RuleSet *const> rule_sets() {
  return all_rule_sets;
}

} // namespace velkor
