// Functions as rows of statements, for liveness and storage allocation.
#pragma once

#include "cfg/pass_rows.h"
#include "core/target.h"
#include "scalar/live_variables.h"
#include "storage/conflicts.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace velkor {

class StorageRowTest : public PassRowTest {
protected:
  StorageRowTest() { velkor::target = Target{}; }
  ~StorageRowTest() override {
    velkor::target = Target{};
    if (state.debug_file) std::fclose(state.debug_file);
    state.debug_file = nullptr;
  }

  // Turns a local into the parameter whose home the other local is. The name must be no longer.
  SYM *make_parameter(const char *local, const char *home) {
    SYM *parameter = sym(local);
    sym(home)->parameter = parameter;
    parameter->level = 1;
    parameter->sclass = parameter->orig_sclass = C_REGPARM;
    std::strcpy(parameter->name, home);
    return parameter;
  }

  // The text that run writes to the debug file.
  template <typename Run> static std::string debug_text(Run run) {
    state.debug_file = std::tmpfile();
    state.debug_on = options.debug_level > 0 ? options.debug_level : 1;
    run();
    std::string text(static_cast<std::size_t>(std::ftell(state.debug_file)), '\0');
    std::rewind(state.debug_file);
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), state.debug_file), text.size());
    std::fclose(state.debug_file);
    state.debug_file = nullptr;
    state.debug_on = 0;
    return text;
  }

  // Names of the candidates in a set without the underscore, by number.
  template <typename AnySet> static std::string names(const AnySet &set) {
    std::string result;
    for (int number = 0; number < live_variables.num_candidates; ++number)
      if (set_has(set, number) && is_candidate(live_variables.candidates[number])) {
        const char *name = live_variables.candidates[number]->name;
        result += (result.empty() ? "" : " ") + std::string(*name == '_' ? name + 1 : name);
      }
    return result;
  }

  static BB *block(int dfn) {
    BB *result = state.first_bb;
    while (result && result->dfn != dfn)
      result = result->next;
    return result;
  }
};

} // namespace velkor
