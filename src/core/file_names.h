// Names of the files of a run.
#pragma once

#include <string>
#include <string_view>

namespace velkor {

// The name with its extension replaced (force) or, only where it has none, added. The extension may
// be given with or without its dot.
[[nodiscard]] std::string set_extension(std::string_view name, std::string_view extension,
                                        bool force);

// The name cut at the dot that begins its extension.
[[nodiscard]] std::string strip_extension(std::string_view name);

} // namespace velkor
