// Symbols of file level as slots, and the symbols of the function that is being translated.
#pragma once

#include "cc/unit.h"

#include "llvm/ADT/StringRef.h"

namespace velkor::cc {

// The name of a C name's symbol: an underscore in front.
[[nodiscard]] std::string underscored(llvm::StringRef name);

// A record for an object or function of this type; offset, tag slot and class are filled in.
[[nodiscard]] file::Symbol make_symbol(Unit &unit, std::string name, QualType type,
                                       StorageClass storage, bool constant_object,
                                       SourceLocation where);

// The slot of a struct's or union's tag, with its members; made at the first call.
[[nodiscard]] int tag_slot(Unit &unit, const clang::RecordDecl *record);
[[nodiscard]] int member_slot(Unit &unit, const clang::FieldDecl *field);

// The tag of a made-up struct whose only member is an array of this type, by which whole arrays
// are copied.
[[nodiscard]] int array_image_tag(Unit &unit, QualType array, SourceLocation where);

// The slots of a variable or function with linkage. All declarations of a name share one.
[[nodiscard]] int variable_slot(Unit &unit, const clang::VarDecl *variable);
[[nodiscard]] int function_slot(Unit &unit, const clang::FunctionDecl *function);

// A new static variable of file level without a C name of its own; stem tells what it holds.
[[nodiscard]] int anonymous_slot(Unit &unit, llvm::StringRef stem, file::Symbol symbol,
                                 SourceLocation where);

// How trees name a variable, a local one included.
[[nodiscard]] SymbolReference variable_reference(Unit &unit, const clang::VarDecl *variable);
[[nodiscard]] SymbolReference slot_reference(const Unit &unit, int slot);

// Whether the variable is a static object that C calls const and not volatile.
[[nodiscard]] bool is_constant_object(const clang::VarDecl *variable);

// Adds a symbol of the current function to its innermost open scope. A name that the function
// already has gets a number behind it.
SymbolReference add_local(Unit &unit, file::Symbol symbol, SourceLocation where);

// A new variable of the current function's outermost scope.
[[nodiscard]] SymbolReference make_temporary(Unit &unit, QualType type, SourceLocation where);

// A name for a static local variable: the C name with a number that no other symbol has.
[[nodiscard]] std::string static_local_name(Unit &unit, llvm::StringRef name);

// Takes the names of the file's own declarations, so that none of ours meets them.
void reserve_names(Unit &unit);

// Reports attributes of a variable or function that would change its meaning.
void check_attributes(Unit &unit, const clang::Decl *decl);

} // namespace velkor::cc
