#include "simplify/simplify.h"

#include "core/compare.h"
#include "core/conversions.h"
#include "core/failure.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "diag/dump.h"
#include "simplify/fold.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Hoisting

// Operators that a comma, or an assignment of a constant, in an operand does not rise above: they
// evaluate their operands under conditions of their own, or are no evaluations at all.
bool takes_part_in_hoisting(const NODE *node) {
  switch (node->op) {
  case ALTERNATIVES:
  case LOGICAL_AND:
  case LOGICAL_OR:
  case RETURN:
  case SWITCH:
  case COMMA:
  case PCOMMA:
  case COMMA_OP:
  case LOOP:
  case ENDLOOP:
  case ARGREF:
  case STARG:
  case ACONV:
  case CBRANCH:
  case IF: return false;
  default: return node->left != nullptr;
  }
}

// x = K, whose value is K as x's type holds it. A bit field cuts K further, so it does not count.
bool assigns_constant(const NODE *node) {
  return node->op == ASSIGN && node->right->op == ICON && !is_bit_field_access(node->left);
}

// The constant as the assignment's value.
NODE *assigned_constant(const NODE *assignment) {
  return convert_tree(assignment->type, copy_node(assignment->right));
}

// op((a , b), c)  ->  (a , op(b, c))
NODE *hoist_comma_from_left(NODE *node) {
  NODE *comma = node->left;
  const std::uint16_t type = node->type;
  node->left = comma->right;
  comma->right = simplify_node(node);
  comma->type = type;
  return comma;
}

// op(c, (a , b))  ->  (a , op(c, b))
NODE *hoist_comma_from_right(NODE *node) {
  NODE *comma = node->right;
  const std::uint16_t type = node->type;
  node->right = comma->right;
  comma->right = simplify_node(node);
  comma->type = type;
  return comma;
}

// (a = K) op c  ->  (a = K , K op c)
NODE *hoist_assignment_from_left(NODE *node) {
  NODE *operation = copy_node(node);
  operation->left = assigned_constant(node->left);
  node->right = simplify_node(operation);
  node->op = COMMA_OP;
  return node;
}

// c op (a = K)  ->  (a = K , c op K)
NODE *hoist_assignment_from_right(NODE *node) {
  NODE *operation = copy_node(node);
  operation->right = assigned_constant(node->right);
  node->left = node->right;
  node->right = simplify_node(operation);
  node->op = COMMA_OP;
  return node;
}

// One step of hoisting; false when there is nothing to hoist.
bool hoist(NODE *&node) {
  if (!takes_part_in_hoisting(node)) return false;
  if (node->left->op == COMMA_OP) {
    node = hoist_comma_from_left(node);
    return true;
  }
  if (assigns_constant(node->left)) {
    node = hoist_assignment_from_left(node);
    return true;
  }
  if (!node->right) return false;
  if (node->right->op == COMMA_OP) {
    node = hoist_comma_from_right(node);
    return true;
  }
  if (assigns_constant(node->right) && node->op != ASSIGN && node->op != INITLOOP) {
    node = hoist_assignment_from_right(node);
    return true;
  }
  return false;
}

// ------------------------------------------------------------------------------------------------
// Dispatch

bool has_constant_operand(const NODE *node) {
  const NODE *left = node->left;
  if (!left) return false;
  if (left->op == ICON || left->op == FCON) return true;
  return left->op == RECIP && node->op == MULTIPLY && node->right->op == FCON;
}

// !x  ->  x == 0
NODE *not_to_relation(NODE *node) {
  node->op = EQ;
  node->right = convert_tree(node->left->type, make_icon(0, INT));
  return node;
}

// PMCONV counts bits, the product counts bytes.
NODE *pointer_multiply_to_product(NODE *node) {
  node->op = MULTIPLY;
  node->right->u.lval /= 8;
  if (value_width(node->type) != value_width(node->left->type))
    node->left = simplify_node(convert_tree(node->type, node->left));
  return node;
}

NODE *pointer_divide_to_quotient(NODE *node) {
  node->op = DIVIDE;
  node->right->u.lval /= 8;
  node->right->type = node->type;
  return node;
}

NODE *retype_branch(NODE *node) {
  node->type = INT;
  node->left->type = INT;
  return node;
}

NODE *simplify_access(NODE *node) {
  if (node->op != DEREF) node->depnum = node->right->depnum;
  refresh_qual(node);
  return node->op == MEMBER ? simplify_member(node) : simplify_deref(node);
}

[[noreturn]] void bad_opcode(const NODE *node) {
  report("\n\n   !!! Bad opcode in simplifier (%d) %s !!!\n", node->op, op_name(node->op));
  internal_failure();
}

// The rule set of the node's opcode.
NODE *dispatch(NODE *node) {
  if (is_compound_assignment(node->op)) return simplify_asgop(node);
  switch (node->op) {
  case NAME: return refresh_qual(node);
  case ADD: return simplify_add(node);
  case SUBTRACT: return simplify_sub(node);
  case MULTIPLY: return simplify_mul(node);
  case DIVIDE: return simplify_div(node);
  case REMAINDER: return simplify_rem(node);
  case BIT_AND: return simplify_and(node);
  case BIT_OR: return simplify_or(node);
  case BIT_XOR: return simplify_xor(node);
  case SHIFT_LEFT:
  case SHIFT_RIGHT: return simplify_shift(node);
  case NEGATE:
  case ABS:
  case COMPLEMENT:
  case SQUARE:
  case SQRT: return simplify_unary(node);
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT:
  case ULE:
  case ULT:
  case UGE:
  case UGT: return simplify_relation(node);
  case LOGICAL_AND: return simplify_andand(node);
  case LOGICAL_OR: return simplify_oror(node);
  case CONDITIONAL: return simplify_question(node);
  case ASSERT:
  case NASSERT: return simplify_assert(node);
  case CBRANCH: return simplify_cbranch(node);
  case IF: return simplify_if(node);
  case SWITCH: return simplify_switch(node);
  case COMMA_OP: return simplify_comma(node);
  case BRANCH: return retype_branch(node);
  case ASSIGN: return simplify_assign(node);
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case XCALL:
  case UXCALL: return simplify_call(node);
  case SCONV: return simplify_sconv(node);
  case PCONV: return simplify_pconv(node);
  case ACONV: return simplify_aconv(node);
  case ADDRESS:
  case ARGREF: return simplify_addr(node);
  case DEREF:
  case ARROW:
  case MEMBER: return simplify_access(node);
  case ILLOP:
  case CSE_DUPE:
  case CSE_ORIG: bad_opcode(node);
  default: return node;
  }
}

// Opcodes that are only another way to write a node of another opcode; the rewritten node starts
// over.
bool rewrite_as_other_opcode(NODE *&node) {
  switch (node->op) {
  case LOGICAL_NOT: node = not_to_relation(node); return true;
  case PMCONV: node = pointer_multiply_to_product(node); return true;
  case PVCONV: node = pointer_divide_to_quotient(node); return true;
  default: return false;
  }
}

// Rules simplify what they built, so simplify_node runs within itself, a few dozen levels at the
// most. A net for trees of types that no front end makes, where two rules might hand a tree to each
// other for ever: that deep down, a node stays as it is.
class Nesting {
public:
  Nesting() { level += 1; }
  ~Nesting() { level -= 1; }
  Nesting(const Nesting &) = delete;
  Nesting &operator=(const Nesting &) = delete;
  [[nodiscard]] bool is_too_deep() const { return level > deepest; }

private:
  static constexpr int deepest = 1000;
  static int level;
};
int Nesting::level = 0;

// The basic type that the files never use counts as none.
void map_type(NODE *node) {
  if ((node->type & basic_type_mask) == UNUSED_TYPE)
    node->type = static_cast<std::uint16_t>(node->type & ~basic_type_mask);
}

// ------------------------------------------------------------------------------------------------
// Discarding values

// Storing a thing into itself has no effect of its own.
bool stores_into_itself(const NODE *node) {
  return node->op == ASSIGN && node->left->op == node->right->op &&
         trees_equal(node->left, node->right, false) && !is_param_copy(node);
}

bool calls_pure_function(const NODE *node) {
  const FUN *fun = fun_of_call(node);
  return fun && (fun->flags & FUN_is_pure_fun);
}

// The address of an object evaluates what the object's own address needs, not the object.
NODE *operand_of_address(NODE *node) {
  NODE *object = node->left;
  erase_node(node);
  while (object->op == MEMBER) {
    NODE *base = object->left;
    erase_tree(object->right);
    erase_node(object);
    object = base;
  }
  NODE *rest = object->left;
  erase_tree(object->right);
  erase_node(object);
  return rest;
}

// The arms of a ? keep what they do; an arm that does nothing stays as it is.
NODE *discard_conditional(NODE *node, bool &finished) {
  NODE *arms = node->right;
  NODE *first = discard_value(copy_tree(arms->left));
  NODE *second = discard_value(copy_tree(arms->right));
  finished = first || second;
  if (!finished) {
    NODE *condition = node->left;
    erase_tree(arms);
    erase_node(node);
    return condition;
  }
  if (first) {
    erase_tree(arms->left);
    arms->left = first;
  }
  if (second) {
    erase_tree(arms->right);
    arms->right = second;
  }
  return node;
}

NODE *discard_operands(NODE *node) {
  NODE *left = discard_value(node->left);
  NODE *right = discard_value(node->right);
  if (left && right) {
    node->op = COMMA_OP;
    node->type = right->type;
  }
  return list_of_remaining(node, left, right);
}

bool is_register_name(const NODE *node) {
  return node->op == NAME && (node->u.sym->scqual & CQ_REGISTER);
}

// An assignment, a call, a transfer: it stays whole whoever wants its value.
bool acts_by_itself(const NODE *node) {
  return op_effect(node->op) != PURE && node->op != COMMA_OP;
}

} // namespace

NODE *simplify_tree(NODE *tree) {
  if (tree->op == LABELDEF) return tree;
  if (tree->left) {
    tree->left = simplify_tree(tree->left);
    if (tree->right) tree->right = simplify_tree(tree->right);
  }
  return simplify_node(tree);
}

NODE *simplify_node(NODE *node) {
  if (node->op == LABELDEF) return node; // its operand is no tree
  const Nesting nesting;
  if (nesting.is_too_deep()) return node;
  for (;;) {
    map_type(node);
    if (hoist(node)) continue;
    if (has_constant_operand(node)) node = fold_node(node);
    if (rewrite_as_other_opcode(node)) continue;
    return dispatch(node);
  }
}

NODE *discard_value(NODE *tree) {
  while (tree) {
    if (tree->op == INCREMENT || tree->op == DECREMENT) {
      tree->op = tree->op == INCREMENT ? ASG_ADD : ASG_SUBTRACT;
      tree = simplify_node(tree);
      continue;
    }
    if (stores_into_itself(tree) || calls_pure_function(tree)) tree->op = COMMA_OP;
    if (acts_by_itself(tree)) return tree;
    switch (tree->op) {
    case NAME:
    case DEREF:
    case MEMBER:
    case ARROW:
      if (!is_register_name(tree) && is_volatile_node(refresh_qual(tree))) return tree;
      return discard_operands(tree);
    case ADDRESS: tree = operand_of_address(tree); break;
    case LOGICAL_AND:
    case LOGICAL_OR: {
      tree->right = discard_value(tree->right);
      if (tree->right) return tree;
      NODE *test = tree->left;
      erase_node(tree);
      tree = test;
      break;
    }
    case CONDITIONAL: {
      bool finished = false;
      tree = discard_conditional(tree, finished);
      if (finished) return tree;
      break;
    }
    default: return discard_operands(tree);
    }
  }
  return nullptr;
}

} // namespace velkor
