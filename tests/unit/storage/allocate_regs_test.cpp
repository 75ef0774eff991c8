// Storage allocation on the target as it is: no register classes.
#include "storage/allocate_regs.h"
#include "storage/storage_rows.h"

namespace velkor {
namespace {

class AllocateRegsTest : public StorageRowTest {
protected:
  void allocate(const Lines &lines) {
    build(lines);
    allocate_regs();
  }

  // The second-last and the last statement of the first block as one row; "kept" when they stay
  // two.
  std::string folded(const std::string &assignment, const std::string &test) {
    use_locals({"_x", "_y", "_c", "_p"});
    allocate(
        {assignment, "if " + test + " L1 L2", "L1:", "return(_self,1)", "L2:", "return(_self,2)"});
    const LIST *first = block(1)->trees;
    if (first->next) return "kept";
    EXPECT_EQ(first->line, 1) << "the branch stands in the assignment's place";
    return text(first->item->left);
  }
};

TEST_F(AllocateRegsTest, VirtualRegistersAreNumberedByFunction) {
  sym("_n")->level = 1;
  for (int round = 0; round < 2; ++round) {
    use_locals({"_x", "_y", "_st", "_n", "_c", "_d"});
    sym("_c")->sclass = C_REG;
    allocate({"assign(_p,address(_y))", "return(_self,_x)"});
    EXPECT_EQ(sym("_x")->sclass, C_VREG);
    EXPECT_EQ(sym("_x")->offset, 0);
    EXPECT_EQ(sym("_y")->sclass, C_AUTO) << "its address is taken";
    EXPECT_EQ(sym("_n")->sclass, C_AUTO) << "a parameter";
    EXPECT_EQ(sym("_st")->sclass, C_AUTO);
    EXPECT_EQ(sym("_c")->sclass, C_VREG);
    EXPECT_EQ(sym("_c")->offset, 1);
    EXPECT_EQ(sym("_d")->offset, 2);
    for (SYM *each : {sym("_x"), sym("_d")})
      each->sclass = C_AUTO;
  }
}

TEST_F(AllocateRegsTest, AnAssignmentJoinsTheBranchThatTestsIt) {
  EXPECT_EQ(folded("assign(_x,ucall(address(_fn)))", "_x"), "assign(_x, ucall(address(_fn)))");
  EXPECT_EQ(folded("assign(_x,ucall(address(_fn)))", "lt(_x,3)"),
            "lt(assign(_x, ucall(address(_fn))), 3)");
  EXPECT_EQ(folded("asg_shift_right(_x,2)", "_x"), "asg_shift_right(_x, 2)");
  EXPECT_EQ(folded("assign(_g1,_x)", "eq(_g1,0)"), "eq(assign(_g1, _x), 0)");
  EXPECT_EQ(folded("increment(_x,1)", "_x"), "kept");
  EXPECT_EQ(folded("assign(_x,1)", "_y"), "kept");
  EXPECT_EQ(folded("assign(_x,1)", "lt(_x,_y)"), "kept");
  EXPECT_EQ(folded("assign(_x,1)", "logical_not(_x)"), "kept");
  EXPECT_EQ(folded("assign(_x,1)", "add(_x,1)"), "kept");
  EXPECT_EQ(folded("assign(_vol,_x)", "_vol"), "kept");
  EXPECT_EQ(folded("assign:uchar(_c,_x)", "lt(_c,3)"), "kept")
      << "the value would be compared in another type";
  make_parameter("_n", "_q");
  EXPECT_EQ(folded("assign(_c,sconv:char(_n))", "_c"), "kept");
  EXPECT_EQ(folded("assign(_c,sconv:char(add(_n,1)))", "_c"), "assign(_c, sconv:char(add(_n, 1)))");
}

TEST_F(AllocateRegsTest, TheDebugFile) {
  use_locals({"_x", "_y", "_z"});
  build({"assign(_x,_y)", "assign(_z,assign(_u,_x))", "assign(_z,_st)", "return(_self,_z)"});
  const std::string all = debug_text(allocate_regs);
  EXPECT_EQ(all.substr(all.find("\n\n\t\t\t---------- ENTERING 'allocate_regs'")),
            "\n\n\t\t\t---------- ENTERING 'allocate_regs' ----------\n"
            "\t'_z' preferenced to '_x'\n"
            "\t'_x' preferenced to '_y'\n"
            "\t(0) '_x' remains allocated on the stack.\n"
            "\t(1) '_y' remains allocated on the stack.\n"
            "\t(2) '_z' remains allocated on the stack.\n");
  EXPECT_EQ(allocation.conflicts, nullptr) << "nobody asks for them";
  use_locals({"_a"});
  build({"return(_self,_g1)"});
  const std::string none = debug_text(allocate_regs);
  EXPECT_EQ(none, "\n\n\t\t\t---------- ENTERING 'sym_split' ----------\n"
                  "\n\n\t\t\t---------- ENTERING 'find_live_variables' --------\n"
                  "\n\n\t\t\t---------- ENTERING 'allocate_regs' ----------\n");
}

} // namespace
} // namespace velkor
