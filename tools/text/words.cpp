#include "text/words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <vector>

#include "core/opcodes.h"
#include "core/storage_classes.h"

namespace velkor::text {
namespace {

// Words of the basic types, by number.
constexpr std::array<std::string_view, 16> type_words = {
    "void",   "type1", "char", "short",   "int",   "long",   "float",    "double",
    "struct", "union", "enum", "ldouble", "uchar", "ushort", "unsigned", "ulong"};

// Suffixes of the derivations, by number.
constexpr std::array<std::string_view, 4> derivation_suffixes = {"", "*", "()", "[]"};

struct Escape {
  char letter;
  char character;
};
constexpr std::array<Escape, 7> escapes = {
    {{'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'a', '\a'}, {'b', '\b'}, {'f', '\f'}, {'v', '\v'}}};

// Characters by hand: the C library's answers depend on the locale.
constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_octal(char c) {
  return c >= '0' && c <= '7';
}
constexpr int hex_value(char c) {
  if (is_digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}
constexpr bool is_word_start(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.' || c == '$';
}
constexpr bool is_word(char c) {
  return is_word_start(c) || is_digit(c);
}

const std::map<std::string, std::uint8_t, std::less<>> &opcode_words() {
  static const auto words = [] {
    std::map<std::string, std::uint8_t, std::less<>> table;
    for (std::size_t op = 0; op < opcode_table.size(); ++op) {
      std::string word;
      print_opcode(word, static_cast<std::uint8_t>(op));
      table.emplace(std::move(word), static_cast<std::uint8_t>(op));
    }
    return table;
  }();
  return words;
}

// A name that needs no quotes: a word that reads as nothing else in a tree.
bool is_bare_name(std::string_view name) {
  if (name.empty() || !is_word_start(name[0])) return false;
  if (!std::all_of(name.begin(), name.end(), is_word)) return false;
  if (name[0] == '.' && name.size() > 1 && is_digit(name[1])) return false;
  if (name[0] == 'L' && name.size() > 1 && is_digit(name[1])) return false;
  return name != "L" && !find_opcode(name);
}

// A number behind a fixed stem, `op200` or `class7`, up to 255.
std::optional<std::uint8_t> numbered_word(std::string_view word, std::string_view stem) {
  if (word.substr(0, stem.size()) != stem) return std::nullopt;
  const std::string_view digits = word.substr(stem.size());
  if (digits.empty() || digits.size() > 3 || !std::all_of(digits.begin(), digits.end(), is_digit)) {
    return std::nullopt;
  }
  int value = 0;
  for (const char digit : digits) {
    value = value * 10 + (digit - '0');
  }
  if (value > 255) return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

} // namespace

void print_name(std::string &out, std::string_view name) {
  if (is_bare_name(name)) {
    out += name;
  } else {
    print_string(out, name, '\'');
  }
}

void print_string(std::string &out, std::string_view bytes, char quote) {
  out += quote;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    const auto escape =
        std::find_if(escapes.begin(), escapes.end(), [c](Escape e) { return e.character == c; });
    const auto code = static_cast<unsigned char>(c);
    if (c == quote || c == '\\') {
      out += '\\';
      out += c;
    } else if (escape != escapes.end()) {
      out += '\\';
      out += escape->letter;
    } else if (c == '\0' && (i + 1 == bytes.size() || !is_digit(bytes[i + 1]))) {
      out += "\\0";
    } else if (code < 0x20 || code >= 0x7F) {
      out += '\\';
      out += static_cast<char>('0' + (code >> 6));
      out += static_cast<char>('0' + (code >> 3 & 7));
      out += static_cast<char>('0' + (code & 7));
    } else {
      out += c;
    }
  }
  out += quote;
}

void print_hex(std::string &out, std::uint32_t value) {
  static constexpr std::string_view digits = "0123456789ABCDEF";
  std::string reversed;
  do {
    reversed += digits[value & 15];
    value >>= 4;
  } while (value != 0);
  out += "0x";
  out.append(reversed.rbegin(), reversed.rend());
}

void print_type(std::string &out, TypeWord type) {
  std::vector<Derivation> chain; // outermost first
  for (TypeWord rest = type; is_derived(rest); rest = underived(rest)) {
    const Derivation derivation = outermost_derivation(rest);
    if (derivation == 0) { // a gap in the chain: no words for that
      print_hex(out, type);
      return;
    }
    chain.push_back(derivation);
  }
  out += type_words[type & basic_type_mask];
  for (auto each = chain.rbegin(); each != chain.rend(); ++each) {
    out += derivation_suffixes[*each];
  }
}

void print_opcode(std::string &out, std::uint8_t op) {
  if (!opcode_table[op].listed) {
    out += "op" + std::to_string(op);
    return;
  }
  for (const char *c = opcode_table[op].identifier; *c != '\0'; ++c) {
    out += *c >= 'A' && *c <= 'Z' ? static_cast<char>(*c - 'A' + 'a') : *c;
  }
}

std::optional<std::uint8_t> find_opcode(std::string_view word) {
  const auto found = opcode_words().find(word);
  if (found != opcode_words().end()) return found->second;
  return numbered_word(word, "op");
}

void print_storage_class(std::string &out, std::uint8_t storage_class) {
  const std::string_view name = storage_class_table[storage_class].name;
  out += name.empty() ? "class" + std::to_string(storage_class) : std::string(name);
}

std::optional<std::uint8_t> find_storage_class(std::string_view word) {
  for (std::size_t i = 0; i < storage_class_table.size(); ++i) {
    if (!word.empty() && word == storage_class_table[i].name) return static_cast<std::uint8_t>(i);
  }
  return numbered_word(word, "class");
}

bool is_float_text(std::string_view text) {
  Cursor cursor(text);
  if (text.empty() || text[0] == ' ' || cursor.number_text().size() != text.size()) return false;
  return text.find_first_of(".eE") != std::string_view::npos &&
         text.find_first_of("xX") == std::string_view::npos;
}

void Cursor::fail(std::string_view what) {
  if (failed()) return;
  error_ = "column " + std::to_string(position_ + 1) + ": ";
  error_ += what;
}

void Cursor::expected(std::string_view what) {
  if (failed()) return;
  std::string message = "expected " + std::string(what);
  if (at_end()) {
    message += ", found the end of the line";
  } else {
    const std::string_view word = peek_word();
    message += ", found ";
    print_string(message, word.empty() ? line_.substr(position_, 1) : word, '\'');
  }
  fail(message);
}

void Cursor::skip_blanks() {
  while (position_ < line_.size() &&
         (line_[position_] == ' ' || line_[position_] == '\t' || line_[position_] == '\r')) {
    ++position_;
  }
  if (next() == '#' || (next() == '/' && after() == '/')) position_ = line_.size();
}

bool Cursor::at_end() {
  skip_blanks();
  return position_ >= line_.size();
}

char Cursor::peek() {
  skip_blanks();
  return next();
}

char Cursor::next() const {
  return position_ < line_.size() ? line_[position_] : '\0';
}

char Cursor::after() const {
  return position_ + 1 < line_.size() ? line_[position_ + 1] : '\0';
}

bool Cursor::accept(char character) {
  if (failed() || peek() != character) return false;
  ++position_;
  return true;
}

bool Cursor::accept_word(std::string_view word) {
  if (failed() || peek_word() != word) return false;
  position_ += word.size();
  return true;
}

void Cursor::require(char character) {
  if (!accept(character)) expected(std::string("'") + character + "'");
}

std::string_view Cursor::peek_word() {
  skip_blanks();
  std::size_t end = position_;
  while (end < line_.size() && is_word(line_[end])) {
    ++end;
  }
  return line_.substr(position_, end - position_);
}

std::int64_t Cursor::integer(std::int64_t low, std::int64_t high) {
  if (failed()) return 0;
  skip_blanks();
  const std::size_t start = position_;
  const bool negative = next() == '-';
  if (negative) ++position_;
  int base = 10;
  if (next() == '0' && (after() == 'x' || after() == 'X')) {
    base = 16;
    position_ += 2;
  }
  std::int64_t value = 0;
  std::size_t digits = 0;
  for (; hex_value(next()) >= 0 && hex_value(next()) < base; ++position_, ++digits) {
    if (value < (std::int64_t{1} << 40)) value = value * base + hex_value(next());
  }
  if (digits == 0) {
    position_ = start;
    expected("a number");
    return 0;
  }
  if (negative) value = -value;
  if (value < low || value > high) {
    position_ = start;
    expected("a number from " + std::to_string(low) + " to " + std::to_string(high));
    return 0;
  }
  return value;
}

std::uint32_t Cursor::bits32() {
  return static_cast<std::uint32_t>(integer(-(std::int64_t{1} << 31), 0xFFFFFFFF));
}

std::string Cursor::name() {
  if (peek() == '\'') return string('\'');
  const std::string_view word = peek_word();
  if (word.empty() || !is_word_start(word[0])) {
    expected("a name");
    return {};
  }
  skip(word.size());
  return std::string(word);
}

std::string Cursor::string(char quote) {
  std::string bytes;
  require(quote);
  while (!failed() && next() != quote) {
    if (position_ >= line_.size()) {
      fail("a string without an end");
      break;
    }
    char c = line_[position_++];
    if (c != '\\') {
      bytes += c;
      continue;
    }
    c = next();
    ++position_;
    const auto escape =
        std::find_if(escapes.begin(), escapes.end(), [c](Escape e) { return e.letter == c; });
    if (escape != escapes.end()) {
      bytes += escape->character;
    } else if (is_octal(c)) {
      int value = c - '0';
      for (int count = 1; count < 3 && is_octal(next()); ++count, ++position_) {
        value = value * 8 + (next() - '0');
      }
      bytes += static_cast<char>(value & 0xFF);
    } else if (c == 'x' && hex_value(next()) >= 0) {
      int value = 0;
      for (int count = 0; count < 2 && hex_value(next()) >= 0; ++count, ++position_) {
        value = value * 16 + hex_value(next());
      }
      bytes += static_cast<char>(value);
    } else if (c == '\\' || c == '"' || c == '\'') {
      bytes += c;
    } else {
      --position_;
      fail("an unknown escape in a string");
    }
  }
  if (!failed()) ++position_;
  return bytes;
}

TypeWord Cursor::type(TypeWord highest) {
  if (failed()) return 0;
  if (peek() == '0') return static_cast<TypeWord>(integer(0, highest));
  const std::string_view word = peek_word();
  const auto found = std::find(type_words.begin(), type_words.end(), word);
  if (found == type_words.end()) {
    expected("a type");
    return 0;
  }
  skip(word.size());
  auto result = static_cast<TypeWord>(found - type_words.begin());
  for (bool more = true; more && !failed();) {
    more = false;
    for (std::size_t i = 1; i < derivation_suffixes.size(); ++i) {
      const std::string_view suffix = derivation_suffixes[i];
      if (line_.substr(std::min(position_, line_.size()), suffix.size()) != suffix) continue;
      if ((result & 0xC0000000) != 0 || derive(result, static_cast<Derivation>(i)) > highest) {
        fail("a type of too many derivations");
        return 0;
      }
      result = derive(result, static_cast<Derivation>(i));
      position_ += suffix.size();
      more = true;
    }
  }
  return result;
}

std::string_view Cursor::number_text() {
  skip_blanks();
  std::size_t end = position_;
  const auto at = [this](std::size_t i) { return i < line_.size() ? line_[i] : '\0'; };
  if (at(end) == '+' || at(end) == '-') ++end;
  const std::size_t first_digit = end;
  if (at(end) == '0' && (at(end + 1) == 'x' || at(end + 1) == 'X')) {
    for (end += 2; hex_value(at(end)) >= 0; ++end) {
    }
    return line_.substr(position_, end - position_);
  }
  while (is_digit(at(end))) {
    ++end;
  }
  std::size_t digits = end - first_digit;
  if (at(end) == '.') {
    for (++end; is_digit(at(end)); ++end) {
      ++digits;
    }
  }
  if (digits == 0) return {};
  if (at(end) == 'e' || at(end) == 'E') {
    std::size_t exponent = end + 1;
    if (at(exponent) == '+' || at(exponent) == '-') ++exponent;
    if (is_digit(at(exponent))) {
      for (end = exponent; is_digit(at(end)); ++end) {
      }
    }
  }
  return line_.substr(position_, end - position_);
}

} // namespace velkor::text
