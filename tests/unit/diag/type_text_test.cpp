#include "diag/type_text.h"

#include "run_fixture.h"

namespace velkor {
namespace {

constexpr TypeWord array_of(TypeWord type) {
  return derive(type, ARRAY_OF);
}
constexpr TypeWord returning(TypeWord type) {
  return derive(type, FUNCTION_RETURNING);
}

class TypeTextTest : public RunTest {
protected:
  static SYM *with_dims(SYM *sym, std::initializer_list<std::uint32_t> dims) {
    sym->dims = static_cast<std::uint32_t *>(zalloc(0, sizeof(std::uint32_t) * dims.size()));
    for (const std::uint32_t dimension : dims)
      sym->dims[sym->ndims++] = dimension;
    return sym;
  }
  static SYM *qualified(SYM *sym, std::uint32_t squal) {
    sym->squal = squal;
    return sym;
  }
  static SYM *tagged(const char *name, TypeWord type, const char *tag) {
    SYM *sym = symbol(name, type);
    sym->tag = symbol(tag, type & basic_type_mask, 0, C_STRTAG);
    return sym;
  }
};

TEST_F(TypeTextTest, CastsReadInsideOut) {
  const std::pair<TypeWord, const char *> rows[] = {
      {INT, "(int)"},
      {UNUSED_TYPE, "((?-?-?))"},
      {pointer_to(UNSIGNED_CHAR), "(unsigned char*)"},
      {pointer_to(pointer_to(LONG_DOUBLE)), "(long double**)"},
      {array_of(pointer_to(CHAR)), "(char*[])"},
      {pointer_to(array_of(INT)), "(int(*)[])"},
      {returning(pointer_to(CHAR)), "(char*())"},
      {pointer_to(returning(VOID)), "(void(*)())"},
      {array_of(pointer_to(returning(pointer_to(STRUCT)))), "(struct*(*[])())"},
      {array_of(array_of(ENUM)), "(enum[][])"},
  };
  for (const auto &[type, text] : rows)
    EXPECT_STREQ(type_text(type), text);
  EXPECT_STREQ(basic_type_text(pointer_to(UNSIGNED_SHORT)), "unsigned short");
}

TEST_F(TypeTextTest, Declarations) {
  const std::pair<SYM *, const char *> rows[] = {
      {symbol("_x", INT), "int x"},
      {symbol("_x", pointer_to(CHAR), 0, C_EXT), "extern char *x"},
      {with_dims(symbol("_a", array_of(array_of(INT))), {3, 4}), "int a[3][4]"},
      {with_dims(symbol("_a", array_of(INT), 0, C_EXTDEF), {0}), "extern int a[]"},
      {symbol("_a", array_of(INT)), "int a[]"},
      {with_dims(symbol("_t", array_of(pointer_to(CHAR)), 0, C_STAT), {3}), "static char *t[3]"},
      {with_dims(symbol("_p", pointer_to(array_of(INT))), {4}), "int (*p)[4]"},
      {symbol("_f", pointer_to(returning(INT))), "int (*f)()"},
      {with_dims(symbol("_t", array_of(pointer_to(returning(pointer_to(INT))))), {2}),
       "int *(*t[2])()"},
      {symbol("_g", returning(pointer_to(CHAR)), 0, C_USTATIC), "static char *g()"},
      {qualified(symbol("_v", INT), 2), "volatile int v"},
      {qualified(symbol("_v", INT), 3), "volatile const int v"},
      {qualified(symbol("_s", pointer_to(CHAR), 0, C_STAT), 0x01), "static const char *s"},
      {qualified(symbol("_s", pointer_to(CHAR)), 0x10), "char const *s"},
      {qualified(symbol("_s", pointer_to(pointer_to(CHAR))), 0x80), "char volatile **s"},
      {tagged("_r", STRUCT, "_node"), "struct node r"},
      {tagged("_r", pointer_to(UNION), ".fake12"), "union *r"},
      {symbol("_r", STRUCT), "struct r"},
      {symbol("_r$4", INT, 2, C_REG), "register int r"},
  };
  for (const auto &[sym, text] : rows)
    EXPECT_STREQ(declaration_text(sym, nullptr), text);
}

TEST_F(TypeTextTest, FunctionsShowTheirParameters) {
  SYM *first = symbol("_n", INT, 1, C_ARG);
  SYM *second = symbol("_s", pointer_to(CHAR), 1, C_ARG);
  SYM *home = symbol("_n", INT, 2);
  first->next = second;
  second->next = home;
  SYM *function = symbol("_f", returning(pointer_to(returning(INT))), 0, C_EXT);
  EXPECT_STREQ(declaration_text(function, first), "extern int (*f(int n, char *s))()");
  EXPECT_STREQ(declaration_text(function, nullptr), "extern int (*f())()");
  options.opt_unsigned_preserving = 1;
  EXPECT_STREQ(declaration_text(function, first), "extern int (*f(n, s))()");
}

TEST_F(TypeTextTest, StorageComesFromQualifiersThenClass) {
  SYM *sym = symbol("_x", INT, 0, C_STAT);
  sym->scqual = CQ_CREGISTER | CQ_REFERENCED;
  EXPECT_STREQ(storage_text(sym), "cregister");
  sym->scqual = CQ_REGISTER;
  EXPECT_STREQ(storage_text(sym), "register");
  sym->scqual = CQ_WRITTEN;
  sym->sclass = C_AUTO; // the class as read counts
  EXPECT_STREQ(storage_text(sym), "static");
  const std::pair<StorageClass, const char *> rows[] = {
      {C_AUTO, ""},         {C_REG, "register"},   {C_GLOBALREG, "extern"},
      {C_EXTREG, "extern"}, {C_STATREG, "static"}, {C_TPDEF, "typedef"},
      {C_ARG, ""}};
  for (const auto &[sclass, text] : rows)
    EXPECT_STREQ(storage_text(symbol("_y", INT, 0, sclass)), text);
}

TEST_F(TypeTextTest, HostileNamesAreKeptWhole) {
  const std::string long_name(4000, 'n');
  SYM *sym = tagged(long_name.c_str(), STRUCT, long_name.c_str());
  EXPECT_EQ(declaration_text(sym, nullptr), "struct " + long_name + " " + long_name);
}

} // namespace
} // namespace velkor
