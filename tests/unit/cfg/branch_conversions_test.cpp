// Branches turned into straight code, and left alone where that would change what a program does.
#include "cfg/check_function.h"
#include "cfg/graph_rows.h"
#include "cfg/simpcfg.h"

#include <algorithm>

namespace velkor {
namespace {

class BranchConversionTest : public GraphRowTest {
protected:
  Lines cleaned(const Lines &input, int mode) {
    build(input);
    simpcfg(mode);
    check_function("simpcfg");
    return graph();
  }

  // if (condition) on_true; else on_false (where that is not empty); the first statement, without
  // its blanks, where the branch went away, else "branch".
  std::string converted(const std::string &condition, const std::string &on_true,
                        const std::string &on_false = "", int mode = 0) {
    Lines lines = {"if " + condition + " L1 L2", "L1:", on_true};
    if (!on_false.empty()) lines.push_back("goto L3");
    lines.push_back("L2:");
    if (!on_false.empty()) lines.insert(lines.end(), {on_false, "L3:"});
    lines.push_back("ucall(address(_fm))");
    lines.push_back("return(_self,add(_x,_y))");
    const Lines result = cleaned(lines, mode);
    if (state.num_blocks != 1) return "branch";
    std::string statement = result[1];
    std::erase(statement, ' ');
    return statement;
  }
};

const char *const bit = "member:unsigned(_st,_b1)";
const char *const far_bit = "arrow:unsigned(_sp,_b1)";
const std::string truth = "bit_and(_x,1)";

std::string set(const char *place, const std::string &value, const std::string &op = "assign") {
  return op + ":unsigned(" + place + "," + value + ")";
}

TEST_F(BranchConversionTest, TestAndSetBecomesToggle) {
  EXPECT_EQ(converted("bit_and(_x,4)", "asg_and(_x,-5)", "asg_or(_x,4)"), "asg_xor(_x,4)");
  EXPECT_EQ(converted("bit_and:uchar(_uc,4)", "asg_and:uchar(_uc,251)", "asg_or:uchar(_uc,4)"),
            "asg_xor(_uc,4)");
  EXPECT_EQ(converted("bit_and(_x,4)", "asg_and(_x,-9)", "asg_or(_x,4)"), "branch");
  EXPECT_EQ(converted("bit_and(_x,6)", "asg_and(_x,-7)", "asg_or(_x,6)"), "branch");
  EXPECT_EQ(converted("bit_and(_y,4)", "asg_and(_x,-5)", "asg_or(_x,4)"), "branch");
  EXPECT_EQ(converted("bit_and(_vol,4)", "asg_and(_vol,-5)", "asg_or(_vol,4)"), "branch");
}

TEST_F(BranchConversionTest, ATestedBitIsMoved) {
  EXPECT_EQ(converted("bit_and(_x,4)", "asg_or(_y,16)"), "asg_or(_y,bit_and(multiply(_x,4),16))");
  EXPECT_EQ(converted("bit_and(_x,4)", "assign(_y,bit_or(_y,4))"), "asg_or(_y,bit_and(_x,4))");
  EXPECT_EQ(converted("bit_and(_u,16)", "asg_xor(_y,4)"),
            "asg_xor(_y,bit_and(shift_right:int(_u,2),4))");
  EXPECT_EQ(converted("bit_and(_x,1)", "asg_or(_y,8)"), "branch") << "a long shift to the left";
  EXPECT_EQ(converted("bit_and(_x,4)", "asg_or(_y,24)"), "branch") << "two bits";
  EXPECT_EQ(converted("bit_and(_x,4)", "asg_or:int(deref(_p),16)"), "branch")
      << "perhaps no object";
  EXPECT_EQ(converted("bit_and(ucall(address(_fn)),4)", "asg_or(_g1,16)"), "branch")
      << "the call may set the object";
}

TEST_F(BranchConversionTest, OperationsOnSingleBits) {
  EXPECT_EQ(converted(truth, set(bit, "1")),
            "asg_or(member(_st,_b1),bit_and:unsigned(_x,1:unsigned))");
  EXPECT_NE(converted(truth, set(bit, "_u", "asg_or")), "branch");
  EXPECT_NE(converted(truth, set(bit, "_u", "asg_xor")), "branch");
  EXPECT_NE(converted(truth, set(bit, "_u", "asg_and")), "branch");
  // neither a store nor a computation may happen that did not happen before
  EXPECT_EQ(converted(truth, set(far_bit, "1")), "branch");
  EXPECT_EQ(converted(truth, set(bit, "deref:unsigned(_p)", "asg_or")), "branch");
  EXPECT_EQ(converted(truth, set(bit, "divide:unsigned(_u,_v)", "asg_or")), "branch");
  EXPECT_EQ(converted(truth, set(bit, "ucall(address(_fn))", "asg_or")), "branch");
  EXPECT_EQ(converted("bit_and(ucall(address(_fn)),1)", set(bit, "1")), "branch");
  EXPECT_EQ(converted("lt(_x,_y)", set(bit, "1")), "branch") << "a relation is a test anyway";
  EXPECT_EQ(converted("_x", set(bit, "1")), "branch");
}

TEST_F(BranchConversionTest, SelectionOfSingleBits) {
  EXPECT_NE(converted(truth, set(bit, "_u"), set(bit, "0")), "branch");
  EXPECT_NE(converted(truth, set(bit, "0"), set(bit, "_u")), "branch");
  EXPECT_NE(converted(truth, set(far_bit, "_u"), set(far_bit, "0")), "branch") << "both arms store";
  EXPECT_EQ(converted(truth, set(bit, "_u"), set(bit, "_v")), "branch");
  EXPECT_EQ(converted(truth, set(bit, "deref:unsigned(_p)"), set(bit, "0")), "branch");
  EXPECT_EQ(converted("bit_and(ucall(address(_fn)),1)", set(bit, "_u"), set(bit, "0")), "branch")
      << "one call would become two";
}

TEST_F(BranchConversionTest, ValuesAreChosenInTheLastCleanUp) {
  EXPECT_EQ(converted("_z", "assign(_x,1)", "assign(_x,_i)"), "branch");
  EXPECT_EQ(converted("_z", "assign(_x,1)", "assign(_x,_i)", 1),
            "assign(_x,conditional(_z,alternatives(1,_i)))");
  EXPECT_EQ(converted("_z", "assign(_x,1)", "assign(_y,_i)", 1), "branch");
  EXPECT_EQ(converted("_z", "asg_add(_g1,3)", "asg_add(_g1,_i)", 1),
            "asg_add(_g1,conditional(_z,alternatives(3,_i)))");
  EXPECT_EQ(converted("ucall(address(_fn))", "asg_add(_g1,3)", "asg_add(_g1,_i)", 1), "branch")
      << "the sum may be begun ahead of the call";
  EXPECT_NE(converted("ucall(address(_fn))", "assign(_x,3)", "assign(_x,_i)", 1), "branch");
  EXPECT_EQ(
      converted("ucall(address(_fn))", "assign:int(deref(_gp),3)", "assign:int(deref(_gp),_i)", 1),
      "branch");
  EXPECT_EQ(cleaned({"if _z L1 L2", "L1:", "return(_self,_x)", "L2:", "return(_self,_y)"}, 1),
            (Lines{"B1:", "return(_self, conditional(_z, alternatives(_x, _y)))"}));
}

TEST_F(BranchConversionTest, EqualCodeBehindTheArmsGoesOn) {
  EXPECT_EQ(cleaned({"if _z L1 L2", "L1:", "assign(_x,1)", "ucall(address(_fn))", "goto L3", "L2:",
                     "assign(_x,_i)", "ucall(address(_fn))", "L3:", "return(_self,add(_x,_y))"},
                    1),
            (Lines{"B1:", "assign(_x, conditional(_z, alternatives(1, _i)))", "ucall(address(_fn))",
                   "return(_self, add(_x, _y))"}));
}

TEST_F(BranchConversionTest, TestsWithACommonTargetBecomeOne) {
  const Lines input = {
      "if ucall(address(_fn)) L1 L2", "L2:", "if _y L1 L3", "L3:", "ucall(address(_fm))", "L1:",
      "return(_self,add(_x,_y))"};
  EXPECT_EQ(cleaned(input, 0)[1].substr(0, 8), "if ucall");
  EXPECT_EQ(cleaned(input, 1)[1], "if logical_or(ucall(address(_fn)), _y) B3 B2");
  Lines and_like = input;
  and_like[0] = "if ucall(address(_fn)) L2 L1";
  EXPECT_EQ(cleaned(and_like, 1)[1], "if logical_or(eq(ucall(address(_fn)), 0), _y) B3 B2");
  // another way to the second test
  Lines shared = input;
  shared.insert(shared.begin(), {"if _z L2 L4", "L4:", "assign(_x,5)"});
  const Lines kept = cleaned(shared, 1);
  EXPECT_EQ(std::count_if(kept.begin(), kept.end(),
                          [](const std::string &line) { return line.starts_with("if "); }),
            3);
}

class SinkTest : public BranchConversionTest {
protected:
  // do { fn(); } while ((x = x + step) == limit), with the same test ahead of the loop.
  Lines sunk(const std::string &x, const std::string &type, const std::string &step,
             const std::string &limit) {
    const std::string assignment =
        "assign" + type + "(" + x + ",add" + type + "(" + x + "," + step + "))";
    const std::string test = "if ne(" + assignment + "," + limit + ") L1 L2";
    return cleaned({test, "L1:", "ucall(address(_fn))", test, "L2:", "return(_self,add(_x,_y))"},
                   0);
  }
};

TEST_F(SinkTest, StepsMoveOutOfTheTestsOfALoop) {
  EXPECT_EQ(
      sunk("_x", "", "1", "10"),
      (Lines{"B1:", "if ne(_x, 9) B2 B3", "B2:", "assign(_x, add(_x, 1))", "ucall(address(_fn))",
             "if ne(_x, 9) B2 B3", "B3:", "assign(_x, add(_x, 1))", "return(_self, add(_x, _y))"}));
  EXPECT_EQ(sunk("_x", "", "1", "-2147483648")[1], "if ne(_x, 2147483647) B2 B3");
  // an object that wraps around below the limit
  EXPECT_EQ(sunk("_uc", ":uchar", "-1", "255")[1].substr(0, 12), "if ne(assign");
  EXPECT_EQ(sunk("member(_st,_b3)", ":unsigned", "1", "7")[1].substr(0, 12), "if ne(assign");
  EXPECT_EQ(sunk("_vol", "", "1", "7")[1].substr(0, 12), "if ne(assign");
}

} // namespace
} // namespace velkor
