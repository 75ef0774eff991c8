// Tail recursion becomes a loop.
#pragma once

namespace velkor {

// A call of the current function whose value is returned at once, or behind which the function
// returns, becomes assignments to the parameters' homes and a jump to the first statement behind
// the prologue:
//
//     int f(int n, int a) { return n ? f(n - 1, a * n) : a; }
//     ->  again: if (n) { a = a * n, n = n - 1; goto again; } return a;
//
// Called while the graph is being built: successors are known, predecessors and numbers are not.
// Does nothing in a function whose locals' addresses may be known outside the activation.
void remove_tail_recursion();

} // namespace velkor
