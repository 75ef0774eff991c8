// Calls that come back more than once.
#pragma once

namespace velkor {

// Does the function name setjmp? Code behind such a call may run again with the variables as they
// are by then, so what changes a variable must not move behind it.
[[nodiscard]] bool function_returns_twice();

} // namespace velkor
