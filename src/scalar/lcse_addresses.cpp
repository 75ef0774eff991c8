// The order of terms in an address.
//
//     *(a + (i * 4 + (j + 12)))   ->   *(((a + j) + i * 4) + 12)
//     *(a + i * 4)                ->   *(a + PMCONV(i, 32 bits))
//
// Addresses that differ in their constant, or in their last index, then have the rest in common. An
// index stays a register times a factor that the access can apply by itself. All terms are of 32
// bits, where the order of a sum does not matter.
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/target.h"
#include "core/types.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"
#include "simplify/simplify.h"

#include <bit>
#include <numeric>
#include <utility>

namespace velkor {
namespace {

constexpr int byte_bits = 8;
constexpr std::int32_t largest_factor = 0x7FFF;

bool is_whole_word_integer(TypeWord type) {
  return is_integer(type) && type_width(type) == 32;
}

bool is_scaled_term(const NODE *term) {
  return term->op == MULTIPLY && term->right->op == ICON && is_whole_word_integer(term->type);
}

// ------------------------------------------------------------------------------------------------
// Scaling

std::uint32_t magnitude(std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  return value < 0 ? 0u - bits : bits;
}

// A number that divides the term's value, going by its constants.
std::uint32_t constant_multiple(const NODE *term) {
  if (!is_whole_word_integer(term->type)) return 1;
  switch (term->op) {
  case ICON: return term->u.lval == 0 ? 1 : magnitude(term->u.lval);
  case ADD:
  case SUBTRACT: return std::gcd(constant_multiple(term->left), constant_multiple(term->right));
  case NEGATE: return constant_multiple(term->left);
  case MULTIPLY: return term->right->op == ICON ? constant_multiple(term->right) : 1;
  default: return 1;
  }
}

void divide_icon(NODE *icon, std::int32_t factor) {
  if (is_unsigned_integer(icon->type))
    icon->u.lval = static_cast<std::int32_t>(static_cast<std::uint32_t>(icon->u.lval) /
                                             static_cast<std::uint32_t>(factor));
  else
    icon->u.lval /= factor;
}

// The term divided by a factor of its constant multiple.
NODE *divide_term(NODE *term, std::int32_t factor) {
  if (factor == 1) return term;
  switch (term->op) {
  case ICON: divide_icon(term, factor); return term;
  case ADD:
  case SUBTRACT: term->right = divide_term(term->right, factor); [[fallthrough]];
  case NEGATE: term->left = divide_term(term->left, factor); break;
  default: term->right = divide_term(term->right, factor); break; // a product
  }
  return simplify_node(term);
}

// The factor by which an access of the type scales an index that is a multiple of that; 0: none.
std::int32_t best_factor(std::uint32_t multiple, TypeWord pointed_to) {
  const std::int32_t width = is_pointer(pointed_to) ? pointer_width : type_size(pointed_to);
  const std::int32_t element = width / byte_bits;
  auto factor = static_cast<std::int32_t>((multiple & (0u - multiple)) & 0x3FFFFFFFu);
  while (factor > 0 && !scale_ok(factor, width))
    factor /= 2;
  const bool fits_element = element > 0 && multiple % static_cast<std::uint32_t>(element) == 0;
  const bool element_is_valid = scale_ok(element, width);
  if (factor != element && fits_element && (factor == 0 || (factor < element && element_is_valid)))
    factor = element;
  return scale_ok(factor, width) && factor <= largest_factor ? factor : 0;
}

// index * 4  ->  PMCONV(index, 32 bits), the form that accesses apply by themselves
NODE *scale_term(NODE *term, TypeWord pointed_to) {
  if (term->op == ICON || !is_whole_word_integer(term->type)) return term;
  const std::int32_t factor = best_factor(constant_multiple(term), pointed_to);
  if (factor <= 0) return term;
  NODE *bits = make_icon(factor * byte_bits, INT);
  return make_node(PMCONV, divide_term(term, factor), bits, INT);
}

// ------------------------------------------------------------------------------------------------
// Sums

// total + term or total - term; a term alone when there is no total yet.
NODE *add_term(NODE *total, NODE *term, bool is_negative) {
  // In its own narrow type the sum would wrap.
  if (!is_whole_word_integer(term->type)) term = convert_tree(INT, term);
  if (!total && !is_negative) return term;
  if (!total) return simplify_node(make_node(NEGATE, term, nullptr, promote_type(term->type)));
  const TypeWord type = balance_type(total, term);
  return simplify_node(make_node(is_negative ? SUBTRACT : ADD, total, term, type));
}

// a + (c + d)  ->  (a + c) + d
void rotate_left(NODE *sum) {
  NODE *inner = sum->right;
  sum->right = inner->right;
  inner->right = inner->left;
  inner->left = sum->left;
  sum->left = inner;
  std::swap(sum->op, inner->op); // the outer one was ADD
  inner->type = sum->type;
  inner->depnum = sum->depnum;
}

bool is_sum(const NODE *node) {
  return node->op == ADD || node->op == SUBTRACT;
}

// The parts of an address.
struct Terms {
  NODE *base;
  NODE *plain = nullptr;
  NODE *scaled = nullptr;
  NODE *constant = nullptr; // an ICON
  Opcode constant_op = ADD;
};

void take_term(Terms &terms, NODE *term, Opcode op) {
  if (term->op == ICON && !terms.constant) {
    terms.constant = term;
    terms.constant_op = op;
    return;
  }
  NODE *&total = is_scaled_term(term) ? terms.scaled : terms.plain;
  total = add_term(total, term, op == SUBTRACT);
}

Terms take_apart(NODE *tree) {
  Terms terms{tree};
  const TypeWord type = tree->type;
  while (is_sum(terms.base) && terms.base->type == type) {
    NODE *sum = terms.base;
    if (sum->op == ADD && !is_pointer(sum->left->type) && is_pointer(sum->right->type))
      std::swap(sum->left, sum->right);
    if (!is_integer(sum->right->type)) break;
    if (sum->op == ADD && is_sum(sum->right) && is_whole_word_integer(sum->right->type)) {
      rotate_left(sum);
      continue;
    }
    take_term(terms, sum->right, sum->op);
    terms.base = sum->left;
    erase_node(sum);
  }
  return terms;
}

NODE *add_to_address(NODE *address, NODE *term, Opcode op, TypeWord type) {
  return term ? make_node(op, address, term, type) : address;
}

} // namespace

NODE *reassociate_address(NODE *tree, TypeWord pointed_to) {
  if (!is_scalar(pointed_to) || !is_pointer(tree->type)) return tree;
  if (tree->op == ASG_ADD || tree->op == ASG_SUBTRACT) {
    tree->right = scale_term(tree->right, pointed_to);
    return tree;
  }
  if (!is_sum(tree)) return tree;
  const TypeWord type = tree->type;
  Terms terms = take_apart(tree);
  if (!terms.scaled) {
    terms.scaled = std::exchange(terms.plain, nullptr);
  } else if (terms.plain &&
             !(terms.scaled->op == MULTIPLY && held_in_register(terms.scaled->left))) {
    terms.scaled = add_term(terms.scaled, std::exchange(terms.plain, nullptr), false);
  }
  if (terms.scaled && !terms.constant) terms.scaled = scale_term(terms.scaled, pointed_to);
  NODE *address = add_to_address(terms.base, terms.plain, ADD, type);
  address = add_to_address(address, terms.scaled, ADD, type);
  return add_to_address(address, terms.constant, terms.constant_op, type);
}

} // namespace velkor
