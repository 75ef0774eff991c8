// The simplifier's speed: nodes a second over ordinary statements, and how the time of long chains
// grows with their length.
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "driver/driver.h"
#include "simplify/constant_text.h"
#include "simplify/simplify.h"

#include <benchmark/benchmark.h>

#include <array>
#include <vector>

namespace velkor {
namespace {

// A run of its own, with a few integer variables.
struct Workshop {
  Workshop() {
    release_all_zones();
    options = Options{};
    state = State{};
    clear_functions();
    clear_symbol_tables();
    init_float_constants();
    for (SYM *&variable : variables) {
      variable = new_symbol(0, "_v");
      variable->stype = INT;
      variable->size = variable->align = 32;
      variable->sclass = variable->orig_sclass = C_AUTO;
      variable->level = 2;
    }
  }
  ~Workshop() { release_all_zones(); }

  unsigned random(unsigned below) {
    random_state = random_state * 1103515245 + 12345;
    return (random_state >> 16) % below;
  }
  NODE *name() { return make_name(variables[random(variables.size())]); }
  NODE *leaf() {
    return random(2) ? name() : make_icon(static_cast<std::int32_t>(random(1000)), INT);
  }

  NODE *value(int depth) {
    constexpr std::array operators = {ADD,     SUBTRACT, MULTIPLY, BIT_AND,     BIT_OR,
                                      BIT_XOR, LT,       EQ,       SHIFT_RIGHT, DIVIDE};
    if (depth == 0) return leaf();
    const Opcode op = operators[random(operators.size())];
    NODE *left = value(depth - 1);
    NODE *right = op == SHIFT_RIGHT ? make_icon(3, INT) : value(depth - 1);
    return make_node(op, left, right, INT);
  }

  std::array<SYM *, 8> variables{};
  unsigned random_state = 12345;
};

long count_nodes(const NODE *tree) {
  long count = 0;
  for (; tree; tree = tree->left)
    count += 1 + count_nodes(tree->right);
  return count;
}

// Assignments of expressions of a few operators, as programs have them.
void ordinary_statements(benchmark::State &bench) {
  Workshop shop;
  long nodes = 0;
  for (auto _ : bench) {
    bench.PauseTiming();
    end_of_function();
    std::vector<NODE *> trees;
    for (int i = 0; i < 500; ++i) {
      NODE *target = shop.name();
      trees.push_back(make_node(ASSIGN, target, shop.value(2), INT));
      nodes += count_nodes(trees.back());
    }
    bench.ResumeTiming();
    for (NODE *tree : trees)
      benchmark::DoNotOptimize(simplify_tree(tree));
  }
  bench.counters["nodes"] =
      benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kIsRate);
}
BENCHMARK(ordinary_statements);

enum class Lean { LEFT, RIGHT };

void chain(benchmark::State &bench, Opcode op, Lean lean) {
  Workshop shop;
  const auto length = static_cast<int>(bench.range(0));
  for (auto _ : bench) {
    bench.PauseTiming();
    end_of_function();
    NODE *tree = shop.leaf();
    for (int i = 0; i < length; ++i) {
      NODE *other = shop.leaf();
      tree = lean == Lean::LEFT ? make_node(op, tree, other, INT) : make_node(op, other, tree, INT);
    }
    bench.ResumeTiming();
    benchmark::DoNotOptimize(simplify_tree(tree));
  }
  bench.SetComplexityN(length);
}
BENCHMARK_CAPTURE(chain, add_left, ADD, Lean::LEFT)
    ->RangeMultiplier(4)
    ->Range(512, 32768)
    ->Complexity();
BENCHMARK_CAPTURE(chain, add_right, ADD, Lean::RIGHT)
    ->RangeMultiplier(4)
    ->Range(512, 32768)
    ->Complexity();
BENCHMARK_CAPTURE(chain, subtract_left, SUBTRACT, Lean::LEFT)
    ->RangeMultiplier(4)
    ->Range(512, 32768)
    ->Complexity();
BENCHMARK_CAPTURE(chain, and_right, BIT_AND, Lean::RIGHT)
    ->RangeMultiplier(4)
    ->Range(512, 32768)
    ->Complexity();
BENCHMARK_CAPTURE(chain, multiply_left, MULTIPLY, Lean::LEFT)
    ->RangeMultiplier(4)
    ->Range(512, 32768)
    ->Complexity();
BENCHMARK_CAPTURE(chain, divide_left, DIVIDE, Lean::LEFT)
    ->RangeMultiplier(4)
    ->Range(512, 32768)
    ->Complexity();

} // namespace
} // namespace velkor

int main(int argc, char **argv) {
  velkor::raise_stack_limit();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
