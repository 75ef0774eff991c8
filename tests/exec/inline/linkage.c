/* Functions marked inline under each linkage: the ones that others can call keep a copy of their own. */
#include <stdarg.h>
#include <stdio.h>

extern inline int external_first(int x) { return x + 1; }
inline int external_later(int x) { return x + 2; }
extern int external_later(int x);
int declared(int x);
inline int declared(int x) { return x * 2; }
static inline int internal(int x) { return x - 7; }
static int late(int x);
static int before(int x) { return late(x) + 1; }
static inline int late(int x) { return x * x; }
__attribute__((noinline)) static int kept(int x) { return x + 40; }
static inline int once(void) { static int n = 5; n += 2; return n; }
static inline int total(int n, ...)
{
    va_list list;
    int sum = 0;
    va_start(list, n);
    while (n-- > 0)
        sum += va_arg(list, int);
    va_end(list);
    return sum;
}
struct pair { int a, b; };
static inline struct pair make(int a, int b) { struct pair p; p.a = a; p.b = b; return p; }
static inline int size(struct pair p) { p.a += p.b; return p.a; }
static inline int unsure(int x) { volatile int y = x; y += 1; return y; }
static inline int uses_extern(int x) { extern int shared; int plain_function(int); shared += x; return plain_function(shared); }
int shared = 3;
int plain_function(int x) { return x + shared; }
static int (*const chosen[])(int) = {external_first, external_later, declared, internal, late, kept};

int main(void)
{
    int i;
    for (i = 0; i < 6; i++)
        printf("%d ", chosen[i](i + 10));
    printf("%d %d %d\n", external_first(4), external_later(5), declared(6));
    i = once();
    i = i * 100 + once();
    printf("%d %d %d %d %d\n", internal(1), before(3), late(4), kept(2), i);
    printf("%d %d %d\n", total(3, 10, 20, 30), size(make(4, 5)), unsure(6));
    i = uses_extern(4);
    i += uses_extern(2) * 100;
    printf("%d %d\n", i, shared);
    return internal == chosen[3] ? 0 : 1;
}
