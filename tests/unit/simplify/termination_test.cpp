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

} // namespace
} // namespace velkor
