/* Equal bits are not equal values: narrow types, signs and floats behind copies. */
#include <stdio.h>

static int narrow(signed char c) {
  unsigned char u = (unsigned char)c;
  int a = c + 1, b = u + 1;
  return a * 1000 + b;
}
static int narrow_short(short s) {
  unsigned short u = (unsigned short)s;
  short t = (short)u;
  return (s * 2) + (u * 2) * 3 + (t * 2) * 5;
}
static int wider(unsigned char c) {
  int i = c;
  unsigned u = c;
  return (int)((c >> 1) * 100 + (i >> 1) * 10 + (u >> 1)) + (c * 3 - i * 3);
}
static int cut(int i) {
  char c = (char)i;
  int j = c;
  return (i + 1) * 7 + (c + 1) * 3 + (j + 1);
}
static unsigned signs(int a, int b) {
  int s = a + b;
  unsigned u = (unsigned)a + (unsigned)b;
  return (unsigned)(s >> 3) * 5u + (u >> 3) + (unsigned)(s / 3) + u / 3u + (unsigned)(s % 7) +
         u % 7u;
}
static double floats(int a, int b) {
  double x = (double)(a + b), y = (double)((unsigned)a + (unsigned)b);
  return x + y;
}
static int relations(int a, int b) {
  unsigned u = (unsigned)a, v = (unsigned)b;
  return (a < b) * 8 + (u < v) * 4 + (a - b < 0) * 2 + (u - v < 1u);
}
static int single(double d) {
  float f = (float)d;
  double e = f;
  return (d == e) * 2 + (f == (float)e);
}
static int enums(void) {
  enum color { red = 1, blue = 300 } a = blue;
  int b = a, c;
  unsigned char d = (unsigned char)a;
  c = b + a;
  a = red;
  return c * 10 + b + a + d;
}
static int pointers(int *p, int n) {
  int *q = p + n;
  char *r = (char *)(p + n);
  *(p + n) = 5;
  r[0] += 1;
  return *q * 100 + p[n] * 10 + (int)(q - p) + (p + n == q);
}
static int constants(int *p, short *s, char *c) {
  *p = 200;
  *s = 200;
  *c = (char)200;
  p[1] = 200;
  return *p + *s * 2 + *c * 3 + p[1];
}

int main(void) {
  int v[4] = {0};
  short s;
  char c;
  printf("%d %d %d %d\n", narrow(-1), narrow_short(-5), wider(200), cut(500));
  printf("%u %.1f %d\n", signs(-9, 2), floats(-9, 2), relations(-1, 1));
  printf("%d %d\n", single(0.1), enums());
  printf("%d %d\n", pointers(v, 2), constants(v, &s, &c));
  return 0;
}
