// The target's memory: 32-bit little-endian addresses over one block of host memory.
//
//   0            never accessible, so that null pointers are caught
//   4096         objects of static duration and string literals
//   stack_begin  frames, growing upwards
//   heap_begin   what malloc gives, up to the end
//
// Functions have handles above all memory, so that a read through a function pointer is caught.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velkor::run {

using Address = std::uint32_t;

// What ends a run: an error in the program that runs. Thrown by whatever finds it, caught in
// run_program; the interpreter adds function and line on the way.
struct Fault {
  std::string message;
  bool located = false;
  int status = 125;
};

// An orderly end: exit, abort, return from main.
struct ProgramExit {
  int status;
};

inline constexpr Address first_address = 4096;
inline constexpr Address first_function_handle = 0xF0000000;  // 4 apart
inline constexpr Address first_native_handle = 0xF8000000;    // 4 apart
inline constexpr Address first_missing_handle = 0xFC000000;   // functions that nobody defines
inline constexpr Address first_undefined_object = 0xE0000000; // objects that nobody defines
inline constexpr Address undefined_object_stride = 0x10000;

class Memory {
public:
  // Sizes in bytes. All of the memory is zero.
  explicit Memory(std::uint32_t total_bytes)
      : bytes_(static_cast<unsigned char *>(std::calloc(total_bytes, 1)), &std::free),
        limit_(total_bytes) {
    if (bytes_ == nullptr) throw Fault{"no room for the program's memory"};
  }

  [[nodiscard]] unsigned char *base() { return bytes_.get(); }
  [[nodiscard]] std::uint32_t limit() const { return limit_; }

  // True when size bytes at address (size up to 2^31) are inside the memory.
  [[nodiscard]] bool contains(Address address, std::uint32_t size) const {
    return address >= first_address && address <= limit_ && size <= limit_ - address;
  }
  // Host pointer to size bytes at address; faults unless they are all inside.
  [[nodiscard]] unsigned char *at(Address address, std::uint32_t size, const char *what) {
    if (!contains(address, size)) wild(address, size, what);
    return bytes_.get() + address;
  }
  [[noreturn]] static void wild(Address address, std::uint32_t size, const char *what);

  template <typename T> [[nodiscard]] T read(Address address) {
    T value;
    std::memcpy(&value, at(address, sizeof value, "read"), sizeof value);
    return value;
  }
  template <typename T> void write(Address address, T value) {
    std::memcpy(at(address, sizeof value, "write"), &value, sizeof value);
  }
  // Text up to its NUL; faults when none comes before the end of the memory.
  [[nodiscard]] std::string_view text(Address address);

  // Static part, laid out while loading: room for size bytes, aligned to alignment bytes.
  [[nodiscard]] Address reserve(std::uint32_t size, std::uint32_t alignment);
  // Ends the static part and sets the stack's size in bytes.
  void place_stack(std::uint32_t stack_bytes);
  [[nodiscard]] Address stack_begin() const { return stack_begin_; }
  [[nodiscard]] Address stack_end() const { return heap_begin_; }

  // The heap. allocate returns 0 when there is no room; release and resize fault on an address that
  // is not an allocated block's. Blocks are aligned to 16 bytes; their contents are undefined.
  [[nodiscard]] Address allocate(std::uint32_t size);
  void release(Address address);
  [[nodiscard]] std::uint32_t block_size(Address address);

private:
  std::unique_ptr<unsigned char, decltype(&std::free)> bytes_;
  std::uint32_t limit_;
  Address static_end_ = first_address;
  Address stack_begin_ = 0;
  Address heap_begin_ = 0;
  Address heap_end_ = 0; // of what has ever been given out
  // Kept outside the target's memory, where no stray store of the program can reach it.
  std::unordered_map<Address, std::uint32_t> blocks_;          // address to size asked for
  std::map<std::uint32_t, std::vector<Address>> free_by_size_; // rounded size to free blocks
};

} // namespace velkor::run
