// velkor-run: runs an icode file. Output and exit status are the program's own.
#include "file/icode_file.h"
#include "run/run.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

int fail(const std::string &message) {
  std::fprintf(stderr, "velkor-run: error: %s\n", message.c_str());
  return velkor::run::status_error;
}

// Splits the command line: what stands in front of the program's own arguments. Those begin behind
// the first word that is neither an option nor the value of one, and may look like options.
std::vector<std::string> own_words(int argc, char **argv, std::vector<std::string> &arguments) {
  std::vector<std::string> own;
  int position = 1;
  bool is_value = false;
  bool file_seen = false;
  for (; position < argc && !file_seen; ++position) {
    const std::string word = argv[position];
    own.push_back(word);
    file_seen = !is_value && !word.starts_with('-');
    is_value = word == "--max-steps" || word == "--memory";
  }
  arguments.assign(argv + position, argv + argc);
  return own;
}

} // namespace

int main(int argc, char **argv) {
  using namespace velkor;

  CLI::App app("Runs a .if or an .opt file: the program's output and exit status are its own.\n"
               "What stands behind FILE is passed to the program.",
               "velkor-run");
  run::RunOptions options;
  std::string path;
  std::string statistics;
  app.add_flag("--stats{text}", statistics,
               "Print counts of what was executed to stderr, as text or with =json as JSON")
      ->check(CLI::IsMember({"text", "json"}));
  app.add_option("--max-steps", options.max_steps,
                 "Stop the program after N executed instructions (status 124); 0: never");
  app.add_option("--memory", options.memory_megabytes, "Memory of the program in MB")
      ->check(CLI::Range(1, 3000))
      ->capture_default_str();
  app.add_flag("--trace-volatile", options.trace_volatile,
               "Report every access to a named volatile object on stderr");
  app.add_flag("--dump-globals", options.dump_globals,
               "Print the final bytes of every object of static duration");
  app.add_option("FILE", path, "The icode file")->required();

  std::vector<std::string> arguments;
  std::vector<std::string> words = own_words(argc, argv, arguments);
  std::reverse(words.begin(), words.end()); // as the parser takes them
  try {
    app.parse(words);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? 0 : run::status_error;
  }

  file::IcodeFile file;
  if (const std::string error = file::read_file(path, file); !error.empty()) return fail(error);
  options.arguments = {path};
  options.arguments.insert(options.arguments.end(), arguments.begin(), arguments.end());
  options.count = !statistics.empty();
  const run::RunResult result = run::run_program(file, options);
  if (!result.error.empty()) fail(result.file_error ? path + ": " + result.error : result.error);
  if (options.count) {
    const std::string text = statistics == "json" ? run::counts_as_json(result.counts)
                                                  : run::counts_as_text(result.counts);
    std::fputs(text.c_str(), stderr);
  }
  return result.status;
}
