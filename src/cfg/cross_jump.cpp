// The blocks are walked from the last to the first; the later of two equal blocks stays.
//
// Looking at each pair of blocks that go the same way would take a time that grows with the square
// of their number, and thousands of jumps may lead to one label. So blocks are put into groups by
// what equal statements have in common, and only the members of a group are compared.
#include "cfg/cross_jump.h"

#include "cfg/graph.h"
#include "cfg/merge_blocks.h"
#include "cfg/transfers.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "diag/dump.h"
#include "diag/infix.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace velkor {
namespace {

bool shall_run() {
  return options.opt_level > 0 && state.first_bb && state.first_bb->next;
}

// ------------------------------------------------------------------------------------------------
// Groups

using Signature = std::uint64_t;

// FNV-1a, eight bytes at a time.
Signature mix(Signature signature, Signature value) {
  constexpr Signature prime = 1099511628211u;
  return (signature ^ value) * prime;
}

Signature text_signature(const char *text) {
  Signature signature = 0;
  for (; *text; ++text)
    signature = mix(signature, static_cast<unsigned char>(*text));
  return signature;
}

const NODE *skip_shares(const NODE *node) {
  while (node->op == CSE_DUPE || node->op == CSE_ORIG)
    node = node->right;
  while (node->op == IDENTITY)
    node = node->left;
  return node;
}

// The opcode that stands for all those by which equal trees may be told.
Opcode common_opcode(Opcode op) {
  const Opcode swapped = op_swapped(op);
  return swapped == ILLOP ? op : std::min(op, swapped);
}

constexpr int deepest_level = 4; // what lies deeper counts as equal

Signature tree_signature(const NODE *tree, int level);

// Operands that must be equal one by one.
Signature operand_signature(const NODE *tree, int level) {
  Signature signature = mix(tree->op, tree->type);
  if (tree->left) signature = mix(signature, tree_signature(tree->left, level));
  if (tree->right) signature = mix(signature, tree_signature(tree->right, level));
  return signature;
}

// The sum over the operands of x op y op z, in whatever grouping and order they stand.
Signature regrouped_signature(const NODE *tree, Opcode op, TypeWord type, int level) {
  Signature sum = 0;
  for (;; tree = skip_shares(tree->left)) {
    if (tree->op != op || tree->type != type) return sum + tree_signature(tree, level);
    sum += regrouped_signature(skip_shares(tree->right), op, type, level);
  }
}

// Equal trees have equal signatures. A parameter and its home are told by one name, and the home
// may stand for the converted parameter.
Signature tree_signature(const NODE *tree, int level) {
  if (level == deepest_level) return 0;
  tree = skip_shares(tree);
  const bool is_conversion = tree->op == SCONV || tree->op == PCONV || tree->op == ISP2CHAR;
  if (is_conversion && tree->left && tree->left->op == NAME)
    return mix(text_signature(tree->left->u.sym->name), tree->type);
  switch (tree->op) {
  case NAME: return mix(text_signature(tree->u.sym->name), tree->type);
  case ICON: return mix(mix(ICON, tree->type), static_cast<std::uint32_t>(tree->u.lval));
  case RETURN:
    return mix(RETURN, tree->right ? tree_signature(tree->right, level + 1) : Signature{0});
  case CALL: return operand_signature(tree, level + 1);
  case ADD:
  case MULTIPLY:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR: return mix(regrouped_signature(tree, tree->op, tree->type, level + 1), tree->op);
  default:
    if (tree->op == ASSIGN || asgop_base(tree->op) != ILLOP)
      return operand_signature(tree, level + 1);
    return mix(common_opcode(tree->op), tree->type);
  }
}

Signature list_signature(const LIST *list) {
  Signature signature = 0;
  for (; list; list = list->next)
    signature = mix(signature, tree_signature(list->item, 0));
  return signature;
}

// Blocks in the order in which they came.
class Groups {
public:
  using Blocks = std::vector<BB *>;

  void add(Signature signature, BB *block) { groups_[signature].push_back(block); }
  [[nodiscard]] const Blocks &at(Signature signature) const {
    static const Blocks none;
    const auto found = groups_.find(signature);
    return found == groups_.end() ? none : found->second;
  }

private:
  std::unordered_map<Signature, Blocks> groups_;
};

// The walk of both routines: from the last block to the one behind the first.
template <typename Visit> void visit_backward(Visit visit) {
  for (BB *block = state.first_bb->prev; block != state.first_bb;) {
    BB *ahead = block->prev;
    visit(block);
    block = ahead;
  }
}

// ------------------------------------------------------------------------------------------------
// Blocks that are redundant

void show_redundant(const BB *redundant, const BB *kept) {
  if (!state.debug_on) return;
  debug_print("\n\tBB %d is redundant with BB %d\n", redundant->dfn, kept->dfn);
  debug_print("\n");
  print_block_trees(redundant, redundant);
  debug_print("\n");
  print_block_trees(kept, kept);
}

// The redundant block's statements become a jump to the kept one. Its edges are left.
void jump_instead(BB *redundant, BB *kept) {
  show_redundant(redundant, kept);
  const std::int16_t line = redundant->trees->line;
  const std::int16_t line2 = redundant->trees->line2;
  erase_list(redundant->trees);
  redundant->trees = list_cons(make_goto(kept), nullptr, line, line2);
}

void redirect(const std::vector<BB *> &blocks) {
  for (BB *block : blocks)
    refresh_successors(block, last_cell(block)->item);
}

bool ends_function(const BB *block) {
  return block->trees && !block->succs;
}

// Of the blocks that end the function in the same way the last stays, unless copies of it are
// cheaper than jumps.
void merge_exit_blocks() {
  Groups exits;
  visit_backward([&](BB *block) {
    if (ends_function(block)) exits.add(list_signature(block->trees), block);
  });
  visit_backward([&](BB *block) {
    if (!ends_function(block) || worth_copying(block, false, false)) return;
    std::vector<BB *> redundant;
    bool is_ahead = false; // the group's order is that of the walk
    for (BB *other : exits.at(list_signature(block->trees))) {
      if (is_ahead && ends_function(other) && lists_equal(other->trees, block->trees)) {
        jump_instead(other, block);
        redundant.push_back(other);
      }
      is_ahead |= other == block;
    }
    redirect(redundant);
  });
}

// A block that does something, and goes to one other block from there.
bool works_and_goes_on(const BB *block) {
  const BB *successor = single_edge(block->succs);
  return successor && successor != block && block->trees && block->trees->item->op != BRANCH;
}

Signature way_signature(const BB *block) {
  return mix(list_signature(block->trees), static_cast<Signature>(single_edge(block->succs)->dfn));
}

// The block ahead of a loop's head falls into it with the same code as the block at the loop's
// bottom.
bool falls_in_with_same_code(const BB *block, const BB *successor) {
  if (successor->dfn >= block->dfn || successor == state.first_bb) return false;
  const BB *ahead = successor->prev;
  return ahead != block && single_edge(ahead->succs) == successor &&
         lists_equal(ahead->trees, block->trees);
}

void share_block(BB *block, const Groups &groups) {
  if (!works_and_goes_on(block)) return;
  const BB *successor = single_edge(block->succs);
  if (falls_in_with_same_code(block, successor)) return;
  std::vector<BB *> redundant;
  for (BB *other : groups.at(way_signature(block))) {
    if (other == block || single_edge(other->succs) != successor) continue;
    if (other->dfn >= block->dfn && successor != block->next) continue;
    if (!lists_equal(other->trees, block->trees)) continue;
    jump_instead(other, block);
    redundant.push_back(other);
  }
  redirect(redundant);
}

// ------------------------------------------------------------------------------------------------
// Tests that are redundant

// A relation, its contrary and both with their operands exchanged count as one; a comparison with 0
// counts as its operand.
Signature condition_signature(const NODE *tree) {
  tree = skip_shares(tree);
  while (tree->op == NE || tree->op == EQ) {
    const NODE *right = skip_shares(tree->right);
    if (right->op != ICON || right->u.lval != 0) break;
    tree = skip_shares(tree->left);
  }
  if (op_negated(tree->op) == ILLOP) return tree_signature(tree, 0);
  return mix(tree_signature(tree->left, 0) + tree_signature(tree->right, 0), 1);
}

bool is_two_way_test(const BB *block) {
  return block->trees && edge_count_is(block->succs, 2) && if_at_end(block);
}

Signature test_signature(const BB *block) {
  const NODE *test = if_at_end(block);
  const int targets = target_block(test->right->left)->dfn + target_block(test->right->right)->dfn;
  return mix(condition_signature(test->left), static_cast<Signature>(targets));
}

// The IF as a block of its own.
BB *block_of_test(BB *block) {
  if (!block->trees->next && block != state.first_bb) return block;
  LIST *before = block->trees;
  while (before->next->next)
    before = before->next;
  LIST *cell = before->next;
  BB *made = insert_block(block->dfn, block, cell);
  before->next = list_cons(make_goto(made), nullptr, cell->line, cell->line2);
  made->loop_flags = 0;
  move_successors(block, made);
  block->succs = edge_cons(made, nullptr);
  made->preds = edge_cons(block, nullptr);
  return made;
}

void show_redundant_test(const BB *redundant, const BB *kept) {
  if (!state.debug_on) return;
  debug_print("\n\tIF in bb %d is redundant with bb %d:\n\t\t%s\n", redundant->dfn, kept->dfn,
              tree2infix(if_at_end(redundant)));
}

// The IF that ends the block becomes a jump to the shared one. The block's edges are left.
void jump_to_test(BB *block, BB *shared) {
  NODE *test = if_at_end(block);
  erase_tree(test->left);
  turn_into_branch(test, true);
  LABEL *label = first_label(shared);
  test->left->aux.label = label;
  test->left->u.lval = label->index;
}

BB *other_successor(const BB *block) {
  return block->succs->bb != block ? block->succs->bb : block->succs->next->bb;
}

void share_test(BB *block, const Groups &groups) {
  if (!is_two_way_test(block)) return;
  const BB *target = other_successor(block);
  BB *shared = nullptr;
  std::vector<BB *> redundant;
  for (BB *other : groups.at(test_signature(block))) {
    if (other == block || other == shared || !is_two_way_test(other)) continue;
    if (!edge_contains(other->succs, target)) continue;
    const NODE *test = if_at_end(shared ? shared : block);
    if (!trees_equal(if_at_end(other), test, true)) continue;
    show_redundant_test(other, block);
    if (!shared) shared = block_of_test(block);
    jump_to_test(other, shared);
    redundant.push_back(other);
  }
  redirect(redundant);
}

} // namespace

void cross_jump() {
  if (!shall_run()) return;
  debug_print("\n\n\t\t\t---------- ENTERING 'cross_jump' ----------\n");
  merge_exit_blocks();
  Groups groups;
  const auto add = [&](BB *block) {
    if (works_and_goes_on(block)) groups.add(way_signature(block), block);
  };
  visit_backward(add);
  add(state.first_bb);
  visit_backward([&](BB *block) { share_block(block, groups); });
}

void merge_repeated_ifs() {
  if (!shall_run()) return;
  Groups groups;
  const auto add = [&](BB *block) {
    if (is_two_way_test(block)) groups.add(test_signature(block), block);
  };
  visit_backward(add);
  add(state.first_bb);
  visit_backward([&](BB *block) { share_test(block, groups); });
}

} // namespace velkor
