// Other programs of the system.
#pragma once

#include <string>
#include <vector>

namespace velkor::tool {

// The path of a program that stands beside this one.
[[nodiscard]] std::string sibling_program(const std::string &name);

// Runs a program and waits. Returns its exit status, 128 + n where signal n ended it, or 127 with a
// message where it could not be started.
[[nodiscard]] int run_process(const std::vector<std::string> &arguments);

// While it lives, what this process prints on standard output goes to standard error: the standard
// output belongs to somebody else.
class OutputToError {
public:
  OutputToError();
  ~OutputToError();
  OutputToError(const OutputToError &) = delete;
  OutputToError &operator=(const OutputToError &) = delete;

private:
  int output_ = -1;
};

// A folder of its own for temporary files, removed with everything in it at the end.
class TemporaryFolder {
public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;
  [[nodiscard]] std::string file(const std::string &name) const { return path_ + '/' + name; }
  [[nodiscard]] bool exists() const { return !path_.empty(); }

private:
  std::string path_;
};

} // namespace velkor::tool
