/* Structure values with members of all types, nested ones, in conditional and comma expressions. */
#include <stdio.h>

struct complex { double re, im; };
struct all { char c; short s; int i; unsigned char uc; float f; double d; char *p; struct complex z; int a[3]; };
struct pair { struct all first, second; };
struct tiny { char a; };
typedef struct { int (*op)(int); struct tiny t; } action;

static struct complex multiply(struct complex a, struct complex b)
{
    struct complex r;
    r.re = a.re * b.re - a.im * b.im;
    r.im = a.re * b.im + a.im * b.re;
    return r;
}

static struct complex power(struct complex z, int n)
{
    struct complex r = {1, 0};
    while (n-- > 0)
        r = multiply(r, z);
    return r;
}

static struct all make(int n)
{
    struct all a;
    a.c = (char)('a' + n); a.s = (short)(n * 100); a.i = n * 10000; a.uc = (unsigned char)(n * 50);
    a.f = n / 2.0f; a.d = n / 4.0; a.p = "text"; a.z.re = n; a.z.im = -n;
    a.a[0] = n; a.a[1] = n * n; a.a[2] = n * n * n;
    return a;
}

static void show(struct all a)
{
    printf("%c %d %d %d %g %g %s %g %g %d\n", a.c, a.s, a.i, a.uc, a.f, a.d, a.p, a.z.re, a.z.im, a.a[0] + a.a[1] + a.a[2]);
}

static struct pair swap(struct pair p)
{
    struct all t = p.first;
    p.first = p.second;
    p.second = t;
    return p;
}

static int twice(int x) { return 2 * x; }
static int thrice(int x) { return 3 * x; }
static action choose(int n)
{
    action a = {twice, {'2'}}, b = {thrice, {'3'}};
    return n ? a : b;
}

static struct tiny bump(struct tiny t) { t.a++; return t; }

static int many(struct tiny t, int x, struct complex z, short y, struct tiny u, double d, struct pair *p)
{
    return t.a + x + (int)z.re + y + u.a + (int)d + p->second.a[1];
}

int main(void)
{
    struct complex i = {0, 1}, z = {1, 2};
    struct pair p, q;
    struct all x = make(3), *px = &x;
    struct tiny t = {'a'};
    int k;
    for (k = 0; k < 5; k++)
        printf("%g,%g ", power(i, k).re, power(z, k).im);
    printf("\n");
    p.first = make(1);
    p.second = make(2);
    q = swap(p);
    show(q.first);
    show(p.first);
    show((p = q).second);
    show(k > 3 ? *px : p.first);
    show((px->i++, x.s--, *px));
    px->z = multiply(px->z, i);
    x.a[1] = (q = p).first.a[2];
    show(x);
    printf("%d %c %d %c\n", choose(1).op(7), choose(1).t.a, choose(0).op(7), choose(0).t.a);
    printf("%c\n", bump(bump(bump(t))).a);
    printf("%d\n", many(t, 5, z, -7, bump(t), 2.75, &q));
    return make(5).uc;
}
