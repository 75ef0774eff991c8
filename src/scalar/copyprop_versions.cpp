// Versions of symbols, and what changes them.
#include "scalar/copyprop_state.h"

#include "core/escapes.h"
#include "core/fun.h"
#include "core/questions.h"
#include "scalar/copyprop_tables.h"

#include <algorithm>

namespace velkor {

CopyPropagation cp;

namespace {

// Set once, ahead of everything that this function does. The reader has taken const from automatic
// objects; those that have it were found by the passes to be set only at the function's entry.
bool never_changes(const SYM *sym) {
  return is_const_symbol(sym);
}

bool is_reachable(const SYM *sym) {
  return sym->fcp_flag && !never_changes(sym);
}

bool calls_may_change(const SYM *sym) {
  if (sym->level != 0 && sym->sclass != C_EXTDEF && sym->sclass != C_EXT) return false;
  return !never_changes(sym) && !is_function(sym->stype);
}

bool is_local_static(const SYM *sym) {
  return sym->sclass == C_STAT && sym->level != 0;
}

// The base of an address below conversions and a constant offset.
const NODE *address_root(const NODE *address) {
  for (;;)
    switch (address->op) {
    case PCONV:
    case ISP2CHAR: address = address->left; continue;
    case ADD:
      if (address->right->op != ICON) return address;
      address = address->left;
      continue;
    default: return address;
    }
}

bool is_fixed_access(const NODE *access) {
  if (!access_is_constant(access)) return false;
  const NODE *root = address_root(access->left);
  return root->op == ADDRESS && root->left->op == NAME;
}

bool is_fixed_member(const NODE *member) {
  const NODE *object = member;
  while (object->op == MEMBER)
    object = object->left;
  return object->op == NAME && access_is_constant(member);
}

// The symbol whose object an address lies in; none where it is a pointer's value.
SYM *address_base(const NODE *address) {
  while (is_pointer(address->type))
    switch (address->op) {
    case ADDRESS: return addressed_symbol(address);
    case ADD: address = is_pointer(address->left->type) ? address->left : address->right; break;
    case SUBTRACT:
    case PCONV:
    case ISP2CHAR:
    case ACONV: address = address->left; break;
    default: return nullptr;
    }
  return nullptr;
}

SYM *place_base(const NODE *place) {
  while (place->op == MEMBER)
    place = place->left;
  switch (place->op) {
  case NAME: return place->u.sym;
  case DEREF:
  case ARROW: return address_base(place->left);
  default: return nullptr;
  }
}

// Memory changes where nobody can tell; a call may also come back to the function itself.
void kill_memory(bool aliased, bool statics) {
  forget_store();
  forget_memory_values();
  if (aliased) cp.lost_aliased = cp.version;
  if (statics) cp.lost_statics = cp.version;
}

const NODE *argument_list(const NODE *call) {
  switch (call->op) {
  case CALL:
  case STCALL: return call->right;
  case XCALL:
  case MEMCPY:
  case ICALL: return call->left;
  default: return nullptr;
  }
}

void kill_argument(const NODE *argument) {
  if (SYM *base = address_base(argument)) base->key = 0;
}

bool is_constant_leaf(const NODE *tree) {
  return tree->op == ICON || tree->op == FCON || tree->op == SCON;
}

bool may_skip_right(Opcode op) {
  return op == CONDITIONAL || op == ALTERNATIVES || op == LOGICAL_AND || op == LOGICAL_OR;
}

} // namespace

std::uint32_t version_of(const SYM *sym) {
  std::uint32_t lost = cp.lost;
  if (is_reachable(sym)) lost = std::max(lost, cp.lost_aliased);
  if (calls_may_change(sym)) lost = std::max(lost, cp.lost_at_calls);
  if (is_local_static(sym)) lost = std::max(lost, cp.lost_statics);
  return sym->key > lost ? sym->key : 0;
}

std::uint32_t new_version(SYM *sym) {
  return sym->key = ++cp.version;
}

std::uint32_t ensure_version(SYM *sym) {
  const std::uint32_t version = version_of(sym);
  return version != 0 ? version : new_version(sym);
}

bool is_followed(const SYM *sym) {
  switch (sym->sclass) {
  case C_AUTO:
  case C_EXT:
  case C_STAT:
  case C_EXTDEF:
  case C_USTATIC: return true;
  default: return false;
  }
}

// The address of an object counts as changed when the object is: it stands for loads from it.
bool is_stale(const NODE *tree) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case NAME: {
      if (never_changes(tree->u.sym)) return false;
      const auto seen = static_cast<std::uint32_t>(tree->nsize);
      return seen == 0 || seen != version_of(tree->u.sym);
    }
    case MEMBER:
      if (is_fixed_member(tree)) return false;
      break;
    case DEREF:
    case ARROW:
      if (tree->op == DEREF && tree->right && is_stale(tree->right)) return true;
      if (is_fixed_access(tree)) return false;
      break;
    default:
      if (tree->right && is_stale(tree->right)) return true;
    }
  return false;
}

bool is_stable(const NODE *tree, const SYM *excluded) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case NAME:
      return tree->u.sym != excluded && tree->u.sym->level != 1 && !is_volatile_node(tree) &&
             !is_volatile_symbol(tree->u.sym);
    case ADDRESS: return addressed_symbol(tree) != nullptr;
    case ARGREF:
    case ICALL: return false;
    case MEMBER:
      if (is_volatile_node(tree)) return false;
      break;
    case DEREF:
    case ARROW:
      if ((!excluded || excluded->fcp_flag) && !access_is_constant(tree)) return false;
      if (is_volatile_node(tree)) return false;
      if (tree->op == DEREF && tree->right && !is_stable(tree->right, excluded)) return false;
      break;
    default:
      if (op_effect(tree->op) != PURE) return false;
      if (tree->right && !is_stable(tree->right, excluded)) return false;
    }
  return true;
}

void kill_place(const NODE *place) {
  SYM *base = place_base(place);
  if (!base) return kill_memory(true, false);
  base->key = 0;
  if (base->fcp_flag) kill_memory(false, false);
}

// Text for the assembler may do whatever a function of another file may do.
void kill_by_call(const NODE *call) {
  cp.lost_at_calls = cp.version;
  kill_memory(true, call->op == ASM || call_may_reenter(call));
  const NODE *list = argument_list(call);
  for (; list && list->op == COMMA; list = list->left)
    kill_argument(list->right);
  if (list) kill_argument(list);
}

bool acts_as_call(const NODE *node) {
  switch (node->op) {
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL:
  case XCALL:
  case UXCALL:
  case ICALL:
  case MEMCPY: return true;
  case ASM: return !is_comment_asm(node);
  default: return false;
  }
}

bool is_assignment_like(const NODE *node) {
  return op_effect(node->op) == ASSIGNS || node->op == ARASG;
}

void kill_ahead(const NODE *tree, bool nested) {
  while (tree) {
    if (is_assignment_like(tree)) {
      kill_ahead(tree->left, true);
      if (nested) kill_place(tree->left);
      tree = tree->right;
    } else if (acts_as_call(tree)) {
      const NODE *arguments = argument_list(tree);
      if (tree->left && tree->left != arguments) kill_ahead(tree->left, true);
      if (nested) kill_by_call(tree);
      tree = arguments;
    } else {
      switch (tree->op) {
      case LABELDEF: return; // its operand is no tree
      case MEMBER:
      case ARROW:
      case SWITCH:
      case IF: tree = tree->left; continue;
      case LOOP:
      case INITLOOP: tree = tree->right; continue;
      default: break;
      }
      if (tree->right && !is_constant_leaf(tree->right)) {
        kill_ahead(tree->left, true);
        nested = nested || may_skip_right(tree->op);
        tree = tree->right;
      } else
        tree = tree->left;
    }
  }
}

} // namespace velkor
