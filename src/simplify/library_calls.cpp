// Rules for calls: effects rise out of arguments, and a few functions of the C library are known by
// their names.
#include "simplify/library_calls.h"

#include "core/fun.h"
#include "core/options.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Effects in arguments

bool is_routine_call(const NODE *call) {
  return call->op == XCALL || call->op == UXCALL;
}

// The place of a call's argument list.
NODE *&argument_list(NODE *call) {
  return is_routine_call(call) ? call->left : call->right;
}

// Takes the effects off one argument and puts them in front of those of the arguments behind it.
void take_effects(NODE *&argument, NODE *&effects) {
  NODE **place = &argument;
  while ((*place)->op == ACONV || (*place)->op == ARGREF)
    place = &(*place)->left;
  NODE *comma = *place;
  if (comma->op != COMMA_OP) return;
  *place = comma->right;
  if (place != &argument) argument = simplify_node(argument);
  if (!effects) {
    effects = replace_by_left(comma);
    return;
  }
  comma->right = effects;
  set_type(comma, effects->type);
  effects = simplify_node(comma);
}

// f((a , b), c)  ->  (a , f(b, c))
Outcome hoist_argument_effects(NODE *&tree) {
  NODE *effects = nullptr;
  NODE **list = &argument_list(tree);
  if (!*list) return Outcome::NEXT;
  for (; (*list)->op == COMMA; list = &(*list)->left)
    take_effects((*list)->right, effects);
  take_effects(*list, effects);
  if (!effects) return Outcome::NEXT;
  tree = simplify_node(tree);
  return finish(tree, make_comma(effects, tree));
}

// ------------------------------------------------------------------------------------------------
// Library functions

Outcome only_when_optimizing(NODE *&) {
  return options.opt_level > 0 ? Outcome::NEXT : Outcome::STOP;
}

// Is there a function of that name in this file? Then the call means that one.
bool is_defined_here(std::string_view name) {
  const FUN *fun = fun_find(name);
  return fun && (fun->flags & FUN_is_defined);
}

bool is_static_class(StorageClass sclass) {
  return sclass == C_STAT || sclass == C_USTATIC;
}

// The name of the function that is called, without the underscore of linker names; empty when it
// is no function of another file.
std::string_view library_name(const NODE *call) {
  std::string_view name;
  if (is_routine_call(call)) {
    name = call->u.name;
  } else if (call->op == CALL) {
    const NODE *callee = call->left;
    if (callee->op != ADDRESS || callee->left->op != NAME) return {};
    const SYM *sym = callee->left->u.sym;
    if (sym->name[0] != '_' || is_static_class(sym->sclass)) return {};
    name = sym->name + 1;
  }
  return name.empty() || is_defined_here(name) ? std::string_view{} : name;
}

// The arguments of a call that has exactly N of them; none in front otherwise.
template <std::size_t N> std::array<NODE *, N> arguments(NODE *call) {
  std::array<NODE *, N> result{};
  NODE *list = argument_list(call);
  for (std::size_t i = N; list && i > 1 && list->op == COMMA; list = list->left)
    result[--i] = list->right;
  if (list && list->op != COMMA && (N == 1 || result[1])) result[0] = list;
  return result;
}

// Bytes of a string constant in front of its first NUL.
std::int32_t string_length(const NODE *string) {
  const char *begin = string->aux.text;
  const char *end = begin + string->u.lval;
  return static_cast<std::int32_t>(std::find(begin, end, '\0') - begin);
}

// The argument conversions of a call whose arguments become operands.
void turn_conversions(NODE *&place, Opcode op) {
  if (place->op != ACONV) return;
  place->op = op;
  place = simplify_node(place);
}

// Erases the callee; the argument list becomes the call's left operand.
void drop_callee(NODE *call) {
  if (is_routine_call(call)) return;
  erase_tree(call->left);
  call->left = call->right;
  call->right = nullptr;
}

// memcpy(d, s, n)  ->  MEMCPY
Outcome recognize_memcpy(NODE *&tree) {
  if (library_name(tree) != "memcpy") return Outcome::NEXT;
  const auto [target, source, size] = arguments<3>(tree);
  if (!target || !is_pointer(target->type) || !is_pointer(source->type) || !is_integer(size->type))
    return Outcome::STOP;
  if (is_floating(tree->type)) return Outcome::STOP; // declared as something else
  drop_callee(tree);
  tree->op = MEMCPY;
  tree->u.name = nullptr;
  NODE *list = tree->left;
  turn_conversions(list->right, SCONV);
  turn_conversions(list->left->right, PCONV);
  turn_conversions(list->left->left, PCONV);
  return Outcome::DONE;
}

// strlen("abc")  ->  3
Outcome fold_strlen(NODE *&tree) {
  if (library_name(tree) != "strlen") return Outcome::NEXT;
  const auto [string] = arguments<1>(tree);
  if (!string || string->op != SCON || !is_integer(tree->type)) return Outcome::STOP;
  NODE *length = make_icon(wrap_value(string_length(string), tree->type), tree->type);
  erase_tree(tree);
  tree = length;
  return Outcome::DONE;
}

// Turns the call into one of memcpy with the same arguments, and goes on with that. Its value is
// the target's address, which keeps the type that the call had.
Outcome call_memcpy_instead(NODE *&tree) {
  static char memcpy_name[] = "memcpy"; // nodes hold names as plain pointers
  const TypeWord type = tree->type;
  drop_callee(tree);
  tree->op = XCALL;
  tree->u.name = memcpy_name;
  set_type(tree, pointer_to(VOID));
  tree = keep_type(type, simplify_call(tree));
  return Outcome::DONE;
}

// strcpy(d, "abc")  ->  memcpy(d, "abc", 4)
Outcome replace_strcpy(NODE *&tree) {
  if (library_name(tree) != "strcpy") return Outcome::NEXT;
  const auto [target, source] = arguments<2>(tree);
  if (!target || source->op != SCON || is_defined_here("memcpy")) return Outcome::STOP;
  NODE *&list = argument_list(tree);
  list = make_node(COMMA, list, make_icon(string_length(source) + 1, UNSIGNED), VOID);
  return call_memcpy_instead(tree);
}

// memmove(d, "abc", n)  ->  memcpy(d, "abc", n): nothing overlaps a literal
Outcome replace_memmove(NODE *&tree) {
  if (library_name(tree) != "memmove") return Outcome::NEXT;
  const auto [target, source, size] = arguments<3>(tree);
  if (!target || source->op != SCON || is_defined_here("memcpy")) return Outcome::STOP;
  return call_memcpy_instead(tree);
}

constexpr Rule call_table[] = {
    {"f((a , b), c)  ->  (a , f(b, c))", hoist_argument_effects},
    {"calls at level 0 stay", only_when_optimizing},
    {"memcpy(d, s, n)  ->  MEMCPY", recognize_memcpy},
    {"strlen(\"abc\")  ->  3", fold_strlen},
    {"strcpy(d, \"abc\")  ->  memcpy(d, \"abc\", 4)", replace_strcpy},
    {"memmove(d, \"abc\", n)  ->  memcpy(d, \"abc\", n)", replace_memmove},
};

} // namespace

const RuleSet call_rules{"call", call_table};

NODE *simplify_call(NODE *node) {
  return apply_rules(call_rules, node);
}

} // namespace velkor
