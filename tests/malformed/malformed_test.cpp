// What the optimizer says to files that are none, file by file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "core/opcodes.h"
#include "core/types.h"
#include "driver/driver.h"
#include "file/icode_file.h"
#include "icode/format.h"
#include "malformed/optimizer_run.h"
#include "text/text.h"

namespace velkor::test {
namespace {

using namespace std::string_literals;

const std::string end_mark = "\xFF";

std::string stamped(const std::string &records) {
  return std::string(file_stamp.begin(), file_stamp.end()) + records;
}

// The bytes of a text form's file less its end mark.
std::string open_ended(const std::string &text) {
  std::string bytes = assemble(text);
  bytes.pop_back();
  return bytes;
}

// A function whose body is the lines; symbols in front: _x, _s of type struct, _f.
std::string function_of(const std::string &lines) {
  return "symbol _x extern int\nsymbol _s struct_tag struct size=64\nsymbol _f extern int()\n"
         "begin_function 1\nend_parameters 1\nsymbol _y auto int\nend_locals 1\n" +
         lines + "\nend_function 2\n";
}

struct Case {
  const char *name;
  std::string bytes;
  const char *message; // part of what is printed
};

std::vector<Case> file_level_cases() {
  const std::string function = assemble(function_of("1: return(_f, _x)"));
  std::string other_stamp = function;
  other_stamp[4] = '7';
  return {
      {"empty", "", "!!! Error in icode file, offset 0: the file ends without an end mark"},
      {"one byte", "\x08", ">> Invalid icode file, Aborting\n  0x8\n  0x8  0xff  0x20"},
      {"stamp cut", stamped("").substr(0, 11), ">> Invalid icode file, Aborting\n"},
      {"wrong stamp", other_stamp,
       ">> Invalid icode file, Aborting\n  0x8  0xff  0x20  0x38  0x37  0x32  0x20  0x20  0x31  "
       "0x31  0xff\n  0x8  0xff  0x20  0x38  0x36  0x32  0x20  0x20  0x31  0x31  0xff\n"},
      {"text file", "int main(void) { return 0; }\n", ">> Invalid icode file, Aborting\n"},
      {"no end mark", stamped(""), "!!! Error in icode file, offset 12: "},
      {"no end mark behind filler", stamped(std::string(block_size - 12, '\xFE')),
       "!!! Error in icode file, offset 4096: the file ends without an end mark"},
      {"unknown record byte", open_ended("symbol _x extern int\ncomment \"a\"\n") + "Q" + end_mark,
       ">>>COMPILER ERROR--BAD IFILE RECORD: #<3> = 0x51\n>>>Last global symbol seen = '_x'\n"},
      {"unknown record byte, no symbol", stamped("\1" + end_mark),
       ">>>COMPILER ERROR--BAD IFILE RECORD: #<1> = 0x1\n"},
      {"stray end of initial value", stamped("p\0\0\0\0\0"s + end_mark),
       ">>>COMPILER ERROR--BAD IFILE RECORD: #<1> = 0x70\n"},
      {"text without an end", stamped("/comment"), "a text runs past the end of its block"},
      {"name longer than a block", stamped("#" + std::string(5000, 'n') + "\0"s),
       "a text runs past the end of its block"},
      {"record longer than the room", stamped("!abc"), "a record runs past the end of its block"},
      {"dimensions beyond the room",
       stamped("#_x\0"s + std::string(8, '\0') + "\2\0\0\x34\0\0\0"s + std::string(12, '\0') +
               "\xFF" + "123456789" + end_mark),
       "a record runs past the end of its block"},
      {"pragma count beyond the room", stamped("^\1\x09one\0two\0"s + end_mark),
       "a text runs past the end of its block"},
      {"bad pragma entry",
       stamped("#_x\0"s + std::string(8, '\0') + "\2\0\0\4\0\0\0"s + std::string(13, '\0') +
               "\1_\3\0"s + end_mark),
       ">>>> Optimizer terminated abnormally.\n"},
      {"pairs beyond the room", stamped(";abc\xFFxx"s + end_mark),
       "a record runs past the end of its block"},
      {"record split over two blocks",
       stamped(std::string("/") + std::string(block_size - 16, 'c') + "\0"s + "%\1"s + "\7\0"s +
               end_mark),
       "a record runs past the end of its block"},
      {"initial value without an end",
       open_ended("symbol _x extern int value\n1\nend_value\n").substr(0, 55) + end_mark,
       "!!! Error in icode file, offset "},
      {"function without a symbol", assemble("begin_function 1\n"),
       "a function begins without its symbol"},
      {"data as a function", assemble("symbol _x extern int\nbegin_function 1\n"),
       "a function begins without its symbol"},
      {"function in a function",
       assemble("symbol _f extern int()\nbegin_function 1\nbegin_function 2\n"),
       "a function begins inside a function"},
      {"end of the file in a function", assemble("symbol _f extern int()\nbegin_function 1\n"),
       "the file ends inside a function"},
      {"function without a body",
       assemble("symbol _f extern int()\nbegin_function 1\nend_function 2\n"),
       "a function ends inside a scope, or without a body"},
      {"statement outside", assemble("1: 5\n"), "a statement outside a function's body"},
      {"label outside", assemble("L1:\n"), "a label outside a function's body"},
      {"scope outside", assemble("begin_block\n"), "a scope outside a function's body"},
      {"end of scope outside", assemble("end_block\n"), "a scope ends that was not opened"},
      {"bit field without bits",
       assemble("symbol _t struct_tag struct size=32\nsymbol _b bit_field unsigned size=-1\n"
                "symbol .eos end_of_tag struct tag=_t\nsymbol _s extern struct tag=_t\n"
                "symbol _f extern int()\nbegin_function 1\nend_parameters 1\nend_locals 1\n"
                "1: member(_s, _b)\n"),
       "a bit field of -1 bits"},
      {"tag of nothing", assemble("symbol _s extern struct tag=_t@0.9\n"),
       "!!! Error in 'sym_find', level=0, index=9, lex=0 !!!"},
  };
}

std::vector<Case> function_cases() {
  const auto in_function = [](const std::string &lines) { return assemble(function_of(lines)); };
  std::string scopes;
  for (int i = 0; i < 51; ++i) {
    scopes += "begin_block\n";
  }
  std::string deep = "1: ";
  for (int i = 0; i < max_tree_depth - 1; ++i) {
    deep += "negate(";
  }
  const std::string cut =
      in_function(deep + "_x" + std::string(max_tree_depth - 1, ')')).substr(0, block_size);
  return {
      {"unknown symbol", in_function("1: assign(@0.77:int, 1)"),
       "!!! Error in 'sym_find', level=0, index=77, lex=2 !!!\n!!! Last global symbol was '_f'.\n"},
      {"unknown level", in_function("1: assign(@9.0:int, 1)"),
       "!!! Error in 'sym_find', level=9, index=0, lex=2 !!!"},
      {"too many scopes", in_function(scopes), "scopes nested deeper than 50"},
      {"scope closed twice", in_function("begin_block\nend_block\nend_block"),
       "a scope ends that was not opened"},
      {"label never defined", in_function("1: branch(L7)"), "7"},
      {"label zero", in_function("L0:"), "a label with number 0"},
      {"negative string",
       open_ended("symbol _f extern int()\nbegin_function 1\n"
                  "end_parameters 1\n") +
           ".\1\0\1\0\3\x12\0\xFF\xFF"s + end_mark,
       "a string constant of -1 bytes"},
      {"opcode of the optimizer", in_function("1: asm"), "opcode 153 where a tree is expected"},
      {"mark of freed nodes", in_function("1: illop"), "opcode 150 where a tree is expected"},
      {"end of value as a statement", in_function("1: endinit"), "where a"},
      {"end of value as an operand", in_function("1: negate:int(endinit)"), "where a"},
      {"switch without cases", in_function("1: switch(_x, 5)"), "a SWITCH without a list of cases"},
      {"member that is no name", in_function("1: member(_s, 5)"),
       "a member access without a member"},
      {"product of bytes that are no constant", in_function("1: pmconv(_x, _x)"),
       "a PMCONV without a constant size"},
      {"quotient of bytes that are no constant", in_function("1: pvconv(_x, _x)"),
       "a PVCONV without a constant size"},
      {"machine loop without a label", in_function("1: endloop(_x, 5)"),
       "a branch without a label"},
      {"label as a statement", in_function("L1:\n1: L1"), "a label inside an expression"},
      {"case as a statement", in_function("L1:\n1: case(1, L1)"), "a label inside an expression"},
      {"cases outside a switch", in_function("L1:\n1: add(_x, comma(5, default(L1)))"),
       "a label inside an expression"},
      {"branch inside an expression", in_function("1: add(_x, branch(L1))\nL1:"),
       "a transfer of control inside an expression"},
      {"tree cut by the end of the file", cut, "the file ends without an end mark"},
  };
}

void expect_refused(const std::vector<Case> &cases) {
  RunFolder folder("malformed");
  for (const Case &each : cases) {
    for (const std::vector<std::string> &options :
         std::vector<std::vector<std::string>>{{"-q"}, {"-o0"}, {"-o2", "-s", "-#"}}) {
      SCOPED_TRACE(std::string(each.name) + " " + options.back());
      const OptimizerRun run = folder.run(each.bytes, options);
      EXPECT_EQ(run.status, 1);
      EXPECT_EQ(fault_of(run, each.bytes, options), "");
      EXPECT_NE(run.printed.find(each.message), std::string::npos) << run.printed;
    }
  }
}

TEST(MalformedFiles, FileLevel) {
  expect_refused(file_level_cases());
}

TEST(MalformedFiles, Functions) {
  expect_refused(function_cases());
}

enum class Lean { ONLY, LEFT, RIGHT };

// A function with one statement, a tree of that many levels.
std::string deep_tree_file(std::uint8_t op, Lean lean, int levels) {
  file::IcodeFile file;
  EXPECT_EQ(text::parse_text("symbol _x extern int\nsymbol _f extern int()\nbegin_function 1\n"
                             "end_parameters 1\nend_locals 1\nend_function 2\n",
                             file),
            "");
  file::Node leaf;
  leaf.op = NAME;
  leaf.type = INT;
  file::NodeIndex root = file.add(leaf);
  for (int level = 1; level < levels; ++level) {
    file::Node node;
    node.op = op;
    node.type = INT;
    node.left = lean == Lean::RIGHT ? file.add(leaf) : root;
    if (lean != Lean::ONLY) node.right = lean == Lean::RIGHT ? root : file.add(leaf);
    root = file.add(node);
  }
  file.records.insert(file.records.end() - 1, file::Statement{1, 1, root});
  std::string error;
  std::string bytes = file::encode(file, error);
  EXPECT_EQ(error, "");
  return bytes;
}

// The deepest tree that is told to pass does; one level more does not.
TEST(MalformedFiles, TreeDepth) {
  RunFolder folder("malformed");
  const std::vector<std::string> options = {"-q", "-s", "-#"};
  for (const auto &[op, lean] :
       {std::pair{COMPLEMENT, Lean::ONLY}, std::pair{ADD, Lean::LEFT}, std::pair{ADD, Lean::RIGHT},
        std::pair{LOGICAL_AND, Lean::RIGHT}, std::pair{COMMA_OP, Lean::RIGHT},
        std::pair{COMMA_OP, Lean::LEFT}}) {
    SCOPED_TRACE(opcode_table[op].identifier);
    std::string bytes = deep_tree_file(op, lean, max_tree_depth);
    OptimizerRun run = folder.run(bytes, options);
    EXPECT_EQ(run.status, 0) << run.printed;
    EXPECT_EQ(fault_of(run, bytes, options), "");
    bytes = deep_tree_file(op, lean, max_tree_depth + 1);
    run = folder.run(bytes, options);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(fault_of(run, bytes, options), "");
    EXPECT_NE(run.printed.find("a tree of more than 50000 levels"), std::string::npos);
  }
}

// Oddities that are no faults: the run goes on.
TEST(OddFiles, ArePassed) {
  RunFolder folder("odd");
  const std::vector<Case> cases = {
      {"no records", stamped(end_mark), ""},
      {"symbols only", assemble("symbol _x extern int\nsymbol _y static char[] dims=4\n"), ""},
      {"bytes behind the end mark", stamped(end_mark + "garbage"), ""},
      {"unknown marker", assemble(function_of("marker 9 5\n1: return(_f, _x)")),
       ">>>PACKET ERROR : 9\n"},
      {"symbol of a scope that is closed",
       assemble(function_of("begin_block\nsymbol _z auto int\nend_block\n1: assign(@3.0:int, 1)")),
       ""},
      {"opcode without a name", assemble(function_of("1: op200")), ""},
      {"front-end records",
       assemble("front_end 0x3A \"123456\"\nfront_end 0x3B \"abc\\001xy\"\n"
                "front_end 0x7C \"1234567\"\nfront_end 0x26 \"12345678901234567\"\n"),
       ""},
      {"filler alone in a block",
       stamped(std::string(block_size - 12, '\xFE') + std::string(block_size, '\xFE') + end_mark),
       ""},
      {"long source file name", assemble("source \"" + std::string(300, 'n') + "\"\n"), ""},
  };
  for (const Case &each : cases) {
    SCOPED_TRACE(each.name);
    const OptimizerRun run = folder.run(each.bytes, {});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(fault_of(run, each.bytes, {}), "");
    EXPECT_NE(run.printed.find(each.message), std::string::npos) << run.printed;
  }
}

TEST(Files, ThatCannotBeOpenedOrWritten) {
  namespace fs = std::filesystem;
  RunFolder folder("files");
  const std::string input = folder.path() + "/t.if";
  OptimizerRun run = folder.run_arguments({"-q", input});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.printed, "\n>> Cannot open input icode file : " + input + ", Aborting\n");
  EXPECT_TRUE(run.others.empty());

  const std::string bytes = assemble(function_of("1: return(_f, _x)"));
  std::ofstream(input, std::ios::binary) << bytes;
  const std::string nowhere = folder.path() + "/none/t.opt";
  run = folder.run_arguments({"-q", input, nowhere});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.printed, "\n>> Cannot open output icode file : " + nowhere + ", Aborting\n");
  EXPECT_EQ(run.others, std::vector<std::string>{"t.if"});

  // A device that is always full; a link, since the program removes what it could not finish.
  const std::string full = folder.path() + "/full.opt";
  fs::create_symlink("/dev/full", full);
  run = folder.run_arguments({"-q", input, full});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.printed.find("!!! Error: the output icode file cannot be written"),
            std::string::npos);
  EXPECT_EQ(run.others, std::vector<std::string>{"t.if"});

  run = folder.run_arguments({"-q", input, "a", "b"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.printed, "\n>>>> ERROR - Garbage on command line\n\n");
  EXPECT_EQ(run.others, std::vector<std::string>{"t.if"});
}

// Numbers that a failed run leaves behind must not reach the next one of the same process.
TEST(Files, RunAfterAFailedOneIsTheSame) {
  RunFolder folder("again");
  const std::string bytes = assemble(function_of("1: return(_f, add(_x, 1))"));
  const OptimizerRun first = folder.run(bytes, {"-s"});
  ASSERT_EQ(first.status, 0);
  for (const Case &each : function_cases()) {
    (void)folder.run(each.bytes, {"-#"});
    const OptimizerRun again = folder.run(bytes, {"-s"});
    EXPECT_EQ(again.output, first.output) << each.name;
    EXPECT_EQ(again.printed, first.printed) << each.name;
  }
}

} // namespace
} // namespace velkor::test

int main(int argc, char **argv) {
  velkor::raise_stack_limit();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
