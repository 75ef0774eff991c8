// Calls: effects of arguments, and functions known by their names.
#include "simplify/tree_rows.h"

namespace velkor {
namespace {

using LibraryCallsTest = TreeRowTest;

TEST_F(LibraryCallsTest, EffectsRiseOutOfArguments) {
  expect_rows({
      {"call(address(_fn), comma_op(assign(_x, _y), _z))",
       "comma_op(assign(_x, _y), call(address(_fn), _z))"},
      {"call(address(_fn), comma(comma_op(assign(_x, _y), _z), _n))",
       "comma_op(assign(_x, _y), call(address(_fn), comma(_z, _n)))", 0},
      {"call(address(_fn), comma(comma(comma_op(assign(_x, 1), _z), _n), "
       "comma_op(assign(_y, 2), _i)))",
       "comma_op(comma_op(assign(_x, 1), assign(_y, 2)), "
       "call(address(_fn), comma(comma(_z, _n), _i)))"},
      {"xcall[\"run\"](comma(_z, aconv:int(comma_op(assign(_x, _y), _n))))",
       "comma_op(assign(_x, _y), xcall[\"run\"](comma(_z, aconv(_n))))"},
      {"call(address(_fn), comma(_x, ucall(address(_fm))))", nullptr},
  });
}

TEST_F(LibraryCallsTest, CopiesOfMemory) {
  expect_rows({
      {"call(address(_memcpy), comma(comma(_cp, _cq), 8:unsigned))",
       "memcpy:char*(comma(comma(_cp, _cq), 8:unsigned))"},
      {"xcall:void*[\"memcpy\"](comma(comma(_cp, _cq), 8:unsigned))",
       "memcpy:void*(comma(comma(_cp, _cq), 8:unsigned))"},
      {"call(address(_memcpy), comma(_cp, _cq))", nullptr},
      {"call(address(_memcpy), comma(comma(_x, _cq), 8:unsigned))", nullptr},
      {"call(address(_memcpy), comma(comma(_cp, _cq), 8:unsigned))", nullptr, 0},
      {"call(address(_strcpy), comma(_cp, \"abc\\0\"))",
       "memcpy:char*(comma(comma(_cp, \"abc\\0\"), 4:unsigned))"},
      {"call(address(_strcpy), comma(_cp, \"a\\0bc\\0\"))",
       "memcpy:char*(comma(comma(_cp, \"a\\0bc\\0\"), 2:unsigned))"},
      {"call(address(_strcpy), comma(_cp, _cq))", nullptr},
      {"call(address(_memmove), comma(comma(_cp, \"abc\\0\"), _u))",
       "memcpy:char*(comma(comma(_cp, \"abc\\0\"), _u))"},
      {"call(address(_memmove), comma(comma(_cp, _cq), _u))", nullptr},
  });
}

TEST_F(LibraryCallsTest, LengthsOfLiterals) {
  expect_rows({
      {"call(address(_strlen), \"abc\\0\")", "3:unsigned"},
      {"call(address(_strlen), \"ab\\0cd\\0\")", "2:unsigned"},
      {"call(address(_strlen), \"\\0\")", "0:unsigned"},
      {"call(address(_strlen), \"abc\\0\")", nullptr, 0},
      {"call(address(_strlen), _cp)", nullptr},
      {"xcall[\"strlen\"](\"abc\\0\")", "3"},
      {"call(address(_fn), \"abc\\0\")", nullptr},
  });
}

TEST_F(LibraryCallsTest, FunctionsOfThisFileAreNotTheLibrarys) {
  sym("_strlen")->sclass = C_USTATIC;
  fun_find_or_add("memcpy")->flags |= FUN_is_defined;
  expect_rows({
      {"call(address(_strlen), \"abc\\0\")", nullptr},
      {"call(address(_memcpy), comma(comma(_cp, _cq), 8:unsigned))", nullptr},
      {"call(address(_strcpy), comma(_cp, \"abc\\0\"))", nullptr},
  });
}

} // namespace
} // namespace velkor
