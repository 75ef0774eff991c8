// Inline bodies: what is kept of a function whose calls are to be replaced.
//
//   inline int twice(int x) { return x + x; }
//
// is kept as its two statements (the copy of the parameter to its home, the return) and its two
// symbols, as the reader and the simplifier left them: no block exists yet, so that one body serves
// all callers. Everything lives in the global zone, to the end of the run. The statements of the
// current function are still newest first, and it goes on being compiled as if nothing had been.
#pragma once

namespace velkor {

// Decides whether the current function, which has just been read, can be integrated into its
// callers. If so, and if it is to be (state.function_is_inline, or any pass over the file but the
// first), records its body. A function that is marked inline and cannot be integrated is told to
// the user; where the file wants no stand-alone copy of it, it gets one after all: it loses
// FUN_is_suppressed, and the caller has to read it again.
void record_inline_definition();

} // namespace velkor
