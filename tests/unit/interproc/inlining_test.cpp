// Inline bodies recorded and expanded, on statements by hand: what the driver of one file cannot
// reach.
#include "interproc/inline_bodies.h"
#include "simplify/sequencing.h"
#include "simplify/statement_rows.h"

namespace velkor {
namespace {

class InliningTest : public StatementRowTest {
protected:
  SYM *local(const std::string &line, int level) {
    std::string error;
    SYM *made = symbols.declare("symbol " + line, level, error);
    EXPECT_TRUE(made) << line << ": " << error;
    if (!made) return nullptr;
    made->next = state.local_syms;
    state.local_syms = made;
    return made;
  }

  LIST *read(const Lines &lines) {
    LIST *newest = nullptr;
    for (const std::string &row : lines)
      newest = list_cons(simplify_tree(statement(row)), newest, 7, 8);
    return newest;
  }

  // Makes the function current, with the locals added by local(), and records it.
  FUN *record(const char *function, const Lines &body, bool marked = true) {
    state.cur_fun_sym = sym(function);
    state.cur_fun = fun_find_or_add(function + 1);
    state.cur_fun->sym = state.cur_fun_sym;
    if (marked) state.cur_fun_sym->scqual |= CQ_INLINE;
    state.function_is_inline = marked;
    state.statements = read(body);
    record_inline_definition();
    FUN *fun = state.cur_fun;
    state.local_syms = nullptr;
    state.statements = nullptr;
    state.cur_fun_sym = sym("_self");
    state.cur_fun = fun_find_or_add("self");
    return fun;
  }

  // The caller's statements in order of execution, without the two comments of each body.
  Lines sequenced(const Lines &caller) {
    state.label_counter = state.temp_counter = 0;
    state.temp_syms = state.local_syms = nullptr;
    state.inline_limit_reached = nullptr;
    state.statements = read(caller);
    sequence_statements();
    for (SYM *instance = state.local_syms; instance; instance = instance->next)
      symbols.add(instance);
    state.statements = list_reverse_onto(state.statements, nullptr);
    Lines lines;
    for (const LIST *cell = state.statements; cell; cell = cell->next)
      if (cell->item->op != ASM) lines.push_back(line(cell->item));
    return lines;
  }

  bool is_integrated(const std::string &call) {
    for (const std::string &row : sequenced({call}))
      if (row.find("address(_fn)") != std::string::npos) return false;
    return true;
  }
};

TEST_F(InliningTest, EachUseOfAValueHasItsForm) {
  local("_pa register_parameter int", 1);
  record("_fn", {"cbranch(_pa, L1)", "return(_fn, 1)", "L1:", "return(_fn, ucall(address(_fm)))"});
  const auto expect = [&](const char *caller, const Lines &expected) {
    EXPECT_EQ(sequenced({caller, "L5:"}), expected) << "of " << caller;
  };
  expect("assign(_y, call(address(_fn), _x))",
         {"assign(_pa, _x)", "if _pa N3 N2", "N3:", "assign(R$1, 1)", "goto N1",
          "N2:", "assign(R$1, ucall(address(_fm)))", "goto N1", "N1:", "assign(_y, R$1)", "L5:"});
  expect("cbranch(call(address(_fn), _x), L5)",
         {"assign(_pa, _x)", "if _pa N2 N1", "N2:", "goto L5",
          "N1:", "if ucall(address(_fm)) L5 L5", "L5:"});
  expect("call(address(_fn), assign(_x, 3))",
         {"assign(_x, 3)", "assign(_pa, 3)", "if _pa N3 N2", "N3:", "goto N1",
          "N2:", "ucall(address(_fm))", "goto N1", "N1:", "L5:"});
}

TEST_F(InliningTest, ArgumentsMustMatch) {
  local("_pa register_parameter int", 1);
  local("_pb register_parameter char*", 1);
  local("_pc register_parameter double", 1);
  record("_fn", {"assign(_g1, add(_pa, sconv:int(_pc)))"});
  const char *const matching[] = {"comma(comma(_x, _cp), _d)",
                                  "comma(comma(aconv:char(_c), _p), _d)", "comma(comma(_u, 0), _d)",
                                  "comma(comma(_s, aconv(0)), _e)"};
  for (const char *arguments : matching)
    EXPECT_TRUE(is_integrated(std::string("call(address(_fn), ") + arguments + ")")) << arguments;
  const char *const others[] = {"comma(_x, _cp)",                       // one is missing
                                "comma(comma(comma(_x, _cp), _d), _x)", // one too many
                                "comma(comma(_x, _cp), _f)",            // a float is no double
                                "comma(comma(_d, _cp), _d)",            // nor an int
                                "comma(comma(_p, _cp), _d)",            // a pointer for an int
                                "comma(comma(_x, 1), _d)",              // an int for a pointer
                                "comma(comma(_x, address(_fm)), _d)"};  // a function for an object
  for (const char *arguments : others) {
    FUN *fun = fun_find("fn");
    fun->flags |= FUN_is_suppressed;
    EXPECT_FALSE(is_integrated(std::string("call(address(_fn), ") + arguments + ")")) << arguments;
    EXPECT_FALSE(fun->flags & FUN_is_suppressed) << arguments;
  }
  EXPECT_FALSE(is_integrated("ucall(address(_fn))"));
}

// The library form of a call names the function without its symbol.
TEST_F(InliningTest, NamedCallsAreIntegrated) {
  local("_pa register_parameter int", 1);
  record("_fn", {"return(_fn, add(_pa, 1))"});
  const Lines found = sequenced({"assign(_y, xcall[\"fn\"](_x))"});
  ASSERT_EQ(found.size(), 5u);
  EXPECT_EQ(found[4], "assign(_y, R$1)");
  EXPECT_EQ(sequenced({"assign(_y, uxcall[\"fn\"])"}), Lines{"assign(_y, uxcall[\"fn\"])"});
}

// What comes back is cut to the declared type, whatever becomes of it.
TEST_F(InliningTest, ReturnedValuesAreConverted) {
  local("_pa register_parameter int", 1);
  sym("_fn")->stype = derive(CHAR, FUNCTION_RETURNING);
  record("_fn", {"return:char(_fn, _pa)"});
  Lines found = sequenced({"cbranch(call:char(address(_fn), 256), L5)", "L5:"});
  ASSERT_EQ(found.size(), 3u);
  EXPECT_NE(found[1].find("if sconv:char(_pa"), std::string::npos) << found[1];
  found = sequenced({"assign(_x, call:char(address(_fn), 256))"});
  ASSERT_EQ(found.size(), 5u);
  EXPECT_EQ(found[1], "assign(R$1, _pa)");
  EXPECT_EQ(state.temp_syms->stype, TypeWord{CHAR}); // the assignment cuts
}

TEST_F(InliningTest, LocalsBecomeAutosOfTheCaller) {
  SYM *given = local("_pa register_parameter int* squal=17", 1); // const pointer to const
  local("_la auto int const", 2)->parameter = given;
  local("_ea extern_declared int", 2);
  record("_fn", {"assign(_la, deref(_pa))", "assign(_ea, address(_la))", "return(_fn, _la)"});
  state.local_address_taken = false;
  state.inline_statics = nullptr;
  (void)sequenced({"assign(_y, call(address(_fn), address(_g1)))"});
  const SYM *parameter = state.local_syms;
  ASSERT_TRUE(parameter && parameter->next && parameter->next->next);
  const SYM *instance = parameter->next;
  EXPECT_EQ(parameter->sclass, C_AUTO);
  EXPECT_EQ(parameter->orig_sclass, C_AUTO);
  EXPECT_EQ(parameter->level, 2);
  EXPECT_EQ(parameter->squal, 0u);
  EXPECT_FALSE(is_const_symbol(instance));
  EXPECT_EQ(instance->parameter, nullptr); // it is no home of the caller's
  EXPECT_TRUE(state.local_address_taken);
  ASSERT_TRUE(state.inline_statics);
  EXPECT_EQ(state.inline_statics->sym, instance->next);
  EXPECT_EQ(state.inline_statics->sym->sclass, C_EXTDEF);
}

// A body of two calls of itself does not grow without end.
TEST_F(InliningTest, RecursionEnds) {
  local("_pa register_parameter int", 1);
  record("_fn", {"cbranch(_pa, L1)", "call(address(_fn), add(_pa, -1))",
                 "call(address(_fn), add(_pa, -2))", "L1:"});
  testing::internal::CaptureStdout();
  const Lines found = sequenced({"call(address(_fn), _x)"});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\n>>>> ERROR: INLINE recursion limit exceeded on line 8.\n");
  int calls = 0;
  for (const std::string &row : found)
    calls += row.find("call(") != std::string::npos;
  EXPECT_EQ(calls, 11); // ten bodies, each with one call replaced and one left, but for the last
}

// Mutual calls of many functions would multiply: the caller stops growing.
TEST_F(InliningTest, GrowthIsBounded) {
  Lines body;
  for (int i = 0; i < 400; ++i)
    body.push_back("ucall(address(_fn))");
  record("_fm", body);
  body.assign(400, "asg_add(_g1, 1)");
  record("_fn", body);
  (void)sequenced({"ucall(address(_fm))"});
  EXPECT_GE(state.inlined_nodes, 100'000);
  EXPECT_LT(state.inlined_nodes, 102'000);
}

// The two passes over the whole file ask the same routines.
TEST_F(InliningTest, PassesOverTheFile) {
  // The first only finds out, unless a function has been chosen.
  state.pass_number = 1;
  local("_ta auto int[] dims=4 size=128", 2);
  FUN *fun = record("_fn", {"asg_add(_g1, 1)"}, false);
  EXPECT_FALSE(fun->inline_body);
  EXPECT_FALSE(fun->flags & (FUN_cannot_inline | FUN_is_inlined));
  local("_tb auto int[] dims=4 size=128", 2);
  local("_tc auto char[] dims=5 size=40", 2);
  fun = record("_fm", {"asg_add(_g1, 1)"}, false);
  EXPECT_TRUE(fun->flags & FUN_cannot_inline);
  local("_td static int", 2); // moved to file level by then
  fun = record("_fn", {"asg_add(_g1, 1)"});
  EXPECT_TRUE(fun->inline_body);
  EXPECT_TRUE(fun->flags & FUN_is_inlined);
  // The second counts the calls that are gone.
  state.pass_number = 2;
  fun->sites = 3;
  (void)sequenced({"ucall(address(_fn))", "ucall(address(_fn))"});
  EXPECT_EQ(fun->sites, 1);
}

TEST_F(InliningTest, WhatCannotBeIntegrated) {
  struct Row {
    const char *symbol;
    int level;
    bool integrable;
  };
  const Row rows[] = {
      {"_sa auto int volatile", 2, false},
      {"_sb argument struct tag=_st_tag", 1, false},
      {"_sc variadic_argument int", 1, false},
      {"_sd static int", 2, false},
      {"_se struct_tag struct size=32", 2, false},
      {"_sf auto struct tag=_st_tag", 2, true},
      {"_sg auto int[] dims=100 size=3200", 2, true},
      {"_sh extern_declared int", 2, true},
      {"_si typedef int", 2, true},
      {"_sj static int register_variable", 2, true},
  };
  testing::internal::CaptureStdout();
  for (const Row &row : rows) {
    local(row.symbol, row.level);
    FUN *fun = record("_fn", {"asg_add(_g1, 1)"});
    EXPECT_EQ(fun->inline_body != nullptr, row.integrable) << row.symbol;
    EXPECT_EQ((fun->flags & FUN_cannot_inline) == 0, row.integrable) << row.symbol;
    fun->inline_body = nullptr;
    fun->flags &= ~static_cast<std::uint32_t>(FUN_cannot_inline);
  }
  EXPECT_NE(testing::internal::GetCapturedStdout().find(
                "\n>>> Warning: Function fn() cannot be inlined.\n\n"),
            std::string::npos);
}

} // namespace
} // namespace velkor
