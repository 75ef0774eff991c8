#include "cfg/split_blocks.h"

#include "cfg/graph.h"
#include "core/nodes.h"
#include "core/questions.h"
#include "core/state.h"
#include "core/zones.h"
#include "simplify/simplify.h"

namespace velkor {
namespace {

// The work goes from the end of the function to its start, as the list does.
struct Splitter {
  LIST *rest;    // statements not yet looked at, newest first
  LIST *pending; // statements of the block being built, in execution order
};

bool is_jump(const NODE *tree) {
  return tree->op == BRANCH || tree->op == RETURN || tree->op == URETURN;
}

// Does control never run from this statement into the one behind it?
bool ends_block(const NODE *tree) {
  return is_jump(tree) || tree->op == CBRANCH || tree->op == IF || tree->op == LABELDEF;
}

void chain_block(LIST *trees) {
  BB *block = new (lalloc(sizeof(BB))) BB{};
  block->trees = trees;
  block->next = block->uon_next = state.first_bb;
  state.first_bb = block;
}

NODE *make_void_return() {
  return make_node(URETURN, make_name(state.cur_fun_sym), nullptr, VOID);
}

void make_exit_block() {
  state.first_bb = nullptr;
  chain_block(list_cons(make_void_return(), nullptr, state.end_value, state.end_value));
  state.exit_bb = state.first_bb;
  first_label(state.exit_bb);
}

void close_pending(Splitter &splitter) {
  if (splitter.pending) chain_block(splitter.pending);
  splitter.pending = nullptr;
}

void put_in_front(Splitter &splitter, LIST *cell) {
  cell->next = splitter.pending;
  splitter.pending = cell;
}

// Nothing jumps to the statements behind a jump and ahead of the next label.
void take_jump(Splitter &splitter, LIST *cell) {
  splitter.pending = erase_list(splitter.pending);
  put_in_front(splitter, cell);
}

void put_branch_to_label(Splitter &splitter, LABEL *label, std::int16_t line, std::int16_t line2) {
  NODE *target = make_labelref(label->index);
  splitter.rest = list_cons(make_node(BRANCH, target, nullptr, INT), splitter.rest, line, line2);
}

void take_label(Splitter &splitter, LIST *cell) {
  close_pending(splitter);
  LABEL *label = cell->item->label;
  label->bb = state.first_bb;
  label->next = state.first_bb->labels;
  state.first_bb->labels = label;
  // A label at the very start gets an entry block ahead of it, so that nothing jumps to the entry.
  if (!splitter.rest)
    put_branch_to_label(splitter, label, cell->line, cell->line2);
  else if (!ends_block(splitter.rest->item))
    put_branch_to_label(splitter, label, splitter.rest->line, splitter.rest->line2);
  erase_node(cell->item);
  give_list(cell);
}

void take_if(Splitter &splitter, LIST *cell) {
  close_pending(splitter);
  put_in_front(splitter, cell);
}

bool lacks_default(const NODE *cases) {
  return cases->op == CASE || (cases->op == COMMA && cases->right->op == CASE);
}

NODE *take_default_target(Splitter &splitter) {
  if (!splitter.pending) {
    LABEL *label = first_label(state.first_bb);
    return make_labelref(label->index);
  }
  NODE *branch = splitter.pending->item;
  NODE *target = branch->left;
  branch->left = nullptr;
  return target;
}

// A switch says where control goes in every case: what follows it is its default.
void take_switch(Splitter &splitter, LIST *cell) {
  if (splitter.pending && splitter.pending->item->op != BRANCH) close_pending(splitter);
  NODE *node = cell->item;
  if (lacks_default(node->right)) {
    NODE *otherwise = make_node(DEFAULT, take_default_target(splitter), nullptr, INT);
    node->right = make_node(COMMA, node->right, otherwise, INT);
    cell->item = simplify_node(node); // with one case it is an IF
  }
  splitter.pending = erase_list(splitter.pending);
  put_in_front(splitter, cell);
}

// Pragmas do not separate the prologue's parameter copies.
void take_pragma(Splitter &splitter, LIST *cell) {
  LIST *first = splitter.pending;
  if (!first || !is_param_copy(first->item)) {
    put_in_front(splitter, cell);
    return;
  }
  cell->next = first->next;
  first->next = cell;
}

void take_statement(Splitter &splitter, LIST *cell) {
  switch (cell->item->op) {
  case BRANCH:
  case RETURN:
  case URETURN: take_jump(splitter, cell); return;
  case LABELDEF: take_label(splitter, cell); return;
  case IF: take_if(splitter, cell); return;
  case SWITCH: take_switch(splitter, cell); return;
  case PPRAGMA: take_pragma(splitter, cell); return;
  default: put_in_front(splitter, cell); return;
  }
}

// Control that runs off the end returns.
void close_function() {
  if (state.statements && is_jump(state.statements->item)) return;
  state.statements =
      list_cons(make_void_return(), state.statements, state.end_value, state.end_value);
}

} // namespace

void split_into_blocks() {
  make_exit_block();
  close_function();
  Splitter splitter{state.statements, nullptr};
  state.statements = nullptr;
  while (splitter.rest) {
    LIST *cell = splitter.rest;
    splitter.rest = cell->next;
    take_statement(splitter, cell);
  }
  close_pending(splitter);
}

} // namespace velkor
