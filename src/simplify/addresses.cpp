// Rules for addresses, for accesses through pointers, and for members.
#include "simplify/addresses.h"

#include "core/bit_arithmetic.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/symbols.h"
#include "simplify/patterns.h"
#include "simplify/rule_sets.h"

namespace velkor {
namespace {

// Bytes from the start of the structure; takes the member's NAME.
NODE *member_offset(NODE *member) {
  const std::int32_t bytes = member->u.sym->offset / 8;
  erase_tree(member);
  return make_icon(bytes, INT);
}

// The address of a member as base address plus offset: base is simplified and of a pointer type.
NODE *add_member_offset(NODE *node, NODE *base, NODE *member) {
  node->op = ADD;
  node->left = base;
  node->right = member_offset(member);
  return simplify_node(node);
}

// ------------------------------------------------------------------------------------------------
// U&, ARGREF

// &*p  ->  (t *) p
Outcome address_of_access(NODE *&tree) {
  if (tree->left->op != DEREF || tree->left->right) return Outcome::NEXT;
  tree->left = replace_by_left(tree->left);
  tree->op = PCONV;
  return finish(tree, tree);
}

// &(p->m)  ->  (t *) p + offset of m
Outcome address_through_pointer(NODE *&tree) {
  NODE *access = tree->left;
  if (access->op != ARROW || options.opt_level <= 1) return Outcome::NEXT;
  NODE *member = access->right;
  access->op = PCONV;
  access->right = nullptr;
  access->qual = 0;
  access->depnum = -1;
  access->type = tree->type;
  tree = add_member_offset(tree, simplify_node(access), member);
  return Outcome::DONE;
}

// &(s.m)  ->  &s + offset of m
Outcome address_of_member(NODE *&tree) {
  NODE *access = tree->left;
  if (tree->op != ADDRESS || access->op != MEMBER || options.opt_level <= 1) return Outcome::NEXT;
  NODE *member = access->right;
  access->op = ADDRESS;
  access->right = nullptr;
  access->qual = 0;
  access->depnum = -1;
  access->type = tree->type;
  tree = add_member_offset(tree, simplify_node(access), member);
  return Outcome::DONE;
}

constexpr Rule address_table[] = {
    {"&*p  ->  (t *) p", address_of_access},
    {"&(p->m)  ->  (t *) p + offset", address_through_pointer},
    {"&(s.m)  ->  &s + offset", address_of_member},
};

// ------------------------------------------------------------------------------------------------
// U*, ->

// (&s)->m  ->  s.m
Outcome arrow_of_address(NODE *&tree) {
  if (tree->op != ARROW || tree->left->op != ADDRESS) return Outcome::NEXT;
  if (!is_struct_or_union(tree->left->left->type)) return Outcome::NEXT;
  tree->left = replace_by_left(tree->left);
  tree->op = MEMBER;
  return finish(tree, tree);
}

// (p + K)->m  ->  *((t *) p + (K + offset of m))
Outcome arrow_of_sum(NODE *&tree) {
  NODE *sum = tree->left;
  if (tree->op != ARROW || sum->op != ADD || !is_icon(sum->right)) return Outcome::NEXT;
  if (is_bit_field_access(tree)) return Outcome::NEXT;
  const TypeWord type = pointer_to(tree->type);
  sum->left = simplify_node(make_node(PCONV, sum->left, nullptr, type));
  set_type(sum, type);
  NODE *offset = sum->right;
  offset->u.lval = wrapping_add(offset->u.lval, tree->right->u.sym->offset / 8);
  tree->right = erase_tree(tree->right);
  tree->op = DEREF;
  return finish(tree, tree);
}

// *(t *) a  ->  *a, a an array of t
Outcome access_of_array(NODE *&tree) {
  const NODE *pointer = tree->left;
  if (tree->op != DEREF || pointer->op != PCONV) return Outcome::NEXT;
  const TypeWord array = pointer->left->type;
  if (!is_array(array) || underived(array) != tree->type) return Outcome::NEXT;
  tree->left = replace_by_left(tree->left);
  return Outcome::REWRITTEN;
}

// *&y  ->  y, y of the access's type
Outcome access_of_address(NODE *&tree) {
  const NODE *address = tree->left;
  if (tree->op != DEREF || tree->right) return Outcome::NEXT;
  if (address->op != ADDRESS && address->op != ARGREF) return Outcome::NEXT;
  const NODE *object = address->left;
  if (object->type != tree->type) return Outcome::NEXT;
  // An object that is read as a volatile one is so only here: its name would lose that.
  if (is_volatile_node(tree) && !is_volatile_node(object)) return Outcome::NEXT;
  const std::int32_t depnum = tree->depnum;
  tree = replace_by_left(replace_by_left(tree));
  tree->depnum = depnum;
  return Outcome::DONE;
}

// *"text", *("text" + x): a literal never changes
Outcome access_of_literal(NODE *&tree) {
  const NODE *pointer = tree->left;
  if (tree->op != DEREF) return Outcome::NEXT;
  const bool is_literal =
      pointer->op == SCON ||
      (pointer->op == ADD && (pointer->left->op == SCON || pointer->right->op == SCON));
  // An access that the program calls volatile stays one.
  if (!is_literal || is_volatile_node(tree)) return Outcome::NEXT;
  tree->qual = is_derived(tree->type) ? 16 : 1;
  return Outcome::DONE;
}

constexpr Rule access_table[] = {
    {"(&s)->m  ->  s.m", arrow_of_address},
    {"(p + K)->m  ->  *((t *) p + (K + offset))", arrow_of_sum},
    {"*(t *) a  ->  *a, a an array", access_of_array},
    {"*&y  ->  y", access_of_address},
    {"*\"text\"  ->  the same, const", access_of_literal},
};

// ------------------------------------------------------------------------------------------------
// .

// (*p).m  ->  p->m
Outcome member_of_access(NODE *&tree) {
  if (tree->left->op != DEREF || tree->left->right) return Outcome::NEXT;
  tree->left = replace_by_left(tree->left);
  tree->op = ARROW;
  return finish(tree, tree);
}

// x or *x, which can be evaluated again: not so where the access is one of its own.
bool is_repeatable_side(const NODE *side) {
  if (is_volatile_node(side)) return false;
  if (side->op == NAME) return true;
  return side->op == DEREF && side->left->op == NAME && !is_volatile_node(side->left);
}

// (a = b).m  ->  (a = b , a.m)  or  (a = b , b.m)
Outcome member_of_simple_assignment(NODE *&tree) {
  NODE *assignment = tree->left;
  if (assignment->op != STASG) return Outcome::NEXT;
  const NODE *side = is_repeatable_side(assignment->left)    ? assignment->left
                     : is_repeatable_side(assignment->right) ? assignment->right
                                                             : nullptr;
  if (!side) return Outcome::NEXT;
  tree->left = copy_tree(side);
  NODE *value = simplify_node(tree);
  tree = simplify_node(make_comma(assignment, value));
  return Outcome::DONE;
}

// The tag of the structure that a symbol is, or is of.
SYM *tag_of(SYM *sym) {
  if (!sym) return nullptr;
  const bool is_tag = sym->sclass == C_STRTAG || sym->sclass == C_UNTAG;
  return is_tag ? sym : sym->tag;
}

// (a = b).m  ->  (T = &a , (*T = b , T->m))
Outcome member_of_assignment(NODE *&tree) {
  NODE *assignment = tree->left;
  if (assignment->op != STASG) return Outcome::NEXT;
  NODE *target = assignment->left;
  const TypeWord target_type = target->type;
  const std::uint8_t target_qual = target->qual & 15;
  const TypeWord type = pointer_to(target_type);
  SYM *temporary = make_temp('T', -1, pointer_width, type);
  temporary->tag = tag_of(assignment->u.sym);
  NODE *address = simplify_node(make_node(ADDRESS, target, nullptr, type));
  NODE *store = simplify_node(make_assign(make_name(temporary), address));
  NODE *access = make_node(DEREF, make_name(temporary), nullptr, target_type);
  access->qual = target_qual;
  access->depnum = assignment->depnum;
  assignment->left = access;
  tree->op = ARROW;
  tree->left = make_name(temporary);
  NODE *value = simplify_node(tree);
  tree = simplify_node(make_comma(store, simplify_node(make_comma(assignment, value))));
  return Outcome::DONE;
}

constexpr Rule member_table[] = {
    {"(*p).m  ->  p->m", member_of_access},
    {"(a = b).m  ->  (a = b , a.m)", member_of_simple_assignment},
    {"(a = b).m  ->  (T = &a , *T = b , T->m)", member_of_assignment},
};

} // namespace

const RuleSet address_rules{"address", address_table};
const RuleSet access_rules{"access", access_table};
const RuleSet member_rules{"member", member_table};

NODE *simplify_addr(NODE *node) {
  return apply_rules(address_rules, node);
}

NODE *simplify_deref(NODE *node) {
  return apply_rules(access_rules, node);
}

NODE *simplify_member(NODE *node) {
  return apply_rules(member_rules, node);
}

} // namespace velkor
