// velkor-cc: the command line.
#include "cc/compile.h"

#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace {

using velkor::cc::CompileOptions;

constexpr const char *usage = "usage: velkor-cc [-o FILE] [-I DIR] [-D NAME[=VALUE]] [-U NAME] "
                              "FILE.c\n";

constexpr const char *help =
    "Compiles a C file to an icode file for the 32-bit VELKOR target.\n"
    "\n"
    "  -o FILE           icode file to write (default: FILE.if in the current directory)\n"
    "  -I DIR            look for headers in DIR, too\n"
    "  -D NAME[=VALUE]   define a macro\n"
    "  -U NAME           undefine a macro\n"
    "  --help            print this text\n"
    "\n"
    "Exit status: 0 done, 1 the program has errors or cannot be written, 2 bad usage.\n";

[[noreturn]] void bad_usage(const char *what, std::string_view argument) {
  std::fprintf(stderr, "velkor-cc: error: %s '%.*s'\n%s", what, static_cast<int>(argument.size()),
               argument.data(), usage);
  std::exit(2);
}

CompileOptions parse_arguments(int count, char **arguments) {
  CompileOptions options;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--help") {
      std::printf("%s\n%s", usage, help);
      std::exit(0);
    }
    if (argument.size() < 2 || argument[0] != '-') {
      if (!options.input.empty()) {
        bad_usage("more than one input file:", argument);
      }
      options.input = argument;
      continue;
    }
    const char letter = argument[1];
    if (std::strchr("oIDU", letter) == nullptr) {
      bad_usage("unknown option", argument);
    }
    std::string value(argument.substr(2));
    if (value.empty()) {
      if (++i == count) {
        bad_usage("nothing behind option", argument);
      }
      value = arguments[i];
    }
    if (letter == 'o') {
      options.output = value;
    } else {
      options.preprocessor.push_back(std::string("-") + letter + value);
    }
  }
  if (options.input.empty()) {
    bad_usage("no input file behind", arguments[0]);
  }
  if (options.output.empty()) {
    options.output = std::filesystem::path(options.input).filename().replace_extension(".if");
  }
  return options;
}

struct Job {
  CompileOptions options;
  int status = 1;
};

void *run_job(void *argument) {
  auto *job = static_cast<Job *>(argument);
  job->status = velkor::cc::compile(job->options);
  return nullptr;
}

constexpr std::size_t stack_bytes = std::size_t{1} << 30; // touched only as deep as trees go

} // namespace

int main(int count, char **arguments) {
  Job job{parse_arguments(count, arguments), 1};
  // Expressions may nest many thousand levels deep: compile on a stack that has room for them.
  pthread_attr_t attributes;
  pthread_t thread;
  if (pthread_attr_init(&attributes) != 0 ||
      pthread_attr_setstacksize(&attributes, stack_bytes) != 0 ||
      pthread_create(&thread, &attributes, run_job, &job) != 0) {
    std::fprintf(stderr, "velkor-cc: error: cannot start a thread with a stack of %zu bytes\n",
                 stack_bytes);
    return 1;
  }
  pthread_join(thread, nullptr);
  return job.status;
}
