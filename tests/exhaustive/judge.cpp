#include "judge.h"

#include "run/run.h"
#include "text/text.h"

#include <cstdio>

namespace velkor::exhaustive {
namespace {

// Prints the value of the tree and every variable afterwards.
std::string print_statements(const World &world) {
  std::string text = "2: call(address(_printf), comma(\"%d\\0\", _r))\n";
  for (const Variable &variable : world.variables)
    text += std::string("2: call(address(_printf), comma(\" %d\\0\", sconv:int(") + variable.tree +
            ")))\n";
  return text + "2: call(address(_printf), \"\\n\\0\")\n";
}

std::string decimal(std::uint32_t word) {
  return std::to_string(static_cast<std::int32_t>(word));
}

} // namespace

void JudgeSample::add(const World &world, const NODE *tree, std::uint64_t seed) {
  Memory memory = world.initial;
  Evaluation evaluation;
  evaluation.memory = &memory;
  Word value;
  evaluate(tree, evaluation, value);
  if (evaluation.reason) return;
  for (std::uint64_t lane = seed % 97; lane < lane_count; lane += 97) {
    if (evaluation.undefined.lane[lane] | evaluation.trapped.lane[lane]) continue;
    Case sample;
    sample.tree = bridge::tree_to_text(tree, world.symbols);
    sample.expected = decimal(value.lane[lane]);
    for (std::size_t slot = 0; slot < world.variables.size(); ++slot) {
      sample.settings += std::string("1: assign(") + world.variables[slot].tree + ", " +
                         decimal(world.initial[slot].lane[lane]) + ")\n";
      sample.expected += ' ' + decimal(memory[slot].lane[lane]);
    }
    sample.settings += "1: assign(_r, " + sample.tree + ")\n" + print_statements(world);
    cases_.push_back(std::move(sample));
  }
}

std::size_t JudgeSample::disagreements(std::string &error) const {
  constexpr std::size_t cases_of_a_run = 200;
  std::size_t different = 0;
  for (std::size_t first = 0; first < cases_.size(); first += cases_of_a_run) {
    const std::size_t end = std::min(cases_.size(), first + cases_of_a_run);
    std::string text = "source \"sample.c\"\n";
    for (const std::string &line : declarations(0))
      text += line + (line == "symbol _g extern int" ? " value\n  0\nend_value\n" : "\n");
    text += "symbol _main extern int()\nbegin_function 1\nend_parameters 1\n";
    for (const std::string &line : declarations(2))
      text += line + "\n";
    text += "end_locals 1\n1: assign(_p, address(_g))\n";
    for (std::size_t i = first; i < end; ++i)
      text += cases_[i].settings;
    text += "3: return(_main, 0)\nend_function 3\n";

    file::IcodeFile file;
    error = text::parse_text(text, file);
    if (!error.empty()) return cases_.size();
    std::string output;
    run::RunOptions options;
    options.output = [&](std::string_view part) { output += part; };
    const run::RunResult result = run::run_program(file, options);
    if (!result.error.empty()) {
      error = result.error;
      return cases_.size();
    }
    std::size_t position = 0;
    for (std::size_t i = first; i < end; ++i) {
      const std::size_t line_end = std::min(output.find('\n', position), output.size());
      const std::string line = output.substr(position, line_end - position);
      position = std::min(line_end + 1, output.size());
      if (line == cases_[i].expected) continue;
      if (different++ == 0)
        error = cases_[i].settings + "yields " + line + ", expected " + cases_[i].expected;
    }
  }
  return different;
}

} // namespace velkor::exhaustive
