/* Adjacent assignments to one scalar, and adjacent stores to one place in memory. */
#include <stdio.h>

int g, h;
short sg;
unsigned char bytes[8];
char *cp;
int *ip, **ipp;
double dg;
float fg;
struct s { int a, b; struct { short x, y; } in; } st, *sp = &st;
union u { int i; short s[2]; unsigned char c[4]; float f; } un;
volatile int port;
int calls;
int next(void) { return ++calls; }

int scalars(int a, int b) {
  int x; unsigned char c; float f; unsigned u;
  x = a + b; x = x * 3; x = x - a; x = b - x;
  c = a * 50; c = c + 200; c = c / 3;
  f = a / 3.0; f = f * 3; f = f - a;
  u = a - 100; u = u / 2; u = u >> 1;
  printf("%d %d %.9g %u\n", x, c, f, u);
  x = a; x = x * x; x = next(); x = x + next(); x = x + 1;
  return x;
}

int seen_through_pointer(int a) {
  int x, y = 0, *p = a ? &x : &y;
  x = 1; x = x + *p; x = x + *p;
  return x;
}

int over_a_static(int a) {
  static int n; int *p = &n;
  n = a; n = n + 1; n = n * *p; n = n + 2;
  return n;
}

int overlay(int a) {
  union { int x; struct { short lo, hi; } p; } l, *q = &l;
  l.x = a; l.x = l.x + q->p.lo; l.x = l.x + l.p.lo;
  return l.x;
}

void one(int *p, int *q, int a) {
  *p = 1; *p = g + 1;
  *q = 2; *q = *q + *p;
  *p = a; *p = *p + *q;
  g = *p; g = g + *q; g += *p;
  printf("%d %d %d\n", *p, *q, g);
}

void memory(int *p, int *q, int a) {
  *p = 1; *p = g + 1;
  *q = 2; *q = *q + *p;
  *p = a; *p = *p + 1; *p = *p * *p;
  *p += 3; *p += 4; *p ^= 5; *p ^= 9; *p *= 3; *p *= 5; *p |= 1; *p |= 64; *p &= 255; *p &= 127;
  p[1] = a; p[1] = p[1] + p[2]; p[1] = p[1] + p[0];
  p[a] = 1; p[a] = p[a] + p[1];
  printf("%d %d %d %d %d\n", *p, *q, p[1], p[2], g);
}

void bytes_over(int a) {
  unsigned char *b = (unsigned char *)&g;
  g = 0x01020304; g = g + b[1]; g = g + b[0];
  b[0] = 1; b[0] = b[0] + g; b[0] += 200; b[0] += 100;
  cp = (char *)&cp; ip = &g; ipp = &ip;
  *ip = 3; *ip = *ip + 1;
  **ipp = 5; **ipp = **ipp + 1;
  *ipp = &h; *ipp = *ipp + 0; **ipp = a; **ipp = g + **ipp;
  printf("%d %d %d\n", g, h, b[0]);
}

void kinds(int a) {
  sg = a; sg = sg * 300; sg += 30000; sg += 30000;
  dg = a; dg = dg / 3; dg += 1; dg += 2;
  fg = 16777216.0f; fg += 1; fg += 1;
  st.a = a; st.a = st.a + st.b; st.b = 4; st.b = st.b + sp->a;
  sp->in.x = 3; sp->in.x = sp->in.x + sp->in.y; st.in.y = 7; st.in.y = st.in.y + sp->in.y;
  un.i = 0x10203; un.i = un.i + un.s[0]; un.c[1] = 9; un.c[1] = un.c[1] + un.i;
  port = 1; port = port + 1; port += 2; port += 3;
  printf("%d %.9g %.9g %d %d %d %d\n", sg, dg, fg, st.a, st.b, st.in.x, st.in.y);
  printf("%d %d %d\n", un.i, un.c[1], port);
}

int own_address(void) {
  static int n; int *p = &n; int d;
  n = 1; n = (int)&n; d = (int)p; d -= n;
  sp->a = 1; sp->a = (int)&sp->a - (int)sp;
  return d * 10 + st.a;
}

/* The address of the store depends on what is stored. */
int *cell_of_itself[2];
void chained(void) {
  int **p = (int **)&cell_of_itself[0];
  *p = (int *)&cell_of_itself[1];
  *(int **)*p = &g;
  *(int **)*p = *p ? &h : &g;
  printf("%d %d\n", cell_of_itself[0] == (int *)&cell_of_itself[1], cell_of_itself[1] == &h);
}

void effects(void) {
  int *p = &g;
  g = 0;
  *p = next(); *p = *p + next();
  bytes[0] = 1; bytes[next() & 7] = 5; bytes[0] = bytes[0] + 1;
  printf("%d %d\n", g, bytes[0]);
  p = (int *)bytes; *p = 0;
  cp = (char *)bytes;
  *cp++ = 1; *cp++ = 2;
  printf("%d %d %d\n", bytes[0], bytes[1], bytes[2]);
}

int main(void) {
  static int v[6];
  int w[6] = {1, 2, 3, 4, 5, 6};
  printf("%d\n", scalars(4, 9));
  printf("%d\n", scalars(-7, 3));
  printf("%d %d\n", seen_through_pointer(1), seen_through_pointer(0));
  printf("%d ", over_a_static(3));
  printf("%d %d\n", over_a_static(-2), overlay(0x12345));
  g = 10;
  one(&g, &g, 2); one(w, &g, 3); one(&g, w, 0);
  memory(v, v, 1); memory(w, w + 1, 2); memory(w, &g, 3);
  bytes_over(6);
  kinds(5); kinds(-2);
  printf("%d\n", own_address());
  chained();
  effects();
  return 0;
}
