#include "cfg/check_function.h"

#include "cfg/graph.h"
#include "core/failure.h"
#include "simplify/tree_rows.h"

#include <functional>
#include <string>

namespace velkor {
namespace {

// A small function, sound in every way, which each test breaks in one. Its blocks:
//   1: x = 1; goto 2   2: if (x < 5) 3 else 4   3: x = x + 1; goto 2   4: return
class CheckFunctionTest : public TreeRowTest {
protected:
  CheckFunctionTest() {
    for (auto *&block : blocks)
      block = add_block();
    put(entry(), tree("assign(_x, 1)"));
    put(entry(), make_goto(test()));
    put(test(), branch_if(tree("lt(_x, 5)"), body(), leave()));
    put(body(), tree("assign(_x, add:int(_x, 1))"));
    put(body(), make_goto(test()));
    put(leave(), make_node(URETURN, make_name(sym("_self")), nullptr, VOID));
    for (BB *block : blocks)
      if (block != leave()) add_tree_edges(block, last_cell(block)->item);
    state.exit_bb = leave();
  }

  BB *entry() { return blocks[0]; }
  BB *test() { return blocks[1]; }
  BB *body() { return blocks[2]; }
  BB *leave() { return blocks[3]; }

  BB *add_block() {
    if (state.first_bb) {
      BB *last = state.first_bb->prev;
      BB *made = insert_block(last->dfn + 1, last, nullptr);
      made->labels->index = made->dfn;
      return made;
    }
    BB *made = new (lalloc(sizeof(BB))) BB{};
    made->dfn = state.num_blocks = 1;
    made->labels = label_new(1, nullptr, made);
    return made->prev = state.first_bb = made;
  }

  static void put(BB *block, NODE *statement) {
    LIST **link = &block->trees;
    while (*link)
      link = &(*link)->next;
    *link = list_cons(statement, nullptr, 1, 1);
  }

  static NODE *branch_if(NODE *condition, BB *true_target, BB *false_target) {
    NODE *node = make_if(condition, 0, 0);
    node->right->left->aux.label = true_target->labels;
    node->right->right->aux.label = false_target->labels;
    return node;
  }

  // What the check prints, or an empty text.
  static std::string verdict() {
    ::testing::internal::CaptureStdout();
    bool failed = false;
    try {
      check_function("a pass");
    } catch (...) {
      failed = true; // the end of a run is the driver's own exception
    }
    const std::string text = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(failed, !text.empty());
    const std::string begin = "\n!!! COMPILER (OPTIMIZER) ERROR IN 'check_function': ";
    if (text.rfind(begin, 0) != 0) return text;
    return text.substr(begin.size(), text.find(", behind 'a pass') !!!\n") - begin.size());
  }

  BB *blocks[4];
};

TEST_F(CheckFunctionTest, ASoundFunctionPasses) {
  EXPECT_EQ(verdict(), "");
  for (BB *block : blocks)
    block->trees = nullptr;
  EXPECT_EQ(verdict(), "") << "a written function has no statements left";
}

TEST_F(CheckFunctionTest, TheChainIsDenseAndARing) {
  body()->dfn = 7;
  EXPECT_EQ(verdict(), "a block out of its order (block 7");
  body()->dfn = 3;
  body()->prev = entry();
  EXPECT_EQ(verdict(), "a block that does not know the one ahead (block 3");
  body()->prev = test();
  entry()->prev = body();
  EXPECT_EQ(verdict(), "the ring is not closed (block 0");
  entry()->prev = leave();
  state.num_blocks = 3;
  EXPECT_EQ(verdict(), "more blocks than counted (block 4");
  state.num_blocks = 5;
  EXPECT_EQ(verdict(), "fewer blocks than counted (block 0");
}

TEST_F(CheckFunctionTest, EveryBlockStandsInTheOrderOfCreation) {
  test()->uon_next = leave();
  EXPECT_EQ(verdict(), "a block that the order of creation lacks (block 3");
  test()->uon_next = entry();
  EXPECT_EQ(verdict(), "the order of creation runs in a circle (block 1");
  test()->uon_next = body();
  BB stray{};
  stray.trees = leave()->trees;
  leave()->uon_next = &stray;
  EXPECT_EQ(verdict(), "a block outside of the chain has statements (block 0");
  stray.trees = nullptr;
  EXPECT_EQ(verdict(), "") << "an unreachable block stays there without statements";
}

TEST_F(CheckFunctionTest, TheEndsOfAMachineLoopNameANumber) {
  const auto numbered = [&](const char *line) {
    NODE *end = tree(line);
    end->right = make_labelref(9);
    return end;
  };
  body()->trees = list_cons(numbered("loop(_x, 1)"), body()->trees, 1, 1);
  last_cell(test())->item->left = numbered("endloop:int(asg_subtract(_x, 1), 1)");
  EXPECT_EQ(verdict(), "");
  last_cell(body())->item->left->aux.label = nullptr;
  EXPECT_EQ(verdict(), "a label reference without a label (block 3");
}

TEST_F(CheckFunctionTest, EdgesAgree) {
  leave()->preds = erase_edges(leave()->preds);
  EXPECT_EQ(verdict(), "an edge that its target does not know (block 2");
  leave()->preds = edge_cons(body(), edge_cons(test(), nullptr));
  EXPECT_EQ(verdict(), "an edge that its source does not know (block 3");
  leave()->preds = edge_cons(test(), edge_cons(test(), nullptr));
  EXPECT_EQ(verdict(), "an edge that is there twice (block 2");
  BB stray{};
  stray.dfn = 2;
  leave()->preds = edge_cons(&stray, nullptr);
  EXPECT_EQ(verdict(), "an edge that leads out of the chain (block 4");
  leave()->preds = edge_cons(test(), nullptr);
  entry()->preds = edge_cons(body(), nullptr);
  EXPECT_EQ(verdict(), "the entry has a predecessor (block 0");
}

TEST_F(CheckFunctionTest, SuccessorsAreTheTargetsOfTheLastStatement) {
  last_cell(body())->item->left->aux.label = leave()->labels;
  EXPECT_EQ(verdict(), "a target that is no successor (block 3");
  body()->succs = edge_add(leave(), body()->succs);
  leave()->preds = edge_add(body(), leave()->preds);
  EXPECT_EQ(verdict(), "a successor that nothing jumps to (block 3");
}

TEST_F(CheckFunctionTest, BlocksEndInOneTransfer) {
  put(leave(), tree("assign(_x, 1)"));
  EXPECT_EQ(verdict(), "statements behind a transfer of control (block 4");
  leave()->trees = leave()->trees->next;
  EXPECT_EQ(verdict(), "a block that falls through (block 4");
  leave()->trees = nullptr;
  EXPECT_EQ(verdict(), "a block without statements (block 4");
  put(leave(), make_node(CBRANCH, tree("_x"), make_goto(leave())->left, INT));
  EXPECT_EQ(verdict(), "a block that falls through (block 4");
}

TEST_F(CheckFunctionTest, OneBlockHoldsTheReturn) {
  NODE *&jump = last_cell(body())->item;
  jump = copy_tree(leave()->trees->item);
  test()->preds = edge_remove(body(), test()->preds);
  body()->succs = erase_edges(body()->succs);
  EXPECT_EQ(verdict(), "more than one URETURN (block 0");
  jump = make_node(RETURN, make_name(sym("_self")), icon(0), INT);
  EXPECT_EQ(verdict(), "");
}

TEST_F(CheckFunctionTest, LabelsStandOnTheirBlocks) {
  NODE *target = last_cell(body())->item->left;
  LABEL *right = target->aux.label;
  target->aux.label = nullptr;
  EXPECT_EQ(verdict(), "a label reference without a label (block 3");
  target->aux.label = label_new(9, nullptr, test());
  EXPECT_EQ(verdict(), "a label that its block does not bear (block 3");
  BB stray{};
  target->aux.label = label_new(9, nullptr, &stray);
  EXPECT_EQ(verdict(), "a jump to a block that is not in the chain (block 3");
  target->aux.label = right;
  leave()->labels->bb = test();
  EXPECT_EQ(verdict(), "a label of another block (block 4");
}

TEST_F(CheckFunctionTest, TreesAreWholeAndTheirOwn) {
  NODE *&statement = body()->trees->item;
  const auto broken = [&](NODE *replacement) {
    NODE *sound = statement;
    statement = replacement;
    const std::string result = verdict();
    statement = sound;
    return result.substr(0, result.find(" (block 3"));
  };
  NODE *shared = tree("_x");
  EXPECT_EQ(broken(make_node(ASSIGN, shared, shared, INT)), "a node hangs in two places");
  EXPECT_EQ(broken(entry()->trees->item), "a node hangs in two places") << "across blocks";
  NODE *freed = tree("_x");
  freed->op = ILLOP;
  EXPECT_EQ(broken(freed), "a freed node hangs in a tree");
  EXPECT_EQ(broken(make_node(CSE_ORIG, tree("_x"), tree("_y"), INT)), "a pass has left its marker");
  EXPECT_EQ(broken(make_node(ADD, tree("_x"), nullptr, INT)), "an operator without its operands");
  EXPECT_EQ(broken(make_node(NEGATE, tree("_x"), tree("_y"), INT)),
            "an operator without its operands");
  EXPECT_EQ(broken(make_node(NAME, nullptr, nullptr, INT)), "a NAME without a symbol");
  EXPECT_EQ(broken(make_labeldef(test()->labels)), "a LABELDEF inside a graph");
  EXPECT_EQ(broken(make_node(NEGATE, make_goto(test())->left, nullptr, INT)),
            "a label inside an expression");
  EXPECT_EQ(broken(make_node(NEGATE, make_goto(test()), nullptr, INT)),
            "a transfer of control inside an expression");
  EXPECT_EQ(broken(make_node(MEMBER, tree("_st"), icon(4), INT)),
            "a member access without a member");
  EXPECT_EQ(broken(make_node(CONDITIONAL, tree("_x"), tree("_y"), INT)),
            "a ? without its two values");
  EXPECT_EQ(broken(make_node(ASSIGN, tree("_x"),
                             make_node(CASE, icon(1), make_goto(test())->left, INT), INT)),
            "a case outside of a SWITCH");
}

TEST_F(CheckFunctionTest, TypesFit) {
  NODE *&statement = body()->trees->item;
  const auto verdict_on = [&](NODE *replacement) {
    statement = replacement;
    const std::string result = verdict();
    return result.substr(0, result.find(" (block 3"));
  };
  const std::vector<std::pair<const char *, const char *>> rows = {
      {"assign(_x, bit_and:int(_x, _d))", "a bit operation on no integer"},
      {"assign(_x, shift_left:int(_f, 2))", "a bit operation on no integer"},
      {"assign(_f, bit_or:float(_x, _y))", "a bit operation that yields no integer"},
      {"assign(_x, add:int(_st, 1))", "arithmetic on no number"},
      {"assign(_x, lt:float(_x, _y))", "a relation that is no integer"},
      {"assign(_x, lt:int(_p, _d))", "an address beside a fraction"},
      {"assign(_x, eq:int(_st, 0))", "a relation of no numbers"},
      {"assign(_x, logical_not:float(_x))", "a truth value that is no integer"},
      {"assign(add:int(_x, 1), 2)", "an assignment to no place"},
      {"asg_xor(_f, 2)", "a bit operation on no integer"},
      {"assign(_x, _st)", "a value that its place cannot hold"},
      {"assign(_x, member:int(_x, _m))", "a member of no struct"},
      {"assign(_x, member:int(_st, _y))", "a member that is none"},
      {"assign(_x, arrow:int(_x, _m))", "a member behind no pointer"},
      {"assign(_x, deref:int(_d))", "an access through no address"},
      {"assign(_c, bit_and:int(_c, _us))", ""},
      {"assign(_x, ult:int(_p, _q))", ""},
      {"assign(_x, bit_and:int(_p, 3))", ""},
      {"assign(_d, add:double(_d, _x))", ""}};
  for (const auto &[text, fault] : rows)
    EXPECT_EQ(verdict_on(tree(text)), fault) << text;
}

TEST_F(CheckFunctionTest, TypesThatNeverFittedAreNotAskedFor) {
  BB *first = state.first_bb;
  const auto read = [&](const char *statement) {
    state.first_bb = nullptr;
    state.statements = list_cons(tree(statement), nullptr, 1, 1);
    EXPECT_EQ(verdict(), "");
    state.first_bb = first;
    state.statements = nullptr;
  };
  body()->trees->item = tree("assign(_x, bit_and:int(_x, _d))");
  read("assign(_x, bit_and:int(_x, _d))");
  EXPECT_EQ(verdict(), "");
  read("assign(_x, 1)");
  EXPECT_NE(verdict(), "") << "the next function is another";
}

TEST_F(CheckFunctionTest, StatementsAreCheckedBeforeThereIsAGraph) {
  state.first_bb = nullptr;
  NODE *jump = make_node(BRANCH, make_labelref(5), nullptr, INT);
  state.statements = list_cons(
      jump, list_cons(make_labeldef(label_new(5, nullptr, nullptr)), nullptr, 1, 1), 1, 1);
  EXPECT_EQ(verdict(), "");
  state.statements = list_cons(jump, state.statements, 1, 1);
  EXPECT_EQ(verdict(), "a node hangs in two places (block 0");
}

} // namespace
} // namespace velkor
