#include "core/file_names.h"

namespace velkor {
namespace {

constexpr std::string_view::size_type none = std::string_view::npos;

// Position of the dot that begins the extension, or none.
std::size_t extension_dot(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == none) return none;
  return name.find_first_of("\\/", dot) == none ? dot : none;
}

} // namespace

std::string set_extension(std::string_view name, std::string_view extension, bool force) {
  const std::size_t dot = extension_dot(name);
  if (dot != none && !force) return std::string(name);
  std::string result(name.substr(0, dot));
  if (!extension.starts_with('.')) result += '.';
  return result += extension;
}

std::string strip_extension(std::string_view name) {
  return std::string(name.substr(0, extension_dot(name)));
}

} // namespace velkor
