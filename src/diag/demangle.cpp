// Decodes C++ names in the scheme that puts "__" and the types behind a name: foo__Fi is foo(int).
//
// A recursive-descent reader over the characters with one output buffer. The first error silences
// everything behind it, and the parse runs on harmlessly to its end.
#include "diag/readable_name.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace velkor {
namespace {

using Position = const char *;

constexpr std::size_t out_size = 200;     // bytes, the NUL included
constexpr unsigned most_steps = 10000;    // types parsed for one name: repeats can multiply them
constexpr unsigned deepest_nesting = 200; // of types, classes and template arguments

struct Decoder {
  std::array<char, out_size> out{};
  std::size_t out_len = 0; // goes on counting when the buffer is full
  bool overflow = false;
  bool failed = false;
  unsigned quiet = 0; // depth of silent parsing
  unsigned name_length = 0;
  unsigned steps = 0;
  unsigned nesting = 0;
};

Decoder decoder;

struct OperatorCode {
  std::string_view code;
  std::string_view text;
};

// The codes of three letters stand ahead of those of two.
constexpr std::array operator_codes = {
    OperatorCode{"apl", "+="},  OperatorCode{"ami", "-="},    OperatorCode{"amu", "*="},
    OperatorCode{"adv", "/="},  OperatorCode{"amd", "%="},    OperatorCode{"aer", "^="},
    OperatorCode{"aad", "&="},  OperatorCode{"aor", "|="},    OperatorCode{"ars", ">>="},
    OperatorCode{"als", "<<="}, OperatorCode{"nwa", "new[]"}, OperatorCode{"dla", "delete[]"},
    OperatorCode{"nw", "new"},  OperatorCode{"dl", "delete"}, OperatorCode{"pl", "+"},
    OperatorCode{"mi", "-"},    OperatorCode{"ml", "*"},      OperatorCode{"dv", "/"},
    OperatorCode{"md", "%"},    OperatorCode{"er", "^"},      OperatorCode{"ad", "&"},
    OperatorCode{"or", "|"},    OperatorCode{"co", "~"},      OperatorCode{"nt", "!"},
    OperatorCode{"as", "="},    OperatorCode{"lt", "<"},      OperatorCode{"gt", ">"},
    OperatorCode{"ls", "<<"},   OperatorCode{"rs", ">>"},     OperatorCode{"eq", "=="},
    OperatorCode{"ne", "!="},   OperatorCode{"le", "<="},     OperatorCode{"ge", ">="},
    OperatorCode{"aa", "&&"},   OperatorCode{"oo", "||"},     OperatorCode{"pp", "++"},
    OperatorCode{"mm", "--"},   OperatorCode{"cm", ","},      OperatorCode{"rm", "->*"},
    OperatorCode{"rf", "->"},   OperatorCode{"cl", "()"},     OperatorCode{"vc", "[]"},
};

constexpr std::string_view template_mark = "__pt__";

Position decode_class(Position p, bool last_only);
Position decode_type_head(Position p, bool nested, bool space);
Position decode_type_tail(Position p, bool nested, Position base_end);
Position decode_template_args(Position p);

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool begins(Position p, std::string_view text) {
  return std::strncmp(p, text.data(), text.size()) == 0;
}

void emit(char c) {
  if (decoder.quiet != 0) return;
  if (!decoder.overflow) {
    if (decoder.out_len >= out_size - 1) {
      decoder.overflow = true;
      decoder.out.back() = '\0';
    } else {
      decoder.out[decoder.out_len] = c;
    }
  }
  decoder.out_len += 1;
}

void emit_text(std::string_view text) {
  for (const char c : text)
    emit(c);
}

void fail() {
  if (decoder.failed) return;
  decoder.failed = true;
  decoder.quiet += 1;
}

// Parses without producing text.
template <typename Parse> Position silently(const Parse &parse) {
  decoder.quiet += 1;
  const Position behind = parse();
  decoder.quiet -= 1;
  return behind;
}

// Counts a step of the parse; a name that asks for too many, or nests too deep, is no valid one.
class Step {
public:
  Step() {
    decoder.nesting += 1;
    decoder.steps += 1;
    if (decoder.nesting > deepest_nesting || decoder.steps > most_steps) fail();
  }
  ~Step() { decoder.nesting -= 1; }
  Step(const Step &) = delete;
  Step &operator=(const Step &) = delete;
};

Position read_number(Position p, unsigned &n) {
  n = 0;
  while (is_digit(*p) && n < decoder.name_length)
    n = 10 * n + static_cast<unsigned>(*p++ - '0');
  if (n == 0 || n == decoder.name_length) fail();
  return p;
}

// Steps over the given character, which must stand there.
Position expect(Position p, char c) {
  if (*p == c) return p + 1;
  fail();
  return p;
}

// A digit that must stand there; 0 without one.
Position read_digit(Position p, unsigned &digit) {
  digit = 0;
  if (!is_digit(*p)) {
    fail();
    return p;
  }
  digit = static_cast<unsigned>(*p - '0');
  return p + 1;
}

Position decode_type(Position p) {
  const Position base_end = decode_type_head(p, false, false);
  return decode_type_tail(p, false, base_end);
}

// ------------------------------------------------------------------------------------------------
// Names

const OperatorCode *operator_at(Position p) {
  for (const OperatorCode &entry : operator_codes) {
    if (!begins(p, entry.code)) continue;
    const Position behind = p + entry.code.size();
    if (*behind == '\0' || begins(behind, "__")) return &entry;
  }
  return nullptr;
}

// A constructor, destructor, conversion function or operator at "__". Returns the position behind
// it, or none; special says whether its text went out.
Position decode_special_name(Position p, Position class_name, bool &special) {
  const Position q = p + 2;
  const bool is_constructor = begins(q, "ct");
  if (is_constructor || begins(q, "dt")) {
    if (class_name) {
      special = true;
      if (!is_constructor) emit('~');
      decode_class(class_name, true);
    }
    return q + 2;
  }
  if (begins(q, "op")) {
    special = true;
    emit_text("operator ");
    return decode_type(q + 2);
  }
  const OperatorCode *entry = operator_at(q);
  if (!entry) return nullptr;
  special = true;
  emit_text("operator ");
  emit_text(entry->text);
  return q + entry->code.size();
}

// Where a name of the given length ends; with length 0 at "__" or at the end of the text.
// template_at is where its template arguments begin, or none.
Position find_name_end(Position p, unsigned length, Position &template_at) {
  if (length > 0) {
    const std::string_view name(p, strnlen(p, length));
    const std::size_t at = name.find(template_mark);
    template_at = at == std::string_view::npos ? nullptr : p + at;
    return p + name.size();
  }
  Position e = p;
  while (*e != '\0' && !(e != p && begins(e, "__") && e[2] != '_'))
    ++e;
  template_at = begins(e, template_mark) ? e : nullptr;
  return e;
}

Position decode_name(Position p, unsigned length, Position class_name) {
  bool special = false;
  Position e = nullptr;
  Position template_at = nullptr;
  if ((length == 0 || length >= 4) && begins(p, "__"))
    e = decode_special_name(p, class_name, special);
  if (!e) e = find_name_end(p, length, template_at);
  if (!special) {
    const Position end = template_at ? template_at : e;
    emit_text({p, static_cast<std::size_t>(end - p)});
    if (template_at) e = decode_template_args(template_at + template_mark.size());
  }
  const bool ends_well = length > 0 ? e == p + length : *e == '\0' || begins(e, "__");
  if (!ends_well) fail();
  return e;
}

Position decode_class(Position p, bool last_only) {
  const Step step;
  unsigned n = 0;
  if (*p != 'Q') {
    p = read_number(p, n);
    return decoder.failed ? p : decode_name(p, n, nullptr);
  }
  p = expect(read_number(p + 1, n), '_');
  for (unsigned i = 1; i <= n && !decoder.failed; ++i) {
    const bool silent = last_only && i < n;
    if (silent) decoder.quiet += 1;
    p = decode_class(p, false);
    if (i < n) emit_text("::");
    if (silent) decoder.quiet -= 1;
  }
  return p;
}

// ------------------------------------------------------------------------------------------------
// Types

Position skip_qualifiers(Position p) {
  while (*p == 'C' || *p == 'V')
    ++p;
  return p;
}

Position decode_qualifiers(Position p) {
  for (; *p == 'C' || *p == 'V'; ++p)
    emit_text(*p == 'C' ? "const " : "volatile ");
  return p;
}

std::string_view basic_type_of(char code) {
  switch (code) {
  case 'v': return "void";
  case 'c': return "char";
  case 'w': return "wchar_t";
  case 'b': return "bool";
  case 's': return "short";
  case 'i': return "int";
  case 'l': return "long";
  case 'L': return "long long";
  case 'f': return "float";
  case 'd': return "double";
  case 'r': return "long double";
  default: return {};
  }
}

Position decode_base_type(Position p) {
  p = decode_qualifiers(p);
  if (is_digit(*p) || *p == 'Q') return decode_class(p, false);
  if (*p == 'S' || *p == 'U') emit_text(*p++ == 'S' ? "signed " : "unsigned ");
  const std::string_view text = basic_type_of(*p);
  if (text.empty()) {
    fail();
    return p;
  }
  emit_text(text);
  return p + 1;
}

constexpr unsigned remembered_parameters = 10; // entries 1 to 9 are used

// Where each parameter's encoding begins, for the forms that repeat an earlier one.
struct Parameters {
  std::array<Position, remembered_parameters> entries{};
  unsigned count = 1; // number of the next one

  void remember(Position p) {
    if (count < remembered_parameters) entries[count] = p;
  }
};

// "T" or "N" with a count: an earlier parameter once more, or several times. good becomes false
// where the index names none.
Position decode_repeat(Position p, Parameters &parameters, bool &good) {
  unsigned times = 1;
  unsigned index = 0;
  if (*p == 'N')
    p = read_digit(p + 1, times);
  else
    ++p;
  p = read_digit(p, index);
  good = index >= 1 && index < parameters.count && index < remembered_parameters &&
         parameters.entries[index];
  if (!good) {
    fail();
    return p;
  }
  for (unsigned i = 1; i <= times; ++i) {
    parameters.remember(nullptr);
    decode_type(parameters.entries[index]);
    if (i < times) emit_text(", ");
    parameters.count += 1;
  }
  return p;
}

Position decode_parameters(Position p) {
  emit('(');
  Parameters parameters;
  if (*p == 'v') {
    ++p;
  } else {
    while (!decoder.failed) {
      if (*p == 'T' || *p == 'N') {
        bool good = true;
        p = decode_repeat(p, parameters, good);
        if (!good) return p;
      } else {
        parameters.remember(p);
        p = decode_type(p);
        parameters.count += 1;
      }
      if (*p == '\0' || *p == 'e' || *p == '_') break;
      emit_text(", ");
    }
  }
  if (*p == 'e') {
    if (parameters.count > 1) emit_text(", ");
    emit_text("...");
    ++p;
  }
  emit(')');
  return p;
}

Position skip_array_bound(Position p) {
  while (is_digit(*p))
    ++p;
  return expect(p, '_');
}

Position decode_pointer_to_member(Position p, Position q) {
  Position behind = silently([&] { return decode_class(q + 1, false); });
  behind = decode_type_head(behind, true, true);
  decode_class(q + 1, false);
  emit_text("::*");
  decode_qualifiers(p);
  return behind;
}

// The part of a declarator ahead of the name.
Position decode_type_head(Position p, bool nested, bool space) {
  const Step step;
  if (decoder.failed) return p;
  const Position q = skip_qualifiers(p);
  Position behind = nullptr;
  switch (*q) {
  case 'P':
  case 'R':
    behind = decode_type_head(q + 1, true, true);
    emit(*q == 'P' ? '*' : '&');
    decode_qualifiers(p);
    return behind;
  case 'M': return decode_pointer_to_member(p, q);
  case 'F':
    behind = silently([&] { return decode_parameters(q + 1); });
    if (*behind == '_') behind = decode_type_head(behind + 1, false, true);
    if (nested) emit('(');
    return behind;
  case 'A':
    behind = decode_type_head(skip_array_bound(q + 1), false, true);
    if (nested) emit('(');
    return behind;
  default:
    behind = decode_base_type(p);
    if (space) emit(' ');
    return behind;
  }
}

// "[", the bound, "]"; a bound of 0 stands for none.
Position decode_array_bound(Position p) {
  emit('[');
  if (!begins(p, "0_"))
    for (; is_digit(*p); ++p)
      emit(*p);
  else
    ++p;
  emit(']');
  return expect(p, '_');
}

// The part of a declarator behind the name. The base type ends at base_end, where the head found
// its end: reading it again would double the work at each level of nested template arguments.
Position decode_type_tail(Position p, bool nested, Position base_end) {
  const Step step;
  while (!decoder.failed) {
    const Position q = skip_qualifiers(p);
    switch (*q) {
    case 'P':
    case 'R':
      nested = true;
      p = q + 1;
      break;
    case 'M':
      nested = true;
      p = silently([&] { return decode_class(q + 1, false); });
      break;
    case 'F': {
      if (nested) emit(')');
      const Position qualifiers = p;
      p = decode_parameters(q + 1);
      if (qualifiers != q) {
        emit(' ');
        decode_qualifiers(qualifiers);
      }
      if (*p != '_') return p;
      nested = false;
      ++p;
      break;
    }
    case 'A':
      if (nested) emit(')');
      p = decode_array_bound(q + 1);
      nested = false;
      break;
    default: return base_end;
    }
  }
  return p;
}

// ------------------------------------------------------------------------------------------------
// Template arguments

Position skip_digits(Position p) {
  while (is_digit(*p))
    ++p;
  return p;
}

// A pointer to member constant; y is its type, r the "LM".
Position decode_member_constant(Position y, Position r) {
  Position p = expect(expect(skip_digits(r + 2), '_'), 'L');
  unsigned count = 0;
  p = read_digit(p, count);
  const Position value = p;
  while (is_digit(*p) || *p == 'n')
    ++p;
  p = expect(p, '_');
  if (decoder.failed) return p;
  if (*value == 'n') {
    emit('&');
    decode_type(y + 2);
    emit_text("::");
    unsigned length = 0;
    p = read_number(p, length);
    return decoder.failed ? p : decode_name(p, length, nullptr);
  }
  p = expect(p, '0');
  if (count == 1 && *value == '0') {
    emit('(');
    decode_type(y);
    emit_text(")0");
    return p;
  }
  emit('&');
  decode_type(y + 2);
  emit_text("::virtual-function-");
  emit_text({value, strnlen(value, count)});
  return p;
}

// A literal; y is its type, r the "L".
Position decode_literal(Position y, Position r) {
  const bool is_bool = r - y == 2 && y[1] == 'b';
  if (!is_bool) {
    emit('(');
    decode_type(y + 1);
    emit(')');
  }
  Position p = r + 1;
  unsigned length = 0;
  if (is_digit(p[0]) && is_digit(p[1]) && p[2] == '_')
    p = expect(read_number(p, length), '_');
  else
    p = read_digit(p, length);
  bool truth = false;
  for (; length > 0; --length, ++p) {
    if (*p == '\0' || *p == '_') {
      fail();
      return p;
    }
    if (*p != '0') truth = true;
    if (!is_bool) emit(*p == 'p' ? '+' : *p == 'n' ? '-' : *p == 'd' ? '.' : *p);
  }
  if (is_bool) emit_text(truth ? "true" : "false");
  return p;
}

Position decode_template_value(Position p) {
  const Position y = p + 1;
  const Position r = silently([&] { return decode_type(y); });
  if (is_digit(*r)) {
    unsigned length = 0;
    const Position name = read_number(r, length);
    emit('&');
    return decoder.failed ? name : decode_name(name, length, nullptr);
  }
  if (*r != 'L') {
    fail();
    return r;
  }
  return r[1] == 'M' ? decode_member_constant(y, r) : decode_literal(y, r);
}

Position decode_template_args(Position p) {
  const Step step;
  emit('<');
  unsigned length = 0;
  const Position begin = read_number(p, length);
  p = expect(begin, '_');
  while (!decoder.failed) {
    if (*p == '\0' || *p == '_') {
      fail();
      break;
    }
    p = *p == 'X' ? decode_template_value(p) : decode_type(p);
    if (p - begin >= static_cast<std::ptrdiff_t>(length)) break;
    emit_text(", ");
  }
  emit('>');
  return p;
}

// "__" digits "_" digits "_" and then a name that is local to a function.
void decode_local_name(Position p) {
  p = skip_digits(p + 2);
  const Position number = expect(p, '_');
  p = skip_digits(number);
  if (p == number) fail();
  p = expect(p, '_');
  emit_text(p);
}

} // namespace

const char *demangle_name(const char *name) {
  decoder = Decoder{};
  decoder.name_length = static_cast<unsigned>(std::strlen(name));
  if (!begins(name, "__"))
    emit_text(name);
  else if (begins(name + 2, "__") && is_digit(name[4]))
    decode_local_name(name + 2);
  else
    decode_name(name + 2, 0, nullptr);
  if (!decoder.overflow) decoder.out[decoder.out_len] = '\0';
  if (decoder.failed || decoder.out[0] == '\0') {
    const std::size_t kept = std::min<std::size_t>(decoder.name_length, out_size - 1);
    std::copy_n(name, kept, decoder.out.begin());
    decoder.out[kept] = '\0';
  }
  return decoder.out.data();
}

} // namespace velkor
