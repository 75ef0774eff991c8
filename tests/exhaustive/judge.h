// The evaluator of lanes against the judge.
#pragma once

#include "variables.h"

#include <string>
#include <vector>

namespace velkor::exhaustive {

// Trees whose values are to be compared, with some of their lanes.
class JudgeSample {
public:
  // Notes the tree for some lanes in which it has a meaning.
  void add(const World &world, const NODE *tree, std::uint64_t seed);
  [[nodiscard]] std::size_t size() const { return cases_.size(); }

  // Runs all of it in the judge. Returns how many cases differ; describes the first in error.
  [[nodiscard]] std::size_t disagreements(std::string &error) const;

private:
  struct Case {
    std::string tree;
    std::string settings; // statements that set the variables
    std::string expected; // what the program then prints
  };
  std::vector<Case> cases_;
};

} // namespace velkor::exhaustive
