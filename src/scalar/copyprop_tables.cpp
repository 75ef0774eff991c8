// The assignments whose values are available, and the last store.
#include "scalar/copyprop_tables.h"

#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "diag/dump.h"
#include "scalar/copyprop_state.h"
#include "scalar/tree_cost.h"
#include "scalar/value_copies.h"
#include "simplify/patterns.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace velkor {
namespace {

constexpr int most_cost_of_value = 100; // of tree_cost: a dearer one is worth its variable

struct Tables {
  std::vector<NODE *> available_ASGs;                  // oldest first; none: dropped
  std::unordered_map<const SYM *, std::size_t> newest; // by the variable that is assigned
  std::vector<std::size_t> memory_values;              // those that read memory
  std::vector<std::size_t> temporaries;                // those of temporaries for constants
  NODE *last_indirect_ASG = nullptr;
};
Tables tables;

// x = (y = e): the assignment of e.
const NODE *value_source(const NODE *assignment) {
  while (passes_value_on(assignment))
    assignment = assignment->right;
  return assignment;
}

bool is_address_of_extern(const NODE *value) {
  return value->op == ADDRESS && value->left->op == NAME && value->left->u.sym->sclass == C_EXTDEF;
}

// An enumeration may be narrower than the int that stands for its values.
bool fits_enumeration(const NODE *target, const NODE *value) {
  if (value->op == ICON) return true;
  const bool is_object = value->op == NAME || value->op == DEREF;
  if (is_object && value_width(value->type) <= value_width(target->type)) return true;
  return value_width(target->type) == 32 && is_integer(value->type) && value->type != LONG &&
         value->type != UNSIGNED_LONG;
}

bool can_be_available(const NODE *target, const NODE *value) {
  if (!is_scalar(target->type) || !is_scalar(value->type)) return false;
  if (value->op == IDENTITY) return false;
  if (value->op == PCONV && value->left->op == ICON && value->left->u.lval != 0) return false;
  if (!is_stable(value, target->u.sym)) return false;
  if (options.opt_externs_volatile && is_address_of_extern(value)) return false;
  if (tree_cost(value, 0) > most_cost_of_value) return false;
  return target->type != ENUM || fits_enumeration(target, value);
}

void drop(std::size_t place) {
  NODE *&assignment = tables.available_ASGs[place];
  const auto found = tables.newest.find(assignment->left->u.sym);
  if (found != tables.newest.end() && found->second == place) tables.newest.erase(found);
  assignment = erase_tree(assignment);
}

// Whoever copied the variables of this assignment copied a value that is no longer in memory.
void lose_targets(const NODE *assignment) {
  for (; assignment->op == ASSIGN; assignment = assignment->right) {
    const NODE *target = assignment->left;
    if (target->op == NAME && !is_stale(target)) target->u.sym->key = 0;
  }
}

bool is_current(const NODE *name) {
  return name->nsize != 0 && static_cast<std::uint32_t>(name->nsize) == version_of(name->u.sym);
}

void show_replacement(const NODE *name, const NODE *value) {
  debug_print("\n\t========== (%d,%d) 'lookup_ASG' is replacing this:\n", cp.line2, cp.line);
  dump_tree(name);
  debug_print("\n\t========== with the following substitute:\n");
  dump_tree(value);
  debug_print("\n\t=========================================\n");
}

// A store into a bit field cuts the value: only zero is known to come back.
bool fits_bit_field(const NODE *place, const NODE *value) {
  return !is_bit_field_access(place) || (value->op == ICON && value->u.lval == 0);
}

bool can_be_last_store(const NODE *assignment) {
  const NODE *place = assignment->left;
  const NODE *value = assignment->right;
  if (assignment->op != ASSIGN || is_volatile_node(place) || place->op == MEMBER) return false;
  if (!is_scalar(place->type) || !is_scalar(value->type)) return false;
  if (place->op == DEREF && place->right) return false;
  if (!is_stable(place->left, nullptr) || !is_stable(value, nullptr)) return false;
  if (value->op == NAME && value->u.sym->level == 0) return false;
  if (options.opt_externs_volatile && is_address_of_extern(value)) return false;
  return fits_bit_field(place, value);
}

// x = y = e: has the store to y changed memory since e was computed?
bool stores_on_the_way(const NODE *assignment) {
  for (; passes_value_on(assignment); assignment = assignment->right) {
    const NODE *inner = assignment->right->left;
    if (inner->op != NAME || inner->u.sym->fcp_flag) return true;
  }
  return false;
}

} // namespace

void offer_assignment(const NODE *assignment) {
  const NODE *target = assignment->left;
  const NODE *value = value_source(assignment)->right;
  if (!can_be_available(target, value)) return;
  const bool reads_memory = !is_stable(value, nullptr);
  // In x = (*p = *q + 1), what *q reads may not be there any more.
  if (reads_memory && stores_on_the_way(assignment)) return;
  const std::size_t place = tables.available_ASGs.size();
  tables.available_ASGs.push_back(copy_tree(assignment));
  tables.newest[target->u.sym] = place;
  if (reads_memory) tables.memory_values.push_back(place);
  if (is_constant_temporary(target->u.sym)) tables.temporaries.push_back(place);
}

// In x = y = e, y stands in where e has changed since.
KnownValue lookup_ASG(const NODE *name) {
  const auto found = tables.newest.find(name->u.sym);
  if (found == tables.newest.end()) return {};
  const NODE *assignment = tables.available_ASGs[found->second];
  if (!is_current(assignment->left)) return {};
  const NODE *fallback = nullptr;
  const NODE *value = assignment->right;
  for (; value->op == ASSIGN && value->type == name->type; value = value->right) {
    const NODE *inner = value->left;
    if (inner->op == NAME && inner->type == name->type && inner->u.sym != name->u.sym &&
        !is_stale(inner))
      fallback = inner;
  }
  if (value->op == ASSIGN || is_stale(value) || trees_equal(value, name, false)) value = fallback;
  if (!value) return {};
  if (state.debug_file) show_replacement(name, value);
  return {value, assignment->left->type};
}

void offer_store(const NODE *assignment) {
  forget_store();
  if (!can_be_last_store(assignment)) return;
  const NODE *place = assignment->left;
  NODE *value = make_conversion(place->type, copy_tree(assignment->right));
  tables.last_indirect_ASG = make_node(ASSIGN, copy_tree(place), value, place->type);
}

const NODE *lookup_store(const NODE *access) {
  const NODE *store = tables.last_indirect_ASG;
  if (!store || !trees_equal(store->left, access, false)) return nullptr;
  return is_stale(store->left) || is_stale(store->right) ? nullptr : store->right;
}

void forget_store() {
  if (tables.last_indirect_ASG) tables.last_indirect_ASG = erase_tree(tables.last_indirect_ASG);
}

void forget_memory_values() {
  for (const std::size_t place : tables.memory_values) {
    const NODE *assignment = tables.available_ASGs[place];
    if (!assignment) continue;
    lose_targets(assignment);
    drop(place);
  }
  tables.memory_values.clear();
}

void forget_available() {
  for (NODE *assignment : tables.available_ASGs)
    erase_tree(assignment);
  tables.available_ASGs.clear();
  tables.newest.clear();
  tables.memory_values.clear();
  tables.temporaries.clear();
  forget_store();
}

void forget_constant_temporaries() {
  for (const std::size_t place : tables.temporaries)
    if (tables.available_ASGs[place]) drop(place);
  tables.temporaries.clear();
}

} // namespace velkor
