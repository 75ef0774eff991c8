// Memory blocks, numbers from text, random numbers, sorting and searching, ends of the run.
#include "run/machine.h"
#include "run/natives.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace velkor::run {

namespace {

constexpr int fresh_pattern = 0xCD; // of a block from malloc, which a program must not read

// Memory blocks --------------------------------------------------------------------------------

Address allocate(Machine &machine, std::uint32_t size, int fill) {
  const Address address = machine.memory.allocate(size);
  if (address != 0)
    std::memset(machine.memory.base() + address, fill, size);
  else
    set_errno(machine, ENOMEM);
  return address;
}

void native_malloc(NativeCall &call) {
  call.give(allocate(call.machine, call.next_word(), fresh_pattern));
}

void native_calloc(NativeCall &call) {
  const std::uint64_t count = call.next_word();
  const std::uint64_t bytes = count * call.next_word();
  if (bytes > std::numeric_limits<std::uint32_t>::max()) {
    set_errno(call.machine, ENOMEM);
    return;
  }
  call.give(allocate(call.machine, static_cast<std::uint32_t>(bytes), 0));
}

void native_realloc(NativeCall &call) {
  const Address old = call.next_word();
  const std::uint32_t size = call.next_word();
  Memory &memory = call.machine.memory;
  if (old == 0) {
    call.give(allocate(call.machine, size, fresh_pattern));
    return;
  }
  const std::uint32_t old_size = memory.block_size(old);
  if (size == 0) {
    memory.release(old);
    return;
  }
  const Address fresh = allocate(call.machine, size, fresh_pattern);
  if (fresh == 0) return;
  std::memcpy(memory.base() + fresh, memory.base() + old, std::min(size, old_size));
  memory.release(old);
  call.give(fresh);
}

void native_free(NativeCall &call) {
  const Address address = call.next_word();
  if (address != 0) call.machine.memory.release(address);
}

// Ends of the run ------------------------------------------------------------------------------

void native_exit(NativeCall &call) {
  throw ProgramExit{call.next_int() & 255};
}
void native_abort(NativeCall &) {
  throw ProgramExit{status_aborted};
}
void native_atexit(NativeCall &call) {
  call.machine.exit_routines.push_back(call.next_word());
}
void native_getenv(NativeCall &call) {
  (void)call.machine.memory.text(call.next_word()); // programs run without an environment
}

// Numbers --------------------------------------------------------------------------------------

// Reads an integer as strtol and strtoul do; end is the position behind it, 0 if there is none.
struct ParsedInteger {
  std::uint64_t magnitude = 0;
  bool negative = false;
  bool too_large = false; // for 32 bits
  std::size_t end = 0;
};

int digit_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'z') return c - 'a' + 10;
  if (c >= 'A' && c <= 'Z') return c - 'A' + 10;
  return 99;
}

ParsedInteger parse_integer(std::string_view text, int base) {
  ParsedInteger result;
  std::size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
    ++at;
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) result.negative = text[at++] == '-';
  const bool hex_prefix = at + 2 < text.size() && text[at] == '0' &&
                          (text[at + 1] == 'x' || text[at + 1] == 'X') &&
                          digit_value(text[at + 2]) < 16;
  if ((base == 0 || base == 16) && hex_prefix) {
    at += 2;
    base = 16;
  } else if (base == 0) {
    base = at < text.size() && text[at] == '0' ? 8 : 10;
  }
  for (; at < text.size() && digit_value(text[at]) < base; ++at) {
    result.end = at + 1;
    if (result.too_large) continue;
    result.magnitude = result.magnitude * static_cast<unsigned>(base) +
                       static_cast<unsigned>(digit_value(text[at]));
    result.too_large = result.magnitude > std::numeric_limits<std::uint32_t>::max();
  }
  return result;
}

void give_integer(NativeCall &call, bool is_unsigned) {
  const Address start = call.next_word();
  const Address end_place = call.next_word();
  const int base = call.next_int();
  Memory &memory = call.machine.memory;
  if (base < 0 || base == 1 || base > 36) {
    set_errno(call.machine, EINVAL);
    return;
  }
  const ParsedInteger parsed = parse_integer(memory.text(start), base);
  if (end_place != 0) memory.write(end_place, start + static_cast<Address>(parsed.end));
  const std::uint64_t limit = is_unsigned       ? 0xFFFFFFFFu
                              : parsed.negative ? 0x80000000u
                                                : 0x7FFFFFFFu;
  if (parsed.too_large || parsed.magnitude > limit) {
    set_errno(call.machine, ERANGE);
    call.give(static_cast<std::uint32_t>(limit));
    return;
  }
  const auto magnitude = static_cast<std::uint32_t>(parsed.magnitude);
  call.give(parsed.negative ? 0u - magnitude : magnitude);
}
void native_strtol(NativeCall &call) {
  give_integer(call, false);
}
void native_strtoul(NativeCall &call) {
  give_integer(call, true);
}

void native_atoi(NativeCall &call) {
  const ParsedInteger parsed = parse_integer(call.machine.memory.text(call.next_word()), 10);
  std::uint64_t magnitude = parsed.magnitude;
  if (!parsed.negative && (parsed.too_large || magnitude > 0x7FFFFFFFu)) magnitude = 0x7FFFFFFFu;
  if (parsed.negative && (parsed.too_large || magnitude > 0x80000000u)) magnitude = 0x80000000u;
  const auto word = static_cast<std::uint32_t>(magnitude);
  call.give(parsed.negative ? 0u - word : word);
}

double parse_double(Machine &machine, Address start, Address &end) {
  const std::string text(machine.memory.text(start));
  char *host_end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &host_end);
  if (errno != 0) set_errno(machine, errno);
  end = start + static_cast<Address>(host_end - text.c_str());
  return value;
}

void native_strtod(NativeCall &call) {
  const Address start = call.next_word();
  const Address end_place = call.next_word();
  Address end = 0;
  call.give_real(parse_double(call.machine, start, end));
  if (end_place != 0) call.machine.memory.write(end_place, end);
}
void native_atof(NativeCall &call) {
  Address end = 0;
  call.give_real(parse_double(call.machine, call.next_word(), end));
}

void native_abs(NativeCall &call) {
  const std::uint32_t value = call.next_word();
  call.give(static_cast<std::int32_t>(value) < 0 ? 0u - value : value);
}

void native_rand(NativeCall &call) {
  std::uint32_t &state = call.machine.random_state;
  state = state * 1103515245u + 12345u;
  call.give(state >> 16 & 0x7FFF);
}
void native_srand(NativeCall &call) {
  call.machine.random_state = call.next_word();
}

// Sorting and searching ------------------------------------------------------------------------

struct Sort {
  Machine &machine;
  Address base;
  std::uint32_t size; // bytes of an element
  Address comparison;
  Address scratch; // room for one element, given to the comparison as its second operand
};

std::int32_t compare(const Sort &sort, Address a, Address b) {
  const std::uint32_t arguments[] = {a, b};
  return static_cast<std::int32_t>(call_function(sort.machine, sort.comparison, arguments));
}

// A stable merge of the two sorted halves, through a copy in the program's own memory, so that the
// comparison sees addresses that it can read.
void merge_sort(const Sort &sort, std::uint32_t first, std::uint32_t count) {
  if (count < 2) return;
  const std::uint32_t left_count = count / 2;
  merge_sort(sort, first, left_count);
  merge_sort(sort, first + left_count, count - left_count);
  const std::uint32_t size = sort.size;
  unsigned char *memory = sort.machine.memory.base();
  Address left = sort.base + first * size;
  Address right = left + left_count * size;
  const Address left_end = right;
  const Address right_end = left + count * size;
  Address out = sort.scratch;
  while (left < left_end && right < right_end) {
    Address &taken = compare(sort, left, right) <= 0 ? left : right;
    std::memcpy(memory + out, memory + taken, size);
    taken += size;
    out += size;
  }
  // What is left of the right half stands in its place already.
  std::memmove(memory + out, memory + left, left_end - left);
  out += left_end - left;
  std::memcpy(memory + sort.base + first * size, memory + sort.scratch, out - sort.scratch);
}

void native_qsort(NativeCall &call) {
  const Address base = call.next_word();
  const std::uint32_t count = call.next_word();
  const std::uint32_t size = call.next_word();
  const Address comparison = call.next_word();
  if (count < 2 || size == 0) return;
  const std::uint64_t bytes = static_cast<std::uint64_t>(count) * size;
  Memory &memory = call.machine.memory;
  if (bytes > memory.limit()) throw Fault{"qsort of more than the memory"};
  (void)memory.at(base, static_cast<std::uint32_t>(bytes), "write");
  const Address scratch = memory.allocate(static_cast<std::uint32_t>(bytes));
  if (scratch == 0) throw Fault{"no memory for qsort"};
  merge_sort({call.machine, base, size, comparison, scratch}, 0, count);
  memory.release(scratch);
}

void native_bsearch(NativeCall &call) {
  const Address key = call.next_word();
  const Address base = call.next_word();
  std::uint32_t low = 0;
  std::uint32_t high = call.next_word();
  const std::uint32_t size = call.next_word();
  const Sort search{call.machine, base, size, call.next_word(), 0};
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    const Address element = base + middle * size;
    const std::int32_t order = compare(search, key, element);
    if (order == 0) {
      call.give(element);
      return;
    }
    if (order < 0)
      high = middle;
    else
      low = middle + 1;
  }
}

constexpr Native natives[] = {
    {"malloc", native_malloc}, {"calloc", native_calloc},   {"realloc", native_realloc},
    {"free", native_free},     {"exit", native_exit},       {"abort", native_abort},
    {"atexit", native_atexit}, {"getenv", native_getenv},   {"atoi", native_atoi},
    {"atol", native_atoi},     {"strtol", native_strtol},   {"strtoul", native_strtoul},
    {"strtod", native_strtod}, {"atof", native_atof},       {"abs", native_abs},
    {"labs", native_abs},      {"rand", native_rand},       {"srand", native_srand},
    {"qsort", native_qsort},   {"bsearch", native_bsearch},
};

} // namespace

std::span<const Native> stdlib_natives() {
  return natives;
}

} // namespace velkor::run
