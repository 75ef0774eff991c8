/* Assignments and steps inside of expressions: when they are made statements of their own, nothing
   that happens in between may see the difference. */
#include <stdio.h>

static int position;
static int buffer[16];
static char text[32];

static int next(void) {
  position += 3;
  return position;
}

static int set_and_call(void) {
  int y = (position = 5) + 0;
  y = y * 10 + next();
  return y;
}

static int steps(int *a, int i) {
  int x = 1, y = 2;
  a[i++] = x++ + y--;
  a[i++] = (x = x + 10) + y;
  a[i] = a[i - 1] + (y += x);
  i++;
  a[i] = i < 5 ? x++ : y++;
  return i * 1000 + x * 10 + y;
}

static int in_order(int a, int b) {
  int x = a, r;
  r = (next(), x = position) + 1;
  r = r * 10 + ((x = b) ? x++ : x--);
  r = r * 10 + (x > 2 && (x = 1) && x++ < 2);
  r = r * 10 + ((x = x + 1) < 0 || (x = 4) > 3);
  return r * 10 + x;
}

static int first(int x, int y) {
  return x - y;
}

static int arguments(int a) {
  int x = a, y;
  x = first(x = a + 1, 3);
  y = first(x++, a);
  y = first(first(y, x = 2), 3) + x;
  return x * 100 + y;
}

static void copy(char *to, const char *from) {
  while ((*to++ = *from++) != 0) {}
}

static int narrow(int n) {
  unsigned char c;
  signed char s;
  int r = (c = n) + 1;
  r += (s = n) * 1000;
  c += n;
  r += (c += 200) << 4;
  r += c++;
  r += s--;
  return r + c + s;
}

static void files(void) {
  static int pos;
  int i;
  for (i = 0; i < 4; i++)
    buffer[pos++] = i * 2 + 1;
  for (i = 0; i < 4; i++)
    printf("%d ", buffer[i]);
  printf("%d\n", pos);
}

int main(void) {
  int i, a[8];
  for (i = 0; i < 8; i++)
    a[i] = 0;
  i = set_and_call();
  printf("%d %d\n", i, position);
  i = steps(a, 1);
  printf("%d: %d %d %d %d %d\n", i, a[1], a[2], a[3], a[4], a[5]);
  i = in_order(1, 2);
  printf("%d\n", i);
  i = in_order(4, 0);
  printf("%d\n", i);
  printf("%d %d\n", arguments(5), arguments(-2));
  copy(text, "step by step");
  printf("%s\n", text);
  for (i = 100; i < 500; i += 77)
    printf("%d ", narrow(i));
  printf("\n");
  files();
  return 0;
}
