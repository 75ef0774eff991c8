#include "scalar/global_assignments.h"

#include "core/compare.h"
#include "core/escapes.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "diag/dump.h"
#include "scalar/value_copies.h"
#include "simplify/patterns.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace velkor {
namespace {

// While assignments are counted, SYM::key is their number; from this one on, the symbol has no one
// value.
constexpr std::uint32_t never_a_candidate = 1492;

struct GlobalAssignment {
  SYM *sym;
  NODE *tree; // a private assignment
  bool is_settled;
};

struct GlobalAssignments {
  std::vector<GlobalAssignment> entries;
  std::unordered_map<const SYM *, std::size_t> by_symbol;
};
GlobalAssignments global_ASGs;

GlobalAssignment *entry_of(const SYM *sym) {
  const auto found = global_ASGs.by_symbol.find(sym);
  return found == global_ASGs.by_symbol.end() ? nullptr : &global_ASGs.entries[found->second];
}

template <typename Routine> void for_each_statement(Routine routine) {
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next)
      routine(cell->item);
}

void clear_versions(NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == LABELDEF) return; // its operand is no tree
    if (tree->op == NAME) {
      tree->nsize = 0;
      tree->u.sym->key = 0;
    }
    if (tree->right) clear_versions(tree->right);
  }
}

// ------------------------------------------------------------------------------------------------
// Counting

bool can_have_one_value(const SYM *sym) {
  return sym->sclass == C_AUTO && !sym->fcp_flag && !is_volatile_symbol(sym) &&
         is_scalar(sym->stype);
}

// Can the value settle to a constant or an address?
bool is_candidate_value(const NODE *value) {
  switch (value->op) {
  case NAME: return value->u.sym->level != 1;
  case SCON:
  case ICON:
  case FCON: return true;
  case ADDRESS:
    return !options.opt_externs_volatile || value->left->op != NAME ||
           value->left->u.sym->sclass != C_EXTDEF;
  case PCONV: return value->left->op == ICON && value->left->u.lval == 0;
  default: return false;
  }
}

void collect(NODE *target, const NODE *value) {
  SYM *sym = target->u.sym;
  // What is stored is what is read back only in the type that both have.
  if (value->type != target->type || !is_candidate_value(value)) return;
  const GlobalAssignment *known = entry_of(sym);
  if (known) {
    if (sym->key == 2 && known->tree->left->type == target->type &&
        trees_equal(known->tree->right, value, false))
      sym->key = 1;
    return;
  }
  if (sym->key != 1) return;
  NODE *tree = make_node(ASSIGN, copy_node(target), copy_tree(value), target->type);
  global_ASGs.by_symbol[sym] = global_ASGs.entries.size();
  global_ASGs.entries.push_back({sym, tree, false});
}

void count_target(NODE *target, const NODE *value, bool track_constants) {
  SYM *sym = target->u.sym;
  sym->key += 1;
  if (track_constants && sym->key <= 2 && can_have_one_value(sym)) collect(target, value);
}

void count(NODE *tree, bool track_constants);

// x = y = e: e is counted once for all links of the chain.
void count_assignment(NODE *node, bool track_constants) {
  NODE *source = node;
  while (passes_value_on(source))
    source = source->right;
  count(source->right, track_constants);
  for (;; node = node->right) {
    if (node->left->op == NAME)
      count_target(node->left, source->right, track_constants);
    else
      count(node->left, track_constants);
    if (node == source) return;
  }
}

void count(NODE *tree, bool track_constants) {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case LABELDEF: // its operand is no tree
    case NAME:
    case BRANCH: return;
    case ASSIGN: return count_assignment(tree, track_constants);
    case ADDRESS:
    case ARGREF:
      if (SYM *sym = addressed_symbol(tree)) {
        sym->key = never_a_candidate;
        return;
      }
      break;
    case IF:
    case SWITCH: break; // the right side holds labels
    default:
      if (tree->right) count(tree->right, track_constants);
      if (is_assignment_like(tree) && tree->left->op == NAME)
        tree->left->u.sym->key = never_a_candidate;
    }
}

// ------------------------------------------------------------------------------------------------
// Settling

bool is_settled_value(const NODE *value) {
  while (value->op == PCONV || value->op == SCONV)
    value = value->left;
  return is_constant_or_name_address(value);
}

// Names with settled values are replaced; returns what stands in the tree's place.
NODE *put_values_in(NODE *tree, bool &changed) {
  if (tree->op == NAME) {
    const GlobalAssignment *known = entry_of(tree->u.sym);
    if (!known || !known->is_settled) return tree;
    changed = true;
    NODE *value = make_conversion(tree->type, copy_tree(known->tree->right));
    erase_node(tree);
    return value;
  }
  if (tree->right) tree->right = put_values_in(tree->right, changed);
  if (tree->left) tree->left = put_values_in(tree->left, changed);
  return tree;
}

bool try_to_settle(GlobalAssignment &entry) {
  if (entry.is_settled) return false;
  bool changed = false;
  entry.tree->right = put_values_in(entry.tree->right, changed);
  if (changed) entry.tree->right = simplify_tree(entry.tree->right);
  return entry.is_settled = is_settled_value(entry.tree->right);
}

using Readers = std::unordered_map<const SYM *, std::vector<std::size_t>>;

void note_readers(const NODE *tree, std::size_t reader, Readers &readers) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME) readers[tree->u.sym].push_back(reader);
    if (tree->right) note_readers(tree->right, reader, readers);
  }
}

void drop_unfit_entries() {
  std::vector<GlobalAssignment> fit;
  for (const GlobalAssignment &entry : global_ASGs.entries)
    if (entry.sym->key == 1)
      fit.push_back(entry);
    else
      erase_tree(entry.tree);
  global_ASGs.entries.swap(fit);
  global_ASGs.by_symbol.clear();
  for (std::size_t i = 0; i < global_ASGs.entries.size(); ++i)
    global_ASGs.by_symbol[global_ASGs.entries[i].sym] = i;
}

// Each settled value may settle those that read it; returns the entries in the order in which they
// settled.
std::vector<std::size_t> settle() {
  std::vector<GlobalAssignment> &entries = global_ASGs.entries;
  Readers readers;
  for (std::size_t i = 0; i < entries.size(); ++i)
    note_readers(entries[i].tree->right, i, readers);
  std::vector<std::size_t> settled;
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (try_to_settle(entries[i])) settled.push_back(i);
  for (std::size_t next = 0; next < settled.size(); ++next)
    for (const std::size_t reader : readers[entries[settled[next]].sym])
      if (try_to_settle(entries[reader])) settled.push_back(reader);
  return settled;
}

void show(const std::vector<std::size_t> &settled) {
  if (settled.empty() || !state.debug_file) return;
  debug_print("\n\t============== Globally constant assignments:\n");
  for (const std::size_t place : settled) {
    dump_tree(global_ASGs.entries[place].tree);
    debug_print("\n");
  }
  debug_print("\n\t============================================\n");
}

void show_replacement(const NODE *name, const NODE *value) {
  debug_print("\n\t============== (%d,%d) %s\n", cp.line2, cp.line,
              "'lookup_global_ASG' is replacing this:");
  dump_tree(name);
  debug_print("\n\t============== with the following substitute:\n");
  dump_tree(value);
  debug_print("\n\t=============================================\n");
}

} // namespace

void collect_global_ASGs(bool track_constants) {
  for_each_statement([](NODE *tree) { clear_versions(tree); });
  for_each_statement([track_constants](NODE *tree) { count(tree, track_constants); });
  drop_unfit_entries();
  show(settle());
  for_each_statement([](NODE *tree) { clear_versions(tree); });
}

KnownValue lookup_global_ASG(const NODE *name, bool can_force) {
  const SYM *sym = name->u.sym;
  if (sym->level < 2 || sym->fcp_flag) return {};
  if (!can_force && is_constant_temporary(sym)) return {};
  const GlobalAssignment *known = entry_of(sym);
  if (!known || !known->is_settled || known->tree->right->type != name->type) return {};
  if (state.debug_file) show_replacement(name, known->tree->right);
  return {known->tree->right, known->tree->left->type};
}

void forget_global_ASGs() {
  for (const GlobalAssignment &entry : global_ASGs.entries)
    erase_tree(entry.tree);
  global_ASGs = {};
}

} // namespace velkor
