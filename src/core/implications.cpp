#include "core/implications.h"

#include "core/compare.h"
#include "core/conversions.h"

#include <limits>
#include <utility>

namespace velkor {
namespace {

constexpr bool is_unsigned_order(Opcode op) {
  return op == ULT || op == ULE || op == UGT || op == UGE;
}

constexpr Opcode unsigned_order(Opcode op) {
  switch (op) {
  case LT: return ULT;
  case LE: return ULE;
  case GT: return UGT;
  case GE: return UGE;
  default: return op;
  }
}

template <typename Word> bool relation_holds(Opcode op, Word x, Word y) {
  switch (op) {
  case NE: return x != y;
  case LT:
  case ULT: return x < y;
  case LE:
  case ULE: return x <= y;
  case GT:
  case UGT: return x > y;
  case GE:
  case UGE: return x >= y;
  default: return x == y;
  }
}

// v a x implies v b y, for orders a and b of one kind, written as < <= > >=.
template <typename Word> bool order_implies(Opcode a, Word x, Opcode b, Word y) {
  constexpr Word least = std::numeric_limits<Word>::min();
  constexpr Word greatest = std::numeric_limits<Word>::max();
  switch (a) {
  case LE:
    if (b == NE || b == LT) return x < y;
    return b == LE && x <= y;
  case LT:
    if (b == NE || b == LT) return x <= y;
    return b == LE && y != greatest && x <= y + 1;
  case GE:
    if (b == NE || b == GT) return x > y;
    return b == GE && x >= y;
  case GT:
    if (b == NE || b == GT) return x >= y;
    return b == GE && y != least && x >= y - 1;
  default: return false;
  }
}

constexpr Opcode signed_order(Opcode op) {
  switch (op) {
  case ULT: return LT;
  case ULE: return LE;
  case UGT: return GT;
  case UGE: return GE;
  default: return op;
  }
}

// A condition as opcode and operands; right is none for a tree that is tested against zero.
struct Condition {
  Opcode op;
  const NODE *left;
  const NODE *right;

  [[nodiscard]] bool can_exchange() const { return right && op_swapped(op) != ILLOP; }
  void exchange() {
    std::swap(left, right);
    op = op_swapped(op);
  }
};

Condition as_condition(const NODE *tree, bool is_true) {
  Condition condition{NE, tree, nullptr};
  if (op_negated(tree->op) != ILLOP) {
    condition = {tree->op, tree->left, tree->right};
    // The operands' balanced type decides how < and its kin compare.
    const TypeWord type = balance_type(tree->left, tree->right);
    if (is_unsigned_integer(type) || is_pointer(type)) condition.op = unsigned_order(tree->op);
  }
  if (!is_true) condition.op = op_negated(condition.op);
  return condition;
}

bool same(const NODE *a, const NODE *b) {
  return trees_equal(a, b, false);
}

// Exchanges operands until the left ones are the same; false when they cannot be.
bool line_up(Condition &a, Condition &b) {
  if (same(a.left, b.left)) return true;
  if (a.can_exchange() && same(a.right, b.left)) {
    a.exchange();
    return true;
  }
  if (b.can_exchange() && same(a.left, b.right)) {
    b.exchange();
    return true;
  }
  if (!a.can_exchange() || !b.can_exchange() || !same(a.right, b.right)) return false;
  a.exchange();
  b.exchange();
  return true;
}

} // namespace

bool op_implies(Opcode a, Opcode b) {
  if (a == b) return true;
  switch (a) {
  case EQ: return b == LE || b == GE || b == ULE || b == UGE;
  case LT: return b == LE || b == NE;
  case GT: return b == GE || b == NE;
  case ULT: return b == ULE || b == NE;
  case UGT: return b == UGE || b == NE;
  default: return false;
  }
}

bool value_implies(Opcode a, std::int32_t x, Opcode b, std::int32_t y) {
  const auto ux = static_cast<std::uint32_t>(x);
  const auto uy = static_cast<std::uint32_t>(y);
  if (a == NE) return b == NE && x == y;
  if (a == EQ) return is_unsigned_order(b) ? relation_holds(b, ux, uy) : relation_holds(b, x, y);
  if (!is_unsigned_order(a)) return order_implies(a, x, b, y);
  return (b == NE || is_unsigned_order(b)) &&
         order_implies(signed_order(a), ux, signed_order(b), uy);
}

bool relation_implies(const NODE *a, bool a_is_true, const NODE *b, bool b_is_true) {
  Condition known = as_condition(a, a_is_true);
  Condition asked = as_condition(b, b_is_true);
  if (!line_up(known, asked)) return false;
  if (!known.right && !asked.right) return known.op == asked.op;
  const bool known_is_constant = !known.right || known.right->op == ICON;
  const bool asked_is_constant = !asked.right || asked.right->op == ICON;
  if (known.right && asked.right) {
    if (same(known.right, asked.right)) return op_implies(known.op, asked.op);
    if (known.right->type != asked.right->type) return false;
  }
  return known_is_constant && asked_is_constant &&
         value_implies(known.op, known.right ? known.right->u.lval : 0, asked.op,
                       asked.right ? asked.right->u.lval : 0);
}

} // namespace velkor
