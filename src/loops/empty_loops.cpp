// A loop of one block whose statements have the same effect once as many times, but for a counter
// that each round steps by one:
//
//     do { c = 0; } while (--n);           ->   c = 0; n = 0;
//     do { c = 0; i++; } while (i < 10);   ->   c = 0; i++; i = 10;      when entered with i < 10
#include "loops/empty_loops.h"

#include "cfg/graph.h"
#include "cfg/transfers.h"
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "icode/format.h"
#include "loops/touched_by.h"
#include "simplify/patterns.h"

#include <limits>

namespace velkor {
namespace {

const NODE *strip_members(const NODE *tree) {
  while (tree->op == MEMBER)
    tree = tree->left;
  return tree;
}

// What a walk over the loop's statements found.
struct Walk {
  LIST *first = nullptr;      // behind the loop's mark
  LIST *end = nullptr;        // the statement that is neither constant nor the increment
  const NODE *incr = nullptr; // x = x + 1
};

// Once is as good as many times: a constant into an object that stays the same. A volatile object
// sees every store.
bool is_constant_assignment(const NODE *statement) {
  if (statement->op != ASSIGN || !is_constant_tree(statement->right)) return false;
  if (has_side_effects(statement->left) || has_side_effects(statement->right)) return false;
  const NODE *object = strip_members(statement->left);
  return object->op == NAME || (object->left && is_constant_tree(object->left));
}

bool is_increment(const NODE *statement) {
  if (statement->op != ASSIGN) return false;
  const NODE *x = statement->left;
  const NODE *sum = statement->right;
  return is_integer(x->type) && sum->type == x->type && sum->op == ADD &&
         is_icon_of(sum->right, 1) && sum->left->op == x->op && trees_equal(x, sum->left, false);
}

bool is_passed_over(const NODE *statement) {
  return statement->op == NASSERT || is_comment_asm(statement);
}

Walk walk_statements(LIST *trees) {
  Walk walk;
  walk.first = trees && trees->item->op == LOOP ? trees->next : trees;
  for (walk.end = walk.first; walk.end; walk.end = walk.end->next) {
    const NODE *statement = walk.end->item;
    if (is_passed_over(statement) || is_constant_assignment(statement)) continue;
    if (walk.incr || !is_increment(statement)) break;
    walk.incr = statement;
  }
  return walk;
}

// Can one of the loop's stores change the tree?
bool is_touched(const Walk &walk, const NODE *tree, const NODE *but_for) {
  for (const LIST *cell = walk.first; cell != walk.end; cell = cell->next) {
    const NODE *statement = cell->item;
    if (statement->op == ASSIGN && statement != but_for && touched_by(tree, statement->left))
      return true;
  }
  return false;
}

bool is_counter(NODE *v) {
  return is_integer(v->type) && !has_side_effects(v);
}

// v += -1, v -= 1, v = v - 1, v = v + -1: the counter, or none.
NODE *counted_down(const NODE *c) {
  const NODE *step = c->right;
  switch (c->op) {
  case ASG_ADD:
    return is_icon(step) && wrap_value(step->u.lval, c->left->type) == wrap_value(-1, c->left->type)
               ? c->left
               : nullptr;
  case ASG_SUBTRACT: return is_icon_of(step, 1) ? c->left : nullptr;
  case ASSIGN: {
    NODE *v = c->left;
    if ((step->op != ADD && step->op != SUBTRACT) || !is_icon(step->right)) return nullptr;
    if (step->left->type != v->type || !trees_equal(v, step->left, false)) return nullptr;
    const std::int32_t k = step->right->u.lval;
    const bool steps_down =
        step->op == SUBTRACT ? k == 1 : wrap_value(k, v->type) == wrap_value(-1, v->type);
    return steps_down ? v : nullptr;
  }
  default: return nullptr;
  }
}

bool is_upper_bound(Opcode op) {
  return op == LE || op == LT || op == ULE || op == ULT;
}

bool includes_bound(Opcode op) {
  return op == LE || op == ULE;
}

bool compares_unsigned(const NODE *relation) {
  const TypeWord type = balance_type(relation->left, relation->right);
  return relation->op == ULT || relation->op == ULE || is_unsigned_integer(type);
}

// Can the counter come to where the loop ends? A bound at the end of its range is never passed, and
// a counter narrower than the bound wraps around below it: such a loop runs for ever.
bool bound_can_be_reached(const NODE *relation) {
  const NODE *v = relation->left;
  const NODE *bound = relation->right;
  if (is_bit_field_access(v)) return false;
  const bool is_unsigned = compares_unsigned(relation);
  if (is_icon(bound)) {
    const std::int32_t greatest = is_unsigned ? -1 : std::numeric_limits<std::int32_t>::max();
    if (includes_bound(relation->op) && bound->u.lval == greatest) return false;
    const std::int32_t last = wrapping_add(bound->u.lval, includes_bound(relation->op) ? 1 : 0);
    return wrap_value(last, v->type) == last;
  }
  if (value_width(v->type) != 32) return !includes_bound(relation->op) && bound->type == v->type;
  return !includes_bound(relation->op) || !is_unsigned;
}

// The constant that the counter holds on entry: the last thing that the block ahead of the loop
// does to it. None when that is not known.
const NODE *value_on_entry(const NODE *v, const BB *h) {
  const BB *ahead = nullptr;
  for (const EDGE *edge = h->preds; edge; edge = edge->next) {
    if (edge->bb == h) continue;
    if (ahead) return nullptr;
    ahead = edge->bb;
  }
  if (!ahead || v->op != NAME) return nullptr;
  const NODE *value = nullptr;
  for (const LIST *cell = ahead->trees; cell; cell = cell->next) {
    NODE *statement = cell->item;
    if (is_passed_over(statement) || statement->op == BRANCH) continue;
    const bool stores_only = statement->op == ASSIGN && !has_side_effects(statement->left) &&
                             !has_side_effects(statement->right);
    const bool tests_only = statement->op == IF && !has_side_effects(statement->left);
    if (stores_only && trees_equal(statement->left, v, false))
      value = is_icon(statement->right) ? statement->right : nullptr;
    else if (!tests_only && (!stores_only || touched_by(v, statement->left)))
      value = nullptr;
  }
  return value;
}

// Is the loop entered with its condition true? A guarded one is: its test stands ahead of it, too.
bool is_entered_below_bound(const NODE *relation, const BB *h) {
  if (h->loop_flags & loop_guarded) return true;
  if (!is_icon(relation->right)) return false;
  const NODE *entry = value_on_entry(relation->left, h);
  if (!entry) return false;
  const std::int32_t value = wrap_value(entry->u.lval, relation->left->type);
  const std::int32_t bound = relation->right->u.lval;
  const bool below = compares_unsigned(relation)
                         ? static_cast<std::uint32_t>(value) < static_cast<std::uint32_t>(bound)
                         : value < bound;
  return below || (includes_bound(relation->op) && value == bound);
}

// v < b: does the loop leave b, or b + 1, in v?
bool counts_up_to_bound(const NODE *c, const Walk &walk, const BB *h) {
  if (!is_upper_bound(c->op) || !walk.incr || !is_counter(c->left)) return false;
  if (!is_integer(c->right->type) || !trees_equal(c->left, walk.incr->left, false)) return false;
  // A bound with effects, or a volatile one, is looked at in every round.
  if (has_side_effects(c->right)) return false;
  if (!is_constant_tree(c->right) && is_touched(walk, c->right, nullptr)) return false;
  return bound_can_be_reached(c) && is_entered_below_bound(c, h);
}

NODE *value_behind_bound(const NODE *c) {
  NODE *bound = copy_tree(c->right);
  if (!includes_bound(c->op)) return bound;
  NODE *one = make_icon(1, promote_type(bound->type));
  const TypeWord type = balance_type(bound, one);
  return simplify_node(make_node(ADD, bound, one, type));
}

// The loop's effect on its counter, as an assignment; none when the loop is not empty.
NODE *final_assignment(const NODE *c, const Walk &walk, const BB *h) {
  NODE *v = walk.incr ? nullptr : counted_down(c);
  // A counter that the loop itself sets again may never come to its end.
  if (v && is_counter(v) && !is_touched(walk, v, nullptr))
    return make_assign(copy_tree(v), make_icon(0, v->type));
  if (!counts_up_to_bound(c, walk, h) || is_touched(walk, c->left, walk.incr)) return nullptr;
  return make_assign(copy_tree(c->left), value_behind_bound(c));
}

// The IF in the cell becomes the assignment and a jump out of the loop.
void leave_loop(LIST *cell, NODE *assignment) {
  NODE *test = cell->item;
  NODE *way_out = test->right->right;
  test->right->right = nullptr;
  erase_tree(test);
  NODE *branch = make_node(BRANCH, way_out, nullptr, INT);
  cell->item = assignment;
  cell->next = list_cons(branch, cell->next, cell->line, cell->line2);
  if (options.opt_source_comments) {
    NODE *comment =
        make_asm(RECORD_COMMENT, ";       ----------------------- /* EMPTY LOOP DELETED */ ");
    cell->next = list_cons(comment, cell->next, cell->line, cell->line2);
  }
}

// The header is a block like any other.
void clear_header(BB *h) {
  h->loop_ctl = nullptr;
  h->loop_iters = nullptr;
  h->loop_flags &= static_cast<std::uint8_t>(~(loop_guarded | loop_unrolled));
}

} // namespace

bool touched_by(const NODE *tree, const NODE *target) {
  target = strip_members(target);
  for (; tree; tree = tree->left) {
    tree = strip_members(tree);
    if (tree->op == NAME) {
      const SYM *sym = tree->u.sym;
      if (target->op == NAME) return target->u.sym == sym;
      if (sym->fcp_flag == 0) return false;
      return target->op != ARROW || is_struct_or_union(sym->stype);
    }
    if (tree->op == DEREF || tree->op == ARROW) {
      // The pointer may lead to the very object.
      if (target->op != NAME || target->u.sym->fcp_flag != 0) return true;
      continue;
    }
    if (tree->right && touched_by(tree->right, target)) return true;
  }
  return false;
}

bool remove_empty_loop(BB *h) {
  const Walk walk = walk_statements(h->trees);
  if (!walk.end || walk.end->item->op != IF) return false;
  const NODE *test = walk.end->item;
  if (target_block(test->right->left) != h || target_block(test->right->right) == h) return false;
  const NODE *c = test->left->op == ENDLOOP ? test->left->left : test->left;
  NODE *assignment = final_assignment(c, walk, h);
  if (!assignment) return false;
  h->trees = walk.first;
  if (options.debug_level) debug_print("\t\tThe loop [%d] is essentially empty.\n", h->dfn);
  h->succs = edge_remove(h, h->succs);
  remove_predecessor(h, h);
  leave_loop(walk.end, assignment);
  clear_header(h);
  return true;
}

} // namespace velkor
