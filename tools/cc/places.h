// Places: what C calls lvalues, and the struct values whose members are taken.
#pragma once

#include "cc/unit.h"

#include <optional>

namespace velkor::cc {

// An object as a tree. The target has no values of array and function type, so a place of such a
// type that was reached through a pointer is held as that pointer.
struct Place {
  NodeIndex node = no_node;
  bool is_address = false; // node is a pointer to the (array or function) object
  bool is_value = false;   // node is a struct value without storage of its own
  QualType type;           // of the object, with its qualifiers
  const clang::FieldDecl *bit_field = nullptr;
};

// The place that an lvalue expression names, or the struct value that it yields.
[[nodiscard]] Place place_of(Unit &unit, const Expr *expression);

[[nodiscard]] Place place_of_symbol(Unit &unit, const SymbolReference &symbol, QualType type);

// What a pointer of the right type points at. constant: it certainly lies in an object that never
// changes.
[[nodiscard]] Place pointed_at(Unit &unit, NodeIndex pointer, QualType type, bool constant,
                               SourceLocation where);

// Member of a struct or union place.
[[nodiscard]] Place member_of(Unit &unit, const Place &object, const clang::FieldDecl *field,
                              QualType type, bool constant);

// Element number index of an array place.
[[nodiscard]] Place element_of(Unit &unit, const Place &array, std::int64_t index,
                               SourceLocation where);

// The pointer that an array place decays to.
[[nodiscard]] NodeIndex decayed(Unit &unit, const Place &array, SourceLocation where);

// The place's address as a pointer of type word type.
[[nodiscard]] NodeIndex address_of(Unit &unit, const Place &place, TypeWord type,
                                   SourceLocation where);

// The place's value with the type of the C expression; of a struct the place itself.
[[nodiscard]] NodeIndex load(Unit &unit, const Place &place, SourceLocation where);

// Stores value, which has the place's C type. The tree yields what was stored, with that type.
[[nodiscard]] NodeIndex store(Unit &unit, const Place &place, NodeIndex value,
                              SourceLocation where);

// Whether an lvalue certainly lies in an object that never changes.
[[nodiscard]] bool lies_in_constant(const Expr *expression);

// An lvalue that is to be named more than once although its operands are evaluated once. setup, if
// any, must be evaluated first; each call of repeated_place makes another tree.
struct RepeatedPlace {
  NodeIndex setup = no_node;
  const Expr *expression = nullptr;               // nothing in it has side effects
  std::optional<SymbolReference> pointer;         // or: a temporary that points at the object
  std::vector<const clang::MemberExpr *> members; // taken from it, the outermost last
  QualType type;                                  // of the object that members start from
};
[[nodiscard]] RepeatedPlace repeat_place(Unit &unit, const Expr *expression);
[[nodiscard]] Place repeated_place(Unit &unit, const RepeatedPlace &repeated, SourceLocation where);

// The bytes of a string literal as a pointer to its first element.
[[nodiscard]] NodeIndex literal_address(Unit &unit, const clang::StringLiteral *literal);

// The string literal's elements, the terminating zero included.
[[nodiscard]] std::vector<std::uint32_t> literal_elements(const clang::StringLiteral *literal);

} // namespace velkor::cc
