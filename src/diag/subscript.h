// Accesses through an address that can be shown as array subscripts.
#pragma once

#include "core/records.h"

#include <cstdint>
#include <optional>

namespace velkor {

// Levels are at most as many as a type word has derivations; terms are few, since this is for
// reading: an address with more of them shows as it stands.
inline constexpr int max_subscript_levels = 16;
inline constexpr int max_subscript_terms = 8;

struct SubscriptTerm {
  const NODE *tree;
  std::int64_t factor; // the term is tree times factor
  int level;
};

struct Subscripts {
  const NODE *base; // array or pointer
  TypeWord cast;    // pointer type that the base must be cast to; 0: none
  int levels;       // pairs of brackets
  int term_count;   //
  SubscriptTerm terms[max_subscript_terms];
  std::int64_t constants[max_subscript_levels]; // added to the terms of the level
};

// The subscripts of a DEREF node whose address is an array or a pointer plus scaled indices; none
// when the address has another form.
[[nodiscard]] std::optional<Subscripts> find_subscripts(const NODE *access);

// Bytes of an object of the type. Dimensions of arrays are those of sym from number dimension on;
// the tag of sym gives the size of structs and unions. 0 when the size is not known.
[[nodiscard]] std::int64_t object_bytes(TypeWord type, const SYM *sym, int dimension);

// The symbol of the object or member that a tree names, or none.
[[nodiscard]] const SYM *object_symbol(const NODE *tree);

} // namespace velkor
