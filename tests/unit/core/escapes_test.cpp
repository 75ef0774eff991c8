// Which objects can be reached by other ways than their names, and which never change.
#include "core/escapes.h"

#include "core/questions.h"
#include "scalar/scalar_rows.h"

namespace velkor {
namespace {

class EscapesTest : public ScalarRowTest {
protected:
  // The flagged ones among the row's symbols, for a function of the one statement.
  std::string flagged(const char *statement, AddressUse use) {
    build_function({statement});
    flag_addressed_objects(use);
    std::string names;
    for (const char *name : {"_x", "_y", "_p", "_a", "_st", "_t", "_g1", "_u"})
      if (sym(name)->fcp_flag) names += (names.empty() ? "" : " ") + std::string(name + 1);
    return names;
  }

  struct Row {
    const char *statement;
    const char *any;
    const char *escaping;
  };

  void expect_flags(const std::vector<Row> &rows) {
    for (const Row &row : rows) {
      sym("_g1")->fcp_flag = 0; // a symbol that no statement names keeps what it had
      EXPECT_EQ(flagged(row.statement, AddressUse::ANY), row.any) << row.statement;
      sym("_g1")->fcp_flag = 0;
      EXPECT_EQ(flagged(row.statement, AddressUse::ESCAPING), row.escaping) << row.statement;
    }
  }
};

TEST_F(EscapesTest, Objects) {
  expect_flags({
      {"assign(_x,_y)", "", ""},
      {"assign(_p,address(_x))", "x", "x"},
      {"assign(deref(address(_x)),_y)", "x", ""},
      {"assign(deref(add(address(_x),_y)),1)", "x", ""},
      {"assign(deref(add(_p,pconv:int(address(_x)))),1)", "x", "x"},
      {"assign(deref(assign(_p,address(_x))),1)", "x", "x"},
      {"assign(deref(add(address:int*(_a),_x)),1)", "a", "a"},
      {"assign(_p,_a:int[])", "a", "a"},
      {"assign(member:int(_st,_m),1)", "", ""},
      {"assign(_p,address:int*(member:int(_st,_m)))", "st", "st"},
      {"assign(_y,deref(address:int*(member:int(_st,_m))))", "st", "st"},
      {"assign(_t,1)", "", ""},
      {"assign(deref(address(_t)),1)", "t", "t"},
      {"assign(_g1,1)", "g1", ""},
  });
  sym("_g1")->scqual |= CQ_ALIASED;
  expect_flags({{"assign(_g1,1)", "g1", "g1"}});
}

TEST_F(EscapesTest, Arguments) {
  const auto kept = [&](const char *statement) {
    return flagged(statement, AddressUse::ESCAPING) == "x";
  };
  const char *unknown = "call(address(_fn),comma(_y,address(_x)))";
  const char *library = "call(address(_strlen),pconv:char*(address(_x)))";
  const char *returning = "call(address(_strcpy),pconv:char*(address(_x)))";
  EXPECT_TRUE(kept(unknown));
  EXPECT_TRUE(kept("call(_fp,address(_x))"));
  EXPECT_TRUE(kept(returning)) << "it hands the address back";
  EXPECT_FALSE(kept(library));
  EXPECT_FALSE(kept("xcall[\"printf\"](comma(_y,address(_x)))"));
  EXPECT_TRUE(kept("call(address(_strlen),call(address(_fn),address(_x)))"));
  sym("_strlen")->sclass = C_STAT;
  EXPECT_TRUE(kept(library)) << "a function of the file's own";
  sym("_strlen")->sclass = C_EXTDEF;
  options.opt_aliased = 1;
  EXPECT_TRUE(kept(library));
  options.opt_aliased = 0;
  options.opt_no_alias = 1;
  EXPECT_FALSE(kept(unknown));
  options.opt_no_alias = 0;
  options.opt_builtin_level = 0;
  clear_functions();
  state.cur_fun = fun_find_or_add("self");
  EXPECT_TRUE(kept(library)) << "names are not trusted";
}

TEST_F(EscapesTest, ConstantAccesses) {
  const auto constant = [&](const char *access) { return access_is_constant(tree(access)); };
  EXPECT_TRUE(constant("_ci"));
  EXPECT_TRUE(constant("deref:char(\"abc\\0\")"));
  EXPECT_TRUE(constant("deref(add(address(_ci),_x))"));
  EXPECT_FALSE(constant("_g1"));
  EXPECT_FALSE(constant("deref[const](_p)")) << "a pointer to const tells nothing of its object";
  EXPECT_FALSE(constant("deref[const](address(_g1))"));
  EXPECT_FALSE(constant("deref[volatile](address(_ci))"));
  sym("_x")->squal |= 1;
  EXPECT_FALSE(constant("_x")) << "an automatic object begins anew";
}

TEST_F(EscapesTest, ConstOfTheObjectItself) {
  const auto without = [&](TypeWord type, std::uint32_t squal) {
    SYM *object = symbol("object", type);
    object->squal = squal;
    forget_const(object);
    return object->squal;
  };
  EXPECT_EQ(without(INT, 1), 0u);
  EXPECT_EQ(without(INT, 3), 2u) << "volatile stays";
  EXPECT_EQ(without(pointer_to(INT), 17), 1u) << "what it points at stays const";
  EXPECT_EQ(without(derive(INT, ARRAY_OF), 17), 0u) << "what an array holds is the array";
  EXPECT_EQ(without(derive(pointer_to(INT), ARRAY_OF), 1 + 16 + 64), 1u);
}

} // namespace
} // namespace velkor
