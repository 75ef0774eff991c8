// The text form of icode files, for people: docs/text-form.md describes it.
#pragma once

#include <string>
#include <string_view>

#include "file/icode_file.h"
#include "text/scopes.h"

namespace velkor::text {

// The whole file, one record a line. parse_text() of it gives a file of the same bytes.
[[nodiscard]] std::string to_text(const file::IcodeFile &file);

// Reads the text of a whole file into file. Returns an empty string, or one line that says where
// and what ("line 12, column 5: expected ..., found ...").
[[nodiscard]] std::string parse_text(std::string_view text, file::IcodeFile &file);

// One tree on one line, without a line number or a newline. scopes says which symbols are visible
// there.
[[nodiscard]] std::string tree_to_text(const file::IcodeFile &file, file::NodeIndex root,
                                       const Scopes &scopes);

// Reads one tree, with nothing but a comment behind it; its nodes go to the end of file.nodes.
// Returns an empty string and sets root, or a line as parse_text() does, without the line number.
[[nodiscard]] std::string parse_tree(std::string_view text, const Scopes &scopes,
                                     file::IcodeFile &file, file::NodeIndex &root);

// One symbol, without the trees of its value and without a newline. It must not be in scopes yet.
[[nodiscard]] std::string symbol_to_text(const file::Symbol &symbol, const Scopes &scopes);

// Reads such a line. Returns an empty string, or an error as parse_tree() does.
[[nodiscard]] std::string parse_symbol(std::string_view text, const Scopes &scopes,
                                       file::Symbol &symbol);

} // namespace velkor::text
