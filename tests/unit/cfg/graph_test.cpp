// From statements to blocks: edges, order, exits, switches, prologues.
#include "cfg/graph_rows.h"

namespace velkor {
namespace {

using GraphTest = GraphRowTest;

TEST_F(GraphTest, EveryPathEndsInATransfer) {
  build({});
  EXPECT_EQ(graph(), (Lines{"B1:", "goto B2", "B2:", "ureturn(_self)"}));
  EXPECT_EQ(edges(), "1>2");
  build({"assign(_x,1)", "return(_self,_x)", "assign(_x,2)"});
  EXPECT_EQ(graph().back(), "return(_self, _x)");
  EXPECT_EQ(state.num_blocks, 1) << "what stands behind a return cannot be reached";
  build({"if _x L1 L2", "L1:", "assign(_x,1)", "L2:", "ureturn(_self)", "L3:", "assign(_y,1)"});
  EXPECT_EQ(graph(), (Lines{"B1:", "if _x B2 B3", "B2:", "assign(_x, 1)", "goto B3",
                            "B3:", "goto B4", "B4:", "ureturn(_self)"}));
  EXPECT_EQ(state.exit_bb->dfn, 4);
}

TEST_F(GraphTest, NothingJumpsToTheEntry) {
  build({"L1:", "L2:", "assign(_x,1)", "if _y L2 L3", "L3:", "goto L1"});
  EXPECT_EQ(graph(),
            (Lines{"B1:", "goto B2", "B2:", "assign(_x, 1)", "if _y B2 B3", "B3:", "goto B2"}));
  EXPECT_EQ(state.first_bb->preds, nullptr);
  EXPECT_EQ(state.first_bb->prev->dfn, 3);
}

TEST_F(GraphTest, SwitchesHaveADefault) {
  build({"switch(_x,comma(case(1,L1),case(2,L2)))", "assign(_y,0)", "L1:", "assign(_y,1)", "L2:"});
  EXPECT_EQ(graph()[1], "switch _x 1=B3 2=B4 B2");
  build({"switch(_x,comma(case(1,L1),case(2,L1)))", "goto L2", "L1:", "assign(_y,1)", "L2:"});
  EXPECT_EQ(graph()[1], "switch _x 1=B2 2=B2 B3");
  build({"switch(_x,case(1,L1))", "assign(_y,0)", "L1:", "assign(_y,1)"});
  EXPECT_EQ(graph()[1], "if ne(_x, 1) B2 B3");
}

TEST_F(GraphTest, PragmasStandBehindTheParameterCopies) {
  const auto copy = [&](const char *home) {
    sym(home)->parameter = symbol(home, INT, 1, C_REGPARM);
    return make_assign(name(sym(home)), name(sym(home)->parameter));
  };
  const auto pragma = [] { return node(PPRAGMA, nullptr, nullptr, VOID); };
  for (NODE *statement : {copy("_x"), pragma(), copy("_y"), pragma(), tree("assign(_z,1)")})
    state.statements = list_cons(statement, state.statements, 1, 1);
  build_cfg();
  std::vector<int> opcodes;
  for (const LIST *cell = state.first_bb->trees; cell; cell = cell->next)
    opcodes.push_back(cell->item->op);
  EXPECT_EQ(opcodes, (std::vector<int>{ASSIGN, ASSIGN, PPRAGMA, PPRAGMA, ASSIGN, BRANCH}));
}

TEST_F(GraphTest, NumbersFollowChanges) {
  build({"if _x L1 L2", "L1:", "assign(_x,1)", "L2:", "assign(_x,2)"});
  BB *entry = state.first_bb;
  BB *join = entry->next->next;
  NODE *condition = last_cell(entry)->item;
  retarget_labelrefs(condition->right, entry->next, join);
  remove_successors(entry);
  add_tree_edges(entry, condition);
  recompute_cfg();
  EXPECT_EQ(edges(), "1>2 2>3");
  EXPECT_EQ(graph()[1], "if _x B2 B2");
  BB *added = insert_block(join->dfn, join, nullptr);
  EXPECT_EQ(added->uon, -1);
  renumber_blocks();
  EXPECT_EQ(added->dfn, 3);
  EXPECT_EQ(added->labels->index, 3);
  EXPECT_EQ(state.exit_bb->prev, added);
}

TEST_F(GraphTest, AFunctionWithoutAnEndNeverReturns) {
  build({"assign(_x,1)", "L1:", "goto L1"});
  renumber_blocks();
  EXPECT_TRUE(state.cur_fun->flags & FUN_never_returns);
}

TEST_F(GraphTest, DeepGraphsNeedNoStack) {
  Lines lines;
  constexpr int blocks = 20000;
  for (int i = 1; i <= blocks; ++i) {
    lines.push_back("if _x L" + std::to_string(i) + " L" + std::to_string(blocks));
    lines.push_back("L" + std::to_string(i) + ":");
  }
  build(lines);
  EXPECT_EQ(state.num_blocks, blocks + 2);
}

} // namespace
} // namespace velkor
