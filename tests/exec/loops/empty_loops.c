/* Loops that only count, loops that seem to, and steps inside of a loop's test. */
#include <stdio.h>

static volatile int port;
static int limit_calls;
static int g;

static int limit(void) {
  ++limit_calls;
  return 7;
}

static int down(int n) {
  do {
    g = 3;
  } while (--n);
  return n;
}

static int up(int n) {
  int i;
  for (i = 0; i < n; i++) g = 4;
  return i;
}

static int up_to(int from, int n) {
  int i = from;
  do
    i++;
  while (i < n);
  return i;
}

static int up_with(int from, int n) {
  int i = from;
  while (i <= n) i++;
  return i;
}

static unsigned up_unsigned(unsigned from, unsigned n) {
  while (from < n) from++;
  return from;
}

static int narrow(int n) {
  unsigned char c = (unsigned char)n;
  int rounds = 0;
  do
    ++rounds;
  while (--c != 255);
  return rounds;
}

static int narrow_up(signed char from) {
  signed char c;
  for (c = from; c < 100; c++) g = 5;
  return c;
}

static int through_pointer(int *p, int n) {
  int i = n;
  do {
    g = 9;
    i++;
  } while (i < *p);
  return i;
}

static int stepped(int from, int to) {
  int x = from;
  int sum = 0;
  while ((x = x + 3) != to) sum += x;
  return sum * 1000 + x;
}

static int volatile_stores(void) {
  int i = 0;
  do {
    port = 1;
  } while (++i < 5);
  return i + port;
}

int main(void) {
  int i;
  i = down(5);
  printf("%d %d\n", i, g);
  for (i = -2; i < 4; ++i)
    printf("%d %d %d ", up(i), up_to(i, 3), up_with(i, 2));
  printf("%u %u\n", up_unsigned(1, 3), up_unsigned(0xffffff00u, 0xfffffff0u));
  printf("%d %d ", narrow(9), narrow(255));
  printf("%d\n", narrow_up(-7));
  i = 0;
  while (i < limit()) i++;
  printf("%d %d\n", i, limit_calls);
  g = 20;
  printf("%d ", through_pointer(&g, 4));
  i = 12;
  printf("%d\n", through_pointer(&i, 4));
  printf("%d %d %d\n", stepped(0, 12), stepped(-9, 30), volatile_stores());
  return 0;
}
