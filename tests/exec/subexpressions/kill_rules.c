/* One function for each rule by which a store, a copy or a call ends what is known of a value. Each
   computes an expression, changes an operand by a way that only that rule sees, and computes the
   expression again. The pointers come from pick() and from globals, so that nobody can tell where
   they lead. */
#include <stdio.h>
#include <string.h>

struct pair {
  int a, b;
};
union word {
  int i;
  float f;
  unsigned char c[4];
};

int g, h, sink, table[4];
char text[4], *names[3];
int *kept;
struct pair shared, *pairs;
union word number;

static void *pick(void *first, void *second, int which) { return which ? second : first; }
static void keep(int *p) { kept = p; }
static void change_kept(void) { *kept += 11; }
static int change_g(void) { return g += 3; }
static int set_kept(int v) { *kept = v; return 1; }

/* Variables that a pointer reaches: by a store of their own width and kind ... */
static int by_same_type(int n) {
  int x = n, y = n, a;
  int *p = pick(&x, &y, n & 1);
  a = (x * 3 + 1) * 100 + (y * 3 + 1);
  *p = n + 5;
  return a * 1000 + (x * 3 + 1) * 100 + (y * 3 + 1);
}
/* ... of the other signedness ... */
static int by_other_sign(int n) {
  int x = n, y = n, a;
  unsigned *p = pick(&x, &y, n & 1);
  a = x * 3 + y * 5;
  *p = 9u;
  return a * 1000 + x * 3 + y * 5;
}
/* ... through a subscript that may be 0 ... */
static int by_subscript(int n, int i) {
  int x = n, y = n, a;
  int *p = pick(&x, &y, n & 1);
  a = x * 3 + y * 5;
  p[i] = n + 7;
  return a * 1000 + x * 3 + y * 5;
}
/* ... byte by byte, with and without a distance. */
static int by_byte(int n) {
  int x = n, y = n, a;
  unsigned char *p = pick(&x, &y, n & 1);
  a = x * 3 + y * 5;
  *p = 7;
  a = a * 100 + x * 3 + y * 5;
  p[1] = 1;
  return a * 10 + x * 3 + y * 5;
}
static int by_last_byte(int n) {
  int x = n, y = n, a;
  unsigned char *p = pick(&x, &y, n & 1);
  a = (x ^ 5) - (y ^ 5);
  p[3] = 1;
  return a + (x ^ 5) - (y ^ 5);
}

/* A structure that a pointer reaches. */
static int structure_by_member(int n) {
  struct pair s, t;
  struct pair *p = pick(&s, &t, n & 1);
  int a;
  s.a = t.a = n;
  s.b = t.b = n + 1;
  a = s.a * 3 + t.a * 5;
  p->a = n + 4;
  a = a * 1000 + s.a * 3 + t.a * 5;
  a += s.b * 3 + t.b * 5;
  *p = shared;
  return a + s.b * 3 + t.b * 5;
}

/* A variable that is read by its address, and stored to by its name. */
static int own_bytes(unsigned u) {
  unsigned char low, high;
  low = ((unsigned char *)&u)[0];
  high = ((unsigned char *)&u)[1];
  u = u * 3 + 0x1FF;
  return low * 1000000 + high * 10000 + ((unsigned char *)&u)[0] * 100 + ((unsigned char *)&u)[1];
}
static int own_float(float f) {
  int a = *(int *)&f >> 16;
  f = f * 2.0f;
  a += *(int *)&f >> 16;
  f += 1.0f;
  return a * 2 + (*(int *)&f >> 16);
}

/* Places of their own, through a pointer to another type. Two are read each time: the second read
   tells that the object is known again, though only the other place of it is. */
static int element_by_byte(char *p) {
  int a = table[1] * 2 + table[2];
  *p = 77;
  return a * 1000 + table[1] * 2 + table[2];
}
static int byte_by_element(int *p) {
  int a = number.c[1] * 2 + number.c[2];
  *p = 0x123456;
  return a * 1000 + number.c[1] * 2 + number.c[2];
}
static int element_by_unsigned(unsigned *p) {
  int a = table[1] * 2 + table[2];
  *p = 99;
  return a * 1000 + table[1] * 2 + table[2];
}
static int pointer_by_pointer(void **p) {
  int a = (names[1] == text) * 2 + (names[2] == text);
  *p = text;
  return a * 1000 + (names[1] == text) * 2 + (names[2] == text);
}
static int element_by_structure(struct pair *p) {
  int a = table[1] * 2 + table[2];
  *p = shared;
  return a * 1000 + table[1] * 2 + table[2];
}
static int element_by_union(union word *p) {
  int a = (table[1] >> 20) * 2 + table[2];
  p->f = 1.5f;
  return a * 1000 + (table[1] >> 20) * 2 + table[2];
}
static int member_by_structure(struct pair *p, struct pair *q) {
  int a = shared.a + shared.b * 2;
  *p = *q;
  return a * 1000 + shared.a + shared.b * 2;
}
static int union_in_itself(int n) {
  union word w;
  int a;
  w.i = n;
  a = w.i >> 20;
  w.f = 2.5f;
  return a * 10000 + (w.i >> 20);
}

/* Calls: a local whose address was kept earlier, one whose address is handed over, a static local
   that a recursive call changes, a global. */
static int kept_local(int n) {
  int x = n, a;
  keep(&x);
  a = x * 3 + 1;
  change_kept();
  a = a * 1000 + x * 3 + 1;
  set_kept(2);
  return a * 10 + x * 3 + 1;
}
static void add_to(int *p) { *p += 5; }
static int handed_local(int n) {
  int x = n, a;
  a = x * 3 + 1;
  add_to(&x);
  return a * 1000 + x * 3 + 1;
}
static int recursive_static(int n) {
  static int depth, calls[4];
  int a, before;
  before = depth * 3 + 1;
  a = calls[n & 3] * 5;
  depth++;
  calls[1]++;
  if (n > 0) a += recursive_static(n - 1);
  a += before * 100 + depth * 3 + 1 + calls[n & 3] * 5 + calls[1];
  return a;
}
static int global_by_call(void) {
  int a = g * 2 + 1;
  change_g();
  return a * 1000 + g * 2 + 1;
}

/* A call inside of a statement: what stands beside it may be computed ahead of it or behind it, but
   the next statement sees the new value. */
static int beside_a_call(void) {
  sink = g * 2 + change_g();
  h = g * 2;
  sink = change_g() + g * 2;
  return h * 1000 + g * 2;
}
/* A local holds the value of g * 3, until the statement that needs it changes the local. */
static int holder_changes(int n) {
  int x, y;
  g = n;
  x = g * 3;
  keep(&x);
  y = set_kept(100) - g * 3;
  return y * 1000 + x;
}
static int holder_is_assigned(int n) {
  int x, y;
  g = n;
  x = g * 3;
  y = (x = n + 1) * 7 - g * 3;
  return y * 1000 + x;
}

/* memcpy beside stores and loads; a structure copied onto itself through two pointers. */
static int copied(struct pair *p) {
  int x = 3, a;
  struct pair s;
  s.a = 1;
  s.b = 2;
  a = s.a * 3 + x * 7 + shared.b;
  memcpy(&s, p, sizeof s);
  a = a * 100 + s.a * 3 + s.b;
  memcpy(&x, &p->b, sizeof x);
  a = a * 10 + x * 7;
  memcpy(pick(&shared, p, 0), &s, sizeof s);
  return a * 10 + x * 7 + shared.b;
}

/* Conversions: a value is the same behind a store only where the store keeps all of its values. */
static int narrowed(int n) {
  signed char c = (signed char)n;
  unsigned char u = (unsigned char)c;
  short s = (short)(n * 257);
  unsigned short w = (unsigned short)s;
  int a = c + 1, b = u + 1, d = s * 2, e = w * 2;
  return (a != b) * 1000000 + b * 1000 + (d != e) + e % 100;
}

int main(void) {
  struct pair local = {41, 42};
  int number_of_calls = 0, x = 5;
  printf("%d %d\n", by_same_type(2), by_same_type(3));
  printf("%d %d %d\n", by_other_sign(2), by_other_sign(3), by_subscript(2, 0));
  printf("%d %d %d\n", by_subscript(3, 0), by_byte(2), by_byte(3));
  printf("%d %d\n", by_last_byte(2), by_last_byte(3));
  shared.a = 8;
  shared.b = 9;
  printf("%d %d\n", structure_by_member(2), structure_by_member(3));
  printf("%d %d\n", own_bytes(0x0203), own_float(1.25f));
  printf("%d ", element_by_byte((char *)&table[1]));
  printf("%d ", byte_by_element(&number.i));
  printf("%d ", element_by_unsigned((unsigned *)&table[1]));
  printf("%d ", pointer_by_pointer((void **)(void *)&names[1]));
  printf("%d ", element_by_structure((struct pair *)&table[1]));
  printf("%d\n", element_by_union((union word *)&table[1]));
  pairs = &local;
  printf("%d ", member_by_structure(&shared, pairs));
  printf("%d\n", union_in_itself(0x6000000));
  printf("%d %d\n", kept_local(4), handed_local(4));
  printf("%d ", recursive_static(3));
  printf("%d\n", recursive_static(0));
  g = 1;
  printf("%d ", global_by_call());
  printf("%d ", beside_a_call());
  printf("%d %d\n", holder_changes(6), holder_is_assigned(6));
  printf("%d %d %d\n", copied(&local), narrowed(-1), narrowed(200));
  keep(&x);
  number_of_calls += set_kept(7);
  printf("%d %d %d\n", x, number_of_calls, sink != 0);
  return 0;
}
