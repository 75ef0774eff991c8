#include "text/vocabulary.h"

namespace velkor::text {

TagReference default_tag(const file::Symbol &symbol, Reference place) {
  const bool own = has_tag(symbol.stype) && name_space_of(symbol.sclass) == NameSpace::TAG;
  if (!own) return {};
  return {{static_cast<std::int16_t>(place.level), static_cast<std::int16_t>(place.index)},
          symbol.name};
}

const VisibleSymbol *tag_of(const file::Symbol &symbol, const Scopes &scopes) {
  return has_tag(symbol.stype) ? scopes.at({symbol.tag_level, symbol.tag_index}) : nullptr;
}

} // namespace velkor::text
