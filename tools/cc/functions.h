// Function definitions: parameters, homes, prologue, body.
#pragma once

#include "cc/unit.h"

namespace velkor::cc {

// Translates one function definition; its records wait in Unit::functions for assembly.
void translate_function(Unit &unit, const clang::FunctionDecl *definition);

} // namespace velkor::cc
