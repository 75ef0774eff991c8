#include "file/validate_types.h"

#include "core/opcodes.h"
#include "core/types.h"

namespace velkor::file {
namespace {

// The type word of a node has half the bits of a symbol's.
constexpr TypeWord node_type_mask = 0xFFFF;

struct Operands {
  const Node *left;
  const Node *right;
};

Operands operands_of(const IcodeFile &file, const Node &node) {
  const auto at = [&](NodeIndex index) {
    return index == no_node ? nullptr : &file.nodes[static_cast<std::size_t>(index)];
  };
  return {at(node.left), at(node.right)};
}

// Enumerations are integers wherever something is computed.
TypeWord arithmetic_type(const Node *node) {
  return node->type == ENUM ? TypeWord{INT} : node->type;
}

bool is_narrow(TypeWord type) {
  return is_integer(type) && type_width(type) < pointer_width;
}

bool is_pointer_node(const Node *node) {
  return is_derived(node->type);
}

// p + PMCONV(i, bits), p - PMCONV(i, bits), p - q
const char *pointer_sum_fault(const Node &sum, Operands operands) {
  const auto [left, right] = operands;
  if (sum.op == SUBTRACT && is_pointer_node(right))
    return sum.type == INT ? nullptr : "a difference of addresses that is no int";
  if (is_pointer_node(left) && is_pointer_node(right)) return "a sum of two addresses";
  const Node *offset = is_pointer_node(left) ? right : left;
  const Node *base = is_pointer_node(left) ? left : right;
  if (!is_integer(offset->type)) return "an address and a fraction";
  if (offset->op != PMCONV) return "an integer that is not scaled, beside an address";
  return sum.type == base->type ? nullptr : "a sum that has not its address's type";
}

const char *arithmetic_fault(const Node &node, Operands operands) {
  const auto [left, right] = operands;
  if ((node.op == ADD || node.op == SUBTRACT) && (is_pointer_node(left) || is_pointer_node(right)))
    return pointer_sum_fault(node, operands);
  if (is_derived(node.type) || !is_scalar(node.type)) return "arithmetic that yields no number";
  if (left->type != right->type) return "operands of two types";
  if (left->type != node.type) return "an operator whose type is not its operands'";
  return is_narrow(node.type) ? "arithmetic on narrow integers" : nullptr;
}

const char *integer_only_fault(const Node &node, Operands operands) {
  if (const char *fault = arithmetic_fault(node, operands)) return fault;
  return is_integer(node.type) ? nullptr : "an operator of integers on a fraction";
}

const char *shift_fault(const Node &node, Operands operands) {
  const auto [left, right] = operands;
  if (!is_integer(left->type) || !is_integer(right->type)) return "a shift of no integer";
  if (is_narrow(left->type) || is_narrow(right->type)) return "a shift of narrow integers";
  return node.type == arithmetic_type(left) ? nullptr : "a shift whose type is not its operand's";
}

const char *relation_fault(const Node &node, Operands operands) {
  const auto [left, right] = operands;
  if (node.type != INT) return "a relation that is no int";
  if (!is_scalar(left->type) && !is_derived(left->type)) return "a relation of no numbers";
  if (left->type != right->type) return "a relation of two types";
  return is_narrow(left->type) ? "a relation of narrow integers" : nullptr;
}

bool is_place(const Node *node) {
  return node->op == NAME || node->op == MEMBER || node->op == ARROW || node->op == DEREF;
}

// An address that is stored has the type of the assignment, whatever the place points at; numbers
// have the place's.
bool is_assigned_type(const Node &assignment, TypeWord place, TypeWord value) {
  if (is_derived(place)) return value == place || value == assignment.type;
  return value == place || (place == ENUM && value == INT);
}

const char *assignment_fault(const Node &node, Operands operands) {
  const auto [left, right] = operands;
  if (!is_place(left)) return "an assignment to no place";
  return is_assigned_type(node, left->type, right->type) ? nullptr
                                                         : "a value of another type than its place";
}

const char *compound_assignment_fault(Operands operands) {
  const auto [left, right] = operands;
  if (!is_place(left)) return "an assignment to no place";
  if (!is_scalar(left->type)) return "arithmetic on no number";
  return is_narrow(right->type) ? "arithmetic on narrow integers" : nullptr;
}

const char *unary_fault(const Node &node, Operands operands) {
  if (!is_scalar(operands.left->type) || is_derived(node.type)) return "arithmetic on no number";
  return nullptr;
}

const char *access_fault(const Node &node, Operands operands) {
  const TypeWord address = pointer_to(node.type) & node_type_mask;
  return operands.left->type == address ? nullptr : "an address that points at another type";
}

const char *address_fault(const Node &node, Operands operands) {
  const Node *object = operands.left;
  if (!is_place(object) && object->op != SCON) return "the address of no place";
  const TypeWord element = is_array(object->type) ? underived(object->type) : object->type;
  return node.type == (pointer_to(element) & node_type_mask) ? nullptr
                                                             : "an address of another type";
}

const char *conversion_fault(const Node &node, Operands operands) {
  // A bit field is converted out of its bits, also to the type that it is declared with.
  const std::uint8_t op = operands.left->op;
  if (node.op == SCONV && (op == MEMBER || op == ARROW)) return nullptr;
  return node.type == operands.left->type ? "a conversion to the type that is there" : nullptr;
}

} // namespace

const char *type_fault(const IcodeFile &file, const Node &node, std::uint32_t name_type) {
  const Operands operands = operands_of(file, node);
  switch (node.op) {
  case NAME: return node.type == (name_type & node_type_mask) ? nullptr : "a name of another type";
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case DIVIDE: return arithmetic_fault(node, operands);
  case REMAINDER:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR: return integer_only_fault(node, operands);
  case SHIFT_LEFT:
  case SHIFT_RIGHT: return shift_fault(node, operands);
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT:
  case ULE:
  case ULT:
  case UGE:
  case UGT: return relation_fault(node, operands);
  case NEGATE:
  case COMPLEMENT:
  case ABS:
  case SQRT:
  case SQUARE: return unary_fault(node, operands);
  case ASSIGN: return assignment_fault(node, operands);
  case ASG_ADD:
  case ASG_SUBTRACT:
  case ASG_MULTIPLY:
  case ASG_DIVIDE:
  case ASG_REMAINDER:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR:
  case ASG_SHIFT_LEFT:
  case ASG_SHIFT_RIGHT:
  case INCREMENT:
  case DECREMENT: return compound_assignment_fault(operands);
  case DEREF: return access_fault(node, operands);
  case ADDRESS: return address_fault(node, operands);
  case MEMBER:
  case ARROW:
    return node.type == operands.right->type ? nullptr : "an access that has not its member's type";
  case PMCONV:
  case PVCONV:
    return node.type == INT && is_integer(operands.left->type) && !is_narrow(operands.left->type)
               ? nullptr
               : "a scaling of no int";
  case SCONV:
  case PCONV: return conversion_fault(node, operands);
  default: return nullptr;
  }
}

} // namespace velkor::file
