// Common subexpressions of extended blocks: what is shared, what a store or call ends, what the
// order of evaluation forbids.
#include "scalar/lcse.h"

#include "core/target.h"
#include "scalar/lcse_state.h"
#include "scalar/scalar_rows.h"
#include "scalar/subranges.h"

namespace velkor {
namespace {

class CommonSubexpressionTest : public ScalarRowTest {
protected:
  CommonSubexpressionTest() { use_pass(lcse); }

  static int count(const Lines &lines, const std::string &word) {
    int found = 0;
    for (const std::string &line : lines)
      for (std::size_t at = line.find(word); at != std::string::npos; at = line.find(word, at + 1))
        ++found;
    return found;
  }

  // Is the value of place still known behind the statement? Both reads are of one extended block.
  bool survives(const char *place, const char *statement) {
    const std::string read = place;
    const Lines lines =
        after({"assign(_y,multiply(" + read + ",7))", statement,
               "assign(_z,multiply(" + read + ",7))", "call(address(_fn),comma(_y,_z))"});
    const int products = count(lines, "multiply");
    EXPECT_GE(products, 1) << place << " behind " << statement;
    return products == 1;
  }
};

TEST_F(CommonSubexpressionTest, ValuesAreComputedOnce) {
  // by the variable that holds it, in either order of the operands
  EXPECT_EQ(
      after({"assign(_z,add(_x,_y))", "assign(_n,multiply(add(_y,_x),3))", "return(_self,_n)"}),
      (Lines{"B1:", "assign(_z, add(_x, _y))", "assign(_n, multiply(_z, 3))",
             "return(_self, _n)"}));
  // by a temporary, which the statement that needs nothing else takes along
  EXPECT_EQ(after({"assign(_z,multiply(_x,_y))", "assign(_z,add(_z,1))",
                   "assign(_n,multiply(_x,_y))", "return(_self,add(_n,_z))"}),
            (Lines{"B1:", "assign(_z, assign(C$1, multiply(_x, _y)))", "assign(_z, add(_z, 1))",
                   "assign(_n, C$1)", "return(_self, add(_n, _z))"}));
  EXPECT_EQ(
      after({"assign(_z,subtract(_x,_y))", "return(_self,multiply(subtract(_y,_x),_z))"}).back(),
      "return(_self, multiply(subtract(_y, _x), _z))");
}

TEST_F(CommonSubexpressionTest, CopiesAreSeenThrough) {
  EXPECT_EQ(after({"assign(_z,negate(_x))", "assign(_y,_x)", "assign(_n,negate:int(_y))",
                   "return(_self,_n)"})[3],
            "assign(_n, _z)");
  // what is stored already is not stored again
  const Lines lines = after(
      {"assign(_z,add(_x,1))", "assign(_y,2)", "assign(_z,add(_x,1))", "return(_self,add(_z,_y))"});
  EXPECT_EQ(lines, (Lines{"B1:", "assign(_z, add(_x, 1))", "assign(_y, 2)",
                          "return(_self, add(_z, _y))"}));
  // but calls have no number
  EXPECT_EQ(after({"assign(_z,ucall(address(_fn)))", "assign(_z,ucall(address(_fn)))",
                   "return(_self,_z)"})
                .size(),
            4u);
}

TEST_F(CommonSubexpressionTest, OnlyConversionsThatKeepValuesPassANumberOn) {
  const auto is_shared = [&](const char *copy, const char *use) {
    const Lines lines =
        after({"assign(_z,negate:int(_c))", copy, std::string("assign(_n,negate:int(") + use + "))",
               "call(address(_fn),comma(_z,_n))"});
    return count(lines, "negate") == 1;
  };
  EXPECT_TRUE(is_shared("assign(_s,_c)", "_s"));
  EXPECT_TRUE(is_shared("assign(_x,_c)", "_x"));
  EXPECT_FALSE(is_shared("assign(_uc,_c)", "_uc"));
  EXPECT_FALSE(is_shared("assign(_us,_c)", "_us"));
}

TEST_F(CommonSubexpressionTest, BlocksOfOnePredecessorGoOn) {
  EXPECT_EQ(after({"assign(_z,multiply(_x,_y))", "if _n L1 L2",
                   "L1:", "return(_self,multiply(_x,_y))", "L2:", "return(_self,_z)"})[4],
            "return(_self, _z)");
  // a block that only jumps is passed over; a join begins anew
  EXPECT_EQ(after({"assign(_z,multiply(_x,_y))", "if _n L1 L2", "L1:", "call(address(_fn),_z)",
                   "L2:", "return(_self,multiply(_x,_y))"})
                .back(),
            "return(_self, multiply(_x, _y))");
}

TEST_F(CommonSubexpressionTest, WhatStoresAndCallsEnd) {
  // through a pointer: values of like type whose address is known elsewhere
  EXPECT_FALSE(survives("_g1", "assign(deref(_p),1)"));
  EXPECT_TRUE(survives("_g1", "assign(deref:short(_q),1)"));
  EXPECT_TRUE(survives("_x", "assign(deref(_p),1)"));
  EXPECT_FALSE(survives("_g1", "assign(deref(_cp),1)"));
  EXPECT_FALSE(survives("deref(_cp)", "assign(deref(_p),1)"));
  EXPECT_FALSE(survives("deref(_p)", "assign(_g1,1)"));
  EXPECT_FALSE(survives("deref(_p)", "assign(deref(_q),1)"));
  EXPECT_TRUE(survives("_g2", "assign(_g1,1)"));
  EXPECT_FALSE(survives("_g1", "asg_add(_g1,1)"));
  // members
  EXPECT_FALSE(survives("arrow(_sp,_m)", "assign(deref(_p),1)"));
  EXPECT_FALSE(survives("arrow(_sp,_m)", "assign(arrow(_sp,_m),1)"));
  // calls
  EXPECT_FALSE(survives("_g1", "ucall(address(_fn))"));
  EXPECT_FALSE(survives("_t", "ucall(address(_fn))")) << "which may come back here";
  EXPECT_TRUE(survives("_x", "ucall(address(_fn))"));
  EXPECT_FALSE(survives("_x", "call(address(_fn),address(_x))"));
  EXPECT_FALSE(survives("deref(_p)", "ucall(address(_fn))"));
  EXPECT_TRUE(survives("_g1", "call(address(_abs),_x)"));
  // what is volatile has no value to keep
  EXPECT_FALSE(survives("_vol", "assign(_x,1)"));
  EXPECT_FALSE(survives("_vx", "assign(_x,1)"));
}

TEST_F(CommonSubexpressionTest, StoredValuesAreReadFromTemporaries) {
  const Lines lines =
      after({"assign(deref(_p),add(_x,_y))", "call(address(_fn),_n)", "assign(deref(_p),add(_x,1))",
             "assign(_z,deref(_p))", "return(_self,_z)"});
  EXPECT_EQ(lines[3], "assign(C$1, assign(deref(_p), add(_x, 1)))");
  EXPECT_EQ(lines[4], "assign(_z, C$1)");
}

TEST_F(CommonSubexpressionTest, NothingMovesAheadOfACall) {
  // the product is computed behind the call, which may change its operand
  const Lines lines = after({"assign(_y,add(multiply(_g1,2),ucall(address(_fn))))",
                             "assign(_z,multiply(_g1,2))", "return(_self,add(_y,_z))"});
  EXPECT_NE(lines[2].find("multiply"), std::string::npos) << lines[2];
  EXPECT_NE(lines[3].find("multiply"), std::string::npos) << lines[3];
  // a name goes back to a copy only where the statement leaves the copy alone
  EXPECT_EQ(after({"assign(_x,_y)", "assign(_z,subtract(assign(_x,3),_y))", "return(_self,_z)"})[2],
            "assign(_z, comma_op(assign(_x, 3), subtract(3, _y)))");
}

TEST_F(CommonSubexpressionTest, CallsThatOnlyComputeAreMadeOnce) {
  const auto calls = [&](const char *first, const char *between, const char *second) {
    return count(after({"assign(_y," + std::string(first) + ")", between,
                        "assign(_z," + std::string(second) + ")", "return(_self,add(_y,_z))"}),
                 "call(");
  };
  const char *abs_of_x = "call(address(_abs),_x)";
  EXPECT_EQ(calls(abs_of_x, "assign(_g1,1)", abs_of_x), 1);
  EXPECT_EQ(calls(abs_of_x, "assign(_x,1)", abs_of_x), 2);
  EXPECT_EQ(calls(abs_of_x, "assign(_g1,1)", "call(address(_abs),_n)"), 2);
  EXPECT_EQ(calls(abs_of_x, "assign(_g1,1)", "call(address(_fn),_x)"), 2);
  EXPECT_EQ(
      calls("call(address(_strlen),_cp)", "assign(deref(_cp),0)", "call(address(_strlen),_cp)"), 2);
}

TEST_F(CommonSubexpressionTest, ComparisonsOfAValueWithItself) {
  EXPECT_EQ(after({"assign(_z,add(_x,_y))", "assign(_n,le(_z,add(_y,_x)))", "return(_self,_n)"})[2],
            "assign(_n, 1)");
  EXPECT_EQ(
      after({"assign(_z,add(_x,_y))", "assign(_n,subtract(add(_y,_x),_z))", "return(_self,_n)"})[2],
      "assign(_n, 0)");
  EXPECT_EQ(after({"assign(_y,_x)", "if ne(_x,_y) L1 L2", "L1:", "assign(_z,1)",
                   "L2:", "return(_self,_z)"})
                .back(),
            "return(_self, _z)");
  EXPECT_EQ(state.num_blocks, 1) << "the graph is cleaned up";
}

TEST_F(CommonSubexpressionTest, ConditionsAreNoValues) {
  const auto operand = [&](const char *condition) {
    return text(condition_operand(tree(condition)));
  };
  EXPECT_EQ(operand("eq(_x,0)"), "_x");
  EXPECT_EQ(operand("ne(bit_and(_x,0x3FC),0)"), "_x");
  EXPECT_EQ(operand("ne(bit_and(_x,0x7FC),0)"), "bit_and(_x, 2044)");
  EXPECT_EQ(operand("lt(_x,_y)"), "lt(_x, _y)");
  const Lines lines = after({"if lt(_x,_y) L1 L2", "L1:", "if lt(_x,_y) L3 L2",
                             "L3:", "assign(_z,1)", "L2:", "return(_self,_z)"});
  EXPECT_EQ(lines[1].substr(0, 13), "if lt(_x, _y)");
}

TEST_F(CommonSubexpressionTest, DeepRepetitionTakesTimeInProportion) {
  // each level is redundant in its whole, and in each of its parts
  std::string sum = "_x";
  for (int level = 0; level < 400; ++level)
    sum = "multiply(add(" + sum + ",_y)," + std::to_string(level % 7 + 3) + ")";
  const Lines lines =
      after({"assign(deref(_p)," + sum + ")", "assign(deref(_q)," + sum + ")", "return(_self,0)"});
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[2], "assign(deref(_q), C$1)");
}

// ------------------------------------------------------------------------------------------------

TEST_F(CommonSubexpressionTest, HashesIgnoreOffsetsOfPointers) {
  EXPECT_EQ(lcse_hash(tree("add(_p,4)"), 2), lcse_hash(tree("add(_p,4000)"), 2));
  EXPECT_NE(lcse_hash(tree("add(_x,4)"), 2), lcse_hash(tree("add(_x,5)"), 2));
  EXPECT_EQ(lcse_hash(tree("add(_x,_y)"), 2), lcse_hash(tree("add(_y,_x)"), 2));
  EXPECT_NE(lcse_hash(tree("subtract(_x,_y)"), 2), lcse_hash(tree("subtract(_y,_x)"), 2));
}

TEST_F(CommonSubexpressionTest, WhatIsWorthATemporary) {
  for (const char *worth : {"add(_x,1)", "deref(_p)", "address(_g1)", "_g1", "deref(address(_g1))",
                            "add(_p,_x)", "arrow(_sp,_b3)"})
    EXPECT_TRUE(cse_worthwhile(tree(worth))) << worth;
  for (const char *worthless : {"5", "_x", "_st", "add(_p,8)", "address(_x)", "address(_st)",
                                "deref(address(_a))", "deref:double(_p)", "sconv:char(_x)"})
    EXPECT_FALSE(cse_worthwhile(tree(worthless))) << worthless;
}

TEST_F(CommonSubexpressionTest, OffsetsAndScalesOfAccesses) {
  options.opt_target_mode = 0;
  EXPECT_TRUE(offset_fits(-4092, INT, false) && offset_fits(255, CHAR, false) &&
              offset_fits(4095, UNSIGNED_CHAR, false) && offset_fits(4095, pointer_to(INT), false));
  EXPECT_FALSE(offset_fits(4096, INT, false) || offset_fits(6, INT, false) ||
               offset_fits(256, CHAR, false) || offset_fits(255, SHORT, false) ||
               offset_fits(0, DOUBLE, false));
  EXPECT_TRUE(offset_fits(256, CHAR, true) && scale_ok(-8, 32) && scale_ok(1, 16));
  EXPECT_FALSE(scale_ok(4, 16) || scale_ok(3, 32) || scale_ok(0, 8) || scale_ok(1, 64));
  options.opt_target_mode = 1;
  EXPECT_TRUE(offset_fits(124, INT, false) && offset_fits(62, SHORT, true));
  EXPECT_FALSE(offset_fits(-4, INT, false) || offset_fits(128, INT, false) ||
               offset_fits(2, SHORT, false) || scale_ok(4, 32));
}

TEST_F(CommonSubexpressionTest, AddressesKeepAnOrderOfTerms) {
  options.opt_target_mode = 0;
  const auto ordered = [&](const char *address) {
    return text(reassociate_address(tree(address), INT));
  };
  // what the access itself scales, and what it cannot beside a constant
  EXPECT_EQ(ordered("add:int*(_p,multiply(_i,4))"), "add(_p, pmconv(_i, 32))");
  EXPECT_EQ(ordered("add:int*(_p,multiply(_i,12))"), "add(_p, pmconv(multiply(_i, 3), 32))");
  EXPECT_EQ(ordered("add:int*(_p,add(multiply(_i,4),add(_n,12)))"),
            "add(add(add(_p, _n), multiply(_i, 4)), 12)");
  // an index that is no register takes the other terms in
  EXPECT_EQ(ordered("add:int*(_p,add(multiply(add(_i,_z),4),_n))"),
            "add(_p, pmconv(add(multiply(add(_i, _z), 4), _n), 8))");
  EXPECT_EQ(ordered("add:int*(_p,subtract(_n,_i))"), "add(_p, pmconv(subtract(_n, _i), 8))");
  EXPECT_EQ(ordered("asg_add(_p,multiply(_i,8))"), "asg_add(_p, pmconv(_i, 64))");
}

TEST_F(CommonSubexpressionTest, PlacesOfAccesses) {
  const auto place = [&](const char *access) -> std::string {
    SUBRANGE *range = subrange_of(tree(access));
    if (!range) return "none";
    const std::string result = text(range->base) + " " + std::to_string(range->offset) + " " +
                               std::to_string(range->width);
    free_subrange(range);
    return result;
  };
  EXPECT_EQ(place("_x"), "_x 0 32");
  EXPECT_EQ(place("member(_st,_k)"), "_st 32 8");
  EXPECT_EQ(place("deref:int(add:int*(address:int*(_a),8))"), "_a 64 32");
  EXPECT_EQ(place("deref:int(add:int*(add:int*(address:int*(_a),_x),8))"), "_a 64 0");
  EXPECT_EQ(place("deref:char(pconv:char*(1024))"), "1024 0 8");
  EXPECT_EQ(place("deref(_p)"), "none");
}

} // namespace
} // namespace velkor
