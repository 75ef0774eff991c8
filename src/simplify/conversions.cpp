// Rules for conversions: between arithmetic types, to pointers, of arguments.
//
// In the patterns, (t) x is the conversion, of type t, from the type of x.
#include "simplify/conversions.h"

#include "core/bit_arithmetic.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/options.h"
#include "simplify/bits.h"
#include "simplify/constant_text.h"
#include "simplify/fold.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <cmath>
#include <string>

namespace velkor {
namespace {

// Levels of operators that a conversion sinks through. Conversions that alternate along a chain
// each sink to its end; without a limit that costs quadratic time.
constexpr int deepest_sinking = 32;
int sinking_level = 0;

// Counts one more level while it lives.
class SinkingLevel {
public:
  SinkingLevel() { sinking_level += 1; }
  ~SinkingLevel() { sinking_level -= 1; }
  SinkingLevel(const SinkingLevel &) = delete;
  SinkingLevel &operator=(const SinkingLevel &) = delete;
};

bool may_sink() {
  return sinking_level < deepest_sinking;
}

// (type) operand, simplified, one level down; takes the operand. An operand of the type stays.
NODE *sink(TypeWord type, NODE *operand) {
  if (operand->type == type) return operand;
  const SinkingLevel level;
  return simplify_node(make_node(SCONV, operand, nullptr, type));
}

// The operand alone; the conversion is erased.
Outcome drop_conversion(NODE *&tree) {
  tree = replace_by_left(tree);
  return Outcome::DONE;
}

// ------------------------------------------------------------------------------------------------
// What happens to any operand

// (enum) x  ->  (int) x
Outcome enum_to_int(NODE *&tree) {
  if (tree->type != ENUM) return Outcome::NEXT;
  tree->type = INT;
  return Outcome::REWRITTEN;
}

// (t) x, t narrower  ->  (t) x', x' agreeing with x in the bits of t
Outcome demand_target_bits(NODE *&tree) {
  if (!is_integer(tree->type) || !is_integer(tree->left->type)) return Outcome::NEXT;
  if (type_width(tree->type) >= type_width(tree->left->type)) return Outcome::NEXT;
  const NODE *operand = tree->left;
  const Opcode op = operand->op;
  tree->left = demand_bits(tree->left, type_mask(tree->type));
  // Another operator may ask less of its operands.
  if (tree->left->op != op) tree->left = demand_bits(tree->left, type_mask(tree->type));
  // Effects of what is not looked at come out in front.
  if (tree->left->op == COMMA_OP) return finish(tree, tree);
  return tree->left == operand ? Outcome::NEXT : Outcome::REWRITTEN;
}

// (t) (u) x  ->  (t) x, no bits of t lost in u
Outcome drop_inner_conversion(NODE *&tree) {
  const NODE *inner = tree->left;
  if (!conversion_is_needless(tree->type, inner)) return Outcome::NEXT;
  if (type_width(tree->type) > type_width(inner->left->type)) return Outcome::NEXT;
  tree->left = replace_by_left(tree->left);
  return Outcome::AGAIN;
}

// (t) x  ->  x, x of type t
Outcome drop_equal_conversion(NODE *&tree) {
  return tree->left->type == tree->type ? drop_conversion(tree) : Outcome::NEXT;
}

// ------------------------------------------------------------------------------------------------
// Constants

// (float type) 1.5  ->  1.5
Outcome convert_float_constant(NODE *&tree) {
  if (tree->left->op != FCON || !is_floating(tree->type)) return Outcome::NEXT;
  // A value that 15 digits do not hold stays a conversion: 0.1f is no text of type double.
  if (!retype_float_constant(tree->left, tree->type)) return Outcome::STOP;
  return drop_conversion(tree);
}

// (float type) 3  ->  3.0
Outcome integer_to_float_constant(NODE *&tree) {
  NODE *constant = tree->left;
  if (constant->op != ICON || !is_integer(constant->type) || !is_floating(tree->type))
    return Outcome::NEXT;
  const std::int32_t word = constant->u.lval;
  const std::string digits = is_unsigned_integer(constant->type)
                                 ? std::to_string(static_cast<std::uint32_t>(word))
                                 : std::to_string(word);
  constant->op = FCON;
  constant->u.lval = 0;
  constant->aux.text = canon_float_text(digits + ".0", true);
  constant->type = DOUBLE; // which holds every word
  if (!retype_float_constant(constant, tree->type)) return Outcome::STOP;
  return drop_conversion(tree);
}

// The constant's value as a number.
double integer_value(const NODE *icon) {
  if (is_unsigned_integer(icon->type)) return static_cast<std::uint32_t>(icon->u.lval);
  return icon->u.lval;
}

// (integer type) 3.9  ->  3, within the type's range
Outcome float_to_integer_constant(NODE *&tree) {
  const NODE *constant = tree->left;
  if (constant->op != FCON || !is_integer(tree->type)) return Outcome::NEXT;
  if (constant->type == LONG_DOUBLE) return Outcome::STOP; // no number of the host
  const double value = float_constant_value(constant);
  constexpr double word_limit = 4294967296.0; // no integer type holds more
  if (!(std::fabs(value) < word_limit)) return Outcome::STOP;
  const auto word = static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
  NODE *result = convert_tree(tree->type, make_icon(static_cast<std::int32_t>(word), LONG));
  const double integer = integer_value(result);
  if (std::fabs(integer - value) >= 1.0 || (integer < 0) != (value < 0)) {
    erase_tree(result);
    return Outcome::STOP;
  }
  erase_tree(tree);
  tree = result;
  return Outcome::DONE;
}

// (char) 300  ->  44
Outcome convert_integer_constant(NODE *&tree) {
  NODE *constant = tree->left;
  if (!is_integer_icon(constant) || !is_integer(tree->type)) return Outcome::NEXT;
  constant->u.lval = wrap_to_type(constant->u.lval, tree->type);
  constant->type = tree->type;
  return drop_conversion(tree);
}

TypeWord signed_type_of_rank(TypeWord type) {
  switch (type) {
  case UNSIGNED_CHAR: return CHAR;
  case UNSIGNED_SHORT: return SHORT;
  case UNSIGNED: return INT;
  default: return LONG;
  }
}

// (unsigned t) (x + K)  ->  (unsigned t) (x + K'), K' without the bits that t drops
Outcome shorten_addend(NODE *&tree) {
  NODE *sum = tree->left;
  if (sum->op != ADD || !is_integer_icon(sum->right)) return Outcome::NEXT;
  if (!is_unsigned_integer(tree->type) || !is_integer(sum->type)) return Outcome::NEXT;
  if (type_width(tree->type) >= type_width(sum->type)) return Outcome::NEXT;
  NODE *addend = sum->right;
  const std::int32_t value =
      wrap_value(wrap_to_type(addend->u.lval, signed_type_of_rank(tree->type)), addend->type);
  if (value == addend->u.lval) return Outcome::NEXT;
  addend->u.lval = value;
  if (value != 0) return Outcome::REWRITTEN;
  tree->left = simplify_node(sum);
  return Outcome::AGAIN;
}

// ------------------------------------------------------------------------------------------------
// Between types of one width

// Does (type) sink through the operator without a change of the value's bits, and without making
// an operator signed that wraps around in the program? Other rules take it that signed arithmetic
// does not.
bool sinks_through(const NODE *operation, TypeWord type) {
  const bool may_wrap = is_unsigned_integer(type) || is_signed_integer(operation->type);
  if (is_leaf(operation) || !is_integer(operation->left->type)) return false;
  switch (operation->op) {
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR: return is_integer(operation->right->type);
  case COMPLEMENT: return true;
  case MULTIPLY: return may_wrap && is_integer(operation->right->type);
  case ADD:
    return may_wrap && is_integer(operation->right->type) &&
           (is_unsigned_integer(type) || !is_icon(operation->right));
  case SUBTRACT: return is_unsigned_integer(type) && is_integer(operation->right->type);
  case NEGATE:
  case SHIFT_LEFT: return may_wrap;
  default: return false;
  }
}

// Is the operator's right operand one that the conversion sinks into?
bool sinks_into_right(Opcode op) {
  return op != COMPLEMENT && op != NEGATE && op != SHIFT_LEFT;
}

// (unsigned) (x + y)  ->  (unsigned) x + (unsigned) y, and so with * & | ^ - U- ~ <<
// (unsigned) (x >> y)  ->  x >> y of type unsigned: it fills by the type of x
Outcome sink_between_words(NODE *&tree) {
  NODE *operation = tree->left;
  const TypeWord type = tree->type;
  if (!is_word_integer(type) || !is_word_integer(operation->type)) return Outcome::NEXT;
  if (operation->op == SHIFT_RIGHT) {
    set_type(operation, type);
    return drop_conversion(tree);
  }
  if (!may_sink() || !sinks_through(operation, type)) return Outcome::NEXT;
  operation->left = sink(type, operation->left);
  if (sinks_into_right(operation->op)) operation->right = sink(type, operation->right);
  set_type(operation, type);
  return finish(tree, replace_by_left(tree));
}

// (int) e  ->  e, e an enum object of at most 32 bits
Outcome drop_enum_conversion(NODE *&tree) {
  NODE *name = tree->left;
  if (name->type != ENUM || tree->type != INT || name->op != NAME) return Outcome::NEXT;
  const SYM *tag = name->u.sym->tag;
  if (!tag || tag->size > 32) return Outcome::NEXT;
  if (tag->size == 32) name->type = INT;
  return drop_conversion(tree);
}

// ------------------------------------------------------------------------------------------------
// Widening

// Do both types come out of the promotions with one sign? An operand whose sign changed would
// change how its parent compares.
bool promote_alike(TypeWord a, TypeWord b) {
  return is_signed_integer(promote_type(a)) == is_signed_integer(promote_type(b));
}

// (int) c  ->  c, of its narrow type: the promotions widen it
Outcome drop_widening(NODE *&tree) {
  const TypeWord target = tree->type;
  const TypeWord source = tree->left->type;
  if (!is_integer(target) || !is_integer(source) || target == ENUM || source == ENUM)
    return Outcome::NEXT;
  if (target != INT && target != SHORT && target != UNSIGNED) return Outcome::NEXT;
  if (type_width(source) >= type_width(target)) return Outcome::NEXT;
  if (is_signed_integer(source) && is_unsigned_integer(target)) return Outcome::NEXT;
  return promote_alike(source, target) ? drop_conversion(tree) : Outcome::NEXT;
}

// (int) (x < y)  ->  x < y
Outcome drop_conversion_of_boolean(NODE *&tree) {
  const TypeWord source = tree->left->type;
  if (!is_integer(tree->type) || !is_boolean_tree(tree->left)) return Outcome::NEXT;
  if (is_signed_integer(promote_type(source)) != is_signed_integer(tree->type))
    return Outcome::NEXT;
  return promote_alike(source, tree->type) ? drop_conversion(tree) : Outcome::NEXT;
}

// ------------------------------------------------------------------------------------------------
// Operators below the conversion

// x of the sum's type in place of (t) x.
bool widen_operand(NODE *&operand, const NODE *sum, TypeWord type) {
  if (operand->op != SCONV || operand->type != type) return false;
  if (!is_scalar(operand->left->type)) return false;
  set_type(operand, sum->type);
  operand = simplify_node(operand);
  return true;
}

// (char) ((char) x + y)  ->  (char) (x + y), and so with -
Outcome narrow_once(NODE *&tree) {
  NODE *sum = tree->left;
  if (!is_sum_or_difference(sum) || !is_integer(sum->type) || !is_integer(tree->type))
    return Outcome::NEXT;
  if (type_width(tree->type) >= type_width(sum->type)) return Outcome::NEXT;
  // A floating operand would make the sum one of another type.
  if (!is_integer(sum->left->type) || !is_integer(sum->right->type)) return Outcome::NEXT;
  const bool left = widen_operand(sum->left, sum, tree->type);
  const bool right = widen_operand(sum->right, sum, tree->type);
  if (!left && !right) return Outcome::NEXT;
  tree->left = simplify_node(sum);
  return Outcome::AGAIN;
}

// Is (type) of the arm the same whether or not the arm is brought to the ?'s type first?
bool arm_is_direct(TypeWord type, TypeWord conditional_type, const NODE *arm) {
  return is_integer(type) && is_integer(conditional_type) && is_integer(arm->type) &&
         type_width(type) <= type_width(conditional_type);
}

// (type) arm; takes the arm.
NODE *convert_arm(TypeWord type, TypeWord conditional_type, NODE *arm) {
  if (!arm_is_direct(type, conditional_type, arm)) arm = sink(conditional_type, arm);
  return sink(type, arm);
}

// (t) (c ? x : y)  ->  c ? (t) x : (t) y
Outcome sink_into_arms(NODE *&tree) {
  NODE *conditional = tree->left;
  const TypeWord type = tree->type;
  if (conditional->op != CONDITIONAL || !is_scalar(type) || !is_scalar(conditional->type) ||
      !may_sink())
    return Outcome::NEXT;
  NODE *arms = conditional->right;
  arms->left = convert_arm(type, conditional->type, arms->left);
  arms->right = convert_arm(type, conditional->type, arms->right);
  set_type(arms, type);
  set_type(conditional, type);
  return finish(tree, replace_by_left(tree));
}

constexpr Rule arithmetic_conversion_table[] = {
    {"(enum) x  ->  (int) x", enum_to_int},
    {"(t) x  ->  (t) x', of the bits of t", demand_target_bits},
    {"(t) (u) x  ->  (t) x", drop_inner_conversion},
    {"(t) x  ->  x, x of type t", drop_equal_conversion},
    {"(float type) 1.5  ->  1.5", convert_float_constant},
    {"(float type) 3  ->  3.0", integer_to_float_constant},
    {"(integer type) 3.9  ->  3", float_to_integer_constant},
    {"(char) 300  ->  44", convert_integer_constant},
    {"(unsigned t) (x + K)  ->  (unsigned t) (x + K')", shorten_addend},
    {"(unsigned) (x op y)  ->  (unsigned) x op (unsigned) y", sink_between_words},
    {"(int) e  ->  e, e an enum object", drop_enum_conversion},
    {"(int) c  ->  c, c narrower", drop_widening},
    {"(int) (x < y)  ->  x < y", drop_conversion_of_boolean},
    {"(t) ((t) x + y)  ->  (t) (x + y)", narrow_once},
    {"(t) (c ? x : y)  ->  c ? (t) x : (t) y", sink_into_arms},
};

// ------------------------------------------------------------------------------------------------
// Pointers

// (t *) p  ->  p, of type t *
Outcome retype_pointer(NODE *&tree) {
  NODE *operand = tree->left;
  // An access has the type of what it reads, a literal that of its bytes.
  const bool is_fixed = operand->op == DEREF || operand->op == SCON;
  if (operand->type != tree->type && (!is_pointer(operand->type) || is_fixed)) return Outcome::NEXT;
  set_type(operand, tree->type);
  if (operand->op == CONDITIONAL) set_type(operand->right, tree->type);
  return drop_conversion(tree);
}

NODE *convert_arm_to_pointer(TypeWord type, NODE *arm) {
  const SinkingLevel level;
  return simplify_node(make_node(PCONV, arm, nullptr, type));
}

// (t *) (c ? x : y)  ->  c ? (t *) x : (t *) y
Outcome sink_into_pointer_arms(NODE *&tree) {
  NODE *conditional = tree->left;
  if (conditional->op != CONDITIONAL || !may_sink()) return Outcome::NEXT;
  NODE *arms = conditional->right;
  arms->left = convert_arm_to_pointer(tree->type, arms->left);
  arms->right = convert_arm_to_pointer(tree->type, arms->right);
  set_type(arms, tree->type);
  set_type(conditional, tree->type);
  return finish(tree, replace_by_left(tree));
}

constexpr Rule pointer_conversion_table[] = {
    {"(t *) p  ->  p", retype_pointer},
    {"(t *) (c ? x : y)  ->  c ? (t *) x : (t *) y", sink_into_pointer_arms},
};

} // namespace

const RuleSet arithmetic_conversion_rules{"arithmetic conversion", arithmetic_conversion_table};
const RuleSet pointer_conversion_rules{"pointer conversion", pointer_conversion_table};

NODE *simplify_sconv(NODE *node) {
  if (is_derived(node->left->type) || is_derived(node->type)) return node;
  return apply_rules(arithmetic_conversion_rules, node);
}

NODE *simplify_pconv(NODE *node) {
  return apply_rules(pointer_conversion_rules, node);
}

// An argument keeps a marker of its conversion: the conversion that is left of it, or an empty one.
NODE *simplify_aconv(NODE *node) {
  const TypeWord type = node->type;
  if (is_derived(type) || is_derived(node->left->type)) return node;
  node->op = SCONV;
  NODE *value = simplify_sconv(node);
  if (value->op == SCONV && value->type == type) {
    value->op = ACONV;
    return value;
  }
  return make_node(ACONV, value, nullptr, type);
}

} // namespace velkor
