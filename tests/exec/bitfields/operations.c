/* Every compound assignment, ++ and -- on fields; fields as arguments, conditions, indices, loop counters. */
#include <stdio.h>

struct fields { unsigned a:4; int b:6; unsigned c:17; unsigned flag:1; int d:12; };
static struct fields g = {3, -7, 70000, 1, 1000};

static void show(const struct fields *p) { printf("%u %d %u %u %d\n", p->a, p->b, p->c, p->flag, p->d); }

static void compound(struct fields *p, int n)
{
    p->a += n; p->b += n; p->c += n; p->d += n; show(p);
    p->a -= 5; p->b -= 5; p->c -= 5; p->d -= 5; show(p);
    p->a *= 3; p->b *= 3; p->c *= 3; p->d *= 3; show(p);
    p->a /= 2; p->b /= 2; p->c /= 2; p->d /= 2; show(p);
    p->a %= 7; p->b %= 7; p->c %= 1007; p->d %= 301; show(p);
    p->a <<= 1; p->c <<= 3; show(p);
    p->a >>= 1; p->b >>= 1; p->c >>= 2; p->d >>= 1; show(p);
    p->a |= 9; p->b |= 9; p->c |= 9; p->d |= 9; p->flag |= n; show(p);
    p->a &= 12; p->b &= -4; p->c &= 0xF0F; p->d &= 0x3FF; p->flag &= 1; show(p);
    p->a ^= 15; p->b ^= 21; p->c ^= 0x1FFFF; p->d ^= 0x55; p->flag ^= 1; show(p);
}

static void stepping(struct fields *p)
{
    int r0 = p->a++, r1 = ++p->a, r2 = p->b--, r3 = --p->b;
    unsigned r4 = p->c++;
    int r5 = p->flag++, r6 = ++p->flag;
    printf("%d %d %d %d %u %d %d | ", r0, r1, r2, r3, r4, r5, r6);
    show(p);
}

static int wraps(void)
{
    struct fields f = {15, -32, 0, 0, 2047};
    int n = 0;
    while (f.a++ != 0)
        n++;
    do
        n += 10;
    while (++f.b < -20);
    f.c--;
    if (f.c == 0x1FFFF)
        n += 1000;
    return n * 10 + f.flag;
}

static int sum3(int a, int b, unsigned c) { return a + b * 2 + (int)c * 3; }
static struct fields make(int a, int b) { struct fields f = {0}; f.a = a; f.b = b; f.d = a * b; return f; }

static int uses(struct fields f)
{
    static const int table[16] = {5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 75, 80};
    int n = table[f.a] + sum3(f.a, f.b, f.c);
    if (f.flag && f.b) n++;
    switch (f.a) { case 9: n += 1000; break; case 3: n += 2000; }
    f.flag = f.a > 8 ? f.b < 0 : f.d != 0;
    for (f.a = 0; f.a < 10; f.a++)
        n += (int)f.a * (f.flag ? 2 : 3);
    return n;
}

static int loop_field(int n)
{
    int i, changes = 0;
    for (i = 0; i < n; i++) {
        unsigned before = g.a;
        g.a = i * 5;
        g.c += g.a;
        g.d -= i;
        changes += g.a != before;
    }
    return changes;
}

int main(void)
{
    struct fields f = {9, 12, 99999, 0, -1500};
    compound(&f, 3);
    compound(&g, 200);
    stepping(&f);
    stepping(&g);
    printf("%d\n", wraps());
    printf("%d %d %d\n", uses(f), uses(g), uses(make(9, -11)));
    printf("%d ", loop_field(20));
    show(&g);
    f = g;
    f.a = f.b = f.d = 5;
    show(&f);
    return 0;
}
