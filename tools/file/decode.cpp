// Bytes of an icode file to records.
#include "file/icode_file.h"

#include <array>
#include <cstddef>
#include <limits>

#include "core/opcodes.h"
#include "core/types.h"
#include "icode/format.h"

namespace velkor::file {
namespace {

// An operand slot that still waits for its node.
struct PendingOperand {
  NodeIndex parent;
  bool right;
  int depth; // levels of the tree down to this slot, the root's being 1
};

// Cursor over the bytes with the first error met. A record lies in one block, so every field is
// checked against the end of the block in which its record began. After an error all fields read
// as zero, and the callers run out through `failed`.
class Decoder {
public:
  Decoder(std::string_view bytes, IcodeFile &file) : bytes_(bytes), file_(file) {}

  std::string run() {
    if (bytes_.size() > static_cast<std::size_t>(std::numeric_limits<NodeIndex>::max())) {
      return "the file is larger than 2 GB";
    }
    if (bytes_.size() < file_stamp.size()) fail(0, "the file is too short for the icode stamp");
    for (std::size_t i = 0; i < file_stamp.size() && !failed(); ++i) {
      if (static_cast<unsigned char>(bytes_[i]) != file_stamp[i]) {
        fail(i, "not an icode file: the stamp differs");
      }
    }
    position_ = file_stamp.size();
    while (!failed() && read_record()) {
    }
    return error_;
  }

private:
  [[nodiscard]] bool failed() const { return !error_.empty(); }

  void fail(std::size_t offset, std::string_view what) {
    if (failed()) return;
    error_ = "offset " + std::to_string(offset) + ": ";
    error_ += what;
  }

  // Sets the end that no field of the record at the cursor may pass.
  void begin_record() {
    const std::size_t block_end = (position_ / block_size + 1) * block_size;
    limit_ = block_end < bytes_.size() ? block_end : bytes_.size();
  }

  [[nodiscard]] std::size_t room() const { return limit_ - position_; }

  // Takes count bytes off the record; an empty view with an error when they are not there.
  std::string_view take(std::size_t count) {
    if (failed()) return {};
    if (count > room()) {
      fail(position_, limit_ == bytes_.size() ? "the file ends inside a record"
                                              : "a record passes the end of its block");
      return {};
    }
    const std::string_view field = bytes_.substr(position_, count);
    position_ += count;
    return field;
  }

  std::uint32_t unsigned_field(std::size_t width) {
    std::uint32_t value = 0;
    const std::string_view field = take(width);
    for (std::size_t i = 0; i < field.size(); ++i) {
      value |= static_cast<std::uint32_t>(static_cast<unsigned char>(field[i])) << (8 * i);
    }
    return value;
  }
  std::uint8_t u8() { return static_cast<std::uint8_t>(unsigned_field(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(unsigned_field(2)); }
  std::int16_t i16() { return static_cast<std::int16_t>(unsigned_field(2)); }
  std::uint32_t u32() { return unsigned_field(4); }
  std::int32_t i32() { return static_cast<std::int32_t>(unsigned_field(4)); }

  std::string text() {
    if (failed()) return {};
    const std::string_view rest = bytes_.substr(position_, room());
    const std::size_t length = rest.find('\0');
    if (length == std::string_view::npos) {
      fail(position_, "text without an end");
      return {};
    }
    position_ += length + 1;
    return std::string(rest.substr(0, length));
  }

  // At a byte FE, moves to the next block.
  void skip_filler() { position_ = (position_ / block_size + 1) * block_size; }

  // The byte at the cursor, behind any filler; the cursor is left on it and the record begins.
  // An error at the end of the bytes.
  std::uint8_t record_byte() {
    while (!failed()) {
      if (position_ >= bytes_.size()) {
        fail(bytes_.size(), "the file ends without an end mark");
        break;
      }
      const auto byte = static_cast<std::uint8_t>(bytes_[position_]);
      if (byte == RECORD_FILLER) {
        skip_filler();
        continue;
      }
      begin_record();
      return byte;
    }
    return RECORD_END_OF_FILE;
  }

  std::vector<std::uint32_t> dimensions() {
    std::vector<std::uint32_t> dims;
    const std::size_t count = u8();
    if (!failed() && count * 4 > room()) {
      fail(position_ - 1, std::to_string(count) + " dimensions do not fit into the record's room");
      return dims;
    }
    for (std::size_t i = 0; i < count && !failed(); ++i) {
      dims.push_back(u32());
    }
    return dims;
  }

  // Kind, count and strings; the byte 0x5E has been taken.
  Pragma pragma() {
    Pragma result;
    result.kind = u8();
    const int count = u8();
    for (int i = 0; i < count && !failed(); ++i) {
      result.strings.push_back(text());
    }
    return result;
  }

  // The record byte has been taken.
  Symbol symbol() {
    Symbol result;
    result.name = text();
    result.size = i32();
    result.offset = i32();
    result.sclass = u8();
    result.scqual = u16();
    result.stype = u32();
    result.squal = u32();
    result.align = i32();
    result.tag_level = i16();
    result.tag_index = i16();
    if (has_tag(result.stype)) result.tag_name = text();
    result.dims = dimensions();
    const int pragmas = u8();
    for (int i = 0; i < pragmas && !failed(); ++i) {
      const std::size_t at = position_;
      if (u8() != RECORD_PRAGMA) fail(at, "a pragma entry does not begin with 0x5E");
      result.pragmas.push_back(pragma());
    }
    return result;
  }

  // The trees behind a ? symbol, up to and with the ENDINIT record.
  void initial_value(Symbol &owner) {
    owner.has_value = true;
    while (!failed()) {
      if (record_byte() == RECORD_END_OF_INITIAL_VALUE && !failed()) {
        take(1);
        owner.final_size = i32();
        owner.final_dims = dimensions();
        return;
      }
      owner.value.push_back(tree());
    }
  }

  // One node record without its operands. Source file names and DDNODE records ahead of it yield
  // no node and are dropped.
  NodeIndex node() {
    std::uint8_t byte = record_byte();
    while (!failed() && (byte == RECORD_SOURCE_FILE || byte == DDNODE)) {
      take(1);
      if (byte == DDNODE) {
        take(ddnode_field_bytes);
      } else {
        (void)text();
      }
      byte = record_byte();
    }
    if (failed()) return no_node;
    if (byte == RECORD_END_OF_FILE) {
      fail(position_, "the file ends inside a tree");
      return no_node;
    }
    take(1);
    Node result;
    result.op = byte;
    const RecordFields fields = opcode_table[byte].fields;
    if (fields != RecordFields::NO_TYPE) result.type = u16();
    read_fields(fields, result);
    if (failed()) return no_node;
    return file_.add(std::move(result));
  }

  void read_fields(RecordFields fields, Node &result) {
    switch (fields) {
    case RecordFields::NONE:
    case RecordFields::NO_TYPE: break;
    case RecordFields::VALUE: result.value = i32(); break;
    case RecordFields::QUAL_SYMBOL:
      result.qual = u8();
      symbol_reference(result);
      break;
    case RecordFields::BYTES: {
      const std::int16_t length = i16();
      if (length < 0) {
        fail(position_ - 2, "a string constant of negative length");
      } else {
        result.text = take(static_cast<std::size_t>(length));
      }
      break;
    }
    case RecordFields::TEXT: result.text = text(); break;
    case RecordFields::QUAL_SIZE:
      result.qual = u8();
      result.size = i32();
      break;
    case RecordFields::SWITCH_SUMMARY:
      result.size = i16();
      result.value = i32();
      break;
    case RecordFields::QUAL: result.qual = u8(); break;
    case RecordFields::SYMBOL: symbol_reference(result); break;
    case RecordFields::SYMBOL_QUAL:
      symbol_reference(result);
      result.qual = u8();
      break;
    case RecordFields::SIZE: result.size = i32(); break;
    }
  }

  void symbol_reference(Node &result) {
    result.level = i16();
    result.index = i16();
  }

  // A whole tree in prefix order. Open slots stand on a stack of their own, so that a deep tree
  // costs no machine stack.
  NodeIndex tree() {
    pending_.clear();
    const NodeIndex root = node();
    push_operands(root, 2);
    while (!pending_.empty() && !failed()) {
      const PendingOperand slot = pending_.back();
      pending_.pop_back();
      const std::size_t at = position_;
      const NodeIndex operand = node();
      if (failed()) break;
      if (slot.depth > max_tree_depth) {
        fail(at, "a tree of more than " + std::to_string(max_tree_depth) + " levels");
        break;
      }
      Node &parent = file_.nodes[static_cast<std::size_t>(slot.parent)];
      (slot.right ? parent.right : parent.left) = operand;
      push_operands(operand, slot.depth + 1);
    }
    return root;
  }

  // Opens the slots of a node's operands, which stand at the level depth; the left one is on top.
  void push_operands(NodeIndex index, int depth) {
    if (failed()) return;
    const int arity = op_arity(file_.nodes[static_cast<std::size_t>(index)].op);
    if (arity == 2) pending_.push_back({index, true, depth});
    if (arity >= 1) pending_.push_back({index, false, depth});
  }

  // One record of the file level; false at the end mark and after an error.
  bool read_record() {
    const std::uint8_t byte = record_byte();
    const std::size_t at = position_;
    if (failed()) return false;
    take(1);
    switch (byte) {
    case RECORD_LIVE_REGISTERS: {
      LiveRegisters record;
      record.low = u32();
      record.high = u32();
      add(record);
      break;
    }
    case RECORD_SYMBOL: add(symbol()); break;
    case RECORD_INITIALIZED_SYMBOL: {
      Symbol record = symbol();
      initial_value(record);
      add(std::move(record));
      break;
    }
    case RECORD_ASSEMBLY: {
      Assembly record;
      record.line = i16();
      record.line2 = i16();
      record.text = text();
      add(std::move(record));
      break;
    }
    case RECORD_MARKER: {
      Marker record;
      record.kind = u8();
      record.value = i16();
      add(record);
      break;
    }
    case RECORD_LABEL:
    case RECORD_LABEL_PLUS: {
      Label record;
      record.index = i16();
      record.plus = byte == RECORD_LABEL_PLUS;
      add(record);
      break;
    }
    case RECORD_STATEMENT: {
      Statement record;
      record.line = i16();
      record.line2 = i16();
      record.tree = tree();
      add(record);
      break;
    }
    case RECORD_COMMENT: add(Comment{text()}); break;
    case RECORD_SOURCE_FILE: add(SourceFile{text()}); break;
    case RECORD_ATTRIBUTE: add(Attribute{u8()}); break;
    case RECORD_PRAGMA: add(pragma()); break;
    case RECORD_FRONT_END_AMPERSAND: front_end_record(byte, 17); break;
    case RECORD_FRONT_END_COLON: front_end_record(byte, 6); break;
    case RECORD_FRONT_END_BAR: front_end_record(byte, 7); break;
    case RECORD_FRONT_END_SEMICOLON: {
      const std::size_t count = room() < 4 ? 0 : static_cast<unsigned char>(bytes_[position_ + 3]);
      front_end_record(byte, 4 + 2 * count);
      break;
    }
    case RECORD_END_OF_FILE:
      if (position_ != bytes_.size()) fail(position_, "bytes behind the end mark");
      return false;
    default: {
      static constexpr std::array<char, 17> digits = {"0123456789ABCDEF"};
      fail(at, std::string("unknown record byte 0x") + digits[byte / 16u] + digits[byte % 16u]);
      break;
    }
    }
    return !failed();
  }

  void front_end_record(std::uint8_t byte, std::size_t length) {
    add(FrontEndRecord{byte, std::string(take(length))});
  }

  void add(Record record) {
    if (!failed()) file_.records.push_back(std::move(record));
  }

  std::string_view bytes_;
  IcodeFile &file_;
  std::size_t position_ = 0;
  std::size_t limit_ = 0;
  std::string error_;
  std::vector<PendingOperand> pending_;
};

} // namespace

std::string decode(std::string_view bytes, IcodeFile &file) {
  file = IcodeFile{};
  return Decoder(bytes, file).run();
}

} // namespace velkor::file
