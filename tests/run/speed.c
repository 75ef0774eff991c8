/* What the judge spends its time on: bytes, words, real numbers, calls. */
#include <stdio.h>
unsigned char sieve[8192];
int mat[64][64];
static int fib(int n) {
  return n < 2 ? n : fib(n - 1) + fib(n - 2);
}
int main(void) {
  int i, j, k, count = 0, sum = 0;
  unsigned h = 2166136261u;
  double x = 0;
  for (k = 0; k < 300; k++) {
    count = 0;
    for (i = 2; i < 8192; i++)
      sieve[i] = 1;
    for (i = 2; i < 8192; i++)
      if (sieve[i]) {
        count++;
        for (j = i + i; j < 8192; j += i)
          sieve[j] = 0;
      }
  }
  for (k = 0; k < 100; k++)
    for (i = 0; i < 64; i++)
      for (j = 0; j < 64; j++) {
        mat[i][j] += i * j + mat[j][i];
        sum ^= mat[i][j] >> 3;
      }
  for (i = 0; i < 2000000; i++) {
    h ^= i & 255;
    h *= 16777619u;
    h = (h << 5) | (h >> 27);
    x += (double)(h & 15) * 0.5;
  }
  printf("%d %d %u %g %d\n", count, sum, h, x, fib(27));
  return 0;
}
