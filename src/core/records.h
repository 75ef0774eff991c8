// The records that every pass works on.
//
// All records of the current function live in the local zone (core/zones.h) and die together with
// it. Symbols of level 0 and FUN records live in the global zone for the whole run.
#pragma once

#include "core/opcodes.h"
#include "core/storage_classes.h"
#include "core/types.h"

namespace velkor {

struct BB;
struct LABEL;
struct SYM;

// Expression or statement tree node.
struct NODE {
  union {
    std::int32_t lval; // ICON: value; LABELREF: label index; SCON: bytes of text; SKIP: bits;
                       // SWITCH: value word; ASM: record byte; PPRAGMA: packed word; CALL: flags
    SYM *sym;          // NAME, STASG, STARG, STCALL, USTCALL
    char *name;        // XCALL, UXCALL, ICALL
  } u;
  union {
    NODE *left;
    LABEL *label; // LABELDEF
  };
  NODE *right; // also the link on the free list
  union {
    LABEL *label; // LABELREF, once resolved
    char *text;   // SCON: the bytes; FCON, ASM, PPRAGMA: the text
    SYM *sym;     // NAME: the symbol whose name is shown instead
  } aux;
  std::int32_t depnum; // NAME: the symbol's size; DEREF, ARASG: bits accessed; SWITCH: 16-bit field
  std::int32_t nsize;  // candidate number of the dataflow passes, -1 for none; 0 at creation
  std::uint16_t type;  // type word
  std::uint8_t qual;   // low byte of the qualifier word
  Opcode op;
};
static_assert(sizeof(NODE) == 48);

// Statement list cell; a block's statements stand in execution order.
struct LIST {
  LIST *next;
  NODE *item;
  std::int16_t line; // the two numbers of the statement's record, passed on
  std::int16_t line2;
};

// Flow edge cell.
struct EDGE {
  EDGE *next;
  BB *bb; // the block at the other end
};

struct SYMLIST {
  SYMLIST *next;
  SYM *sym;
};

// A bit range of a base: what is known of the place of an access (scalar/subranges.h).
struct SUBRANGE {
  SUBRANGE *next;
  NODE *item;          // the assignment that makes the range available, or none
  NODE *tree;          // the access
  NODE *base;          // NAME of the object, or ICON of an absolute address
  std::int32_t width;  // bits; 0: the base is known, the extent is not
  std::int32_t offset; // from the base, bits
};

struct LABEL {
  LABEL *next; // labels of one block
  BB *bb;
  std::int32_t index; // positive: from the source file; negative: made by the optimizer
  std::int32_t refcount;
};

// Basic block. Numbers are wider than their 16 bits on paper, so that they never wrap.
struct BB {
  BB *next;                   // block order; after numbering the order of dfn
  BB *prev;                   // the first block's prev is the last block
  BB *uon_next;               // order of creation, which is source order
  LIST *trees;                // statements
  EDGE *preds;                //
  EDGE *succs;                //
  EDGE *cursor;               // position of the depth-first walk in succs
  const BB *edge_source;      // the block whose successors are being made; none at other times
  LABEL *labels;              //
  NODE *loop_ctl;             // header of a loop controlled by this variable
  NODE *loop_iters;           // header: number of iterations
  void *work[4];              // per-pass working slots
  std::uint32_t *descendants; // set of dfn numbers, or none
  std::int32_t uon;           // number in order of creation, 1 upward
  std::int32_t dfn;           // reverse postorder number, 1 upward; 0: unreachable
  std::int32_t depth;         // loop nesting
  std::uint8_t loop_info;
  std::uint8_t loop_flags; // LoopFlags
};

enum LoopFlags : std::uint8_t { loop_guarded = 1, loop_unrolled = 2 };

// Pragma entries read with a symbol, exactly as they stand in the file.
struct PRAGMAS {
  SYM *sym;
  std::int32_t bytes;
  std::int32_t count;
  unsigned char *entries;
};

// Symbol qualifiers, SYM::scqual. The low 12 bits come from the file.
enum SymbolFlags : std::uint16_t {
  CQ_INLINE = 4,
  CQ_SUPPRESSED_INLINE = 8,
  CQ_CREGISTER = 16,
  CQ_INTERRUPT = 32,
  CQ_REGISTER = 128,
  CQ_REENTRANT = 2048,
  CQ_ALIASED = 8192,
  CQ_WRITTEN = 16384,
  CQ_REFERENCED = 32768,
  CQ_FILE_BITS = 4095
};

struct SYM {
  SYM *next;
  SYM *tag;       // struct, union, enum: the symbol of the tag
  SYM *parameter; // a parameter's home: the parameter that the prologue copies to it; else none
  union {
    NODE *init; // global: constant initial value in the global zone; local: working slot
    SYM *copy;  // local: its copy while an inline body is recorded or expanded
  };
  std::uint32_t *dims;
  PRAGMAS *pragmas;    // or none
  std::int32_t size;   // bits
  std::int32_t offset; // stack offset, register or member offset (bits), by class
  std::uint32_t key;   // level << 20 | index while reading; afterwards a working word
  TypeWord stype;
  std::uint32_t squal;
  std::int32_t align; // bits
  std::int32_t index; // number in its scope; -1 for a tag placeholder
  std::int32_t count; // -1 at creation; working word of the scalar passes
  std::uint16_t scqual;
  std::int8_t level; // 0 global, 1 parameter, 2 local; -1 for a tag placeholder
  std::uint8_t fcp_flag;
  std::uint8_t ndims;
  StorageClass orig_sclass; // as read from the file
  StorageClass sclass;
  std::uint8_t btype; // basic type at the time of reading
  char *name;         // NUL-terminated, in the same piece of memory
};

// A NAME of the symbol? The node may be none.
[[nodiscard]] inline bool is_name_of(const NODE *node, const SYM *sym) {
  return node && node->op == NAME && node->u.sym == sym;
}
[[nodiscard]] inline bool is_const_node(const NODE *node) {
  return is_const_value(node->type, node->qual);
}
[[nodiscard]] inline bool is_volatile_node(const NODE *node) {
  return is_volatile_value(node->type, node->qual);
}
[[nodiscard]] inline bool is_const_symbol(const SYM *sym) {
  return is_const_value(sym->stype, sym->squal);
}
[[nodiscard]] inline bool is_volatile_symbol(const SYM *sym) {
  return is_volatile_value(sym->stype, sym->squal);
}

} // namespace velkor
