// Removal of assignments to scalars that nobody reads any more.
#pragma once

namespace velkor {

// delay: ends with moving assignments of constants down to their first use. unnest: first makes
// embedded assignments statements of their own, where that is possible.
void elim_dead_assigns(bool delay, bool unnest);

} // namespace velkor
