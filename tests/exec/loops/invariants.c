/* Values that do not change in a loop, and those that only seem not to: stores, calls, zero trips. */
#include <stdio.h>

static int scale = 3;
static int table[32];
static int *alias = &scale;

static int invariant_expression(int a, int b, int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++)
        s += a * b + i * (a - b) + (a << 2) - b / 3;
    return s;
}

static int guarded_division(int a, int b, int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++)
        if (b != 0)
            s += a / b + i;
        else
            s--;
    return s;
}

static int guarded_load(const int *p, int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++)
        if (p)
            s += *p;
    return s;
}

static int zero_trip_load(const int *p, int n)
{
    int s = 0;
    while (n-- > 0)
        s += *p * 2;
    return s;
}

static int changed_by_alias(int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++) {
        s += scale * 10;
        if (i == n / 2)
            *alias = 5;
    }
    return s;
}

static void bump(void) { scale++; }
static int changed_by_call(int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++) {
        s += scale;
        if (i & 1)
            bump();
        s += scale;
    }
    return s;
}

static void store_in_loop(int n)
{
    int i;
    for (i = 1; i < n; i++) {
        table[i] = table[i - 1] + table[0] + scale;
        if (i == 3)
            table[0] = 2;
    }
}

static int bound_in_memory(int *limit)
{
    int i, s = 0;
    for (i = 0; i < *limit; i++) {
        s += i;
        if (s == 6)
            *limit += 2;
    }
    return s * 100 + i;
}

static int nested(int m, int n)
{
    int i, j, s = 0;
    for (i = 0; i < m; i++) {
        int row = i * n;
        for (j = 0; j < n; j++) {
            int cell = row + j;
            s += table[(cell + m * n) & 31] + (i * i - m);
        }
    }
    return s;
}

static int conditional_invariant(int n, int mode)
{
    int i, s = 0;
    for (i = 0; i < n; i++) {
        if (mode == 1) s += i;
        else if (mode == 2) s -= i;
        else s ^= i;
    }
    return s;
}

int main(void)
{
    int five = 5, limit = 5;
    printf("%d %d\n", invariant_expression(7, 4, 10), invariant_expression(7, 4, 0));
    printf("%d %d\n", guarded_division(20, 3, 5), guarded_division(20, 0, 5));
    printf("%d %d\n", guarded_load(&five, 4), guarded_load(0, 4));
    printf("%d %d\n", zero_trip_load(&five, 3), zero_trip_load(0, 0));
    printf("%d ", changed_by_alias(10));
    printf("%d ", changed_by_call(9));
    printf("%d\n", scale);
    table[0] = 1;
    store_in_loop(12);
    printf("%d %d %d\n", table[2], table[5], table[11]);
    printf("%d ", bound_in_memory(&limit));
    printf("%d\n", limit);
    printf("%d %d\n", nested(5, 7), nested(0, 3));
    printf("%d %d %d\n", conditional_invariant(10, 1), conditional_invariant(10, 2), conditional_invariant(10, 3));
    return 0;
}
