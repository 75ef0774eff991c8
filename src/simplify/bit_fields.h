// Accesses to bit fields as masks and shifts on their storage units.
//
// A bit field arrives as a MEMBER or ARROW whose member symbol is of class C_FIELD. Expansion
// replaces each by an access to the storage unit, an unsigned word, halfword or byte of memory, so
// that all later passes see only word arithmetic. It avoids shifts where it can: a test looks at
// the masked unit, a comparison moves the constant to the field, a constant is stored by one &= or
// |= on the unit.
#pragma once

#include "simplify/rules.h"

namespace velkor {

// Expands all accesses to bit fields in the blocks of the current function; statements that it has
// to add stand in cells of their own. Does nothing below level 1 or where no bit field occurs.
void expand_bitfields();

extern const RuleSet field_store_rules;
extern const RuleSet discarded_field_store_rules;

} // namespace velkor
