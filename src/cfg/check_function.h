// Self-check of the current function.
#pragma once

namespace velkor {

// Checks what every pass counts on: block order and numbers, edges that agree in both directions,
// resolved label references, trees without shared or freed nodes and without opcodes that only the
// pass that made them may see. A fault prints a line that names the pass, and ends the run.
void check_function(const char *pass_name);

} // namespace velkor
