#include "icode/function_writer.h"

#include "core/compare.h"
#include "core/fun.h"
#include "core/nodes.h"
#include "core/options.h"
#include "core/output.h"
#include "core/questions.h"
#include "core/state.h"
#include "diag/infix.h"
#include "icode/output_file.h"
#include "icode/record_writer.h"
#include "icode/tree_writer.h"
#include "simplify/retype.h"
#include "simplify/simplify.h"
#include "simplify/truth.h"

#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace velkor {
namespace {

constexpr std::size_t longest_comment = 130; // characters of a statement's text in the listing

// ------------------------------------------------------------------------------------------------
// Locals

bool is_written_with_function(const SYM *sym) {
  return sym->sclass == C_AUTO || sym->sclass == C_REG || sym->sclass == C_VREG;
}

void write_chain(SYM *chain) {
  for (SYM *sym = chain; sym; sym = sym->next)
    if (is_written_with_function(sym)) write_symbol(sym, state.written_locals++, RECORD_SYMBOL);
}

void write_locals() {
  for (const SYMLIST *cell = state.inline_statics; cell; cell = cell->next)
    write_static_local(cell->sym, state.written_locals++, RECORD_SYMBOL);
  for (SYM *chain : {state.local_syms, state.scalar_syms, state.temp_syms, state.other_syms})
    write_chain(chain);
}

// What the allocator has to say, the oldest comment first: the list has them newest first.
void write_alloc_comments() {
  if (!state.alloc_comments) return;
  write_text(RECORD_COMMENT, ";", 0, 0);
  state.alloc_comments = list_reverse_onto(state.alloc_comments, nullptr);
  for (const LIST *cell = state.alloc_comments; cell; cell = cell->next)
    write_text(static_cast<std::uint8_t>(cell->item->u.lval), cell->item->aux.text, cell->line,
               cell->line2);
  write_text(RECORD_COMMENT, ";", 0, 0);
  state.alloc_comments = erase_list(state.alloc_comments);
}

// ------------------------------------------------------------------------------------------------
// Blocks

bool calls_function_that_never_returns(const NODE *tree) {
  const FUN *fun = fun_of_call(tree);
  return fun && (fun->flags & FUN_never_returns);
}

// Does the block end in a call that never returns and a jump behind it?
bool ends_in_call_that_never_returns(const BB *block) {
  const LIST *last = block->trees;
  if (!last) return false;
  const LIST *before = nullptr; // last statement ahead of last that is no comment
  for (; last->next; last = last->next)
    if (!is_comment_asm(last->item)) before = last;
  return last->item->op == BRANCH && before && calls_function_that_never_returns(before->item);
}

bool has_only_successor(const BB *block, const BB *successor) {
  return block->succs && !block->succs->next && block->succs->bb == successor;
}

// A block that does nothing but jump to itself, reached from one other block only; that one, or
// none.
const BB *feeder_of_self_loop(const BB *block) {
  if (!block->trees || block->trees->item->op != BRANCH) return nullptr;
  const LABEL *target = block->trees->item->left->aux.label;
  if (!target || target->bb != block) return nullptr;
  const EDGE *first = block->preds;
  if (!first || !first->next || first->next->next) return nullptr;
  if (first->bb != block && first->next->bb != block) return nullptr;
  const BB *feeder = first->bb == block ? first->next->bb : first->bb;
  return feeder != block && has_only_successor(feeder, block) ? feeder : nullptr;
}

// The loop that stands behind a call that never returns has kept the graph in order; now it goes.
void drop_dead_self_loops() {
  if (!state.first_bb) return;
  for (BB *block = state.first_bb->next; block; block = block->next)
    if (const BB *feeder = feeder_of_self_loop(block);
        feeder && ends_in_call_that_never_returns(feeder))
      block->trees = erase_list(block->trees);
}

void show_edges(const char *heading, const EDGE *edges) {
  debug_print("%s", heading);
  for (; edges; edges = edges->next)
    debug_print("%d ", edges->bb->dfn);
  debug_print(")\n");
}

void show_block_head(const BB *block) {
  debug_print("\n++++(WRBBLOCKS): START NEXT BB, UON=%d, DFN=%d\n", block->uon, block->dfn);
  for (const LABEL *label = block->labels; label; label = label->next)
    debug_print("\tLABEL, INDEX=%d, REFCOUNT=%d, NAME=<NONE>\n", label->index, label->refcount);
  show_edges("\tPREDECESSORS = ( ", block->preds);
  show_edges("\tSUCCESSORS =   ( ", block->succs);
  if (block->depth != 0) debug_print("\tLOOP DEPTH = %d\n", block->depth);
}

const BB *target_block(const NODE *labelref) {
  return labelref->aux.label ? labelref->aux.label->bb : nullptr;
}

// Which target of the IF shall be the one that the branch is taken to when the condition is false?
// The next block needs no jump; otherwise the nearer one should be reached first.
bool exchange_targets(const BB *block, const NODE *true_target, const NODE *false_target) {
  if (target_block(false_target) == block->next) return true;
  if (target_block(true_target) == block->next) return false;
  return target_block(false_target)->dfn > target_block(true_target)->dfn;
}

// The opposite of a condition, in the form that a CBRANCH takes: x == 0 reads !x.
NODE *invert_condition(NODE *condition) {
  NODE *result = simplify_test(simplify_node(make_node(LOGICAL_NOT, condition, nullptr, INT)));
  const bool is_zero_test =
      result->op == EQ && result->right->op == ICON && result->right->u.lval == 0;
  if (!is_zero_test) return result;
  result->right = erase_tree(result->right);
  result->op = LOGICAL_NOT;
  return result;
}

void add_branch_behind(LIST *statement, NODE *target) {
  NODE *branch = make_node(BRANCH, target, nullptr, INT);
  statement->next = list_cons(branch, statement->next, statement->line, statement->line2);
}

// IF(condition; T, F) becomes CBRANCH(condition, F) and BRANCH(T): a CBRANCH jumps when its
// condition is false.
void lower_if(LIST *statement, const BB *block) {
  NODE *node = statement->item;
  NODE *targets = node->right;
  NODE *true_target = targets->left;
  NODE *false_target = targets->right;
  if (node->left->op == ENDLOOP) {
    NODE *loop_end = node->left;
    loop_end->left = loop_end->left->left;
    erase_tree(true_target);
    statement->item = loop_end;
    erase_node(targets);
    erase_node(node);
    add_branch_behind(statement, false_target);
    return;
  }
  if (exchange_targets(block, true_target, false_target)) {
    std::swap(true_target, false_target);
    node->left = invert_condition(node->left);
  }
  node->op = CBRANCH;
  node->right = false_target;
  erase_node(targets);
  add_branch_behind(statement, true_target);
}

bool repeats_next_block(const NODE *tree, const BB *block) {
  if (tree->op != RETURN && tree->op != URETURN) return false;
  const BB *next = block->next;
  return next && next->trees && trees_equal(tree, next->trees->item, true);
}

bool falls_through(const NODE *tree, const BB *block) {
  return tree->op == BRANCH && block->next && target_block(tree->left) == block->next;
}

void write_statements(BB *block) {
  for (LIST *statement = block->trees; statement; statement = statement->next) {
    const NODE *tree = statement->item;
    if (repeats_next_block(tree, block)) return;
    if (falls_through(tree, block)) {
      tree->left->aux.label->refcount -= 1;
      return;
    }
    if (tree->op == LIVEINFO)
      write_live_registers(static_cast<std::uint32_t>(tree->u.lval),
                           static_cast<std::uint32_t>(tree->nsize));
    else
      write_statement(statement);
  }
}

void write_block(BB *block) {
  if (state.debug_on) show_block_head(block);
  if (!block->trees) return;
  for (const LABEL *label = block->labels; label; label = label->next)
    if (label->refcount > 0) write_label(label);
  for (LIST *statement = block->trees; statement; statement = statement->next)
    if (statement->item->op == IF) lower_if(statement, block);
  write_statements(block);
  block->trees = erase_list(block->trees);
}

void wrbblocks() {
  drop_dead_self_loops();
  for (BB *block = state.first_bb; block; block = block->next)
    write_block(block);
}

// ------------------------------------------------------------------------------------------------
// Statements

bool gets_comment(const NODE *tree) {
  if (tree->op == PPRAGMA || is_param_copy(tree)) return false;
  return tree->op != ASM || tree->u.lval == RECORD_ASSEMBLY;
}

void write_listing_text(std::string text) {
  if (text.size() > longest_comment) text.replace(longest_comment - 3, std::string::npos, "...");
  write_text(RECORD_COMMENT, text, 0, 0);
}

void write_statement_comment(const LIST *statement) {
  const NODE *tree = statement->item;
  if (!options.opt_source_comments || !gets_comment(tree)) return;
  std::array<char, infix_line_size> buffer{};
  if (tree->op == LOOP) {
    if (tree->left->op != NAME)
      write_listing_text(tree2infix_line(tree->left, statement->line, buffer));
    write_listing_text(label_comment(tree->right->u.lval, buffer));
    return;
  }
  const int line = state.debug_on ? statement->line2 : statement->line;
  write_listing_text(tree2infix_line(tree, line, buffer));
}

// The strings of a pragma in its packed word: bytes << 16 | kind << 8 | count.
void write_pragma_node(const NODE *node) {
  const auto packed = static_cast<std::uint32_t>(node->u.lval);
  write_pragma(static_cast<int>(packed >> 8 & 255), static_cast<int>(packed & 255),
               {node->aux.text, packed >> 16}, false);
}

} // namespace

void write_statement(LIST *statement) {
  if (state.skip_function) return;
  write_statement_comment(statement);
  NODE *tree = statement->item;
  if (tree->op == ASM) {
    write_text(static_cast<std::uint8_t>(tree->u.lval), tree->aux.text, statement->line,
               statement->line2);
    return;
  }
  if (tree->op == PPRAGMA) {
    write_pragma_node(tree);
    return;
  }
  statement->item = retype_tree(tree);
  reserve(5);
  put_u8(RECORD_STATEMENT);
  put_s16(statement->line);
  put_s16(statement->line2);
  debug_print(".%d\t%d\n", statement->line, statement->line2);
  wrtree(statement->item);
}

void write_function() {
  write_locals();
  write_marker(MARKER_EL, state.locals_value);
  if (state.function_is_leaf) write_attribute('L');
  write_alloc_comments();
  wrbblocks();
  write_marker(MARKER_EF, state.end_value);
  if (state.debug_on) std::fflush(output.file);
}

} // namespace velkor
