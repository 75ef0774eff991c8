// The argument of the clean-up that is running, for its steps.
#pragma once

namespace velkor {

// 0: between passes; 1: the last time before code goes out.
extern int simpcfg_mode;

} // namespace velkor
