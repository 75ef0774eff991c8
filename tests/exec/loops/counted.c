/* Counted loops with every step, direction, relation and counter type; final counter values. */
#include <limits.h>
#include <stdio.h>

static unsigned h;
static void visit(int x) { h = h * 31 + (unsigned)x; }
static void report(const char *what, int final) { printf("%s %08x %d\n", what, h, final); h = 0; }

static void steps(int low, int high)
{
    int i;
    for (i = low; i < high; i += 3) visit(i);
    report("up 3", i);
    for (i = high; i > low; i -= 4) visit(i);
    report("down 4", i);
    for (i = low; i <= high; i++) visit(i);
    report("inclusive", i);
    for (i = high; i >= low; --i) visit(i);
    report("down inclusive", i);
    for (i = low; i != high; i++) visit(i);
    report("not equal", i);
    for (i = 1; i < high; i *= 3) visit(i);
    report("geometric", i);
    for (i = high * 8; i; i >>= 1) visit(i);
    report("halving", i);
}

static void types(int n)
{
    signed char c;
    unsigned char b;
    short s;
    unsigned short w;
    unsigned u;
    long l;
    for (c = -3; c < n; c++) visit(c);
    report("signed char", c);
    for (b = 0; b < n; b = (unsigned char)(b + 2)) visit(b);
    report("unsigned char", b);
    for (s = (short)n; s > -n; s = (short)(s - 5)) visit(s);
    report("short", s);
    for (w = 65530; w; w++) visit(w);
    report("unsigned short", w);
    for (u = 5; u < 6; u--) visit((int)u);
    report("unsigned", (int)(u == UINT_MAX));
    for (u = 0xFFFFFFF0u; u > 10; u += 4) visit((int)u);
    report("unsigned wrap", (int)u);
    for (l = 10; l >= 0; l -= n) visit((int)l);
    report("long", (int)l);
}

static void edges(void)
{
    int i;
    for (i = INT_MAX - 3; i < INT_MAX; i++) visit(i);
    report("near maximum", i);
    for (i = INT_MIN + 3; i > INT_MIN; i--) visit(i);
    report("near minimum", i);
    for (i = 5; i < 5; i++) visit(i);
    report("zero trips", i);
    for (i = 9; i < 5; i++) visit(i);
    report("below zero trips", i);
    for (i = 0; i < 1; i++) visit(i);
    report("one trip", i);
    for (i = 0; i < 7; i += 7) visit(i);
    report("exact step", i);
}

static void changed_inside(int n)
{
    int i, limit = n;
    for (i = 0; i < limit; i++) {
        visit(i);
        if (i == 2) limit--;
        if (i == 4) i++;
    }
    report("changed inside", i * 100 + limit);
    for (i = 0; i < n; i++) {
        int step;
        for (step = i; step < n; step += step + 1) visit(step);
    }
    report("inner", i);
}

int main(void)
{
    steps(-7, 11);
    types(9);
    edges();
    changed_inside(10);
    return 0;
}
