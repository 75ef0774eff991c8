// Grouping of the file's variables behind one base address.
#pragma once

#include "core/records.h"

namespace velkor {

// The tree with each reference to a grouped variable turned into one to the group's member. The
// tree as it stands while no group has been formed.
[[nodiscard]] NODE *clique_rewrite(NODE *tree);

} // namespace velkor
