// Whole icode files on disk.
#include "file/icode_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace velkor::file {
namespace {

struct CloseFile {
  void operator()(std::FILE *stream) const { std::fclose(stream); }
};
using OwnedFile = std::unique_ptr<std::FILE, CloseFile>;

std::string system_error(const std::string &what, const std::string &path) {
  return "cannot " + what + " " + path + ": " + std::strerror(errno);
}

// Writes bytes to path, whatever stands there. Returns an empty string or the reason.
std::string write_bytes(const std::string &path, std::string_view bytes) {
  OwnedFile stream(std::fopen(path.c_str(), "wb"));
  if (!stream) return system_error("write", path);
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) != bytes.size()) {
    return system_error("write", path);
  }
  if (std::fclose(stream.release()) != 0) return system_error("write", path);
  return {};
}

} // namespace

std::string read_file(const std::string &path, IcodeFile &file) {
  OwnedFile stream(std::fopen(path.c_str(), "rb"));
  if (!stream) return system_error("open", path);
  std::string bytes;
  char buffer[65536];
  std::size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, stream.get())) > 0) {
    bytes.append(buffer, count);
  }
  if (std::ferror(stream.get()) != 0) return system_error("read", path);
  const std::string error = decode(bytes, file);
  return error.empty() ? error : path + ": " + error;
}

std::string write_file(const std::string &path, const IcodeFile &file) {
  std::string error;
  const std::string bytes = encode(file, error);
  if (!error.empty()) return path + ": " + error;

  // A device or a pipe cannot be replaced; a link is followed, so that it stays a link.
  namespace fs = std::filesystem;
  std::error_code ignored;
  std::string target = path;
  if (fs::exists(path, ignored)) {
    if (!fs::is_regular_file(path, ignored)) return write_bytes(path, bytes);
    const fs::path resolved = fs::canonical(path, ignored);
    if (!ignored) target = resolved.string();
  }
  const std::string unfinished = target + ".tmp" + std::to_string(getpid());
  error = write_bytes(unfinished, bytes);
  if (error.empty() && std::rename(unfinished.c_str(), target.c_str()) != 0) {
    error = system_error("write", path);
  }
  if (!error.empty()) std::remove(unfinished.c_str());
  return error;
}

} // namespace velkor::file
