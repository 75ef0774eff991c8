// What the program says of itself.
#pragma once

namespace velkor {

inline constexpr const char *product_line = "VELKOR ANSI C Optimizer    ";
inline constexpr const char *version_text = "Version 1.22e";
inline constexpr const char *maker_line = "The middle end of the VELKOR compiler.";

} // namespace velkor
