// Which objects can be reached by other ways than their names?
//
// A pass that follows the value of an object by its name asks this first. The answer stands in
// SYM::fcp_flag, and holds until the next scan.
#pragma once

#include "core/records.h"

namespace velkor {

enum class AddressUse : std::uint8_t {
  // Any address operator counts, also one right below an access: for a pass that looks at names
  // only, and takes no account of what an access through an address or a call may reach.
  ANY,
  // Only an address that gets away counts: for a pass that sees by itself that *(&x + ...) reaches
  // x, and that a call to which &x is handed may change x during that call.
  ESCAPING
};

// Sets fcp_flag of every symbol that the function's statements name, and of every local symbol: 1
// when the object may be reached otherwise, else 0. Reads the blocks' statements and the symbol
// chains, and changes nothing else; one walk over the trees.
//
// Under both uses an array has the flag wherever it stands for its address, and so has a block's
// own declaration of an extern object. At file level, ANY flags every object; ESCAPING the arrays
// and structures, and the scalars whose address is taken anywhere, as far as that is known
// (CQ_ALIASED), which never holds for a register variable.
//
// ESCAPING leaves the flag of a scalar of the function's frame clear when its address only serves
// an access, or is only handed to a call that keeps no address.
void flag_addressed_objects(AddressUse use);

// For an address operator: the symbol whose object, or part of it, the operand names; none when the
// operand is reached through a pointer.
[[nodiscard]] SYM *addressed_symbol(const NODE *address);

// Does the callee neither store the addresses that it is handed nor return one of them, so that
// they are of no more use when it is back? True of library routines that are known for it, unless
// the library's names are not trusted or a static function bears the name, and of every callee when
// the user promised it. A call may still write through the addresses while it runs.
[[nodiscard]] bool keeps_no_address(const NODE *call);

} // namespace velkor
