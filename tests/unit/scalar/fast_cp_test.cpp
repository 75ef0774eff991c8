// Constants and copies carried to their uses.
#include "scalar/fast_cp.h"

#include "scalar/assignment_statistics.h"
#include "scalar/scalar_rows.h"

namespace velkor {
namespace {

class FastPropagationTest : public ScalarRowTest {
protected:
  FastPropagationTest() {
    use_pass([] { fast_CP(1, false); });
  }

  // What the calls, tests and returns of the function look like afterwards.
  Lines propagated(const Lines &input) {
    run_pass(input);
    return effects();
  }
};

TEST_F(FastPropagationTest, OneAssignmentReachesEveryUse) {
  EXPECT_EQ(propagated({"goto L2", "L1:", "call(address(_fn),_x)", "return(_self,_y)",
                        "L2:", "assign(_x,5)", "if _z L1 L3", "L3:", "return(_self,_x)"}),
            (Lines{"if _z", "call(address(_fn), 5)", "return(_self, _y)", "return(_self, 5)"}));
  // also where the use stands first, and through another variable
  EXPECT_EQ(propagated({"L1:", "call(address(_fn),_y)", "assign(_x,3)", "assign(_y,_x)",
                        "if _z L1 L2", "L2:", "return(_self,add(_x,_y))"}),
            (Lines{"call(address(_fn), _y)", "if _z", "return(_self, 6)"}));
}

TEST_F(FastPropagationTest, SeveralAssignmentsReachTheEndOfTheExtendedBlock) {
  EXPECT_EQ(
      propagated({"assign(_x,5)", "call(address(_fn),_x)", "assign(_x,6)", "if _z L1 L2",
                  "L1:", "call(address(_fn),_x)", "L2:", "return(_self,_x)"}),
      (Lines{"call(address(_fn), 5)", "if _z", "call(address(_fn), 6)", "return(_self, _x)"}));
  // a block that only jumps is passed over
  EXPECT_EQ(
      propagated({"assign(_x,5)", "call(address(_fn),_y)", "assign(_x,6)", "if _z L1 L2",
                  "L1:", "goto L4", "L2:", "call(address(_fn),_x)", "L4:", "return(_self,_x)"}),
      (Lines{"call(address(_fn), _y)", "if _z", "call(address(_fn), 6)", "return(_self, _x)"}));
}

TEST_F(FastPropagationTest, WhatEndsAValue) {
  const auto value_behind = [&](const char *statement) {
    return propagated({"assign(_x,5)", statement, "return(_self,_x)"}).back();
  };
  EXPECT_EQ(value_behind("assign(_x,_y)"), "return(_self, _x)");
  EXPECT_EQ(value_behind("assign(_x,ucall(address(_fn)))"), "return(_self, _x)");
  EXPECT_EQ(value_behind("increment(_x,1)"), "return(_self, _x)");
  EXPECT_EQ(value_behind("asg_add(_x,_y)"), "return(_self, _x)");
  EXPECT_EQ(value_behind("asg_add(_x,7)"), "return(_self, 12)");
  EXPECT_EQ(value_behind("asg_shift_left(_x,2)"), "return(_self, 20)");
  EXPECT_EQ(after({"asg_add(_x,_y)", "return(_self,_x)"})[1], "asg_add(_x, _y)");
  EXPECT_EQ(value_behind("assign(_y,assign(_x,8))"), "return(_self, 8)");
  EXPECT_EQ(value_behind("assign(_x,address:int*(_y))"), "return(_self, sconv:int(address(_y)))");
  // reached through its address, if only by a call or by an access of its own
  EXPECT_EQ(value_behind("call(address(_fn),address(_x))"), "return(_self, _x)");
  EXPECT_EQ(value_behind("assign(_p,address(_x))"), "return(_self, _x)");
}

TEST_F(FastPropagationTest, ConversionsOfTheVariable) {
  const auto value = [&](const char *assignment, const char *use) {
    return propagated({assignment, std::string("return(_self,") + use + ")"}).back();
  };
  EXPECT_EQ(value("assign(_c,300)", "sconv:int(_c)"), "return(_self, 44)");
  EXPECT_EQ(value("assign(_uc,-1)", "sconv:int(_uc)"), "return(_self, 255)");
  EXPECT_EQ(value("assign(_x,assign(_c,300))", "_x"), "return(_self, _x)") << "another type";
  EXPECT_EQ(value("assign(_x,assign(_y,300))", "_x"), "return(_self, 300)");
  EXPECT_EQ(value("assign(_u,assign(member:unsigned(_st,_b3),9))", "_u"), "return(_self, _u)");
  // read as another type than the one stored: the store cuts first
  EXPECT_EQ(value("assign(_x,-1.5)", "_x:unsigned"), "return(_self, 4294967295:unsigned)");
}

TEST_F(FastPropagationTest, PointersStep) {
  EXPECT_EQ(
      propagated({"assign(_p,address:int*(_a))", "call(address(_fn),_p)", "assign(_p,add(_p,4))",
                  "call(address(_fn),_p)", "asg_add(_p,4)", "return(_self,_p)"}),
      (Lines{"call(address(_fn), address(_a))", "call(address(_fn), _p)", "return(_self, _p)"}));
}

TEST_F(FastPropagationTest, ConstantTemporariesStay) {
  EXPECT_EQ(propagated({"assign(K$1,address(_x))", "assign(Q$2,7)", "call(address(_fn),K$1)",
                        "call(address(_fn),Q$2)", "if _z L1 L2", "L1:", "call(address(_fn),_y)",
                        "L2:", "return(_self,Q$2)"}),
            (Lines{"call(address(_fn), K$1)", "call(address(_fn), 7)", "if _z",
                   "call(address(_fn), _y)", "return(_self, Q$2)"}));
}

TEST_F(FastPropagationTest, OperandsAreWalkedOnce) {
  // the second walk of the operand would find y already set
  EXPECT_EQ(
      propagated({"assign(_x,1)", "asg_add(_x,comma_op(assign(_z,_y),assign(_y,5)))",
                  "call(address(_fn),_z)", "assign(_z,2)", "assign(_y,3)", "return(_self,_x)"})
          .front(),
      "call(address(_fn), _z)");
}

TEST_F(FastPropagationTest, StoresThroughAKnownPointer) {
  build_function(
      {"assign(_p,address(_x))", "assign(_x,1)", "assign(deref(_p),2)", "return(_self,_x)"});
  fast_CP(1, false);
  EXPECT_EQ(effects(), (Lines{"return(_self, _x)"}));
  options.opt_externs_volatile = 1;
  build_function({"assign(_p,address(_x))", "return(_self,_p)"});
  EXPECT_TRUE(is_constant_like(tree("address(_x)")));
  EXPECT_FALSE(is_constant_like(tree("address(_fn)"))) << "declared elsewhere, under -f";
}

TEST_F(FastPropagationTest, Statistics) {
  build_function({"assign(_x,1)", "assign(_x,2)", "assign(_y,3)", "call(address(_fn),_n)",
                  "assign(_p,address(_z))", "assign(_t,1)", "increment(_i,1)",
                  "assign(_w,assign(_v,4))", "return(_self,_u)"});
  sym("_t")->count = 3; // as another analysis may have left it
  sym_split();
  collect_assignment_statistics();
  EXPECT_EQ(sym("_x")->count, 2);
  EXPECT_EQ(sym("_y")->count, 1);
  EXPECT_EQ(sym("_n")->count, 0);
  EXPECT_EQ(sym("_z")->count, -1);
  EXPECT_EQ(sym("_z")->fcp_flag, 1);
  EXPECT_EQ(sym("_t")->count, -1) << "outlives the call";
  EXPECT_EQ(sym("_i")->count, 1);
  EXPECT_EQ(sym("_i")->init, nullptr);
  EXPECT_EQ(text(sym("_w")->init), "assign(_w, 4)");
  EXPECT_EQ(sym("_g")->count, -1) << "nobody names it";
  for (const SYM *chain = state.scalar_syms; chain; chain = chain->next)
    EXPECT_STRNE(chain->name, "_g");
}

TEST_F(FastPropagationTest, Messages) {
  const auto has = [](const std::string &all, const char *message) {
    return all.find(message) != std::string::npos;
  };
  build_function({"assign(_x,5)", "assign(_y,add(_z,1))", "assign(_y,multiply(_y,_x))",
                  "assign(_g1,1)", "assign(_g1,2)", "return(_self,add(_x,_y))"});
  const std::string text = debug_text([] { fast_CP(1, true); });
  EXPECT_TRUE(has(text, "\n\n\t\t\t---------- ENTERING 'combine_asgs_to_memory' -------\n"));
  EXPECT_TRUE(has(text, "\n\n\t\t\t---------- ENTERING 'fast_CP' -----------------\n"));
  EXPECT_TRUE(has(text, "\tNo references in the function for '_n'\n"));
  EXPECT_TRUE(has(text, "\n\tVariable is used but never assigned: _z\n"));
  EXPECT_TRUE(has(text, "\n\tGlobally constant assignment: _x = 5;\n"));
  EXPECT_TRUE(has(text, "\n\t(6,6) fcpTree() is replacing _x with 5;\n"));
  EXPECT_TRUE(has(text, "\n\tCombining the assignments y = z+1;\n"
                        "\t......................and y = y*x;\n"
                        "\t...................to get y = (z+1)*x;\n"))
      << text;
  EXPECT_TRUE(has(text, "\n\tCombining the assignments g1 = 1;\n"
                        "\t......................and g1 = 2;\n"
                        "\t...................to get T$1 = 1;\n"
                        "\t......................and g1 = 2;\n"))
      << text;
}

TEST_F(FastPropagationTest, LongChainsTakeLinearTime) {
  std::string chain = "assign(_x,1)";
  for (int i = 0; i < 2000; ++i)
    chain = "assign(_y,asg_add(_z," + chain + "))";
  EXPECT_EQ(propagated({"assign(_z,0)", chain, "return(_self,_x)"}).back(), "return(_self, 1)");
}

} // namespace
} // namespace velkor
