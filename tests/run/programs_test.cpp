// Statements, storage, structures, and the forms that only the optimizer writes.
#include "run_text.h"

namespace velkor::run {
namespace {

const char *const structures = R"(
symbol _s struct_tag struct size=96
symbol _x struct_member int
symbol _y struct_member short offset=32
symbol _low bit_field int size=3 offset=48
symbol _high bit_field unsigned size=12 offset=51
symbol _z struct_member int offset=64
symbol .eos end_of_tag struct tag=_s
symbol _g extern struct tag=_s
symbol _h extern struct tag=_s
)";

TEST(Programs, BitFieldsStraddleBytesAndKeepTheirNeighbours) {
  const Outcome outcome =
      run_text(main_with("1: assign(member(_g, _y), -1:short)\n"
                         "2: assign(member(_g, _z), -1)\n" +
                             print("%d", "assign(member(_g, _low), 12)") +
                             print("%d", "asg_add(member(_g, _high), 4097)") +
                             print("%d", "decrement(member(_g, _high), 2)") +
                             print("%d", "member(_g, _high)") + print("%d", "member(_g, _low)") +
                             print("%d", "member(_g, _y)") + print("%d", "member(_g, _z)"),
                         structures));
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.output, "-4\n1\n1\n4095\n-4\n-1\n-1\n");
}

TEST(Programs, StructuresByValue) {
  const std::string functions = std::string(structures) + R"(
symbol _make extern struct() tag=_s
begin_function 1
  symbol _v register_parameter int
  symbol _t argument struct tag=_s
  symbol _w register_parameter char
  end_parameters 1
  symbol _v auto int
  symbol _w auto char
  end_locals 1
  1: pcomma(assign(_v, _v@1.0), assign(_w, _w@1.2))
  2: assign(member(_t, _x), add(member(_t, _x), add(_v, _w)))
  3: return(_make, _t)
end_function 4
)";
  const std::string made =
      "stcall[tag=_s](address(_make), comma(comma(5, starg[tag=_s](_h)), -2:char))";
  const Outcome outcome = run_text(
      main_with("1: assign(member(_h, _x), 100)\n"
                "2: stasg[tag=_s](_g, " +
                    made + ")\n" + print("%d", "member(_g, _x)") + print("%d", "member(_h, _x)") +
                    print("%d", "member(" + made + ", _x)") +
                    print("%d", "member(conditional(0, alternatives(_h, _g)), _x)") +
                    "3: arasg[size=96](_h, address(_g))\n" + print("%d", "member(_h, _x)"),
                functions));
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.output, "103\n100\n103\n103\n103\n");
}

TEST(Programs, VariadicArgumentsByTheirSlots) {
  const std::string function = R"(
symbol _sum static double()
begin_function 1
  symbol _n variadic_argument int
  end_parameters 1
  symbol _n auto int
  symbol _list auto char*
  symbol _total auto double
  end_locals 1
  1: assign(_n, _n@1.0)
  2: assign(_list, add:char*(pconv:char*(argref(_n@1.0)), 4))
  3: assign(_total, 0.0)
  4: cbranch(gt(_n, 0), L2)
L1:
  5: asg_add(_total, deref:double(pconv:double*(subtract:char*(asg_add:char*(_list, 8), 8))))
  6: asg_add(_total, deref:char(pconv:char*(subtract:char*(asg_add:char*(_list, 4), 4))))
  7: cbranch(gt(asg_subtract(_n, 1), 0), L2)
  8: branch(L1)
L2:
  9: return(_sum, _total)
end_function 9
)";
  const Outcome outcome = run_text(main_with(
      print("%g", "call(address(_sum), comma(comma(comma(comma(2, 1.5), -3), 0.25), 400))"),
      function));
  EXPECT_EQ(outcome.error, "");
  // The last argument is read through its low byte, as a char of -112.
  EXPECT_EQ(outcome.output, "-113.25\n");
}

TEST(Programs, SwitchesAndMachineLoops) {
  const std::string locals = "symbol _k auto int\nsymbol _n auto int\n";
  const Outcome outcome = run_text(main_with(R"(
  1: assign(_n, 0)
  1: assign(_k, 4)
  2: loop(0, 1)
  3: switch(_k, comma(comma(case(0, L5), case(2, L6)), case(3, L7)))
  4: asg_add(_n, 1)
  4: branch(L8)
L5:
  5: asg_add(_n, 10)
L6:
  6: asg_add(_n, 100)
  6: branch(L8)
L7:
  7: asg_add(_n, 1000)
L8:
  8: endloop(_k, L1)
  9: switch(-5, comma(comma(case(-5, L9), case(100000, L10)), default(L10)))
L9:
)" + print("%d", "_n") + "L10:\n",
                                             "", locals));
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.output, "1212\n"); // 4, 3, 2, 1, 0
}

// Values belong to names: the record with the value may be a declaration, and a member of the
// group has its place inside of "$$".
TEST(Programs, ObjectsOfOptimizedFilesByName) {
  RunOptions options;
  options.dump_globals = true;
  const std::string declarations = R"(
symbol _late static_declared int value
  41
end_value
symbol _in_group extern_declared short value
  7:short
end_value
symbol .group group struct size=64
symbol _other extern_in_group int
symbol _in_group extern_in_group short offset=32
symbol .eog end_of_group struct tag=.group
symbol $$ static struct tag=.group size=64
symbol _late static int
)";
  const Outcome outcome = run_text(
      main_with(print("%d", "asg_add(_late@0.1, 1)") + "8: assign(member($$, _other), 5)\n" +
                    print("%d", "deref:short(pconv:short*(add(pconv:char*(address($$)), 4)))"),
                declarations),
      options);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.output,
            "42\n7\n_in_group = 07 00\n_late = 2a 00 00 00\n_other = 05 00 00 00\n");
}

TEST(Programs, InitialValuesByCursor) {
  const std::string declarations = R"(
symbol _m extern char[] dims=12 size=96 value
  1:char
  skip[value=24]
  sconv:int(add:int*(address(_m), 2))
  1.5:float
end_value
symbol _w extern char[] dims=4 size=32 value
  add:char*(pconv:char*(address(_m)), 4)
end_value
symbol _t extern char[] dims=4 size=32 value
  "ab\0":char[]
end_value
)";
  const Outcome values = run_text(
      main_with(print("%d", "eq(deref:int(pconv:int*(add(address(_m), 4))), "
                            "add:int(sconv:int(address(_m)), 2))") +
                    print("%g", "sconv:double(deref:float(pconv:float*(add(address(_m), 8))))") +
                    print("%d", "eq(deref:char*(pconv:char**(address(_w))), "
                                "add(address(_m), 4))") +
                    print("%s", "address(_t)"),
                declarations));
  EXPECT_EQ(values.error, "");
  EXPECT_EQ(values.output, "1\n1.5\n1\nab\n");
}

// One object for one symbol in each activation, statics for the whole run.
TEST(Programs, RecursionAndStatics) {
  const std::string function = R"(
symbol _down static int()
begin_function 1
  symbol _n register_parameter short
  end_parameters 1
  symbol _n auto short
  symbol _r virtual_register int offset=1
  symbol _calls$1 static int value
    100
  end_value
  end_locals 1
  1: assign(_n, _n@1.0)
  2: asg_add(_calls$1, 1)
  3: cbranch(_n, L1)
  4: assign(_r, call(address(_down), sconv:short(subtract:int(_n, 1))))
  5: return(_down, add:int(_r, _n))
L1:
  6: return(_down, _calls$1)
end_function 6
)";
  const Outcome outcome =
      run_text(main_with(print("%d", "call(address(_down), 10:short)"), function));
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.output, "166\n");
}

TEST(Programs, VolatileAccessesAreTraced) {
  RunOptions options;
  options.trace_volatile = true;
  const Outcome outcome =
      run_text(main_with("1: assign(_v, add(_v, 1:short))\n"
                         "2: asg_add(deref[volatile](_q), 2)\n"
                         "3: assign(_w, 1)\n",
                         "symbol _v extern short volatile\n"
                         "symbol _t extern int[] dims=2 size=64 squal=2\n"
                         "symbol _q extern int* value\n  add(address(_t), 4)\nend_value\n",
                         "symbol _w auto int volatile\n"),
               options);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.error_output, "volatile: r _v 16\nvolatile: w _v 16\n"
                                  "volatile: r _t+4 32\nvolatile: w _t+4 32\n"
                                  "volatile: w _w 32\n");
}

TEST(Programs, CountsOfWhatIsExecuted) {
  RunOptions options;
  options.count = true;
  const std::string loop = R"(
  1: assign(_k, 10)
L1:
  2: asg_add(deref(add:int*(_p, pmconv(_k, 32))), 3)
  3: cbranch(gt(asg_subtract(_k, 1), 0), L2)
  4: branch(L1)
L2:
)";
  const Outcome outcome =
      run_text(main_with(loop,
                         "symbol _a extern int[] dims=20 size=640\n"
                         "symbol _p extern int* value\n  address(_a)\nend_value\n",
                         "symbol _k auto int\n"),
               options);
  ASSERT_EQ(outcome.error, "");
  const std::string json = counts_as_json(outcome.counts);
  EXPECT_NE(json.find("\"multiplication\": 10, "), std::string::npos) << json;
  EXPECT_NE(json.find("\"loads\": 20, "), std::string::npos) << json;  // the pointer and the word
  EXPECT_NE(json.find("\"stores\": 11, "), std::string::npos) << json; // and the pointer's value
  EXPECT_NE(json.find("\"comparison\": 10, "), std::string::npos) << json;
  EXPECT_NE(json.find("\"branches_taken\": 10, "), std::string::npos) << json;
}

} // namespace
} // namespace velkor::run
