// What goes wrong ends in one message and the right status, never in a crash.
#include "run_text.h"

namespace velkor::run {
namespace {

struct Row {
  const char *declarations;
  const char *statements;
  const char *message; // part of it
};

const Row runtime_rows[] = {
    {"", "5: assign(deref(pconv:int*(0)), 1)", "function 'main', line 5: wild write of 4 bytes at"},
    {"", "6: deref:double(pconv:double*(0x7FFFFFF0))", "line 6: wild read of 8 bytes"},
    {"symbol _i extern int\n", "5: divide(1, _i)", "line 5: division by zero"},
    {"symbol _i extern unsigned\n", "5: remainder(1:unsigned, _i)", "division by zero"},
    {"symbol _f extern_declared int()\n", "5: ucall(address(_f))",
     "call of the missing function 'f'"},
    {"symbol _f extern_declared int()\nsymbol _q extern int()* value\n  address(_f)\nend_value\n",
     "5: ucall(_q)", "call of the missing function 'f'"},
    {"symbol _q extern int()*\n", "5: ucall(_q)", "call through a pointer that is no function"},
    {"symbol _e extern_declared int\n", "5: assign(_e, 1)", "object '_e' is not defined"},
    {"", "5: deref:int(pconv:int*(address(_printf)))", "at the address of a function"},
    {"", "5: assign(add(1, 2), 3)", "operator + where an object must be"},
    {"", "5: remainder(1.5, 2)", "operator % on real numbers"},
    {"", "5: call(address(_printf), \"%d\\0\")", "too few arguments"},
    {"", "5: call(address(_printf), \"%y\\0\")", "unknown conversion %y"},
    {"", "5: xcall[\"nowhere\"](1)", "call of the missing function 'nowhere'"},
    {"symbol _free extern_declared int()\n", "5: call(address(_free), 4096)",
     "is not the address of an allocated block"},
    {"", "assembly 5 \" HLT\"", "assembly text"},
};

TEST(Faults, AtRunTime) {
  for (const Row &row : runtime_rows) {
    const Outcome outcome = run_text(main_with(row.statements, row.declarations));
    EXPECT_EQ(outcome.status, status_error) << row.statements;
    EXPECT_NE(outcome.error.find(row.message), std::string::npos) << row.statements << "\n"
                                                                  << outcome.error;
  }
}

// Each makes a file that does not hold together; nothing of it is executed.
TEST(Faults, FoundByTheLoader) {
  const Row rows[] = {
      {"", "5: branch(L1)", "line 5: label 1 is not defined"},
      {"", "L1:\nL1:", "label 1 is defined twice"},
      {"", "5: assign(@0.77:int, 1)", "no symbol (0, 77)"},
      {"", "begin_block", "scopes are not balanced"},
      {"", "end_block\n", "scopes are not balanced"},
      {"", "begin_function 3", "a function begins inside another one"},
      {"symbol _x extern int\nbegin_function 1\nend_parameters 1\nend_function 1\n", "",
       "without the function's symbol"},
      {"", "attribute leaf\n5: call(address(_printf), \"no\\0\")", "a leaf function has calls"},
      {"symbol _x extern char value\n  1\nend_value\n", "", "does not fit"},
      {"symbol _x extern_declared int value\n  1\nend_value\n", "", "no definition"},
      {"symbol _x auto int\n", "", "local class outside of a function"},
  };
  for (const Row &row : rows) {
    const Outcome outcome = run_text(main_with(row.statements, row.declarations));
    EXPECT_EQ(outcome.status, status_error) << row.statements;
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.error.find(row.message), std::string::npos)
        << row.declarations << row.statements << "\n"
        << outcome.error;
  }
}

TEST(Faults, TreesThatAreNone) {
  file::IcodeFile file;
  ASSERT_EQ(text::parse_text(main_with("5: add(1, 2)"), file), "");
  for (file::Node &node : file.nodes) {
    if (node.op == ADD) node.right = file::no_node;
  }
  EXPECT_NE(run_program(file, {}).error.find("does not have its 2 operands"), std::string::npos);
  for (file::Node &node : file.nodes) {
    if (node.op == ADD) node.right = node.left;
  }
  EXPECT_NE(run_program(file, {}).error.find("stands in two places"), std::string::npos);
}

TEST(Faults, EndlessRecursionAndLoops) {
  const std::string recursion = "symbol _f static int()\nbegin_function 1\nend_parameters 1\n"
                                "2: ucall(address(_f))\n3: return(_f, 1)\nend_function 3\n";
  const Outcome deep = run_text(main_with("5: ucall(address(_f))", recursion));
  EXPECT_EQ(deep.error, "function 'f', line 2: stack overflow");
  RunOptions options;
  options.max_steps = 1000;
  const Outcome endless = run_text(main_with("L1:\n5: branch(L1)"), options);
  EXPECT_EQ(endless.status, status_out_of_steps);
  EXPECT_EQ(endless.error, "function 'main', line 5: stopped after 1000 steps");
  // The limit holds inside of callbacks too, and in straight recursion.
  EXPECT_EQ(run_text(main_with("5: ucall(address(_f))", recursion), options).status,
            status_out_of_steps);
}

TEST(Faults, TooFewArguments) {
  const std::string function = "symbol _f static int()\nbegin_function 1\n"
                               "symbol _x register_parameter double\nend_parameters 1\n"
                               "3: return(_f, 1)\nend_function 3\n";
  const Outcome outcome = run_text(main_with("5: call(address(_f), 1)", function));
  EXPECT_EQ(outcome.error, "") << "the word becomes a double";
  EXPECT_NE(
      run_text(main_with("5: ucall(address(_f))", function)).error.find("called with 0 bytes"),
      std::string::npos);
}

TEST(Ends, StatusAndOrderOfOutput) {
  const std::string declarations = "symbol _exit extern_declared void()\n"
                                   "symbol _abort extern_declared void()\n"
                                   "symbol _fputs extern_declared int()\n"
                                   "symbol _atexit extern_declared int()\n"
                                   "symbol _bye static void()\nbegin_function 1\nend_parameters 1\n"
                                   "2: call(address(_printf), \"bye\\n\\0\")\n3: ureturn(_bye)\n"
                                   "end_function 3\n";
  const Outcome ended = run_text(main_with("5: call(address(_atexit), address(_bye))\n"
                                           "6: call(address(_exit), 300)",
                                           declarations));
  EXPECT_EQ(ended.status, 300 & 255);
  EXPECT_EQ(ended.output, "bye\n");
  const Outcome aborted = run_text(main_with("5: call(address(_atexit), address(_bye))\n"
                                             "6: ucall(address(_abort))",
                                             declarations));
  EXPECT_EQ(aborted.status, status_aborted);
  EXPECT_EQ(aborted.output, "");

  // The error output comes behind what was printed before it, in front of what follows.
  std::string both;
  RunOptions options;
  options.output = [&](std::string_view text) { both += text; };
  options.error_output = options.output;
  file::IcodeFile file;
  ASSERT_EQ(text::parse_text(main_with("5: call(address(_printf), \"1 \\0\")\n"
                                       "6: call(address(_fputs), comma(\"2 \\0\", 3))\n"
                                       "7: call(address(_printf), \"3 \\0\")\n"
                                       "8: assert(comma:int(eq(1, 2), \"one is two\\0\"))",
                                       declarations),
                             file),
            "");
  EXPECT_EQ(run_program(file, options).status, status_aborted);
  EXPECT_EQ(both, "1 2 3 Assertion failed: one is two\n");
}

} // namespace
} // namespace velkor::run
