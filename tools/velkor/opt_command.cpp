#include "velkor/opt_command.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>

#include "core/fun.h"
#include "core/state.h"
#include "driver/driver.h"
#include "driver/pipeline.h"
#include "velkor/function_text.h"
#include "velkor/process.h"

namespace velkor::tool {
namespace {

using Clock = std::chrono::steady_clock;

struct PassStatistics {
  long runs = 0;
  long changed = 0; // functions
  long nodes_before = 0;
  long nodes_after = 0;
  double milliseconds = 0;
};

// What is watched during one run; the observer routines are plain ones and find it here.
struct Watch {
  OptRequests requests;
  std::map<std::string, PassStatistics> passes;
  std::vector<std::string> text_before;
  std::uint64_t fingerprint_before = 0;
  long nodes_before = 0;
  Clock::time_point begin;
};

Watch watch;

struct Measure {
  long nodes = 0;
  std::uint64_t fingerprint = 14695981039346656037u;

  void mix(std::uint64_t value) { fingerprint = (fingerprint ^ value) * 1099511628211u; }

  void tree(const NODE *node) {
    for (; node; node = node->left) {
      nodes += 1;
      mix(node->op);
      mix(node->type);
      if (node->op == LABELDEF) return;
      if (node->op == ICON || opcode_table[node->op].fields == RecordFields::QUAL_SYMBOL)
        mix(reinterpret_cast<std::uintptr_t>(node->u.sym));
      tree(node->right);
    }
  }
};

// Nodes and a fingerprint of the current function.
Measure measure() {
  Measure result;
  for (const BB *block = state.first_bb; block; block = block->next) {
    result.mix(0);
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      result.tree(cell->item);
  }
  if (!state.first_bb)
    for (const LIST *cell = state.statements; cell; cell = cell->next)
      result.tree(cell->item);
  return result;
}

bool shows_function() {
  const std::string &wanted = watch.requests.dump_function;
  return wanted == "*" || (state.cur_fun && wanted == state.cur_fun->name);
}

bool is_writer(const Pass &pass) {
  return std::string_view(pass.name) == "write_function";
}

void before_pass(const Pass &) {
  const Measure now = measure();
  watch.nodes_before = now.nodes;
  watch.fingerprint_before = now.fingerprint;
  if (shows_function()) watch.text_before = function_text();
  watch.begin = Clock::now();
}

void after_pass(const Pass &pass) {
  const std::chrono::duration<double, std::milli> time = Clock::now() - watch.begin;
  PassStatistics &statistics = watch.passes[pass.name];
  statistics.runs += 1;
  statistics.milliseconds += time.count();
  if (is_writer(pass)) return; // what it leaves is no function any more
  const Measure now = measure();
  statistics.nodes_before += watch.nodes_before;
  statistics.nodes_after += now.nodes;
  if (now.fingerprint == watch.fingerprint_before) return;
  statistics.changed += 1;
  if (!shows_function()) return;
  const std::string changes = difference(watch.text_before, function_text());
  if (!changes.empty())
    std::printf("--- %s() after %s\n%s", state.cur_fun->name, pass.name, changes.c_str());
}

// In the order of the pipeline.
void print_text_statistics() {
  std::printf("%-24s %8s %8s %12s %12s %10s\n", "pass", "runs", "changed", "nodes before",
              "nodes after", "ms");
  for (const Pass &pass : function_passes()) {
    const PassStatistics &row = watch.passes[pass.name];
    std::printf("%-24s %8ld %8ld %12ld %12ld %10.3f\n", pass.name, row.runs, row.changed,
                row.nodes_before, row.nodes_after, row.milliseconds);
  }
}

void print_json_statistics() {
  const char *separator = "[";
  for (const Pass &pass : function_passes()) {
    const PassStatistics &row = watch.passes[pass.name];
    std::printf("%s\n  {\"pass\": \"%s\", \"level\": %d, \"runs\": %ld, \"changed\": %ld, "
                "\"nodes_before\": %ld, \"nodes_after\": %ld, \"milliseconds\": %.3f}",
                separator, pass.name, pass.lowest_level, row.runs, row.changed, row.nodes_before,
                row.nodes_after, row.milliseconds);
    separator = ",";
  }
  std::printf("\n]\n");
}

std::vector<std::string> command_line(const OptRequests &requests) {
  std::vector<std::string> arguments = {"velkor-opt", "-q", "-o" + std::to_string(requests.level)};
  for (const std::string &letters : requests.letters)
    arguments.push_back('-' + letters);
  arguments.push_back(requests.input);
  if (!requests.output.empty()) arguments.push_back(requests.output);
  return arguments;
}

} // namespace

int run_opt(const OptRequests &requests) {
  watch = Watch{};
  watch.requests = requests;
  const bool watches = !requests.statistics.empty() || !requests.dump_function.empty();
  pipeline_requests = PipelineRequests{};
  if (watches) pipeline_requests.observer = {before_pass, after_pass};
  pipeline_requests.verify_each = requests.verify_each;
  pipeline_requests.limit = requests.limit;
  run_requests.keep_input = true;

  std::vector<const char *> arguments;
  const std::vector<std::string> words = command_line(requests);
  for (const std::string &word : words)
    arguments.push_back(word.c_str());
  std::optional<OutputToError> redirected;
  if (requests.messages_to_error || requests.statistics == "json") redirected.emplace();
  const Clock::time_point begin = Clock::now();
  const int status = run_optimizer(static_cast<int>(arguments.size()), arguments.data());
  const std::chrono::duration<double, std::milli> time = Clock::now() - begin;
  redirected.reset();
  if (status != 0) return last_failure_is_internal() ? 3 : 1;
  if (requests.statistics == "text") print_text_statistics();
  if (requests.statistics == "json") print_json_statistics();
  if (requests.time) std::printf("total %.3f ms\n", time.count());
  return 0;
}

} // namespace velkor::tool
