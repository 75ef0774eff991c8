// Rows `tree text -> tree text` for rule sets.
//
// A row's trees are written in the text form (docs/text-form.md) over the symbols below:
//   int _x _y _z _i _n; unsigned _u _v _w; char _c; uchar _uc; short _s; ushort _us; long _l;
//   float _f _g; double _d _e; int* _p _q; char* _cp _cq; int[10] _a; struct _st with the members
//   _m (int), _k (char), _b3 (unsigned, 3 bits), _s3 (int, 3 bits), _b1 (unsigned, 1 bit); struct*
//   _sp: all of them automatic; global int _g1 _g2, unsigned _gu, char _gc, int* _gp, volatile int
//   _vol, volatile unsigned _volu, const int _ci; functions int _fn, _fm; int _abs, _strlen,
//   _exit; char* _strcpy, _memcpy; the function _self that the tree stands in.
#pragma once

#include "bridge/node_text.h"
#include "run_fixture.h"
#include "simplify/constant_text.h"
#include "simplify/simplify.h"

#include <string>
#include <vector>

namespace velkor {

struct TreeRow {
  const char *input;
  const char *output; // a null pointer: the tree stays as it is
  int level = 1;      // of optimization
};

class TreeRowTest : public RunTest {
protected:
  TreeRowTest() {
    options.opt_level = 1;
    init_float_constants();
    declare_globals();
    declare_locals();
    state.cur_fun_sym = sym("_self");
    state.cur_fun = fun_find_or_add("self");
  }

  // The symbol of a name; a test fails when there is none.
  SYM *sym(const char *name) {
    NODE *node = tree(name);
    return node ? node->u.sym : nullptr;
  }

  NODE *tree(const std::string &text) {
    std::string error;
    NODE *result = bridge::tree_from_text(text, symbols, error);
    EXPECT_TRUE(result) << text << ": " << error;
    return result;
  }

  std::string text(const NODE *node) {
    for (SYM *temporary = state.temp_syms; temporary; temporary = temporary->next)
      symbols.add(temporary);
    return node ? bridge::tree_to_text(node, symbols) : "none";
  }

  // Simplifies each row's tree, and the result again, which must change nothing.
  void expect_rows(const std::vector<TreeRow> &rows) {
    for (const TreeRow &row : rows) {
      options.opt_level = row.level;
      NODE *input = tree(row.input);
      if (!input) continue;
      const std::string expected = row.output ? text(tree(row.output)) : text(tree(row.input));
      NODE *result = simplify_tree(input);
      EXPECT_EQ(text(result), expected) << "of " << row.input;
      const std::string once = text(result);
      EXPECT_EQ(text(simplify_tree(result)), once) << "again, of " << row.input;
    }
  }

  bridge::SymbolScope symbols;

private:
  void declare(int level, const std::vector<std::string> &lines) {
    for (const std::string &line : lines) {
      std::string error;
      EXPECT_TRUE(symbols.declare(line, level, error)) << line << ": " << error;
    }
  }

  void declare_globals() {
    declare(0, {"symbol _st_tag struct_tag struct size=96",
                "symbol _m struct_member int",
                "symbol _k struct_member char offset=32",
                "symbol _b3 bit_field unsigned size=3 offset=64",
                "symbol _s3 bit_field int size=3 offset=67",
                "symbol _b1 bit_field unsigned size=1 offset=70",
                "symbol .eos end_of_tag struct tag=_st_tag size=96",
                "symbol _g1 extern int",
                "symbol _g2 extern int",
                "symbol _gu extern unsigned",
                "symbol _gc extern char",
                "symbol _gp extern int*",
                "symbol _vol extern int volatile",
                "symbol _volu extern unsigned volatile",
                "symbol _ci static int const",
                "symbol _fn extern_declared int()",
                "symbol _fm extern_declared int()",
                "symbol _abs extern_declared int()",
                "symbol _strlen extern_declared unsigned()",
                "symbol _exit extern_declared void()",
                "symbol _strcpy extern_declared char*()",
                "symbol _memcpy extern_declared char*()",
                "symbol _memmove extern_declared char*()",
                "symbol _self extern int()"});
  }

  void declare_locals() {
    const auto autos = [&](const char *type, std::initializer_list<const char *> names) {
      for (const char *name : names)
        declare(2, {std::string("symbol ") + name + " auto " + type});
    };
    autos("int", {"_x", "_y", "_z", "_i", "_n"});
    autos("unsigned", {"_u", "_v", "_w"});
    autos("char", {"_c"});
    autos("uchar", {"_uc"});
    autos("short", {"_s"});
    autos("ushort", {"_us"});
    autos("long", {"_l"});
    autos("float", {"_f", "_g"});
    autos("double", {"_d", "_e"});
    autos("int*", {"_p", "_q"});
    autos("char*", {"_cp", "_cq"});
    declare(2, {"symbol _a auto int[] dims=10", "symbol _st auto struct tag=_st_tag",
                "symbol _sp auto struct* tag=_st_tag"});
  }
};

} // namespace velkor
