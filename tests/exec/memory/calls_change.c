/* Calls that change globals, arrays and addressed locals between two reads of them. */
#include <stdio.h>

static int g = 1, table[4] = {1, 2, 3, 4};
static struct { int x; int *p; } s;
static void bump(void) { g++; }
static void bump_table(int i) { table[i] += 10; }
static void through(int *p) { *p += 100; }
static int reads(void) { return g + table[0]; }
static void (*indirect)(void) = bump;
static void via_struct(void) { s.x++; if (s.p) *s.p += 1000; }

static int between(void) { int a = g, b; bump(); b = g; return a * 10 + b; }
static int same_expression(void)
{
    int a = g * 3 + table[1];
    bump_table(1);
    a = a * 100 + g * 3 + table[1];
    bump();
    return a * 100 + g * 3 + table[1];
}
static int addressed(int n)
{
    int x = n, before = x;
    through(&x);
    return before * 1000 + x;
}
static int not_addressed(int n)
{
    int x = n * 7, y = n * 7;
    bump();
    return x - y + n * 7;
}
static int kept_address(void)
{
    int x = 1, t;
    s.p = &x;
    via_struct();
    t = x;
    x = 2;
    via_struct();
    s.p = 0;
    via_struct();
    return t * 10 + x + s.x;
}
static int in_loop(int n)
{
    int i, t = 0;
    for (i = 0; i < n; i++) {
        t += g * table[i & 3];
        if (i % 2)
            indirect();
        else
            bump_table(i & 3);
    }
    return t;
}
static int store_seen_by_call(int v) { g = v; table[0] = v * 2; return reads(); }
static int overwritten(int v) { g = v; g = v + 1; bump(); g = g * 2; return g; }
static int conditional_call(int c)
{
    int a = g;
    if (c)
        bump();
    return g - a;
}
static int condition_calls(void)
{
    int n = 0;
    if ((bump(), g > 0) && (bump_table(2), table[2] > 0))
        n = g;
    while (bump(), g % 5)
        n += table[2];
    return n;
}
static int *address(void) { bump(); return &table[3]; }
static int by_returned_pointer(void) { int t = table[3]; *address() = 50; return t * 100 + table[3]; }
static int argument_old(int old) { int now; g += 5; now = g; return old * 100 + now; }

int main(void)
{
    printf("%d ", between());
    printf("%d ", same_expression());
    printf("%d\n", addressed(3));
    printf("%d ", not_addressed(5));
    printf("%d ", kept_address());
    printf("%d\n", in_loop(9));
    printf("%d ", store_seen_by_call(8));
    printf("%d ", overwritten(3));
    printf("%d %d\n", conditional_call(0), conditional_call(1));
    printf("%d ", condition_calls());
    printf("%d ", by_returned_pointer());
    printf("%d\n", argument_old(g));
    return g & 63;
}
