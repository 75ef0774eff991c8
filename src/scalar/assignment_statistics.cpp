#include "scalar/assignment_statistics.h"

#include "core/escapes.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "diag/infix.h"
#include "scalar/value_copies.h"

#include <string_view>

namespace velkor {
namespace {

constexpr std::int32_t not_followed = -1;
constexpr std::int32_t several = 2;

void reset_symbols() {
  for (SYM *sym = state.scalar_syms; sym; sym = sym->next) {
    sym->count = 0;
    sym->init = nullptr;
    sym->key = 0;
    sym->fcp_flag = 0;
  }
  // The analysis of live variables numbers static locals in the same field.
  for (SYM *chain : {state.static_syms, state.other_syms, state.misc_syms})
    for (SYM *sym = chain; sym; sym = sym->next)
      sym->count = not_followed;
}

// ------------------------------------------------------------------------------------------------
// Counting. While it lasts, init is the assignment in the function's trees, and key counts uses.

void count_tree(NODE *tree);

bool is_direct_call(const NODE *node) {
  switch (node->op) {
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL: return node->left->op == ADDRESS && node->left->left->op == NAME;
  default: return false;
  }
}

bool is_assignment(const NODE *node) {
  return op_effect(node->op) == ASSIGNS || node->op == ARASG;
}

void count_use(const NODE *name) {
  SYM *sym = name->u.sym;
  if (sym->count >= 0) sym->key += 1;
  if (!is_function(sym->stype)) return;
  std::string_view text = sym->name;
  if (!text.empty()) text.remove_prefix(1); // the underscore of the linker names
  fun_find_or_add(text)->flags |= FUN_is_anonymous;
}

// Returns whether the operand names an object.
bool count_address(const NODE *address) {
  SYM *sym = addressed_symbol(address);
  if (!sym) return false;
  sym->fcp_flag = 1;
  if (sym->count >= 0) sym->init = nullptr;
  sym->count = not_followed;
  return true;
}

// Counts node's assignment if it is one to a symbol that can be followed; source is the assignment
// whose value the symbol takes. Any other place is scanned.
void count_target(NODE *node, NODE *source) {
  NODE *target = node->left;
  if (target->op != NAME) return count_tree(target);
  SYM *sym = target->u.sym;
  if (sym->count < 0) return;
  sym->init = source;
  sym->count += 1;
}

// a = b = c ...: the chain is followed once for all of its links.
void count_assignment(NODE *node) {
  NODE *source = node;
  while (source->op == ASSIGN && passes_value_on(source))
    source = source->right;
  if (source->right && source->right->op != ICON) count_tree(source->right);
  for (;; node = node->right) {
    count_target(node, source);
    if (node == source) return;
  }
}

void count_tree(NODE *tree) {
  for (; tree; tree = tree->left) {
    if (is_direct_call(tree)) {
      if (tree->right) count_tree(tree->right);
      return;
    }
    if (is_assignment(tree)) return count_assignment(tree);
    switch (tree->op) {
    case ICON:
    case URETURN: return;
    case NAME: return count_use(tree);
    case RETURN: return count_tree(tree->right);
    case SWITCH:
    case IF: break;
    case ADDRESS:
    case ARGREF:
      if (count_address(tree)) return;
      break;
    default:
      if (tree->right) count_tree(tree->right);
    }
  }
}

// ------------------------------------------------------------------------------------------------
// Judging

void judge_parameter_home(SYM *sym) {
  if (!is_const_symbol(sym))
    debug_print("\n\tArgument variable is not re-assigned: %s\n", sym->name);
  sym->count = not_followed;
  sym->init = nullptr;
  sym->squal |= is_derived(sym->stype) ? 16u : 1u;
}

void judge_single_assignment(SYM *sym) {
  const NODE *assignment = sym->init;
  sym->init = nullptr;
  // In x = home = parameter the one assignment of x ends in the copy of another symbol.
  if (assignment->left->op == NAME && assignment->left->u.sym == sym && is_param_copy(assignment))
    return judge_parameter_home(sym);
  if (!is_constant_like(assignment->right)) {
    sym->count = several;
    return;
  }
  remember_value(sym, assignment);
  if (state.debug_file)
    debug_print("\n\tGlobally constant assignment: %s = %s\n", sym->name,
                tree2infix(assignment->right));
}

// Returns whether the symbol stays on the chain.
bool judge(SYM *sym) {
  const bool is_used = sym->key != 0;
  sym->key = 0;
  if (sym->count == 0 && !is_used) {
    debug_print("\tNo references in the function for '%s'\n", sym->name);
    sym->count = not_followed;
    return false;
  }
  if (sym->count == 0 && sym->sclass == C_AUTO && (*sym->name == '_' || *sym->name == '.'))
    debug_print("\n\tVariable is used but never assigned: %s\n", sym->name);
  if (sym->count == 1 && sym->init && sym->init->op == ASSIGN)
    judge_single_assignment(sym);
  else
    sym->init = nullptr;
  return true;
}

void judge_symbols() {
  SYM *kept = nullptr;
  for (SYM *sym = state.scalar_syms, *next = nullptr; sym; sym = next) {
    next = sym->next;
    if (!judge(sym)) continue;
    sym->next = kept;
    kept = sym;
  }
  state.scalar_syms = kept;
}

bool is_fixed_address(const NODE *address) {
  const SYM *sym = addressed_symbol(address);
  return sym && !(options.opt_externs_volatile && sym->sclass == C_EXTDEF);
}

bool is_fixed_name(const NODE *name) {
  const SYM *sym = name->u.sym;
  return is_const_symbol(sym) && !is_volatile_symbol(sym) && !sym->fcp_flag &&
         sym->sclass == C_AUTO;
}

} // namespace

void collect_assignment_statistics() {
  reset_symbols();
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      count_tree(cell->item);
  judge_symbols();
}

bool is_constant_like(const NODE *value) {
  switch (value->op) {
  case SCON:
  case ICON:
  case FCON: return true;
  case NAME: return is_fixed_name(value);
  case ADDRESS: return is_fixed_address(value);
  case ADD:
    return value->right->op == ICON && value->left->op == ADDRESS && is_fixed_address(value->left);
  case PCONV:
  case SCONV: return value->left->op != NAME && is_constant_like(value->left);
  default: return false;
  }
}

void remember_value(SYM *sym, const NODE *value_from) {
  NODE *value = copy_tree(value_from->right); // ahead of the release of what is known so far
  forget_value(sym);
  NODE *target = make_name(sym);
  target->type = value_from->type;
  sym->init = make_node(ASSIGN, target, value, value_from->type);
}

void forget_value(SYM *sym) {
  if (sym->init) sym->init = erase_tree(sym->init);
}

} // namespace velkor
