// Trees as C text: for the debug file, the information file and the comments of the listing.
#pragma once

#include "core/records.h"

#include <cstddef>
#include <span>

namespace velkor {

inline constexpr std::size_t infix_limit = 200;      // characters; behind them "..." ends the text
inline constexpr std::size_t infix_text_size = 4608; // bytes that hold any text with its NUL
inline constexpr std::size_t infix_line_size = infix_text_size + 64; // with a line number in front
inline constexpr std::size_t label_comment_size = 64;

// The statement as C text that ends in ";". Static text, valid until the next call. A call while a
// text is being made (negate_for_text may print trees of its own) yields a fixed complaint instead.
[[nodiscard]] const char *tree2infix(const NODE *tree);

// The opposite of a condition as a tree that reads well; takes the tree. The simplifier makes it,
// which stands above this library: whoever has both hands the routine in. Without one, a condition
// without an opposite of its own shows under "!".
using ConditionNegation = NODE *(*)(NODE *condition);
extern ConditionNegation negate_for_text;

// Holds the static text while it is being made; granted tells whether it was free.
struct InfixTextClaim {
  InfixTextClaim();
  ~InfixTextClaim();
  InfixTextClaim(const InfixTextClaim &) = delete;
  InfixTextClaim &operator=(const InfixTextClaim &) = delete;
  const bool granted;
};

// The same text as a comment of the listing, with the source line in front. Written to buffer
// (infix_line_size bytes hold every text; a shorter one of 8 bytes or more cuts it); returns its
// start.
char *tree2infix_line(const NODE *tree, int line, std::span<char> buffer);

// The comment that stands for a label in the listing. Written to buffer (label_comment_size bytes
// are enough); returns its start.
char *label_comment(int index, std::span<char> buffer);

} // namespace velkor
