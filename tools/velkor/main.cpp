// velkor: the one command to remember.
//
// Exit status: 0 done, 1 bad input, 2 bad usage, 3 internal error; `velkor run` ends with the
// status of the program that it ran.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "driver/driver.h"
#include "driver/pipeline.h"
#include "file/validate.h"
#include "velkor/opt_command.h"
#include "velkor/process.h"

namespace {

using velkor::tool::OptRequests;
using velkor::tool::run_opt;
using velkor::tool::run_process;
using velkor::tool::sibling_program;
using velkor::tool::TemporaryFolder;

struct CompileRequests {
  std::string source;
  std::string output;
  std::vector<std::string> include_folders;
  std::vector<std::string> definitions;
};

struct RunRequests {
  CompileRequests compile;
  std::vector<std::string> arguments;
  std::string statistics;
  long max_steps = 0;
  int level = 1;
  std::vector<std::string> letters;
};

void add_compile_options(CLI::App *command, CompileRequests &requests) {
  command->add_option("-I", requests.include_folders, "folder with headers")
      ->allow_extra_args(false);
  command->add_option("-D", requests.definitions, "NAME or NAME=VALUE")->allow_extra_args(false);
}

void add_level_options(CLI::App *command, int &level, std::vector<std::string> &letters) {
  command->add_option("-O,--level", level, "optimization level, 0 to 3")
      ->check(CLI::Range(0, 3))
      ->capture_default_str();
  command
      ->add_option("--letters", letters,
                   "further options of velkor-opt, without the dash (for example z or i200)")
      ->allow_extra_args(false);
}

int compile(const CompileRequests &requests) {
  std::vector<std::string> arguments = {sibling_program("velkor-cc"), requests.source};
  if (!requests.output.empty()) arguments.insert(arguments.end(), {"-o", requests.output});
  for (const std::string &folder : requests.include_folders)
    arguments.insert(arguments.end(), {"-I", folder});
  for (const std::string &definition : requests.definitions)
    arguments.insert(arguments.end(), {"-D", definition});
  return run_process(arguments);
}

std::string extension_of(const std::string &path) {
  return std::filesystem::path(path).extension().string();
}

int optimize_for_run(const RunRequests &requests, const std::string &input,
                     const std::string &output) {
  OptRequests opt;
  opt.input = input;
  opt.output = output;
  opt.level = requests.level;
  opt.letters = requests.letters;
  opt.messages_to_error = true; // the standard output is the program's
  return run_opt(opt);
}

// Compiles a C file, optimizes an .if file, runs an .opt file: each as far as it is needed.
int run(const RunRequests &requests) {
  const TemporaryFolder folder;
  if (!folder.exists()) {
    std::fprintf(stderr, "velkor: cannot make a temporary folder\n");
    return 3;
  }
  std::string file = requests.compile.source;
  if (extension_of(file) == ".c") {
    CompileRequests step = requests.compile;
    step.output = folder.file("program.if");
    if (const int status = compile(step); status != 0) return status;
    file = step.output;
  }
  if (extension_of(file) == ".if") {
    const std::string optimized = folder.file("program.opt");
    if (const int status = optimize_for_run(requests, file, optimized); status != 0) return status;
    file = optimized;
  }
  std::vector<std::string> arguments = {sibling_program("velkor-run")};
  if (!requests.statistics.empty()) arguments.push_back("--stats=" + requests.statistics);
  if (requests.max_steps > 0)
    arguments.insert(arguments.end(), {"--max-steps", std::to_string(requests.max_steps)});
  arguments.push_back(file);
  arguments.insert(arguments.end(), requests.arguments.begin(), requests.arguments.end());
  return run_process(arguments);
}

// The passes in their order, for the help of `velkor opt`.
std::string pass_list() {
  std::string text = "Passes:\n";
  for (const velkor::Pass &pass : velkor::function_passes()) {
    std::string line = "  ";
    line += pass.name;
    line.resize(std::max<std::size_t>(line.size() + 1, 26), ' ');
    text += line + pass.help + " (from level " + std::to_string(pass.lowest_level) + ")\n";
  }
  return text;
}

void add_opt_command(CLI::App &app, OptRequests &requests) {
  CLI::App *command = app.add_subcommand("opt", "optimize an icode file; the input stays");
  command->footer(pass_list());
  command->add_option("FILE", requests.input, "icode file (.if)")->required();
  command->add_option("-o,--output", requests.output, "output file (default: FILE with .opt)");
  add_level_options(command, requests.level, requests.letters);
  command->add_flag("--verify-each", requests.verify_each, "check the function behind each pass");
  // Flags, so that a file name behind them is not taken for their value.
  command
      ->add_flag("--stats{text}", requests.statistics,
                 "figures for each pass, --stats=json as JSON")
      ->check(CLI::IsMember({"text", "json"}));
  command->add_flag("--dump-changed{*}", requests.dump_function,
                    "show what each pass changed; --dump-changed=NAME in one function");
  command->add_option("--limit", requests.limit, "stop optimizing after so many pass runs");
  command->add_flag("--time", requests.time, "print the time of the whole run");
}

void add_run_command(CLI::App &app, RunRequests &requests) {
  CLI::App *command =
      app.add_subcommand("run", "compile, optimize and run a program (.c, .if or .opt)");
  command->add_option("FILE", requests.compile.source, "program")->required();
  command->add_option("ARGS", requests.arguments, "arguments of the program");
  add_compile_options(command, requests.compile);
  add_level_options(command, requests.level, requests.letters);
  command
      ->add_flag("--stats{text}", requests.statistics,
                 "dynamic operation counts, --stats=json as JSON")
      ->check(CLI::IsMember({"text", "json"}));
  command->add_option("--max-steps", requests.max_steps, "stop a run-away program");
}

struct TextRequests {
  std::string input;
  std::string output;
};

void add_text_command(CLI::App &app, const char *name, const char *help, TextRequests &requests) {
  CLI::App *command = app.add_subcommand(name, help);
  command->add_option("FILE", requests.input)->required();
  command->add_option("-o,--output", requests.output, "output file");
}

int run_text_tool(const char *program, const TextRequests &requests) {
  std::vector<std::string> arguments = {sibling_program(program), requests.input};
  if (!requests.output.empty()) arguments.insert(arguments.end(), {"-o", requests.output});
  return run_process(arguments);
}

// Says what is wrong with finished files; 1 when anything is.
int check_files(const std::vector<std::string> &paths) {
  int status = 0;
  for (const std::string &path : paths) {
    velkor::file::IcodeFile file;
    std::vector<std::string> faults;
    if (std::string error = velkor::file::read_file(path, file); !error.empty())
      faults.push_back(error);
    else
      faults = velkor::file::validate(file);
    for (const std::string &fault : faults)
      std::printf("%s: error: %s\n", path.c_str(), fault.c_str());
    if (!faults.empty()) status = 1;
  }
  return status;
}

} // namespace

int main(int argc, char **argv) {
  velkor::raise_stack_limit();
  CLI::App app{"The VELKOR ANSI C compiler's optimizer and its tools.", "velkor"};
  app.require_subcommand(1);
  CompileRequests compile_requests;
  OptRequests opt_requests;
  RunRequests run_requests;
  TextRequests dis_requests;
  TextRequests as_requests;

  CLI::App *cc = app.add_subcommand("cc", "compile a C file to icode (.if)");
  cc->add_option("FILE", compile_requests.source, "C file")->required();
  cc->add_option("-o,--output", compile_requests.output, "output file");
  add_compile_options(cc, compile_requests);
  add_opt_command(app, opt_requests);
  add_run_command(app, run_requests);
  add_text_command(app, "dis", "print an icode file as text", dis_requests);
  add_text_command(app, "as", "make an icode file from text", as_requests);
  std::vector<std::string> finished_files;
  app.add_subcommand("check", "check that optimized files (.opt) are fit for a code generator")
      ->add_option("FILES", finished_files)
      ->required();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  CLI::App *command = app.get_subcommands().front();
  const std::string name = command->get_name();
  if (name == "cc") return compile(compile_requests);
  if (name == "run") return run(run_requests);
  if (name == "check") return check_files(finished_files);
  if (name == "dis") return run_text_tool("velkor-dis", dis_requests);
  if (name == "as") return run_text_tool("velkor-as", as_requests);
  return run_opt(opt_requests);
}
