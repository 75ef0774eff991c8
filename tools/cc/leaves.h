// Initializers taken apart into the scalars (and whole structs) that they set.
#pragma once

#include "cc/unit.h"

#include <functional>
#include <optional>

namespace velkor::cc {

// One step from an aggregate to a part: a member, or without field the element of an array.
struct Step {
  const clang::FieldDecl *field = nullptr;
  std::int64_t index = 0;
};

// A part of an object that an initializer sets.
struct Leaf {
  std::int64_t offset = 0;                 // bits from the start of the object
  std::int64_t size = 0;                   // bits
  QualType type;                           // scalar, or a struct that is set by one expression
  const clang::FieldDecl *field = nullptr; // if it is a bit field
  const Expr *value = nullptr;             // none: zero, unless there is an element
  std::optional<std::uint32_t> element;    // of the string literal that sets an array
  std::vector<Step> path;                  // from the object
};

// DENSE visits every scalar of the object; SPARSE leaves out what is zero for want of a value.
enum class LeafOrder { DENSE, SPARSE };

// Visits the leaves in memory order. value may be a list, a literal, or the expression of a scalar.
void for_each_leaf(Unit &unit, const Expr *value, QualType type, LeafOrder order,
                   const std::function<void(const Leaf &)> &visit);

// Scalars in an object of this type; of a union those of its first member.
[[nodiscard]] std::int64_t count_leaves(Unit &unit, QualType type);

// Whether an initializer of an aggregate consists of parts: a list or a literal, not the value of
// an expression.
[[nodiscard]] bool is_aggregate_value(const Expr *value);

// Whether the type has a union in it with a member that does not fill the union: to set the member
// leaves bytes of the object unset.
[[nodiscard]] bool contains_uneven_union(Unit &unit, QualType type);

} // namespace velkor::cc
