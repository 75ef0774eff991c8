// x = x op y and x op= y.
#include "simplify/compound.h"

#include "core/compare.h"
#include "simplify/patterns.h"

#include <utility>

namespace velkor {
namespace {

// The compound assignment of each plain opcode; ILLOP where there is none.
constexpr std::array<Opcode, opcode_limit> compound_table = [] {
  std::array<Opcode, opcode_limit> table{};
  table.fill(ILLOP);
  for (std::size_t op = 0; op < opcode_limit; ++op) {
    const Opcode base = opcode_table[op].base;
    if (base != ILLOP) table[base] = static_cast<Opcode>(op);
  }
  return table;
}();
static_assert(compound_table[ADD] == ASG_ADD && compound_table[SHIFT_RIGHT] == ASG_SHIFT_RIGHT);

bool is_same_tree(const NODE *target, const NODE *operand) {
  return trees_equal(target, operand, false);
}

// Does target op= other compute what the operation does? A compound assignment works in the
// operands' balanced type, whatever the operation's own was.
bool computes_alike(const NODE *target, const NODE *operation, const NODE *other) {
  const TypeWord type = operation->type;
  if (is_derived(target->type) || is_derived(type) || is_derived(other->type))
    return is_pointer(target->type) && is_pointer(type);
  const TypeWord balanced = balance_type(target, other);
  if (!is_integer(target->type) || !is_integer(type) || !is_integer(other->type))
    return type == balanced;
  // An operation in a narrower type cuts its result before it is stored.
  if (type_width(type) < type_width(target->type)) return false;
  // The other operators' low bits do not depend on signs, and >> follows its left operand.
  if (operation->op != DIVIDE && operation->op != REMAINDER) return true;
  return is_unsigned_integer(type) == is_unsigned_integer(balanced);
}

// The operators whose operand the computation cannot take as a float.
bool needs_integer_operand(Opcode base) {
  return base == BIT_AND || base == BIT_OR || base == BIT_XOR || base == REMAINDER;
}

bool is_shift(Opcode base) {
  return base == SHIFT_LEFT || base == SHIFT_RIGHT;
}

} // namespace

NODE *to_compound_assignment(NODE *node, TargetTest is_target) {
  NODE *operation = node->right;
  if (node->op != ASSIGN || !operation->right || compound_table[operation->op] == ILLOP)
    return node;
  NODE *target = node->left;
  const bool is_right = is_commutative(operation->op) && is_target(target, operation->right);
  if (!is_right && !is_target(target, operation->left)) return node;
  if (!computes_alike(target, operation, is_right ? operation->left : operation->right))
    return node;
  if (is_right) std::swap(operation->left, operation->right);
  node->op = compound_table[operation->op];
  node->right = operation->right;
  erase_tree(operation->left);
  erase_node(operation);
  return node;
}

NODE *to_compound_assignment(NODE *node) {
  return to_compound_assignment(node, is_same_tree);
}

NODE *make_compound_operation(Opcode base, NODE *target, NODE *operand) {
  if (!is_integer(operand->type)) {
    if (needs_integer_operand(base)) operand = convert_tree(promote_type(target->type), operand);
    if (is_shift(base)) operand = convert_tree(INT, operand);
  }
  TypeWord type = target->type;
  if (!is_pointer(type)) type = is_shift(base) ? promote_type(type) : balance_type(target, operand);
  return make_node(base, target, operand, type);
}

NODE *expand_compound_assignment(NODE *node) {
  const Opcode base = asgop_base(node->op);
  if (base == ILLOP || node->left->op == DDNODE) return node;
  node->op = ASSIGN;
  node->right = make_compound_operation(base, copy_tree(node->left), node->right);
  return node;
}

} // namespace velkor
