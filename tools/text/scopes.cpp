#include "text/scopes.h"

#include "core/storage_classes.h"
#include "icode/format.h"

namespace velkor::text {

NameSpace name_space_of(std::uint8_t storage_class) {
  switch (storage_class) {
  case C_STRTAG:
  case C_UNTAG:
  case C_ENTAG:
  case C_GROUP: return NameSpace::TAG;
  case C_MOS:
  case C_MOU:
  case C_FIELD:
  case C_STATREG:
  case C_EXTREG: return NameSpace::MEMBER;
  default: return NameSpace::ORDINARY;
  }
}

void Scopes::follow(std::uint8_t marker_kind) {
  switch (marker_kind) {
  case MARKER_BF:
    leave_to(0);
    levels_.emplace_back();
    break;
  case MARKER_BB:
  case MARKER_EA: levels_.emplace_back(); break;
  case MARKER_EB:
    if (level() > 0) leave_to(level() - 1);
    break;
  case MARKER_EF: leave_to(0); break;
  default: break;
  }
}

Reference Scopes::next() const {
  return {level(), static_cast<std::int32_t>(levels_.back().size())};
}

Reference Scopes::add(const file::Symbol &symbol) {
  const Reference place = next();
  const NameSpace space = name_space_of(symbol.sclass);
  levels_.back().push_back(
      {symbol.name, symbol.stype, symbol.squal, symbol.size, symbol.align, space});
  by_name_[symbol.name].push_back({place, space});
  return place;
}

const VisibleSymbol *Scopes::at(Reference place) const {
  if (place.level < 0 || place.level > level() || place.index < 0) return nullptr;
  const auto &scope = levels_[static_cast<std::size_t>(place.level)];
  if (static_cast<std::size_t>(place.index) >= scope.size()) return nullptr;
  return &scope[static_cast<std::size_t>(place.index)];
}

std::optional<Reference> Scopes::find(std::string_view name, NameSpace space) const {
  const auto found = by_name_.find(name);
  if (found == by_name_.end() || found->second.empty()) return std::nullopt;
  const std::vector<Named> &symbols = found->second;
  for (auto each = symbols.rbegin(); each != symbols.rend(); ++each) {
    if (each->space == space) return each->place;
  }
  return symbols.back().place;
}

// Closes scopes. What stands in an inner scope was entered behind all of the outer ones, so each
// symbol to go is the last one of its name.
void Scopes::leave_to(int outer) {
  while (level() > outer) {
    for (const VisibleSymbol &symbol : levels_.back()) {
      const auto found = by_name_.find(symbol.name);
      found->second.pop_back();
      if (found->second.empty()) by_name_.erase(found);
    }
    levels_.pop_back();
  }
}

} // namespace velkor::text
