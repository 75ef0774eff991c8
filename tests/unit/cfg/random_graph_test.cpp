// Random graphs, run before and after the clean-up: the same calls with the same values around
// them, and the same result.
#include "cfg/check_function.h"
#include "cfg/graph_rows.h"
#include "cfg/simpcfg.h"

#include <map>
#include <random>

namespace velkor {
namespace {

constexpr int most_blocks_run = 4000;
const std::vector<std::string> variables = {"_x", "_y", "_z", "_i"};

// Runs the current graph. A call yields numbers that depend on how many there were.
class Machine {
public:
  explicit Machine(std::uint32_t seed) : seed_(seed) {}

  // What the calls saw, and the result; ended is false for a run that was cut off.
  std::vector<std::int64_t> trace;
  bool ended = false;
  std::string unknown; // an operator that the machine lacks

  void run(const std::vector<SYM *> &symbols) {
    symbols_ = symbols;
    for (SYM *sym : symbols)
      values_[sym] = static_cast<std::int32_t>(seed_++ % 7) - 2;
    const BB *block = state.first_bb;
    for (int i = 0; block && i < most_blocks_run; ++i)
      block = run_block(block);
    ended = !block;
  }

private:
  const BB *run_block(const BB *block) {
    for (const LIST *cell = block->trees; cell; cell = cell->next) {
      const NODE *tree = cell->item;
      switch (tree->op) {
      case BRANCH: return target_block(tree->left);
      case IF: return target_block(value(tree->left) ? tree->right->left : tree->right->right);
      case SWITCH: return chosen(tree->right, value(tree->left));
      case RETURN: trace.push_back(value(tree->right)); return nullptr;
      case URETURN: return nullptr;
      default: value(tree);
      }
    }
    return nullptr;
  }

  static const BB *chosen(const NODE *list, std::int32_t selector) {
    if (list->op == DEFAULT) return target_block(list->left);
    if (list->op == CASE)
      return list->left->u.lval == selector ? target_block(list->right) : nullptr;
    const BB *first = chosen(list->left, selector);
    return first ? first : chosen(list->right, selector);
  }

  std::int32_t call() {
    for (SYM *sym : symbols_)
      trace.push_back(values_[sym]);
    return static_cast<std::int32_t>((seed_ + ++calls_ * 2654435761u) >> 28) - 4;
  }

  std::int32_t value(const NODE *tree) {
    switch (tree->op) {
    case ICON: return tree->u.lval;
    case NAME: return values_[tree->u.sym];
    case SCONV: return value(tree->left);
    case ASSIGN: return values_[tree->left->u.sym] = value(tree->right);
    case UCALL: return call();
    case COMMA_OP: value(tree->left); return value(tree->right);
    case LOGICAL_OR: return value(tree->left) || value(tree->right);
    case LOGICAL_AND: return value(tree->left) && value(tree->right);
    case CONDITIONAL: return value(value(tree->left) ? tree->right->left : tree->right->right);
    default: break;
    }
    if (asgop_base(tree->op) != ILLOP) {
      const std::int32_t old = values_[tree->left->u.sym];
      return values_[tree->left->u.sym] =
                 computed(asgop_base(tree->op), old, value(tree->right), tree->left->type);
    }
    const std::int32_t left = value(tree->left);
    return computed(tree->op, left, tree->right ? value(tree->right) : 0, tree->left->type);
  }

  std::int32_t computed(Opcode op, std::int32_t a, std::int32_t b, TypeWord type) {
    const auto ua = static_cast<std::uint32_t>(a);
    const auto ub = static_cast<std::uint32_t>(b);
    const auto word = [](std::uint32_t result) { return static_cast<std::int32_t>(result); };
    switch (op) {
    case ADD: return word(ua + ub);
    case SUBTRACT: return word(ua - ub);
    case MULTIPLY: return word(ua * ub);
    case NEGATE: return word(0 - ua);
    case COMPLEMENT: return ~a;
    case BIT_AND: return a & b;
    case BIT_OR: return a | b;
    case BIT_XOR: return a ^ b;
    case SHIFT_LEFT: return word(ua << b);
    case SHIFT_RIGHT: return is_unsigned_integer(type) ? word(ua >> b) : a >> b;
    case LOGICAL_NOT: return !a;
    case EQ: return a == b;
    case NE: return a != b;
    case LT: return a < b;
    case LE: return a <= b;
    case GT: return a > b;
    case GE: return a >= b;
    case ULT: return ua < ub;
    case ULE: return ua <= ub;
    case UGT: return ua > ub;
    case UGE: return ua >= ub;
    default: unknown = opcode_table[op].name; return 0;
    }
  }

  std::uint32_t seed_;
  std::uint32_t calls_ = 0;
  std::vector<SYM *> symbols_;
  std::map<const SYM *, std::int32_t> values_; // for looking up only
};

class RandomGraphTest : public GraphRowTest {
protected:
  std::mt19937 random;

  int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
  std::string variable() { return variables[static_cast<std::size_t>(below(4))]; }
  std::string number() { return std::to_string(below(6) - 1); }
  std::string label(int blocks) { return "L" + std::to_string(1 + below(blocks)); }

  std::string condition() {
    static const std::vector<std::string> relations = {"lt", "le", "gt", "ge", "eq", "ne", "ult"};
    const std::string relation = relations[static_cast<std::size_t>(below(7))];
    switch (below(8)) {
    case 0: return variable();
    case 1: return "bit_and(" + variable() + ",4)";
    case 2: return relation + "(ucall(address(_fn))," + number() + ")";
    case 3: return number();
    case 4: {
      const std::string x = variable();
      return relation + "(assign(" + x + ",add(" + x + ",1))," + number() + ")";
    }
    case 5: return relation + "(" + variable() + "," + variable() + ")";
    default: return relation + "(_x," + number() + ")";
    }
  }

  std::string statement_line() {
    const std::string x = variable();
    switch (below(7)) {
    case 0: return "ucall(address(_fn))";
    case 1: return "assign(" + x + "," + variable() + ")";
    case 2: return "assign(" + x + "," + number() + ")";
    case 3: return "asg_or(" + x + ",4)";
    case 4: return "asg_and(" + x + ",-5)";
    default: return "assign(" + x + ",add(" + x + ",1))";
    }
  }

  std::string transfer(int blocks) {
    switch (below(8)) {
    case 0: return "return(_self," + variable() + ")";
    case 1:
      return "switch(" + variable() + ",comma(comma(case(1," + label(blocks) + "),case(2," +
             label(blocks) + ")),default(" + label(blocks) + ")))";
    case 2:
    case 3: return "goto " + label(blocks);
    default: return "if " + condition() + " " + label(blocks) + " " + label(blocks);
    }
  }

  Lines random_function() {
    const int blocks = 3 + below(9);
    Lines lines;
    for (int i = 1; i <= blocks; ++i) {
      lines.push_back("L" + std::to_string(i) + ":");
      for (int statements = below(3); statements > 0; --statements)
        lines.push_back(statement_line());
      lines.push_back(transfer(blocks));
    }
    return lines;
  }

  Machine run(std::uint32_t seed) {
    Machine machine(seed);
    std::vector<SYM *> watched;
    for (const std::string &name : variables)
      watched.push_back(sym(name.c_str()));
    machine.run(watched);
    EXPECT_EQ(machine.unknown, "");
    return machine;
  }

  // A run that was cut off has seen what a longer one sees at first.
  static void expect_same(Machine before, Machine after, const std::string &function) {
    if (!before.ended || !after.ended) {
      const std::size_t both = std::min(before.trace.size(), after.trace.size());
      before.trace.resize(both);
      after.trace.resize(both);
    }
    EXPECT_EQ(before.ended, after.ended) << function;
    EXPECT_EQ(before.trace, after.trace) << function;
  }
};

TEST_F(RandomGraphTest, RunTheSameBeforeAndAfter) {
  constexpr int functions = 500;
  for (int i = 0; i < functions && !HasFailure(); ++i) {
    random.seed(static_cast<unsigned>(i));
    options.opt_level = below(3);
    const Lines lines = random_function();
    std::string function = "function " + std::to_string(i) + ":";
    for (const std::string &line : lines)
      function += " " + line + ";";
    build(lines);
    std::vector<Machine> before;
    for (std::uint32_t seed = 0; seed < 4; ++seed)
      before.push_back(run(seed * 11));
    for (const int mode : {0, 0, 1}) {
      simpcfg(mode);
      check_function("simpcfg");
      for (std::uint32_t seed = 0; seed < 4; ++seed)
        expect_same(before[seed], run(seed * 11),
                    function + " mode " + std::to_string(mode) + " level " +
                        std::to_string(options.opt_level));
    }
  }
}

} // namespace
} // namespace velkor
