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

void put_symbol_place(const SYM *sym) {
  const SymbolPlace place = place_of(sym);
  put_s16(place.level);
  put_s16(place.index);
}

// Reserves the node's record with so many bytes of fields and writes what every record begins with.
void begin_record(const NODE *node, std::size_t field_bytes) {
  reserve(node_header_bytes + field_bytes);
  put_u8(node->op);
  put_u16(node->type);
}

void put_text_record(const NODE *node) {
  const char *text = node->op == FCON ? node->aux.text : node->u.name;
  const std::size_t length = std::strlen(text);
  begin_record(node, length + 1);
  put_string({text, length});
}

void put_value_record(const NODE *node) {
  begin_record(node, 4);
  put_s32(node->op == LABELREF ? label_index(node) : node->u.lval);
}

void put_record(const NODE *node) {
  switch (opcode_table[node->op].fields) {
  case RecordFields::NO_TYPE: return;
  case RecordFields::NONE: begin_record(node, 0); return;
  case RecordFields::VALUE: put_value_record(node); return;
  case RecordFields::QUAL_SYMBOL:
    begin_record(node, 5);
    put_u8(file_qualifier(node->u.sym->stype, node->u.sym->squal));
    put_symbol_place(node->u.sym);
    return;
  case RecordFields::BYTES: {
    const auto length = static_cast<std::size_t>(node->u.lval);
    begin_record(node, 2 + length);
    put_s16(node->u.lval);
    put_bytes(node->aux.text, length);
    return;
  }
  case RecordFields::TEXT: put_text_record(node); return;
  case RecordFields::QUAL_SIZE:
    begin_record(node, 5);
    put_u8(file_qualifier(node->type, node->qual));
    put_s32(node->depnum);
    return;
  case RecordFields::SWITCH_SUMMARY:
    begin_record(node, 6);
    put_s16(node->depnum);
    put_s32(node->u.lval);
    return;
  case RecordFields::QUAL:
    begin_record(node, 1);
    put_u8(node->op == CALL ? node->qual : file_qualifier(node->type, node->qual));
    return;
  case RecordFields::SYMBOL:
    begin_record(node, 4);
    put_symbol_place(node->u.sym);
    return;
  case RecordFields::SYMBOL_QUAL:
    begin_record(node, 5);
    put_symbol_place(node->u.sym);
    put_u8(node->qual);
    return;
  case RecordFields::SIZE:
    begin_record(node, 4);
    put_s32(node->depnum);
    return;
  }
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
  case RecordFields::QUAL:
    show_qualifier(node->op == CALL ? node->qual : file_qualifier(node->type, node->qual));
    break;
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

bool is_call(Opcode op) {
  return op == CALL || op == UCALL || op == STCALL || op == USTCALL || op == XCALL || op == UXCALL;
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
    put_record(tree);
    if (state.debug_on) show_node(tree);
    if (tree->left) wrtree(tree->left);
  }
}

} // namespace velkor
