// The passes over one function, as a table, and the runner of the table.
#pragma once

#include <span>

namespace velkor {

enum class Shape : unsigned char { ANY, ONE_BLOCK, MANY_BLOCKS };

// One row of the pipeline. A pass that is required makes or writes the function's form; the others
// only improve it and can be left out.
struct Pass {
  const char *name;
  const char *help; // one line for people
  int lowest_level; // of optimization at which it runs
  Shape shape;      // functions that it runs on
  bool required;
  void (*run)();
};

[[nodiscard]] std::span<const Pass> function_passes();

// Runs the passes of the current level on the function that was read.
void run_function_passes();

// How a program watches the passes. Both routines may be none.
struct PassObserver {
  void (*before)(const Pass &pass) = nullptr;
  void (*after)(const Pass &pass) = nullptr;
};

struct PipelineRequests {
  PassObserver observer;
  bool verify_each = false; // check_function behind each pass (always in checked builds)
  long limit = -1;          // optional pass runs that may happen; below 0: all
};
extern PipelineRequests pipeline_requests;

} // namespace velkor
