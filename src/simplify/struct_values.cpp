#include "simplify/struct_values.h"

#include "core/nodes.h"
#include "simplify/patterns.h"
#include "simplify/sequencing_steps.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

bool is_tag(const SYM *sym) {
  return sym->sclass == C_STRTAG || sym->sclass == C_UNTAG;
}

// A struct or union as a whole; unions are assigned by the same opcode.
NODE *make_struct_assign(NODE *target, NODE *value, SYM *tag, std::int32_t size) {
  NODE *node = make_node(STASG, target, value, target->type);
  node->u.sym = tag ? tag : (target->op == NAME ? target->u.sym : nullptr);
  node->depnum = size;
  return node;
}

// Can U& be put over it? A member of a call's result stands nowhere.
bool stands_in_memory(const NODE *tree) {
  while (tree->op == MEMBER)
    tree = tree->left;
  switch (tree->op) {
  case STCALL:
  case USTCALL:
  case CALL:
  case UCALL:
  case XCALL:
  case UXCALL: return false;
  default: return true;
  }
}

NODE *address_of_object(NODE *tree) {
  if (tree->op == MEMBER && !stands_in_memory(tree)) {
    tree->left = address_of_value(tree->left);
    tree->op = ARROW;
    tree = simplify_node(tree);
    if (tree->op == COMMA_OP) return address_of_value(tree);
  }
  return simplify_node(make_node(ADDRESS, tree, nullptr, pointer_to(tree->type)));
}

NODE *address_of_conditional(NODE *tree) {
  NODE *arms = tree->right;
  const TypeWord type = pointer_to(tree->type);
  arms->left = address_of_value(arms->left);
  arms->right = address_of_value(arms->right);
  set_type(arms, type);
  set_type(tree, type);
  arms->depnum = tree->depnum = pointer_width;
  return tree;
}

NODE *address_of_comma(NODE *tree) {
  tree->right = address_of_value(tree->right);
  set_type(tree, tree->right->type);
  tree->depnum = pointer_width;
  return tree;
}

// a = b  ->  ((S = &a , *S = b) , S)
NODE *address_of_assignment(NODE *tree) {
  SYM *tag = struct_value_tag(tree);
  SYM *symbol = sequencing::new_temporary(pointer_to(tree->type), pointer_width, tag);
  NODE *access = make_node(DEREF, make_name(symbol), nullptr, tree->type);
  access->depnum = struct_value_size(tree->left);
  if (access->depnum < 0) access->depnum = struct_value_size(tree);
  access->qual = tree->left->qual;
  NODE *pointer = make_assign(make_name(symbol), address_of_value(tree->left));
  tree->left = access;
  return make_comma(make_comma(pointer, tree), make_name(symbol));
}

// v  ->  (S = v , &S)
NODE *address_of_copy(NODE *tree) {
  SYM *tag = struct_value_tag(tree);
  const TypeWord type = tree->type;
  const std::int32_t size = tree->depnum > 0 ? tree->depnum : struct_value_size(tree);
  SYM *symbol = sequencing::new_temporary(type, size, tag);
  NODE *copy = is_struct_or_union(type)
                   ? make_struct_assign(make_name(symbol), tree, tag, symbol->size)
                   : make_assign(make_name(symbol), tree);
  return make_comma(copy, make_node(ADDRESS, make_name(symbol), nullptr, pointer_to(type)));
}

} // namespace

NODE *address_of_value(NODE *tree) {
  switch (tree->op) {
  case NAME:
  case DEREF:
  case MEMBER:
  case ARROW: return address_of_object(tree);
  case CONDITIONAL: return address_of_conditional(tree);
  case COMMA_OP: return address_of_comma(tree);
  case STASG: return address_of_assignment(tree);
  default: return address_of_copy(tree);
  }
}

std::int32_t struct_value_size(const NODE *tree) {
  for (;;)
    switch (tree->op) {
    case COMMA_OP: tree = tree->right; continue;
    case ASSIGN: tree = tree->left; continue;
    case CONDITIONAL: {
      const std::int32_t size = struct_value_size(tree->right->left);
      if (size >= 0) return size;
      tree = tree->right->right;
      continue;
    }
    case NAME:
    case STASG:
    case STARG:
    case STCALL:
    case USTCALL: return tree->u.sym ? tree->u.sym->size : -1;
    case MEMBER:
    case ARROW: return tree->right->u.sym->size;
    case DEREF:
    case ARASG: return tree->depnum;
    default: return -1;
    }
}

SYM *struct_value_tag(const NODE *tree) {
  for (;;)
    switch (tree->op) {
    case COMMA_OP: tree = tree->right; continue;
    case ASSIGN: tree = tree->left; continue;
    case CONDITIONAL: {
      if (SYM *tag = struct_value_tag(tree->right->left)) return tag;
      tree = tree->right->right;
      continue;
    }
    case NAME:
    case STASG:
    case STARG:
    case STCALL:
    case USTCALL:
      if (!tree->u.sym) return nullptr;
      return is_tag(tree->u.sym) ? tree->u.sym : tree->u.sym->tag;
    case MEMBER:
    case ARROW: return tree->right->u.sym->tag;
    default: return nullptr;
    }
}

} // namespace velkor
