#include "file/validate.h"

#include <gtest/gtest.h>

#include "core/opcodes.h"
#include "text/text.h"

#include <string>

namespace velkor::file {
namespace {

const std::string head = "symbol _s struct_tag struct size=64\n"
                         "symbol _m struct_member int\n"
                         "symbol .eos end_of_tag struct tag=_s\n"
                         "symbol _g extern int\n"
                         "symbol _abort extern_declared void()\n"
                         "symbol _f extern int()\n"
                         "begin_function 1\n"
                         "  symbol _a register_parameter int\n"
                         "  end_parameters 1\n";
const std::string locals = "  symbol _x auto int\n"
                           "  symbol _c auto char\n"
                           "  symbol _d auto double\n"
                           "  symbol _p auto int*\n"
                           "  symbol _st auto struct tag=_s\n";
const std::string tail = "  9: return(_f, _x)\n"
                         "end_function 9\n";

std::string faults_of(const IcodeFile &icode) {
  std::string all;
  for (const std::string &fault : validate(icode))
    all += (all.empty() ? "" : "; ") + fault;
  return all;
}

// All faults of a file, in one line.
std::string faults_of_text(const std::string &text) {
  IcodeFile icode;
  EXPECT_EQ(text::parse_text(text, icode), "") << text;
  return faults_of(icode);
}

// Faults of a function with these statements in front of its return, without their place.
std::string faults(const std::string &statements) {
  const std::string all = faults_of_text(head + locals + "end_locals 1\n" + statements + tail);
  const std::string place = "function '_f', line ";
  if (all.rfind(place, 0) != 0) return all;
  return all.substr(all.find(": ") + 2);
}

TEST(Validate, ASoundFunctionHasNoFault) {
  EXPECT_EQ(faults("  1: assign(_x, _a@1.0)\n"
                   "L1:\n"
                   "  2: cbranch(lt(_x, 5), L2)\n"
                   "  3: asg_add(_x, 2)\n"
                   "  3: assign(deref(add(_p, pmconv(_x, 32))), sconv:int(_c))\n"
                   "  3: assign(member(_st, _m), sconv:int(_d))\n"
                   "  4: branch(L1)\n"
                   "L2:\n"
                   "  5: switch(_x, comma(case(1, L1), default(L3)))\n"
                   "L3:\n"),
            "");
}

TEST(Validate, LabelsAreDefinedOnce) {
  EXPECT_EQ(faults("  1: branch(L7)\nL1:\n"), "label 7 is not defined");
  EXPECT_EQ(faults("L1:\n  1: branch(L1)\nL1:\n"), "label 1 is defined twice");
  EXPECT_EQ(faults_of_text(head + locals + "end_locals 1\n  1: branch(L1)\nend_function 1\n" +
                           "symbol _h extern int()\nbegin_function 1\nend_parameters 1\n"
                           "end_locals 1\nL1:\n  1: return(_h, 1)\nend_function 1\n"),
            "function '_f', line 1: label 1 is not defined")
      << "another function's label does not count";
}

TEST(Validate, ControlStaysInTheFunction) {
  const auto body = [](const std::string &statements) {
    return faults_of_text(head + locals + "end_locals 1\n" + statements + "end_function 9\n");
  };
  const std::string off = "function '_f', line 1: control runs off the end";
  EXPECT_EQ(body("  1: assign(_x, 1)\n"), off);
  EXPECT_EQ(body("L1:\n  1: cbranch(_x, L1)\n"), off);
  EXPECT_EQ(body("  1: branch(L1)\nL1:\n"), off);
  EXPECT_EQ(body("  1: ucall:void(address(_abort))\n"), off);
  EXPECT_EQ(body("  1: ucall:void(address(_abort))\n"
                 "  comment \"***\\t; the preceding call never returns\"\n"),
            "");
  EXPECT_EQ(body("  1: assign(_x, 1)\n"
                 "  comment \"***\\t; the preceding call never returns\"\n"),
            off);
  EXPECT_EQ(body("L1:\n  1: switch(_x, comma(case(1, L1), default(L1)))\n"), "");
}

TEST(Validate, SwitchesTellEveryCaseOnce) {
  EXPECT_EQ(faults("L1:\n  1: switch(_x, comma(case(1, L1), case(2, L1)))\n"),
            "a switch with 0 defaults");
  EXPECT_EQ(faults("L1:\n  1: switch(_x, comma(comma(case(2, L1), case(2, L1)), default(L1)))\n"),
            "a switch with two cases of 2");
  EXPECT_EQ(faults("L1:\n  1: switch(_x, comma(add(_x, 1), default(L1)))\n"),
            "a switch with something else than cases");
}

TEST(Validate, SymbolsStandWhereTheirClassMay) {
  const auto with = [](const std::string &symbols) {
    return faults_of_text(head + symbols + locals + "end_locals 1\n" + tail);
  };
  EXPECT_EQ(with("  symbol _v virtual_register int offset=1\n"
                 "  symbol _w virtual_register int offset=2\n"),
            "");
  EXPECT_EQ(with("  symbol _v virtual_register int offset=1\n"
                 "  symbol _w virtual_register int offset=1\n"),
            "function '_f', line 1: symbol '_w' has the virtual register 1 of another symbol");
  EXPECT_EQ(with("  symbol _v class42 int\n"),
            "function '_f', line 1: symbol '_v' has storage class 42, which is none");
  EXPECT_EQ(with("  symbol _v argument int\n"),
            "function '_f', line 1: symbol '_v' is a parameter inside the body");
  EXPECT_EQ(faults_of_text("symbol _v auto int\n"), "symbol '_v' is a local at file level");
  EXPECT_EQ(faults("  symbol _late auto int\n"), "symbol '_late' stands among the statements");
  EXPECT_EQ(faults("  1: assign(_x, @42.3:int)\n"), "no symbol (42, 3)");
  EXPECT_EQ(faults("  1: assign(_x, _m)\n"), "symbol '_m' where none of its class may stand");
  EXPECT_EQ(faults("  1: assign(_x, member:int(_st, _x))\n"),
            "symbol '_x' where none of its class may stand");
}

TEST(Validate, RecordsNest) {
  EXPECT_EQ(faults_of_text(head), "function '_f', line 1: a function without an end");
  EXPECT_EQ(faults_of_text("begin_function 1\nend_parameters 1\nend_locals 1\n"
                           "  1: ureturn(1)\nend_function 1\n"),
            "a function begins without its symbol in front");
  EXPECT_EQ(faults_of_text(head + "  1: assign(_g, 1)\nend_locals 1\n  2: return(_f, 1)\n"
                                  "end_function 2\n"),
            "function '_f', line 1: a statement outside of a function's body");
  EXPECT_EQ(faults_of_text(head + locals + "end_locals 1\nbegin_block 1\n" + tail),
            "function '_f', line 9: scopes that do not close");
}

TEST(Validate, OpcodesOfThePassesAreNoneOfAFile) {
  for (const Opcode op : {LOOP, ENDLOOP, LCON, IDENTITY, ISP2CHAR, CSE_DUPE, IF, ILLOP}) {
    IcodeFile icode;
    ASSERT_EQ(text::parse_text(head + locals + "end_locals 1\n  1: negate(_x)\n" + tail, icode),
              "");
    for (Node &node : icode.nodes)
      if (node.op == NEGATE) node.op = op;
    EXPECT_NE(faults_of(icode).find("opcode " + std::to_string(op) + " "), std::string::npos) << op;
  }
  EXPECT_EQ(faults("  1: assign(_x, negate(branch(L1)))\nL1:\n"),
            "a transfer of control inside an expression");
  EXPECT_EQ(faults("  1: assign(_x, negate(L1))\nL1:\n"), "a label inside an expression");
}

TEST(Validate, TypesBalance) {
  const std::pair<const char *, const char *> rows[] = {
      {"assign(_x, add(_x, _d))", "+: operands of two types"},
      {"assign(_x, add:unsigned(_x, 1))", "+: an operator whose type is not its operands'"},
      {"assign(_c, add(_c, _c))", "+: arithmetic on narrow integers"},
      {"assign(_p, add(_p, _x))", "+: an integer that is not scaled, beside an address"},
      {"assign(_p, add:int(_p, pmconv(_x, 8)))", "+: a sum that has not its address's type"},
      {"assign(_d, bit_and(_d, _d))", "&: an operator of integers on a fraction"},
      {"assign(_x, shift_left(_c, 1))", "<<: a shift of narrow integers"},
      {"cbranch(lt(_x, 1:unsigned), L1)", "<: a relation of two types"},
      {"cbranch(lt:unsigned(_x, 1), L1)", "<: a relation that is no int"},
      {"assign(_x, _d)", "=: a value of another type than its place"},
      {"assign(add(_x, 1), 2)", "=: an assignment to no place"},
      {"assign(_x, deref:int(pconv:char*(_p)))", "U*: an address that points at another type"},
      {"assign(_p, address:int*(_c))", "U&: an address of another type"},
      {"assign(_x, sconv:int(_x))", "SCONV: a conversion to the type that is there"},
      {"asg_add(_c, _c)", "+=: arithmetic on narrow integers"},
      {"assign(_x, pmconv(_c, 32))", "PMCONV: a scaling of no int"}};
  for (const auto &[tree, fault] : rows) {
    const std::string all = faults(std::string("  1: ") + tree + "\nL1:\n");
    EXPECT_NE(all.find(fault), std::string::npos) << tree << ": " << all;
  }
}

} // namespace
} // namespace velkor::file
