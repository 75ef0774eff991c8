// Symbol names as a person wrote them: without linker underscores, suffixes and C++ encoding.
#pragma once

namespace velkor {

// The readable form of a symbol's name. With always 0, a name that begins neither with "_" nor with
// "." comes back itself; otherwise the result is static text, valid until the next call of
// either routine here. A name that cannot be decoded comes back stripped only. Texts end after 199
// characters.
[[nodiscard]] const char *readable_name(const char *name, int always);

// The decoded form of a name that begins with "__"; any other name as it stands. Static text, valid
// until the next call.
[[nodiscard]] const char *demangle_name(const char *name);

} // namespace velkor
