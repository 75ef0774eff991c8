// What copyprop knows at the point that its walk has reached.
//
// Versions. Each change of an object gives its symbol a new version, in SYM::key; a NAME that the
// walk has passed holds in nsize the version that it read or wrote. An expression still has the
// value that it had as long as the versions of all its names are current. A symbol without a
// current version may hold anything. Versions are lost in bulk by counting from a later one on, so
// that a store or a call costs the same however many objects it may change.
#pragma once

#include "core/records.h"

namespace velkor {

struct CopyPropagation {
  // Of the pass.
  bool cfg_changed = false; // a test has become constant
  std::uint32_t version = 0;
  // Versions up to these are lost: of every object; of those that can be reached by other ways than
  // their names; of those that any call may change; of the function's static locals.
  std::uint32_t lost = 0;
  std::uint32_t lost_aliased = 0;
  std::uint32_t lost_at_calls = 0;
  std::uint32_t lost_statics = 0;
  // Of the statement.
  bool changed = false;      // something was replaced
  bool is_complex = false;   // what came in needs a simplification of what is around it
  bool is_overtaken = false; // in an operand behind which another one may be evaluated
  std::int16_t line = 0;     // the statement's two line numbers, for messages
  std::int16_t line2 = 0;
};
extern CopyPropagation cp;

// ------------------------------------------------------------------------------------------------
// Versions

[[nodiscard]] std::uint32_t version_of(const SYM *sym); // 0: none
std::uint32_t new_version(SYM *sym);
std::uint32_t ensure_version(SYM *sym);

// May names of the symbol be replaced, and its values be followed? Not those of parameters, which
// live elsewhere than their homes, nor of what is no object.
[[nodiscard]] bool is_followed(const SYM *sym);

// Has anything that the tree reads changed since the walk passed it?
[[nodiscard]] bool is_stale(const NODE *tree);

// Can changes of names be all that changes the tree's value? A load through a pointer counts as
// stable where excluded is a symbol that nothing reaches by other ways than its name: losing such
// entries is the store's business. The tree may not read excluded itself, if one is given.
[[nodiscard]] bool is_stable(const NODE *tree, const SYM *excluded);

// ------------------------------------------------------------------------------------------------
// Effects

// The place takes a value that is not known (yet).
void kill_place(const NODE *place);
// Everything that the call may change.
void kill_by_call(const NODE *call);
// A call, or a node whose effects are a call's.
[[nodiscard]] bool acts_as_call(const NODE *node);
// Anything that stores to its left operand.
[[nodiscard]] bool is_assignment_like(const NODE *node);
// The effects of the tree that may come before or after the rest of it: all but those on the path
// that is evaluated last.
void kill_ahead(const NODE *tree, bool nested);

// ------------------------------------------------------------------------------------------------
// Tables. They hold private copies: what stands in the statements may be simplified later on.

// A value that can stand for a variable; stored_type is the type that it was stored as. The tree is
// the table's.
struct KnownValue {
  const NODE *tree = nullptr;
  TypeWord stored_type = 0;
};

// x = e, just evaluated, with the version of x in its NAME: fit to replace x by e?
void offer_assignment(const NODE *assignment);
[[nodiscard]] KnownValue lookup_ASG(const NODE *name);

// *p = e, just evaluated.
void offer_store(const NODE *assignment);
// The value of the last store if it went to an equal place; none otherwise.
[[nodiscard]] const NODE *lookup_store(const NODE *access);
void forget_store();

// Nothing is known any more.
void forget_available();
// Temporaries that hold a constant keep it to themselves in the blocks that follow.
void forget_constant_temporaries();

} // namespace velkor
