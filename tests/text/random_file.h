// Random icode files: every field of every record may hold any value that the format can.
#pragma once

#include <cstdint>

#include "file/icode_file.h"

namespace velkor::test {

// A file of about that many records at file level. The same seed gives the same file everywhere.
[[nodiscard]] file::IcodeFile random_file(std::uint32_t seed, int records);

} // namespace velkor::test
