// Types and declarations as C text.
//
// Results are static text, each routine's own, valid until its next call.
#pragma once

#include "core/records.h"

namespace velkor {

// The name of the basic type in the low four bits of the word.
[[nodiscard]] const char *basic_type_text(TypeWord type);

// The keyword of the symbol's storage class; empty where a declaration has none.
[[nodiscard]] const char *storage_text(const SYM *sym);

// The type as a cast: "(char *)" prints as "(char*)".
[[nodiscard]] const char *type_text(TypeWord type);

// The C declaration of the symbol. parameters is a chain through SYM::next whose level 1 symbols
// print as the parameters of a function symbol, in chain order; or none.
[[nodiscard]] const char *declaration_text(const SYM *sym, const SYM *parameters);

} // namespace velkor
