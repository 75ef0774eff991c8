#include "icode/tree_writer.h"

#include "core/failure.h"
#include "core/fun.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "diag/constant_text.h"
#include "diag/dump.h"
#include "diag/type_text.h"
#include "icode/output_file.h"

#include <cstring>

namespace velkor {
namespace {

constexpr std::size_t node_header_bytes = 3; // opcode and type word

std::int32_t label_index(const NODE *node) {
  return node->aux.label ? node->aux.label->index : node->u.lval;
}

unsigned file_qualifier(TypeWord type, std::uint32_t qual) {
  return is_derived(type) ? qual >> 4 & 3 : qual & 3;
}

struct SymbolPlace {
  int level = -1;
  int index = -1;
};
SymbolPlace place_of(const SYM *sym) {
  return sym ? SymbolPlace{sym->level, sym->index} : SymbolPlace{};
}

unsigned char *store_symbol_place(unsigned char *at, const SYM *sym) {
  const SymbolPlace place = place_of(sym);
  at = store_u16(at, static_cast<unsigned>(place.level));
  return store_u16(at, static_cast<unsigned>(place.index));
}

unsigned char *store_value(unsigned char *at, std::int32_t value) {
  return store_u32(at, static_cast<std::uint32_t>(value));
}

// Makes room for the node's record and writes what every record begins with.
unsigned char *begin_node(const NODE *node, std::size_t field_bytes) {
  unsigned char *at = begin_record(node_header_bytes + field_bytes);
  at = store_u8(at, node->op);
  return store_u16(at, node->type);
}

unsigned char *store_text_record(const NODE *node) {
  const char *text = node->op == FCON ? node->aux.text : node->u.name;
  const std::size_t bytes = std::strlen(text) + 1;
  return store_bytes(begin_node(node, bytes), text, bytes);
}

unsigned char *store_bytes_record(const NODE *node) {
  const auto length = static_cast<std::size_t>(node->u.lval);
  unsigned char *at = store_u16(begin_node(node, 2 + length), static_cast<unsigned>(length));
  return store_bytes(at, node->aux.text, length);
}

unsigned node_qualifier(const NODE *node) {
  return node->op == CALL ? node->qual : file_qualifier(node->type, node->qual);
}

// Writes the node's record; returns where it ends.
unsigned char *store_record(const NODE *node) {
  unsigned char *at = nullptr;
  switch (opcode_table[node->op].fields) {
  case RecordFields::NO_TYPE: return output.cursor;
  case RecordFields::NONE: return begin_node(node, 0);
  case RecordFields::VALUE:
    at = begin_node(node, 4);
    return store_value(at, node->op == LABELREF ? label_index(node) : node->u.lval);
  case RecordFields::QUAL_SYMBOL:
    at = begin_node(node, 5);
    at = store_u8(at, file_qualifier(node->u.sym->stype, node->u.sym->squal));
    return store_symbol_place(at, node->u.sym);
  case RecordFields::BYTES: return store_bytes_record(node);
  case RecordFields::TEXT: return store_text_record(node);
  case RecordFields::QUAL_SIZE:
    at = begin_node(node, 5);
    at = store_u8(at, file_qualifier(node->type, node->qual));
    return store_value(at, node->depnum);
  case RecordFields::SWITCH_SUMMARY:
    at = begin_node(node, 6);
    at = store_u16(at, static_cast<unsigned>(node->depnum));
    return store_value(at, node->u.lval);
  case RecordFields::QUAL: at = begin_node(node, 1); return store_u8(at, node_qualifier(node));
  case RecordFields::SYMBOL: return store_symbol_place(begin_node(node, 4), node->u.sym);
  case RecordFields::SYMBOL_QUAL:
    at = begin_node(node, 5);
    at = store_symbol_place(at, node->u.sym);
    return store_u8(at, node->qual);
  case RecordFields::SIZE: return store_value(begin_node(node, 4), node->depnum);
  }
  return output.cursor;
}

// Prints the fields of a node's debug image; returns the tab column that the text ends in.
int show_fields(const NODE *node) {
  int column = 2;
  const auto show_place = [&](const SYM *sym) {
    const SymbolPlace place = place_of(sym);
    debug_print("%d\t%d\t", place.level, place.index);
    column += 2;
  };
  const auto show_qualifier = [&](unsigned qual) {
    if (qual == 0) return;
    debug_print("qual:%d\t", static_cast<int>(qual));
    column += 1;
  };
  const auto show_value = [&](std::int32_t value) {
    debug_print("%ld\t", static_cast<long>(value));
    column += 1;
  };
  switch (opcode_table[node->op].fields) {
  case RecordFields::NONE:
  case RecordFields::NO_TYPE: break;
  case RecordFields::VALUE:
    show_value(node->op == LABELREF ? label_index(node) : node->u.lval);
    break;
  case RecordFields::QUAL_SYMBOL:
    show_qualifier(file_qualifier(node->u.sym->stype, node->u.sym->squal));
    show_place(node->u.sym);
    break;
  case RecordFields::BYTES:
    debug_print("%.*s\t", node->u.lval, node->aux.text);
    column += 1;
    break;
  case RecordFields::TEXT:
    if (node->op == FCON) {
      debug_print("%s\t\t\t", node->aux.text);
      column += 3;
    } else {
      debug_print("%.31s\t", node->u.name);
      column += 1;
    }
    break;
  case RecordFields::QUAL_SIZE:
    show_qualifier(file_qualifier(node->type, node->qual));
    show_value(node->depnum);
    break;
  case RecordFields::SWITCH_SUMMARY:
    show_value(node->depnum);
    show_value(node->u.lval);
    break;
  case RecordFields::QUAL: show_qualifier(node_qualifier(node)); break;
  case RecordFields::SYMBOL: show_place(node->u.sym); break;
  case RecordFields::SYMBOL_QUAL:
    show_place(node->u.sym);
    show_qualifier(node->qual);
    break;
  case RecordFields::SIZE: show_value(node->depnum); break;
  }
  return column;
}

void show_node(const NODE *node) {
  constexpr int name_column = 6;
  debug_print("%d\t0x%x\t", node->op, node->type);
  for (int column = show_fields(node); column < name_column; ++column)
    debug_print("\t");
  debug_print("; %s", op_name(node->op));
  if (node->op == NAME) {
    if (node->aux.sym) debug_print(" %s ==>", node->aux.sym->name);
    debug_print(" %s", declaration_text(node->u.sym, nullptr));
  }
  if (node->op == ICON) debug_print(" %s\t", constant_text(node->u.lval, node->type));
  if (node->type != 0) debug_print(" %s", type_text(node->type));
  debug_print("\n");
}

// A call that is written needs the body of the function it calls.
void note_call(const NODE *node) {
  FUN *fun = fun_of_call(node);
  if (!fun || !(fun->flags & FUN_is_suppressed)) return;
  fun->flags &= ~static_cast<std::uint32_t>(FUN_is_suppressed);
  info_print("\nInlineable function %s() was marked for suppression,", fun->name);
  info_print("\nbut it cannot be because of a problematic call in %s().\n\n",
             state.cur_fun ? state.cur_fun->name : "");
}

// The reader takes exactly as many operands as the table tells; anything else would shift the rest
// of the file.
bool has_file_operands(const NODE *node) {
  return (node->left != nullptr) == (op_arity(node->op) > 0) &&
         (node->right != nullptr) == (op_arity(node->op) > 1);
}

} // namespace

void wrtree(NODE *tree) {
  for (; tree; tree = tree->right) {
    if (tree->op == ILLOP || tree->op == CSE_DUPE || tree->op == CSE_ORIG ||
        !has_file_operands(tree)) {
      report("\n\n   !!! Error in 'wrtree', opcode=%d %s !!!\n", tree->op, op_name(tree->op));
      internal_failure();
    }
    if (is_call(tree->op)) note_call(tree);
    output.cursor = store_record(tree);
    if (state.debug_on) show_node(tree);
    if (tree->left) wrtree(tree->left);
  }
}

} // namespace velkor
