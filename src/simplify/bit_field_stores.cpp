// Stores to bit fields.
#include "core/bit_arithmetic.h"
#include "core/compare.h"
#include "core/nodes.h"
#include "core/symbols.h"
#include "simplify/bit_field_expansion.h"
#include "simplify/bit_fields.h"
#include "simplify/compound.h"
#include "simplify/patterns.h"
#include "simplify/simplify.h"

#include <array>

namespace velkor {
namespace {

const SYM *field_of(const NODE *assignment) {
  return assignment->left->right->u.sym;
}

bool assigns_to_itself(const NODE *assignment) {
  return trees_equal(assignment->left, assignment->right, false);
}

void set_right(NODE *assignment, NODE *right) {
  erase_tree(assignment->right);
  assignment->right = right;
}

std::int32_t field_bits(const NODE *assignment) {
  return static_cast<std::int32_t>(bit_fields::field_mask(field_of(assignment)->size, 0));
}

// x += y, x -= y  ->  x ^= y, for a field of one bit
Outcome carry_of_one_bit(NODE *&tree) {
  if ((tree->op != ASG_ADD && tree->op != ASG_SUBTRACT) || field_of(tree)->size != 1)
    return Outcome::NEXT;
  tree->op = ASG_XOR;
  return Outcome::AGAIN;
}

// x += x  ->  x <<= 1
Outcome add_to_itself(NODE *&tree) {
  if (tree->op != ASG_ADD || !assigns_to_itself(tree)) return Outcome::NEXT;
  tree->op = ASG_SHIFT_LEFT;
  set_right(tree, make_icon(1, INT));
  return Outcome::DONE;
}

// x -= x, x ^= x  ->  x = 0
Outcome cancel_itself(NODE *&tree) {
  if ((tree->op != ASG_SUBTRACT && tree->op != ASG_XOR) || !assigns_to_itself(tree))
    return Outcome::NEXT;
  tree->op = ASSIGN;
  set_right(tree, make_icon(0, tree->type));
  return Outcome::DONE;
}

// x &= x, x |= x, x = x  ->  x
Outcome keep_itself(NODE *&tree) {
  if (tree->op != ASG_AND && tree->op != ASG_OR && tree->op != ASSIGN) return Outcome::NEXT;
  if (!assigns_to_itself(tree)) return Outcome::NEXT;
  NODE *right = tree->right;
  erase_tree(tree->left);
  erase_node(tree);
  tree = right;
  return Outcome::DONE;
}

// x = x ^ ~0  ->  x ^= ~0
Outcome complement_itself(NODE *&tree) {
  const NODE *value = tree->right;
  if (tree->op != ASSIGN || value->op != BIT_XOR || !is_icon(value->right)) return Outcome::NEXT;
  const std::uint32_t mask = value_mask(tree->type);
  if ((static_cast<std::uint32_t>(value->right->u.lval) & mask) != mask) return Outcome::NEXT;
  if (!trees_equal(tree->left, value->left, false)) return Outcome::NEXT;
  tree->op = ASG_XOR;
  set_right(tree, make_icon(wrap_value(-1, tree->type), tree->type));
  return Outcome::AGAIN;
}

NODE *logarithm_of_right(NODE *tree) {
  return make_icon(log2_of(tree->right->u.lval), INT);
}

// x *= 2^n  ->  x <<= n
Outcome multiply_by_power(NODE *&tree) {
  if (tree->op != ASG_MULTIPLY || !is_icon(tree->right) || log2_of(tree->right->u.lval) < 0)
    return Outcome::NEXT;
  tree->op = ASG_SHIFT_LEFT;
  set_right(tree, logarithm_of_right(tree));
  return Outcome::DONE;
}

// x /= 2^n  ->  x >>= n, unsigned
Outcome divide_by_power(NODE *&tree) {
  if (tree->op != ASG_DIVIDE || !is_icon(tree->right) || log2_of(tree->right->u.lval) < 0)
    return Outcome::NEXT;
  // A signed division rounds towards zero, a shift does not.
  if (!is_unsigned_integer(tree->type) || !is_unsigned_integer(tree->left->type))
    return Outcome::NEXT;
  tree->op = ASG_SHIFT_RIGHT;
  set_right(tree, logarithm_of_right(tree));
  return Outcome::DONE;
}

// x op= K  ->  x op= K & field's bits, for & | ^ and plain stores
Outcome cut_constant(NODE *&tree) {
  if (tree->op != ASG_AND && tree->op != ASG_OR && tree->op != ASG_XOR && tree->op != ASSIGN)
    return Outcome::NEXT;
  if (!is_icon(tree->right)) return Outcome::NEXT;
  const std::int32_t cut = tree->right->u.lval & field_bits(tree);
  if (cut == tree->right->u.lval) return Outcome::NEXT;
  tree->right->u.lval = cut;
  return Outcome::DONE;
}

// A volatile field is stored to, not combined with what it holds; and a field of a whole word needs
// nothing of the word to survive.
bool takes_constant_by_mask(const NODE *tree) {
  return tree->op == ASSIGN && is_icon(tree->right) && !is_volatile_node(tree->left) &&
         field_of(tree)->size < 32;
}

// x = 0  ->  x &= 0
Outcome clear_by_and(NODE *&tree) {
  if (!takes_constant_by_mask(tree) || tree->right->u.lval != 0) return Outcome::NEXT;
  tree->op = ASG_AND;
  return Outcome::DONE;
}

// x = ~0  ->  x |= ~0
Outcome set_by_or(NODE *&tree) {
  if (!takes_constant_by_mask(tree) || tree->right->u.lval != field_bits(tree))
    return Outcome::NEXT;
  tree->op = ASG_OR;
  return Outcome::DONE;
}

constexpr std::array store_rule_list = {
    Rule{"x += y, x -= y  ->  x ^= y (one bit)", carry_of_one_bit},
    Rule{"x += x  ->  x <<= 1", add_to_itself},
    Rule{"x -= x, x ^= x  ->  x = 0", cancel_itself},
    Rule{"x &= x, x |= x, x = x  ->  x", keep_itself},
    Rule{"x = x ^ ~0  ->  x ^= ~0", complement_itself},
    Rule{"x *= 2^n  ->  x <<= n", multiply_by_power},
    Rule{"x /= 2^n  ->  x >>= n", divide_by_power},
    Rule{"x op= K  ->  x op= K & field's bits", cut_constant},
};

constexpr std::array discarded_store_rule_list = {
    Rule{"x = 0  ->  x &= 0", clear_by_and},
    Rule{"x = ~0  ->  x |= ~0", set_by_or},
};

} // namespace

const RuleSet field_store_rules{"stores to bit fields", store_rule_list};
const RuleSet discarded_field_store_rules{"stores of constants to bit fields",
                                          discarded_store_rule_list};

namespace bit_fields {
namespace {

void step_to_compound(NODE *node) {
  node->op = node->op == INCREMENT ? ASG_ADD : ASG_SUBTRACT;
}

SYM *new_temporary(TypeWord type) {
  return make_temp('B', -1, 0, type);
}

// Does evaluating the tree change anything? Reading something volatile does not count.
bool changes_something(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (op_effect(tree->op) != PURE) return true;
    if (tree->right && changes_something(tree->right)) return true;
  }
  return false;
}

// x op= y, with y a float or a pointer  ->  x = (int) (x op y)
NODE *convert_value(NODE *assignment) {
  assignment = expand_compound_assignment(assignment);
  assignment->right = make_conversion(assignment->left->type, assignment->right);
  return assignment;
}

// ------------------------------------------------------------------------------------------------
// Where the value is not used

// ~mask within the unit, as a constant of the given type.
NODE *other_bits(const NODE *unit, const FieldView &view, TypeWord type) {
  const std::uint32_t bits = ~field_mask(view.width, view.shift) & value_mask(unit->type);
  return make_icon(static_cast<std::int32_t>(bits), type);
}

void take_unit_as_target(NODE *assignment, NODE *unit) {
  assignment->left = unit;
  assignment->depnum = unit->depnum;
  set_type(assignment, unit->type);
}

// The value cut to the field and moved to its place, in its own promoted type.
NODE *value_in_place(NODE *value, const FieldView &field) {
  FieldView view;
  value = load_masked_field(value, field.width, view);
  value = prepare_value(value, view, field.width);
  return move_field(value, view, field.width, field.shift, promote_type(value->type));
}

// field &= v  ->  unit &= v' | ~mask; field |= v, field ^= v  ->  unit op= v'
NODE *expand_bitwise_store(NODE *assignment) {
  FieldView view;
  NODE *unit = load_field(assignment->left, 0, view);
  take_unit_as_target(assignment, unit);
  NODE *value = value_in_place(assignment->right, view);
  if (assignment->op == ASG_AND) {
    const TypeWord type = promote_type(value->type);
    value = make_node(BIT_OR, value, other_bits(unit, view, type), type);
  }
  assignment->right = value;
  return assignment;
}

// field = v  ->  unit = (unit & ~mask) | v'
NODE *expand_plain_store(NODE *assignment) {
  FieldView view;
  NODE *unit = load_field(assignment->left, 0, view);
  take_unit_as_target(assignment, unit);
  if (view.width == value_width(unit->type)) { // no other field lives in this unit
    assignment->right = convert_tree(unit->type, expand_tree(assignment->right, Use::VALUE));
    return assignment;
  }
  NODE *others =
      make_node(BIT_AND, copy_tree(unit), other_bits(unit, view, unit->type), unit->type);
  NODE *value = value_in_place(assignment->right, view);
  assignment->right = make_node(BIT_OR, others, value, balance_type(others, value));
  return assignment;
}

// field op= v, where v changes something  ->  B = v , field op= B
// The unit's other bits must be read behind whatever v does to them.
NODE *store_by_temporary(NODE *assignment) {
  SYM *value = new_temporary(assignment->right->type);
  NODE *save = make_assign(make_name(value), assignment->right);
  assignment->right = make_name(value);
  return make_comma(expand_tree(save, Use::NOTHING), expand_tree(assignment, Use::NOTHING));
}

bool is_bitwise(const NODE *node) {
  return node->op == BIT_AND || node->op == BIT_OR || node->op == BIT_XOR;
}

bool is_bitwise_assignment(const NODE *node) {
  return node->op == ASG_AND || node->op == ASG_OR || node->op == ASG_XOR;
}

NODE *expand_store_void(NODE *assignment) {
  if (changes_something(assignment->right)) return store_by_temporary(assignment);
  if (!is_bitwise_assignment(assignment)) {
    assignment = expand_compound_assignment(assignment);
    if (is_bitwise(assignment->right)) assignment = to_compound_assignment(assignment);
  }
  return assignment->op == ASSIGN ? expand_plain_store(assignment)
                                  : expand_bitwise_store(assignment);
}

// ------------------------------------------------------------------------------------------------
// Where the value is used

// x++  ->  ((B = x , x += 1) , B): the temporary keeps the value from before
NODE *expand_step_value(NODE *step) {
  SYM *old = new_temporary(step->type);
  NODE *save = make_assign(make_name(old), copy_tree(step->left));
  step_to_compound(step);
  return expand_tree(make_comma(make_comma(save, step), make_name(old)), Use::VALUE);
}

// Reads the same, and without effect, any number of times.
bool is_repeatable(const NODE *value) {
  if (value->op == ICON) return true;
  return value->op == NAME && value->u.sym->sclass == C_AUTO && !is_volatile_node(value);
}

// Moves what is to be done ahead of a value from the value to the chain, so that a chain of
// assignments is not walked again at each of its levels.
void take_commas(NODE *&chain, NODE *&value) {
  while (value->op == COMMA_OP) {
    NODE *comma = value;
    value = comma->right;
    chain = make_comma(chain, comma->left);
    erase_node(comma);
  }
}

// x = v  ->  ((B = v , x = B) , what the field holds of B)
NODE *expand_store_value(NODE *assignment) {
  if (is_increment_or_decrement(assignment->op)) return expand_step_value(assignment);
  assignment = expand_compound_assignment(assignment);
  NODE *field = assignment->left;
  const std::int32_t width = field_of(assignment)->size;
  const TypeWord type = field->type;
  NODE *chain = nullptr;
  NODE *value = expand_tree(assignment->right, Use::VALUE);
  erase_node(assignment);
  take_commas(chain, value);
  value = simplify_tree(value);
  take_commas(chain, value);
  if (!is_repeatable(value)) {
    SYM *symbol = new_temporary(value->type);
    chain = make_comma(chain, make_assign(make_name(symbol), value));
    value = make_name(symbol);
  }
  NODE *result = field_value(copy_tree(value), width, type);
  NODE *store = expand_tree(make_assign(field, value), Use::NOTHING);
  return make_comma(make_comma(chain, store), result);
}

// ------------------------------------------------------------------------------------------------
// Updates of volatile fields

// What the field holds of a unit whose value is in a temporary.
NODE *field_of_word(SYM *word, FieldView view) {
  NODE *bits = mask_field(make_name(word), view.width, view.shift, view.type);
  return move_field(prepare_value(bits, view, 0), view, value_width(view.type), 0, view.type);
}

NODE *append_assignment(NODE *chain, SYM *symbol, NODE *value) {
  return make_comma(chain, make_assign(make_name(symbol), value));
}

// x op= y  ->  B = unit , unit = (B & ~mask) | (x of B op y)'
// The unit is read once and written once, whatever the value is used for.
NODE *expand_volatile_update(NODE *assignment, Use use) {
  const bool wants_old = is_increment_or_decrement(assignment->op);
  if (wants_old) step_to_compound(assignment);
  NODE *chain = nullptr;
  NODE *operand = expand_tree(assignment->right, Use::VALUE);
  if (changes_something(operand)) {
    SYM *symbol = new_temporary(operand->type);
    chain = append_assignment(chain, symbol, operand);
    operand = make_name(symbol);
  }
  FieldView view;
  NODE *unit = load_field(assignment->left, 0, view);
  SYM *word = new_temporary(unit->type);
  chain = append_assignment(chain, word, copy_tree(unit));

  const Opcode op = asgop_base(assignment->op);
  NODE *old = field_of_word(word, view);
  const bool is_shift = op == SHIFT_LEFT || op == SHIFT_RIGHT;
  const TypeWord type = is_shift ? promote_type(old->type) : balance_type(old, operand);
  NODE *value = make_node(op, old, operand, type);
  SYM *updated = use == Use::NOTHING || wants_old ? nullptr : new_temporary(type);
  if (updated) {
    chain = append_assignment(chain, updated, value);
    value = make_name(updated);
  }

  take_unit_as_target(assignment, unit);
  assignment->op = ASSIGN;
  NODE *others =
      make_node(BIT_AND, make_name(word), other_bits(unit, view, unit->type), unit->type);
  value = value_in_place(value, view);
  assignment->right = make_node(BIT_OR, others, value, balance_type(others, value));
  chain = make_comma(chain, assignment);
  if (use == Use::NOTHING) return chain;
  NODE *result =
      updated ? field_value(make_name(updated), view.width, view.type) : field_of_word(word, view);
  return make_comma(chain, result);
}

// Is the field read for more than the unit's other bits?
bool updates_volatile(const NODE *assignment, Use use) {
  if (!is_volatile_node(assignment->left) || assignment->op == ASSIGN) return false;
  return use != Use::NOTHING || !is_bitwise_assignment(assignment);
}

} // namespace

NODE *expand_store(NODE *assignment, Use use) {
  if (!is_bit_field_access(assignment->left)) {
    assignment->right = expand_tree(assignment->right, Use::VALUE);
    assignment->left = expand_tree(assignment->left, Use::VALUE);
    return assignment;
  }
  if (!is_integer(assignment->right->type)) assignment = convert_value(assignment);
  if (use == Use::NOTHING && is_increment_or_decrement(assignment->op))
    step_to_compound(assignment);
  NODE *tree = apply_rules(field_store_rules, assignment);
  if (is_bit_field_access(tree)) return expand_tree(tree, use);
  if (updates_volatile(tree, use)) return expand_volatile_update(tree, use);
  if (use != Use::NOTHING) return expand_store_value(tree);
  return expand_store_void(apply_rules(discarded_field_store_rules, tree));
}

} // namespace bit_fields
} // namespace velkor
