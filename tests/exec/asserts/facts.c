/* Statements of fact: nothing may be computed for them, and what they say changes no result. */
#include <stdio.h>

#ifdef __has_builtin
#if __has_builtin(__builtin_assume)
#define FACT(condition) __builtin_assume(condition)
#endif
#endif
#ifndef FACT
#define FACT(condition) ((void)0)
#endif

static int table[16];

static int quotient(int x, int y) {
  FACT(y > 0 && x >= 0);
  return x / y + (y > 0) + (x < 0);
}

/* `last` lives for the fact alone. */
static int sum(const int *from, int count) {
  const int *last = from + count;
  int total = 0;
  FACT(count > 0);
  while (count-- > 0) {
    FACT(from < last);
    total += *from++;
  }
  return total;
}

/* Facts at the ends of branches, before jumps, and as all that a branch holds. */
static const char *grade(unsigned points) {
  FACT(points <= 100);
  if (points >= 90) {
    FACT(points > 50);
    return "high";
  }
  if (points < 10)
    FACT(points != 90);
  else
    FACT(points >= 10 && points < 90);
  switch (points / 50) {
  case 0: FACT(points < 50); return "low";
  case 1: FACT(points >= 50); break;
  default: FACT(0); return "never";
  }
  return points == 50 ? "half" : "middle";
}

/* A fact holds where it stands and not behind the assignment that ends it. */
static int ended(int x) {
  if (x == 3) {
    FACT(x == 3);
    x = table[x];
  }
  return x == 3 ? 1 : x < 5 ? 2 : 3;
}

/* Facts are never evaluated: calls and assignments in them do not happen. */
static int told;
static int tell(int x) {
  told++;
  printf("told %d\n", x);
  return x;
}

static int silent(int x) {
  int before = x, i;
  FACT(tell(x) == x);
  for (i = 0; i < 3; i++)
    FACT((x = tell(i)) >= 0);
  if (x != before) {
    FACT(tell(x) > 0);
  }
  FACT(x++ < before);
  return x - before + told;
}

int main(void) {
  int i;
  for (i = 0; i < 16; i++) {
    FACT(i < 16);
    table[i] = i * i - 5;
  }
  for (i = 1; i < 8; i++)
    printf("%d %d %d\n", quotient(i * 17, i), sum(table, i), ended(i));
  printf("%d\n", silent(4));
  for (i = 0; i <= 100; i += 10)
    printf("%d %s\n", i, grade((unsigned)i));
  return 0;
}
