// Accesses to bit fields as masks and shifts on their units.
#include "simplify/bit_fields.h"

#include "simplify/bit_field_expansion.h"
#include "simplify/statement_rows.h"

namespace velkor {
namespace {

class BitFieldTest : public StatementRowTest {
protected:
  BitFieldTest() {
    state.has_bit_fields = true;
    // struct t { unsigned ua:3; int sb:5; unsigned uc:12, one:1; unsigned top:4 (at 28), w:32;
    //   unsigned un:3; volatile unsigned vf:4 (at 72); int s20:20 (at 96); }
    declare_chain({
        "symbol _t_tag struct_tag struct size=128 align=32",
        "symbol _ua bit_field unsigned size=3",
        "symbol _sb bit_field int size=5 offset=3",
        "symbol _uf bit_field unsigned size=12 offset=8",
        "symbol _one bit_field unsigned size=1 offset=20",
        "symbol _top bit_field unsigned size=4 offset=28",
        "symbol _word bit_field unsigned size=32 offset=32",
        "symbol _near bit_field unsigned size=3 offset=64",
        "symbol _vf bit_field unsigned size=4 offset=72 volatile",
        "symbol _s20 bit_field int size=20 offset=96",
        "symbol .eos end_of_tag struct tag=_t_tag size=128",
        // bytes only
        "symbol _c_tag struct_tag struct size=24 align=8",
        "symbol _c3 bit_field unsigned size=3",
        "symbol _c8 bit_field unsigned size=8 offset=16",
        "symbol _far bit_field unsigned size=5 offset=5",
        "symbol _split bit_field unsigned size=20 offset=20", // in no word
        "symbol .eos end_of_tag struct tag=_c_tag size=24",
        "symbol _o_tag struct_tag struct size=160 align=32",
        "symbol _in struct_member struct tag=_t_tag offset=32 size=128",
        "symbol .eos end_of_tag struct tag=_o_tag size=160",
    });
    declare_chain({"symbol _t auto struct tag=_t_tag", "symbol _t2 auto struct tag=_t_tag",
                   "symbol _tp auto struct* tag=_t_tag", "symbol _b auto struct tag=_c_tag",
                   "symbol _o auto struct tag=_o_tag", "symbol _op auto struct* tag=_o_tag"});
  }

  // The statements, expanded. is_simplified: as they come from the file.
  Lines expanded(const Lines &input, bool is_simplified = true) {
    BB block{};
    state.first_bb = &block;
    state.temp_counter = 0;
    LIST *list = nullptr;
    for (const std::string &row : input) {
      NODE *tree = statement(row);
      list = list_cons(is_simplified ? simplify_tree(tree) : tree, list, 1, 1);
    }
    block.trees = list_reverse_onto(list, nullptr);
    expand_bitfields();
    Lines lines;
    for (const LIST *cell = block.trees; cell; cell = cell->next) {
      lines.push_back(line(cell->item));
      EXPECT_EQ(cell->line, 1);
    }
    state.first_bb = nullptr;
    return lines;
  }

  struct Row {
    const char *input;
    Lines output;
  };

  void expect_expansions(const std::vector<Row> &rows, bool is_simplified = true) {
    for (const Row &row : rows)
      EXPECT_EQ(expanded({row.input}, is_simplified), row.output) << "of " << row.input;
  }

private:
  void declare_chain(const Lines &rows) {
    for (const std::string &row : rows) {
      std::string error;
      SYM *sym = symbols.declare(row, 2, error);
      ASSERT_TRUE(sym) << row << ": " << error;
      sym->next = state.local_syms;
      state.local_syms = sym;
    }
  }
};

TEST_F(BitFieldTest, Masks) {
  using bit_fields::field_mask;
  EXPECT_EQ(field_mask(3, 0), 7u);
  EXPECT_EQ(field_mask(5, 27), 0xF8000000u);
  EXPECT_EQ(field_mask(32, 0), ~0u);
  EXPECT_EQ(field_mask(0, 5), 0u);
}

TEST_F(BitFieldTest, Reads) {
  expect_expansions({
      {"assign(_u, member(_t, _ua))",
       {"assign(_u, bit_and(deref(address:unsigned*(_t)), 7:unsigned))"}},
      {"assign(_u, member(_t, _uf))",
       {"assign(_u, bit_and(shift_right(deref(address:unsigned*(_t)), 8), 4095:unsigned))"}},
      {"assign(_u, member(_t, _top))",
       {"assign(_u, shift_right(deref(address:unsigned*(_t)), 28))"}},
      {"assign(_x, member(_t, _sb))",
       {"assign(_x, shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), 27))"}},
      {"assign(_x, arrow(_tp, _s20))",
       {"assign(_x, shift_right(multiply:int(deref(add(_tp:unsigned*, 12)), 4096), 12))"}},
      {"assign(_u, arrow(_tp, _word))", {"assign(_u, deref(add(_tp:unsigned*, 4)))"}},
      {"assign(_u, member(_b, _c8))", {"assign(_u, deref(add(address:uchar*(_b), 2)))"}},
      {"assign(_u, member(_b, _far))",
       {"assign(_u, bit_and(shift_right:unsigned(deref(address:ushort*(_b)), 5), "
        "31:unsigned))"}}, // straddles two bytes: a halfword
      {"assign(_u, member(member(_o, _in), _uf))",
       {"assign(_u, bit_and(shift_right(deref(add(address:unsigned*(_o), 4)), 8), "
        "4095:unsigned))"}},
      {"assign(_u, member(arrow(_op, _in), _uf))",
       {"assign(_u, bit_and(shift_right(deref(add(_op:unsigned*, 4)), 8), 4095:unsigned))"}},
  });
}

// A compound assignment whose target's address had effects has been left whole, and sequencing has
// taken the effects out since.
TEST_F(BitFieldTest, CompoundAssignmentsThatWereLeftWhole) {
  expect_expansions(
      {
          {"asg_divide(arrow(_tp, _uf), 4:unsigned)",
           {"assign(deref(_tp:unsigned*), bit_or(bit_and(deref(_tp:unsigned*), "
            "4293918975:unsigned), bit_and(shift_right(deref(_tp:unsigned*), 2), "
            "261888:unsigned)))"}},
          {"asg_add(arrow(_tp, _uf), arrow(_tp, _uf))",
           {"assign(deref(_tp:unsigned*), bit_or(bit_and(deref(_tp:unsigned*), "
            "4293918975:unsigned), bit_and(multiply(deref(_tp:unsigned*), 2:unsigned), "
            "1048064:unsigned)))"}},
          {"asg_subtract(arrow(_tp, _uf), arrow(_tp, _uf))",
           {"asg_and(deref(_tp:unsigned*), 4293918975:unsigned)"}},
          {"asg_xor(arrow(_tp, _uf), arrow(_tp, _uf))",
           {"asg_and(deref(_tp:unsigned*), 4293918975:unsigned)"}},
          {"asg_and(arrow(_tp, _uf), arrow(_tp, _uf))",
           {"bit_and(deref(_tp:unsigned*), 1048320:unsigned)"}},
          {"assign(arrow(_tp, _uf), bit_xor(arrow(_tp, _uf), -1:unsigned))",
           {"asg_xor(deref(_tp:unsigned*), 1048320:unsigned)"}},
      },
      false);
}

TEST_F(BitFieldTest, TestsNeedNoShifts) {
  expect_expansions({
      {"cbranch(member(_t, _uf), L1)",
       {"unless bit_and(deref(address:unsigned*(_t)), 1048320:unsigned) L1"}},
      {"cbranch(eq(member(_t, _uf), 0:unsigned), L1)",
       {"unless eq(bit_and(deref(address:unsigned*(_t)), 1048320:unsigned), 0:unsigned) L1"}},
      {"cbranch(lt(member(_t, _sb), 0), L1)",
       {"unless bit_and:int(deref(address:unsigned*(_t)), 128) L1"}},
      {"cbranch(ge(member(_t, _sb), 0), L1)",
       {"unless eq(bit_and:int(deref(address:unsigned*(_t)), 128), 0) L1"}},
      {"cbranch(ule(member(_t, _ua), 3:unsigned), L1)",
       {"unless eq(bit_and:int(deref(address:unsigned*(_t)), 4), 0) L1"}},
      {"cbranch(ugt(member(_t, _ua), 5:unsigned), L1)",
       {"unless eq(bit_and(deref(address:unsigned*(_t)), 6:unsigned), 6:unsigned) L1"}},
      {"cbranch(eq(member(_t, _uf), 5:unsigned), L1)",
       {"unless eq(bit_and(deref(address:unsigned*(_t)), 1048320:unsigned), 1280:unsigned) L1"}},
      {"cbranch(eq(sconv:int(member(_t, _uf)), 5), L1)",
       {"unless eq(bit_and(deref(address:unsigned*(_t)), 1048320:unsigned), 1280:unsigned) L1"}},
      {"cbranch(lt(sconv:int(member(_t, _uf)), 5), L1)",
       {"unless ult(bit_and(deref(address:unsigned*(_t)), 1048320:unsigned), 1280:unsigned) L1"}},
      {"cbranch(lt(member(_t, _sb), 5), L1)",
       {"unless lt(multiply:int(deref(address:unsigned*(_t)), 16777216), 671088640) L1"}},
  });
}

// What looks alike, but would be another comparison.
TEST_F(BitFieldTest, ComparisonsThatKeepTheirMeaning) {
  expect_expansions({
      // the field's top bit is the word's, and no sign
      {"cbranch(lt(sconv:int(member(_t, _top)), 3), L1)",
       {"unless ult(bit_and(deref(address:unsigned*(_t)), 4026531840:unsigned), "
        "805306368:unsigned) L1"}},
      // no value of the field
      {"cbranch(eq(member(_t, _sb), 100), L1)",
       {"unless eq(shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), 27), 100) "
        "L1"}},
      {"cbranch(ult(sconv:unsigned(member(_t, _sb)), 24:unsigned), L1)",
       {"unless ult(shift_right:unsigned(multiply:int(deref(address:unsigned*(_t)), 16777216), "
        "27), 24:unsigned) L1"}},
      // a negative constant, a variable
      {"cbranch(lt(sconv:int(member(_t, _uf)), -3), L1)",
       {"unless lt(bit_and(shift_right:int(deref(address:unsigned*(_t)), 8), 4095), -3) L1"}},
      {"cbranch(lt(sconv:int(member(_t, _uf)), _x), L1)",
       {"unless lt(bit_and(shift_right:int(deref(address:unsigned*(_t)), 8), 4095), _x) L1"}},
  });
}

TEST_F(BitFieldTest, TwoFields) {
  expect_expansions({
      {"cbranch(eq(member(_t, _ua), member(_t, _uf)), L1)",
       {"unless eq(bit_and(multiply(deref(address:unsigned*(_t)), 256:unsigned), 1792:unsigned), "
        "bit_and(deref(address:unsigned*(_t)), 1048320:unsigned)) L1"}},
      {"cbranch(lt(member(_t, _sb), member(_t, _s20)), L1)",
       {"unless lt(bit_and(shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), 15), "
        "-4096), multiply:int(deref(add(address:unsigned*(_t), 12)), 4096)) L1"}},
      {"cbranch(ult(member(_t, _uf), member(_t2, _uf)), L1)",
       {"unless ult(bit_and(deref(address:unsigned*(_t)), 1048320:unsigned), "
        "bit_and(deref(address:unsigned*(_t2)), 1048320:unsigned)) L1"}},
      {"cbranch(lt(member(_t, _sb), sconv:int(member(_t, _ua))), L1)",
       {"unless lt(bit_and(multiply:int(deref(address:unsigned*(_t)), 16777216), -134217728), "
        "bit_and(sconv:int(multiply(deref(address:unsigned*(_t)), 134217728:unsigned)), "
        "939524096)) L1"}},
      // -1 and 15 have the same bits
      {"cbranch(eq(member(_t, _sb), sconv:int(member(_t, _top))), L1)",
       {"unless eq(bit_and(multiply:int(deref(address:unsigned*(_t)), 16777216), -134217728), "
        "bit_and(shift_right(deref(address:unsigned*(_t)), 1), 2013265920:unsigned)) L1"}},
      {"cbranch(eq(member(_t, _sb), sconv:int(member(_t, _word))), L1)",
       {"unless eq(shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), 27), "
        "deref(add(address:unsigned*(_t), 4))) L1"}},
  });
}

TEST_F(BitFieldTest, StoresOfConstants) {
  expect_expansions({
      {"assign(member(_t, _uf), 0:unsigned)",
       {"asg_and(deref(address:unsigned*(_t)), 4293918975:unsigned)"}},
      {"assign(member(_t, _uf), 4095:unsigned)",
       {"asg_or(deref(address:unsigned*(_t)), 1048320:unsigned)"}},
      {"assign(member(_t, _one), 1:unsigned)",
       {"asg_or(deref(address:unsigned*(_t)), 1048576:unsigned)"}},
      {"assign(member(_t, _sb), -1)", {"asg_or(deref(address:unsigned*(_t)), 248:unsigned)"}},
      {"assign(member(_t, _uf), 77:unsigned)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4293919231:unsigned), 19712:unsigned))"}},
      {"assign(member(_t, _word), 77:unsigned)",
       {"assign(deref(add(address:unsigned*(_t), 4)), 77:unsigned)"}},
      {"assign(member(_b, _c8), 0:unsigned)",
       {"assign(deref(add(address:uchar*(_b), 2)), 0:uchar)"}},
  });
}

TEST_F(BitFieldTest, StoresOfValues) {
  expect_expansions({
      {"assign(member(_t, _uf), _u)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4293918975:unsigned), bit_and(multiply(_u, 256:unsigned), 1048320:unsigned)))"}},
      {"assign(member(_t, _uf), _uc)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4293918975:unsigned), multiply(sconv:unsigned(_uc), 256:unsigned)))"}}, // no sign is
                                                                                 // extended
      {"assign(member(_t, _s20), member(_t, _sb))",
       {"assign(deref(add(address:unsigned*(_t), 12)), "
        "bit_or(bit_and(deref(add(address:unsigned*(_t), 12)), 4293918720:unsigned), "
        "bit_and(shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), 27), "
        "1048575)))"}},
      {"assign(member(_t, _sb), member(_t, _s20))",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967047:unsigned), bit_and(multiply:int(deref(add(address:unsigned*(_t), 12)), 8), "
        "248)))"}},
      {"assign(member(_t, _word), _u)", {"assign(deref(add(address:unsigned*(_t), 4)), _u)"}},
      {"assign(member(_b, _c8), _u)", {"assign(deref(add(address:uchar*(_b), 2)), _u)"}},
      {"assign(member(_t, _uf), sconv:unsigned(_d))",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4293918975:unsigned), bit_and(multiply(sconv:unsigned(_d), 256:unsigned), "
        "1048320:unsigned)))"}},
      // the call may change the unit's other bits
      {"assign(member(_t, _uf), ucall:unsigned(address(_fn)))",
       {"assign(B$1, ucall:unsigned(address(_fn)))",
        "assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4293918975:unsigned), bit_and(multiply(B$1, 256:unsigned), 1048320:unsigned)))"}},
  });
}

TEST_F(BitFieldTest, CompoundStores) {
  expect_expansions({
      {"asg_or(member(_t, _uf), _u)",
       {"asg_or(deref(address:unsigned*(_t)), bit_and(multiply(_u, 256:unsigned), "
        "1048320:unsigned))"}},
      {"asg_and(member(_t, _uf), _u)",
       {"asg_and(deref(address:unsigned*(_t)), bit_or(multiply(_u, 256:unsigned), "
        "4293918975:unsigned))"}},
      {"asg_xor(member(_t, _sb), 3)", {"asg_xor(deref(address:unsigned*(_t)), 24:unsigned)"}},
      {"asg_add(member(_t, _one), _u)",
       {"asg_xor(deref(address:unsigned*(_t)), bit_and(multiply(_u, 1048576:unsigned), "
        "1048576:unsigned))"}},
      {"increment(member(_t, _one), 1:unsigned)",
       {"asg_xor(deref(address:unsigned*(_t)), 1048576:unsigned)"}},
      {"asg_add(member(_t, _ua), member(_t, _ua))",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967288:unsigned), bit_and(multiply(deref(address:unsigned*(_t)), 2:unsigned), "
        "6:unsigned)))"}},
      {"asg_xor(member(_t, _ua), member(_t, _ua))",
       {"asg_and(deref(address:unsigned*(_t)), 4294967288:unsigned)"}},
      {"asg_subtract(member(_t, _ua), member(_t, _ua))",
       {"asg_and(deref(address:unsigned*(_t)), 4294967288:unsigned)"}},
      {"asg_and(member(_t, _ua), member(_t, _ua))",
       {"bit_and(deref(address:unsigned*(_t)), 7:unsigned)"}},
      {"assign(member(_t, _ua), bit_xor(member(_t, _ua), -1:unsigned))",
       {"asg_xor(deref(address:unsigned*(_t)), 7:unsigned)"}},
      {"asg_multiply(member(_t, _ua), 4:unsigned)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967288:unsigned), bit_and(multiply(deref(address:unsigned*(_t)), 4:unsigned), "
        "4:unsigned)))"}},
      {"asg_divide(member(_t, _ua), 4:unsigned)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967288:unsigned), bit_and(shift_right(deref(address:unsigned*(_t)), 2:unsigned), "
        "1:unsigned)))"}},
      {"asg_divide(member(_t, _sb), 4)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967047:unsigned), "
        "bit_and(multiply(divide(shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), "
        "27), 4), 8), 248)))"}},
      {"asg_add(member(_t, _ua), _d)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967288:unsigned), "
        "bit_and(sconv:unsigned(add:double(bit_and(deref(address:unsigned*(_t)), 7:unsigned), "
        "_d)), 7:unsigned)))"}},
  });
}

TEST_F(BitFieldTest, ValuesOfStores) {
  expect_expansions({
      {"assign(_x, assign(member(_t, _sb), _y))",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967047:unsigned), bit_and(multiply(_y, 8), 248)))",
        "assign(_x, shift_right(multiply(_y, 134217728), 27))"}},
      {"assign(_x, assign(member(_t, _sb), 31))",
       {"asg_or(deref(address:unsigned*(_t)), 248:unsigned)", "assign(_x, -1)"}},
      {"assign(_x, assign(member(_t, _sb), _vol))",
       {"assign(B$1, _vol)",
        "assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967047:unsigned), bit_and(multiply(B$1, 8), 248)))",
        "assign(_x, shift_right(multiply(B$1, 134217728), 27))"}},
      {"assign(_x, increment(member(_t, _sb), 1))",
       {"assign(B$1, shift_right(multiply:int(deref(address:unsigned*(_t)), 16777216), 27))",
        "assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967047:unsigned), bit_and(add(sconv:int(deref(address:unsigned*(_t))), 8), 248)))",
        "assign(_x, B$1)"}},
      {"assign(_u, asg_or(member(_t, _ua), _v))",
       {"assign(B$1, bit_or(bit_and(deref(address:unsigned*(_t)), 7:unsigned), _v))",
        "assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967288:unsigned), bit_and(B$1, 7:unsigned)))",
        "assign(_u, bit_and(B$1, 7:unsigned))"}},
      {"cbranch(assign(member(_t, _ua), _u), L1)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4294967288:unsigned), bit_and(_u, 7:unsigned)))",
        "unless bit_and(_u, 7:unsigned) L1"}},
  });
}

TEST_F(BitFieldTest, VolatileFields) {
  expect_expansions({
      {"assign(_u, member(_t, _vf))",
       {"assign(_u, bit_and:unsigned(deref[volatile](add(address:uchar*(_t), 9)), "
        "15:unsigned))"}}, // the narrowest unit
      {"assign(_u, member(_t, _near))",
       {"assign(_u, bit_and(deref[volatile](add(address:unsigned*(_t), 8)), 7:unsigned))"}}, // shares
                                                                                             // a
                                                                                             // word
                                                                                             // with
                                                                                             // it
      {"assign(member(_t, _vf), 0:unsigned)",
       {"assign(deref[volatile](add(address:uchar*(_t), 9)), "
        "bit_and(deref[volatile](add(address:uchar*(_t), 9)), 240:uchar))"}},
      // an update reads the unit once and writes it once
      {"assign(_u, increment(member(_t, _vf), 1:unsigned))",
       {"assign(B$1, deref[volatile](add(address:uchar*(_t), 9)))",
        "assign(deref[volatile](add(address:uchar*(_t), 9)), bit_or:unsigned(bit_and(B$1, "
        "240:uchar), bit_and(add(sconv:unsigned(B$1), 1:unsigned), 15:unsigned)))",
        "assign(_u, bit_and:unsigned(B$1, 15:unsigned))"}},
      {"assign(_u, asg_add(member(_t, _vf), 3:unsigned))",
       {"assign(B$1, deref[volatile](add(address:uchar*(_t), 9)))",
        "assign(B$2, add(bit_and:unsigned(B$1, 15:unsigned), 3:unsigned))",
        "assign(deref[volatile](add(address:uchar*(_t), 9)), bit_or:unsigned(bit_and(B$1, "
        "240:uchar), bit_and(B$2, 15:unsigned)))",
        "assign(_u, bit_and(B$2, 15:unsigned))"}},
      {"asg_subtract(member(_t, _vf), _u)",
       {"assign(B$1, deref[volatile](add(address:uchar*(_t), 9)))",
        "assign(deref[volatile](add(address:uchar*(_t), 9)), bit_or:unsigned(bit_and(B$1, "
        "240:uchar), bit_and(subtract(sconv:unsigned(B$1), _u), 15:unsigned)))"}},
      {"asg_shift_left(member(_t, _vf), ucall:int(address(_fn)))",
       {"assign(B$1, ucall(address(_fn)))",
        "assign(B$2, deref[volatile](add(address:uchar*(_t), 9)))",
        "assign(deref[volatile](add(address:uchar*(_t), 9)), bit_or:unsigned(bit_and(B$2, "
        "240:uchar), bit_and(shift_left(bit_and:unsigned(B$2, 15:unsigned), B$1), "
        "15:unsigned)))"}},
      {"asg_or(member(_t, _vf), _u)",
       {"asg_or(deref[volatile](add(address:uchar*(_t), 9)), bit_and(_u, 15:unsigned))"}},
  });
}

TEST_F(BitFieldTest, BitsCountedFromTheOtherEnd) {
  options.opt_big_endian_bits = 1;
  expect_expansions({
      {"assign(_u, member(_t, _ua))",
       {"assign(_u, shift_right(deref(address:unsigned*(_t)), 29))"}},
      {"assign(member(_t, _uf), 77:unsigned)",
       {"assign(deref(address:unsigned*(_t)), bit_or(bit_and(deref(address:unsigned*(_t)), "
        "4278194175:unsigned), 315392:unsigned))"}},
  });
}

TEST_F(BitFieldTest, OnlyWhereThereAreFieldsAndAtLevelOne) {
  const Lines statement = {"assign(_u, member(_t, _uf))"};
  options.opt_level = 0;
  EXPECT_EQ(expanded(statement), statement);
  options.opt_level = 1;
  state.has_bit_fields = false;
  EXPECT_EQ(expanded(statement), statement);
}

TEST_F(BitFieldTest, AFieldThatNoUnitHoldsEndsTheRun) {
  testing::internal::CaptureStdout();
  EXPECT_ANY_THROW(expanded({"assign(_u, member(_b, _split))"}));
  EXPECT_NE(testing::internal::GetCapturedStdout().find("'_split' of 20 bits at bit 20"),
            std::string::npos);
}

// Chains run along the left operand, without a recursion for each.
TEST_F(BitFieldTest, LongChains) {
  NODE *chain = tree("member(_t, _ua)");
  for (int i = 0; i < 100000; ++i)
    chain = make_node(ADD, chain, make_icon(1, UNSIGNED), UNSIGNED);
  const NODE *root = bit_fields::expand_tree(chain, bit_fields::Use::VALUE);
  while (root->op == ADD)
    root = root->left;
  EXPECT_EQ(line(root), "bit_and(deref(add(pconv:unsigned*(address(_t)), 0)), 7:unsigned)");
}

} // namespace
} // namespace velkor
