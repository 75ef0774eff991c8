// Functions for the passes that follow scalars: the rows' symbols stand on the function's chains.
#pragma once

#include "cfg/pass_rows.h"

namespace velkor {

class ScalarRowTest : public PassRowTest {
protected:
  ScalarRowTest() {
    for (const char *line :
         {"symbol _vx auto int volatile", "symbol _t static int", "symbol _t2 static int",
          "symbol K$1 auto int*", "symbol Q$2 auto int", "symbol _fp auto int()*"}) {
      std::string error;
      EXPECT_TRUE(symbols.declare(line, 2, error)) << line << ": " << error;
    }
  }

  void use_pass(std::function<void()> pass) { PassRowTest::use_pass(all_locals, std::move(pass)); }

  // A function over fresh symbols' working fields.
  void build_function(const Lines &input) {
    use_locals(all_locals);
    build(input);
  }

  // The statements of the graph that tell what the function does: calls, tests and returns, in
  // block order, whatever becomes of the assignments in front of them.
  Lines effects() {
    Lines lines;
    for (const BB *block = state.first_bb; block; block = block->next)
      for (const LIST *cell = block->trees; cell; cell = cell->next)
        if (cell->item->op == CALL || cell->item->op == RETURN)
          lines.push_back(text(cell->item));
        else if (cell->item->op == IF)
          lines.push_back("if " + text(cell->item->left));
    return lines;
  }

private:
  const Names all_locals = {"_x",  "_y",  "_z",  "_i",  "_n",  "_u", "_v",  "_w",  "_c",  "_uc",
                            "_s",  "_us", "_l",  "_f",  "_g",  "_d", "_e",  "_p",  "_q",  "_cp",
                            "_cq", "_a",  "_st", "_sp", "_vx", "_t", "_t2", "K$1", "Q$2", "_fp"};
};

} // namespace velkor
