#include "run_fixture.h"
#include "simplify/constant_text.h"

namespace velkor {
namespace {

class ConstantTextTest : public RunTest {};

TEST_F(ConstantTextTest, EachNumberHasOneSpelling) {
  const std::pair<const char *, const char *> rows[] = {
      {"1.0", "+1.0"},
      {"-1", "-1.0"},
      {"000.500", "+0.5"},
      {"0.05", "+0.05"},
      {"123", "+123.0"},
      {"100", "+100.0"},
      {"120.50", "+120.5"},
      {"12345.0", "+12345.0"},
      {"123456.0", "+1.23456e5"},
      {"1e10", "+1.0e10"},
      {"+1.0e10", "+1.0e10"},
      {"10e-1", "+1.0"},
      {"0.001", "+0.001"},
      {"0.0015", "+0.0015"},
      {"0.0001", "+1.0e-4"},
      {"1.5E-3", "+0.0015"},
      {"1.e2", "+100.0"},
      {".5", "+0.5"},
      {"0.0", "+0.0"},
      {"-0.0", "+0.0"},
      {".", "+0.0"},
      {"", "+0.0"},
      {"nonsense", "+0.0"},
      {"0e5", "+0.0"},
      {"1e99999999999999999999", "+1.0e1000000"},
  };
  for (const auto &[text, expected] : rows) {
    EXPECT_STREQ(canon_float_text(text, true), expected) << text;
    EXPECT_STREQ(canon_float_text(expected, true), expected) << "again: " << text;
  }
}

} // namespace
} // namespace velkor
