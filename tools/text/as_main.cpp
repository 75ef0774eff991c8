// velkor-as: text to icode.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include <CLI/CLI.hpp>

#include "file/icode_file.h"
#include "text/text.h"

namespace {

// The whole of a text file, or of the standard input for "-". False when it cannot be read.
bool read_text(const std::string &path, std::string &text) {
  std::ifstream stream;
  if (path != "-") {
    stream.open(path, std::ios::binary);
    if (!stream) return false;
  }
  std::istream &in = path == "-" ? std::cin : stream;
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

} // namespace

int main(int argc, char **argv) {
  CLI::App app{"Makes an icode file from its text form."};
  std::string input;
  std::string output;
  app.add_option("FILE", input, "text file; - for the standard input")->required();
  app.add_option("-o,--output", output, "icode file")->required();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  std::string text;
  if (!read_text(input, text)) {
    std::fprintf(stderr, "velkor-as: cannot read %s\n", input.c_str());
    return 1;
  }
  velkor::file::IcodeFile file;
  std::string error = velkor::text::parse_text(text, file);
  if (!error.empty()) error = input + ": " + error;
  if (error.empty()) error = velkor::file::write_file(output, file);
  if (!error.empty()) {
    std::fprintf(stderr, "velkor-as: %s\n", error.c_str());
    return 1;
  }
  return 0;
}
