#include "text/random_file.h"

#include <array>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "core/opcodes.h"
#include "core/storage_classes.h"
#include "core/types.h"
#include "icode/format.h"

namespace velkor::test {
namespace {

using file::NodeIndex;

constexpr std::array<std::string_view, 14> names = {"_x",  "_y",  "_s",     ".fake0", "$$",
                                                    "S$1", "add", "L5",     "L",      "op200",
                                                    "",    "a b", "it's\n", "\xFF"};
constexpr std::array<std::string_view, 10> texts = {"",      "1.5",    "+1.5e+10", "5",   "0x1E5",
                                                    "a\"b#", "// \\n", "\t1.0",    ".5e", "-.5"};
constexpr std::array<std::int32_t, 9> numbers = {
    0, 1, -1, 8, 32, 64, 4711, 0x7FFFFFFF, -0x7FFFFFFF - 1};

// mt19937's own sequence is fixed by the standard; the library's distributions are not.
class Generator {
public:
  explicit Generator(std::uint32_t seed) : random_(seed) {}

  file::IcodeFile run(int records) {
    for (int i = 0; i < records; ++i) {
      file_.records.push_back(record());
    }
    return std::move(file_);
  }

private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<std::uint32_t>(limit)); }
  bool often() { return below(4) != 0; }
  template <typename List> auto pick(const List &list) {
    return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
  }

  std::int32_t number() { return often() ? pick(numbers) : static_cast<std::int32_t>(random_()); }
  std::int16_t short_number() {
    return static_cast<std::int16_t>(often() ? below(4) : static_cast<int>(random_()));
  }
  std::uint8_t byte() { return static_cast<std::uint8_t>(often() ? below(4) : below(256)); }
  std::string name() { return std::string(pick(names)); }
  std::string text() { return std::string(pick(texts)); }
  std::string bytes(int length) {
    std::string result;
    for (int i = 0; i < length; ++i) {
      result += static_cast<char>(below(3) == 0 ? 0 : below(256));
    }
    return result;
  }

  TypeWord type(std::uint32_t mask) {
    if (!often()) return static_cast<TypeWord>(random_()) & mask;
    TypeWord result = static_cast<TypeWord>(below(16));
    for (int i = below(4); i > 0; --i) {
      result = derive(result, static_cast<Derivation>(1 + below(3)));
    }
    return result & mask;
  }

  std::vector<std::uint32_t> dimensions() {
    std::vector<std::uint32_t> dims;
    for (int i = often() ? 0 : below(4); i > 0; --i) {
      dims.push_back(static_cast<std::uint32_t>(number()));
    }
    return dims;
  }

  file::Pragma pragma() {
    file::Pragma result;
    result.kind = byte();
    for (int i = below(3); i > 0; --i) {
      result.strings.push_back(text());
    }
    return result;
  }

  std::uint8_t opcode() {
    for (;;) {
      const int op = often() ? below(opcode_limit) : below(RECORD_FILLER);
      if (op != DDNODE && op != RECORD_SOURCE_FILE) return static_cast<std::uint8_t>(op);
    }
  }

  NodeIndex tree(int depth) {
    file::Node node;
    node.op = opcode();
    while ((depth == 0 && op_arity(node.op) > 0) || (depth == 4 && node.op == ENDINIT)) {
      node.op = opcode();
    }
    node.type = static_cast<std::uint16_t>(type(0xFFFF));
    fill(node);
    if (op_arity(node.op) >= 1) node.left = tree(depth - 1);
    if (op_arity(node.op) == 2) node.right = tree(depth - 1);
    return file_.add(std::move(node));
  }

  void fill(file::Node &node) {
    const RecordFields fields = opcode_table[node.op].fields;
    node.qual = byte();
    node.level = short_number();
    node.index = short_number();
    node.value = number();
    node.size = fields == RecordFields::SWITCH_SUMMARY ? short_number() : number();
    if (fields == RecordFields::BYTES) node.text = bytes(below(9));
    if (fields == RecordFields::TEXT) node.text = text();
  }

  file::Symbol symbol() {
    file::Symbol result;
    result.name = name();
    result.sclass = often() ? static_cast<std::uint8_t>(below(28)) : byte();
    result.stype = type(~0u);
    result.size = number();
    result.offset = number();
    result.align = number();
    result.scqual = static_cast<std::uint16_t>(often() ? 0 : random_());
    result.squal = often() ? 0 : static_cast<std::uint32_t>(random_());
    result.tag_level = short_number();
    result.tag_index = short_number();
    if (has_tag(result.stype)) result.tag_name = name();
    result.dims = dimensions();
    for (int i = often() ? 0 : below(3); i > 0; --i) {
      result.pragmas.push_back(pragma());
    }
    result.has_value = !often();
    if (!result.has_value) return result;
    for (int i = below(3); i > 0; --i) {
      result.value.push_back(tree(4));
    }
    result.final_size = number();
    result.final_dims = dimensions();
    return result;
  }

  file::Record front_end_record() {
    switch (below(4)) {
    case 0: return file::FrontEndRecord{RECORD_FRONT_END_AMPERSAND, bytes(17)};
    case 1: return file::FrontEndRecord{RECORD_FRONT_END_COLON, bytes(6)};
    case 2: return file::FrontEndRecord{RECORD_FRONT_END_BAR, bytes(7)};
    default: {
      const int pairs = below(3);
      return file::FrontEndRecord{RECORD_FRONT_END_SEMICOLON,
                                  bytes(3) + static_cast<char>(pairs) + bytes(2 * pairs)};
    }
    }
  }

  file::Record record() {
    switch (below(16)) {
    case 0:
    case 1:
    case 2: return symbol();
    case 3:
    case 4: return file::Marker{static_cast<std::uint8_t>(below(8)), short_number()};
    case 5: return file::Label{short_number(), below(2) != 0};
    case 6: return file::Assembly{short_number(), short_number(), text()};
    case 7: return file::Comment{text()};
    case 8: return file::SourceFile{name()};
    case 9: return file::LiveRegisters{static_cast<std::uint32_t>(random_()), 0};
    case 10: return file::Attribute{often() ? attribute_leaf : byte()};
    case 11: return pragma();
    case 12: return front_end_record();
    default: return file::Statement{short_number(), short_number(), tree(4)};
    }
  }

  std::mt19937 random_;
  file::IcodeFile file_;
};

} // namespace

file::IcodeFile random_file(std::uint32_t seed, int records) {
  return Generator(seed).run(records);
}

} // namespace velkor::test
