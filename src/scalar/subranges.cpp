#include "scalar/subranges.h"

#include "core/fun.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "diag/infix.h"

#include <cstring>
#include <limits>
#include <utility>

namespace velkor {
namespace {

constexpr int byte_bits = 8;

NODE *look_through_marks(NODE *node) {
  while (node->op == CSE_DUPE || node->op == CSE_ORIG)
    node = node->right;
  return node;
}

SUBRANGE *new_subrange(NODE *access, NODE *base, std::int32_t width, std::int32_t offset) {
  SUBRANGE *range = take_subrange();
  *range = {nullptr, nullptr, access, base, width, offset};
  return range;
}

// Offsets wrap as addresses do; an extent that would not fit is not known.
std::int32_t add_wrapping(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

std::int32_t bits_of(std::int32_t bytes) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(bytes) * byte_bits);
}

// Constants outside of this many bytes point at no object: the interval arithmetic never overflows.
constexpr std::int32_t largest_offset = std::numeric_limits<std::int32_t>::max() / byte_bits / 4;

bool is_sane_offset(std::int32_t bytes) {
  return bytes >= -largest_offset && bytes <= largest_offset;
}

struct AddressWalk {
  std::int32_t offset; // bits, so far
  std::int32_t width;  // bits; 0 once the extent is not known
};

// (p + K), (p - K): true when the walk goes on with the pointer side, which node then is.
bool step_over_sum(NODE *&node, AddressWalk &walk) {
  NODE *pointer = node->left;
  NODE *distance = node->right;
  if (node->op == ADD && is_pointer(distance->type)) std::swap(pointer, distance);
  if (!is_pointer(pointer->type)) return false;
  distance = look_through_marks(distance);
  if (distance->op != ICON || !is_sane_offset(distance->u.lval))
    walk.width = 0;
  else if (node->op == ADD)
    walk.offset = add_wrapping(walk.offset, bits_of(distance->u.lval));
  else
    walk.offset = add_wrapping(walk.offset, -bits_of(distance->u.lval));
  node = pointer;
  return true;
}

SUBRANGE *range_behind_address(NODE *access, NODE *address, AddressWalk walk) {
  for (NODE *node = address;;) {
    node = look_through_marks(node);
    if (!is_pointer(node->type)) return nullptr;
    switch (node->op) {
    case ADD:
    case SUBTRACT:
      if (!step_over_sum(node, walk)) return nullptr;
      continue;
    case ADDRESS: {
      SUBRANGE *range = subrange_of(node->left);
      if (!range) return nullptr;
      range->offset = add_wrapping(range->offset, walk.offset);
      range->tree = access;
      if (range->width != 0) range->width = walk.width;
      return range;
    }
    case IDENTITY: node = node->left; continue;
    case PCONV:
    case ISP2CHAR: {
      NODE *operand = look_through_marks(node->left);
      if (operand->op == ICON) return new_subrange(access, operand, walk.width, walk.offset);
      node = operand;
      continue;
    }
    default: return nullptr;
    }
  }
}

// An access whose size is not noted may touch all of its object.
std::int32_t noted_width(std::int32_t bits) {
  return bits > 0 ? bits : 0;
}

// A node that a pass has made may bear no size.
std::int32_t access_width(const NODE *access) {
  if (is_scalar(access->type) && access->type != ENUM) return value_width(access->type);
  return noted_width(access->depnum);
}

bool overlaps(const SUBRANGE *a, const SUBRANGE *b) {
  if (a->width == 0 || b->width == 0) return true;
  const std::int64_t a_end = std::int64_t{a->offset} + a->width;
  const std::int64_t b_end = std::int64_t{b->offset} + b->width;
  return a->offset < b_end && a_end > b->offset;
}

bool range_is_hit(const SUBRANGE *entry, const SUBRANGE *store) {
  switch (store->base->op) {
  case NAME:
    return entry->base->op == NAME && is_same_object(entry->base->u.sym, store->base->u.sym) &&
           overlaps(entry, store);
  case ICON: return entry->base->op == ICON;
  default: return true;
  }
}

// ------------------------------------------------------------------------------------------------
// Types

// What the type is to a store: arrays count as what they hold, unions as structures.
TypeWord storage_type(TypeWord type) {
  while (is_array(type))
    type = underived(type);
  if (type == UNION) return STRUCT;
  return type == ENUM ? TypeWord{INT} : type;
}

bool is_union_member(const NODE *access) {
  for (; access->op == MEMBER || access->op == ARROW; access = access->left) {
    const TypeWord holder =
        access->op == ARROW ? underived(access->left->type) : TypeWord{access->left->type};
    if (holder == UNION) return true;
    if (access->op == ARROW) return false;
  }
  return false;
}

bool types_may_share_storage(TypeWord a, TypeWord b) {
  if (a == b) return true;
  if (is_pointer(a) && is_pointer(b)) return true;
  return is_integer(a) && is_integer(b) && type_width(a) == type_width(b);
}

// ------------------------------------------------------------------------------------------------
// Calls

bool is_block_extern(const SYM *sym) {
  return sym->level > 0 && (sym->sclass == C_EXT || sym->sclass == C_EXTDEF);
}

bool calls_pure_function(const NODE *call) {
  if (!is_call(call->op)) return false;
  const FUN *fun = fun_of_call(call);
  return fun && (fun->flags & FUN_is_pure_fun);
}

bool is_static_local(const SYM *sym) {
  return sym->sclass == C_STAT && sym->level == 2;
}

} // namespace

SUBRANGE *subrange_of(NODE *access) {
  access = look_through_marks(access);
  switch (access->op) {
  case NAME: return new_subrange(access, access, noted_width(access->depnum), 0);
  case MEMBER: {
    SUBRANGE *range = subrange_of(access->left);
    if (!range) return nullptr;
    const SYM *member = access->right->u.sym;
    range->tree = access;
    range->offset = add_wrapping(range->offset, member->offset);
    if (range->width != 0) range->width = noted_width(member->size);
    return range;
  }
  case DEREF: {
    const bool is_indexed = access->right != nullptr;
    return range_behind_address(access, access->left, {0, is_indexed ? 0 : access_width(access)});
  }
  case ARROW: {
    const SYM *member = access->right->u.sym;
    return range_behind_address(access, access->left, {member->offset, noted_width(member->size)});
  }
  default: return nullptr;
  }
}

void free_subrange(SUBRANGE *range) {
  give_subrange(range);
}

void free_subranges(SUBRANGE *chain) {
  while (chain) {
    SUBRANGE *next = chain->next;
    give_subrange(chain);
    chain = next;
  }
}

SUBRANGE *subranges_kill_overlap(const SUBRANGE *range, SUBRANGE *chain) {
  SUBRANGE *kept = nullptr;
  while (chain) {
    SUBRANGE *entry = chain;
    chain = entry->next;
    if (range_is_hit(entry, range)) {
      give_subrange(entry);
    } else {
      entry->next = kept;
      kept = entry;
    }
  }
  return kept;
}

bool store_may_reach(const NODE *store, const NODE *access) {
  if (access_is_constant(access)) return false;
  const TypeWord stored = storage_type(store->type);
  const TypeWord read = storage_type(access->type);
  if (options.opt_alias_strict && (stored == CHAR || stored == UNSIGNED_CHAR)) return true;
  // A structure holds values of any type, and the members of a union share their bits. Both the
  // store and the access may be of that kind: u.i may be read behind a store through a pointer to
  // u.f.
  if (!is_scalar(stored) || !is_scalar(read)) return true;
  if (is_union_member(store) || is_union_member(access)) return true;
  // That one of the two is volatile tells nothing: the other may name the object without it.
  if (options.opt_alias_strict && (read == CHAR || read == UNSIGNED_CHAR)) return true;
  return types_may_share_storage(stored, read);
}

SUBRANGE *subranges_kill_by_type(const NODE *store, SUBRANGE *chain) {
  SUBRANGE **link = &chain;
  while (SUBRANGE *entry = *link) {
    if (store_may_reach(store, entry->tree)) {
      *link = entry->next;
      give_subrange(entry);
    } else {
      link = &entry->next;
    }
  }
  return chain;
}

SUBRANGE *subranges_kill_at_call(const NODE *call, SUBRANGE *chain) {
  if (calls_pure_function(call)) return chain;
  // Text for the assembler may call whatever a function of another file may call.
  const bool may_reenter = call->op == ASM || call_may_reenter(call);
  SUBRANGE **link = &chain;
  while (SUBRANGE *entry = *link) {
    const SYM *base = entry->base->op == NAME ? entry->base->u.sym : nullptr;
    const bool survives = base && !base->fcp_flag &&
                          (base->sclass == C_AUTO || (is_static_local(base) && !may_reenter));
    if (survives) {
      link = &entry->next;
    } else {
      *link = entry->next;
      give_subrange(entry);
    }
  }
  return chain;
}

bool is_same_object(const SYM *a, const SYM *b) {
  if (a == b) return true;
  if (!is_block_extern(a) && !is_block_extern(b)) return false;
  const auto has_linkage = [](const SYM *sym) { return sym->level == 0 || is_block_extern(sym); };
  return has_linkage(a) && has_linkage(b) && std::strcmp(a->name, b->name) == 0;
}

bool is_followed_scalar(const NODE *access) {
  if (access->op != NAME || !is_scalar(access->type)) return false;
  const SYM *sym = access->u.sym;
  return (sym->sclass == C_AUTO || sym->level == 1) && !sym->fcp_flag;
}

bool is_volatile_access(NODE *access) {
  if (access->op == MEMBER && is_volatile_access(access->left)) return true;
  return is_volatile_node(refresh_qual(access));
}

void print_subranges(const char *title, const SUBRANGE *chain, bool only_first) {
  if (!state.debug_file) return;
  debug_print("%s\n", title);
  int number = 0;
  for (const SUBRANGE *range = chain; range; range = only_first ? nullptr : range->next) {
    debug_print("%4d) SUBRANGE base: %s  offset:%ld,  width:%ld", ++number, tree2infix(range->base),
                long{range->offset}, long{range->width});
    debug_print(", tree: %s\n", tree2infix(range->tree));
  }
}

} // namespace velkor
