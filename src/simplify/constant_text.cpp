#include "simplify/constant_text.h"

#include "core/nodes.h"

#include <algorithm>
#include <string>

namespace velkor {
namespace {

// Exponents beyond this are no number that any type holds; the bound keeps the sums small.
constexpr long exponent_limit = 1000000;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// A decimal integer as "%d" reads one: optional sign, digits; 0 without any.
long read_exponent(std::string_view text) {
  std::size_t at = 0;
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  long value = 0;
  for (; at < text.size() && is_digit(text[at]); ++at)
    value = std::min(value * 10 + (text[at] - '0'), exponent_limit);
  return negative ? -value : value;
}

// "d.ddd" with exponent 1 to 4: the point moves right.
void move_point_right(std::string &digits, long exponent) {
  digits.erase(1, 1);
  const auto point = static_cast<std::size_t>(exponent) + 1;
  while (digits.size() <= point)
    digits += '0';
  digits.insert(point, 1, '.');
}

// "d.ddd" with exponent -1 to -3: the digits move right through the point.
void move_point_left(std::string &digits, long exponent) {
  for (; exponent < 0; ++exponent) {
    digits[1] = digits[0];
    digits[0] = '0';
    digits.insert(1, 1, '.');
    if (digits.back() == '0') digits.pop_back();
  }
}

} // namespace

FloatConstants float_constants;

char *canon_float_text(std::string_view text, bool local) {
  const int zone = local ? 1 : 0;
  char sign = '+';
  std::size_t at = 0;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) sign = text[at++];
  constexpr std::size_t nowhere = std::string_view::npos;
  std::size_t point = nowhere;
  for (; at < text.size() && (text[at] == '0' || text[at] == '.'); ++at)
    if (text[at] == '.') point = at;
  if (at >= text.size() || !is_digit(text[at])) return copy_text(zone, "+0.0");

  long exponent = point == nowhere ? 0 : -static_cast<long>(at - point);
  std::string digits{text[at++], '.'};
  for (; at < text.size() && (is_digit(text[at]) || text[at] == '.'); ++at)
    if (text[at] == '.') {
      point = at;
    } else {
      digits += text[at];
      if (point == nowhere) ++exponent;
    }
  if (at < text.size() && (text[at] == 'E' || text[at] == 'e'))
    exponent += read_exponent(text.substr(at + 1));
  while (digits.back() == '0')
    digits.pop_back();
  if (digits.back() == '.') digits += '0';

  if (exponent >= 1 && exponent <= 4) {
    move_point_right(digits, exponent);
    exponent = 0;
  } else if (exponent <= -1 && exponent >= -3) {
    move_point_left(digits, exponent);
    exponent = 0;
  }
  std::string result = sign + digits;
  if (exponent != 0) result += 'e' + std::to_string(exponent);
  return copy_text(zone, result);
}

void init_float_constants() {
  float_constants.float_zero = canon_float_text("0.0", false);
  float_constants.float_one = canon_float_text("1.0", false);
  float_constants.float_minus_one = canon_float_text("-1.0", false);
  float_constants.float_two = canon_float_text("2.0", false);
}

} // namespace velkor
