// Statements of fact leave the function.
#include "scalar/strip_assertions.h"

#include "scalar/scalar_rows.h"

namespace velkor {
namespace {

class StripAssertionsTest : public ScalarRowTest {
protected:
  Lines stripped(const Lines &input, bool present) {
    build_function(input);
    state.assertions_present = present;
    strip_assertions();
    EXPECT_FALSE(state.assertions_present);
    return graph();
  }
};

TEST_F(StripAssertionsTest, Statements) {
  const Lines input = {"call(address(_fn),1)", "nassert(gt(_vol,0))",
                       "nassert(ucall(address(_fn)))", "return(_self,1)"};
  EXPECT_EQ(stripped(input, true), (Lines{"B1:", "call(address(_fn), 1)", "return(_self, 1)"}));
  EXPECT_EQ(stripped({"assign(_y,comma_op(ucall(address(_fn)),nassert(_x)))", "return(_self,_y)"},
                     true)[1],
            "assign(_y, comma_op(ucall(address(_fn)), 0))");
  EXPECT_EQ(stripped(input, false).size(), 5u) << "nothing was announced";
  EXPECT_EQ(stripped({"assert(gt(_vol,0))", "return(_self,1)"}, true)[1], "assert(gt(_vol, 0))");
}

TEST_F(StripAssertionsTest, TheCommentOfACheckStays) {
  build_function({"nassert(_x)", "return(_self,1)"});
  NODE *&statement = state.first_bb->trees->item;
  statement = node(COMMA_OP, statement, make_asm('/', "; held"));
  state.assertions_present = true;
  strip_assertions();
  ASSERT_EQ(statement->op, COMMA_OP);
  EXPECT_EQ(text(statement->left), "0");
  EXPECT_EQ(statement->right->op, ASM);
}

} // namespace
} // namespace velkor
