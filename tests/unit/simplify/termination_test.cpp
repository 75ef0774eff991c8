// Trees of odd types, as damaged files have them, that rules once handed to each other for ever.
#include "tree_rows.h"

namespace velkor {
namespace {

class TerminationTest : public TreeRowTest {};

TEST_F(TerminationTest, AConversionAndASumOfAFloatingOperand) {
  for (const char *text :
       {"add(sconv:unsigned(add:long(_d, 5)), 7)", "add(sconv:unsigned(add:long(_p, 5)), 7)",
        "add(sconv:unsigned(add:long(_l, 5)), 7:int*)"})
    EXPECT_TRUE(simplify_tree(tree(text))) << text;
}

// x + 127 + 2147483647 does not overflow for a negative x; with one constant it would.
TEST_F(TerminationTest, ConstantsWhoseSumWrapsStayApart) {
  expect_rows({{"add(add(_x, 127), 2147483647)", nullptr},
               {"le(add(add(_x, 127), 2147483647), 0)", nullptr},
               {"add:unsigned(add:unsigned(_u, -1:unsigned), 2:unsigned)", "add(_u, 1:unsigned)"}});
}

} // namespace
} // namespace velkor
