// Code that stands in two places and goes the same way from there.
//
// Both routines look at the final shape of the code, and run only above level 0 and on functions of
// more than one block. They renumber nothing: simpcfg picks up the pieces.
#pragma once

namespace velkor {

// a: x = 1; goto c;   b: x = 1; goto c;   ->   a: goto b;   b: x = 1; goto c;
// and likewise for blocks that end the function.
void cross_jump();

// a: ... if (c) goto t; else goto f;   b: ... if (c) goto t; else goto f;
//   ->   a: ... goto i;   b: ... goto i;   i: if (c) goto t; else goto f;
void merge_repeated_ifs();

} // namespace velkor
