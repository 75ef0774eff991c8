#include "storage/conflicts.h"

#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/target.h"
#include "scalar/live_variables.h"
#include "storage/branch_fold.h"
#include "storage/statement_uses.h"

#include <algorithm>
#include <limits>

namespace velkor {

Allocation allocation;

namespace {

constexpr std::int32_t weight_of_loop = 8; // an appearance in a loop counts as so many outside

// ------------------------------------------------------------------------------------------------
// Costs

// A symbol with a cost of 0 counts as one that nothing refers to.
void keep_as_referenced(SYM *sym) {
  if (cost(sym) == 0) cost(sym) = 1;
}

// ------------------------------------------------------------------------------------------------
// Copies

bool is_word(TypeWord type) {
  return is_integer(type) && type_width(type) == 32;
}

bool are_pointer_and_word(TypeWord a, TypeWord b) {
  return (is_pointer(a) && is_word(b)) || (is_word(a) && is_pointer(b));
}

bool are_integers_of_one_width(TypeWord a, TypeWord b) {
  return is_integer(a) && is_integer(b) && type_width(a) == type_width(b);
}

// The 16 bits of a symbol's type that a node's type has.
TypeWord node_type(const SYM *sym) {
  return sym->stype & 0xFFFF;
}

// The tree whose bits x takes over in an assignment of tree, or none.
NODE *copy_source(const SYM *x, NODE *tree) {
  const TypeWord type = node_type(x);
  for (;; tree = tree->left) {
    if (tree->op == IDENTITY) continue;
    if (tree->op == PCONV && (is_pointer(type) || is_word(type))) continue;
    if (tree->op == SCONV && (are_integers_of_one_width(tree->type, tree->left->type) ||
                              are_pointer_and_word(tree->type, tree->left->type)))
      continue;
    break;
  }
  const bool keeps_bits = tree->type == type || (is_pointer(tree->type) && is_pointer(type)) ||
                          are_integers_of_one_width(tree->type, type) ||
                          are_pointer_and_word(tree->type, type);
  return keeps_bits ? tree : nullptr;
}

// Does a register that holds y hold x as well? Narrow integers of one width are extended by their
// sign.
bool fills_register_alike(const SYM *x, const SYM *y) {
  const TypeWord a = node_type(x);
  const TypeWord b = node_type(y);
  if (a == b || (value_width(a) == 32 && value_width(b) == 32)) return true;
  return is_unsigned_integer(a) == is_unsigned_integer(b);
}

// ------------------------------------------------------------------------------------------------
// The walk

// Goes backward through the statements of a block and through each statement in the reverse of its
// evaluation.
class ConflictWalk {
public:
  ConflictWalk()
      : words_(live_variables.words), live_(new_set(words_)), statement_uses_(new_set(words_)) {}

  void begin_block(BB *block) {
    set_copy(live_, live_out(block), words_);
    weight_ = weight_of(block);
  }

  void statement(NODE *tree) {
    set_clear(statement_uses_, words_);
    collect_uses(tree, statement_uses_);
    if (allocation.measured) target.note_statement(tree);
    walk(tree, true);
  }

private:
  static std::int32_t weight_of(const BB *block) {
    const std::int64_t weight = std::int64_t{weight_of_loop} * block->depth + 1;
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(weight, std::numeric_limits<std::int32_t>::max()));
  }

  // What is in use while a part of the statement is evaluated: what is live behind it, and unless
  // it is the only part that touches candidates, whatever the statement reads, since the parts may
  // come in any order.
  void add_in_use(Set into, bool top) {
    set_union(into, live_, words_);
    if (!top) set_union(into, statement_uses_, words_);
  }

  void add_conflicts(const SYM *sym, bool top) {
    if (allocation.measured) add_in_use(allocation.conflicts[sym->count], top);
  }

  void name(SYM *sym) {
    if (!is_candidate(sym)) return;
    set_add(live_, sym->count);
    add_cost(sym, weight_);
  }

  // -- Preferences

  void record_preference(const SYM *x, NODE *tree, bool keep) {
    const NODE *source = copy_source(x, tree);
    if (!source || source->op != NAME) return;
    const SYM *y = source->u.sym;
    if (y == x || !is_candidate(y)) return;
    if (allocation.measured) set_add(allocation.preferences[x->count], y->count);
    // x takes its value from y: that alone does not keep them from sharing a register.
    if (keep && fills_register_alike(x, y)) set_remove(live_, y->count);
    debug_print("\t'%s' preferenced to '%s'\n", x->name, y->name);
  }

  void find_preferences(const SYM *x, NODE *value, bool keep) {
    while (NODE *source = copy_source(x, value)) {
      switch (source->op) {
      case NAME: record_preference(x, source, keep); return;
      case DEREF:
      case ARROW: record_preference(x, source->left, false); return;
      case ASSIGN:
        record_preference(x, source->left, keep);
        value = source->right;
        break;
      default: return;
      }
    }
  }

  // -- Assignments

  // x = p of a parameter. Homes of parameters are live from the entry on.
  void parameter_copy(NODE *tree) {
    if (tree->op != ASSIGN || tree->left->op != NAME) return;
    SYM *x = tree->left->u.sym;
    const NODE *source = parameter_value(tree->right);
    if (!source || !is_candidate(x)) return;
    const SYM *parameter = source->u.sym;
    // A parameter lives until its own home is filled: no home that is filled earlier may lie on it.
    if (is_candidate(parameter)) set_add(live_, parameter->count);
    if (x->parameter != parameter) {
      keep_as_referenced(x);
      return;
    }
    if (allocation.measured) set_union(allocation.conflicts[x->count], live_, words_);
    set_add(live_, x->count);
    set_add(allocation.param_homes, x->count);
    const bool keeps_register = parameter->sclass == C_REGPARM && options.opt_regparm_keep;
    if (cost(x) > 1 || (cost(x) == 1 && keeps_register)) add_cost(x, 1);
    keep_as_referenced(x);
    if (allocation.measured) target.note_param_copy(x, live_);
  }

  void parameter_copies(NODE *list) {
    set_union(live_, statement_uses_, words_);
    for (; list->op == PCOMMA; list = list->left)
      parameter_copy(list->right);
    parameter_copy(list);
  }

  // Where parts come in any order, x must not lie on anything that the statement reads, but for the
  // variable that x is a copy of.
  void add_conflicts_with_statement(const SYM *x, NODE *value) {
    const NODE *source = copy_source(x, value);
    const SYM *y = source && source->op == NAME ? source->u.sym : nullptr;
    const bool exempt =
        y && is_candidate(y) && fills_register_alike(x, y) && set_has(statement_uses_, y->count);
    if (exempt) set_remove(statement_uses_, y->count);
    set_union(allocation.conflicts[x->count], statement_uses_, words_);
    if (exempt) set_add(statement_uses_, y->count);
  }

  void assignment(SYM *x, NODE *value, bool top) {
    add_cost(x, weight_);
    find_preferences(x, value, top);
    if (allocation.measured) {
      set_union(allocation.conflicts[x->count], live_, words_);
      if (!top) add_conflicts_with_statement(x, value);
    }
    // The range ends here, unless the statement reads x elsewhere or may leave x as it was.
    const bool read_elsewhere = !top && set_has(statement_uses_, x->count);
    if (!read_elsewhere && conditional_ == 0) set_remove(live_, x->count);
  }

  // -- Nodes

  void call(const NODE *node, bool top) {
    add_in_use(allocation.call_crossing, top);
    if (!allocation.measured) return;
    if (node->op == CALL || node->op == STCALL || node->op == XCALL) target.note_call(node);
    target.note_call_live(live_, node);
    if (!top) target.note_call_live(statement_uses_, node);
  }

  void loop_end(const NODE *node) {
    const NODE *counter = node->left ? node->left->left : nullptr;
    if (!counter || counter->op != NAME || !is_candidate(counter->u.sym)) return;
    set_add(allocation.loop_vars, counter->u.sym->count);
    set_add(allocation.tested_vars, counter->u.sym->count);
  }

  static bool is_zero(const NODE *node) {
    if (node->op == PCONV) return node->left->op == ICON;
    return node->op == ICON && node->u.lval == 0;
  }

  // An operand that alone touches candidates goes on with top; where both do, they may come in any
  // order, and top is gone for good. Returns the operand to go on with. The right operand is asked
  // first, and the left one only if it must be: chains lean to the left, and so they are not
  // searched anew at each of their links.
  NODE *operands(NODE *node, bool &top) {
    if (!node->right) return node->left;
    if (top) {
      const bool right_is_active = has_candidate_activity(node->right);
      if (!right_is_active && node->left) return node->left;
      if (right_is_active && node->left && has_candidate_activity(node->left)) top = false;
      if (top) {
        right_operand(node, true);
        return nullptr;
      }
    }
    right_operand(node, false);
    return node->left;
  }

  void right_operand(NODE *node, bool top) {
    const bool may_be_skipped =
        node->op == LOGICAL_AND || node->op == LOGICAL_OR || node->op == CONDITIONAL;
    conditional_ += may_be_skipped;
    walk(node->right, top);
    conditional_ -= may_be_skipped;
  }

  NODE *comma(NODE *node, bool &top) {
    walk(node->right, top);
    if (top && has_candidate_activity(node->right)) top = false;
    return node->left;
  }

  NODE *assign(NODE *node, bool &top) {
    if (node->left->op != NAME) return operands(node, top);
    if (parameter_value(node->right)) {
      parameter_copy(node);
      return nullptr;
    }
    SYM *x = node->left->u.sym;
    if (is_candidate(x)) assignment(x, node->right, top);
    return node->right;
  }

  // top: the node is the only part of the statement that touches candidates.
  void walk(NODE *node, bool top) {
    while (node) {
      if (allocation.measured && target.clobbers_node(node))
        add_in_use(allocation.hook_crossing, top);
      node = enter(node, top);
    }
  }

  // Takes note of the node and walks its operands but the last, which it returns.
  NODE *enter(NODE *node, bool &top) {
    switch (node->op) {
    case NAME: name(node->u.sym); return nullptr;
    case ASSIGN: return assign(node, top);
    case CALL:
    case UCALL:
    case STCALL:
    case USTCALL:
    case XCALL:
    case UXCALL: call(node, top); return operands(node, top);
    case DEREF:
    case ARROW: mark_pointer_variables(node->left); return node->left;
    case MEMBER:
    case SWITCH: return node->left;
    case RETURN:
    case INITLOOP: return node->right;
    case LOOP:
      if (node->left && node->left->op == NAME) keep_as_referenced(node->left->u.sym);
      return nullptr;
    case ENDLOOP: loop_end(node); return operands(node, top);
    case IF: mark_tested_variable(node->left); return node->left;
    case EQ:
    case NE:
    case LE:
    case LT:
    case GE:
    case GT:
      if (is_zero(node->right)) mark_tested_variable(node->left);
      return operands(node, top);
    case COMMA_OP: return comma(node, top);
    case PCOMMA: parameter_copies(node); return nullptr;
    default:
      if ((asgop_base(node->op) != ILLOP || node->op == INCREMENT || node->op == DECREMENT) &&
          node->left->op == NAME && is_candidate(node->left->u.sym))
        add_conflicts(node->left->u.sym, top);
      return operands(node, top);
    }
  }

  int words_;
  Set live_;
  Set statement_uses_;
  std::int32_t weight_ = 0; // of an appearance in the block at hand
  int conditional_ = 0;     // operands around the node at hand that may not be evaluated
};

// ------------------------------------------------------------------------------------------------
// The function

Set *new_sets(int count, int words) {
  auto *sets = static_cast<Set *>(lalloc(static_cast<std::size_t>(count) * sizeof(Set)));
  for (int number = 0; number < count; ++number)
    sets[number] = new_set(words);
  return sets;
}

void begin_analysis(bool with_conflicts) {
  allocation = Allocation{};
  const int candidates = live_variables.num_candidates;
  const int words = live_variables.words;
  allocation.measured = with_conflicts && candidates <= most_measured_candidates;
  if (allocation.measured) {
    allocation.conflicts = new_sets(candidates, words);
    allocation.preferences = new_sets(candidates, words);
  }
  for (Set *set : {&allocation.call_crossing, &allocation.hook_crossing, &allocation.tested_vars,
                   &allocation.pointer_vars, &allocation.loop_vars, &allocation.indexed_vars,
                   &allocation.param_homes, &allocation.reloadable})
    *set = new_set(words);
  set_fill(allocation.reloadable, words);
  for (SYM *sym = state.scalar_syms; sym; sym = sym->next) {
    cost(sym) = 0;
    sym->sclass = C_AUTO;
  }
}

void analyse_block(BB *block, ConflictWalk &walk) {
  walk.begin_block(block);
  block->trees = list_reverse_onto(block->trees, nullptr);
  for (LIST *cell = block->trees; cell; cell = cell->next)
    walk.statement(cell->item);
  block->trees = list_reverse_onto(block->trees, nullptr);
}

void make_symmetric(Set *relation) {
  const int words = live_variables.words;
  for (int a = 0; a < live_variables.num_candidates; ++a)
    for_each_member(relation[a], words, [&](int b) { set_add(relation[b], a); });
  for (int a = 0; a < live_variables.num_candidates; ++a)
    set_remove(relation[a], a);
}

void finish_measures() {
  if (allocation.measured) {
    make_symmetric(allocation.conflicts);
    make_symmetric(allocation.preferences);
    for (int c = 0; c < live_variables.num_candidates; ++c)
      set_subtract(allocation.preferences[c], allocation.conflicts[c], live_variables.words);
  }
  // What can be made again without memory is worth less.
  for (SYM *sym = state.scalar_syms; sym; sym = sym->next)
    if (is_candidate(sym) && cost(sym) > 2 && !set_has(allocation.reloadable, sym->count))
      add_cost(sym, cost(sym) >> 1);
}

} // namespace

void analyse_conflicts(bool with_conflicts) {
  begin_analysis(with_conflicts);
  // Without register classes nobody asks for the measures; the walk still tells of preferences.
  const bool walks = allocation.measured || state.debug_on;
  ConflictWalk walk;
  for (BB *block = state.first_bb->prev;; block = block->prev) {
    fold_assignment_into_branch(block);
    if (walks) analyse_block(block, walk);
    if (block == state.first_bb) break;
  }
  if (walks) finish_measures();
}

} // namespace velkor
