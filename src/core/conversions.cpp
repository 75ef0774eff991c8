#include "core/conversions.h"

#include "core/nodes.h"
#include "core/options.h"
#include "core/questions.h"
#include "simplify/rule_sets.h"

namespace velkor {
namespace {

// Does the inner of two integer conversions lose nothing that the outer one keeps?
bool inner_conversion_is_needless(TypeWord outer, const NODE *inner) {
  const TypeWord source = inner->left->type;
  if (!is_integer(outer) || !is_integer(inner->type) || !is_integer(source)) return false;
  const std::int32_t width = type_width(inner->type);
  return width >= type_width(outer) && width >= type_width(source);
}

// *(type *)&name: the object's bytes read as another type.
NODE *reinterpret_name(TypeWord type, NODE *name) {
  NODE *address = make_node(ADDRESS, name, nullptr, pointer_to(name->type));
  NODE *pointer = make_node(PCONV, address, nullptr, pointer_to(type));
  NODE *access = make_node(DEREF, pointer, nullptr, type);
  access->depnum = is_pointer(type) ? pointer_width : type_width(type);
  return access;
}

} // namespace

TypeWord promote_type(TypeWord type) {
  if (is_derived(type)) return type;
  switch (type) {
  case CHAR:
  case SHORT:
  case INT:
  case ENUM: return INT;
  case UNSIGNED_CHAR:
  case UNSIGNED_SHORT: return options.opt_unsigned_preserving ? UNSIGNED : INT;
  default: return type;
  }
}

TypeWord balance_type(const NODE *a, const NODE *b) {
  if (is_derived(a->type)) return a->type;
  if (is_derived(b->type)) return b->type;
  const TypeWord first = promote_type(a->type);
  const TypeWord second = promote_type(b->type);
  const auto either = [&](TypeWord type) { return first == type || second == type; };
  for (const TypeWord type : {LONG_DOUBLE, DOUBLE, FLOAT, UNSIGNED_LONG})
    if (either(type)) return type;
  if (either(LONG) && either(UNSIGNED)) return UNSIGNED_LONG;
  if (either(LONG)) return LONG;
  return either(UNSIGNED) ? UNSIGNED : INT;
}

NODE *convert_tree(TypeWord type, NODE *tree) {
  if (type == ENUM) type = INT;
  if (tree->op == ALTERNATIVES) {
    tree->left = convert_tree(type, tree->left);
    tree->right = convert_tree(type, tree->right);
    tree->type = static_cast<std::uint16_t>(type);
    return tree;
  }
  if (tree->op == NAME && is_struct_or_union(tree->type) && is_scalar(type))
    return reinterpret_name(type, tree);
  if (is_pointer(type)) {
    if (tree->type == type) return tree;
    if (tree->op != PCONV) return make_node(PCONV, tree, nullptr, type);
    tree->type = static_cast<std::uint16_t>(type);
    if (tree->left->type != type) return tree;
    NODE *pointer = tree->left; // (unsigned *) (int *) p, p an unsigned *
    erase_node(tree);
    return pointer;
  }
  if (!is_scalar(type) || !is_scalar(tree->type)) return tree;
  if (tree->type == type && !is_bit_field_access(tree)) return tree;
  while (tree->op == SCONV && inner_conversion_is_needless(type, tree)) {
    NODE *inner = tree;
    tree = tree->left;
    erase_node(inner);
  }
  // What is left may be of the type already: (unsigned) (int) u.
  if (tree->type == type && !is_bit_field_access(tree)) return tree;
  NODE *conversion = make_node(SCONV, tree, nullptr, type);
  return tree->op == ICON || tree->op == FCON ? simplify_sconv(conversion) : conversion;
}

std::int32_t wrap_to_type(std::int32_t value, TypeWord type) {
  const TypeWord basic = type & basic_type_mask;
  const std::int32_t width = type_width(basic);
  if (width >= 32) return value;
  std::uint32_t result = static_cast<std::uint32_t>(value) & ((1u << width) - 1);
  if (basic < first_unsigned_type && width > 0 && (result >> (width - 1)) != 0)
    result |= ~((1u << width) - 1);
  return static_cast<std::int32_t>(result);
}

std::int32_t wrap_signed(std::int32_t value, TypeWord type) {
  if (is_pointer(type) || type == UNSIGNED) return wrap_to_type(value, INT);
  return wrap_to_type(value, type == UNSIGNED_LONG ? TypeWord{LONG} : type);
}

std::int32_t wrap_signed_narrow(std::int32_t value, TypeWord type) {
  if (type == UNSIGNED_CHAR) return wrap_to_type(value, CHAR);
  if (type == UNSIGNED_SHORT) return wrap_to_type(value, SHORT);
  return wrap_signed(value, type);
}

} // namespace velkor
