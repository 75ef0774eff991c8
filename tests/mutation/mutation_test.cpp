// Runs the optimizer on damaged icode files, in process, and demands a normal end of each run.
//
// The files themselves come first: each must pass with all options, and survive the text form.
//
//   mutation_test [--count N] [--seed S] [--first I] [--keep FOLDER] FILE...
//
// FILE: .if files, or .ic files in text form. Input number I depends on S, I and the files alone.
// A faulty run's input is kept in FOLDER as fault_S_I.if, with a line that tells the options.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "driver/driver.h"
#include "file/icode_file.h"
#include "malformed/optimizer_run.h"
#include "mutation/mutate.h"
#include "text/text.h"

namespace velkor::test {
namespace {

constexpr unsigned seconds_of_a_run = 10;
constexpr int status_of_a_fault = 3; // of a child whose run broke a demand
constexpr int most_faults = 20;      // after which it stops

struct Settings {
  std::uint32_t count = 1000;
  std::uint32_t seed = 1;
  std::uint32_t first = 0;
  std::string keep = "mutation_faults";
  std::vector<std::string> files;
};

struct Input {
  std::string bytes;
  std::vector<std::string> options;
};

// What a child tells its parent. It lives in memory that both share, so that it outlives a crash.
struct Progress {
  std::uint32_t at = 0; // number of the input that is running
  std::uint32_t accepted = 0;
  std::uint32_t refused = 0;
  char fault[400] = "";
};

std::string read_whole(const std::string &path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    std::exit(2);
  }
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> read_files(const std::vector<std::string> &paths) {
  std::vector<std::string> files;
  for (const std::string &path : paths) {
    const std::string bytes = read_whole(path);
    files.push_back(std::filesystem::path(path).extension() == ".ic" ? assemble(bytes) : bytes);
  }
  return files;
}

Input make_input(const Settings &settings, std::uint32_t number) {
  std::seed_seq seed = {settings.seed, number};
  std::mt19937 random(seed);
  Input input;
  input.bytes = mutate(settings.files, random);
  input.options = {"-o" + std::to_string(random() % 3)};
  if (random() % 4 == 0) input.options.push_back("-q");
  if (random() % 4 == 0) input.options.push_back("-s");
  if (random() % 4 == 0) input.options.push_back("-#");
  if (random() % 16 == 0) input.options.push_back("-##");
  return input;
}

// What the programs write must come back from the text form byte for byte.
std::string text_fault(const std::string &bytes) {
  file::IcodeFile file;
  std::string error = file::decode(bytes, file);
  if (!error.empty()) return "does not decode: " + error;
  file::IcodeFile parsed;
  error = text::parse_text(text::to_text(file), parsed);
  if (!error.empty()) return "the text form does not parse: " + error;
  if (file::encode(parsed, error) != bytes) return "the text form gives other bytes " + error;
  return {};
}

// Checks one run; the thorough way also runs a second time, and takes the output through the text
// form.
std::string check(RunFolder &folder, const Input &input, bool thorough, Progress &progress) {
  const OptimizerRun run = folder.run(input.bytes, input.options);
  std::string fault = fault_of(run, input.bytes, input.options);
  ++(run.status == 0 ? progress.accepted : progress.refused);
  if (!fault.empty()) {
    const std::size_t tail = run.printed.size() > 200 ? run.printed.size() - 200 : 0;
    return fault + "\n" + run.printed.substr(tail);
  }
  if (!thorough) return {};
  const OptimizerRun again = folder.run(input.bytes, input.options);
  if (again.output != run.output) return "two runs give different outputs";
  if (again.printed != run.printed) return "two runs print different texts";
  return run.output ? text_fault(*run.output) : std::string();
}

// The files as they are.
bool files_pass(const Settings &settings, const std::vector<std::string> &paths) {
  RunFolder folder("unmutated");
  bool passed = true;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    std::string fault = text_fault(settings.files[i]);
    for (const char *level : {"-o0", "-o1", "-o2", "-o3"}) {
      for (const char *more : {"-q", "-s", "-#", "-s##"}) {
        Progress progress;
        if (!fault.empty()) break;
        fault = check(folder, {settings.files[i], {level, more}}, true, progress);
        if (fault.empty() && progress.refused != 0) fault = "refused";
        if (!fault.empty()) fault = std::string(level) + ' ' + more + ": " + fault;
      }
    }
    if (fault.empty()) continue;
    std::printf("FAULT %s: %s\n", paths[i].c_str(), fault.c_str());
    passed = false;
  }
  return passed;
}

// Runs inputs until the end or a fault; never returns.
[[noreturn]] void run_child(const Settings &settings, Progress &progress) {
  RunFolder folder("mutation");
  for (; progress.at < settings.first + settings.count; ++progress.at) {
    const Input input = make_input(settings, progress.at);
    alarm(seconds_of_a_run);
    const std::string fault = check(folder, input, progress.at % 16 == 0, progress);
    alarm(0);
    if (fault.empty()) continue;
    std::snprintf(progress.fault, sizeof progress.fault, "%s", fault.c_str());
    folder.~RunFolder();
    std::_Exit(status_of_a_fault);
  }
  folder.~RunFolder();
  std::_Exit(0);
}

std::string describe(int status, const Progress &progress) {
  if (WIFSIGNALED(status)) {
    return WTERMSIG(status) == SIGALRM ? "no end after 10 seconds"
                                       : std::string("signal: ") + strsignal(WTERMSIG(status));
  }
  if (WEXITSTATUS(status) == status_of_a_fault) return progress.fault;
  return "the process ended with status " + std::to_string(WEXITSTATUS(status));
}

void keep_fault(const Settings &settings, const Progress &progress, const std::string &what) {
  const Input input = make_input(settings, progress.at);
  std::filesystem::create_directories(settings.keep);
  const std::string path = settings.keep + "/fault_" + std::to_string(settings.seed) + "_" +
                           std::to_string(progress.at) + ".if";
  std::ofstream(path, std::ios::binary) << input.bytes;
  std::string options;
  for (const std::string &option : input.options) {
    options += ' ' + option;
  }
  std::printf("FAULT %s (options:%s): %s\n", path.c_str(), options.c_str(), what.c_str());
  std::fflush(stdout);
}

// A child runs the inputs; when it dies, its input is kept and another one goes on behind it.
int run_all(const Settings &settings) {
  void *shared =
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) {
    std::perror("mmap");
    return 2;
  }
  auto &progress = *new (shared) Progress;
  progress.at = settings.first;
  int faults = 0;
  while (progress.at < settings.first + settings.count && faults < most_faults) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
      std::perror("fork");
      return 2;
    }
    if (child == 0) run_child(settings, progress);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) break;
    RunFolder::remove_of_process("mutation", child);
    keep_fault(settings, progress, describe(status, progress));
    ++faults;
    ++progress.at;
  }
  std::printf("%u inputs, seed %u: %u accepted, %u refused, %d faults\n",
              progress.at - settings.first, settings.seed, progress.accepted, progress.refused,
              faults);
  return faults == 0 ? 0 : 1;
}

} // namespace
} // namespace velkor::test

int main(int argc, char **argv) {
  velkor::raise_stack_limit();
  velkor::test::Settings settings;
  std::vector<std::string> paths;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.substr(0, 2) != "--") {
      paths.push_back(argument);
      continue;
    }
    const std::string value = i + 1 < argc ? argv[++i] : "";
    if (argument == "--count") {
      settings.count = static_cast<std::uint32_t>(std::stoul(value));
    } else if (argument == "--seed") {
      settings.seed = static_cast<std::uint32_t>(std::stoul(value));
    } else if (argument == "--first") {
      settings.first = static_cast<std::uint32_t>(std::stoul(value));
    } else if (argument == "--keep") {
      settings.keep = value;
    } else {
      std::fprintf(stderr, "unknown option %s\n", argument.c_str());
      return 2;
    }
  }
  if (paths.empty()) {
    std::fprintf(stderr, "no files\n");
    return 2;
  }
  settings.files = velkor::test::read_files(paths);
  if (!velkor::test::files_pass(settings, paths)) return 1;
  return velkor::test::run_all(settings);
}
