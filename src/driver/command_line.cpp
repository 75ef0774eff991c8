#include "driver/command_line.h"

#include "core/file_names.h"
#include "core/options.h"
#include "core/output.h"

#include <cctype>
#include <cstdlib>

namespace velkor {
namespace {

constexpr std::size_t max_argument = 255; // characters that matter

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// A walk along the letters of one argument.
struct Letters {
  std::string_view text;
  std::size_t at = 0;

  [[nodiscard]] char peek() const { return at < text.size() ? text[at] : '\0'; }

  // The next digit if it is at most highest; otherwise -1, and nothing is consumed.
  int take_digit(char highest) {
    const char c = peek();
    if (!is_digit(c) || c > highest) return -1;
    ++at;
    return c - '0';
  }

  // The digits that follow as a number, or -1 without any.
  int take_number() {
    if (!is_digit(peek())) return -1;
    int value = 0;
    for (; is_digit(peek()); ++at)
      if (value < 100000000) value = value * 10 + (peek() - '0');
    return value;
  }

  void drop_rest() { at = text.size(); }
};

void take_debug_flag(Letters &letters) {
  if (options.debug_level == 0) return;
  if (const int digit = letters.take_digit('9'); digit >= 0)
    options.debug_flag[static_cast<std::size_t>(digit)] = true;
}

void take_debug_level(Letters &letters) {
  options.debug_level += 1;
  if (letters.peek() != 'V' && letters.peek() != 'v') return;
  ++letters.at;
  options.opt_all_volatile = 1;
}

void take_inline_size(Letters &letters) {
  const int number = letters.take_number();
  options.opt_inline_size = number < 0 ? 1 : number;
  if (number >= 0) letters.drop_rest();
}

void take_program_mode(Letters &letters) {
  const int digit = letters.take_digit('9');
  if (digit >= 0) options.opt_program_mode = digit <= 3 ? digit : 0;
}

int digit_or(int digit, int otherwise) {
  return digit < 0 ? otherwise : digit;
}

void take_letter(Letters &letters) {
  const std::size_t begin = letters.at;
  switch (std::tolower(static_cast<unsigned char>(letters.text[letters.at++]))) {
  case 'a': options.opt_aliased = 1; return;
  case 'c': options.opt_call_graph_file = 1; return;
  case 'e': options.opt_big_endian_bits = 1; return;
  case 'f': options.opt_externs_volatile = 1; return;
  case 'h': options.opt_builtin_level = digit_or(letters.take_digit('2'), 1); return;
  case 'i': take_inline_size(letters); return;
  case 'j': options.opt_assume_reentrant = 0; return;
  case 'k': options.opt_unsigned_preserving = 1; return;
  case 'n': options.info_level = digit_or(letters.take_digit('2'), 1); return;
  case 'o': options.opt_level = digit_or(letters.take_digit('3'), 2); return;
  case 'p': take_program_mode(letters); return;
  case 'q': options.opt_quiet = 1; return;
  case 'r': options.opt_regparm_keep = 1; return;
  case 's': options.opt_source_comments = 1; return;
  case 't': options.opt_no_alias = 1; return;
  case 'v':
    options.opt_target_mode = digit_or(letters.take_number(), options.opt_target_mode);
    return;
  case 'x': take_debug_flag(letters); return;
  case 'z': options.opt_size = 1; return;
  case '#': take_debug_level(letters); return;
  // Accepted for the sake of old command files; nothing depends on them.
  case 'b':
  case 'l':
  case 'u':
  case 'w':
  case 'y': return;
  default:
    print("\n>>>> Warning: unrecognized option: '-%s'\n\n",
          std::string(letters.text.substr(begin)).c_str());
    letters.drop_rest();
  }
}

void take_options(std::string_view letters_text) {
  Letters letters{letters_text};
  while (letters.at < letters.text.size())
    take_letter(letters);
}

} // namespace

bool parse_command_line(int argc, const char *const *argv, FileNames &names) {
  int name_count = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = std::string_view(argv[i]).substr(0, max_argument);
    if (!argument.empty() && argument[0] == '-') {
      take_options(argument.substr(1));
      continue;
    }
    if (++name_count == 1) names.input_name = argument;
    if (name_count == 2) names.output_name = argument;
  }
  if (name_count <= 2) return true;
  print("\n>>>> ERROR - Garbage on command line\n\n");
  return false;
}

void complete_file_names(FileNames &names) {
  if (names.output_name.empty()) names.output_name = strip_extension(names.input_name);
  names.input_name = set_extension(names.input_name, ".if", true);
  names.output_name = set_extension(names.output_name, ".opt", false);
}

} // namespace velkor
