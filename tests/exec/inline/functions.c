/* Inline functions of all kinds: with loops, several returns, statics, arrays, structures, recursion. */
#include <stdio.h>

static inline int minimum(int a, int b) { return a < b ? a : b; }
static inline int clamp(int x, int low, int high) { return x < low ? low : x > high ? high : x; }
static inline unsigned char narrow(int x) { return (unsigned char)x; }
static inline void set(int *p, int v) { *p = v; }
static inline int early(int x) { if (x < 0) return -1; if (x == 0) return 0; x *= 3; return x + 1; }
static inline int loop(const int *p, int n) { int s = 0; while (n--) s += *p++; return s; }
static inline int with_static(void) { static int n = 3; return n += 2; }
static inline int with_array(int x) { int a[4] = {1, 2, 3, 4}; a[x & 3] += x; return a[0] + a[1] * 10 + a[2] * 100 + a[3] * 1000; }
static inline int with_switch(int x) { switch (x) { case 1: return 10; case 2: break; case 3: x += 5; default: return x; } return 22; }
static inline int with_goto(int x) { again: if (x > 9) { x -= 7; goto again; } return x; }
static inline int changes_parameter(int x, int y) { x += y; y = x * 2; x ^= y; return x + y; }
static inline int addressed_parameter(int x) { int *p = &x; *p += 4; return x; }
static inline int factorial(int n) { return n < 2 ? 1 : n * factorial(n - 1); }
static inline double mix(float f, double d) { return f * d + (int)d; }
struct pair { int a, b; };
static inline struct pair make(int a, int b) { struct pair p; p.a = a; p.b = b; return p; }
static inline int sum(struct pair p) { p.a *= 2; return p.a + p.b; }
static inline int nested(int x) { return minimum(early(x), clamp(x, 2, 5)) + with_goto(x * 4); }
static inline void nothing(int x) { (void)x; }
static inline const char *text(int x) { return x ? "yes" : "no"; }

static int counter;
static inline int effect(int x) { counter += x; return counter; }

int main(void)
{
    int i, x = 5, v[5] = {5, 4, 3, 2, 1};
    struct pair p = make(3, 4), q;
    for (i = -2; i < 4; i++)
        printf("%d %d %d %d %d\n", early(i), clamp(i * 3, -2, 5), with_switch(i), with_goto(i * 11 + 20), nested(i));
    i = minimum(x++, 100);
    printf("%d %d\n", i, x);
    printf("%d %d\n", narrow(511), narrow(-1) + narrow(x));
    set(&x, minimum(v[1], v[2]));
    set(&v[x], 50);
    printf("%d %d %d\n", x, v[3], loop(v, 5) + loop(v + 1, 2));
    i = with_static();
    printf("%d %d\n", i, with_static());
    printf("%d %d\n", with_array(2), with_array(7));
    printf("%d %d %d\n", changes_parameter(x, 4), addressed_parameter(x), x);
    printf("%d %g\n", factorial(7), mix(1.5f, 2.5));
    q = make(sum(p), sum(make(1, 1)));
    printf("%d %d %d %d\n", p.a, q.a, q.b, make(8, 9).b);
    i = effect(2);
    i = i * 10 + effect(3);
    printf("%d %d %s %s\n", i, counter, text(i), text(0));
    nothing(effect(10));
    printf("%d\n", counter);
    for (i = 0; i < 3; i++)
        v[i] = effect(i) + (i > 0 ? minimum(v[i - 1], 18) : 0);
    printf("%d %d %d\n", v[0], v[1], v[2]);
    return clamp(1000, 0, 42);
}
