#include "diag/readable_name.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace velkor {
namespace {

struct Row {
  const char *name;
  const char *text;
};

void check(std::initializer_list<Row> rows) {
  for (const Row &row : rows)
    EXPECT_STREQ(demangle_name(row.name), row.text) << row.name;
}

// A template argument list shows what a type looks like: "A<type>".
std::string as_argument(const std::string &encoding) {
  const std::string name = "__A__pt__" + std::to_string(encoding.size() + 1) + "_" + encoding;
  const std::string text = demangle_name(name.c_str());
  return text == name ? "fail" : text.substr(2, text.size() - 3);
}

TEST(ReadableName, StripsWhatTheLinkerNameAdds) {
  const char *main_name = "main";
  EXPECT_EQ(readable_name(main_name, 0), main_name);
  EXPECT_NE(readable_name(main_name, 1), main_name);
  const struct {
    const char *name;
    int always;
    const char *text;
  } rows[] = {
      {"_main", 0, "main"},
      {"main", 1, "main"},
      {"_x$1", 0, "x"},
      {"C$1", 0, "C$1"},
      {"C$1", 1, "C"},
      {"_foo_", 0, "_foo_"},
      {".L1", 0, ".L1"},
      {"_", 0, "_"},
      {"_foo__Fi", 0, "foo__Fi"},
      {"__foo__Fi", 0, "_foo__Fi"},
      {"", 1, ""},
      {"_$3", 0, ""},
      {"_____pl__x", 0, "operator +"},
      {"_____3_2_abc", 0, "abc"},
      {"___A__pt__0_$7", 0, "__A__pt__0_"},
  };
  for (const auto &row : rows)
    EXPECT_STREQ(readable_name(row.name, row.always), row.text) << row.name;
}

TEST(ReadableName, FunctionNames) {
  check({
      {"plain", "plain"},
      {"__foo__Fi", "foo"},
      {"__foo", "foo"},
      {"__a___b__Fv", "a_"},
      {"____apl", "operator +="},
      {"____als__1AFi", "operator <<="},
      {"____nwa__FUi", "operator new[]"},
      {"____dl__FPv", "operator delete"},
      {"____rm", "operator ->*"},
      {"____rf", "operator ->"},
      {"____cl", "operator ()"},
      {"____vc", "operator []"},
      {"____cm", "operator ,"},
      {"____oo", "operator ||"},
      {"____plx", "__plx"}, // the code must end there
      {"____opi", "operator int"},
      {"____opPCc__1AFv", "operator const char *"},
      {"____opx", "____opx"},   // no such type
      {"____ct__1AFv", "__ct"}, // no class is known at the top
      {"____12_3_local", "local"},
      {"____12_local", "____12_local"},
  });
}

TEST(ReadableName, Types) {
  const std::pair<const char *, const char *> rows[] = {
      {"i", "int"},
      {"Uc", "unsigned char"},
      {"Sc", "signed char"},
      {"L", "long long"},
      {"UL", "unsigned long long"},
      {"r", "long double"},
      {"w", "wchar_t"},
      {"Ci", "const int"},
      {"CVi", "const volatile int"},
      {"Pi", "int *"},
      {"PCc", "const char *"},
      {"CPc", "char *const "},
      {"Rd", "double &"},
      {"PPv", "void **"},
      {"3Foo", "Foo"},
      {"Q2_1A1B", "A::B"},
      {"PQ3_1A2Bb1C", "A::Bb::C *"},
      {"A10_i", "int [10]"},
      {"A0_i", "int []"},
      {"A2_A3_i", "int [2][3]"},
      {"PA4_i", "int (*)[4]"},
      {"Fi_v", "void (int)"},
      {"PFv_i", "int (*)()"},
      {"PFie_v", "void (*)(int, ...)"},
      {"PFve_v", "void (*)(...)"},
      {"PFPFi_v_Pc", "char *(*)(void (*)(int))"},
      {"A2_PFiT1_v", "void (*[2])(int, int)"},
      {"PFiN21d_v", "void (*)(int, int, int, double)"},
      {"M3Fooi", "int Foo::*"},
      {"M3FooFi_v", "void (Foo::*)(int)"},
      {"M3FooCFi_v", "void (Foo::*)(int) const "},
      {"vA", "fail"},
      {"PFiT2_v", "fail"},   // not there yet
      {"PFiT1T2_v", "fail"}, // a repeat is nothing to refer to
      {"PFiN0_v", "fail"},
      {"PFiNx_v", "fail"},
      {"PFe_v", "fail"},
      {"A10i", "fail"},
      {"Q2_1A", "fail"},
      {"Q21A1B", "fail"},
      {"9Foo", "fail"},
      {"0", "fail"},
      {"U3Foo", "fail"},
  };
  for (const auto &[encoding, text] : rows)
    EXPECT_EQ(as_argument(encoding), text) << encoding;
}

TEST(ReadableName, TemplateValues) {
  const std::pair<const char *, const char *> rows[] = {
      {"XCiL15", "(int)5"},
      {"XCiL2n5", "(int)-5"},
      {"XCiL10_1234567890", "(int)1234567890"},
      {"XCdL31d5", "(double)1.5"},
      {"XCbL11", "true"},
      {"XCbL10", "false"},
      {"XPi3foo", "&foo"},
      {"XCM1AiLM0_L10_0", "(int A::*const )0"},
      {"XCM1AiLM0_L2n1_3foo", "&A::foo"},
      {"XCM1AFi_vLM0_L212_0", "&A::virtual-function-12"},
      {"1BXCiL11", "B, (int)1"},
      {"XCiL3", "fail"},
      {"XCiL", "fail"},
      {"XCi", "fail"},
      {"XCM1AiLM0_L1", "fail"},
      {"XCM1AiLM0L10_0", "fail"},
  };
  for (const auto &[encoding, text] : rows)
    EXPECT_EQ(as_argument(encoding), text) << encoding;
  check({
      {"__A__pt__9_3BoxXCiL11", "A<Box, (int)1>"},
      {"__A__pt__14_7B__pt__2_i", "__A__pt__14_7B__pt__2_i"}, // lengths do not fit
      {"__A__pt__13_10B__pt__2_i", "A<B<int>>"},
      {"__A__pt__2i", "__A__pt__2i"},
  });
}

TEST(ReadableName, DeepTemplatesAreReadInFull) {
  std::string encoding = "i";
  std::string text = "int";
  for (int i = 0; i < 30; ++i) {
    const std::string name = "A__pt__" + std::to_string(encoding.size() + 1) + "_" + encoding;
    encoding = std::to_string(name.size()) + name;
    text = "A<" + text + ">";
  }
  EXPECT_EQ(as_argument(encoding), text);
}

TEST(ReadableName, LongTextsAreCut) {
  const std::string plain(300, 'a');
  EXPECT_EQ(readable_name(("_" + plain).c_str(), 0), plain.substr(0, 199));
  EXPECT_EQ(demangle_name(("__" + plain).c_str()), plain.substr(0, 199));
  const std::string bad = "__A__pt__0_" + plain; // falls back to the name
  EXPECT_EQ(demangle_name(bad.c_str()), bad.substr(0, 199));
  EXPECT_EQ(readable_name(("_" + std::string(5000, 'b')).c_str(), 0), std::string(199, 'b'));
  EXPECT_STREQ(demangle_name("__foo"), "foo"); // nothing of an overflow stays
}

TEST(ReadableName, HostileNamesEndSoon) {
  std::string functions; // parameter lists are read twice at each level
  std::string repeats = "i";
  std::string classes;
  for (int i = 0; i < 400; ++i) {
    functions += "PF";
    repeats += "N91";
    classes += "Q9_";
  }
  std::string nested = "PFi_v";
  for (int i = 0; i < 150; ++i)
    nested = "PF" + nested + "N91_v";
  const std::string pointers(3900, 'P');
  std::string members;
  for (int i = 0; i < 100; ++i)
    members = "M" + std::to_string(10 + members.size()) + "A__pt__9_" + members + "i";
  const auto begin = std::chrono::steady_clock::now();
  for (const std::string &encoding : {functions, repeats, classes, nested, pointers, members}) {
    for (std::size_t length = 1; length <= encoding.size(); length += 37) {
      (void)demangle_name(("____op" + encoding.substr(0, length)).c_str());
      (void)as_argument(encoding.substr(0, length));
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

} // namespace
} // namespace velkor
