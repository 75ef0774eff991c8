// Known values take the place of names and of loads.
#include "scalar/copyprop_rewrite.h"

#include "core/compare.h"
#include "core/conversions.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/target.h"
#include "diag/dump.h"
#include "scalar/copyprop_state.h"
#include "scalar/global_assignments.h"
#include "scalar/tree_cost.h"
#include "scalar/value_copies.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"

namespace velkor {
namespace {

NODE *walk(NODE *tree);

// Within an operand behind which another one may be evaluated: what is assigned there may be
// overtaken by the other's effects before the statement ends, so it is no known value behind it.
class Overtaken {
public:
  explicit Overtaken(bool is_overtaken) : before_(cp.is_overtaken) {
    cp.is_overtaken = before_ || is_overtaken;
  }
  ~Overtaken() { cp.is_overtaken = before_; }
  Overtaken(const Overtaken &) = delete;
  Overtaken &operator=(const Overtaken &) = delete;

private:
  bool before_;
};

NODE *walk_overtaken(NODE *tree) {
  const Overtaken overtaken(true);
  return walk(tree);
}

// ------------------------------------------------------------------------------------------------
// Simplification

// Is there something on the way down the left side that could fold with what is around the tree?
bool needs_simplification(const NODE *tree) {
  while (tree->left)
    switch (tree->op) {
    case ADDRESS:
    case MEMBER:
    case SCONV:
    case PCONV: tree = tree->left; break;
    case BIT_AND:
    case BIT_OR:
      if (tree->right->op != ICON) return true;
      tree = tree->left;
      break;
    case DEREF:
    case ARROW:
      tree = tree->left;
      if (tree->op == ADD && tree->right->op == ICON) tree = tree->left;
      break;
    default: return true;
    }
  return false;
}

bool is_decided(const NODE *operand) {
  return operand &&
         (operand->op == ICON || (operand->op == COMMA_OP && operand->right->op == ICON));
}

bool is_test(const NODE *tree) {
  return tree->op == IF || tree->op == SWITCH;
}

// The tree simplified, unless that makes it dearer than it was before values came in.
NODE *simplify_if_cheaper(NODE *tree, int old_cost) {
  if (!is_test(tree) && !cp.is_complex) return tree;
  NODE *copy = simplify_tree(copy_tree(tree));
  const bool is_worth_it = copy->op != LABELDEF && copy->left && copy->left->op == COMMA_OP &&
                           copy->left->right->op == ICON;
  if (!is_worth_it && tree_cost(copy, 0) > old_cost) {
    erase_tree(copy);
    return tree;
  }
  erase_tree(tree);
  if ((is_test(copy) && is_decided(copy->left)) ||
      (copy->op == COMMA_OP && copy->right->op == ICON))
    cp.cfg_changed = true;
  return copy;
}

void note_replacement(const NODE *value) {
  cp.changed = true;
  cp.is_complex = cp.is_complex || needs_simplification(value);
}

// ------------------------------------------------------------------------------------------------
// Names

bool is_same_type(TypeWord a, TypeWord b) {
  return a == b || (a == ENUM && b == INT) || (a == INT && b == ENUM);
}

// The value as the variable holds it and as the name reads it; takes the value.
NODE *as_read(const NODE *name, NODE *value, TypeWord stored_type) {
  if (!is_same_type(value->type, stored_type)) value = make_conversion(stored_type, value);
  if (!is_same_type(value->type, name->type)) value = make_conversion(name->type, value);
  return value;
}

// The names in addresses read their objects' versions of now.
void stamp_addresses(NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == ADDRESS && tree->left->op == NAME)
      tree->left->nsize = static_cast<std::int32_t>(ensure_version(tree->left->u.sym));
    if (tree->right) stamp_addresses(tree->right);
  }
}

// can_force: also a temporary that holds a constant.
NODE *rewrite_name(NODE *name, bool can_force) {
  SYM *sym = name->u.sym;
  if (is_volatile_symbol(sym) || is_volatile_node(name)) {
    name->nsize = static_cast<std::int32_t>(new_version(sym));
    new_version(sym);
    return name;
  }
  if (!is_followed(sym)) {
    sym->key = 0;
    name->nsize = 0;
    return name;
  }
  name->nsize = static_cast<std::int32_t>(ensure_version(sym));
  if (!is_scalar(name->type)) return name;
  KnownValue known = lookup_global_ASG(name, can_force);
  const bool is_global = known.tree != nullptr;
  if (!is_global) known = lookup_ASG(name);
  if (!known.tree) return name;
  NODE *value = as_read(name, copy_tree(known.tree), known.stored_type);
  if (is_global) stamp_addresses(value);
  note_replacement(value);
  erase_node(name);
  return value;
}

// The address of an access, or any value. x + K with an offset that the access carries keeps that
// form.
NODE *rewrite_address(NODE *address) {
  if (!is_pointer(address->type) || address->op != ADD || address->right->op != ICON ||
      !offset_fits(address->right->u.lval, underived(address->type), false))
    return walk(address);
  NODE **place = &address->left;
  if ((*place)->op == PCONV || (*place)->op == ISP2CHAR) place = &(*place)->left;
  if ((*place)->op != NAME) return walk(address);
  *place = rewrite_name(*place, true);
  // The sum of two constants is no form that an access carries.
  return (*place)->op == ICON ? simplify_tree(address) : address;
}

// &s.m, &p->m: the object itself is not read.
NODE *walk_address(NODE *node) {
  NODE *object = node->left;
  while (object->op == MEMBER)
    object = object->left;
  if (object->op != NAME) {
    if (object->left) object->left = walk(object->left);
    if (object->op == DEREF && object->right) object->right = walk(object->right);
    return node;
  }
  SYM *sym = object->u.sym;
  const bool takes_part = is_followed(sym) && !is_volatile_symbol(sym);
  object->nsize = static_cast<std::int32_t>(takes_part ? ensure_version(sym) : version_of(sym));
  return node;
}

// ------------------------------------------------------------------------------------------------
// Accesses

bool is_indirect(const NODE *node) {
  return node->op == DEREF || node->op == ARROW;
}

// *&x, (&s)->m: accesses to the object itself.
bool is_direct_access(const NODE *node) {
  const NODE *address = node->left;
  if (address->op != ADDRESS || (node->op == DEREF && node->right)) return false;
  const TypeWord object = address->left->type;
  return node->op == ARROW ? is_struct_or_union(object) : object == node->type;
}

// "text"[K]  ->  the character
bool read_literal(NODE *&access) {
  if (access->op != DEREF || access->right || !is_integer(access->type) ||
      type_width(access->type) != 8)
    return false;
  const NODE *literal = access->left;
  std::int32_t offset = 0;
  if (literal->op == ADD && literal->right->op == ICON) {
    offset = literal->right->u.lval;
    literal = literal->left;
  }
  if (literal->op != SCON || offset < 0 || offset >= literal->u.lval) return false;
  const std::int32_t value = wrap_to_type(literal->aux.text[offset], access->type);
  const TypeWord type = access->type;
  erase_tree(access);
  access = make_icon(value, type);
  return true;
}

void show_forwarding(const NODE *access, const NODE *value) {
  debug_print("\n\t========== (%d,%d) 'cp_indirect_RL' is replacing this:\n", cp.line2, cp.line);
  dump_tree(access);
  debug_print("\n\t========== with the following substitute:\n");
  dump_tree(value);
  debug_print("\n\t=========================================\n");
}

NODE *cp_indirect_RL(NODE *node) {
  if (node->op == DEREF && node->right) node->right = walk_overtaken(node->right);
  node->left = rewrite_address(node->left);
  if (is_direct_access(node)) {
    node = simplify_node(node);
    if (node->op == NAME) return walk(node);
    if (!is_indirect(node)) return node;
  }
  if (is_volatile_node(node)) return node;
  if (const NODE *known = lookup_store(node)) {
    if (state.debug_file) show_forwarding(node, known);
    NODE *value = copy_tree(known);
    note_replacement(value);
    erase_tree(node);
    return value;
  }
  if (read_literal(node)) note_replacement(node);
  return node;
}

NODE *walk_access(NODE *node) {
  const int cost = tree_cost(node->left, 0);
  node = cp_indirect_RL(node);
  if (cp.changed && is_indirect(node) && node->left->op != NAME)
    node->left = simplify_if_cheaper(node->left, cost);
  return node;
}

// ------------------------------------------------------------------------------------------------
// Places that take a value

void cp_opASG_RL(NODE *node);

bool can_be_offered(const NODE *node) {
  return node->op == ASSIGN && !cp.is_overtaken;
}

void assign_name(NODE *node) {
  NODE *target = node->left;
  target->nsize = 0;
  kill_place(target);
  if (is_volatile_symbol(target->u.sym) || is_volatile_node(target)) return;
  target->nsize = static_cast<std::int32_t>(new_version(target->u.sym));
  if (can_be_offered(node)) offer_assignment(node);
}

void assign_member(NODE *place) {
  NODE *object = place;
  while (object->op == MEMBER)
    object = object->left;
  if (is_indirect(object)) {
    object->left = rewrite_address(object->left);
    kill_place(place);
    return;
  }
  kill_place(place);
  if (object->op != NAME) return;
  object->nsize = static_cast<std::int32_t>(new_version(object->u.sym));
  new_version(object->u.sym);
}

// The address is what it was, but the object in it has another version.
void stamp_stored_object(NODE *address) {
  for (;;) {
    const bool has_offset = address->op == ADD && address->right->op == ICON;
    if (address->op != PCONV && address->op != ISP2CHAR && !has_offset) break;
    address = address->left;
  }
  if (address->op == ADDRESS && address->left->op == NAME) walk_address(address);
}

void assign_indirect(NODE *node) {
  NODE *&place = node->left;
  if (place->op == DEREF && place->right) place->right = walk(place->right);
  place->left = rewrite_address(place->left);
  if (is_direct_access(place) && place->left->left->op == NAME) {
    place = simplify_node(place);
    if (!is_indirect(place)) {
      cp_opASG_RL(node);
      return;
    }
  }
  kill_place(place);
  stamp_stored_object(place->left);
  if (can_be_offered(node))
    offer_store(node);
  else
    forget_store();
}

// The left side, once the right side is finished.
void cp_opASG_RL(NODE *node) {
  switch (node->left->op) {
  case NAME: assign_name(node); break;
  case MEMBER: assign_member(node->left); break;
  case DEREF:
  case ARROW: assign_indirect(node); break;
  default:
    print("\n\n!!! COMPILER (OPTIMIZER) ERROR IN 'cp_opASG_RL' !!!\n\n");
    kill_place(node->left);
  }
}

NODE *walk_assignment(NODE *node);

// x++, x known to be K  ->  (x = K + 1 , K)
bool step_constant(NODE *&node) {
  const NODE *target = node->left;
  if (target->op != NAME || is_volatile_symbol(target->u.sym) || is_volatile_node(target) ||
      version_of(target->u.sym) == 0)
    return false;
  const KnownValue known = lookup_ASG(target);
  if (!known.tree || known.tree->op != ICON || known.tree->type != node->type ||
      known.stored_type != node->type)
    return false;
  NODE *constant = copy_tree(known.tree);
  node->op = node->op == INCREMENT ? ASG_ADD : ASG_SUBTRACT;
  NODE *assignment = walk_assignment(expand_compound_assignment(node));
  node = make_comma(assignment, constant);
  cp.changed = true;
  return true;
}

NODE *walk_step(NODE *node) {
  if (step_constant(node)) return node;
  cp_opASG_RL(node);
  return node;
}

// A conversion that changes nothing of what is stored.
bool is_needless_conversion(const NODE *node) {
  const NODE *conversion = node->right;
  if (!conversion->left || conversion->left->type != node->type) return false;
  if (conversion->op == PCONV) return is_pointer(node->type);
  return conversion->op == SCONV && is_integer(conversion->type) && is_integer(node->type) &&
         type_width(conversion->type) >= type_width(node->type);
}

// x = x  ->  x. The home of a parameter is another place than the parameter.
NODE *drop_self_assignment(NODE *node) {
  if (is_needless_conversion(node)) node->right = replace_by_left(node->right);
  if (is_param_copy(node) || !trees_equal(node->left, node->right, false)) return node;
  NODE *value = node->right;
  erase_tree(node->left);
  erase_node(node);
  return value;
}

void rewrite_value(NODE *node) {
  if (is_pointer_step(node) && !is_volatile_symbol(node->left->u.sym)) {
    NODE *stepped = node->right->left;
    stepped->nsize = static_cast<std::int32_t>(ensure_version(stepped->u.sym));
    return;
  }
  const int cost = tree_cost(node->right, 0);
  node->right = rewrite_address(node->right);
  if (cp.changed) node->right = simplify_if_cheaper(node->right, cost);
}

NODE *walk_assignment(NODE *node) {
  rewrite_value(node);
  const int cost = tree_cost(node->left, 0);
  cp_opASG_RL(node);
  if (cp.changed && node->left->op != NAME) node->left = simplify_if_cheaper(node->left, cost);
  if (node->left->op == COMMA_OP) return simplify_node(node); // effects rose out of the address
  return node->op == ASSIGN && cp.changed ? drop_self_assignment(node) : node;
}

// ------------------------------------------------------------------------------------------------
// The walk

NODE *walk_call(NODE *node) {
  if (node->op == CALL || node->op == STCALL) node->right = walk(node->right);
  if (node->op != ASM && node->left) node->left = walk_overtaken(node->left);
  kill_by_call(node);
  return node;
}

NODE *walk_loop_counter(NODE *node) {
  node->right = walk(node->right);
  if (node->right->op != ASSIGN)
    node->right = simplify_node(make_assign(copy_tree(node->left), node->right));
  return node;
}

bool is_constant_leaf(const NODE *tree) {
  return tree->op == ICON || tree->op == FCON || tree->op == SCON;
}

// The right operand may not be evaluated at all.
bool is_conditional(Opcode op) {
  return op == CONDITIONAL || op == ALTERNATIVES || op == LOGICAL_AND || op == LOGICAL_OR;
}

NODE *walk_operands(NODE *node) {
  if (!node->left) return node;
  const bool changed_before = cp.changed;
  const bool complex_before = cp.is_complex;
  cp.changed = cp.is_complex = false;
  const bool has_value_on_right = node->right && !is_constant_leaf(node->right);
  if (has_value_on_right) {
    const Overtaken overtaken(is_conditional(node->op));
    node->right = walk(node->right);
  }
  {
    const Overtaken overtaken(has_value_on_right);
    node->left = walk(node->left);
  }
  if (cp.changed && !cp.is_complex) node = simplify_node(node);
  cp.changed = cp.changed || changed_before;
  cp.is_complex = cp.is_complex || complex_before;
  return node;
}

NODE *walk(NODE *tree) {
  if (acts_as_call(tree)) return walk_call(tree);
  switch (tree->op) {
  case LABELDEF: // its operand is no tree
  case BRANCH:
  case LOOP:
  case URETURN: return tree;
  case NAME: return rewrite_name(tree, false);
  case DEREF:
  case ARROW: return walk_access(tree);
  case INCREMENT:
  case DECREMENT: return walk_step(tree);
  case ADDRESS:
  case ARGREF: return walk_address(tree);
  case MEMBER:
  case IF:
  case SWITCH: tree->left = walk(tree->left); return tree;
  case RETURN:
    if (tree->right) tree->right = walk(tree->right);
    return tree;
  case INITLOOP: return walk_loop_counter(tree);
  default: return is_assignment_like(tree) ? walk_assignment(tree) : walk_operands(tree);
  }
}

} // namespace

void rewrite_statement(NODE *&statement) {
  if (statement->op == ASSIGN && statement->right->op == ASSIGN)
    statement = simplify_node(statement);
  const int cost = tree_cost(statement, 0);
  cp.changed = cp.is_complex = cp.is_overtaken = false;
  kill_ahead(statement, false);
  statement = walk(statement);
  if (is_test(statement) && statement->left->op == ICON) cp.cfg_changed = true;
  if (cp.changed) statement = simplify_if_cheaper(statement, cost);
}

} // namespace velkor
