// Giving a tree the types that the usual conversions call for.
//
// Two contracts hold throughout: a tree keeps its value, and it keeps its type, so that a parent
// never has to look again. A place (what is stored to, or whose address is taken) takes the type of
// its symbol instead, as a conversion of it would be no place.
#include "simplify/retype.h"

#include "core/conversions.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "diag/dump.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"

#include <utility>

namespace velkor {
namespace {

constexpr TypeWord node_type_mask = 0xFFFF;

// The tree as a value of the type that its node had before it changed.
NODE *restore_type(TypeWord type, NODE *tree) {
  return tree->type == type ? tree : convert_tree(type, tree);
}

void promote_operand(NODE *&operand) {
  operand = convert_tree(promote_type(operand->type), operand);
}

void retype_left(NODE *tree) {
  tree->left = retype_tree(tree->left);
}

void retype_operands(NODE *tree) {
  if (tree->right) tree->right = retype_tree(tree->right);
  if (tree->left) tree->left = retype_tree(tree->left);
}

// ------------------------------------------------------------------------------------------------
// Places

NODE *retype_place(NODE *place);

void take_symbol_type(NODE *node) {
  set_type(node, node->u.sym->stype & node_type_mask);
}

// s.m, p->m with the member's type; the node's own type may change.
void retype_member_access(NODE *access) {
  access->left = access->op == MEMBER ? retype_place(access->left) : retype_tree(access->left);
  take_symbol_type(access->right);
  access->type = access->right->type;
}

NODE *retype_place(NODE *place) {
  switch (place->op) {
  case NAME: take_symbol_type(place); return place;
  case MEMBER:
  case ARROW: retype_member_access(place); return place;
  default: return retype_tree(place);
  }
}

NODE *retype_name(NODE *name) {
  const TypeWord type = name->type;
  take_symbol_type(name);
  return restore_type(type, name);
}

NODE *retype_member(NODE *access) {
  const TypeWord type = access->type;
  retype_member_access(access);
  return restore_type(type, access);
}

NODE *retype_access(NODE *access) {
  retype_left(access);
  const TypeWord type = pointer_to(access->type) & node_type_mask;
  if (access->left->type != type) access->left = convert_tree(type, access->left);
  return access;
}

NODE *retype_address(NODE *address) {
  const TypeWord type = address->type;
  address->left = retype_place(address->left);
  const TypeWord object = address->left->type;
  set_type(address, pointer_to(is_array(object) ? underived(object) : object) & node_type_mask);
  return restore_type(type, address);
}

// ------------------------------------------------------------------------------------------------
// Binary operators

// i  ->  PMCONV(i, 8), the integer operand of a pointer sum: it counts bytes, the node bits
void scale_operand(NODE *&operand) {
  if (operand->op == PMCONV || !is_integer(operand->type)) return;
  promote_operand(operand);
  operand = make_node(PMCONV, operand, make_icon(8, INT), INT);
}

// p + i, p - i, i + p: the sum has the pointer's type.
NODE *retype_pointer_sum(NODE *sum) {
  const TypeWord type = sum->type;
  scale_operand(sum->left);
  scale_operand(sum->right);
  sum->type = is_pointer(sum->left->type) ? sum->left->type : sum->right->type;
  return restore_type(type, sum);
}

// p - q: words.
NODE *retype_pointer_difference(NODE *difference) {
  const TypeWord type = difference->type;
  difference->type = INT;
  return restore_type(type, difference);
}

bool divides(Opcode op) {
  return op == DIVIDE || op == REMAINDER;
}

// The type that the operands are brought to: their common type, but for what would compute
// something else than the node does.
TypeWord operation_type(const NODE *tree) {
  const TypeWord type = balance_type(tree->left, tree->right);
  // No operator but a sum works on pointers: the words are meant.
  if (is_derived(type))
    return is_derived(tree->type) ? TypeWord{UNSIGNED} : promote_type(tree->type);
  // Integers under a floating operator are converted first.
  if (is_floating(tree->type) && !is_floating(type)) return tree->type;
  // A division goes by the node's sign.
  if (divides(tree->op) && is_integer(tree->type) && is_integer(type) &&
      is_unsigned_integer(tree->type) != is_unsigned_integer(type))
    return is_unsigned_integer(tree->type) ? UNSIGNED : INT;
  return type;
}

NODE *retype_arithmetic(NODE *tree) {
  retype_operands(tree);
  const bool is_sum = is_sum_or_difference(tree);
  if (is_sum && is_pointer(tree->right->type) &&
      (tree->op == SUBTRACT || is_pointer(tree->left->type)))
    return retype_pointer_difference(tree);
  if (is_sum && (is_pointer(tree->left->type) || is_pointer(tree->right->type)))
    return retype_pointer_sum(tree);
  const TypeWord old_type = tree->type;
  const TypeWord type = operation_type(tree);
  tree->left = convert_tree(type, tree->left);
  tree->right = convert_tree(type, tree->right);
  set_type(tree, type);
  return restore_type(old_type, tree);
}

// The arms of a ?: each becomes a value of the whole's type by itself.
NODE *retype_alternatives(NODE *arms) {
  retype_operands(arms);
  return is_scalar(arms->type) ? convert_tree(arms->type, arms) : arms;
}

NODE *retype_shift(NODE *shift) {
  shift->right = retype_tree(shift->right);
  promote_operand(shift->right);
  retype_left(shift);
  const TypeWord old_type = shift->type;
  const TypeWord type = shift->left->type;
  if (!is_integer(type)) return shift;
  if (type_width(type) < 32)
    shift->left = convert_tree(is_unsigned_integer(type) ? UNSIGNED : INT, shift->left);
  shift->type = shift->left->type;
  return restore_type(old_type, shift);
}

// ------------------------------------------------------------------------------------------------
// Unary operators and conversions

// May the operand be brought to the result's type before the operator works on it? Not where that
// loses what the result depends on: |200| is no |-56|.
bool may_convert_before(const NODE *tree) {
  const TypeWord from = tree->left->type;
  if (is_floating(from))
    return is_floating(tree->type) && type_width(from) <= type_width(tree->type);
  const bool looks_at_low_bits = tree->op == NEGATE || tree->op == COMPLEMENT || tree->op == SQUARE;
  return looks_at_low_bits || value_width(from) <= value_width(tree->type);
}

NODE *retype_unary(NODE *tree) {
  retype_left(tree);
  if (may_convert_before(tree)) tree->left = convert_tree(tree->type, tree->left);
  return tree;
}

// PMCONV, PVCONV: words.
NODE *retype_scaling(NODE *tree) {
  retype_operands(tree);
  promote_operand(tree->left);
  promote_operand(tree->right);
  tree->type = INT;
  return tree;
}

NODE *retype_conversion(NODE *tree) {
  if (tree->op == ISP2CHAR) tree->op = PCONV;
  retype_left(tree);
  return tree->left->type == tree->type ? replace_by_left(tree) : tree;
}

NODE *retype_argument(NODE *tree) {
  retype_left(tree);
  if (tree->left->op == SCONV && tree->left->type == tree->type)
    tree->left = replace_by_left(tree->left);
  return tree;
}

// ------------------------------------------------------------------------------------------------
// Relations

bool is_in_same_register(const NODE *a, const NODE *b) {
  const StorageClass sclass = a->u.sym->sclass;
  return (sclass == C_REG || sclass == C_VREG) && b->u.sym->sclass == sclass &&
         a->u.sym->offset == b->u.sym->offset;
}

// x rel y, x and y in one register: decided as x rel x.
NODE *retype_relation(NODE *relation) {
  const NODE *left = relation->left;
  NODE *right = relation->right;
  if (left->op != NAME || right->op != NAME || left->type != right->type) return relation;
  if (is_volatile_node(left) || is_volatile_node(right) || !is_in_same_register(left, right))
    return relation;
  debug_print("\n\tREDUNDANT RELATIONAL ELIMINATED:\n");
  dump_tree(relation);
  right->u.sym = left->u.sym;
  return simplify_node(relation);
}

bool is_unsigned_relation(Opcode op) {
  return op == ULE || op == ULT || op == UGE || op == UGT;
}

TypeWord comparison_type(const NODE *relation) {
  const TypeWord type = balance_type(relation->left, relation->right);
  if (!is_unsigned_relation(relation->op)) return type;
  return type == INT ? TypeWord{UNSIGNED} : type == LONG ? TypeWord{UNSIGNED_LONG} : type;
}

NODE *retype_comparison(NODE *tree) {
  tree = retype_relation(tree);
  if (tree->op < EQ || tree->op > UGT) return tree->op == ICON ? tree : retype_tree(tree);
  retype_operands(tree);
  const TypeWord type = comparison_type(tree);
  tree->left = convert_tree(type, tree->left);
  tree->right = convert_tree(type, tree->right);
  return tree;
}

// ------------------------------------------------------------------------------------------------
// Assignments

// a = a', a = (a' = z)  ->  the right side
bool stores_into_itself(const NODE *assignment) {
  const NODE *target = assignment->left;
  const NODE *value = assignment->right;
  if (value->op == ASSIGN) value = value->left;
  return value->op == NAME && value->type == target->type && is_same_object(target, value);
}

NODE *eliminate_assignment(NODE *assignment) {
  debug_print("\n\tREDUNDANT ASSIGNMENT ELIMINATED:\n");
  dump_tree(assignment);
  NODE *value = assignment->right;
  erase_tree(assignment->left);
  erase_node(assignment);
  return value;
}

bool is_target(const NODE *target, const NODE *operand) {
  if (operand->op != NAME || !is_same_object(target, operand)) return false;
  return operand->type == target->type || (is_pointer(operand->type) && is_pointer(target->type));
}

// z op a'  ->  a' op z
void move_target_left(const NODE *target, NODE *value) {
  if (op_swapped(value->op) == ILLOP || value->right->op != NAME) return;
  if (!is_same_object(target, value->right)) return;
  std::swap(value->left, value->right);
  value->op = op_swapped(value->op);
}

// a = a' op z, a = z op a'  ->  a op= z, where a is a NAME. The compound assignment evaluates z
// first and reads a afterwards: z may not change a.
NODE *update_in_place(NODE *assignment) {
  NODE *value = assignment->right;
  if (assignment->left->op != NAME || !value->left || !value->right) return assignment;
  if (op_effect(value->op) != PURE || has_side_effects(value->left) ||
      has_side_effects(value->right))
    return assignment;
  move_target_left(assignment->left, value);
  return to_compound_assignment(assignment, is_target);
}

// What late knowledge of registers makes of an assignment to a NAME.
NODE *retype_assign(NODE *assignment) {
  if (assignment->left->op == NAME && stores_into_itself(assignment))
    return eliminate_assignment(assignment);
  return update_in_place(assignment);
}

bool is_enum_name(const NODE *node) {
  return node->op == NAME && node->type == ENUM;
}

// e = (int) e'  ->  e = e', both of one enum type
void drop_enum_conversion(NODE *assignment) {
  const NODE *value = assignment->right;
  if (!is_enum_name(assignment->left) || value->op != SCONV || value->type != INT) return;
  if (!is_enum_name(value->left) || value->left->depnum != assignment->left->depnum) return;
  assignment->right = replace_by_left(assignment->right);
}

// The type that the value of an assignment is converted to on its way: the node's, unless the place
// holds another arithmetic type, which converts from the value as it is.
TypeWord stored_type(const NODE *assignment) {
  const TypeWord place = assignment->left->type;
  return is_scalar(place) && !is_pointer(place) ? place : assignment->type;
}

// x op= y but for shifts, x++, x--
NODE *retype_update(NODE *tree) {
  tree->right = retype_tree(tree->right);
  tree->left = retype_place(tree->left);
  if (!is_pointer(tree->type))
    tree->right = convert_tree(balance_type(tree->left, tree->right), tree->right);
  else if (is_integer(tree->right->type))
    promote_operand(tree->right);
  return tree;
}

NODE *retype_shift_assignment(NODE *tree) {
  tree->left = retype_place(tree->left);
  tree->right = retype_tree(tree->right);
  promote_operand(tree->right);
  return tree;
}

NODE *retype_compound_assignment(NODE *tree) {
  const Opcode base = asgop_base(tree->op);
  const bool is_shift = base == SHIFT_LEFT || base == SHIFT_RIGHT;
  return is_shift ? retype_shift_assignment(tree) : retype_update(tree);
}

NODE *retype_assignment(NODE *tree) {
  tree = retype_assign(tree);
  if (tree->op != ASSIGN) return retype_tree(tree);
  tree->left = retype_place(tree->left);
  tree->right = retype_tree(tree->right);
  tree->right = convert_tree(stored_type(tree), tree->right);
  drop_enum_conversion(tree);
  if (!is_integer(tree->type)) return tree; // a pointer's operand has been scaled
  // A conversion that hid the target on the right side may be gone by now.
  tree = update_in_place(tree);
  return tree->op == ASSIGN ? tree : retype_compound_assignment(tree);
}

// ------------------------------------------------------------------------------------------------

NODE *retype_return(NODE *tree) {
  if (!tree->right) return tree;
  tree->right = retype_tree(tree->right);
  tree->right = convert_tree(tree->type, tree->right);
  return tree;
}

NODE *retype_switch(NODE *tree) {
  retype_left(tree);
  promote_operand(tree->left);
  return tree;
}

// Opcodes whose left operand is a place.
NODE *retype_place_operator(NODE *tree) {
  if (tree->right) tree->right = retype_tree(tree->right);
  tree->left = retype_place(tree->left);
  return tree;
}

NODE *retype_others(NODE *tree) {
  retype_operands(tree);
  return tree;
}

} // namespace

bool is_same_object(const NODE *a, const NODE *b) {
  if (is_volatile_node(a) || is_volatile_node(b)) return false;
  return a->u.sym == b->u.sym || is_in_same_register(a, b);
}

NODE *retype_tree(NODE *tree) {
  if (is_compound_assignment(tree->op)) return retype_compound_assignment(tree);
  switch (tree->op) {
  case NAME: return retype_name(tree);
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case DIVIDE:
  case REMAINDER:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR: return retype_arithmetic(tree);
  case ALTERNATIVES: return retype_alternatives(tree);
  case INCREMENT:
  case DECREMENT: return retype_update(tree);
  case NEGATE:
  case COMPLEMENT:
  case ABS:
  case SQRT:
  case SQUARE: return retype_unary(tree);
  case PMCONV:
  case PVCONV: return retype_scaling(tree);
  case SHIFT_LEFT:
  case SHIFT_RIGHT: return retype_shift(tree);
  case MEMBER:
  case ARROW: return retype_member(tree);
  case DEREF: return retype_access(tree);
  case ADDRESS: return retype_address(tree);
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT:
  case ULE:
  case ULT:
  case UGE:
  case UGT: return retype_comparison(tree);
  case ASSIGN: return retype_assignment(tree);
  case RETURN: return retype_return(tree);
  case SWITCH: return retype_switch(tree);
  case SCONV:
  case PCONV:
  case ISP2CHAR: return retype_conversion(tree);
  case ACONV: return retype_argument(tree);
  case STASG:
  case ARGREF: return retype_place_operator(tree);
  case IF: retype_left(tree); return tree;
  case URETURN:
  case LABELDEF:              // its operand is no tree
  case CSE_DUPE: return tree; // what hangs under it is shared
  default: return retype_others(tree);
  }
}

} // namespace velkor
