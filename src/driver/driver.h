// The optimizer as a whole.
#pragma once

namespace velkor {

// Runs the optimizer with a command line as velkor-opt takes it. Returns the exit status: 0, or 1
// when it failed. Can be called again and again in one process.
[[nodiscard]] int run_optimizer(int argc, const char *const *argv);

// What a program that holds the optimizer in its own process may ask for beyond the command line.
struct RunRequests {
  bool keep_input = false; // do not delete the input file
};
extern RunRequests run_requests;

// Whether the last run that failed did so by a fault of the optimizer, not of its input.
[[nodiscard]] bool last_failure_is_internal();

// Writes the command line into the output as a comment, once a run; nothing while a function is
// skipped.
void write_command_line_comment();

// Deep trees are walked by recursion: lets the main thread's stack grow as far as the deepest tree
// that the reader accepts needs. Called first in main.
void raise_stack_limit();

} // namespace velkor
