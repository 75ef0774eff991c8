/* Variable arguments of each promoted type, pointers and structures; lists walked twice. */
#include <stdarg.h>
#include <stdio.h>

struct point { int x, y; };
struct odd { char c[5]; };

static int sum(int n, ...)
{
    va_list ap;
    int t = 0;
    va_start(ap, n);
    while (n-- > 0)
        t += va_arg(ap, int);
    va_end(ap);
    return t;
}

static double total(const char *kinds, ...)
{
    va_list ap;
    double t = 0;
    struct point p;
    struct odd o;
    va_start(ap, kinds);
    for (; *kinds; kinds++)
        switch (*kinds) {
        case 'i': t += va_arg(ap, int); break;
        case 'u': t += va_arg(ap, unsigned); break;
        case 'l': t += va_arg(ap, long); break;
        case 'd': t += va_arg(ap, double); break;
        case 'p': t += *va_arg(ap, int *); break;
        case 's': t += va_arg(ap, char *)[0]; break;
        case 'P': p = va_arg(ap, struct point); t += p.x * 10 + p.y; break;
        case 'O': o = va_arg(ap, struct odd); t += o.c[0] + o.c[4]; break;
        case 'f': t += va_arg(ap, int (*)(int))(3); break;
        }
    va_end(ap);
    return t;
}

static int twice_through(int n, ...)
{
    va_list ap, again;
    int i, first = 0, second = 0;
    va_start(ap, n);
    again = ap;
    for (i = 0; i < n; i++)
        first = first * 2 + va_arg(ap, int);
    for (i = 0; i < n; i++)
        second = second * 3 + va_arg(again, int);
    va_end(ap);
    return first * 1000 + second;
}

static int named_after_double(double d, char c, short s, ...)
{
    va_list ap;
    int a;
    va_start(ap, s);
    a = va_arg(ap, int);
    a += (int)va_arg(ap, double);
    va_end(ap);
    return (int)d + c + s + a;
}

static int minimum(int first, ...)
{
    va_list ap;
    int v, low = first;
    va_start(ap, first);
    while ((v = va_arg(ap, int)) != -1)
        if (v < low)
            low = v;
    va_end(ap);
    return low;
}

static int square(int x) { return x * x; }

int main(void)
{
    struct point p = {3, 4};
    struct odd o = {"abcd"};
    char c = 5;
    short s = -6;
    float f = 1.5f;
    unsigned char b = 200;
    int n = 7;
    printf("%d %d %d\n", sum(0), sum(3, 1, 2, 3), sum(5, c, s, b, 'x', n));
    printf("%g\n", total("iuld", -1, 4000000000u, 5L, 0.25));
    printf("%g\n", total("didPs", 1.5, 2, (double)f, p, "z"));
    printf("%g\n", total("pOifPd", &n, o, 9, square, p, 0.5));
    printf("%g\n", total("ddd", f, f * 2, 1e3));
    printf("%d\n", twice_through(4, 1, 2, 3, 4));
    printf("%d %d\n", named_after_double(2.5, 'a', -3, 10, 20.75), minimum(9, 4, 17, 2, 8, -1));
    return 0;
}
