// The function made ready for value numbering.
//
// All numbers are cleared. Objects of file level and static locals are accessed through their
// address from here on, so that a store through a pointer and one by name meet in the same tables.
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/state.h"
#include "core/symbols.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"
#include "scalar/split_commas.h"
#include "simplify/simplify.h"
#include "storage/cliques.h"

namespace velkor {
namespace {

constexpr std::uint32_t seen = 1; // in SYM::key, while the function is scanned
constexpr TypeWord node_type_mask = 0xFFFF;
constexpr int leave_addresses_flag = 8; // debug flag: addresses stay as they are

void scan_tree(NODE *tree);

bool is_absolute_address(const NODE *address) {
  return (address->op == PCONV || address->op == ISP2CHAR) && address->left->op == ICON;
}

bool shall_reassociate(TypeWord pointed_to) {
  return is_scalar(pointed_to) && !options.debug_flag[leave_addresses_flag];
}

// Any store through a pointer may reach what the file's other functions, or other files, can name.
void note_global(SYM *sym) {
  if (is_const_symbol(sym) || is_register_symbol(sym)) return;
  switch (sym->sclass) {
  case C_EXT:
  case C_EXTDEF:
  case C_USTATIC: sym->fcp_flag = 1; break;
  case C_STAT:
    if (sym->level == 0) sym->fcp_flag = 1;
    break;
  default: break;
  }
}

// x  ->  *&x, in place
void access_by_address(NODE *name) {
  const SYM *sym = name->u.sym;
  const TypeWord address_type = pointer_to(sym->stype) & node_type_mask;
  NODE *address = make_node(ADDRESS, copy_node(name), nullptr, address_type);
  address->left->type = static_cast<std::uint16_t>(sym->stype);
  if (name->type != (sym->stype & node_type_mask))
    address = make_node(PCONV, address, nullptr, pointer_to(name->type) & node_type_mask);
  name->op = DEREF;
  name->u.sym = nullptr;
  name->aux.text = nullptr;
  name->left = address;
}

// A name of an array stands for the whole array where no address operator is above it; such a
// store or read has no use for a number.
bool shall_access_by_address(const NODE *name) {
  const SYM *sym = name->u.sym;
  return (sym->level == 0 || sym->sclass == C_STAT) && !is_register_symbol(sym) &&
         !is_array(name->type) && !is_function(name->type);
}

// Returns whether the node has become something else, which is to be scanned in its place.
bool scan_name(NODE *name) {
  note_global(name->u.sym);
  name->u.sym->key = seen;
  if (name->u.sym->level == 0) {
    NODE *member = clique_rewrite(name);
    if (member->op != NAME) {
      if (member != name) *name = *member;
      return true;
    }
  }
  if (!shall_access_by_address(name)) return false;
  access_by_address(name);
  return true;
}

void scan_address(NODE *address) {
  NODE *object = address->left;
  for (; object->op == MEMBER; object = object->left) {
    object->nsize = 0;
    object->right->nsize = 0;
    object->right->u.sym->key = seen;
  }
  if (object->op != NAME) return scan_tree(object);
  object->nsize = 0;
  SYM *sym = object->u.sym;
  note_global(sym);
  sym->key = seen;
  if (is_scalar(sym->stype) && is_frame_class(sym->sclass)) local_cse.scalar_addresses_seen = true;
}

void scan_dereference(NODE *access) {
  if (is_scalar(access->type) && shall_reassociate(access->type))
    access->left = reassociate_address(access->left, access->type);
  if (is_absolute_address(access->left))
    access->left = make_node(IDENTITY, access->left, nullptr, access->left->type);
}

// Arguments are converted by nodes of their own, which are values like any other.
void scan_argument_conversion(NODE *node) {
  NODE *conversion = copy_node(node);
  conversion->op = is_pointer(node->type) ? PCONV : SCONV;
  node->left = simplify_node(conversion);
}

void scan_tree(NODE *tree) {
  for (; tree; tree = tree->left) {
    tree->nsize = 0;
    switch (tree->op) {
    case LABELDEF: return; // its operand is no tree
    case NAME:
      if (!scan_name(tree)) return;
      break;
    case ACONV: scan_argument_conversion(tree); break;
    case ADDRESS:
    case ARGREF: return scan_address(tree);
    case DEREF:
      scan_dereference(tree);
      if (tree->right) scan_tree(tree->right);
      break;
    case MEMBER:
    case ARROW: tree->right->nsize = 1; break;
    case ASSIGN:
      if (is_pointer(tree->type) && shall_reassociate(underived(tree->type)))
        tree->right = reassociate_address(tree->right, underived(tree->type));
      scan_tree(tree->right);
      break;
    case RETURN:
      scan_tree(tree->right);
      if (tree->left) tree->left->nsize = 1;
      return;
    case URETURN:
      if (tree->left) tree->left->nsize = 1;
      return;
    default:
      if (tree->right) scan_tree(tree->right);
    }
  }
}

void clear_symbols() {
  for (SYM *sym = state.global_syms; sym; sym = sym->next)
    sym->key = 0;
  for (SYM *chain : {state.misc_syms, state.static_syms, state.other_syms, state.scalar_syms})
    for (SYM *sym = chain; sym; sym = sym->next)
      sym->key = 0;
}

bool is_member_or_type(StorageClass sclass) {
  switch (sclass) {
  case C_MOS:
  case C_STRTAG:
  case C_MOU:
  case C_UNTAG:
  case C_MOE:
  case C_FIELD: return true;
  default: return false;
  }
}

void note_changeable(SYM *sym) {
  local_cse.lcse_kill_list = symlist_cons(sym, local_cse.lcse_kill_list);
}
void note_aliased(SYM *sym) {
  local_cse.lcse_aliased = symlist_cons(sym, local_cse.lcse_aliased);
}

void list_globals() {
  for (SYM *sym = state.global_syms; sym; sym = sym->next) {
    if (sym->key == 0) continue;
    if (is_register_symbol(sym)) sym->fcp_flag = 0;
    if (!is_member_or_type(sym->sclass) && !is_const_symbol(sym) && !is_function(sym->stype)) {
      note_changeable(sym);
      if (sym->fcp_flag) note_aliased(sym);
    }
    set_number(sym, new_number());
  }
}

void list_local(SYM *sym) {
  const bool is_static = sym->sclass == C_STAT || sym->sclass == C_USTATIC;
  if (is_static && sym->key != 0 && !is_const_symbol(sym))
    local_cse.lcse_statics = symlist_cons(sym, local_cse.lcse_statics);
  if (sym->fcp_flag) note_aliased(sym);
  const bool is_external = sym->sclass == C_EXT || sym->sclass == C_EXTDEF;
  if (is_external && !is_const_symbol(sym) && !is_function(sym->stype)) note_changeable(sym);
  sym->key = 0;
}

} // namespace

void scan_function() {
  flag_addressed_objects(AddressUse::ESCAPING);
  clear_symbols();
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next) {
      while (split_comma(cell)) {
      }
      scan_tree(cell->item);
    }
  list_globals();
  for (SYM *chain : {state.misc_syms, state.static_syms, state.other_syms, state.scalar_syms})
    for (SYM *sym = chain; sym; sym = sym->next)
      list_local(sym);
}

} // namespace velkor
