#include "driver/command_line.h"

#include "core/file_names.h"
#include "run_fixture.h"

#include <vector>

namespace velkor {
namespace {

class CommandLineTest : public RunTest {
protected:
  FileNames names;
  std::string printed;

  // Parses the words behind the program's name from fresh settings.
  bool parse(std::vector<const char *> words) {
    options = Options{};
    names = FileNames{};
    words.insert(words.begin(), "velkor-opt");
    ::testing::internal::CaptureStdout();
    const bool good = parse_command_line(static_cast<int>(words.size()), words.data(), names);
    printed = ::testing::internal::GetCapturedStdout();
    return good;
  }
};

TEST_F(CommandLineTest, LevelsHaveThreeDefaults) {
  parse({});
  EXPECT_EQ(options.opt_level, 1);
  parse({"-o"});
  EXPECT_EQ(options.opt_level, 2);
  parse({"-O0"});
  EXPECT_EQ(options.opt_level, 0);
  parse({"-o9"});
  EXPECT_EQ(options.opt_level, 2);
  EXPECT_EQ(printed, "\n>>>> Warning: unrecognized option: '-9'\n\n");
}

TEST_F(CommandLineTest, LettersShareAnArgument) {
  parse({"-oqs", "-i20x", "-", "-h1A"});
  EXPECT_EQ(options.opt_level, 2);
  EXPECT_EQ(options.opt_quiet, 1);
  EXPECT_EQ(options.opt_source_comments, 1);
  EXPECT_EQ(options.opt_inline_size, 20) << "the number takes the rest of the argument";
  EXPECT_EQ(options.opt_builtin_level, 1);
  EXPECT_EQ(options.opt_aliased, 1);
  EXPECT_EQ(printed, "");
}

TEST_F(CommandLineTest, ALetterWithoutItsDigit) {
  parse({"-n3"});
  EXPECT_EQ(options.info_level, 1);
  EXPECT_EQ(printed, "\n>>>> Warning: unrecognized option: '-3'\n\n");
  parse({"-p", "-v", "-i"});
  EXPECT_EQ(options.opt_program_mode, -1);
  EXPECT_EQ(options.opt_target_mode, -1);
  EXPECT_EQ(options.opt_inline_size, 1);
  parse({"-p7"});
  EXPECT_EQ(options.opt_program_mode, 0);
}

TEST_F(CommandLineTest, DebugFlagsNeedADebugRun) {
  parse({"-x1"});
  EXPECT_FALSE(options.debug_flag[1]);
  EXPECT_EQ(printed, "\n>>>> Warning: unrecognized option: '-1'\n\n");
  parse({"-#", "-x1"});
  EXPECT_TRUE(options.debug_flag[1]);
  parse({"-##v"});
  EXPECT_EQ(options.debug_level, 2);
  EXPECT_EQ(options.opt_all_volatile, 1);
}

TEST_F(CommandLineTest, UnknownLettersDropTheRest) {
  parse({"-qdz"});
  EXPECT_EQ(options.opt_quiet, 1);
  EXPECT_EQ(options.opt_size, 0);
  EXPECT_EQ(printed, "\n>>>> Warning: unrecognized option: '-dz'\n\n");
  parse({"-gabc"});
  EXPECT_EQ(printed, "\n>>>> Warning: unrecognized option: '-gabc'\n\n");
}

TEST_F(CommandLineTest, AtMostTwoFileNames) {
  EXPECT_TRUE(parse({"a", "b"}));
  EXPECT_FALSE(parse({"a", "b", "c"}));
  EXPECT_EQ(printed, "\n>>>> ERROR - Garbage on command line\n\n");
}

TEST_F(CommandLineTest, ExtensionsFollowTheirRules) {
  EXPECT_EQ(set_extension("foo.c", ".if", true), "foo.if");
  EXPECT_EQ(set_extension("foo", "if", true), "foo.if");
  EXPECT_EQ(set_extension("dir.d/foo", ".if", true), "dir.d/foo.if");
  EXPECT_EQ(set_extension("foo.out", ".opt", false), "foo.out");
  const auto complete = [](std::string input, std::string output) {
    FileNames both{std::move(input), std::move(output)};
    complete_file_names(both);
    return both.input_name + ' ' + both.output_name;
  };
  EXPECT_EQ(complete("foo.c", ""), "foo.if foo.opt");
  EXPECT_EQ(complete("a.b/foo", ""), "a.b/foo.if a.b/foo.opt");
  EXPECT_EQ(complete("foo", "bar.x"), "foo.if bar.x");
  EXPECT_EQ(complete("foo", "bar"), "foo.if bar.opt");
}

} // namespace
} // namespace velkor
