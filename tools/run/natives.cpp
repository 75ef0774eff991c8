// The table of native routines, and the characters and the mathematics of the library.
#include "run/natives.h"

#include "run/machine.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <string>
#include <unordered_map>
#include <vector>

namespace velkor::run {

std::uint32_t NativeCall::next_word() {
  if (cursor + 4 > end) throw Fault{"a library routine is called with too few arguments"};
  const auto value = machine.memory.read<std::uint32_t>(cursor);
  cursor += 4;
  return value;
}

double NativeCall::next_double() {
  if (cursor + 8 > end) throw Fault{"a library routine is called with too few arguments"};
  const auto value = machine.memory.read<double>(cursor);
  cursor += 8;
  return value;
}

float NativeCall::next_single() {
  if (cursor + 4 > end) throw Fault{"a library routine is called with too few arguments"};
  const auto value = machine.memory.read<float>(cursor);
  cursor += 4;
  return value;
}

bool is_native_object(std::string_view name) {
  return name == "_errno";
}

void set_errno(Machine &machine, std::int32_t value) {
  const auto object = machine.program.objects.find("_errno");
  if (object != machine.program.objects.end() && object->second.defined)
    machine.memory.write(object->second.address, value);
}

namespace {

// Characters, as in the C locale --------------------------------------------------------------

bool is_upper(int c) {
  return c >= 'A' && c <= 'Z';
}
bool is_lower(int c) {
  return c >= 'a' && c <= 'z';
}
bool is_digit(int c) {
  return c >= '0' && c <= '9';
}
bool is_letter(int c) {
  return is_upper(c) || is_lower(c);
}
bool is_graphic(int c) {
  return c > 32 && c < 127;
}

template <bool (*Test)(int)> void character_test(NativeCall &call) {
  call.give(Test(call.next_int()) ? 1 : 0);
}

bool is_alnum(int c) {
  return is_letter(c) || is_digit(c);
}
bool is_control(int c) {
  return (c >= 0 && c < 32) || c == 127;
}
bool is_printing(int c) {
  return c == 32 || is_graphic(c);
}
bool is_punctuation(int c) {
  return is_graphic(c) && !is_alnum(c);
}
bool is_space(int c) {
  return c == ' ' || (c >= 9 && c <= 13);
}
bool is_hex_digit(int c) {
  return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

void native_toupper(NativeCall &call) {
  const std::int32_t c = call.next_int();
  call.give(static_cast<std::uint32_t>(is_lower(c) ? c - 'a' + 'A' : c));
}
void native_tolower(NativeCall &call) {
  const std::int32_t c = call.next_int();
  call.give(static_cast<std::uint32_t>(is_upper(c) ? c - 'A' + 'a' : c));
}

// Mathematics: the host's routines, in double or in single precision ----------------------------

// Passes a host routine's errno on to the program.
template <typename Routine> double with_errno(Machine &machine, Routine routine) {
  errno = 0;
  const double result = routine();
  if (errno != 0) set_errno(machine, errno);
  return result;
}

template <double (*Routine)(double)> void unary_double(NativeCall &call) {
  const double x = call.next_double();
  call.give_real(with_errno(call.machine, [x] { return Routine(x); }));
}
template <double (*Routine)(double, double)> void binary_double(NativeCall &call) {
  const double x = call.next_double();
  const double y = call.next_double();
  call.give_real(with_errno(call.machine, [x, y] { return Routine(x, y); }));
}
template <float (*Routine)(float)> void unary_single(NativeCall &call) {
  const float x = call.next_single();
  call.give_real(with_errno(call.machine, [x] { return Routine(x); }));
}
template <float (*Routine)(float, float)> void binary_single(NativeCall &call) {
  const float x = call.next_single();
  const float y = call.next_single();
  call.give_real(with_errno(call.machine, [x, y] { return Routine(x, y); }));
}

void native_ldexp(NativeCall &call) {
  const double x = call.next_double();
  const int exponent = call.next_int();
  call.give_real(with_errno(call.machine, [x, exponent] { return std::ldexp(x, exponent); }));
}
void native_frexp(NativeCall &call) {
  const double x = call.next_double();
  const Address exponent_place = call.next_word();
  int exponent = 0;
  call.give_real(std::frexp(x, &exponent));
  call.machine.memory.write<std::int32_t>(exponent_place, exponent);
}
void native_modf(NativeCall &call) {
  const double x = call.next_double();
  const Address whole_place = call.next_word();
  double whole = 0;
  call.give_real(std::modf(x, &whole));
  call.machine.memory.write(whole_place, whole);
}

constexpr Native basic_natives[] = {
    {"isalnum", character_test<is_alnum>},
    {"isalpha", character_test<is_letter>},
    {"iscntrl", character_test<is_control>},
    {"isdigit", character_test<is_digit>},
    {"isgraph", character_test<is_graphic>},
    {"islower", character_test<is_lower>},
    {"isprint", character_test<is_printing>},
    {"ispunct", character_test<is_punctuation>},
    {"isspace", character_test<is_space>},
    {"isupper", character_test<is_upper>},
    {"isxdigit", character_test<is_hex_digit>},
    {"toupper", native_toupper},
    {"tolower", native_tolower},
    {"sqrt", unary_double<std::sqrt>},
    {"_sqrt", unary_double<std::sqrt>},
    {"fabs", unary_double<std::fabs>},
    {"floor", unary_double<std::floor>},
    {"ceil", unary_double<std::ceil>},
    {"sin", unary_double<std::sin>},
    {"cos", unary_double<std::cos>},
    {"tan", unary_double<std::tan>},
    {"asin", unary_double<std::asin>},
    {"acos", unary_double<std::acos>},
    {"atan", unary_double<std::atan>},
    {"sinh", unary_double<std::sinh>},
    {"cosh", unary_double<std::cosh>},
    {"tanh", unary_double<std::tanh>},
    {"exp", unary_double<std::exp>},
    {"log", unary_double<std::log>},
    {"log10", unary_double<std::log10>},
    {"atan2", binary_double<std::atan2>},
    {"pow", binary_double<std::pow>},
    {"fmod", binary_double<std::fmod>},
    {"ldexp", native_ldexp},
    {"frexp", native_frexp},
    {"modf", native_modf},
    {"sqrtf", unary_single<std::sqrt>},
    {"fabsf", unary_single<std::fabs>},
    {"floorf", unary_single<std::floor>},
    {"ceilf", unary_single<std::ceil>},
    {"sinf", unary_single<std::sin>},
    {"cosf", unary_single<std::cos>},
    {"powf", binary_single<std::pow>},
    {"fmodf", binary_single<std::fmod>},
};

// All routines in one array, and where each name stands in it.
struct NativeTable {
  std::vector<Native> routines;
  std::unordered_map<std::string_view, int> numbers;

  NativeTable() {
    for (const std::span<const Native> part :
         {std::span<const Native>(basic_natives), stdio_natives(), stdlib_natives(),
          string_natives()}) {
      for (const Native &routine : part) {
        numbers.emplace(routine.name, static_cast<int>(routines.size()));
        routines.push_back(routine);
      }
    }
  }
};

const NativeTable &native_table() {
  static const NativeTable table;
  return table;
}

} // namespace

int find_native(std::string_view name) {
  const auto found = native_table().numbers.find(name);
  return found == native_table().numbers.end() ? -1 : found->second;
}

const Native &native(int number) {
  const auto &routines = native_table().routines;
  if (number < 0 || static_cast<std::size_t>(number) >= routines.size())
    throw Fault{"call through a pointer that is no function"};
  return routines[number];
}

} // namespace velkor::run
