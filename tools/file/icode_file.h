// An icode file as plain records: what the tools read, write, print and run.
//
// This model is independent of the optimizer's own records. It keeps every field of every record,
// so that writing a file that has been read gives the same bytes (for a file in canonical blocks,
// which all of the programs write). Nothing here computes with the values of a program.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velkor::file {

using NodeIndex = std::int32_t;
inline constexpr NodeIndex no_node = -1;

// One node record. Only the fields that the opcode carries (opcode_table[op].fields) mean anything.
struct Node {
  std::uint8_t op = 0;
  std::uint8_t qual = 0;
  std::uint16_t type = 0;
  std::int16_t level = 0;   // symbol reference
  std::int16_t index = 0;   // symbol reference
  std::int32_t value = 0;   // value of LABELREF, ICON, SKIP; second field of SWITCH
  std::int32_t size = 0;    // bits: DEREF, ARASG; first field of SWITCH
  NodeIndex left = no_node; // operands, as positions in IcodeFile::nodes
  NodeIndex right = no_node;
  std::string text; // bytes of SCON; text of FCON, LCON, XCALL, UXCALL, ICALL; the 7 of a DDNODE
};

// A pragma entry: of a symbol, or as a record of its own.
struct Pragma {
  std::uint8_t kind = 0;
  std::vector<std::string> strings;
};

struct Symbol {
  bool has_value = false; // record byte ? and an initial value behind it
  std::string name;
  std::int32_t size = 0; // bits
  std::int32_t offset = 0;
  std::uint8_t sclass = 0;
  std::uint16_t scqual = 0;
  std::uint32_t stype = 0;
  std::uint32_t squal = 0;
  std::int32_t align = 0; // bits
  std::int16_t tag_level = -1;
  std::int16_t tag_index = -1;
  std::string tag_name; // on file only when the basic type is struct, union or enum
  std::vector<std::uint32_t> dims;
  std::vector<Pragma> pragmas;
  // With has_value: the trees (roots in IcodeFile::nodes), and the fields of the ENDINIT record.
  std::vector<NodeIndex> value;
  std::int32_t final_size = 0; // bits
  std::vector<std::uint32_t> final_dims;
};

struct Marker {
  std::uint8_t kind = 0;
  std::int16_t value = 0;
};
struct Statement {
  std::int16_t line = 0;
  std::int16_t line2 = 0;
  NodeIndex tree = no_node;
};
struct Label {
  std::int16_t index = 0;
  bool plus = false; // written as + instead of *
};
struct Assembly {
  std::int16_t line = 0;
  std::int16_t line2 = 0;
  std::string text;
};
struct Comment {
  std::string text;
};
struct SourceFile {
  std::string name;
};
struct LiveRegisters {
  std::uint32_t low = 0;
  std::uint32_t high = 0;
};
struct Attribute {
  std::uint8_t letter = 0;
};
// A front-end record that all programs step over; its bytes behind the record byte.
struct FrontEndRecord {
  std::uint8_t record_byte = 0;
  std::string bytes;
};

using Record = std::variant<Symbol, Marker, Statement, Label, Assembly, Comment, SourceFile,
                            LiveRegisters, Attribute, Pragma, FrontEndRecord>;

struct IcodeFile {
  std::vector<Record> records;
  std::vector<Node> nodes; // of all trees; a tree's nodes refer to each other by position

  // Appends a node and returns its position.
  NodeIndex add(Node node) {
    nodes.push_back(std::move(node));
    return static_cast<NodeIndex>(nodes.size() - 1);
  }
};

// Decodes a file's bytes into file. Returns an empty string, or one line that says what is wrong
// and where ("offset 4711: text without an end"). Never reads outside bytes, whatever they hold;
// records behind the end mark, references to nothing and unknown bytes are errors. Symbol
// references are not resolved here.
[[nodiscard]] std::string decode(std::string_view bytes, IcodeFile &file);

// The file's bytes in canonical blocks, end mark and all. Returns an empty string in error unless a
// record cannot be written (longer than a block, a count that its field cannot hold).
[[nodiscard]] std::string encode(const IcodeFile &file, std::string &error);

// Whole files. Both return an empty string, or one line with the reason. write_file leaves no
// half-written file behind.
[[nodiscard]] std::string read_file(const std::string &path, IcodeFile &file);
[[nodiscard]] std::string write_file(const std::string &path, const IcodeFile &file);

} // namespace velkor::file
