/* Code behind returns and exits, conditions that are constant, functions that never return, atexit. */
#include <stdio.h>
#include <stdlib.h>

static int depth;

static void leave(int status)
{
    printf("leaving with %d\n", status);
    exit(status);
}

static void at_end(void) { printf("at end, depth %d\n", depth); }
static void at_end_first(void) { printf("registered last, called first\n"); }

static int dead_code(int x)
{
    if (0) {
        x = 1000;
    never:
        x += 5;
    }
    while (0)
        x = -1;
    if (1) x++; else x = 77;
    if (x > 5 || 1) x += 2;
    if (x > 5 && 0) goto never;
    for (; 0;) x *= 2;
    do x *= 3; while (0);
    return x;
    x = 5;
    return x;
}

static int constant_condition(int x)
{
    const int debug = 0;
    enum { LEVEL = 2 };
    int r = 0;
    if (debug) r += 1000;
    if (LEVEL > 1) r += 1;
    if (LEVEL > 2) r += 2;
    if (sizeof(int) == 4) r += 4;
    r += debug ? x : LEVEL;
    switch (LEVEL) { case 1: r += 8; break; case 2: r += 16; break; default: r += 32; }
    return r;
}

static int checked(int x)
{
    if (x < 0)
        leave(9);
    return x * 2;
}

static int descend(int n)
{
    depth++;
    if (n == 0)
        leave(depth);
    return descend(n - 1) + 1;
}

static int infinite(int x)
{
    for (;;) {
        if (x > 100)
            break;
        x *= 2;
        while (1) {
            if (x % 3 == 0)
                return x;
            x++;
        }
    }
    return -x;
}

int main(void)
{
    atexit(at_end);
    atexit(at_end_first);
    printf("%d %d\n", dead_code(1), dead_code(-10));
    printf("%d %d\n", constant_condition(5), checked(21));
    printf("%d %d\n", infinite(5), infinite(200));
    descend(40);
    printf("never printed\n");
    return 1;
}
