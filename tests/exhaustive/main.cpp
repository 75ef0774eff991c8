// exhaustive_test: the simplifier on all trees of two operators.
//
//   exhaustive_test              all of them, and random trees of three to six operators
//   exhaustive_test --slice N    a fixed sample of one in N
//   --part K                     another such sample, 0 to N - 1; all of them together are all
//   --random N                   that many random trees instead of the usual number
//   --seed N                     random trees from that seed on
//   --show N                     findings that are printed for each check
//   --tree TEXT                  checks that one tree
//   --rules                      prints how often each rule has fired
//   --unused                     the same, of rules that never have
//
//
// Exit status 0: all is well; 1: something differs; 2: bad usage.

#include "checks.h"
#include "core/nodes.h"
#include "core/zones.h"
#include "judge.h"
#include "simplify/rules.h"
#include "simplify/simplify.h"
#include "trees.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace velkor::exhaustive {
namespace {

struct Arguments {
  std::uint64_t slice = 1;
  std::uint64_t part = 0;
  std::uint64_t random = 1'500'000;
  std::uint64_t seed = 1;
  std::uint64_t show = 20;
  std::string tree;
  bool rules = false;
  bool unused = false;
};

// The local zone is given back after that many trees.
constexpr std::uint64_t trees_of_a_zone = 2000;
// Of all trees, one in that many is also run in the judge; of a slice, as many as of all.
constexpr std::uint64_t trees_of_a_judgement = 20011;
constexpr std::size_t most_judgements = 3000;
// Findings of a check that are reduced to small trees; that takes time.
constexpr std::uint64_t most_reductions = 20000;

struct Run {
  const Arguments &arguments;
  World world = {};
  Totals totals = {};
  JudgeSample sample = {};
  std::uint64_t reductions = 0;
  std::array<std::vector<std::string>, check_count> shown = {};
  std::uint64_t since_release = 0;
  std::uint64_t judged_interval = trees_of_a_judgement / arguments.slice + 1;

  // A finding is shown unless it reduces to one that has been shown.
  void note(const NODE *tree, const Finding &finding) {
    auto &texts = shown[static_cast<std::size_t>(finding.check)];
    if (texts.size() >= arguments.show || reductions++ > most_reductions) return;
    const Finding reduced = reduce_finding(world, tree, finding);
    for (const std::string &text : texts) {
      if (text == reduced.text) return;
    }
    std::printf("%s, level %d: %s\n", check_name(reduced.check), reduced.level,
                reduced.text.c_str());
    std::fflush(stdout);
    texts.push_back(reduced.text);
  }

  void check(const NODE *tree) {
    std::vector<Finding> findings;
    check_tree(world, tree, totals, findings);
    for (const Finding &finding : findings)
      note(tree, finding);
    if (totals.trees % judged_interval == 0 && sample.size() < most_judgements &&
        accesses_of(tree, world.pointed_at).ordered) {
      sample.add(world, tree, totals.trees);
      NODE *result = simplify_tree(copy_tree(tree));
      sample.add(world, result, totals.trees + 1);
    }
    if (++since_release == trees_of_a_zone) {
      end_of_function();
      since_release = 0;
    }
  }

  void check_shape(const Shape &shape) {
    for (const Style style : {Style::FRONT_END, Style::BARE}) {
      if (const NODE *tree = build_tree(world, shape, style)) check(tree);
    }
  }
};

// A sample without a pattern: one in N, always the same ones.
bool is_in_slice(std::uint64_t number, const Arguments &arguments) {
  return (number * 0x9E3779B97F4A7C15u >> 20) % arguments.slice == arguments.part;
}

int check_one(Run &run) {
  std::string error;
  const NODE *tree = bridge::tree_from_text(run.arguments.tree, run.world.symbols, error);
  if (!tree) {
    std::fprintf(stderr, "exhaustive_test: %s\n", error.c_str());
    return 2;
  }
  NODE *result = simplify_tree(copy_tree(tree));
  std::printf("%s\n", bridge::tree_to_text(result, run.world.symbols).c_str());
  std::vector<Finding> findings;
  check_tree(run.world, tree, run.totals, findings);
  for (const Finding &finding : findings)
    std::printf("%s, level %d: %s\n", check_name(finding.check), finding.level,
                finding.text.c_str());
  return findings.empty() ? 0 : 1;
}

void print_rules(bool only_unused) {
  for (const RuleSet *set : rule_sets()) {
    for (std::size_t i = 0; i < set->rules.size(); ++i) {
      if (!only_unused || set->fired[i] == 0)
        std::printf("%10" PRIu32 "  %s  %2zu  %s\n", set->fired[i], set->name, i + 1,
                    set->rules[i].pattern);
    }
  }
}

int run_all(Run &run) {
  const Arguments &arguments = run.arguments;
  std::uint64_t number = 0;
  enumerate_shapes([&](const Shape &shape) {
    if (is_in_slice(number++, arguments)) run.check_shape(shape);
  });
  for (std::uint64_t i = arguments.part; i < arguments.random; i += arguments.slice) {
    if (const NODE *tree = random_tree(run.world, arguments.seed + i)) run.check(tree);
  }

  if (arguments.rules || arguments.unused) print_rules(arguments.unused);
  std::printf("%" PRIu64 " trees, %" PRIu64 " of them without a meaning; %" PRIu64 " evaluations\n",
              run.totals.trees, run.totals.skipped, run.totals.evaluations);
  std::printf("%" PRIu64 " results not stable for a stated reason\n", run.totals.excepted);
  bool is_clean = true;
  for (std::size_t i = 0; i < check_count; ++i) {
    if (run.totals.failed[i] == 0) continue;
    is_clean = false;
    std::printf("%s: %" PRIu64 " failures\n", check_name(static_cast<Check>(i)),
                run.totals.failed[i]);
  }
  std::string error;
  const std::size_t disagreements = run.sample.disagreements(error);
  std::printf("%zu evaluations repeated by the judge, %zu differ\n", run.sample.size(),
              disagreements);
  if (disagreements != 0) std::printf("%s\n", error.c_str());
  return is_clean && disagreements == 0 ? 0 : 1;
}

bool parse_arguments(int count, char **words, Arguments &arguments) {
  for (int i = 1; i < count; ++i) {
    const std::string_view word = words[i];
    if (word == "--rules") {
      arguments.rules = true;
      continue;
    }
    if (word == "--unused") {
      arguments.unused = true;
      continue;
    }
    if (i + 1 == count) return false;
    const char *value = words[++i];
    if (word == "--tree") {
      arguments.tree = value;
      continue;
    }
    std::uint64_t *number = word == "--slice"    ? &arguments.slice
                            : word == "--part"   ? &arguments.part
                            : word == "--random" ? &arguments.random
                            : word == "--seed"   ? &arguments.seed
                            : word == "--show"   ? &arguments.show
                                                 : nullptr;
    char *end = nullptr;
    if (!number) return false;
    *number = std::strtoull(value, &end, 10);
    if (end == value || *end != '\0' || arguments.slice == 0) return false;
  }
  return arguments.part < arguments.slice;
}

} // namespace
} // namespace velkor::exhaustive

int main(int count, char **words) {
  using namespace velkor::exhaustive;
  Arguments arguments;
  if (!parse_arguments(count, words, arguments)) {
    std::fprintf(
        stderr, "usage: exhaustive_test [--slice N] [--part K] [--random N] [--seed N] [--show N]\n"
                "                       [--tree TEXT] [--rules] [--unused]\n");
    return 2;
  }
  Run run{arguments};
  make_world(run.world);
  const int status = arguments.tree.empty() ? run_all(run) : check_one(run);
  velkor::release_all_zones();
  return status;
}
