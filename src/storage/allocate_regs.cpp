#include "storage/allocate_regs.h"

#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/target.h"
#include "scalar/live_variables.h"
#include "storage/conflicts.h"
#include "storage/loop_depths.h"
#include "storage/register_classes.h"

namespace velkor {
namespace {

void report_stack() {
  for (const SYM *sym = state.scalar_syms; sym; sym = sym->next)
    if (sym->sclass == C_AUTO)
      debug_print("\t(%d) '%s' remains allocated on the stack.\n", sym->count, sym->name);
}

} // namespace

void allocate_regs() {
  REGCLASS *chain = target.register_classes();
  sym_split();
  // Without register classes only the debug file asks what is live.
  find_live_variables(chain || state.debug_on ? LiveFor::ALLOCATION : LiveFor::NOBODY);
  debug_print("\n\n\t\t\t---------- ENTERING 'allocate_regs' ----------\n");
  state.alloc_comments = nullptr;
  if (live_variables.num_candidates == 0) return;
  compute_loop_depths();
  analyse_conflicts(chain != nullptr);
  SYM *packed_syms = allocation.measured ? allocate_classes(chain) : nullptr;
  if (state.debug_on) report_stack();
  target.finish_symbols(state.scalar_syms);
  state.scalar_syms = sym_list_reverse_onto(packed_syms, state.scalar_syms);
  target.finish_function();
}

} // namespace velkor
