#include "simplify/relations.h"

#include "simplify/relation_rules.h"
#include "simplify/rule_sets.h"

namespace velkor {
namespace {

// x < y over unsigned operands or pointers  ->  x ULT y, and its kin. All rules below may then take
// < as the comparison of signed words.
Outcome normalize(NODE *&tree) {
  const Occupant before = occupant(tree);
  normalize_relation(tree);
  return outcome_of_rewriting(tree, before);
}

// No rule turns an order relation into == or != (or back) without another round, so that a rule
// that is meant for the relation with which a round began may ask the node.
constexpr Rule rules[] = {
    {"x < y (unsigned)  ->  x ULT y", normalize},
    {"(x rel y) == 0  ->  x negated-rel y", test_against_zero},
    {"(x * K2) rel 0, K2 odd  ->  x rel 0", drop_odd_factor},
    {"(x / K2) >= K  ->  x >= K * K2", multiply_out_quotient},
    {"(x >> K2) >= K  ->  x >= K << K2", shift_back_constant},
    {"(-x) rel K  ->  -K rel x", negate_both_sides},
    {"(~x) rel K  ->  ~K rel x", complement_both_sides},
    {"x < 1  ->  x <= 0", one_to_zero},
    {"x <= 0, x not negative  ->  x == 0", order_against_zero},
    {"x == y  ->  (x - y) == 0", subtract_sides},
    {"(pointer) K1 rel (pointer) K2  ->  K1 rel K2", pointer_constants},
    {"x < 0  ->  (sign of x) < 0", demand_sign},
    {"x <= K, K odd  ->  x < K + 1", odd_to_even_constant},
    {"x < K  ->  (bits of x that matter) < K", demand_high_bits},
    {"x rel y, decided by bits  ->  0 or 1", decide_by_bits},
    {"(x && y) == 0  ->  !x || !y", negate_logical},
    {"(c ? x : y) == 0  ->  c ? !x : !y", negate_alternatives},
    {"&x == 0  ->  0", address_is_not_null},
    {"(x - y) == 0  ->  x == y", separate_difference},
    {"(x - K2) == -K2  ->  x == 0", difference_from_own_negative},
    {"(x + K2) rel K  ->  x rel K - K2", move_addend},
    {"x != 0, x 0 or 1  ->  x", boolean_as_itself},
    {"x == 0, x 0 or 1  ->  x ^ 1", boolean_inverted},
    {"(x & P) == P  ->  (x & P) != 0", single_bit_test},
    {"x rel x  ->  0 or 1", equal_operands},
    {"y == (y == 0)  ->  0", value_against_its_negation},
    {"(x < y) == (x >= y)  ->  0", contradicting_conditions},
    {"x rel x + y  ->  0 rel y", cancel_common_addend},
    {"x++ < y  ->  (x += 1) <= y", increment_first},
    {"x-- > y  ->  (x -= 1) >= y", decrement_first},
    {"x++ == K  ->  (x += 1) == K + 1", step_constant},
    {"(wide) x rel K  ->  x rel K", compare_in_narrow_type},
    {"x < y + 1  ->  x <= y", drop_added_one},
    {"x <= y - 1  ->  x < y", drop_subtracted_one},
    {"(wide) x rel (wide) y  ->  x rel y", compare_both_in_narrow_type},
};

} // namespace

const RuleSet relation_rules{"relation", rules};

NODE *simplify_relation(NODE *node) {
  return apply_rules(relation_rules, node);
}

} // namespace velkor
