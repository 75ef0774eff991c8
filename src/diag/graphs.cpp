#include "diag/graphs.h"

#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "diag/dump.h"
#include "diag/graph_file.h"
#include "diag/infix.h"
#include "diag/readable_name.h"
#include "diag/type_text.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace velkor {
namespace {

std::string numbered(const char *extension, int number) {
  return extension + std::to_string(number);
}

std::string function_name() {
  return graph_text(state.cur_fun_sym ? readable_name(state.cur_fun_sym->name, 1) : "");
}

// ------------------------------------------------------------------------------------------------
// Control flow

// The first statement that says something: parameter copies and comments are passed over as long
// as another statement follows.
const LIST *first_telling_statement(const LIST *cell) {
  while (cell && cell->next && (cell->item->op == PCOMMA || is_comment_asm(cell->item)))
    cell = cell->next;
  return cell;
}

void draw_statement(GraphFile &file, const BB *block, const NODE *tree) {
  file.print("\fb%d: \fn%s", block->dfn, graph_text(tree2infix(tree)).c_str());
}

void draw_block(GraphFile &file, const BB *block) {
  file.print("node: {title: \"B%d\" label: \"", block->dfn);
  const LIST *cell = first_telling_statement(block->trees);
  if (cell) {
    draw_statement(file, block, cell->item);
    for (cell = cell->next; cell; cell = cell->next) {
      if (cell->item->op == BRANCH || is_comment_asm(cell->item)) continue;
      file.print("\n");
      draw_statement(file, block, cell->item);
    }
  }
  file.print("\"}\n");
}

void draw_successors(GraphFile &file, const BB *block) {
  for (const EDGE *edge = block->succs; edge; edge = edge->next) {
    const int target = edge->bb->dfn;
    if (target <= block->dfn)
      file.print("backedge:{sourcename:\"B%d\" targetname:\"B%d\"\n"
                 "                                  anchor:1 color:red linestyle:dashed}\n",
                 block->dfn, target);
    else
      file.print("edge:    {sourcename:\"B%d\" targetname:\"B%d\"}\n", block->dfn, target);
  }
}

// ------------------------------------------------------------------------------------------------
// Trees

// The opcode's name up to its first blank.
std::string opcode_word(const NODE *node) {
  const std::string_view name = op_name(node->op);
  return graph_text(name.substr(0, name.find(' ')));
}

// The node as infix text without the semicolon at its end. The two jumps of an IF stand on two
// lines.
std::string node_text(const NODE *node) {
  std::string text = tree2infix(node);
  text.pop_back();
  const std::size_t end = node->op == IF ? text.find(';') : std::string::npos;
  if (end != std::string::npos)
    text.replace(end, std::min<std::size_t>(2, text.size() - end), "\n");
  return graph_text(text);
}

// Children that are trees and belong to this node.
bool has_operands(const NODE *node) {
  return node->op != ILLOP && node->op != LABELDEF;
}

// Draws the tree whose root gets this number; order tells which operand of its parent it is.
// Returns the last number used.
int tree_graph_node(GraphFile &file, const NODE *node, int order, int number) {
  file.print("node: {title: \"%d\" label:\"\fb%s\fn %s\n", number, opcode_word(node).c_str(),
             type_text(node->type));
  file.print("%s\" horizontal_order:%d}\n", node_text(node).c_str(), order);
  int last = number;
  if (!has_operands(node)) return last;
  for (const NODE *child : {node->left, node->right}) {
    if (!child) continue;
    const int child_number = last + 1;
    last = tree_graph_node(file, child, child == node->left ? 0 : 1, child_number);
    file.print("edge: {sourcename: \"%d\" targetname: \"%d\"}\n", number, child_number);
  }
  return last;
}

// ------------------------------------------------------------------------------------------------
// Loops

const LoopRecord *innermost_loop(const BB *block) {
  return static_cast<const LoopRecord *>(block->work[innermost_loop_slot]);
}

void loop_graph_node(GraphFile &file, const LoopRecord *loop, bool is_root, int order) {
  if (is_root) {
    file.print("node: {title: \"L%d\" label: \"%s()\" shape:ellipse}\n", loop->number,
               function_name().c_str());
  } else {
    file.print("node: {title: \"L%d\" label: \"Loop %d\"                    shape:rhomb  "
               "horizontal_order:%d}\n",
               loop->number, loop->number, order);
    file.print("edge: {sourcename: \"L%d\" targetname: \"L%d\"}\n", loop->parent->number,
               loop->number);
  }
  int position = 0;
  for (const EDGE *edge = loop->blocks; edge; edge = edge->next, ++position) {
    const BB *block = edge->bb;
    const LoopRecord *innermost = innermost_loop(block);
    if (innermost != loop) {
      loop_graph_node(file, innermost, false, position);
      continue;
    }
    file.print("node: {title: \"B%d\" label: \"BB %d\" horizontal_order:%d}\n", block->dfn,
               block->dfn, position);
    file.print("edge: {sourcename: \"L%d\" targetname: \"B%d\"}\n", loop->number, block->dfn);
  }
}

} // namespace

void dump_cfg_graph() {
  if (options.debug_level == 0 || !state.first_bb) return;
  GraphFile file(numbered("cfg", ++state.cfg_graphs));
  if (!file.is_open()) return;
  debug_print("\n  DUMPING CONTROL FLOW-GRAPH TO %s\n", file.name().c_str());
  const std::string name = function_name();
  file.print("\n\ngraph: { title:  \"CFG for function %s\"\n\n", name.c_str());
  file.print("  width:   500\n  height:  900\n");
  file.print("  splines: yes\n  color:   lightcyan\n\n");
  file.print("  node_alignment:top\n");
  file.print("node: {title: \"FUNCTION\" label: \"\fb%s()\fn\" shape:ellipse}\n", name.c_str());
  for (const BB *block = state.first_bb; block; block = block->next)
    draw_block(file, block);
  file.print("nearedge: {sourcename:\"FUNCTION\" targetname:\"B%d\"}\n", state.first_bb->dfn);
  for (const BB *block = state.first_bb; block; block = block->next)
    draw_successors(file, block);
  file.print("\n}\n");
}

NODE *dump_tree_graph(NODE *tree) {
  if (options.debug_level == 0 || !tree) return tree;
  const int number = ++state.tree_graphs;
  GraphFile file(numbered("tree", number));
  if (!file.is_open()) return tree;
  const std::string text = tree2infix(tree);
  debug_print("\n  DUMPING AST GRAPH TO %s: ", file.name().c_str());
  debug_print(" %s\n", text.c_str());
  file.print("\n// **** AST graph: %s", text.c_str());
  file.print("\n\ngraph: {title: \"AST Graph\"\n\n");
  file.print("  width:   500\n  height:  600\n");
  file.print("  splines: yes\n  color:   lightyellow\n\n");
  file.print("node:{title:\"AST\"label:\" \fb*.tree%d\fn \"", number);
  file.print(" shape:ellipse horizontal_order:0}\n");
  tree_graph_node(file, tree, 1, 0);
  file.print("nearedge: {sourcename:\"AST\" targetname:\"0\"");
  file.print("           linestyle:dotted}\n}\n");
  return tree;
}

void dump_loop_graph(const LoopRecord *root) {
  if (options.debug_level == 0 || !root) return;
  GraphFile file(numbered("loop", ++state.loop_graphs));
  if (!file.is_open()) return;
  debug_print("\n  DUMPING LOOP HIERARCHY GRAPH TO %s\n", file.name().c_str());
  file.print("\n\ngraph: {title: \"Loop hierarchy for function %s\"\n\n", function_name().c_str());
  file.print("  width: 500\n  height: 600\n");
  file.print("  splines: yes\n  color: aquamarine\n\n");
  loop_graph_node(file, root, true, 0);
  file.print("\n}\n");
}

} // namespace velkor
