// Statements in, statements out: for passes that work on whole statement lists.
#pragma once

#include "simplify/tree_rows.h"

#include <string>
#include <vector>

namespace velkor {

using Lines = std::vector<std::string>;

class StatementRowTest : public TreeRowTest {
protected:
  // One statement: a tree, or "L5:" for a label.
  NODE *statement(const std::string &line) {
    if (line[0] == 'L' && line.back() == ':')
      return make_labeldef(label_new(std::stoi(line.substr(1)), nullptr, nullptr));
    return tree(line);
  }

  // A statement as a line. Labels are L5 as in the input, and N1, N2 ... where the pass made them.
  std::string line(const NODE *node) {
    switch (node->op) {
    case LABELDEF: return label(node->label->index) + ":";
    case BRANCH: return "goto " + label(node->left->u.lval);
    case IF:
      return "if " + text(node->left) + " " + label(node->right->left->u.lval) + " " +
             label(node->right->right->u.lval);
    case CBRANCH: return "unless " + text(node->left) + " " + label(node->right->u.lval);
    case ASM: return std::string("comment ") + node->aux.text;
    default: return text(node);
    }
  }

private:
  static std::string label(int index) {
    return index < 0 ? "N" + std::to_string(-index) : "L" + std::to_string(index);
  }
};

} // namespace velkor
