// The end of a run that failed.
#pragma once

namespace velkor {

// Ends the run: closes the files, deletes the output, says so, and makes the exit status 1. The
// caller has printed what is wrong. Lives in the driver, which owns the files; every room calls it.
[[noreturn]] void abnormal_end();

// The same for a fault of the optimizer itself, not of its input.
[[noreturn]] void internal_failure();

} // namespace velkor
