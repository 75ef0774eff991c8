#include "icode/tree_reader.h"

#include "core/conversions.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "icode/input.h"
#include "icode/source_file.h"
#include "simplify/constant_text.h"

#include <array>
#include <cstring>

namespace velkor {
namespace {

NODE *read_node(int depth);

// The file's two qualifier bits, moved to where the node's type wants them.
std::uint8_t value_qualifiers(std::uint8_t bits, TypeWord type) {
  const unsigned low = bits & 3u;
  return static_cast<std::uint8_t>(is_derived(type) ? low << 4 : low);
}

SYM *take_symbol() {
  const int level = take_s16();
  const int index = take_s16();
  return sym_find(level, index);
}

// What the reader has to do about an opcode besides reading its record.
struct OpcodeTraits {
  std::uint8_t fixed_bytes = 0; // of the record, from the opcode to the last field of fixed size
  bool precedes_node = false;   // no node at all: filler, a source file record, DDNODE
  bool needs_look = false;      // a shape to check, a rewrite, or an opcode that may not be here
  bool refers_to_label = false; // may have a LABELREF as operand
  bool lists_cases = false;     // a case of a SWITCH, or a list that may hold some
};

constexpr std::size_t fixed_field_bytes(RecordFields fields) {
  switch (fields) {
  case RecordFields::NO_TYPE:
  case RecordFields::NONE:
  case RecordFields::TEXT: return 0;
  case RecordFields::VALUE:
  case RecordFields::SIZE:
  case RecordFields::SYMBOL: return 4;
  case RecordFields::QUAL_SYMBOL:
  case RecordFields::QUAL_SIZE:
  case RecordFields::SYMBOL_QUAL: return 5;
  case RecordFields::BYTES: return 2;
  case RecordFields::SWITCH_SUMMARY: return 6;
  case RecordFields::QUAL: return 1;
  }
  return 0;
}

constexpr std::array<OpcodeTraits, 256> opcode_traits = [] {
  std::array<OpcodeTraits, 256> traits{};
  for (std::size_t op = 0; op < traits.size(); ++op)
    traits[op].fixed_bytes =
        static_cast<std::uint8_t>(3 + fixed_field_bytes(opcode_table[op].fields));
  for (const int op : {int{RECORD_FILLER}, int{RECORD_SOURCE_FILE}, int{DDNODE}})
    traits[static_cast<std::size_t>(op)].precedes_node = true;
  for (const Opcode op : {MEMBER,  ARROW, CONDITIONAL, BRANCH, DEFAULT, CBRANCH, CASE,
                          SWITCH,  CALL,  STCALL,      XCALL,  UCALL,   USTCALL, UXCALL,
                          ADDRESS, LOOP,  ENDLOOP,     PMCONV, PVCONV,  NASSERT, ASSERT})
    traits[op].needs_look = true;
  for (const Opcode op : {BRANCH, DEFAULT, CBRANCH, CASE, ENDLOOP})
    traits[op].refers_to_label = true;
  for (const Opcode op : {COMMA, CASE, DEFAULT})
    traits[op].lists_cases = true;
  return traits;
}();

// A local name that lives at file level by now is found among the function's statics.
SYM *redirect_static(SYM *sym) {
  if (sym->level > 0 && state.cur_fun)
    for (const STATIC_CELL *cell = state.cur_fun->statics; cell; cell = cell->next)
      if (std::strcmp(cell->sym->name, sym->name) == 0) return cell->sym;
  return sym;
}

void set_symbol(NODE *node, SYM *sym) {
  node->u.sym = sym;
  if (!sym) return;
  node->qual = static_cast<std::uint8_t>(sym->squal);
  node->depnum = node->type == ENUM && sym->tag ? sym->tag->size : sym->size;
}

void read_name_fields(NODE *node) {
  input.cursor += 1; // the qualifier byte: the symbol knows better
  SYM *sym = take_symbol();
  if (!sym) bad_input("a name without a symbol");
  sym = redirect_static(sym);
  set_symbol(node, sym);
  if (sym->sclass != C_FIELD) return;
  if (sym->size < 1 || sym->size > 32) bad_input("a bit field of %d bits", sym->size);
  state.has_bit_fields = true;
}

void read_bytes(NODE *node) {
  const int length = take_s16();
  if (length < 0) bad_input("a string constant of %d bytes", length);
  need(static_cast<std::size_t>(length));
  node->u.lval = length;
  node->aux.text = copy_text(state.lexical_level, {reinterpret_cast<const char *>(input.cursor),
                                                   static_cast<std::size_t>(length)});
  input.cursor += length;
}

// An optional minus and digits; what is too large wraps.
std::int32_t decimal_value(std::string_view text) {
  const bool negative = !text.empty() && text[0] == '-';
  std::uint32_t value = 0;
  for (std::size_t at = negative ? 1 : 0; at < text.size() && text[at] >= '0' && text[at] <= '9';
       ++at)
    value = value * 10 + static_cast<std::uint32_t>(text[at] - '0');
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

std::int32_t constant_of_type(std::int32_t value, TypeWord type) {
  return is_integer(type) ? wrap_to_type(value, type) : value;
}

void read_text(NODE *node) {
  const std::string_view text = take_string();
  switch (node->op) {
  case FCON: node->aux.text = canon_float_text(text, state.lexical_level != 0); break;
  case LCON:
    node->op = ICON;
    node->u.lval = constant_of_type(decimal_value(text), node->type);
    break;
  default: node->u.name = copy_text(state.lexical_level, text);
  }
}

// The fields behind the type word; those of fixed size are known to be in the block.
void read_fields(NODE *node) {
  switch (opcode_table[node->op].fields) {
  case RecordFields::NONE:
  case RecordFields::NO_TYPE: break;
  case RecordFields::VALUE:
    node->u.lval = take_s32();
    if (node->op == ICON) node->u.lval = constant_of_type(node->u.lval, node->type);
    break;
  case RecordFields::QUAL_SYMBOL: read_name_fields(node); break;
  case RecordFields::BYTES: read_bytes(node); break;
  case RecordFields::TEXT: read_text(node); break;
  case RecordFields::QUAL_SIZE:
    node->qual = value_qualifiers(take_u8(), node->type);
    node->depnum = take_s32();
    break;
  case RecordFields::SWITCH_SUMMARY:
    node->depnum = take_s16();
    node->u.lval = take_s32();
    break;
  case RecordFields::QUAL:
    node->qual = node->op == CALL ? take_u8() : value_qualifiers(take_u8(), node->type);
    break;
  case RecordFields::SYMBOL: set_symbol(node, take_symbol()); break;
  case RecordFields::SYMBOL_QUAL:
    set_symbol(node, take_symbol());
    node->qual = take_u8();
    break;
  case RecordFields::SIZE: node->depnum = take_s32(); break;
  }
}

// Each integer argument goes through an ACONV of its own type: the argument's slot is wider.
NODE *wrap_argument(NODE *argument) {
  if (argument->op == ACONV || !is_integer(argument->type)) return argument;
  return make_node(ACONV, argument, nullptr, argument->type);
}

NODE *wrap_arguments(NODE *arguments) {
  NODE **link = &arguments;
  for (; (*link)->op == COMMA; link = &(*link)->left)
    (*link)->right = (*link)->right->op == COMMA ? wrap_arguments((*link)->right)
                                                 : wrap_argument((*link)->right);
  *link = wrap_argument(*link);
  return arguments;
}

NODE *rewrite_loop(NODE *node) {
  if (node->right->op != ICON) bad_input("a LOOP without a label number");
  const std::int32_t index = node->right->u.lval;
  if (index < 1 || index > max_label_index) bad_input("a LOOP with label number %d", index);
  erase_tree(node);
  NODE *definition = make_labeldef(label_new(index, nullptr, nullptr));
  definition->depnum = 0;
  return definition;
}

NODE *rewrite_endloop(NODE *node) {
  NODE *counter = node->left;
  NODE *step = make_node(ASG_SUBTRACT, counter, make_icon(1, counter->type), counter->type);
  node->left = make_node(LT, step, make_icon(0, step->type), INT);
  node->op = CBRANCH;
  return node;
}

NODE *rewrite_pointer_multiply(NODE *node) {
  if (node->right->op != ICON) bad_input("a PMCONV without a constant size");
  node->op = MULTIPLY;
  node->right->u.lval /= 8;
  if (type_width(node->type) != type_width(node->left->type))
    node->left = convert_tree(node->type, node->left);
  return node;
}

NODE *rewrite_nassert(NODE *node) {
  if (has_side_effects(node->left)) {
    state.assertions_present = true;
    return node;
  }
  node->left = erase_tree(node->left);
  node->op = ICON;
  node->u.lval = 0;
  return node;
}

void rewrite_assert(NODE *node) {
  NODE *pair = node->left;
  if (pair->op != COMMA || pair->right->op != SCON) return; // a condition without a text
  node->aux.text = pair->right->aux.text;
  node->left = pair->left;
}

// An address of a local means that another activation's locals may be reached.
void note_address(const NODE *node) {
  const NODE *object = node->left;
  while (object->op == MEMBER)
    object = object->left;
  if (object->op == NAME && is_frame_class(object->u.sym->sclass)) state.local_address_taken = true;
}

NODE *rewrite(NODE *node) {
  switch (node->op) {
  case CALL:
  case STCALL:
    state.function_is_leaf = false;
    node->right = wrap_arguments(node->right);
    return node;
  case XCALL:
    state.function_is_leaf = false;
    node->left = wrap_arguments(node->left);
    return node;
  case UCALL:
  case USTCALL:
  case UXCALL: state.function_is_leaf = false; return node;
  case ADDRESS: note_address(node); return node;
  case LOOP: return rewrite_loop(node);
  case ENDLOOP: return rewrite_endloop(node);
  case PMCONV: return rewrite_pointer_multiply(node);
  case NASSERT: return rewrite_nassert(node);
  case ASSERT: rewrite_assert(node); return node;
  default: return node;
  }
}

bool is_case_list(const NODE *list) {
  for (; list->op == COMMA; list = list->left)
    if (list->right->op != CASE && list->right->op != DEFAULT) return false;
  return list->op == CASE || list->op == DEFAULT;
}

// What the passes take for granted of a node's operands.
const char *shape_fault(const NODE *node) {
  switch (node->op) {
  case MEMBER:
  case ARROW: return node->right->op == NAME ? nullptr : "a member access without a member";
  case CONDITIONAL: return node->right->op == ALTERNATIVES ? nullptr : "a ? without its two values";
  case BRANCH:
  case DEFAULT: return node->left->op == LABELREF ? nullptr : "a transfer without a label";
  case CBRANCH:
  case ENDLOOP: return node->right->op == LABELREF ? nullptr : "a branch without a label";
  case CASE:
    return node->left->op == ICON && node->right->op == LABELREF
               ? nullptr
               : "a CASE without a constant and a label";
  case PVCONV: return node->right->op == ICON ? nullptr : "a PVCONV without a constant size";
  case SWITCH: return is_case_list(node->right) ? nullptr : "a SWITCH without a list of cases";
  default: return nullptr;
  }
}

bool may_stand_in_file(std::uint8_t op) {
  switch (op) {
  case ENDINIT: // read by the reader of initial values
  case PPRAGMA:
  case ASM:
  case IF:
  case LABELDEF:
  case INITLOOP:
  case LIVEINFO:
  case ILLOP: // marks freed nodes
  case CSE_DUPE:
  case CSE_ORIG:
  case RECORD_END_OF_FILE: return false;
  default: return true;
  }
}

// Steps over a record that yields no node; its first byte has been taken.
void skip_to_node(std::uint8_t op) {
  switch (op) {
  case RECORD_FILLER: read_block(); break;
  case RECORD_SOURCE_FILE: read_source_file(false); break;
  default: // DDNODE
    need(ddnode_field_bytes);
    input.cursor += ddnode_field_bytes;
  }
}

std::uint8_t take_opcode() {
  for (;;) {
    need(1);
    const std::uint8_t op = take_u8();
    if (!opcode_traits[op].precedes_node) [[likely]]
      return op;
    skip_to_node(op);
  }
}

NODE *new_node(std::uint8_t op, TypeWord type) {
  auto *node = static_cast<NODE *>(lalloc(sizeof(NODE)));
  node->u.sym = nullptr;
  node->left = node->right = nullptr;
  node->aux.text = nullptr;
  node->depnum = -1;
  node->nsize = 0;
  node->type = static_cast<std::uint16_t>(type);
  node->qual = 0;
  node->op = static_cast<Opcode>(op);
  return node;
}

bool has_case(const NODE *list) {
  for (; list->op == COMMA; list = list->left)
    if (has_case(list->right)) return true;
  return list->op == CASE || list->op == DEFAULT;
}

// Labels are looked up under transfers of control only, so none may stand elsewhere.
[[noreturn]] void bad_label_place() {
  bad_input("a label inside an expression");
}

NODE *read_operand(const NODE *parent, int depth) {
  NODE *node = read_node(depth + 1);
  if (op_effect(node->op) == TRANSFERS) bad_input("a transfer of control inside an expression");
  if (node->op == LABELREF && !opcode_traits[parent->op].refers_to_label) bad_label_place();
  if (opcode_traits[node->op].lists_cases && parent->op != COMMA && parent->op != SWITCH &&
      has_case(node))
    bad_label_place();
  return node;
}

NODE *read_node(int depth) {
  if (depth >= max_tree_depth) bad_input("a tree of more than %d levels", max_tree_depth);
  const std::uint8_t op = take_opcode();
  if (op == ENDINIT && depth == 0) return new_node(ENDINIT, VOID);
  if (!may_stand_in_file(op)) bad_input("opcode %d where a tree is expected", op);
  const OpcodeTraits traits = opcode_traits[op];
  need(traits.fixed_bytes - 1u);
  TypeWord type = take_u16();
  if (op == SCONV && type == ENUM) type = INT;
  NODE *node = new_node(op, type);
  const int arity = op_arity(op);
  read_fields(node);
  if (arity > 0) node->left = read_operand(node, depth);
  if (arity > 1) node->right = read_operand(node, depth);
  if (!traits.needs_look) [[likely]]
    return node;
  if (const char *fault = shape_fault(node)) bad_input("%s", fault);
  return rewrite(node);
}

} // namespace

NODE *read_tree() {
  NODE *tree = read_node(0);
  if (tree->op == LABELREF || has_case(tree)) bad_label_place();
  return tree;
}

} // namespace velkor
