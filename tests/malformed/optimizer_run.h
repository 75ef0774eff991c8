// One run of the optimizer in this process, on given bytes, in a folder of its own.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velkor::test {

struct OptimizerRun {
  int status = -1;
  bool internal = false;             // the optimizer reported a fault of its own
  std::string printed;               // on standard output
  bool input_left = false;           // the input file is still there, unchanged
  std::optional<std::string> output; // bytes of the output file, if there is one
  std::vector<std::string> others;   // names of what else is in the folder, sorted
};

// Holds a folder, and takes it away at the end.
class RunFolder {
public:
  // name: distinguishes folders of processes that run at the same time.
  explicit RunFolder(const std::string &name);
  ~RunFolder();
  RunFolder(const RunFolder &) = delete;
  RunFolder &operator=(const RunFolder &) = delete;

  // Writes the bytes to t.if in the emptied folder and runs the optimizer on it. options: arguments
  // ahead of the file name.
  [[nodiscard]] OptimizerRun run(const std::string &bytes, const std::vector<std::string> &options);

  // Runs the optimizer on arguments as they stand; the folder is not emptied.
  [[nodiscard]] OptimizerRun run_arguments(const std::vector<std::string> &arguments);

  [[nodiscard]] const std::string &path() const { return path_; }

  // Takes the folder away that a process left behind when it died.
  static void remove_of_process(const std::string &name, int process);

private:
  std::string path_;
};

// The bytes of a file in text form; a fault in the text ends the program.
[[nodiscard]] std::string assemble(const std::string &text);

// Empty when the run ended as every run must: with status 0, an output that decodes and the input
// gone unless a `#` kept it, or with status 1, a message, no output and the input kept. Otherwise
// what is wrong. bytes: the input; options: as given to run().
[[nodiscard]] std::string fault_of(const OptimizerRun &run, const std::string &bytes,
                                   const std::vector<std::string> &options);

} // namespace velkor::test
