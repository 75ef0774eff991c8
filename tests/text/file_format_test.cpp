// Blocks, records and what is wrong with them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/opcodes.h"
#include "file/icode_file.h"
#include "icode/format.h"
#include "text/text.h"

namespace velkor::file {
namespace {

using namespace std::string_literals;

const std::string stamp(file_stamp.begin(), file_stamp.end());

std::string encoded(const IcodeFile &file) {
  std::string error;
  std::string bytes = encode(file, error);
  EXPECT_EQ(error, "");
  return bytes;
}

std::string decode_error(const std::string &bytes) {
  IcodeFile file;
  return decode(bytes, file);
}

// A file whose first block holds one comment that leaves exactly room bytes.
IcodeFile filled_up_to(std::size_t room) {
  IcodeFile file;
  file.records.emplace_back(Comment{std::string(block_size - stamp.size() - 2 - room, 'x')});
  return file;
}

TEST(Blocks, RecordOfExactlyTheRoomStartsTheNextOne) {
  // A marker has four bytes: five fit it with a filler byte behind, four do not.
  for (const auto &[room, position] : {std::pair{5, 4091}, std::pair{4, 4096}}) {
    IcodeFile file = filled_up_to(static_cast<std::size_t>(room));
    file.records.emplace_back(Marker{MARKER_BF, 7});
    file.records.emplace_back(Marker{MARKER_EF, 8});
    const std::string bytes = encoded(file);
    EXPECT_EQ(bytes.find("%\x01\x07"), static_cast<std::size_t>(position));
    EXPECT_EQ(static_cast<unsigned char>(bytes[4095]), RECORD_FILLER);
    IcodeFile decoded;
    ASSERT_EQ(decode(bytes, decoded), "");
    EXPECT_EQ(decoded.records.size(), 3u);
    EXPECT_EQ(encoded(decoded), bytes);
  }
}

TEST(Blocks, EndMarkStandsInTheLastByteOfABlock) {
  const std::string bytes = encoded(filled_up_to(1));
  EXPECT_EQ(bytes.size(), block_size);
  EXPECT_EQ(decode_error(bytes), "");
}

TEST(Blocks, TreeIsCutBetweenNodesOnly) {
  // Every room from none to more than the statement needs: the cut wanders through the tree.
  for (std::size_t room = 1; room < 40; ++room) {
    IcodeFile file = filled_up_to(room);
    IcodeFile statement;
    ASSERT_EQ(text::parse_text("3: add(1, fcon[\"12345678\"])", statement), "");
    file.nodes = statement.nodes;
    file.records.insert(file.records.end(), statement.records.begin(), statement.records.end());
    const std::string bytes = encoded(file);
    IcodeFile decoded;
    ASSERT_EQ(decode(bytes, decoded), "") << room;
    ASSERT_EQ(decoded.nodes.size(), 3u);
    EXPECT_EQ(decoded.nodes[2].text, "12345678");
    EXPECT_EQ(encoded(decoded), bytes);
  }
}

TEST(Trees, SourceFileAndDdnodeLeaveNoTrace) {
  const std::string add = "\x06\x04\x00"s;
  const std::string one = "\x04\x04\x00\x01\x00\x00\x00"s;
  const std::string source = "~x.h\0"s;
  const std::string ddnode = "\x77"s + "1234567";
  IcodeFile file;
  ASSERT_EQ(
      decode(stamp + ".\1\0\1\0"s + source + add + ddnode + one + ddnode + source + one + "\xFF",
             file),
      "");
  ASSERT_EQ(file.records.size(), 1u);
  EXPECT_EQ(text::tree_to_text(file, std::get<Statement>(file.records[0]).tree, {}), "add(1, 1)");
}

TEST(Trees, ExtraAndMissingOperandsAreNotWritten) {
  std::string error;
  for (const auto &[op, operands] : {std::pair{ADD, 1}, std::pair{ICON, 1}, std::pair{NEGATE, 2}}) {
    IcodeFile file;
    Node leaf;
    leaf.op = ICON;
    Node node;
    node.op = op;
    node.left = file.add(leaf);
    if (operands == 2) node.right = file.add(leaf);
    const NodeIndex root = file.add(node);
    file.records.emplace_back(Statement{1, 1, root});
    EXPECT_EQ(encode(file, error), "");
    EXPECT_NE(error, "");
  }
}

struct Malformed {
  std::string bytes; // behind the stamp
  const char *error;
};

TEST(Malformed, EachHasItsMessage) {
  const std::string symbol_head = "#_x\0"s + std::string(8, '\0') + "\1\0\0"s;
  const std::vector<Malformed> table = {
      {"", "offset 12: the file ends without an end mark"},
      {"%\1"s, "offset 14: the file ends inside a record"},
      {"/abc", "offset 13: text without an end"},
      {"~" + std::string(5000, 'x') + "\0\xFF"s, "offset 13: text without an end"},
      {"Q\xFF", "offset 12: unknown record byte 0x51"},
      {"p\xFF", "offset 12: unknown record byte 0x70"},
      {".\1\0\1\0\6\4\0\xFF"s, "offset 20: the file ends inside a tree"},
      {".\1\0\1\0\6\4\0"s, "offset 20: the file ends without an end mark"},
      {".\1\0\1\0\xFE"s, "offset 18: the file ends without an end mark"},
      {".\1\0\1\0\3\x12\0\5\0abc\xFF"s, "offset 22: the file ends inside a record"},
      {".\1\0\1\0\3\x12\0\xFF\xFFxyz\xFF"s, "offset 20: a string constant of negative length"},
      {symbol_head + std::string(16, '\0') + "\xC8\1\2\3\4"s,
       "offset 43: 200 dimensions do not fit into the record's room"},
      {symbol_head + std::string(17, '\0') + "\1_\1\0\xFF"s,
       "offset 45: a pragma entry does not begin with 0x5E"},
      {"?" + symbol_head.substr(1) + std::string(18, '\0') + "\xFF",
       "offset 45: the file ends inside a tree"},
      {"^\1\3ab\0cd\0"s, "offset 21: text without an end"},
      {";abc\x09xx"s, "offset 13: the file ends inside a record"},
      {"\xFFx", "offset 13: bytes behind the end mark"},
  };
  for (const Malformed &each : table) {
    EXPECT_EQ(decode_error(stamp + each.bytes), each.error);
  }
  EXPECT_EQ(decode_error(""), "offset 0: the file is too short for the icode stamp");
  EXPECT_EQ(decode_error(stamp.substr(0, 11)),
            "offset 0: the file is too short for the icode stamp");
  std::string other = stamp;
  other[5] = '7';
  EXPECT_EQ(decode_error(other + "\xFF"), "offset 5: not an icode file: the stamp differs");
}

TEST(Malformed, EveryTruncationIsNoticed) {
  IcodeFile file;
  ASSERT_EQ(text::parse_text("source \"a.c\"\nsymbol _x static int[] dims=2 pragma=3,\"p\" value\n"
                             "add(1, 2.5)\n\"ab\"\nend_value\nbegin_function 1\nL3:\n"
                             "1: switch(deref:int(_x), uxcall[\"f\"])\nassembly 1/2 \"nop\"\n",
                             file),
            "");
  const std::string bytes = encoded(file);
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_NE(decode_error(bytes.substr(0, length)), "") << length;
  }
}

TEST(Encode, RefusesWhatARecordCannotHold) {
  std::string error;
  IcodeFile file;
  file.records = {Comment{std::string(4093, 'x')}};
  EXPECT_NE(encode(file, error), ""); // the longest record that leaves a filler byte
  file.records = {Comment{std::string(4094, 'x')}};
  EXPECT_EQ(encode(file, error), "");
  EXPECT_EQ(error, "record 0: a record of 4096 bytes is longer than a block holds");
  file.records = {Comment{"a"}, Comment{"a\0b"s}};
  EXPECT_EQ(encode(file, error), "");
  EXPECT_EQ(error, "record 1: text with a NUL inside");
  Symbol symbol;
  symbol.dims.resize(256);
  file.records = {symbol};
  EXPECT_EQ(encode(file, error), "");
  EXPECT_EQ(error, "record 0: 256 dimensions, more than the 255 that a record can hold");
}

TEST(WholeFiles, FailuresLeaveNothingBehind) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(testing::TempDir()) / "velkor_text_test";
  fs::remove_all(folder);
  fs::create_directory(folder);
  IcodeFile file;
  file.records = {Comment{"first"}};
  const std::string path = (folder / "a.if").string();
  ASSERT_EQ(write_file(path, file), "");
  IcodeFile back;
  ASSERT_EQ(read_file(path, back), "");
  EXPECT_EQ(std::get<Comment>(back.records[0]).text, "first");

  IcodeFile bad;
  bad.records = {Comment{std::string(5000, 'x')}};
  EXPECT_NE(write_file(path, bad), "");
  ASSERT_EQ(read_file(path, back), "");
  EXPECT_EQ(std::get<Comment>(back.records[0]).text, "first") << "the old file stays";

  EXPECT_NE(write_file((folder / "none" / "a.if").string(), file).find("No such file"),
            std::string::npos);
  EXPECT_NE(read_file((folder / "b.if").string(), back).find("No such file"), std::string::npos);
  EXPECT_NE(write_file("/dev/full", file).find("No space left"), std::string::npos);
  EXPECT_NE(write_file(folder.string(), file), "") << "a folder is no file";
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
  fs::remove_all(folder);
}

} // namespace
} // namespace velkor::file
