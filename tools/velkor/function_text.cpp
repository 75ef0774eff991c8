#include "velkor/function_text.h"

#include <algorithm>
#include <array>

#include "bridge/node_text.h"
#include "core/state.h"

namespace velkor::tool {
namespace {

// Symbols that the function's trees refer to, by level 0 to 2.
using SymbolsByLevel = std::array<std::vector<SYM *>, 3>;

std::size_t level_of(const SYM *sym) {
  return static_cast<std::size_t>(std::clamp<int>(sym->level, 0, 2));
}

bool has_symbol(const NODE *node) {
  const RecordFields fields = opcode_table[node->op].fields;
  return fields == RecordFields::QUAL_SYMBOL || fields == RecordFields::SYMBOL ||
         fields == RecordFields::SYMBOL_QUAL;
}

template <typename Visit> void for_each_node(const NODE *tree, const Visit &visit) {
  for (; tree && tree->op != LABELDEF; tree = tree->left) {
    visit(tree);
    for_each_node(tree->right, visit);
  }
}

template <typename Visit> void for_each_statement(const Visit &visit) {
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      visit(cell);
  if (state.first_bb) return;
  std::vector<const LIST *> cells; // as read: newest first
  for (const LIST *cell = state.statements; cell; cell = cell->next)
    cells.push_back(cell);
  std::for_each(cells.rbegin(), cells.rend(), visit);
}

std::string statement_text(const NODE *node, const bridge::SymbolScope &symbols) {
  const auto tree = [&](const NODE *part) { return bridge::tree_to_text(part, symbols); };
  switch (node->op) {
  case LABELDEF: return 'L' + std::to_string(node->label->index) + ':';
  case ASM: return "  assembly " + std::string(node->aux.text);
  case PPRAGMA: return "  pragma " + std::to_string(node->u.lval >> 8 & 255);
  case LIVEINFO: return "  live_registers";
  case IF:
    return "  if " + tree(node->left) + " then " + tree(node->right->left) + " else " +
           tree(node->right->right);
  default: return "  " + tree(node);
  }
}

// The symbols that the function's trees refer to.
bridge::SymbolScope function_symbols() {
  SymbolsByLevel symbols;
  for_each_statement([&](const LIST *cell) {
    for_each_node(cell->item, [&](const NODE *node) {
      if (has_symbol(node) && node->u.sym) symbols[level_of(node->u.sym)].push_back(node->u.sym);
    });
  });
  bridge::SymbolScope scope;
  for (const auto &level : symbols)
    for (SYM *sym : level)
      scope.add(sym);
  return scope;
}

// Lengths of longest common subsequences of the tails of two line lists.
class CommonLines {
public:
  CommonLines(const std::vector<std::string> &a, const std::vector<std::string> &b)
      : width_(b.size() + 1), lengths_((a.size() + 1) * width_) {
    for (std::size_t i = a.size(); i-- > 0;)
      for (std::size_t j = b.size(); j-- > 0;)
        lengths_[i * width_ + j] =
            a[i] == b[j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
  }
  [[nodiscard]] int at(std::size_t i, std::size_t j) const { return lengths_[i * width_ + j]; }

private:
  std::size_t width_;
  std::vector<int> lengths_;
};

// Takes what both have in front off, and returns how many lines that was.
std::size_t common_prefix(const std::vector<std::string> &a, const std::vector<std::string> &b) {
  std::size_t count = 0;
  while (count < a.size() && count < b.size() && a[count] == b[count])
    ++count;
  return count;
}

void add_line(std::string &out, char sign, const std::string &line) {
  out += sign;
  out += ' ';
  out += line;
  out += '\n';
}

} // namespace

std::vector<std::string> function_text() {
  const bridge::SymbolScope symbols = function_symbols();
  std::vector<std::string> lines;
  for (const BB *block = state.first_bb; block; block = block->next) {
    for (const LABEL *label = block->labels; label; label = label->next)
      lines.push_back('L' + std::to_string(label->index) + ':');
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      lines.push_back(statement_text(cell->item, symbols));
  }
  if (!state.first_bb)
    for_each_statement(
        [&](const LIST *cell) { lines.push_back(statement_text(cell->item, symbols)); });
  return lines;
}

std::string difference(const std::vector<std::string> &before,
                       const std::vector<std::string> &after) {
  constexpr std::size_t largest_table = 4'000'000; // cells; larger differences print as a whole
  std::string out;
  if (before == after) return out;
  const std::size_t prefix = common_prefix(before, after);
  std::vector<std::string> a(before.begin() + static_cast<std::ptrdiff_t>(prefix), before.end());
  std::vector<std::string> b(after.begin() + static_cast<std::ptrdiff_t>(prefix), after.end());
  if (prefix > 0) add_line(out, ' ', before[prefix - 1]);
  if (a.size() * b.size() > largest_table) {
    for (const std::string &line : a)
      add_line(out, '-', line);
    for (const std::string &line : b)
      add_line(out, '+', line);
    return out;
  }
  const CommonLines common(a, b);
  std::size_t i = 0;
  std::size_t j = 0;
  std::size_t equal = 0; // equal lines since the last one that differs
  while (i < a.size() || j < b.size()) {
    if (i < a.size() && j < b.size() && a[i] == b[j]) {
      if (equal == 0) add_line(out, ' ', a[i]);
      ++equal;
      ++i;
      ++j;
      continue;
    }
    if (equal > 2) out += "  ...\n";
    if (equal > 1) add_line(out, ' ', a[i - 1]);
    equal = 0;
    if (j == b.size() || (i < a.size() && common.at(i + 1, j) >= common.at(i, j + 1)))
      add_line(out, '-', a[i++]);
    else
      add_line(out, '+', b[j++]);
  }
  return out;
}

} // namespace velkor::tool
