// Whole files as text: records, scopes, symbols and their defaults.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/storage_classes.h"
#include "text/text.h"

namespace velkor::text {
namespace {

std::string printed(const std::string &text) {
  file::IcodeFile file;
  const std::string error = parse_text(text, file);
  return error.empty() ? to_text(file) : error;
}

const char *const example = R"(source "t.c"
symbol _g extern int value
  3
end_value
symbol _s struct_tag struct size=64
symbol _a struct_member int
symbol _b struct_member char[] dims=4 offset=32
symbol .eos end_of_tag struct tag=_s
symbol _t static struct[] tag=_s dims=0 value
  1
  skip[value=96]
end_value size=128 dims=2
symbol _later extern_declared struct* tag=_later@-1.-1
symbol _h extern_declared void() pragma=3 pragma=23,"a","b"
symbol _f static int() inline scqual=0x800
begin_function 1
  symbol _a register_parameter int
  end_parameters 2
  symbol _a auto int
  symbol _n register char* const volatile squal=0x1
  end_locals 3
  1: assign(_a, _a@1.0)
  begin_block
    symbol _a auto double
    2/3: asg_add(_a, 1.5)
    begin_block
      symbol _c class7 int
    end_block
  end_block
L5:
L6+:
  assembly 4 " nop"
  comment "; \"quoted\""
  pragma 3 "x" "y z"
  live_registers 0x3F 0x0
  attribute leaf
  attribute 0x4D
  marker 9 5
  front_end 0x3A "\0\001\002\003\004\005"
  -4: return(_f, add(_a, _g))
end_function 20

symbol _k extern int
)";

TEST(FileText, ExampleStands) {
  EXPECT_EQ(printed(example), example);
}

TEST(FileText, DefaultsOfSymbols) {
  file::IcodeFile file;
  ASSERT_EQ(parse_text("symbol _s struct_tag struct size=96 align=16\n"
                       "symbol _a static struct[][] tag=_s dims=2,3\n"
                       "symbol _p static short*[] dims=5 volatile\n"
                       "symbol _d auto double volatile\n"
                       "symbol _f extern int()\n",
                       file),
            "");
  const auto symbol = [&file](std::size_t i) { return std::get<file::Symbol>(file.records[i]); };
  EXPECT_EQ(symbol(0).tag_index, 0) << "a tag is its own";
  EXPECT_EQ(symbol(0).tag_name, "_s");
  EXPECT_EQ(symbol(1).size, 96 * 6);
  EXPECT_EQ(symbol(1).align, 16);
  EXPECT_EQ(symbol(1).stype, 0xF8u);
  EXPECT_EQ(symbol(2).size, 160);
  EXPECT_EQ(symbol(2).squal, 0x20u);
  EXPECT_EQ(symbol(3).size, 64);
  EXPECT_EQ(symbol(3).align, 32);
  EXPECT_EQ(symbol(3).squal, 2u);
  EXPECT_EQ(symbol(3).sclass, C_AUTO);
  EXPECT_EQ(symbol(4).size, 0);
  EXPECT_EQ(symbol(4).stype, 0x24u);
}

// An index counts the symbols of its scope, comes back behind an inner block, and begins anew in
// the next one.
TEST(FileText, ScopesCountAsTheReaderDoes) {
  file::IcodeFile file;
  ASSERT_EQ(parse_text("symbol _f extern int()\nbegin_function\nend_parameters\n"
                       "symbol _a auto int\nbegin_block\nsymbol _b auto int\n1: _b\nend_block\n"
                       "symbol _c auto int\nbegin_block\nsymbol _d auto int\n2: _d\n3: _c\n"
                       "end_block\nend_function\nsymbol _e extern int\nbegin_function\n4: _e\n",
                       file),
            "");
  std::vector<std::pair<int, int>> places;
  for (const file::Node &node : file.nodes) {
    places.emplace_back(node.level, node.index);
  }
  EXPECT_EQ(places, (std::vector<std::pair<int, int>>{{3, 0}, {3, 0}, {2, 1}, {0, 1}}));
}

TEST(FileText, ErrorsNameTheLine) {
  const std::vector<std::pair<const char *, const char *>> table = {
      {"# comment\n\n1 add(1, 2)\n", "line 3, column 3: expected ':', found 'add'"},
      {"1: add(1, 2\n", "line 1, column 12: expected ')', found the end of the line"},
      {"symbol _x automatic int\n", "line 1, column 11: expected a storage class, found "
                                    "'automatic'"},
      {"symbol _x auto int size=\n", "line 1, column 25: expected a number, found the end of the "
                                     "line"},
      {"symbol _x auto int color=3\n", "line 1, column 20: expected an attribute of a symbol, "
                                       "found 'color'"},
      {"symbol _x auto int tag=_s\n", "line 1, column 24: only struct, union and enum types have "
                                      "a tag"},
      {"symbol _x auto struct tag=_s\n", "line 1, column 29: no tag '_s' is visible here"},
      {"symbol _x auto int value\n1\n", "line 2: expected 'end_value', found the end of the file"},
      {"symbol _x auto int value\nL1:\n", "line 2, column 4: expected a type, found the end of "
                                          "the line"},
      {"statement 5\n", "line 1, column 1: expected a record, found 'statement'"},
      {"begin_function 32768\n", "line 1, column 16: expected a number from -32768 to 32767, "
                                 "found '32768'"},
      {"begin_function\nend_parameters\nsymbol _x auto int\nend_function\n1: _x\n",
       "line 5, column 6: no symbol '_x' is visible here"},
      {"comment \"a\" \"b\"\n", "line 1, column 13: expected the end of the line, found '\"'"},
  };
  for (const auto &[text, expected] : table) {
    EXPECT_EQ(printed(text), expected) << text;
  }
}

} // namespace
} // namespace velkor::text
