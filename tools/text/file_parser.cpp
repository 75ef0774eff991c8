// Text to whole files.
#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "icode/format.h"
#include "text/defaults.h"
#include "text/text.h"
#include "text/trees.h"
#include "text/vocabulary.h"
#include "text/words.h"

namespace velkor::text {
namespace {

std::int16_t read_int16(Cursor &cursor) {
  return static_cast<std::int16_t>(cursor.integer(std::numeric_limits<std::int16_t>::min(),
                                                  std::numeric_limits<std::int16_t>::max()));
}

std::uint8_t read_uint8(Cursor &cursor) {
  return static_cast<std::uint8_t>(cursor.integer(0, 255));
}

std::vector<std::uint32_t> read_dimensions(Cursor &cursor) {
  std::vector<std::uint32_t> dims;
  if (cursor.accept_word("none")) return dims;
  do {
    dims.push_back(cursor.bits32());
  } while (!cursor.failed() && cursor.accept(','));
  return dims;
}

file::Pragma read_pragma_entry(Cursor &cursor) {
  file::Pragma entry;
  entry.kind = read_uint8(cursor);
  while (!cursor.failed() && cursor.accept(',')) {
    entry.strings.push_back(cursor.string('"'));
  }
  return entry;
}

bool accept_key(Cursor &cursor, std::string_view word) {
  if (!cursor.accept_word(word)) return false;
  cursor.require('=');
  return true;
}

// A symbol's line. Size and alignment may follow from the tag, so their defaults come last.
class SymbolReader {
public:
  SymbolReader(Cursor &cursor, const Scopes &scopes, file::Symbol &symbol)
      : cursor_(cursor), scopes_(scopes), symbol_(symbol) {}

  void read() {
    symbol_ = file::Symbol{};
    if (!cursor_.accept_word("symbol")) cursor_.expected("'symbol'");
    symbol_.name = cursor_.name();
    storage_class();
    symbol_.stype = cursor_.type(std::numeric_limits<TypeWord>::max());
    const TagReference tag = default_tag(symbol_, scopes_.next());
    symbol_.tag_level = static_cast<std::int16_t>(tag.place.level);
    symbol_.tag_index = static_cast<std::int16_t>(tag.place.index);
    symbol_.tag_name = tag.name;
    while (!cursor_.failed() && !cursor_.at_end() && !symbol_.has_value) {
      attribute();
    }
    const VisibleSymbol *target = tag_of(symbol_, scopes_);
    if (!has_size_) symbol_.size = default_symbol_size(symbol_.stype, symbol_.dims, target);
    if (!has_align_) symbol_.align = default_symbol_align(symbol_.stype, target);
  }

private:
  void storage_class() {
    if (cursor_.failed()) return;
    const std::string_view word = cursor_.peek_word();
    const std::optional<std::uint8_t> sclass = find_storage_class(word);
    if (!sclass) {
      cursor_.expected("a storage class");
      return;
    }
    symbol_.sclass = *sclass;
    cursor_.skip(word.size());
  }

  void attribute() {
    if (accept_key(cursor_, "size")) {
      symbol_.size = static_cast<std::int32_t>(cursor_.bits32());
      has_size_ = true;
    } else if (accept_key(cursor_, "align")) {
      symbol_.align = static_cast<std::int32_t>(cursor_.bits32());
      has_align_ = true;
    } else if (accept_key(cursor_, "offset")) {
      symbol_.offset = static_cast<std::int32_t>(cursor_.bits32());
    } else if (accept_key(cursor_, "tag")) {
      tag();
    } else if (accept_key(cursor_, "dims")) {
      symbol_.dims = read_dimensions(cursor_);
    } else if (accept_key(cursor_, "squal")) {
      symbol_.squal |= cursor_.bits32();
    } else if (accept_key(cursor_, "scqual")) {
      symbol_.scqual = static_cast<std::uint16_t>(symbol_.scqual | cursor_.integer(0, 0xFFFF));
    } else if (accept_key(cursor_, "pragma")) {
      symbol_.pragmas.push_back(read_pragma_entry(cursor_));
    } else if (cursor_.accept_word("const")) {
      symbol_.squal |= outer_qualifier(symbol_.stype, 1);
    } else if (cursor_.accept_word("volatile")) {
      symbol_.squal |= outer_qualifier(symbol_.stype, 2);
    } else if (cursor_.accept_word("value")) {
      symbol_.has_value = true;
    } else if (!flag()) {
      cursor_.expected("an attribute of a symbol");
    }
  }

  bool flag() {
    for (const SymbolFlag &each : symbol_flags) {
      if (!cursor_.accept_word(each.word)) continue;
      symbol_.scqual = static_cast<std::uint16_t>(symbol_.scqual | each.bit);
      return true;
    }
    return false;
  }

  // `tag=_s`, `tag=_s@0.3` or, for a type without a tag, `tag=@0.3`.
  void tag() {
    Reference place;
    symbol_.tag_name.clear();
    if (cursor_.peek() == '@') {
      place = read_place(cursor_);
    } else {
      if (!has_tag(symbol_.stype)) cursor_.fail("only struct, union and enum types have a tag");
      symbol_.tag_name = cursor_.name();
      if (cursor_.next() == '@') {
        place = read_place(cursor_);
      } else if (!cursor_.failed()) {
        const std::optional<Reference> found = scopes_.find(symbol_.tag_name, NameSpace::TAG);
        if (!found) cursor_.fail("no tag '" + symbol_.tag_name + "' is visible here");
        place = found.value_or(Reference{});
      }
    }
    symbol_.tag_level = static_cast<std::int16_t>(place.level);
    symbol_.tag_index = static_cast<std::int16_t>(place.index);
  }

  Cursor &cursor_;
  const Scopes &scopes_;
  file::Symbol &symbol_;
  bool has_size_ = false;
  bool has_align_ = false;
};

class FileReader {
public:
  FileReader(std::string_view text, file::IcodeFile &file) : text_(text), file_(file) {}

  std::string run() {
    while (position_ < text_.size()) {
      const std::size_t end = std::min(text_.find('\n', position_), text_.size());
      Cursor cursor(text_.substr(position_, end - position_));
      position_ = end + 1;
      ++line_;
      if (cursor.at_end()) continue;
      if (owner_ != none) {
        value_line(cursor);
      } else {
        record_line(cursor);
      }
      if (!cursor.failed() && !cursor.at_end()) cursor.expected("the end of the line");
      if (cursor.failed()) return "line " + std::to_string(line_) + ", " + cursor.error();
    }
    if (owner_ != none) {
      return "line " + std::to_string(line_) + ": expected 'end_value', found the end of the file";
    }
    return {};
  }

private:
  static constexpr std::size_t none = ~std::size_t{0};

  // Every line but those of a value.
  void record_line(Cursor &cursor) {
    const char c = cursor.peek();
    const std::string_view word = cursor.peek_word();
    if ((c >= '0' && c <= '9') || c == '-') {
      statement(cursor);
    } else if (c == 'L' &&
               (word.size() > 1 ? word[1] >= '0' && word[1] <= '9' : cursor.after() == '-')) {
      label(cursor);
    } else if (word == "symbol") {
      symbol(cursor);
    } else if (!marker(cursor) && !other_record(cursor)) {
      cursor.expected("a record");
    }
  }

  void symbol(Cursor &cursor) {
    file::Symbol record;
    SymbolReader(cursor, scopes_, record).read();
    if (cursor.failed()) return;
    scopes_.add(record);
    if (record.has_value) owner_ = file_.records.size();
    file_.records.emplace_back(std::move(record));
  }

  // A tree of the initial value of the symbol that owner_ tells, or the line that ends it.
  void value_line(Cursor &cursor) {
    auto &owner = std::get<file::Symbol>(file_.records[owner_]);
    if (!cursor.accept_word("end_value")) {
      const file::NodeIndex root = read_tree(cursor, scopes_, file_);
      if (root != file::no_node) owner.value.push_back(root);
      return;
    }
    owner.final_size = owner.size;
    owner.final_dims = owner.dims;
    while (!cursor.failed() && !cursor.at_end()) {
      if (accept_key(cursor, "size")) {
        owner.final_size = static_cast<std::int32_t>(cursor.bits32());
      } else if (accept_key(cursor, "dims")) {
        owner.final_dims = read_dimensions(cursor);
      } else {
        cursor.expected("'size=' or 'dims='");
      }
    }
    owner_ = none;
  }

  bool marker(Cursor &cursor) {
    file::Marker record;
    for (std::size_t kind = MARKER_BF; kind < marker_words.size() && record.kind == 0; ++kind) {
      if (cursor.accept_word(marker_words[kind])) record.kind = static_cast<std::uint8_t>(kind);
    }
    if (record.kind == 0) {
      if (!cursor.accept_word("marker")) return false;
      record.kind = read_uint8(cursor);
    }
    if (!cursor.at_end()) record.value = read_int16(cursor);
    scopes_.follow(record.kind);
    file_.records.emplace_back(record);
    return true;
  }

  static void lines(Cursor &cursor, std::int16_t &line, std::int16_t &line2) {
    line = read_int16(cursor);
    line2 = cursor.accept('/') ? read_int16(cursor) : line;
  }

  void statement(Cursor &cursor) {
    file::Statement record;
    lines(cursor, record.line, record.line2);
    cursor.require(':');
    record.tree = read_tree(cursor, scopes_, file_);
    file_.records.emplace_back(record);
  }

  void label(Cursor &cursor) {
    file::Label record;
    cursor.skip(1);
    record.index = read_int16(cursor);
    record.plus = cursor.accept('+');
    cursor.require(':');
    file_.records.emplace_back(record);
  }

  bool other_record(Cursor &cursor) {
    if (cursor.accept_word("comment")) {
      file_.records.emplace_back(file::Comment{cursor.string('"')});
    } else if (cursor.accept_word("source")) {
      file_.records.emplace_back(file::SourceFile{cursor.string('"')});
    } else if (cursor.accept_word("assembly")) {
      file::Assembly record;
      lines(cursor, record.line, record.line2);
      record.text = cursor.string('"');
      file_.records.emplace_back(std::move(record));
    } else if (cursor.accept_word("live_registers")) {
      file::LiveRegisters record;
      record.low = cursor.bits32();
      record.high = cursor.bits32();
      file_.records.emplace_back(record);
    } else if (cursor.accept_word("attribute")) {
      const bool leaf = cursor.accept_word("leaf");
      file_.records.emplace_back(file::Attribute{leaf ? attribute_leaf : read_uint8(cursor)});
    } else if (cursor.accept_word("pragma")) {
      file::Pragma record;
      record.kind = read_uint8(cursor);
      while (!cursor.failed() && !cursor.at_end()) {
        record.strings.push_back(cursor.string('"'));
      }
      file_.records.emplace_back(std::move(record));
    } else if (cursor.accept_word("front_end")) {
      file::FrontEndRecord record;
      record.record_byte = read_uint8(cursor);
      record.bytes = cursor.string('"');
      file_.records.emplace_back(std::move(record));
    } else {
      return false;
    }
    return true;
  }

  std::string_view text_;
  file::IcodeFile &file_;
  std::size_t position_ = 0;
  std::size_t line_ = 0;
  std::size_t owner_ = none; // record of the symbol whose initial value is being read
  Scopes scopes_;
};

} // namespace

std::string parse_symbol(std::string_view text, const Scopes &scopes, file::Symbol &symbol) {
  Cursor cursor(text);
  SymbolReader(cursor, scopes, symbol).read();
  if (!cursor.failed() && !cursor.at_end()) cursor.expected("the end of the line");
  return cursor.error();
}

std::string parse_text(std::string_view text, file::IcodeFile &file) {
  file = file::IcodeFile{};
  return FileReader(text, file).run();
}

} // namespace velkor::text
