#include "malformed/optimizer_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "driver/driver.h"
#include "file/icode_file.h"
#include "text/text.h"

namespace velkor::test {
namespace {

namespace fs = std::filesystem;

std::string read_bytes(const fs::path &path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void write_bytes(const fs::path &path, const std::string &bytes) {
  std::ofstream stream(path, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Sends standard output to a file for its lifetime.
class CapturedOutput {
public:
  explicit CapturedOutput(const fs::path &path) : path_(path) {
    std::fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (saved_ < 0 || file < 0 || dup2(file, STDOUT_FILENO) < 0) {
      std::perror(path.c_str());
      std::abort();
    }
    close(file);
  }
  ~CapturedOutput() { stop(); }
  CapturedOutput(const CapturedOutput &) = delete;
  CapturedOutput &operator=(const CapturedOutput &) = delete;

  std::string take() {
    stop();
    std::string text = read_bytes(path_);
    fs::remove(path_);
    return text;
  }

private:
  void stop() {
    if (saved_ < 0) return;
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    saved_ = -1;
  }

  fs::path path_;
  int saved_ = -1;
};

bool debug_asked(const std::vector<std::string> &options) {
  return std::any_of(options.begin(), options.end(), [](const std::string &option) {
    return option.find('#') != std::string::npos;
  });
}

// A line that says what is wrong. The line that every abnormal end prints says nothing.
bool is_message(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  if (line.find("Optimizer terminated abnormally") != std::string_view::npos) return false;
  return line.substr(0, 4) == "!!! " || line.substr(0, 3) == ">> " ||
         line.substr(0, 18) == ">>>COMPILER ERROR-" || line.substr(0, 11) == ">>>> ERROR ";
}

bool has_message(std::string_view printed) {
  while (!printed.empty()) {
    const std::size_t end = std::min(printed.find('\n'), printed.size());
    if (is_message(printed.substr(0, end))) return true;
    printed.remove_prefix(std::min(end + 1, printed.size()));
  }
  return false;
}

// A pragma entry of another kind of record ends the run without a line of its own.
bool is_bad_pragma_entry(const std::string &bytes) {
  file::IcodeFile file;
  return file::decode(bytes, file).find("pragma entry") != std::string::npos;
}

std::string folder_path(const std::string &name, int process) {
  return fs::temp_directory_path() / ("velkor_" + name + '_' + std::to_string(process));
}

} // namespace

void RunFolder::remove_of_process(const std::string &name, int process) {
  std::error_code ignored;
  fs::remove_all(folder_path(name, process), ignored);
  fs::remove(folder_path(name, process) + ".printed", ignored);
}

RunFolder::RunFolder(const std::string &name) : path_(folder_path(name, getpid())) {
  fs::remove_all(path_);
  fs::create_directory(path_);
}

RunFolder::~RunFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

OptimizerRun RunFolder::run(const std::string &bytes, const std::vector<std::string> &options) {
  for (const fs::directory_entry &entry : fs::directory_iterator(path_)) {
    fs::remove_all(entry.path());
  }
  const fs::path input = fs::path(path_) / "t.if";
  write_bytes(input, bytes);
  std::vector<std::string> arguments = options;
  arguments.push_back(input);
  OptimizerRun result = run_arguments(arguments);
  result.input_left = fs::exists(input) && read_bytes(input) == bytes;
  const fs::path output = fs::path(path_) / "t.opt";
  if (fs::exists(output)) result.output = read_bytes(output);
  std::erase_if(result.others,
                [](const std::string &name) { return name == "t.if" || name == "t.opt"; });
  return result;
}

OptimizerRun RunFolder::run_arguments(const std::vector<std::string> &arguments) {
  std::vector<const char *> argv = {"velkor-opt"};
  for (const std::string &argument : arguments) {
    argv.push_back(argument.c_str());
  }
  OptimizerRun result;
  CapturedOutput captured(path_ + ".printed");
  result.status = run_optimizer(static_cast<int>(argv.size()), argv.data());
  result.internal = result.status != 0 && last_failure_is_internal();
  result.printed = captured.take();
  for (const fs::directory_entry &entry : fs::directory_iterator(path_)) {
    result.others.push_back(entry.path().filename());
  }
  std::sort(result.others.begin(), result.others.end());
  return result;
}

std::string assemble(const std::string &text) {
  file::IcodeFile file;
  std::string error = text::parse_text(text, file);
  std::string bytes;
  if (error.empty()) bytes = file::encode(file, error);
  if (error.empty()) return bytes;
  std::fprintf(stderr, "a file of the tests: %s\n", error.c_str());
  std::abort();
}

std::string fault_of(const OptimizerRun &run, const std::string &bytes,
                     const std::vector<std::string> &options) {
  const bool debug = debug_asked(options);
  if (run.internal) return "the optimizer reports a fault of its own";
  if (run.status != 0 && run.status != 1) return "exit status " + std::to_string(run.status);
  for (const std::string &name : run.others) {
    if (!debug || (name != "t.odb" && name != "t.nfo")) return "a file is left: " + name;
  }
  if (run.status == 1) {
    if (run.output) return "status 1 with an output file";
    if (!run.input_left) return "status 1 without the input file";
    if (!has_message(run.printed) && !is_bad_pragma_entry(bytes)) return "status 1, no message";
    return {};
  }
  if (run.input_left != debug) return debug ? "the input file is gone" : "the input file is kept";
  if (!run.output) return "status 0 without an output file";
  file::IcodeFile file;
  const std::string error = file::decode(*run.output, file);
  if (!error.empty()) return "the output does not decode: " + error;
  std::string encode_error;
  if (file::encode(file, encode_error) != *run.output)
    return "the output's blocks are not canonical";
  return {};
}

} // namespace velkor::test
