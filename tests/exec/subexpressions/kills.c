/* Values that a store, a copy or a call makes unknown: each function reads a place, changes it by
   another way, and reads it again. */
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
struct boxed {
  union word u;
  short tail;
};

int global, other;
int table[8];
struct pair shared;
float real;
unsigned char bytes[8];

static int by_name(int *p) {
  int x = *p * 3;
  global = 7;
  return x + *p * 3;
}
static int by_pointer(int *p) {
  int x = global * 3;
  *p = 9;
  return x + global * 3;
}
static int by_char(unsigned char *p) {
  int x = global + 1;
  p[1] = 2;
  return x + (global + 1);
}
static int bytes_by_int(unsigned char *p, int *q) {
  int x = p[2] * 5;
  *q = 0x01020304;
  return x + p[2] * 5;
}
static int float_stays(float *p) {
  int x = global * 11;
  *p = 1.5f;
  return x + global * 11;
}
static int other_pointer(int **pp, int *q) {
  int x = **pp + 1;
  *pp = q;
  return x + (**pp + 1);
}
static int through_const(const int *p, int *q) {
  int x = *p;
  *q = 5;
  return x * 100 + *p;
}
static int through_volatile(volatile int *q) {
  int x = 1, y;
  int *p = &x;
  if ((int *)q == &global) q = p;
  y = x + 4;
  *q = 2;
  return y * 10 + (x + 4);
}

static int by_element(int i) {
  int x = table[2] + 1;
  table[i] = 50;
  return x * 1000 + (table[2] + 1);
}
static int by_index_of_scalar(int i) {
  int x = 3, y;
  int *p = &x;
  y = x * 2;
  p[i] = 8;
  return y * 100 + x * 2;
}
static int by_byte_of_scalar(void) {
  unsigned v = 5, w;
  unsigned char *b = (unsigned char *)&v;
  w = v + 1;
  b[3] = 1;
  w += v + 1;
  w += b[3] * 7;
  v = 0x7000000;
  w += b[3] * 7;
  return (int)(w % 100003u);
}
static int partial_store(void) {
  struct pair s;
  int x;
  s.a = global;
  s.b = other;
  x = s.a * s.b;
  s.a = x;
  x += s.a * s.b;
  shared = s;
  x += shared.a - shared.b;
  shared.b = 4;
  x += shared.a - shared.b;
  return x;
}
static int by_structure(struct pair *p, struct pair *q) {
  int x = p->a * 2;
  *q = *p;
  q->a = 6;
  return x + p->a * 2 + shared.a;
}
static int into_structure(struct pair *p, const struct pair *q) {
  int x = shared.a + 1;
  *p = *q;
  return x * 10 + (shared.a + 1);
}
static int member_of_union(struct boxed *p, struct boxed *q) {
  int x = p->u.i / 3;
  q->u.f = 2.0f;
  x += p->u.i / 3;
  q->u.c[3] = 0;
  return x + p->u.i / 3;
}
static int union_by_pointer(union word *u, float *f) {
  int x = u->i >> 3;
  *f = 8.0f;
  return x ^ (u->i >> 3);
}
static int by_copy(struct pair *p, struct pair *q) {
  int x = p->a + p->b;
  memcpy(q, p + 1, sizeof *q);
  x = x * 10 + p->a + p->b;
  memset(q, 0, sizeof *q);
  return x * 10 + p->a + p->b;
}
static int array_again(int n) {
  int sum = 0, i;
  for (i = 0; i < n; i++) {
    char b[4] = "abc";
    sum = sum * 7 + b[0];
    b[0]++;
    sum += b[0];
    bytes[i & 7] = b[0];
    sum += bytes[1];
  }
  return sum;
}

static void change_global(void) {
  global += 100;
}
static int pass_on(int v) {
  change_global();
  return v;
}
static void set_by_address(int *p) {
  *p += 20;
}
static int *kept;
static void keep(int *p) {
  kept = p;
}
static void use_kept(void) {
  *kept += 3;
}

static int by_call(void) {
  int x = global + 2;
  change_global();
  return x + (global + 2);
}
static int by_argument(int v) {
  int x = v * 2;
  set_by_address(&v);
  return x * 1000 + v * 2;
}
static int by_kept_address(int v) {
  int x;
  keep(&v);
  x = v * 2;
  use_kept();
  return x * 1000 + v * 2;
}
static int by_library(void) {
  char text[16];
  int x;
  strcpy(text, "ab");
  x = text[0] * 2;
  strcpy(text, "xb");
  x = x * 1000 + text[0] * 2;
  x += (int)strlen(text);
  text[1] = 0;
  return x + (int)strlen(text);
}
static int counter(int depth) {
  static int calls;
  int before, after;
  before = calls * 3;
  calls++;
  if (depth > 0) counter(depth - 1);
  after = calls * 3;
  return before * 100 + after;
}

int main(void) {
  int a = 1, b = 2;
  struct pair p[3];
  struct boxed w;
  union word u;
  memset(p, 0, sizeof p);
  memset(&w, 0, sizeof w);
  global = 3;
  printf("%d ", by_name(&global));
  printf("%d ", by_pointer(&global));
  printf("%d\n", by_pointer(&a));
  global = 0;
  printf("%d ", by_char((unsigned char *)&global));
  printf("%d\n", bytes_by_int((unsigned char *)&other, &other));
  printf("%d ", float_stays(&real));
  {
    int *pa = &a;
    printf("%d\n", other_pointer(&pa, &b));
  }
  a = 1;
  printf("%d ", through_const(&a, &a));
  printf("%d\n", through_volatile(&global));
  table[2] = 1;
  printf("%d ", by_element(2));
  printf("%d ", by_element(3));
  printf("%d %d\n", by_index_of_scalar(0), by_byte_of_scalar());
  global = 5;
  other = 6;
  printf("%d\n", partial_store());
  p[0].a = 1;
  p[0].b = 2;
  printf("%d ", by_structure(&shared, &shared));
  printf("%d ", by_structure(p, p + 1));
  p[2].a = 70;
  printf("%d\n", into_structure(&shared, p + 2));
  w.u.i = 99;
  printf("%d ", member_of_union(&w, &w));
  u.i = 4096;
  printf("%d\n", union_by_pointer(&u, &u.f));
  p[0].a = 1;
  p[0].b = 2;
  p[1].a = 3;
  p[1].b = 4;
  printf("%d %d\n", by_copy(p, p), array_again(5));
  printf("%d ", by_call());
  printf("%d %d %d\n", by_argument(4), by_kept_address(4), by_library());
  printf("%d ", counter(2));
  printf("%d\n", pass_on(counter(0)));
  return 0;
}
