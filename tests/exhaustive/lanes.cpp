#include "lanes.h"

#include <limits>

namespace velkor::exhaustive {
namespace {

constexpr std::uint32_t all_ones = ~0u;
constexpr std::uint32_t sign_bit = 0x80000000u;

constexpr std::uint32_t mask_if(bool holds) {
  return holds ? all_ones : 0;
}

constexpr std::int32_t as_signed(std::uint32_t word) {
  return static_cast<std::int32_t>(word);
}

template <typename Operation> void for_lanes(Operation &&operation) {
  for (std::size_t i = 0; i < lane_count; ++i)
    operation(i);
}

void fill(Word &word, std::uint32_t value) {
  word.lane.fill(value);
}

void wrap(Word &word, TypeWord type) {
  const std::int32_t width = is_derived(type) ? pointer_width : type_width(type);
  if (width >= 32 || width <= 0) return;
  const int unused = 32 - width;
  if (is_unsigned_basic(type)) {
    const std::uint32_t mask = all_ones >> unused;
    for_lanes([&](std::size_t i) { word.lane[i] &= mask; });
    return;
  }
  for_lanes([&](std::size_t i) {
    word.lane[i] = static_cast<std::uint32_t>(as_signed(word.lane[i] << unused) >> unused);
  });
}

bool is_unsigned_word(TypeWord type) {
  return is_derived(type) || is_unsigned_basic(type);
}

// The type of an operand once it is promoted: narrow types fit an int.
TypeWord promoted(TypeWord type) {
  if (is_derived(type)) return type;
  return type_width(type) < 32 ? static_cast<TypeWord>(INT) : internal_type(type);
}

TypeWord balanced(TypeWord a, TypeWord b) {
  if (is_derived(a)) return a;
  if (is_derived(b)) return b;
  return promoted(a) == UNSIGNED || promoted(b) == UNSIGNED ? static_cast<TypeWord>(UNSIGNED)
                                                            : static_cast<TypeWord>(INT);
}

// Lanes that take part, narrowed for operands that are evaluated under a condition.
struct Walk {
  Evaluation &evaluation;

  void fail(const char *reason) const {
    if (!evaluation.reason) evaluation.reason = reason;
  }
  void mark_undefined(const Word &active, std::size_t i, bool holds) const {
    evaluation.undefined.lane[i] |= active.lane[i] & mask_if(holds);
  }
  void mark_trapped(const Word &active, std::size_t i, bool holds) const {
    evaluation.trapped.lane[i] |= active.lane[i] & mask_if(holds);
  }

  void value_of(const NODE *tree, const Word &active, Word &value) const;
  void arithmetic(std::uint8_t op, TypeWord left_type, TypeWord right_type, TypeWord type,
                  const Word &active, Word &value, const Word &right) const;
  void unary(const NODE *tree, const Word &active, Word &value) const;
  void relation(const NODE *tree, const Word &active, Word &value) const;
  void logical(const NODE *tree, const Word &active, Word &value) const;
  void conditional(const NODE *tree, const Word &active, Word &value) const;
  void assignment(const NODE *tree, const Word &active, Word &value) const;
  void load(const NODE *place, const Word &active, Word &value) const;
  void store(const NODE *place, const Word &active, Word &value) const;
  const SYM *object_of(const NODE *place) const;
  void through_pointer(const NODE *place, const Word &active, Word &addresses) const;
};

// Signed arithmetic whose result no int holds has no meaning in C; the judge wraps it.
void Walk::arithmetic(std::uint8_t op, TypeWord left_type, TypeWord right_type, TypeWord type,
                      const Word &active, Word &value, const Word &right) const {
  const bool is_unsigned = is_unsigned_word(type);
  const bool checks_overflow =
      !is_unsigned && type_width(type) == 32 && !is_derived(left_type) && !is_derived(right_type);
  auto &a = value.lane;
  const auto &b = right.lane;
  const auto overflow = [&](std::size_t i, std::int64_t exact) {
    mark_undefined(active, i, exact != static_cast<std::int32_t>(exact));
  };
  // A pointer leads nowhere beyond the ends of memory, and objects are smaller than half of it.
  const auto bad_address = [&](std::size_t i, std::int64_t exact) {
    mark_undefined(active, i, exact <= 0 || exact > std::int64_t{all_ones});
  };
  const bool left_is_pointer = is_derived(left_type);
  const bool right_is_pointer = is_derived(right_type);
  if (left_is_pointer && right_is_pointer && op == SUBTRACT) {
    for_lanes([&](std::size_t i) { overflow(i, std::int64_t{a[i]} - std::int64_t{b[i]}); });
  } else if (left_is_pointer && (op == ADD || op == SUBTRACT)) {
    const std::int64_t sign = op == ADD ? 1 : -1;
    for_lanes([&](std::size_t i) { bad_address(i, std::int64_t{a[i]} + sign * as_signed(b[i])); });
  } else if (right_is_pointer && op == ADD) {
    for_lanes([&](std::size_t i) { bad_address(i, std::int64_t{b[i]} + as_signed(a[i])); });
  }
  switch (op) {
  case ADD:
    if (checks_overflow)
      for_lanes(
          [&](std::size_t i) { overflow(i, std::int64_t{as_signed(a[i])} + as_signed(b[i])); });
    for_lanes([&](std::size_t i) { a[i] += b[i]; });
    break;
  case SUBTRACT:
    if (checks_overflow)
      for_lanes(
          [&](std::size_t i) { overflow(i, std::int64_t{as_signed(a[i])} - as_signed(b[i])); });
    for_lanes([&](std::size_t i) { a[i] -= b[i]; });
    break;
  case MULTIPLY:
    if (checks_overflow)
      for_lanes(
          [&](std::size_t i) { overflow(i, std::int64_t{as_signed(a[i])} * as_signed(b[i])); });
    for_lanes([&](std::size_t i) { a[i] *= b[i]; });
    break;
  case DIVIDE:
  case REMAINDER:
    for_lanes([&](std::size_t i) {
      mark_trapped(active, i, b[i] == 0);
      const std::uint32_t divisor = b[i] == 0 ? 1 : b[i];
      if (is_unsigned) {
        a[i] = op == DIVIDE ? a[i] / divisor : a[i] % divisor;
      } else if (divisor == all_ones) {
        mark_undefined(active, i, a[i] == sign_bit);
        a[i] = op == DIVIDE ? 0 - a[i] : 0;
      } else {
        const std::int32_t x = as_signed(a[i]);
        const std::int32_t y = as_signed(divisor);
        a[i] = static_cast<std::uint32_t>(op == DIVIDE ? x / y : x % y);
      }
    });
    break;
  case BIT_AND: for_lanes([&](std::size_t i) { a[i] &= b[i]; }); break;
  case BIT_OR: for_lanes([&](std::size_t i) { a[i] |= b[i]; }); break;
  case BIT_XOR: for_lanes([&](std::size_t i) { a[i] ^= b[i]; }); break;
  case SHIFT_LEFT:
    for_lanes([&](std::size_t i) {
      mark_undefined(active, i, b[i] > 31);
      if (checks_overflow) {
        const std::int64_t exact = std::int64_t{as_signed(a[i])} * (std::int64_t{1} << (b[i] & 31));
        mark_undefined(active, i, exact != static_cast<std::int32_t>(exact));
      }
      a[i] <<= b[i] & 31;
    });
    break;
  case SHIFT_RIGHT: {
    const bool logical_shift = is_unsigned_word(left_type);
    for_lanes([&](std::size_t i) {
      mark_undefined(active, i, b[i] > 31);
      a[i] = logical_shift ? a[i] >> (b[i] & 31)
                           : static_cast<std::uint32_t>(as_signed(a[i]) >> (b[i] & 31));
    });
    break;
  }
  default: fail("an unknown arithmetic operator");
  }
  wrap(value, type);
}

void Walk::unary(const NODE *tree, const Word &active, Word &value) const {
  value_of(tree->left, active, value);
  auto &a = value.lane;
  const bool checks_overflow = !is_unsigned_word(tree->type) && type_width(tree->type) == 32;
  const auto overflow = [&](std::size_t i, bool holds) {
    if (checks_overflow) mark_undefined(active, i, holds);
  };
  switch (tree->op) {
  case NEGATE:
    for_lanes([&](std::size_t i) {
      overflow(i, a[i] == sign_bit);
      a[i] = 0 - a[i];
    });
    break;
  case COMPLEMENT: for_lanes([&](std::size_t i) { a[i] = ~a[i]; }); break;
  case ABS:
    for_lanes([&](std::size_t i) {
      overflow(i, a[i] == sign_bit);
      if (a[i] & sign_bit) a[i] = 0 - a[i];
    });
    break;
  case SQUARE:
    for_lanes([&](std::size_t i) {
      const std::int64_t exact = std::int64_t{as_signed(a[i])} * as_signed(a[i]);
      overflow(i, exact != static_cast<std::int32_t>(exact));
      a[i] *= a[i];
    });
    break;
  case LOGICAL_NOT: for_lanes([&](std::size_t i) { a[i] = a[i] == 0; }); break;
  default: break; // a conversion
  }
  wrap(value, tree->type);
}

void Walk::relation(const NODE *tree, const Word &active, Word &value) const {
  Word right;
  value_of(tree->left, active, value);
  value_of(tree->right, active, right);
  auto &a = value.lane;
  const auto &b = right.lane;
  // Flipping the sign bits makes a signed comparison an unsigned one.
  const bool is_unsigned = tree->op == ULT || tree->op == ULE || tree->op == UGT ||
                           tree->op == UGE ||
                           is_unsigned_word(balanced(tree->left->type, tree->right->type));
  const std::uint32_t flip = is_unsigned ? 0 : sign_bit;
  switch (tree->op) {
  case EQ: for_lanes([&](std::size_t i) { a[i] = a[i] == b[i]; }); break;
  case NE: for_lanes([&](std::size_t i) { a[i] = a[i] != b[i]; }); break;
  case LT:
  case ULT: for_lanes([&](std::size_t i) { a[i] = (a[i] ^ flip) < (b[i] ^ flip); }); break;
  case LE:
  case ULE: for_lanes([&](std::size_t i) { a[i] = (a[i] ^ flip) <= (b[i] ^ flip); }); break;
  case GT:
  case UGT: for_lanes([&](std::size_t i) { a[i] = (a[i] ^ flip) > (b[i] ^ flip); }); break;
  default: for_lanes([&](std::size_t i) { a[i] = (a[i] ^ flip) >= (b[i] ^ flip); }); break;
  }
  wrap(value, tree->type);
}

void Walk::logical(const NODE *tree, const Word &active, Word &value) const {
  const bool is_and = tree->op == LOGICAL_AND;
  Word inner;
  Word right;
  value_of(tree->left, active, value);
  for_lanes([&](std::size_t i) {
    value.lane[i] = value.lane[i] != 0;
    inner.lane[i] = active.lane[i] & mask_if((value.lane[i] != 0) == is_and);
  });
  value_of(tree->right, inner, right);
  for_lanes([&](std::size_t i) {
    const std::uint32_t truth = right.lane[i] != 0;
    value.lane[i] = is_and ? value.lane[i] & truth : value.lane[i] | truth;
  });
  wrap(value, tree->type);
}

void Walk::conditional(const NODE *tree, const Word &active, Word &value) const {
  const NODE *arms = tree->right;
  if (arms->op != ALTERNATIVES) return fail("? without its alternatives");
  Word condition;
  Word inner;
  Word other;
  value_of(tree->left, active, condition);
  for_lanes([&](std::size_t i) {
    condition.lane[i] = mask_if(condition.lane[i] != 0);
    inner.lane[i] = active.lane[i] & condition.lane[i];
  });
  value_of(arms->left, inner, value);
  for_lanes([&](std::size_t i) { inner.lane[i] = active.lane[i] & ~condition.lane[i]; });
  value_of(arms->right, inner, other);
  for_lanes([&](std::size_t i) {
    value.lane[i] = (value.lane[i] & condition.lane[i]) | (other.lane[i] & ~condition.lane[i]);
  });
  wrap(value, tree->type);
}

// The named variable that the place is, or none for one that a pointer leads to.
const SYM *Walk::object_of(const NODE *place) const {
  if (place->op == NAME) return place->u.sym;
  if (place->op == MEMBER) return place->right->u.sym;
  if (place->op == DEREF && place->left->op == ADDRESS) {
    const NODE *object = place->left->left;
    if (object->type != place->type) fail("an object read as another type");
    return object_of(object);
  }
  if (place->op != DEREF) fail("no place");
  return nullptr;
}

void Walk::through_pointer(const NODE *place, const Word &active, Word &addresses) const {
  value_of(place->left, active, addresses);
  const std::uint32_t end = variable_address(static_cast<std::int32_t>(evaluation.memory->size()));
  for_lanes([&](std::size_t i) {
    std::uint32_t &address = addresses.lane[i];
    const bool is_wild = address < first_variable_address || address >= end || (address & 15) != 0;
    mark_trapped(active, i, is_wild);
    address = is_wild ? 0 : (address - first_variable_address) / 16;
  });
}

void Walk::load(const NODE *place, const Word &active, Word &value) const {
  if (const SYM *object = object_of(place)) {
    value = (*evaluation.memory)[static_cast<std::size_t>(object->count)];
  } else if (place->op == DEREF) {
    Word slots;
    through_pointer(place, active, slots);
    for_lanes([&](std::size_t i) { value.lane[i] = (*evaluation.memory)[slots.lane[i]].lane[i]; });
  }
  wrap(value, place->type);
}

// Leaves in value what the place then holds.
void Walk::store(const NODE *place, const Word &active, Word &value) const {
  const SYM *object = object_of(place);
  wrap(value, place->type);
  if (!object) {
    if (place->op != DEREF) return;
    Word slots;
    through_pointer(place, active, slots);
    for_lanes([&](std::size_t i) {
      std::uint32_t &target = (*evaluation.memory)[slots.lane[i]].lane[i];
      target = (value.lane[i] & active.lane[i]) | (target & ~active.lane[i]);
    });
    return;
  }
  if (object->sclass == C_FIELD) {
    const int unused = 32 - object->size;
    const bool is_unsigned = is_unsigned_basic(object->stype);
    for_lanes([&](std::size_t i) {
      const std::uint32_t top = value.lane[i] << unused;
      value.lane[i] =
          is_unsigned ? top >> unused : static_cast<std::uint32_t>(as_signed(top) >> unused);
    });
  }
  Word &target = (*evaluation.memory)[static_cast<std::size_t>(object->count)];
  for_lanes([&](std::size_t i) {
    target.lane[i] = (value.lane[i] & active.lane[i]) | (target.lane[i] & ~active.lane[i]);
  });
}

void Walk::assignment(const NODE *tree, const Word &active, Word &value) const {
  const TypeWord target_type = tree->left->type;
  if (tree->op == ASSIGN) {
    value_of(tree->right, active, value);
    store(tree->left, active, value);
    wrap(value, tree->type);
    return;
  }
  Word right;
  Word old;
  value_of(tree->right, active, right);
  load(tree->left, active, old);
  value = old;
  const bool is_step = tree->op == INCREMENT || tree->op == DECREMENT;
  const std::uint8_t op = tree->op == INCREMENT   ? static_cast<std::uint8_t>(ADD)
                          : tree->op == DECREMENT ? static_cast<std::uint8_t>(SUBTRACT)
                                                  : static_cast<std::uint8_t>(asgop_base(tree->op));
  const bool is_shift = op == SHIFT_LEFT || op == SHIFT_RIGHT;
  const TypeWord type = is_shift ? promoted(target_type) : balanced(target_type, tree->right->type);
  arithmetic(op, type, tree->right->type, type, active, value, right);
  store(tree->left, active, value);
  if (is_step) value = old;
  wrap(value, tree->type);
}

void Walk::value_of(const NODE *tree, const Word &active, Word &value) const {
  if (!is_derived(tree->type) && !type_is_integer(tree->type)) {
    fill(value, 0);
    return fail("a type that is no integer");
  }
  switch (tree->op) {
  case ICON: fill(value, wrapped_word(static_cast<std::uint32_t>(tree->u.lval), tree->type)); break;
  case NAME:
  case MEMBER:
  case DEREF: load(tree, active, value); break;
  case ADDRESS: {
    const SYM *object = object_of(tree->left);
    if (object)
      fill(value, variable_address(object->count));
    else
      value_of(tree->left->left, active, value);
    break;
  }
  case NEGATE:
  case COMPLEMENT:
  case ABS:
  case SQUARE:
  case LOGICAL_NOT:
  case SCONV:
  case PCONV:
  case IDENTITY: unary(tree, active, value); break;
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case DIVIDE:
  case REMAINDER:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case SHIFT_LEFT:
  case SHIFT_RIGHT: {
    Word right;
    value_of(tree->left, active, value);
    value_of(tree->right, active, right);
    arithmetic(tree->op, tree->left->type, tree->right->type, tree->type, active, value, right);
    break;
  }
  case PMCONV:
  case PVCONV: {
    // The factor is in bits.
    value_of(tree->left, active, value);
    const std::int32_t factor = tree->right->u.lval / 8;
    if (tree->right->op != ICON || factor == 0) return fail("a scaling by no constant");
    for_lanes([&](std::size_t i) {
      std::uint32_t &word = value.lane[i];
      word = tree->op == PMCONV ? word * static_cast<std::uint32_t>(factor)
                                : static_cast<std::uint32_t>(as_signed(word) / factor);
    });
    wrap(value, tree->type);
    break;
  }
  case EQ:
  case NE:
  case LE:
  case LT:
  case GE:
  case GT:
  case ULE:
  case ULT:
  case UGE:
  case UGT: relation(tree, active, value); break;
  case LOGICAL_AND:
  case LOGICAL_OR: logical(tree, active, value); break;
  case CONDITIONAL: conditional(tree, active, value); break;
  case COMMA_OP:
    value_of(tree->left, active, value);
    value_of(tree->right, active, value);
    wrap(value, tree->type);
    break;
  case ASSIGN:
  case INCREMENT:
  case DECREMENT: assignment(tree, active, value); break;
  default:
    fill(value, 0);
    if (asgop_base(tree->op) != ILLOP) return assignment(tree, active, value);
    fail("an operator that is not expected");
  }
}

bool is_ordered(const NODE *tree) {
  return tree->op == LOGICAL_AND || tree->op == LOGICAL_OR || tree->op == CONDITIONAL ||
         tree->op == ALTERNATIVES || tree->op == COMMA_OP;
}

} // namespace

std::uint32_t wrapped_word(std::uint32_t word, TypeWord type) {
  const std::int32_t width = is_derived(type) ? pointer_width : type_width(type);
  if (width >= 32 || width <= 0) return word;
  const int unused = 32 - width;
  return is_unsigned_basic(type) ? (word << unused) >> unused
                                 : static_cast<std::uint32_t>(as_signed(word << unused) >> unused);
}

void evaluate(const NODE *tree, Evaluation &evaluation, Word &value) {
  Word active;
  fill(active, all_ones);
  fill(evaluation.undefined, 0);
  fill(evaluation.trapped, 0);
  Walk{evaluation}.value_of(tree, active, value);
}

Accesses accesses_of(const NODE *tree, std::uint64_t pointed_at) {
  const auto slot_bit = [](const SYM *sym) { return std::uint64_t{1} << sym->count; };
  Accesses result;
  if (tree->op == NAME) {
    result.reads = slot_bit(tree->u.sym);
    return result;
  }
  if (tree->op == MEMBER) {
    result.reads = slot_bit(tree->right->u.sym);
    return result;
  }
  if (!tree->left) return result;
  if (tree->op == ADDRESS && tree->left->op == NAME) return result;
  const Accesses left = accesses_of(tree->left, pointed_at);
  const Accesses right = tree->right ? accesses_of(tree->right, pointed_at) : Accesses{};
  result.reads = left.reads | right.reads;
  result.writes = left.writes | right.writes;
  result.ordered = left.ordered && right.ordered;
  if (!is_ordered(tree) && ((left.writes & (right.reads | right.writes)) ||
                            (right.writes & (left.reads | left.writes)))) {
    // Reading the target's old contents is ordered before the store, a store to it is not.
    result.ordered = false;
  }
  if (tree->op == DEREF) result.reads |= pointed_at;
  if (op_effect(tree->op) == ASSIGNS) {
    const std::uint64_t target = tree->left->op == DEREF  ? pointed_at
                                 : tree->left->op == NAME ? slot_bit(tree->left->u.sym)
                                                          : slot_bit(tree->left->right->u.sym);
    if (result.writes & target) result.ordered = false;
    result.writes |= target;
  }
  return result;
}

} // namespace velkor::exhaustive
