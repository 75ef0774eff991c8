/* Arguments: many of them, of all types, computed, converted, assigned to; results used and dropped. */
#include <stdio.h>

static int twelve(int a, char b, short c, unsigned char d, unsigned short e, long f, unsigned g, float h, double i, int *j,
                  const char *k, signed char l)
{
    return a + b * 2 + c * 3 + d * 4 + e * 5 + (int)f * 6 + (int)(g >> 20) + (int)h * 7 + (int)i * 8 + *j * 9 + k[1] + l * 10;
}

static int assigned(int a, int b, char c)
{
    int t = a;
    a = b * 2;
    b = t - a;
    c += 100;
    a += c;
    return a * 1000 + b;
}

static int address_taken(int a, short b, char c)
{
    int *p = &a;
    short *q = &b;
    char *r = &c;
    *p += 5;
    *q *= 2;
    ++*r;
    return a + b * 10 + c * 100;
}

static int unused(int a, int b, int c) { return b; }
static int same(int x) { return x; }
static int add(int a, int b) { return a + b; }
static int sub3(int a, int b, int c) { return a - b * 2 - c * 3; }
static void store(int *p, int v) { *p = v; }
static double average(double a, double b) { return (a + b) / 2; }
static float scale(float f, int n) { return f * n; }

static int shadow_args(int n, int limit)
{
    while (n < limit) {
        n = add(n, n + 1);
        limit = sub3(limit, n / 50, 0);
    }
    return n - limit;
}

static int total;
static int note(int x) { total = total * 7 + x; return total & 15; }

static int nested_calls(int a)
{
    int x = add(same(a), same(a + 1));
    x = add(x, add(add(1, 2), add(3, add(4, 5))));
    x = sub3(same(x), a, same(3));
    return add(x, same(same(same(2))));
}

static int shared_argument(int a) { return add(a * a + 1, a * a + 1) + sub3(a * a, a, a * a); }

int main(void)
{
    int v = 6, w = 0;
    double d = 2.75;
    printf("%d\n", twelve(1, 'b', -3, 250, 60000, 7L, 0xFFF00000u, 2.5f, 9.75, &v, "kk", -8));
    printf("%d\n", twelve(v, v + 300, v * 20000, -1, -1, d, v, v, v, &v, "z" "y", 200));
    printf("%d %d\n", assigned(3, 4, 10), assigned(v, v, 120));
    printf("%d %d\n", address_taken(1, 2, 3), v);
    printf("%d %d\n", unused(v * 5, v, w / 3), shadow_args(3, 1000));
    note(3); note(4);
    w = note(5);
    v = note(w);
    printf("%d %d %d\n", w, v, total);
    printf("%d %d\n", nested_calls(5), shared_argument(7));
    store(&v, add(w = 3, 4));
    printf("%d %d\n", v, w);
    printf("%g %g\n", average(v, 'a'), scale(d, 3));
    (void)add(1, 2);
    same(add(3, 4));
    printf("%d\n", (same)(9) + (*same)(8) + (&same)(7));
    return 0;
}
