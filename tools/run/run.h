// Runs an icode file: the judge of what a program means.
#pragma once

#include "file/icode_file.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velkor::run {

struct RunOptions {
  std::vector<std::string> arguments = {"program"}; // argv, the program's name first
  std::uint64_t max_steps = 0;                      // 0: no limit
  std::uint32_t memory_megabytes = 64;
  bool count = false;          // fill RunResult::counts
  bool trace_volatile = false; // report accesses to named volatile objects on the error output
  bool dump_globals = false;   // write the objects' final bytes to the output
  // Where the program's output goes; standard output and standard error when empty.
  std::function<void(std::string_view)> output;
  std::function<void(std::string_view)> error_output;
};

// What was executed. An operation is an operator of a tree that was evaluated; constants and
// conversions that do nothing are none.
struct RunCounts {
  struct Entry {
    const char *name;
    std::uint64_t count;
  };
  std::vector<Entry> classes; // operations by class, in a fixed order
  std::uint64_t operations = 0;
  std::uint64_t branches_taken = 0;
  std::uint64_t steps = 0; // executed instructions of the flat form
};

inline constexpr int status_error = 125;        // the program or the file is at fault
inline constexpr int status_out_of_steps = 124; // max_steps were not enough
inline constexpr int status_aborted = 134;      // abort, or an assertion that does not hold

struct RunResult {
  int status = 0;    // as a shell shows it
  std::string error; // one line without "velkor-run: error: "; empty if the program ended by itself
  bool file_error = false; // the error is one of the file, found before the program ran
  RunCounts counts;
};

// Runs main of the program in file. Never throws and never crashes, whatever the file holds.
[[nodiscard]] RunResult run_program(const file::IcodeFile &file, const RunOptions &options);

// The counts as lines of text, or as one JSON object.
[[nodiscard]] std::string counts_as_text(const RunCounts &counts);
[[nodiscard]] std::string counts_as_json(const RunCounts &counts);

} // namespace velkor::run
