// What the effects in copyprop take out of its tables.
#pragma once

namespace velkor {

// Values that were read from memory which may have changed.
void forget_memory_values();

} // namespace velkor
