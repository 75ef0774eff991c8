#include "simplify/like_terms.h"

#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "simplify/patterns.h"

#include <array>

namespace velkor {
namespace {

// A term: a factor times a constant coefficient.
struct Term {
  NODE *factor;
  std::int32_t coefficient;
};

// y × K as y with coefficient K, anything else as itself. A product that wraps to fewer than 32
// bits is no multiple of its factor.
Term term_of(NODE *tree) {
  if (tree->op == MULTIPLY && is_icon(tree->right) && is_word_integer(tree->type) &&
      tree->left->type == tree->type)
    return {tree->left, tree->right->u.lval};
  return {tree, 1};
}

// Adds term, or subtracts it where op is -, to the tree at place if that is a like term. The factor
// then belongs to the new tree.
bool merge_term(const Term &term, Opcode op, NODE *&place) {
  if (place->type != term.factor->type) return false;
  const Term other = term_of(place);
  if (other.factor->type != term.factor->type || other.factor->op != term.factor->op ||
      !trees_equal(term.factor, other.factor, false))
    return false;
  const TypeWord type = balance_type(other.factor, term.factor);
  const std::int32_t sum = op == SUBTRACT ? wrapping_subtract(other.coefficient, term.coefficient)
                                          : wrapping_add(other.coefficient, term.coefficient);
  erase_tree(place);
  place =
      simplify_node(make_node(MULTIPLY, term.factor, make_icon(wrap_value(sum, type), type), type));
  return true;
}

// (type) (x + K1) op K2  ->  (type) ((x + K1) op K2)
bool merge_into_conversion(NODE *&tree) {
  NODE *conversion = tree->left;
  if (conversion->op != SCONV || conversion->type != tree->type || !is_word_integer(tree->type))
    return false;
  NODE *sum = conversion->left;
  if (sum->op != ADD || !is_integer_icon(sum->right) || !is_word_integer(sum->type)) return false;
  // Where the two constants cannot meet inside, the conversion would sink again, and so on.
  if (!is_integer(sum->left->type) || !is_integer_icon(tree->right)) return false;
  tree->left = sum;
  set_type(tree, sum->type);
  conversion->left = simplify_node(tree);
  tree = simplify_node(conversion);
  return true;
}

// (type *) K1 op K2  ->  (type *) (K1 op K2)
bool merge_into_address(NODE *&tree) {
  NODE *conversion = tree->left;
  if ((conversion->op != PCONV && conversion->op != ISP2CHAR) || conversion->type != tree->type ||
      !is_icon(conversion->left))
    return false;
  NODE *constant = conversion->left;
  const std::int32_t other = tree->right->u.lval;
  const std::int32_t value = tree->op == ADD ? wrapping_add(constant->u.lval, other)
                                             : wrapping_subtract(constant->u.lval, other);
  set_icon(constant, value, INT);
  erase_node(tree->right);
  erase_node(tree);
  conversion->op = PCONV;
  tree = simplify_node(conversion);
  return true;
}

// The links of the sum, from the whole sum down its left side.
struct Links {
  std::array<NODE *, longest_merged_chain> nodes;
  int count = 0;
};

// Walks down the sum until one of its terms takes the last one.
bool merge_into_sum(NODE *tree, const Term &term, Links &links) {
  for (NODE *p = tree; is_sum_or_difference(p) && (p->type == tree->type || is_pointer(p->type));
       p = p->left) {
    if (links.count == longest_merged_chain) return false;
    links.nodes[static_cast<std::size_t>(links.count++)] = p;
    if (merge_term(term, ADD, p->left)) return true;
    if (p != tree && merge_term(term, p->op, p->right)) return true;
  }
  return false;
}

// What is left of the sum without its last term; the links above the changed one are simplified
// again. The sum's own type is kept: a narrower term may be all that is left.
NODE *sum_without_last(NODE *tree, const Links &links) {
  for (int i = links.count - 1; i > 0; --i) {
    const auto at = static_cast<std::size_t>(i);
    links.nodes[at - 1]->left = simplify_node(links.nodes[at]);
  }
  const TypeWord type = tree->type;
  return make_conversion(type, replace_by_left(tree));
}

} // namespace

Outcome merge_like_terms(NODE *&tree) {
  if (!is_pointer(tree->type) && !is_integer(tree->type)) return Outcome::NEXT;
  NODE *last = tree->right;
  if (is_icon(last))
    return merge_into_conversion(tree) || merge_into_address(tree) ? Outcome::DONE : Outcome::NEXT;
  Term term = term_of(last);
  if (term.factor->type != tree->type && !is_pointer(tree->type)) term = {last, 1};
  if (!is_integer(term.factor->type)) return Outcome::NEXT;
  if (tree->op == SUBTRACT) term.coefficient = wrapping_negate(term.coefficient);
  Links links;
  if (!merge_into_sum(tree, term, links)) return Outcome::NEXT;
  if (term.factor != last) {
    erase_node(last->right);
    erase_node(last);
  }
  tree = sum_without_last(tree, links);
  return Outcome::DONE;
}

} // namespace velkor
