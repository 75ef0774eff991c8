// What the sweeps of the local common subexpression pass share. Nothing here is for other passes.
#pragma once

#include "core/records.h"

#include <array>
#include <vector>

namespace velkor {

// A chain of nodes, newest at the head. It forgets its oldest nodes when it grows long: a search
// takes no longer in a block of thousands of statements than in a short one.
struct NodeChain {
  LIST *head = nullptr;
  int length = 0;
};

// Operations by their opcode and the numbers of their operands: a hash table whose entries of one
// slot are linked, newest first.
struct ExpressionTable {
  struct Entry {
    NODE *node;
    std::uint32_t key;
    std::int32_t older; // position of the next older entry of the slot, or -1
  };
  std::vector<Entry> entries;       // oldest first
  std::vector<std::int32_t> newest; // by slot; a power of two of them
};

// x = e, from the end of its statement on: while x has that number, x holds the value.
struct ValueCopy {
  const NODE *target; // the NAME x
  std::int32_t number;
  std::int32_t older; // position of the next older copy of that number, or -1
};

// What a statement does to variables, known before anything in it changes.
struct StatementEffects {
  bool stores_indirectly = false; // through a pointer, or by a call
  const SYM *root_target = nullptr;
  std::vector<const SYM *> targets; // assigned inside of it, or handed out by their address
};

struct LocalCse {
  // The function.
  std::int32_t lcse_number = 0; // the newest value number
  bool lcse_cfg_changed = false;
  bool lcse_copies_undone = false;
  bool scalar_addresses_seen = false; // some local scalar is accessed by its address
  SYMLIST *lcse_kill_list = nullptr;  // what a call may change
  SYMLIST *lcse_aliased = nullptr;    // what may be reached through a pointer
  SYMLIST *lcse_statics = nullptr;    // what only a call that comes back here may change

  // The extended block.
  std::int32_t oldest_number = 0; // a symbol's number up to this one is of an earlier block
  std::array<NodeChain, 101> icon_buckets;
  ExpressionTable operations;
  ExpressionTable similar; // sums by their pointer, absolute addresses, constants of several terms
  NodeChain fcon_list;
  NodeChain scon_list;
  NodeChain addr_list;
  NodeChain load_list;
  NodeChain name_list;
  NodeChain pure_call_list;
  SUBRANGE *load_subranges = nullptr;
  std::vector<ValueCopy> copy_list;
  std::vector<std::int32_t> newest_copy; // by number - oldest_number: position in copy_list, or -1

  // The statement.
  NODE *statement = nullptr;
  std::int16_t line = 0;
  std::int16_t line2 = 0;
  std::vector<const NODE *> pending_copies; // assignments; in copy_list from its end on
  std::int32_t number_at_call = -1;         // the newest number when a call was passed; -1: none
  bool enters_nothing = false;              // behind effects that must come first
  bool has_killed = false;
  StatementEffects effects;
};
extern LocalCse local_cse;

inline std::int32_t new_number() {
  return ++local_cse.lcse_number;
}

// The number of the value that the symbol holds; 0 when it has none.
[[nodiscard]] inline std::int32_t number_of(const SYM *sym) {
  const auto key = static_cast<std::int32_t>(sym->key);
  return key > local_cse.oldest_number ? key : 0;
}
inline void set_number(SYM *sym, std::int32_t number) {
  sym->key = static_cast<std::uint32_t>(number);
}
// As number_of, with a new number if there is none.
std::int32_t ensure_number(SYM *sym);

[[nodiscard]] inline bool is_register_symbol(const SYM *sym) {
  return (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) != 0;
}

[[nodiscard]] inline NODE *skip_marks(NODE *node) {
  while (node->op == CSE_DUPE || node->op == CSE_ORIG)
    node = node->right;
  return node;
}
[[nodiscard]] inline const NODE *skip_marks(const NODE *node) {
  while (node->op == CSE_DUPE || node->op == CSE_ORIG)
    node = node->right;
  return node;
}

// The symbol that the address is derived from; none when it is the value of a pointer.
[[nodiscard]] SYM *address_base(const NODE *address);

// Will the value stand in a register: a scalar local whose address nobody takes, an assignment to
// one, a value that becomes a temporary?
[[nodiscard]] bool held_in_register(const NODE *tree);

// ------------------------------------------------------------------------------------------------
// lcse_scan.cpp, lcse_addresses.cpp: the function made ready

// Clears all numbers, makes the accesses explicit that the numbering looks for, fills the lists of
// symbols.
void scan_function();

// The address, or pointer sum, of what it points at, with base, indices and constants in the order
// that shares most: ((base + plain terms) + scaled terms) + constant. Takes the tree; returns what
// stands in its place.
[[nodiscard]] NODE *reassociate_address(NODE *tree, TypeWord pointed_to);

// ------------------------------------------------------------------------------------------------
// lcse_tables.cpp: the tables of the extended block

// Forgets all that is known.
void empty_tables();

// Can the node have no number: for its effects, or for an operand without one?
[[nodiscard]] bool is_blocked(const NODE *node);

// Do both hold the same value, as far as their numbers tell? Two missing operands do.
[[nodiscard]] bool same_number(const NODE *a, const NODE *b);

// Each gives the node a number, and marks it when its value is known already.
void number_icon(NODE *node);
void number_fcon(NODE *node);
void number_scon(NODE *node);
void number_address(NODE *node);
void number_pure_call(NODE *node);
void number_argref(NODE *node);
void number_memory_name(NODE *node);
void number_by_load(NODE *node);

// The place that was stored to holds the value, and can be loaded from the node on.
void enter_stored_place(NODE *node);
// The same for a variable in memory.
void enter_stored_name(NODE *node);

// Would the place be found in the tables? For trees that have no numbers yet.
[[nodiscard]] bool is_available(const NODE *place);

// Fills local_cse.effects for a statement, before anything in it is rewritten.
void note_statement_effects(const NODE *statement);

// node computes what first does. Nothing when it has effects; otherwise it becomes the name of a
// variable that holds the value, or a CSE_DUPE.
void make_CSE_DUPE(NODE *node, NODE *first);

// The name of another variable that holds the value of the symbol of node, of node's type, and that
// the statement does not change; or none.
[[nodiscard]] const NODE *other_holder(const NODE *node);

// The pending copies are known from now on: the statement ends.
void publish_copies();

// ------------------------------------------------------------------------------------------------
// lcse_expressions.cpp: the table of operations

void number_expression(NODE *node);
void empty_operations();

// (a + K), K out of reach of an access of the type  ->  ((a + K2) + (K - K2)), where (a + K2) is
// known and K - K2 is in reach. The address has just been numbered.
void use_nearby_address(NODE *address, TypeWord access_type);

// ------------------------------------------------------------------------------------------------
// lcse_kills.cpp: what is not known any more

void kill_store(const NODE *target);
void kill_by_call(const NODE *call, std::uint32_t fun_flags);
void kill_by_copy(const NODE *block_copy); // MEMCPY
void kill_everything();                    // machine code of the program's own

// ------------------------------------------------------------------------------------------------
// lcse_numbering.cpp, lcse_rewriting.cpp: the sweeps

void number_blocks();
void lcse_rewrite_blocks();

} // namespace velkor
