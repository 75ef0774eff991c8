/* Inlined calls wherever control depends on them or a value crosses a branch. */
#include <stdio.h>

static int trace;
static inline int step(int x) { trace = trace * 3 + x; return x; }
static inline int odd(int x) { if (x & 1) return 1; return 0; }
static inline int between(int x, int low, int high) { return low <= x && x < high; }
static inline int either(int a, int b) { return a || b; }
static inline int sign(int x) { switch (x < 0 ? -1 : x > 0) { case -1: return 10; case 0: break; default: return 30; } return 20; }
static inline int kind(int c)
{
    switch (c) {
    case '0': case '1': case '2': return 1;
    case '+': c = 5; break;
    case '-': c = 6;
    case '*': c += 10; goto out;
    default: if (c > 'a') return -c;
    }
    c *= 2;
out:
    return c + 1;
}
static inline int falls_off(int x) { if (x > 100) return 1; trace += x; return trace != 0; }
static inline int endless(int n) { for (;;) { if (n > 50) return n; n = n * 2 + 1; } }
static inline int back(int n) { again: n += 3; if (n % 7) goto again; return n; }
static inline void nothing(void) {}
static inline void maybe(int x, int *p) { if (!x) return; *p += x; if (x > 3) return; *p *= 2; }
static inline const char *word(int x) { return odd(x) ? "odd" : "even"; }
static inline double half(int x) { return x ? x / 2.0 : -1.5; }

int main(void)
{
    int i, k = 0, hits = 0;
    for (i = -3; i < 8; i++) {
        if (odd(i) && between(i, 0, 6)) hits += 1;
        if (!odd(i) || step(i) > 2) hits += 10;
        if (odd(i) == odd(i + 2)) hits += 100;
        if (either(odd(i), between(i, -3, -1)) && !(odd(i + 1) || i == 4)) hits += 1000;
        k += odd(i) ? step(i + 1) : step(i + 2) * 2;
        k += (step(1), step(2));
        k += odd(i) && step(3);
        k -= odd(i) || step(4);
        k = between(k, -5000, 5000) ? k : odd(k) ? 17 : 18;
        maybe(i, &k);
        printf("%d %d %d %d %s %g\n", i, k, hits, trace, word(i), half(i));
        trace %= 1000;
    }
    while (step(k = k / 2) > 3)
        hits += odd(k);
    do {
        k += 1;
    } while (!odd(back(k)) && between(k, -1000, 1000));
    for (i = endless(3); odd(i); i = endless(i + 1) / 2)
        if (i < 10) break;
    nothing();
    (nothing(), nothing());
    odd(step(5));
    odd(7) ? nothing() : (void)step(9);
    odd(4) && step(11);
    odd(4) || step(12);
    printf("%d %d %d %d\n", hits, k, i, trace);
    for (i = 0; i < 8; i++)
        printf("%d ", kind("012+-*bZ"[i]));
    printf("%d %d %d %d\n", sign(-4), sign(0), sign(9), falls_off(200) + falls_off(3));
    switch (sign(between(k, 0, 5) - 1)) {
    case 10: printf("below\n"); break;
    case 20: printf("within\n");
    }
    return sign(step(0) && step(1)) + (kind('+') == kind('-'));
}
