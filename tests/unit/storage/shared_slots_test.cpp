// Random functions do the same after their locals have come to share slots.
#include "storage/allocate_regs.h"
#include "storage/pack_services.h"
#include "storage/random_function.h"
#include "storage/storage_rows.h"

#include <map>
#include <optional>
#include <vector>

namespace velkor {
namespace {

// Runs the current function: what it writes to _g1 and returns, until it reads a local that it has
// not set, or has run through enough blocks.
class Interpreter {
public:
  explicit Interpreter(bool left_first) : left_first_(left_first) {}

  std::vector<int> run() {
    const BB *block = state.first_bb;
    for (int count = 0; block && count < 200; ++count)
      block = run_block(block);
    return trace_;
  }

private:
  const BB *run_block(const BB *block) {
    for (const LIST *cell = block->trees; cell && !stopped_; cell = cell->next) {
      const NODE *item = cell->item;
      switch (item->op) {
      case BRANCH: return target_block(item->left);
      case IF: {
        const int value = evaluate(item->left);
        return stopped_ ? nullptr : target_block(value ? item->right->left : item->right->right);
      }
      case RETURN: note(evaluate(item->right)); return nullptr;
      case URETURN: return nullptr;
      default: evaluate(item);
      }
    }
    return nullptr;
  }

  int evaluate(const NODE *tree) {
    switch (tree->op) {
    case ICON: return tree->u.lval;
    case NAME: return read(tree->u.sym);
    case ASSIGN: return write(tree->left->u.sym, evaluate(tree->right));
    case ASG_ADD: {
      const int step = evaluate(tree->right);
      return write(tree->left->u.sym, add(read(tree->left->u.sym), step));
    }
    case ADD: {
      const int first = evaluate(left_first_ ? tree->left : tree->right);
      return add(first, evaluate(left_first_ ? tree->right : tree->left));
    }
    default: ADD_FAILURE() << "an opcode that no function here has"; return 0;
    }
  }

  static int add(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
  }

  int read(const SYM *sym) {
    if (sym->level == 0) return ++input_;
    const std::optional<int> &value = locals_[sym];
    if (!value) stopped_ = true;
    return value.value_or(0);
  }

  int write(const SYM *sym, int value) {
    if (sym->level == 0)
      note(value);
    else if (!stopped_)
      locals_[sym] = value;
    return value;
  }

  void note(int value) {
    if (!stopped_) trace_.push_back(value);
  }

  bool left_first_;
  bool stopped_ = false;
  int input_ = 100; // what the next read of a global gives
  std::map<const SYM *, std::optional<int>> locals_;
  std::vector<int> trace_;
};

REGCLASS nothing_fits = {nullptr,
                         [](SYM *, REGCLASS *, std::int32_t *, std::uint32_t *, std::int32_t *,
                            std::uint32_t *) { return false; },
                         [](SYM *, REGCLASS *) { return false; }};

using SharedSlotsTest = StorageRowTest;

TEST_F(SharedSlotsTest, FunctionsDoTheSame) {
  velkor::target.register_classes = [] { return &nothing_fits; };
  velkor::target.finish_symbols = [](SYM *list) { state.scalar_syms = coalesce_autos(list); };
  int shared = 0;
  std::size_t values = 0;
  for (unsigned seed = 1; seed <= 1000; ++seed) {
    Lines lines = RandomFunction(seed).lines;
    for (unsigned i = 0; i < random_variables.size(); ++i) // most of them have a value at first
      if (seed % (i + 4) != 0)
        lines.insert(lines.begin(), std::string("assign(") + random_variables[i] + ",_g2)");
    const bool left_first = seed % 2 == 0;
    for (const char *variable : random_variables)
      sym(variable)->level = 2;
    use_locals({"_x", "_y", "_z", "_i", "_n"});
    build(lines);
    const std::vector<int> before = Interpreter(left_first).run();
    build(lines);
    allocate_regs();
    std::vector<int> after = Interpreter(left_first).run();
    // A local that was not set may have a value now.
    ASSERT_GE(after.size(), before.size()) << "seed " << seed;
    after.resize(before.size());
    EXPECT_EQ(after, before) << "seed " << seed;
    values += before.size();
    for (const char *variable : random_variables)
      shared += sym(variable)->level == coalesced_level;
  }
  EXPECT_GT(shared, 500) << "the functions prove something";
  EXPECT_GT(values, 2000u);
}

} // namespace
} // namespace velkor
