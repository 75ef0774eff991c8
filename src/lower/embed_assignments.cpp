#include "lower/embed_assignments.h"

#include "core/nodes.h"
#include "core/questions.h"
#include "core/zones.h"
#include "lower/unsimp_blocks.h"
#include "scalar/live_variables.h"

#include <algorithm>
#include <unordered_map>

namespace velkor {
namespace {

// ------------------------------------------------------------------------------------------------
// Objects

bool is_in_register(const SYM *sym) {
  return sym->sclass == C_REG || sym->sclass == C_VREG;
}

// Two symbols in one register are one object.
bool is_same_object(const SYM *a, const SYM *b) {
  if (a == b) return true;
  return is_in_register(a) && a->sclass == b->sclass && a->offset == b->offset;
}

// One number for each object.
std::uint64_t object_key(const SYM *sym) {
  if (!is_in_register(sym)) return reinterpret_cast<std::uintptr_t>(sym); // even, and not small
  return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(sym->offset)) << 1 | 1) |
         static_cast<std::uint64_t>(sym->sclass) << 40;
}

// ------------------------------------------------------------------------------------------------
// find_single_use

bool blocks_embedding(const NODE *node) {
  switch (node->op) {
  case LOGICAL_AND:
  case LOGICAL_OR:
  case CONDITIONAL:
  case LOOP:
  case ENDLOOP:
  case INITLOOP: return true;
  default: return false;
  }
}

// Does the node store to its left operand, or take its address?
bool needs_place(const NODE *node) {
  switch (node->op) {
  case ASSIGN:
  case INCREMENT:
  case DECREMENT:
  case ADDRESS:
  case ARGREF: return true;
  default: return asgop_base(node->op) != ILLOP;
  }
}

// Where an assignment to the name may stand in the tree: none when the object does not occur in it,
// its only occurrence, or name itself when there is no such place.
NODE *find_single_use(NODE *name, NODE *tree) {
  if (blocks_embedding(tree)) return name;
  if (tree->op == LABELDEF) return nullptr;
  if (tree->op == NAME) {
    if (!is_same_object(tree->u.sym, name->u.sym)) return nullptr;
    return tree->type == name->type ? tree : name;
  }
  NODE *operand = tree->left;
  if (!operand) return nullptr;
  if (needs_place(tree) && operand->op == NAME && is_same_object(operand->u.sym, name->u.sym))
    return name;
  NODE *in_left = find_single_use(name, operand);
  if (in_left == name || !tree->right) return in_left;
  NODE *in_right = find_single_use(name, tree->right);
  if (in_right == name || !in_left) return in_right;
  return in_right ? name : in_left;
}

// ------------------------------------------------------------------------------------------------
// The assignments that can move

// x++ is none of them: its value is the old one.
bool is_embeddable_operator(Opcode op) {
  return op == ASSIGN || asgop_base(op) != ILLOP;
}

// Between the assignment and the use may stand calls, which read a static object.
bool is_automatic(const SYM *sym) {
  switch (sym->sclass) {
  case C_AUTO:
  case C_REG:
  case C_VREG:
  case C_ARG:
  case C_REGPARM: return true;
  default: return false;
  }
}

bool is_numbered(const SYM *sym) {
  return sym->count >= 0 && sym->count != candidate_lost;
}

bool reads_no_storage(const NODE *tree) {
  for (; tree; tree = tree->left) {
    if (tree->op == NAME || tree->op == DEREF || tree->op == MEMBER || tree->op == ARROW)
      return false;
    if (op_effect(tree->op) != PURE) return false;
    if (tree->right && !reads_no_storage(tree->right)) return false;
  }
  return true;
}

bool can_embed(const NODE *statement) {
  if (!is_embeddable_operator(statement->op) || statement->left->op != NAME) return false;
  const SYM *sym = statement->left->u.sym;
  if (!is_numbered(sym) || sym->fcp_flag || !is_automatic(sym) || is_volatile_symbol(sym))
    return false;
  // The value must be what the name would read.
  return statement->type == statement->left->type && reads_no_storage(statement->right);
}

// ------------------------------------------------------------------------------------------------
// The statements behind

// The statements done so far, in the order of execution, and for each object the first of them that
// touches it, so that no search walks all of them. Positions grow towards the front.
class Done {
public:
  void push_front(LIST *cell) {
    cell->next = head_;
    head_ = cell;
    position_ += 1;
    note(cell->item, {cell, position_});
  }

  // The first statement that find_single_use may find something in.
  [[nodiscard]] LIST *first_for(const SYM *sym) const {
    const auto found = touching_.find(object_key(sym));
    const Mark touching = found == touching_.end() ? Mark{} : found->second;
    return std::max(touching, blocking_,
                    [](const Mark &a, const Mark &b) { return a.position < b.position; })
        .cell;
  }

  [[nodiscard]] LIST *head() const { return head_; }

private:
  struct Mark {
    LIST *cell = nullptr;
    int position = 0;
  };

  void note(const NODE *tree, const Mark &mark) {
    for (; tree && tree->op != LABELDEF; tree = tree->left) {
      if (blocks_embedding(tree)) blocking_ = mark;
      if (tree->op == NAME) touching_[object_key(tree->u.sym)] = mark;
      if (tree->right) note(tree->right, mark);
    }
  }

  LIST *head_ = nullptr;
  int position_ = 0;
  Mark blocking_;
  std::unordered_map<std::uint64_t, Mark> touching_; // never walked
};

// The assignment laid into one of the statements behind; false when it must stay.
bool embed(NODE *assignment, const Done &done, BB *block) {
  NODE *name = assignment->left;
  for (LIST *cell = done.first_for(name->u.sym); cell; cell = cell->next) {
    NODE *use = find_single_use(name, cell->item);
    if (!use) continue;
    if (use == name) return false;
    *use = *assignment;
    erase_node(assignment);
    cell->item = unsimp_tree(cell->item, block, nullptr);
    return true;
  }
  return false;
}

} // namespace

LIST *embed_constant_assignments(LIST *reversed, BB *block) {
  Done done;
  for (LIST *cell = reversed; cell;) {
    LIST *next = cell->next;
    if (can_embed(cell->item) && embed(cell->item, done, block)) {
      cell->item = nullptr;
      cell->next = nullptr;
      give_list(cell);
    } else {
      done.push_front(cell);
    }
    cell = next;
  }
  return done.head();
}

} // namespace velkor
