// Places in memory as bit ranges of a base.
//
//     s.b            base s, offset and width those of the member
//     *(&a + 8)      base a, offset 64 bits, width that of the access
//     *(&a + i)      base a, width 0: somewhere in a
//     *(int *)0x400  base 0x400
//     *p             no range: it may be anywhere
//
// A SUBRANGE record describes the place of one access; chains of them are what a pass knows of
// memory, and the routines here take away from a chain what a store may change. Whether two places
// without a common base may overlap is decided by the types of the accesses.
#pragma once

#include "core/records.h"

namespace velkor {

// The place of an access (NAME, DEREF, MEMBER, ARROW), in a new record without item; none when
// nothing is known of it. Looks through the marks of common subexpressions.
[[nodiscard]] SUBRANGE *subrange_of(NODE *access);

// Back to the free list.
void free_subrange(SUBRANGE *range);
void free_subranges(SUBRANGE *chain);

// The chain without what a store to the range may change. Its order is reversed.
[[nodiscard]] SUBRANGE *subranges_kill_overlap(const SUBRANGE *range, SUBRANGE *chain);

// The chain without what a store to an unknown place may change, going by types.
[[nodiscard]] SUBRANGE *subranges_kill_by_type(const NODE *store, SUBRANGE *chain);

// The chain without what the call (or MEMCPY, or text for the assembler) may reach. Needs fcp_flag
// as flag_addressed_objects(AddressUse::ANY) leaves it: what is left are the objects of this
// function that only their names reach.
[[nodiscard]] SUBRANGE *subranges_kill_at_call(const NODE *call, SUBRANGE *chain);

// May a store to an unknown place change what the other access reads, going by types alone?
// Constant objects change under no store; char reaches everything, unless the user has said that it
// does not; structures and members of unions hold values of any type.
[[nodiscard]] bool store_may_reach(const NODE *store, const NODE *access);

// Do both symbols name one object? A block may declare an extern object anew.
[[nodiscard]] bool is_same_object(const SYM *a, const SYM *b);

// A scalar of the function's frame that only its name reaches, as a NAME: the passes that follow
// scalars know all about it. Needs fcp_flag as above.
[[nodiscard]] bool is_followed_scalar(const NODE *access);

// Is the access, or the object around its member, volatile?
[[nodiscard]] bool is_volatile_access(NODE *access);

// The chain in the debug file under the title, one line for each range, or for the first one only.
void print_subranges(const char *title, const SUBRANGE *chain, bool only_first);

// Below the members that a place goes through: its object's NAME, the access through a pointer, or
// what else yields the object.
[[nodiscard]] inline NODE *&object_below_members(NODE *&place) {
  NODE **object = &place;
  while ((*object)->op == MEMBER)
    object = &(*object)->left;
  return *object;
}

} // namespace velkor
