// Text to trees.
#include <limits>
#include <utility>
#include <vector>

#include "core/opcodes.h"
#include "icode/format.h"
#include "text/defaults.h"
#include "text/text.h"
#include "text/trees.h"

namespace velkor::text {
namespace {

using file::IcodeFile;
using file::no_node;
using file::Node;
using file::NodeIndex;

constexpr std::int64_t int16_low = std::numeric_limits<std::int16_t>::min();
constexpr std::int64_t int16_high = std::numeric_limits<std::int16_t>::max();
constexpr TypeWord highest_node_type = 0xFFFF;

// A node with what was written of it. What was not is filled in when its operands are known.
struct Draft {
  Node node;
  bool has_type = false;
  bool has_size = false;
  bool has_qual = false;
  bool has_tag = false;
  bool has_text = false;
  bool has_value = false;
  int operands = 0; // read so far
};

class TreeReader {
public:
  TreeReader(Cursor &cursor, const Scopes &scopes, IcodeFile &file)
      : cursor_(cursor), scopes_(scopes), file_(file) {}

  NodeIndex read() {
    while (!cursor_.failed()) {
      if (begin_node()) continue; // an operator was opened: its first operand comes next
      if (cursor_.failed()) break;
      NodeIndex done = finished_;
      while (!open_.empty() && !cursor_.failed() && done != no_node) {
        done = add_operand(done);
      }
      if (done != no_node && open_.empty()) return done;
    }
    return no_node;
  }

private:
  // Reads a leaf into finished_ (false), or the head of an operator onto the stack (true).
  bool begin_node() {
    Draft draft;
    const char c = cursor_.peek();
    if (c == '"') {
      draft.node.op = SCON;
      draft.node.text = cursor_.string('"');
      leaf_with_type(draft, pointer_to(CHAR));
      return false;
    }
    if (!cursor_.number_text().empty()) {
      number(draft);
      return false;
    }
    const std::string_view word = cursor_.peek_word();
    if (c == '@' || c == '\'') {
      name(draft);
      return false;
    }
    if (is_label(word)) {
      cursor_.skip(1);
      draft.node.op = LABELREF;
      draft.node.value = static_cast<std::int32_t>(cursor_.bits32());
      leaf_with_type(draft, INT);
      return false;
    }
    const std::optional<std::uint8_t> op = find_opcode(word);
    if (!op) {
      if (word.empty()) {
        cursor_.expected("a tree");
      } else {
        name(draft);
      }
      return false;
    }
    cursor_.skip(word.size());
    return operator_head(draft, *op);
  }

  [[nodiscard]] bool is_label(std::string_view word) const {
    if (word.size() > 1) return word[0] == 'L' && word[1] >= '0' && word[1] <= '9';
    return word == "L" && cursor_.after() == '-';
  }

  // What can yield no node where trees stand would change the meaning of everything behind it.
  [[nodiscard]] static bool yields_no_node(std::uint8_t op) {
    return op == DDNODE || op == RECORD_SOURCE_FILE || op >= RECORD_FILLER;
  }

  bool operator_head(Draft &draft, std::uint8_t op) {
    draft.node.op = op;
    if (yields_no_node(op)) cursor_.fail("this opcode yields no node");
    type_suffix(draft);
    fields(draft);
    if (op_arity(op) == 0) {
      finish(draft);
      return false;
    }
    cursor_.require('(');
    if (open_.size() + 1 >= static_cast<std::size_t>(max_tree_depth)) {
      cursor_.fail("a tree of more than " + std::to_string(max_tree_depth) + " levels");
    }
    open_.push_back(std::move(draft));
    return true;
  }

  void type_suffix(Draft &draft) {
    if (cursor_.failed() || cursor_.next() != ':') return;
    cursor_.skip(1);
    draft.node.type = static_cast<std::uint16_t>(cursor_.type(highest_node_type));
    draft.has_type = true;
  }

  void leaf_with_type(Draft &draft, TypeWord type) {
    draft.node.type = static_cast<std::uint16_t>(type);
    type_suffix(draft);
    add(draft);
  }

  void number(Draft &draft) {
    const std::string_view text = cursor_.number_text();
    if (is_float_text(text)) {
      draft.node.op = FCON;
      draft.node.text = text;
      cursor_.skip(text.size());
      leaf_with_type(draft, DOUBLE);
      return;
    }
    draft.node.op = ICON;
    draft.node.value = static_cast<std::int32_t>(cursor_.bits32());
    leaf_with_type(draft, INT);
  }

  void name(Draft &draft) {
    const bool member = !open_.empty() && open_.back().operands == 1 &&
                        (open_.back().node.op == MEMBER || open_.back().node.op == ARROW);
    draft.node.op = NAME;
    const Reference place =
        read_reference(cursor_, member ? NameSpace::MEMBER : NameSpace::ORDINARY, scopes_);
    draft.node.level = static_cast<std::int16_t>(place.level);
    draft.node.index = static_cast<std::int16_t>(place.index);
    type_suffix(draft);
    fields(draft);
    const VisibleSymbol *symbol = scopes_.at(place);
    if (!draft.has_type) {
      const std::optional<std::uint16_t> type = default_name_type(symbol);
      if (!type) cursor_.expected("':' and a type");
      draft.node.type = type.value_or(0);
    }
    if (!draft.has_qual) draft.node.qual = default_name_qualifier(symbol);
    add(draft);
  }

  // `[volatile, size=32]`; the brackets of an array type are not fields.
  void fields(Draft &draft) {
    if (cursor_.failed() || cursor_.next() != '[') return;
    cursor_.skip(1);
    do {
      field(draft);
    } while (!cursor_.failed() && cursor_.accept(','));
    cursor_.require(']');
  }

  void field(Draft &draft) {
    Node &node = draft.node;
    const RecordFields has = opcode_table[node.op].fields;
    const bool has_qual = has == RecordFields::QUAL || has == RecordFields::QUAL_SYMBOL ||
                          has == RecordFields::QUAL_SIZE || has == RecordFields::SYMBOL_QUAL;
    const bool has_tag = has == RecordFields::SYMBOL || has == RecordFields::SYMBOL_QUAL;
    const bool has_size = has == RecordFields::QUAL_SIZE || has == RecordFields::SIZE;
    const bool has_text = has == RecordFields::TEXT || has == RecordFields::BYTES;
    if (has_text && cursor_.peek() == '"') {
      node.text = cursor_.string('"');
      draft.has_text = true;
    } else if (has_qual && cursor_.accept_word("const")) {
      node.qual |= 1;
      draft.has_qual = true;
    } else if (has_qual && cursor_.accept_word("volatile")) {
      node.qual |= 2;
      draft.has_qual = true;
    } else if (has_qual && key("qual")) {
      node.qual = static_cast<std::uint8_t>(cursor_.integer(0, 255));
      draft.has_qual = true;
    } else if (has_tag && key("tag")) {
      const Reference place = read_reference(cursor_, NameSpace::TAG, scopes_);
      node.level = static_cast<std::int16_t>(place.level);
      node.index = static_cast<std::int16_t>(place.index);
      draft.has_tag = true;
    } else if (has_size && key("size")) {
      node.size = static_cast<std::int32_t>(cursor_.bits32());
      draft.has_size = true;
    } else if (has == RecordFields::VALUE && key("value")) {
      node.value = static_cast<std::int32_t>(cursor_.bits32());
    } else if (has == RecordFields::SWITCH_SUMMARY && key("cases")) {
      node.size = static_cast<std::int32_t>(cursor_.integer(int16_low, int16_high));
    } else if (has == RecordFields::SWITCH_SUMMARY && key("range")) {
      node.value = static_cast<std::int32_t>(cursor_.bits32());
    } else {
      cursor_.expected("a field of this opcode");
    }
  }

  bool key(std::string_view word) {
    if (!cursor_.accept_word(word)) return false;
    cursor_.require('=');
    return true;
  }

  // Hangs a finished node into the operator on top. Returns that operator when it is complete,
  // else no_node: another operand comes.
  NodeIndex add_operand(NodeIndex operand) {
    Draft &top = open_.back();
    (top.operands == 0 ? top.node.left : top.node.right) = operand;
    ++top.operands;
    if (top.operands < op_arity(top.node.op)) {
      cursor_.require(',');
      return no_node;
    }
    cursor_.require(')');
    finish(top);
    open_.pop_back();
    return cursor_.failed() ? no_node : finished_;
  }

  // Fills in what was not written, and adds the node.
  void finish(Draft &draft) {
    Node &node = draft.node;
    const RecordFields has = opcode_table[node.op].fields;
    if (!draft.has_type) {
      const std::optional<std::uint16_t> type =
          default_type(node.op, node_at(node.left), node_at(node.right));
      if (!type) {
        std::string word;
        print_opcode(word, node.op);
        cursor_.fail("the type of '" + word + "' does not follow from its operands: write it");
      }
      node.type = type.value_or(0);
    }
    if (has == RecordFields::QUAL_SIZE && !draft.has_size) {
      node.size = default_access_size(node.type);
    }
    if ((has == RecordFields::SYMBOL || has == RecordFields::SYMBOL_QUAL) && !draft.has_tag) {
      cursor_.fail("a tag is missing: [tag=...]");
    }
    if (has == RecordFields::TEXT && !draft.has_text) cursor_.fail("a text is missing: [\"...\"]");
    add(draft);
  }

  [[nodiscard]] const Node *node_at(NodeIndex index) const {
    return index == no_node ? nullptr : &file_.nodes[static_cast<std::size_t>(index)];
  }

  void add(Draft &draft) { finished_ = file_.add(std::move(draft.node)); }

  Cursor &cursor_;
  const Scopes &scopes_;
  IcodeFile &file_;
  std::vector<Draft> open_; // operators that wait for operands, innermost last
  NodeIndex finished_ = no_node;
};

} // namespace

Reference read_place(Cursor &cursor) {
  Reference place;
  cursor.require('@');
  place.level = static_cast<std::int32_t>(cursor.integer(int16_low, int16_high));
  cursor.require('.');
  place.index = static_cast<std::int32_t>(cursor.integer(int16_low, int16_high));
  return place;
}

Reference read_reference(Cursor &cursor, NameSpace space, const Scopes &scopes) {
  if (cursor.peek() == '@') return read_place(cursor);
  const std::string name = cursor.name();
  if (cursor.failed()) return {};
  if (cursor.next() == '@') {
    const Reference place = read_place(cursor);
    const VisibleSymbol *symbol = scopes.at(place);
    if (!cursor.failed() && (symbol == nullptr || symbol->name != name)) {
      cursor.fail("the symbol at that place is not '" + name + "'");
    }
    return place;
  }
  const std::optional<Reference> place = scopes.find(name, space);
  if (!place) cursor.fail("no symbol '" + name + "' is visible here");
  return place.value_or(Reference{});
}

NodeIndex read_tree(Cursor &cursor, const Scopes &scopes, IcodeFile &file) {
  return TreeReader(cursor, scopes, file).read();
}

std::string parse_tree(std::string_view text, const Scopes &scopes, IcodeFile &file,
                       NodeIndex &root) {
  Cursor cursor(text);
  root = read_tree(cursor, scopes, file);
  if (!cursor.failed() && !cursor.at_end()) cursor.expected("the end of the line");
  return cursor.error();
}

} // namespace velkor::text
