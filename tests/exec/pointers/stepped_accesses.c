/* Steps of pointers near accesses through them: in one block, across regions, around loops. */
#include <stdio.h>

static int ints[12] = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8};
static short shorts[6] = {-1, 2, -3, 4, -5, 6};
static unsigned char bytes[] = {200, 100, 50, 25, 12, 0};
static double reals[4] = {0.5, 1.5, 2.5, 3.5};

static int behind(const int *p) {
  int x = *p, y;
  p = p + 1;
  y = *p;
  p = p + 2;
  x = x * 10 + y;
  p -= 1;
  return x * 10 + *p;
}

static int ahead(const int *p) {
  int x, y;
  p++;
  x = p[0];
  y = p[1];
  p++;
  x = x * 10 + y + *p;
  p--;
  return x * 10 + p[-1];
}

static void update(int *p, int n) {
  do {
    *p = *p + n;
    p++;
    *p = *p * 2 + p[-1];
    p++;
  } while (--n);
}

static int region(const int *p, int t) {
  int x = *p, y = 0;
  if (t > 1)
    y = t;
  else if (t)
    y = 7;
  p++;
  x += *p * y;
  if (t) x += *p;
  p++;
  return x * 100 + *p;
}

static int around(const int *p, int n) {
  int sum = 0, x;
  do {
    x = *p;
    if (x > 4) sum += p[2];
    if (x == 1) sum += 100;
    p++;
  } while (--n);
  return sum * 10 + *p;
}

static int leaves_early(const int *p, int n) {
  int sum = 0;
  while (n > 0) {
    if (*p == 9) break;
    sum += *p;
    p++;
    n--;
  }
  return sum * 10 + *p;
}

static int nested(const int *p, int rows, int columns) {
  int sum = 0, i;
  do {
    i = columns;
    do {
      sum = sum * 3 + *p;
      p++;
    } while (--i);
    sum += *p;
    p++;
  } while (--rows);
  return sum + p[-1];
}

static int mixed(void) {
  short *s = shorts;
  unsigned char *b = bytes;
  double *d = reals;
  int sum = 0;
  while (*b) {
    sum = sum * 2 + *b;
    b++;
    sum += *s;
    s++;
  }
  sum += (int)(*d * 4);
  d++;
  d++;
  sum += (int)(*d * 4);
  return sum * 10 + *--s;
}

static int apart(const int *p, const int *q, int n) {
  int sum = 0;
  do {
    sum += *p * *q;
    q = q + 1;
    p = p + 1;
    sum -= *q;
  } while (--n);
  return sum * 100 + *p + *q;
}

static const int *kept;
static int reachable(const int *start) {
  const int *p = start;
  const int **handle = &p;
  int x = *p;
  p++;
  x += **handle;
  *handle = start + 3;
  x += *p;
  kept = p;
  return x;
}

int main(void) {
  int i;
  printf("%d %d\n", behind(ints), ahead(ints));
  for (i = 0; i < 3; i++)
    printf("%d ", region(ints + i, i));
  printf("%d %d\n", around(ints, 6), around(ints + 3, 1));
  printf("%d %d %d\n", leaves_early(ints, 9), leaves_early(ints + 1, 2), nested(ints, 3, 3));
  printf("%d %d %d\n", mixed(), apart(ints, ints + 4, 5), reachable(ints));
  update(ints, 5);
  for (i = 0; i < 12; i++)
    printf("%d ", ints[i]);
  printf("%d\n", *kept);
  return 0;
}
