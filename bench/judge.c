/* A program of plain loops and arithmetic for measuring the judge's speed. */
#include <stdio.h>

static unsigned table[1024];

int main(void) {
  unsigned sum = 0;
  int round, i;
  for (i = 0; i < 1024; i++)
    table[i] = i * 2654435761u;
  for (round = 0; round < 4000; round++)
    for (i = 0; i < 1024; i++)
      sum = (sum << 5 | sum >> 27) ^ (table[i] + (unsigned)round);
  printf("%u\n", sum);
  return 0;
}
