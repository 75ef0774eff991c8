#include "driver/pipeline.h"

#include "cfg/check_function.h"
#include "cfg/graph.h"
#include "cfg/simpcfg.h"
#include "core/options.h"
#include "core/state.h"
#include "icode/function_writer.h"
#include "loops/propagate_increments.h"
#include "loops/rotate_loops.h"
#include "lower/lower_function.h"
#include "scalar/copyprop.h"
#include "scalar/dead_subranges.h"
#include "scalar/fast_cp.h"
#include "scalar/lcse.h"
#include "scalar/strip_assertions.h"
#include "scalar/subrange_loads.h"
#include "simplify/bit_fields.h"
#include "simplify/sequencing.h"
#include "storage/allocate_regs.h"

#include <array>

namespace velkor {
namespace {

constexpr std::array passes = {
    Pass{"sequence_statements", "make && || ? and commas explicit statements", 0, Shape::ANY, true,
         sequence_statements},
    Pass{"build_cfg", "build the control-flow graph", 0, Shape::ANY, true, build_cfg},
    Pass{"simpcfg", "clean the graph", 0, Shape::ANY, false, [] { simpcfg(0); }},
    Pass{"expand_bitfields", "turn bit fields into masks and shifts", 1, Shape::ANY, true,
         expand_bitfields},
    Pass{"fast_CP", "carry constants and copies of single assignments to their uses", 1, Shape::ANY,
         false, [] { fast_CP(4, true); }},
    Pass{"copyprop_early", "carry copies and known values along, for the dataflow passes", 2,
         Shape::MANY_BLOCKS, false, [] { copyprop(true); }},
    Pass{"lcse_subrange_assignments", "replace loads by what the block has stored there", 1,
         Shape::ANY, false, lcse_subrange_assignments},
    Pass{"elim_dead_subrange_assigns", "remove stores that are overwritten before any read", 1,
         Shape::ANY, false, elim_dead_subrange_assigns},
    Pass{"copyprop", "carry copies and known values along", 1, Shape::ANY, false,
         [] { copyprop(true); }},
    Pass{"lcse", "compute common subexpressions of a run of blocks once", 1, Shape::ANY, false,
         lcse},
    Pass{"propagate_increments", "fold steps of pointers into the accesses beside them", 1,
         Shape::ANY, false, propagate_increments},
    Pass{"strip_assertions", "take the statements of fact out", 0, Shape::ANY, true,
         strip_assertions},
    Pass{"allocate_regs", "fold tests into assignments, number the virtual registers", 0,
         Shape::ANY, false, allocate_regs},
    Pass{"simpcfg_last", "clean the graph for the last time", 0, Shape::ANY, false,
         [] { simpcfg(1); }},
    Pass{"rotate_loops", "let the jump back to a loop's top fall through", 0, Shape::ANY, false,
         rotate_loops},
    Pass{"lower_function", "restore the forms that the code generator wants", 0, Shape::ANY, true,
         lower_function},
    Pass{"write_function", "write the function to the output file", 0, Shape::ANY, true,
         write_function},
};

bool shape_fits(Shape shape) {
  switch (shape) {
  case Shape::ANY: return true;
  case Shape::ONE_BLOCK: return state.num_blocks == 1;
  case Shape::MANY_BLOCKS: return state.num_blocks > 1;
  }
  return false;
}

bool shall_run(const Pass &pass) {
  if (options.opt_level < pass.lowest_level || !shape_fits(pass.shape)) return false;
  if (pass.required || pipeline_requests.limit < 0) return true;
  if (pipeline_requests.limit == 0) return false;
  pipeline_requests.limit -= 1;
  return true;
}

bool checks_each_pass() {
#ifdef VELKOR_CHECKED
  return true;
#else
  return pipeline_requests.verify_each;
#endif
}

void run_pass(const Pass &pass) {
  const PassObserver &observer = pipeline_requests.observer;
  if (observer.before) observer.before(pass);
  pass.run();
  if (checks_each_pass()) check_function(pass.name);
  if (observer.after) observer.after(pass);
}

} // namespace

PipelineRequests pipeline_requests;

std::span<const Pass> function_passes() {
  return passes;
}

void run_function_passes() {
  for (const Pass &pass : passes)
    if (shall_run(pass)) run_pass(pass);
}

} // namespace velkor
