// Bit ranges of memory: loads that take the value of an earlier store, stores that nobody reads.
#include "scalar/subranges.h"

#include "core/target.h"
#include "scalar/dead_subranges.h"
#include "scalar/scalar_rows.h"
#include "scalar/subrange_loads.h"

#include <algorithm>

namespace velkor {
namespace {

class SubrangesTest : public ScalarRowTest {
protected:
  SubrangesTest() {
    declare(0, {"symbol _gs extern struct tag=_st_tag", "symbol _ga extern int[] dims=10",
                "symbol _un_tag union_tag union size=64", "symbol _ui union_member int",
                "symbol _uc2 union_member char", "symbol _ud union_member double",
                "symbol .eos end_of_tag union tag=_un_tag size=64",
                "symbol _gun extern union tag=_un_tag", "symbol _pr_tag struct_tag struct size=64",
                "symbol _v1 struct_member int volatile", "symbol _v2 struct_member int offset=32",
                "symbol .eos end_of_tag struct tag=_pr_tag size=64",
                "symbol _pr extern struct tag=_pr_tag"});
    declare(2, {"symbol _st2 auto struct tag=_st_tag", "symbol _un auto union tag=_un_tag",
                "symbol _ts static struct tag=_st_tag"});
  }

  void declare(int level, const Lines &lines) {
    for (const std::string &line : lines) {
      std::string error;
      EXPECT_TRUE(symbols.declare(line, level, error)) << line << ": " << error;
    }
  }

  Lines loads(const Lines &input) {
    build_function(input);
    lcse_subrange_assignments();
    return graph();
  }

  Lines cleaned(const Lines &input) {
    build_function(input);
    elim_dead_subrange_assigns();
    return graph();
  }

  static Lines block(const Lines &statements) {
    Lines lines = {"B1:"};
    lines.insert(lines.end(), statements.begin(), statements.end());
    return lines;
  }

  // Is what is stored in the place still known behind the statement?
  bool is_known(const std::string &place, const std::string &between) {
    const Lines lines = loads({"assign(" + place + ",7)", between, "return(_self," + place + ")"});
    return lines.back() == "return(_self, 7)";
  }

  // Is a store to the place dead, with the statement between it and another store to it?
  bool is_dead(const std::string &place, const std::string &between) {
    const std::string store = "assign(" + place + ",";
    const Lines lines = cleaned({store + "7)", between, store + "8)", "goto L1",
                                 "L1:", "if _x L1 L2", "L2:", "return(_self,0)"});
    const auto has = [&](const std::string &end) {
      return std::any_of(lines.begin(), lines.end(), [&](const std::string &line) {
        return line.rfind("assign", 0) == 0 && line.size() > end.size() &&
               line.compare(line.size() - end.size(), end.size(), end) == 0;
      });
    };
    EXPECT_TRUE(has(", 8)")) << place << " behind " << between;
    return !has(", 7)");
  }
};

const char *const second_element = "deref(add(address(_a),4))";
const char *const absolute = "deref:int(pconv:int*(1024))";

TEST_F(SubrangesTest, AConstantIsTakenAndAnotherValueKept) {
  EXPECT_EQ(
      loads(
          {"assign(member(_st,_m),1)", "assign(member(_st,_k),2)", "return(_self,member(_st,_m))"}),
      block({"assign(member(_st, _m), 1)", "assign(member(_st, _k), 2)", "return(_self, 1)"}));
  EXPECT_EQ(loads({"assign(member(_st,_m),add(_x,1))", "assign(_y,member(_st,_m))",
                   "return(_self,multiply(member(_st,_m),_y))"}),
            block({"assign(Y$1, assign(member(_st, _m), add(_x, 1)))", "assign(_y, Y$1)",
                   "return(_self, multiply(Y$1, _y))"}));
  EXPECT_EQ(loads({"assign(_gp,address(_x))", "assign(_gc,300)", "call(address(_fn),_gp)",
                   "return(_self,_gc)"})
                .back(),
            "return(_self, _gc)")
      << "a call may change it";
  EXPECT_EQ(loads({"assign(_gp,address(_ga))", "assign(_gc,300)", "assign(_x,deref(_gp))",
                   "return(_self,_gc)"})
                .back(),
            "return(_self, 44:char)")
      << "as the place holds it";
}

TEST_F(SubrangesTest, AnUpdateUsesTheValueAtHand) {
  EXPECT_EQ(
      loads({"assign(_g1,5)", "asg_add(_g1,_x)", "return(_self,_g1)"}),
      block({"assign(_g1, 5)", "assign(Y$1, assign(_g1, add(_x, 5)))", "return(_self, Y$1)"}));
  EXPECT_EQ(loads({"assign(_g1,5)", "asg_add(_g1,ucall(address(_fn)))", "return(_self,_g1)"})[2],
            "asg_add(_g1, ucall(address(_fn)))");
  EXPECT_EQ(loads({"assign(_g1,5)", "increment(_g1,1)", "return(_self,_g1)"}).back(),
            "return(_self, _g1)");
}

TEST_F(SubrangesTest, StoresEndWhatTheyOverlap) {
  struct Row {
    const char *place;
    const char *statement;
    bool is_known;
  };
  const Row rows[] = {
      {"member(_st,_m)", "assign(member(_st,_k),1)", true},
      {"member(_st,_m)", "assign(member(_st2,_m),1)", true},
      {"member(_st,_m)", "stasg[tag=_st_tag](_st,_st2)", false},
      {"member(_st,_m)", "assign(deref(_p),1)", false},
      {"member(_st,_m)", "assign(deref(add(address(_a),pmconv(_i,32))),1)", false},
      {"member(_un,_ui)", "assign(member(_un,_uc2),1)", false},
      {"member(_un,_ui)", "assign(member(_un,_ud),_d)", false},
      {"_g1", "assign(_g2,1)", true},
      {"_g1", "asg_add(_g1,1)", false},
      {second_element, "assign(deref(add(address(_a),8)),1)", true},
      {second_element, "assign(deref:short(pconv:short*(add(address(_a),6))),1)", false},
      {second_element, "assign(_x,1)", true},
      {absolute, "assign(_g1,1)", true},
      {absolute, "assign(deref:int(pconv:int*(2048)),1)", false},
      {"_vol", "assign(_x,1)", false},
      {"member(_pr,_v1)", "assign(_x,1)", false},
      {"member(_pr,_v2)", "assign(member(_pr,_v1),1)", true},
      {"_g1", "logical_and(_x,assign(_g2,1))", true},
      {"_g1", "logical_and(_x,assign(_g1,1))", false},
  };
  for (const Row &row : rows)
    EXPECT_EQ(is_known(row.place, row.statement), row.is_known)
        << row.place << " behind " << row.statement;
}

TEST_F(SubrangesTest, CallsEndWhatTheyReach) {
  const char *const call = "ucall(address(_fn))";
  const char *const copy = "memcpy:char*(comma(comma(_cp,_cq),4))";
  EXPECT_TRUE(is_known("member(_st,_m)", call));
  EXPECT_FALSE(is_known("member(_st,_m)", "call(address(_fn),address(member(_st,_k)))"));
  EXPECT_FALSE(is_known("member(_gs,_m)", call));
  EXPECT_FALSE(is_known("_g1", call));
  EXPECT_FALSE(is_known("_g1", copy));
  EXPECT_TRUE(is_known("member(_st,_m)", copy));
  EXPECT_FALSE(is_known(absolute, call));
  EXPECT_TRUE(is_known("_g1", "call(address(_abs),_x)")) << "a pure function";
  EXPECT_FALSE(is_known("member(_ts,_m)", call)) << "which may come back here";
  options.opt_assume_reentrant = 0;
  EXPECT_TRUE(is_known("member(_ts,_m)", call));
  EXPECT_FALSE(is_known("member(_ts,_m)", "call(address(_fn),address(_ts))"));
}

TEST_F(SubrangesTest, OnlyWhatIsCertainIsKnown) {
  EXPECT_EQ(loads({"logical_and(_x,assign(_g1,1))", "return(_self,_g1)"}).back(),
            "return(_self, _g1)");
  EXPECT_EQ(loads({"nassert(assign(_g1,1))", "return(_self,_g1)"}).back(), "return(_self, _g1)");
  EXPECT_EQ(
      loads({"assign(_g1,1)", "goto L1", "L1:", "if _x L1 L2", "L2:", "return(_self,_g1)"}).back(),
      "return(_self, _g1)")
      << "in another block";
  EXPECT_EQ(
      loads({"assign(_x,add(ucall(address(_fn)),assign(_g1,1)))", "return(_self,_g1)"}).back(),
      "return(_self, 1)");
}

TEST_F(SubrangesTest, OneObjectHasSeveralDeclarations) {
  std::string error;
  ASSERT_TRUE(symbols.declare("symbol _g3 extern int", 0, error));
  SYM *outer = sym("_g3");
  ASSERT_TRUE(symbols.declare("symbol _g4 extern_declared int", 2, error));
  SYM *inner = sym("_g4");
  EXPECT_FALSE(is_same_object(outer, inner));
  inner->name = outer->name;
  EXPECT_TRUE(is_same_object(outer, inner));
  inner->sclass = C_AUTO;
  EXPECT_FALSE(is_same_object(outer, inner));
}

TEST_F(SubrangesTest, WhatIsOverwrittenUnreadIsDead) {
  struct Row {
    const char *place;
    const char *statement;
    bool is_dead;
  };
  const Row rows[] = {
      {"member(_st,_m)", "assign(_x,member(_st,_k))", true},
      {"member(_st,_m)", "assign(_x,member(_st,_m))", false},
      {"member(_st,_m)", "stasg[tag=_st_tag](_st2,_st)", false},
      {"member(_st,_m)", "call(address(_fn),starg[tag=_st_tag](_st))", false},
      {"member(_st,_m)", "ucall(address(_fn))", true},
      {"member(_st,_m)", "call(address(_fn),address(member(_st,_k)))", false},
      {"member(_gs,_m)", "ucall(address(_fn))", false},
      {"_g1", "assign(_x,deref(_p))", false},
      {"_g1", "assign(deref(_p),1)", true},
      {"_g1", "assign(_x,_g2)", true},
      {"_g1", "logical_and(_x,assign(_y,_g1))", false},
      {"_vol", "assign(_x,1)", false},
      {"member(_pr,_v1)", "assign(_x,1)", false},
      {second_element, "assign(_x,deref(add(address(_a),8)))", true},
      {second_element, "assign(_x,deref(add(address(_a),pmconv(_i,32))))", false},
      {second_element, "assign(_c,deref:char(pconv:char*(add(address(_a),7))))", false},
      {"deref(_p)", "assign(_x,1)", false},
      {"deref(_p)", "assign(_gp,_p)", false},
      {"deref(_p)", "_x", true},
      {absolute, "_x", true},
      {absolute, "assign(_x,deref:int(pconv:int*(2048)))", false},
      {"_g1", "memcpy:char*(comma(comma(address(_st),address(_gs)),4))", true},
      {"member(_gs,_m)", "memcpy:char*(comma(comma(address(_st),address(_gs)),4))", false},
      {"member(_gs,_m)", "memcpy:char*(comma(comma(_cp,_cq),4))", false},
  };
  for (const Row &row : rows)
    EXPECT_EQ(is_dead(row.place, row.statement), row.is_dead)
        << row.place << " with " << row.statement;
}

TEST_F(SubrangesTest, StaticsStayWhereTheCallMayNotReturn) {
  options.opt_assume_reentrant = 0;
  EXPECT_FALSE(is_dead("member(_ts,_m)", "ucall(address(_fn))"));
  EXPECT_TRUE(is_dead("member(_ts,_m)", "call(address(_strlen),_cp)"));
  EXPECT_TRUE(is_known("member(_ts,_m)", "ucall(address(_fn))"));
}

TEST_F(SubrangesTest, AVolatileReadSeesWhatWasStored) {
  EXPECT_EQ(cleaned({"assign(_g1,1)", "assign(_x,_vol)", "assign(_g1,2)", "return(_self,_x)"}),
            block({"assign(_x, _vol)", "assign(_g1, 2)", "return(_self, _x)"}));
  EXPECT_EQ(cleaned({"stasg[tag=_pr_tag](_pr,deref(pconv:struct*(_gp)))",
                     "assign(_x,member(_pr,_v1))", "assign(member(_pr,_v2),1)", "return(_self,_x)"})
                .size(),
            5u);
}

// An entry covers both stores; the read cuts it in front, behind, in the middle, or not at all.
TEST_F(SubrangesTest, ReadsTrimWhatIsOverwritten) {
  const auto store = [](const std::string &place, int value) {
    return "assign(" + place + "," + std::to_string(value) + ")";
  };
  const char *const elements[] = {"deref(address(_a))", "deref(add(address(_a),4))",
                                  "deref(add(address(_a),8))"};
  const auto stores_left = [&](int read) {
    Lines lines;
    for (const char *element : elements)
      lines.push_back(store(element, 1));
    lines.push_back(std::string("assign(_x,") + elements[read] + ")");
    for (const char *element : elements)
      lines.push_back(store(element, 2));
    lines.insert(lines.end(), {"goto L1", "L1:", "if _x L1 L2", "L2:", "return(_self,_x)"});
    const Lines result = cleaned(lines);
    return std::count_if(result.begin(), result.end(), [](const std::string &line) {
      return line.rfind("assign(deref", 0) == 0 && line.find(", 1)") != std::string::npos;
    });
  };
  EXPECT_EQ(stores_left(0), 1);
  EXPECT_EQ(stores_left(1), 3) << "a read inside drops all";
  EXPECT_EQ(stores_left(2), 1);
}

TEST_F(SubrangesTest, WhatADeadStoreYieldsAndDoesStays) {
  const auto expect = [&](const char *statement, const Lines &left) {
    Lines expected = left;
    expected.insert(expected.end(), {"assign(_gc, 1)", "return(_self, _x)"});
    const Lines lines = cleaned({statement, "assign(_gc,1)", "return(_self,_x)"});
    EXPECT_EQ(lines, block(expected)) << statement;
  };
  expect("assign(_gc,ucall(address(_fn)))", {"ucall(address(_fn))"});
  expect("assign(_x,assign(_gc,300))", {"assign(_x, 44)"});
  expect("assign(_x,asg_add(_gc,200))", {"assign(_x, sconv:char(add:int(_gc, -56)))"});
  expect("assign(_x,increment(_gc,1))", {"assign(_x, _gc)"});
  expect("asg_add(_gc,ucall(address(_fn)))", {"ucall(address(_fn))"});
  expect("increment(_gc,1)", {});
  expect("assign(_gc,assign(_y,_x))", {"assign(_y, _x)"});
  expect("pcomma(assign(_gc,_x),assign(_y,_x))", {"assign(_y, _x)"});
}

TEST_F(SubrangesTest, LocalsEndWithTheFunction) {
  EXPECT_EQ(cleaned({"assign(member(_st,_m),1)", "assign(_x,member(_st,_m))",
                     "assign(member(_st,_m),2)", "assign(member(_gs,_m),3)", "return(_self,_x)"}),
            block({"assign(member(_st, _m), 1)", "assign(_x, member(_st, _m))",
                   "assign(member(_gs, _m), 3)", "return(_self, _x)"}));
  EXPECT_EQ(cleaned({"assign(_y,assign(member(_st,_m),_x))", "return(_self,_y)"}),
            block({"assign(_y, _x)", "return(_self, _y)"}));
  EXPECT_EQ(cleaned({"assign(member(_st,_m),1)", "call(address(_fn),address(_st))",
                     "assign(member(_st,_k),2)", "return(_self,_x)"})
                .size(),
            4u)
      << "the call reads what is stored ahead of it";
}

TEST_F(SubrangesTest, DeadnessFollowsTheOnlyWay) {
  const auto first_store_goes = [&](const Lines &ending) {
    Lines lines = {"if _x L1 L3", "L1:", "assign(_g1,1)", "goto L2"};
    lines.insert(lines.end(), ending.begin(), ending.end());
    const Lines result = cleaned(lines);
    return std::find(result.begin(), result.end(), "assign(_g1, 1)") == result.end();
  };
  EXPECT_TRUE(first_store_goes(
      {"L2:", "assign(_g1,2)", "return(_self,0)", "L3:", "assign(_y,1)", "goto L2"}));
  EXPECT_FALSE(first_store_goes({"L2:", "if _y L3 L4", "L4:", "assign(_g1,2)", "return(_self,0)",
                                 "L3:", "assign(_g1,2)", "return(_self,1)"}));
  // A call that never returns leaves a block that loops on itself.
  const Lines loop = cleaned({"if _x L1 L2", "L1:", "assign(member(_st,_m),1)",
                              "call(address(_exit),member(_st,_m))", "goto L1",
                              "L2:", "assign(member(_st,_m),1)", "return(_self,0)"});
  EXPECT_EQ(std::count(loop.begin(), loop.end(), "assign(member(_st, _m), 1)"), 1);
}

TEST_F(SubrangesTest, BothPassesTellWhatTheyDo) {
  build_function({"assign(_g1,1)", "assign(_x,_g1)", "assign(_g1,2)", "return(_self,_x)"});
  const std::string loads_text = debug_text(lcse_subrange_assignments, 3);
  EXPECT_EQ(loads_text, "\n\n\t\t\t---------- ENTERING 'lcse_subrange_assignments' ---\n"
                        "\n ==\t(1,1)\tavailable: g1 = 1;\n"
                        "\n\t(2,2) 'lcse_lvalue' found g1; redundant\n"
                        "\t\twith earlier g1 = 1;\n"
                        "\n ==\t(3,3)\tavailable: g1 = 2;\n"
                        "\n\tAvailable at the end of the block:\n"
                        "   1) SUBRANGE base: g1;  offset:0,  width:32, tree: g1;\n");
  const std::string dead_text = debug_text(elim_dead_subrange_assigns);
  EXPECT_EQ(dead_text, "\n\n\t\t\t---------- ENTERING 'elim_dead_subrange_assigns' ---\n"
                       "\n(1,1) DEAD ASSIGNMENT:  g1 = 1;\n");
}

// Long blocks: the ranges that are kept are limited, what is still known stays true.
TEST_F(SubrangesTest, LongBlocksForgetTheOldest) {
  constexpr int stores = 1000;
  std::string error;
  ASSERT_TRUE(symbols.declare("symbol _long extern int[] dims=2000", 0, error));
  Lines lines;
  for (int i = 0; i < stores; ++i)
    lines.push_back("assign(deref(add(address(_long)," + std::to_string(8 * i) + "))," +
                    std::to_string(i) + ")");
  lines.emplace_back("assign(_x,deref(add(address(_long)," + std::to_string(8 * stores - 8) +
                     ")))");
  lines.emplace_back("assign(_y,deref(add(address(_long),8)))");
  lines.emplace_back("return(_self,add(_x,_y))");
  const Lines result = loads(lines);
  EXPECT_EQ(result[stores + 1], "assign(_x, 999)");
  EXPECT_EQ(result[stores + 2], "assign(_y, deref(add(address(_long), 8)))");
}

} // namespace
} // namespace velkor
