// Accesses to bit fields as masks and shifts on their storage units.
#pragma once

namespace velkor {

// Expands all accesses to bit fields in the current function.
void expand_bitfields();

} // namespace velkor
