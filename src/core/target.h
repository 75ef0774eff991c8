// The target layer: what the machine can do, and the hooks by which a target joins the passes.
//
// The VELKOR target defines no register classes and leaves the hooks as they stand here. A target
// that has some replaces them in `target` (tests do).
#pragma once

#include "core/records.h"
#include "core/sets.h"

namespace velkor {

// ------------------------------------------------------------------------------------------------
// Limits of the machine

// Can the constant be an operand of an instruction as it stands? False for anything but an ICON.
// Depends on the instruction forms (opt_target_mode).
[[nodiscard]] bool is_immediate_operand(const NODE *node);

// The offsets, in bytes, that a load or store can carry at all.
struct OffsetRange {
  std::int32_t lowest;
  std::int32_t highest;
};
[[nodiscard]] OffsetRange offset_range();

// Can a load or store of the type carry the offset (bytes)? signed_form: the access extends the
// sign by itself.
[[nodiscard]] bool offset_fits(std::int32_t offset, TypeWord type, bool signed_form);

// Can an access of that many bits scale its index by the factor?
[[nodiscard]] bool scale_ok(std::int32_t factor, std::int32_t width);

// Cost of reading a value of a basic type from memory, and the further cost of extending its sign.
// A load cost of 0: such a value cannot be read as a part of a wider one.
struct AccessCost {
  std::int32_t load;
  std::int32_t extend;
};
[[nodiscard]] AccessCost access_cost(TypeWord type);

// ------------------------------------------------------------------------------------------------
// Register classes

// One class of registers. The chain is served from its head.
struct REGCLASS {
  REGCLASS *next;
  // Can the symbol live in this class? Fills how many registers it would prefer and which, and how
  // many it can live in at all and which; one bit each.
  bool (*classify)(SYM *sym, REGCLASS *regclass, std::int32_t *pref_count, std::uint32_t *pref_mask,
                   std::int32_t *accept_count, std::uint32_t *accept_mask);
  // Gives the symbol a register; false when none is free.
  bool (*pack)(SYM *sym, REGCLASS *regclass);
};

// ------------------------------------------------------------------------------------------------
// Hooks

// Sets vreg_count to 0 and yields the head of the chain of classes: none.
REGCLASS *target_register_classes();
// Numbers the virtual registers: each symbol of the chain that is still an automatic local whose
// address nobody takes becomes C_VREG, its offset the next vreg_count.
void target_finish_symbols(SYM *list);

// live sets are over candidate numbers of the live-variable analysis.
struct Target {
  REGCLASS *(*register_classes)() = target_register_classes;
  bool (*clobbers_node)(const NODE *node) = [](const NODE *) { return false; };
  void (*note_call)(const NODE *node) = [](const NODE *) {};
  void (*note_call_live)(ConstSet live, const NODE *node) = [](ConstSet, const NODE *) {};
  void (*note_statement)(const NODE *node) = [](const NODE *) {};
  void (*note_param_copy)(SYM *sym, ConstSet live) = [](SYM *, ConstSet) {};
  void (*note_preference)(SYM *sym, SYM *other) = [](SYM *, SYM *) {};
  void (*finish_symbols)(SYM *list) = target_finish_symbols;
  void (*finish_function)() = [] {};
  int vreg_count = 0; // the next virtual register's number
};
extern Target target;

} // namespace velkor
