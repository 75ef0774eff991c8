/* Tests that decide each other, tests that only seem to, and jumps to jumps. */
#include <stdio.h>

static int trace;
static volatile int port = 5;

static int count(int x) {
  ++trace;
  return x;
}

static int ladder(int x) {
  if (x > 3) {
    if (x > 2) {
      if (x > 7) return 8;
      return 4;
    }
    return 100;
  }
  if (x <= 3) {
    if (x < -5) return -6;
    if (x != 3) return 0;
    return 3;
  }
  return 101;
}

static int unsigned_ladder(unsigned x) {
  if (x > 5u) {
    if ((int)x > 5) return 1;
    return 2;
  }
  if ((int)x < 0) return 3;
  return 4;
}

static int with_effects(int n) {
  int sum = 0;
  if (count(n) > 3)
    if (count(n) > 2) sum = 1;
  if (port > 3)
    if (port > 2) sum += 2;
  return sum;
}

static int assigned(int n) {
  int x;
  char c;
  if ((x = 0)) return 1;
  if ((c = (char)(n ? 256 : 512))) return 2;
  switch (c = 300 - 256, c) {
  case 300: return 3;
  case 44: return x + 4;
  }
  return 5;
}

static int states(int n) {
  int state = 0;
  int steps = 0;
again:
  switch (state) {
  case 0: state = n & 1 ? 1 : 2; goto next;
  case 1: state = 3; goto next;
  case 2: state = 3; goto next;
  case 3: n >>= 1; state = n ? 0 : 4; goto next;
  default: goto out;
  }
next:
  ++steps;
  goto again;
out:
  return steps;
}

static int known_selector(int n) {
  int k = 3;
  switch (k) {
  case 1: n += 1; break;
  case 2: n += 2; break;
  case 3: n += 3;
  case 4: n += 4; break;
  default: n += 5;
  }
  switch (9) {
  case 1: return n;
  case 2: return -n;
  }
  return n * 2;
}

static int same_ends(int k, int a, int b) {
  int r;
  if (k == 1) {
    r = a + b;
    printf("<%d>", r);
    return r * 2;
  }
  if (k == 2) {
    r = a - b;
    printf("<%d>", r);
    return r * 2;
  }
  r = b + a;
  printf("<%d>", r);
  return r * 2;
}

static int two_loops(int n) {
  int i = 0;
  int sum = 0;
  if (n > 0) {
    do {
      if (i & 1) {
        sum += i;
        if (sum > 50) break;
      } else {
        sum += 2;
        if (sum > 50) break;
      }
    } while (++i != n);
  }
  while (i < n) {
    sum -= i;
    i += 3;
  }
  return sum * 100 + i;
}

int main(void) {
  int i;
  for (i = -8; i < 12; ++i) printf("%d ", ladder(i));
  printf("%d %d %d\n", unsigned_ladder(5), unsigned_ladder(6), unsigned_ladder(0x80000000u));
  for (i = 2; i < 6; ++i) printf("%d ", with_effects(i));
  printf("%d %d %d\n", trace, assigned(0), assigned(1));
  for (i = 0; i < 40; i += 3)
    printf("%d %d %d %d ", states(i), known_selector(i), same_ends(i % 4, i, 7), two_loops(i));
  printf("\n");
  return 0;
}
