// velkor opt: the optimizer in this process, watched.
#pragma once

#include <string>
#include <vector>

namespace velkor::tool {

struct OptRequests {
  std::string input;
  std::string output; // empty: the input's name with the extension .opt
  int level = 1;
  std::vector<std::string> letters; // further one-letter options, as velkor-opt takes them
  bool verify_each = false;
  bool time = false;
  bool messages_to_error = false; // the optimizer's own lines, to standard error
  std::string statistics;         // empty, "text" or "json"
  std::string dump_function;      // show changes in this function, "*": in all; empty: in none
  long limit = -1;
};

// Returns the exit status: 0 done, 1 bad input, 3 internal error.
[[nodiscard]] int run_opt(const OptRequests &requests);

} // namespace velkor::tool
