#include "run/memory.h"

#include <cstdio>

namespace velkor::run {

namespace {

constexpr std::uint32_t heap_granule = 16;

std::uint32_t round_up(std::uint32_t value, std::uint32_t unit) {
  return (value + unit - 1) / unit * unit;
}

} // namespace

void Memory::wild(Address address, std::uint32_t size, const char *what) {
  char text[120];
  if (address >= first_function_handle) {
    std::snprintf(text, sizeof text, "%s of %u bytes at the address of a function", what, size);
  } else if (address >= first_undefined_object) {
    std::snprintf(text, sizeof text, "%s of %u bytes in an object that is not defined", what, size);
  } else if (address < first_address) {
    std::snprintf(text, sizeof text, "wild %s of %u bytes at 0x%08x (null pointer?)", what, size,
                  address);
  } else {
    std::snprintf(text, sizeof text, "wild %s of %u bytes at 0x%08x", what, size, address);
  }
  throw Fault{text};
}

std::string_view Memory::text(Address address) {
  if (!contains(address, 1)) wild(address, 1, "read");
  const char *start = reinterpret_cast<const char *>(bytes_.get() + address);
  const void *end = std::memchr(start, 0, limit_ - address);
  if (end == nullptr) throw Fault{"text without an end"};
  return {start, static_cast<std::size_t>(static_cast<const char *>(end) - start)};
}

Address Memory::reserve(std::uint32_t size, std::uint32_t alignment) {
  const std::uint64_t start = round_up(static_end_, alignment == 0 ? 1 : alignment);
  if (start + size > limit_) throw Fault{"the program's objects do not fit into the memory"};
  static_end_ = static_cast<Address>(start + size);
  return static_cast<Address>(start);
}

void Memory::place_stack(std::uint32_t stack_bytes) {
  // An inaccessible page would need a check on every access; a gap at least keeps small overruns of
  // the last object out of the first frame.
  stack_begin_ = round_up(static_end_, 4096) + 64;
  if (static_cast<std::uint64_t>(stack_begin_) + stack_bytes + 4096 > limit_)
    throw Fault{"no room for the stack: give the program more memory"};
  heap_begin_ = heap_end_ = round_up(stack_begin_ + stack_bytes, heap_granule);
}

Address Memory::allocate(std::uint32_t size) {
  if (size > limit_) return 0;
  // One granule more than asked for keeps neighbours apart.
  const std::uint32_t rounded = round_up(size + heap_granule, heap_granule);
  Address address = 0;
  const auto found = free_by_size_.find(rounded);
  if (found != free_by_size_.end() && !found->second.empty()) {
    address = found->second.back();
    found->second.pop_back();
  } else {
    if (rounded > limit_ - heap_end_) return 0;
    address = heap_end_;
    heap_end_ += rounded;
  }
  blocks_[address] = size;
  return address;
}

void Memory::release(Address address) {
  const std::uint32_t size = block_size(address);
  blocks_.erase(address);
  std::memset(bytes_.get() + address, 0xDD, size);
  free_by_size_[round_up(size + heap_granule, heap_granule)].push_back(address);
}

std::uint32_t Memory::block_size(Address address) {
  const auto found = blocks_.find(address);
  if (found == blocks_.end()) {
    char text[80];
    std::snprintf(text, sizeof text, "0x%08x is not the address of an allocated block", address);
    throw Fault{text};
  }
  return found->second;
}

} // namespace velkor::run
