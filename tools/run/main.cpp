// velkor-run: runs an icode file. Output and exit status are the program's own.
#include "file/icode_file.h"
#include "run/run.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>
#include <vector>

namespace {

int fail(const std::string &message) {
  std::fprintf(stderr, "velkor-run: error: %s\n", message.c_str());
  return velkor::run::status_error;
}

} // namespace

int main(int argc, char **argv) {
  using namespace velkor;

  CLI::App app("Runs a .if or an .opt file: the program's output and exit status are its own.",
               "velkor-run");
  run::RunOptions options;
  std::string path;
  std::string statistics;
  std::vector<std::string> arguments;
  CLI::Option *const statistics_option =
      app.add_option("--stats", statistics,
                     "Print counts of what was executed to stderr: text (default) or json")
          ->expected(0, 1)
          ->default_str("text")
          ->check(CLI::IsMember({"", "text", "json"}));
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
  app.add_option("ARGS", arguments, "Arguments of the program");
  app.positionals_at_end(false);
  app.prefix_command(); // what stands behind FILE belongs to the program
  // The program's own arguments may look like options: everything behind FILE is theirs.
  std::vector<std::string> own;
  int position = 1;
  for (; position < argc; ++position) {
    own.emplace_back(argv[position]);
    const std::string &word = own.back();
    if (word == "--max-steps" || word == "--memory") {
      if (position + 1 < argc) own.emplace_back(argv[++position]);
    } else if (word == "-" || !word.starts_with('-')) {
      ++position;
      break;
    }
  }
  for (; position < argc; ++position)
    arguments.emplace_back(argv[position]);
  std::vector<std::string> reversed(own.rbegin(), own.rend());
  std::vector<std::string> program_arguments = arguments;
  try {
    app.parse(reversed);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? 0 : run::status_error;
  }

  file::IcodeFile file;
  if (const std::string error = file::read_file(path, file); !error.empty())
    return fail(path + ": " + error);
  options.arguments = {path};
  options.arguments.insert(options.arguments.end(), program_arguments.begin(),
                           program_arguments.end());
  options.count = statistics_option->count() > 0;
  const run::RunResult result = run::run_program(file, options);
  if (!result.error.empty()) fail(path + ": " + result.error);
  if (options.count) {
    const std::string text = statistics == "json" ? run::counts_as_json(result.counts)
                                                  : run::counts_as_text(result.counts);
    std::fputs(text.c_str(), stderr);
  }
  return result.status;
}
