#include "diag/infix.h"

#include "diag/constant_text.h"
#include "run_fixture.h"

#include <array>
#include <string>

namespace velkor {
namespace {

constexpr TypeWord int_pointer = pointer_to(INT);
constexpr TypeWord char_pointer = pointer_to(CHAR);
constexpr TypeWord function_of_int = derive(INT, FUNCTION_RETURNING);

struct Row {
  NODE *tree;
  const char *text;
};

class InfixTest : public RunTest {
protected:
  SYM *x_sym = symbol("_x", INT);
  SYM *p_sym = symbol("_p", int_pointer);
  NODE *x() { return name(x_sym); }
  NODE *p() { return name(p_sym); }
  NODE *variable(const char *text, TypeWord type = INT) { return name(symbol(text, type)); }
  NODE *a() { return variable("_a"); }
  NODE *b() { return variable("_b"); }
  NODE *c() { return variable("_c"); }
  NODE *address_of(NODE *object) {
    return node(ADDRESS, object, nullptr, pointer_to(object->type));
  }
  NODE *called(const char *text) { return address_of(variable(text, function_of_int)); }
  NODE *text_node(Opcode op, const char *text, TypeWord type, std::int32_t number = 0) {
    NODE *result = node(op, nullptr, nullptr, type);
    result->u.lval = number;
    result->aux.text = copy_text(1, text);
    return result;
  }
  NODE *string(std::string_view bytes) {
    NODE *result = node(SCON, nullptr, nullptr, char_pointer);
    result->aux.text = copy_text(1, bytes);
    result->u.lval = static_cast<std::int32_t>(bytes.size()) + 1;
    return result;
  }
  SYM *array(const char *text, TypeWord element, std::initializer_list<std::uint32_t> dims) {
    TypeWord type = element;
    for (std::size_t i = 0; i < dims.size(); ++i)
      type = derive(type, ARRAY_OF);
    SYM *sym = symbol(text, type);
    sym->dims = static_cast<std::uint32_t *>(zalloc(0, sizeof(std::uint32_t) * dims.size()));
    for (const std::uint32_t dimension : dims)
      sym->dims[sym->ndims++] = dimension;
    return sym;
  }
  // What U& of an array yields: a pointer to its first element.
  NODE *start_of(SYM *sym) {
    return node(ADDRESS, name(sym), nullptr, pointer_to(underived(sym->stype)));
  }
  NODE *scaled(NODE *index, std::int32_t bytes) { return node(MULTIPLY, index, icon(bytes)); }
  NODE *plus(NODE *address, NODE *offset) { return node(ADD, address, offset, address->type); }
  NODE *access(NODE *address, TypeWord type) {
    NODE *result = node(DEREF, address, nullptr, type);
    result->depnum = type_width(type);
    return result;
  }
  static void check(std::initializer_list<Row> rows) {
    for (const Row &row : rows)
      EXPECT_STREQ(tree2infix(row.tree), (std::string(row.text) + ";").c_str());
  }
};

TEST_F(InfixTest, ParenthesesOnlyWhereTheMeaningNeedsThem) {
  check({
      {node(ASSIGN, x(), node(ADD, a(), b())), "x = a+b"},
      {node(MULTIPLY, node(ADD, a(), b()), c()), "(a+b)*c"},
      {node(ADD, node(MULTIPLY, a(), b()), c()), "a*b+c"},
      {node(SUBTRACT, a(), node(SUBTRACT, b(), c())), "a-(b-c)"},
      {node(SUBTRACT, node(SUBTRACT, a(), b()), c()), "a-b-c"},
      {node(ASG_MULTIPLY, a(), node(ASG_MULTIPLY, b(), c())), "a *= b *= c"},
      {node(STASG, node(STASG, a(), b()), c()), "(a = b) = c"},
      {node(ASSIGN, a(), node(ASSIGN, b(), c())), "a = (b = c)"},
      {node(LOGICAL_OR, node(LOGICAL_AND, a(), b()), c()), "a && b || c"},
      {node(LOGICAL_AND, a(), node(LOGICAL_OR, b(), c())), "a && (b || c)"},
      {node(ULT, node(SHIFT_LEFT, a(), b()), c()), "a<<b < c"},
      {node(LOGICAL_NOT, node(BIT_AND, a(), b())), "!(a&b)"},
      {node(EXPT, node(NEGATE, a()), b()), "(-a)#b"},
      {node(RECIP, a()), "1/a"},
      {node(MEMBER, access(p(), STRUCT), b()), "(*p).b"},
      {node(ARROW, p(), b()), "p->b"},
      {node(CONDITIONAL, a(),
            node(ALTERNATIVES, b(), node(CONDITIONAL, c(), node(ALTERNATIVES, a(), b())))),
       "(a) ? b : (c) ? a : b"},
      {node(COMMA_OP, node(ASSIGN, a(), b()), node(ASSIGN, b(), a())),
       "PARALLEL ASSIGNMENTS: a = b , b = a"},
      {node(PCOMMA, node(ASSIGN, a(), b()), node(ASSIGN, b(), a())), "a = b, b = a"},
      {node(ADD, nullptr, a()), "(nil)+a"},
      {nullptr, "(nil)"},
  });
}

TEST_F(InfixTest, ConstantsShowAsTheirUseAsks) {
  check({
      {make_icon(-5, INT), "(-5)"},
      {node(MULTIPLY, a(), icon(-5)), "a*(-5)"},
      {node(ADD, a(), icon(-5)), "a-5"},
      {node(ADD, a(), icon(INT32_MIN)), "a-2147483648"},
      {node(ADD, a(), make_icon(-1, UNSIGNED)), "a+0xffffffffu"},
      {node(BIT_AND, a(), icon(7)), "a&7"},
      {node(BIT_AND, a(), icon(8)), "a&0x8"},
      {node(BIT_OR, a(), make_icon(255, UNSIGNED)), "a|0xffu"},
      {node(ASG_XOR, a(), icon(16)), "a ^= 0x10"},
      {node(BIT_AND, a(), icon(-8)), "a&(-8)"},
      {node(EQ, node(BIT_AND, a(), icon(96)), icon(64)), "(a&0x60) == 0x40"},
      {node(NE, node(ASSIGN, x(), node(BIT_OR, a(), b())), icon(64)), "(x = a|b) != 0x40"},
      {node(LT, node(BIT_AND, a(), b()), icon(64)), "(a&b) < 64"},
      {node(EQ, a(), icon(64)), "a == 64"},
      {text_node(FCON, "+1.5", FLOAT), "1.5F"},
      {text_node(FCON, "+1.5", DOUBLE), "1.5"},
      {node(EXPT, text_node(FCON, "-1.5", LONG_DOUBLE), a()), "(-1.5L)#a"},
  });
}

TEST_F(InfixTest, ConversionsAndMarkers) {
  NODE *marked = node(CSE_ORIG, a(), node(ADD, a(), b()));
  check({
      {node(SCONV, node(ADD, a(), b()), nullptr, CHAR), "(char)(a+b)"},
      {node(SCONV, icon(64), nullptr, char_pointer), "(char*)0x40"},
      {node(PCONV, icon(64), nullptr, char_pointer), "(char*)0x40"},
      {node(PCONV, icon(0), nullptr, char_pointer), "NULL"},
      {node(SCONV, icon(0), nullptr, char_pointer), "(char*)0x0"},
      {node(ISP2CHAR, p(), nullptr, INT), "(char*)p"},
      {node(ISP2CHAR, p(), nullptr, UNSIGNED_SHORT), "(unsigned char*)p"},
      {node(ACONV, node(ADD, a(), b()), nullptr, INT), "a+b"},
      {node(ACONV, a(), nullptr, SHORT), "(short)a"},
      {node(IDENTITY, node(ADD, a(), b())), "{a+b}"},
      {node(MULTIPLY, marked, c()), "(a+b)*c"},
      {node(CSE_DUPE, a(), node(ADD, a(), b())), "a"},
      {node(DDNODE, a()), "a"},
      {node(DDNODE, nullptr), "DDNODE"},
      {node(ARGREF, a()), "&a"},
      {node(PMCONV, a(), icon(32)), "a*4"},
      {node(PMCONV, a(), icon(-12)), "a*(-1)"},
      {node(PVCONV, node(SUBTRACT, p(), p()), icon(32)), "(p-p)/4"},
  });
}

TEST_F(InfixTest, StepsOfATypeNeedNoAmount) {
  SYM *record = symbol("_s", STRUCT);
  record->tag = symbol("_tag", STRUCT, 0, C_STRTAG);
  record->tag->size = 96;
  SYM *record_pointer = symbol("_sp", pointer_to(STRUCT));
  record_pointer->tag = record->tag;
  check({
      {node(INCREMENT, x(), icon(1)), "x++"},
      {node(DECREMENT, x(), icon(3)), "x--{3}"},
      {node(INCREMENT, p(), icon(4), int_pointer), "p++"},
      {node(INCREMENT, p(), icon(1), int_pointer), "p++{1}"},
      {node(INCREMENT, name(record_pointer), icon(12)), "sp++"},
      {node(ASG_ADD, x(), icon(1)), "++x"},
      {node(ASG_SUBTRACT, p(), icon(4), int_pointer), "--p"},
      {node(ASG_ADD, p(), icon(8), int_pointer), "p += 8"},
      {node(MULTIPLY, node(ASG_ADD, x(), icon(1)), a()), "(++x)*a"},
      {node(ASG_SUBTRACT, x(), a()), "x -= a"},
  });
}

TEST_F(InfixTest, SubscriptsComeFromScaledAddresses) {
  SYM *line = array("_v", INT, {10});
  SYM *plane = array("_m", INT, {3, 4});
  SYM *text = array("_s", CHAR, {8});
  NODE *row = node(PCONV, plus(start_of(plane), scaled(a(), 16)), nullptr, int_pointer);
  check({
      {access(p(), INT), "*p"},
      {access(plus(p(), scaled(a(), 4)), INT), "p[a]"},
      {access(plus(p(), icon(8)), INT), "p[2]"},
      {access(plus(p(), icon(-4)), INT), "p[-1]"},
      {access(plus(p(), icon(5)), INT), "*(p+5)"},
      {access(start_of(line), INT), "v[0]"},
      {access(plus(start_of(line), scaled(node(ADD, a(), b()), 4)), INT), "v[a+b]"},
      {access(plus(plus(start_of(line), scaled(a(), 4)), icon(4)), INT), "v[a+1]"},
      {access(plus(plus(start_of(line), scaled(a(), 8)), icon(-4)), INT), "v[a*2-1]"},
      {access(plus(start_of(line), node(SHIFT_LEFT, a(), icon(2))), INT), "v[a]"},
      {access(plus(row, scaled(b(), 4)), INT), "m[a][b]"},
      {access(plus(start_of(plane), scaled(b(), 4)), INT), "m[0][b]"},
      {access(plus(start_of(plane), icon(24)), INT), "m[1][2]"},
      {access(plus(start_of(plane), scaled(a(), 16)), INT), "m[a][0]"},
      {access(plus(start_of(text), a()), CHAR), "s[a]"},
      {access(plus(start_of(text), scaled(a(), 4)), INT), "((int*)s)[a]"},
      {access(plus(start_of(line), icon(2)), INT), "*(&v+2)"},
      {access(address_of(x()), INT), "*&x"},
      {node(MEMBER, access(plus(p(), scaled(a(), 4)), INT), b()), "(p[a]).b"},
  });
}

TEST_F(InfixTest, Calls) {
  NODE *structure = node(STARG, a(), nullptr, STRUCT);
  NODE *extern_call = node(XCALL, node(COMMA, a(), b()));
  extern_call->u.name = copy_text(1, "abs");
  NODE *bare_call = node(UXCALL, nullptr);
  bare_call->u.name = copy_text(1, "rand");
  NODE *arguments = node(COMMA, node(COMMA, a(), structure), node(ASSIGN, b(), c()));
  check({
      {node(UCALL, called("_f")), "f()"},
      {node(CALL, called("_f"), arguments), "f(a, a, b = c)"},
      {node(CALL, called("_f"), node(COMMA_OP, a(), b())), "f((a , b))"},
      {node(CALL, variable("_g", pointer_to(function_of_int)), a()), "(*g)(a)"},
      {node(USTCALL, called("_f"), nullptr, STRUCT), "f()"},
      {node(STCALL, called("_f"), a(), STRUCT), "f(a)"},
      {extern_call, "abs(a, b)"},
      {bare_call, "rand()"},
      {node(SQRT, a()), "sqrt(a)"},
      {node(ASSERT, node(COMMA, node(GT, a(), b()), string("a>b"))), "assert(a > b, \"a>b\")"},
      {node(NASSERT, a()), "assert(a)"},
      {node(ABS, a()), "ABS(a)"},
  });
}

TEST_F(InfixTest, Statements) {
  NODE *target = make_labelref(7);
  NODE *resolved = make_labelref(7);
  resolved->aux.label = label_new(9, nullptr, nullptr);
  NODE *loop_test = node(ENDLOOP, x(), make_labelref(3));
  NODE *machine_loop = make_if(node(ENDLOOP, x()), 1, 2);
  NODE *pragma = node(PPRAGMA, nullptr, nullptr, VOID);
  pragma->u.lval = 6 << 16 | 3 << 8 | 2;
  pragma->aux.text = copy_text(1, std::string_view("ab\0cd\0", 6));
  check({
      {node(BRANCH, target), "goto g7"},
      {node(BRANCH, resolved), "goto g9"},
      {make_labeldef(label_new(4, nullptr, nullptr)), "g4"},
      {make_if(node(LT, a(), b()), 1, 2), "if ( a < b ) goto g1; else goto g2"},
      {machine_loop, "if ( --x >= 0 ) goto g1; else goto g2"},
      {loop_test, "if ( --x >= 0 ) goto g3"},
      {node(LOOP, x(), icon(3)), "LOOP(x):"},
      {node(INITLOOP, x(), icon(3)), "x INITLOOP 3"},
      {node(CBRANCH, node(LT, a(), b()), target), "if ( a >= b ) goto g7"},
      {node(CBRANCH, node(UGT, a(), b()), target), "if ( a <= b ) goto g7"},
      {node(CBRANCH, node(LOGICAL_NOT, a()), target), "if ( a ) goto g7"},
      {node(CBRANCH, node(EQ, node(BIT_AND, a(), b()), icon(0)), target), "if ( a&b ) goto g7"},
      {node(CBRANCH, node(EQ, a(), b()), target), "if ( a != b ) goto g7"},
      {node(CBRANCH, node(BIT_AND, a(), b()), target), "if ( !(a&b) ) goto g7"},
      {node(CBRANCH, node(DDNODE, a()), target), "if ( !a ) goto g7"},
      {node(SWITCH, a(), node(DEFAULT, make_labelref(1))), "switch ( a ) {...}"},
      {node(RETURN, variable("_f", function_of_int), node(ADD, a(), b())), "return a+b"},
      {node(URETURN, variable("_f", function_of_int)), "return"},
      {node(ARASG, a(), string("x")), "a[] = {...}"},
      {make_asm('$', "mov \"r\""), R"(asm("mov \"r\""))"},
      {pragma, "PRAGMA #3 (ab, cd)"},
  });
}

// The driver hands in the simplifier; here, an opposite that shows what becomes of the copy.
TEST_F(InfixTest, OppositesAreMadeOfACopy) {
  struct Opposite {
    Opposite() {
      negate_for_text = [](NODE *condition) {
        condition->left->op = COMPLEMENT;
        return make_node(EQ, condition, make_icon(0, INT), INT);
      };
    }
    ~Opposite() { negate_for_text = nullptr; }
  };
  const Opposite opposite;
  NODE *target = make_labelref(7);
  NODE *branch = node(CBRANCH, node(BIT_AND, node(NEGATE, a()), b()), target);
  NODE *repeated = node(CSE_DUPE, a(), node(ADD, a(), b()));
  check({
      {branch, "if ( (~a&b) == 0 ) goto g7"},
      {branch, "if ( (~a&b) == 0 ) goto g7"}, // the tree itself has not changed
      {node(CBRANCH, node(LT, a(), b()), target), "if ( a >= b ) goto g7"},
      {node(CBRANCH, node(BIT_AND, node(DDNODE, a()), b()), target), "if ( !(a&b) ) goto g7"},
      {node(CBRANCH, node(BIT_AND, b(), repeated), target), "if ( !(b&a) ) goto g7"},
  });
}

TEST_F(InfixTest, StringsAreCut) {
  using namespace std::string_view_literals;
  check({
      {string("a\n\t\f\b\r\\\""), R"("a\n\t\f\b\r\\\"")"},
      {string("\0a\x01"
              "7\xFF"sv),
       R"("\0a\0017\377")"},
      {string("\x1B"sv), R"("\33")"},
      {string(""), R"("")"},
      {string(std::string(500, 'z')), ("\"" + std::string(199, 'z') + "...\"").c_str()},
  });
}

TEST_F(InfixTest, NamesShowReadableAndFromTheirStandIn) {
  NODE *renamed = variable("_x$3");
  renamed->aux.sym = x_sym;
  NODE *unknown = node(NAME, nullptr);
  check({{renamed, "x"}, {variable("_y$3"), "y"}, {variable("C$12"), "C$12"}, {unknown, "(nil)"}});
}

TEST_F(InfixTest, LongTextsEndAtTheLimit) {
  NODE *right_leaning = a();
  NODE *left_leaning = a();
  NODE *nested = a();
  constexpr int levels = 50000;
  for (int i = 0; i < levels; ++i) {
    right_leaning = node(ADD, b(), right_leaning);
    left_leaning = node(ADD, left_leaning, b());
    nested = node(ACONV, node(LOGICAL_NOT, nested), nullptr, INT);
  }
  for (NODE *tree : {right_leaning, left_leaning, nested}) {
    const std::string text = tree2infix(tree);
    EXPECT_TRUE(text.ends_with("...;")) << text;
    EXPECT_GT(text.size(), infix_limit);
    EXPECT_LT(text.size(), infix_limit + 16);
  }
  EXPECT_TRUE(std::string(tree2infix(left_leaning)).starts_with("a+b+b+"));

  // One name is as long as a file can have it: the text goes on behind the limit, but ends.
  const std::string long_name(4000, 'n');
  EXPECT_EQ(tree2infix(variable(long_name.c_str())), long_name + ";");
  NODE *extern_call = node(UXCALL, nullptr);
  extern_call->u.name = copy_text(1, std::string(9000, 'n'));
  EXPECT_LT(std::string(tree2infix(extern_call)).size(), infix_text_size);
  EXPECT_TRUE(std::string(tree2infix(extern_call)).ends_with("n...;"));
}

TEST_F(InfixTest, ATextBeingMadeIsNotDisturbed) {
  const std::string before = tree2infix(x());
  {
    const InfixTextClaim claim;
    EXPECT_STREQ(tree2infix(a()), "+*+*+ tree2infix called recursively +*+*+");
    EXPECT_STREQ(tree2infix(a()), "+*+*+ tree2infix called recursively +*+*+");
  }
  EXPECT_EQ(tree2infix(x()), before);
}

TEST_F(InfixTest, CommentsOfTheListing) {
  std::array<char, infix_line_size> buffer;
  NODE *tree = node(ASSIGN, x(), a());
  EXPECT_STREQ(tree2infix_line(tree, 12, buffer), ";** 12\t-----------------------    x = a;");
  EXPECT_STREQ(tree2infix_line(tree, 999, buffer), ";** 999\t-----------------------    x = a;");
  EXPECT_STREQ(tree2infix_line(tree, 1000, buffer), ";* 1000\t-----------------------    x = a;");
  EXPECT_STREQ(tree2infix_line(tree, 0, buffer), ";**  \t-----------------------    x = a;");
  EXPECT_STREQ(tree2infix_line(tree, 12, std::span(buffer).first(8)), ";** 12\t");
  EXPECT_STREQ(label_comment(-3, buffer), ";**\t-----------------------g-3:");
}

TEST_F(InfixTest, ConstantText) {
  const struct {
    std::int32_t value;
    TypeWord type;
    const char *text;
  } rows[] = {
      {-1, INT, "-1"},
      {-1, CHAR, "-1"},
      {INT32_MIN, LONG, "-2147483648"},
      {0xFFFFFF, UNSIGNED, "16777215u"},
      {0x1000000, UNSIGNED, "0x1000000u"},
      {-1, UNSIGNED_LONG, "0xffffffffu"},
      {127, UNSIGNED_CHAR, "127u"},
      {128, UNSIGNED_CHAR, "0x80u"},
      {0x7FFF, UNSIGNED_SHORT, "32767u"},
      {0x8000, UNSIGNED_SHORT, "0x8000u"},
      {5, ENUM, "5"},
      {64, int_pointer, "0x40"},
      {-1, pointer_to(UNSIGNED), "0xffffffff"},
      {10, FLOAT, "0xa"},
  };
  for (const auto &row : rows)
    EXPECT_STREQ(constant_text(row.value, row.type), row.text);
  const char *first = constant_text(1, INT, 0);
  const char *second = constant_text(2, INT, 1);
  EXPECT_STREQ(first, "1");
  EXPECT_STREQ(second, "2");
}

} // namespace
} // namespace velkor
