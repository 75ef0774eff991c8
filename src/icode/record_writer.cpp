#include "icode/record_writer.h"

#include "core/failure.h"
#include "core/output.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/infix.h"
#include "diag/readable_name.h"
#include "icode/output_file.h"

#include <cstring>
#include <string>

#include "core/options.h"

namespace velkor {
namespace {

constexpr std::size_t symbol_record_bytes = 31; // without texts, dimensions and pragmas
constexpr std::string_view unknown_tag = "$_Unknown_Tag_Name_$";

int auto_statics = 0; // numbers the automatic variables that became static, for the whole run

struct TagFields {
  std::string_view name;
  int level = -1;
  int index = -1;
};

TagFields tag_fields(const SYM *sym) {
  if (!has_tag(sym->stype)) return {};
  if (!sym->tag) return {unknown_tag, -1, -1};
  return {sym->tag->name, sym->tag->level, sym->tag->index};
}

void put_pragmas(const PRAGMAS *pragmas) {
  put_u8(pragmas ? static_cast<unsigned>(pragmas->count) : 0);
  if (!pragmas) return;
  const unsigned char *entry = pragmas->entries;
  const unsigned char *end = entry + pragmas->bytes;
  for (int i = 0; i < pragmas->count; ++i) {
    if (entry >= end || *entry != 0x5E) abnormal_end();
    const unsigned char *begin = entry;
    int strings = entry[2];
    for (entry += 3; strings > 0; --strings)
      entry += std::strlen(reinterpret_cast<const char *>(entry)) + 1;
    put_bytes(begin, static_cast<std::size_t>(entry - begin));
  }
}

void show_symbol(const SYM *sym, std::uint8_t record_byte, const TagFields &tag) {
  if (sym->index == 0) {
    debug_print("-- variable -- size -- offset/class");
    debug_print("/scqual/stype/squal/align (tag level, index);\n");
  }
  debug_print("%c   %-11.32s %ld\t%ld\t%d  0x%x  0x%lx\t0x%lx %ld\t(%d,%d)", record_byte, sym->name,
              static_cast<long>(sym->size), static_cast<long>(sym->offset), sym->sclass,
              sym->scqual, static_cast<unsigned long>(sym->stype),
              static_cast<unsigned long>(sym->squal), static_cast<long>(sym->align), tag.level,
              tag.index);
  if (sym->tag) debug_print(" <%s>", sym->tag->name);
  debug_print("\t; (%d,%d)\n", sym->level, sym->index);
  if (sym->ndims == 0) return;
  for (int i = 0; i < sym->ndims; ++i)
    debug_print("\t%ld", static_cast<long>(sym->dims[i]));
  debug_print("\t; %d DIMS\n", sym->ndims);
}

void show_symbol_pragmas(const PRAGMAS *pragmas) {
  const unsigned char *entry = pragmas->entries;
  for (int i = 0; i < pragmas->count; ++i) {
    const int kind = entry[1];
    const int strings = entry[2];
    const auto *texts = reinterpret_cast<const char *>(entry + 3);
    const char *behind = texts;
    for (int k = 0; k < strings; ++k)
      behind += std::strlen(behind) + 1;
    show_pragma(kind, strings, {texts, static_cast<std::size_t>(behind - texts)});
    entry = reinterpret_cast<const unsigned char *>(behind);
  }
}

void put_dimensions(const SYM *sym) {
  put_u8(sym->ndims);
  for (int i = 0; i < sym->ndims; ++i)
    put_u32(sym->dims[i]);
}

void put_symbol(SYM *sym, std::uint8_t record_byte) {
  const bool variadic = sym->sclass == C_ARG && sym->orig_sclass == C_VARARG;
  const StorageClass sclass = variadic ? C_VARARG : sym->sclass;
  if (!storage_class_table[sclass].keeps_offset) sym->offset = 0;
  const TagFields tag = tag_fields(sym);
  const std::string_view name = sym->name;
  const bool tagged = has_tag(sym->stype);
  std::size_t bytes = symbol_record_bytes + name.size() + 4u * sym->ndims;
  if (tagged) bytes += tag.name.size() + 1;
  if (sym->pragmas) bytes += static_cast<std::size_t>(sym->pragmas->bytes);
  reserve(bytes);
  put_u8(record_byte);
  put_string(name);
  put_s32(sym->size);
  put_s32(sym->offset);
  put_u8(sclass);
  put_u16(sym->scqual & CQ_FILE_BITS);
  put_u32(sym->stype);
  put_u32(sym->squal);
  put_s32(sym->align);
  put_s16(tag.level);
  put_s16(tag.index);
  if (tagged) put_string(tag.name);
  put_dimensions(sym);
  put_pragmas(sym->pragmas);
  if (!state.debug_on) return;
  show_symbol(sym, record_byte, tag);
  if (sym->pragmas) show_symbol_pragmas(sym->pragmas);
}

// The symbol under the name that an automatic variable gets when inlining made it static.
SYM *renamed_copy(const SYM *sym) {
  const bool underscore = sym->name[0] == '_';
  std::string name = underscore ? "_" : "";
  name += readable_name(sym->name, 1);
  name += "$AUTO$" + std::to_string(++auto_statics);
  SYM *copy = static_cast<SYM *>(lalloc(sizeof(SYM)));
  *copy = *sym;
  copy->name = static_cast<char *>(lalloc(name.size() + 1));
  std::memcpy(copy->name, name.c_str(), name.size() + 1);
  return copy;
}

} // namespace

void write_symbol(SYM *sym, int index, std::uint8_t record_byte) {
  if (state.skip_function) return;
  sym->index = index;
  put_symbol(sym, record_byte);
}

void write_static_local(SYM *sym, int index, std::uint8_t record_byte) {
  if (state.skip_function) return;
  sym->index = index;
  const bool was_auto = sym->sclass == C_STAT && sym->orig_sclass != C_STAT;
  put_symbol(was_auto ? renamed_copy(sym) : sym, record_byte);
}

void write_end_of_initial_value(const SYM *sym) {
  if (state.skip_function) return;
  reserve(6 + 4u * sym->ndims);
  put_u8(RECORD_END_OF_INITIAL_VALUE);
  put_s32(sym->size);
  put_dimensions(sym);
  debug_print("%d\t%ld\t%d\t\t\t\t; ENDINIT\n", RECORD_END_OF_INITIAL_VALUE,
              static_cast<long>(sym->size), sym->ndims);
}

void write_marker(std::uint8_t kind, int value) {
  if (state.skip_function) return;
  reserve(4);
  put_u8(RECORD_MARKER);
  put_u8(kind);
  put_s16(value);
  debug_print("%c\t%d\t%d\t\t\t\t\t\t;%s\n", RECORD_MARKER, kind, value, marker_names[kind]);
}

void write_source_file(std::string_view name) {
  if (state.skip_function) return;
  reserve(2 + name.size());
  put_u8(RECORD_SOURCE_FILE);
  put_string(name);
  debug_print("~\t%.*s\n", static_cast<int>(name.size()), name.data());
}

void write_text(std::uint8_t record_byte, std::string_view text, int line, int line2) {
  if (state.skip_function) return;
  const auto length = static_cast<int>(text.size());
  reserve((record_byte == RECORD_COMMENT ? 2 : 6) + text.size());
  put_u8(record_byte);
  if (record_byte == RECORD_COMMENT) {
    put_string(text);
    debug_print("\n%c%.*s\n\n", record_byte, length, text.data());
    return;
  }
  put_s16(line);
  put_s16(line2);
  put_string(text);
  debug_print("\n%c%d%5d %.*s\n\n", record_byte, line, line2, length, text.data());
}

void write_pragma(int kind, int count, std::string_view strings, bool at_file_level) {
  if (state.skip_function && !at_file_level) return;
  reserve(3 + strings.size());
  put_u8(RECORD_PRAGMA);
  put_u8(static_cast<unsigned>(kind));
  put_u8(static_cast<unsigned>(count));
  put_bytes(strings.data(), strings.size());
  if (state.debug_on) show_pragma(kind, count, strings);
}

void show_pragma(int kind, int count, std::string_view strings) {
  debug_print("%c[Pragma] %d %d", RECORD_PRAGMA, kind, count);
  for (; count > 0; --count) {
    debug_print(" %s", strings.data());
    strings.remove_prefix(std::strlen(strings.data()) + 1);
  }
  debug_print("\n");
}

void write_label(const LABEL *label) {
  if (state.skip_function) return;
  reserve(3);
  put_u8(RECORD_LABEL);
  put_s16(label->index);
  debug_print("*%d\n", label->index);
  if (!options.opt_source_comments) return;
  std::array<char, label_comment_size> comment{};
  write_text(RECORD_COMMENT, label_comment(label->index, comment), 0, 0);
}

void write_attribute(char letter) {
  if (state.skip_function || letter != 'L') return;
  reserve(2);
  put_u8(RECORD_ATTRIBUTE);
  put_u8(attribute_leaf);
  debug_print("\n%c\t'L':\t%s is a leaf function.\n", RECORD_ATTRIBUTE,
              readable_name(state.cur_fun_sym->name, 0));
}

void write_live_registers(std::uint32_t low, std::uint32_t high) {
  if (state.skip_function) return;
  reserve(9);
  put_u8(RECORD_LIVE_REGISTERS);
  put_u32(low);
  put_u32(high);
  debug_print("\n%c\tLive registers:  high = 0x%08lx,  low = 0x%08lx\n", RECORD_LIVE_REGISTERS,
              static_cast<unsigned long>(high), static_cast<unsigned long>(low));
}

} // namespace velkor
