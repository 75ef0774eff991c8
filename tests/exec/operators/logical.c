/* && || ! ?: and the comma: short circuit, side effects in order, values used and unused. */
#include <stdio.h>

static int trace;
static int yes(int n) { trace = trace * 10 + n; return n; }
static int no(int n) { trace = trace * 10 + n; return 0; }
static void show(const char *text, int value) { printf("%s = %d, trace %d\n", text, value, trace); trace = 0; }

static int three_way(int a, int b) { return a < b ? -1 : a > b ? 1 : 0; }
static int majority(int a, int b, int c) { return (a && b) || (b && c) || (a && c); }
static int exclusive(int a, int b) { return !a != !b; }
static int implies(int a, int b) { return !a || b; }
static const char *size_name(int n) { return n < 10 ? "small" : n < 100 ? "medium" : "large"; }

static int conditions(int a, int b, int c)
{
    int n = 0;
    if (a && b || c) n |= 1;
    if (a && (b || c)) n |= 2;
    if (!(a && b) && !c) n |= 4;
    if ((a ? b : c)) n |= 8;
    if ((a, b)) n |= 16;
    if (!!a == b) n |= 32;
    if (a ? b && c : b || c) n |= 64;
    return n;
}

int main(void)
{
    int i, x = 0, y;
    double d = 0.5, zero = 0.0;
    const char *p = "text", *null = 0;
    show("and", yes(1) && yes(2) && no(3) && yes(4));
    show("or", no(1) || no(2) || yes(3) || yes(4));
    show("mixed", (no(1) && yes(2)) || (yes(3) && yes(4)));
    show("not", !(yes(1) && no(2)));
    show("cond", yes(1) ? yes(2) : yes(3));
    show("cond", no(1) ? yes(2) : yes(3));
    show("comma", (yes(1), yes(2), yes(3)));
    yes(1) && yes(2);
    no(3) || yes(4);
    show("unused", 0);
    x = 5;
    y = (x++, x * 2);
    printf("%d %d\n", x, y);
    y = x > 3 && ++x > 6 || --x;
    printf("%d %d\n", x, y);
    printf("%d %d %d %d %d\n", d && 1, zero || 0, p && 1, null || 0, !null + !p);
    for (i = 0; i < 8; i++)
        printf("%d%d%d%d:%d ", majority(i & 1, i & 2, i & 4), exclusive(i & 1, i & 4), implies(i & 2, i & 1),
               three_way(i, 4), conditions(i & 1, (i >> 1) & 1, i >> 2));
    printf("\n%s %s %s\n", size_name(9), size_name(99), size_name(100));
    for (i = 0, y = 1; i < 5; i++, y *= 2)
        ;
    printf("%d %d\n", i, y);
    return 0;
}
