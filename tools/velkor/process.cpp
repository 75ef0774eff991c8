#include "velkor/process.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace velkor::tool {

namespace fs = std::filesystem;

std::string sibling_program(const std::string &name) {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? name : (self.parent_path() / name).string();
}

int run_process(const std::vector<std::string> &arguments) {
  std::vector<char *> pointers;
  for (const std::string &argument : arguments)
    pointers.push_back(const_cast<char *>(argument.c_str()));
  pointers.push_back(nullptr);
  std::fflush(stdout);
  pid_t child = 0;
  const int failure = posix_spawnp(&child, pointers[0], nullptr, nullptr, pointers.data(), environ);
  if (failure != 0) {
    std::fprintf(stderr, "velkor: cannot start %s: %s\n", pointers[0], std::strerror(failure));
    return 127;
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return 127;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

OutputToError::OutputToError() {
  std::fflush(stdout);
  output_ = dup(STDOUT_FILENO);
  if (output_ >= 0) dup2(STDERR_FILENO, STDOUT_FILENO);
}

OutputToError::~OutputToError() {
  std::fflush(stdout);
  if (output_ < 0) return;
  dup2(output_, STDOUT_FILENO);
  close(output_);
}

TemporaryFolder::TemporaryFolder() {
  std::error_code error;
  std::string pattern = (fs::temp_directory_path(error) / "velkor-XXXXXX").string();
  if (mkdtemp(pattern.data())) path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  if (!path_.empty()) fs::remove_all(path_, error);
}

} // namespace velkor::tool
