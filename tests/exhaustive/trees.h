// Trees of one and two operators, as a front end emits them and as the simplifier itself leaves
// them, and random larger ones.
#pragma once

#include "variables.h"

#include <cstdint>
#include <functional>

namespace velkor::exhaustive {

struct Shape;

struct Operand {
  enum Kind : std::uint8_t { NONE, VARIABLE, CONSTANT, SHAPE };
  Kind kind = NONE;
  std::uint8_t number = 0; // of the variable or the constant
  const Shape *shape = nullptr;
};

struct Shape {
  Opcode op = ILLOP;
  TypeWord type = INT; // of a conversion
  Operand operands[3] = {};
};

// FRONT_END: every conversion of the language is written out. BARE: narrow operands stand directly
// under operators, and so do words of the other sign where the operator does not look at it.
enum class Style : std::uint8_t { FRONT_END, BARE };

// The shape as a tree in the local zone. Returns none when C has no such tree, or gives it no
// meaning whatever the values; and for BARE when it is the same tree as for FRONT_END.
[[nodiscard]] NODE *build_tree(const World &world, const Shape &shape, Style style);

// Calls visit with every shape of one operator, then of two, then with those of three where two
// operands look alike or constants meet in a chain.
void enumerate_shapes(const std::function<void(const Shape &)> &visit);

// A tree of three to six operators that only depends on the seed; none as for build_tree.
[[nodiscard]] NODE *random_tree(const World &world, std::uint64_t seed);

} // namespace velkor::exhaustive
