/* Unions: every member over the same bytes, by value, in structures, type tests by a tag. */
#include <stdio.h>
#include <string.h>

union word { unsigned u; int i; unsigned short h[2]; unsigned char b[4]; signed char s[4]; float f; };
union big { double d; unsigned w[2]; unsigned char b[8]; struct { short a, b, c, d; } q; };
struct variant { enum { INT, REAL, TEXT, PAIR } kind; union { int i; double r; const char *t; struct { short x, y; } p; } u; };

static unsigned swap_bytes(unsigned x)
{
    union word a, b;
    a.u = x;
    b.b[0] = a.b[3]; b.b[1] = a.b[2]; b.b[2] = a.b[1]; b.b[3] = a.b[0];
    return b.u;
}

static int exponent(float f)
{
    union word w;
    w.f = f;
    return (int)(w.u >> 23 & 0xFF) - 127;
}

static double negate(double d)
{
    union big b;
    b.d = d;
    b.w[1] ^= 0x80000000u;
    return b.d;
}

static union word add_halves(union word a, union word b)
{
    union word r;
    r.h[0] = (unsigned short)(a.h[0] + b.h[0]);
    r.h[1] = (unsigned short)(a.h[1] + b.h[1]);
    return r;
}

static void show(const struct variant *v)
{
    switch (v->kind) {
    case INT: printf("int %d\n", v->u.i); break;
    case REAL: printf("real %g\n", v->u.r); break;
    case TEXT: printf("text %s\n", v->u.t); break;
    case PAIR: printf("pair %d %d\n", v->u.p.x, v->u.p.y); break;
    }
}

static int interleaved(union word *p, int n)
{
    int t = 0;
    while (n--) {
        p->u += 0x01020304u;
        t += p->b[1];
        p->b[2] = (unsigned char)t;
        t ^= p->h[1];
        p->s[3] = (signed char)(t >> 1);
        t += p->i >> 28;
    }
    return t;
}

int main(void)
{
    union word w, *p = &w;
    struct variant v[4] = {{INT, {5}}, {REAL}, {TEXT}, {PAIR}};
    int i;
    printf("%08x %d %d %d\n", swap_bytes(0x12345678u), exponent(1.0f), exponent(0.15625f), exponent(1e6f));
    printf("%g %g\n", negate(2.5), negate(-1e100));
    w.u = 0xFFFE0001u;
    printf("%u %u %d %d %x\n", w.h[0], w.h[1], w.s[3], w.b[3], add_halves(w, w).u);
    p->h[1] = 0x3F80;
    p->h[0] = 0;
    printf("%g\n", w.f);
    w.f *= -2.5f;
    printf("%x %d\n", w.u, w.i < 0);
    v[1].u.r = 1.5; v[2].u.t = "union"; v[3].u.p.x = -3; v[3].u.p.y = 4;
    for (i = 0; i < 4; i++)
        show(&v[i]);
    v[0] = v[3];
    v[3].kind = INT;
    v[3].u.i = 0x00050006;
    show(v);
    printf("%d %d\n", v[3].u.p.x, v[3].u.p.y);
    w.u = 77;
    printf("%d", interleaved(&w, 20));
    printf(" %x\n", w.u);
    printf("%d %d\n", (int)sizeof(union big), (int)sizeof v);
    return 0;
}
