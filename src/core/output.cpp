#include "core/output.h"

#include "core/state.h"

#include <cstdarg>

namespace velkor {

void print(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
}

void debug_print(const char *format, ...) {
  if (!state.debug_file) return;
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(state.debug_file, format, arguments);
  va_end(arguments);
}

void debug_flush() {
  if (state.debug_file) std::fflush(state.debug_file);
}

void info_print(const char *format, ...) {
  if (!state.info_file) return;
  std::va_list arguments;
  va_start(arguments, format);
  std::vfprintf(state.info_file, format, arguments);
  va_end(arguments);
}

void report(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  if (!state.debug_file) return;
  va_start(arguments, format);
  std::vfprintf(state.debug_file, format, arguments);
  va_end(arguments);
}

} // namespace velkor
