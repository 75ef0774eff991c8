#include "scalar/lcse.h"

#include "cfg/graph.h"
#include "cfg/simpcfg.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "scalar/dead_assignments.h"
#include "scalar/lcse_state.h"

namespace velkor {

LocalCse local_cse;

namespace {

SYMLIST *free_symbol_cells(SYMLIST *list) {
  while (list) {
    SYMLIST *next = list->next;
    give_symlist(list);
    list = next;
  }
  return nullptr;
}

} // namespace

void lcse() {
  debug_print("\n\n\t\t\t---------- ENTERING 'lcse' ----------\n");
  local_cse = LocalCse{};
  // Symbols that joined since the chains were last sorted would keep what they are numbered with.
  if (state.local_syms || state.temp_syms) sym_split();
  scan_function();
  number_blocks();
  lcse_rewrite_blocks();
  empty_tables();
  for (SYMLIST **list :
       {&local_cse.lcse_kill_list, &local_cse.lcse_aliased, &local_cse.lcse_statics})
    *list = free_symbol_cells(*list);
  if (local_cse.lcse_cfg_changed) {
    recompute_cfg();
    simpcfg(0);
  }
  if (local_cse.lcse_copies_undone) elim_dead_assigns(false, false);
}

} // namespace velkor
