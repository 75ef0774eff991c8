// Adjacent assignments to a scalar, adjacent stores to a place in memory.
#include "scalar/combine_assignments.h"
#include "scalar/combine_stores.h"
#include "scalar/scalar_rows.h"

namespace velkor {
namespace {

class CombineTest : public ScalarRowTest {
protected:
  // The first block's statements but the last, with its cells' line numbers when asked for.
  Lines first_block() {
    Lines lines;
    for (const LIST *cell = state.first_bb->trees; cell->next; cell = cell->next)
      lines.push_back(text(cell->item));
    return lines;
  }

  Lines assignments(const Lines &input) {
    build_function(input);
    combine_adjacent_asgs(state.first_bb->trees);
    return first_block();
  }

  Lines stores(const Lines &input) {
    build_function(input);
    combine_asgs_to_memory();
    return first_block();
  }

  void expect_untouched(bool in_memory, const Lines &input) {
    build_function(input);
    const Lines before = first_block();
    EXPECT_EQ(in_memory ? stores(input) : assignments(input), before);
  }
};

TEST_F(CombineTest, Assignments) {
  EXPECT_EQ(assignments({"assign(_x,add(_y,_z))", "assign(_x,multiply(_n,_x))",
                         "assign(_x,add(_x,_i))", "assign(_y,_x)"}),
            (Lines{"assign(_x, add(multiply(add(_y, _z), _n), _i))", "assign(_y, _x)"}));
  // a narrow variable cuts, a float rounds
  EXPECT_EQ(assignments({"assign(_c,add(_y,_z))", "assign(_c,divide:int(sconv:int(_c),3))"}),
            (Lines{"assign(_c, divide:int(sconv:char(add(_y, _z)), 3))"}));
  EXPECT_EQ(assignments({"assign(_f,multiply:double(_d,_e))", "assign(_f,add:float(_f,_g))"}),
            (Lines{"assign(_f, add(sconv:float(multiply(_d, _e)), _g))"}));
  EXPECT_EQ(assignments({"assign(_t,_y)", "assign(_t,add(_t,1))"}),
            (Lines{"assign(_t, add(_y, 1))"}));
}

TEST_F(CombineTest, AssignmentsThatStay) {
  for (const char *second :
       {"assign(_x,_y)", "assign(_x,multiply(_x,_x))", "assign(_y,_x)", "asg_add(_x,1)",
        "assign(_x,add(_x,ucall(address(_fn))))", "assign(_x,add(_x,_vol))",
        "assign(_x,add(_x,sconv:int(pconv:int(address(_x)))))"})
    expect_untouched(false, {"assign(_x,_z)", second});
  expect_untouched(false, {"assign(_x,ucall(address(_fn)))", "assign(_x,add(_x,1))"});
  expect_untouched(false, {"assign(_vx,_y)", "assign(_vx,add(_vx,1))"});
  // memory that may be the variable's own
  expect_untouched(false, {"assign(_t,_y)", "assign(_t,add(_t,deref(_p)))"});
  const Lines through_pointer = {"assign(_x,_y)", "assign(_x,add(_x,deref(_p)))"};
  const Lines through_member = {"assign(_x,_y)", "assign(_x,add(_x,arrow(_sp,_m)))"};
  sym("_x")->fcp_flag = 0;
  EXPECT_EQ(assignments(through_pointer).size(), 1u);
  EXPECT_EQ(assignments(through_member).size(), 1u);
  sym("_x")->fcp_flag = 1;
  expect_untouched(false, through_pointer);
  expect_untouched(false, through_member);
}

TEST_F(CombineTest, LongRunsGrowNoEndlessTree) {
  Lines run;
  for (int i = 0; i < 1000; ++i)
    run.emplace_back("assign(_x,bit_xor(multiply(_x,31),deref(add(_p,_i))))");
  build_function(run);
  for (LIST *cell = state.first_bb->trees; cell; cell = cell->next)
    combine_adjacent_asgs(cell);
  const std::size_t left = first_block().size();
  EXPECT_GT(left, 50u) << "each value stays within a bound";
  EXPECT_LT(left, 300u) << "most are merged";
}

TEST_F(CombineTest, LineNumbers) {
  build_function({"assign(_x,_y)", "assign(_x,add(_x,1))"});
  LIST *cell = state.first_bb->trees;
  cell->line = cell->line2 = 0;
  combine_adjacent_asgs(cell);
  EXPECT_EQ(cell->line2, 2);
}

TEST_F(CombineTest, Stores) {
  EXPECT_EQ(stores({"assign(deref(_p),_x)", "assign(deref(_p),add(deref(_p),1))"}),
            (Lines{"assign(T$1, _x)", "assign(deref(_p), add(T$1, 1))"}));
  EXPECT_EQ(stores({"assign(_g1,1)", "assign(_g1,2)"}),
            (Lines{"assign(T$1, 1)", "assign(_g1, 2)"}));
  EXPECT_EQ(
      stores({"assign(_g1,1)", "asg_add(_g1,_x)", "asg_multiply(_g1,_y)"}),
      (Lines{"assign(T$1, 1)", "assign(T$2, add(T$1, _x))", "assign(_g1, multiply(T$2, _y))"}));
  EXPECT_EQ(stores({"asg_add(deref(_p),1)", "asg_add(deref(_p),2)", "asg_add(deref(_p),4)"}),
            (Lines{"asg_add(deref(_p), 7)"}));
  EXPECT_EQ(stores({"asg_xor(_g1,5)", "asg_xor(_g1,9)"}), (Lines{"asg_xor(_g1, 12)"}));
  EXPECT_EQ(stores({"assign(deref(add(_p,4)),_x)",
                    "assign(deref(add(_p,4)),add(deref(add(_p,4)),deref(add(_p,8))))"}),
            (Lines{"assign(T$1, _x)", "assign(deref(add(_p, 4)), add(deref(add(_p, 8)), T$1))"}));
  EXPECT_EQ(stores({"assign(member:int(_st,_m),_x)", "assign(member:int(_st,_m),_y)"}),
            (Lines{"assign(T$1, _x)", "assign(member(_st, _m), _y)"}));
}

TEST_F(CombineTest, AnAddressIsNoRead) {
  for (const char *address : {"address:int*(_g1)", "argref:int*(_g1)"}) {
    const std::string second = "assign(_g1,add(sconv:int(" + std::string(address) + "),_g1))";
    const Lines result = stores({"assign(_g1,_x)", second});
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[0], "assign(T$1, _x)") << address;
    EXPECT_NE(result[1].find("(_g1)"), std::string::npos) << result[1];
    EXPECT_NE(result[1].find("T$1)"), std::string::npos) << result[1];
  }
}

TEST_F(CombineTest, StoresThatStay) {
  const std::vector<Lines> rows = {
      {"assign(_x,1)", "assign(_x,_y)"}, // no memory
      {"assign(deref(_p),1)", "assign(deref(_q),2)"},
      {"assign(deref(_p),1)", "assign(deref(_p),deref(_q))"},
      {"assign(deref(_p),1)", "assign(deref(_p),add(_g1,1))"}, // p may point at it
      {"assign(_g1,1)", "assign(_g1,deref(_p))"},
      {"assign(deref(_p),1)", "assign(deref(_p),arrow(_sp,_m))"},
      {"assign(deref(_p),1)", "assign(deref(_p),sconv:int(deref(_cp)))"},
      {"assign(_gc,1)", "assign(_gc,sconv:char(_g1))"},
      {"assign(deref(add(_p,4)),1)", "assign(deref(add(_p,4)),deref(add(_p,6)))"},
      {"assign(_g1,1)", "assign(_g1,ucall(address(_fn)))"},
      {"assign(_vol,1)", "assign(_vol,2)"},
      {"assign(deref(assign(_p,add(_p,4))),1)", "assign(deref(assign(_p,add(_p,4))),2)"},
      {"assign(member:unsigned(_st,_b3),1)", "assign(member:unsigned(_st,_b3),2)"},
      {"assign(deref:int*(deref:int**(_gp:int**)),_p)",
       "assign(deref:int*(deref:int**(_gp:int**)),_q)"}, // the address is read from memory
  };
  for (const Lines &row : rows)
    expect_untouched(true, row);
  // an object of the frame takes part as soon as its address is taken anywhere
  const Lines frame = {"assign(deref(_p),1)", "assign(deref(_p),_x)"};
  EXPECT_EQ(stores(frame).front(), "assign(T$1, 1)");
  expect_untouched(true, {frame[0], frame[1], "assign(_p,address(_x))"});
}

TEST_F(CombineTest, FloatsRoundTwice) {
  build_function({"asg_add(deref:float(_p),1)", "asg_add(deref:float(_p),2)"});
  combine_asgs_to_memory();
  EXPECT_EQ(first_block().size(), 2u);
}

TEST_F(CombineTest, TheAddressOfThePlaceIsNoRead) {
  EXPECT_EQ(stores({"assign(_t,1)", "assign(_t,pconv:int(address(_t)))"}).back(),
            "assign(_t, address:int(_t))");
}

} // namespace
} // namespace velkor
