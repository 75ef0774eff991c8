// What tests of the optimizer's routines share: a fresh run around each test.
#pragma once

#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"

#include <gtest/gtest.h>

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
