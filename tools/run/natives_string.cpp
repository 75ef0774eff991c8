// Strings and bytes of the native library.
#include "run/machine.h"
#include "run/natives.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace velkor::run {

namespace {

constexpr std::uint32_t no_limit = ~0u;

// The sign of a comparison as -1, 0 or 1.
std::uint32_t sign(int order) {
  return static_cast<std::uint32_t>(order < 0 ? -1 : order > 0 ? 1 : 0);
}

// Text of at most limit bytes, which need not end in NUL if it is that long.
std::string_view bounded_text(Memory &memory, Address address, std::uint32_t limit) {
  if (limit == 0) return {};
  if (!memory.contains(address, 1)) Memory::wild(address, 1, "read");
  const std::uint32_t room = memory.limit() - address;
  const char *start = reinterpret_cast<const char *>(memory.base() + address);
  const void *end = std::memchr(start, 0, std::min(room, limit));
  if (end != nullptr)
    return {start, static_cast<std::size_t>(static_cast<const char *>(end) - start)};
  if (limit > room) throw Fault{"text without an end"};
  return {start, limit};
}

// Writes the bytes and a NUL.
void write_text(Memory &memory, Address to, std::string_view text) {
  const auto size = static_cast<std::uint32_t>(text.size());
  unsigned char *place = memory.at(to, size + 1, "write");
  std::memmove(place, text.data(), size);
  place[size] = 0;
}

void native_memcpy(NativeCall &call) {
  const Address to = call.next_word();
  const Address from = call.next_word();
  const std::uint32_t size = call.next_word();
  call.give(to);
  if (size == 0) return;
  const unsigned char *source = call.machine.memory.at(from, size, "read");
  std::memmove(call.machine.memory.at(to, size, "write"), source, size);
}

void native_memset(NativeCall &call) {
  const Address to = call.next_word();
  const int byte = call.next_int();
  const std::uint32_t size = call.next_word();
  call.give(to);
  if (size != 0) std::memset(call.machine.memory.at(to, size, "write"), byte & 255, size);
}

void native_memcmp(NativeCall &call) {
  const Address a = call.next_word();
  const Address b = call.next_word();
  const std::uint32_t size = call.next_word();
  if (size == 0) return;
  Memory &memory = call.machine.memory;
  call.give(sign(std::memcmp(memory.at(a, size, "read"), memory.at(b, size, "read"), size)));
}

void native_memchr(NativeCall &call) {
  const Address start = call.next_word();
  const int byte = call.next_int() & 255;
  const std::uint32_t size = call.next_word();
  Memory &memory = call.machine.memory;
  // The byte may stand before the end of a block that is said to be longer than it is.
  for (std::uint32_t i = 0; i < size; ++i) {
    if (memory.read<std::uint8_t>(start + i) != byte) continue;
    call.give(start + i);
    return;
  }
}

void native_strlen(NativeCall &call) {
  call.give(static_cast<std::uint32_t>(call.machine.memory.text(call.next_word()).size()));
}

void native_strcpy(NativeCall &call) {
  const Address to = call.next_word();
  write_text(call.machine.memory, to, call.machine.memory.text(call.next_word()));
  call.give(to);
}

void native_strncpy(NativeCall &call) {
  const Address to = call.next_word();
  const Address from = call.next_word();
  const std::uint32_t size = call.next_word();
  call.give(to);
  if (size == 0) return;
  const std::string text(bounded_text(call.machine.memory, from, size));
  unsigned char *place = call.machine.memory.at(to, size, "write");
  std::memset(place, 0, size);
  std::memcpy(place, text.data(), text.size());
}

void append(NativeCall &call, bool bounded) {
  const Address to = call.next_word();
  const Address from = call.next_word();
  Memory &memory = call.machine.memory;
  const std::uint32_t limit = bounded ? call.next_word() : no_limit;
  const std::string text(bounded_text(memory, from, limit));
  write_text(memory, to + static_cast<Address>(memory.text(to).size()), text);
  call.give(to);
}
void native_strcat(NativeCall &call) {
  append(call, false);
}
void native_strncat(NativeCall &call) {
  append(call, true);
}

void compare_texts(NativeCall &call, bool bounded) {
  Address a = call.next_word();
  Address b = call.next_word();
  Memory &memory = call.machine.memory;
  std::uint32_t limit = bounded ? call.next_word() : no_limit;
  for (; limit != 0; --limit, ++a, ++b) {
    const auto x = memory.read<std::uint8_t>(a);
    const auto y = memory.read<std::uint8_t>(b);
    if (x != y) {
      call.give(sign(x - y));
      return;
    }
    if (x == 0) return;
  }
}
void native_strcmp(NativeCall &call) {
  compare_texts(call, false);
}
void native_strncmp(NativeCall &call) {
  compare_texts(call, true);
}

// The position in the text as an address; 0 where there is none.
Address found_at(Address start, std::size_t position) {
  return position == std::string_view::npos ? 0 : start + static_cast<Address>(position);
}

void native_strchr(NativeCall &call) {
  const Address start = call.next_word();
  const char wanted = static_cast<char>(call.next_int());
  const std::string_view text = call.machine.memory.text(start);
  call.give(found_at(start, wanted == 0 ? text.size() : text.find(wanted)));
}

void native_strrchr(NativeCall &call) {
  const Address start = call.next_word();
  const char wanted = static_cast<char>(call.next_int());
  const std::string_view text = call.machine.memory.text(start);
  call.give(found_at(start, wanted == 0 ? text.size() : text.rfind(wanted)));
}

void native_strstr(NativeCall &call) {
  const Address start = call.next_word();
  const std::string_view text = call.machine.memory.text(start);
  call.give(found_at(start, text.find(call.machine.memory.text(call.next_word()))));
}

void native_strpbrk(NativeCall &call) {
  const Address start = call.next_word();
  const std::string_view text = call.machine.memory.text(start);
  call.give(found_at(start, text.find_first_of(call.machine.memory.text(call.next_word()))));
}

void native_strspn(NativeCall &call) {
  const std::string_view text = call.machine.memory.text(call.next_word());
  const std::size_t end = text.find_first_not_of(call.machine.memory.text(call.next_word()));
  call.give(static_cast<std::uint32_t>(std::min(end, text.size())));
}

void native_strcspn(NativeCall &call) {
  const std::string_view text = call.machine.memory.text(call.next_word());
  const std::size_t end = text.find_first_of(call.machine.memory.text(call.next_word()));
  call.give(static_cast<std::uint32_t>(std::min(end, text.size())));
}

void native_strtok(NativeCall &call) {
  const Address given = call.next_word();
  Memory &memory = call.machine.memory;
  const std::string separators(memory.text(call.next_word()));
  Address &position = call.machine.token_position;
  if (given != 0) position = given;
  if (position == 0) return;
  const std::string_view text = memory.text(position);
  const std::size_t start = text.find_first_not_of(separators);
  if (start == std::string_view::npos) {
    position = 0;
    return;
  }
  const std::size_t end = text.find_first_of(separators, start);
  call.give(position + static_cast<Address>(start));
  if (end == std::string_view::npos) {
    position = 0;
    return;
  }
  memory.write<std::uint8_t>(position + static_cast<Address>(end), 0);
  position += static_cast<Address>(end) + 1;
}

void native_strdup(NativeCall &call) {
  Memory &memory = call.machine.memory;
  const std::string_view text = memory.text(call.next_word());
  const Address copy = memory.allocate(static_cast<std::uint32_t>(text.size()) + 1);
  if (copy != 0) write_text(memory, copy, text);
  call.give(copy);
}

constexpr Native natives[] = {
    {"memcpy", native_memcpy},   {"memmove", native_memcpy},  {"memset", native_memset},
    {"memcmp", native_memcmp},   {"memchr", native_memchr},   {"strlen", native_strlen},
    {"strcpy", native_strcpy},   {"strncpy", native_strncpy}, {"strcat", native_strcat},
    {"strncat", native_strncat}, {"strcmp", native_strcmp},   {"strncmp", native_strncmp},
    {"strchr", native_strchr},   {"strrchr", native_strrchr}, {"strstr", native_strstr},
    {"strpbrk", native_strpbrk}, {"strspn", native_strspn},   {"strcspn", native_strcspn},
    {"strtok", native_strtok},   {"strdup", native_strdup},
};

} // namespace

std::span<const Native> string_natives() {
  return natives;
}

} // namespace velkor::run
