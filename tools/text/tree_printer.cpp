// Trees to text.
#include <cstdint>
#include <vector>

#include "core/opcodes.h"
#include "text/defaults.h"
#include "text/text.h"
#include "text/trees.h"

namespace velkor::text {
namespace {

using file::IcodeFile;
using file::no_node;
using file::Node;
using file::NodeIndex;

constexpr std::uint8_t qualifier_const = 1;
constexpr std::uint8_t qualifier_volatile = 2;

// What is still to be printed: a node, or a piece of punctuation.
struct Pending {
  NodeIndex node;
  const char *punctuation;
  bool member; // the node stands at the right of . or ->
};

class TreePrinter {
public:
  TreePrinter(std::string &out, const IcodeFile &file, const Scopes &scopes)
      : out_(out), file_(file), scopes_(scopes) {}

  // A stack instead of recursion: trees may be deeper than a machine stack is.
  void print(NodeIndex root) {
    pending_.assign(1, {root, nullptr, false});
    while (!pending_.empty()) {
      const Pending next = pending_.back();
      pending_.pop_back();
      if (next.punctuation != nullptr) {
        out_ += next.punctuation;
      } else {
        print_node(next);
      }
    }
  }

private:
  [[nodiscard]] const Node *node_at(NodeIndex index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= file_.nodes.size()) return nullptr;
    return &file_.nodes[static_cast<std::size_t>(index)];
  }

  void print_node(const Pending &item) {
    const Node *node = node_at(item.node);
    if (node == nullptr) {
      out_ += '?'; // an incomplete tree, which no file has
      return;
    }
    switch (node->op) {
    case NAME: print_symbol(*node, item.member); return;
    case ICON: print_integer(*node); return;
    case LABELREF:
      out_ += 'L' + std::to_string(node->value);
      print_type_unless(node->type, INT);
      return;
    case SCON:
      print_string(out_, node->text, '"');
      print_type_unless(node->type, pointer_to(CHAR));
      return;
    case FCON:
      if (!is_float_text(node->text)) break;
      out_ += node->text;
      print_type_unless(node->type, DOUBLE);
      return;
    default: break;
    }
    print_operator(*node);
  }

  void print_type_unless(std::uint16_t type, std::optional<TypeWord> expected) {
    if (expected == type) return;
    out_ += ':';
    print_type(out_, type);
  }

  void print_symbol(const Node &node, bool member) {
    const Reference place = {node.level, node.index};
    const VisibleSymbol *symbol = scopes_.at(place);
    print_reference(out_, place, member ? NameSpace::MEMBER : NameSpace::ORDINARY, scopes_);
    print_type_unless(node.type, default_name_type(symbol));
    begin_fields();
    qualifier_field(node.qual, default_name_qualifier(symbol));
    end_fields();
  }

  void print_integer(const Node &node) {
    const bool as_unsigned = is_derived(node.type) || is_unsigned_basic(node.type);
    out_ += as_unsigned ? std::to_string(static_cast<std::uint32_t>(node.value))
                        : std::to_string(node.value);
    print_type_unless(node.type, INT);
  }

  void print_operator(const Node &node) {
    const Node *left = node_at(node.left);
    const Node *right = node_at(node.right);
    print_opcode(out_, node.op);
    if (node.op != ENDINIT) print_type_unless(node.type, default_type(node.op, left, right));
    print_fields(node);
    const int arity = op_arity(node.op);
    if (arity == 0) return;
    out_ += '(';
    pending_.push_back({no_node, ")", false});
    if (arity == 2) {
      pending_.push_back({node.right, nullptr, node.op == MEMBER || node.op == ARROW});
      pending_.push_back({no_node, ", ", false});
    }
    pending_.push_back({node.left, nullptr, false});
  }

  void print_fields(const Node &node) {
    begin_fields();
    switch (opcode_table[node.op].fields) {
    case RecordFields::NONE:
    case RecordFields::NO_TYPE:
    case RecordFields::QUAL_SYMBOL: break;
    case RecordFields::VALUE: number_field("value=", node.value, 0); break;
    case RecordFields::BYTES:
    case RecordFields::TEXT:
      begin_field();
      print_string(out_, node.text, '"');
      break;
    case RecordFields::QUAL_SIZE:
      qualifier_field(node.qual, 0);
      number_field("size=", node.size, default_access_size(node.type));
      break;
    case RecordFields::SWITCH_SUMMARY:
      number_field("cases=", node.size, 0);
      number_field("range=", node.value, 0);
      break;
    case RecordFields::QUAL: qualifier_field(node.qual, 0); break;
    case RecordFields::SYMBOL: tag_field(node); break;
    case RecordFields::SYMBOL_QUAL:
      tag_field(node);
      qualifier_field(node.qual, 0);
      break;
    case RecordFields::SIZE: number_field("size=", node.size, 0); break;
    }
    end_fields();
  }

  void begin_fields() { fields_open_ = false; }
  void begin_field() {
    out_ += fields_open_ ? ", " : "[";
    fields_open_ = true;
  }
  void end_fields() {
    if (fields_open_) out_ += ']';
  }

  void number_field(const char *key, std::int32_t value, std::int32_t expected) {
    if (value == expected) return;
    begin_field();
    out_ += key + std::to_string(value);
  }

  void qualifier_field(std::uint8_t qual, std::uint8_t expected) {
    if (qual == expected) return;
    if (qual == 0 || qual > (qualifier_const | qualifier_volatile)) {
      begin_field();
      out_ += "qual=" + std::to_string(qual);
      return;
    }
    if ((qual & qualifier_const) != 0) {
      begin_field();
      out_ += "const";
    }
    if ((qual & qualifier_volatile) != 0) {
      begin_field();
      out_ += "volatile";
    }
  }

  void tag_field(const Node &node) {
    begin_field();
    out_ += "tag=";
    print_reference(out_, {node.level, node.index}, NameSpace::TAG, scopes_);
  }

  std::string &out_;
  const IcodeFile &file_;
  const Scopes &scopes_;
  std::vector<Pending> pending_;
  bool fields_open_ = false;
};

} // namespace

void print_place(std::string &out, Reference place) {
  out += '@' + std::to_string(place.level) + '.' + std::to_string(place.index);
}

void print_reference(std::string &out, Reference place, NameSpace space, const Scopes &scopes) {
  const VisibleSymbol *symbol = scopes.at(place);
  if (symbol != nullptr) print_name(out, symbol->name);
  if (symbol == nullptr || scopes.find(symbol->name, space) != place) print_place(out, place);
}

void print_tree(std::string &out, const IcodeFile &file, NodeIndex root, const Scopes &scopes) {
  TreePrinter(out, file, scopes).print(root);
}

std::string tree_to_text(const IcodeFile &file, NodeIndex root, const Scopes &scopes) {
  std::string out;
  print_tree(out, file, root, scopes);
  return out;
}

} // namespace velkor::text
