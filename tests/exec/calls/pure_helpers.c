/* Small functions that inlining, specialization and removal of repeated calls look for. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int square(int x) { return x * x; }
static int sign(int x) { return x < 0 ? -1 : x > 0 ? 1 : 0; }
static int limit(int x, int low, int high) { if (x < low) return low; if (x > high) return high; return x; }
static int is_digit(char c) { return c >= '0' && c <= '9'; }
static int always_seven(void) { return 7; }
static int constant_argument(int mode, int x) { switch (mode) { case 0: return x + 1; case 1: return x * 2; default: return -x; } }
static void swap(int *a, int *b) { int t = *a; *a = *b; *b = t; }
static void nothing(void) { }
static int reads_global(int);
static int global = 10;
static int reads_global(int x) { return x + global; }
static int writes_global(int x) { global = x; return x * 2; }
static int always_same(int unused_here, int k) { return k * 3 + unused_here * 0; }
static int twice(int (*f)(int), int x) { return f(f(x)); }
static int loop_inside(int n) { int i, s = 0; for (i = 1; i <= n; i++) s += i; return s; }
static int inner(int x) { return square(x) + sign(x); }
static int outer(int x) { return inner(x) * 2 + inner(x + 1); }
static int many_returns(int x)
{
    if (x > 100) return 1;
    if (x > 50) { nothing(); return 2; }
    while (x > 10) { if (x % 3 == 0) return 3; x -= 4; }
    return x;
}
static int *place(int *base, int i) { return base + i; }
static struct both { int a, b; } both(int x) { struct both r; r.a = x; r.b = -x; return r; }

static int repeated(int x)
{
    int a = square(x) + square(x);
    int b = reads_global(x);
    int c = writes_global(a & 7);
    int d = reads_global(x);
    return a + b * 10 + c * 100 + d * 1000;
}

static int library_calls(const char *s)
{
    int n = (int)strlen(s) + (int)strlen(s);
    char buffer[20];
    strcpy(buffer, s);
    buffer[0] = 0;
    n = n * 10 + (int)strlen(s) + (int)strlen(buffer);
    n += abs(-n) + abs(n - 100000);
    return n;
}

static int short_circuit(int x) { return is_digit((char)x) && square(x - '0') > 10 || sign(x - 60) > 0; }

int main(void)
{
    int a = 3, b = 8, i, t = 0, v[5] = {0};
    printf("%d %d %d\n", square(a + 1), square(a) + square(b), square(square(a)));
    for (i = -2; i < 3; i++)
        printf("%d %d ", sign(i * 5), limit(i, -1, 1));
    printf("\n%d %d %d\n", constant_argument(0, a), constant_argument(1, b), constant_argument(2, a + b));
    swap(&a, &b);
    swap(&a, &a);
    printf("%d %d %d\n", a, b, always_seven());
    printf("%d", repeated(4));
    printf(" %d\n", global);
    printf("%d %d\n", always_same(99, 2), always_same(a, 2));
    printf("%d", twice(square, 3));
    printf(" %d\n", twice(reads_global, 1));
    for (i = 0; i < 6; i++)
        t = t * 3 + loop_inside(i) + many_returns(i * 25);
    printf("%d %d\n", t, outer(3) - outer(-3));
    for (i = 0; i < 5; i++)
        *place(v, i) = i * i;
    *place(v, 2) += 10;
    printf("%d %d %d\n", *place(v, 2), both(5).a, both(6).b);
    printf("%d %d\n", library_calls("hello"), library_calls(""));
    for (i = 45; i < 65; i += 2)
        printf("%d", short_circuit(i));
    nothing();
    printf("\n");
    return 0;
}
