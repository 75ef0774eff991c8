#include "mutation/mutate.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "core/opcodes.h"
#include "file/icode_file.h"
#include "icode/format.h"

namespace velkor::test {
namespace {

// The library's distributions may differ between machines; remainders do not.
std::size_t below(std::mt19937 &random, std::size_t limit) {
  return limit == 0 ? 0 : random() % limit;
}

template <typename List> auto &pick(std::mt19937 &random, List &list) {
  return list[below(random, list.size())];
}

// Values that stand at the edges of fields, or mean something in the format.
constexpr std::array<std::int32_t, 18> edge_values = {
    0,    1,    -1,   2,    4,      7,      8,      0x10,       0x24,
    0x7F, 0x80, 0xFE, 0xFF, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, -0x7FFFFFFF - 1};

std::int32_t value(std::mt19937 &random) {
  return random() % 4 == 0 ? static_cast<std::int32_t>(random()) : pick(random, edge_values);
}

// Damage to bytes.

void change_bytes(std::string &bytes, std::mt19937 &random) {
  for (std::size_t count = 1 + below(random, 8); count > 0 && !bytes.empty(); --count) {
    char &byte = pick(random, bytes);
    switch (random() % 3) {
    case 0: byte = static_cast<char>(byte ^ 1 << random() % 8); break;
    case 1: byte = static_cast<char>(value(random)); break;
    default: byte = static_cast<char>(byte + (random() % 2 != 0 ? 1 : -1)); break;
    }
  }
}

void insert_bytes(std::string &bytes, std::mt19937 &random) {
  std::string piece;
  for (std::size_t count = 1 + below(random, 16); count > 0; --count) {
    piece += static_cast<char>(value(random));
  }
  bytes.insert(below(random, bytes.size() + 1), piece);
}

void delete_bytes(std::string &bytes, std::mt19937 &random) {
  if (bytes.empty()) return;
  bytes.erase(below(random, bytes.size()), 1 + below(random, 32));
}

void repeat_bytes(std::string &bytes, std::mt19937 &random) {
  const std::size_t from = below(random, bytes.size());
  const std::string piece = bytes.substr(from, 1 + below(random, 200));
  bytes.insert(below(random, bytes.size() + 1), piece);
}

void cut_off(std::string &bytes, std::mt19937 &random) {
  bytes.resize(below(random, bytes.size() + 1));
}

void exchange_blocks(std::string &bytes, std::mt19937 &random) {
  const std::size_t blocks = bytes.size() / block_size;
  if (blocks < 2) {
    cut_off(bytes, random);
    return;
  }
  const std::size_t a = below(random, blocks) * block_size;
  const std::size_t b = below(random, blocks) * block_size;
  if (a == b) return;
  std::swap_ranges(bytes.begin() + static_cast<std::ptrdiff_t>(a),
                   bytes.begin() + static_cast<std::ptrdiff_t>(a + block_size),
                   bytes.begin() + static_cast<std::ptrdiff_t>(b));
}

// Damage to records.

file::Node random_leaf(std::mt19937 &random) {
  file::Node node;
  node.op = random() % 2 == 0 ? ICON : NAME;
  node.type = static_cast<std::uint16_t>(value(random));
  node.value = value(random);
  node.level = static_cast<std::int16_t>(below(random, 4));
  node.index = static_cast<std::int16_t>(below(random, 8));
  return node;
}

void change_node(file::IcodeFile &file, std::mt19937 &random) {
  if (file.nodes.empty()) return;
  file::Node &node = pick(random, file.nodes);
  switch (random() % 9) {
  case 0:
  case 1: { // another opcode of the same arity: the tree stays whole
    const int arity = op_arity(node.op);
    for (int tries = 0; tries < 200; ++tries) {
      const auto op = static_cast<std::uint8_t>(below(random, opcode_limit));
      if (op_arity(op) != arity || op == DDNODE || op == RECORD_SOURCE_FILE) continue;
      node.op = op;
      break;
    }
    break;
  }
  case 2: node.type = static_cast<std::uint16_t>(value(random)); break;
  case 3: node.type = static_cast<std::uint16_t>(below(random, 16)); break;
  case 4: node.value = value(random); break;
  case 5: node.size = static_cast<std::int16_t>(value(random)); break;
  case 6: node.index = static_cast<std::int16_t>(below(random, 8)); break;
  case 7: node.level = static_cast<std::int16_t>(below(random, 4)); break;
  default: // a leaf in the place of what stood there
    node = random_leaf(random);
    break;
  }
}

// Hangs a tree, or its operand, under another node. Walks from roots, so that no node is its own
// descendant: the receiver is a node that has operands, the gift a fresh leaf or a statement's
// tree.
void graft(file::IcodeFile &file, std::mt19937 &random) {
  std::vector<file::Statement *> statements;
  for (file::Record &record : file.records) {
    if (auto *statement = std::get_if<file::Statement>(&record)) statements.push_back(statement);
  }
  if (statements.size() < 2) return;
  file::Statement &from = *pick(random, statements);
  file::Statement &to = *pick(random, statements);
  if (from.tree == to.tree) return;
  file::NodeIndex receiver = to.tree;
  for (std::size_t steps = below(random, 4); steps > 0; --steps) {
    const file::Node &node = file.nodes[static_cast<std::size_t>(receiver)];
    if (node.left == file::no_node) break;
    const file::NodeIndex next =
        node.right != file::no_node && random() % 2 == 0 ? node.right : node.left;
    if (op_arity(file.nodes[static_cast<std::size_t>(next)].op) == 0) break;
    receiver = next;
  }
  file::Node &node = file.nodes[static_cast<std::size_t>(receiver)];
  if (op_arity(node.op) == 0) return;
  const file::NodeIndex gift = from.tree;
  from.tree = file.add(random_leaf(random));
  file.nodes[static_cast<std::size_t>(receiver)].left = gift;
}

void change_symbol(file::Symbol &symbol, std::mt19937 &random) {
  switch (random() % 11) {
  case 0: symbol.size = value(random); break;
  case 1: symbol.offset = value(random); break;
  case 2: symbol.sclass = static_cast<std::uint8_t>(below(random, 28)); break;
  case 3: symbol.scqual = static_cast<std::uint16_t>(value(random)); break;
  case 4: symbol.stype = static_cast<std::uint32_t>(value(random)); break;
  case 5: symbol.squal = static_cast<std::uint32_t>(value(random)); break;
  case 6: symbol.align = value(random); break;
  case 7: symbol.tag_level = static_cast<std::int16_t>(value(random)); break;
  case 8: symbol.tag_index = static_cast<std::int16_t>(below(random, 8)); break;
  case 9: symbol.dims.push_back(static_cast<std::uint32_t>(value(random))); break;
  default: symbol.name.assign(below(random, 300), 'n'); break;
  }
}

void change_record(file::IcodeFile &file, std::mt19937 &random) {
  if (file.records.empty()) return;
  file::Record &record = pick(random, file.records);
  if (auto *symbol = std::get_if<file::Symbol>(&record)) {
    change_symbol(*symbol, random);
  } else if (auto *marker = std::get_if<file::Marker>(&record)) {
    marker->kind = static_cast<std::uint8_t>(below(random, 8));
  } else if (auto *label = std::get_if<file::Label>(&record)) {
    label->index = static_cast<std::int16_t>(value(random));
  } else if (auto *statement = std::get_if<file::Statement>(&record)) {
    statement->line = static_cast<std::int16_t>(value(random));
  } else {
    record = file::Comment{std::string(below(random, 400), ';')};
  }
}

// Seeds are shallow, so recursion will do.
file::NodeIndex copy_tree(file::IcodeFile &file, file::NodeIndex root) {
  if (root == file::no_node) return root;
  file::Node copy = file.nodes[static_cast<std::size_t>(root)];
  copy.left = copy_tree(file, copy.left);
  copy.right = copy_tree(file, copy.right);
  return file.add(std::move(copy));
}

void move_records(file::IcodeFile &file, std::mt19937 &random) {
  if (file.records.empty()) return;
  const std::size_t at = below(random, file.records.size());
  const auto place = file.records.begin() + static_cast<std::ptrdiff_t>(at);
  switch (random() % 3) {
  case 0: file.records.erase(place); break;
  case 1: {
    file::Record copy = *place;
    // A tree of its own: trees that share nodes could be grafted into each other.
    if (auto *statement = std::get_if<file::Statement>(&copy)) {
      statement->tree = copy_tree(file, statement->tree);
    }
    file.records.insert(place, std::move(copy));
    break;
  }
  default: std::swap(*place, pick(random, file.records)); break;
  }
}

// False when the file has no records that can be told apart, or none that can be written.
bool damage_records(std::string &bytes, std::mt19937 &random) {
  file::IcodeFile file;
  if (!file::decode(bytes, file).empty()) return false;
  for (std::size_t count = 1 + below(random, 4); count > 0; --count) {
    switch (random() % 8) {
    case 0: change_record(file, random); break;
    case 1: move_records(file, random); break;
    case 2: graft(file, random); break;
    default: change_node(file, random); break;
    }
  }
  // An operand that was put under a new opcode of another arity, an opcode that cannot stand.
  std::string error;
  std::string damaged = file::encode(file, error);
  if (!error.empty()) return false;
  bytes = std::move(damaged);
  return true;
}

std::string join(const std::string &front, const std::string &back, std::mt19937 &random) {
  return front.substr(0, below(random, front.size() + 1)) +
         back.substr(below(random, back.size() + 1));
}

} // namespace

std::string mutate(const std::vector<std::string> &files, std::mt19937 &random) {
  std::string bytes = pick(random, files);
  if (random() % 2 == 0 && damage_records(bytes, random)) return bytes;
  switch (random() % 8) {
  case 0: insert_bytes(bytes, random); break;
  case 1: delete_bytes(bytes, random); break;
  case 2: repeat_bytes(bytes, random); break;
  case 3: cut_off(bytes, random); break;
  case 4: exchange_blocks(bytes, random); break;
  case 5: bytes = join(bytes, pick(random, files), random); break;
  default: change_bytes(bytes, random); break;
  }
  return bytes;
}

} // namespace velkor::test
