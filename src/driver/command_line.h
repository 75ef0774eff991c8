// The command line: one-letter options and file names.
#pragma once

#include <string>

namespace velkor {

struct FileNames {
  std::string input_name;
  std::string output_name;
};

// Sets the options (core/options.h) and collects the file names as they stand. False, with a
// message, when there are too many of them.
[[nodiscard]] bool parse_command_line(int argc, const char *const *argv, FileNames &names);

// Completes the names by their extension rules.
void complete_file_names(FileNames &names);

} // namespace velkor
