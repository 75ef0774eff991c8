#include "interproc/inline_bodies.h"

#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/state.h"
#include "core/symbols.h"
#include "core/zones.h"
#include "diag/dump.h"
#include "diag/readable_name.h"
#include "diag/type_text.h"

#include <new>

namespace velkor {
namespace {

constexpr int max_aggregate_bits = 128; // of the locals of a function without the inline mark

// ------------------------------------------------------------------------------------------------
// Which functions can be integrated

bool is_aggregate_of_many_words(const SYM *sym) {
  return sym->size > 32 && !is_scalar(sym->stype);
}

// Does this one symbol stand in the way? aggregate_bits sums up what the locals take.
bool symbol_is_not_integrable(const SYM *sym, std::int64_t &aggregate_bits) {
  if (is_volatile_symbol(sym)) return true;
  if (sym->level == 1 && (sym->orig_sclass == C_VARARG || !is_scalar(sym->stype))) return true;
  if (sym->scqual & (CQ_CREGISTER | CQ_REGISTER)) return false;
  switch (sym->sclass) {
  case C_EXTDEF:
  case C_LABEL:
  case C_TPDEF: return false;
  case C_STAT: // in the passes over the whole file it has been moved to file level
    return sym->level != 2 || state.pass_number == 0;
  case C_AUTO:
  case C_REG:
  case C_ARG:
  case C_REGPARM:
  case C_VREG:
    if (state.function_is_inline || !is_aggregate_of_many_words(sym)) return false;
    aggregate_bits += sym->size;
    return aggregate_bits > max_aggregate_bits;
  default: return true;
  }
}

bool function_not_integrable() {
  std::int64_t aggregate_bits = 0;
  for (const SYM *sym = state.local_syms; sym; sym = sym->next)
    if (symbol_is_not_integrable(sym, aggregate_bits)) return true;
  return false;
}

bool can_be_integrated() {
  const TypeWord result = underived(state.cur_fun_sym->stype);
  if (result != VOID && !is_scalar(result)) return false;
  // A pragma, or what the reader found, may have ruled it out.
  return !(state.cur_fun->flags & FUN_cannot_inline) && !function_not_integrable();
}

// ------------------------------------------------------------------------------------------------
// Copying to the global zone

// The inlined parameter is assigned, and a pointer then holds what it is given: const would tell
// of neither.
void forget_const_of_local(SYM *sym) {
  forget_const(sym);
  if (!is_pointer(sym->stype)) return;
  sym->squal &= is_pointer(underived(sym->stype)) ? ~64u : ~1u;
}

// Copies of the function's symbols, the oldest first. Each symbol refers to its copy.
SYM *copy_inline_locals() {
  SYM *copies = nullptr;
  for (SYM *sym = state.local_syms; sym; sym = sym->next) {
    forget_const_of_local(sym);
    SYM *copy = copy_symbol(0, sym);
    copy->next = copies;
    copies = copy;
    sym->copy = copy;
  }
  return copies;
}

void forget_copies() {
  for (SYM *sym = state.local_syms; sym; sym = sym->next)
    sym->copy = nullptr;
}

// The symbol as the body knows it. Not all symbols of a bad file have a copy.
SYM *body_symbol(SYM *sym) {
  return sym && sym->level > 0 && sym->copy ? sym->copy : sym;
}

void use_body_symbol(NODE *node) {
  SYM *sym = body_symbol(node->u.sym);
  if (sym == node->u.sym) return;
  node->u.sym = sym;
  node->qual = static_cast<std::uint8_t>(sym->squal);
}

void note_address(const NODE *address) {
  const NODE *object = address->left;
  while (object->op == MEMBER)
    object = object->left;
  if (object->op == NAME && object->u.sym->level == 0) object->u.sym->scqual |= CQ_ALIASED;
}

// The access through a pointer whose target is no longer const is none to something const.
void adjust_const_access(NODE *access) {
  if (!is_const_node(access)) return;
  const NODE *pointer = access->left;
  while (pointer && op_effect(pointer->op) == ASSIGNS)
    pointer = pointer->left;
  if (!pointer || pointer->op != NAME) return;
  const std::uint32_t target = underived(body_symbol(pointer->u.sym)->squal);
  if (!is_const_value(access->type, target))
    access->qual &= static_cast<std::uint8_t>(is_derived(access->type) ? ~16u : ~1u);
}

// The node as the body has it; its operands are still those of the function.
NODE *copy_body_node(const NODE *node) {
  NODE *copy = copy_node_with_text(0, node);
  switch (node->op) {
  case NAME:
  case STASG:
  case STARG:
  case STCALL:
  case USTCALL: use_body_symbol(copy); break;
  case ADDRESS: note_address(copy); break;
  case DEREF: adjust_const_access(copy); break;
  case LABELDEF:
    copy->label = new (zalloc(0, sizeof(LABEL))) LABEL{};
    copy->label->index = node->label->index;
    break;
  case RETURN:
  case URETURN: copy->left = nullptr; break; // the function's own name
  case PCOMMA: copy->op = COMMA_OP; break;   // copies of parameters are assignments like others
  default: break;
  }
  return copy;
}

NODE *copy_body_tree(const NODE *tree) {
  NODE *root = copy_body_node(tree);
  for (NODE *copy = root;;) {
    if (copy->right) copy->right = copy_body_tree(copy->right);
    if (!copy->left || copy->op == LABELDEF) return root;
    copy->left = copy_body_node(copy->left);
    copy = copy->left;
  }
}

LIST *global_cell(NODE *item, LIST *next) {
  return new (zalloc(0, sizeof(LIST))) LIST{next, item, 0, 0};
}

NODE *global_void_return() {
  NODE *node = static_cast<NODE *>(zalloc(0, sizeof(NODE)));
  *node = NODE{};
  node->op = URETURN;
  node->depnum = -1;
  return node;
}

bool ends_in_jump(const LIST *newest) {
  return newest &&
         (newest->item->op == BRANCH || newest->item->op == RETURN || newest->item->op == URETURN);
}

// The statements in order of execution. They end in a jump.
LIST *copy_inline_statements() {
  LIST *body =
      ends_in_jump(state.statements) ? nullptr : global_cell(global_void_return(), nullptr);
  for (const LIST *cell = state.statements; cell; cell = cell->next)
    body = global_cell(copy_body_tree(cell->item), body);
  return body;
}

void show_definition(const FUN *fun) {
  if (!state.debug_on || options.debug_level < 3) return;
  debug_print("\nINTEGRABLE DEFINITION FOR FUNCTION %s()\n\n",
              readable_name(state.cur_fun_sym->name, 0));
  for (const SYM *sym = fun->inline_locals; sym; sym = sym->next)
    debug_print("         LOCAL SYMBOL (LEVEL %d):  %s\n", sym->level,
                declaration_text(sym, nullptr));
  dump_trees(fun->inline_body);
}

void integrable_definition(FUN *fun) {
  if (fun->inline_body) return;
  fun->ret_type = static_cast<std::uint16_t>(underived(state.cur_fun_sym->stype));
  fun->inline_locals = copy_inline_locals();
  fun->inline_body = copy_inline_statements();
  forget_copies();
  state.inline_available = true;
  fun->flags |= FUN_is_inlined;
  show_definition(fun);
}

// The line goes out, and where no stand-alone copy was wanted there will be one after all: calls
// remain, and the output has to be complete.
void refuse_inline_mark() {
  const SYM *sym = state.cur_fun_sym;
  if (!(sym->scqual & CQ_INLINE)) return;
  print("%s", sym->scqual & CQ_SUPPRESSED_INLINE ? "\n>>> ERROR! " : "\n>>> Warning:");
  print(" Function %s() cannot be inlined.\n\n", readable_name(sym->name, 0));
  debug_print("\n\t!!! %s is not integrable.\n", declaration_text(sym, nullptr));
  if (state.pass_number == 0)
    state.cur_fun->flags &= ~static_cast<std::uint32_t>(FUN_is_suppressed);
}

} // namespace

void record_inline_definition() {
  const bool integrable = can_be_integrated();
  if (!integrable) state.cur_fun->flags |= FUN_cannot_inline;
  if (state.pass_number == 1 && !state.function_is_inline) return;
  if (integrable)
    integrable_definition(state.cur_fun);
  else
    refuse_inline_mark();
}

} // namespace velkor
