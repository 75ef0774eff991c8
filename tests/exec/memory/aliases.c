/* Stores through pointers beside direct accesses: to globals, locals, elements, members, overlapping. */
#include <stdio.h>

static int g, h, table[8];
static int *gp = &g;
struct s { int a, b; int v[4]; } gs, *sp = &gs;

static int store_between(int *p) { int a = g; *p = 9; return a * 100 + g; }
static int load_after(int *p, int *q) { *p = 1; *q = 2; return *p * 10 + *q; }
static int two_types(int *p, short *q) { int a = *p; *q += 5; return *p - a + *q; }
static int global_pointer(void) { g = 3; *gp = 4; return g; }

static int local_address(int n)
{
    int x = n, y = n * 2, *p = n & 1 ? &x : &y;
    *p += 100;
    x++;
    *p += 1000;
    return x * 10000 + y;
}

static int escaped(int n)
{
    int x = 5;
    gp = &x;
    *gp += n;
    x *= 2;
    n = *gp;
    gp = &g;
    return n + x;
}

static int elements(int i, int j)
{
    int r;
    table[i] = 10;
    table[j] = 20;
    r = table[i];
    table[i + 1] = 30;
    r = r * 100 + table[j] + table[3];
    return r;
}

static int constant_elements(int *p)
{
    table[2] = 5;
    p[1] = 6;
    table[3] = 7;
    return table[2] * 100 + p[1] * 10 + table[3];
}

static int members(struct s *p)
{
    p->a = 1;
    gs.b = 2;
    sp->a += 10;
    p->v[1] = 5;
    sp->v[p->a - 10] += 6;
    return p->a * 1000 + p->b * 100 + gs.v[1];
}

static int member_pointer(struct s *p, int *q)
{
    int t = p->b;
    *q = 50;
    t += p->b;
    p->b = 7;
    return t * 100 + *q;
}

static void swap_in_place(int *a, int *b)
{
    *a ^= *b;
    *b ^= *a;
    *a ^= *b;
}

static int accumulate(int *sum, const int *v, int n)
{
    int i;
    *sum = 0;
    for (i = 0; i < n; i++)
        *sum += v[i];
    return *sum;
}

static void copy_forward(int *to, const int *from, int n)
{
    while (n-- > 0)
        *to++ = *from++ + 1;
}

static int counter_alias(int *n)
{
    int steps = 0;
    for (g = 0; g < 10; g++) {
        *n += 1;
        steps++;
    }
    return steps;
}

static int pointer_to_pointer(int **pp, int *q)
{
    int *p = *pp;
    *p = 1;
    *pp = q;
    **pp = 2;
    return *p * 10 + **pp;
}

int main(void)
{
    int x = 1, y = 2, *px = &x, i;
    printf("%d", store_between(&g));
    printf(" %d\n", store_between(&h));
    printf("%d", load_after(&x, &y));
    printf(" %d\n", load_after(&x, &x));
    printf("%d", global_pointer());
    printf(" %d\n", two_types(&x, (short *)&table[0]));
    printf("%d %d\n", local_address(1), local_address(2));
    printf("%d", escaped(3));
    printf(" %d\n", elements(3, 3));
    printf("%d", elements(2, 3));
    printf(" %d\n", elements(1, 2));
    printf("%d", constant_elements(table + 1));
    printf(" %d", constant_elements(table + 2));
    printf(" %d\n", constant_elements(table + 5));
    printf("%d", members(&gs));
    printf(" %d\n", gs.v[1]);
    gs.b = 3;
    printf("%d", member_pointer(&gs, &gs.b));
    printf(" %d\n", member_pointer(&gs, &x));
    x = 4;
    y = 9;
    swap_in_place(&x, &y);
    printf("%d %d\n", x, y);
    for (i = 0; i < 8; i++)
        table[i] = i + 1;
    printf("%d ", accumulate(&x, table, 8));
    printf("%d\n", accumulate(&table[3], table, 8));
    copy_forward(table + 1, table, 7);
    printf("%d %d\n", table[1], table[7]);
    x = 0;
    printf("%d", counter_alias(&x));
    printf(" %d\n", counter_alias(&g));
    printf("%d\n", pointer_to_pointer(&px, &y));
    return 0;
}
