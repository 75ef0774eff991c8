#include "lower/unsimp_blocks.h"

#include "core/nodes.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"
#include "lower/branch_labels.h"
#include "lower/chained_assignments.h"
#include "lower/embed_assignments.h"
#include "lower/lowering.h"
#include "lower/narrow_accesses.h"
#include "simplify/simplify.h"

#include <array>
#include <utility>

namespace velkor {
namespace {

// The rules of each opcode; none for those that stay.
constexpr std::array<const LoweringRules *, opcode_table.size()> rule_table = [] {
  std::array<const LoweringRules *, opcode_table.size()> table{};
  for (const Opcode op : {CALL, UCALL, STCALL, USTCALL, XCALL, UXCALL})
    table[op] = &lower_call_rules;
  table[RETURN] = table[URETURN] = &lower_return_rules;
  table[INITLOOP] = &lower_init_loop_rules;
  table[LOOP] = &lower_loop_rules;
  table[ENDLOOP] = &lower_end_loop_rules;
  table[IF] = &lower_if_rules;
  table[SWITCH] = &lower_switch_rules;
  table[ASSERT] = &lower_assert_rules;
  table[NASSERT] = &lower_fact_rules;
  table[SCONV] = table[PCONV] = &lower_conversion_rules;
  table[IDENTITY] = &lower_identity_rules;
  table[NAME] = &lower_name_rules;
  table[ADDRESS] = &lower_address_rules;
  table[DEREF] = &lower_access_rules;
  table[ASSIGN] = &lower_assign_rules;
  table[INCREMENT] = table[DECREMENT] = &lower_step_rules;
  table[ASG_ADD] = &lower_add_to_rules;
  table[ASG_AND] = table[ASG_OR] = table[ASG_XOR] = &lower_logical_assignment_rules;
  table[ASG_MULTIPLY] = &lower_multiply_by_rules;
  table[ADD] = &lower_add_rules;
  table[SUBTRACT] = &lower_subtract_rules;
  table[NEGATE] = &lower_negate_rules;
  table[MULTIPLY] = &lower_multiply_rules;
  table[DIVIDE] = &lower_divide_rules;
  table[RECIP] = &lower_reciprocal_rules;
  table[BIT_AND] = &lower_and_rules;
  table[BIT_XOR] = &lower_xor_rules;
  table[SHIFT_LEFT] = &lower_shift_left_rules;
  return table;
}();

Outcome apply_once(LoweringRules rules, NODE *&node, const Position &at) {
  Outcome outcome = Outcome::NEXT;
  for (const LoweringRule &rule : rules) {
    outcome = rule.apply(node, at);
    if (outcome > Outcome::REWRITTEN) return outcome;
  }
  return outcome;
}

// (1 / x) * y  ->  y / x
void restore_division(NODE *product) {
  if (product->left->op == RECIP) std::swap(product->left, product->right);
  NODE *reciprocal = product->right;
  if (reciprocal->op != RECIP || reciprocal->type != product->type) return;
  product->op = DIVIDE;
  product->right = reciprocal->left;
  erase_node(reciprocal);
}

// Does the node take its left operand as a place? A name there keeps the type that it has: a
// conversion of it would be no place.
bool takes_place(const NODE *node) {
  switch (node->op) {
  case ASSIGN:
  case INCREMENT:
  case DECREMENT:
  case STASG:
  case ARASG:
  case ARGREF:
  case MEMBER: return true;
  default: return asgop_base(node->op) != ILLOP;
  }
}

void unsimp_operands(NODE *tree, BB *block, LIST *cell) {
  const bool has_member_name = tree->op == MEMBER || tree->op == ARROW;
  if (tree->right && !has_member_name) tree->right = unsimp_tree(tree->right, block, cell);
  if (!tree->left || (takes_place(tree) && tree->left->op == NAME)) return;
  tree->left = unsimp_tree(tree->left, block, cell);
}

// What the statement does; none when that is nothing. A statement that only its value made special
// comes back in canonical form, and is lowered once more.
NODE *drop_value(NODE *tree, BB *block, LIST *cell) {
  const bool step = is_increment_or_decrement(tree->op);
  NODE *statement = discard_value(tree);
  if (!statement || (statement == tree && !step)) return statement;
  cell->item = statement;
  return unsimp_tree(statement, block, cell);
}

NODE *unsimp_statement(BB *block, LIST *cell) {
  cell->item = unsimp_tree(cell->item, block, cell);
  cell->item = narrow_statement(cell->item, block, cell);
  return drop_value(cell->item, block, cell);
}

void unsimp_block(BB *block) {
  LIST *reversed = nullptr;
  for (LIST *cell = block->trees; cell;) {
    chain_assignments(cell);
    NODE *statement = unsimp_statement(block, cell);
    LIST *next = cell->next; // only now: a step may have moved behind the statement
    cell->item = statement;
    if (statement) {
      cell->next = reversed;
      reversed = cell;
    } else {
      cell->next = nullptr;
      give_list(cell);
    }
    cell = next;
  }
  if (reversed) number_branch_labels(reversed->item, block);
  block->trees = embed_constant_assignments(reversed, block);
}

} // namespace

Lowering lowering;

void absorb_child(NODE *node, NODE *child) {
  *node = *child;
  erase_node(child);
}

// Each round takes a node away, raises a constant or a product over the node, or leaves a form that
// no rule of its opcode takes: the rounds end.
NODE *unsimp_node(NODE *node, BB *block, LIST *cell) {
  const Position at{block, cell};
  for (;;) {
    const LoweringRules *rules = rule_table[node->op];
    if (!rules || apply_once(*rules, node, at) != Outcome::AGAIN) return node;
  }
}

NODE *unsimp_tree(NODE *tree, BB *block, LIST *cell) {
  if (tree->op == LABELDEF) return tree; // its operand is no tree
  if (tree->op == MULTIPLY) restore_division(tree);
  unsimp_operands(tree, block, cell);
  return unsimp_node(tree, block, cell);
}

void unsimp_blocks() {
  debug_print("\n\n\t\t\t---------- ENTERING 'unsimp_blocks' ----------\n");
  state.function_is_leaf = true;
  for (BB *block = state.first_bb; block; block = block->next)
    unsimp_block(block);
}

} // namespace velkor
