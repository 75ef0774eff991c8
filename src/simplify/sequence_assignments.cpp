// Assignments and returns whose right side has control flow in it.
#include "core/compare.h"
#include "core/failure.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "simplify/patterns.h"
#include "simplify/sequencing.h"
#include "simplify/sequencing_steps.h"
#include "simplify/simplify.h"

namespace velkor::sequencing {
namespace {

// What a right side that is 0 or 1 does to the target.
enum class BooleanEffect : std::uint8_t {
  ADJUSTS, // 0 leaves the target as it is, 1 changes it
  CLEARS,  // 1 leaves the target as it is, 0 clears it
  STORES,  // the value itself is wanted
  NONE     // no opcode that can have such a right side
};

BooleanEffect boolean_effect(Opcode op) {
  switch (op) {
  case ASG_ADD:
  case ASG_SUBTRACT:
  case ASG_OR:
  case ASG_XOR:
  case ASG_SHIFT_LEFT:
  case ASG_SHIFT_RIGHT: return BooleanEffect::ADJUSTS;
  case ASG_MULTIPLY: return BooleanEffect::CLEARS;
  case ASSIGN:
  case RETURN:
  case ASG_AND:
  case ASG_DIVIDE:
  case ASG_REMAINDER: return BooleanEffect::STORES;
  default: return BooleanEffect::NONE;
  }
}

bool has_simple_target(const NODE *node) {
  return node->left->op == NAME && !is_volatile_node(node->left);
}

bool is_whole_statement(const NODE *node, const LIST *cell) {
  return cell->item == node;
}

// The right side by way of a temporary.
NODE *sequence_right_by_value(NODE *node, LIST *cell) {
  node->right = sequence_value(node->right, node, cell);
  return sequence_assignment(node, cell);
}

NODE *take_operands(NODE *logical, NODE *&second) {
  NODE *first = logical->left;
  second = logical->right;
  erase_node(logical);
  return first;
}

// x op= a && b  ->  if (a) goto L1; else goto L2; L1: x op= !!b; L2:
NODE *adjust_by_and(NODE *node, LIST *cell) {
  NODE *second = nullptr;
  NODE *first = take_operands(node->right, second);
  NODE *target = copy_node(node->left);
  LABEL *yes = new_label();
  LABEL *end = new_label();
  emit_if(first, yes, end, cell);
  emit_label(yes, cell);
  NODE *negated = simplify_node(make_node(LOGICAL_NOT, second, nullptr, INT));
  node->right = simplify_node(make_node(LOGICAL_NOT, negated, nullptr, INT));
  emit(simplify_node(node), cell);
  emit_label(end, cell);
  return target;
}

// x op= a || b  ->  if (a) goto L2; else goto L1; L1: if (b) goto L2; else goto L3;
//                   L2: x op= 1; L3:
NODE *adjust_by_or(NODE *node, LIST *cell) {
  const TypeWord type = node->right->type;
  NODE *second = nullptr;
  NODE *first = take_operands(node->right, second);
  NODE *target = copy_node(node->left);
  LABEL *next = new_label();
  LABEL *yes = new_label();
  LABEL *end = new_label();
  emit_if(first, yes, next, cell);
  emit_label(next, cell);
  emit_if(second, yes, end, cell);
  emit_label(yes, cell);
  node->right = make_icon(1, type);
  emit(simplify_node(node), cell);
  emit_label(end, cell);
  return target;
}

// x *= a && b  ->  if (a) goto L1; else goto L2; L1: if (b) goto L3; else goto L2; L2: x = 0; L3:
// x *= a || b  ->  if (a) goto L3; else goto L1; L1: if (b) goto L3; else goto L2; L2: x = 0; L3:
NODE *clear_unless(NODE *node, LIST *cell) {
  const bool is_and = node->right->op == LOGICAL_AND;
  const TypeWord type = node->right->type;
  NODE *second = nullptr;
  NODE *first = take_operands(node->right, second);
  NODE *target = node->left;
  erase_node(node);
  LABEL *next = new_label();
  LABEL *clear = new_label();
  LABEL *end = new_label();
  if (is_and)
    emit_if(first, next, clear, cell);
  else
    emit_if(first, end, next, cell);
  emit_label(next, cell);
  emit_if(second, end, clear, cell);
  emit_label(clear, cell);
  emit(assign_constant(target->u.sym, 0, type), cell);
  emit_label(end, cell);
  return target;
}

// x = a && b  ->  S = 0; if (a) goto L1; else goto L3; L1: if (b) goto L2; else goto L3;
//                 L2: S = 1; L3: x = S
// x = a || b  ->  S = 1; if (a) goto L3; else goto L1; L1: if (b) goto L3; else goto L2;
//                 L2: S = 0; L3: x = S
NODE *store_by_temporary(NODE *node, LIST *cell) {
  const bool is_and = node->right->op == LOGICAL_AND;
  const TypeWord type = node->right->type;
  NODE *second = nullptr;
  NODE *first = take_operands(node->right, second);
  SYM *symbol = new_temporary(is_scalar(node->type) ? node->type : type, 0, nullptr);
  LABEL *next = new_label();
  LABEL *last = new_label();
  LABEL *end = new_label();
  emit(assign_constant(symbol, is_and ? 0 : 1, type), cell);
  if (is_and)
    emit_if(first, next, end, cell);
  else
    emit_if(first, end, next, cell);
  emit_label(next, cell);
  if (is_and)
    emit_if(second, last, end, cell);
  else
    emit_if(second, end, last, cell);
  emit_label(last, cell);
  emit(assign_constant(symbol, is_and ? 1 : 0, type), cell);
  emit_label(end, cell);
  node->right = make_name(symbol);
  node->left = sequence_value(node->left, node, cell); // the target's address has its turn now
  return node;
}

[[noreturn]] void unexpected_opcode(const char *routine, const NODE *node) {
  print("!!! Unexpected case in %s, %d !!!\n", routine, node->op);
  abnormal_end();
}

NODE *SEQ_ANDAND_FOR_RHS(NODE *node, LIST *cell) {
  const BooleanEffect effect = boolean_effect(node->op);
  if (effect == BooleanEffect::NONE) unexpected_opcode("SEQ_ANDAND_FOR_RHS", node);
  if (effect == BooleanEffect::STORES) return store_by_temporary(node, cell);
  if (!has_simple_target(node)) return sequence_right_by_value(node, cell);
  return effect == BooleanEffect::ADJUSTS ? adjust_by_and(node, cell) : clear_unless(node, cell);
}

NODE *SEQ_OROR_FOR_RHS(NODE *node, LIST *cell) {
  const BooleanEffect effect = boolean_effect(node->op);
  if (effect == BooleanEffect::NONE) unexpected_opcode("SEQ_OROR_FOR_RHS", node);
  if (effect == BooleanEffect::STORES) return store_by_temporary(node, cell);
  if (!has_simple_target(node)) return sequence_right_by_value(node, cell);
  return effect == BooleanEffect::ADJUSTS ? adjust_by_or(node, cell) : clear_unless(node, cell);
}

// An arm as the whole ? yields it: an arm may have lost a conversion that the ? made up for.
NODE *arm_value(NODE *arm, TypeWord type) {
  return is_integer(arm->type) && is_integer(type) ? keep_type(type, arm) : arm;
}

// return c ? u : v  ->  if (c) goto L1; else goto L2; L1: return u; L2: return v
NODE *return_each_arm(NODE *node, LIST *cell) {
  NODE *choice = node->right;
  NODE *arms = choice->right;
  LABEL *yes = new_label();
  LABEL *no = new_label();
  emit_if(choice->left, yes, no, cell);
  emit_label(yes, cell);
  NODE *first = copy_node(node);
  first->left = copy_tree(node->left);
  first->right = arm_value(arms->left, choice->type);
  emit(first, cell);
  emit_label(no, cell);
  node->right = arm_value(arms->right, choice->type);
  erase_node(arms);
  erase_node(choice);
  return sequence_assignment(node, cell);
}

// x = c ? x : v  ->  c ? 0 : (x = v)
// x = c ? u : x  ->  c ? (x = u) : 0
bool keep_target_in_one_arm(NODE *node) {
  NODE *choice = node->right;
  NODE *arms = choice->right;
  // The ? may cut what it takes from an arm: then it is not the target's value that is stored.
  if (is_integer(choice->type) && value_width(choice->type) < value_width(node->left->type))
    return false;
  const bool first = trees_equal(node->left, arms->left, false);
  if (!first && !trees_equal(node->left, arms->right, false)) return false;
  NODE *&kept = first ? arms->left : arms->right;
  NODE *&stored = first ? arms->right : arms->left;
  erase_tree(kept);
  kept = make_icon(0, INT);
  node->right = arm_value(stored, choice->type);
  stored = node;
  return true;
}

// May x be evaluated in both arms, and stand for the value afterwards?
bool can_assign_in_arms(const NODE *node, LIST *cell) {
  NODE *target = node->left;
  if (has_side_effects(target)) return false;
  if (target->op == NAME) return true;
  return target->left && target->left->op == NAME && is_whole_statement(node, cell);
}

NODE *assignment_of_arm(const NODE *node, NODE *arm, TypeWord type) {
  NODE *assignment = copy_node(node);
  assignment->left = copy_tree(node->left);
  assignment->right = arm_value(arm, type);
  return simplify_node(assignment);
}

// x op= c ? u : v  ->  if (c) goto L1; else goto L2; L1: x op= u; goto L3; L2: x op= v; L3:
NODE *assign_in_arms(NODE *node, LIST *cell) {
  NODE *choice = node->right;
  NODE *arms = choice->right;
  LABEL *yes = new_label();
  LABEL *no = new_label();
  LABEL *end = new_label();
  emit_if(choice->left, yes, no, cell);
  emit_label(yes, cell);
  emit(assignment_of_arm(node, arms->left, choice->type), cell);
  emit_branch(end, cell);
  emit_label(no, cell);
  emit(assignment_of_arm(node, arms->right, choice->type), cell);
  emit_label(end, cell);
  erase_node(arms);
  erase_node(choice);
  return replace_by_left(node);
}

NODE *SEQ_QUEST_FOR_RHS(NODE *node, LIST *cell) {
  if (node->op == RETURN) return return_each_arm(node, cell);
  if (node->op == ASSIGN && is_whole_statement(node, cell)) {
    NODE *choice = node->right;
    if (keep_target_in_one_arm(node)) return sequence_statement(choice, cell);
  }
  if (can_assign_in_arms(node, cell)) return assign_in_arms(node, cell);
  return sequence_right_by_value(node, cell);
}

// x = y++, to be split into x = y; y++? Only as a statement of its own: inside of another one the
// value is wanted, and a volatile y would be read twice.
bool can_split_increment(const NODE *node, const LIST *cell) {
  const NODE *step = node->right;
  return node->op != RETURN && is_whole_statement(node, cell) && node->type == step->type &&
         node->left->op == NAME && step->left->op == NAME && !is_volatile_node(step->left) &&
         node->left->u.sym != step->left->u.sym;
}

NODE *split_increment(NODE *node, LIST *cell) {
  NODE *step = node->right;
  node->right = copy_tree(step->left);
  emit(node, cell);
  return sequence_statement(step, cell);
}

} // namespace

bool is_sequenced_assignment(Opcode op) {
  return op == ASSIGN || op == STASG || is_compound_assignment(op);
}

// The right side is done first, so what it emits executes before what the target's address needs.
NODE *sequence_assignment(NODE *node, LIST *cell) {
  while (node->right->op == COMMA_OP) {
    NODE *comma = node->right;
    emit(comma->left, cell);
    node->right = comma->right;
    erase_node(comma);
  }
  NODE *right = node->right;
  switch (right->op) {
  case LOGICAL_AND: return SEQ_ANDAND_FOR_RHS(node, cell);
  case LOGICAL_OR: return SEQ_OROR_FOR_RHS(node, cell);
  case CONDITIONAL: return SEQ_QUEST_FOR_RHS(node, cell);
  case INCREMENT:
  case DECREMENT:
    if (can_split_increment(node, cell)) return split_increment(node, cell);
    break;
  default: break;
  }
  node->right = is_sequenced_assignment(right->op) ? sequence_assignment(right, cell)
                                                   : sequence_value(right, node, cell);
  node->left = sequence_value(node->left, node, cell);
  return node;
}

} // namespace velkor::sequencing
