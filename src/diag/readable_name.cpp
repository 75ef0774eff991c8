#include "diag/readable_name.h"

#include <cstring>
#include <string>

namespace velkor {
namespace {

std::string stripped_name; // of the last call

} // namespace

const char *readable_name(const char *name, int always) {
  if (!always && name[0] != '_' && name[0] != '.') return name;
  const std::size_t length = std::strlen(name);
  if (name[0] == '_' && name[length - 1] != '_') ++name;
  stripped_name.assign(name, std::strcspn(name, "$"));
  return demangle_name(stripped_name.c_str());
}

} // namespace velkor
