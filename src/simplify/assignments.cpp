// Rules for = and the compound assignments. A plain = is the canonical form, except that a target
// other than a local counter, updated by its own value, is a compound assignment.
#include "simplify/assignments.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/questions.h"
#include "simplify/bits.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <utility>

namespace velkor {
namespace {

bool are_different_integers(TypeWord a, TypeWord b) {
  return a != b && is_integer(a) && is_integer(b);
}

// x & K whose mask covers all that a target of the type holds?
bool masks_whole_target(TypeWord target, const NODE *value) {
  if (value->op != BIT_AND || !is_icon(value->right)) return false;
  if (!is_integer(target) || !is_integer(value->type) || !is_integer(value->left->type) ||
      type_width(value->type) < type_width(target))
    return false;
  const std::uint32_t mask = value_mask(target);
  return (static_cast<std::uint32_t>(value->right->u.lval) & mask) == mask;
}

NODE *strip_mask(NODE *value) {
  erase_node(value->right);
  return replace_by_left(value);
}

// ------------------------------------------------------------------------------------------------
// The value of an =

// home = parameter stays
Outcome leave_parameter_copy(NODE *&tree) {
  return is_param_copy(tree) ? Outcome::STOP : Outcome::NEXT;
}

// a = b  ->  a = (type of a) b
Outcome convert_value(NODE *&tree) {
  const TypeWord type = tree->left->type;
  if (!are_different_integers(type, tree->right->type)) return Outcome::NEXT;
  tree->right = make_conversion(type, tree->right);
  return Outcome::REWRITTEN;
}

// a = (T) b  ->  a = b, a = b & K  ->  a = b: the store converts and masks anyway
Outcome strip_value(NODE *&tree) {
  const TypeWord type = tree->left->type;
  for (Outcome outcome = Outcome::NEXT;; outcome = Outcome::REWRITTEN) {
    NODE *value = tree->right;
    const bool is_stores_conversion = value->op == SCONV && value->type == type;
    if (is_stores_conversion || conversion_is_needless(type, value))
      tree->right = replace_by_left(value);
    else if (masks_whole_target(type, value))
      tree->right = strip_mask(value);
    else
      return outcome;
  }
}

// a = (b , c)  ->  (b , a = c): effects that came loose
Outcome hoist_loose_effects(NODE *&tree) {
  return tree->right->op == COMMA_OP ? finish(tree, tree) : Outcome::NEXT;
}

// x = (y = 0)  ->  (y = 0 , x = 0)
Outcome split_zero_assignment(NODE *&tree) {
  NODE *inner = tree->right;
  if (inner->op != ASSIGN || !is_icon_of(inner->right, 0)) return Outcome::NEXT;
  tree->right = copy_node(inner->right);
  const TypeWord type = tree->type;
  return finish(tree, make_node(COMMA_OP, inner, simplify_node(tree), type));
}

// a = (y == 0)  ->  a = y ^ 1, both being 0 or 1
Outcome store_negation(NODE *&tree) {
  NODE *value = tree->right;
  const NODE *target = tree->left;
  if (value->op != EQ || !is_icon_of(value->right, 0) || !is_boolean_tree(target) ||
      !is_boolean_tree(value->left))
    return Outcome::NEXT;
  value->op = BIT_XOR;
  set_type(value, target->type);
  value->right->u.lval = 1;
  tree->right = simplify_node(value);
  return Outcome::REWRITTEN;
}

// a = y + K  ->  a = y + K', K' being K as far as a holds it, taken as signed
Outcome wrap_addend(NODE *&tree) {
  NODE *value = tree->right;
  if (value->op != ADD || !is_icon(value->right) || !is_integer(tree->type) ||
      !is_integer(value->type) || !is_integer(value->left->type))
    return Outcome::NEXT;
  if (is_unsigned_integer(tree->type) && !trees_equal(tree->left, value->left, true))
    return Outcome::NEXT;
  NODE *addend = value->right;
  const std::int32_t wrapped = wrap_signed_narrow(addend->u.lval, tree->type);
  if (wrapped == addend->u.lval) return Outcome::NEXT;
  set_icon(addend, wrapped, INT);
  tree->right = simplify_node(value);
  return Outcome::REWRITTEN;
}

// ------------------------------------------------------------------------------------------------
// The operand of x op= y

// The operators of whose operands only as many low bits count as the result has.
bool works_on_low_bits(Opcode op) {
  switch (op) {
  case ASG_ADD:
  case ASG_SUBTRACT:
  case ASG_MULTIPLY:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR: return true;
  default: return false;
  }
}

// x op= y  ->  x op= (type of x) y, of the same width
Outcome convert_operand(NODE *&tree) {
  const TypeWord type = tree->left->type;
  const NODE *operand = tree->right;
  if (!works_on_low_bits(tree->op) || !are_different_integers(type, operand->type) ||
      type_width(type) != 32 || type_width(operand->type) != 32)
    return Outcome::NEXT;
  tree->right = make_conversion(type, tree->right);
  return Outcome::REWRITTEN;
}

// x op= (T) y  ->  x op= y, x op= y & K  ->  x op= y, integers only: a float's conversion counts
Outcome strip_operand(NODE *&tree) {
  if (!works_on_low_bits(tree->op)) return Outcome::NEXT;
  const TypeWord type = tree->left->type;
  for (Outcome outcome = Outcome::NEXT;; outcome = Outcome::REWRITTEN) {
    NODE *operand = tree->right;
    if (conversion_is_needless(type, operand))
      tree->right = replace_by_left(operand);
    else if (masks_whole_target(type, operand))
      tree->right = strip_mask(operand);
    else
      return outcome;
  }
}

// ------------------------------------------------------------------------------------------------
// x = x op y

// Links of a chain of one operator that are searched for the target.
constexpr int longest_searched_chain = 64;

bool is_target_or_conversion(const NODE *target, const NODE *operand) {
  if (trees_equal(target, operand, false)) return true;
  return operand->op == SCONV && trees_equal(target, operand->left, false);
}

// The chain from node down to bottom simplified again; its operands are so already.
NODE *rebuild_chain(NODE *node, const NODE *bottom) {
  if (node != bottom) node->left = rebuild_chain(node->left, bottom);
  return simplify_node(node);
}

// Looks for the target among the operands of the chain that runs down the left of sum, and lets it
// change places with the operand at the chain's end.
void rotate_operand(const NODE *target, NODE *sum) {
  if (!is_integer(sum->right->type)) return;
  NODE *link = sum->left;
  for (int i = 0; i < longest_searched_chain; ++i, link = link->left) {
    if (link->op != sum->op || link->type != sum->type || !is_integer(link->left->type) ||
        !is_integer(link->right->type))
      return;
    NODE *NODE::*place = nullptr;
    if (is_target_or_conversion(target, link->right))
      place = &NODE::right;
    else if (is_target_or_conversion(target, link->left))
      place = &NODE::left;
    if (!place) continue;
    std::swap(link->*place, sum->right);
    sum->left = rebuild_chain(sum->left, link);
    return;
  }
}

NODE *hoist_target_operand(const NODE *target, NODE *value, int depth);

// (y + a) - z  ->  (y - z) + a, (a + y) - z  ->  a + (y - z)
NODE *hoist_from_difference(const NODE *target, NODE *difference, int depth) {
  NODE *sum = hoist_target_operand(target, difference->left, depth + 1);
  difference->left = sum;
  if (sum->op != ADD || sum->type != difference->type) return difference;
  NODE *NODE::*rest = nullptr;
  if (trees_equal(target, sum->right, false))
    rest = &NODE::left;
  else if (trees_equal(target, sum->left, false))
    rest = &NODE::right;
  if (!rest || !is_integer(sum->left->type) || !is_integer(sum->right->type) ||
      !is_integer(difference->right->type))
    return difference;
  difference->left = sum->*rest;
  sum->*rest = simplify_node(difference);
  return sum;
}

// The value with its occurrence of the target, if there is one, as an operand of its root.
NODE *hoist_target_operand(const NODE *target, NODE *value, int depth) {
  if (!value->right || !is_integer(value->type) || depth == longest_searched_chain) return value;
  switch (value->op) {
  case ADD:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case SUBTRACT: break;
  default: return value;
  }
  if (trees_equal(target, value->right, true) || trees_equal(target, value->left, true))
    return value;
  if (value->op == SUBTRACT) return hoist_from_difference(target, value, depth);
  rotate_operand(target, value);
  return value;
}

// i = i + 1 of a local i, whose plain form is what the loop passes look for?
bool counts_locally(const NODE *tree) {
  const NODE *target = tree->left;
  const NODE *value = tree->right;
  if (target->op != NAME || !is_sum_or_difference(value)) return false;
  const NODE *step = value->right;
  const bool is_fixed_step =
      is_icon(step) || (step->op == NAME && is_const_node(step) && !is_volatile_node(step));
  const SYM *sym = target->u.sym;
  const bool is_local = sym->sclass == C_AUTO || (sym->sclass == C_STAT && sym->level >= 2);
  return is_fixed_step && is_local && (is_pointer(tree->type) || is_integer(tree->type));
}

// x = x op y  ->  x op= y
Outcome seek_compound_form(NODE *&tree) {
  const NODE *value = tree->right;
  if (!value->right || tree->left->op == DDNODE || counts_locally(tree)) return Outcome::NEXT;
  if (is_floating(value->type) && !is_floating(tree->type)) return Outcome::NEXT;
  tree->right = hoist_target_operand(tree->left, tree->right, 0);
  tree = to_compound_assignment(tree);
  if (tree->op == ASSIGN) return Outcome::NEXT;
  (void)convert_operand(tree);
  (void)strip_operand(tree);
  return Outcome::DONE;
}

// x = x  ->  x, x = (x = y)  ->  x = y
Outcome drop_needless_store(NODE *&tree) {
  NODE *target = tree->left;
  NODE *value = tree->right;
  const bool stores_itself = target->op == value->op && trees_equal(target, value, false);
  const bool stores_again = value->op == ASSIGN && trees_equal(target, value->left, false);
  if (!stores_itself && !stores_again) return Outcome::NEXT;
  const TypeWord type = tree->type;
  erase_tree(target);
  erase_node(tree);
  tree = keep_type(type, value);
  return Outcome::DONE;
}

bool is_automatic_name(const NODE *node) {
  return node->op == NAME && node->u.sym->sclass == C_AUTO;
}

// x = (y = z)  ->  y = (x = z), x a local and y none: later passes see the value in the local
Outcome assign_local_first(NODE *&tree) {
  NODE *local = tree->left;
  NODE *inner = tree->right;
  if (inner->op != ASSIGN || inner->type != tree->type || !is_automatic_name(local) ||
      local->u.sym->fcp_flag != 0 || is_volatile_node(local))
    return Outcome::NEXT;
  NODE *other = inner->left;
  if (is_automatic_name(other) || is_bit_field_access(other) || tree_uses_sym(other, local))
    return Outcome::NEXT;
  tree->left = other;
  inner->left = local;
  std::swap(tree->depnum, inner->depnum);
  tree->right = simplify_assign(inner);
  return Outcome::AGAIN;
}

constexpr Rule assign_table[] = {
    {"home = parameter stays", leave_parameter_copy},
    {"a = b  ->  a = (type of a) b", convert_value},
    {"a = (T) b  ->  a = b, a = b & K  ->  a = b", strip_value},
    {"a = (b , c)  ->  (b , a = c)", hoist_loose_effects},
    {"x = (y = 0)  ->  (y = 0 , x = 0)", split_zero_assignment},
    {"a = (y == 0)  ->  a = y ^ 1", store_negation},
    {"a = y + K  ->  a = y + K', K' as wide as a", wrap_addend},
    {"x = x op y  ->  x op= y", seek_compound_form},
    {"x = x  ->  x, x = (x = y)  ->  x = y", drop_needless_store},
    {"x = (y = z)  ->  y = (x = z)", assign_local_first},
};

// x op= y  ->  x = x op y, which may come back as a compound assignment
Outcome expand(NODE *&tree) {
  if (has_side_effects(tree->left)) return Outcome::NEXT;
  tree = expand_compound_assignment(tree);
  if (tree->op != ASSIGN) return Outcome::NEXT;
  tree->right = simplify_node(tree->right);
  tree = simplify_assign(tree);
  return Outcome::DONE;
}

constexpr Rule compound_assignment_table[] = {
    {"x op= y  ->  x op= (type of x) y", convert_operand},
    {"x op= (T) y  ->  x op= y, x op= y & K  ->  x op= y", strip_operand},
    {"x op= y  ->  x = x op y", expand},
};

} // namespace

const RuleSet assign_rules{"assign", assign_table};
const RuleSet compound_assignment_rules{"compound assignment", compound_assignment_table};

NODE *simplify_assign(NODE *node) {
  return apply_rules(assign_rules, node);
}

NODE *simplify_asgop(NODE *node) {
  return apply_rules(compound_assignment_rules, node);
}

} // namespace velkor
