// Records to the bytes of an icode file.
#include "file/icode_file.h"

#include <cstddef>
#include <limits>

#include "core/opcodes.h"
#include "core/types.h"
#include "icode/format.h"

namespace velkor::file {
namespace {

// Builds one record at a time and places it into blocks. The first error stays; records behind it
// are still built, and thrown away with the rest.
class Encoder {
public:
  Encoder(const IcodeFile &file, std::string &error) : file_(file), error_(error) {}

  std::string run() {
    error_.clear();
    output_.assign(file_stamp.begin(), file_stamp.end());
    for (const Record &record : file_.records) {
      std::visit([this](const auto &each) { write(each); }, record);
      if (!error_.empty()) return {};
      ++record_number_;
    }
    output_.push_back(static_cast<char>(RECORD_END_OF_FILE));
    return std::move(output_);
  }

private:
  void fail(const std::string &what) {
    if (error_.empty()) error_ = "record " + std::to_string(record_number_) + ": " + what;
  }

  // Moves the record that stands in record_ to the output, with filler ahead of it when the room
  // of the block is not more than its length.
  void place() {
    if (record_.size() >= block_size) {
      fail("a record of " + std::to_string(record_.size()) + " bytes is longer than a block holds");
    } else {
      const std::size_t room = block_size - output_.size() % block_size;
      if (record_.size() >= room) output_.append(room, static_cast<char>(RECORD_FILLER));
      output_ += record_;
    }
    record_.clear();
  }

  void put(std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) {
      record_.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
    }
  }
  void u8(std::uint8_t value) { put(value, 1); }
  void i16(std::int16_t value) { put(static_cast<std::uint16_t>(value), 2); }
  void i32(std::int32_t value) { put(static_cast<std::uint32_t>(value), 4); }

  void text(std::string_view value) {
    if (value.find('\0') != std::string_view::npos) fail("text with a NUL inside");
    record_ += value;
    record_.push_back('\0');
  }

  void count(std::size_t value, const char *what) {
    if (value > std::numeric_limits<std::uint8_t>::max()) {
      fail(std::to_string(value) + " " + what + ", more than the 255 that a record can hold");
    }
    put(static_cast<std::uint32_t>(value), 1);
  }

  void dimensions(const std::vector<std::uint32_t> &dims) {
    count(dims.size(), "dimensions");
    for (const std::uint32_t dim : dims) {
      put(dim, 4);
    }
  }

  void pragma(const Pragma &entry) {
    u8(RECORD_PRAGMA);
    u8(entry.kind);
    count(entry.strings.size(), "strings of a pragma");
    for (const std::string &string : entry.strings) {
      text(string);
    }
  }

  void write(const Symbol &symbol) {
    u8(symbol.has_value ? RECORD_INITIALIZED_SYMBOL : RECORD_SYMBOL);
    text(symbol.name);
    i32(symbol.size);
    i32(symbol.offset);
    u8(symbol.sclass);
    put(symbol.scqual, 2);
    put(symbol.stype, 4);
    put(symbol.squal, 4);
    i32(symbol.align);
    i16(symbol.tag_level);
    i16(symbol.tag_index);
    if (has_tag(symbol.stype)) text(symbol.tag_name);
    dimensions(symbol.dims);
    count(symbol.pragmas.size(), "pragmas");
    for (const Pragma &entry : symbol.pragmas) {
      pragma(entry);
    }
    place();
    if (!symbol.has_value) return;
    for (const NodeIndex root : symbol.value) {
      if (root >= 0 && static_cast<std::size_t>(root) < file_.nodes.size() &&
          file_.nodes[static_cast<std::size_t>(root)].op == ENDINIT) {
        fail("ENDINIT among the trees of an initial value");
      }
      tree(root);
    }
    u8(RECORD_END_OF_INITIAL_VALUE);
    i32(symbol.final_size);
    dimensions(symbol.final_dims);
    place();
  }

  void write(const Marker &marker) {
    u8(RECORD_MARKER);
    u8(marker.kind);
    i16(marker.value);
    place();
  }

  void write(const Statement &statement) {
    u8(RECORD_STATEMENT);
    i16(statement.line);
    i16(statement.line2);
    place();
    tree(statement.tree);
  }

  void write(const Label &label) {
    u8(label.plus ? RECORD_LABEL_PLUS : RECORD_LABEL);
    i16(label.index);
    place();
  }

  void write(const Assembly &assembly) {
    u8(RECORD_ASSEMBLY);
    i16(assembly.line);
    i16(assembly.line2);
    text(assembly.text);
    place();
  }

  void write(const Comment &comment) {
    u8(RECORD_COMMENT);
    text(comment.text);
    place();
  }

  void write(const SourceFile &source) {
    u8(RECORD_SOURCE_FILE);
    text(source.name);
    place();
  }

  void write(const LiveRegisters &registers) {
    u8(RECORD_LIVE_REGISTERS);
    put(registers.low, 4);
    put(registers.high, 4);
    place();
  }

  void write(const Attribute &attribute) {
    u8(RECORD_ATTRIBUTE);
    u8(attribute.letter);
    place();
  }

  void write(const Pragma &entry) {
    pragma(entry);
    place();
  }

  void write(const FrontEndRecord &record) {
    std::size_t length = 0;
    switch (record.record_byte) {
    case RECORD_FRONT_END_AMPERSAND: length = 17; break;
    case RECORD_FRONT_END_COLON: length = 6; break;
    case RECORD_FRONT_END_BAR: length = 7; break;
    case RECORD_FRONT_END_SEMICOLON:
      length = record.bytes.size() < 4
                   ? 4
                   : 4 + 2 * std::size_t{static_cast<unsigned char>(record.bytes[3])};
      break;
    default: fail("no front-end record has the byte " + std::to_string(record.record_byte)); return;
    }
    if (record.bytes.size() != length) {
      fail("a front-end record of " + std::to_string(record.bytes.size()) + " bytes, expected " +
           std::to_string(length));
    }
    u8(record.record_byte);
    record_ += record.bytes;
    place();
  }

  // A tree in prefix order. An operand that the arity asks for and that is missing, or one too
  // many, would shift everything behind it: both are errors.
  void tree(NodeIndex root) {
    pending_.assign(1, root);
    while (!pending_.empty() && error_.empty()) {
      const NodeIndex index = pending_.back();
      pending_.pop_back();
      if (index < 0 || static_cast<std::size_t>(index) >= file_.nodes.size()) {
        fail("a tree with a missing operand");
        return;
      }
      const Node &node = file_.nodes[static_cast<std::size_t>(index)];
      write_node(node);
      const int arity = op_arity(node.op);
      if ((arity < 2 && node.right != no_node) || (arity < 1 && node.left != no_node)) {
        fail("an operand too many under opcode " + std::to_string(node.op));
      }
      if (arity == 2) pending_.push_back(node.right);
      if (arity >= 1) pending_.push_back(node.left);
    }
  }

  void write_node(const Node &node) {
    const RecordFields fields = opcode_table[node.op].fields;
    if (node.op == DDNODE || node.op == RECORD_SOURCE_FILE || node.op >= RECORD_FILLER) {
      fail("opcode " + std::to_string(node.op) + " yields no node");
    }
    u8(node.op);
    if (fields != RecordFields::NO_TYPE) put(node.type, 2);
    switch (fields) {
    case RecordFields::NONE:
    case RecordFields::NO_TYPE: break;
    case RecordFields::VALUE: i32(node.value); break;
    case RecordFields::QUAL_SYMBOL:
      u8(node.qual);
      symbol_reference(node);
      break;
    case RecordFields::BYTES:
      if (node.text.size() > static_cast<std::size_t>(std::numeric_limits<std::int16_t>::max())) {
        fail("a string constant of " + std::to_string(node.text.size()) + " bytes");
      }
      put(static_cast<std::uint32_t>(node.text.size()), 2);
      record_ += node.text;
      break;
    case RecordFields::TEXT: text(node.text); break;
    case RecordFields::QUAL_SIZE:
      u8(node.qual);
      i32(node.size);
      break;
    case RecordFields::SWITCH_SUMMARY:
      put(static_cast<std::uint32_t>(node.size), 2);
      i32(node.value);
      break;
    case RecordFields::QUAL: u8(node.qual); break;
    case RecordFields::SYMBOL: symbol_reference(node); break;
    case RecordFields::SYMBOL_QUAL:
      symbol_reference(node);
      u8(node.qual);
      break;
    case RecordFields::SIZE: i32(node.size); break;
    }
    place();
  }

  void symbol_reference(const Node &node) {
    i16(node.level);
    i16(node.index);
  }

  const IcodeFile &file_;
  std::string &error_;
  std::string output_;
  std::string record_;
  std::vector<NodeIndex> pending_;
  std::size_t record_number_ = 0;
};

} // namespace

std::string encode(const IcodeFile &file, std::string &error) {
  return Encoder(file, error).run();
}

} // namespace velkor::file
