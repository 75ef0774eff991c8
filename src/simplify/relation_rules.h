// The rules for relations, file by file; relations.cpp lists them in their order.
//
// A routine's comment is its pattern. rel is any of the ten relations, K a constant.
#pragma once

#include "core/opcodes.h"
#include "core/questions.h"
#include "simplify/patterns.h"
#include "simplify/rules.h"

namespace velkor {

[[nodiscard]] inline bool is_equality(const NODE *node) {
  return node->op == EQ || node->op == NE;
}
[[nodiscard]] inline bool is_relation(const NODE *node) {
  return op_negated(node->op) != ILLOP;
}
[[nodiscard]] inline bool is_unsigned_relation(const NODE *node) {
  return node->op == ULE || node->op == ULT || node->op == UGE || node->op == UGT;
}
// < and its opposite; <= and its opposite.
[[nodiscard]] inline bool is_less_or_opposite(const NODE *node) {
  return node->op == LT || node->op == GE;
}
[[nodiscard]] inline bool is_less_equal_or_opposite(const NODE *node) {
  return node->op == LE || node->op == GT;
}
// tree == 0
[[nodiscard]] inline bool is_zero_comparison(const NODE *node) {
  return node->op == EQ && is_icon_of(node->right, 0);
}

// Rules that copy or walk whole operands leave larger ones alone: nested relations would otherwise
// cost time with the square of their size, and stack with their depth. People write far smaller
// ones.
inline constexpr int largest_examined_tree = 256; // nodes
[[nodiscard]] bool is_small(const NODE *tree);

// The relation replaced by a constant of its type, whatever it does left in front; takes the tree.
[[nodiscard]] NODE *decide_relation(NODE *relation, bool holds);

// A pointer operand of the node has become an integer: the sum or relation takes the type of what
// is left.
void forget_pointer_operand(NODE *node);

// Can no value of the sum (or of x - y, x * y, -x) leave its type, a full signed word? Shown by the
// operands' bits, not by the promise that programs do not overflow: regrouping, and conversions
// that sink to the leaves, leave signed operators that do wrap in valid programs.
[[nodiscard]] bool is_exact(const NODE *node);

// As is_exact for x + K, where the program's promise is taken when x is no arithmetic itself: then
// the sum is one that the program computes, and not a part of one.
[[nodiscard]] bool is_exact_or_promised(const NODE *sum);

// relation_conditions.cpp: operands that are conditions or addresses.
Outcome test_against_zero(NODE *&tree);
Outcome pointer_constants(NODE *&tree);
Outcome negate_logical(NODE *&tree);
Outcome negate_alternatives(NODE *&tree);
Outcome address_is_not_null(NODE *&tree);
Outcome equal_operands(NODE *&tree);
Outcome value_against_its_negation(NODE *&tree);
Outcome contradicting_conditions(NODE *&tree);

// relation_constants.cpp: arithmetic moves from the left operand into the constant.
Outcome drop_odd_factor(NODE *&tree);
Outcome multiply_out_quotient(NODE *&tree);
Outcome shift_back_constant(NODE *&tree);
Outcome negate_both_sides(NODE *&tree);
Outcome complement_both_sides(NODE *&tree);
Outcome one_to_zero(NODE *&tree);
Outcome order_against_zero(NODE *&tree);
Outcome odd_to_even_constant(NODE *&tree);
Outcome difference_from_own_negative(NODE *&tree);
Outcome move_addend(NODE *&tree);
Outcome drop_added_one(NODE *&tree);
Outcome drop_subtracted_one(NODE *&tree);

// relation_bits.cpp: what the bits of the operands tell.
Outcome demand_sign(NODE *&tree);
Outcome demand_high_bits(NODE *&tree);
Outcome decide_by_bits(NODE *&tree);
Outcome boolean_as_itself(NODE *&tree);
Outcome boolean_inverted(NODE *&tree);
Outcome single_bit_test(NODE *&tree);

// relation_operands.cpp: terms on both sides, increments, conversions.
Outcome subtract_sides(NODE *&tree);
Outcome separate_difference(NODE *&tree);
Outcome cancel_common_addend(NODE *&tree);
Outcome increment_first(NODE *&tree);
Outcome decrement_first(NODE *&tree);
Outcome step_constant(NODE *&tree);
Outcome compare_in_narrow_type(NODE *&tree);
Outcome compare_both_in_narrow_type(NODE *&tree);

} // namespace velkor
