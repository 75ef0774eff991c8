/* Constants carried to their uses: one assignment, several, across blocks, through conversions. */
#include <stdio.h>

int one_assignment(int n) {
  int limit = 10, step = 3, i, sum = 0;
  for (i = 0; i < n; i += step)
    if (i < limit)
      sum += i;
    else
      sum -= step;
  return sum * limit;
}

int joins(int c) {
  int x = 5, y = 7;
  if (c & 1) x = 6;
  if (c & 2) {
    x = 8;
    if (c & 4) y = x + 1; else y = x + 2;
    y += x;
  }
  return x * 100 + y;
}

int around_a_loop(int n) {
  int x = 1, previous = 0, sum = 0;
  while (n-- > 0) {
    sum = sum * 3 + x + previous;
    previous = x;
    x = 2;
    if (n == 2) x = 9;
  }
  return sum + x;
}

/* Each object begins anew: const says nothing about the next round. */
int const_in_loop(const int *v, int n) {
  int i, b = 0, sum = 0;
  for (i = 0; i < n; i++) {
    const int a = v[i];
    const int pair[2] = {v[i], v[n - 1 - i]};
    if (i == 0) b = a;
    sum += b * a + pair[0] * pair[1];
  }
  return sum;
}

int shadowing(int n) {
  int r = n;
  {
    const int n = 5;
    r += n;
    { const int n = 7; r = r * n + n; }
  }
  return r + n;
}

void narrow(int seed) {
  char c = (char)(300 + seed * 0);
  signed char s = (signed char)200;
  unsigned char u = (unsigned char)-1;
  short h = (short)70000;
  unsigned short w = (unsigned short)-2;
  float f = 0.1f, third;
  double d = f;
  int t = (int)3.99, m = (int)-3.99;
  unsigned big = 4000000000u;
  third = 1.0f / 3;
  printf("%d %d %d %d %d %d %d\n", c, s, u, h, w, t, m);
  printf("%d %d %u %d\n", u + 1, s < 0, big, big > 5);
  printf("%.10g %.10g %.10g %d\n", d, third, third * 3.0, f == 0.1);
  c += 100; c += 100; u++; s -= 100; w += 3;
  printf("%d %d %d %d\n", c, u, s, w);
}

void chains(void) {
  int a, b; char c; short s; double d; unsigned char u;
  a = b = 70000;
  printf("%d %d\n", a, b);
  a = c = 300;
  printf("%d %d\n", a, c);
  d = s = 70000;
  printf("%g %d\n", d, s);
  a = b = u = 511;
  printf("%d %d %d\n", a, b, u);
  a = (b = 4) + (c = 5);
  printf("%d %d %d\n", a, b, c);
}

struct flags { unsigned low : 3; int high : 4; int rest; };

void field_chain(void) {
  struct flags f;
  int a, b;
  f.rest = 0;
  a = f.low = 13;
  b = f.high = 9;
  printf("%d %d %d %d\n", a, b, f.low, f.high);
  f.rest = a = b = 3;
  printf("%d %d %d\n", f.rest, a, b);
}

int by_switch(int k) {
  int x = 1, r = 0;
  switch (k) {
  case 0: x = 10; r = x; break;
  case 1: r = x; x = 20;
  case 2: r += x; break;
  default: x = 3;
  case 7: r = x * 2;
  }
  return r * 1000 + x;
}

int jump_in(int k) {
  int x = 4;
  if (k) goto inside;
  x = 5;
  while (x < 50) {
    x = x * 2;
  inside:
    x += 1;
  }
  return x;
}

int unsigned_compare(void) {
  unsigned u = 3; int i = -4; char c = -1; unsigned char uc = 255;
  return (u > (unsigned)i) + 2 * (i < 1) + 4 * (c < 0) + 8 * (uc > 200) + 16 * (u + i > 0);
}

int main(void) {
  static const int v[5] = {3, 1, 4, 1, 5};
  int i;
  for (i = 0; i < 30; i += 7) printf("%d ", one_assignment(i));
  for (i = 0; i < 8; i++) printf("%d ", joins(i));
  for (i = 0; i < 6; i++) printf("%d ", around_a_loop(i));
  printf("\n%d %d %d\n", const_in_loop(v, 5), shadowing(1), shadowing(-3));
  narrow(1);
  chains();
  field_chain();
  for (i = -1; i < 9; i++) printf("%d ", by_switch(i));
  printf("%d %d %d\n", jump_in(0), jump_in(1), unsigned_compare());
  return 0;
}
