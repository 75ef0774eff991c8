/* Chains of assignments on one line, constants that are used once, steps inside of expressions:
   what is put back together must not move over what depends on it. */
#include <stdio.h>

static int array[8];
static int index_global;
static int *pointer_global = array;

static void show(const char *what) {
  int i;
  printf("%s:", what);
  for (i = 0; i < 8; i++)
    printf(" %d", array[i]);
  printf(" %d %d\n", index_global, (int)(pointer_global - array));
}

static int next(void) {
  return ++index_global;
}

static void chains(int where) {
  int i = where, k;
  int *p = array + 4;
  unsigned u, v;
  signed char c;
  unsigned char b;
  i = 0; array[i] = 0; array[i + 1] = 0;
  show("index first");
  index_global = 0; array[index_global + 2] = 0; pointer_global[3] = 0;
  show("global index first");
  pointer_global = array + 5; pointer_global[0] = 0; *p = 0;
  show("pointer first");
  u = 1; v = 1; c = 0; b = 0; k = 0; i = 0;
  printf("%u %u %d %d %d %d\n", u, v, c, b, k, i);
  u = 0; k = 1; v = 1; b = 1; c = 1; i = -1; k = -1;
  printf("%u %u %d %d %d %d\n", u, v, c, b, k, i);
  array[0] = array[1] = array[2] = 0;
  *p = 0; p = array + 6; *p = 0;
  show("pointer between");
}

/* A pointer that points at itself. */
static void self_pointer(void) {
  int *target = array + 1;
  int **slot = &target;
  array[1] = 5;
  *slot = 0; target = array + 1; *target = 0; **slot = 0;
  show("through a slot");
}

static int constants(int n) {
  int x, y, z, total = 0;
  x = 5; y = x + n; total += y;
  x = 7; z = next(); y = x * n + z; total = total * 3 + y;
  x = 9; y = n ? x : 1; total = total * 3 + y;
  x = 11; y = x + x; total = total * 3 + y;
  x = 300; { unsigned char cut; cut = 200; y = cut + n; x = y; } total = total * 3 + x;
  x = n; x += 4; y = x - 4; total = total * 3 + y + x;
  x = n; x -= 1; y = x + 1; total = total * 3 + y - x;
  { unsigned char cut = (unsigned char)n; cut -= 1; y = cut + 1; total = total * 3 + y + cut; }
  { signed char cut = 127; cut += 1; y = cut - 1; total = total * 3 + y + cut; }
  return total;
}

static int steps(register int count, register const char *text) {
  register int i = 0, k = 10;
  register unsigned short s = 65535;
  register int *q = array;
  int total = 0;
  while (*text)
    total = total * 7 + *text++;
  total += i++ + k--;
  total += i++ * 2 + k;
  array[i++] = k--;
  total += array[i - 1] + i;
  total += i++ ? k++ : k--;
  total += s++;
  total += s--;
  total = total * 5 + s;
  *q++ = total; *q++ = total + 1;
  total += *q++;
  total += *--q;
  k = next() + i++;
  total += k + i;
  do
    total += count-- & 3;
  while (count > 0);
  k = i++, total = total * 3 + k + i;
  return total;
}

static int choose(register int c, int a, int b) {
  register int r;
  register unsigned char narrow;
  r = c > 1 ? a : b;
  narrow = c ? a * 300 : b;
  r = r - c; r = c - r; r = 3 * r; r = r * 8; r = r + a; r = b ^ r; r = r / 3;
  return r + narrow;
}

int main(void) {
  int i;
  for (i = 0; i < 8; i++)
    array[i] = i + 1;
  chains(3);
  self_pointer();
  for (i = -2; i < 3; i++) {
    printf("%d ", constants(i));
    printf("%d ", steps(i + 5, "lowering"));
    printf("%d\n", choose(i + 2, 1000 * i, -i));
  }
  show("end");
  return 0;
}
