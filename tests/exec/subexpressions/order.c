/* A value is computed ahead of its statement: never so far ahead that a call of the same statement
   still changes what it is made of, and never from a variable that the statement assigns. */
#include <stdio.h>

int g = 2, top, stack[16], copy[16];
volatile int port = 3;

static int change(void) {
  g += 10;
  top += 1;
  return g;
}
static int set(int *p) {
  *p += 5;
  return *p;
}

static int behind_call(void) {
  int b, c;
  b = change() + g * 0;
  c = g * 2;
  b += change();
  c += g * 2;
  return b * 1000 + c;
}
static int call_on_the_right(void) {
  int c, d;
  d = (g & 0) + change();
  c = g * 2;
  d = (g * 2) * 0 + change();
  c = c * 100 + g * 2;
  return c + d;
}
static int index_behind_call(int n) {
  top = n;
  stack[0] = change();
  copy[top] = 7;
  stack[top] = copy[top] + 1;
  return stack[n + 1] * 10 + copy[n + 1] + top;
}
static int copies(int y, int z) {
  int x, r;
  x = y;
  r = z + y * (x = 3);
  r = r * 10 + y;
  r = r * 10 + x;
  return r;
}
static int copy_in_call(int y) {
  int x = y, r;
  r = set(&x) + y;
  return r * 100 + x + y;
}
static int comma(int a, int b) {
  int r;
  r = (g = a, g * b) + b;
  r = r * 10 + (set(&g), g * b);
  return r * 100 + g * b;
}
static int guarded(int a, int b) {
  int q = 0;
  if (b != 0 && a / b > 2) q = a / b;
  q += b ? a % b : 0;
  return q;
}
static int reads_port(void) {
  int a = port + 1, b = port + 1;
  port = b;
  return a * 10 + b + (port + 1);
}
static int bits(unsigned x, unsigned y) {
  unsigned z = x & y;
  x = x & y;
  y = x | y;
  x |= z;
  z = (x ^ y) & (x ^ y);
  return (int)(x * 100 + y * 10 + z);
}
static int updates(int *p, int n) {
  int a = p[n] + 1, b;
  p[n] += 2;
  b = p[n] + 1;
  p[n]++;
  b = b * 10 + p[n];
  b = b * 10 + p[n]--;
  return a * 1000 + b * 10 + p[n];
}
static int chain(int v) {
  int a, b, c;
  a = b = c = v * v;
  b += v * v;
  c = (a = v * v + 1) + b;
  return a + 3 * b + 5 * c;
}
static int same(int x, int y) {
  int a = x + y, b = y + x, r = 0;
  if (a == b) r = 1;
  if (x + y < a) r += 2;
  if (x - y != x - y) r += 4;
  r += (x * y) - (y * x);
  return r * 10 + (a >= b);
}

int main(void) {
  int v[4] = {5, 6, 7, 8};
  printf("%d ", behind_call());
  printf("%d ", call_on_the_right());
  printf("%d\n", index_behind_call(3));
  printf("%d %d ", copies(4, 5), copy_in_call(6));
  printf("%d\n", comma(3, 4));
  printf("%d %d %d\n", guarded(17, 5), guarded(17, 0), reads_port());
  printf("%d %d %d %d\n", bits(12, 10), updates(v, 2), chain(3), same(3, 9));
  return 0;
}
