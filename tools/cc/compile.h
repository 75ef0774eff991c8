// One run of the compiler: C file in, icode file out.
#pragma once

#include <string>
#include <vector>

namespace velkor::cc {

struct CompileOptions {
  std::string input;
  std::string output;
  std::vector<std::string> preprocessor; // -I, -D and -U arguments, each as one word
};

// Compiles options.input and writes options.output. Errors of the program go to standard error in
// clang's form, other failures as one line. Returns the exit status: 0, or 1 with no file written.
[[nodiscard]] int compile(const CompileOptions &options);

} // namespace velkor::cc
