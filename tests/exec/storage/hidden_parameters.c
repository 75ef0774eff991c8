/* Constants of inner scopes that hide a parameter. */
#include <stdio.h>

static int hidden(int n) {
  int r = n;
  {
    const int n = 3;
    return r - n;
  }
}

static int hidden_twice(unsigned char n, int times) {
  int sum = 0, r = n;
  for (; times > 0; times--) {
    const unsigned char n = 7;
    sum += r == n ? 100 : 1;
    {
      const int n = 9;
      sum += r - n;
    }
  }
  return sum + n;
}

static int hidden_by_copy(int n) {
  int r = n, sum = 0;
  {
    int n = r;
    n += 2;
    sum += n;
  }
  n += 5;
  return sum * 100 + n;
}

int main(void) {
  printf("%d %d\n", hidden(10), hidden(3));
  printf("%d %d\n", hidden_twice(7, 2), hidden_twice(200, 3));
  printf("%d\n", hidden_by_copy(4));
  return 0;
}
