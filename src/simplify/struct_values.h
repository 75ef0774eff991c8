// Values of struct and union types: where they stand, and how large they are.
#pragma once

#include "core/records.h"

namespace velkor {

// A tree of the address of a struct value; takes the tree. A value that stands nowhere is put into
// a temporary.
[[nodiscard]] NODE *address_of_value(NODE *tree);

// The size of the struct value in bits, or -1.
[[nodiscard]] std::int32_t struct_value_size(const NODE *tree);

// The tag of the struct value, or none where the tree does not tell.
[[nodiscard]] SYM *struct_value_tag(const NODE *tree);

} // namespace velkor
