// Functions and trees for the tests of lowering.
//
// Beside the symbols of tree_rows.h: int _r and _r2, char _rc, int* _rp in register variables;
// volatile int _rv in one; int _h, _k1 in machine register 1; int _cr in a control register.
#pragma once

#include "cfg/graph_rows.h"
#include "lower/lowering.h"
#include "lower/narrow_accesses.h"
#include "lower/unsimp_blocks.h"

#include <string>
#include <vector>

namespace velkor {

struct LoweringRow {
  const char *input;
  const char *output; // a null pointer: the tree stays as it is
  int target_mode = 0;
};

class LoweringTest : public GraphRowTest {
protected:
  LoweringTest() {
    lowering = {};
    options.opt_target_mode = 0;
    for (const char *line :
         {"symbol _r auto int register_variable", "symbol _r2 auto int register_variable",
          "symbol _rc auto char register_variable", "symbol _rp auto int* register_variable",
          "symbol _rv auto int volatile register_variable", "symbol _h register int offset=1",
          "symbol _k1 register int offset=1", "symbol _cr auto int control_register"}) {
      std::string error;
      EXPECT_TRUE(symbols.declare(line, 2, error)) << line << ": " << error;
    }
    block.dfn = 1;
  }

  void expect_lowered(const std::vector<LoweringRow> &rows) {
    for (const LoweringRow &row : rows) {
      options.opt_target_mode = row.target_mode;
      NODE *input = tree(row.input);
      if (!input) continue;
      const std::string expected = text(tree(row.output ? row.output : row.input));
      EXPECT_EQ(text(unsimp_tree(input, &block, nullptr)), expected)
          << "of " << row.input << " in mode " << row.target_mode;
    }
  }

  void expect_narrowed(const std::vector<LoweringRow> &rows) {
    for (const LoweringRow &row : rows) {
      options.opt_target_mode = row.target_mode;
      NODE *input = tree(row.input);
      if (!input) continue;
      const std::string expected = text(tree(row.output ? row.output : row.input));
      EXPECT_EQ(text(narrow_statement(input, &block, nullptr)), expected)
          << "of " << row.input << " in mode " << row.target_mode;
    }
  }

  // The statements, all of one source line, after lowering. The jump to the function's end goes
  // along with them, so that none of them is the last of its block.
  Lines lowered(const Lines &input) {
    build(input);
    for (LIST *cell = state.first_bb->trees; cell; cell = cell->next)
      cell->line2 = 1;
    clear_labels();
    unsimp_blocks();
    Lines result;
    for (const LIST *cell = state.first_bb->trees; cell; cell = cell->next)
      if (cell->item->op != BRANCH && cell->item->op != URETURN) result.push_back(line(cell->item));
    return result;
  }

  static void clear_labels() {
    for (BB *each = state.first_bb; each; each = each->next)
      for (LABEL *label = each->labels; label; label = label->next)
        label->refcount = 0;
  }

  BB block{};
};

} // namespace velkor
