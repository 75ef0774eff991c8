#include "tree_rows.h"

namespace velkor {
namespace {

class AddressesTest : public TreeRowTest {
protected:
  // Simplifies and yields the top node.
  NODE *simplified(const std::string &line) { return simplify_tree(tree(line)); }
};

TEST_F(AddressesTest, Addresses) {
  expect_rows({
      {"address(deref(_p))", "_p"},
      {"address(arrow(_sp, _k))", nullptr, 1},
      {"address(arrow(_sp, _k))", "add(_sp:char*, 4)", 2},
      {"address(member(_st, _k))", nullptr, 1},
      {"address(member(_st, _k))", "add:char*(address:char*(_st), 4)", 2},
      {"address(member(_st, _m))", "address:int*(_st)", 2},
      {"address(_x)", nullptr},
  });
  // Only the address of an object is one of its members: ARGREF stays.
  expect_rows({{"argref(member(_st, _k))", nullptr, 2}});
}

TEST_F(AddressesTest, Accesses) {
  expect_rows({
      {"deref(address(_x))", "_x"},
      {"deref:unsigned(address(_x))", nullptr},
      {"deref(argref(_x))", "_x"},
      {"deref:char(argref(_x))", nullptr},
      {"arrow(address(_st), _m)", "member(_st, _m)"},
      {"arrow(add(_sp, 8), _k)", "deref(add(_sp:char*, 12))"},
      {"arrow(add(_sp, 8), _b3)", nullptr},
      {"deref:int(pconv:int*(_a))", "deref:int(_a)"},
  });
}

// What the access says of itself is not lost with it.
TEST_F(AddressesTest, QualifiersOfAccesses) {
  expect_rows({
      {"deref[volatile](pconv:int*(address(_x)))", "deref[volatile](address(_x))"},
      {"deref(address(_vol))", "_vol"},
  });
  EXPECT_TRUE(is_const_node(simplified("deref(\"abc\")")));
  EXPECT_TRUE(is_const_node(simplified("deref(add(\"abc\", _x))")));
  EXPECT_TRUE(is_volatile_node(simplified("deref[volatile](\"abc\")")));
  EXPECT_FALSE(is_const_node(simplified("deref(_p)")));
  EXPECT_EQ(simplified("deref[size=32](address(_x))")->depnum, 32);
}

TEST_F(AddressesTest, MembersOfValues) {
  expect_rows({
      {"member(deref(_sp), _m)", "arrow(_sp, _m)"},
      {"member(stasg[tag=_st_tag](_st, deref(_sp)), _m)",
       "comma_op(stasg[tag=_st_tag](_st, deref(_sp)), member(_st, _m))"},
      {"member(stasg[tag=_st_tag](deref(add(_sp, _x)), _st), _m)",
       "comma_op(stasg[tag=_st_tag](deref(add(_sp, _x)), _st), member(_st, _m))"},
  });
  // Neither side can be evaluated again: a pointer to the target is kept.
  NODE *result =
      simplified("member(stasg[tag=_st_tag](deref(add(_sp, _x)), deref(add(_sp, _y))), _m)");
  const SYM *temporary = state.temp_syms;
  ASSERT_TRUE(temporary);
  EXPECT_EQ(temporary->name[0], 'T');
  EXPECT_EQ(temporary->size, 32);
  EXPECT_EQ(temporary->tag, sym("_st")->tag);
  // The temporary becomes visible to the text form with the first text.
  const std::string actual = text(result);
  EXPECT_EQ(actual, text(tree("comma_op(comma_op(assign('T$1', add(_sp, _x)), stasg[tag=_st_tag]("
                              "deref[size=96]('T$1'), deref(add(_sp, _y)))), "
                              "arrow('T$1', _m))")));
}

} // namespace
} // namespace velkor
