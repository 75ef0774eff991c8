// Two arms that do nearly the same, and arms of one statement, as straight code:
//
//     if (x & 4) x &= ~4; else x |= 4;          ->   x ^= 4;
//     if (e & 4) x |= 16;                       ->   x |= (e & 4) << 2;
//     if (c) s.bit |= y;                        ->   s.bit |= y & c;          c being 0 or 1
//     if (c) s.bit = y; else s.bit = 0;         ->   s.bit = c & y;
//     if (c) x = a; else x = b;                 ->   x = c ? a : b;           in the last clean-up
//
// What was done under a condition is done always now. So a conversion asks that this has no effects
// and cannot trap, and that what is stored to may be stored to always: a variable, or a member of
// one, but nothing behind a pointer that the condition may have tested.
#include "cfg/branch_conversions.h"
#include "cfg/graph.h"
#include "cfg/simpcfg_mode.h"
#include "cfg/transfers.h"
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/state.h"
#include "simplify/bits.h"
#include "simplify/patterns.h"
#include "simplify/truth.h"

namespace velkor {
namespace {

// What a conversion works on: if (condition) on_true else on_false. The statements are the first of
// the arms.
struct Arms {
  NODE *test;
  LIST *on_true;
  LIST *on_false;

  [[nodiscard]] NODE *condition() const { return test->left; }
};

// The condition becomes a constant; what it was has been used or erased.
bool decide(NODE *test, bool outcome) {
  test->left = make_icon(outcome, INT);
  return true;
}

void erase_condition(NODE *test) {
  test->left = erase_tree(test->left);
}

NODE *balanced(Opcode op, NODE *left, NODE *right) {
  return make_node(op, left, right, balance_type(left, right));
}

bool is_relation(const NODE *tree) {
  return op_negated(tree->op) != ILLOP;
}

// A condition whose value, 0 or 1, can take part in a computation, and be looked at as often as
// wanted.
bool is_bit_condition(NODE *condition) {
  return !is_relation(condition) && is_boolean_tree(condition) && !has_side_effects(condition);
}

bool is_bitwise_assignment(Opcode op) {
  return op == ASG_AND || op == ASG_OR || op == ASG_XOR;
}

// ------------------------------------------------------------------------------------------------
// Bit selection

bool is_integer_without_effects(NODE *tree) {
  return is_integer(tree->type) && !has_side_effects(tree);
}

// Assignments to one object, of integers without effects.
bool assign_to_same_integer(const NODE *s, const NODE *r) {
  for (const NODE *tree : {s, r}) {
    if (tree->op != ASSIGN && asgop_base(tree->op) == ILLOP) return false;
    if (!is_integer_without_effects(tree->left) || !is_integer_without_effects(tree->right))
      return false;
  }
  return trees_equal(s->left, r->left, false);
}

// if (c) x = a; else x = 0;  ->  x = c & a;   and the like, x being a single bit
bool select_bit(const Arms &arms) {
  NODE *s = arms.on_true->item;
  NODE *r = arms.on_false->item;
  NODE *condition = arms.condition();
  if (s->op != ASSIGN || r->op != ASSIGN || !is_boolean_tree(s->left)) return false;
  if (!is_bit_condition(condition)) return false;
  if (!is_icon_of(s->right, 0) && !is_icon_of(r->right, 0)) return false;
  if (!is_safe_to_speculate(s->right) || !is_safe_to_speculate(r->right)) return false;
  const TypeWord type = promote_type(condition->type);
  NODE *opposite = copy_tree(condition);
  opposite = is_icon(r->right) ? make_node(BIT_XOR, opposite, make_icon(1, INT), type)
                               : make_node(COMPLEMENT, opposite, nullptr, type);
  s->right = balanced(BIT_OR, balanced(BIT_AND, condition, s->right),
                      balanced(BIT_AND, opposite, copy_tree(r->right)));
  arms.on_true->item = simplify_tree(s);
  return decide(arms.test, true);
}

// if (x & 4) x &= ~4; else x |= 4;  ->  x ^= 4;
bool toggle_bit(const Arms &arms) {
  const NODE *s = arms.on_true->item;
  NODE *r = arms.on_false->item;
  const NODE *condition = arms.condition();
  if (condition->op != BIT_AND || s->op != ASG_AND || r->op != ASG_OR) return false;
  const NODE *bit = condition->right;
  if (!is_icon(bit) || log2_of(bit->u.lval) < 0 || !is_icon(s->right) || !is_icon(r->right))
    return false;
  if (r->right->u.lval != bit->u.lval) return false;
  if (wrap_value(~s->right->u.lval, s->left->type) != bit->u.lval) return false;
  if (!trees_equal(condition->left, s->left, false)) return false;
  erase_condition(arms.test);
  r->op = ASG_XOR;
  arms.on_false->item = simplify_node(r);
  return decide(arms.test, false);
}

bool select_bits(const Arms &arms) {
  if (!assign_to_same_integer(arms.on_true->item, arms.on_false->item)) return false;
  return select_bit(arms) || toggle_bit(arms);
}

// ------------------------------------------------------------------------------------------------
// Two arms as one assignment

bool can_choose_value(Opcode op) {
  return op == RETURN || is_plain_or_compound_assignment(op);
}

// Will the condition, evaluated as a part of the value, still come ahead of all that the statement
// does? A compound assignment may look at its object before it looks at the value.
bool condition_keeps_its_place(const NODE *statement, NODE *condition) {
  if (statement->op == RETURN) return true;
  if (statement->op == ASSIGN && statement->left->op == NAME) return true;
  return !has_side_effects(condition);
}

// if (c) x = a; else x = b;  ->  x = c ? a : b;
bool choose_value(const Arms &arms, BB *block) {
  NODE *s = arms.on_true->item;
  const NODE *r = arms.on_false->item;
  if (s->op != r->op || !can_choose_value(s->op)) return false;
  if (s->op != RETURN && !trees_equal(s->left, r->left, false)) return false;
  if (!condition_keeps_its_place(s, arms.condition())) return false;
  // Only scalar values can be chosen between: a struct has no place to be put together in.
  if (simpcfg_mode != 1 || !s->right || !r->right || s->right->type != r->right->type ||
      !is_scalar(s->right->type))
    return false;
  NODE *a = s->right;
  const TypeWord type = a->type;
  const std::int32_t depnum = a->depnum;
  NODE *values = make_node(ALTERNATIVES, a, copy_tree(r->right), type);
  NODE *choice = make_node(CONDITIONAL, arms.condition(), values, type);
  values->depnum = choice->depnum = depnum;
  s->right = simplify_node(choice);
  arms.on_true->item = simplify_node(s);
  turn_into_branch(arms.test, true);
  refresh_successors(block, arms.test);
  return true;
}

bool convert_both_arms(NODE *test, BB *block, const BB *true_target, const BB *false_target) {
  const Arms arms{test, true_target->trees, false_target->trees};
  if (!arms.on_true || !arms.on_false || !lists_equal(arms.on_true->next, arms.on_false->next))
    return false;
  return select_bits(arms) || choose_value(arms, block);
}

// ------------------------------------------------------------------------------------------------
// Short arms

bool is_stored_always(NODE *object) {
  const NODE *base = object;
  while (base->op == MEMBER)
    base = base->left;
  return base->op == NAME && is_integer_without_effects(object);
}

// x | K or x ^ K of a statement x = x op K or x op= K; none for any other.
NODE *bit_of_statement(NODE *statement) {
  NODE *value = statement->right;
  switch (statement->op) {
  case ASG_OR:
  case ASG_XOR: return is_icon(value) ? statement : nullptr;
  case ASSIGN:
    if (value->op != BIT_OR && value->op != BIT_XOR) return nullptr;
    return is_icon(value->right) && trees_equal(statement->left, value->left, false) ? value
                                                                                     : nullptr;
  default: return nullptr;
  }
}

// if (e & 4) x |= 16;  ->  x |= (e & 4) << 2;
bool shift_tested_bit(LIST *arm, NODE *test) {
  NODE *statement = arm->item;
  NODE *operation = bit_of_statement(statement);
  NODE *condition = test->left;
  if (!operation || condition->op != BIT_AND || !is_icon(condition->right)) return false;
  if (!is_stored_always(statement->left) || !is_integer_without_effects(condition)) return false;
  const int to = log2_of(operation->right->u.lval);
  const int from = log2_of(condition->right->u.lval);
  constexpr int most_left_shift = 2;
  if (to < 0 || from < 0 || to - from > most_left_shift) return false;
  // In a narrow signed type the topmost bit is followed by copies of it.
  TypeWord type = promote_type(condition->type);
  const std::uint32_t tested = 1u << from;
  if ((possible_bits(condition, type) & ~tested) != 0) return false;
  if (to < from && is_signed_integer(type)) {
    type = type == LONG ? UNSIGNED_LONG : UNSIGNED;
    condition = make_conversion(type, condition);
  }
  NODE *distance = operation->right;
  distance->u.lval = to < from ? from - to : to - from;
  set_type(distance, INT);
  operation->right =
      simplify_node(make_node(to < from ? SHIFT_RIGHT : SHIFT_LEFT, condition, distance, type));
  arm->item = simplify_tree(statement);
  return decide(test, true);
}

// if (c) x |= y;  ->  x |= y & c;   and the like, x being a single bit and c 0 or 1
bool mask_operation(LIST *arm, NODE *test) {
  NODE *statement = arm->item;
  NODE *condition = test->left;
  if (statement->op != ASSIGN && !is_bitwise_assignment(statement->op)) return false;
  NODE *value = statement->right;
  if (!is_stored_always(statement->left) || !is_boolean_tree(statement->left)) return false;
  if (!is_bit_condition(condition)) return false;
  if (!is_integer_without_effects(value) || !is_safe_to_speculate(value)) return false;
  switch (statement->op) {
  case ASSIGN:
    if (!is_icon_of(value, 1)) return false;
    erase_node(value);
    statement->op = ASG_OR;
    statement->right = condition;
    break;
  case ASG_AND:
    condition = make_node(BIT_XOR, condition, make_icon(1, INT), promote_type(condition->type));
    statement->right = balanced(BIT_OR, value, condition);
    break;
  default: statement->right = balanced(BIT_AND, value, condition); break;
  }
  arm->item = simplify_tree(statement);
  return decide(test, true);
}

bool convert_short_arm(NODE *test, const BB *block, const BB *arm, const BB *join) {
  if (single_edge(arm->preds) != block || single_edge(arm->succs) != join) return false;
  LIST *first = arm->trees;
  if (!first || !first->next || first->next->next || first->next->item->op != BRANCH) return false;
  return shift_tested_bit(first, test) || mask_operation(first, test);
}

} // namespace

bool if_convert(NODE *test, BB *block) {
  const BB *true_target = target_block(test->right->left);
  const BB *false_target = target_block(test->right->right);
  if (test->left->op == ENDLOOP || true_target == state.first_bb || false_target == state.first_bb)
    return false;
  if (true_target == block || false_target == block || true_target == false_target) return false;
  if (single_edge(true_target->preds) && single_edge(false_target->preds))
    return convert_both_arms(test, block, true_target, false_target);
  return convert_short_arm(test, block, true_target, false_target);
}

} // namespace velkor
