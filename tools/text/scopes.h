// The symbols that are visible at a place of an icode file, by (level, index) and by name.
//
// A file gives symbols no numbers: a symbol's index is its position among the symbols of its scope,
// and the scope markers open and close scopes. Both directions of the text form follow them here,
// so that a name means the same when it is printed and when it is read.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/types.h"
#include "file/icode_file.h"

namespace velkor::text {

// What tree records refer to a symbol by. Level -1 is none.
struct Reference {
  std::int32_t level = -1;
  std::int32_t index = -1;
  friend bool operator==(const Reference &, const Reference &) = default;
};

// Tags and members have names of their own: `struct s { int s; } s;` is common.
enum class NameSpace : std::uint8_t { ORDINARY, TAG, MEMBER };

[[nodiscard]] NameSpace name_space_of(std::uint8_t storage_class);

// What the text form needs of a symbol to leave out what follows from it.
struct VisibleSymbol {
  std::string name;
  TypeWord type = 0;
  std::uint32_t squal = 0;
  std::int32_t size = 0;  // bits
  std::int32_t align = 0; // bits
  NameSpace space = NameSpace::ORDINARY;
};

class Scopes {
public:
  // Follows a scope marker; kinds that are none change nothing.
  void follow(std::uint8_t marker_kind);

  // Enters a symbol into the current scope and returns its place.
  Reference add(const file::Symbol &symbol);

  // Where add() will put the next symbol.
  [[nodiscard]] Reference next() const;

  // Lexical level: 0 outside of functions, 1 parameters, 2 the body, more in inner blocks.
  [[nodiscard]] int level() const { return static_cast<int>(levels_.size()) - 1; }

  // The symbol at a place, or null. Valid until the next add() or follow().
  [[nodiscard]] const VisibleSymbol *at(Reference place) const;

  // The innermost, newest symbol of a name. Symbols of the name space come first; when it has none
  // of that name, any other will do.
  [[nodiscard]] std::optional<Reference> find(std::string_view name, NameSpace space) const;

private:
  struct Named {
    Reference place;
    NameSpace space;
  };

  void leave_to(int level);

  std::vector<std::vector<VisibleSymbol>> levels_{1};
  std::map<std::string, std::vector<Named>, std::less<>> by_name_; // newest last
};

} // namespace velkor::text
