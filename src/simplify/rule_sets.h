// The rule sets by the opcodes that they serve. Each takes a node with simplified children and
// yields what stands in its place.
#pragma once

#include "core/records.h"

namespace velkor {

// arithmetic.cpp, reassociate.cpp
NODE *simplify_add(NODE *node);
NODE *simplify_sub(NODE *node);
NODE *simplify_mul(NODE *node);
NODE *simplify_div(NODE *node);
NODE *simplify_rem(NODE *node);
// Orders the operands of a chain of one commutative operator and merges its constants.
NODE *reassociate(NODE *node);

// bitwise.cpp, shifts.cpp, unary.cpp
NODE *simplify_and(NODE *node);
NODE *simplify_or(NODE *node);
NODE *simplify_xor(NODE *node);
NODE *simplify_shift(NODE *node);
NODE *simplify_unary(NODE *node);

// relations.cpp
NODE *simplify_relation(NODE *node);

// logical.cpp, control.cpp
NODE *simplify_andand(NODE *node);
NODE *simplify_oror(NODE *node);
NODE *simplify_question(NODE *node);
NODE *simplify_assert(NODE *node);
NODE *simplify_cbranch(NODE *node);
NODE *simplify_if(NODE *node);
NODE *simplify_switch(NODE *node);
NODE *simplify_comma(NODE *node);

// assignments.cpp, library_calls.cpp
NODE *simplify_assign(NODE *node);
NODE *simplify_asgop(NODE *node);
NODE *simplify_call(NODE *node);

// conversions.cpp, addresses.cpp
NODE *simplify_sconv(NODE *node);
NODE *simplify_pconv(NODE *node);
NODE *simplify_aconv(NODE *node);
NODE *simplify_addr(NODE *node);
NODE *simplify_deref(NODE *node);
NODE *simplify_member(NODE *node);

} // namespace velkor
