// What tests of the optimizer's routines share: a fresh run around each test.
#pragma once

#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>

namespace velkor {

class RunTest : public ::testing::Test {
protected:
  RunTest() { forget(); }
  ~RunTest() override { forget(); }

  static SYM *symbol(const char *name, TypeWord type, int level = 2, StorageClass sclass = C_AUTO) {
    SYM *sym = new_symbol(0, name);
    sym->stype = type;
    sym->level = static_cast<std::int8_t>(level);
    sym->sclass = sym->orig_sclass = sclass;
    sym->size = is_pointer(type) ? pointer_width : type_width(type);
    sym->align = sym_alignment(sym);
    return sym;
  }
  static NODE *name(SYM *sym) { return make_name(sym); }
  static NODE *icon(std::int32_t value) { return make_icon(value, INT); }
  static NODE *node(Opcode op, NODE *left, NODE *right = nullptr, TypeWord type = INT) {
    return make_node(op, left, right, type);
  }

  // What a routine writes to the debug file.
  static std::string debug_text(const std::function<void()> &routine, int level = 1) {
    std::FILE *file = std::tmpfile();
    state.debug_file = file;
    state.debug_on = level;
    routine();
    state.debug_file = nullptr;
    state.debug_on = 0;
    std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    return text;
  }

private:
  static void forget() {
    clear_functions();
    clear_symbol_tables();
    release_all_zones();
    options = Options{};
    state = State{};
  }
};

} // namespace velkor
