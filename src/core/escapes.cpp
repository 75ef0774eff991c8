#include "core/escapes.h"

#include "core/fun.h"
#include "core/options.h"
#include "core/state.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velkor {
namespace {

// What becomes of the value that a node yields.
enum class Fate : std::uint8_t {
  ANYTHING, // may be stored, returned, compared ...
  ACCESSED, // only serves an access
  LENT      // handed to a call that does not keep it
};

// Library routines that use what they are pointed at and are done with it. strcpy and memcpy are
// not among them: they return an argument.
constexpr std::array<std::string_view, 4> borrowing_routines = {"fprintf", "printf", "strcmp",
                                                                "strlen"};

bool is_borrowing_routine(const FUN *fun) {
  return (fun->flags & FUN_is_SYSTEM) && !(fun->flags & FUN_is_defined) &&
         std::find(borrowing_routines.begin(), borrowing_routines.end(), fun->name) !=
             borrowing_routines.end();
}

// A static function of the file hides the library's routine of that name.
bool callee_is_static(const NODE *call) {
  const NODE *callee = call->left;
  if (call->op == XCALL || callee->op != ADDRESS || callee->left->op != NAME) return false;
  const StorageClass sclass = callee->left->u.sym->sclass;
  return sclass == C_STAT || sclass == C_USTATIC;
}

bool is_register_symbol(const SYM *sym) {
  return (sym->scqual & (CQ_REGISTER | CQ_CREGISTER)) != 0;
}

class Scan {
public:
  explicit Scan(AddressUse use) : use_(use) {}

  void walk(const NODE *tree, Fate fate) const;

private:
  void note_symbol(SYM *sym) const;
  void note_place(SYM *sym, TypeWord type) const;
  void note_address(const NODE *address, Fate fate) const;
  void walk_sum(const NODE *sum, Fate fate) const;

  AddressUse use_;
};

// The flag of an object of file level is the same wherever it is named.
void Scan::note_symbol(SYM *sym) const {
  if (sym->level == 0)
    sym->fcp_flag = use_ == AddressUse::ANY || (sym->scqual & CQ_ALIASED) || !is_scalar(sym->stype);
  else if ((sym->sclass == C_EXT || sym->sclass == C_EXTDEF) && !is_register_symbol(sym))
    sym->fcp_flag = 1;
}

// A read or a store of the object, or of a part of it; an array stands for its address.
void Scan::note_place(SYM *sym, TypeWord type) const {
  note_symbol(sym);
  if (is_array(type)) sym->fcp_flag = 1;
}

void Scan::note_address(const NODE *address, Fate fate) const {
  SYM *sym = addressed_symbol(address);
  if (!sym) return walk(address->left, Fate::ANYTHING);
  if (sym->level == 0) return note_symbol(sym);
  const bool is_confined = use_ == AddressUse::ESCAPING && fate != Fate::ANYTHING &&
                           is_scalar(sym->stype) && is_frame_class(sym->sclass);
  if (!is_confined) sym->fcp_flag = 1;
}

// An access uses the pointer of a sum. An address among the bytes that are added to it may belong
// to another object than the one that is accessed.
void Scan::walk_sum(const NODE *sum, Fate fate) const {
  for (const NODE *operand : {sum->right, sum->left})
    walk(operand, is_pointer(operand->type) ? fate : Fate::ANYTHING);
}

// The function's recursion follows right operands, and left ones where the fate changes.
void Scan::walk(const NODE *tree, Fate fate) const {
  for (; tree; tree = tree->left)
    switch (tree->op) {
    case LABELDEF: return; // its operand is no tree
    case NAME: return note_place(tree->u.sym, tree->type);
    case ADDRESS:
    case ARGREF: return note_address(tree, fate);
    case MEMBER: {
      const NODE *object = tree;
      while (object->op == MEMBER)
        object = object->left;
      if (object->op != NAME) return walk(object, Fate::ANYTHING);
      return note_place(object->u.sym, tree->type);
    }
    case ARROW: fate = Fate::ACCESSED; break;
    case DEREF:
      if (tree->right) walk(tree->right, Fate::ANYTHING);
      fate = Fate::ACCESSED;
      break;
    case ADD:
    case SUBTRACT: return walk_sum(tree, fate);
    case PCONV:
    case ISP2CHAR:
    case ACONV: break;
    case COMMA: // the arguments of a call
      walk(tree->right, fate);
      break;
    case CALL:
    case STCALL:
      walk(tree->right, keeps_no_address(tree) ? Fate::LENT : Fate::ANYTHING);
      fate = Fate::ANYTHING;
      break;
    case XCALL: fate = keeps_no_address(tree) ? Fate::LENT : Fate::ANYTHING; break;
    case IF:
    case SWITCH: fate = Fate::ANYTHING; break; // the right side holds labels
    default:
      if (tree->right) walk(tree->right, Fate::ANYTHING);
      fate = Fate::ANYTHING;
    }
}

} // namespace

SYM *addressed_symbol(const NODE *address) {
  const NODE *object = address->left;
  while (object->op == MEMBER)
    object = object->left;
  return object->op == NAME ? object->u.sym : nullptr;
}

bool keeps_no_address(const NODE *call) {
  if (options.opt_aliased) return false;
  if (options.opt_no_alias) return true;
  if (call->op != CALL && call->op != STCALL && call->op != XCALL) return false;
  const FUN *fun = fun_of_call(call);
  return fun && is_borrowing_routine(fun) && !callee_is_static(call);
}

void flag_addressed_objects(AddressUse use) {
  for (SYM *chain : {state.local_syms, state.temp_syms, state.scalar_syms, state.static_syms,
                     state.other_syms, state.misc_syms})
    for (SYM *sym = chain; sym; sym = sym->next)
      sym->fcp_flag = 0;
  const Scan scan(use);
  for (const BB *block = state.first_bb; block; block = block->next)
    for (const LIST *cell = block->trees; cell; cell = cell->next)
      scan.walk(cell->item, Fate::ANYTHING);
}

} // namespace velkor
