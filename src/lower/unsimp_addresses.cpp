// Lowering of conversions, names, addresses and accesses.
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/options.h"
#include "lower/lowering.h"
#include "lower/unsimp_blocks.h"
#include "simplify/patterns.h"
#include "simplify/retype.h"

namespace velkor {
namespace {

constexpr TypeWord node_type_mask = 0xFFFF;
constexpr TypeWord pointer_to_struct = pointer_to(STRUCT);

TypeWord pointer_type(TypeWord type) {
  return pointer_to(type) & node_type_mask;
}

// (t) x  ->  x, x of type t
Outcome drop_equal_conversion(NODE *&node, const Position &) {
  if (node->type != node->left->type) return Outcome::NEXT;
  absorb_child(node, node->left);
  return Outcome::AGAIN;
}

// IDENTITY(x)  ->  x
Outcome drop_identity(NODE *&node, const Position &) {
  absorb_child(node, node->left);
  return Outcome::AGAIN;
}

// p as another pointer  ->  (t *) p
Outcome convert_pointer_name(NODE *&node, const Position &) {
  if (!is_pointer(node->type) || node->type == pointer_to_struct) return Outcome::DONE;
  node = retype_tree(node);
  return Outcome::DONE;
}

// &(t) x  ->  (t *) &x
Outcome address_before_conversion(NODE *&node, const Position &at) {
  NODE *operand = node->left;
  if (operand->op != PCONV && operand->op != SCONV && operand->op != ISP2CHAR) return Outcome::NEXT;
  operand->op = ADDRESS;
  set_type(operand, pointer_type(operand->left->type));
  node->left = unsimp_node(operand, at.block, at.cell);
  node->op = PCONV;
  return Outcome::AGAIN;
}

// ... *p++ ...;  ->  ... *p ...; p += n;  where no access steps its pointer
Outcome split_step_of_pointer(NODE *&node, const Position &at) {
  if (options.opt_target_mode != 1 || !is_increment_or_decrement(node->left->op) ||
      !can_split_step(node->left, at))
    return Outcome::NEXT;
  node->left = move_step_behind(node->left, at.cell);
  return Outcome::NEXT;
}

// *p  ->  *(t *) p, where the access is of another type t than p points at
Outcome convert_accessed_pointer(NODE *&node, const Position &) {
  const TypeWord type = pointer_type(node->type);
  if (node->left->type != type && type != pointer_to_struct)
    node->left = convert_tree(type, node->left);
  return Outcome::DONE;
}

constexpr LoweringRule conversion_table[] = {{"(t) x  ->  x, x of type t", drop_equal_conversion}};
constexpr LoweringRule identity_table[] = {{"IDENTITY(x)  ->  x", drop_identity}};
constexpr LoweringRule name_table[] = {{"p  ->  (t *) p", convert_pointer_name}};
constexpr LoweringRule address_table[] = {{"&(t) x  ->  (t *) &x", address_before_conversion}};
constexpr LoweringRule access_table[] = {
    {"... *p++ ...;  ->  ... *p ...; p += n;", split_step_of_pointer},
    {"*p  ->  *(t *) p", convert_accessed_pointer},
};

} // namespace

const LoweringRules lower_conversion_rules{conversion_table};
const LoweringRules lower_identity_rules{identity_table};
const LoweringRules lower_name_rules{name_table};
const LoweringRules lower_address_rules{address_table};
const LoweringRules lower_access_rules{access_table};

} // namespace velkor
