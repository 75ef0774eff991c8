// Calls of a function to itself at its end: arguments that exchange, rotate, and step each other; a
// parameter narrower than its argument; a frame whose address travels; assignments in arguments.
#include <stdio.h>
static int gcd(int a, int b) {
  if (b == 0) return a;
  return gcd(b, a % b);
}
int sum(int n, int acc) {
  return n ? sum(n - 1, acc + n) : acc;
}
int rot(int n, int a, int b, int c) {
  if (n == 0) return a * 100 + b * 10 + c;
  return rot(n - 1, b, c, a);
}
int count;
void tick(void) {
  if (++count < 10) tick();
}
void down(int n) {
  printf("%d ", n);
  if (n > 0) down(n - 1);
}
short nar(short n, char c) {
  if (n > 300) return c;
  return nar((short)(n + 7), (char)(c + n));
}
int arr(int *p, int n) {
  int a[2];
  a[0] = n;
  a[1] = p ? p[0] : 0;
  if (n == 0) return a[1];
  return arr(a, n - 1);
}
int asg(int a, int b) {
  if (a > 10) return b;
  return asg(b = a + 3, b * 2);
}
int main(void) {
  printf("%d %d %d\n", gcd(1071, 462), sum(10, 0), rot(4, 1, 2, 3));
  tick();
  printf("%d\n", count);
  down(5);
  printf("%d %d\n", nar(3, 1), arr(0, 5));
  printf("%d\n", asg(1, 1) > 0);
  return 0;
}
