#include "diag/infix.h"

#include "core/nodes.h"
#include "diag/constant_text.h"
#include "diag/dump.h"
#include "diag/readable_name.h"
#include "diag/subscript.h"
#include "diag/type_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace velkor {
namespace {

constexpr int leaf_precedence = 99;
constexpr int primary_precedence = 15; // calls, members, subscripts
constexpr int unary_precedence = 14;
constexpr int product_precedence = 13;
constexpr int sum_precedence = 12;
constexpr int argument_precedence = 2;
constexpr std::int32_t largest_decimal_mask = 7;
constexpr std::size_t reserve_behind_text = 8; // room for "...", ";" and the NUL

// A part of the text that is still to be written.
struct Piece {
  enum class Kind : std::uint8_t {
    TEXT,
    TREE,      // in parentheses when it binds weaker than precedence
    HEX_TREE,  // the same, but a constant in hexadecimal
    MASK_TREE, // the same, but a constant that has bits worth seeing in hexadecimal
    ARGUMENTS, // a list of arguments
    NEGATED,   // the opposite of a condition
    CAST,      // the type word number as a cast
    NUMBER
  };
  Kind kind;
  int precedence = 0;
  const NODE *tree = nullptr;
  const char *text = nullptr;
  std::int64_t number = 0;
};

// Work on trees is a list of pieces, not recursion: trees of a file may be deeper than the stack.
struct InfixState {
  bool in_use = false;
  bool cut = false; // a single word was too long for the text
  std::size_t length = 0;
  std::array<char, infix_text_size> text{};
  std::vector<Piece> pending; // the next piece last
  std::vector<NODE *> copies; // trees made for this text, which the pieces look at
};
InfixState infix;

Piece text_piece(const char *text) {
  return {Piece::Kind::TEXT, 0, nullptr, text, 0};
}
Piece tree_piece(const NODE *tree, int precedence, Piece::Kind kind = Piece::Kind::TREE) {
  return {kind, precedence, tree, nullptr, 0};
}
Piece arguments_piece(const NODE *tree) {
  return {Piece::Kind::ARGUMENTS, 0, tree, nullptr, 0};
}
Piece negated_piece(const NODE *tree) {
  return {Piece::Kind::NEGATED, 0, tree, nullptr, 0};
}
Piece cast_piece(TypeWord type) {
  return {Piece::Kind::CAST, 0, nullptr, nullptr, type};
}
Piece number_piece(std::int64_t number) {
  return {Piece::Kind::NUMBER, 0, nullptr, nullptr, number};
}

// Queues pieces in front of all that is pending.
void write_next(std::initializer_list<Piece> pieces) {
  infix.pending.insert(infix.pending.end(), std::rbegin(pieces), std::rend(pieces));
}

void append(std::string_view text) {
  const std::size_t room = infix.text.size() - reserve_behind_text - infix.length;
  if (text.size() > room) infix.cut = true;
  infix.length += text.copy(infix.text.data() + infix.length, room);
}

void append_number(std::int64_t number) {
  std::array<char, 24> digits;
  std::snprintf(digits.data(), digits.size(), "%lld", static_cast<long long>(number));
  append(digits.data());
}

// Bytes as a C string constant. Ends early, but closed, at the limit of the text.
void append_string(const char *bytes, std::size_t length) {
  constexpr std::string_view escaped = "\n\t\f\b\r\\\"";
  constexpr std::string_view letters = "ntfbr\\\"";
  append("\"");
  for (std::size_t i = 0; i < length; ++i) {
    if (infix.length >= infix_limit) {
      append("...");
      break;
    }
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const bool digit_follows = i + 1 < length && bytes[i + 1] >= '0' && bytes[i + 1] <= '9';
    std::array<char, 8> code;
    if (const std::size_t at = escaped.find(bytes[i]); at != escaped.npos)
      std::snprintf(code.data(), code.size(), "\\%c", letters[at]);
    else if (byte >= ' ' && byte <= '~')
      std::snprintf(code.data(), code.size(), "%c", byte);
    else
      std::snprintf(code.data(), code.size(), digit_follows ? "\\%03o" : "\\%o", byte);
    append(code.data());
  }
  append("\"");
}

std::string_view text_or_nil(const char *text) {
  return text ? text : "(nil)";
}

// The opcode's operator, else its name without padding.
const char *operator_text(Opcode op) {
  return opcode_table[op].text;
}
std::string_view bare_op_name(Opcode op) {
  std::string_view name = op_name(op);
  const std::size_t first = name.find_first_not_of(' ');
  return name.substr(first, name.find_last_not_of(' ') + 1 - first);
}

bool is_signed_constant(const NODE *node) {
  return node && node->op == ICON && is_scalar(node->type) && !is_derived(node->type) &&
         !is_unsigned_basic(node->type);
}
bool is_negative_constant(const NODE *node) {
  return is_signed_constant(node) && node->u.lval < 0;
}
bool is_zero(const NODE *node) {
  return node && node->op == ICON && node->u.lval == 0;
}

int precedence_of(const NODE *node) {
  if (node->op == FCON && node->aux.text && node->aux.text[0] == '-') return unary_precedence;
  return op_precedence(node->op);
}

// Markers and conversions without effect show as their operand.
const NODE *transparent_operand(const NODE *node) {
  switch (node->op) {
  case STARG:
  case DDNODE:
  case CSE_DUPE: return node->left;
  case CSE_ORIG: return node->right;
  case ACONV: return node->left && node->left->type == node->type ? node->left : nullptr;
  default: return nullptr;
  }
}
const NODE *through_markers(const NODE *node) {
  while (const NODE *operand = node ? transparent_operand(node) : nullptr)
    node = operand;
  return node;
}

// What one step of ++ or -- adds to the object: bytes for a pointer; 0 when that is not known.
std::int64_t step_of(const NODE *object) {
  if (!object || !is_pointer(object->type)) return 1;
  return object_bytes(underived(object->type), object_symbol(object), 0);
}
bool is_one_step(const NODE *object, const NODE *amount) {
  return amount->op == ICON && amount->u.lval == step_of(object);
}

void append_symbol_name(const SYM *sym) {
  append(text_or_nil(sym ? readable_name(sym->name, 0) : nullptr));
}

void append_hexadecimal(const NODE *constant) {
  std::array<char, 16> digits;
  std::snprintf(digits.data(), digits.size(), "0x%x%s",
                static_cast<std::uint32_t>(constant->u.lval),
                is_integer(constant->type) && is_unsigned_basic(constant->type) ? "u" : "");
  append(digits.data());
}

void append_integer(const NODE *node) {
  const char *text = constant_text(node->u.lval, node->type);
  const bool negative = is_negative_constant(node);
  append(negative ? "(" : "");
  append(text);
  append(negative ? ")" : "");
}

void append_float(const NODE *node) {
  std::string_view text = text_or_nil(node->aux.text);
  if (text.starts_with('+')) text.remove_prefix(1);
  append(text);
  if (node->type == FLOAT) append("F");
  if (node->type == LONG_DOUBLE) append("L");
}

void append_string_constant(const NODE *node) {
  if (!node->aux.text) return append("\"\"");
  std::size_t length = node->u.lval > 0 ? static_cast<std::size_t>(node->u.lval) : 0;
  if (length > 0 && node->aux.text[length - 1] == '\0') --length; // as C shows it
  append_string(node->aux.text, length);
}

void append_assembly(const NODE *node) {
  const std::string_view text = text_or_nil(node->aux.text);
  append("asm(");
  append_string(text.data(), text.size());
  append(")");
}

void append_pragma(const NODE *node) {
  const auto packed = static_cast<std::uint32_t>(node->u.lval);
  append("PRAGMA #");
  append_number(packed >> 8 & 255);
  append(" (");
  std::string_view rest(node->aux.text ? node->aux.text : "", node->aux.text ? packed >> 16 : 0);
  for (std::uint32_t i = 0; i < (packed & 255); ++i) {
    const std::string_view string = rest.substr(0, rest.find('\0'));
    append(i > 0 ? ", " : "");
    append(string);
    rest.remove_prefix(std::min(rest.size(), string.size() + 1));
    if (infix.length > infix_limit) break;
  }
  append(")");
}

void append_label(const char *prefix, std::int32_t index) {
  append(prefix);
  append_number(index);
}

// Leaves: text at once. False for a node with operands.
bool append_leaf(const NODE *node) {
  switch (node->op) {
  case LABELREF:
    append_label("goto g", node->aux.label ? node->aux.label->index : node->u.lval);
    return true;
  case LABELDEF: append_label("g", node->label ? node->label->index : 0); return true;
  case NAME: append_symbol_name(node->aux.sym ? node->aux.sym : node->u.sym); return true;
  case SCON: append_string_constant(node); return true;
  case ICON: append_integer(node); return true;
  case FCON: append_float(node); return true;
  case LCON: append(text_or_nil(node->aux.text)); return true;
  case ASM: append_assembly(node); return true;
  case PPRAGMA: append_pragma(node); return true;
  case URETURN: append(operator_text(URETURN)); return true;
  case UXCALL:
    append(text_or_nil(node->u.name));
    append("()");
    return true;
  case ILLOP: append(bare_op_name(ILLOP)); return true; // what hangs under a freed node is stale
  default:
    if (node->left || node->right) return false;
    append(*operator_text(node->op) ? operator_text(node->op) : bare_op_name(node->op));
    return true;
  }
}

bool is_right_associative(Opcode op) {
  switch (op) {
  case ASG_MULTIPLY:
  case ALTERNATIVES:
  case ASG_DIVIDE:
  case ASG_REMAINDER:
  case ASG_SHIFT_LEFT:
  case ASG_SHIFT_RIGHT:
  case STASG: return true;
  default: return false;
  }
}

bool is_bitwise(const NODE *node) {
  return node && (node->op == BIT_AND || node->op == BIT_OR || node->op == BIT_XOR);
}

// Is the right operand of op a mask, or compared with one?
bool right_is_mask(Opcode op, const NODE *left) {
  switch (op) {
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case ASG_AND:
  case ASG_OR:
  case ASG_XOR: return true;
  case EQ:
  case NE:
  case ULE:
  case ULT:
  case UGE:
  case UGT:
    while (left && left->op == ASSIGN)
      left = left->right;
    return is_bitwise(left);
  default: return false;
  }
}

// A plain operator between its operands, or in front of its only one. op stands in for the node's.
void write_operator(const NODE *node, Opcode op) {
  const int precedence = op_precedence(op);
  if (!node->right) {
    write_next({text_piece(operator_text(op)), tree_piece(node->left, precedence)});
    return;
  }
  const int tighter_left = is_right_associative(op) ? 1 : 0;
  write_next(
      {tree_piece(node->left, precedence + tighter_left), text_piece(operator_text(op)),
       tree_piece(node->right, precedence + 1 - tighter_left,
                  right_is_mask(op, node->left) ? Piece::Kind::MASK_TREE : Piece::Kind::TREE)});
}

// Nodes that the simplifier does not take, or that would stand for others in a copy.
bool is_pass_marker(const NODE *node) {
  switch (node->op) {
  case DDNODE:
  case CSE_DUPE:
  case CSE_ORIG:
  case ILLOP: return true;
  default: return false;
  }
}

bool holds_pass_marker(const NODE *tree) {
  for (; tree && tree->op != LABELDEF; tree = tree->left)
    if (is_pass_marker(tree) || holds_pass_marker(tree->right)) return true;
  return false;
}

// The opposite of a condition. One that has no opposite of its own shows as what a simplified copy
// makes of it, or under "!" where there can be none.
void print_negated(const NODE *tree) {
  const NODE *condition = through_markers(tree);
  if (!condition)
    write_next({tree_piece(condition, 0)});
  else if (condition->op == LOGICAL_NOT || (condition->op == EQ && is_zero(condition->right)))
    write_next({tree_piece(condition->left, 0)});
  else if (op_negated(condition->op) != ILLOP)
    write_operator(condition, op_negated(condition->op));
  else if (!negate_for_text || holds_pass_marker(condition))
    write_next({text_piece("!"), tree_piece(condition, unary_precedence)});
  else {
    NODE *opposite = negate_for_text(copy_tree(condition));
    infix.copies.push_back(opposite);
    write_next({tree_piece(opposite, 0)});
  }
}

void write_call(const NODE *node) {
  const NODE *callee = node->left;
  const NODE *arguments = op_arity(node->op) == 2 ? node->right : nullptr;
  if (callee && callee->op == ADDRESS)
    write_next({tree_piece(callee->left, primary_precedence), text_piece("("),
                arguments_piece(arguments), text_piece(")")});
  else
    write_next({text_piece("(*"), tree_piece(callee, unary_precedence), text_piece(")("),
                arguments_piece(arguments), text_piece(")")});
}

void write_cast(const NODE *node) {
  TypeWord type = node->type;
  if (node->op == ISP2CHAR)
    type = pointer_to((type & basic_type_mask) < first_unsigned_type ? CHAR : UNSIGNED_CHAR);
  if (node->op != SCONV && is_zero(node->left) && is_pointer(type))
    append("NULL");
  else
    write_next({cast_piece(type),
                tree_piece(node->left, unary_precedence,
                           is_pointer(type) ? Piece::Kind::HEX_TREE : Piece::Kind::TREE)});
}

// One pair of brackets: the level's terms, then its constant.
void queue_subscript(std::vector<Piece> &pieces, const Subscripts &subscripts, int level) {
  int at_level = 0;
  for (int i = 0; i < subscripts.term_count; ++i)
    at_level += subscripts.terms[i].level == level;
  const std::int64_t constant = subscripts.constants[level];
  const bool is_sum = at_level + (constant != 0) > 1;
  bool first = true;
  pieces.push_back(text_piece("["));
  for (int i = 0; i < subscripts.term_count; ++i) {
    const SubscriptTerm &term = subscripts.terms[i];
    if (term.level != level) continue;
    if (!first) pieces.push_back(text_piece("+"));
    if (term.factor != 1) {
      pieces.push_back(tree_piece(term.tree, product_precedence));
      pieces.push_back(text_piece("*"));
      pieces.push_back(number_piece(term.factor));
    } else {
      pieces.push_back(tree_piece(term.tree, !is_sum ? 0 : sum_precedence + !first));
    }
    first = false;
  }
  if (constant > 0 && !first) pieces.push_back(text_piece("+"));
  if (constant != 0 || first) pieces.push_back(number_piece(constant));
  pieces.push_back(text_piece("]"));
}

void write_access(const NODE *node) {
  const auto subscripts = find_subscripts(node);
  if (!subscripts) {
    write_next({text_piece("*"), tree_piece(node->left, unary_precedence)});
    return;
  }
  std::vector<Piece> pieces;
  if (subscripts->cast)
    pieces = {text_piece("("), cast_piece(subscripts->cast),
              tree_piece(subscripts->base, unary_precedence), text_piece(")")};
  else
    pieces = {tree_piece(subscripts->base, primary_precedence)};
  for (int level = 0; level < subscripts->levels; ++level)
    queue_subscript(pieces, *subscripts, level);
  infix.pending.insert(infix.pending.end(), pieces.rbegin(), pieces.rend());
}

void write_step(const NODE *node) {
  if (!node->right || is_one_step(node->left, node->right))
    write_next({tree_piece(node->left, unary_precedence), text_piece(operator_text(node->op))});
  else
    write_next({tree_piece(node->left, unary_precedence), text_piece(operator_text(node->op)),
                text_piece("{"), tree_piece(node->right, 0), text_piece("}")});
}

// x += 1 as ++x, where 1 is one step.
void write_stepping_assignment(const NODE *node) {
  if (node->right && is_one_step(node->left, node->right))
    write_next(
        {text_piece(node->op == ASG_ADD ? "++" : "--"), tree_piece(node->left, unary_precedence)});
  else
    write_operator(node, node->op);
}

void write_sum(const NODE *node) {
  if (is_negative_constant(node->right))
    write_next({tree_piece(node->left, sum_precedence), text_piece(operator_text(SUBTRACT)),
                number_piece(-std::int64_t{node->right->u.lval})});
  else
    write_operator(node, node->op);
}

// Pointer arithmetic counts its factor in bits; bytes are what a reader expects.
void write_scaling(const NODE *node) {
  const Piece left = tree_piece(node->left, product_precedence);
  const Piece sign = text_piece(operator_text(node->op));
  if (!node->right || node->right->op != ICON) {
    write_operator(node, node->op);
    return;
  }
  const std::int32_t bytes = node->right->u.lval / 8;
  if (bytes < 0)
    write_next({left, sign, text_piece("("), number_piece(bytes), text_piece(")")});
  else
    write_next({left, sign, number_piece(bytes)});
}

void write_if(const NODE *node) {
  const NODE *condition = node->left;
  if (condition && condition->op == ENDLOOP)
    write_next({text_piece("if ( --"), tree_piece(condition->left, unary_precedence),
                text_piece(" >= 0 ) ")});
  else
    write_next({text_piece("if ( "), tree_piece(condition, 0), text_piece(" ) ")});
}

void write_targets(const NODE *targets) {
  if (targets && targets->op == COMMA)
    write_next(
        {tree_piece(targets->left, 0), text_piece("; else "), tree_piece(targets->right, 0)});
  else
    write_next({tree_piece(targets, 0)});
}

// The statements that transfer control.
bool write_transfer(const NODE *node) {
  switch (node->op) {
  case BRANCH: write_next({tree_piece(node->left, 0)}); return true;
  case CBRANCH:
    write_next({text_piece("if ( "), negated_piece(node->left), text_piece(" ) "),
                tree_piece(node->right, 0)});
    return true;
  case IF:
    write_targets(node->right);
    write_if(node); // in front of the targets
    return true;
  case SWITCH:
    write_next({text_piece("switch ( "), tree_piece(node->left, 0), text_piece(" ) {...}")});
    return true;
  case LOOP:
    write_next({text_piece("LOOP("), tree_piece(node->left, 0), text_piece("):")});
    return true;
  case ENDLOOP:
    if (node->right) write_next({tree_piece(node->right, 0)});
    write_next(
        {text_piece("if ( --"), tree_piece(node->left, unary_precedence), text_piece(" >= 0 ) ")});
    return true;
  case RETURN: // the left operand names the function
    write_next(
        {text_piece(operator_text(RETURN)), tree_piece(node->right ? node->right : node->left, 0)});
    return true;
  default: return false;
  }
}

void write_expression(const NODE *node) {
  switch (node->op) {
  case XCALL:
  case ICALL:
    append(text_or_nil(node->u.name));
    write_next({text_piece("("), arguments_piece(node->left), text_piece(")")});
    break;
  case CALL:
  case UCALL:
  case STCALL:
  case USTCALL: write_call(node); break;
  case SCONV:
  case PCONV:
  case ACONV:
  case ISP2CHAR: write_cast(node); break;
  case IDENTITY: write_next({text_piece("{"), tree_piece(node->left, 0), text_piece("}")}); break;
  case DEREF: write_access(node); break;
  case INCREMENT:
  case DECREMENT: write_step(node); break;
  case ASG_ADD:
  case ASG_SUBTRACT: write_stepping_assignment(node); break;
  case ADD: write_sum(node); break;
  case PMCONV:
  case PVCONV: write_scaling(node); break;
  case CONDITIONAL:
    write_next({text_piece("("), tree_piece(node->left, 0), text_piece(") ? "),
                tree_piece(node->right, op_precedence(CONDITIONAL))});
    break;
  case ARASG:
    write_next({tree_piece(node->left, op_precedence(ARASG)), text_piece("[] = {...}")});
    break;
  case ABS:
  case SQRT:
  case SQUARE:
  case NASSERT:
  case ASSERT:
  case MEMCPY:
  case TOIEEE:
  case FRIEEE:
    write_next({text_piece(operator_text(node->op)), text_piece("("), arguments_piece(node->left),
                text_piece(")")});
    break;
  default: write_operator(node, node->op); break;
  }
}

void write_tree(const NODE *tree, int precedence) {
  const NODE *node = through_markers(tree);
  if (!node)
    append("(nil)");
  else if (precedence > precedence_of(node))
    write_next({text_piece("("), tree_piece(node, 0), text_piece(")")});
  else if (!append_leaf(node) && !write_transfer(node))
    write_expression(node);
}

void write_constant_or_tree(const Piece &piece) {
  const NODE *node = through_markers(piece.tree);
  if (!node || node->op != ICON) return write_tree(node, piece.precedence);
  const auto value = static_cast<std::uint32_t>(node->u.lval);
  const bool above = is_signed_constant(node) ? node->u.lval > largest_decimal_mask
                                              : value > std::uint32_t{largest_decimal_mask};
  if (piece.kind == Piece::Kind::HEX_TREE || above)
    append_hexadecimal(node);
  else
    append_integer(node);
}

void write_arguments(const NODE *arguments) {
  if (!arguments) return;
  if (arguments->op == COMMA)
    write_next({arguments_piece(arguments->left), text_piece(operator_text(COMMA)),
                arguments_piece(arguments->right)});
  else
    write_tree(arguments, argument_precedence);
}

void write_piece(const Piece &piece) {
  switch (piece.kind) {
  case Piece::Kind::TEXT: append(piece.text); break;
  case Piece::Kind::TREE: write_tree(piece.tree, piece.precedence); break;
  case Piece::Kind::HEX_TREE:
  case Piece::Kind::MASK_TREE: write_constant_or_tree(piece); break;
  case Piece::Kind::ARGUMENTS: write_arguments(piece.tree); break;
  case Piece::Kind::NEGATED: print_negated(piece.tree); break;
  case Piece::Kind::CAST: append(type_text(static_cast<TypeWord>(piece.number))); break;
  case Piece::Kind::NUMBER: append_number(piece.number); break;
  }
}

} // namespace

ConditionNegation negate_for_text = nullptr;

InfixTextClaim::InfixTextClaim() : granted(!infix.in_use) {
  infix.in_use = true;
}

InfixTextClaim::~InfixTextClaim() {
  if (granted) infix.in_use = false;
}

const char *tree2infix(const NODE *tree) {
  const InfixTextClaim claim;
  if (!claim.granted) return "+*+*+ tree2infix called recursively +*+*+";
  infix.length = 0;
  infix.cut = false;
  infix.pending.clear();
  if (tree && tree->op == COMMA_OP) append("PARALLEL ASSIGNMENTS: ");
  write_next({tree_piece(tree, 0)});
  while (!infix.pending.empty() && infix.length <= infix_limit) {
    const Piece piece = infix.pending.back();
    infix.pending.pop_back();
    write_piece(piece);
  }
  const bool complete = infix.pending.empty() && !infix.cut;
  const std::string_view end = complete ? ";" : "...;";
  infix.length += end.copy(infix.text.data() + infix.length, end.size());
  infix.text[infix.length] = '\0';
  for (NODE *copy : infix.copies)
    erase_tree(copy);
  infix.copies.clear();
  return infix.text.data();
}

char *tree2infix_line(const NODE *tree, int line, std::span<char> buffer) {
  const char *text = tree2infix(tree);
  std::snprintf(buffer.data(), buffer.size(), "%s %d\t-----------------------    %s",
                line > 999 ? "**" : "***", line, text);
  if (line == 0) buffer[4] = ' ';
  buffer[0] = ';'; // makes it a comment of the listing
  return buffer.data();
}

char *label_comment(int index, std::span<char> buffer) {
  std::snprintf(buffer.data(), buffer.size(), "%c**\t-----------------------g%d:", ';', index);
  return buffer.data();
}

} // namespace velkor
