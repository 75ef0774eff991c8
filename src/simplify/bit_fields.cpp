#include "simplify/bit_fields.h"

#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "simplify/bit_field_expansion.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

namespace velkor {
namespace bit_fields {

Expansion expansion;

namespace {

bool stores_number(Opcode op) {
  return op == ASSIGN || op == INCREMENT || op == DECREMENT || is_compound_assignment(op);
}

NODE *expand_read(NODE *access, Use use) {
  if (!is_bit_field_access(access)) {
    access->left = expand_tree(access->left, Use::VALUE);
    return access;
  }
  FieldView view;
  NODE *unit = load_masked_field(access, 0, view);
  if (use != Use::VALUE) return unit; // zero where the field is zero
  unit = prepare_value(unit, view, 0);
  return move_field(unit, view, value_width(view.type), 0, view.type);
}

} // namespace

NODE *expand_tree(NODE *tree, Use use) {
  NODE *root = tree;
  NODE **place = &root;
  for (;;) { // along the last operand to be expanded, which is the left one almost everywhere
    NODE *node = *place;
    if (stores_number(node->op)) {
      *place = expand_store(node, use);
      return root;
    }
    switch (node->op) {
    case COMMA_OP:
      node->left = expand_tree(node->left, Use::NOTHING);
      place = &node->right;
      continue;
    case LOGICAL_AND:
    case LOGICAL_OR:
      node->right = expand_tree(node->right, Use::TEST);
      place = &node->left;
      use = Use::TEST;
      continue;
    case CONDITIONAL:
      node->right = expand_tree(node->right, use);
      place = &node->left;
      use = Use::TEST;
      continue;
    case CBRANCH:
    case IF:
      place = &node->left;
      use = Use::TEST;
      continue;
    case MEMBER:
    case ARROW: *place = expand_read(node, use); return root;
    case EQ:
    case NE:
    case LE:
    case LT:
    case GE:
    case GT:
    case ULE:
    case ULT:
    case UGE:
    case UGT: *place = expand_relation(node); return root;
    case LABELDEF: return root; // its operand is no tree
    default: break;
    }
    if (node->right) node->right = expand_tree(node->right, Use::VALUE);
    if (!node->left) return root;
    place = &node->left;
    use = Use::VALUE;
  }
}

} // namespace bit_fields

namespace {

// Puts tree into a new cell behind the given one, which keeps what executes first.
void split_cell(LIST *cell, NODE *first, NODE *tree) {
  cell->item = first;
  cell->next = list_cons(tree, cell->next, cell->line, cell->line2);
}

// a , b  ->  a; b
// (a , b) op c  ->  a; b op c
bool split_comma(LIST *cell) {
  NODE *tree = cell->item;
  if (tree->op == LABELDEF) return false;
  if (tree->op == COMMA_OP) {
    split_cell(cell, tree->left, tree->right);
    erase_node(tree);
    return true;
  }
  NODE *comma = tree->left;
  if (!comma || comma->op != COMMA_OP) return false;
  tree->left = comma->right;
  split_cell(cell, comma->left, tree);
  erase_node(comma);
  return true;
}

// Spreads what the expansion chained with commas over statements again; yields the last cell.
LIST *split_statement(LIST *cell) {
  const LIST *end = cell->next;
  for (;;) {
    while (split_comma(cell)) {
    }
    if (cell->next == end) return cell;
    cell = cell->next;
  }
}

} // namespace

void expand_bitfields() {
  if (options.opt_level < 1 || !state.has_bit_fields) return;
  debug_print("\n\n\t\t\t---------- ENTERING 'expand_bitfields' -----\n");
  bit_fields::expansion = bit_fields::Expansion{};
  for (BB *block = state.first_bb; block; block = block->next)
    for (LIST *cell = block->trees; cell; cell = cell->next) {
      bit_fields::expansion.bitfields_changed = false;
      cell->item = bit_fields::expand_tree(cell->item, bit_fields::Use::NOTHING);
      if (bit_fields::expansion.bitfields_changed) cell->item = simplify_tree(cell->item);
      cell = split_statement(cell);
    }
}

} // namespace velkor
