// Pictures for people who debug the optimizer, in GDL, the language of the vcg viewers.
//
// Routines to be called at any point by somebody who adds such a call; each writes a text file
// beside the input file, numbered through the run, and nothing unless debug_level is above 0. A
// file that cannot be opened is passed over in silence.
#pragma once

#include "core/records.h"

namespace velkor {

// A natural loop and what lies in it. The caller makes and owns the records, and sets the link of
// each block in a list to its innermost loop.
struct LoopRecord {
  int number;         // unique in the hierarchy
  LoopRecord *parent; // none for the root, which stands for the whole function
  EDGE *blocks;       // its own blocks, and one block of each loop that lies directly in it
};

// Where a block's link to its innermost loop hangs while loops are drawn.
inline constexpr int innermost_loop_slot = 0; // of BB::work

// The control-flow graph of the current function: "<input>.cfg<n>". Each block has a statement.
void dump_cfg_graph();
// One tree: "<input>.tree<n>". Returns the tree.
NODE *dump_tree_graph(NODE *tree);
// The loop hierarchy below a loop: "<input>.loop<n>".
void dump_loop_graph(const LoopRecord *root);

} // namespace velkor
