// Whole files to text.
#include <algorithm>
#include <string>

#include "icode/format.h"
#include "text/defaults.h"
#include "text/text.h"
#include "text/trees.h"
#include "text/vocabulary.h"
#include "text/words.h"

namespace velkor::text {
namespace {

void print_dimensions(std::string &out, const std::vector<std::uint32_t> &dims) {
  out += " dims=";
  if (dims.empty()) out += "none";
  for (std::size_t i = 0; i < dims.size(); ++i) {
    if (i > 0) out += ',';
    out += std::to_string(dims[i]);
  }
}

void print_number(std::string &out, std::string_view key, std::int32_t value,
                  std::int32_t expected) {
  if (value == expected) return;
  out += ' ';
  out += key;
  out += '=' + std::to_string(value);
}

void print_tag(std::string &out, const file::Symbol &symbol, const Scopes &scopes) {
  const TagReference tag = {{symbol.tag_level, symbol.tag_index}, symbol.tag_name};
  if (tag == default_tag(symbol, scopes.next())) return;
  out += " tag=";
  // Without a tag type there is no name on file, only the place.
  if (has_tag(symbol.stype)) print_name(out, tag.name);
  const VisibleSymbol *target = scopes.at(tag.place);
  if (!has_tag(symbol.stype) || target == nullptr || target->name != tag.name ||
      scopes.find(tag.name, NameSpace::TAG) != tag.place) {
    print_place(out, tag.place);
  }
}

void print_symbol_qualifiers(std::string &out, const file::Symbol &symbol) {
  std::uint32_t rest = symbol.squal;
  const std::uint32_t outer_const = outer_qualifier(symbol.stype, 1);
  const std::uint32_t outer_volatile = outer_qualifier(symbol.stype, 2);
  if ((rest & outer_const) != 0) out += " const";
  if ((rest & outer_volatile) != 0) out += " volatile";
  rest &= ~(outer_const | outer_volatile);
  if (rest == 0) return;
  out += " squal=";
  print_hex(out, rest);
}

void print_symbol_flags(std::string &out, std::uint16_t scqual) {
  for (const SymbolFlag &flag : symbol_flags) {
    if ((scqual & flag.bit) == 0) continue;
    out += ' ';
    out += flag.word;
    scqual = static_cast<std::uint16_t>(scqual & ~flag.bit);
  }
  if (scqual == 0) return;
  out += " scqual=";
  print_hex(out, scqual);
}

void print_pragma_entry(std::string &out, const file::Pragma &entry) {
  out += " pragma=" + std::to_string(entry.kind);
  for (const std::string &string : entry.strings) {
    out += ',';
    print_string(out, string, '"');
  }
}

// Prints records one after the other, with the scopes as they stand there.
class FilePrinter {
public:
  explicit FilePrinter(const file::IcodeFile &file) : file_(file) {}

  std::string run() {
    for (const file::Record &record : file_.records) {
      std::visit([this](const auto &each) { print(each); }, record);
    }
    return std::move(out_);
  }

private:
  void indent(int levels) { out_.append(static_cast<std::size_t>(2 * std::max(levels, 0)), ' '); }
  // Lines of a function are indented by its blocks; parameters and body stand alike.
  [[nodiscard]] int depth() const { return std::min(scopes_.level(), max_scope_depth) - 1; }
  void begin_line() { indent(scopes_.level() == 0 ? 0 : std::max(depth(), 1)); }
  void end_line() { out_ += '\n'; }

  void print(const file::Symbol &symbol) {
    begin_line();
    out_ += symbol_to_text(symbol, scopes_);
    scopes_.add(symbol);
    end_line();
    if (!symbol.has_value) return;
    for (const file::NodeIndex root : symbol.value) {
      begin_line();
      indent(1);
      print_tree(out_, file_, root, scopes_);
      end_line();
    }
    begin_line();
    out_ += "end_value";
    print_number(out_, "size", symbol.final_size, symbol.size);
    if (symbol.final_dims != symbol.dims) print_dimensions(out_, symbol.final_dims);
    end_line();
  }

  void print(const file::Marker &marker) {
    const bool closes = marker.kind == MARKER_EF || marker.kind == MARKER_EB;
    if (closes) scopes_.follow(marker.kind);
    begin_line();
    if (marker.kind >= MARKER_BF && marker.kind < marker_words.size()) {
      out_ += marker_words[marker.kind];
    } else {
      out_ += "marker " + std::to_string(marker.kind);
    }
    if (marker.value != 0) out_ += ' ' + std::to_string(marker.value);
    end_line();
    if (marker.kind == MARKER_EF) out_ += '\n';
    if (!closes) scopes_.follow(marker.kind);
  }

  void print_lines(std::int16_t line, std::int16_t line2) {
    out_ += std::to_string(line);
    if (line2 != line) out_ += '/' + std::to_string(line2);
  }

  void print(const file::Statement &statement) {
    begin_line();
    print_lines(statement.line, statement.line2);
    out_ += ": ";
    print_tree(out_, file_, statement.tree, scopes_);
    end_line();
  }

  void print(const file::Label &label) {
    out_ += 'L' + std::to_string(label.index) + (label.plus ? "+:" : ":");
    end_line();
  }

  void print(const file::Assembly &assembly) {
    begin_line();
    out_ += "assembly ";
    print_lines(assembly.line, assembly.line2);
    out_ += ' ';
    print_string(out_, assembly.text, '"');
    end_line();
  }

  void print(const file::Comment &comment) { print_with_string("comment", comment.text); }
  void print(const file::SourceFile &source) { print_with_string("source", source.name); }
  void print_with_string(std::string_view word, std::string_view string) {
    begin_line();
    out_ += word;
    out_ += ' ';
    print_string(out_, string, '"');
    end_line();
  }

  void print(const file::LiveRegisters &registers) {
    begin_line();
    out_ += "live_registers ";
    print_hex(out_, registers.low);
    out_ += ' ';
    print_hex(out_, registers.high);
    end_line();
  }

  void print(const file::Attribute &attribute) {
    begin_line();
    out_ += "attribute ";
    if (attribute.letter == attribute_leaf) {
      out_ += "leaf";
    } else {
      print_hex(out_, attribute.letter);
    }
    end_line();
  }

  void print(const file::Pragma &entry) {
    begin_line();
    out_ += "pragma " + std::to_string(entry.kind);
    for (const std::string &string : entry.strings) {
      out_ += ' ';
      print_string(out_, string, '"');
    }
    end_line();
  }

  void print(const file::FrontEndRecord &record) {
    begin_line();
    out_ += "front_end ";
    print_hex(out_, record.record_byte);
    out_ += ' ';
    print_string(out_, record.bytes, '"');
    end_line();
  }

  const file::IcodeFile &file_;
  std::string out_;
  Scopes scopes_;
};

} // namespace

std::string symbol_to_text(const file::Symbol &symbol, const Scopes &scopes) {
  std::string out = "symbol ";
  print_name(out, symbol.name);
  out += ' ';
  print_storage_class(out, symbol.sclass);
  out += ' ';
  print_type(out, symbol.stype);
  print_tag(out, symbol, scopes);
  if (!symbol.dims.empty()) print_dimensions(out, symbol.dims);
  const VisibleSymbol *tag = tag_of(symbol, scopes);
  print_number(out, "size", symbol.size, default_symbol_size(symbol.stype, symbol.dims, tag));
  print_number(out, "align", symbol.align, default_symbol_align(symbol.stype, tag));
  print_number(out, "offset", symbol.offset, 0);
  print_symbol_qualifiers(out, symbol);
  print_symbol_flags(out, symbol.scqual);
  for (const file::Pragma &entry : symbol.pragmas) {
    print_pragma_entry(out, entry);
  }
  if (symbol.has_value) out += " value";
  return out;
}

std::string to_text(const file::IcodeFile &file) {
  return FilePrinter(file).run();
}

} // namespace velkor::text
