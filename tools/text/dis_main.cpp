// velkor-dis: icode to text.
#include <cstdio>
#include <string>

#include <CLI/CLI.hpp>

#include "file/icode_file.h"
#include "text/text.h"

namespace {

// Writes text to path, or to the standard output when path is empty. Returns false with a message
// on the standard error.
bool write_text(const std::string &path, const std::string &text) {
  std::FILE *stream = path.empty() ? stdout : std::fopen(path.c_str(), "wb");
  if (stream == nullptr) {
    std::perror(("velkor-dis: " + path).c_str());
    return false;
  }
  bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  written = (path.empty() ? std::fflush(stream) : std::fclose(stream)) == 0 && written;
  if (!written) {
    std::perror(("velkor-dis: " + (path.empty() ? "standard output" : path)).c_str());
    if (!path.empty()) std::remove(path.c_str());
  }
  return written;
}

} // namespace

int main(int argc, char **argv) {
  CLI::App app{"Prints an icode file (.if, .opt) as text that velkor-as reads back."};
  std::string input;
  std::string output;
  app.add_option("FILE", input, "icode file")->required();
  app.add_option("-o,--output", output, "text file; the standard output when not given, or -");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  velkor::file::IcodeFile file;
  const std::string error = velkor::file::read_file(input, file);
  if (!error.empty()) {
    std::fprintf(stderr, "velkor-dis: %s\n", error.c_str());
    return 1;
  }
  if (output == "-") output.clear();
  return write_text(output, velkor::text::to_text(file)) ? 0 : 1;
}
