#include "icode/reader.h"

#include "core/failure.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "diag/readable_name.h"
#include "driver/driver.h"
#include "icode/input.h"
#include "icode/record_writer.h"
#include "icode/source_file.h"
#include "icode/symbol_reader.h"
#include "icode/tree_reader.h"
#include "simplify/simplify.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace velkor {
namespace {

// Kinds of packets besides the scope markers' own numbers.
enum PacketKind : int {
  PACKET_BAD = 0,
  PACKET_TEXT = RECORD_ASSEMBLY,
  PACKET_LABEL = RECORD_LABEL,
  PACKET_STATEMENT = RECORD_STATEMENT,
  PACKET_COMMENT = RECORD_COMMENT,
  PACKET_END_OF_FILE = RECORD_END_OF_FILE
};

// A record that the function loop must see.
struct Packet {
  int kind = PACKET_BAD;
  int value = 0;
  NODE *tree = nullptr;
  std::array<char, max_text_bytes + 1> text{};
  FilePosition place{}; // of a scope marker
};

// Scope indices of the scopes that are open around the current one, by lexical level.
std::array<int, max_scope_depth> outer_scope_index{};

// No statement of the function so far but copies of its parameters to their homes.
bool in_prologue = false;

void skip_fields(std::size_t bytes) {
  need(bytes);
  input.cursor += bytes;
}

void keep_text(Packet &packet, std::string_view text) {
  const std::size_t length = std::min(text.size(), max_text_bytes);
  std::copy_n(text.begin(), length, packet.text.begin());
  packet.text[length] = '\0';
}

// The strings of a pragma record, each with its NUL.
std::string_view take_strings(int count) {
  const auto *begin = reinterpret_cast<const char *>(input.cursor);
  for (; count > 0; --count)
    (void)take_string();
  return {begin, static_cast<std::size_t>(reinterpret_cast<const char *>(input.cursor) - begin)};
}

// A pragma at file level passes; inside a function it becomes a statement. True for the latter.
bool read_pragma(Packet &packet) {
  need(2);
  const int kind = take_u8();
  const int count = take_u8();
  const std::string_view strings = take_strings(count);
  if (state.lexical_level == 0) {
    write_pragma(kind, count, strings, true);
    return false;
  }
  NODE *node = make_node(PPRAGMA, nullptr, nullptr, VOID);
  node->u.lval = static_cast<std::int32_t>(strings.size() << 16 | static_cast<unsigned>(kind) << 8 |
                                           static_cast<unsigned>(count));
  node->aux.text = copy_text(1, strings);
  packet.kind = PACKET_STATEMENT;
  packet.value = 0;
  packet.tree = node;
  state.cur_line2 = 0;
  return true;
}

// home = parameter, under one name in the body's outermost scope: by that the front end tells the
// home of a parameter. The statement is not yet simplified.
bool note_home(const NODE *copy) {
  if (copy->op != ASSIGN || copy->left->op != NAME) return false;
  const NODE *source = copy->right;
  while (source->op == SCONV || source->op == PCONV || source->op == ISP2CHAR)
    source = source->left;
  if (source->op != NAME) return false;
  SYM *home = copy->left->u.sym;
  SYM *parameter = source->u.sym;
  if (home->level != 2 || parameter->level != 1 || std::strcmp(home->name, parameter->name) != 0)
    return false;
  home->parameter = parameter;
  return true;
}

// The homes are told by the statements at the head of the body, with nothing between them but
// pragmas and comments.
void note_homes(const NODE *statement) {
  if (!in_prologue || statement->op == PPRAGMA) return;
  if (state.lexical_level == 2) {
    const bool is_list = statement->op == PCOMMA;
    for (; statement->op == PCOMMA; statement = statement->left)
      note_home(statement->right);
    in_prologue = note_home(statement) || is_list;
  } else {
    in_prologue = false;
  }
}

void read_statement(Packet &packet) {
  need(4);
  packet.kind = PACKET_STATEMENT;
  packet.value = take_s16();
  const int line2 = take_s16();
  NODE *tree = read_tree();
  if (tree->op == ENDINIT) bad_input("an end of initial value where a statement is expected");
  note_homes(tree);
  packet.tree = simplify_tree(tree);
  state.cur_line2 = line2;
}

void read_marker(Packet &packet) {
  packet.place = input_position();
  packet.place.position -= 1;
  need(3);
  packet.kind = take_u8();
  packet.value = take_s16();
}

// Decodes records, and handles those that need no help, until one comes that the caller must see.
void read_packet(Packet &packet) {
  for (;;) {
    need(1);
    const std::uint8_t record_byte = take_u8();
    if (record_byte == RECORD_FILLER) {
      read_block();
      continue;
    }
    if (record_byte == RECORD_END_OF_FILE) {
      packet.kind = PACKET_END_OF_FILE;
      return;
    }
    input.record_count += 1;
    switch (record_byte) {
    case RECORD_LIVE_REGISTERS: skip_fields(8); break;
    case RECORD_FRONT_END_AMPERSAND: skip_fields(17); break;
    case RECORD_FRONT_END_COLON: skip_fields(6); break;
    case RECORD_FRONT_END_SEMICOLON:
      skip_fields(3);
      need(1);
      skip_fields(2u * take_u8());
      break;
    case RECORD_ATTRIBUTE: skip_fields(1); break;
    case RECORD_FRONT_END_BAR: skip_fields(7); break;
    case RECORD_SYMBOL: read_symbol(false); break;
    case RECORD_INITIALIZED_SYMBOL: read_symbol(true); break;
    case RECORD_SOURCE_FILE: read_source_file(true); break;
    case RECORD_MARKER: read_marker(packet); return;
    case RECORD_LABEL:
    case RECORD_LABEL_PLUS:
      need(2);
      packet.kind = PACKET_LABEL;
      packet.value = take_s16();
      return;
    case RECORD_ASSEMBLY:
      need(4);
      packet.kind = PACKET_TEXT;
      packet.value = take_s16();
      state.cur_line2 = take_s16();
      keep_text(packet, take_string());
      return;
    case RECORD_COMMENT:
      packet.kind = PACKET_COMMENT;
      keep_text(packet, take_string());
      return;
    case RECORD_STATEMENT: read_statement(packet); return;
    case RECORD_PRAGMA:
      if (read_pragma(packet)) return;
      break;
    default:
      packet.kind = PACKET_BAD;
      packet.value = record_byte;
      return;
    }
  }
}

void add_statement(NODE *tree, int line, int line2) {
  state.statements = list_cons(tree, state.statements, static_cast<std::int16_t>(line),
                               static_cast<std::int16_t>(line2));
}

[[noreturn]] void bad_record(const Packet &packet) {
  report("\n\n>>>COMPILER ERROR--BAD IFILE RECORD: #<%d> = 0x%x\n",
         static_cast<int>(input.record_count), static_cast<unsigned>(packet.value));
  if (state.global_syms) report(">>>Last global symbol seen = '%s'\n", state.global_syms->name);
  abnormal_end();
}

void open_scope() {
  if (state.lexical_level + 1 >= max_scope_depth)
    bad_input("scopes nested deeper than %d", max_scope_depth);
  outer_scope_index[static_cast<std::size_t>(state.lexical_level)] = scope_index;
  scope_index = 0;
  state.lexical_level += 1;
}

void classify_inline(const SYM *sym) {
  if ((sym->scqual & CQ_INLINE) && ((sym->scqual & CQ_SUPPRESSED_INLINE) || options.opt_level > 0))
    state.function_is_inline = true;
  // What is known not to be integrable is needed as a function.
  if ((sym->scqual & CQ_SUPPRESSED_INLINE) && !(state.cur_fun->flags & FUN_cannot_inline)) {
    state.skip_function = true;
    state.cur_fun->flags |= FUN_is_suppressed;
  }
}

void find_function() {
  if (!state.cur_fun_sym) state.cur_fun_sym = state.global_syms;
  SYM *sym = state.cur_fun_sym;
  if (!sym || !is_function(sym->stype) || !sym->name[0])
    bad_input("a function begins without its symbol");
  state.cur_fun = fun_find_or_add(sym->name + 1);
  state.cur_fun->sym = sym;
  state.cur_fun->ret_type = static_cast<std::uint16_t>(underived(sym->stype));
  if (sym->scqual & CQ_INTERRUPT) state.cur_fun->flags |= FUN_is_interrupt;
  if (sym->sclass == C_EXTDEF) sym->sclass = C_EXT;
  if (sym->sclass == C_USTATIC) sym->sclass = C_STAT;
}

void show_progress() {
  if (options.opt_quiet || state.skip_function) return;
  if (state.pass_number == 1 && !state.debug_on) return;
  print("   %s   ==> %s\n", state.cur_source_file.c_str(),
        readable_name(state.cur_fun_sym->name, 0));
}

void begin_function(const Packet &packet) {
  if (state.lexical_level != 0) bad_input("a function begins inside a function");
  clear_local_symbols();
  state.lexical_level = 1;
  scope_index = 0;
  state.local_address_taken = false;
  state.has_bit_fields = false;
  state.assertions_present = false;
  state.label_counter = 0;
  in_prologue = true;
  state.inline_statics = nullptr;
  state.inline_limit_reached = nullptr;
  state.inlined_nodes = 0;
  state.function_is_leaf = true;
  state.begin_value = static_cast<std::int16_t>(packet.value);
  find_function();
  classify_inline(state.cur_fun_sym);
  show_progress();
  state.cur_fun->file_pos = packet.place;
  if (state.pass_number == 1) {
    state.skip_function = true;
    if (!state.cur_fun->source) state.cur_fun->source = copy_text(0, state.cur_source_file);
  } else {
    write_marker(MARKER_BF, packet.value);
  }
  if (!state.debug_on) return;
  if (!state.skip_function) debug_print("\f");
  debug_print("<> FUNCTION \"%s\" **********\n", state.cur_fun->name);
}

void end_parameters(const Packet &packet) {
  if (state.lexical_level != 1) bad_input("an end of parameters outside a parameter list");
  state.parameters_value = state.locals_value = static_cast<std::int16_t>(packet.value);
  state.written_locals = 0;
  write_marker(MARKER_EA, packet.value);
  open_scope();
}

void close_scope() {
  if (state.lexical_level <= 2) bad_input("a scope ends that was not opened");
  state.lexical_level -= 1;
  scope_index = outer_scope_index[static_cast<std::size_t>(state.lexical_level)];
}

void end_function_records(const Packet &packet) {
  if (state.lexical_level != 2) bad_input("a function ends inside a scope, or without a body");
  state.end_value = static_cast<std::int16_t>(packet.value);
  state.lexical_level = 0;
  scope_index = state.global_syms ? state.global_syms->index + 1 : 0;
}

void require_body(const char *what) {
  if (state.lexical_level < 2) bad_input("%s outside a function's body", what);
}

void add_label(int index) {
  require_body("a label");
  if (index < 1) bad_input("a label with number %d", index);
  in_prologue = false;
  add_statement(make_labeldef(label_new(index, nullptr, nullptr)), 0, state.cur_line2);
}

// Assembly text, or a comment of the front end; the program's own comments of an earlier run begin
// with a semicolon and are dropped.
void add_text(const Packet &packet) {
  const bool comment = packet.kind == PACKET_COMMENT;
  if (comment && packet.text[0] == ';') return;
  const int line = comment ? 0 : packet.value;
  const auto record_byte = static_cast<std::uint8_t>(packet.kind);
  if (state.lexical_level == 0) {
    write_text(record_byte, packet.text.data(), line, state.cur_line2);
    return;
  }
  add_statement(make_asm(record_byte, packet.text.data()), line, state.cur_line2);
}

} // namespace

void read_first_block() {
  scope_index = 0;
  read_block();
}

bool check_stamp() {
  // A file shorter than the stamp compares as if NULs stood behind its end.
  std::array<unsigned char, file_stamp.size()> found{};
  const auto room = static_cast<std::size_t>(input.end - input.cursor);
  std::copy_n(input.cursor, std::min(room, found.size()), found.begin());
  if (found == file_stamp && room >= found.size()) {
    input.cursor += found.size();
    return true;
  }
  const auto show = [](const std::array<unsigned char, file_stamp.size()> &stamp) {
    for (const unsigned char byte : stamp) {
      if (byte == 0) break;
      print("  0x%x", byte);
    }
    print("\n");
  };
  print(">> Invalid icode file, Aborting\n");
  show(found);
  show(file_stamp);
  return false;
}

bool read_function() {
  state.statements = nullptr;
  state.function_is_inline = false;
  Packet packet;
  for (;;) {
    read_packet(packet);
    switch (packet.kind) {
    case PACKET_END_OF_FILE:
      if (state.lexical_level != 0) bad_input("the file ends inside a function");
      state.cur_fun_sym = nullptr;
      return false;
    case PACKET_BAD: bad_record(packet);
    case MARKER_BF: begin_function(packet); break;
    case MARKER_BB:
      require_body("a scope");
      open_scope();
      break;
    case MARKER_EB: close_scope(); break;
    case MARKER_EA: end_parameters(packet); break;
    case MARKER_EL: state.locals_value = static_cast<std::int16_t>(packet.value); break;
    case MARKER_EF: end_function_records(packet); return true;
    case PACKET_STATEMENT:
      require_body("a statement");
      add_statement(packet.tree, packet.value, state.cur_line2);
      break;
    case PACKET_LABEL: add_label(packet.value); break;
    case PACKET_TEXT:
    case PACKET_COMMENT: add_text(packet); break;
    default: report(">>>PACKET ERROR : %d\n", packet.kind);
    }
  }
}

void read_skipped_function() {
  state.skip_function = false;
  seek_function(state.cur_fun->file_pos);
  (void)read_function();
}

void seek_function(FilePosition place) {
  seek_input(place);
}

// At file level a new name goes to the output; elsewhere the record only stands in the way.
void read_source_file(bool between_records) {
  const std::string_view name = take_string().substr(0, max_text_bytes);
  if (state.lexical_level != 0 || name == state.cur_source_file) return;
  if (between_records) write_command_line_comment();
  state.cur_source_file = name;
  write_source_file(name);
}

} // namespace velkor
