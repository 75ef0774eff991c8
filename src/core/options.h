// Option settings of a run, one plain integer each, read by the passes directly.
#pragma once

#include <array>

namespace velkor {

struct Options {
  int opt_aliased = 0;               // -a  arithmetic on an address can reach other objects
  int opt_call_graph_file = 0;       // -c  write the call graph, at level 3
  int opt_big_endian_bits = 0;       // -e  bit positions count from the other end of the unit
  int opt_externs_volatile = 0;      // -f  the address of an extern is no constant
  int opt_builtin_level = 2;         // -h  trust in library names and in pragmas on functions
  int opt_inline_size = 1;           // -i  size limit of automatic inlining
  int opt_assume_reentrant = 1;      // -j clears it: calls do not re-enter the current function
  int opt_unsigned_preserving = 0;   // -k  narrow unsigned types promote to unsigned
  int info_level = 0;                // -n
  int opt_level = 1;                 // -o
  int opt_program_mode = -1;         // -p
  int opt_quiet = 0;                 // -q
  int opt_regparm_keep = 0;          // -r
  int opt_source_comments = 0;       // -s
  int opt_no_alias = 0;              // -t
  int opt_alias_strict = 1;          // cleared by -t
  int opt_alias_derefs = 0;          // set by -t
  int opt_target_mode = -1;          // -v
  int opt_size = 0;                  // -z
  int opt_all_volatile = 0;          // -#v
  int debug_level = 0;               // number of # letters
  std::array<bool, 10> debug_flag{}; // -x<digit>, only behind a #
};

extern Options options;

} // namespace velkor
