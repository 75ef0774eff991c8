#include "diag/dump.h"

#include "run_fixture.h"

#include <cstdio>
#include <functional>
#include <string>

namespace velkor {
namespace {

class DumpTest : public RunTest {
protected:
  SYM *x_sym = symbol("_x", INT);
  NODE *x() { return name(x_sym); }

  static std::string tree_text(const NODE *tree) {
    return debug_text([&] { dump_tree(tree); });
  }
};

TEST_F(DumpTest, OpcodeNamesHaveEightCharacters) {
  for (int op = 0; op < 256; ++op)
    EXPECT_EQ(std::string(op_name(static_cast<std::uint8_t>(op))).size(), 8u);
  EXPECT_STREQ(op_name(ADD), "+       ");
  EXPECT_STREQ(op_name(LABELREF), "LABELREF");
  EXPECT_STREQ(op_name(ILLOP), " ?ILLOP?");
  EXPECT_STREQ(op_name(0), " ?NODE? ");
  EXPECT_STREQ(op_name(26), " ?NODE? ");
  EXPECT_STREQ(op_name(200), " ?NODE? ");
}

TEST_F(DumpTest, OneLinePerNode) {
  NODE *volatile_x = x();
  volatile_x->qual = 2;
  volatile_x->aux.sym = symbol("_y", INT);
  NODE *sum = node(ADD, volatile_x, icon(5));
  sum->nsize = 3;
  EXPECT_EQ(tree_text(sum),
            "   +        depnum:-1\t nsize: 3  type:0x4\t(int)\t\n"
            "   NAME     depnum:32\t nsize: 0  type:0x4\t(int)\tqual:0x2  level:2 y ==> x\n"
            "   ICON     depnum:-1\t nsize: 0  type:0x4\t(int)\t5;\n");
  EXPECT_EQ(tree_text(nullptr), "   >>>>>>>>>> ILLEGAL TREE: (nil) <<<<<<<<<<<<\n");
}

TEST_F(DumpTest, EachOpcodeAddsItsOwn) {
  BB block{};
  block.uon = 4;
  block.dfn = 2;
  NODE *unplaced = make_labelref(7);
  NODE *placed = make_labelref(7);
  placed->aux.label = label_new(8, nullptr, &block);
  NODE *struct_assignment = node(STASG, nullptr, nullptr, STRUCT);
  struct_assignment->u.sym = symbol("_s", STRUCT, 0);
  NODE *call = node(UXCALL, nullptr);
  call->u.name = copy_text(1, "abs");
  NODE *skip = node(SKIP, nullptr, nullptr, VOID);
  skip->u.lval = 24;
  NODE *freed = node(ADD, x(), x());
  freed->op = ILLOP;
  NODE *indirect = node(DEREF, nullptr);
  indirect->qual = 2;
  const std::pair<NODE *, const char *> rows[] = {
      {unplaced, "7\n"},
      {placed, "8   uon=4, dfn=2\n"},
      {skip, "24\n"},
      {indirect, "qual:0x2  \n"},
      {node(CASE, make_icon(-3, INT), unplaced), "ca:-3  la:7\n"},
      {node(CASE, make_icon(-1, UNSIGNED), placed), "ca:0xffffffffu  la:8\n"},
      {struct_assignment, "level:0 s\n"},
      {call, "abs\n"},
      {freed, " <<<<<<<<<<<< ILLEGAL TREE!!\n"},
      {node(BRANCH, nullptr), "\n"},
      {make_labeldef(label_new(3, nullptr, nullptr)), "\n"},
  };
  for (const auto &[tree, rest] : rows) {
    const std::string text = tree_text(tree);
    const std::string line = text.substr(0, text.find('\n') + 1);
    EXPECT_TRUE(line.ends_with(std::string(")\t") + rest)) << line;
  }
  EXPECT_EQ(tree_text(freed).find("NAME"), std::string::npos);
  EXPECT_TRUE(tree_text(node(DEREF, x(), icon(1))).starts_with("   U*2      depnum"));
}

TEST_F(DumpTest, SharedOperandsShowUnderTheOriginalOnly) {
  NODE *dupe = node(CSE_DUPE, x(), node(ADD, x(), icon(1)));
  EXPECT_EQ(tree_text(dupe).find("+ "), std::string::npos);
  NODE *original = node(CSE_ORIG, x(), node(ADD, x(), icon(1)));
  EXPECT_NE(tree_text(original).find("+ "), std::string::npos);
}

TEST_F(DumpTest, Lists) {
  LIST *list = list_cons(make_labeldef(label_new(5, nullptr, nullptr)), nullptr, 3, 4);
  list = list_cons(x(), list, 1, 2);
  EXPECT_EQ(debug_text([&] { dump_trees(list); }),
            "\n::::: tree 1 ::::: (1,2)\nx;\n"
            "   NAME     depnum:32\t nsize: 0  type:0x4\t(int)\tlevel:2 x\n"
            "\n::::: tree 2 ::::: (3,4)\n\n     LABEL DEFINITION: INDEX = 5\n");
}

TEST_F(DumpTest, Blocks) {
  BB first{};
  BB second{};
  first.next = &second;
  first.uon = first.dfn = 1;
  second.uon = 3;
  second.dfn = 2;
  second.depth = 1;
  second.labels = label_new(6, nullptr, &second);
  second.labels->refcount = 2;
  second.loop_ctl = x();
  second.loop_iters = icon(10);
  second.preds = edge_cons(&first, edge_cons(&second, nullptr));
  second.succs = edge_cons(&second, nullptr);
  std::uint32_t descendants[] = {0b101, 0b10};
  second.descendants = descendants;
  state.num_blocks = 33;
  const char *first_text = "\n\n:::: BASIC BLOCK DUMP, UON=1, DFN=1\n"
                           "\tPREDECESSORS = ( )\n\tSUCCESSORS =   ( )\n";
  const char *second_text = "\n\n:::: BASIC BLOCK DUMP, UON=3, DFN=2\n"
                            "\tLABEL, INDEX=6, REFCOUNT=2, NAME=<NONE>\n"
                            "\tHeader of a loop controlled by x\n"
                            "\tHeader of a loop with #iterations = 10;\n"
                            "\tPREDECESSORS = ( 1 2 )\n\tSUCCESSORS =   ( 2 )\n"
                            "\tDESCENDANTS =  ( 2 33 )\n\tLOOP DEPTH = 1\n";
  EXPECT_EQ(debug_text([&] { dump_blocks(&first, &first); }), first_text);
  EXPECT_EQ(debug_text([&] { dump_blocks(&second, &first); }), second_text);
  EXPECT_EQ(debug_text([&] { dump_blocks(&first, nullptr); }),
            std::string(first_text) + second_text);

  NODE *falls_through = make_goto(&second);
  NODE *jumps_back = make_goto(&first);
  first.trees = list_cons(x(), list_cons(falls_through, nullptr, 0, 0), 0, 0);
  second.trees = list_cons(jumps_back, nullptr, 0, 0);
  EXPECT_EQ(debug_text([&] { print_block_trees(&first, &second); }),
            "\t    BB 1:  g1\n\t    BB 1:   \tx;\n\t    BB 2:  g2\n\t    BB 2:   \tgoto g-1;\n");
  EXPECT_EQ(debug_text([&] { print_block_trees(&first, &first); }),
            "\t    BB 1:  g1\n\t    BB 1:   \tx;\n");
}

TEST_F(DumpTest, Duplicates) {
  const auto text = [](const NODE *tree) { return debug_text([&] { check_duplicates(tree); }); };
  NODE *shared = x();
  const std::string found = text(node(ADD, shared, shared));
  EXPECT_TRUE(
      found.starts_with("\n\n!*!*!*!*!*!  Duplicate found in tree: x+x; !*!*!*!*!*!\n   +  "));
  EXPECT_NE(text(node(ADD, node(NEGATE, shared), node(ADD, icon(1), shared))), "");
  NODE *freed = x();
  freed->op = ILLOP;
  EXPECT_NE(text(node(ADD, freed, icon(1))), "");
  EXPECT_EQ(text(node(ADD, x(), x())), "");
  NODE *sum = node(ADD, x(), icon(1));
  NODE *dupe = node(CSE_DUPE, x(), sum);
  EXPECT_EQ(text(node(ADD, node(CSE_ORIG, x(), sum), dupe)), "");
}

TEST_F(DumpTest, NothingUnlessDebugging) {
  BB block{};
  block.trees = list_cons(x(), nullptr, 0, 0);
  NODE *shared = x();
  NODE *wrong = node(ADD, shared, shared);
  EXPECT_EQ(debug_text(
                [&] {
                  dump_tree(wrong);
                  dump_trees(block.trees);
                  dump_blocks(&block, &block);
                  print_block_trees(&block, &block);
                  check_duplicates(wrong);
                },
                0),
            "");
}

TEST_F(DumpTest, DeepTreesNeedNoStack) {
  NODE *tree = x();
  constexpr int levels = 50000;
  for (int i = 0; i < levels; ++i)
    tree = i % 2 ? node(NEGATE, tree) : node(ADD, icon(1), tree);
  const std::string text = tree_text(tree);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), levels + levels / 2 + 1);
}

} // namespace
} // namespace velkor
