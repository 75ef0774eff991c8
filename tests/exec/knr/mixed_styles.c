/* Old and new style together: declarations without parameters, prototypes for old definitions. */
#include <stdio.h>

extern int plain();
static double halve();
int declared_with_prototype(int, char *, double);
static int (*table[3])();

int plain(a, b, c) int a, b, c; { return a * 100 + b * 10 + c; }
static double halve(d) double d; { return d / 2; }

int declared_with_prototype(n, s, d)
int n;
char *s;
double d;
{
    return n + s[0] + (int)d;
}

static int unsigned_small(b) unsigned char b; { return b; }
static int signed_small(c) signed char c; { return c; }
static int shortened(s) short s; { return s; }
static short result_short(x) int x; { return x; }
static float result_float(x) int x; { return x / 2.0; }
static char *advance(s) char *s; { return s + 1; }
static void no_result(p) int *p; { ++*p; }

static int loop(p, n) int *p; int n;
{
    register int i;
    int t;
    for (i = t = 0; i < n; i++)
        t += p[i] * i;
    return t;
}

static int switched(op, a, b) char op;
{
    switch (op) {
    case '+': return a + b;
    case '-': return a - b;
    case '*': return a * b;
    }
    return 0;
}

int main()
{
    int i, n = 0, v[4];
    static char text[] = "text";
    short s = 7;
    char c = 'c';
    printf("%d %d\n", plain(1, 2, 3), plain(c - 'a', s, n));
    printf("%g %g\n", halve(5.0), halve((double)s));
    printf("%d\n", declared_with_prototype('a', text, 3.5));
    printf("%d %d %d\n", unsigned_small(300), signed_small(200), shortened(70000));
    printf("%d %g %s\n", result_short(65537), result_float(7), advance(advance(text)));
    for (i = 0; i < 4; i++) {
        no_result(&n);
        v[i] = n * n;
    }
    printf("%d %d\n", n, loop(v, 4));
    table[0] = plain;
    table[1] = table[2] = loop;
    printf("%d %d\n", (*table[0])(4, 5, 6), table[1](v, 3));
    printf("%d %d %d\n", switched('+', 5, 3), switched('-', 5, 3), switched('*', 5, 3));
    return 0;
}
