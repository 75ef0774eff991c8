#include "lower/lower_function.h"

#include "cfg/graph.h"
#include "lower/branch_labels.h"
#include "lower/lowering.h"
#include "lower/unsimp_blocks.h"

namespace velkor {

void lower_function() {
  lowering = {};
  renumber_blocks();
  clear_reference_counts();
  unsimp_blocks();
  number_labels();
}

} // namespace velkor
