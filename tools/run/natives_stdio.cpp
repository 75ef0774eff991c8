// Output, input and formats of the native library.
#include "run/machine.h"
#include "run/natives.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace velkor::run {

namespace {

// FILE pointers of the program.
constexpr std::uint32_t stream_in = 1;
constexpr std::uint32_t stream_out = 2;
constexpr std::uint32_t stream_error = 3;
constexpr std::uint32_t end_of_file = ~0u;
constexpr int widest_field = 1 << 20; // characters; what a wild width or precision is cut to

void write_stream(Machine &machine, std::uint32_t stream, std::string_view text) {
  if (stream == stream_out)
    write_output(machine, text);
  else if (stream == stream_error)
    write_error_output(machine, text);
  else
    throw Fault{"output to a stream that is not open for it"};
}

// Formats ----------------------------------------------------------------------------------------

// One conversion of a format, "%-8.3ld" and such.
struct Conversion {
  std::string flags;
  int width = -1;
  int precision = -1;
  char length = 0; // h, H for hh, l, L
  char letter = 0;
};

// Reads the conversion behind the % at position, which ends up behind it.
Conversion parse_conversion(std::string_view format, std::size_t &position, NativeCall &arguments) {
  Conversion conversion;
  const auto peek = [&] { return position < format.size() ? format[position] : '\0'; };
  while (peek() != 0 && std::strchr("-+ #0", peek()) != nullptr)
    conversion.flags += format[position++];
  const auto number = [&] {
    int value = 0;
    while (peek() >= '0' && peek() <= '9')
      value = std::min(value * 10 + (format[position++] - '0'), widest_field);
    return value;
  };
  if (peek() == '*') {
    ++position;
    conversion.width = std::clamp(arguments.next_int(), -widest_field, widest_field);
    if (conversion.width < 0) {
      conversion.flags += '-';
      conversion.width = -conversion.width;
    }
  } else if (peek() >= '1' && peek() <= '9') {
    conversion.width = number();
  }
  if (peek() == '.') {
    ++position;
    if (peek() == '*') {
      ++position;
      conversion.precision = std::clamp(arguments.next_int(), -1, widest_field);
    } else {
      conversion.precision = number();
    }
  }
  while (peek() == 'h' || peek() == 'l' || peek() == 'L') {
    conversion.length = peek() == 'h' && conversion.length == 'h' ? 'H' : peek();
    ++position;
    if (conversion.length == 'l' && peek() == 'l') throw Fault{"a format with a 64-bit conversion"};
  }
  if (peek() == 0) throw Fault{"a format that ends inside a conversion"};
  conversion.letter = format[position++];
  return conversion;
}

// Formats one value with the host's routine; letter may carry a host length modifier.
template <typename T>
void append_formatted(std::string &out, const Conversion &conversion, const char *letter, T value) {
  std::string format = "%" + conversion.flags;
  if (conversion.width >= 0) format += std::to_string(conversion.width);
  if (conversion.precision >= 0) format.append(".").append(std::to_string(conversion.precision));
  format += letter;
  const int length = std::snprintf(nullptr, 0, format.c_str(), value);
  if (length <= 0) return;
  const std::size_t start = out.size();
  out.resize(start + static_cast<std::size_t>(length) + 1);
  std::snprintf(out.data() + start, static_cast<std::size_t>(length) + 1, format.c_str(), value);
  out.pop_back();
}

std::uint32_t cut_to_length(std::uint32_t value, char length, bool is_signed) {
  if (length == 'h')
    return is_signed ? static_cast<std::uint32_t>(static_cast<std::int16_t>(value))
                     : static_cast<std::uint16_t>(value);
  if (length == 'H')
    return is_signed ? static_cast<std::uint32_t>(static_cast<std::int8_t>(value))
                     : static_cast<std::uint8_t>(value);
  return value;
}

// Text for %s: up to its NUL, or as many bytes as the precision says.
std::string text_argument(Memory &memory, Address address, int precision) {
  if (address == 0) return precision >= 0 && precision < 6 ? "" : "(null)";
  if (precision < 0) return std::string(memory.text(address));
  std::string text;
  for (Address at = address; static_cast<int>(text.size()) < precision; ++at) {
    const auto byte = memory.read<char>(at);
    if (byte == 0) break;
    text += byte;
  }
  return text;
}

void append_text(std::string &out, const Conversion &conversion, std::string_view text) {
  const std::size_t width = conversion.width < 0 ? 0 : static_cast<std::size_t>(conversion.width);
  const std::size_t padding = width > text.size() ? width - text.size() : 0;
  const bool left = conversion.flags.find('-') != std::string::npos;
  if (!left) out.append(padding, ' ');
  out += text;
  if (left) out.append(padding, ' ');
}

void append_conversion(std::string &out, const Conversion &conversion, NativeCall &arguments) {
  const char letter[] = {conversion.letter, 0};
  switch (conversion.letter) {
  case '%': out += '%'; break;
  case 'd':
  case 'i': {
    const std::uint32_t word = cut_to_length(arguments.next_word(), conversion.length, true);
    append_formatted(out, conversion, letter, static_cast<std::int32_t>(word));
    break;
  }
  case 'o':
  case 'u':
  case 'x':
  case 'X':
    append_formatted(out, conversion, letter,
                     cut_to_length(arguments.next_word(), conversion.length, false));
    break;
  case 'c': {
    const char byte = static_cast<char>(arguments.next_word());
    append_text(out, conversion, std::string_view(&byte, 1));
    break;
  }
  case 's':
    append_text(
        out, conversion,
        text_argument(arguments.machine.memory, arguments.next_word(), conversion.precision));
    break;
  case 'p': {
    const std::uint32_t address = arguments.next_word();
    char text[16] = "(nil)";
    if (address != 0) std::snprintf(text, sizeof text, "0x%x", address);
    append_text(out, conversion, text);
    break;
  }
  case 'e':
  case 'E':
  case 'f':
  case 'F':
  case 'g':
  case 'G':
  case 'a':
  case 'A': append_formatted(out, conversion, letter, arguments.next_double()); break;
  default: throw Fault{std::string("a format with the unknown conversion %") + conversion.letter};
  }
}

// The text that a format and its arguments make.
std::string formatted(Memory &memory, Address format_address, NativeCall &arguments) {
  const std::string format(memory.text(format_address));
  std::string out;
  std::size_t position = 0;
  while (position < format.size()) {
    const std::size_t percent = std::min(format.find('%', position), format.size());
    out.append(format, position, percent - position);
    position = percent;
    if (position == format.size()) break;
    ++position;
    append_conversion(out, parse_conversion(format, position, arguments), arguments);
  }
  return out;
}

// The arguments behind a va_list: from an address on, without a known end.
NativeCall list_arguments(NativeCall &call, Address list) {
  return {call.machine, list, call.machine.memory.limit()};
}

void give_length(NativeCall &call, const std::string &text) {
  call.give(static_cast<std::uint32_t>(text.size()));
}

// Stores as much as fits into size bytes, with a NUL.
void store_text(NativeCall &call, Address to, std::uint32_t size, const std::string &text) {
  give_length(call, text);
  if (size == 0) return;
  const auto kept = static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), size - 1));
  unsigned char *place = call.machine.memory.at(to, kept + 1, "write");
  std::memcpy(place, text.data(), kept);
  place[kept] = 0;
}

void print(NativeCall &call, std::uint32_t stream, bool from_list) {
  const Address format = call.next_word();
  std::string text;
  if (from_list) {
    NativeCall arguments = list_arguments(call, call.next_word());
    text = formatted(call.machine.memory, format, arguments);
  } else {
    text = formatted(call.machine.memory, format, call);
  }
  write_stream(call.machine, stream, text);
  give_length(call, text);
}

void print_to_text(NativeCall &call, bool bounded, bool from_list) {
  const Address to = call.next_word();
  const std::uint32_t size = bounded ? call.next_word() : ~0u;
  const Address format = call.next_word();
  std::string text;
  if (from_list) {
    NativeCall arguments = list_arguments(call, call.next_word());
    text = formatted(call.machine.memory, format, arguments);
  } else {
    text = formatted(call.machine.memory, format, call);
  }
  store_text(call, to, size, text);
}

void native_printf(NativeCall &call) {
  print(call, stream_out, false);
}
void native_fprintf(NativeCall &call) {
  const std::uint32_t stream = call.next_word();
  print(call, stream, false);
}
void native_vprintf(NativeCall &call) {
  print(call, stream_out, true);
}
void native_vfprintf(NativeCall &call) {
  const std::uint32_t stream = call.next_word();
  print(call, stream, true);
}
void native_sprintf(NativeCall &call) {
  print_to_text(call, false, false);
}
void native_snprintf(NativeCall &call) {
  print_to_text(call, true, false);
}
void native_vsprintf(NativeCall &call) {
  print_to_text(call, false, true);
}
void native_vsnprintf(NativeCall &call) {
  print_to_text(call, true, true);
}

// Characters and lines ---------------------------------------------------------------------------

void put_byte(NativeCall &call, std::uint32_t byte, std::uint32_t stream) {
  const char text[] = {static_cast<char>(byte)};
  write_stream(call.machine, stream, std::string_view(text, 1));
  call.give(byte & 255);
}

void native_putchar(NativeCall &call) {
  put_byte(call, call.next_word(), stream_out);
}
void native_fputc(NativeCall &call) {
  const std::uint32_t byte = call.next_word();
  put_byte(call, byte, call.next_word());
}
void native_puts(NativeCall &call) {
  write_output(call.machine, call.machine.memory.text(call.next_word()));
  write_output(call.machine, "\n");
}
void native_fputs(NativeCall &call) {
  const std::string_view text = call.machine.memory.text(call.next_word());
  write_stream(call.machine, call.next_word(), text);
  call.give(1);
}

void native_fwrite(NativeCall &call) {
  const Address from = call.next_word();
  const std::uint32_t size = call.next_word();
  const std::uint32_t count = call.next_word();
  const std::uint32_t stream = call.next_word();
  const std::uint64_t bytes = static_cast<std::uint64_t>(size) * count;
  if (bytes == 0) return;
  if (bytes > call.machine.memory.limit()) throw Fault{"fwrite of more than the memory"};
  const unsigned char *start =
      call.machine.memory.at(from, static_cast<std::uint32_t>(bytes), "read");
  write_stream(call.machine, stream, {reinterpret_cast<const char *>(start), bytes});
  call.give(count);
}

void native_fflush(NativeCall &call) {
  flush_output(call.machine);
}

int read_byte(Machine &machine, std::uint32_t stream) {
  if (stream != stream_in) throw Fault{"input from a stream that is not open for it"};
  flush_output(machine); // a prompt comes before the wait for its answer
  return std::getc(stdin);
}

void native_getchar(NativeCall &call) {
  call.give(static_cast<std::uint32_t>(read_byte(call.machine, stream_in)));
}
void native_fgetc(NativeCall &call) {
  call.give(static_cast<std::uint32_t>(read_byte(call.machine, call.next_word())));
}

void native_fgets(NativeCall &call) {
  const Address to = call.next_word();
  const std::int32_t size = call.next_int();
  const std::uint32_t stream = call.next_word();
  if (size <= 0) return;
  std::string line;
  while (static_cast<std::int32_t>(line.size()) < size - 1) {
    const int byte = read_byte(call.machine, stream);
    if (static_cast<std::uint32_t>(byte) == end_of_file) break;
    line += static_cast<char>(byte);
    if (byte == '\n') break;
  }
  if (line.empty() && size > 1) return;
  store_text(call, to, static_cast<std::uint32_t>(size), line);
  call.give(to);
}

constexpr Native natives[] = {
    {"printf", native_printf},     {"fprintf", native_fprintf},     {"vprintf", native_vprintf},
    {"vfprintf", native_vfprintf}, {"sprintf", native_sprintf},     {"snprintf", native_snprintf},
    {"vsprintf", native_vsprintf}, {"vsnprintf", native_vsnprintf}, {"putchar", native_putchar},
    {"putc", native_fputc},        {"fputc", native_fputc},         {"puts", native_puts},
    {"fputs", native_fputs},       {"fwrite", native_fwrite},       {"fflush", native_fflush},
    {"getchar", native_getchar},   {"getc", native_fgetc},          {"fgetc", native_fgetc},
    {"fgets", native_fgets},
};

} // namespace

std::span<const Native> stdio_natives() {
  return natives;
}

} // namespace velkor::run
