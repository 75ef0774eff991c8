// FUN: what the run knows of each function name, defined in the file or only called.
#pragma once

#include "core/records.h"

#include <string_view>

namespace velkor {

enum FunFlags : std::uint32_t {
  FUN_calls_indirect = 0x1,
  FUN_never_returns = 0x2,
  FUN_calls_OUTSIDE = 0x4,
  FUN_cannot_inline = 0x8,
  FUN_is_suppressed = 0x10,
  FUN_no_global_asg = 0x20,
  FUN_is_pragma_EXT = 0x40,
  FUN_calls_SYSTEM = 0x80,
  FUN_is_processed = 0x100,
  FUN_is_anonymous = 0x200,
  FUN_is_interrupt = 0x400,
  FUN_follows_call = 0x800,
  FUN_value_needed = 0x1000,
  FUN_is_pure_fun = 0x2000,
  FUN_cannot_beta = 0x4000,
  FUN_is_cg_root = 0x8000,
  FUN_is_defined = 0x10000,
  FUN_is_inlined = 0x20000,
  FUN_no_ind_asg = 0x40000,
  FUN_is_XCALLed = 0x80000,
  FUN_is_called = 0x100000,
  FUN_is_extern = 0x200000,
  FUN_is_SYSTEM = 0x400000,
  FUN_has_1_BB = 0x800000,
  FUN_is_main = 0x1000000
};

struct FUN;

struct FUN_CELL {
  FUN_CELL *next;
  FUN *fun;
};

// A function-local static that lives at file level.
struct STATIC_CELL {
  STATIC_CELL *next;
  SYM *sym;
  NODE *tree; // initial value, or none
};

// Where a record stands in the input file.
struct FilePosition {
  std::uint32_t block;    // file offset of the block, bytes
  std::uint32_t position; // in the block, bytes
};

struct FUN {
  FUN *next; // in the hash bucket
  SYM *sym;  // set when the definition is reached
  char *source;
  STATIC_CELL *statics;
  SYM *inline_locals;
  LIST *inline_body;
  FUN_CELL *callees;
  std::uint32_t *reach; // set over cg_number
  NODE *arg_pattern;
  void *params;
  FUN_CELL *cursor;
  FilePosition file_pos;
  std::uint32_t flags; // FunFlags
  std::uint32_t size;  // of the body, in units
  std::int16_t cg_number;
  std::uint16_t ret_type; // 0 for a function that is only called
  std::uint16_t sites;
  std::int8_t nargs; // at all call sites; -1: unknown, or they differ
  char *name;        // without the leading underscore
};

// Forgets all functions: a run begins.
void clear_functions();

// By name without the leading underscore. fun_find_or_add makes the record and classifies it.
[[nodiscard]] FUN *fun_find(std::string_view name);
[[nodiscard]] FUN *fun_find_or_add(std::string_view name);

// The function that a call or an intrinsic stands for, made on demand; none for anything else.
[[nodiscard]] FUN *fun_of_call(const NODE *node);

// May this call, made in the current function, come back into it?
[[nodiscard]] bool call_may_reenter(const NODE *call);

// Adds fun at the head of list unless it is there; returns the list (global zone).
FUN_CELL *fun_list_add(FUN *fun, FUN_CELL *list);

// Pragma kinds on a function symbol to flags; 0 for a kind that sets none.
[[nodiscard]] std::uint32_t fun_flag_of_pragma(int kind);

} // namespace velkor
