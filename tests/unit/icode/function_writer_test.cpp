#include "icode/function_writer.h"
#include "icode/output_file.h"
#include "icode/record_writer.h"
#include "run_fixture.h"
#include "text/text.h"

#include <cstdio>
#include <string>
#include <vector>

namespace velkor {
namespace {

// Functions made of blocks by hand, written, and read back as text.
class FunctionWriterTest : public RunTest {
protected:
  FunctionWriterTest() {
    open_output(std::tmpfile());
    write_stamp();
    function = symbol("_f", 0x24, 0, C_EXT);
    state.cur_fun_sym = function;
    state.cur_fun = fun_find_or_add("f");
    state.function_is_leaf = false;
    write_symbol(function, 0, RECORD_SYMBOL);
    write_marker(MARKER_BF, 1);
    write_marker(MARKER_EA, 1);
    x = symbol("_x", INT);
    state.local_syms = x;
  }
  ~FunctionWriterTest() override {
    std::fclose(output.file);
    output.file = nullptr;
  }

  BB *block() {
    BB *made = new (lalloc(sizeof(BB))) BB{};
    made->dfn = made->uon = ++state.num_blocks;
    made->labels = label_new(made->dfn, nullptr, made);
    if (!state.first_bb)
      state.first_bb = made;
    else
      last->next = made;
    last = made;
    return made;
  }

  static void add(BB *to, NODE *tree) {
    LIST **link = &to->trees;
    while (*link)
      link = &(*link)->next;
    *link = list_cons(tree, nullptr, 1, 1);
  }

  static NODE *go(BB *target) {
    target->labels->refcount += 1;
    return make_goto(target);
  }

  static NODE *branch_if(NODE *condition, BB *true_target, BB *false_target) {
    NODE *node = make_if(condition, 0, 0);
    node->right->left->aux.label = true_target->labels;
    node->right->right->aux.label = false_target->labels;
    true_target->labels->refcount += 1;
    false_target->labels->refcount += 1;
    return node;
  }

  NODE *leave() { return make_node(URETURN, make_name(function), nullptr, VOID); }
  NODE *less() { return node(LT, name(x), icon(5)); }

  // Writes the function; the lines between its locals and its end.
  std::string written() {
    write_function();
    reserve(0);
    std::string bytes(1 << 16, '\0');
    std::rewind(output.file);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), output.file));
    file::IcodeFile icode;
    EXPECT_EQ(file::decode(bytes, icode), "");
    const std::string all = text::to_text(icode);
    const std::string begin = "end_locals";
    const std::size_t from = all.find('\n', all.find(begin)) + 1;
    return all.substr(from, all.find("end_function") - from);
  }

  SYM *function = nullptr;
  SYM *x = nullptr;
  BB *last = nullptr;
};

TEST_F(FunctionWriterTest, TheFalseTargetBehindTheBlockIsExchanged) {
  BB *entry = block();
  BB *next = block();
  BB *other = block();
  add(entry, branch_if(less(), other, next));
  add(next, go(other));
  add(other, leave());
  EXPECT_EQ(written(), "  1: cbranch(ge(_x, 5), L3)\n"
                       "L3:\n"
                       "  1: ureturn(_f)\n")
      << "both jumps to the next block are gone, and with them one label's last reference";
}

TEST_F(FunctionWriterTest, TheTrueTargetBehindTheBlockStays) {
  BB *entry = block();
  BB *next = block();
  BB *other = block();
  add(entry, branch_if(less(), next, other));
  add(next, node(ASSIGN, name(x), icon(1)));
  add(next, go(other));
  add(other, leave());
  EXPECT_EQ(written(), "  1: cbranch(lt(_x, 5), L3)\n"
                       "  1: assign(_x, 1)\n"
                       "L3:\n"
                       "  1: ureturn(_f)\n");
}

TEST_F(FunctionWriterTest, ATestOfAPlainValueIsInvertedByNot) {
  BB *entry = block();
  BB *next = block();
  BB *other = block();
  add(entry, branch_if(name(x), other, next));
  add(next, leave());
  add(other, go(next));
  EXPECT_EQ(written(), "  1: cbranch(logical_not(_x), L3)\n"
                       "L2:\n"
                       "  1: ureturn(_f)\n"
                       "L3:\n"
                       "  1: branch(L2)\n");
}

TEST_F(FunctionWriterTest, AReturnLikeTheNextBlocksFirstIsNotWritten) {
  BB *entry = block();
  BB *next = block();
  add(entry, leave());
  add(next, leave());
  EXPECT_EQ(written(), "  1: ureturn(_f)\n") << "and labels without references are no records";
}

TEST_F(FunctionWriterTest, TheLoopBehindACallThatNeverReturnsGoes) {
  BB *entry = block();
  BB *loop = block();
  SYM *abort_symbol = symbol("_abort", 0x20, 0, C_EXTDEF);
  abort_symbol->index = 1;
  NODE *callee = node(ADDRESS, name(abort_symbol), nullptr, 0x90);
  NODE *abort_call = node(UCALL, callee, nullptr, VOID);
  add(entry, abort_call);
  add(entry, make_asm('/', "***\t; the preceding call never returns"));
  add(entry, go(loop));
  add(loop, go(loop));
  entry->succs = edge_cons(loop, nullptr);
  loop->succs = edge_cons(loop, nullptr);
  loop->preds = edge_cons(loop, edge_cons(entry, nullptr));
  EXPECT_EQ(written(), "  1: ucall(address(@0.1:void()))\n"
                       "  comment \"***\\t; the preceding call never returns\"\n");
}

TEST_F(FunctionWriterTest, TheAllocatorsCommentsStandAheadOfTheCode) {
  BB *entry = block();
  add(entry, leave());
  LIST *first = list_cons(make_asm(RECORD_COMMENT, "; R1"), nullptr, 1, 0);
  state.alloc_comments = list_cons(make_asm(RECORD_COMMENT, "; R2"), first, 2, 0);
  EXPECT_EQ(written(), "  comment \";\"\n"
                       "  comment \"; R1\"\n"
                       "  comment \"; R2\"\n"
                       "  comment \";\"\n"
                       "  1: ureturn(_f)\n");
  EXPECT_EQ(state.alloc_comments, nullptr) << "the next function has its own";
}

TEST_F(FunctionWriterTest, NothingIsWrittenWhileAFunctionIsSkipped) {
  const unsigned char *before = output.cursor;
  state.skip_function = true;
  write_marker(MARKER_EL, 1);
  write_attribute('L');
  write_text('/', "text", 0, 0);
  EXPECT_EQ(output.cursor, before);
  write_pragma(5, 1, {"a", 2}, true);
  EXPECT_NE(output.cursor, before) << "a pragma at file level passes";
}

TEST_F(FunctionWriterTest, ARecordOfExactlyTheRoomLeftGoesToTheNextBlock) {
  const auto room = static_cast<std::size_t>(output.block.data() + block_size - output.cursor);
  write_text('/', std::string(room - 2, 'c'), 0, 0);
  EXPECT_EQ(std::ftell(output.file), static_cast<long>(block_size));
  EXPECT_EQ(static_cast<std::size_t>(output.cursor - output.block.data()), room);
}

} // namespace
} // namespace velkor
