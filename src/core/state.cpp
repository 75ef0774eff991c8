#include "core/state.h"

#include "core/options.h"

namespace velkor {

Options options;
State state;

} // namespace velkor
