// Trees as text: what is left out, what is refused.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "icode/format.h"
#include "text/text.h"

namespace velkor::text {
namespace {

// Two structures with a member of the same name, a variable named as its tag, and an inner _x.
Scopes example_scopes() {
  Scopes scopes;
  const auto declare = [&scopes](const char *line) {
    file::Symbol symbol;
    EXPECT_EQ(parse_symbol(line, scopes, symbol), "") << line;
    scopes.add(symbol);
  };
  declare("symbol _t struct_tag struct size=32");
  declare("symbol _m struct_member int");
  declare("symbol _s struct_tag struct size=96");
  declare("symbol _m struct_member char");
  declare("symbol _x extern int");
  declare("symbol _s extern struct tag=_s");
  declare("symbol _f extern char*()");
  scopes.follow(MARKER_BF);
  declare("symbol _p argument struct* tag=_s");
  scopes.follow(MARKER_EA);
  declare("symbol _x auto double");
  declare("symbol _a auto int[][] dims=3,4");
  declare("symbol _v auto char volatile");
  declare("symbol L1 auto int");
  return scopes;
}

std::string printed(const std::string &text) {
  const Scopes scopes = example_scopes();
  file::IcodeFile file;
  file::NodeIndex root = file::no_node;
  const std::string error = parse_tree(text, scopes, file, root);
  return error.empty() ? tree_to_text(file, root, scopes) : error;
}

TEST(TreeText, ShortestFormIsPrinted) {
  const std::vector<std::pair<const char *, const char *>> table = {
      // Leaves.
      {"0x7F:char", "127:char"},
      {"4294967295", "-1"},
      {"-1:unsigned", "4294967295:unsigned"},
      {"+1.50e+3:double", "+1.50e+3"},
      {"fcon:float[\"1.5\"]", "1.5:float"},
      {"fcon:double[\"15\"]", "fcon[\"15\"]"},
      {"\"a\\x41\\101\\000\\0001\"", "\"aAA\\0\\0001\""},
      {"L-5:void", "L-5:void"},
      {"'L1'", "'L1'"},
      // Names: the innermost one, other name spaces, and places.
      {"_x:double", "_x"},
      {"_x@2.0", "_x"},
      {"@0.4", "_x@0.4"},
      {"_x@0.4:char", "_x@0.4:char"},
      {"@5.6:int", "@5.6:int"},
      {"member(_s, _m)", "member(_s, _m)"},
      {"member(_s, _m@0.1)", "member(_s, _m@0.1)"},
      {"stasg[tag=_s](_s, deref[size=96](_p))", "stasg[tag=_s](_s, deref[size=96](_p))"},
      {"starg[tag=_s@0.5](_s)", "starg[tag=_s@0.5](_s)"},
      // Types that follow from the operands.
      {"assign:double(_x, add:double(_x, 1.5))", "assign(_x, add(_x, 1.5))"},
      {"lt:int(_x, 1.5)", "lt(_x, 1.5)"},
      {"conditional(_x, alternatives(1:char, 2:char))",
       "conditional(_x, alternatives(1:char, 2:char))"},
      {"comma_op:double(1, _x)", "comma_op(1, _x)"},
      {"comma:void(1, _x)", "comma(1, _x)"},
      {"ucall:char*(address(_f))", "ucall(address(_f))"},
      {"address:int[]*(_a)", "address(_a)"},
      {"address:double*(_x)", "address(_x)"},
      {"deref:char[size=8](add(pconv:char*(_p), 4))", "deref(add(pconv:char*(_p), 4))"},
      {"deref:char[](1)", "deref:char[](1)"},
      {"call:int()(address(_f), 1)", "call:int()(address(_f), 1)"},
      // Qualifiers.
      {"_v[volatile]", "_v"},
      {"_v[qual=0]", "_v[qual=0]"},
      {"deref[const, volatile, size=0](_p)", "deref[const, volatile](_p)"},
      {"arrow[qual=7](_p, _m)", "arrow[qual=7](_p, _m)"},
      {"switch[range=9, cases=-2](1, default(L1))", "switch[cases=-2, range=9](1, default(L1))"},
      {"skip[value=32]", "skip[value=32]"},
      {"xcall:void*[\"memcpy\"](comma(1, 2))", "xcall:void*[\"memcpy\"](comma(1, 2))"},
      {"  add ( 1 ,2 )  # a comment", "add(1, 2)"},
      {"0x144:int", "324"},
      {"op200:0x144", "op200:0x144"},
  };
  for (const auto &[text, expected] : table) {
    EXPECT_EQ(printed(text), expected) << text;
  }
}

TEST(TreeText, ErrorsNameThePlace) {
  const std::vector<std::pair<const char *, const char *>> table = {
      {"", "column 1: expected a tree, found the end of the line"},
      {"add(1)", "column 6: expected ',', found ')'"},
      {"add(1, 2", "column 9: expected ')', found the end of the line"},
      {"add(1, 2) 3", "column 11: expected the end of the line, found '3'"},
      {"negate(1, 2)", "column 9: expected ')', found ','"},
      {"_nobody", "column 8: no symbol '_nobody' is visible here"},
      {"_y@0.4", "column 7: the symbol at that place is not '_y'"},
      {"@5.6", "column 5: expected ':' and a type, found the end of the line"},
      {"sconv(1)", "column 9: the type of 'sconv' does not follow from its operands: write it"},
      {"deref(1)", "column 9: the type of 'deref' does not follow from its operands: write it"},
      {"1:integer", "column 3: expected a type, found 'integer'"},
      {"1:int*******", "column 12: a type of too many derivations"},
      {"4294967296", "column 1: expected a number from -2147483648 to 4294967295, found "
                     "'4294967296'"},
      {"starg(_s)", "column 10: a tag is missing: [tag=...]"},
      {"icall(1)", "column 9: a text is missing: [\"...\"]"},
      {"add[size=3](1, 2)", "column 5: expected a field of this opcode, found 'size'"},
      {"deref:int[qual=256](1)", "column 16: expected a number from 0 to 255, found '256'"},
      {"\"abc", "column 5: a string without an end"},
      {"\"a\\q\"", "column 4: an unknown escape in a string"},
      {"ddnode", "column 7: this opcode yields no node"},
  };
  for (const auto &[text, expected] : table) {
    EXPECT_EQ(printed(text), expected) << text;
  }
}

} // namespace
} // namespace velkor::text
