// The value of every operator, with operand types that are equal and such that are not.
#include "run_text.h"

namespace velkor::run {
namespace {

const char *const variables = R"(
symbol _c extern char value
  -1:char
end_value
symbol _uc extern uchar value
  200:uchar
end_value
symbol _s extern short value
  -30000:short
end_value
symbol _us extern ushort value
  60000:ushort
end_value
symbol _i extern int value
  -7
end_value
symbol _j extern int value
  3
end_value
symbol _u extern unsigned value
  0xFFFFFFF9:unsigned
end_value
symbol _least extern int value
  0x80000000
end_value
symbol _f extern float value
  1.5:float
end_value
symbol _d extern double value
  -2.75
end_value
symbol _a extern int[] dims=4 size=128 value
  10
  11
  12
  13
end_value
symbol _p extern int* value
  add(address(_a), 4)
end_value
symbol _abs extern_declared int()
)";

struct Row {
  const char *format;
  const char *tree;
  const char *expected;
};

const Row rows[] = {
    // Integers wrap to the type of the node.
    {"%d", "add:char(_uc, 100)", "44"},
    {"%d", "add:uchar(_c, 2)", "1"},
    {"%d", "multiply:short(_s, _s)", "-5888"},
    {"%d", "subtract:int(_c, _us)", "-60001"},
    {"%d", "negate:uchar(_uc)", "56"},
    {"%d", "complement:ushort(_us)", "5535"},
    {"%d", "negate(_least)", "-2147483648"},
    {"%d", "bit_xor:int(_c, _uc)", "-201"},
    {"%d", "bit_and(_us, _c)", "60000"},
    {"%d", "bit_or(_s, _j)", "-29997"},
    // Division takes its sign from the node, the shift to the right from its left operand.
    {"%d", "divide(_i, 2)", "-3"},
    {"%d", "remainder(_i, 2)", "-1"},
    {"%u", "divide:unsigned(_i, 2)", "2147483644"},
    {"%u", "remainder:unsigned(_u, 10)", "9"},
    {"%d", "divide(_least, -1)", "-2147483648"},
    {"%d", "remainder(_least, -1)", "0"},
    {"%d", "shift_right(_i, 1)", "-4"},
    {"%u", "shift_right:unsigned(_i, 28)", "4294967295"},
    {"%d", "shift_right:int(_u, 28)", "15"},
    {"%d", "shift_right(_uc, 3)", "25"},
    {"%d", "shift_left(_j, 33)", "6"},
    {"%d", "shift_left:char(_j, 6)", "-64"},
    // Relations: signed words, unsigned ones where the balanced type says so.
    {"%d", "lt(_i, _j)", "1"},
    {"%d", "lt(_i, _u)", "0"},
    {"%d", "gt(_u, _j)", "1"},
    {"%d", "ult(_i, _j)", "0"},
    {"%d", "uge(_c, _us)", "1"},
    {"%d", "gt(_p, address(_a))", "1"},
    {"%d", "le(_f, _j)", "1"},
    {"%d", "ge(_d, _i)", "1"},
    {"%d", "lt(3, _i)", "0"},
    {"%d", "eq(_c, -1)", "1"},
    {"%d", "ne(_u, _i)", "0"},
    {"%d", "eq(_f, 1.5)", "1"},
    // Conversions.
    {"%d", "sconv:char(_us)", "96"},
    {"%d", "sconv:uchar(_i)", "249"},
    {"%d", "sconv:int(_d)", "-2"},
    {"%u", "sconv:unsigned(3000000000.0)", "3000000000"},
    {"%d", "sconv:uchar(-1.5)", "255"},
    {"%d", "sconv:int(1e300)", "0"},
    {"%g", "sconv:double(_u)", "4.29497e+09"},
    {"%g", "sconv:double(_i)", "-7"},
    {"%.9g", "sconv:double(sconv:float(0.1))", "0.100000001"},
    {"%d", "aconv:char(300)", "44"},
    {"%d", "isp2char:char*(5)", "5"},
    // Real numbers, mixed with integers in every way.
    {"%g", "add:double(_f, _i)", "-5.5"},
    {"%d", "add:int(_d, _i)", "-9"},
    {"%g", "divide:double(_j, 2)", "1.5"},
    {"%.9g", "sconv:double(divide:float(1.0:float, 3.0:float))", "0.333333343"},
    {"%.9g", "multiply:double(0.1, 3)", "0.3"},
    {"%g", "negate(_d)", "2.75"},
    {"%g", "abs(_d)", "2.75"},
    {"%d", "abs(_i)", "7"},
    {"%d", "square:char(_uc)", "64"},
    {"%g", "square:double(_f)", "2.25"},
    {"%g", "sqrt:double(16.0)", "4"},
    {"%g", "recip:double(_j)", "0.333333"},
    {"%d", "logical_not(_d)", "0"},
    // Addresses: the integer of + and - is bytes; PMCONV and PVCONV scale by bits.
    {"%d", "deref(add:int*(_p, 8))", "13"},
    {"%d", "deref(subtract:int*(_p, pmconv(1, 32)))", "10"},
    {"%d", "deref(add:int*(_p, pmconv(divide(_j, 2), 32)))", "12"},
    {"%d", "pvconv(subtract:int(_p, address(_a)), 32)", "1"},
    {"%d", "pvconv(-11, 24)", "-3"},
    {"%d", "pmconv(_j, -12)", "-3"},
    {"%d", "deref:uchar(add:uchar*(pconv:uchar*(address(_u)), 3))", "255"},
    {"%d", "deref:short(pconv:short*(address(_i)))", "-7"},
    // Control inside of trees.
    {"%d", "logical_and(_i, ne(_j, 3))", "0"},
    {"%d", "logical_or(_d, divide(1, 0))", "1"},
    {"%d", "conditional(_f, alternatives(_c, _j))", "-1"},
    {"%d", "conditional(logical_and(_i, logical_not(_j)), alternatives(1, logical_or(0, _u)))",
     "1"},
    {"%d", "comma_op(assign(_j, 5), add(_j, 1))", "6"},
    {"%d", "nassert(assign(_j, 5))", "0"},
    {"%d", "comma_op(nassert(assign(_j, 5)), _j)", "3"},
    {"%d", "identity(_i)", "-7"},
    {"%d", "lcon[\"-12\"]", "-12"},
    // Assignments yield what the target holds; op= computes in the balanced type.
    {"%d", "assign(_c, 300)", "44"},
    {"%d", "assign(_uc, _d)", "254"},
    {"%d", "asg_add(_c, 200)", "-57"},
    {"%d", "asg_multiply(_i, _f)", "-10"},
    {"%g", "asg_divide(_d, 2)", "-1.375"},
    {"%d", "asg_divide(_i, 2:unsigned)", "2147483644"},
    {"%d", "asg_shift_right(_s, 4)", "-1875"},
    {"%d", "asg_shift_left(_uc, 1)", "144"},
    {"%d", "asg_remainder(_us, 7)", "3"},
    {"%d", "asg_xor(_i, -1)", "6"},
    {"%d", "deref(asg_add(_p, 4))", "12"},
    {"%d", "comma_op(increment(_p, 4), deref(_p))", "12"},
    {"%d", "deref(decrement(_p, 4))", "11"},
    {"%d", "add:int(multiply:int(increment(_uc, 100), 1000), _uc)", "200044"},
    {"%g", "sconv:double(decrement(_f, 1.0:float))", "1.5"},
    // Calls by name and through addresses.
    {"%d", "xcall[\"abs\"](_i)", "7"},
    {"%d", "icall[\"labs\"](-8)", "8"},
    {"%d", "call:int(address(_abs), -9)", "9"},
    {"%d", "deref(memcpy:int*(comma(comma(address(_a), _p), 4)))", "11"},
};

TEST(Values, Operators) {
  for (const Row &row : rows) {
    const Outcome outcome = run_text(main_with(print(row.format, row.tree), variables));
    EXPECT_EQ(outcome.error, "") << row.tree;
    EXPECT_EQ(outcome.output, std::string(row.expected) + "\n") << row.tree;
  }
}

// Evaluation must not run over the host's stack, whichever way a tree leans.
TEST(Values, DeepTrees) {
  constexpr int depth = 40000;
  file::IcodeFile file;
  ASSERT_EQ(text::parse_text(main_with("7: assign(_i, 1)\n8: assign(_i, 1)", variables), file), "");
  int leaning = 0;
  for (file::Record &record : file.records) {
    auto *statement = std::get_if<file::Statement>(&record);
    if (statement == nullptr || file.nodes[statement->tree].op != ASSIGN) continue;
    file::Node one;
    one.op = ICON;
    one.type = INT;
    one.value = 1;
    file::Node difference;
    difference.op = SUBTRACT;
    difference.type = INT;
    file::NodeIndex tree = file.add(one);
    for (int i = 0; i < depth; ++i) {
      const bool left = leaning == 0;
      const file::NodeIndex leaf = file.add(one);
      difference.left = left ? tree : leaf;
      difference.right = left ? leaf : tree;
      tree = file.add(difference);
    }
    file.nodes[statement->tree].right = tree;
    ++leaning;
  }
  ASSERT_EQ(leaning, 2);
  const RunResult result = run_program(file, {});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.status, 0);
}

} // namespace
} // namespace velkor::run
