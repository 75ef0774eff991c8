/* Old-style definitions: default argument promotions, narrow parameters, implicit int, undeclared calls. */
#include <stdio.h>

add(a, b)
int a, b;
{
    return a + b;
}

static int narrow(c, b, s, w)
char c;
unsigned char b;
short s;
unsigned short w;
{
    c += 1;
    b += 1;
    return c * 1000000 + b * 10000 + s + w;
}

static double real(f, d, i)
float f;
double d;
{
    f = f * 2;
    return f + d + i;
}

static char *text(p, n)
register char *p;
int n;
{
    while (n-- > 0 && *p)
        p++;
    return p;
}

struct point { int x, y; };
static int structure(p, k)
struct point p;
int k;
{
    p.x *= k;
    return p.x + p.y;
}

static int array(v, n)
int v[], n;
{
    int t = 0;
    while (n)
        t += v[--n];
    return t;
}

static int apply(f, x)
int (*f)();
int x;
{
    return (*f)(x, x + 1);
}

static unsigned mixed(a, p, d, c, b)
int a, *p, b;
double d;
char c;
{
    *p += a;
    return (unsigned)(a + *p + (int)d + c + b);
}

static implicit_result(x) { return x * 2; }
static no_arguments() { return 17; }
static tail(n, acc) { if (n <= 0) return acc; return tail(n - 1, acc + n); }

int main(argc, argv)
int argc;
char **argv;
{
    static int v[] = {1, 2, 3, 4};
    struct point p;
    int k = 5;
    float f = 0.25f;
    p.x = 3;
    p.y = 4;
    printf("%d %d\n", add(2, 3), add(-1, 'a'));
    printf("%d\n", narrow('\177', 255, -5, 40000));
    printf("%d\n", narrow('a', k, k * 1000, k));
    printf("%g %g\n", real(1.5, 2.5, 3), real(f, f * 2, k));
    printf("%s %d\n", text("old style", 4), structure(p, 2));
    printf("%d %d\n", array(v, 4), apply(add, 10));
    printf("%u", mixed(1, &k, 2.75, 'c', 4));
    printf(" %d\n", k);
    printf("%d %d %d\n", implicit_result(21), no_arguments(), tail(10, 0));
    printf("%d\n", later(6, 7));
    return argc > 5;
}

int later(a, b)
{
    return a * b;
}
