// Bytes to text to bytes, over files that use the whole format.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "core/opcodes.h"
#include "file/icode_file.h"
#include "text/random_file.h"
#include "text/text.h"

namespace velkor {
namespace {

std::string encoded(const file::IcodeFile &file) {
  std::string error;
  std::string bytes = file::encode(file, error);
  EXPECT_EQ(error, "");
  return bytes;
}

void expect_round_trip(const std::string &bytes) {
  file::IcodeFile decoded;
  ASSERT_EQ(file::decode(bytes, decoded), "");
  EXPECT_TRUE(encoded(decoded) == bytes) << "decode and encode";
  const std::string text = text::to_text(decoded);
  file::IcodeFile parsed;
  ASSERT_EQ(text::parse_text(text, parsed), "") << text;
  ASSERT_TRUE(encoded(parsed) == bytes) << text;
  EXPECT_EQ(text::to_text(parsed), text);
}

TEST(RoundTrip, RandomFiles) {
  for (std::uint32_t seed = 1; seed <= 400 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    expect_round_trip(encoded(test::random_file(seed, static_cast<int>(seed % 120))));
  }
}

TEST(RoundTrip, EveryOpcodeWithEveryByteOfItsFields) {
  for (int op = 0; op < 254; ++op) {
    if (op == DDNODE || op == '~' || op == ENDINIT) continue;
    for (int byte = 0; byte < 256; ++byte) {
      file::IcodeFile file;
      file::Node leaf;
      leaf.op = ICON;
      leaf.type = static_cast<std::uint16_t>(byte);
      file::Node node;
      node.op = static_cast<std::uint8_t>(op);
      node.type = static_cast<std::uint16_t>(byte * 257);
      node.qual = static_cast<std::uint8_t>(byte);
      node.level = static_cast<std::int16_t>(byte * 257);
      node.index = static_cast<std::int16_t>(byte);
      node.value = byte << 24 | byte;
      node.size = static_cast<std::int16_t>(byte * 257);
      if (op == SCON || byte != 0) node.text = static_cast<char>(byte);
      if (op_arity(node.op) >= 1) node.left = file.add(leaf);
      if (op_arity(node.op) == 2) node.right = file.add(leaf);
      const file::NodeIndex root = file.add(node);
      file.records.emplace_back(file::Statement{1, 1, root});
      ASSERT_NO_FATAL_FAILURE(expect_round_trip(encoded(file)));
    }
  }
}

// Damaged bytes and text: an error or a file, never anything else (the checked build watches).
TEST(RoundTrip, DamagedFilesAndTexts) {
  int accepted = 0;
  for (std::uint32_t seed = 1; seed <= 3000; ++seed) {
    std::mt19937 random(seed);
    const std::string bytes = encoded(test::random_file(seed % 40, 20));
    file::IcodeFile file;
    ASSERT_EQ(file::decode(bytes, file), "");
    std::string text = text::to_text(file);
    std::string damaged = bytes;
    for (std::string *each : {&damaged, &text}) {
      for (std::uint32_t count = 1 + random() % 3; count > 0 && !each->empty(); --count) {
        const std::size_t at = random() % each->size();
        switch (random() % 3) {
        case 0: (*each)[at] = static_cast<char>(random()); break;
        case 1: each->erase(at, 1 + random() % 4); break;
        default: each->insert(at, 1, (*each)[random() % each->size()]); break;
        }
      }
    }
    if (file::decode(damaged, file).empty()) {
      ++accepted;
      ASSERT_NO_FATAL_FAILURE(expect_round_trip(encoded(file)));
    }
    std::string error;
    if (text::parse_text(text, file).empty()) (void)file::encode(file, error);
  }
  EXPECT_GT(accepted, 100);
}

// Trees lean left and right to the full depth; neither side may need a machine stack for it.
TEST(RoundTrip, DeepestTree) {
  for (const bool right : {false, true}) {
    std::string text = "1: ";
    constexpr int depth = 49999;
    for (int i = 0; i < depth; ++i) {
      text += right ? "add(1, " : "negate(";
    }
    text += '7';
    text.append(depth, ')');
    file::IcodeFile file;
    ASSERT_EQ(text::parse_text(text, file), "");
    expect_round_trip(encoded(file));
    const std::string error = text::parse_text("1: negate(" + text.substr(3) + ')', file);
    EXPECT_NE(error.find("a tree of more than 50000 levels"), std::string::npos) << error;
  }
}

} // namespace
} // namespace velkor
