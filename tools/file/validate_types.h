// The types in a finished tree.
#pragma once

#include "file/icode_file.h"

namespace velkor::file {

// What is wrong with the types of a node and its operands, or none. name_type is the type of the
// symbol that a NAME refers to, and means nothing for other nodes.
[[nodiscard]] const char *type_fault(const IcodeFile &file, const Node &node,
                                     std::uint32_t name_type);

} // namespace velkor::file
