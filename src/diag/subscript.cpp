#include "diag/subscript.h"

namespace velkor {
namespace {

constexpr std::int64_t byte_bits = 8;
constexpr std::int64_t largest_object = INT32_MAX; // bytes

// An address taken apart: base plus the sum of the terms plus constant, all in bytes.
struct Address {
  const NODE *base;
  std::int64_t constant;
  int term_count;
  SubscriptTerm terms[max_subscript_terms];
};

// What the base holds, level by level.
struct Shape {
  int levels = 0;
  std::int64_t strides[max_subscript_levels]; // bytes that one step of the level moves
};

bool is_address_type(TypeWord type) {
  return is_pointer(type) || is_array(type);
}

SubscriptTerm scaled_term(const NODE *tree) {
  const NODE *right = tree->right;
  if (!right || right->op != ICON) return {tree, 1, 0};
  const std::int64_t value = right->u.lval;
  switch (tree->op) {
  case MULTIPLY:
  case ISS: return {tree->left, value, 0};
  case PMCONV: return {tree->left, value / byte_bits, 0};
  case SHIFT_LEFT:
    if (value >= 0 && value < 31) return {tree->left, std::int64_t{1} << value, 0};
    break;
  default: break;
  }
  return {tree, 1, 0};
}

bool add_term(Address &address, const NODE *tree) {
  if (tree->op == ICON) {
    address.constant += tree->u.lval;
    return true;
  }
  if (address.term_count == max_subscript_terms) return false;
  const SubscriptTerm term = scaled_term(tree);
  if (!term.tree || term.factor == 0) return false;
  address.terms[address.term_count++] = term;
  return true;
}

// Splits off indices until the base is left. Casts in between do not move the address. The number
// of steps is bounded, since only short addresses are worth showing so.
bool take_apart(const NODE *tree, Address &address) {
  for (int steps = 4 * max_subscript_terms; tree && steps > 0; --steps) {
    const NODE *left = tree->left;
    const NODE *right = tree->right;
    if (tree->op == PCONV && left && is_address_type(left->type)) {
      tree = left;
    } else if (tree->op == ADD && left && right && is_address_type(left->type)) {
      if (!add_term(address, right)) return false;
      tree = left;
    } else if (tree->op == ADD && left && right && is_address_type(right->type)) {
      if (!add_term(address, left)) return false;
      tree = right;
    } else {
      address.base = tree;
      return true;
    }
  }
  return false;
}

// Levels below type until its elements are of the accessed type; none when they never are.
Shape shape_of(TypeWord type, const SYM *sym, int dimension, TypeWord accessed) {
  Shape shape;
  while (is_address_type(type) && shape.levels < max_subscript_levels) {
    if (is_array(type)) ++dimension;
    type = underived(type);
    shape.strides[shape.levels++] = object_bytes(type, sym, dimension);
    if (internal_type(type) == internal_type(accessed)) return shape;
    if (!is_array(type)) break;
  }
  return {};
}

// Gives each term and the constant to the outermost level whose stride divides it.
bool distribute(const Address &address, const Shape &shape, Subscripts &result) {
  for (int i = 0; i < address.term_count; ++i) {
    SubscriptTerm term = address.terms[i];
    while (term.level < shape.levels && term.factor % shape.strides[term.level] != 0)
      ++term.level;
    if (term.level == shape.levels) return false;
    term.factor /= shape.strides[term.level];
    result.terms[result.term_count++] = term;
  }
  std::int64_t rest = address.constant;
  for (int level = 0; level < shape.levels; ++level) {
    result.constants[level] = rest / shape.strides[level];
    rest %= shape.strides[level];
  }
  return rest == 0;
}

bool all_strides_known(const Shape &shape) {
  for (int level = 0; level < shape.levels; ++level)
    if (shape.strides[level] <= 0) return false;
  return shape.levels > 0;
}

} // namespace

std::int64_t object_bytes(TypeWord type, const SYM *sym, int dimension) {
  std::int64_t count = 1;
  for (; is_array(type); type = underived(type), ++dimension) {
    if (!sym || dimension >= sym->ndims || sym->dims[dimension] > largest_object) return 0;
    count *= sym->dims[dimension];
    if (count > largest_object) return 0;
  }
  std::int64_t bits = 0;
  if (is_pointer(type))
    bits = pointer_width;
  else if (is_struct_or_union(type))
    bits = sym && sym->tag ? sym->tag->size : 0;
  else if (!is_derived(type))
    bits = type_size(type);
  const std::int64_t bytes = count * (bits / byte_bits);
  return bytes > largest_object ? 0 : bytes;
}

const SYM *object_symbol(const NODE *tree) {
  if (tree && (tree->op == MEMBER || tree->op == ARROW)) tree = tree->right;
  return tree && tree->op == NAME ? tree->u.sym : nullptr;
}

std::optional<Subscripts> find_subscripts(const NODE *access) {
  Address address{};
  if (access->right || !take_apart(access->left, address)) return std::nullopt;
  Subscripts result{};
  // The address of an array shows as the array itself.
  const NODE *base = address.base;
  const SYM *array = base->op == ADDRESS ? object_symbol(base->left) : nullptr;
  if (array && is_array(array->stype))
    base = base->left;
  else if (base->op == ADDRESS)
    return std::nullopt;
  result.base = base;

  const SYM *sym = object_symbol(base);
  const TypeWord type = sym ? sym->stype : base->type;
  const bool moved = address.term_count > 0 || address.constant != 0;
  // A plain pointer without an index reads best as it stands.
  if (!is_address_type(type) || (!moved && is_pointer(type))) return std::nullopt;

  Shape shape = shape_of(type, sym, 0, access->type);
  if (shape.levels == 0) {
    result.cast = pointer_to(access->type);
    shape.levels = 1;
    shape.strides[0] = object_bytes(access->type, nullptr, 0);
    if (shape.strides[0] == 0) shape.strides[0] = access->depnum / byte_bits;
  }
  if (!all_strides_known(shape) || !distribute(address, shape, result)) return std::nullopt;
  result.levels = shape.levels;
  return result;
}

} // namespace velkor
