// Runs a command and prints what it cost: wall-clock seconds, CPU seconds (user and system), peak
// memory in KB, exit status (128 + signal for one that a signal ended). The command's own output is
// dropped; what it says on stderr goes through.
//
// A program of its own, because a process starts out with the peak memory of the one that it was
// forked from: a caller of 10 MB could not see a command that needs 2.
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace {

double seconds_of(const timeval &time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

double now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

[[noreturn]] void become(char **command, long limit) {
  const rlimit bound{static_cast<rlim_t>(limit), static_cast<rlim_t>(limit)};
  setrlimit(RLIMIT_CPU, &bound);
  const int nowhere = open("/dev/null", O_WRONLY);
  if (nowhere >= 0) dup2(nowhere, STDOUT_FILENO);
  execvp(command[0], command);
  std::perror(command[0]);
  _exit(127);
}

} // namespace

int main(int argc, char **argv) {
  const long limit = argc < 3 ? 0 : std::atol(argv[1]);
  if (limit <= 0) {
    std::fprintf(stderr, "usage: cost CPU_SECONDS_ALLOWED COMMAND...\n");
    return 2;
  }
  const double begin = now();
  const pid_t child = fork();
  if (child == 0) become(argv + 2, limit);
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    std::perror("cost");
    return 1;
  }
  const double wall = now() - begin;
  std::printf("%.6f %.6f %ld %d\n", wall, seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime),
              usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
  return 0;
}
