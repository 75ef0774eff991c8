// Between the optimizer's trees and the text form: for the command's dumps and for tests.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/records.h"
#include "file/icode_file.h"
#include "text/scopes.h"

namespace velkor::bridge {

// The symbols that trees may refer to, under the names and places of the text form.
class SymbolScope {
public:
  // Enters a symbol at the level that it stands at now. Symbols of lower levels come first.
  void add(SYM *sym);

  // Declares a symbol by its line of text, as it stands in a file at that level (0 to 2): makes the
  // SYM in the global zone. Returns none, with the reason in error, when the line cannot be read.
  SYM *declare(std::string_view line, int level, std::string &error);

  [[nodiscard]] text::Reference place_of(const SYM *sym) const;
  [[nodiscard]] SYM *at(text::Reference place) const;
  [[nodiscard]] const text::Scopes &scopes() const { return scopes_; }

private:
  void enter_level(int level);
  void keep(SYM *sym, text::Reference place);

  text::Scopes scopes_;
  int level_ = 0;
  std::unordered_map<const SYM *, text::Reference> places_;
  std::array<std::vector<SYM *>, 3> symbols_; // by level and index
};

// One tree as text. Opcodes that only passes know print by their names; a shared subtree prints in
// full at each of its places.
[[nodiscard]] std::string tree_to_text(const NODE *tree, const SymbolScope &symbols);

// One tree from text, its nodes in the local zone, exactly as written: nothing that the reader of
// files does to trees is done to it. Returns none, with the reason in error, when it cannot be
// read.
[[nodiscard]] NODE *tree_from_text(std::string_view line, const SymbolScope &symbols,
                                   std::string &error);

} // namespace velkor::bridge
