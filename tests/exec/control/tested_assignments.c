// Assignments whose value is tested right behind them: every width and sign, globals, pointers,
// volatile objects, parameters, compound assignments, and the variable read again afterwards.
#include <stdio.h>
int next_value = -4;
int next(void) {
  return next_value += 3;
}
volatile int port;
int global;
unsigned char narrow(int n) {
  unsigned char c;
  c = n;
  if (c) return c;
  return 1;
}
int sign(int n) {
  signed char c;
  int r = 0;
  c = n * 3;
  if (c < 0) r = 1;
  c = c - 100;
  if (c < -50) r += 2;
  return r * 1000 + c;
}
int halves(int n) {
  unsigned short u;
  short s;
  u = n;
  if (u > 65000) return u;
  s = n + 40000;
  if (s < 0) return s;
  return u + s;
}
int parameter(int p, char q) {
  int x;
  x = p;
  if (x) q++;
  x -= 4;
  if (x < 3) return q + x;
  x >>= 1;
  if (x == 5) return -x;
  return x;
}
char *skip(char *s) {
  char *p;
  int n = 0;
  while (*s == ' ') s++;
  p = s;
  if (p) n = *p;
  p += n == 'a';
  if (p) return p;
  return s;
}
double scale(double d) {
  float f;
  f = d / 3;
  if (f) return f * 2;
  return -1;
}
unsigned mask(unsigned u) {
  u &= 0xF0;
  if (u) return u;
  u -= 1;
  if (u > 100u) return u;
  return 7;
}
int volatiles(void) {
  int n = 0;
  port = 3;
  if (port) n++;
  port -= 3;
  if (port == 0) n += 10;
  global = n;
  if (global) n += 100;
  global++;
  if (global) n += global;
  return n;
}
int main(void) {
  int i, x, last = 0;
  for (i = 0; i < 4; i++) {
    x = next();
    if (x < 3) last += x;
    else last -= x * 2;
    printf("%d %d\n", x, last);
  }
  for (i = -700; i < 700; i += 127) {
    printf("%d %d %d", narrow(i), sign(i), halves(i));
    printf(" %d %u %.3f\n", parameter(i / 50, i), mask(i), scale(i));
  }
  printf("%s %s %d\n", skip("  abc"), skip(" xyz"), volatiles());
  printf("%d %d %d\n", halves(65001), halves(-1), narrow(256));
  return 0;
}
