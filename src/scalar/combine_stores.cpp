#include "scalar/combine_stores.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/conversions.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "simplify/compound.h"
#include "simplify/simplify.h"

#include <cstdlib>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Does a read touch memory that may overlap the place L?

constexpr std::int32_t byte_bits = 8;

// Bits that an access touches.
std::int32_t access_size(const NODE *access) {
  return access->op == NAME || access->op == DEREF ? access->depnum : value_width(access->type);
}

// An address as base plus bytes.
struct Address {
  const NODE *base;
  std::int32_t bytes;
};

Address split_address(const NODE *tree) {
  if (tree->op == ADD && tree->right->op == ICON) return {tree->left, tree->right->u.lval};
  return {tree, 0};
}

// Two accesses of one plain type from the same base, at least a type's width apart.
bool are_apart(const NODE *a, const NODE *b) {
  if (b->op != DEREF || a->type != b->type || is_derived(a->type)) return false;
  const Address first = split_address(a->left);
  const Address second = split_address(b->left);
  const std::int64_t distance = std::int64_t{first.bytes} - second.bytes;
  return std::abs(distance) * byte_bits >= type_width(a->type) &&
         trees_equal(first.base, second.base, false);
}

// A named object and the place: sizes and kinds tell them apart, as far as the language forbids
// access through another type; a char may lie over anything.
bool name_overlaps(const NODE *name, const NODE *place) {
  if (!name->u.sym->fcp_flag) return false;
  const std::int32_t size = access_size(name);
  const std::int32_t place_size = access_size(place);
  if (size == byte_bits || place_size == byte_bits) return true;
  return size == place_size && is_pointer(name->type) == is_pointer(place->type);
}

bool overlaps(const NODE *tree, const NODE *place) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case DEREF: return !are_apart(tree, place) && !trees_equal(tree, place, false);
    case MEMBER:
    case ARROW: return !trees_equal(tree, place, false);
    case ADDRESS:
    case ARGREF: return !addressed_symbol(tree);
    case NAME: return name_overlaps(tree, place) && !trees_equal(tree, place, false);
    default:
      if (tree->right && overlaps(tree->right, place)) return true;
    }
  return false;
}

// ------------------------------------------------------------------------------------------------
// Which pairs

bool is_plain_or_compound(const NODE *node) {
  return node->op == ASSIGN || asgop_base(node->op) != ILLOP;
}

// Memory that is addressed as a whole, and not the registers that locals may live in.
bool is_memory(const NODE *place) {
  if (!is_scalar(place->type) || is_bit_field_access(place)) return false;
  switch (place->op) {
  case NAME: return place->u.sym->sclass != C_AUTO;
  case DEREF:
  case MEMBER:
  case ARROW: return true;
  default: return false;
  }
}

bool can_combine(const NODE *first, const NODE *second) {
  if (!is_plain_or_compound(first) || !is_plain_or_compound(second)) return false;
  const NODE *place = first->left;
  if (!is_memory(place) || !trees_equal(place, second->left, false)) return false;
  if (has_side_effects(first->right) || has_side_effects(second->right)) return false;
  return !overlaps(second->right, place) && !overlaps(place->left, place) && !is_param_copy(first);
}

// ------------------------------------------------------------------------------------------------
// L op= J; L op= K  ->  L op= J op K

bool can_fold(const NODE *first, const NODE *second) {
  if (first->op != second->op || first->right->op != ICON || second->right->op != ICON)
    return false;
  if (!is_integer(first->right->type) || !is_integer(second->right->type)) return false;
  if (is_floating(first->left->type)) return false; // each of two roundings counts
  switch (first->op) {
  case ASG_ADD:
  case ASG_MULTIPLY:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR: return true;
  default: return false;
  }
}

// second is taken apart.
void fold_constants(NODE *first, NODE *second) {
  NODE *sum = make_node(asgop_base(first->op), first->right, second->right,
                        balance_type(first->right, second->right));
  second->right = nullptr;
  erase_tree(second);
  first->right = simplify_node(sum);
  if (state.debug_file) debug_print("\t...................to get %s\n", tree2infix(first));
}

// ------------------------------------------------------------------------------------------------
// L = a; L = f(L)  ->  T = a; L = f(T)

// Each read of the place becomes one of the temporary; simplified bottom-up. Under an address
// operator nothing is read but what the address is computed from.
NODE *replace_reads(NODE *tree, const NODE *place, SYM *temporary) {
  if (tree->op == place->op && trees_equal(tree, place, false)) {
    erase_tree(tree);
    return make_name(temporary);
  }
  if ((tree->op == ADDRESS || tree->op == ARGREF) && addressed_symbol(tree)) return tree;
  if (tree->left) tree->left = replace_reads(tree->left, place, temporary);
  if (tree->right && tree->op != MEMBER && tree->op != ARROW)
    tree->right = replace_reads(tree->right, place, temporary);
  return simplify_node(tree);
}

void keep_value_in_temporary(NODE *first, NODE *second) {
  first = expand_compound_assignment(first);
  second = expand_compound_assignment(second);
  NODE *place = first->left;
  SYM *temporary = make_temp('T', -1, access_size(place), place->type);
  second->right = replace_reads(second->right, place, temporary);
  erase_tree(place);
  first->left = make_name(temporary);
  if (!state.debug_file) return;
  debug_print("\t...................to get %s\n", tree2infix(first));
  debug_print("\t......................and %s\n", tree2infix(second));
}

// Combines the cell's statement with the next one; returns whether the next one is gone.
bool combine_with_next(LIST *cell) {
  NODE *first = cell->item;
  NODE *second = cell->next->item;
  if (state.debug_file) {
    debug_print("\n\tCombining the assignments %s\n", tree2infix(first));
    debug_print("\t......................and %s\n", tree2infix(second));
  }
  if (!can_fold(first, second)) {
    keep_value_in_temporary(first, second);
    return false;
  }
  LIST *gone = cell->next;
  cell->next = gone->next;
  give_list(gone);
  fold_constants(first, second);
  return true;
}

} // namespace

void combine_asgs_to_memory() {
  debug_print("\n\n\t\t\t---------- ENTERING 'combine_asgs_to_memory' -------\n");
  flag_addressed_objects(AddressUse::ANY);
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell && cell->next;) {
      const bool is_same_pair_open =
          can_combine(cell->item, cell->next->item) && combine_with_next(cell);
      if (!is_same_pair_open) cell = cell->next;
    }
}

} // namespace velkor
