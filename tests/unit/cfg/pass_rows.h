// A pass over functions of rows: the same locals for each function, the graph before and behind.
#pragma once

#include "cfg/graph_rows.h"

#include <functional>
#include <utility>
#include <vector>

namespace velkor {

class PassRowTest : public GraphRowTest {
protected:
  using Names = std::vector<const char *>;

  // What after() and the expectations run, over functions with these locals.
  void use_pass(Names locals, std::function<void()> pass) {
    locals_ = std::move(locals);
    pass_ = std::move(pass);
  }

  // Makes these the function's symbols; candidates are numbered in this order.
  void use_locals(const Names &names) {
    state.local_syms = state.temp_syms = nullptr;
    state.scalar_syms = state.static_syms = state.other_syms = state.misc_syms = nullptr;
    state.temp_counter = 0;
    for (const char *each : names) {
      SYM *local = sym(each);
      local->next = state.local_syms;
      state.local_syms = local;
    }
  }

  void run_pass(const Lines &input) {
    use_locals(locals_);
    build(input);
    pass_();
  }
  Lines after(const Lines &input) {
    run_pass(input);
    return graph();
  }

  // One block, without its label and its last line, which returns n.
  void expect_block(const Lines &input, const Lines &output) {
    Lines lines = input;
    lines.emplace_back("return(_self,_n)");
    Lines result = after(lines);
    ASSERT_GE(result.size(), 2u);
    result.erase(result.begin());
    result.pop_back();
    EXPECT_EQ(result, output) << input[0];
  }
  void expect_kept(const Lines &input) {
    Lines kept;
    for (const std::string &line : input)
      kept.push_back(text(tree(line)));
    expect_block(input, kept);
  }

private:
  Names locals_;
  std::function<void()> pass_;
};

} // namespace velkor
