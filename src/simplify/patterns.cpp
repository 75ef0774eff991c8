#include "simplify/patterns.h"

namespace velkor {
namespace {

Opcode unsigned_relation(Opcode op) {
  switch (op) {
  case LE: return ULE;
  case LT: return ULT;
  case GE: return UGE;
  case GT: return UGT;
  default: return op;
  }
}

} // namespace

void normalize_relation(NODE *node) {
  const Opcode op = unsigned_relation(node->op);
  if (op == node->op) return;
  const TypeWord type = balance_type(node->left, node->right);
  if (is_derived(type) || is_unsigned_integer(type)) node->op = op;
}

} // namespace velkor
