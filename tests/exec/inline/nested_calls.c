/* Calls of inlined functions in arguments of one another, in bodies, in chains, and around calls that stay. */
#include <stdio.h>
#include <stdlib.h>

static int depth;
static inline int add(int a, int b) { return a + b; }
static inline int mul(int a, int b) { return a * b; }
static inline int poly(int x) { return add(mul(x, add(x, 1)), mul(add(x, 2), add(mul(x, x), 3))); }
static inline int max(int a, int b) { if (a > b) return a; return b; }
static inline int max3(int a, int b, int c) { return max(max(a, b), c); }
static inline int max9(int a, int b, int c) { return max3(max3(a, b, c), max3(b, c, a + 1), max3(c - 1, a, b)); }
static int plain(int x) { depth++; return max9(x, x + 1, 4) + depth; }
static inline int c10(int x) { return x + 1; }
static inline int c9(int x) { return c10(x) * 2; }
static inline int c8(int x) { return c9(x) + 1; }
static inline int c7(int x) { return c8(x) * 3; }
static inline int c6(int x) { return c7(x) - 1; }
static inline int c5(int x) { return c6(x) ^ 5; }
static inline int c4(int x) { return c5(x) + 2; }
static inline int c3(int x) { return c4(x) * 5; }
static inline int c2(int x) { return c3(x) + 7; }
static inline int c1(int x) { return c2(x) / 3; }
static inline int c0(int x) { return c1(x) | 1; }
static inline int chain(int x) { return c0(x) - 1; }
static inline int apply(int (*f)(int), int x) { return f(x) + poly(x); }
static inline void leave(int x) { if (x > 2) exit(x); printf("stays %d\n", x); }
static inline int checked(int x) { if (x < 0) { printf("negative\n"); abort(); } return x; }

int main(void)
{
    int i, s = 0;
    for (i = 0; i < 4; i++) {
        printf("%d %d %d %d\n", poly(i), max9(i, poly(i) % 5, 2), plain(i), chain(i * 100));
        s += apply(poly, i) + apply(plain, max(i, 2)) + apply(i ? c10 : chain, i);
        s = checked(add(max3(s, 1, 2), add(checked(i), mul(plain(1), poly(2)))) & 0xfffff);
        printf("%d\n", s);
    }
    leave(max(1, 2));
    leave(poly(1));
    return 1;
}
