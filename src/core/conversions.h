// Types of values: promotion, balancing, conversion, and how a type wraps a value.
#pragma once

#include "core/records.h"

namespace velkor {

// Integral promotion.
[[nodiscard]] TypeWord promote_type(TypeWord type);

// The type of the usual arithmetic conversion of two operands: a pointer's type where one is a
// pointer.
[[nodiscard]] TypeWord balance_type(const NODE *a, const NODE *b);

// tree converted to type; takes the tree, returns what stands in its place. A struct or union name
// converted to a scalar is reinterpreted in place.
[[nodiscard]] NODE *convert_tree(TypeWord type, NODE *tree);

// The 32-bit word as a variable of that basic type holds it (only the low four bits of type
// count): narrow signed types extend the sign, narrow unsigned ones are masked.
[[nodiscard]] std::int32_t wrap_to_type(std::int32_t value, TypeWord type);
// The same where a pointer and unsigned count as int.
[[nodiscard]] std::int32_t wrap_signed(std::int32_t value, TypeWord type);
// The same where the narrow unsigned types count as the signed ones as well.
[[nodiscard]] std::int32_t wrap_signed_narrow(std::int32_t value, TypeWord type);

} // namespace velkor
