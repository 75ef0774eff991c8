// Costs, conflicts and preferences, as a target with register classes gets them.
#include "storage/allocate_regs.h"
#include "storage/storage_rows.h"

namespace velkor {
namespace {

REGCLASS unused_class = {nullptr,
                         [](SYM *, REGCLASS *, std::int32_t *, std::uint32_t *, std::int32_t *,
                            std::uint32_t *) { return false; },
                         [](SYM *, REGCLASS *) { return false; }};

class ConflictsTest : public StorageRowTest {
protected:
  ConflictsTest() {
    velkor::target.register_classes = [] {
      velkor::target.vreg_count = 0;
      return &unused_class;
    };
    velkor::target.finish_symbols = [](SYM *) {}; // the costs stay
  }

  void analyse(const Lines &lines) {
    build(lines);
    allocate_regs();
  }
  std::string conflicts(const char *local) { return names(allocation.conflicts[number(local)]); }
  std::string preferences(const char *local) {
    return names(allocation.preferences[number(local)]);
  }
  int number(const char *local) { return sym(local)->count; }
};

TEST_F(ConflictsTest, ACostIsWeightedByLoops) {
  use_locals({"_x", "_y", "_z", "_i", "_n", "_u"});
  analyse({"assign(_x,5)", "assign(_y,add(_g1,_g2))", "goto L1", "L1:", "if _i L2 L9",
           "L2:", "assign(_z,3)", "if _x L2 L3", "L3:", "asg_add(_n,1)", "if _i L1 L9",
           "L9:", "increment(_y,1)", "return(_self,add(_y,_x))"});
  EXPECT_EQ(block(3)->depth, 2);
  EXPECT_EQ(cost(sym("_z")), 17);
  EXPECT_EQ(cost(sym("_x")), 1 + 17 + 1) << "reloadable: constants only";
  EXPECT_EQ(cost(sym("_y")), 3 + 1) << "half as much again for what cannot be made anew";
  EXPECT_EQ(cost(sym("_i")), 9 + 9) << "never assigned";
  EXPECT_EQ(cost(sym("_n")), 9);
  EXPECT_EQ(cost(sym("_u")), 0);
}

TEST_F(ConflictsTest, WhatIsLiveTogetherConflicts) {
  use_locals({"_x", "_y", "_z", "_n"});
  analyse({"assign(_x,_g1)", "assign(_y,_g2)", "assign(_g1,_x)", "assign(_z,_g2)",
           "assign(_g1,add(_y,_z))", "assign(_n,_g1)", "return(_self,_n)"});
  EXPECT_EQ(conflicts("_x"), "y");
  EXPECT_EQ(conflicts("_y"), "x z");
  EXPECT_EQ(conflicts("_z"), "y");
  EXPECT_EQ(conflicts("_n"), "");
}

TEST_F(ConflictsTest, ACopySharesUnlessOneOfTheTwoChanges) {
  use_locals({"_x", "_y", "_s", "_us"});
  analyse({"assign(_y,_g1)", "assign(_x,_y)", "return(_self,_x)"});
  EXPECT_EQ(conflicts("_x") + "/" + preferences("_x") + "/" + preferences("_y"), "/y/x");
  use_locals({"_x", "_y"});
  analyse({"assign(_y,_g1)", "assign(_x,_y)", "assign(_g2,_y)", "return(_self,_x)"});
  EXPECT_EQ(conflicts("_x"), "") << "both hold one value as long as they live";
  use_locals({"_x", "_y"});
  analyse({"assign(_y,_g1)", "assign(_x,_y)", "asg_add(_y,1)", "return(_self,add(_x,_y))"});
  EXPECT_EQ(conflicts("_x") + "/" + preferences("_x"), "y/") << "the conflict wins";
  use_locals({"_x", "_u", "_p"});
  analyse({"assign(_u,_gu)", "assign(_x,sconv:int(_u))", "assign(_p,pconv:int*(_x))",
           "return(_self,deref(_p))"});
  EXPECT_EQ(preferences("_x"), "u p");
  EXPECT_EQ(conflicts("_x"), "");
  use_locals({"_s", "_us"});
  analyse(
      {"assign(_us,_g1)", "assign(_s,sconv:short(_us))", "assign(_g1,_us)", "return(_self,_s)"});
  EXPECT_EQ(conflicts("_s"), "us") << "a register holds them with other upper bits";
  use_locals({"_x", "_p"});
  analyse({"assign(_x,deref(_p))", "return(_self,_x)"});
  EXPECT_EQ(preferences("_x"), "p") << "loaded from it";
}

TEST_F(ConflictsTest, PartsOfAStatementComeInAnyOrder) {
  use_locals({"_x", "_y", "_z"});
  analyse({"assign(_g1,add(ucall(address(_fn)),assign(_x,deref(_p))))",
           "assign(_g2,add(assign(_x,2),_y))", "return(_self,0)"});
  EXPECT_EQ(conflicts("_x"), "y");
  EXPECT_EQ(names(allocation.call_crossing), "x y");
  use_locals({"_x", "_y"});
  analyse({"assign(_x,_g1)", "assign(_y,_g2)", "assign(_g2,_y)", "assign(_g1,add(assign(_x,2),_x))",
           "return(_self,0)"});
  EXPECT_EQ(conflicts("_x"), "y") << "x may be read before it is assigned";
  use_locals({"_x", "_y", "_z"});
  analyse({"call(address(_fn),comma(assign(_x,1),assign(_y,2)))", "return(_self,0)"});
  EXPECT_EQ(conflicts("_x"), "y") << "both hold their values until the call";
  use_locals({"_x", "_y", "_z"});
  analyse(
      {"assign(_x,_g1)", "assign(_y,_g2)", "call(address(_fn),comma(5,_x))", "return(_self,_y)"});
  EXPECT_EQ(conflicts("_x"), "y") << "the last argument is read";
  use_locals({"_x", "_y", "_z"});
  analyse({"assign(_x,1)", "assign(_y,_g1)", "assign(_g1,_y)", "logical_and(_g2,assign(_x,2))",
           "return(_self,_x)"});
  EXPECT_EQ(conflicts("_x"), "y") << "the first value of x may be the one that is returned";
}

TEST_F(ConflictsTest, KindsOfUse) {
  use_locals({"_x", "_y", "_z", "_i", "_p", "_q", "_n", "_sp"});
  analyse({"assign(_g1,deref(add(_p,_i)))", "assign(_g1,arrow(_sp,_m))",
           "if eq(assign(_x,_g1),0) L1 L2", "L1:", "assign(_y,1)", "ucall(address(_fn))",
           "assign(_q,_p)", "if asg_add(_z,1) L1 L2", "L2:", "assign(_y,_n)",
           "return(_self,add(_y,_x))"});
  EXPECT_EQ(names(allocation.indexed_vars), "i");
  EXPECT_EQ(names(allocation.pointer_vars), "p sp");
  EXPECT_EQ(names(allocation.tested_vars), "x z");
  EXPECT_EQ(names(allocation.call_crossing), "x z p") << "n has no value yet";
  EXPECT_EQ(names(allocation.reloadable), "z i p n sp") << "not assigned counts as well";
}

TEST_F(ConflictsTest, HomesOfParameters) {
  SYM *parameter = make_parameter("_n", "_x");
  make_parameter("_i", "_y");
  const Lines lines = {"pcomma(pcomma(assign(_x,_n),assign(_y,_i)),assign(_z,_n))", "assign(_u,1)",
                       "return(_self,add(_x,_x))"};
  use_locals({"_x", "_y", "_z", "_u"});
  analyse(lines);
  EXPECT_EQ(names(allocation.param_homes), "x y");
  EXPECT_EQ(conflicts("_x"), "y u") << "homes are live from the entry on";
  EXPECT_EQ(cost(sym("_x")), 3) << "two reads and the copy";
  EXPECT_EQ(cost(sym("_y")), 1) << "nothing but the copy";
  EXPECT_EQ(cost(sym("_z")), 1) << "no home, but the statement refers to it";
  options.opt_regparm_keep = 1;
  use_locals({"_x", "_y", "_z", "_u"});
  analyse({"assign(_x,_n)", "return(_self,_x)"});
  EXPECT_EQ(cost(sym("_x")), 2);
  parameter->sclass = C_ARG;
  use_locals({"_x", "_y", "_z", "_u"});
  analyse({"assign(_x,_n)", "return(_self,_x)"});
  EXPECT_EQ(cost(sym("_x")), 1);
}

std::vector<std::string> heard;

TEST_F(ConflictsTest, TheTargetHearsOfStatements) {
  heard.clear();
  velkor::target.note_statement = [](const NODE *) { heard.emplace_back("statement"); };
  velkor::target.note_call = [](const NODE *) { heard.emplace_back("call"); };
  velkor::target.note_call_live = [](ConstSet live, const NODE *) {
    heard.push_back("live " + names(live));
  };
  velkor::target.note_param_copy = [](SYM *home, ConstSet live) {
    heard.push_back(std::string(home->name) + " beside " + names(live));
  };
  velkor::target.clobbers_node = [](const NODE *node) { return node->op == DIVIDE; };
  make_parameter("_n", "_x");
  use_locals({"_x", "_y", "_z"});
  analyse({"assign(_x,_n)", "assign(_y,divide(_g1,_g2))",
           "assign(_z,add(_x,call(address(_fn),_y)))", "return(_self,_y)"});
  EXPECT_EQ(heard, (std::vector<std::string>{"statement", "statement", "call", "live y", "live x y",
                                             "statement", "statement", "_x beside x"}));
  EXPECT_EQ(names(allocation.hook_crossing), "x");
}

} // namespace
} // namespace velkor
