// State that all passes share: the run, the file being read, the current function.
#pragma once

#include "core/records.h"

#include <cstdio>
#include <string>

namespace velkor {

struct FUN;

struct State {
  // The run.
  std::string input_name; // of the icode file, with its extension
  int cfg_graphs = 0;     // pictures drawn so far, of each kind
  int tree_graphs = 0;
  int loop_graphs = 0;
  std::FILE *debug_file = nullptr;
  std::FILE *info_file = nullptr;
  int debug_on = 0; // the debug level, once the debug file is open
  int info_on = 0;
  int pass_number = 0;             // 0: one pass; 1 and 2: the two passes over the file
  bool inline_available = false;   // some function has an inline body
  bool skip_function = false;      // records are read, but nothing is written
  bool program_is_closed = false;  // no code outside calls this file's external functions
  bool callers_are_known = false;  // no code outside touches this file's external variables
  bool main_not_reentered = false; // nothing calls main
  FUN *unknown_fun = nullptr;      // stands for all callers and callees outside the file

  // The file.
  int lexical_level = 0;
  std::string cur_source_file = "\"\""; // at first a text that no file name equals
  SYM *global_syms = nullptr;           // newest first
  SYM *errno_sym = nullptr;             // the int object of that name, if declared
  int cur_line2 = 0;                    // second line number of the record just read

  // The current function.
  FUN *cur_fun = nullptr;
  SYM *cur_fun_sym = nullptr;
  bool function_is_inline = false;
  bool local_address_taken = false;
  bool has_bit_fields = false;
  bool function_is_leaf = true;
  bool assertions_present = false;
  std::int16_t begin_value = 0; // values of the markers BF, EA, EL and EF
  std::int16_t parameters_value = 0;
  std::int16_t locals_value = 0;
  std::int16_t end_value = 0;
  int written_locals = 0;     // running index of the level-2 symbols in the output
  LIST *statements = nullptr; // as read: newest first
  BB *first_bb = nullptr;
  BB *exit_bb = nullptr;
  int num_blocks = 0;
  int label_counter = 0; // steps down: indices of the optimizer's own labels
  SYM *local_syms = nullptr;
  SYM *temp_syms = nullptr;
  SYM *scalar_syms = nullptr;
  SYM *static_syms = nullptr;
  SYM *other_syms = nullptr;
  SYM *misc_syms = nullptr;
  int temp_counter = 0;
  SYMLIST *inline_statics = nullptr;       // brought in by inlining, neither autos nor parameters
  SYMLIST *inline_limit_reached = nullptr; // functions that inlining has nested too deep
  int inlined_nodes = 0;                   // brought in by inlining
  LIST *alloc_comments = nullptr; // ASM comments of the allocator; the last one goes out first
};

extern State state;

} // namespace velkor
