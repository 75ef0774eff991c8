/* Elements with constant and unknown subscripts, overlapping members of unions, bytes of objects. */
#include <stdio.h>
#include <string.h>

int ga[8];
union any { int i; unsigned u; float f; short s[2]; unsigned char c[4]; struct { char lo, hi; } b; } gu;
struct holder { int n; int v[4]; union any u; } gh;

static int constant_subscripts(int x)
{
    int a[4], r;
    a[0] = x; a[1] = a[0] + 1; a[2] = a[1] + a[0]; a[3] = 9;
    r = a[2] - a[1];
    a[0] = 5; a[0] = r; a[3] = a[0];
    return a[0] + a[1] * 10 + a[2] * 100 + a[3] * 1000;
}

static int unknown_subscripts(int i, int j)
{
    int a[4] = {1, 2, 3, 4}, r;
    ga[0] = 5; ga[i] = 6; r = ga[0];
    a[1] = 7; a[j] = 8; r = r * 10 + a[1];
    a[2] = 1; r = r * 10 + a[i + 2]; a[2] = 3;
    ga[3] = 1; a[i] = ga[3]; ga[3] = 2;
    gh.v[1] = 4; gh.v[j] = 5; gh.n = gh.v[1]; gh.v[1] = 6;
    return r * 1000 + a[0] * 100 + a[2] * 10 + gh.n + ga[3];
}

static int one_before(int *p)
{
    int r;
    ga[2] = 1; p[-1] = 2; r = ga[2];
    ga[4] = r; r += p[1]; ga[4] = 7;
    *(p + 1) = 3; *(p + 1) = 4; r = r * 10 + ga[4];
    p[0] = 5; p[r & 0] = 6;
    return r * 10 + ga[3];
}

static int unions(int v)
{
    union any u;
    int r;
    u.i = 0x01020304; u.c[1] = v; r = u.i;
    u.s[1] = 0x55; r ^= u.i + u.c[2] + u.s[0];
    u.f = 1.0f; r += u.i >> 20; u.i = 0x40000000; r += u.f == 2.0f;
    u.b.hi = 3; u.u &= 0xffff; r += u.i;
    u.i = 1; u.u = 2; r += u.i;
    return r;
}

static int union_by_pointer(union any *p, union any *q)
{
    int r;
    p->i = 1; q->s[0] = 2; r = p->i;
    gu.f = 1.0f; p->i = 0; r += gu.f == 1.0f;
    gu.c[0] = 9; gu.i += 1; r = r * 10 + q->c[0];
    return r;
}

static unsigned bytes(unsigned v)
{
    unsigned x = v, y, *px = &x;
    unsigned char *b = (unsigned char *)&x;
    b[0] = 1; y = x; b[3] = 2; y += x;
    x = 3; b[1] = 4; y ^= *px; *px = 5; y += x;
    x = 6; y += b[0]; x = 7;
    *(short *)&gu = 0x1234; gu.c[0] = 1; y += gu.s[0];
    return y * 3 + b[0];
}

static int copies(int n)
{
    struct holder s, t;
    int r, a[4], b[4];
    memset(&t, 0, sizeof t);
    t.n = 1; t.v[2] = 2;
    memcpy(&s, &t, sizeof t);          /* reads t, overwrites s */
    t.n = 3;
    r = s.n * 10 + s.v[2];
    s.n = 4; s.v[1] = 5;
    memcpy(&gh, &s, sizeof s);
    s.n = 6;
    memcpy(&s, &t, sizeof t); s.v[2] = 8;
    r = r * 10 + gh.n + gh.v[1] + s.n + s.v[2];
    a[0] = n; a[1] = n + 1; a[2] = 3; a[3] = 4;
    memcpy(b, a, 8); b[2] = 7; a[1] = 0;
    memcpy(a + 2, b, 4 * 2);
    b[0] = 1; memcpy(b, a, n); b[1] = a[3];
    memcpy(&b[3], &a[2], sizeof(int)); a[2] = 5;
    return r * 100 + a[0] + a[1] + a[2] + a[3] * 3 + b[0] * 5 + b[1] + b[2] + b[3] * 7;
}

static int strings(const char *from)
{
    char text[8];
    int r;
    text[0] = 'x'; text[1] = 'y'; text[2] = 0;
    r = strlen(text);
    text[1] = 'z'; strcpy(text, from); r = r * 10 + (text[1] == 'z');
    text[0] = 'q'; strcpy(text, "abc"); text[3] = '!'; text[4] = 0;
    return r * 1000 + strlen(text) * 100 + text[1];
}

/* Two-level addresses: the pointer that a store goes through changes, or is itself stored to. */
static int through_stored_pointers(void)
{
    int x = 1, y = 2, *p = &x, **pp = &p, r;
    struct holder *h = &gh;
    *p = 3; p = &y; *p = 4; r = x;
    *pp = &x; *p = 5; **pp = 6; r = r * 10 + x + y;
    h->n = 7; h->v[0] = h->n; h++; h--; h->n = 8;
    *p++ = 9; *--p += 1;
    return r * 100 + x * 10 + gh.v[0] + gh.n;
}

static double floats(double d)
{
    double a[3], r;
    float f[2];
    a[0] = d; a[1] = a[0] * 2; f[0] = a[1]; f[1] = 0.1;
    r = a[0] + a[1] + f[0] + f[1];
    a[2] = 1; a[2] = 0.5; a[2] += a[2];
    return r + a[2];
}

int main(void)
{
    printf("%d %d\n", constant_subscripts(3), constant_subscripts(-2));
    printf("%d ", unknown_subscripts(0, 1)); printf("%d\n", unknown_subscripts(1, 3));
    printf("%d\n", one_before(ga + 3));
    printf("%d %d\n", unions(0x7f), unions(255));
    printf("%d\n", union_by_pointer(&gu, &gu)); printf("%d\n", union_by_pointer(&gh.u, &gu));
    printf("%u\n", bytes(0xaabbccdd));
    printf("%d %d\n", copies(4), copies(8));
    printf("%d\n", strings("hello"));
    printf("%d\n", through_stored_pointers());
    printf("%.9g %.9g\n", floats(0.1), floats(3e10));
    return 0;
}
