# Writes OUTPUT, a C++ file that holds the texts of all headers in DIRECTORY.
file(GLOB headers "${DIRECTORY}/*.h")
list(SORT headers)
set(entries "")
foreach(header IN LISTS headers)
  get_filename_component(name "${header}" NAME)
  file(READ "${header}" text)
  string(APPEND entries "    {\"${name}\", R\"header(${text})header\"},\n")
endforeach()
file(WRITE "${OUTPUT}.new" "#include \"cc/embedded_headers.h\"

namespace velkor::cc {

std::span<const EmbeddedHeader> embedded_headers() {
  static constexpr EmbeddedHeader headers[] = {
${entries}  };
  return headers;
}

} // namespace velkor::cc
")
file(RENAME "${OUTPUT}.new" "${OUTPUT}")
