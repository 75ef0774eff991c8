// The function in the optimizer's hands, in the text form.
#pragma once

#include <string>
#include <vector>

namespace velkor::tool {

// The current function's blocks, one label or statement a line; the statements as read where there
// are no blocks yet.
[[nodiscard]] std::vector<std::string> function_text();

// The lines that differ, each with "- " or "+ " in front, and the lines next to them; "..." stands
// for equal lines further away. Empty when both are the same.
[[nodiscard]] std::string difference(const std::vector<std::string> &before,
                                     const std::vector<std::string> &after);

} // namespace velkor::tool
