#include "scalar/dead_assignments.h"

namespace velkor {

[[gnu::weak]] void elim_dead_assigns(bool, bool) {}

} // namespace velkor
