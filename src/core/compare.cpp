#include "core/compare.h"

#include <array>
#include <cstring>
#include <utility>

namespace velkor {
namespace {

const NODE *look_through(const NODE *tree) {
  while (tree->op == CSE_DUPE || tree->op == CSE_ORIG)
    tree = tree->right;
  while (tree->op == IDENTITY)
    tree = tree->left;
  return tree;
}

bool both_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  if (!a || !b) return a == b;
  return trees_equal(a, b, ignore_effects);
}

bool operands_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  if (a->right && !both_equal(a->right, b->right, ignore_effects)) return false;
  return !a->left || both_equal(a->left, b->left, ignore_effects);
}

bool crosswise_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  return both_equal(a->right, b->left, ignore_effects) &&
         both_equal(a->left, b->right, ignore_effects);
}

// The home of a parameter that is never assigned again is const and stands for the parameter.
bool home_equals_parameter(const SYM *home, const SYM *parameter) {
  return home->parameter == parameter && is_const_symbol(home);
}

bool home_equals_converted_parameter(const NODE *home, const NODE *converted, bool ignore_effects) {
  if (home->op != NAME || home->u.sym->level != 2) return false;
  if (converted->op != SCONV && converted->op != PCONV && converted->op != ISP2CHAR) return false;
  const NODE *parameter = converted->left;
  if (!parameter || parameter->op != NAME) return false;
  if (!home_equals_parameter(home->u.sym, parameter->u.sym)) return false;
  return ignore_effects || (!is_volatile_node(home) && !is_volatile_node(parameter));
}

bool names_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  if (!ignore_effects && (is_volatile_node(a) || is_volatile_node(b))) return false;
  const SYM *first = a->u.sym;
  const SYM *second = b->u.sym;
  if (first == second) return true;
  if (first->level == 2 && second->level == 1) std::swap(first, second);
  if (first->level != 1 || !home_equals_parameter(second, first)) return false;
  return is_const_symbol(first) || is_scalar(first->stype);
}

// Constants are compared byte by byte: a string constant may hold NULs.
bool texts_equal(const NODE *a, const NODE *b) {
  if (a->op == SCON)
    return a->u.lval == b->u.lval &&
           std::memcmp(a->aux.text, b->aux.text, static_cast<std::size_t>(a->u.lval)) == 0;
  return std::strcmp(a->aux.text, b->aux.text) == 0;
}

bool addresses_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  a = a->left;
  b = b->left;
  while (a->op == MEMBER && b->op == MEMBER && a->right->u.sym == b->right->u.sym) {
    a = a->left;
    b = b->left;
  }
  if (a->op == NAME && b->op == NAME && a->u.sym == b->u.sym) return true;
  return trees_equal(a, b, ignore_effects);
}

using Three = std::array<const NODE *, 3>;

// Is one a permutation of the other?
bool same_three(const Three &a, const Three &b, bool ignore_effects) {
  constexpr std::array<std::array<std::size_t, 3>, 6> orders = {
      {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}};
  std::array<std::array<signed char, 3>, 3> known{}; // 0 not compared, 1 equal, -1 different
  const auto equal = [&](std::size_t i, std::size_t j) {
    if (known[i][j] == 0) known[i][j] = trees_equal(a[i], b[j], ignore_effects) ? 1 : -1;
    return known[i][j] > 0;
  };
  for (const auto &order : orders)
    if (equal(0, order[0]) && equal(1, order[1]) && equal(2, order[2])) return true;
  return false;
}

// Each test of three operands compares up to nine pairs, and a chain has one at every link: without
// a bound, two long chains that differ at their far end would take a time without measure. Behind
// the bound, chains are compared link by link only.
constexpr int most_three_operand_tests = 64; // for one outermost comparison
int nesting = 0;                             // of trees_equal
int three_operand_tests = 0;

// x op y op z in any grouping and order: (l op r) against (m op n) where one child on each side is
// the same operator again. The first pairing of such children settles it.
bool three_operands_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  // Floating sums and products mean something else in another grouping.
  if (is_floating(a->type) || ++three_operand_tests > most_three_operand_tests) return false;
  const NODE *l = look_through(a->left);
  const NODE *r = look_through(a->right);
  const NODE *m = look_through(b->left);
  const NODE *n = look_through(b->right);
  const auto nested = [](const NODE *child, const NODE *parent) {
    return child->op == parent->op && child->type == parent->type;
  };
  const bool l_nested = nested(l, a);
  const bool r_nested = nested(r, a);
  const bool m_nested = nested(m, a);
  const bool n_nested = nested(n, a);
  const auto three = [](const NODE *inner, const NODE *outer) {
    return Three{inner->left, inner->right, outer};
  };
  if (l_nested && m_nested) return same_three(three(l, r), three(m, n), ignore_effects);
  if (r_nested && n_nested) return same_three(three(r, l), three(n, m), ignore_effects);
  if (l_nested && n_nested) return same_three(three(l, r), three(n, m), ignore_effects);
  if (r_nested && m_nested) return same_three(three(r, l), three(m, n), ignore_effects);
  return false;
}

bool ifs_equal(const NODE *a, const NODE *b) {
  if (trees_equal(a->right, b->right, true) && conditions_equal(a->left, b->left, false, true))
    return true;
  return trees_equal(a->right->left, b->right->right, true) &&
         trees_equal(a->right->right, b->right->left, true) &&
         conditions_equal(a->left, b->left, true, true);
}

// Is own, an operand of node, of node's type, or of the type of the other tree's operand?
bool operand_types_fit(const NODE *node, const NODE *other, const NODE *own) {
  return !own || own->type == node->type || (other && own->type == other->type);
}

const NODE *skip_identity(const NODE *tree) {
  while (tree->op == IDENTITY)
    tree = tree->left;
  return tree;
}

// Strips comparisons with the constant 0; each == turns the sense around.
const NODE *strip_zero_tests(const NODE *tree, bool &opposite) {
  for (tree = skip_identity(tree);; tree = skip_identity(tree->left)) {
    const bool compares_zero =
        (tree->op == NE || tree->op == EQ) && tree->right->op == ICON && tree->right->u.lval == 0;
    if (!compares_zero) return tree;
    if (tree->op == EQ) opposite = !opposite;
  }
}

bool equal(const NODE *a, const NODE *b, bool ignore_effects) {
  a = look_through(a);
  b = look_through(b);
  if (!ignore_effects && (op_effect(a->op) != PURE || op_effect(b->op) != PURE)) return false;
  if (a->type != b->type) return false;
  if (op_swapped(b->op) != ILLOP && a->op == op_swapped(b->op) &&
      crosswise_equal(a, b, ignore_effects))
    return true;
  if (a->op != b->op)
    return home_equals_converted_parameter(a, b, ignore_effects) ||
           home_equals_converted_parameter(b, a, ignore_effects);
  switch (a->op) {
  case LABELREF: return a->aux.label && b->aux.label && a->aux.label->bb == b->aux.label->bb;
  case NAME: return names_equal(a, b, ignore_effects);
  case ICON: return a->u.lval == b->u.lval;
  case SCON:
  case FCON:
  case ASM: return texts_equal(a, b);
  case ADD:
  case MULTIPLY:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
    return (both_equal(a->left, b->left, ignore_effects) &&
            both_equal(a->right, b->right, ignore_effects)) ||
           three_operands_equal(a, b, ignore_effects);
  case DEREF:
    if (!a->right != !b->right) return false;
    [[fallthrough]];
  case MEMBER:
  case ARROW:
    if (!ignore_effects && is_volatile_node(a)) return false;
    return operands_equal(a, b, ignore_effects);
  case ADDRESS: return addresses_equal(a, b, ignore_effects);
  case STASG:
  case STARG:
  case STCALL:
  case USTCALL: return a->u.sym == b->u.sym && operands_equal(a, b, ignore_effects);
  case XCALL:
  case UXCALL:
  case ICALL: return std::strcmp(a->u.name, b->u.name) == 0 && operands_equal(a, b, ignore_effects);
  case IF: return ifs_equal(a, b);
  case LABELDEF: return a->label == b->label;
  case DDNODE: return a == b;
  default: return operands_equal(a, b, ignore_effects);
  }
}

} // namespace

bool trees_equal(const NODE *a, const NODE *b, bool ignore_effects) {
  if (nesting++ == 0) three_operand_tests = 0;
  const bool result = equal(a, b, ignore_effects);
  --nesting;
  return result;
}

bool compatible_types(const NODE *a, const NODE *b) {
  if (is_pointer(b->type) && is_integer(a->type)) std::swap(a, b);
  for (;; a = a->left) {
    if (a->type == b->type || (is_pointer(a->type) && is_pointer(b->type))) return true;
    if (is_integer(a->type) && is_integer(b->type) && type_width(a->type) >= 32 &&
        type_width(a->type) == type_width(b->type))
      return operand_types_fit(a, b->left, a->left) && operand_types_fit(a, b->right, a->right);
    if (a->op != IDENTITY || b->op != IDENTITY) return false;
    b = b->left;
  }
}

bool lists_equal(const LIST *a, const LIST *b) {
  for (; a && b; a = a->next, b = b->next)
    if (!trees_equal(a->item, b->item, true)) return false;
  return !a && !b;
}

bool conditions_equal(const NODE *a, const NODE *b, bool opposite, bool ignore_effects) {
  a = strip_zero_tests(a, opposite);
  b = strip_zero_tests(b, opposite);
  if (!opposite) return trees_equal(a, b, ignore_effects);
  if (!ignore_effects && op_effect(a->op) != PURE) return false;
  const Opcode negated = op_negated(b->op);
  if (negated == ILLOP) return false;
  if (a->op == negated && both_equal(a->left, b->left, ignore_effects) &&
      both_equal(a->right, b->right, ignore_effects))
    return true;
  return a->op == op_swapped(negated) && crosswise_equal(a, b, ignore_effects);
}

bool tree_contains(const NODE *needle, const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == needle->op && trees_equal(needle, tree, true)) return true;
    if (tree->right && tree_contains(needle, tree->right)) return true;
    if (tree->op == LABELDEF) return false;
  }
  return false;
}

bool tree_uses_sym(const NODE *tree, const NODE *name_node) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME && tree->u.sym == name_node->u.sym) return true;
    if (tree->right && tree_uses_sym(tree->right, name_node)) return true;
    if (tree->op == LABELDEF) return false;
  }
  return false;
}

} // namespace velkor
