// Live variables: what each block needs, against a search along paths.
#include "storage/random_function.h"
#include "storage/storage_rows.h"

#include <set>

namespace velkor {
namespace {

class LiveVariablesTest : public StorageRowTest {
protected:
  // live_in of each block, "1: x y; 2: x; ...", blocks where nothing is live left out.
  std::string live(const Lines &lines, LiveFor use) {
    build(lines);
    sym_split();
    find_live_variables(use);
    std::string result;
    for (BB *each = state.first_bb; each; each = each->next)
      if (const std::string members = names(live_in(each)); !members.empty())
        result += std::to_string(each->dfn) + ": " + members + "; ";
    return result;
  }
};

const Lines loop = {"assign(_x,0)", "L1:",           "if lt(_x,_n) L2 L3",
                    "L2:",          "assign(_y,_x)", "assign(_x,add(_x,1))",
                    "goto L1",      "L3:",           "return(_self,_z)"};

TEST_F(LiveVariablesTest, ARangeGoesAroundTheLoop) {
  use_locals({"_x", "_y", "_z", "_n"});
  EXPECT_EQ(live(loop, LiveFor::ALLOCATION), "1: z n; 2: x z n; 3: z; 4: x z n; ");
}

TEST_F(LiveVariablesTest, AnUpdateOfAVariableByItselfDoesNotKeepItAlive) {
  const auto expect_live = [&](const char *update, const char *in_dead_code_mode,
                               const char *result = nullptr) {
    use_locals({"_x", "_y", "_sp"});
    const Lines lines = {"goto L1", "L1:", update, "if _y L1 L2", "L2:"};
    EXPECT_EQ(live(lines, LiveFor::DEAD_CODE), in_dead_code_mode) << update;
    EXPECT_EQ(graph()[3], result ? result : text(tree(update)));
    EXPECT_NE(live(lines, LiveFor::ALLOCATION), "1: y; 2: y; ") << update;
  };
  expect_live("assign(_x,add(_x,1))", "1: y; 2: y; ");
  expect_live("asg_divide(_x,_g1)", "1: y; 2: y; ");
  expect_live("assign(_x,add(_g1,_x))", "1: y; 2: y; ", "assign(_x, add(_x, _g1))");
  expect_live("assign(_x,add(_vol,_x))", "1: x y; 2: x y; ");
  expect_live("assign(_x,add(_x,_vol))", "1: x y; 2: x y; ");
  expect_live("assign(_x,add(ucall(address(_fn)),_x))", "1: x y; 2: x y; ");
  expect_live("assign(_g1,assign(_x,add(_x,1)))", "1: x y; 2: x y; ");
}

TEST_F(LiveVariablesTest, StatementsAreTidied) {
  use_locals({"_x", "_y"});
  build({"add(_x,_y)", "comma_op(comma_op(_x,ucall(address(_fn))),assign(_x,1))", "_vol",
         "add(ucall(address(_fn)),ucall(address(_fm)))",
         "call(comma_op(asg_add(_y,1),address(_fn)),_x)", "if comma_op(assign(_x,2),_y) L1 L2",
         "L1:", "L2:"});
  sym_split();
  find_live_variables(LiveFor::ALLOCATION);
  Lines lines = graph();
  lines.resize(9);
  EXPECT_EQ(lines, (Lines{"B1:", "ucall(address(_fn))", "assign(_x, 1)", "_vol",
                          "ucall(address(_fn))", "ucall(address(_fm))", "asg_add(_y, 1)",
                          "call(address(_fn), _x)", "assign(_x, 2)"}));
  EXPECT_EQ(block(1)->trees->line, 2) << "the parts of a statement keep its line";
}

TEST_F(LiveVariablesTest, AVariableWhoseAddressGetsAwayIsNoCandidate) {
  use_locals({"_x", "_y", "_z", "_st"});
  EXPECT_EQ(live({"call(address(_fn),comma(address(_x),_y))", "assign(_p,address(_z))",
                  "assign(_gp,pconv:int*(address(member(_st,_m))))", "goto L1",
                  "L1:", "return(_self,add(add(_x,_y),_z))"},
                 LiveFor::DEAD_CODE),
            "1: y; 2: y; ");
  EXPECT_EQ(sym("_x")->count, candidate_lost);
  EXPECT_TRUE(sym("_x")->fcp_flag && sym("_z")->fcp_flag && sym("_st")->fcp_flag);
  EXPECT_FALSE(sym("_y")->fcp_flag);
}

TEST_F(LiveVariablesTest, AnAssignmentThatMayBeSkippedKeepsTheOldValue) {
  use_locals({"_x", "_y"});
  for (const char *statement :
       {"logical_and(_g1,assign(_x,1))", "logical_or(_g1,assign(_x,1))",
        "conditional:int(_g1,alternatives:int(assign(_x,1),ucall(address(_fn))))"}) {
    const Lines lines = {"assign(_x,0)", "goto L1", "L1:", statement, "return(_self,_x)"};
    EXPECT_EQ(live(lines, LiveFor::DEAD_CODE), "2: x; ") << statement;
    EXPECT_EQ(live(lines, LiveFor::ALLOCATION), "2: x; ") << statement;
    EXPECT_EQ(names(live_out(block(1))), "x") << statement;
  }
}

TEST_F(LiveVariablesTest, CallsAndTheEndReadStatics) {
  sym("_n")->sclass = C_STAT;
  use_locals({"_x", "_n"});
  EXPECT_EQ(live({"assign(_n,1)", "if _x L1 L2", "L1:", "assign(_n,2)", "return(_self,0)",
                  "L2:", "assign(_n,_x)", "return(_self,1)"},
                 LiveFor::DEAD_CODE),
            "1: x; 3: x; ");
  EXPECT_EQ(names(live_out(block(2))), "n") << "at the end";
  const auto before_a_call = [&](const char *call) {
    return live({"assign(_x,1)", "goto L1", "L1:", call, "assign(_n,2)", "return(_self,_x)"},
                LiveFor::DEAD_CODE);
  };
  EXPECT_EQ(before_a_call("ucall(address(_fn))"), "1: n; 2: x n; ") << "it may come back in";
  EXPECT_EQ(before_a_call("assign(_g1,2)"), "2: x; ");
  options.opt_assume_reentrant = 0;
  EXPECT_EQ(before_a_call("call(address(_strlen),_cp)"), "2: x; ");
  EXPECT_EQ(before_a_call("ucall:int(_p)"), "1: n; 2: x n; ") << "it may leave by a jump";
  EXPECT_EQ(before_a_call("call(address(_exit),1)"), "1: n; 2: x n; ");
  EXPECT_EQ(live({"ucall(address(_fn))", "return(_self,_n)"}, LiveFor::ALLOCATION), "");
}

TEST_F(LiveVariablesTest, ForAllocationARangeBeginsWhereThereIsAValue) {
  use_locals({"_x", "_y"});
  const Lines lines = {
      "assign(_y,1)", "if _g1 L1 L2",  "L1:",     "assign(_x,_y)", "goto L3",
      "L2:",          "asg_add(_y,1)", "goto L3", "L3:",           "return(_self,add(_x,_y))"};
  live(lines, LiveFor::DEAD_CODE);
  EXPECT_EQ(names(live_out(block(1))), "x y");
  live(lines, LiveFor::ALLOCATION);
  EXPECT_EQ(names(live_out(block(1))), "y") << "nothing has set x yet";
  EXPECT_EQ(names(live_in(block(1))), "x") << "what the entry needs stays as it is";
  sym("_x")->level = 1;
  live(lines, LiveFor::ALLOCATION);
  EXPECT_EQ(names(live_out(block(1))), "x y") << "a parameter has a value from the start";
}

TEST_F(LiveVariablesTest, WithoutCandidatesNothingIsSaid) {
  use_locals({"_a", "_st"});
  sym("_g1")->count = 0; // a figure that some other pass has left
  build({"assign(_g1,1)"});
  sym_split();
  EXPECT_EQ(debug_text([] { find_live_variables(LiveFor::DEAD_CODE); }),
            "\n\n\t\t\t---------- ENTERING 'find_live_variables' --------\n");
  use_locals({"_x"});
  build({"assign(_g1,_x)"});
  sym_split();
  EXPECT_EQ(debug_text([] { find_live_variables(LiveFor::DEAD_CODE); }),
            "\n\n\t\t\t---------- ENTERING 'find_live_variables' --------\n"
            "\tLVA candidate  0 is variable '_x'\n"
            "\n\tNext iteration of global live variable loop\n");
  EXPECT_EQ(names(live_in(block(1))), "x");
  EXPECT_EQ(names(defs(block(1))), "") << "the global has the number of x, and is no candidate";
}

// ------------------------------------------------------------------------------------------------
// Random functions

// By the definition: does a path lead from the block's start to a read of sym, without an
// assignment before it?
bool reads(const NODE *tree, const SYM *sym) {
  if (!tree) return false;
  if (tree->op == NAME) return tree->u.sym == sym;
  const bool assigns_name = tree->op == ASSIGN && tree->left->op == NAME;
  return reads(tree->right, sym) || (!assigns_name && reads(tree->left, sym));
}

bool assigns(const NODE *tree, const SYM *sym) {
  if (!tree) return false;
  if (tree->op == ASSIGN && tree->left->op == NAME && tree->left->u.sym == sym) return true;
  return assigns(tree->left, sym) || assigns(tree->right, sym);
}

bool is_live_at(const BB *block, const SYM *sym, std::set<const BB *> &seen) {
  if (!seen.insert(block).second) return false;
  for (const LIST *cell = block->trees; cell; cell = cell->next) {
    if (reads(cell->item, sym)) return true;
    if (assigns(cell->item, sym)) return false;
  }
  for (const EDGE *edge = block->succs; edge; edge = edge->next)
    if (is_live_at(edge->bb, sym, seen)) return true;
  return false;
}

bool is_live_behind(const BB *block, const SYM *sym) {
  for (const EDGE *edge = block->succs; edge; edge = edge->next) {
    std::set<const BB *> seen;
    if (is_live_at(edge->bb, sym, seen)) return true;
  }
  return false;
}

// Has some way to the block's end read or assigned sym?
bool is_touched(const BB *block, const SYM *sym, std::set<const BB *> &seen) {
  if (!seen.insert(block).second) return false;
  for (const LIST *cell = block->trees; cell; cell = cell->next)
    if (reads(cell->item, sym) || assigns(cell->item, sym)) return true;
  for (const EDGE *edge = block->preds; edge; edge = edge->next)
    if (is_touched(edge->bb, sym, seen)) return true;
  return false;
}

TEST_F(LiveVariablesTest, AgreesWithASearchAlongPaths) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    use_locals({"_x", "_y", "_z", "_i", "_n"});
    live(RandomFunction(seed).lines, LiveFor::ALLOCATION);
    for (BB *each = state.first_bb; each; each = each->next)
      for (const char *variable : random_variables) {
        SYM *local = sym(variable);
        std::set<const BB *> seen;
        EXPECT_EQ(set_has(live_in(each), local->count), is_live_at(each, local, seen))
            << "seed " << seed << ", block " << each->dfn << ", " << variable;
        seen.clear();
        EXPECT_EQ(set_has(live_out(each), local->count),
                  is_live_behind(each, local) && is_touched(each, local, seen))
            << "seed " << seed << ", behind block " << each->dfn << ", " << variable;
      }
  }
}

} // namespace
} // namespace velkor
