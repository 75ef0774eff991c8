// The icode file as bytes: stamp, blocks, record bytes.
//
// A file is a 12-byte stamp, a stream of records and an end mark, all little-endian and unaligned.
// The stream is cut into blocks; no record is split over two of them, and the rest of a block is
// filler. A block begins anew when a record's length is equal to or more than the room left, so a
// full block ends in at least one filler byte. The last block is short and ends with the end mark.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace velkor {

inline constexpr std::size_t block_size = 4096;

inline constexpr std::array<unsigned char, 12> file_stamp = {0x08, 0xFF, ' ', '8', '6',  '2',
                                                             ' ',  ' ',  '1', '1', 0xFF, 0x00};

// First byte of a record.
enum RecordByte : std::uint8_t {
  RECORD_LIVE_REGISTERS = 0x21,      // !
  RECORD_SYMBOL = 0x23,              // #
  RECORD_ASSEMBLY = 0x24,            // $
  RECORD_MARKER = 0x25,              // %
  RECORD_FRONT_END_AMPERSAND = 0x26, // &  17 bytes of fields, stepped over
  RECORD_LABEL = 0x2A,               // *
  RECORD_LABEL_PLUS = 0x2B,          // +  the same as *
  RECORD_STATEMENT = 0x2E,           // .
  RECORD_COMMENT = 0x2F,             // /
  RECORD_FRONT_END_COLON = 0x3A,     // :  6 bytes, stepped over
  RECORD_FRONT_END_SEMICOLON = 0x3B, // ;  4 bytes, the last one the count of byte pairs behind it
  RECORD_INITIALIZED_SYMBOL = 0x3F,  // ?
  RECORD_ATTRIBUTE = 0x40,           // @
  RECORD_PRAGMA = 0x5E,              // ^
  RECORD_END_OF_INITIAL_VALUE = 0x70,
  RECORD_FRONT_END_BAR = 0x7C, // |  7 bytes, stepped over
  RECORD_SOURCE_FILE = 0x7E,   // ~
  RECORD_FILLER = 0xFE,
  RECORD_END_OF_FILE = 0xFF
};

// Kinds of scope markers.
enum MarkerKind : std::uint8_t {
  MARKER_BF = 1, // begin of function
  MARKER_EF = 2, // end of function
  MARKER_BB = 3, // begin of an inner block: a new scope
  MARKER_EB = 4, // end of an inner block
  MARKER_EA = 5, // end of the parameters: the body's scope begins
  MARKER_EL = 6  // end of the locals
};
inline constexpr std::array<const char *, 7> marker_names = {"",   "BF", "EF", "BB",
                                                             "EB", "EA", "EL"};

inline constexpr std::uint8_t attribute_leaf = 0x4C; // L: the function calls nothing

// Bytes that stand behind the opcode byte of a DDNODE record; readers step over them.
inline constexpr std::size_t ddnode_field_bytes = 7;

// Limits of the format's fields, and of what the programs accept.
inline constexpr std::size_t max_text_bytes = 255; // source file names, comments, assembly text
inline constexpr int max_scope_depth = 50;         // nesting of scopes
inline constexpr int max_tree_depth = 50000;       // levels of one tree
inline constexpr int max_label_index = 32767;

} // namespace velkor
