/* A loop is guarded and has its test at the bottom; one that is entered in its middle, or whose
 * test calls something, has it at the top alone. Labels without references are left out.
 * shows: begin_function
 * shows: 18: assign(_i, 0)
 * shows: cbranch(lt(_i, _n), L3)
 * shows: L1:
 * shows: increment(_i, 1)
 * shows: cbranch(lt(_i, _n), L3)
 * shows: branch(L1)
 * shows: L3:
 * shows: L1:
 * shows: cbranch(call(address(_sum), _n), L3)
 * shows: 24: branch(L1)
 * shows: L3:
 * never: L2: */
int sum(int n) {
  int i, total = 0;
  for (i = 0; i < n; i++)
    total += i;
  return total;
}

int count(int n) {
  while (sum(n))
    n--;
  return n;
}
