// Damaged copies of icode files.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace velkor::test {

// A damaged copy of one of the files, made with numbers of random alone. The kinds of damage: bytes
// changed, inserted, deleted, repeated, cut off; blocks exchanged; two files joined; and fields,
// nodes and records changed in a file whose records stay whole, which gets past the first checks.
[[nodiscard]] std::string mutate(const std::vector<std::string> &files, std::mt19937 &random);

} // namespace velkor::test
