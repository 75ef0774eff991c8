// Runs programs in the text form, for the tests of the judge.
#pragma once

#include "core/opcodes.h"
#include "core/types.h"
#include "run/run.h"
#include "text/text.h"

#include <gtest/gtest.h>

#include <string>

namespace velkor::run {

struct Outcome {
  int status = 0;
  std::string output;
  std::string error_output;
  std::string error;
  RunCounts counts;
};

inline Outcome run_text(const std::string &program, RunOptions options = {}) {
  file::IcodeFile file;
  const std::string parse_error = text::parse_text(program, file);
  EXPECT_EQ(parse_error, "") << program;
  Outcome outcome;
  options.output = [&](std::string_view text) { outcome.output += text; };
  options.error_output = [&](std::string_view text) { outcome.error_output += text; };
  RunResult result = run_program(file, options);
  outcome.status = result.status;
  outcome.error = result.error;
  outcome.counts = result.counts;
  return outcome;
}

// A program whose main has these statements, behind these declarations. _printf is declared.
inline std::string main_with(const std::string &statements, const std::string &declarations = "",
                             const std::string &locals = "") {
  return "symbol _printf extern_declared int()\n" + declarations +
         "\nsymbol _main extern int()\nbegin_function 1\nend_parameters 1\n" + locals +
         "\nend_locals 1\n" + statements + "\n99: return(_main, 0)\nend_function 99\n";
}

// A statement that prints the tree's value.
inline std::string print(const std::string &format, const std::string &tree) {
  return "7: call(address(_printf), comma(\"" + format + "\\n\\0\", " + tree + "))\n";
}

} // namespace velkor::run
