/* All loop statements with all parts present or missing, break and continue in each, zero trips. */
#include <stdio.h>

static int for_full(int n) { int i, s = 0; for (i = 0; i < n; i++) s += i; return s; }
static int for_no_init(int n) { int s = 0; for (; n > 0; n -= 2) s += n; return s; }
static int for_no_test(int n) { int i, s = 0; for (i = 0;; i++) { if (i >= n) break; s += i; } return s; }
static int for_no_step(int n) { int i, s = 0; for (i = 0; i < n;) { s += i; i += 3; } return s; }
static int for_nothing(int n) { int s = 0; for (;;) { if (n-- <= 0) break; s += n; } return s; }
static int while_plain(int n) { int s = 0; while (n) { s += n; n--; } return s; }
static int while_effect(int n) { int s = 0; while (n--) s += n; return s; }
static int while_pre(int n) { int s = 0; while (--n > 0) s += n; return s; }
static int do_plain(int n) { int s = 0; do { s += n; n--; } while (n > 0); return s; }
static int do_once(int n) { int s = 0; do s += n; while (0); return s; }

static int continues(int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++) {
        if (i % 3 == 0) continue;
        s += i;
        if (i % 4 == 1) continue;
        s += 100;
    }
    i = 0;
    while (i < n) {
        i++;
        if (i & 1) continue;
        s += i;
    }
    do {
        i--;
        if (i % 5) continue;
        s -= i;
    } while (i > 0);
    return s;
}

static int two_conditions(const char *p, int limit)
{
    int n = 0;
    while (n < limit && p[n] != 0 && p[n] != '.')
        n++;
    return n;
}

static int comma_loop(int n)
{
    int i, j, s = 0;
    for (i = 0, j = n; i < j; i++, j--)
        s += i * j;
    return s * 10 + (i == j);
}

static int double_loop(double limit)
{
    double x;
    int n = 0;
    for (x = 0.25; x < limit; x *= 2)
        n++;
    return n;
}

static int char_loop(void)
{
    unsigned char c;
    int s = 0;
    for (c = 250; c >= 250; c++)
        s += c;
    for (c = 'a'; c <= 'z'; c += 5)
        s = s * 2 + c;
    return s;
}

int main(void)
{
    int n;
    for (n = -1; n < 12; n += 4)
        printf("%d %d %d %d %d %d %d %d %d\n", for_full(n), for_no_init(n), for_no_test(n), for_no_step(n),
               for_nothing(n), while_pre(n), do_plain(n), do_once(n), continues(n));
    printf("%d %d %d %d\n", while_plain(7), while_effect(7), while_plain(0), while_effect(0));
    printf("%d %d %d\n", two_conditions("stop. here", 20), two_conditions("stop", 3), two_conditions("", 3));
    printf("%d %d %d %d\n", comma_loop(10), comma_loop(7), double_loop(1000.0), char_loop());
    return 0;
}
