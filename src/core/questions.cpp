#include "core/questions.h"

#include "core/options.h"

#include <cctype>

namespace velkor {
namespace {

bool is_dotted_name(const NODE *tree) {
  while (tree->op == MEMBER)
    tree = tree->left;
  return tree->op == NAME;
}

bool is_non_auto_class(StorageClass sclass) {
  switch (sclass) {
  case C_EXT:
  case C_STAT:
  case C_EXTDEF:
  case C_MOS:
  case C_MOU:
  case C_USTATIC:
  case C_FIELD: return true;
  default: return false;
  }
}

std::uint8_t volatile_bit(TypeWord type) {
  return is_derived(type) ? 32 : 2;
}

const NODE *skip_conversions(const NODE *tree) {
  while (tree->op == SCONV || tree->op == PCONV || tree->op == ISP2CHAR)
    tree = tree->left;
  return tree;
}

// An object that lives through the whole run and that the program promised not to change. What C
// calls const is weaker for automatic objects, which begin anew, and for what a pointer reaches.
bool is_constant_object(const NODE *name) {
  if (!is_const_node(name)) return false;
  switch (name->u.sym->sclass) {
  case C_EXT:
  case C_STAT:
  case C_EXTDEF:
  case C_USTATIC:
  case C_STATREG:
  case C_EXTREG: return true;
  default: return false;
  }
}

// Does the address lie in a literal or in a constant object?
bool points_at_constant(const NODE *address) {
  for (;;)
    switch (address->op) {
    case SCON: return true;
    case ADDRESS:
      for (address = address->left; address->op == MEMBER;)
        address = address->left;
      return address->op == NAME && is_constant_object(address);
    case ADD: address = is_pointer(address->left->type) ? address->left : address->right; continue;
    case SUBTRACT:
    case PCONV:
    case ISP2CHAR: address = address->left; continue;
    default: return false;
    }
}

} // namespace

bool is_constant_tree(const NODE *tree) {
  for (;;)
    switch (tree->op) {
    case MEMBER:
    case SCONV:
    case PCONV:
    case IDENTITY: tree = tree->left; continue;
    case ICON:
    case FCON:
    case SCON: return true;
    case ADDRESS:
    case ARGREF:
      if (is_dotted_name(tree->left)) return true;
      tree = tree->left;
      continue;
    case NAME: return is_constant_object(tree);
    case DEREF:
    case ARROW:
      if (!is_const_node(tree) || !points_at_constant(tree->left)) return false;
      if (tree->op == DEREF && tree->right && !is_constant_tree(tree->right)) return false;
      tree = tree->left;
      continue;
    default:
      if (op_effect(tree->op) != PURE || !tree->left) return false;
      if (tree->right && !is_constant_tree(tree->right)) return false;
      tree = tree->left;
      continue;
    }
}

bool access_is_constant(const NODE *access) {
  if (is_volatile_node(access)) return false;
  while (access->op == MEMBER)
    access = access->left;
  switch (access->op) {
  case NAME: return is_constant_object(access);
  case DEREF:
  case ARROW: return !is_volatile_node(access) && points_at_constant(access->left);
  default: return false;
  }
}

bool has_side_effects(NODE *tree) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case ADDRESS:
      if (is_dotted_name(tree->left)) return false;
      break;
    case NAME: return is_volatile_node(options.opt_all_volatile ? refresh_qual(tree) : tree);
    case DEREF:
    case MEMBER:
    case ARROW:
      if (is_volatile_node(options.opt_all_volatile ? refresh_qual(tree) : tree)) return true;
      if (tree->op == DEREF && tree->right && has_side_effects(tree->right)) return true;
      break;
    default:
      if (op_effect(tree->op) != PURE) return true;
      if (tree->right && has_side_effects(tree->right)) return true;
    }
  return false;
}

bool is_comment_asm(const NODE *node) {
  if (node->op != ASM) return false;
  if (node->u.lval == '/') return true;
  const char *text = node->aux.text;
  while (std::isspace(static_cast<unsigned char>(*text)))
    ++text;
  return *text == ';';
}

bool is_param_copy(const NODE *node) {
  if (node->op == PCOMMA) return true;
  if (node->op != ASSIGN || node->left->op != NAME) return false;
  const NODE *source = skip_conversions(node->right);
  if (source->op != NAME) return false;
  return node->left->u.sym->parameter == source->u.sym;
}

NODE *refresh_qual(NODE *node) {
  switch (node->op) {
  case NAME: {
    SYM *sym = node->u.sym;
    if (options.opt_all_volatile && is_non_auto_class(sym->sclass))
      sym->squal |= volatile_bit(sym->stype);
    node->qual = static_cast<std::uint8_t>(sym->squal);
    return node;
  }
  case DEREF:
    if (options.opt_all_volatile) node->qual |= volatile_bit(node->type);
    return node;
  case MEMBER: node->qual |= node->left->qual | node->right->qual; return node;
  case ARROW: {
    // The pointer's qualifiers move down one derivation.
    const unsigned pointer_qual = node->left->qual;
    node->qual |= static_cast<std::uint8_t>((pointer_qual & 15) | ((pointer_qual >> 2) & 240)) |
                  node->right->qual;
    return node;
  }
  default: return node;
  }
}

} // namespace velkor
