// A text file that holds one graph, in GDL, the Graph Description Language of the vcg viewers.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace velkor {

// In labels a form feed and "b" begin bold letters, a form feed and "n" go back to normal ones.
class GraphFile {
public:
  // Opens the file beside the input file, its name with this extension, and writes the heading.
  explicit GraphFile(std::string_view extension);
  ~GraphFile();
  GraphFile(const GraphFile &) = delete;
  GraphFile &operator=(const GraphFile &) = delete;

  // False when the file could not be opened: nothing is to be written then.
  [[nodiscard]] bool is_open() const { return file_ != nullptr; }
  [[nodiscard]] const std::string &name() const { return name_; }

  [[gnu::format(printf, 2, 3)]] void print(const char *format, ...);

private:
  std::string name_;
  std::FILE *file_ = nullptr;
};

// The text as it can stand between the quotes of a GDL string: quotes and backslashes in it get a
// backslash in front.
[[nodiscard]] std::string graph_text(std::string_view text);

} // namespace velkor
