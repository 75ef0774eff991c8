#include "diag/dump.h"

#include "core/output.h"
#include "core/state.h"
#include "diag/constant_text.h"
#include "diag/infix.h"
#include "diag/readable_name.h"
#include "diag/type_text.h"

#include <array>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace velkor {
namespace {

constexpr std::size_t op_name_width = 8;
using PaddedName = std::array<char, op_name_width + 1>;

constexpr std::array<PaddedName, 256> padded_names = [] {
  std::array<PaddedName, 256> names{};
  for (std::size_t op = 0; op < names.size(); ++op) {
    std::string_view name = opcode_table[op].listed ? opcode_table[op].name : " ?NODE? ";
    for (std::size_t i = 0; i < op_name_width; ++i)
      names[op][i] = i < name.size() ? name[i] : ' ';
  }
  return names;
}();

// A symbol that the file names by a negative level is none.
const char *symbol_name(const SYM *sym) {
  return sym ? readable_name(sym->name, 0) : "(nil)";
}

int symbol_level(const SYM *sym) {
  return sym ? sym->level : -1;
}

std::int32_t case_value(const NODE *node) {
  if (!node) return 0;
  return node->op == LABELREF && node->aux.label ? node->aux.label->index : node->u.lval;
}

void print_label_reference(const NODE *node) {
  const LABEL *label = node->aux.label;
  debug_print("%ld", static_cast<long>(label ? label->index : node->u.lval));
  if (label && label->bb) debug_print("   uon=%d, dfn=%d", label->bb->uon, label->bb->dfn);
  debug_print("\n");
}

void print_case(const NODE *node) {
  const TypeWord type = node->left ? node->left->type : TypeWord{INT};
  const char *value = constant_text(case_value(node->left), type, 0);
  const char *target = constant_text(case_value(node->right), INT, 1);
  debug_print("ca:%s  la:%s\n", value, target);
}

void print_qualifier(const NODE *node) {
  if (node->qual) debug_print("qual:0x%x  ", node->qual);
}

// One line: what all nodes have, then what the opcode adds.
void dump_node(const NODE *node) {
  const char *name = node->op == DEREF && node->right ? "U*2     " : op_name(node->op);
  debug_print("   %s depnum:%ld\t nsize:%2ld  type:0x%lx\t%s\t", name,
              static_cast<long>(node->depnum), static_cast<long>(node->nsize),
              static_cast<unsigned long>(node->type), type_text(node->type));
  switch (node->op) {
  case NAME:
    print_qualifier(node);
    debug_print("level:%d ", symbol_level(node->u.sym));
    if (node->aux.sym) debug_print("%s ==> ", symbol_name(node->aux.sym));
    debug_print("%s\n", symbol_name(node->u.sym));
    break;
  case LABELREF: print_label_reference(node); break;
  case SCON:
  case ICON:
  case FCON: debug_print("%s\n", tree2infix(node)); break;
  case SWITCH:
  case SKIP: debug_print("%ld\n", static_cast<long>(node->u.lval)); break;
  case MEMBER:
  case ARROW:
  case DEREF:
    print_qualifier(node);
    debug_print("\n");
    break;
  case CASE: print_case(node); break;
  case STASG:
  case STARG:
  case STCALL:
  case USTCALL:
    debug_print("level:%d %s\n", symbol_level(node->u.sym), symbol_name(node->u.sym));
    break;
  case XCALL:
  case UXCALL:
  case ICALL: debug_print("%s\n", node->u.name ? node->u.name : "(nil)"); break;
  case ILLOP: debug_print(" <<<<<<<<<<<< ILLEGAL TREE!!\n"); break;
  default: debug_print("\n"); break;
  }
}

// Operands that hang in this tree: those of a freed node are stale, the operand of a label
// definition is no tree, and what a copy shares is shown under its original.
const NODE *left_tree(const NODE *node) {
  return node->op == ILLOP || node->op == LABELDEF ? nullptr : node->left;
}
const NODE *right_tree(const NODE *node) {
  return node->op == ILLOP || node->op == LABELDEF || node->op == CSE_DUPE ? nullptr : node->right;
}

void print_edges(const char *heading, const EDGE *edges) {
  debug_print("%s", heading);
  for (const EDGE *edge = edges; edge; edge = edge->next)
    debug_print("%d ", edge->bb->dfn);
  debug_print(")\n");
}

void print_descendants(const std::uint32_t *set) {
  debug_print("\tDESCENDANTS =  ( ");
  for (int i = 1; i <= state.num_blocks; ++i)
    if (set[i >> 5] >> (i & 31) & 1) debug_print("%d ", i);
  debug_print(")\n");
}

const SYM *loop_control_symbol(const NODE *tree) {
  while (tree && tree->op != NAME)
    tree = left_tree(tree);
  return tree ? tree->u.sym : nullptr;
}

void dump_block(const BB *bb) {
  debug_print("\n\n:::: BASIC BLOCK DUMP, UON=%d, DFN=%d\n", bb->uon, bb->dfn);
  for (const LABEL *label = bb->labels; label; label = label->next)
    debug_print("\tLABEL, INDEX=%d, REFCOUNT=%d, NAME=<NONE>\n", label->index, label->refcount);
  if (bb->loop_ctl)
    debug_print("\tHeader of a loop controlled by %s\n",
                symbol_name(loop_control_symbol(bb->loop_ctl)));
  if (bb->loop_iters)
    debug_print("\tHeader of a loop with #iterations = %s\n", tree2infix(bb->loop_iters));
  print_edges("\tPREDECESSORS = ( ", bb->preds);
  print_edges("\tSUCCESSORS =   ( ", bb->succs);
  if (bb->descendants) print_descendants(bb->descendants);
  if (bb->depth) debug_print("\tLOOP DEPTH = %d\n", bb->depth);
  dump_trees(bb->trees);
}

bool is_branch_to(const NODE *node, const BB *bb) {
  return bb && node->op == BRANCH && node->left && node->left->op == LABELREF &&
         node->left->aux.label && node->left->aux.label->bb == bb;
}

// Is there a freed node, or one that the walk meets twice?
bool has_duplicate(const NODE *tree) {
  std::unordered_set<const NODE *> seen;
  std::vector<const NODE *> pending = {tree};
  while (!pending.empty()) {
    const NODE *node = pending.back();
    pending.pop_back();
    if (node->op == ILLOP || !seen.insert(node).second) return true;
    if (node->op == CSE_DUPE) continue; // shares its operands with other trees
    if (const NODE *left = left_tree(node)) pending.push_back(left);
    if (const NODE *right = right_tree(node)) pending.push_back(right);
  }
  return false;
}

} // namespace

const char *op_name(std::uint8_t op) {
  return padded_names[op].data();
}

void dump_tree(const NODE *tree) {
  if (!state.debug_on) return;
  if (!tree) debug_print("   >>>>>>>>>> ILLEGAL TREE: (nil) <<<<<<<<<<<<\n");
  std::vector<const NODE *> pending; // not recursion: a file's trees may be very deep
  if (tree) pending.push_back(tree);
  while (!pending.empty()) {
    const NODE *node = pending.back();
    pending.pop_back();
    dump_node(node);
    if (const NODE *right = right_tree(node)) pending.push_back(right);
    if (const NODE *left = left_tree(node)) pending.push_back(left);
  }
  debug_flush();
}

void dump_trees(const LIST *list) {
  if (!state.debug_on) return;
  int number = 0;
  for (const LIST *cell = list; cell; cell = cell->next) {
    debug_print("\n::::: tree %d ::::: (%d,%d)\n", ++number, cell->line, cell->line2);
    const NODE *tree = cell->item;
    if (tree && tree->op == LABELDEF) {
      debug_print("\n     LABEL DEFINITION: INDEX = %d\n", tree->label ? tree->label->index : 0);
      continue;
    }
    debug_print("%s\n", tree2infix(tree));
    dump_tree(tree);
  }
}

void dump_blocks(const BB *first, const BB *last) {
  if (!state.debug_on) return;
  for (const BB *bb = first; bb; bb = bb->next) {
    dump_block(bb);
    if (bb == last) break;
  }
}

void print_block_trees(const BB *first, const BB *last) {
  if (!state.debug_on) return;
  for (const BB *bb = first; bb && (!last || bb->dfn <= last->dfn); bb = bb->next) {
    debug_print("\t    BB %d:  g%d\n", bb->dfn, bb->dfn);
    for (const LIST *cell = bb->trees; cell; cell = cell->next)
      if (!cell->item || !is_branch_to(cell->item, bb->next))
        debug_print("\t    BB %d:   \t%s\n", bb->dfn, tree2infix(cell->item));
  }
}

void check_duplicates(const NODE *tree) {
  if (!state.debug_on || !tree || !has_duplicate(tree)) return;
  debug_print("\n\n!*!*!*!*!*!  Duplicate found in tree: ");
  debug_print("%s !*!*!*!*!*!\n", tree2infix(tree));
  dump_tree(tree);
}

} // namespace velkor
