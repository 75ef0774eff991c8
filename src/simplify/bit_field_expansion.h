// What the parts of bit-field expansion share. All widths, shifts and offsets are in bits; shifts
// count from bit 0 of the value.
#pragma once

#include "core/records.h"

namespace velkor::bit_fields {

// What a tree's value is needed for.
enum class Use : std::uint8_t {
  VALUE,
  TEST,   // only whether it is zero
  NOTHING // only what the tree does
};

// Where a field stands in a value that is being built.
struct FieldView {
  std::int32_t width = 0; // bits that count
  std::int32_t shift = 0; // where the lowest of them stands
  TypeWord type = INT;    // what the bits are to be taken for: int or unsigned
};

// State of the pass.
struct Expansion {
  bool bitfields_changed = false; // a field of the current statement has been expanded
  SYM *tag = nullptr;             // whose members were looked up last
  SYM *members = nullptr;         // behind the newest end of the tag, on its chain
};
extern Expansion expansion;

// All of these take their trees. The tree free of bit fields:
[[nodiscard]] NODE *expand_tree(NODE *tree, Use use);
[[nodiscard]] NODE *expand_relation(NODE *relation);
[[nodiscard]] NODE *expand_store(NODE *assignment, Use use);

// The unit of a bit field, or the expansion of a tree that is none; view tells where the bits
// stand. No more than limit bits are wanted (0: all).
[[nodiscard]] NODE *load_field(NODE *tree, std::int32_t limit, FieldView &view);

// width ones from bit shift on.
[[nodiscard]] std::uint32_t field_mask(std::int32_t width, std::int32_t shift);

// tree & mask, of that type, simplified.
[[nodiscard]] NODE *mask_field(NODE *tree, std::int32_t width, std::int32_t shift, TypeWord type);

// load_field and mask_field.
[[nodiscard]] NODE *load_masked_field(NODE *tree, std::int32_t limit, FieldView &view);

// Brings the sign of a signed field to the sign of the value, so that a right shift extends it.
// Where no more than limit bits (0: all) are wanted, and the field has them, it is only cut.
[[nodiscard]] NODE *prepare_value(NODE *tree, FieldView &view, std::int32_t limit);

// Brings a field to a new width, place and type. A signed field that grows must be prepared.
[[nodiscard]] NODE *move_field(NODE *tree, FieldView &view, std::int32_t width, std::int32_t shift,
                               TypeWord type);

// What a field of that width and type would hold of the value.
[[nodiscard]] NODE *field_value(NODE *tree, std::int32_t width, TypeWord type);

} // namespace velkor::bit_fields
