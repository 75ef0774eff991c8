#include "cfg/check_tree.h"

namespace velkor {
namespace {

// Opcodes whose children the table does not tell, or that may do without one.
bool has_operands_of_its_own_kind(Opcode op) {
  return op == LABELDEF || op == LOOP || op == ENDLOOP || op == INITLOOP;
}

bool has_right_number_of_operands(const NODE *node) {
  switch (node->op) {
  case IF: return node->left && node->right;
  case DEREF: return node->left != nullptr; // an access through two addresses has both
  default:
    return (node->left != nullptr) == (op_arity(node->op) > 0) &&
           (node->right != nullptr) == (op_arity(node->op) > 1);
  }
}

bool is_labelref(const NODE *node) {
  return node && node->op == LABELREF;
}

bool has_two_targets(const NODE *targets) {
  return targets->op == COMMA && is_labelref(targets->left) && is_labelref(targets->right);
}

// Is there a case at the head of the list? Its other members are looked at in their own turn.
bool lists_cases(const NODE *list) {
  if (list->op == COMMA) list = list->right;
  return list && (list->op == CASE || list->op == DEFAULT);
}

const char *operand_fault(const NODE *node) {
  switch (node->op) {
  case MEMBER:
  case ARROW: return node->right->op == NAME ? nullptr : "a member access without a member";
  case CONDITIONAL: return node->right->op == ALTERNATIVES ? nullptr : "a ? without its two values";
  case BRANCH:
  case DEFAULT: return is_labelref(node->left) ? nullptr : "a jump without a label";
  case CBRANCH: return is_labelref(node->right) ? nullptr : "a branch without a label";
  case CASE:
    return node->left->op == ICON && is_labelref(node->right)
               ? nullptr
               : "a case without a constant and a label";
  case IF: return has_two_targets(node->right) ? nullptr : "an IF without two labels";
  case SWITCH: return lists_cases(node->right) ? nullptr : "a SWITCH without cases";
  case NAME: return node->u.sym ? nullptr : "a NAME without a symbol";
  case SCON:
  case FCON:
  case ASM:
  case PPRAGMA: return node->aux.text ? nullptr : "a node without its text";
  case XCALL:
  case UXCALL:
  case ICALL: return node->u.name ? nullptr : "a call without a name";
  default: return nullptr;
  }
}

bool is_marker(Opcode op) {
  return op == CSE_DUPE || op == CSE_ORIG;
}

const char *place_fault(const NODE *node, const NODE *parent) {
  const Opcode above = parent ? parent->op : ILLOP;
  switch (node->op) {
  case LABELREF:
    return above == BRANCH || above == DEFAULT || above == CASE || above == CBRANCH ||
                   above == COMMA || above == LOOP || above == ENDLOOP
               ? nullptr
               : "a label inside an expression";
  case CASE:
  case DEFAULT: return above == COMMA || above == SWITCH ? nullptr : "a case outside of a SWITCH";
  case LIVEINFO:
  case ASM:
  case PPRAGMA: return parent ? "a record inside an expression" : nullptr;
  default:
    return parent && op_effect(node->op) == TRANSFERS ? "a transfer of control inside an expression"
                                                      : nullptr;
  }
}

// ------------------------------------------------------------------------------------------------
// Types

bool is_word_or_number(const NODE *node) {
  return is_derived(node->type) || type_is_scalar(node->type);
}

bool is_integer_or_word(const NODE *node) {
  return is_derived(node->type) || type_is_integer(node->type);
}

bool is_aggregate(const NODE *node) {
  return is_struct_or_union(node->type);
}

// What has an address: a conversion on top reads the object as another type.
bool is_place(const NODE *node) {
  switch (node->op) {
  case NAME:
  case MEMBER:
  case ARROW:
  case DEREF: return true;
  case IDENTITY: return is_place(node->left);
  default: return false;
  }
}

bool is_member(const NODE *name) {
  const StorageClass sclass = name->u.sym->sclass;
  return sclass == C_MOS || sclass == C_MOU || sclass == C_FIELD;
}

const char *bit_operator_fault(const NODE *node) {
  for (const NODE *operand : {node->left, node->right})
    if (operand && !is_integer_or_word(operand)) return "a bit operation on no integer";
  return is_integer_or_word(node) ? nullptr : "a bit operation that yields no integer";
}

const char *arithmetic_fault(const NODE *node) {
  for (const NODE *operand : {node->left, node->right})
    if (operand && !is_word_or_number(operand)) return "arithmetic on no number";
  return is_word_or_number(node) ? nullptr : "arithmetic that yields no number";
}

const char *relation_fault(const NODE *node) {
  if (!is_integer(node->type)) return "a relation that is no integer";
  const NODE *left = node->left;
  const NODE *right = node->right;
  if (!is_word_or_number(left) || !is_word_or_number(right)) return "a relation of no numbers";
  if (is_derived(left->type) && is_floating(right->type)) return "an address beside a fraction";
  if (is_derived(right->type) && is_floating(left->type)) return "an address beside a fraction";
  return nullptr;
}

const char *assignment_fault(const NODE *node) {
  if (!is_place(node->left)) return "an assignment to no place";
  if (node->op != ASSIGN) return arithmetic_fault(node);
  return is_aggregate(node->left) == is_aggregate(node->right)
             ? nullptr
             : "a value that its place cannot hold";
}

} // namespace

const char *shape_fault(const NODE *node, const NODE *parent) {
  if (node->op == ILLOP) return "a freed node hangs in a tree";
  if (!opcode_table[node->op].listed) return nullptr; // files may hold any; they pass through
  if (is_marker(node->op)) return "a pass has left its marker";
  if (!has_operands_of_its_own_kind(node->op)) {
    if (!has_right_number_of_operands(node)) return "an operator without its operands";
    if (const char *fault = operand_fault(node)) return fault;
  }
  return place_fault(node, parent);
}

const char *type_fault(const NODE *node) {
  switch (node->op) {
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case DIVIDE:
  case NEGATE:
  case ABS: return arithmetic_fault(node);
  case REMAINDER:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case SHIFT_LEFT:
  case SHIFT_RIGHT:
  case COMPLEMENT: return bit_operator_fault(node);
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT:
  case ULE:
  case ULT:
  case UGE:
  case UGT: return relation_fault(node);
  case LOGICAL_AND:
  case LOGICAL_OR:
  case LOGICAL_NOT: return is_integer(node->type) ? nullptr : "a truth value that is no integer";
  case ASSIGN:
  case ASG_ADD:
  case ASG_SUBTRACT:
  case ASG_MULTIPLY:
  case ASG_DIVIDE:
  case INCREMENT:
  case DECREMENT: return assignment_fault(node);
  case ASG_REMAINDER:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR:
  case ASG_SHIFT_LEFT:
  case ASG_SHIFT_RIGHT:
    return is_place(node->left) ? bit_operator_fault(node) : "an assignment to no place";
  case MEMBER:
    if (!is_member(node->right)) return "a member that is none";
    return is_aggregate(node->left) ? nullptr : "a member of no struct";
  case ARROW:
    if (!is_member(node->right)) return "a member that is none";
    return is_derived(node->left->type) ? nullptr : "a member behind no pointer";
  case DEREF: return is_integer_or_word(node->left) ? nullptr : "an access through no address";
  case SWITCH: return is_integer(node->left->type) ? nullptr : "a SWITCH on no integer";
  case IF: return is_word_or_number(node->left) ? nullptr : "a test of no number";
  default: return nullptr;
  }
}

} // namespace velkor
