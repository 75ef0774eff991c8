#include "simplify/tree_rows.h"

#include "simplify/arithmetic.h"
#include "simplify/like_terms.h"
#include "simplify/reassociate.h"
#include "simplify/rule_sets.h"

#include <numeric>

namespace velkor {
namespace {

class ReassociateTest : public TreeRowTest {
protected:
  // How often rules have fired so far.
  static std::uint64_t fired() {
    std::uint64_t sum = 0;
    for (const RuleSet *set : {&reassociate_rules, &add_rules, &subtract_rules, &multiply_rules})
      sum = std::accumulate(set->fired.begin(), set->fired.end(), sum);
    return sum;
  }

  // The i-th of many terms that no rule looks into, no two near each other alike.
  NODE *term(int i) { return make_node(REMAINDER, leaf(i), leaf(i / 97), INT); }
  NODE *leaf(int i) {
    while (many.size() < 97)
      many.push_back(symbol("_many", INT));
    return make_name(many[static_cast<std::size_t>(i) % many.size()]);
  }

  // So many terms may take a bounded number of rewrites each.
  static void expect_linear(std::uint64_t rewrites, int terms) {
    EXPECT_LT(rewrites, static_cast<std::uint64_t>(terms) * 4 * longest_turned_chain);
  }

  std::vector<SYM *> many;
};

TEST_F(ReassociateTest, LeavesMoveOutwards) {
  expect_rows({
      {"add(_x, multiply(_y, _z))", "add(multiply(_y, _z), _x)"},
      {"add(address(_a), multiply(_i, 4))", "add:int*(multiply(_i, 4), address(_a))"},
      {"add(address(_x), address(_y))", nullptr},
      {"add(add(_x, _y), multiply(_z, _i))", "add(add(multiply(_z, _i), _x), _y)"},
      {"add(multiply(_x, _y), add(_z, _i))", "add(add(multiply(_x, _y), _z), _i)"},
      {"bit_xor(bit_and(_x, _y), bit_xor(_z, _i))", "bit_xor(bit_xor(bit_and(_x, _y), _z), _i)"},
      {"add(add(_d, _e), multiply(_d, _e))", nullptr},
  });
}

TEST_F(ReassociateTest, ConstantsMoveOutwardsAndMerge) {
  expect_rows({
      {"add(5, _x)", "add(_x, 5)"},
      {"add(add(_x, 1), _y)", "add(add(_x, _y), 1)"},
      {"add(1, add(_x, _y))", "add(add(_x, _y), 1)"},
      {"add(add(_x, 1), multiply(_y, _z))", "add(add(multiply(_y, _z), _x), 1)"},
      {"add(add(_x, 1), add(_y, 2))", "add(add(_y, _x), 3)"},
      {"add(add(_x, 5), negate(_x))", "5"},
      {"add(add(_x, 1), 2)", "add(_x, 3)"},
      {"add(add(_x, 2147483647), 1)", nullptr},
      {"add:unsigned(add(_x, 1), 2:unsigned)", "add:unsigned(_x, 3:unsigned)"},
      {"bit_and(bit_and(_x, 12), 10)", "bit_and(_x, 8)"},
      {"bit_xor(bit_xor(_x, 12), 10)", "bit_xor(_x, 6)"},
      {"add(add(_l, 5:long), _x)", "add(add(_l, _x), 5:long)"},
  });
}

TEST_F(ReassociateTest, PointersStandRightOfIntegersAndLeftOfConstants) {
  expect_rows({
      {"add(add(_p, _i), _n)", "add:int*(add(_n, _i), _p)"},
      {"add:int*(add:int*(_i, _p), _n)", "add:int*(add(_i, _n), _p)"},
      {"add:int*(add(_i, 4), _p)", "add:int*(add:int*(_i, _p), 4)"},
      {"add(_p, add(_i, 4))", "add:int*(add:int*(_i, _p), 4)"},
      {"add(add(_p, 4), _i)", "add:int*(add:int*(_i, _p), 4)"},
      {"add:int*(add(_i, 4), _n)", "add:int*(add:int*(_i, _n), 4)"},
      {"add(pconv:int*(multiply(_x, _y)), add(_i, 4))",
       "add(add(pconv:int*(multiply(_x, _y)), _i), 4)"},
      {"add:int*(multiply(_x, _y), add(_cp, _i))", "add:int*(add(multiply(_x, _y), _i), _cp)"},
      {"add:int*(multiply(_x, _y), add:char*(_i, _cp))",
       "add:int*(add(multiply(_x, _y), _i), _cp)"},
      // The sum of two narrow offsets has its carry.
      {"add(add(_cp, _uc), _uc)", "add:char*(multiply:int(_uc, 2), _cp)"},
      {"add:char*(add:char*(_us, _cp), _us)", "add:char*(multiply:int(_us, 2), _cp)"},
      // A sum of eight bits is finished before the pointer comes.
      {"add:char*(add:uchar(_uc, 4), _cp)", nullptr},
  });
}

TEST_F(ReassociateTest, NeutralAndAbsorbingConstants) {
  expect_rows({
      {"add(_x, 0)", "_x"},
      {"add(0, _x)", "_x"},
      {"add(_p, 0)", "_p"},
      {"bit_or(_x, 0)", "_x"},
      {"bit_xor(_x, 0)", "_x"},
      {"add:unsigned(_x, 0)", "sconv:unsigned(_x)"},
      {"bit_and(_x, 0)", "0"},
      {"bit_and(_vol, 0)", "comma_op(_vol, 0)"},
      {"bit_and(_u, 0)", "0:unsigned"},
      {"bit_and(ucall(address(_fn)), 0)", "comma_op(ucall(address(_fn)), 0)"},
      {"bit_and(eq(_x, _y), 1)", "eq(_x, _y)"},
      {"bit_or(eq(_x, _y), 1)", "1"},
      {"bit_or(eq(_x, _vol), 1)", "comma_op(_vol, 1)"},
      {"bit_and(_x, 1)", nullptr},
      {"bit_or(_x, 1)", nullptr},
      {"add(_d, +0.0)", nullptr},
  });
}

TEST_F(ReassociateTest, AnOperandThatHasBecomeACommaRises) {
  NODE *node = tree("bit_and(comma_op(_vol, _x), _y)");
  EXPECT_EQ(text(reassociate(node)), text(tree("comma_op(_vol, bit_and(_x, _y))")));
  node = tree("multiply(comma_op(_vol, _x), _y)");
  EXPECT_EQ(text(simplify_mul(node)), text(tree("comma_op(_vol, multiply(_x, _y))")));
}

TEST_F(ReassociateTest, CommonScalesShiftsAndMasks) {
  expect_rows({
      {"add(multiply(_x, 8), multiply(_y, 2))", "multiply(add(multiply(_x, 4), _y), 2)"},
      {"add(multiply(_x, 2), multiply(_y, 8))", "multiply(add(multiply(_y, 4), _x), 2)"},
      {"bit_or(multiply(_x, 4), multiply(_y, 4))", "multiply(bit_or(_x, _y), 4)"},
      {"bit_or(shift_right(_x, 5), shift_right(_y, 2))",
       "shift_right(bit_or(shift_right(_x, 3), _y), 2)"},
      {"bit_xor(shift_right(_u, 3), shift_right(_v, 3))", "shift_right(bit_xor(_u, _v), 3)"},
      {"bit_or(shift_right(_x, 5), shift_right(_u, 5))", nullptr},
      {"bit_or(bit_and(_x, _z), bit_and(_y, _z))", "bit_and(bit_or(_x, _y), _z)"},
      {"bit_xor(bit_and(_x, 5), bit_and(_y, 5))", "bit_and(bit_xor(_x, _y), 5)"},
      {"bit_and:long(sconv:long(_us), 65535:long)", "sconv:long(_us)"},
      {"bit_and:long(sconv:long(_us), 21:long)", "bit_and:long(_us, 21:long)"},
      // Products of eight bits lose what a common scale would bring back.
      {"add:int(multiply:uchar(_uc, 4), multiply:int(_x, 4))", nullptr},
  });
}

// ------------------------------------------------------------------------------------------------
// Long chains, built bottom-up as simplify_tree meets them

constexpr int terms = 20000;

TEST_F(ReassociateTest, RightLeaningChainsCostTheSameForEachTerm) {
  for (const Opcode op : {ADD, SUBTRACT, MULTIPLY}) {
    const std::uint64_t before = fired();
    NODE *chain = term(0);
    for (int i = 1; i < terms; ++i)
      chain = simplify_node(make_node(op, term(i), chain, INT));
    expect_linear(fired() - before, terms);
  }
}

TEST_F(ReassociateTest, AlternatingChainsCostTheSameForEachTerm) {
  const std::uint64_t before = fired();
  NODE *sum = term(0);
  for (int i = 1; i < terms; ++i)
    sum = simplify_node(make_node(ADD, sum, i % 2 ? leaf(i) : term(i), INT));
  expect_linear(fired() - before, terms);
}

TEST_F(ReassociateTest, MergingInLongChainsCostsTheSameForEachTerm) {
  const std::uint64_t before = fired();
  NODE *sum = term(0);
  for (int i = 1; i < terms; ++i)
    sum = simplify_node(make_node(ADD, sum, term(i / 2), INT));
  expect_linear(fired() - before, terms);
}

TEST_F(ReassociateTest, LikeTermsAreSearchedAmongTheLastOnes) {
  const auto last_of_sum = [&](int others) {
    NODE *sum = leaf(0);
    for (int i = 1; i <= others; ++i)
      sum = make_node(ADD, sum, leaf(i), INT);
    return simplify_tree(make_node(ADD, sum, leaf(0), INT))->right->u.sym;
  };
  const SYM *first = leaf(0)->u.sym;
  EXPECT_NE(last_of_sum(longest_merged_chain / 2), first);
  EXPECT_EQ(last_of_sum(longest_merged_chain * 2), first);
}

} // namespace
} // namespace velkor
