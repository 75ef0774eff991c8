/* Signed bit fields: sign extension, narrowing on stores, promotion, comparison with constants. */
#include <stdio.h>

struct small { signed a:1, b:2, c:3, d:4, e:5; int f:6, g:7; };
struct large { int h:8, i:11; signed int j:13; int k:24, l:31, m:32; };
struct mixed { unsigned u:4; signed s:4; unsigned w:16; signed x:16; int full; signed char c; unsigned v:3; };

static void small_values(int v)
{
    struct small s;
    s.a = v; s.b = v; s.c = v; s.d = v; s.e = v; s.f = v; s.g = v;
    printf("%d: %d %d %d %d %d %d %d\n", v, s.a, s.b, s.c, s.d, s.e, s.f, s.g);
}

static void large_values(struct large *p, int v)
{
    p->h = v;
    p->i = p->h * 3;
    p->j = v ^ p->i;
    p->k = v * 5;
    p->l = -v;
    p->m = v + p->k;
    printf("%d %d %d %d %d %d\n", p->h, p->i, p->j, p->k, p->l, p->m);
}

static int classify(const struct mixed *p)
{
    int n = 0;
    if (p->u > 7) n |= 1;
    if (p->s < 0) n |= 2;
    if (p->s == -1) n |= 4;
    if (p->u == 15) n |= 8;
    if (p->w >= 0x8000u) n |= 16;
    if (p->x >= 0) n |= 32;
    if (p->u - 15 < 0) n |= 64;
    if (p->v) n |= 128;
    if (!(p->v & 4)) n |= 256;
    if (p->s > p->u) n |= 512;
    if (p->x < p->full) n |= 1024;
    return n;
}

static int value_of_assignment(struct mixed *p, int v)
{
    int a = p->s = v;
    int b = (p->u = (unsigned)v) + 1;
    int c = p->x = p->w = (unsigned)v * 4099u;
    return a * 10000 + b * 100 + (c & 63);
}

int main(void)
{
    static const int v[] = {0, 1, -1, 3, 7, 8, -8, 15, 31, 63, -64, 100, 12345, -54321};
    struct large l;
    struct mixed m = {9, -3, 50000, -1, 5, 6, 3};
    int i;
    for (i = 0; i < 14; i++)
        small_values(v[i]);
    for (i = 0; i < 14; i++)
        large_values(&l, v[i]);
    printf("%x\n", classify(&m));
    for (i = 0; i < 14; i++) {
        int r = value_of_assignment(&m, v[i]);
        printf("%d %x %d %d\n", r, classify(&m), m.u << 2, m.s >> 1);
        m.v++;
    }
    printf("%d %d\n", (int)sizeof m, -m.u + ~m.s);
    return 0;
}
