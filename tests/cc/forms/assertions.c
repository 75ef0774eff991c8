/* shows: assert(comma(gt(_x, 0), "x > 0\0"))
 * shows: nassert(lt(_x, 100)) */
#include <assert.h>
int checked(int x) {
  assert(x > 0);
  __builtin_assume(x < 100);
  return x;
}
