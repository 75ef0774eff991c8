// What the parts of lowering share.
#pragma once

#include "core/records.h"
#include "simplify/rules.h"

#include <span>

namespace velkor {

// State of the lowering of one function.
struct Lowering {
  // The LOOP and ENDLOOP nodes that keep their control, newest first; a cell's line is the dfn of
  // the node's block.
  LIST *loop_marks = nullptr;
  // An access of the current statement has become narrower, or a sum was shifted.
  bool narrow_changed = false;
};
extern Lowering lowering;

// Where the tree under way stands: cell is its statement's, or none where nothing may move behind
// the statement.
struct Position {
  BB *block;
  LIST *cell;
};

// Looks whether it applies to the node, whose operands are lowered, and rewrites. It leaves in node
// what stands in its place. The outcomes are those of the simplifier's rules.
struct LoweringRule {
  const char *pattern; // pattern  ->  result
  Outcome (*apply)(NODE *&node, const Position &at);
};
using LoweringRules = std::span<const LoweringRule>;

extern const LoweringRules lower_call_rules;
extern const LoweringRules lower_return_rules;
extern const LoweringRules lower_init_loop_rules;
extern const LoweringRules lower_loop_rules;
extern const LoweringRules lower_end_loop_rules;
extern const LoweringRules lower_if_rules;
extern const LoweringRules lower_switch_rules;
extern const LoweringRules lower_assert_rules;
extern const LoweringRules lower_fact_rules;

extern const LoweringRules lower_conversion_rules;
extern const LoweringRules lower_identity_rules;
extern const LoweringRules lower_name_rules;
extern const LoweringRules lower_address_rules;
extern const LoweringRules lower_access_rules;

extern const LoweringRules lower_assign_rules;
extern const LoweringRules lower_step_rules;
extern const LoweringRules lower_add_to_rules;
extern const LoweringRules lower_logical_assignment_rules;
extern const LoweringRules lower_multiply_by_rules;

extern const LoweringRules lower_add_rules;
extern const LoweringRules lower_subtract_rules;
extern const LoweringRules lower_negate_rules;
extern const LoweringRules lower_multiply_rules;
extern const LoweringRules lower_divide_rules;
extern const LoweringRules lower_reciprocal_rules;

extern const LoweringRules lower_and_rules;
extern const LoweringRules lower_xor_rules;
extern const LoweringRules lower_shift_left_rules;

// The child takes its parent's place in the parent's own record, so that whoever walks the
// statement meanwhile finds it whole. The other operand is gone already.
void absorb_child(NODE *node, NODE *child);

// May the statement form of x++ or x-- stand behind the statement under way?
[[nodiscard]] bool can_split_step(const NODE *step, const Position &at);

// Puts the statement form of x++ or x-- behind the cell; takes the node, yields a copy of x.
[[nodiscard]] NODE *move_step_behind(NODE *step, LIST *cell);

// The positive number that subtracts what the negative constant adds, or 0 when the constant is not
// negative or its opposite is not positive. value is the constant as a signed word.
[[nodiscard]] std::int32_t positive_opposite(const NODE *constant, std::int32_t value);

// The shift that multiplies a value of the type by the constant, where a shift is worth it; else
// -1.
[[nodiscard]] int shift_for_factor(std::int32_t factor, TypeWord type);

} // namespace velkor
