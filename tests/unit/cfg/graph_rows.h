// Statements in, blocks out: for passes over the flow graph.
//
// A function is a list of lines: a tree, "L5:" for a label, "goto L5", "if TREE L1 L2". A graph is
// printed block by block along next, "B2:" and then its statements; targets are B1, B2 ...; of
// an IF the true one stands first. A TREE holds no blanks.
#pragma once

#include "cfg/graph.h"
#include "simplify/statement_rows.h"

#include <sstream>

namespace velkor {

class GraphRowTest : public StatementRowTest {
protected:
  // Builds the graph of the statements, in order of execution. Trees are taken as they are.
  void build(const Lines &input) {
    state.statements = nullptr;
    std::int16_t number = 0;
    for (const std::string &row : input) {
      ++number;
      state.statements = list_cons(graph_statement(row), state.statements, number, number);
    }
    build_cfg();
  }

  Lines graph() {
    Lines lines;
    for (const BB *block = state.first_bb; block; block = block->next) {
      lines.push_back("B" + std::to_string(block->dfn) + ":");
      for (const LIST *cell = block->trees; cell; cell = cell->next)
        lines.push_back(graph_line(cell->item));
    }
    return lines;
  }

  // Edges as "1>2 2>3", in block order, and both directions compared.
  std::string edges() {
    std::string result;
    for (const BB *block = state.first_bb; block; block = block->next)
      for (const EDGE *edge = block->succs; edge; edge = edge->next) {
        result += (result.empty() ? "" : " ") + std::to_string(block->dfn) + ">" +
                  std::to_string(edge->bb->dfn);
        EXPECT_TRUE(edge_contains(edge->bb->preds, block)) << result;
      }
    return result;
  }

  std::string graph_line(const NODE *node) {
    switch (node->op) {
    case BRANCH: return "goto " + target(node->left);
    case IF:
      return "if " + text(node->left) + " " + target(node->right->left) + " " +
             target(node->right->right);
    case SWITCH: return "switch " + text(node->left) + cases(node->right);
    default: return line(node);
    }
  }

private:
  static std::string target(const NODE *labelref) {
    return "B" + std::to_string(target_block(labelref)->dfn);
  }

  std::string cases(const NODE *list) {
    if (list->op == COMMA) return cases(list->left) + cases(list->right);
    if (list->op == DEFAULT) return " " + target(list->left);
    return " " + std::to_string(list->left->u.lval) + "=" + target(list->right);
  }

  NODE *graph_statement(const std::string &line) {
    std::istringstream words(line);
    std::string first;
    std::string second;
    std::string third;
    std::string fourth;
    words >> first >> second >> third >> fourth;
    if (first == "goto") return node(BRANCH, make_labelref(number_of(second)));
    if (first != "if") return statement(line);
    return make_if(tree(second), number_of(third), number_of(fourth));
  }

  static int number_of(const std::string &label) { return std::stoi(label.substr(1)); }
};

} // namespace velkor
