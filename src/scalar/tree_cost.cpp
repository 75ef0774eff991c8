#include "scalar/tree_cost.h"

namespace velkor {
namespace {

constexpr int access_cost_units = 3;
constexpr int slow_operator = 3; // beyond the one of every node
constexpr int routine = 10;      // the same for what leaves the function or copies a structure
constexpr int register_name = 2;
constexpr int memory_name = 3;

int name_cost(const SYM *sym) {
  if (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) return register_name;
  switch (sym->sclass) {
  case C_AUTO:
  case C_REG:
  case C_ARG:
  case C_REGPARM: return register_name;
  case C_EXT:
  case C_STAT:
  case C_EXTDEF:
  case C_USTATIC: return memory_name;
  default: return 0;
  }
}

int operator_cost(Opcode op) {
  switch (op) {
  case MULTIPLY:
  case ASG_MULTIPLY:
  case DIVIDE:
  case ASG_DIVIDE:
  case REMAINDER:
  case ASG_REMAINDER:
  case PMCONV:
  case PVCONV: return slow_operator;
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case XCALL:
  case UXCALL:
  case STASG:
  case SQRT:
  case MEMCPY: return routine;
  default: return 0;
  }
}

} // namespace

int tree_cost(const NODE *tree, int start) {
  int cost = start;
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case LABELDEF: return cost + 1; // its operand is no tree
    case NAME: return cost + 1 + name_cost(tree->u.sym);
    case DEREF:
    case MEMBER:
    case ARROW: cost += access_cost_units; break;
    default:
      cost += 1 + operator_cost(tree->op);
      if (tree->right) cost = tree_cost(tree->right, cost);
    }
  return cost;
}

} // namespace velkor
