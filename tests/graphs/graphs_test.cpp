#include "diag/graphs.h"

#include "simplify/tree_rows.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace velkor {
namespace {

std::string file_text(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

bool reader_is_there() {
  static const bool there = std::system("perl -MGraph::Easy::Parser::VCG -e 1 2>/dev/null") == 0;
  return there;
}

class GraphsTest : public TreeRowTest {
protected:
  GraphsTest() {
    std::string name = (std::filesystem::temp_directory_path() / "velkor-graphs-XXXXXX").string();
    folder = mkdtemp(name.data());
    state.input_name = (folder / "prog.if").string();
    options.debug_level = 1;
  }
  ~GraphsTest() override { std::filesystem::remove_all(folder); }

  // The file's graph as the reader of GDL understands it.
  std::string read_back(const std::string &name) {
    const std::filesystem::path lines = folder / "lines";
    const std::string command = std::string("perl ") + GDL_READER + " '" +
                                (folder / name).string() + "' > '" + lines.string() + "' 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << file_text(lines) << file_text(folder / name);
    return file_text(lines);
  }

  BB *block(const std::vector<NODE *> &statements) {
    BB *made = new (lalloc(sizeof(BB))) BB{};
    made->dfn = ++state.num_blocks;
    made->labels = label_new(made->dfn, nullptr, made);
    for (auto statement = statements.rbegin(); statement != statements.rend(); ++statement)
      made->trees = list_cons(*statement, made->trees, 1, 1);
    (state.first_bb ? last->next : state.first_bb) = made;
    last = made;
    return made;
  }
  static void connect(BB *from, BB *to) { from->succs = edge_add(to, from->succs); }

  static NODE *comment() { return make_asm('/', "; said \"so\""); }

  std::filesystem::path folder;
  BB *last = nullptr;
};

TEST_F(GraphsTest, AFlowGraphIsReadAsItWasDrawn) {
  if (!reader_is_there()) GTEST_SKIP() << "the package libgraph-easy-perl is not installed";
  BB *entry = block({comment(), tree("assign(_x, 1)"), comment(), tree("assign(_y, 2)")});
  BB *loop = block({});
  BB *leave = block({tree("return(_self, _x)")});
  loop->trees = list_cons(make_if(tree("lt(_x, 5)"), 2, 3), nullptr, 1, 1);
  loop->trees->item->right->left->aux.label = loop->labels;
  loop->trees->item->right->right->aux.label = leave->labels;
  entry->trees->next->next->next->next = list_cons(make_goto(loop), nullptr, 1, 1);
  connect(entry, loop);
  connect(loop, leave);
  connect(loop, loop);
  dump_cfg_graph();
  EXPECT_EQ(read_back("prog.cfg1"), "graph CFG for function self\n"
                                    "node B1 [1: x = 1;\\n1: y = 2;] rect\n"
                                    "node B2 [2: if ( x < 5 ) goto g2; else goto g3;] rect\n"
                                    "node B3 [3: return x;] rect\n"
                                    "node FUNCTION [self()] ellipse\n"
                                    "edge B1 B2 solid black\n"
                                    "edge B2 B2 dashed red\n"
                                    "edge B2 B3 solid black\n"
                                    "edge FUNCTION B1 solid black\n");
}

TEST_F(GraphsTest, ATreeIsReadAsItWasDrawn) {
  if (!reader_is_there()) GTEST_SKIP() << "the package libgraph-easy-perl is not installed";
  NODE *root = tree("assign(_x, add:int(_y, 2))");
  EXPECT_EQ(dump_tree_graph(root), root);
  EXPECT_EQ(read_back("prog.tree1"), "graph AST Graph\n"
                                     "node 0 [= (int) x = y+2] rect\n"
                                     "node 1 [NAME (int) x] rect\n"
                                     "node 2 [+ (int) y+2] rect\n"
                                     "node 3 [NAME (int) y] rect\n"
                                     "node 4 [ICON (int) 2] rect\n"
                                     "node AST [*.tree1] ellipse\n"
                                     "edge 0 1 solid black\n"
                                     "edge 0 2 solid black\n"
                                     "edge 2 3 solid black\n"
                                     "edge 2 4 solid black\n"
                                     "edge AST 0 dotted black\n");
}

TEST_F(GraphsTest, TheJumpsOfAnIfStandOnTwoLines) {
  NODE *root = make_if(tree("lt(_x, 5)"), 7, 8);
  dump_tree_graph(root);
  const std::string text = file_text(folder / "prog.tree1");
  EXPECT_NE(text.find("label:\"\fbIF\fn (int)\nif ( x < 5 ) goto g7\nelse goto g8\" "),
            std::string::npos)
      << text;
}

TEST_F(GraphsTest, TextInQuotesEndsNoLabel) {
  if (!reader_is_there()) GTEST_SKIP() << "the package libgraph-easy-perl is not installed";
  NODE *text_node = make_node(SCON, nullptr, nullptr, pointer_to(CHAR));
  text_node->aux.text = copy_text(1, "a\" {b}\n");
  text_node->u.lval = 8;
  block({make_node(ASSIGN, tree("_cp"), text_node, pointer_to(CHAR)), tree("return(_self, 0)")});
  dump_cfg_graph();
  const std::string lines = read_back("prog.cfg1");
  EXPECT_NE(lines.find("node B1 "), std::string::npos) << lines;
  EXPECT_NE(lines.find("edge FUNCTION B1 "), std::string::npos) << lines;
}

TEST_F(GraphsTest, LoopsHangBelowTheirParents) {
  if (!reader_is_there()) GTEST_SKIP() << "the package libgraph-easy-perl is not installed";
  std::vector<BB *> blocks;
  for (int i = 0; i < 4; ++i)
    blocks.push_back(block({tree("assign(_x, 1)")}));
  LoopRecord root{1, nullptr, nullptr};
  LoopRecord outer{2, &root, nullptr};
  LoopRecord inner{3, &outer, nullptr};
  inner.blocks = edge_cons(blocks[2], nullptr);
  outer.blocks = edge_cons(blocks[1], edge_cons(blocks[2], nullptr));
  root.blocks = edge_cons(blocks[0], edge_cons(blocks[1], edge_cons(blocks[3], nullptr)));
  blocks[0]->work[innermost_loop_slot] = blocks[3]->work[innermost_loop_slot] = &root;
  blocks[1]->work[innermost_loop_slot] = &outer;
  blocks[2]->work[innermost_loop_slot] = &inner;
  dump_loop_graph(&root);
  EXPECT_EQ(read_back("prog.loop1"), "graph Loop hierarchy for function self\n"
                                     "node B1 [BB 1] rect\n"
                                     "node B2 [BB 2] rect\n"
                                     "node B3 [BB 3] rect\n"
                                     "node B4 [BB 4] rect\n"
                                     "node L1 [self()] ellipse\n"
                                     "node L2 [Loop 2] diamond\n"
                                     "node L3 [Loop 3] diamond\n"
                                     "edge L1 B1 solid black\n"
                                     "edge L1 B4 solid black\n"
                                     "edge L1 L2 solid black\n"
                                     "edge L2 B2 solid black\n"
                                     "edge L2 L3 solid black\n"
                                     "edge L3 B3 solid black\n");
}

TEST_F(GraphsTest, FilesAreNumberedByKindAndOnlyWrittenInDebugRuns) {
  dump_cfg_graph(); // no blocks: no file, no number
  dump_loop_graph(nullptr);
  EXPECT_EQ(dump_tree_graph(nullptr), nullptr);
  block({tree("return(_self, 0)")});
  options.debug_level = 0;
  dump_cfg_graph();
  dump_tree_graph(tree("_x"));
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  options.debug_level = 1;
  dump_cfg_graph();
  dump_tree_graph(tree("_x"));
  dump_cfg_graph();
  EXPECT_TRUE(std::filesystem::exists(folder / "prog.cfg2"));
  EXPECT_TRUE(std::filesystem::exists(folder / "prog.tree1"));
  EXPECT_FALSE(std::filesystem::exists(folder / "prog.tree2"));
  const std::string heading = file_text(folder / "prog.tree1");
  EXPECT_EQ(heading.substr(0, heading.find("\n\n")), "// VELKOR ANSI C Optimizer    Version 1.22e\n"
                                                     "// The middle end of the VELKOR compiler.");
  state.input_name = (folder / "no-such-folder" / "prog.if").string();
  dump_cfg_graph(); // in silence
}

} // namespace
} // namespace velkor
