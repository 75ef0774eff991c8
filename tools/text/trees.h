// Trees inside of lines: what the routines of text.h and the readers of whole lines share.
#pragma once

#include <string>

#include "file/icode_file.h"
#include "text/scopes.h"
#include "text/words.h"

namespace velkor::text {

// Appends the tree's text to out.
void print_tree(std::string &out, const file::IcodeFile &file, file::NodeIndex root,
                const Scopes &scopes);

// Reads a tree at the cursor, up to the end of its text. Returns no_node after an error.
[[nodiscard]] file::NodeIndex read_tree(Cursor &cursor, const Scopes &scopes,
                                        file::IcodeFile &file);

// A symbol by name, `_x`, with its place, `_x@2.3`, where the name alone finds another one, or by
// the place alone, `@2.3`, where no symbol is.
void print_reference(std::string &out, Reference place, NameSpace space, const Scopes &scopes);
[[nodiscard]] Reference read_reference(Cursor &cursor, NameSpace space, const Scopes &scopes);

// `@2.3`
void print_place(std::string &out, Reference place);
[[nodiscard]] Reference read_place(Cursor &cursor);

} // namespace velkor::text
