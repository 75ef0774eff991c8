// Lowering of what transfers control: calls, loop control, branches, assertions.
#include "core/nodes.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "lower/lowering.h"
#include "simplify/patterns.h"

#include <cstring>

namespace velkor {
namespace {

Outcome note_call(NODE *&, const Position &) {
  state.function_is_leaf = false;
  return Outcome::DONE;
}

// RETURN((t) f, x)  ->  RETURN(f, x): the left operand is the function's name
Outcome strip_function_conversion(NODE *&node, const Position &) {
  while (node->left->op == PCONV || node->left->op == SCONV)
    node->left = replace_by_left(node->left);
  return Outcome::DONE;
}

// ------------------------------------------------------------------------------------------------
// Loop control

// The loop's counter: the first name below the operand, or none.
const NODE *counter_of(const NODE *operand) {
  while (operand && operand->op != NAME)
    operand = operand->left;
  return operand;
}

bool is_machine_register(const NODE *counter) {
  return counter && counter->u.sym->sclass == C_REG;
}

// INITLOOP(x, y)  ->  y
Outcome take_initial_value(NODE *&node, const Position &) {
  NODE *value = node->right;
  node->right = nullptr;
  erase_tree(node);
  node = value;
  return Outcome::DONE;
}

// LOOP(x, y)  ->  x, where the counter has no register: plain branches do the counting
Outcome drop_loop_control(NODE *&node, const Position &) {
  if (is_machine_register(counter_of(node->left))) return Outcome::NEXT;
  NODE *counter = node->left;
  if (node->right) erase_tree(node->right);
  erase_node(node);
  node = counter;
  return Outcome::DONE;
}

bool is_marked(const NODE *node) {
  for (const LIST *mark = lowering.loop_marks; mark; mark = mark->next)
    if (mark->item == node) return true;
  return false;
}

// LOOP, ENDLOOP  ->  with a label reference that pairs them: above the numbers of all labels, by
// the loop's number
Outcome mark_loop(NODE *&node, const Position &at) {
  if (is_marked(node)) return Outcome::DONE; // a statement may come by twice
  if (node->right) erase_tree(node->right);
  node->right = make_labelref(2 * state.num_blocks + node->u.lval);
  node->right->nsize = node->right->u.lval;
  lowering.loop_marks =
      list_cons(node, lowering.loop_marks, static_cast<std::int16_t>(at.block->dfn), 0);
  return Outcome::DONE;
}

void forget_mark(const NODE *node) {
  for (LIST **link = &lowering.loop_marks; *link; link = &(*link)->next)
    if ((*link)->item == node) {
      LIST *mark = *link;
      *link = mark->next;
      give_list(mark);
      return;
    }
}

// IF(ENDLOOP(x), ...)  ->  IF(x != 0, ...), where the counter has no register
Outcome test_counter(NODE *&node, const Position &) {
  NODE *end = node->left;
  if (end->op != ENDLOOP || is_machine_register(counter_of(end->left->left))) return Outcome::DONE;
  forget_mark(end);
  if (end->right) erase_tree(end->right);
  end->op = NE;
  set_type(end, INT);
  end->u.sym = nullptr;
  end->right = make_icon(0, end->left->type);
  return Outcome::DONE;
}

// ------------------------------------------------------------------------------------------------
// Switches

std::int32_t case_value(const NODE *label) {
  return label->op == CASE ? label->left->u.lval : 0;
}

// The number of cases, and the last one's value less the first one's, for the choice between a
// table and comparisons. The list leans to the left; a DEFAULT stands at its right end.
Outcome summarize_cases(NODE *&node, const Position &) {
  node->depnum = 0;
  node->u.lval = 0;
  const NODE *list = node->right;
  if (list->op == DEFAULT) return Outcome::DONE;
  node->depnum = 1;
  if (list->op != COMMA) return Outcome::DONE;
  if (list->right->op == DEFAULT) list = list->left;
  if (list->op != COMMA) return Outcome::DONE;
  const std::int32_t last = case_value(list->right);
  for (; list->op == COMMA; list = list->left)
    node->depnum += 1;
  node->u.lval = static_cast<std::int32_t>(static_cast<std::uint32_t>(last) -
                                           static_cast<std::uint32_t>(case_value(list)));
  return Outcome::DONE;
}

// ------------------------------------------------------------------------------------------------
// Assertions

// ASSERT(x | y)  ->  ASSERT(x || y), both conditions
Outcome restore_disjunction(NODE *&node, const Position &) {
  NODE *test = node->left;
  if (test->op != BIT_OR || !op_boolean(test->left->op) || !op_boolean(test->right->op))
    return Outcome::NEXT;
  if (has_side_effects(test->right)) return Outcome::NEXT;
  test->op = LOGICAL_OR;
  set_type(test, INT);
  return Outcome::NEXT;
}

// ASSERT(x) with a text in aux  ->  ASSERT((x , "text"))
Outcome attach_text(NODE *&node, const Position &) {
  if (!node->aux.text || node->left->op == COMMA) return Outcome::DONE;
  NODE *text = make_node(SCON, nullptr, nullptr, pointer_to(CHAR));
  text->aux.text = node->aux.text;
  text->u.lval = static_cast<std::int32_t>(std::strlen(node->aux.text)) + 1;
  node->left = make_node(COMMA, node->left, text, INT);
  node->aux.text = nullptr;
  node->right = nullptr;
  return Outcome::DONE;
}

// NASSERT(x)  ->  what x does, or 0
Outcome keep_effects_of_fact(NODE *&node, const Position &) {
  NODE *effects = discard_value(node->left);
  if (effects) {
    erase_node(node);
    node = effects;
    return Outcome::DONE;
  }
  node->op = ICON;
  node->left = nullptr;
  node->aux.text = nullptr;
  node->u.lval = 0;
  return Outcome::DONE;
}

constexpr LoweringRule call_table[] = {{"f(...): the function is no leaf", note_call}};
constexpr LoweringRule return_table[] = {
    {"RETURN((t) f, x)  ->  RETURN(f, x)", strip_function_conversion}};
constexpr LoweringRule init_loop_table[] = {{"INITLOOP(x, y)  ->  y", take_initial_value}};
constexpr LoweringRule loop_table[] = {
    {"LOOP(x, y)  ->  x, x in no register", drop_loop_control},
    {"LOOP(x, y)  ->  LOOP(x, label)", mark_loop},
};
constexpr LoweringRule end_loop_table[] = {{"ENDLOOP(x, y)  ->  ENDLOOP(x, label)", mark_loop}};
constexpr LoweringRule if_table[] = {
    {"IF(ENDLOOP(x))  ->  IF(x != 0), x in no register", test_counter}};
constexpr LoweringRule switch_table[] = {{"SWITCH: number and range of cases", summarize_cases}};
constexpr LoweringRule assert_table[] = {
    {"ASSERT(x | y)  ->  ASSERT(x || y)", restore_disjunction},
    {"ASSERT(x)  ->  ASSERT((x , text))", attach_text},
};
constexpr LoweringRule fact_table[] = {
    {"NASSERT(x)  ->  effects of x, or 0", keep_effects_of_fact}};

} // namespace

const LoweringRules lower_call_rules{call_table};
const LoweringRules lower_return_rules{return_table};
const LoweringRules lower_init_loop_rules{init_loop_table};
const LoweringRules lower_loop_rules{loop_table};
const LoweringRules lower_end_loop_rules{end_loop_table};
const LoweringRules lower_if_rules{if_table};
const LoweringRules lower_switch_rules{switch_table};
const LoweringRules lower_assert_rules{assert_table};
const LoweringRules lower_fact_rules{fact_table};

} // namespace velkor
