#include "storage/cliques.h"

namespace velkor {

[[gnu::weak]] NODE *clique_rewrite(NODE *tree) {
  return tree;
}

} // namespace velkor
