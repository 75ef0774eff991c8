// The variables of the enumerated trees, their boundary values, and the constants.
#pragma once

#include "bridge/node_text.h"
#include "lanes.h"

#include <string>
#include <vector>

namespace velkor::exhaustive {

struct Variable {
  const char *tree; // as text
  TypeWord type;    // of the value that it has in a tree
  SYM *symbol;      // of the member for a bit field; of what it points at for *p
  NODE *pattern;    // the tree, to be copied
};

// Positions in World::variables.
enum VariableNumber : std::uint8_t {
  C1,
  C2,
  S1,
  S2,
  I1,
  I2,
  I3,
  L1,
  UC1,
  UC2,
  US1,
  US2,
  U1,
  U2,
  UL1, // of char, short, ...
  B3,
  S3,
  B1, // bit fields
  P1,
  P2,   // pointers to char
  AT_P, // *p
  variable_number_count
};

struct World {
  bridge::SymbolScope symbols;
  std::vector<Variable> variables;
  Memory initial;           // by slots: every lane's values
  std::uint64_t pointed_at; // slots that a pointer may lead to
};

// Starts a run of the optimizer and declares everything.
void make_world(World &world);

// The lines of declarations in text form: of the level given (0 global, 2 automatic).
[[nodiscard]] const std::vector<std::string> &declarations(int level);

// Constants that matter, by their words.
inline constexpr std::uint32_t constants[] = {
    0,       1,       ~0u,  2,      3,          4,       7,     8,     15,         16,
    31,      127,     128,  255,    256,        32768,   65535, 65536, 0x7FFFFFFF, 0x80000000,
    ~0u - 1, ~0u - 7, 0xF0, 0xFF00, 0xFFFF0000, 0x1FFFF, 5,     100};
inline constexpr std::size_t constant_count = std::size(constants);

} // namespace velkor::exhaustive
