// Which values are worth a temporary.
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"

namespace velkor {
namespace {

// Values that no temporary is made for: they take more than a register.
bool is_wide(TypeWord type) {
  return type == LONG || type == UNSIGNED_LONG || type == DOUBLE || type == LONG_DOUBLE;
}

bool worthwhile_name(const NODE *name) {
  const SYM *sym = name->u.sym;
  if (is_register_symbol(sym) || is_wide(name->type)) return false;
  return sym->sclass == C_EXT || sym->sclass == C_STAT || sym->sclass == C_EXTDEF ||
         sym->sclass == C_USTATIC;
}

// The address of a local is the frame's plus a constant.
bool worthwhile_address(const NODE *address) {
  const NODE *object = skip_marks(address->left);
  while (object->op == MEMBER)
    object = skip_marks(object->left);
  return object->op != NAME || object->u.sym->sclass != C_AUTO;
}

bool worthwhile_access(const NODE *access) {
  if (is_wide(access->type)) return false;
  const NODE *address = skip_marks(access->left);
  while (address->op == ADD && skip_marks(address->right)->op == ICON)
    address = skip_marks(address->left);
  if (address->op != ADDRESS) return true;
  const NODE *object = skip_marks(address->left);
  while (object->op == MEMBER)
    object = skip_marks(object->left);
  if (object->op != NAME) return true;
  return !is_frame_class(object->u.sym->sclass);
}

bool worthwhile_member(const NODE *access) {
  const SYM *member = access->right->u.sym;
  return member->size % 8 != 0 || member->offset % 8 != 0 || worthwhile_access(access);
}

bool worthwhile_conversion(const NODE *conversion) {
  const NODE *operand = skip_marks(conversion->left);
  const bool is_same_kind = (is_pointer(conversion->type) && is_pointer(operand->type)) ||
                            (is_integer(conversion->type) && is_integer(operand->type) &&
                             type_width(conversion->type) <= type_width(operand->type));
  if ((operand->op == NAME || operand->op == MEMBER) && is_same_kind)
    return cse_worthwhile(operand);
  return operand->op != ICON;
}

} // namespace

bool cse_worthwhile(const NODE *tree) {
  tree = skip_marks(tree);
  if (!is_scalar(tree->type)) return false;
  switch (tree->op) {
  case ICON: return false;
  case FCON: return tree->type == FLOAT;
  case NAME: return worthwhile_name(tree);
  case ADD:
    return !(is_pointer(tree->type) && skip_marks(tree->left)->op == NAME &&
             skip_marks(tree->right)->op == ICON);
  case ADDRESS:
  case ARGREF: return worthwhile_address(tree);
  case ARROW: return worthwhile_member(tree);
  case DEREF: return worthwhile_access(tree);
  case SCONV:
  case PCONV:
  case ISP2CHAR: return worthwhile_conversion(tree);
  default: return true;
  }
}

} // namespace velkor
