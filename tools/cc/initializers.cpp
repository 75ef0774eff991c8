#include "cc/initializers.h"

#include "cc/expressions.h"
#include "cc/leaves.h"
#include "cc/places.h"
#include "cc/symbols.h"
#include "cc/trees.h"
#include "cc/types.h"

#include <algorithm>
#include <map>

namespace velkor::cc {

namespace {

// What a memory image is put together from; offsets and sizes in bits from its start.
struct Piece {
  std::int64_t offset = 0;
  std::int64_t size = 0;
  NodeIndex tree = no_node;
};
struct Image {
  std::vector<Piece> pieces;
  std::map<std::int64_t, std::uint8_t> field_bytes; // of bit fields, by byte offset
};

bool is_file_level(const clang::VarDecl *variable) {
  return variable->hasGlobalStorage() && !variable->isStaticLocal();
}

// The address that a constant pointer is based on, or no_node when its object is not known before
// the program runs. With file_level_only, objects of functions do not count.
NodeIndex base_address(Unit &unit, const clang::APValue::LValueBase &base, bool file_level_only,
                       SourceLocation where) {
  if (const auto *decl = base.dyn_cast<const clang::ValueDecl *>()) {
    if (const auto *function = llvm::dyn_cast<clang::FunctionDecl>(decl)) {
      const SymbolReference symbol = slot_reference(unit, function_slot(unit, function));
      return address_of(unit, place_of_symbol(unit, symbol, function->getType()),
                        pointer_to(symbol.stype), where);
    }
    const auto *variable = llvm::dyn_cast<clang::VarDecl>(decl);
    if (variable == nullptr || !variable->hasGlobalStorage() ||
        (file_level_only && !is_file_level(variable))) {
      return no_node;
    }
    const SymbolReference symbol = variable_reference(unit, variable);
    const TypeWord own = is_array(symbol.stype) ? underived(symbol.stype) : symbol.stype;
    return make_unary(unit, ADDRESS, pointer_to(own), make_name(unit, symbol));
  }
  const auto *expression = base.dyn_cast<const Expr *>();
  if (expression == nullptr) {
    return no_node;
  }
  if (const auto *literal = llvm::dyn_cast<clang::StringLiteral>(expression)) {
    return literal_address(unit, literal);
  }
  if (const auto *predefined = llvm::dyn_cast<clang::PredefinedExpr>(expression)) {
    return literal_address(unit, predefined->getFunctionName());
  }
  if (const auto *literal = llvm::dyn_cast<clang::CompoundLiteralExpr>(expression);
      literal != nullptr && literal->isFileScope()) {
    const SymbolReference symbol = slot_reference(unit, compound_literal_slot(unit, literal));
    const TypeWord own = is_array(symbol.stype) ? underived(symbol.stype) : symbol.stype;
    return make_unary(unit, ADDRESS, pointer_to(own), make_name(unit, symbol));
  }
  return no_node;
}

NodeIndex address_tree(Unit &unit, const clang::APValue &value, TypeWord type, bool file_level_only,
                       SourceLocation where) {
  const std::int64_t offset = value.getLValueOffset().getQuantity();
  if (!value.getLValueBase()) {
    const NodeIndex number = make_integer(unit, INT, offset);
    return is_pointer(type) ? make_unary(unit, PCONV, type, number)
                            : make_integer(unit, type, offset);
  }
  NodeIndex tree = base_address(unit, value.getLValueBase(), file_level_only, where);
  if (tree == no_node) {
    return no_node;
  }
  if (is_pointer(type)) {
    tree = convert_pointer(unit, tree, type);
  }
  if (offset != 0) {
    tree = make_binary(unit, ADD, type_of(unit, tree), tree, make_integer(unit, INT, offset));
  }
  return is_pointer(type) ? tree : make_unary(unit, SCONV, type, tree);
}

// The tree of a scalar that is known before the program runs, or no_node.
NodeIndex constant_tree(Unit &unit, const Leaf &leaf, TypeWord type, bool file_level_only,
                        SourceLocation where) {
  if (leaf.element) {
    return make_integer(unit, type, *leaf.element);
  }
  if (leaf.value == nullptr) {
    return make_zero(unit, type);
  }
  Expr::EvalResult result;
  if (leaf.value->isValueDependent() || !leaf.value->EvaluateAsRValue(result, unit.context) ||
      result.HasSideEffects) {
    return no_node;
  }
  if (result.Val.isInt()) {
    const std::int64_t number = result.Val.getInt().getExtValue();
    return is_pointer(type) ? make_unary(unit, PCONV, type, make_integer(unit, INT, number))
                            : make_integer(unit, type, number);
  }
  if (result.Val.isLValue()) {
    return address_tree(unit, result.Val, type, file_level_only, where);
  }
  return folded_number(unit, leaf.value);
}

void pack_bit_field(Image &image, const Leaf &leaf, std::uint32_t value) {
  for (std::int64_t bit = 0; bit < leaf.size; ++bit) {
    const std::int64_t place = leaf.offset + bit;
    const unsigned mask = 1u << place % 8;
    std::uint8_t &byte = image.field_bytes[place / 8];
    byte = static_cast<std::uint8_t>((value >> bit & 1) != 0 ? byte | mask : byte & ~mask);
  }
}

// Adds a leaf to the image. False when its value is not known before the program runs.
bool add_to_image(Unit &unit, Image &image, const Leaf &leaf, bool file_level_only,
                  SourceLocation where) {
  if (leaf.type->isRecordType()) {
    return false;
  }
  const TypeWord type = leaf.field != nullptr ? TypeWord{bit_field_type(leaf.field)}
                                              : type_word(unit, leaf.type, where);
  const NodeIndex tree = constant_tree(unit, leaf, type, file_level_only, where);
  if (tree == no_node) {
    return false;
  }
  if (leaf.field == nullptr) {
    image.pieces.push_back({leaf.offset, leaf.size, tree});
    return true;
  }
  if (unit.file.nodes[tree].op != ICON) {
    return false;
  }
  pack_bit_field(image, leaf, static_cast<std::uint32_t>(unit.file.nodes[tree].value));
  return true;
}

// The trees of an image in memory order. Each writes its own width; SKIPs stand for the holes.
std::vector<NodeIndex> image_trees(Unit &unit, Image &image) {
  for (const auto &[byte, value] : image.field_bytes) {
    image.pieces.push_back({byte * 8, 8, make_integer(unit, UNSIGNED_CHAR, value)});
  }
  std::stable_sort(image.pieces.begin(), image.pieces.end(),
                   [](const Piece &a, const Piece &b) { return a.offset < b.offset; });
  std::vector<NodeIndex> trees;
  trees.reserve(image.pieces.size());
  std::int64_t cursor = 0;
  for (const Piece &piece : image.pieces) {
    if (piece.offset > cursor) {
      file::Node skip;
      skip.op = SKIP;
      skip.value = static_cast<std::int32_t>(piece.offset - cursor);
      trees.push_back(unit.file.add(std::move(skip)));
    }
    trees.push_back(piece.tree);
    cursor = piece.offset + piece.size;
  }
  return trees;
}

void set_image(Unit &unit, file::Symbol &symbol, Image &image) {
  std::int64_t size = symbol.size;
  symbol.value = image_trees(unit, image);
  if (!image.pieces.empty()) {
    // A flexible array member extends the object behind its type's size.
    const Piece &last = image.pieces.back();
    size = std::max<std::int64_t>(size, (last.offset + last.size + symbol.align - 1) /
                                            symbol.align * symbol.align);
  }
  symbol.has_value = !symbol.value.empty();
  symbol.size = static_cast<std::int32_t>(size);
  symbol.final_size = symbol.size;
  symbol.final_dims = symbol.dims;
}

NodeIndex leaf_value(Unit &unit, const Leaf &leaf, SourceLocation where) {
  const std::uint16_t type = node_type(unit, leaf.type, where);
  if (leaf.element) {
    return make_integer(unit, type, *leaf.element);
  }
  return leaf.value == nullptr ? make_zero(unit, type) : value_of(unit, leaf.value);
}

NodeIndex store_leaf(Unit &unit, const SymbolReference &symbol, QualType type, const Leaf &leaf,
                     SourceLocation where) {
  Place place = place_of_symbol(unit, symbol, type);
  for (const Step &step : leaf.path) {
    if (step.field == nullptr) {
      place = element_of(unit, place, step.index, where);
      continue;
    }
    QualType member = step.field->getType();
    if (place.type.isVolatileQualified()) {
      member.addVolatile();
    }
    place = member_of(unit, place, step.field, member, false);
  }
  const NodeIndex value = leaf_value(unit, leaf, where);
  return store(unit, place, value, where);
}

// Copies a static image over the whole local object.
NodeIndex copy_image(Unit &unit, const SymbolReference &symbol, QualType type, Image &image,
                     SourceLocation where) {
  file::Symbol record = make_symbol(unit, "", type.getUnqualifiedType(), C_STAT, false, where);
  int tag = record.tag_index;
  if (type->isArrayType()) {
    tag = array_image_tag(unit, type, where);
    const file::Symbol &tag_record = unit.slots[tag].symbol;
    record.stype = STRUCT;
    record.dims.clear();
    record.tag_level = 0;
    record.tag_index = static_cast<std::int16_t>(tag);
    record.tag_name = tag_record.name;
    record.size = tag_record.size;
    record.align = tag_record.align;
    record.squal = 0;
  }
  set_image(unit, record, image);
  const std::int32_t size = record.size;
  const TypeWord struct_word = record.stype;
  const int slot = anonymous_slot(unit, "init", std::move(record), where);
  Place target = place_of_symbol(unit, symbol, type);
  NodeIndex left = target.node;
  if (type->isArrayType()) {
    file::Node access;
    access.op = DEREF;
    access.type = STRUCT;
    access.qual = type.isVolatileQualified() ? 2 : 0;
    access.size = size;
    access.left = address_of(unit, target, pointer_to(STRUCT), where);
    left = unit.file.add(std::move(access));
  }
  const NodeIndex source = make_name(unit, slot_reference(unit, slot));
  const NodeIndex copy = make_binary(unit, STASG, struct_word, left, source);
  unit.file.nodes[copy].index = static_cast<std::int16_t>(tag);
  return copy;
}

} // namespace

void set_static_value(Unit &unit, file::Symbol &symbol, QualType type, const Expr *value,
                      SourceLocation where) {
  Image image;
  for_each_leaf(unit, value, type, LeafOrder::SPARSE, [&](const Leaf &leaf) {
    const SourceLocation place = leaf.value != nullptr ? leaf.value->getExprLoc() : where;
    if (!add_to_image(unit, image, leaf, unit.function == nullptr, place)) {
      report_error(unit, place, "initial value is not constant on the target");
    }
  });
  set_image(unit, symbol, image);
}

std::vector<NodeIndex> initializing_trees(Unit &unit, const SymbolReference &symbol, QualType type,
                                          const Expr *value, SourceLocation where) {
  std::vector<NodeIndex> trees;
  const bool is_aggregate = type->isRecordType() || type->isArrayType();
  if (!is_aggregate || !is_aggregate_value(value)) {
    const NodeIndex result = value_of(unit, value);
    trees.push_back(store(unit, place_of_symbol(unit, symbol, type), result, where));
    return trees;
  }
  if (count_leaves(unit, type) <= max_direct_leaves && !contains_uneven_union(unit, type)) {
    for_each_leaf(unit, value, type, LeafOrder::DENSE, [&](const Leaf &leaf) {
      trees.push_back(store_leaf(unit, symbol, type, leaf, where));
    });
    return trees;
  }
  Image image;
  std::vector<Leaf> computed;
  for_each_leaf(unit, value, type, LeafOrder::SPARSE, [&](const Leaf &leaf) {
    if (!add_to_image(unit, image, leaf, true, where)) {
      computed.push_back(leaf);
    }
  });
  trees.push_back(copy_image(unit, symbol, type, image, where));
  for (const Leaf &leaf : computed) {
    trees.push_back(store_leaf(unit, symbol, type, leaf, where));
  }
  return trees;
}

int compound_literal_slot(Unit &unit, const clang::CompoundLiteralExpr *literal) {
  if (const auto found = unit.literal_slots.find(literal); found != unit.literal_slots.end()) {
    return found->second;
  }
  const SourceLocation where = literal->getExprLoc();
  const QualType type = literal->getType();
  file::Symbol symbol = make_symbol(unit, "", type, C_STAT, false, where);
  set_static_value(unit, symbol, type, literal->getInitializer(), where);
  const int slot = anonymous_slot(unit, "literal", std::move(symbol), where);
  unit.literal_slots[literal] = slot;
  return slot;
}

} // namespace velkor::cc
