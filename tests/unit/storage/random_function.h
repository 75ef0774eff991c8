// Random functions over five locals and two globals.
#pragma once

#include "simplify/statement_rows.h"

#include <array>
#include <random>
#include <string>

namespace velkor {

inline constexpr std::array random_variables = {"_x", "_y", "_z", "_i", "_n"};

// Blocks of assignments that end in branches or returns; locals may be read before they are set. No
// statement reads a variable that it assigns inside of an expression.
class RandomFunction {
public:
  explicit RandomFunction(unsigned seed) : random_(seed) {
    const int blocks = 2 + below(8);
    for (int i = 1; i <= blocks; ++i) {
      lines.push_back("L" + std::to_string(i) + ":");
      for (int count = below(5); count > 0; --count)
        lines.push_back(statement());
      if (below(3) == 0)
        lines.push_back("return(_self," + variable() + ")");
      else
        lines.push_back("if " + variable() + " " + label(blocks) + " " + label(blocks));
    }
  }

  Lines lines;

private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string label(int blocks) { return "L" + std::to_string(1 + below(blocks)); }
  std::string variable() { return random_variables[static_cast<std::size_t>(below(5))]; }
  std::string other_variable(const std::string &than) {
    std::string result = variable();
    while (result == than)
      result = variable();
    return result;
  }

  std::string statement() {
    switch (below(7)) {
    case 0: return "assign(" + variable() + "," + std::to_string(below(9)) + ")";
    case 1: return "assign(" + variable() + ",add(" + variable() + "," + variable() + "))";
    case 2: return "asg_add(" + variable() + "," + variable() + ")";
    case 3: return "assign(" + variable() + "," + variable() + ")";
    case 4: return "assign(" + variable() + ",_g2)";
    case 5: return "assign(_g1," + variable() + ")";
    default: {
      const std::string assigned = variable();
      const std::string assignment = "assign(" + assigned + "," + other_variable(assigned) + ")";
      return "assign(_g1,add(" + assignment + "," + other_variable(assigned) + "))";
    }
    }
  }

  std::minstd_rand random_;
};

} // namespace velkor
