// Text that the program prints: standard output, the debug file, the information file.
#pragma once

#include <cstdio>

namespace velkor {

// Formatted text on standard output.
[[gnu::format(printf, 1, 2)]] void print(const char *format, ...);

// Formatted text in the debug file; nothing when it is not open.
[[gnu::format(printf, 1, 2)]] void debug_print(const char *format, ...);
void debug_flush();

// Formatted text in the information file; nothing when it is not open.
[[gnu::format(printf, 1, 2)]] void info_print(const char *format, ...);

// The same text on standard output and in the debug file: how internal failures report.
[[gnu::format(printf, 1, 2)]] void report(const char *format, ...);

} // namespace velkor
