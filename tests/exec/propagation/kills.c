/* Copies of values in variables and in memory, and everything that ends them. */
#include <stdio.h>
#include <string.h>

int global = 3, other = 4;
int table[6] = {1, 2, 3, 4, 5, 6};
const int fixed[4] = {10, 20, 30, 40};
struct item { int key; char tag; short pad; int *link; };
struct item first = {1, 'a', 2, &global}, second;
union word { unsigned u; float f; unsigned char b[4]; } cell;
volatile int port = 5;

static int *kept;
void keep(int *p) { kept = p; }
void change(void) { global = global * 3 + 1; if (kept) *kept += 100; }
int changed(int v) { change(); return v; }
int *pick(int *a, int *b) { return *a < *b ? a : b; }

/* A call changes globals, what it is handed, and what was kept. */
int calls(int n) {
  int x = global, y = n, z = global + n, w = 7, sum;
  keep(&w);
  w = 8;
  sum = x + y;
  change();
  sum = sum * 10 + x + y + z + global + w;
  w = n;
  sum += w;
  sum += changed(3) * 2;
  sum += w;
  sum += global;
  kept = 0;
  return sum;
}

/* The value that a call leaves may be read in the same expression. */
int beside_calls(int n) {
  int a, b, c;
  a = global * 2 + n;
  b = (c = global, changed(2) + c);
  c = global * 2 + n;
  table[1] = changed(3);
  return a + b * 3 + c * 5 + table[1] + global;
}

/* Stores of one type and stores of another, through pointers that may meet. */
int stores(int *p, int *q, char *c) {
  int a, b, d;
  *p = 5;
  a = *p;
  *q = 6;
  b = *p;
  *p = 1;
  *c = 9;
  d = *p;
  p[1] = 11; p[2] = 12;
  return a + b * 10 + d * 100 + p[1] * 3 + p[2];
}

/* Pointers to const do not make an object constant. */
int seen_as_const(const int *p, int *q) {
  int a = *p, b;
  *q = 50;
  b = *p;
  return a * 100 + b + fixed[1];
}

int members(struct item *p, struct item *q) {
  int a, b;
  struct item local;
  p->key = 3; a = p->key;
  q->key = 4; b = p->key;
  local = *p;
  local.key = local.key + 1;
  *q = local;
  a = a * 10 + p->key;
  memcpy(&local, &first, sizeof local);
  local.tag = 'z';
  second = local;
  p->tag = (char)300;
  return a * 100 + b + local.key + second.tag + p->tag;
}

int through_union(unsigned v) {
  unsigned a, b;
  cell.u = v; a = cell.u;
  cell.b[1] = 0x7f; b = cell.u;
  cell.f = 1.0f;
  return (int)(a ^ b) + (int)(cell.u >> 20);
}

int arrays(int i) {
  int local[4], a, b;
  local[0] = 1; local[1] = 2; local[2] = 3; local[3] = 4;
  a = local[1];
  local[i] = 20;
  b = local[1];
  local[1] += local[i & 3];
  return a * 1000 + b * 100 + local[1] + local[3];
}

/* A static local lives through the recursion. */
int recursive(int n) {
  static int depth, total;
  int before;
  depth = n;
  before = depth;
  if (n > 0) total += recursive(n - 1);
  total = total * 2 + depth + before;
  return total;
}

int narrow(int v) {
  char c = (char)v;
  unsigned char u;
  short s;
  int a = c, b;
  u = (unsigned char)c;
  s = (short)(v * 300);
  b = u + s;
  c++;
  a = a * 7 + c;
  u = (unsigned char)(u + 200);
  return a + b + u;
}

int steps(void) {
  int i = 5, j, k, list[3];
  j = i++;
  k = i-- + j;
  list[0] = i; list[1] = j; list[2] = k;
  i = list[(j = 1, j)] + i;
  return i * 100 + j * 10 + k;
}

int same(int n) {
  int a, b, c;
  a = b = c = n + 1;
  n = 9;
  b = b;
  c += a;
  return a * 100 + b * 10 + c + n;
}

/* Tests that the value at a jump decides. */
int state_machine(const char *text) {
  int state = 0, n = 0;
  while (*text) {
    switch (state) {
    case 0: state = *text == 'a' ? 1 : 2; break;
    case 1: n += 10; state = 0; break;
    default: n += 1; state = 3; break;
    case 3: state = *text == 'b' ? 0 : 1; n += 100; break;
    }
    text++;
  }
  return n * 10 + state;
}

int flags(int n) {
  int found = 0, i;
  for (i = 0; i < n && !found; i++)
    if (table[i % 6] == 4) found = 1;
  if (found) n = i; else n = -i;
  if (found) n += 1000;
  return n;
}

int literals(int i) {
  const char *text = "a\200\377z";
  unsigned char *bytes = (unsigned char *)"\201b";
  return text[0] + text[1] * 3 + text[2] * 5 + "xyz"[1] + "xyz"[3] + bytes[0] + text[i] +
         (text[3] == *(text + 3));
}

int ports(void) {
  int a = port, b;
  port = 7;
  b = port;
  return a * 10 + b;
}

int narrow_parameter(c, s, f) char c; short s; float f; {
  int a = c, b = s;
  c = (char)(c + 100);
  return a + b * 2 + c * 3 + (int)(f * 2);
}

double reals(double x, float y) {
  double a = x, b;
  float c = (float)x;
  b = a + c;
  x = 3.0;
  y = (float)b;
  return a * y + c;
}

int main(void) {
  int a[3] = {1, 2, 3}, x = 1, y = 2, *m;
  struct item one = {7, 'q', 3, 0}, two = {8, 'r', 4, 0};
  printf("%d\n", calls(2));
  printf("%d\n", calls(-3));
  printf("%d\n", beside_calls(1));
  printf("%d\n", stores(a, a, (char *)a));
  printf("%d\n", stores(a, a + 1, (char *)(a + 2)));
  printf("%d\n", a[2]);
  printf("%d\n", seen_as_const(&x, &x));
  printf("%d\n", seen_as_const(&x, &y));
  printf("%d\n", members(&one, &one));
  printf("%d\n", members(&one, &two));
  printf("%d\n", through_union(0x12345678u));
  printf("%d\n", arrays(1));
  printf("%d\n", arrays(3));
  printf("%d\n", recursive(3));
  printf("%d\n", recursive(2));
  printf("%d\n", narrow(127));
  printf("%d\n", narrow(-200));
  printf("%d\n", steps());
  printf("%d\n", same(4));
  printf("%d\n", state_machine("abcabba"));
  printf("%d\n", state_machine("xbbaab"));
  printf("%d\n", flags(3));
  printf("%d\n", flags(9));
  printf("%d\n", literals(1));
  printf("%d\n", ports());
  printf("%d\n", narrow_parameter(60, -3, 1.5));
  printf("%.3f\n", reals(0.1, 2.0f));
  x = 5; y = 6; m = pick(&x, &y); *m = 0;
  printf("%d\n", x);
  printf("%d\n", y);
  printf("%d\n", global + other);
  return 0;
}
