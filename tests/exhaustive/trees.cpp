#include "trees.h"

#include "core/nodes.h"

#include <iterator>
#include <vector>

namespace velkor::exhaustive {
namespace {

constexpr TypeWord conversion_types[] = {CHAR,          SHORT,          INT,      LONG,
                                         UNSIGNED_CHAR, UNSIGNED_SHORT, UNSIGNED, UNSIGNED_LONG};
constexpr Opcode unary_operators[] = {NEGATE, COMPLEMENT, LOGICAL_NOT, ABS, SQUARE};
constexpr Opcode binary_operators[] = {
    ADD,         SUBTRACT, MULTIPLY, DIVIDE, REMAINDER, BIT_AND, BIT_OR, BIT_XOR,     SHIFT_LEFT,
    SHIFT_RIGHT, EQ,       NE,       LE,     LT,        GE,      GT,     LOGICAL_AND, LOGICAL_OR};
constexpr Opcode assigning_operators[] = {
    ASSIGN,     ASG_ADD,       ASG_SUBTRACT,   ASG_MULTIPLY,    ASG_AND,   ASG_OR,   ASG_XOR,
    ASG_DIVIDE, ASG_REMAINDER, ASG_SHIFT_LEFT, ASG_SHIFT_RIGHT, INCREMENT, DECREMENT};

// The first variable of each kind, the second of its type, and one of another type.
struct VariableChoice {
  VariableNumber first;
  VariableNumber second;
  VariableNumber other;
  VariableNumber wider;
};
constexpr VariableChoice choices[] = {{C1, C2, UC1, U1},  {S1, S2, UC1, U1},  {I1, I2, U1, UC1},
                                      {L1, I2, U1, US1},  {UC1, UC2, C1, U1}, {US1, US2, C1, U1},
                                      {U1, U2, I1, C1},   {UL1, U2, L1, S1},  {B3, U2, I1, UC1},
                                      {S3, I2, U1, UC1},  {B1, B3, I1, UC1},  {P1, P2, I1, U1},
                                      {AT_P, I2, U1, UC1}};

constexpr Operand variable(VariableNumber number) {
  return {Operand::VARIABLE, number, nullptr};
}
constexpr Operand constant(std::size_t number) {
  return {Operand::CONSTANT, static_cast<std::uint8_t>(number), nullptr};
}

bool is_assigning(Opcode op) {
  return op == ASSIGN || op == INCREMENT || op == DECREMENT || asgop_base(op) != ILLOP;
}
bool is_shift(std::uint8_t op) {
  return op == SHIFT_LEFT || op == SHIFT_RIGHT;
}
bool is_relation(Opcode op) {
  return op >= EQ && op <= UGT;
}

// ------------------------------------------------------------------------------------------------
// Building

TypeWord promoted(TypeWord type) {
  return type_width(type) < 32 ? static_cast<TypeWord>(INT) : type;
}

// The usual arithmetic conversions of two promoted types.
TypeWord balanced(TypeWord a, TypeWord b) {
  a = promoted(a);
  b = promoted(b);
  for (const TypeWord type : {UNSIGNED_LONG, LONG, UNSIGNED}) {
    if (a != type && b != type) continue;
    const bool mixes = type == LONG && (a == UNSIGNED || b == UNSIGNED);
    return mixes ? static_cast<TypeWord>(UNSIGNED_LONG) : static_cast<TypeWord>(type);
  }
  return INT;
}

// Does the operator yield the same bits whatever the signs of its operands?
bool ignores_sign(Opcode op) {
  switch (op) {
  case ADD:
  case SUBTRACT:
  case MULTIPLY:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case NEGATE:
  case COMPLEMENT:
  case EQ:
  case NE: return true;
  default: return false;
  }
}

struct Builder {
  const World &world;
  Style style;
  bool left_bare = false; // a conversion was left out

  NODE *operand(const Operand &operand);
  NODE *converted(NODE *tree, TypeWord type, Opcode user);
  NODE *operation(Opcode op, TypeWord type, NODE *a, NODE *b, NODE *c);
  NODE *assignment(Opcode op, NODE *target, NODE *value);
  NODE *pointer_operation(Opcode op, NODE *a, NODE *b);
  NODE *shape(const Shape &shape);
};

NODE *Builder::operand(const Operand &given) {
  switch (given.kind) {
  case Operand::VARIABLE: return copy_tree(world.variables[given.number].pattern);
  case Operand::CONSTANT: return make_icon(static_cast<std::int32_t>(constants[given.number]), INT);
  case Operand::SHAPE: return shape(*given.shape);
  default: return nullptr;
  }
}

NODE *Builder::converted(NODE *tree, TypeWord type, Opcode user) {
  if (tree->type == type) return tree;
  if (tree->op == ICON) {
    tree->u.lval =
        static_cast<std::int32_t>(wrapped_word(static_cast<std::uint32_t>(tree->u.lval), type));
    tree->type = static_cast<std::uint16_t>(type);
    return tree;
  }
  const bool is_field = tree->op == MEMBER;
  const bool keeps_value = type_width(type) == 32 && !is_field &&
                           (type_width(tree->type) < 32 || ignores_sign(user) ||
                            is_unsigned_basic(tree->type) == is_unsigned_basic(type));
  if (style == Style::BARE && keeps_value && user != ASSIGN) {
    left_bare = true;
    return tree;
  }
  return make_node(SCONV, tree, nullptr, type);
}

// The operators that take a pointer; integers count bytes.
NODE *Builder::pointer_operation(Opcode op, NODE *a, NODE *b) {
  const TypeWord type = is_derived(a->type) ? a->type : b->type;
  const bool are_pointers = is_derived(a->type) && is_derived(b->type);
  if (op == ADD || op == SUBTRACT) {
    if (are_pointers) return op == ADD ? nullptr : make_node(op, a, b, INT);
    if (op == SUBTRACT && is_derived(b->type)) return nullptr;
    NODE *&offset = is_derived(a->type) ? b : a;
    offset = converted(offset, INT, op);
    return make_node(op, a, b, type);
  }
  if (!is_relation(op)) return nullptr;
  if (are_pointers)
    return make_node(op == EQ || op == NE ? op : static_cast<Opcode>(op + (ULE - LE)), a, b, INT);
  // Of the integers only a constant 0 is a pointer as well.
  if ((op != EQ && op != NE) || b->op != ICON || b->u.lval != 0) return nullptr;
  b->type = a->type;
  return make_node(op, a, b, INT);
}

NODE *Builder::assignment(Opcode op, NODE *target, NODE *value) {
  if (target->op != NAME && target->op != MEMBER && target->op != DEREF) return nullptr;
  const TypeWord type = target->type;
  if (is_derived(type)) {
    if (op == ASSIGN) return value->type == type ? make_node(op, target, value, type) : nullptr;
    if (op == INCREMENT || op == DECREMENT) return make_node(op, target, make_icon(1, INT), type);
    if ((op != ASG_ADD && op != ASG_SUBTRACT) || is_derived(value->type)) return nullptr;
    return make_node(op, target, converted(value, INT, op), type);
  }
  if (value && is_derived(value->type)) return nullptr;
  if (op == INCREMENT || op == DECREMENT) {
    return make_node(op, target, make_icon(1, type), type);
  }
  if (op == ASSIGN) return make_node(op, target, converted(value, type, ASSIGN), type);
  const std::uint8_t base = asgop_base(op);
  value = converted(value,
                    is_shift(base) ? static_cast<TypeWord>(INT) : balanced(type, value->type), op);
  if (is_shift(base) && value->op == ICON && (value->u.lval < 0 || value->u.lval > 31))
    return nullptr;
  return make_node(op, target, value, type);
}

NODE *Builder::operation(Opcode op, TypeWord type, NODE *a, NODE *b, NODE *c) {
  if (is_assigning(op)) return assignment(op, a, b);
  if (op == LOGICAL_NOT) return make_node(op, a, nullptr, INT);
  if (op == LOGICAL_AND || op == LOGICAL_OR) return make_node(op, a, b, INT);
  if (op == CONDITIONAL && (is_derived(b->type) || is_derived(c->type))) {
    if (b->type != c->type) return nullptr;
    return make_node(op, a, make_node(ALTERNATIVES, b, c, b->type), b->type);
  }
  const bool has_pointer = op != CONDITIONAL && (is_derived(a->type) || (b && is_derived(b->type)));
  if (has_pointer) return b ? pointer_operation(op, a, b) : nullptr;
  if (op == SCONV) return a->type == type ? nullptr : make_node(SCONV, a, nullptr, type);
  if (!b) {
    const TypeWord result = promoted(a->type);
    if (op == ABS && is_unsigned_basic(result)) return nullptr;
    return make_node(op, converted(a, result, op), nullptr, result);
  }
  if (op == CONDITIONAL) {
    const TypeWord result = balanced(b->type, c->type);
    NODE *arms =
        make_node(ALTERNATIVES, converted(b, result, op), converted(c, result, op), result);
    return make_node(op, a, arms, result);
  }
  if (op == COMMA_OP) return make_node(op, a, b, b->type);
  if (is_shift(op)) {
    const TypeWord result = promoted(a->type);
    b = converted(b, INT, op);
    if (b->op == ICON && (b->u.lval < 0 || b->u.lval > 31)) return nullptr;
    return make_node(op, converted(a, result, op), b, result);
  }
  const TypeWord common = balanced(a->type, b->type);
  if ((op == DIVIDE || op == REMAINDER) && b->op == ICON && b->u.lval == 0) return nullptr;
  a = converted(a, common, op);
  b = converted(b, common, op);
  if (!is_relation(op)) return make_node(op, a, b, common);
  if (is_unsigned_basic(common) && op != EQ && op != NE) op = static_cast<Opcode>(op + (ULE - LE));
  return make_node(op, a, b, INT);
}

NODE *Builder::shape(const Shape &given) {
  NODE *operands[3] = {};
  for (int i = 0; i < 3; ++i) {
    if (given.operands[i].kind == Operand::NONE) continue;
    operands[i] = operand(given.operands[i]);
    if (!operands[i]) return nullptr;
  }
  return operation(given.op, given.type, operands[0], operands[1], operands[2]);
}

// ------------------------------------------------------------------------------------------------
// Enumerating

using Visit = std::function<void(const Shape &)>;

void each_unary(const Operand &a, const Visit &visit) {
  for (const Opcode op : unary_operators)
    visit({op, INT, {a}});
  for (const TypeWord type : conversion_types)
    visit({SCONV, type, {a}});
}

// The operand with every other operand, on both sides.
void each_binary(const Operand &a, const VariableChoice &others, bool with_first,
                 const Visit &visit) {
  for (const Opcode op : binary_operators) {
    for (std::size_t i = 0; i < constant_count; ++i) {
      visit({op, INT, {a, constant(i)}});
      if (!is_commutative(op)) visit({op, INT, {constant(i), a}});
    }
    if (with_first) visit({op, INT, {a, variable(others.first)}});
    for (const VariableNumber number : {others.second, others.other, others.wider}) {
      visit({op, INT, {a, variable(number)}});
      if (!is_commutative(op)) visit({op, INT, {variable(number), a}});
    }
  }
}

void each_conditional(const Operand &a, const VariableChoice &others, const Visit &visit) {
  constexpr std::size_t some_constants[][2] = {{0, 1}, {1, 0}, {0, 2},  {2, 0},
                                               {3, 4}, {7, 0}, {0, 13}, {18, 19}};
  for (const auto &[yes, no] : some_constants)
    visit({CONDITIONAL, INT, {a, constant(yes), constant(no)}});
  for (const std::size_t i : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{13}}) {
    visit({CONDITIONAL, INT, {variable(others.second), a, constant(i)}});
    visit({CONDITIONAL, INT, {variable(others.second), constant(i), a}});
    visit({CONDITIONAL, INT, {a, variable(others.first), constant(i)}});
  }
  visit({CONDITIONAL, INT, {a, variable(others.first), variable(others.second)}});
  visit({CONDITIONAL, INT, {variable(others.first), a, variable(others.second)}});
  visit({CONDITIONAL, INT, {variable(others.first), variable(others.other), a}});
}

void each_assignment_to(const VariableChoice &target, const Visit &visit) {
  const Operand place = variable(target.first);
  for (const Opcode op : assigning_operators) {
    if (op == INCREMENT || op == DECREMENT) {
      visit({op, INT, {place}});
      continue;
    }
    for (std::size_t i = 0; i < constant_count; ++i)
      visit({op, INT, {place, constant(i)}});
    for (const VariableNumber number : {target.first, target.second, target.other, target.wider})
      visit({op, INT, {place, variable(number)}});
  }
}

void each_assignment_of(const Operand &value, const Visit &visit) {
  for (const VariableChoice &target : choices) {
    for (const Opcode op : assigning_operators) {
      if (op != INCREMENT && op != DECREMENT) visit({op, INT, {variable(target.first), value}});
    }
  }
}

// ------------------------------------------------------------------------------------------------
// Three operators, where rules look at two operands of like shape, or at chains of constants

// x, -x, ~x, x op K, x op y ...
std::vector<Shape> shapes_on(VariableNumber x, VariableNumber y) {
  constexpr std::uint8_t few_constants[] = {0, 1, 2, 3, 4, 6, 7, 13};
  std::vector<Shape> shapes;
  for (const Opcode op : {NEGATE, COMPLEMENT, LOGICAL_NOT, SQUARE})
    shapes.push_back({op, INT, {variable(x)}});
  for (const TypeWord type : conversion_types)
    shapes.push_back({SCONV, type, {variable(x)}});
  for (const Opcode op : binary_operators) {
    for (const std::uint8_t number : few_constants)
      shapes.push_back({op, INT, {variable(x), constant(number)}});
    shapes.push_back({op, INT, {variable(x), variable(y)}});
    if (!is_commutative(op)) {
      shapes.push_back({op, INT, {variable(y), variable(x)}});
      shapes.push_back({op, INT, {constant(1), variable(x)}});
    }
  }
  return shapes;
}

Operand nested(const Shape &shape) {
  return {Operand::SHAPE, 0, &shape};
}

// (x op ..) op (x op ..), (x op ..) op (y op ..)
void each_pair(const VariableChoice &choice, const Visit &visit) {
  const std::vector<Shape> left = shapes_on(choice.first, choice.second);
  const std::vector<Shape> other = shapes_on(choice.second, choice.first);
  for (const std::vector<Shape> *right : {&left, &other}) {
    for (const Shape &a : left) {
      for (const Shape &b : *right) {
        for (const Opcode op : binary_operators)
          visit({op, INT, {nested(a), nested(b)}});
      }
    }
  }
}

// x rel .. ? a : b, where a and b may have to do with x
void each_choice_of_two(const VariableChoice &choice, const Visit &visit) {
  const std::vector<Shape> arms = shapes_on(choice.first, choice.second);
  std::vector<Operand> operands = {variable(choice.first), variable(choice.second), constant(0),
                                   constant(1), constant(2)};
  for (const Shape &arm : arms)
    operands.push_back(nested(arm));
  for (const Opcode op : {EQ, NE, LE, LT, GE, GT, BIT_AND}) {
    for (const Operand &bound : {constant(0), constant(1), constant(2), variable(choice.second)}) {
      const Shape condition{op, INT, {variable(choice.first), bound}};
      for (std::size_t i = 0; i < operands.size(); ++i) {
        // Two large arms only of like operators.
        for (std::size_t j = 0; j < operands.size(); ++j) {
          const bool are_large = operands[i].shape && operands[j].shape;
          if (are_large && operands[i].shape->op != operands[j].shape->op) continue;
          visit({CONDITIONAL, INT, {nested(condition), operands[i], operands[j]}});
        }
      }
    }
  }
}

// c ? (x op= a) : (x op= b)
void each_choice_of_assignments(const VariableChoice &choice, const Visit &visit) {
  const Operand target = variable(choice.first);
  const Operand values[] = {constant(1), constant(4), variable(choice.second),
                            variable(choice.other)};
  const Shape relation{LT, INT, {target, variable(choice.second)}};
  for (const Opcode op : assigning_operators) {
    if (op == INCREMENT || op == DECREMENT) continue;
    for (const Operand &a : values) {
      for (const Operand &b : values) {
        const Shape first{op, INT, {target, a}};
        const Shape second{op, INT, {target, b}};
        for (const Operand &condition : {variable(choice.second), nested(relation)})
          visit({CONDITIONAL, INT, {condition, nested(first), nested(second)}});
      }
    }
  }
}

// ((x op K) op K) op K
void each_chain(const VariableChoice &choice, const Visit &visit) {
  constexpr std::uint8_t few_constants[] = {1, 3, 4, 7, 13, 23};
  for (const Opcode first : binary_operators) {
    for (const std::uint8_t a : few_constants) {
      const Shape inner{first, INT, {variable(choice.first), constant(a)}};
      for (const Opcode second : binary_operators) {
        for (const std::uint8_t b : few_constants) {
          const Shape middle{second, INT, {nested(inner), constant(b)}};
          for (const Opcode third : binary_operators) {
            for (const std::uint8_t c : few_constants)
              visit({third, INT, {nested(middle), constant(c)}});
          }
        }
      }
    }
  }
}

void each_of_three_operators(const Visit &visit) {
  constexpr VariableChoice few_choices[] = {
      {I1, I2, U1, UC1}, {U1, U2, I1, C1}, {UC1, UC2, C1, U1}, {S1, S2, U1, UC1}, {P1, P2, I1, U1}};
  for (const VariableChoice &choice : few_choices) {
    each_pair(choice, visit);
    each_choice_of_two(choice, visit);
    each_choice_of_assignments(choice, visit);
    if (choice.first == I1 || choice.first == U1 || choice.first == UC1) each_chain(choice, visit);
  }
}

std::uint64_t mixed(std::uint64_t word) {
  word += 0x9E3779B97F4A7C15u;
  word = (word ^ word >> 30) * 0xBF58476D1CE4E5B9u;
  word = (word ^ word >> 27) * 0x94D049BB133111EBu;
  return word ^ word >> 31;
}

// ------------------------------------------------------------------------------------------------
// Random trees

struct Random {
  std::uint64_t state;
  std::size_t below(std::size_t limit) {
    state = mixed(state);
    return static_cast<std::size_t>(state >> 33) % limit;
  }
};

Operand random_leaf(Random &random) {
  if (random.below(5) < 2) return constant(random.below(constant_count));
  // Few different variables, so that terms meet their like.
  constexpr VariableNumber usual[] = {I1, I1, I2, U1, U1, U2, UC1, US1, C1, S1};
  if (random.below(4) != 0) return variable(usual[random.below(std::size(usual))]);
  return variable(static_cast<VariableNumber>(random.below(variable_number_count)));
}

NODE *random_operation(Builder &builder, Random &random, int operators) {
  if (operators == 0) return builder.operand(random_leaf(random));
  const std::size_t kind = random.below(20);
  const int left_part = static_cast<int>(random.below(static_cast<std::size_t>(operators)));
  const int rest = operators - 1;
  const auto part = [&](int count) { return random_operation(builder, random, count); };
  NODE *a = nullptr;
  NODE *b = nullptr;
  NODE *c = nullptr;
  Opcode op = ILLOP;
  TypeWord type = INT;
  if (kind < 2) {
    op = unary_operators[random.below(std::size(unary_operators))];
    a = part(rest);
  } else if (kind < 4) {
    op = SCONV;
    type = conversion_types[random.below(std::size(conversion_types))];
    a = part(rest);
  } else if (kind < 5) {
    op = CONDITIONAL;
    a = part(left_part);
    b = part(rest - left_part);
    c = part(0);
  } else if (kind < 6) {
    op = assigning_operators[random.below(std::size(assigning_operators))];
    a = builder.operand(variable(static_cast<VariableNumber>(random.below(variable_number_count))));
    b = part(rest);
  } else {
    op = binary_operators[random.below(std::size(binary_operators))];
    const int left = random.below(2) ? rest : left_part;
    a = part(left);
    b = part(rest - left);
  }
  if (!a || (!b && op == CONDITIONAL)) return nullptr;
  if (kind >= 4 && (!b || (op == CONDITIONAL && !c))) return nullptr;
  return builder.operation(op, type, a, b, c);
}

} // namespace

NODE *build_tree(const World &world, const Shape &shape, Style style) {
  Builder builder{world, style};
  NODE *tree = builder.shape(shape);
  return style == Style::BARE && !builder.left_bare ? nullptr : tree;
}

void enumerate_shapes(const Visit &visit) {
  const auto inner_shapes = [](const VariableChoice &choice, const Visit &take) {
    each_unary(variable(choice.first), take);
    each_binary(variable(choice.first), choice, true, take);
    each_conditional(variable(choice.first), choice, take);
    each_assignment_to(choice, take);
  };
  for (const VariableChoice &choice : choices)
    inner_shapes(choice, visit);
  for (const VariableChoice &choice : choices) {
    inner_shapes(choice, [&](const Shape &inner) {
      const Operand operand{Operand::SHAPE, 0, &inner};
      each_unary(operand, visit);
      each_binary(operand, choice, true, visit);
      each_conditional(operand, choice, visit);
      each_assignment_of(operand, visit);
    });
  }
  each_of_three_operators(visit);
}

NODE *random_tree(const World &world, std::uint64_t seed) {
  Random random{mixed(seed)};
  Builder builder{world, random.below(3) == 0 ? Style::BARE : Style::FRONT_END};
  return random_operation(builder, random, 3 + static_cast<int>(random.below(4)));
}

} // namespace velkor::exhaustive
