/* Counts the primes below a limit with a sieve, and prints the last few. */
#include <assert.h>
#include <stdio.h>

#define LIMIT 1000

static unsigned char composite[LIMIT];

static int sieve(int limit) {
  int count = 0;
  int i, j;
  for (i = 2; i < limit; i++) {
    if (composite[i]) continue;
    count++;
    for (j = i + i; j < limit; j += i)
      composite[j] = 1;
  }
  return count;
}

int main(void) {
  int count = sieve(LIMIT);
  int i, shown = 0;
  assert(count > 0);
  printf("%d primes below %d; the last ones:", count, LIMIT);
  for (i = LIMIT - 1; shown < 5; i--)
    if (!composite[i]) {
      printf(" %d", i);
      shown++;
    }
  printf("\n");
  return 0;
}
