/* Addresses carried to their uses, and variables that change behind their name. */
#include <stdio.h>
#include <string.h>

int table[8] = {1, 2, 3, 4, 5, 6, 7, 8};
int global;
struct pair { int a; struct { int b; char c[4]; } in; };
struct pair shared;

static int *kept;
void keep(int *p) { kept = p; }
void bump(void) { ++*kept; }
int *larger(int *a, int *b) { return *a > *b ? a : b; }
int add3(int *p) { *p += 3; return *p; }

int through_names(void) {
  int *p = &global, *q = table, *r = &table[3], *s = &shared.in.b;
  char *c = shared.in.c + 1;
  *p = 4; q[2] = 30; *r += 10; *s = 9; *c = 'x'; c[1] = 'y';
  p = &table[1];
  *p = 20; p++; *p += 1; p = p + 2; *p = 50;
  return global + table[1] * 3 + table[2] * 5 + table[3] * 7 + table[4] * 11 + shared.in.b
         + shared.in.c[1] + shared.in.c[2];
}

int changed_by_callee(void) {
  int x = 5, y, z = 1;
  y = add3(&x);
  keep(&z);
  z = 10; bump(); y = y * 100 + z; bump();
  return y * 100 + z + x;
}

int returned(void) {
  int a = 1, b = 2, *m = larger(&a, &b);
  *m = 0;
  return a * 10 + b;
}

int through_own_pointer(int k) {
  int x = 1, y = 2, *p = &x;
  if (k) p = &y;
  *p = 7;
  x = x + y;
  *&y = 40;
  return x * 100 + y;
}

int walking(const char *text) {
  const char *p = "abcdef", *start = p, *end;
  int n = 0;
  while (*p && *text) { n = n * 5 + (*p - *text); p++; text++; }
  end = p;
  return n * 10 + (int)(end - start);
}

int volatile_view(void) {
  int flag = 0, n = 0;
  volatile int *v = &flag;
  volatile struct pair *w = &shared;
  while (*v < 3) { *v = *v + 1; n += *v; }
  w->a = 1; w->a = w->a + 1; w->a = w->a + 1;
  return n * 10 + flag + w->a;
}

int const_view(const int *p, int *q) { int a = *p; *q = 5; return a * 10 + *p; }

int step(int n) {
  int v[4], *p = v, i;
  for (i = 0; i < 4; i++) *p++ = i + n;
  p = p - 2;
  return p[0] * 10 + p[1] + (int)(p - v);
}

int function_pointer(int k) {
  int (*f)(int *) = add3;
  int x = k;
  f(&x);
  if (k > 5) return (*f)(&x);
  return x;
}

int member(void) {
  struct pair local, *p = &local;
  memset(p, 0, sizeof *p);
  p->in.b = 3; local.in.b += 4; p->in.c[0] = 'a'; local.a = p->in.b;
  { struct pair copy = local, *q = &copy; q->a++; return p->a * 1000 + q->a * 10 + copy.in.b; }
}

int main(void) {
  int x = 1;
  printf("%d %d %d\n", through_names(), changed_by_callee(), returned());
  printf("%d %d %d %d\n", through_own_pointer(0), through_own_pointer(1), walking("abd"), walking("zzzzzzzzz"));
  printf("%d %d %d %d\n", volatile_view(), const_view(&x, &x), step(2), member());
  printf("%d %d\n", function_pointer(1), function_pointer(9));
  return 0;
}
