#include "diag/graph_file.h"

#include "core/file_names.h"
#include "core/product.h"
#include "core/state.h"

#include <cstdarg>

namespace velkor {

GraphFile::GraphFile(std::string_view extension)
    : name_(set_extension(state.input_name, extension, true)),
      file_(std::fopen(name_.c_str(), "w")) {
  if (file_) print("// %s%s\n// %s\n", product_line, version_text, maker_line);
}

GraphFile::~GraphFile() {
  if (file_) std::fclose(file_);
}

void GraphFile::print(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(file_, format, arguments);
  va_end(arguments);
}

std::string graph_text(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result;
}

} // namespace velkor
