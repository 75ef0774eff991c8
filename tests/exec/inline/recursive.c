/* Functions marked inline that call themselves, one another, or the function that they are put into. */
#include <stdio.h>

static inline unsigned factorial(unsigned n) { return n < 2 ? 1 : n * factorial(n - 1); }
static inline int fibonacci(int n) { return n < 2 ? n : fibonacci(n - 1) + fibonacci(n - 2); }
static inline int tribonacci(int n) { return n < 3 ? 1 : tribonacci(n - 1) + tribonacci(n - 2) + tribonacci(n - 3); }
static inline int count(int n, int sum) { if (n == 0) return sum; return count(n - 1, sum + n); }
static inline int is_odd(int n);
static inline int is_even(int n) { return n == 0 ? 1 : is_odd(n - 1); }
static inline int is_odd(int n) { return n == 0 ? 0 : is_even(n - 1); }
static inline int ackermann(int m, int n) { if (!m) return n + 1; if (!n) return ackermann(m - 1, 1); return ackermann(m - 1, ackermann(m, n - 1)); }
static inline int deep(int n) { int here[2]; here[0] = n; here[1] = n ? deep(n - 1) : 0; return here[0] * 2 + here[1]; }
static inline int where(int n, int *above) { int here = n; return n == 0 ? *above : where(n - 1, &here) + *above; }

static int walk(int n, int *out);
static inline int hop(int n, int *out) { int step = n & 1 ? 1 : 2; *out += step; return walk(n - step, out); }
static int walk(int n, int *out) { if (n <= 0) return *out; return hop(n, out); }
static void down(int n);
static inline void again(int n) { printf("%d ", n); down(n - 1); }
static void down(int n) { if (n > 0) again(n); }
/* one activation's local must not be another's */
static int keep(int n, int **slot);
static inline int keep_more(int n, int **slot) { int mine = n * 10; if (slot) **slot += mine; int *p = &mine; int r = keep(n - 1, &p); return r + mine; }
static int keep(int n, int **slot) { if (n <= 0) return 1; return keep_more(n, slot); }

int main(void)
{
    int out = 0, start = 100;
    printf("%u %u %d %d\n", factorial(5), factorial(12), fibonacci(17), tribonacci(12));
    printf("%d %d %d %d\n", count(10, 0), count(1000, 5), is_even(30), is_odd(17));
    printf("%d %d %d\n", ackermann(2, 3), deep(25), where(20, &start));
    printf("%d\n", walk(31, &out));
    down(15);
    printf("\n%d\n", keep(6, 0));
    return fibonacci(factorial(3)) + is_even(is_odd(3));
}
