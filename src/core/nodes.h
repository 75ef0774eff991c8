// Making, copying and erasing trees and lists.
//
// Constructors take the record from its free list, else from the local zone. Erasers return none,
// so that a caller can store the result back into the field. No subtree is shared, except under
// CSE_DUPE.
#pragma once

#include "core/records.h"

#include <string_view>

namespace velkor {

// A node with depnum -1, nsize 0, qual 0, no aux and u 0.
NODE *make_node(Opcode op, NODE *left, NODE *right, TypeWord type);
// As make_node with depnum given; u is value where that is not 0, else sym.
NODE *make_node_ext(Opcode op, NODE *left, NODE *right, TypeWord type, std::int32_t depnum,
                    std::int32_t value, SYM *sym);
NODE *make_icon(std::int32_t value, TypeWord type);
// NAME with type, qual and depnum of the symbol.
NODE *make_name(SYM *sym);
NODE *make_labelref(std::int32_t index);
NODE *make_labeldef(LABEL *label);
// IF over a list of two label references.
NODE *make_if(NODE *condition, std::int32_t true_index, std::int32_t false_index);
// STASG when lhs is a struct, else an assignment of lhs's type.
NODE *make_assign(NODE *lhs, NODE *rhs);
// second alone when first is none.
NODE *make_comma(NODE *first, NODE *second);
// a - b; a when b is none, -b when a is none.
NODE *make_difference(NODE *a, NODE *b);
// BRANCH to the block's first label, which is made when it has none.
NODE *make_goto(BB *block);
// The opposite condition: a relation changes its opcode, anything else is compared with 0.
NODE *negate_condition(NODE *tree);
// ASM node of a record kind with a copy of text in the local zone.
NODE *make_asm(std::uint8_t record_byte, std::string_view text);

// Copies of text, NUL added: in the local zone, or in the given zone.
char *copy_text(int zone, std::string_view text);

// Lists.
LIST *list_cons(NODE *item, LIST *next, std::int16_t line, std::int16_t line2);
// Reverses list in place; tail goes behind it. Returns the new head.
LIST *list_reverse_onto(LIST *list, LIST *tail);
EDGE *edge_cons(BB *bb, EDGE *next);
// Adds bb at the head unless it is there; returns the list.
EDGE *edge_add(BB *bb, EDGE *list);
// Removes the first cell for bb and frees it; returns the list.
EDGE *edge_remove(BB *bb, EDGE *list);
// Ascending by target dfn; items move between cells.
EDGE *edge_sort(EDGE *list);
// A label with refcount 0; an index of 0 or below asks for a fresh negative one.
LABEL *label_new(std::int32_t index, LABEL *next, BB *bb);

// Erasers. A second release of a node ends the run.
NODE *erase_node(NODE *node);
NODE *erase_tree(NODE *tree); // CSE_DUPE counts as a leaf: what hangs under it is shared
LIST *erase_list(LIST *list); // with the trees
EDGE *erase_edges(EDGE *list);
EDGE *erase_edge(EDGE *cell);

// Copiers.
NODE *copy_node(const NODE *node);
NODE *copy_tree(const NODE *tree);        // local zone; text and aux stay shared
NODE *copy_tree_global(const NODE *tree); // global zone, with copies of all text
// The node alone in the given zone (as zalloc has it), with copies of its text.
NODE *copy_node_with_text(int zone, const NODE *node);
LIST *copy_list(const LIST *list);
// node itself when both children are unchanged, else a copy with the new ones.
NODE *rebuild_node(NODE *node, NODE *left, NODE *right);

} // namespace velkor
