// Copies and known values carried along extended blocks.
#include "scalar/copyprop.h"

#include "scalar/scalar_rows.h"
#include "scalar/tree_cost.h"

#include <algorithm>

namespace velkor {
namespace {

class CopyPropagationTest : public ScalarRowTest {
protected:
  // Nothing is known of who else uses the file's variables.
  CopyPropagationTest() {
    for (const char *name : {"_g1", "_g2", "_gp", "_vol"})
      sym(name)->scqual |= CQ_ALIASED;
  }

  // What the calls, tests and returns of the function look like afterwards.
  Lines propagated(const Lines &input) {
    build_function(input);
    copyprop(true);
    return effects();
  }
  // The value returned behind the statements.
  std::string returned(Lines input, const std::string &value) {
    input.push_back("return(_self," + value + ")");
    const std::string line = propagated(input).back();
    const std::size_t start = line.find(", ") + 2;
    return line.substr(start, line.size() - start - 1);
  }
};

TEST_F(CopyPropagationTest, OneValueInTheWholeFunction) {
  EXPECT_EQ(propagated({"goto L2", "L1:", "call(address(_fn),_x)", "return(_self,_y)",
                        "L2:", "assign(_x,5)", "if _z L1 L3", "L3:", "return(_self,_x)"}),
            (Lines{"if _z", "call(address(_fn), 5)", "return(_self, _y)", "return(_self, 5)"}));
  // two equal assignments are one, and a copy of a constant is one
  EXPECT_EQ(propagated({"assign(_x,5)", "if _z L1 L2", "L1:", "assign(_x,5)", "assign(_y,_x)",
                        "L2:", "return(_self,add(_x,_y))"})
                .back(),
            "return(_self, 10)");
  // a chain of copies settles from whichever end
  EXPECT_EQ(propagated({"goto L2", "L1:", "return(_self,_x)", "L2:", "assign(_x,_y)",
                        "assign(_y,_n)", "assign(_n,address(_g1))", "if _z L1 L2"})
                .front(),
            "if _z");
  // a second value, a step, or an address operator: there is not one value
  const auto behind_join = [&](const char *statement) {
    return propagated({"assign(_x,5)", "if _z L1 L2", "L1:", statement, "L2:", "return(_self,_x)"})
        .back();
  };
  EXPECT_EQ(behind_join("assign(_y,6)"), "return(_self, 5)");
  for (const char *statement :
       {"assign(_x,6)", "asg_add(_x,1)", "increment(_x,1)", "call(address(_fn),address(_x))"})
    EXPECT_EQ(behind_join(statement), "return(_self, _x)") << statement;
}

TEST_F(CopyPropagationTest, ExpressionsReachTheEndOfTheExtendedBlock) {
  EXPECT_EQ(propagated({"assign(_x,add(_y,_n))", "if _z L1 L2", "L1:", "call(address(_fn),_x)",
                        "L2:", "return(_self,_x)"}),
            (Lines{"if _z", "call(address(_fn), add(_y, _n))", "return(_self, _x)"}));
  // until something that the value is made of changes
  EXPECT_EQ(returned({"assign(_x,add(_y,_n))", "assign(_i,1)"}, "_x"), "add(_y, _n)");
  EXPECT_EQ(returned({"assign(_x,add(_y,_n))", "assign(_y,ucall(address(_fn)))"}, "_x"), "_x");
  // x = y = e: y stands in for x where e has changed
  EXPECT_EQ(returned({"assign(_x,assign(_y,_n))", "assign(_n,ucall(address(_fn)))"}, "_x"), "_y");
  EXPECT_EQ(returned({"assign(_x,assign(_y,_n))"}, "_x"), "_n");
  // not values that read what they are assigned to, nor dear ones
  EXPECT_EQ(returned({"assign(_x,ucall(address(_fn)))", "assign(_x,add(_x,_n))"}, "_x"), "_x");
  std::string dear = "_y";
  for (int i = 0; i < 20; ++i)
    dear = "multiply(" + dear + ",_n)";
  EXPECT_EQ(returned({"assign(_x," + dear + ")"}, "_x"), "_x");
}

TEST_F(CopyPropagationTest, Calls) {
  EXPECT_EQ(returned({"assign(_x,_y)", "ucall(address(_fn))"}, "_x"), "_y");
  EXPECT_EQ(returned({"assign(_x,_g1)", "ucall(address(_fn))"}, "_x"), "_x");
  EXPECT_EQ(returned({"assign(_g1,3)", "ucall(address(_fn))"}, "_g1"), "_g1");
  EXPECT_EQ(returned({"assign(_t,3)", "ucall(address(_fn))"}, "_t"), "_t") << "by recursion";
  EXPECT_EQ(returned({"assign(_x,_ci)", "ucall(address(_fn))"}, "_x"), "_ci");
  EXPECT_EQ(returned({"assign(_x,3)", "call(address(_fn),address(_x))"}, "_x"), "_x");
  EXPECT_EQ(returned({"assign(_x,3)", "call(address(_strlen),pconv:char*(address(_x)))"}, "_x"),
            "_x");
  EXPECT_EQ(returned({"assign(_x,3)", "assign(_p,address(_x))", "ucall(address(_fn))"}, "_x"),
            "_x");
  // beside a call, whatever the order is
  EXPECT_EQ(returned({"assign(_g1,3)"}, "add(ucall(address(_fn)),_g1)"),
            "add(ucall(address(_fn)), _g1)");
  EXPECT_EQ(
      propagated({"assign(_x,comma_op(assign(_g1,3),ucall(address(_fn))))", "return(_self,_g1)"})
          .back(),
      "return(_self, _g1)");
}

TEST_F(CopyPropagationTest, Stores) {
  EXPECT_EQ(returned({"assign(deref(_p),_x)"}, "deref(_p)"), "_x");
  EXPECT_EQ(returned({"assign(deref(add(_p,8)),7)"}, "deref(add(_p,8))"), "7");
  EXPECT_EQ(returned({"assign(arrow(_sp,_m),_x)"}, "arrow(_sp,_m)"), "_x");
  EXPECT_EQ(returned({"assign(deref(_cp),_x)"}, "deref(_cp)"), "sconv:char(_x)");
  for (const char *statement :
       {"assign(deref(_q),1)", "ucall(address(_fn))", "assign(_x,ucall(address(_fn)))",
        "assign(_p,_q)", "assign(_g1,1)", "stasg[tag=_st_tag](deref(_sp),_st)"})
    EXPECT_EQ(returned({"assign(deref(_p),_x)", statement}, "deref(_p)").substr(0, 5), "deref")
        << statement;
  // values that were read from memory
  EXPECT_EQ(returned({"assign(_x,deref(_p))"}, "_x"), "deref(_p)");
  EXPECT_EQ(returned({"assign(_x,deref(_p))", "assign(deref(_q),1)"}, "_x"), "_x");
  // a pointer to const does not make what it points at constant
  EXPECT_EQ(returned({"assign(_x,deref[const](_p))", "assign(deref(_q),1)"}, "_x"), "_x");
  // an array whose address stays here changes only by its name
  EXPECT_EQ(returned({"assign(_x,_n)", "assign(deref(add(address:int*(_a),4)),_x)"},
                     "deref(add(address:int*(_a),4))"),
            "_n");
}

TEST_F(CopyPropagationTest, Volatile) {
  EXPECT_EQ(returned({"assign(_vol,3)"}, "_vol"), "_vol");
  EXPECT_EQ(returned({"assign(_vx,3)"}, "_vx"), "_vx");
  EXPECT_EQ(returned({"assign(_x,_vol)"}, "_x"), "_x");
  EXPECT_EQ(returned({"assign(deref[volatile](_p),3)"}, "deref[volatile](_p)"),
            "deref[volatile](_p)");
  EXPECT_EQ(returned({"assign(_p,address(_y))"}, "deref[volatile](_p)"),
            "deref[volatile](address(_y))");
}

TEST_F(CopyPropagationTest, AccessesThroughKnownAddresses) {
  EXPECT_EQ(returned({"assign(_p,address(_g1))"}, "deref(_p)"), "_g1");
  EXPECT_EQ(returned({"assign(_sp,address(_st))"}, "arrow(_sp,_k)"), "member(_st, _k)");
  EXPECT_EQ(returned({"assign(_p,address(_x))", "assign(deref(_p),4)"}, "_x"), "4");
  // characters of a literal, within its bounds and as characters only
  EXPECT_EQ(returned({"assign(_cp,\"abc\")"}, "deref(add(_cp,1))"), "98:char");
  EXPECT_EQ(returned({}, "deref(add(\"abc\",3))"), "deref(add(\"abc\", 3))");
}

TEST_F(CopyPropagationTest, Steps) {
  EXPECT_EQ(returned({"assign(_x,5)", "assign(_y,increment(_x,1))"}, "multiply(_x,_y)"),
            "multiply(_y, 6)");
  EXPECT_EQ(returned({"assign(_x,5)", "assign(_y,decrement(_x,1))"}, "multiply(_x,_y)"),
            "multiply(_y, 4)");
  EXPECT_EQ(returned({"assign(_p,_q)", "assign(_p,add(_p,4))"}, "deref(_p)"), "deref(_p)");
}

TEST_F(CopyPropagationTest, Conversions) {
  EXPECT_EQ(returned({"assign(_c,sconv:char(_x))", "assign(_y,sconv:int(_c))"}, "_y"),
            "sconv:char(_x)");
  EXPECT_EQ(returned({"assign(_us,300:ushort)"}, "_us"), "300:ushort");
  // the store cuts the value, however the variable is read
  EXPECT_EQ(returned({"assign(_c,_x)"}, "_c"), "sconv:char(_x)");
}

TEST_F(CopyPropagationTest, TemporariesForConstantsKeepThem) {
  EXPECT_EQ(propagated({"assign(Q$2,70000)", "if _z L1 L2", "L1:", "call(address(_fn),Q$2)",
                        "L2:", "return(_self,Q$2)"}),
            (Lines{"if _z", "call(address(_fn), Q$2)", "return(_self, Q$2)"}));
  EXPECT_EQ(returned({"assign(K$1,address(_g1))", "goto L1", "L1:", "if _z L1 L2", "L2:"},
                     "deref(add(K$1,8))"),
            "deref(add(address(_g1), 8))");
}

TEST_F(CopyPropagationTest, JumpsPastDecidedTests) {
  // while (state) ...: each way in knows the state
  EXPECT_EQ(propagated({"if _z L1 L2", "L1:", "assign(_x,1)", "ucall(address(_fn))", "goto L3",
                        "L2:", "assign(_x,0)", "ucall(address(_fm))", "goto L3",
                        "L3:", "if _x L4 L5", "L4:", "call(address(_fn),1)", "return(_self,1)",
                        "L5:", "call(address(_fm),2)", "return(_self,2)"})
                .size(),
            5u)
      << "no test is left but the first";
  // a value that both ways bring along decides nothing on one of them
  const Lines kept =
      propagated({"if _z L1 L2", "L1:", "assign(_x,1)", "ucall(address(_fn))", "goto L3",
                  "L2:", "assign(_x,_n)", "ucall(address(_fm))", "goto L3", "L3:", "if _x L4 L5",
                  "L4:", "call(address(_fn),1)", "return(_self,1)", "L5:", "call(address(_fm),2)",
                  "return(_self,2)"});
  EXPECT_EQ(std::count_if(kept.begin(), kept.end(),
                          [](const std::string &line) { return line.substr(0, 2) == "if"; }),
            2);
}

TEST_F(CopyPropagationTest, TestsOfConstantsGo) {
  EXPECT_EQ(propagated({"assign(_x,3)", "assign(_x,add(_x,_g1))", "assign(_x,3)",
                        "if gt(_x,2) L1 L2", "L1:", "return(_self,1)", "L2:", "return(_self,2)"}),
            Lines{"return(_self, 1)"});
}

TEST_F(CopyPropagationTest, Messages) {
  const auto has = [](const std::string &all, const char *message) {
    return all.find(message) != std::string::npos;
  };
  build_function({"assign(_x,5)", "assign(_y,add(_z,1))", "assign(_y,add(_z,_x))",
                  "assign(deref(_p),_x)", "return(_self,add(_y,deref(_p)))"});
  const std::string text = debug_text([] { copyprop(true); });
  for (const char *message : {"\n\n\t\t\t---------- ENTERING 'copyprop' -----------------\n",
                              "\n\t============== Globally constant assignments:\n",
                              "\n\t============================================\n",
                              "\n\t============== (3,3) 'lookup_global_ASG' is replacing this:\n",
                              "\n\t============== with the following substitute:\n",
                              "\n\t========== (5,5) 'lookup_ASG' is replacing this:\n",
                              "\n\t========== (5,5) 'cp_indirect_RL' is replacing this:\n",
                              "\n\t========== with the following substitute:\n",
                              "\n\t=========================================\n"})
    EXPECT_TRUE(has(text, message)) << message << text;
}

TEST_F(CopyPropagationTest, TimeIsLinearInTheBlock) {
  // as many stores, calls and variables as statements
  Lines function;
  for (int i = 0; i < 20000; ++i) {
    function.push_back("assign(_g1,deref(_p))");
    function.push_back("assign(deref(_q),_g2)");
  }
  function.push_back("return(_self,_g1)");
  EXPECT_EQ(propagated(function).back(), "return(_self, _g1)");
}

TEST_F(CopyPropagationTest, TreeCost) {
  const auto cost = [&](const char *row) {
    NODE *node = tree(row);
    const int result = tree_cost(node, 100) - 100;
    erase_tree(node);
    return result;
  };
  EXPECT_EQ(cost("_x"), 3);
  EXPECT_EQ(cost("_g1"), 4);
  EXPECT_EQ(cost("7"), 1);
  EXPECT_EQ(cost("multiply(_x,7)"), 8);
  EXPECT_EQ(cost("deref(add(_p,8))"), 8);
  EXPECT_EQ(cost("arrow(_sp,_m)"), 6) << "the member costs nothing";
  EXPECT_EQ(cost("ucall(address(_fn))"), 16);
}

} // namespace
} // namespace velkor
