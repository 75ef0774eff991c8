/* Constants and steps that may wait for their first reader, on every shape of path. */
#include <stdio.h>

static unsigned log_value;

static int note(int value) {
  log_value = log_value * 7 + (unsigned)value;
  return value;
}

static int one_arm(int t, int a) {
  int x = 5, y = a * a;
  if (t) {
    note(y);
    return x + note(2) * x;
  }
  return y;
}

static int join(int t, int a) {
  int x = 5, y;
  if (t)
    y = note(a);
  else
    y = note(a + 1);
  note(y);
  return x + y;
}

static int arm_with_other_ways(int t, int u) {
  int x, z = u;
  if (t) {
    x = 5;
    note(z);
    if (!u) goto out;
  } else {
    x = note(u);
  }
  z += x;
out:
  return z * 3;
}

static int around_loop(int n) {
  int x = 9, i = 0;
  do {
    note(i);
    i++;
  } while (i < n);
  return x + i;
}

static int into_loop(int n) {
  int x = 1, s = 0, i;
  for (i = 0; i < n; i++) {
    s += x;
    x = 3;
    note(s);
    if (s > 20) break;
  }
  return s * 10 + x;
}

static int last_in_loop(int n) {
  int x = 0, s = 0;
  while (n-- > 0) {
    x = x + 1;
    note(n);
    s += n;
    if (s > 30) x = 100;
  }
  return s * 1000 + x;
}

static int tested_step(int n) {
  int x = n, y = n;
  if ((x = x + 1) > 5) {
    note(y);
    y = x;
  }
  if (x++ > 3) y += 10;
  if (--x == 4) y += 100;
  return y * 10 + x;
}

static int chain(int t) {
  int a, b, c;
  char d;
  a = b = c = 5;
  d = a = 100;
  note(c);
  if (t) b = note(1);
  return a + b * 1000 + c * 10000 + d;
}

static int addresses(int t) {
  static int one = 1, two = 2;
  int *p = &one, *q = &two;
  const char *text = "late";
  note(t);
  if (t) p = &two;
  return *p * 10 + *q + text[t];
}

static int cases(int n) {
  int x = 4, y = 0;
  switch (n) {
  case 0: y = 1; break;
  case 1: y = x; break;
  case 2: y = note(3);
  case 3: y += x + 1; break;
  default: y = -1;
  }
  return y;
}

static double reals(int t) {
  double x = 1.5;
  float f = 0.25f;
  note(t);
  if (t) return x * t;
  note(2);
  return f + x;
}

int main(void) {
  int i;
  for (i = 0; i < 5; i++) {
    printf("%d ", one_arm(i & 1, i));
    printf("%d ", join(i & 2, i));
    printf("%d ", arm_with_other_ways(i & 1, i / 2));
    printf("%d ", around_loop(i));
    printf("%d ", into_loop(i * 3));
    printf("%d ", last_in_loop(i * 3));
    printf("%d ", tested_step(i + 2));
    printf("%d ", chain(i & 1));
    printf("%d ", addresses(i & 1));
    printf("%d ", cases(i));
    printf("%g\n", reals(i & 1));
  }
  printf("%u\n", log_value);
  return 0;
}
