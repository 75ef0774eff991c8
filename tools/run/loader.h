// Makes an icode file ready to be compiled: resolves every symbol reference, checks that the file
// holds together, and gives every object of static duration and every frame its layout.
#pragma once

#include "core/storage_classes.h"
#include "core/types.h"
#include "file/icode_file.h"
#include "run/memory.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velkor::run {

// What a symbol stands for when a tree names it as a value, and what `place` then holds.
enum class Storage : std::uint8_t {
  NONE,     // a tag, a member, an enumerator ...: nothing that has an address of its own
  FIXED,    // object of static duration: its address
  FRAME,    // auto: bytes from the frame pointer
  ARGUMENT, // parameter: bytes from the start of the argument area
  FUNCTION, // a function: its handle
  UNDEFINED // object that nobody defines: an address that cannot be accessed
};

struct SymbolInfo {
  const file::Symbol *record = nullptr;
  int level = 0; // lexical level in the file
  Storage storage = Storage::NONE;
  Address place = 0;
  std::uint32_t bytes = 0; // size of the object
};

struct FunctionSource {
  const SymbolInfo *symbol = nullptr;
  std::size_t first_record = 0; // the one behind BF
  std::size_t end_record = 0;   // the EF
  int line = 0;                 // of BF
  std::vector<const SymbolInfo *> parameters;
  std::uint32_t parameter_bytes = 0;
  std::uint32_t frame_bytes = 0; // of the objects in its frame
  bool variadic = false;
};

// An object of static duration, whatever records speak of it.
struct StaticObject {
  std::uint32_t bytes = 0;
  std::uint32_t alignment = 1; // bytes
  Address address = 0;
  bool defined = false;
  bool has_value = false;
  bool in_group = false; // member of the object "$$"
  bool is_volatile = false;
  std::uint32_t group_offset = 0; // bytes, with in_group
};

struct InitialValue {
  const SymbolInfo *symbol;
  int function; // in whose scope it stands; -1: none
};

struct Program {
  const file::IcodeFile *file = nullptr;
  std::deque<SymbolInfo> symbols;              // addresses of the elements are stable
  std::vector<const SymbolInfo *> node_symbol; // by position of the node; null: no reference
  std::vector<FunctionSource> functions;
  std::map<std::string, int, std::less<>> function_by_name;
  std::map<std::string, StaticObject> objects;
  std::map<std::string, Address> literals; // by their bytes
  std::vector<InitialValue> initial_values;
  std::vector<std::string> missing_functions; // by handle
};

// Fills program from file, which must outlive it, and reserves static memory. Throws Fault with one
// line that says what does not hold together and where.
void load(const file::IcodeFile &file, Program &program, Memory &memory);

// Handle of the function of that name: one of the file, else a native one, else a handle whose call
// is reported.
[[nodiscard]] Address function_handle(Program &program, const std::string &name);

// The name without its leading underscore, for messages.
[[nodiscard]] std::string_view c_name(std::string_view name);

// True when the object, or the elements of the array that it is, are volatile.
[[nodiscard]] bool is_volatile_object(const file::Symbol &record);

[[nodiscard]] constexpr std::uint32_t round_up(std::uint32_t value, std::uint32_t unit) {
  return (value + unit - 1) / unit * unit;
}

} // namespace velkor::run
