// Lowering of assignments and steps.
#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "lower/lowering.h"
#include "lower/unsimp_blocks.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

#include <cstring>
#include <utility>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// =

// Two names of one object that also show as one in the listing.
bool is_same_name(const NODE *a, const NODE *b) {
  if (a->op != NAME || b->op != NAME || a->u.sym != b->u.sym) return false;
  const SYM *shown = a->aux.sym;
  const SYM *other = b->aux.sym;
  if (!shown || !other) return shown == other;
  return std::strcmp(shown->name, other->name) == 0;
}

bool is_same_target(const NODE *target, const NODE *operand) {
  if (!is_same_name(target, operand)) return false;
  return target->type == operand->type || (is_pointer(target->type) && is_pointer(operand->type));
}

// A compound assignment evaluates y first and reads x afterwards: y may not change x.
bool may_change(NODE *y, const NODE *x) {
  if (!has_side_effects(y)) return false;
  const StorageClass sclass = x->u.sym->sclass;
  return (sclass != C_REG && sclass != C_VREG) || tree_uses_sym(y, x);
}

// x = a op x  ->  x = x op' a
Outcome bring_target_to_left(NODE *&node, const Position &) {
  const NODE *target = node->left;
  NODE *value = node->right;
  if (target->op != NAME || !value->right || op_swapped(value->op) == ILLOP) return Outcome::NEXT;
  if (!is_same_name(target, value->right) || may_change(value->left, target)) return Outcome::NEXT;
  std::swap(value->left, value->right);
  value->op = op_swapped(value->op);
  return Outcome::NEXT;
}

// x = x op y  ->  x op= y
Outcome make_compound(NODE *&node, const Position &) {
  const NODE *target = node->left;
  const NODE *value = node->right;
  if (target->op != NAME || is_volatile_node(target)) return Outcome::NEXT;
  if (!value->left || !value->right || !is_same_name(target, value->left)) return Outcome::NEXT;
  const bool fits = balance_type(target, value->left) == value->type ||
                    (is_pointer(value->type) && is_pointer(target->type));
  if (!fits || may_change(value->right, target)) return Outcome::NEXT;
  node = to_compound_assignment(node, is_same_target);
  return node->op == ASSIGN ? Outcome::NEXT : Outcome::AGAIN;
}

bool is_register_name(const NODE *node) {
  if (node->op != NAME) return false;
  const SYM *sym = node->u.sym;
  return sym->sclass == C_REG || (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) != 0;
}

// x = c ? a : b  ->  c ? (x = a) : (x = b), x in a register
Outcome assign_in_arms(NODE *&node, const Position &) {
  NODE *conditional = node->right;
  if (!is_register_name(node->left) || conditional->op != CONDITIONAL) return Outcome::NEXT;
  NODE *arms = conditional->right;
  if (arms->op != ALTERNATIVES) return Outcome::NEXT;
  const TypeWord type = node->left->type;
  NODE *second = copy_node(node);
  second->left = copy_node(node->left);
  second->right = arms->right;
  node->right = arms->left;
  arms->left = node;
  arms->right = second;
  set_type(arms, type);
  set_type(conditional, type);
  node = conditional;
  return Outcome::DONE;
}

// ------------------------------------------------------------------------------------------------
// op=

// x += -K  ->  x -= K
Outcome subtract_from_target(NODE *&node, const Position &) {
  NODE *constant = node->right;
  const TypeWord type = node->left->type; // what the sum is cut to
  if (!is_icon(constant) || is_floating(node->type) || is_floating(type)) return Outcome::NEXT;
  const std::int32_t value = is_integer(type) ? wrap_signed_narrow(constant->u.lval, type)
                                              : wrap_signed(constant->u.lval, constant->type);
  const std::int32_t opposite = positive_opposite(constant, value);
  if (opposite == 0) return Outcome::NEXT;
  node->op = ASG_SUBTRACT;
  constant->u.lval = opposite;
  return Outcome::AGAIN;
}

// x &= K, |=, ^=  ->  with K of the node's type
Outcome convert_mask(NODE *&node, const Position &) {
  if (is_icon(node->right) && node->right->type != node->type)
    node->right = convert_tree(node->type, node->right);
  return Outcome::DONE;
}

// ------------------------------------------------------------------------------------------------
// x++, x--

bool is_same_register(const SYM *a, const SYM *b) {
  return a->sclass == C_REG && b->sclass == C_REG && a->offset == b->offset;
}

// ... x++ ...;  ->  ... x ...; x += 1;
Outcome split_step(NODE *&node, const Position &at) {
  if (!is_integer(node->type) || !can_split_step(node, at)) return Outcome::DONE;
  node = move_step_behind(node, at.cell);
  return Outcome::DONE;
}

constexpr LoweringRule assign_table[] = {
    {"x = a op x  ->  x = x op' a", bring_target_to_left},
    {"x = x op y  ->  x op= y", make_compound},
    {"x = c ? a : b  ->  c ? (x = a) : (x = b)", assign_in_arms},
};
constexpr LoweringRule add_to_table[] = {{"x += -K  ->  x -= K", subtract_from_target}};
constexpr LoweringRule logical_assignment_table[] = {{"x &= K  ->  x &= (t) K", convert_mask}};
constexpr LoweringRule step_table[] = {{"... x++ ...;  ->  ... x ...; x += 1;", split_step}};

} // namespace

const LoweringRules lower_assign_rules{assign_table};
const LoweringRules lower_add_to_rules{add_to_table};
const LoweringRules lower_logical_assignment_rules{logical_assignment_table};
const LoweringRules lower_step_rules{step_table};

bool can_split_step(const NODE *step, const Position &at) {
  if (!at.cell || !at.cell->next || step->right->op != ICON) return false;
  const NODE *name = step->left;
  if (!is_register_name(name) || name->type != step->type) return false;
  // The statement form reads the object once more.
  return !is_volatile_node(name) && may_split_increment(name, at.cell->item);
}

NODE *move_step_behind(NODE *step, LIST *cell) {
  NODE *name = copy_node(step->left);
  if (NODE *statement = discard_value(step))
    cell->next = list_cons(statement, cell->next, cell->line, cell->line2);
  return name;
}

bool may_split_increment(const NODE *name, const NODE *statement) {
  for (const NODE *node = statement; node; node = node->left)
    switch (node->op) {
    case LABELDEF: return true; // its operand is no tree
    case COMMA_OP:
    case CONDITIONAL:
    case LOGICAL_AND:
    case LOGICAL_OR: return false;
    case NAME:
      if (node == name) return true;
      return node->u.sym != name->u.sym && !is_same_register(node->u.sym, name->u.sym);
    case CALL:
    case STCALL:
    case XCALL:
      // The callee may read a control register, but no register of the caller's.
      if (name->u.sym->sclass != C_REG) return false;
      [[fallthrough]];
    default:
      if (node->right && !may_split_increment(name, node->right)) return false;
    }
  return true;
}

} // namespace velkor
