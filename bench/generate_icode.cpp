// Makes an icode file of about a given size: many functions of ordinary statements, with locals,
// loops, calls, array accesses and constants in the mix of a C program.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/opcodes.h"
#include "core/storage_classes.h"
#include "core/types.h"
#include "file/icode_file.h"
#include "icode/format.h"

namespace {

using namespace velkor;
using file::NodeIndex;

constexpr int locals = 8;
constexpr int statements_per_function = 120;
constexpr int array_symbol = 0; // level 0 index of the array that all functions use

struct Generator {
  file::IcodeFile icode;
  unsigned random_state = 12345;
  int globals = 0;

  unsigned random(unsigned below) {
    random_state = random_state * 1103515245 + 12345;
    return (random_state >> 16) % below;
  }

  NodeIndex node(Opcode op, TypeWord type, NodeIndex left = file::no_node,
                 NodeIndex right = file::no_node) {
    file::Node record;
    record.op = op;
    record.type = static_cast<std::uint16_t>(type);
    record.left = left;
    record.right = right;
    if (op == DEREF) record.size = 32;
    return icode.add(record);
  }

  NodeIndex name(int level, int index, TypeWord type = INT) {
    const NodeIndex position = node(NAME, type);
    icode.nodes[static_cast<std::size_t>(position)].level = static_cast<std::int16_t>(level);
    icode.nodes[static_cast<std::size_t>(position)].index = static_cast<std::int16_t>(index);
    return position;
  }

  NodeIndex constant(int value) {
    const NodeIndex position = node(ICON, INT);
    icode.nodes[static_cast<std::size_t>(position)].value = value;
    return position;
  }

  NodeIndex label(int index) {
    const NodeIndex position = node(LABELREF, INT);
    icode.nodes[static_cast<std::size_t>(position)].value = index;
    return position;
  }

  NodeIndex local() { return name(2, static_cast<int>(random(locals))); }

  // array[local]
  NodeIndex element() {
    const TypeWord pointer = pointer_to(INT);
    const NodeIndex address = node(ADDRESS, pointer, name(0, array_symbol, 0x34));
    const NodeIndex index = local();
    const NodeIndex scaled = node(PMCONV, INT, index, constant(32));
    return node(DEREF, INT, node(ADD, pointer, address, scaled));
  }

  NodeIndex value(int depth) {
    constexpr Opcode operators[] = {ADD, SUBTRACT, MULTIPLY, BIT_AND, BIT_OR, BIT_XOR};
    switch (depth == 0 ? random(3) : 3 + random(4)) {
    case 0: return constant(static_cast<int>(random(1000)));
    case 1: return element();
    case 2: return local();
    default: {
      const NodeIndex left = value(depth - 1);
      const NodeIndex right = value(depth - 1);
      return node(operators[random(6)], INT, left, right);
    }
    }
  }

  void statement(int line, NodeIndex tree) {
    icode.records.emplace_back(
        file::Statement{static_cast<std::int16_t>(line), static_cast<std::int16_t>(line), tree});
  }

  void symbol(const std::string &symbol_name, std::uint8_t sclass, TypeWord type, int bits) {
    file::Symbol record;
    record.name = symbol_name;
    record.sclass = sclass;
    record.stype = type;
    record.size = bits;
    record.align = 32;
    icode.records.emplace_back(record);
  }

  void marker(std::uint8_t kind, int line) {
    icode.records.emplace_back(file::Marker{kind, static_cast<std::int16_t>(line)});
  }

  void array() {
    file::Symbol record;
    record.name = "_array";
    record.sclass = C_EXT;
    record.stype = 0x34;
    record.size = 32000;
    record.align = 32;
    record.dims = {1000};
    icode.records.emplace_back(record);
    globals = 1;
  }

  void function(int number) {
    const int self = globals++;
    symbol("_function" + std::to_string(number), C_EXT, 0x24, 0);
    marker(MARKER_BF, 1);
    marker(MARKER_EA, 1);
    for (int i = 0; i < locals; ++i)
      symbol("_local" + std::to_string(i), C_AUTO, INT, 32);
    marker(MARKER_EL, 1);
    int next_label = 1;
    for (int line = 1; line <= statements_per_function; ++line)
      switch (random(8)) {
      case 0:
        statement(line, node(CBRANCH, INT, node(LT, INT, local(), value(0)), label(next_label)));
        statement(line, node(ASSIGN, INT, local(), value(1)));
        icode.records.emplace_back(file::Label{static_cast<std::int16_t>(next_label++), false});
        break;
      case 1: statement(line, node(ASSIGN, INT, element(), value(2))); break;
      default: statement(line, node(ASSIGN, INT, local(), value(2)));
      }
    statement(statements_per_function, node(RETURN, INT, name(0, self, 0x24), value(1)));
    marker(MARKER_EF, statements_per_function);
  }
};

} // namespace

int main(int argc, char **argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: generate_icode MEGABYTES FILE\n");
    return 2;
  }
  constexpr int bytes_per_function = 12700; // on the average
  const long functions = std::atol(argv[1]) * 1000000 / bytes_per_function;
  Generator generator;
  generator.icode.records.emplace_back(file::SourceFile{"generated.c"});
  generator.array();
  for (long i = 0; i < functions; ++i)
    generator.function(static_cast<int>(i));
  const std::string error = file::write_file(argv[2], generator.icode);
  if (!error.empty()) std::fprintf(stderr, "generate_icode: %s\n", error.c_str());
  return error.empty() ? 0 : 1;
}
