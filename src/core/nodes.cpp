#include "core/nodes.h"

#include "core/conversions.h"
#include "core/failure.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace velkor {
namespace {

bool has_aux_text(Opcode op) {
  return op == SCON || op == FCON || op == ASM || op == PPRAGMA || op == ASSERT;
}
bool has_routine_name(Opcode op) {
  return op == XCALL || op == UXCALL || op == ICALL;
}

// Bytes of the text in aux. SCON and PPRAGMA count their own bytes: they may hold NULs.
std::size_t aux_text_bytes(const NODE *node) {
  if (node->op == SCON) return static_cast<std::size_t>(node->u.lval) + 1;
  if (node->op == PPRAGMA) return (static_cast<std::uint32_t>(node->u.lval) >> 16) + 1;
  return std::strlen(node->aux.text) + 1;
}

char *copy_bytes(int zone, const char *text, std::size_t bytes) {
  auto *copy = static_cast<char *>(zalloc(zone, bytes));
  std::memcpy(copy, text, bytes);
  return copy;
}

// LABELDEF's operand is no tree.
bool has_left_tree(const NODE *node) {
  return node->left && node->op != LABELDEF;
}

SYM *aggregate_symbol(const NODE *node) {
  switch (node->op) {
  case NAME:
  case STASG:
  case STCALL:
  case USTCALL: return node->u.sym;
  case MEMBER:
  case ARROW: return node->right->u.sym ? node->right->u.sym->tag : nullptr;
  case COMMA_OP:
  case ALTERNATIVES: return aggregate_symbol(node->right);
  case CONDITIONAL: return aggregate_symbol(node->right);
  default: return nullptr;
  }
}

} // namespace

NODE *make_node(Opcode op, NODE *left, NODE *right, TypeWord type) {
  NODE *node = take_node();
  node->u.sym = nullptr;
  node->left = left;
  node->right = right;
  node->aux.text = nullptr;
  node->depnum = -1;
  node->nsize = 0;
  node->type = static_cast<std::uint16_t>(type);
  node->qual = 0;
  node->op = op;
  return node;
}

NODE *make_node_ext(Opcode op, NODE *left, NODE *right, TypeWord type, std::int32_t depnum,
                    std::int32_t value, SYM *sym) {
  NODE *node = make_node(op, left, right, type);
  node->depnum = depnum;
  if (value != 0)
    node->u.lval = value;
  else
    node->u.sym = sym;
  return node;
}

NODE *make_icon(std::int32_t value, TypeWord type) {
  NODE *node = make_node(ICON, nullptr, nullptr, type);
  node->u.lval = value;
  return node;
}

NODE *make_name(SYM *sym) {
  NODE *node = make_node(NAME, nullptr, nullptr, sym->stype);
  node->u.sym = sym;
  node->qual = static_cast<std::uint8_t>(sym->squal);
  node->depnum = sym->size;
  return node;
}

NODE *make_labelref(std::int32_t index) {
  NODE *node = make_node(LABELREF, nullptr, nullptr, INT);
  node->u.lval = index;
  return node;
}

NODE *make_labeldef(LABEL *label) {
  NODE *node = make_node(LABELDEF, nullptr, nullptr, INT);
  node->label = label;
  return node;
}

NODE *make_if(NODE *condition, std::int32_t true_index, std::int32_t false_index) {
  NODE *targets = make_node(COMMA, make_labelref(true_index), make_labelref(false_index), INT);
  return make_node(IF, condition, targets, INT);
}

NODE *make_assign(NODE *lhs, NODE *rhs) {
  if (lhs->type != STRUCT) {
    NODE *node = make_node(ASSIGN, lhs, rhs, lhs->type);
    node->depnum = lhs->depnum;
    return node;
  }
  NODE *node = make_node(STASG, lhs, rhs, lhs->type);
  // An access through a pointer has no symbol of its own; the other side or the member knows one.
  SYM *sym = aggregate_symbol(lhs);
  node->u.sym = sym ? sym : aggregate_symbol(rhs);
  node->depnum = lhs->depnum;
  return node;
}

NODE *make_comma(NODE *first, NODE *second) {
  return first ? make_node(COMMA_OP, first, second, second->type) : second;
}

NODE *make_difference(NODE *a, NODE *b) {
  if (!b) return a;
  if (!a) return make_node(NEGATE, b, nullptr, promote_type(b->type));
  return make_node(SUBTRACT, a, b, is_pointer(a->type) ? TypeWord{INT} : balance_type(a, b));
}

NODE *make_goto(BB *block) {
  if (!block->labels) block->labels = label_new(0, nullptr, block);
  NODE *target = make_labelref(block->labels->index);
  target->aux.label = block->labels;
  return make_node(BRANCH, target, nullptr, INT);
}

NODE *negate_condition(NODE *tree) {
  if (op_negated(tree->op) != ILLOP) {
    tree->op = op_negated(tree->op);
    return tree;
  }
  return make_node(EQ, tree, convert_tree(tree->type, make_icon(0, INT)), INT);
}

NODE *make_asm(std::uint8_t record_byte, std::string_view text) {
  NODE *node = make_node(ASM, nullptr, nullptr, VOID);
  node->u.lval = record_byte;
  node->aux.text = copy_text(1, text);
  return node;
}

char *copy_text(int zone, std::string_view text) {
  auto *copy = static_cast<char *>(zalloc(zone, text.size() + 1));
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

LIST *list_cons(NODE *item, LIST *next, std::int16_t line, std::int16_t line2) {
  LIST *cell = take_list();
  *cell = {next, item, line, line2};
  return cell;
}

LIST *list_reverse_onto(LIST *list, LIST *tail) {
  while (list) {
    LIST *next = list->next;
    list->next = tail;
    tail = list;
    list = next;
  }
  return tail;
}

EDGE *edge_cons(BB *bb, EDGE *next) {
  EDGE *cell = take_edge();
  *cell = {next, bb};
  return cell;
}

EDGE *edge_add(BB *bb, EDGE *list) {
  for (const EDGE *cell = list; cell; cell = cell->next)
    if (cell->bb == bb) return list;
  return edge_cons(bb, list);
}

EDGE *edge_remove(BB *bb, EDGE *list) {
  for (EDGE **link = &list; *link; link = &(*link)->next)
    if ((*link)->bb == bb) {
      EDGE *cell = *link;
      *link = cell->next;
      erase_edge(cell);
      break;
    }
  return list;
}

EDGE *edge_sort(EDGE *list) {
  std::vector<BB *> blocks; // an exit block may have as many edges as the function has blocks
  for (const EDGE *cell = list; cell; cell = cell->next)
    blocks.push_back(cell->bb);
  std::stable_sort(blocks.begin(), blocks.end(),
                   [](const BB *a, const BB *b) { return a->dfn < b->dfn; });
  EDGE *cell = list;
  for (BB *block : blocks) {
    cell->bb = block;
    cell = cell->next;
  }
  return list;
}

LABEL *label_new(std::int32_t index, LABEL *next, BB *bb) {
  auto *label = static_cast<LABEL *>(lalloc(sizeof(LABEL)));
  // The counter begins anew with each function; it has 32 bits, so no two labels ever share a
  // number.
  if (index <= 0) index = --state.label_counter;
  *label = {next, bb, index, 0};
  return label;
}

NODE *erase_node(NODE *node) {
  if (node->op == ILLOP) {
    // The pointer's low word stands for the address: the message has room for eight digits.
    report("\n\n!!! COMPILER (OPTIMIZER) ERROR IN 'erase_node' %8x !!!\n",
           static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(node)));
    internal_failure();
  }
  give_node(node);
  return nullptr;
}

NODE *erase_tree(NODE *tree) {
  while (tree) {
    NODE *left = nullptr;
    if (tree->op != CSE_DUPE) {
      if (tree->op != ILLOP) erase_tree(tree->right);
      if (has_left_tree(tree)) left = tree->left;
    }
    erase_node(tree);
    tree = left;
  }
  return nullptr;
}

LIST *erase_list(LIST *list) {
  while (list) {
    LIST *next = list->next;
    if (list->item) erase_tree(list->item);
    give_list(list);
    list = next;
  }
  return nullptr;
}

EDGE *erase_edges(EDGE *list) {
  while (list) {
    EDGE *next = list->next;
    erase_edge(list);
    list = next;
  }
  return nullptr;
}

EDGE *erase_edge(EDGE *cell) {
  give_edge(cell);
  return nullptr;
}

NODE *copy_node(const NODE *node) {
  NODE *copy = take_node();
  *copy = *node;
  return copy;
}

NODE *copy_tree(const NODE *tree) {
  if (!tree) return nullptr;
  NODE *root = copy_node(tree);
  for (NODE *copy = root;;) {
    if (copy->right) copy->right = copy_tree(copy->right);
    if (!has_left_tree(copy)) return root;
    copy->left = copy_node(copy->left);
    copy = copy->left;
  }
}

NODE *copy_node_with_text(int zone, const NODE *node) {
  NODE *copy = zone == 0 ? static_cast<NODE *>(zalloc(0, sizeof(NODE))) : take_node();
  *copy = *node;
  if (has_aux_text(node->op) && node->aux.text)
    copy->aux.text = copy_bytes(zone, node->aux.text, aux_text_bytes(node));
  if (has_routine_name(node->op))
    copy->u.name = copy_bytes(zone, node->u.name, std::strlen(node->u.name) + 1);
  return copy;
}

NODE *copy_tree_global(const NODE *tree) {
  if (!tree) return nullptr;
  NODE *copy = copy_node_with_text(0, tree);
  if (has_left_tree(tree)) copy->left = copy_tree_global(tree->left);
  copy->right = copy_tree_global(tree->right);
  return copy;
}

LIST *copy_list(const LIST *list) {
  LIST *head = nullptr;
  LIST **link = &head;
  for (; list; list = list->next) {
    *link = list_cons(copy_tree(list->item), nullptr, list->line, list->line2);
    link = &(*link)->next;
  }
  return head;
}

NODE *rebuild_node(NODE *node, NODE *left, NODE *right) {
  if (node->left == left && node->right == right) return node;
  NODE *copy = copy_node(node);
  copy->left = left;
  copy->right = right;
  return copy;
}

} // namespace velkor
