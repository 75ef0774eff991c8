#include "scalar/value_copies.h"

#include "simplify/patterns.h"

namespace velkor {

NODE *replace_name_by_value(NODE *name, NODE *value, TypeWord target_type) {
  // Where the variable is read as another type than the one stored, the store's conversion counts:
  // it may cut what the read's alone would keep.
  if (name->type != target_type) value = make_conversion(target_type, value);
  name->op = is_pointer(name->type) ? PCONV : SCONV;
  name->left = value;
  name->right = nullptr;
  name->u.lval = 0;
  name->aux.text = nullptr;
  name->depnum = -1;
  return simplify_node(name);
}

bool is_pointer_step(const NODE *assignment) {
  if (assignment->op != ASSIGN || assignment->left->op != NAME || !is_pointer(assignment->type))
    return false;
  const SYM *sym = assignment->left->u.sym;
  const NODE *sum = assignment->right;
  return sym->sclass == C_AUTO && is_sum_or_difference(sum) && sum->right->op == ICON &&
         is_name_of(sum->left, sym);
}

} // namespace velkor
