// Register classes of a made-up target: order, packing, reports, shared stack slots.
#include "icode/format.h"
#include "storage/allocate_regs.h"
#include "storage/pack_services.h"
#include "storage/register_classes.h"
#include "storage/storage_rows.h"

#include <array>
#include <map>
#include <vector>

namespace velkor {
namespace {

constexpr int register_count = 3;
constexpr std::uint32_t all_registers = (1u << register_count) - 1;

// What the target's routines see and do in one test.
struct TestTarget {
  std::map<std::string, std::uint32_t> preferred;  // masks by name; none: no preference
  std::map<std::string, std::uint32_t> acceptable; // none: all registers
  std::vector<std::string> offered;                // in the order of packing
  std::map<std::string, int> given;
  std::vector<std::string> preferences;
  bool packs = true;
  bool shares_slots = false;
};
TestTarget layer;

std::uint32_t mask_of(const std::map<std::string, std::uint32_t> &masks, const char *name,
                      std::uint32_t otherwise) {
  const auto found = masks.find(name);
  return found == masks.end() ? otherwise : found->second;
}

bool classify(SYM *sym, REGCLASS *, std::int32_t *pref_count, std::uint32_t *pref_mask,
              std::int32_t *accept_count, std::uint32_t *accept_mask) {
  *accept_mask = mask_of(layer.acceptable, sym->name, all_registers);
  *accept_count = std::popcount(*accept_mask);
  *pref_mask = mask_of(layer.preferred, sym->name, 0);
  *pref_count = std::popcount(*pref_mask);
  return *accept_mask != 0;
}

// The lowest register that no conflicting symbol has.
bool pack(SYM *sym, REGCLASS *) {
  layer.offered.emplace_back(sym->name);
  if (!layer.packs) return false;
  std::uint32_t free_registers = mask_of(layer.acceptable, sym->name, all_registers);
  for_each_member(allocation.conflicts[sym->count], live_variables.words, [&](int number) {
    const auto found = layer.given.find(live_variables.candidates[number]->name);
    if (found != layer.given.end()) free_registers &= ~(1u << found->second);
  });
  if (free_registers == 0) return false;
  const int chosen = std::countr_zero(free_registers);
  layer.given[sym->name] = chosen;
  sym->sclass = C_REG;
  sym->offset = chosen;
  const std::string reg_name = "R" + std::to_string(chosen);
  report_register(chosen, reg_name.c_str(), sym, sym->count);
  return true;
}

REGCLASS second_class = {nullptr, classify, [](SYM *sym, REGCLASS *) {
                           layer.offered.push_back(std::string("again ") + sym->name);
                           return false;
                         }};
REGCLASS first_class = {&second_class, classify, pack};

class RegisterClassesTest : public StorageRowTest {
protected:
  RegisterClassesTest() {
    layer = TestTarget{};
    velkor::target.register_classes = [] {
      velkor::target.vreg_count = 0;
      return &first_class;
    };
    velkor::target.note_preference = [](SYM *sym, SYM *other) {
      layer.preferences.push_back(std::string(sym->name) + other->name);
    };
    velkor::target.finish_symbols = [](SYM *list) {
      if (layer.shares_slots) state.scalar_syms = coalesce_autos(list);
      target_finish_symbols(state.scalar_syms);
    };
  }

  // Allocates, and gives the lines of the debug file between the two headings, or behind the last.
  std::string allocate(const Lines &lines, const char *from = nullptr, const char *to = nullptr) {
    build(lines);
    const std::string all = debug_text(allocate_regs);
    const std::size_t begin = from ? all.find(from) + std::strlen(from) : 0;
    return all.substr(begin, to ? all.find(to, begin) - begin : std::string::npos);
  }

  std::string order() {
    std::string result;
    for (const std::string &name : layer.offered)
      result += (result.empty() ? "" : ", ") + name;
    return result;
  }

  // Local scalars as they are left, with class and number.
  static std::string left_over() {
    std::string result;
    for (const SYM *each = state.scalar_syms; each; each = each->next)
      result += std::string(each->name) +
                (each->sclass == C_REG    ? "=R"
                 : each->sclass == C_VREG ? "=V"
                                          : "=stack ") +
                std::to_string(each->sclass == C_AUTO ? 0 : each->offset) + " ";
    return result;
  }

  static std::string comments() {
    std::string result;
    for (const LIST *cell = state.alloc_comments; cell; cell = cell->next) {
      EXPECT_EQ(cell->item->op, ASM);
      EXPECT_EQ(cell->item->u.lval, RECORD_COMMENT);
      result += std::to_string(cell->line) + "/" + std::to_string(cell->line2) + " " +
                cell->item->aux.text + "\n";
    }
    return result;
  }
};

// All of the names are live at once; each is read as often as told.
Lines clique(const std::vector<std::pair<std::string, int>> &reads) {
  Lines lines;
  for (const auto &[name, count] : reads)
    lines.push_back("assign(" + name + ",1)");
  for (int round = 0; round < 100; ++round)
    for (const auto &[name, count] : reads)
      if (round < count) lines.push_back("assign(_g1," + name + ")");
  lines.emplace_back("return(_self,0)");
  return lines;
}

TEST_F(RegisterClassesTest, ATriangleFitsIntoThreeRegisters) {
  use_locals({"_z", "_y", "_x"});
  allocate(clique({{"_x", 4}, {"_y", 4}, {"_z", 4}}));
  EXPECT_EQ(order(), "_z, _y, _x") << "on equal costs the names decide";
  EXPECT_EQ(left_over(), "_z=R0 _y=R1 _x=R2 ");
}

TEST_F(RegisterClassesTest, OfFourTheCheapestIsGivenUp) {
  use_locals({"_x", "_y", "_z", "_n"});
  EXPECT_EQ(allocate(clique({{"_x", 5}, {"_y", 2}, {"_z", 4}, {"_n", 3}}),
                     "ENTERING 'allocate_regs' ----------\n", "\n\t----Storage conflict"),
            "\t'_y' has been sacrificed by priority\n"
            "\t'_n' is assured an acceptable register\n"
            "\t'_z' is assured an acceptable register\n"
            "\t'_x' is assured an acceptable register\n"
            "\t   0 vars were assured a preferred register (cost: 0),\n"
            "\t   3 vars were assured an acceptable register (cost: 15),\n"
            "\t   1 vars had to be sacrificed (cost: 3).\n");
  EXPECT_EQ(order(), "_x, _z, _n, _y, again _y") << "and is offered all the same";
  EXPECT_EQ(left_over(), "_x=R0 _z=R1 _n=R2 _y=V0 ");
}

TEST_F(RegisterClassesTest, PreferredRegistersComeFirst) {
  use_locals({"_x", "_y", "_z", "_n"});
  layer.preferred = {{"_x", 1}, {"_y", 6}, {"_z", 2}};
  layer.acceptable = {{"_x", 1}, {"_y", 7}, {"_z", 2}};
  const std::string text =
      allocate(clique({{"_x", 5}, {"_y", 2}, {"_z", 4}, {"_n", 3}}),
               "ENTERING 'allocate_regs' ----------\n", "\n\t----Storage conflict");
  // _x and _z share no register, so each has _y and _n as neighbours. No mask has a register that
  // no neighbour can take until both are gone.
  EXPECT_EQ(text, "\t'_y' has been sacrificed by priority\n"
                  "\t'_n' is assured an acceptable register\n"
                  "\t'_z' is assured a preferred register\n"
                  "\t'_x' is assured a preferred register\n"
                  "\t   2 vars were assured a preferred register (cost: 11),\n"
                  "\t   1 vars were assured an acceptable register (cost: 4),\n"
                  "\t   1 vars had to be sacrificed (cost: 3).\n");
}

TEST_F(RegisterClassesTest, ARegisterThatNoNeighbourTakesIsSure) {
  use_locals({"_x", "_y", "_z", "_n"});
  layer.acceptable = {{"_x", 7}, {"_y", 3}, {"_z", 3}, {"_n", 3}};
  const std::string text = allocate(clique({{"_x", 1}, {"_y", 2}, {"_z", 4}, {"_n", 3}}),
                                    "ENTERING 'allocate_regs' ----------\n", "\t   0 vars");
  EXPECT_EQ(text, "\t'_x' is assured an acceptable register\n"
                  "\t'_y' has been sacrificed by priority\n"
                  "\t'_n' is assured an acceptable register\n"
                  "\t'_z' is assured an acceptable register\n");
  EXPECT_EQ(layer.given["_x"], 2) << "packed last, it finds the register of its own";
}

TEST_F(RegisterClassesTest, ARegisterIsFreeAgainWhenItsLastNeighbourHasLeft) {
  use_locals({"_x", "_y", "_z", "_i", "_n", "_l"});
  layer.acceptable = {{"_y", 3}, {"_z", 3}, {"_i", 3}, {"_n", 4}, {"_l", 4}};
  const std::string text =
      allocate(clique({{"_x", 60}, {"_y", 30}, {"_z", 30}, {"_i", 30}, {"_n", 1}, {"_l", 1}}),
               "ENTERING 'allocate_regs' ----------\n", "\t   0 vars");
  EXPECT_EQ(text, "\t'_l' has been sacrificed by priority\n"
                  "\t'_n' has been sacrificed by priority\n"
                  "\t'_x' is assured an acceptable register\n"
                  "\t'_i' has been sacrificed by priority\n"
                  "\t'_y' is assured an acceptable register\n"
                  "\t'_z' is assured an acceptable register\n");
}

TEST_F(RegisterClassesTest, WhatIsOfferedAndWhatIsNot) {
  use_locals({"_x", "_y", "_z", "_n", "_i"});
  layer.acceptable = {{"_n", 0}};
  layer.packs = false;
  const std::string text = allocate({"assign(_p,address(_z))", "assign(_x,_g1)", "assign(_y,1)",
                                     "assign(_n,1)", "assign(_g1,_n)", "return(_self,_x)"});
  EXPECT_NE(text.find("\tNo references in the function for (4) '_i'\n"), std::string::npos);
  EXPECT_EQ(order(), "_x, again _x") << "_y costs 1, _n fits nowhere";
  EXPECT_EQ(left_over(), "_x=V0 _n=V1 _z=stack 0 _y=V2 ") << "and _i is gone";
}

TEST_F(RegisterClassesTest, PreferencesAndConflictsAreTold) {
  use_locals({"_x", "_y", "_z"});
  options.debug_level = 2;
  const std::string text = allocate(
      {"assign(_x,_g1)", "assign(_y,_x)", "assign(_z,_g2)", "return(_self,add(add(_y,_z),_z))"},
      "----Storage conflict information---\n", "\n\t----Storage packing");
  EXPECT_EQ(text, "\t(2) '_z'\t(COST=4) conflicts with (1) '_y'\n"
                  "\t(2) '_z'\t(COST=4)\thas 1 conflicts and 0 preferences\n"
                  "\t(1) '_y'\t(COST=2) conflicts with (2) '_z'\n"
                  "\t(1) '_y'\t(COST=2) preferences with (0) '_x'\n"
                  "\t(1) '_y'\t(COST=2)\thas 1 conflicts and 1 preferences\n"
                  "\t(0) '_x'\t(COST=2) preferences with (1) '_y'\n"
                  "\t(0) '_x'\t(COST=2)\thas 0 conflicts and 1 preferences\n");
  EXPECT_EQ(layer.preferences, (std::vector<std::string>{"_y_x"}));
}

TEST_F(RegisterClassesTest, ResultsDoNotDependOnTheOrderOfTheList) {
  const Lines lines = clique({{"_x", 3}, {"_y", 3}, {"_z", 3}, {"_n", 3}, {"_i", 3}});
  use_locals({"_x", "_y", "_z", "_n", "_i"});
  allocate(lines);
  const std::map<std::string, int> given = layer.given;
  layer = TestTarget{};
  use_locals({"_i", "_z", "_x", "_n", "_y"});
  allocate(lines);
  EXPECT_EQ(layer.given, given);
  EXPECT_EQ(given.size(), 3u);
}

// ------------------------------------------------------------------------------------------------
// Shared slots

const Lines separate_ranges = {"assign(_x,_g1)", "asg_add(_x,1)",  "assign(_g1,_x)",
                               "assign(_y,_g2)", "asg_add(_y,2)",  "assign(_z,_y)",
                               "assign(_g2,_z)", "assign(_c,_gc)", "assign(_gc,_c)",
                               "assign(_n,_g1)", "assign(_g1,_n)", "return(_self,0)"};

TEST_F(RegisterClassesTest, LocalsThatNeverConflictShareASlot) {
  layer.packs = false;
  layer.shares_slots = true;
  use_locals({"_x", "_y", "_c", "_z", "_n"});
  const std::string text = allocate(separate_ranges, "remains allocated on the stack.\n");
  Lines lines = graph();
  EXPECT_EQ(text.substr(text.find("\tVariable")), "\tVariable '_z' is coalesced with '_n'\n"
                                                  "\tVariable '_x' is coalesced with '_n'\n"
                                                  "\tVariable '_y' is coalesced with '_n'\n");
  EXPECT_EQ(left_over(), "_c=V0 _n=V1 ");
  EXPECT_EQ(lines[4], "assign(_n, _g2)");
  EXPECT_EQ(lines[6], "assign(_n, _n)");
  const NODE *renamed = block(1)->trees->next->next->next->item->left;
  EXPECT_EQ(renamed->aux.sym, sym("_y")) << "the listing shows the name of the source";
  EXPECT_EQ(sym("_y")->level, coalesced_level);
  EXPECT_EQ(comments(), "0/3 ;  ---  n shares AUTO storage with y\n"
                        "0/3 ;  ---  n shares AUTO storage with x\n"
                        "0/3 ;  ---  n shares AUTO storage with z\n");
}

TEST_F(RegisterClassesTest, WhatConflictsOrIsAParametersHomeKeepsItsSlot) {
  layer.packs = false;
  layer.shares_slots = true;
  make_parameter("_i", "_y");
  use_locals({"_x", "_y", "_z", "_n", "_u"});
  allocate({"assign(_y,_i)", "assign(_g1,_y)", "assign(_x,_g1)", "assign(_z,_g2)",
            "assign(_g2,add(_x,_z))", "assign(_n,_g1)", "call(address(_fn),address(_n))",
            "assign(_u,_gu)", "assign(_gu,_u)", "return(_self,0)"});
  EXPECT_EQ(sym("_y")->level, 2);
  EXPECT_EQ(sym("_n")->level, 2) << "its address is taken";
  EXPECT_EQ(sym("_u")->level, 2) << "of another type";
  EXPECT_NE(sym("_z")->init, reinterpret_cast<NODE *>(sym("_x"))) << "live together";
}

TEST_F(RegisterClassesTest, APreferredPartnerBeatsACostlyOne) {
  layer.packs = false;
  layer.shares_slots = true;
  use_locals({"_x", "_y", "_z"});
  // _x and _y conflict; _z is free of both, and a copy of the cheap one.
  allocate({"assign(_x,_g1)", "assign(_y,_g2)", "assign(_g1,add(add(_x,_x),add(_x,_x)))",
            "assign(_z,_y)", "assign(_g2,_z)", "return(_self,0)"});
  EXPECT_EQ(sym("_z")->init, reinterpret_cast<NODE *>(sym("_y")));
  EXPECT_EQ(sym("_x")->level, 2);
}

// ------------------------------------------------------------------------------------------------
// Reports

TEST_F(RegisterClassesTest, CommentsStandByKeyAndAreListedOnce) {
  SYM *temporary = symbol("T$1", INT);
  SYM *local = symbol("_v", INT);
  debug_text([&] {
    report_register(3, "R3", local, 7);
    report_register(9, "LONGREG", local, 7);
    report_local_static(local);
    report_register(5, "R5", local, 7);
    report_register(5, "R5", local, 7);
    report_register(5, "R5", symbol("_w", INT), 7);
    report_register(4, "R4", temporary, 7);
    report_register(4, "", local, 7);
    report_local_static(temporary);
  });
  EXPECT_EQ(comments(), "0/2 ;STATIC storage allocated to AUTO variable  v\n"
                        "9/0 ; LONGREG assigned to variable  v\n"
                        "5/0 ; R5\tassigned to variable  v\n"
                        "5/0 ; R5\tassigned to variable  w\n"
                        "3/0 ; R3\tassigned to variable  v\n");
  state.alloc_comments = nullptr;
  options.opt_source_comments = 1;
  EXPECT_EQ(debug_text([&] {
              report_register(4, "R4", temporary, 7);
              report_register(4, nullptr, local, 8);
              report_local_static(temporary);
            }),
            "\tRegister R4 allocated to (7) 'T$1'\n"
            "\tRegister allocated to (8) '_v'\n"
            "\t(-1) 'T$1' is allocated as a local STATIC.\n");
  EXPECT_EQ(comments(), "0/2 ;STATIC storage allocated to compiler temp  T$1\n"
                        "4/0 ; R4\tassigned to temp var  T$1\n");
}

TEST_F(RegisterClassesTest, AParametersHomeIsCalledAParameter) {
  make_parameter("_n", "_x");
  use_locals({"_x", "_y"});
  allocate({"assign(_x,_n)", "assign(_y,_g1)", "return(_self,add(add(_x,_y),_x))"});
  EXPECT_EQ(comments(), "1/0 ; R1\tassigned to variable  y\n"
                        "0/0 ; R0\tassigned to parameter x\n");
}

} // namespace
} // namespace velkor
