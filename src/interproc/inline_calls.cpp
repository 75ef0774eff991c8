#include "interproc/inline_calls.h"

#include "core/conversions.h"
#include "core/failure.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "diag/readable_name.h"
#include "icode/format.h"
#include "simplify/sequencing_steps.h"
#include "simplify/simplify.h"

#include <string>
#include <vector>

namespace velkor {
namespace {

constexpr int max_inline_depth = 10;
// A few functions that call one another often would multiply without end long before the depth is
// reached. No function that people write grows to as many nodes.
constexpr int max_inlined_nodes = 100'000;
constexpr std::size_t comment_columns = 65; // of arrows and name together

// What is known while one body is copied.
struct Expansion {
  CallUse use = CallUse::NOTHING;
  LIST *cell = nullptr;         // where statements are emitted
  TypeWord type = VOID;         // of the call
  std::int32_t true_label = 0;  // where returns go: both the same, but for a test
  std::int32_t false_label = 0; //
  SYM *result = nullptr;        // receives the value, if it is used
  int depth = 0;                // that calls in the copy get
};

// The labels of the body that is being copied: the new LABELDEFs, by old label index.
std::vector<NODE *> new_labels;

// ------------------------------------------------------------------------------------------------
// The call

bool is_named_call(const NODE *call) {
  return call->op == XCALL || call->op == UXCALL;
}

NODE *&arguments_of(NODE *call) {
  return is_named_call(call) ? call->left : call->right;
}

// The function that is called, if the file has shown it; none is made.
FUN *callee_of(const NODE *call) {
  if (is_named_call(call)) return fun_find(call->u.name);
  const NODE *callee = call->left;
  if (callee->op != ADDRESS || callee->left->op != NAME) return nullptr;
  const char *name = callee->left->u.sym->name;
  return *name ? fun_find(name + 1) : nullptr;
}

bool is_null_argument(const NODE *argument) {
  if (argument->op == ACONV) argument = argument->left;
  return argument->op == ICON && argument->u.lval == 0;
}

bool argument_matches(const NODE *argument, const SYM *parameter) {
  const TypeWord given = argument->type;
  const TypeWord wanted = parameter->stype;
  if (given == wanted) return true;
  if (is_integer(given) && is_integer(wanted)) return true;
  if (!is_pointer(wanted)) return false;
  if (is_pointer(given)) return !is_function(underived(given)) && !is_function(underived(wanted));
  return is_null_argument(argument);
}

// Walks the list of arguments beside the chain of parameters, which it moves on.
bool match_arguments(const NODE *arguments, const SYM *&parameter) {
  if (arguments->op == COMMA)
    return match_arguments(arguments->left, parameter) &&
           match_arguments(arguments->right, parameter);
  if (!parameter || parameter->level != 1 || !argument_matches(arguments, parameter)) return false;
  parameter = parameter->next;
  return true;
}

bool args_match(const NODE *arguments, const SYM *locals) {
  if (arguments && !match_arguments(arguments, locals)) return false;
  return !locals || locals->level != 1;
}

void unsuppress(FUN *fun) {
  fun->flags &= ~static_cast<std::uint32_t>(FUN_is_suppressed);
}

bool limit_was_reached(const FUN *fun) {
  for (const SYMLIST *cell = state.inline_limit_reached; cell; cell = cell->next)
    if (cell->sym == fun->sym) return true;
  return false;
}

// A call that came out of bodies nested too deep stays a call: a recursive function is a valid one.
// From then on only calls of the source are replaced by its body in this caller, since a function
// that calls itself twice would still be copied a thousand times.
bool nested_too_deep(const NODE *call, const FUN *fun, const LIST *cell) {
  if (call->nsize == 0) return false;
  if (limit_was_reached(fun)) return true;
  if (call->nsize < max_inline_depth) return false;
  print("\n>>>> ERROR: INLINE recursion limit exceeded on line %d.\n", cell->line2);
  state.inline_limit_reached = symlist_cons(fun->sym, state.inline_limit_reached);
  return true;
}

void show_refusal(const FUN *fun, const LIST *cell, const char *reason) {
  debug_print("\n\t>>>>> (%d,%d) Can't integrate call to %s(): %s\n", cell->line2, cell->line,
              fun->name, reason);
}

// The function by whose body the call is to be replaced, or none.
FUN *integrated_function(NODE *call, const LIST *cell) {
  FUN *fun = callee_of(call);
  if (!fun || !fun->inline_body) return nullptr;
  const char *reason = nullptr;
  if (!args_match(arguments_of(call), fun->inline_locals))
    reason = "argument mismatch";
  else if (nested_too_deep(call, fun, cell))
    reason = "recursion limit";
  else if (state.inlined_nodes >= max_inlined_nodes)
    reason = "the caller is too large";
  if (!reason) return fun;
  show_refusal(fun, cell, reason);
  unsuppress(fun); // the function must exist after all
  return nullptr;
}

// ------------------------------------------------------------------------------------------------
// Locals and arguments

// Parameters and autos of the body become plain autos of the caller.
SYM *instance_of(const SYM *sym) {
  SYM *instance = copy_symbol(1, sym);
  instance->level = 2;
  instance->count = -1;
  switch (sym->sclass) {
  case C_AUTO:
  case C_REG:
  case C_ARG:
  case C_REGPARM:
  case C_VREG:
    instance->sclass = instance->orig_sclass = C_AUTO;
    instance->offset = 0;
    forget_const(instance);
    break;
  default: state.inline_statics = symlist_cons(instance, state.inline_statics);
  }
  return instance;
}

// Makes the function's locals anew; they stand at the head of the caller's. Each symbol of the body
// refers to its copy.
void instantiate_locals(const FUN *fun) {
  SYM *chain = nullptr;
  for (SYM *sym = fun->inline_locals; sym; sym = sym->next) {
    if (sym->sclass == C_STAT || sym->sclass == C_LABEL || sym->sclass == C_TPDEF) continue;
    sym->copy = instance_of(sym);
    sym->copy->next = chain;
    chain = sym->copy;
  }
  state.local_syms = sym_list_reverse_onto(chain, state.local_syms);
}

void forget_instances(const FUN *fun) {
  for (SYM *sym = fun->inline_locals; sym; sym = sym->next)
    sym->copy = nullptr;
}

// parameter = argument
void bind_argument(NODE *argument, SYM *parameter, LIST *cell) {
  if (argument->op == ACONV) argument->op = is_pointer(argument->type) ? PCONV : SCONV;
  if (!is_pointer(argument->type) && is_pointer(parameter->stype))
    argument = convert_tree(parameter->stype, argument);
  sequencing::emit(simplify_tree(make_assign(make_name(parameter), argument)), cell);
}

// Takes the list of arguments; assigns them from the first to the last. Yields the symbol behind
// the last parameter.
SYM *bind_arguments(NODE *arguments, SYM *parameter, LIST *cell) {
  if (arguments->op == COMMA) {
    parameter = bind_arguments(arguments->left, parameter, cell);
    parameter = bind_arguments(arguments->right, parameter, cell);
    erase_node(arguments);
    return parameter;
  }
  SYM *next = parameter->next;
  bind_argument(arguments, parameter->copy, cell);
  return next;
}

// ------------------------------------------------------------------------------------------------
// The body

enum class Passage : std::uint8_t { ENTERING, LEAVING };

// A comment in the listing. Both kinds end in the same column.
void inline_comment(Passage passage, LIST *cell) {
  const bool entering = passage == Passage::ENTERING;
  const std::string name = readable_name(state.cur_fun_sym->name, 0);
  const std::size_t columns = comment_columns + (entering ? 0 : 1);
  const std::size_t arrows = columns > name.size() ? columns - name.size() : 0;
  std::string text = "; " + std::string(arrows, entering ? '>' : '<');
  text += (entering ? " ENTERING " : " LEAVING ") + name + "()";
  sequencing::emit(make_asm(RECORD_COMMENT, text), cell);
}

// The caller's symbol for one of the body.
SYM *instance_symbol(SYM *sym) {
  return sym && sym->level > 0 && sym->copy ? sym->copy : sym;
}

NODE *copy_label_reference(const NODE *node) {
  const auto index = static_cast<std::size_t>(node->u.lval);
  if (node->u.lval >= 0 && index < new_labels.size() && new_labels[index])
    return make_labelref(new_labels[index]->label->index);
  print("\n!!! COMPILER (OPTIMIZER) ERROR IN PROCINT, INDEX=%s !!!\n",
        std::to_string(node->u.lval).c_str());
  abnormal_end();
}

void copy_name(NODE *copy) {
  if (copy->u.sym->sclass == C_FIELD) state.has_bit_fields = true;
  copy->u.sym = instance_symbol(copy->u.sym);
  if (!is_const_symbol(copy->u.sym))
    copy->qual &= static_cast<std::uint8_t>(is_derived(copy->type) ? ~16u : ~1u);
}

// An address of a local means that another activation's locals may be reached.
void note_address(const NODE *address) {
  const NODE *object = address->left;
  while (object->op == MEMBER)
    object = object->left;
  if (object->op == NAME && is_frame_class(object->u.sym->sclass)) state.local_address_taken = true;
}

NODE *copy_inline_node(const NODE *node, const Expansion &expansion) {
  state.inlined_nodes += 1;
  if (node->op == LABELREF) return copy_label_reference(node);
  NODE *copy = copy_node_with_text(1, node);
  switch (node->op) {
  case NAME: copy_name(copy); break;
  case STASG:
  case STARG: copy->u.sym = instance_symbol(copy->u.sym); break;
  case STCALL:
  case USTCALL:
    copy->u.sym = instance_symbol(copy->u.sym);
    copy->nsize = expansion.depth;
    break;
  case CALL:
  case UCALL:
  case XCALL:
  case UXCALL:
  case ICALL: copy->nsize = expansion.depth; break;
  case ADDRESS: note_address(node); break;
  case NASSERT: state.assertions_present = true; break;
  default: break;
  }
  return copy;
}

NODE *copy_inline_tree(const NODE *tree, const Expansion &expansion) {
  NODE *root = copy_inline_node(tree, expansion);
  for (NODE *copy = root;;) {
    if (copy->right) copy->right = copy_inline_tree(copy->right, expansion);
    if (!copy->left) return root;
    copy->left = copy_inline_node(copy->left, expansion);
    copy = copy->left;
  }
}

NODE *leave_body(const Expansion &expansion) {
  inline_comment(Passage::LEAVING, expansion.cell);
  return make_node(BRANCH, make_labelref(expansion.true_label), nullptr, INT);
}

// The value as the caller gets it. A RETURN converts to its own type when it is executed, so that
// its operand may be wider.
NODE *returned_value(const NODE *statement, const Expansion &expansion) {
  NODE *value = copy_inline_tree(statement->right, expansion);
  value = convert_tree(statement->type, value);
  return convert_tree(expansion.type, value);
}

// return v  ->  if (v) goto T; else goto F     in a test
//               R = v; goto L                  where the value is used
//               v; goto L                      elsewhere
NODE *copy_return(const NODE *statement, const Expansion &expansion) {
  if (expansion.use == CallUse::TEST) {
    NODE *value = simplify_tree(returned_value(statement, expansion));
    inline_comment(Passage::LEAVING, expansion.cell);
    return make_if(value, expansion.true_label, expansion.false_label);
  }
  if (expansion.use == CallUse::VALUE) {
    NODE *value = returned_value(statement, expansion);
    sequencing::emit(simplify_tree(make_assign(make_name(expansion.result), value)),
                     expansion.cell);
  } else {
    sequencing::emit(copy_inline_tree(statement->right, expansion), expansion.cell);
  }
  return leave_body(expansion);
}

NODE *copy_inline_statement(const NODE *statement, const Expansion &expansion) {
  switch (statement->op) {
  case LABELDEF: return statement->right;
  case RETURN: return copy_return(statement, expansion);
  case URETURN: return leave_body(expansion);
  default: return copy_inline_tree(statement, expansion);
  }
}

// Gives each label of the body a new one, which hangs in the body's statement until the body has
// been copied. Of two labels of one number the first counts.
void map_labels(LIST *body) {
  for (; body; body = body->next) {
    NODE *statement = body->item;
    if (statement->op != LABELDEF) continue;
    statement->right = make_labeldef(sequencing::new_label());
    const auto index = static_cast<std::size_t>(statement->label->index);
    if (index >= new_labels.size()) new_labels.resize(index + 1, nullptr);
    if (!new_labels[index]) new_labels[index] = statement->right;
  }
}

void forget_labels(LIST *body) {
  for (; body; body = body->next) {
    NODE *statement = body->item;
    if (statement->op != LABELDEF) continue;
    statement->right = nullptr;
    new_labels[static_cast<std::size_t>(statement->label->index)] = nullptr;
  }
}

bool leaves_for_good(const LIST *emitted) {
  return emitted &&
         (emitted->item->op == BRANCH || emitted->item->op == IF || emitted->item->op == SWITCH);
}

// Emits the copy of the body; yields what stands for the call.
NODE *expand_body(LIST *body, Expansion &expansion) {
  LABEL *end = nullptr;
  if (expansion.use != CallUse::TEST) {
    end = sequencing::new_label();
    expansion.true_label = expansion.false_label = end->index;
  }
  if (expansion.use == CallUse::VALUE) expansion.result = make_temp('R', -1, 0, expansion.type);
  map_labels(body);
  for (const LIST *cell = body; cell; cell = cell->next)
    sequencing::emit(copy_inline_statement(cell->item, expansion), expansion.cell);
  forget_labels(body);
  if (!end) {
    if (!leaves_for_good(expansion.cell->next))
      sequencing::emit(make_node(BRANCH, make_labelref(expansion.true_label), nullptr, INT),
                       expansion.cell);
  } else {
    sequencing::emit_label(end, expansion.cell);
  }
  return expansion.result ? make_name(expansion.result) : make_icon(0, INT);
}

// Takes the call.
NODE *integrate(NODE *call, FUN *fun, Expansion &expansion) {
  NODE *arguments = arguments_of(call);
  arguments_of(call) = nullptr;
  SYM *caller = state.cur_fun_sym;
  if (fun->sym) state.cur_fun_sym = fun->sym;
  instantiate_locals(fun);
  inline_comment(Passage::ENTERING, expansion.cell);
  if (arguments) (void)bind_arguments(arguments, fun->inline_locals, expansion.cell);
  NODE *result = expand_body(fun->inline_body, expansion);
  forget_instances(fun);
  state.cur_fun_sym = caller;
  erase_tree(call);
  return result;
}

} // namespace

void clear_inline_calls() {
  new_labels.clear();
}

NODE *inline_call(CallUse use, NODE *call, LIST *cell, std::int32_t true_label,
                  std::int32_t false_label) {
  FUN *fun = integrated_function(call, cell);
  if (!fun) {
    if (use != CallUse::TEST) return call;
    return simplify_node(make_if(call, true_label, false_label));
  }
  debug_print("\n\t>>>>> (%d,%d) Integrating procedure %s() <<<<<\n", cell->line2, cell->line,
              fun->name);
  if (state.pass_number == 2) fun->sites -= 1;
  Expansion expansion;
  // There is no value to be had from a function declared void.
  expansion.use = use == CallUse::VALUE && !is_scalar(call->type) ? CallUse::NOTHING : use;
  expansion.cell = cell;
  expansion.type = call->type;
  expansion.true_label = true_label;
  expansion.false_label = false_label;
  expansion.depth = call->nsize + 1;
  return integrate(call, fun, expansion);
}

} // namespace velkor
