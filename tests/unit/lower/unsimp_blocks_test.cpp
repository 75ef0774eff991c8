// Statements of a block: chains, steps, embedding; labels; the leaf flag.
#include "lower/branch_labels.h"
#include "lower/lower_function.h"
#include "lower/lowering_rows.h"

#include <algorithm>

namespace velkor {
namespace {

class UnsimpBlocksTest : public LoweringTest {
protected:
  // Makes the symbol a candidate of the live-variable numbering.
  void number(const char *name, int candidate) {
    sym(name)->count = candidate;
    sym(name)->fcp_flag = 0;
  }

  // Each label as "B2:f1" or "B2:b1": block, first or second label, references; in block order.
  static std::string labels() {
    std::string result;
    for (const BB *each = state.first_bb; each; each = each->next) {
      char kind = 'f';
      for (const LABEL *label = each->labels; label; label = label->next, kind = 'b')
        if (label->refcount != 0)
          result += (result.empty() ? "B" : " B") + std::to_string(each->dfn) + ":" + kind +
                    std::to_string(label->refcount) + "=" + std::to_string(label->index);
    }
    return result;
  }
};

TEST_F(UnsimpBlocksTest, ChainsOfAssignmentsAreRebuilt) {
  EXPECT_EQ(lowered({"assign(_x, 0)", "assign(_y, 0)", "assign(_c, 0)"}),
            Lines{"assign(_c, assign(_y, assign(_x, 0)))"});
  EXPECT_EQ(lowered({"assign(_u, 1:unsigned)", "assign(_v, 1:unsigned)"}),
            Lines{"assign(_v, assign(_u, 1:unsigned))"});
  const std::vector<Lines> apart = {
      {"assign(_x, 1)", "assign(_y, 1)"},                   // signed
      {"assign(_u, 5:unsigned)", "assign(_v, 5:unsigned)"}, // a narrow target would cut it
      {"assign(_x, 0)", "assign(_y, 1)"},                   //
      {"assign(_p, pconv:int*(0))", "assign(_x, 0)"},       //
      {"assign(_vol, 0)", "assign(_x, 0)"},                 //
      {"assign(_i, 0)", "assign(deref(add(_p, _i)), 0)"},   // the address needs the new i
      {"assign(deref(_q), 0)", "assign(deref(_p), 0)"},     // q may point at p
      {"assign(_p, 0)", "assign(arrow(_sp, _m), assign(_x, 0))"},
  };
  for (const Lines &lines : apart)
    EXPECT_EQ(lowered(lines), lines);
  EXPECT_EQ(lowered({"assign(_i, 0)", "assign(deref(add(_p, _x)), 0)"}),
            Lines{"assign(deref(add(_p, _x)), assign(_i, 0))"})
      << "another variable's store leaves the address alone";
}

TEST_F(UnsimpBlocksTest, OtherLinesAreNotChained) {
  build({"assign(_x, 0)", "assign(_y, 0)"});
  clear_labels();
  unsimp_blocks();
  EXPECT_EQ(line(state.first_bb->trees->item), "assign(_x, 0)");
}

TEST_F(UnsimpBlocksTest, StepsMoveBehindTheStatement) {
  const Lines behind = {"assign(_y, add(_r, 1))", "asg_add(_r, 1)"};
  EXPECT_EQ(lowered({"assign(_y, add(increment(_r, 1), 1))"}), behind);
  const std::vector<std::string> whole = {
      "assign(_y, increment(_x, 1))",          // no register
      "assign(_y, increment(_rv, 1))",         // volatile: read once, written once
      "assign(_y, add(increment(_r, 1), _r))", // looked at elsewhere
      "assign(_y, conditional(_x, alternatives(increment(_r, 1), 2)))",
      "assign(_y, add(_k1, increment(_h, 1)))", // two names of one register
      "assign(_y, call(address(_fn), increment(_cr, 1)))",
      "return(_self, increment(_r, 1))", // the last of its block
  };
  for (const std::string &statement : whole)
    EXPECT_EQ(lowered({statement}), Lines{statement});
  EXPECT_EQ(lowered({"assign(_y, call(address(_fn), increment(_h, 1)))"}),
            (Lines{"assign(_y, call(address(_fn), _h))", "asg_add(_h, 1)"}));
  EXPECT_EQ(lowered({"assign(_y, add(asg_subtract(_r, 1), 1))"}),
            (Lines{"assign(_y, _r)", "asg_subtract(_r, 1)"}));
  EXPECT_EQ(lowered({"increment(_x, 1)"}), Lines{"asg_add(_x, 1)"});
  EXPECT_EQ(lowered({"decrement(_r, 1)"}), Lines{"asg_subtract(_r, 1)"});
}

TEST_F(UnsimpBlocksTest, AccessesStepTheirPointerOnlyInModeZero) {
  const std::string access = "assign(_y, deref(increment(_rp, 4)))";
  EXPECT_EQ(lowered({access}), Lines{access});
  options.opt_target_mode = 1;
  EXPECT_EQ(lowered({access}), (Lines{"assign(_y, deref(_rp))", "asg_add(_rp, 4)"}));
}

TEST_F(UnsimpBlocksTest, ConstantAssignmentsAreEmbedded) {
  number("_x", 0);
  EXPECT_EQ(lowered({"assign(_x, 5)", "assign(_z, 1)", "assign(_y, add(_x, _n))"}),
            (Lines{"assign(_z, 1)", "assign(_y, add(assign(_x, 5), _n))"}));
  EXPECT_EQ(lowered({"asg_subtract(_x, 1)", "assign(_y, add(_x, 1))"}),
            Lines{"assign(_y, decrement(_x, 1))"});
  const std::vector<Lines> apart = {
      {"assign(_x, 5)", "assign(_y, multiply(_x, _x))"},
      {"assign(_x, 5)", "assign(_y, conditional(_n, alternatives(_x, 3)))"},
      {"assign(_x, 5)", "assign(_y, conditional(_n, alternatives(_z, 3)))",
       "assign(_i, _x)"}, // the condition is in the way
      {"assign(_x, 5)", "assign(_p, address(_x))"},
      {"assign(_x, 5)", "asg_add(_x, _n)"},
      {"assign(_x, 5)", "assign(_u, _x:unsigned)"},
      {"assign(_x, _z)", "assign(_y, add(_x, _n))"},
  };
  for (const Lines &lines : apart)
    EXPECT_EQ(lowered(lines), lines);
}

TEST_F(UnsimpBlocksTest, OnlyCandidatesInAutomaticStorageAreEmbedded) {
  const Lines lines = {"assign(_x, 5)", "assign(_y, add(_x, _n))"};
  EXPECT_EQ(lowered(lines), lines) << "no candidate";
  number("_x", 0);
  sym("_x")->fcp_flag = 1;
  EXPECT_EQ(lowered(lines), lines) << "its address is known";
  number("_x", 0);
  sym("_x")->sclass = C_STAT;
  EXPECT_EQ(lowered(lines), lines) << "a call may read it";
}

TEST_F(UnsimpBlocksTest, TwoNamesOfOneRegisterAreOneObject) {
  number("_h", 0);
  EXPECT_EQ(lowered({"assign(_h, 5)", "assign(_z, 1)", "assign(_y, add(_k1, _n))"}),
            (Lines{"assign(_z, 1)", "assign(_y, add(assign(_h, 5), _n))"}));
}

TEST_F(UnsimpBlocksTest, CallsMakeTheFunctionNoLeaf) {
  (void)lowered({"assign(_x, 5)"});
  EXPECT_TRUE(state.function_is_leaf);
  (void)lowered({"assign(_x, call(address(_fn), 5))"});
  EXPECT_FALSE(state.function_is_leaf);
}

const Lines loop = {"assign(_i, 0)", "L1:", "if lt(_i,10) L2 L3", "L2:", "asg_add(_i, 1)",
                    "goto L1",       "L3:", "assign(_x, _i)"};

TEST_F(UnsimpBlocksTest, ForwardAndBackwardReferencesHaveLabelsOfTheirOwn) {
  build(loop);
  lower_function();
  EXPECT_EQ(labels(), "B2:f1=1 B2:b1=2 B3:f1=3 B4:f1=4 B5:f1=5");
}

TEST_F(UnsimpBlocksTest, DebugRunsKeepNumbersThatTellTheBlock) {
  options.debug_level = 2;
  build(loop);
  lower_function();
  EXPECT_EQ(labels(), "B2:f1=3 B2:b1=8 B3:f1=4 B4:f1=5 B5:f1=6");
}

TEST_F(UnsimpBlocksTest, LabelsThatAreOnlyFallenThroughToMayGoWithoutANumber) {
  constexpr int most = 32767;
  Lines lines;
  for (int i = 0; i < most / 2; ++i) { // three labels each, of which two are written
    const std::string first = std::to_string(3 * i + 1);
    const std::string second = std::to_string(3 * i + 2);
    const std::string third = std::to_string(3 * i + 3);
    lines.insert(lines.end(),
                 {"if _x L" + first + " L" + second, "L" + first + ":", "assign(_y, 1)",
                  "goto L" + third, "L" + second + ":", "assign(_y, 2)", "L" + third + ":"});
  }
  build(lines);
  lower_function();
  int largest = 0;
  for (const BB *each = state.first_bb; each; each = each->next)
    if (each->labels && each->labels->refcount > 1)
      largest = std::max(largest, static_cast<int>(each->labels->index));
  EXPECT_GT(largest, most / 2);
  EXPECT_LE(largest, most);
}

TEST_F(UnsimpBlocksTest, MachineLoopsArePairedByTheirLabels) {
  build({"assign(_x, 1)"});
  const auto control = [&](const char *line, std::int32_t loop_number) {
    NODE *result = tree(line);
    result->u.lval = loop_number;
    return result;
  };
  NODE *begin = unsimp_tree(control("loop(_h, 1)", 7), &block, nullptr);
  EXPECT_EQ(text(unsimp_tree(control("loop(_x, 1)", 8), &block, nullptr)), "_x");
  NODE *other = unsimp_tree(control("endloop(asg_subtract(_h, 1), 1)", 9), &block, nullptr);
  NODE *end = unsimp_tree(control("endloop(asg_subtract(_h, 1), 1)", 7), &block, nullptr);
  NODE *test = make_if(control("endloop(asg_subtract(_x, 1), 1)", 8), 1, 2);
  test = unsimp_tree(test, &block, nullptr);
  EXPECT_EQ(text(test->left), text(tree("ne(asg_subtract(_x, 1), 0)")));
  number_labels();
  EXPECT_EQ(begin->right->u.lval, end->right->u.lval);
  EXPECT_NE(begin->right->u.lval, other->right->u.lval);
}

} // namespace
} // namespace velkor
