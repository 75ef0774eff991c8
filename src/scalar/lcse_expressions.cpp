// The table of operations: which sums, products, conversions ... have been computed.
//
// An operation is looked up by its opcode and the numbers of its operands, so a search costs the
// same in a block of thousands of statements as in a short one. Sums of a pointer and a constant
// are known by the pointer alone as well, so that one address can be made from another near it.
#include "core/compare.h"
#include "core/conversions.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/target.h"
#include "core/zones.h"
#include "scalar/lcse.h"
#include "scalar/lcse_state.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace velkor {
namespace {

constexpr int hashed_links = 64; // of a spine, so that the sum of thousands of terms costs no more
constexpr std::uint32_t expression_buckets = 101;
constexpr int similar_memory = 64; // entries of one key that a search looks at

// ------------------------------------------------------------------------------------------------
// The table

// bucket: of the trees' shape.
std::uint32_t key_of(Opcode op, std::uint32_t bucket, std::int32_t first, std::int32_t second) {
  if (is_commutative(op) && first > second) std::swap(first, second);
  std::uint64_t key =
      std::uint64_t{static_cast<std::uint32_t>(first)} << 32 | static_cast<std::uint32_t>(second);
  key = (key ^ op ^ bucket << 8) * 0x9E3779B97F4A7C15u;
  return static_cast<std::uint32_t>(key >> 32);
}

std::int32_t &newest_of(ExpressionTable &table, std::uint32_t key) {
  return table.newest[key & (table.newest.size() - 1)];
}

void link_entry(ExpressionTable &table, std::size_t at) {
  std::int32_t &newest = newest_of(table, table.entries[at].key);
  table.entries[at].older = newest;
  newest = static_cast<std::int32_t>(at);
}

void grow(ExpressionTable &table) {
  constexpr std::size_t smallest = 64;
  table.newest.assign(std::max(smallest, table.newest.size() * 2), -1);
  for (std::size_t at = 0; at < table.entries.size(); ++at)
    link_entry(table, at);
}

void enter(ExpressionTable &table, std::uint32_t key, NODE *node) {
  if (table.entries.size() == table.newest.size()) grow(table);
  table.entries.push_back({node, key, -1});
  link_entry(table, table.entries.size() - 1);
}

bool is_newest(const ExpressionTable &table, const NODE *node) {
  return !table.entries.empty() && table.entries.back().node == node;
}

void remove_newest(ExpressionTable &table) {
  const ExpressionTable::Entry &entry = table.entries.back();
  newest_of(table, entry.key) = entry.older;
  table.entries.pop_back();
}

// In proportion to what stands in the table, not to its size.
void empty(ExpressionTable &table) {
  while (!table.entries.empty())
    remove_newest(table);
}

// The newest entry of the key that matches, of at most so many of the key that are looked at.
template <typename Matches>
NODE *find(const ExpressionTable &table, std::uint32_t key, int most, Matches matches) {
  if (table.newest.empty()) return nullptr;
  std::int32_t at = table.newest[key & (table.newest.size() - 1)];
  while (at >= 0 && most > 0) {
    const ExpressionTable::Entry &entry = table.entries[static_cast<std::size_t>(at)];
    at = entry.older;
    if (entry.key != key) continue;
    if (matches(entry.node)) return entry.node;
    --most;
  }
  return nullptr;
}

// ------------------------------------------------------------------------------------------------
// Operations

// A number stands for the bits of a word, whose meaning these operators take from the type.
bool depends_on_signs(const NODE *node) {
  switch (node->op) {
  case SHIFT_RIGHT:
  case DIVIDE:
  case REMAINDER:
  case LE:
  case LT:
  case GE:
  case GT:
  case ABS: return true;
  case SCONV: return is_floating(node->type);
  default: return false;
  }
}

bool same_sign(const NODE *a, const NODE *b) {
  if (!a) return true;
  const TypeWord first = promote_type(a->type);
  const TypeWord second = promote_type(b->type);
  return is_unsigned_integer(first) == is_unsigned_integer(second) &&
         is_floating(first) == is_floating(second);
}

bool computes_same_value(const NODE *a, const NODE *b) {
  if (!compatible_types(a, b)) return false;
  return !depends_on_signs(a) || (same_sign(a->left, b->left) && same_sign(a->right, b->right));
}

bool operands_match(const NODE *a, const NODE *b) {
  if (same_number(a->left, b->left) && same_number(a->right, b->right)) return true;
  return is_commutative(a->op) && same_number(a->left, b->right) && same_number(a->right, b->left);
}

// x op (y op z), all constant, may stand in the table in another grouping.
bool is_constant_chain(const NODE *node) {
  const bool has_own_operator =
      node->left->op == node->op || (node->right && node->right->op == node->op);
  return has_own_operator && is_constant_tree(node);
}

// ------------------------------------------------------------------------------------------------
// What may be entered: lcse_tables.cpp tells why

bool is_computed_before_call(const NODE *operand) {
  return operand->nsize <= local_cse.number_at_call || is_constant_tree(skip_marks(operand));
}

bool may_enter_operation(const NODE *node) {
  if (local_cse.enters_nothing) return false;
  if (local_cse.number_at_call < 0) return true;
  return is_computed_before_call(node->left) &&
         (!node->right || is_computed_before_call(node->right));
}

// Only trees that read alike are joined, with the same names at the same places: variables that
// hold the same value for the moment part again, and would keep a temporary busy.
std::uint32_t bucket_of(const NODE *node) {
  return node->right ? lcse_hash(node, 2) % expression_buckets : 0;
}

std::uint32_t operation_key(const NODE *node, std::uint32_t bucket) {
  return key_of(node->op, bucket, node->left->nsize, node->right ? node->right->nsize : 0);
}

std::uint32_t constant_key(const NODE *node, std::uint32_t bucket) {
  return key_of(node->op, bucket, 0, 0);
}

NODE *find_constant_chain(const NODE *node, std::uint32_t bucket) {
  return find(local_cse.similar, constant_key(node, bucket), similar_memory,
              [&](const NODE *entry) { return trees_equal(entry, node, false); });
}

// ------------------------------------------------------------------------------------------------
// Nearby addresses

// p + K
bool is_offset_sum(const NODE *node) {
  return node->op == ADD && is_pointer(node->type) && node->right && node->right->op == ICON;
}

std::uint32_t offset_sum_key(const NODE *sum, std::uint32_t bucket) {
  return key_of(ADD, bucket, sum->left->nsize, 0);
}

bool is_absolute_address(const NODE *node) {
  return node->op == IDENTITY && (node->left->op == PCONV || node->left->op == ISP2CHAR) &&
         node->left->left->op == ICON;
}
std::int32_t absolute_value(const NODE *identity) {
  return identity->left->left->u.lval;
}

// The entry (a + K2), of the same a and type, from which K is in reach.
NODE *find_nearby_sum(const NODE *address, TypeWord access_type) {
  const auto wanted = static_cast<std::uint32_t>(address->right->u.lval);
  const std::uint32_t key = offset_sum_key(address, bucket_of(address));
  return find(local_cse.similar, key, similar_memory, [&](const NODE *entry) {
    if (entry == address || !is_offset_sum(entry) || entry->type != address->type ||
        !same_number(entry->left, address->left))
      return false;
    const auto base = static_cast<std::uint32_t>(entry->right->u.lval);
    return offset_fits(static_cast<std::int32_t>(wanted - base), access_type, false);
  });
}

// The constant operand may be known by its number elsewhere: it is replaced, not changed.
void set_distance(NODE *address, NODE *nearby, std::int32_t distance) {
  address->left = nearby;
  address->right = make_icon(distance, INT);
  number_icon(address->right);
  address->nsize = new_number();
}

void split_sum(NODE *address, NODE *entry) {
  NODE *constant = address->right;
  const auto distance = static_cast<std::int32_t>(static_cast<std::uint32_t>(constant->u.lval) -
                                                  static_cast<std::uint32_t>(entry->right->u.lval));
  NODE *known = make_icon(entry->right->u.lval, constant->type);
  number_icon(known);
  NODE *nearby = make_node(ADD, address->left, known, address->type);
  erase_node(constant);
  make_CSE_DUPE(nearby, entry);
  set_distance(address, nearby, distance);
}

void use_nearby_sum(NODE *address, TypeWord access_type) {
  if (!is_offset_sum(address)) return;
  const std::int32_t constant = address->right->u.lval;
  if (constant == 0 || offset_fits(constant, access_type, false)) return;
  if (!is_newest(local_cse.operations, address)) return;
  NODE *entry = find_nearby_sum(address, access_type);
  if (!entry) return;
  remove_newest(local_cse.operations);
  remove_newest(local_cse.similar);
  split_sum(address, entry);
}

NODE *find_nearby_constant(const NODE *address, TypeWord access_type) {
  const auto wanted = static_cast<std::uint32_t>(absolute_value(address));
  return find(local_cse.similar, constant_key(address, 0), similar_memory, [&](const NODE *entry) {
    if (entry == address || !is_absolute_address(entry) || entry->type != address->type)
      return false;
    const auto base = static_cast<std::uint32_t>(absolute_value(entry));
    return offset_fits(static_cast<std::int32_t>(wanted - base), access_type, false);
  });
}

void use_nearby_constant(NODE *address, TypeWord access_type) {
  const std::int32_t value = absolute_value(address);
  ExpressionTable &operations = local_cse.operations;
  if (value == 0 || offset_fits(value, access_type, false)) return;
  if (!is_newest(operations, address)) return;
  // The conversion goes away with the address, so it must not stay in the table either.
  NODE *conversion = address->left;
  const std::size_t count = operations.entries.size();
  if (count < 2 || operations.entries[count - 2].node != conversion) return;
  NODE *entry = find_nearby_constant(address, access_type);
  if (!entry) return;
  remove_newest(operations);
  remove_newest(operations);
  remove_newest(local_cse.similar);
  const auto distance = static_cast<std::int32_t>(
      static_cast<std::uint32_t>(value) - static_cast<std::uint32_t>(absolute_value(entry)));
  NODE *nearby = copy_tree(entry);
  nearby->nsize = 0;
  erase_tree(conversion);
  make_CSE_DUPE(nearby, entry);
  address->op = ADD;
  set_distance(address, nearby, distance);
}

// Enters the node under a new number, or gives it a number of its own.
void enter_operation(NODE *node, std::uint32_t bucket, bool is_chain) {
  node->nsize = new_number();
  if (!may_enter_operation(node)) return;
  enter(local_cse.operations, operation_key(node, bucket), node);
  if (is_offset_sum(node))
    enter(local_cse.similar, offset_sum_key(node, bucket), node);
  else if (is_chain || is_absolute_address(node))
    enter(local_cse.similar, constant_key(node, bucket), node);
}

} // namespace

void empty_operations() {
  empty(local_cse.operations);
  empty(local_cse.similar);
}

void number_expression(NODE *node) {
  if (!node->left || is_blocked(node)) {
    node->nsize = 0;
    return;
  }
  const bool is_chain = is_constant_chain(node);
  const std::uint32_t bucket = bucket_of(node);
  const std::uint32_t key = operation_key(node, bucket);
  NODE *found = find(local_cse.operations, key, similar_memory, [&](const NODE *entry) {
    return entry->op == node->op && operands_match(entry, node) && computes_same_value(entry, node);
  });
  if (!found && is_chain) found = find_constant_chain(node, bucket);
  if (found) return make_CSE_DUPE(node, found);
  enter_operation(node, bucket, is_chain);
}

void use_nearby_address(NODE *address, TypeWord access_type) {
  if (address->op == ADD)
    use_nearby_sum(address, access_type);
  else if (is_absolute_address(address))
    use_nearby_constant(address, access_type);
}

// ------------------------------------------------------------------------------------------------
// Hash

namespace {

std::uint32_t hash_text(std::uint32_t hash, const char *text, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i)
    hash = std::rotl(hash, 4) + static_cast<unsigned char>(text[i]);
  return hash;
}
std::uint32_t hash_text(std::uint32_t hash, const char *text) {
  return hash_text(hash, text, std::strlen(text));
}

bool hashes_in_any_order(Opcode op) {
  switch (op) {
  case ADD:
  case BIT_AND:
  case BIT_OR:
  case BIT_XOR:
  case EQ:
  case NE:
  case SQUARE: return true;
  default: return false;
  }
}

std::uint32_t hash_operands(std::uint32_t hash, const NODE *node, int depth) {
  if (hashes_in_any_order(node->op)) {
    std::uint32_t sum = node->left ? lcse_hash(node->left, depth) : 0;
    if (node->right) sum += lcse_hash(node->right, depth);
    return hash ^ (sum << 8);
  }
  if (node->right) hash ^= lcse_hash(node->right, depth) << 16;
  if (node->left) hash ^= lcse_hash(node->left, depth) << 8;
  return hash;
}

} // namespace

std::uint32_t lcse_hash(const NODE *tree, int depth) {
  tree = skip_marks(tree);
  std::uint32_t hash = tree->op;
  for (int links = 0; tree->left && links < hashed_links; ++links) {
    if (depth >= 1 && tree->right && !is_offset_sum(tree)) break;
    tree = skip_marks(tree->left);
    hash -= tree->op ^ 157u;
  }
  if (depth < 1) return hash;
  switch (tree->op) {
  case NAME: return hash_text(hash, tree->u.sym->name);
  case SCON: return hash_text(hash, tree->aux.text, static_cast<std::size_t>(tree->u.lval));
  case XCALL:
  case ICALL: return hash_text(hash, tree->u.name);
  case ICON: {
    const auto value = static_cast<std::uint32_t>(tree->u.lval);
    return hash ^ (value >> 16) ^ value;
  }
  case FCON: return hash_text(hash + tree->type, tree->aux.text);
  case MEMBER:
  case ARROW: return hash_text(hash + lcse_hash(tree->left, depth), tree->right->u.sym->name);
  default: return hash_operands(hash, tree, depth - 1);
  }
}

} // namespace velkor
