#include "cfg/parallel_assignments.h"

#include "core/nodes.h"
#include "core/symbols.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace velkor {
namespace {

using Assignments = std::vector<NODE *>;

// Takes the chain apart, left to right.
void flatten(NODE *tree, Assignments &assignments) {
  while (tree->op == COMMA_OP) {
    assignments.push_back(tree->right);
    NODE *left = tree->left;
    erase_node(tree);
    tree = left;
  }
  assignments.push_back(tree);
  std::reverse(assignments.begin(), assignments.end());
}

// Does the tree read what the assignment stores to? The operand of an address is not read.
bool reads_target(const NODE *assignment, const NODE *tree) {
  const SYM *target = assignment->left->u.sym;
  for (; tree && tree != assignment; tree = tree->left) {
    if (tree->op == ADDRESS) return false;
    if (tree->op == NAME) return tree->u.sym == target;
    if ((tree->op == DEREF || tree->op == ARROW) && target->fcp_flag) return true;
    if (tree->right && reads_target(assignment, tree->right)) return true;
  }
  return false;
}

// Does the assignment read the target of another one in the list?
bool reads_another(const NODE *assignment, const Assignments &others) {
  return std::any_of(others.begin(), others.end(), [&](const NODE *other) {
    return other != assignment && reads_target(other, assignment->right);
  });
}

bool is_read_by_another(const NODE *assignment, const Assignments &others) {
  return std::any_of(others.begin(), others.end(), [&](const NODE *other) {
    return other != assignment && reads_target(assignment, other->right);
  });
}

// From the right end of the list: what depends on no other can run last.
void take_to_back(Assignments &rest, Assignments &back) {
  for (std::size_t i = rest.size(); i-- > 0;)
    if (!reads_another(rest[i], rest)) {
      back.push_back(rest[i]);
      rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

// What no other depends on can run first.
void take_to_front(Assignments &rest, Assignments &front) {
  for (std::size_t i = 0; i < rest.size();)
    if (is_read_by_another(rest[i], rest)) {
      ++i;
    } else {
      front.push_back(rest[i]);
      rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

// The last assignment a = e of a cycle: T = e runs first, and a = T takes its place.
void break_cycle(Assignments &rest, Assignments &front) {
  NODE *last = rest.back();
  SYM *temporary = make_temp('T', -1, last->left->u.sym->size, last->left->type);
  front.push_back(make_assign(make_name(temporary), last->right));
  last->right = make_name(temporary);
}

NODE *join(const Assignments &assignments) {
  NODE *chain = nullptr;
  for (NODE *assignment : assignments) {
    if (!chain) {
      chain = assignment;
      continue;
    }
    chain = make_node(COMMA_OP, chain, assignment, assignment->type);
    chain->depnum = assignment->depnum;
  }
  return chain;
}

} // namespace

NODE *sequence_parallel_assignments(NODE *assignments) {
  Assignments rest;
  Assignments front;
  Assignments back;
  flatten(assignments, rest);
  take_to_back(rest, back);
  while (rest.size() > 1) {
    take_to_front(rest, front);
    take_to_back(rest, back);
    if (rest.size() > 1) break_cycle(rest, front);
  }
  front.insert(front.end(), rest.begin(), rest.end());
  front.insert(front.end(), back.rbegin(), back.rend());
  return join(front);
}

} // namespace velkor
