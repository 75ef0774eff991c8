/* Nested blocks with names that hide others, declarations with side effects, empty statements. */
#include <stdio.h>

static int x = 1;
static int calls;
static int next(void) { return ++calls; }

static int hidden(int x)
{
    int sum = x;
    {
        int x = sum + 10;
        sum += x;
        {
            short x = (short)(sum * 2);
            sum += x;
            {
                extern int shared;
                static int x = 100;
                x++;
                sum += x + shared;
            }
            x++;
            sum += x;
        }
        x--;
        sum += x;
    }
    for (x = 0; x < 3; x++) {
        int sum2 = x * 2;
        sum += sum2;
    }
    return sum + x;
}

int shared = 7;

static int in_order(void)
{
    int a = next(), b = a + next();
    int c = next() * 10 + b;
    ;
    {
        ;
        {
        }
        {
            int d = next();
            c += d;
        }
    }
    return a + b + c;
}

static int fresh_each_time(void)
{
    int i, total = 0;
    for (i = 0; i < 5; i++) {
        int local = 3;
        int copy[3] = {1};
        local += i;
        copy[1] += local;
        copy[2] += copy[1] + copy[0];
        total += copy[2];
        copy[0] = 99;
    }
    return total;
}

static int swap_chain(int a, int b, int c)
{
    { int t = a; a = b; b = t; }
    { int t = b; b = c; c = t; }
    { int t = c; c = a; a = t; }
    return a * 100 + b * 10 + c;
}

static void only_effects(int *p)
{
    *p;
    (void)*p;
    *p + 1;
    (*p)++, *p += 2;
    if (*p) ;
    while (*p > 100) --*p;
    3;
    p;
}

int main(void)
{
    int value = 200;
    printf("%d", hidden(2));
    printf(" %d\n", hidden(3));
    printf("%d", in_order());
    printf(" %d\n", calls);
    printf("%d\n", fresh_each_time());
    printf("%d\n", swap_chain(1, 2, 3));
    only_effects(&value);
    printf("%d %d\n", value, x);
    { int x = 9; { int x = 8; printf("%d ", x); } printf("%d\n", x); }
    return 3;
}
