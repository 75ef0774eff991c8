// Rewriting a tree of which only some bits will be looked at.
//
// Masks and agreement are those of the value as a 32-bit word, extended the way its type extends
// it: the result may have another integer type, but in the bits of the mask its word is the
// original's.
#include "simplify/bits.h"

#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

constexpr std::uint32_t sign_bit = 1u << 31;

// Nodes that one request may look at, and how deep it may go. A rewritten node is simplified, which
// asks for the bits of its operands again: without a limit that doubles with every level.
constexpr int most_nodes = 512;
constexpr int deepest_level = 64;

// What the request under way has used.
struct Effort {
  int nodes = 0;
  int level = 0;
};
Effort effort;

// Counts one more level while it lives; the outermost one begins a request.
class Level {
public:
  Level() {
    if (effort.level == 0) effort.nodes = 0;
    effort.level += 1;
    effort.nodes += 1;
  }
  ~Level() { effort.level -= 1; }
  Level(const Level &) = delete;
  Level &operator=(const Level &) = delete;

  [[nodiscard]] static bool is_beyond_limits() {
    return effort.level > deepest_level || effort.nodes > most_nodes;
  }
};

// ------------------------------------------------------------------------------------------------
// Types

// The highest bit that a value of the type has of its own; the bits above are copies or zeros.
std::uint32_t top_bit(TypeWord type) {
  const std::uint32_t mask = value_mask(type);
  return mask ^ (mask >> 1);
}

// Does the tree's word extend into the bits above the type the same way as a value of the type?
bool extends_like(const NODE *tree, TypeWord type) {
  if (tree->type == type) return true;
  return (possible_bits(tree, tree->type) & ~value_mask(type)) == 0;
}

// The tree with its word cut to the type again.
NODE *cut_to_type(NODE *tree, TypeWord type) {
  return simplify_node(make_node(SCONV, tree, nullptr, type));
}

bool has_integer_operands(const NODE *tree) {
  return is_integer(tree->left->type) && (!tree->right || is_integer(tree->right->type));
}

// A shift follows its left operand's sign: it may not change with the operand.
NODE *keep_sign(NODE *operand, TypeWord type) {
  const bool same = is_unsigned_integer(operand->type) == is_unsigned_integer(type);
  return same ? operand : cut_to_type(operand, type);
}

// ------------------------------------------------------------------------------------------------
// Constants

// Do the highest bits of the word fill one part of it, at that alignment?
bool fills_top_part(std::uint32_t word, std::uint32_t part, int step) {
  for (; word != 0; word >>= step)
    if (word == part) return true;
  return false;
}

// From the top down, every bit that is not demanded takes the state of the bit above it.
std::uint32_t fill_downward(std::uint32_t word, std::uint32_t demanded, std::uint32_t first) {
  for (std::uint32_t bit = first; bit != 0; bit >>= 1)
    if (!(demanded & bit)) word = word & (bit << 1) ? word | bit : word & ~bit;
  return word;
}

// From the bottom up, a bit that is not demanded is set when the one below it is. Behind the type's
// bits it is clear.
std::uint32_t fill_upward(std::uint32_t word, std::uint32_t demanded, std::uint32_t type_bits) {
  for (std::uint32_t bit = 2; bit != 0; bit <<= 1) {
    const std::uint32_t below = bit >> 1;
    if (demanded & bit) continue;
    if (!(below & type_bits))
      word &= ~bit;
    else if (word & below)
      word |= bit;
  }
  return word;
}

// Chooses the bits of a constant that nobody looks at, so that the constant becomes a cheap one.
NODE *demand_constant(NODE *icon, std::uint32_t mask) {
  const std::uint32_t type_bits = value_mask(icon->type);
  const std::uint32_t sign = top_bit(icon->type);
  const std::uint32_t demanded = mask & type_bits;
  const auto value = static_cast<std::uint32_t>(icon->u.lval);
  const auto store = [icon](std::uint32_t word) {
    icon->u.lval = wrap_value(static_cast<std::int32_t>(word), icon->type);
  };
  std::uint32_t word = value & demanded;
  const std::uint32_t with_free_bits = value | ~demanded;
  store(word);
  if (word == with_free_bits || word == 0) return icon;
  for (std::uint32_t bit = sign; bit != 0; bit >>= 1)
    if (demanded & bit) {
      word = (word ^ bit) - bit; // the highest demanded bit is taken for the sign
      break;
    }
  const std::uint32_t holes = ~word & type_bits;
  if (fills_top_part(holes, value_mask(CHAR), 8) || fills_top_part(holes, value_mask(SHORT), 16))
    return icon;
  word = fill_downward(word, demanded, sign >> 1);
  store(fill_upward(word, demanded, type_bits));
  return icon;
}

// ------------------------------------------------------------------------------------------------
// Operators

// All bits below the highest of the mask: what sums and products need of their operands, as carries
// run upwards.
std::uint32_t with_lower_bits(std::uint32_t mask) {
  return mask | (mask - 1);
}

// Does the word have no gap between its set bits and bit 0?
bool is_run_from_bit_0(std::uint32_t word) {
  return ((word + 1) & word) == 0;
}

// x + y, x - y
NODE *demand_sum(NODE *tree, std::uint32_t mask) {
  std::uint32_t needed = with_lower_bits(mask);
  if (!is_run_from_bit_0(needed) || !has_integer_operands(tree)) return tree;
  tree->right = demand_bits(tree->right, needed);
  // A constant that is zero below the mask makes no carry there.
  if (is_icon(tree->right) && (static_cast<std::uint32_t>(tree->right->u.lval) & ~mask) == 0)
    needed = mask;
  tree->left = demand_bits(tree->left, needed);
  return simplify_node(tree);
}

// x * 2^n: a shift by a constant?
bool is_raised(const NODE *tree) {
  if (tree->op != MULTIPLY || !is_icon(tree->right) || !has_integer_operands(tree)) return false;
  const auto factor = static_cast<std::uint32_t>(tree->right->u.lval);
  return std::has_single_bit(factor) && factor > 1 &&
         (factor != sign_bit || is_unsigned_integer(tree->type));
}

// x * 2^n. The factor stays, although its upper bits may be free: as -2^n it would cost a negation.
NODE *demand_raised(NODE *tree, std::uint32_t mask) {
  std::uint32_t needed = mask;
  if (is_signed_integer(tree->type))
    needed = static_cast<std::uint32_t>(wrap_value(static_cast<std::int32_t>(mask), tree->type));
  const auto factor = static_cast<std::uint32_t>(tree->right->u.lval);
  tree->left = demand_bits(tree->left, needed >> std::countr_zero(factor));
  return simplify_node(tree);
}

// x * y
NODE *demand_product(NODE *tree, std::uint32_t mask) {
  if (!has_integer_operands(tree)) return tree;
  if (is_raised(tree)) return demand_raised(tree, mask);
  const std::uint32_t needed = with_lower_bits(mask);
  if (!is_run_from_bit_0(needed)) return tree;
  tree->right = demand_bits(tree->right, needed);
  tree->left = demand_bits(tree->left, needed);
  tree = simplify_node(tree);
  // The factor may have come out of x.
  return is_raised(tree) ? demand_raised(tree, mask) : tree;
}

// x & y, x | y, x ^ y: no bit depends on another one.
NODE *demand_logical(NODE *tree, std::uint32_t mask) {
  if (!has_integer_operands(tree)) return tree;
  tree->right = demand_bits(tree->right, mask);
  tree->left = demand_bits(tree->left, mask);
  return simplify_node(tree);
}

// c ? x : y. The arms may come out with other types than they had: the whole takes their common
// type then, or, where the mask reaches beyond the type, they are brought back to theirs.
NODE *demand_conditional(NODE *tree, std::uint32_t mask) {
  NODE *arms = tree->right;
  if (!has_integer_operands(arms)) return tree;
  const TypeWord left_type = arms->left->type;
  const TypeWord right_type = arms->right->type;
  arms->left = demand_bits(arms->left, mask);
  arms->right = demand_bits(arms->right, mask);
  if (arms->left->type != left_type || arms->right->type != right_type) {
    if ((mask & ~value_mask(tree->type)) == 0) {
      tree->type = arms->type = static_cast<std::uint16_t>(balance_type(arms->left, arms->right));
    } else {
      if (arms->left->type != left_type) arms->left = cut_to_type(arms->left, left_type);
      if (arms->right->type != right_type) arms->right = cut_to_type(arms->right, right_type);
    }
  }
  return simplify_node(tree);
}

// x >> n, as far as x goes; shortened is set when the node is no shift any more.
NODE *demand_shifted(NODE *tree, std::uint32_t mask) {
  const std::int32_t count = tree->right->u.lval;
  const TypeWord type = tree->left->type;
  std::uint32_t needed = value_mask(promote_type(type)) & (mask << count);
  const bool is_narrow_unsigned = is_unsigned_integer(type) && type_width(type) < 32;
  if (is_narrow_unsigned) needed &= value_mask(type);
  const bool only_own_bits = needed >> count == mask;
  if (!is_unsigned_integer(type) && !only_own_bits) return tree;
  // Zeros that come in from above the type are looked at: the operand must stay zero there, so it
  // is asked for a bit that only its own type makes zero.
  if (is_narrow_unsigned && !only_own_bits) needed |= value_mask(type) + 1;
  tree->left = demand_bits(tree->left, needed);
  if (!only_own_bits) tree->left = keep_sign(tree->left, type);
  return simplify_node(tree);
}

// (z * 2^j) >> n  ->  z * 2^(j - n)  or  z >> (n - j), where the top n bits are not looked at.
bool shift_back(NODE *&tree, std::uint32_t mask) {
  const NODE *product = tree->left;
  if (!is_shift_count(tree->right) || tree->right->u.lval == 0) return false;
  const std::int32_t count = tree->right->u.lval;
  if ((mask & sign_bit) || (mask & (~0u << (32 - count)))) return false;
  if (value_width(tree->type) != 32 || !is_integer(product->type) ||
      type_width(product->type) != 32 || promote_type(product->type) != INT)
    return false;
  std::int32_t left_count = -1;
  if (product->op == MULTIPLY && is_icon(product->right))
    left_count = log2_of(product->right->u.lval);
  else if (product->op == SHIFT_LEFT && is_shift_count(product->right))
    left_count = product->right->u.lval;
  if (left_count < 0 || !is_integer(product->left->type)) return false;
  const std::int32_t difference = left_count - count;
  erase_node(tree->left->right);
  tree->left = replace_by_left(tree->left);
  tree->op = difference >= 0 ? SHIFT_LEFT : SHIFT_RIGHT;
  tree->right->u.lval = difference >= 0 ? difference : -difference;
  tree = simplify_node(tree);
  return true;
}

// x >> y
NODE *demand_shift(NODE *tree, std::uint32_t mask) {
  if (is_shift_count(tree->right) && is_integer(tree->left->type)) {
    tree = demand_shifted(tree, mask);
    if (tree->op != SHIFT_RIGHT) return tree;
  }
  if (shift_back(tree, mask)) return demand_bits(tree, mask);
  return tree;
}

// ------------------------------------------------------------------------------------------------
// The rules of demand_bits

// A conversion to a narrow unsigned type does nothing for bits that lie within the type.
bool is_needless_conversion(const NODE *tree, std::uint32_t mask) {
  if (tree->op != SCONV || !is_unsigned_integer(tree->type)) return false;
  if ((mask & ~value_mask(tree->type)) != 0 || !is_integer(tree->left->type)) return false;
  return type_width(tree->left->type) > type_width(tree->type) &&
         type_width(tree->type) < type_width(promote_type(tree->type));
}

// The lowest bit of a sum, a negative or a product needs no carries: the operator that computes it,
// or ILLOP.
Opcode lowest_bit_operator(const NODE *tree) {
  switch (tree->op) {
  case ADD:
  case SUBTRACT: return BIT_XOR;
  case NEGATE: return SCONV;
  case MULTIPLY: return BIT_AND;
  default: return ILLOP;
  }
}

NODE *demand_of_operator(NODE *tree, std::uint32_t mask, std::uint32_t demanded) {
  switch (tree->op) {
  case ICON: return demand_constant(tree, mask);
  case ADD:
  case SUBTRACT: return demand_sum(tree, mask);
  case SCONV: tree->left = demand_bits(tree->left, demanded); return simplify_node(tree);
  case MULTIPLY: return demand_product(tree, mask);
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR: return demand_logical(tree, mask);
  case CONDITIONAL: return demand_conditional(tree, mask);
  case SHIFT_RIGHT: return demand_shift(tree, mask);
  default: return tree;
  }
}

// x & mask  ->  x. Where the mask looks at copies of the sign, it must look at the sign as well:
// else the masked value has zeros there, and x may be negative.
NODE *drop_equal_mask(NODE *tree, std::uint32_t mask) {
  if (tree->op != BIT_AND || !is_integer(tree->type) || !is_icon(tree->right)) return tree;
  if (static_cast<std::uint32_t>(tree->right->u.lval) != mask) return tree;
  const bool looks_above = (mask & ~value_mask(tree->type)) != 0;
  if (looks_above && is_signed_integer(tree->type) && !(mask & top_bit(tree->type))) return tree;
  return convert_to_left(tree);
}

NODE *demand_within_limits(NODE *tree, std::uint32_t mask) {
  while (is_integer(tree->type)) {
    const std::uint32_t type_bits = value_mask(tree->type);
    if (is_needless_conversion(tree, mask)) {
      tree = replace_by_left(tree);
      continue;
    }
    // Bits beyond the width are copies of the sign.
    if (mask > type_bits && is_signed_integer(tree->type)) mask |= top_bit(tree->type);
    const std::uint32_t demanded = mask & type_bits;
    if (demanded == type_bits && tree->op != SCONV) return tree;
    if (demanded == 0) {
      NODE *zero = make_icon(0, tree->type);
      return make_comma(discard_value(tree), zero);
    }
    if (is_unsigned_integer(tree->type)) mask = demanded;
    const Opcode plain = mask == 1 ? lowest_bit_operator(tree) : ILLOP;
    if (plain != ILLOP && has_integer_operands(tree)) {
      tree->op = plain;
      tree = simplify_node(tree);
      continue;
    }
    const bool is_final = tree->op == MULTIPLY || tree->op == SHIFT_RIGHT;
    tree = demand_of_operator(tree, mask, demanded);
    if (!is_final) tree = drop_equal_mask(tree, mask);
    while (is_needless_conversion(tree, mask))
      tree = replace_by_left(tree);
    return tree;
  }
  return tree;
}

} // namespace

NODE *demand_bits(NODE *tree, std::uint32_t mask) {
  if (!is_integer(tree->type)) return tree;
  const Level level;
  if (Level::is_beyond_limits()) return tree;
  const TypeWord type = tree->type;
  // The zeros above a narrow unsigned type come from the type: a wider result must keep them where
  // the mask looks at them.
  const bool looks_above = is_unsigned_integer(type) && (mask & ~value_mask(type)) != 0;
  tree = demand_within_limits(tree, mask);
  if (looks_above && !extends_like(tree, type)) tree = cut_to_type(tree, type);
  return tree;
}

} // namespace velkor
